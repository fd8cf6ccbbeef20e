// The CVI-like calls over the model. Every call locks the model for its own length only;
// callbacks run after the lock is released.
#include "ui/UserInterface.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iostream>

#include "ui/CallbackRegistry.h"
#include "ui/UiModel.h"
#include "ui/UirFile.h"

using vcc::ui::Control;
using vcc::ui::Model;
using vcc::ui::Panel;

namespace {

// Copies text into a caller's buffer, cut at its size and always terminated.
void copyOut(std::string_view text, char *out, size_t size) {
    if (!out || size == 0) return;
    const size_t n = std::min(text.size(), size - 1);
    std::memcpy(out, text.data(), n);
    out[n] = '\0';
}

constexpr int kNoSuchPanel = -1;
constexpr int kNoSuchControl = -2;
constexpr int kBadValue = -3;

// Runs fn on one control; a change (not a read) bumps the revision a view watches.
enum class Access { Read, Write };
template <Access access = Access::Write, typename Fn> int withControl(int panel, int control, Fn &&fn) {
    return Model::instance().locked([&](Model &m) -> int {
        if (!m.panel(panel)) return kNoSuchPanel;
        Control *c = m.control(panel, control);
        if (!c) return kNoSuchControl;
        const int result = fn(*c);
        if constexpr (access == Access::Write) m.touch();
        return result;
    });
}

template <Access access = Access::Write, typename Fn> int withPanel(int panel, Fn &&fn) {
    return Model::instance().locked([&](Model &m) -> int {
        Panel *p = m.panel(panel);
        if (!p) return kNoSuchPanel;
        const int result = fn(*p);
        if constexpr (access == Access::Write) m.touch();
        return result;
    });
}

int setNumber(Control &c, double value) {
    switch (c.style) {
    case CTRL_RING:
        for (size_t i = 0; i < c.items.size(); ++i)
            if (c.items[i].value == static_cast<int>(value)) {
                c.ringIndex = static_cast<int>(i);
                c.intValue = c.items[i].value;
                return 0;
            }
        return kBadValue;
    case CTRL_LED:
    case CTRL_SWITCH:
    case CTRL_CHECK_BOX:
        c.intValue = value != 0;
        return 0;
    case CTRL_STRING:
    case CTRL_TEXT_MSG: {
        char text[64];
        std::snprintf(text, sizeof text, "%lld", static_cast<long long>(value));
        c.textValue = text;
        return 0;
    }
    case CTRL_TEXT_BOX:
        return kBadValue;
    default:
        if (c.isDouble)
            c.doubleValue = value;
        else
            c.intValue = static_cast<long long>(value);
        return 0;
    }
}

double numberOf(const Control &c) {
    if (c.style == CTRL_STRING || c.style == CTRL_TEXT_MSG) return std::atof(c.textValue.c_str());
    return c.isDouble ? c.doubleValue : static_cast<double>(c.intValue);
}

}  // namespace

// ---- start-up and panels -------------------------------------------------------------------------

int InitCVIRTE(void *, char *[], void *) {
    Model::instance().markUiThread();
    return 1;
}

int LoadPanel(int parentPanel, const char *fileName, int panelResourceId) {
    std::string path = fileName ? fileName : "";
    if (!path.empty() && path[0] != '/') {
        char dir[1024];
        GetProjectDir(dir);
        path = std::string(dir) + "/" + path;
    }
    std::string error;
    auto file = vcc::ui::loadUirFile(path, error);
    if (!file) {
        std::cerr << error << "\n";
        return -1;
    }
    if (panelResourceId < 1 || panelResourceId > static_cast<int>(file->panels.size())) {
        std::cerr << path << ": no panel with resource id " << panelResourceId << "\n";
        return -1;
    }
    auto panel = std::make_unique<Panel>(file->panels[panelResourceId - 1]);
    panel->parentPanel = parentPanel;
    panel->callback = panel->callbackName.empty() ? nullptr : vcc::ui::findCallback(panel->callbackName);
    for (auto &c : panel->controls)
        c.callback = c.callbackName.empty() ? nullptr : vcc::ui::findCallback(c.callbackName);
    return Model::instance().addPanel(std::move(panel));
}

