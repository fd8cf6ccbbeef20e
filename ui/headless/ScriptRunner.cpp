#include "ui/headless/ScriptRunner.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>

namespace vcc::ui::headless {

namespace {

std::string trim(const std::string &s) {
    const auto begin = s.find_first_not_of(" \t\r");
    if (begin == std::string::npos) return "";
    const auto end = s.find_last_not_of(" \t\r");
    return s.substr(begin, end - begin + 1);
}

// First word and the rest of the line.
std::pair<std::string, std::string> split(const std::string &s) {
    const auto space = s.find_first_of(" \t");
    if (space == std::string::npos) return {s, ""};
    return {s.substr(0, space), trim(s.substr(space + 1))};
}

std::vector<std::string> words(const std::string &s) {
    std::istringstream in(s);
    std::vector<std::string> out;
    for (std::string w; in >> w;) out.push_back(w);
    return out;
}

bool sameValue(const std::string &actual, const std::string &expected) {
    if (actual == expected) return true;
    char *end1 = nullptr, *end2 = nullptr;
    const bool hex = expected.size() > 2 && expected[0] == '0' && (expected[1] == 'x' || expected[1] == 'X');
    const double a = std::strtod(actual.c_str(), &end1);
    const double e = hex ? static_cast<double>(std::strtoll(expected.c_str(), &end2, 16))
                         : std::strtod(expected.c_str(), &end2);
    return !actual.empty() && !expected.empty() && *end1 == '\0' && *end2 == '\0' && a == e;
}

int eventNamed(const std::string &name) {
    if (name == "commit") return EVENT_COMMIT;
    if (name == "rightclick") return EVENT_RIGHT_CLICK;
    if (name == "leftclick") return EVENT_LEFT_CLICK;
    if (name == "doubleclick") return EVENT_LEFT_DOUBLE_CLICK;
    if (name == "close") return EVENT_CLOSE;
    if (name == "tick") return EVENT_TIMER_TICK;
    return EVENT_NONE;
}

}  // namespace

ScriptRunner::ScriptRunner(HeadlessFrontend &frontend, std::ostream &out) : frontend_(frontend), out_(out) {}

bool ScriptRunner::load(const std::string &path, std::string &error) {
    std::ifstream in(path);
    if (!in) {
        error = path + ": cannot read the script";
        return false;
    }
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    setLines(std::move(lines), path);
    return true;
}

void ScriptRunner::setLines(std::vector<std::string> lines, std::string name) {
    lines_ = std::move(lines);
    // Messages name the script by its file name, so transcripts do not depend on where it lies.
    const auto slash = name.rfind('/');
    name_ = slash == std::string::npos ? std::move(name) : name.substr(slash + 1);
    next_ = 0;
}

void ScriptRunner::fail(const std::string &what) {
    out_ << name_ << ":" << current_ + 1 << ": " << what << std::endl;
    std::cout.flush();
    std::cerr.flush();
    // Workers or a half-finished command may still run: leave without unwinding them.
    _exit(2);
}

void ScriptRunner::step() {
    if (quitting_) return;
    while (next_ < lines_.size()) {
        current_ = next_++;
        std::string line = trim(lines_[current_]);
        if (line.empty() || line[0] == '#') continue;
        std::string error;
        if (!run(line, error)) fail(error);
        return;
    }
    quitting_ = true;
    if (quit_) quit_();
}

bool ScriptRunner::waitMs(double ms) {
    const double until = vcc::clock::nowMs() + ms;
    for (;;) {
        ProcessSystemEvents();
        const double left = until - vcc::clock::nowMs();
        if (left <= 0) return true;
        vcc::clock::sleepMs(std::min(left, 5.0));
    }
}

bool ScriptRunner::run(const std::string &line, std::string &error) {
    const auto [verb, rest] = split(line);
    Target target;

    if (verb == "commit" || verb == "rightclick" || verb == "leftclick" || verb == "doubleclick") {
        if (!resolve(rest, target, error)) return false;
        if (!deliver(target, eventNamed(verb))) out_ << "note: " << rest << " is dimmed or hidden; " << verb << " dropped" << std::endl;
        return true;
    }
    if (verb == "set" || verb == "put") {
        const auto [name, value] = split(rest);
        if (!resolve(name, target, error)) return false;
        if (!target.control) {
            error = name + " is not a control";
            return false;
        }
        if (verb == "put") return programSet(target, value, error);
        if (!target.attribute.empty()) {
            error = "set changes a value as a user would; use put for " + name;
            return false;
        }
        if (!userSet(target, value, error)) {
            if (!error.empty()) return false;
            out_ << "note: " << name << " is dimmed or hidden; set dropped" << std::endl;
        }
        return true;
    }
    if (verb == "call") {
        const auto [name, eventName] = split(rest);
        if (!resolve(name, target, error)) return false;
        const int event = eventNamed(eventName);
        if (event == EVENT_NONE) {
            error = "unknown event '" + eventName + "'";
            return false;
        }
        Model::instance().call(target.panel, target.control, event);
        return true;
    }
    if (verb == "key" || verb == "type") {
        const auto [name, keys] = split(rest);
        if (!resolve(name, target, error)) return false;
        std::vector<int> codes;
        if (verb == "type") {
            for (unsigned char ch : keys) codes.push_back(ch);
        } else if (keys == "ENTER") {
            codes.push_back(VAL_ENTER_VKEY);
        } else if (keys == "DELETE") {
            codes.push_back(VAL_BACKSPACE_VKEY);
        } else if (keys.size() == 1) {
            codes.push_back(static_cast<unsigned char>(keys[0]));
        } else if (keys.empty()) {
            codes.push_back(' ');
        } else {
            error = "unknown key '" + keys + "'";
            return false;
        }
        for (int code : codes)
            if (!deliver(target, EVENT_KEYPRESS, code)) {
                out_ << "note: " << name << " is dimmed or hidden; key dropped" << std::endl;
                break;
            }
        return true;
    }
    if (verb == "close") {
        if (!resolve(rest, target, error)) return false;
        if (!deliver(Target{target.panel, 0, ""}, EVENT_CLOSE)) out_ << "note: " << rest << " is hidden; close dropped" << std::endl;
        return true;
    }
    if (verb == "answer") {
        const auto [kind, path] = split(rest);
        PopupAnswer answer;
        if (kind == "file" && !path.empty()) {
            answer.kind = PopupAnswer::Kind::File;
            answer.path = path;
        } else if (kind == "proposed") {
            answer.kind = PopupAnswer::Kind::Proposed;
        } else if (kind == "cancel") {
            answer.kind = PopupAnswer::Kind::Cancel;
        } else if (kind == "ok") {
            answer.kind = PopupAnswer::Kind::Ok;
        } else {
            error = "unknown answer '" + rest + "'";
            return false;
        }
        frontend_.queueAnswer(answer);
        return true;
    }
    if (verb == "wait") {
        char *end = nullptr;
        const double ms = std::strtod(rest.c_str(), &end);
        // NaN and infinity would never come to an end.
        if (rest.empty() || *end != '\0' || !std::isfinite(ms) || ms < 0) {
            error = "wait takes milliseconds";
            return false;
        }
        return waitMs(ms);
    }
    if (verb == "print") {
        if (!resolve(rest, target, error)) return false;
        out_ << rest << " = " << read(target) << std::endl;
        return true;
    }
    if (verb == "expect") {
        const auto [name, expected] = split(rest);
        if (!resolve(name, target, error)) return false;
        const std::string actual = read(target);
        if (!sameValue(actual, expected)) {
            ++failed_;
            out_ << name_ << ":" << current_ + 1 << ": expect " << name << " " << expected << " failed: it is "
                 << actual << std::endl;
        }
        return true;
    }
    if (verb == "sim") {
        if (!sim_) {
            error = "no simulated camera in this run";
            return false;
        }
        return sim_(words(rest), error);
    }
    error = "unknown script line '" + line + "'";
    return false;
}

}  // namespace vcc::ui::headless
