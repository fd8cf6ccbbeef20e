// Runs a vcc-script script against the running tool: each line is a user's action, a check,
// or a word to the simulated camera. The runner is the headless front-end's source of input:
// the tool's own event loop asks it for the next line whenever it waits for the user.
//
// Thread rules: user-interface thread only.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "ui/headless/HeadlessFrontend.h"

namespace vcc::ui::headless {

class ScriptRunner {
public:
    // Handles a `sim ...` line (words after "sim"); returns false with an error text.
    using SimHandler = std::function<bool(const std::vector<std::string> &words, std::string &error)>;
    // Ends the run the way the tool quits (after the last line).
    using QuitHandler = std::function<void()>;

    ScriptRunner(HeadlessFrontend &frontend, std::ostream &out);

    bool load(const std::string &path, std::string &error);
    void setLines(std::vector<std::string> lines, std::string name);
    void setSimHandler(SimHandler handler) { sim_ = std::move(handler); }
    void setQuitHandler(QuitHandler handler) { quit_ = std::move(handler); }

    // Runs the next line; after the last one, quits. Installed as the front-end's idle hook.
    void step();
    bool finished() const { return next_ >= lines_.size(); }

    int failedExpectations() const { return failed_; }
    // A script error (unknown line, control or unanswered popup): what and where; the run ends
    // with status 2 at once, since nothing after it could mean what its author intended.
    [[noreturn]] void fail(const std::string &what);

private:
    bool run(const std::string &line, std::string &error);
    bool waitMs(double ms);

    HeadlessFrontend &frontend_;
    std::ostream &out_;
    std::vector<std::string> lines_;
    std::string name_;
    size_t next_ = 0;
    size_t current_ = 0;
    int failed_ = 0;
    bool quitting_ = false;
    SimHandler sim_;
    QuitHandler quit_;
};

}  // namespace vcc::ui::headless