int DisplayPanel(int panel) {
    return withPanel(panel, [](Panel &p) {
        p.visible = true;
        return 0;
    });
}

int HidePanel(int panel) {
    return withPanel(panel, [](Panel &p) {
        p.visible = false;
        return 0;
    });
}

int DiscardPanel(int panel) {
    std::vector<int> sheets;
    Model::instance().locked([&](Model &m) {
        for (const auto &[handle, p] : m.panels())
            if (p->parentPanel == panel) sheets.push_back(handle);
        return 0;
    });
    for (int sheet : sheets) DiscardPanel(sheet);
    if (!Model::instance().locked([&](Model &m) { return m.panel(panel) != nullptr; })) return kNoSuchPanel;
    Model::instance().removePanel(panel);
    return 0;
}

namespace {
int gActivePanel = 0;
}
int SetActivePanel(int panel) {
    gActivePanel = panel;
    return 0;
}
int GetActivePanel() { return gActivePanel; }

int SetPanelAttribute(int panel, int attribute, int value) {
    return withPanel(panel, [&](Panel &p) {
        switch (attribute) {
        case ATTR_WIDTH: p.width = value; return 0;
        case ATTR_HEIGHT: p.height = value; return 0;
        case ATTR_TOP: p.top = value; return 0;
        case ATTR_LEFT: p.left = value; return 0;
        case ATTR_VISIBLE: p.visible = value != 0; return 0;
        case ATTR_BACKCOLOR: p.backColor = value; return 0;
        default: return kBadValue;
        }
    });
}

int SetPanelAttribute(int panel, int attribute, const char *value) {
    return withPanel(panel, [&](Panel &p) {
        if (attribute != ATTR_TITLE) return kBadValue;
        p.title = value ? value : "";
        return 0;
    });
}

int GetPanelAttribute(int panel, int attribute, int *value) {
    return withPanel<Access::Read>(panel, [&](Panel &p) {
        switch (attribute) {
        case ATTR_WIDTH: *value = p.width; return 0;
        case ATTR_HEIGHT: *value = p.height; return 0;
        case ATTR_TOP: *value = p.top; return 0;
        case ATTR_LEFT: *value = p.left; return 0;
        case ATTR_VISIBLE: *value = p.visible; return 0;
        case ATTR_BACKCOLOR: *value = p.backColor; return 0;
        case ATTR_PANEL_FIRST_CTRL: *value = p.controls.empty() ? 0 : 1; return 0;
        default: return kBadValue;
        }
    });
}

int GetPanelAttribute(int panel, int attribute, char *value, size_t size) {
    return withPanel<Access::Read>(panel, [&](Panel &p) {
        if (attribute != ATTR_TITLE) return kBadValue;
        copyOut(p.title, value, size);
        return 0;
    });
}

// ---- values ------------------------------------------------------------------------------------------

int SetCtrlVal(int panel, int control, int value) { return SetCtrlVal(panel, control, static_cast<long long>(value)); }
int SetCtrlVal(int panel, int control, unsigned int value) {
    return SetCtrlVal(panel, control, static_cast<long long>(value));
}
int SetCtrlVal(int panel, int control, long long value) {
    return withControl(panel, control, [&](Control &c) { return setNumber(c, static_cast<double>(value)); });
}
int SetCtrlVal(int panel, int control, double value) {
    return withControl(panel, control, [&](Control &c) { return setNumber(c, value); });
}
int SetCtrlVal(int panel, int control, const char *value) {
    const char *text = value ? value : "";
    return withControl(panel, control, [&](Control &c) {
        switch (c.style) {
        case CTRL_TEXT_BOX: c.textBox.append(text); return 0;
        case CTRL_STRING:
        case CTRL_TEXT_MSG:
        case CTRL_FRAME: c.textValue = text; return 0;
        default: return setNumber(c, std::atof(text));
        }
    });
}

