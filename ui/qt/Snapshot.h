// A copy of what the widgets show, taken with the model locked and applied with it released:
// widget setters may emit signals whose handlers post into the model, so no widget is ever
// touched while the model's mutex is held. Text-box contents are not copied; their views
// read the few visible lines themselves.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "ui/UiModel.h"

namespace vcc::ui::qt {

struct ControlState {
    int id = 0;
    int style = 0;
    std::string name, label, text, callbackName;
    bool keyDriven = false;
    int x = 0, y = 0, width = 0, height = 0;
    bool dimmed = false, visible = true, bound = false;
    long long intValue = 0;
    double doubleValue = 0.0;
    bool isDouble = false;
    double minValue = 0.0, maxValue = 0.0;
    int format = 0;
    std::vector<RingItem> items;
    int ringIndex = -1;
    int textColor = 0, backColor = 0, onColor = 0, offColor = 0;
    bool hasTextColor = false, hasBackColor = false;
    std::string onText, offText;
    int maxLength = 0;
    std::vector<std::vector<int>> tabRows;
    std::map<int, std::string> tabLabels;
    std::map<int, int> tabColors;
    int activeSheet = 0;
    std::shared_ptr<const CanvasImage> image;

    // Everything but the value: a change here re-lays out the widget.
    bool sameLook(const ControlState &o) const {
        return style == o.style && label == o.label && x == o.x && y == o.y && width == o.width &&
               height == o.height && dimmed == o.dimmed && visible == o.visible && textColor == o.textColor &&
               backColor == o.backColor && onColor == o.onColor && offColor == o.offColor &&
               hasTextColor == o.hasTextColor && hasBackColor == o.hasBackColor && onText == o.onText &&
               offText == o.offText && minValue == o.minValue && maxValue == o.maxValue && format == o.format &&
               maxLength == o.maxLength && isDouble == o.isDouble && bound == o.bound;
    }
    bool sameValue(const ControlState &o) const {
        return intValue == o.intValue && doubleValue == o.doubleValue && text == o.text &&
               ringIndex == o.ringIndex && activeSheet == o.activeSheet && image == o.image;
    }
    bool sameItems(const ControlState &o) const {
        if (items.size() != o.items.size()) return false;
        for (size_t i = 0; i < items.size(); ++i)
            if (items[i].label != o.items[i].label || items[i].value != o.items[i].value) return false;
        return true;
    }
    bool sameTabs(const ControlState &o) const {
        return tabRows == o.tabRows && tabLabels == o.tabLabels && tabColors == o.tabColors;
    }
};

struct PanelState {
    int handle = 0;
    std::string name, title;
    int width = 0, height = 0, top = 0, left = 0;
    bool visible = false;
    int backColor = 0;
    int parentPanel = 0, parentControl = 0;
    int activeControl = 0;
    // Controls are copied only for panels on screen (and on request for all): a hidden
    // panel's widgets catch up when it is shown, which itself changes the model.
    bool hasControls = false;
    std::vector<ControlState> controls;
};

inline ControlState snapshotControl(const Control &c) {
    ControlState s;
    s.id = c.id;
    s.style = c.style;
    s.name = c.name;
    s.callbackName = c.callbackName;
    s.keyDriven = c.keyDriven;
    s.label = c.label;
    s.text = c.textValue;
    s.x = c.x;
    s.y = c.y;
    s.width = c.width;
    s.height = c.height;
    s.dimmed = c.dimmed;
    s.visible = c.visible;
    s.bound = c.callback != nullptr;
    s.intValue = c.intValue;
    s.doubleValue = c.doubleValue;
    s.isDouble = c.isDouble;
    s.minValue = c.minValue;
    s.maxValue = c.maxValue;
    s.format = c.format;
    if (c.style == CTRL_RING) s.items = c.items;
    s.ringIndex = c.ringIndex;
    s.textColor = c.textColor;
    s.backColor = c.backColor;
    s.onColor = c.onColor;
    s.offColor = c.offColor;
    s.hasTextColor = c.hasTextColor;
    s.hasBackColor = c.hasBackColor;
    s.onText = c.onText;
    s.offText = c.offText;
    s.maxLength = c.maxLength;
    if (c.style == CTRL_CANVAS) s.image = c.image;
    if (c.style == CTRL_TAB) {
        s.tabRows = c.tabRows;
        s.tabLabels = c.tabLabels;
        s.tabColors = c.tabColors;
        s.activeSheet = c.activeSheet;
    }
    return s;
}

inline bool shownLocked(Model &m, const Panel *p) {
    for (int depth = 0; p && depth < 8; ++depth) {
        if (!p->visible) return false;
        if (!p->parentPanel) return true;
        p = m.panel(p->parentPanel);
    }
    return false;
}

// Every panel of the model, in load order.
inline std::vector<PanelState> takeSnapshot(Model &model, bool allControls) {
    const std::vector<int> order = model.panelHandles();
    return model.locked([&](Model &m) {
        std::vector<PanelState> out;
        out.reserve(order.size());
        for (int handle : order) {
            const Panel *p = m.panel(handle);
            if (!p) continue;
            PanelState s;
            s.handle = handle;
            s.name = p->name;
            s.title = p->title;
            s.width = p->width;
            s.height = p->height;
            s.top = p->top;
            s.left = p->left;
            s.visible = p->visible;
            s.backColor = p->backColor;
            s.parentPanel = p->parentPanel;
            s.parentControl = p->parentControl;
            s.activeControl = p->activeControl;
            s.hasControls = allControls || shownLocked(m, p);
            if (s.hasControls) {
                s.controls.reserve(p->controls.size());
                for (const auto &c : p->controls) s.controls.push_back(snapshotControl(c));
            }
            out.push_back(std::move(s));
        }
        return out;
    });
}

}  // namespace vcc::ui::qt
