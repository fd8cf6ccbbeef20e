// The scripted front-end: no window, popups answered from a queue, user input delivered
// through the same model path a real front-end uses. vcc-script and the tests drive the tool
// through it.
//
// Thread rules: user-interface thread only, like every front-end.
#pragma once

#include <deque>
#include <functional>
#include <ostream>
#include <string>

#include "ui/UiModel.h"

namespace vcc::ui::headless {

struct PopupAnswer {
    enum class Kind { File, Proposed, Cancel, Ok };
    Kind kind = Kind::Ok;
    std::string path;  // Kind::File
};

class HeadlessFrontend : public Frontend {
public:
    void pump(bool wait, double timeoutMs) override;
    void draw() override {}
    FileAnswer fileSelect(const FileRequest &request) override;
    void message(const std::string &title, const std::string &text) override;
    void quit() override {}

    void queueAnswer(PopupAnswer answer) { answers_.push_back(std::move(answer)); }
    size_t pendingAnswers() const { return answers_.size(); }
    // Where the "popup ..." lines go (none when null).
    void setPopupLog(std::ostream *log) { popupLog_ = log; }
    // Called with a description when a popup finds no queued answer; the popup is then
    // cancelled (vcc-script ends the run instead).
    std::function<void(const std::string &)> onUnanswered;
    // Called by the top-level event loop whenever it waits for input: the script's turn.
    std::function<void()> idle;
    // Every popup line shown, in order.
    std::vector<std::string> popups;

private:
    bool takeAnswer(const std::string &what, PopupAnswer &answer);

    std::deque<PopupAnswer> answers_;
    std::ostream *popupLog_ = nullptr;
};

// ---- a user's hands, for scripts and tests -------------------------------------------------------

// A control or panel as scripts name it: "PANEL.CONTROL", "Name_Callback", "PANEL", each
// optionally followed by ".attribute" (dimmed, visible, label, max, min, items, enabled, interval,
// and of a panel title, width, height).
struct Target {
    int panel = 0;
    int control = 0;
    std::string attribute;
};
bool resolve(const std::string &name, Target &target, std::string &error);

// Delivers an event as a user makes it and processes events; false when the model dropped it
// because the control is dimmed or hidden.
bool deliver(const Target &target, int event, int data1 = 0, int data2 = 0);
// The user changes a value (ring item value, number, or text) and commits it.
bool userSet(const Target &target, const std::string &value, std::string &error);
// The program sets a value, or an attribute when the target names one: no event.
bool programSet(const Target &target, const std::string &value, std::string &error);
// The value or attribute as scripts print and compare it.
std::string read(const Target &target);
// True when a user could reach the control now (shown, not dimmed).
bool reachable(const Target &target);

}  // namespace vcc::ui::headless