int GetCtrlVal(int panel, int control, int *value) {
    return withControl<Access::Read>(panel, control, [&](Control &c) {
        *value = static_cast<int>(std::llround(numberOf(c)));
        return 0;
    });
}
int GetCtrlVal(int panel, int control, unsigned int *value) {
    int v = 0;
    const int r = GetCtrlVal(panel, control, &v);
    *value = static_cast<unsigned int>(v);
    return r;
}
int GetCtrlVal(int panel, int control, unsigned short *value) {
    int v = 0;
    const int r = GetCtrlVal(panel, control, &v);
    *value = static_cast<unsigned short>(v);
    return r;
}
int GetCtrlVal(int panel, int control, short *value) {
    int v = 0;
    const int r = GetCtrlVal(panel, control, &v);
    *value = static_cast<short>(v);
    return r;
}
int GetCtrlVal(int panel, int control, unsigned char *value) {
    int v = 0;
    const int r = GetCtrlVal(panel, control, &v);
    *value = static_cast<unsigned char>(v);
    return r;
}
int GetCtrlVal(int panel, int control, double *value) {
    return withControl<Access::Read>(panel, control, [&](Control &c) {
        *value = numberOf(c);
        return 0;
    });
}
int GetCtrlVal(int panel, int control, char *value, size_t size) {
    return withControl<Access::Read>(panel, control, [&](Control &c) {
        if (c.style == CTRL_TEXT_BOX)
            copyOut(c.textBox.text(), value, size);
        else if (c.style == CTRL_RING && c.ringIndex >= 0)
            copyOut(c.items[c.ringIndex].label, value, size);
        else
            copyOut(c.textValue, value, size);
        return 0;
    });
}

// ---- attributes --------------------------------------------------------------------------------------

int SetCtrlAttribute(int panel, int control, int attribute, int value) {
    return withControl(panel, control, [&](Control &c) {
        switch (attribute) {
        case ATTR_DIMMED: c.dimmed = value != 0; return 0;
        case ATTR_VISIBLE: c.visible = value != 0; return 0;
        case ATTR_MIN_VALUE: c.minValue = value; return 0;
        case ATTR_MAX_VALUE: c.maxValue = value; return 0;
        case ATTR_DFLT_VALUE: c.defaultValue = value; return 0;
        case ATTR_FORMAT: c.format = value; return 0;
        case ATTR_TEXT_COLOR: c.textColor = value; c.hasTextColor = true; return 0;
        case ATTR_TEXT_BGCOLOR: c.backColor = value; c.hasBackColor = true; return 0;
        case ATTR_ON_COLOR: c.onColor = value; return 0;
        case ATTR_OFF_COLOR: c.offColor = value; return 0;
        case ATTR_ENABLED: c.enabled = value != 0; return 0;
        case ATTR_INTERVAL: c.interval = value; return 0;
        case ATTR_MAX_ENTRY_LENGTH: c.maxLength = value; return 0;
        case ATTR_CTRL_VAL: return setNumber(c, value);
        case ATTR_CALLBACK_FUNCTION_POINTER:
            // Only a null pointer arrives here (a literal 0): unbinding.
            c.callback = nullptr;
            return 0;
        default: return kBadValue;
        }
    });
}

int SetCtrlAttribute(int panel, int control, int attribute, double value) {
    return withControl(panel, control, [&](Control &c) {
        switch (attribute) {
        case ATTR_MIN_VALUE: c.minValue = value; return 0;
        case ATTR_MAX_VALUE: c.maxValue = value; return 0;
        case ATTR_DFLT_VALUE: c.defaultValue = value; return 0;
        case ATTR_INTERVAL: c.interval = value; return 0;
        default: return kBadValue;
        }
    });
}

int SetCtrlAttribute(int panel, int control, int attribute, const char *value) {
    return withControl(panel, control, [&](Control &c) {
        if (attribute != ATTR_LABEL_TEXT) return kBadValue;
        c.label = value ? value : "";
        return 0;
    });
}

int SetCtrlAttribute(int panel, int control, int attribute, CtrlCallbackPtr value) {
    return withControl(panel, control, [&](Control &c) {
        if (attribute != ATTR_CALLBACK_FUNCTION_POINTER) return kBadValue;
        c.callback = value;
        return 0;
    });
}

int SetCtrlAttribute(int panel, int control, int attribute, void *value) {
    return withControl(panel, control, [&](Control &c) {
        if (attribute == ATTR_CALLBACK_DATA) {
            c.callbackData = value;
            return 0;
        }
        if (attribute == ATTR_CALLBACK_FUNCTION_POINTER && value == nullptr) {
            c.callback = nullptr;
            return 0;
        }
        return kBadValue;
    });
}

