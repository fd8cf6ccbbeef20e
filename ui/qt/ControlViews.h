// One small view per control kind. A view owns its widgets (the body and, for most kinds, a
// label beside it), brings them up to a ControlState and turns the user's input into events.
//
// Values are applied only when the model's value changed since the last state applied, never
// by comparing with the widget: a field the user is still typing in keeps its text while
// unrelated parts of the model change.
#pragma once

#include <QLabel>
#include <QPointer>
#include <QWidget>
#include <memory>

#include "ui/qt/Snapshot.h"

namespace vcc::ui::qt {

class ControlView {
public:
    ControlView(int panel, const ControlState &state, QWidget *parent);
    virtual ~ControlView();
    ControlView(const ControlView &) = delete;
    ControlView &operator=(const ControlView &) = delete;

    void apply(const ControlState &state);
    QWidget *body() const { return body_; }
    QLabel *labelWidget() const { return label_; }
    int style() const { return last_.style; }
    int id() const { return id_; }

    // The user changed the value: store it in the model (no event) and post a commit.
    void commitNumber(double value);
    void commitText(const QString &text);
    void post(int event, int data1 = 0, int data2 = 0);
    // Catches up with content the state does not carry (a text box's lines).
    virtual void refresh() {}

protected:
    // Builds the body; called once from create().
    virtual QWidget *makeBody(QWidget *parent) = 0;
    virtual void applyLook(const ControlState &) {}
    virtual void applyValue(const ControlState &) = 0;
    // Where the label goes; the default puts it above the body.
    virtual void placeLabel(const ControlState &state);
    // Kinds whose body shows the label itself have none beside it.
    virtual bool hasOwnLabel() const { return false; }
    void applyColors(QWidget *widget, const ControlState &state, bool fillBackground);

    int panel_;
    int id_;
    QWidget *parent_;
    QPointer<QWidget> body_;
    QPointer<QLabel> label_;
    ControlState last_;
    bool applied_ = false;
    // Set while a state is applied, so that signals the setters emit are not taken for input.
    bool applying_ = false;

    friend std::unique_ptr<ControlView> createControlView(int panel, const ControlState &state, QWidget *parent);
    void create(const ControlState &state);
};

// Null for kinds with nothing on screen (timers).
std::unique_ptr<ControlView> createControlView(int panel, const ControlState &state, QWidget *parent);

// Whether a string control builds its text from key presses itself (the masked password
// entry): its widget must not insert what is typed.
bool isKeyDriven(const ControlState &state);

QColor toQColor(int rgb);

}  // namespace vcc::ui::qt
