// The tab control the engineering window is built from: a canvas becomes a control holding
// rows of sheet panels; front-ends draw the rows of tabs and the active sheet inside it.
#include "ui/UiModel.h"
#include "ui/UserInterface.h"

using vcc::ui::Control;
using vcc::ui::Model;

int EasyTab_ConvertFromCanvas(int panel, int canvas) {
    return Model::instance().locked([&](Model &m) {
        Control *c = m.control(panel, canvas);
        if (!c || (c->style != CTRL_CANVAS && c->style != CTRL_TAB)) return -1;
        c->style = CTRL_TAB;
        m.touch();
        return canvas;
    });
}

int EasyTab_LoadPanels(int panel, int tabCtrl, int row, const char *fileName, const int *resourceIds, int **handles) {
    if (row < 1 || !resourceIds) return -1;
    for (int i = 0; resourceIds[i] != 0; ++i) {
        const int sheet = LoadPanel(panel, fileName, resourceIds[i]);
        if (sheet < 0) return sheet;
        if (handles && handles[i]) *handles[i] = sheet;
        const bool ok = Model::instance().locked([&](Model &m) {
            Control *tab = m.control(panel, tabCtrl);
            auto *p = m.panel(sheet);
            if (!tab || tab->style != CTRL_TAB || !p) return false;
            p->parentControl = tabCtrl;
            p->visible = true;
            // Sheets are laid out inside the tab control, below its rows of tabs.
            if (static_cast<int>(tab->tabRows.size()) < row) tab->tabRows.resize(row);
            tab->tabRows[row - 1].push_back(sheet);
            tab->tabLabels[sheet] = p->title.empty() ? p->name : p->title;
            if (!tab->activeSheet) tab->activeSheet = sheet;
            m.touch();
            return true;
        });
        if (!ok) return -1;
    }
    return 0;
}

int EasyTab_SetAttribute(int panel, int tabCtrl, int attribute, int value) {
    return Model::instance().locked([&](Model &m) {
        Control *tab = m.control(panel, tabCtrl);
        if (!tab) return -1;
        switch (attribute) {
        case EASYTAB_ATTR_ACTIVE_COLOR: tab->onColor = value; break;
        case EASYTAB_ATTR_FRAME_COLOR: tab->offColor = value; break;
        case EASYTAB_ATTR_OPTION: tab->intValue = value; break;
        default: return -1;
        }
        m.touch();
        return 0;
    });
}

int EasyTab_SetTabAttribute(int panel, int tabCtrl, int sheetPanel, int attribute, int value) {
    return Model::instance().locked([&](Model &m) {
        Control *tab = m.control(panel, tabCtrl);
        if (!tab || attribute != EASYTAB_TAB_ATTR_COLOR) return -1;
        tab->tabColors[sheetPanel] = value;
        m.touch();
        return 0;
    });
}

int EasyTab_SetTabAttribute(int panel, int tabCtrl, int sheetPanel, int attribute, const char *value) {
    return Model::instance().locked([&](Model &m) {
        Control *tab = m.control(panel, tabCtrl);
        if (!tab || attribute != EASYTAB_TAB_ATTR_LABEL_TEXT) return -1;
        tab->tabLabels[sheetPanel] = value ? value : "";
        m.touch();
        return 0;
    });
}