int GetCtrlAttribute(int panel, int control, int attribute, int *value) {
    if (attribute == ATTR_NEXT_CTRL) {
        return withPanel<Access::Read>(panel, [&](Panel &p) {
            if (!p.control(control)) return kNoSuchControl;
            *value = control < static_cast<int>(p.controls.size()) ? control + 1 : 0;
            return 0;
        });
    }
    return withControl<Access::Read>(panel, control, [&](Control &c) {
        switch (attribute) {
        case ATTR_DIMMED: *value = c.dimmed; return 0;
        case ATTR_VISIBLE: *value = c.visible; return 0;
        case ATTR_MIN_VALUE: *value = static_cast<int>(c.minValue); return 0;
        case ATTR_MAX_VALUE: *value = static_cast<int>(c.maxValue); return 0;
        case ATTR_DFLT_VALUE: *value = static_cast<int>(c.defaultValue); return 0;
        case ATTR_FORMAT: *value = c.format; return 0;
        case ATTR_TEXT_COLOR: *value = c.textColor; return 0;
        case ATTR_TEXT_BGCOLOR: *value = c.backColor; return 0;
        case ATTR_ON_COLOR: *value = c.onColor; return 0;
        case ATTR_OFF_COLOR: *value = c.offColor; return 0;
        case ATTR_CTRL_STYLE:
        case ATTR_CTRL_TYPE: *value = c.style; return 0;
        case ATTR_TOTAL_LINES: *value = static_cast<int>(c.textBox.lineCount()); return 0;
        case ATTR_ENABLED: *value = c.enabled; return 0;
        case ATTR_MAX_ENTRY_LENGTH: *value = c.maxLength; return 0;
        case ATTR_NUM_ITEMS: *value = static_cast<int>(c.items.size()); return 0;
        case ATTR_CTRL_VAL: *value = static_cast<int>(numberOf(c)); return 0;
        default: return kBadValue;
        }
    });
}

int GetCtrlAttribute(int panel, int control, int attribute, double *value) {
    return withControl<Access::Read>(panel, control, [&](Control &c) {
        switch (attribute) {
        case ATTR_MIN_VALUE: *value = c.minValue; return 0;
        case ATTR_MAX_VALUE: *value = c.maxValue; return 0;
        case ATTR_DFLT_VALUE: *value = c.defaultValue; return 0;
        case ATTR_INTERVAL: *value = c.interval; return 0;
        default: return kBadValue;
        }
    });
}

int GetCtrlAttribute(int panel, int control, int attribute, char *value, size_t size) {
    return withControl<Access::Read>(panel, control, [&](Control &c) {
        if (attribute != ATTR_LABEL_TEXT) return kBadValue;
        copyOut(c.label, value, size);
        return 0;
    });
}

// ---- rings ---------------------------------------------------------------------------------------------

int ClearListCtrl(int panel, int control) {
    return withControl(panel, control, [](Control &c) {
        c.items.clear();
        c.ringIndex = -1;
        c.intValue = 0;
        return 0;
    });
}

int InsertListItem(int panel, int control, int index, const char *label, int value) {
    return withControl(panel, control, [&](Control &c) {
        const int count = static_cast<int>(c.items.size());
        const int at = index < 0 || index > count ? count : index;
        c.items.insert(c.items.begin() + at, {label ? label : "", value});
        if (c.ringIndex < 0) {
            c.ringIndex = 0;
            c.intValue = c.items[0].value;
        } else if (at <= c.ringIndex) {
            ++c.ringIndex;
        }
        return 0;
    });
}

int GetNumListItems(int panel, int control, int *count) {
    return withControl<Access::Read>(panel, control, [&](Control &c) {
        *count = static_cast<int>(c.items.size());
        return 0;
    });
}

int GetCtrlIndex(int panel, int control, int *index) {
    return withControl<Access::Read>(panel, control, [&](Control &c) {
        *index = c.ringIndex;
        return 0;
    });
}

