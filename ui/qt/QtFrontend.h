// The Qt Widgets front-end: mirrors the model's panels into windows and turns the user's
// input into the model's events.
//
// Drawing is coalesced: draw() brings the widgets up to the model only when the model's
// revision changed, and at most twice in one 16 ms frame (the second lets a "redraw now"
// right after an input's own refresh, such as the busy lamp lit by a command, reach the
// screen); a change left over is shown by the next pump or draw after the frame. Text boxes
// repaint only when their buffer changed.
//
// Thread rules: create, use and destroy it on the user-interface thread. The model may be
// changed from any thread meanwhile; widgets are touched only inside pump, draw and popups.
#pragma once

#include <QApplication>
#include <QImage>
#include <QPointer>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>

#include "ui/UiModel.h"

class QEventLoop;

namespace vcc::ui::qt {

class PanelView;

class QtFrontend final : public Frontend {
public:
    // Uses the program's QApplication, or creates one when there is none yet.
    QtFrontend();
    ~QtFrontend() override;
    QtFrontend(const QtFrontend &) = delete;
    QtFrontend &operator=(const QtFrontend &) = delete;

    void pump(bool wait, double timeoutMs) override;
    void draw() override;
    FileAnswer fileSelect(const FileRequest &request) override;
    void message(const std::string &title, const std::string &text) override;
    void quit() override;

    // Brings every panel, shown or not, up to the model now, whatever the frame budget.
    void syncAll();
    PanelView *panelView(int handle) const;
    QWidget *controlWidget(int panel, int control) const;
    // Input was posted: a wait in pump ends.
    void inputArrived();

    struct Stats {
        uint64_t syncs = 0;    // widget refreshes done
        uint64_t skipped = 0;  // draws folded into a later refresh
    };
    Stats stats() const { return stats_; }

    static constexpr std::chrono::milliseconds kFrame{16};
    static constexpr int kSyncsPerFrame = 2;

private:
    void sync(bool allControls);
    void flushPaint();
    double msLeftInFrame() const;

    std::unique_ptr<QApplication> ownApp_;
    std::map<int, QPointer<PanelView>> views_;
    uint64_t syncedRevision_ = UINT64_MAX;
    std::chrono::steady_clock::time_point frameStart_{};
    int syncsInFrame_ = 0;
    QEventLoop *waitLoop_ = nullptr;
    bool inputArrived_ = false;
    Stats stats_;
};

// The front-end installed in the model, when it is the Qt one.
QtFrontend *activeFrontend();

// A picture of a panel as it is on screen now (after bringing it up to the model), for
// tests and documentation. Null when there is no such panel or no Qt front-end.
QImage grabPanel(int handle);

}  // namespace vcc::ui::qt
