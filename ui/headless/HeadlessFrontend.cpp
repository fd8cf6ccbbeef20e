#include "ui/headless/HeadlessFrontend.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>

namespace vcc::ui::headless {

void HeadlessFrontend::pump(bool wait, double timeoutMs) {
    if (!wait) return;
    if (idle) {
        idle();
        return;
    }
    vcc::clock::sleepMs(std::min(timeoutMs, 10.0));
}

bool HeadlessFrontend::takeAnswer(const std::string &what, PopupAnswer &answer) {
    popups.push_back(what);
    if (popupLog_) *popupLog_ << what << std::endl;
    if (answers_.empty()) {
        if (onUnanswered) onUnanswered(what);
        return false;
    }
    answer = answers_.front();
    answers_.pop_front();
    return true;
}

FileAnswer HeadlessFrontend::fileSelect(const FileRequest &request) {
    const std::string what = "popup file \"" + request.title + "\" \"" + request.proposedName + "\" \"" +
                             request.directory + "\"";
    PopupAnswer answer;
    if (!takeAnswer(what, answer)) return {};
    FileAnswer result;
    switch (answer.kind) {
    case PopupAnswer::Kind::Cancel:
    case PopupAnswer::Kind::Ok: return {};
    case PopupAnswer::Kind::Proposed: result.path = request.directory + "/" + request.proposedName; break;
    case PopupAnswer::Kind::File: result.path = answer.path; break;
    }
    std::error_code ec;
    result.result = std::filesystem::is_regular_file(result.path, ec) ? VAL_EXISTING_FILE_SELECTED
                                                                      : VAL_NEW_FILE_SELECTED;
    return result;
}

void HeadlessFrontend::message(const std::string &title, const std::string &text) {
    PopupAnswer answer;
    takeAnswer("popup message \"" + title + "\" \"" + text + "\"", answer);
}

// ---- a user's hands -----------------------------------------------------------------------------------

namespace {
const char *const kAttributes[] = {"dimmed", "visible", "label", "max", "min", "title", "width", "height",
                                   "items", "enabled", "interval"};

bool isAttribute(const std::string &word) {
    return std::find(std::begin(kAttributes), std::end(kAttributes), word) != std::end(kAttributes);
}

bool parseNumber(const std::string &text, double &value) {
    if (text.empty()) return false;
    char *end = nullptr;
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X'))
        value = static_cast<double>(std::strtoll(text.c_str(), &end, 16));
    else
        value = std::strtod(text.c_str(), &end);
    // NaN and infinity fit no control: they would turn into whatever an integer cast makes of them.
    return end && *end == '\0' && std::isfinite(value);
}

std::string formatNumber(double v) {
    char buf[64];
    if (v == static_cast<double>(static_cast<long long>(v)))
        std::snprintf(buf, sizeof buf, "%lld", static_cast<long long>(v));
    else
        std::snprintf(buf, sizeof buf, "%g", v);
    return buf;
}
}  // namespace

bool resolve(const std::string &name, Target &target, std::string &error) {
    Model &m = Model::instance();
    target = {};
    std::string rest = name;
    // A trailing attribute word.
    const auto lastDot = rest.rfind('.');
    if (lastDot != std::string::npos && isAttribute(rest.substr(lastDot + 1))) {
        target.attribute = rest.substr(lastDot + 1);
        rest.resize(lastDot);
    }
    if (rest.find("_Callback") != std::string::npos) {
        auto [panel, control] = m.findByCallback(rest);
        if (!panel) {
            error = "no control bound to " + rest;
            return false;
        }
        target.panel = panel;
        target.control = control;
        return true;
    }
    const auto dot = rest.find('.');
    target.panel = m.findPanel(rest.substr(0, dot));
    if (!target.panel) {
        error = "no panel " + rest.substr(0, dot);
        return false;
    }
    if (dot == std::string::npos) return true;
    target.control = m.findControl(target.panel, rest.substr(dot + 1));
    if (!target.control) {
        error = "no control " + rest;
        return false;
    }
    return true;
}

bool reachable(const Target &target) {
    return Model::instance().locked([&](Model &m) {
        Panel *p = m.panel(target.panel);
        for (Panel *q = p; q; q = q->parentPanel ? m.panel(q->parentPanel) : nullptr) {
            if (!q->visible) return false;
            if (!q->parentPanel) break;
        }
        if (!p) return false;
        if (!target.control) return true;
        Control *c = p->control(target.control);
        return c && c->visible && !c->dimmed;
    });
}

bool deliver(const Target &target, int event, int data1, int data2) {
    if (!reachable(target)) return false;
    Model::instance().post({target.panel, target.control, event, data1, data2});
    ProcessSystemEvents();
    return true;
}

// Attributes a script may set directly: state, captions, ranges and the timer's rhythm.
bool setAttribute(const Target &target, const std::string &value, std::string &error) {
    const std::string &a = target.attribute;
    if (a == "label") return SetCtrlAttribute(target.panel, target.control, ATTR_LABEL_TEXT, value.c_str()) >= 0;
    double number = 0;
    if (!parseNumber(value, number)) {
        error = "not a number: " + value;
        return false;
    }
    int attribute = 0;
    if (a == "dimmed") attribute = ATTR_DIMMED;
    else if (a == "visible") attribute = ATTR_VISIBLE;
    else if (a == "enabled") attribute = ATTR_ENABLED;
    else if (a == "max") return SetCtrlAttribute(target.panel, target.control, ATTR_MAX_VALUE, number) >= 0;
    else if (a == "min") return SetCtrlAttribute(target.panel, target.control, ATTR_MIN_VALUE, number) >= 0;
    else if (a == "interval") return SetCtrlAttribute(target.panel, target.control, ATTR_INTERVAL, number) >= 0;
    else {
        error = "cannot set " + a;
        return false;
    }
    return SetCtrlAttribute(target.panel, target.control, attribute, static_cast<int>(number)) >= 0;
}

bool programSet(const Target &target, const std::string &value, std::string &error) {
    if (!target.attribute.empty()) return setAttribute(target, value, error);
    int style = 0;
    GetCtrlAttribute(target.panel, target.control, ATTR_CTRL_STYLE, &style);
    if (style == CTRL_STRING || style == CTRL_TEXT_MSG || style == CTRL_TEXT_BOX) {
        if (style == CTRL_TEXT_BOX) ResetTextBox(target.panel, target.control, "");
        SetCtrlVal(target.panel, target.control, value.c_str());
        return true;
    }
    double number = 0;
    if (!parseNumber(value, number)) {
        error = "not a number: " + value;
        return false;
    }
    if (SetCtrlVal(target.panel, target.control, number) < 0) {
        error = "no item of value " + value;
        return false;
    }
    return true;
}

bool userSet(const Target &target, const std::string &value, std::string &error) {
    if (!target.attribute.empty()) {
        error = "a user changes values, not attributes";
        return false;
    }
    if (!reachable(target)) return false;
    int style = 0;
    GetCtrlAttribute(target.panel, target.control, ATTR_CTRL_STYLE, &style);
    std::string coerced = value;
    if (style == CTRL_NUMERIC) {
        // A user cannot type past a numeric control's range: it coerces.
        double number = 0, lo = 0, hi = 0;
        if (!parseNumber(value, number)) {
            error = "not a number: " + value;
            return false;
        }
        GetCtrlAttribute(target.panel, target.control, ATTR_MIN_VALUE, &lo);
        GetCtrlAttribute(target.panel, target.control, ATTR_MAX_VALUE, &hi);
        coerced = formatNumber(std::clamp(number, lo, hi));
    }
    if (!programSet(target, coerced, error)) return false;
    Model::instance().post({target.panel, target.control, EVENT_COMMIT, 0, 0});
    ProcessSystemEvents();
    return true;
}

std::string read(const Target &target) {
    char text[4096] = "";
    int number = 0;
    double real = 0;
    const std::string &a = target.attribute;
    if (!target.control) {
        if (a == "title") {
            GetPanelAttribute(target.panel, ATTR_TITLE, text);
            return text;
        }
        if (a == "width" || a == "height") {
            GetPanelAttribute(target.panel, a == "width" ? ATTR_WIDTH : ATTR_HEIGHT, &number);
            return std::to_string(number);
        }
        GetPanelAttribute(target.panel, ATTR_VISIBLE, &number);
        return std::to_string(number);
    }
    if (a == "dimmed" || a == "visible") {
        GetCtrlAttribute(target.panel, target.control, a == "dimmed" ? ATTR_DIMMED : ATTR_VISIBLE, &number);
        return std::to_string(number);
    }
    if (a == "label") {
        GetCtrlAttribute(target.panel, target.control, ATTR_LABEL_TEXT, text);
        return text;
    }
    if (a == "max" || a == "min" || a == "interval") {
        GetCtrlAttribute(target.panel, target.control,
                         a == "max" ? ATTR_MAX_VALUE : a == "min" ? ATTR_MIN_VALUE : ATTR_INTERVAL, &real);
        return formatNumber(real);
    }
    if (a == "items" || a == "enabled") {
        GetCtrlAttribute(target.panel, target.control, a == "items" ? ATTR_NUM_ITEMS : ATTR_ENABLED, &number);
        return std::to_string(number);
    }
    int style = 0;
    GetCtrlAttribute(target.panel, target.control, ATTR_CTRL_STYLE, &style);
    if (style == CTRL_STRING || style == CTRL_TEXT_MSG || style == CTRL_FRAME || style == CTRL_TEXT_BOX) {
        GetCtrlVal(target.panel, target.control, text);
        return text;
    }
    GetCtrlVal(target.panel, target.control, &real);
    return formatNumber(real);
}

}  // namespace vcc::ui::headless
