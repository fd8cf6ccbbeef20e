// Shared by the Qt front-end suites: a fresh model and front-end per test (the process's one
// QApplication comes from QtEnvironment.cpp), a recording callback, and user gestures sent to
// widgets the way the window system would deliver them.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "MainUir.h"
#include "ui/UiModel.h"
#include "ui/UserInterface.h"
#include "ui/qt/PanelView.h"
#include "ui/qt/QtFrontend.h"

namespace vcc::ui::qt::testing {

struct Call {
    int panel = 0, control = 0, event = 0, data1 = 0, data2 = 0;
    std::string text;    // the control's text value when the callback ran
    double number = 0;   // and its number
};

inline std::vector<Call> &calls() {
    static std::vector<Call> recorded;
    return recorded;
}

// Records every event with the value the control holds at that moment.
inline int recordCall(int panel, int control, int event, void *, int data1, int data2) {
    Call call{panel, control, event, data1, data2, {}, 0};
    if (control) {
        char text[512] = "";
        GetCtrlVal(panel, control, text);
        call.text = text;
        GetCtrlVal(panel, control, &call.number);
    }
    calls().push_back(call);
    return 0;
}

inline std::vector<int> eventsOf(int control) {
    std::vector<int> events;
    for (const Call &c : calls())
        if (c.control == control) events.push_back(c.event);
    return events;
}

class QtTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(QApplication::instance(), nullptr) << "QtEnvironment makes the application";
        Model::instance().reset();
        frontend_ = std::make_unique<QtFrontend>();
        Model::instance().setFrontend(frontend_.get());
        calls().clear();
    }

    void TearDown() override {
        Model::instance().setFrontend(nullptr);
        frontend_.reset();
        Model::instance().reset();
    }

    int load(int resourceId) {
        const int handle = LoadPanel(0, "Main.uir", resourceId);
        EXPECT_GT(handle, 0) << "Main.uir must sit beside the test executable";
        // The system timer belongs to the tool's start-up; here it would only add events.
        if (resourceId == PNL_MAIN) SetCtrlAttribute(handle, MAIN_TIMER, ATTR_ENABLED, 0);
        return handle;
    }

    int loadAndShow(int resourceId) {
        const int handle = load(resourceId);
        DisplayPanel(handle);
        frontend_->syncAll();
        return handle;
    }

    void bind(int panel, int control) { SetCtrlAttribute(panel, control, ATTR_CALLBACK_FUNCTION_POINTER, recordCall); }
    void bindPanel(int panel, CtrlCallbackPtr callback = recordCall) {
        Model::instance().locked([&](Model &m) {
            m.panel(panel)->callback = callback;
            return 0;
        });
    }

    template <typename W = QWidget> W *widget(int panel, int control) {
        frontend_->syncAll();
        return qobject_cast<W *>(frontend_->controlWidget(panel, control));
    }

    std::unique_ptr<QtFrontend> frontend_;
};

inline void sendMouse(QWidget *w, QEvent::Type type, Qt::MouseButton button) {
    const QPointF at(w->width() / 2.0, w->height() / 2.0);
    QMouseEvent event(type, at, w->mapToGlobal(at), button,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::MouseButtons(button), Qt::NoModifier);
    QApplication::sendEvent(w, &event);
}

inline void click(QWidget *w, Qt::MouseButton button = Qt::LeftButton) {
    sendMouse(w, QEvent::MouseButtonPress, button);
    sendMouse(w, QEvent::MouseButtonRelease, button);
}

inline void doubleClick(QWidget *w) {
    click(w);
    sendMouse(w, QEvent::MouseButtonDblClick, Qt::LeftButton);
    sendMouse(w, QEvent::MouseButtonRelease, Qt::LeftButton);
}

inline void typeKey(QWidget *w, int key, const QString &text = {}) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(w, &press);
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QApplication::sendEvent(w, &release);
}

inline void typeText(QWidget *w, const QString &text) {
    for (QChar ch : text) typeKey(w, ch.toUpper().unicode(), QString(ch));
}

}  // namespace vcc::ui::qt::testing