int SetCtrlIndex(int panel, int control, int index) {
    return withControl(panel, control, [&](Control &c) {
        if (index < 0 || index >= static_cast<int>(c.items.size())) return kBadValue;
        c.ringIndex = index;
        c.intValue = c.items[index].value;
        return 0;
    });
}

int GetLabelFromIndex(int panel, int control, int index, char *label, size_t size) {
    return withControl<Access::Read>(panel, control, [&](Control &c) {
        if (index < 0 || index >= static_cast<int>(c.items.size())) return kBadValue;
        copyOut(c.items[index].label, label, size);
        return 0;
    });
}

int GetValueFromIndex(int panel, int control, int index, int *value) {
    return withControl<Access::Read>(panel, control, [&](Control &c) {
        if (index < 0 || index >= static_cast<int>(c.items.size())) return kBadValue;
        *value = c.items[index].value;
        return 0;
    });
}

// ---- text boxes -----------------------------------------------------------------------------------------

int ResetTextBox(int panel, int control, const char *text) {
    return withControl(panel, control, [&](Control &c) {
        c.textBox.clear();
        if (text && *text) c.textBox.append(text);
        return 0;
    });
}

int GetNumTextBoxLines(int panel, int control, int *lines) {
    return withControl<Access::Read>(panel, control, [&](Control &c) {
        *lines = static_cast<int>(c.textBox.lineCount());
        return 0;
    });
}

int GetTextBoxLine(int panel, int control, int line, char *text, size_t size) {
    return withControl<Access::Read>(panel, control, [&](Control &c) {
        if (line < 0 || line >= static_cast<int>(c.textBox.lineCount())) return kBadValue;
        copyOut(c.textBox.line(static_cast<size_t>(line)), text, size);
        return 0;
    });
}

// ---- focus, drawing, event loop ---------------------------------------------------------------------------

int SetActiveCtrl(int panel, int control) {
    return withPanel(panel, [&](Panel &p) {
        if (!p.control(control)) return kNoSuchControl;
        p.activeControl = control;
        return 0;
    });
}

int GetActiveCtrl(int panel) {
    return Model::instance().locked([&](Model &m) {
        Panel *p = m.panel(panel);
        return p ? p->activeControl : kNoSuchPanel;
    });
}

int ProcessDrawEvents() {
    Model &m = Model::instance();
    if (m.isUiThread()) m.frontend()->draw();
    return 0;
}

int ProcessSystemEvents() {
    Model &m = Model::instance();
    if (!m.isUiThread()) return 0;
    m.frontend()->pump(false, 0);
    m.frontend()->draw();
    m.dispatchPending();
    return 0;
}

int RunUserInterface() {
    Model &m = Model::instance();
    ++m.runDepth;
    while (!m.quitRequested) {
        m.frontend()->pump(true, m.msToNextTick());
        m.frontend()->draw();
        m.dispatchPending();
    }
    m.quitRequested = false;
    --m.runDepth;
    return m.quitCode;
}

int QuitUserInterface(int returnCode) {
    Model &m = Model::instance();
    m.quitRequested = true;
    m.quitCode = returnCode;
    m.frontend()->quit();
    return 0;
}

// ---- popups ---------------------------------------------------------------------------------------------------

int FileSelectPopup(const char *defaultDirectory, const char *defaultFileSpec, const char *fileTypeList,
                    const char *title, int, int, int restrictExtension, int allowCancel, int,
                    char pathName[1024]) {
    vcc::ui::FileRequest request;
    request.directory = defaultDirectory ? defaultDirectory : "";
    request.proposedName = defaultFileSpec ? defaultFileSpec : "";
    request.filter = fileTypeList ? fileTypeList : "";
    request.title = title ? title : "";
    request.restrictExtension = restrictExtension != 0;
    request.allowCancel = allowCancel != 0;
    const vcc::ui::FileAnswer answer = Model::instance().fileSelect(request);
    if (answer.result == VAL_NO_FILE_SELECTED || answer.path.size() > 1023) {
        if (pathName) pathName[0] = '\0';
        return VAL_NO_FILE_SELECTED;
    }
    copyOut(answer.path, pathName, 1024);
    return answer.result;
}

int MessagePopup(const char *title, const char *message) {
    Model::instance().message(title ? title : "", message ? message : "");
    return 0;
}
