// The engineering access lock: the password panel with its masked entry, and the switch from
// the single-model panel to the full engineering window. There is no way back.
#include <cctype>
#include <cstdio>
#include <cstring>

#include "MainUir.h"
#include "app/BusyState.h"
#include "app/Main.h"
#include "app/ModelProfiles.h"
#include "ui/CallbackRegistry.h"
#include "ui/UserInterface.h"

namespace {

constexpr char kAccessPassword[] = "KestrelOrbitFox";
constexpr size_t kEntrySize = 32;
// What was really typed; the field itself only ever holds asterisks.
char gHiddenEntry[kEntrySize + 1];

constexpr int kGrey = MakeColor(192, 192, 192);
constexpr int kGreen = MakeColor(128, 192, 96);
constexpr int kOrange = MakeColor(255, 192, 0);

void OpenLock() {
    gAccessFlag = 1;
    DiscardPanel(gPanels.peT77K);

    const int tab = EasyTab_ConvertFromCanvas(gPanels.main, MAIN_TABS);
    int *firstRow[] = {&gPanels.pvInfo, &gPanels.ae, &gPanels.awb, &gPanels.iq,
                       &gPanels.ptzfAbs, &gPanels.ptzfRel, &gPanels.others};
    const int firstIds[] = {PNL_PVINFO, PNL_AE, PNL_AWB, PNL_IQ, PNL_PTZFABS, PNL_PTZFREL, PNL_OTHERS, 0};
    int *secondRow[] = {&gPanels.service, &gPanels.cateFb, &gPanels.peT77K};
    const int secondIds[] = {PNL_SERVICE, PNL_CATEFB, PNL_PET77K, 0};
    // The sheets replace the panels loaded at start-up; those stay loaded but unused.
    EasyTab_LoadPanels(gPanels.main, tab, 1, "Main.uir", firstIds, firstRow);
    EasyTab_LoadPanels(gPanels.main, tab, 2, "Main.uir", secondIds, secondRow);
    for (int *sheet : firstRow) EasyTab_SetTabAttribute(gPanels.main, tab, *sheet, EASYTAB_TAB_ATTR_COLOR, kGrey);
    EasyTab_SetTabAttribute(gPanels.main, tab, gPanels.service, EASYTAB_TAB_ATTR_COLOR, kGreen);
    EasyTab_SetTabAttribute(gPanels.main, tab, gPanels.cateFb, EASYTAB_TAB_ATTR_COLOR, kGreen);
    EasyTab_SetTabAttribute(gPanels.main, tab, gPanels.peT77K, EASYTAB_TAB_ATTR_COLOR, kOrange);
    EasyTab_SetAttribute(gPanels.main, tab, EASYTAB_ATTR_ACTIVE_COLOR, MakeColor(128, 0, 255));
    EasyTab_SetAttribute(gPanels.main, tab, EASYTAB_ATTR_FRAME_COLOR, VAL_BLACK);
    EasyTab_SetAttribute(gPanels.main, tab, EASYTAB_ATTR_OPTION, 1);

    // The new PvInfo sheet shows the versions the start-up read, as the replaced panel did.
    ShowVersionFields();
    ConfigureForModelDisconnected();

    for (int control : {MAIN_PWR_CTRL_METHOD, MAIN_REFRESH_ALL, MAIN_INI_LOAD, MAIN_INI_SAVE, MAIN_INI_APPLY,
                        MAIN_INI_LABEL})
        SetCtrlAttribute(gPanels.main, control, ATTR_VISIBLE, 0);
    SetCtrlAttribute(gPanels.main, MAIN_MODEL, ATTR_DIMMED, 1);

    SetCtrlAttribute(gPanels.service, SERVICE_MACHINE_SERIAL, ATTR_VISIBLE, 0);
    static_assert(SERVICE_SERIAL_16 == SERVICE_SERIAL_1 + 15, "the serial fields stand in a row");
    for (int i = 0; i < 16; ++i) SetCtrlAttribute(gPanels.service, SERVICE_SERIAL_1 + i, ATTR_VISIBLE, 0);
    for (int control : {SERVICE_EEPROM2_K, SERVICE_EEPROM_ADDR, SERVICE_EEPROM_DATA, SERVICE_EEPROM_OP})
        SetCtrlAttribute(gPanels.service, control, ATTR_VISIBLE, 0);
    SetCtrlAttribute(gPanels.service, SERVICE_CATE_ORBVIS, ATTR_DIMMED, 1);
    SetCtrlAttribute(gPanels.cateFb, CATEFB_CATE_FUNCTION_WR, ATTR_DIMMED, 1);

    PreparePeT77KPanel(gPanels.peT77K);
    SetCtrlVal(gPanels.main, MAIN_MODEL, 2);
    DisplayPanel(gPanels.main);

    SetCtrlAttribute(gPanels.peT77K, PET77K_ADVANCE, ATTR_CALLBACK_FUNCTION_POINTER, 0);
    SetCtrlAttribute(gPanels.peT77K, PET77K_ADVANCE, ATTR_VISIBLE, 0);
    SetCtrlAttribute(gPanels.main, MAIN_ADVANCE, ATTR_CALLBACK_FUNCTION_POINTER, 0);
    SetCtrlAttribute(gPanels.main, MAIN_ADVANCE, ATTR_VISIBLE, 0);
    char title[256];
    SingleModelTitle(title);
    EasyTab_SetTabAttribute(gPanels.main, tab, gPanels.peT77K, EASYTAB_TAB_ATTR_LABEL_TEXT, title);
}

}  // namespace

int Password_Callback(int panel, int control, int event, void *, int key, int) {
    if (event != EVENT_KEYPRESS) return 0;
    char field[kEntrySize + 1] = "";
    GetCtrlVal(panel, control, field);
    const size_t typed = std::strlen(field);
    const char asterisks[] = "********************************";

    if (key < 0x80 && std::isalnum(key)) {
        if (typed == 0) std::memset(gHiddenEntry, 0, sizeof gHiddenEntry);
        if (typed >= kEntrySize) return 0;
        gHiddenEntry[typed] = static_cast<char>(key);
        char shown[kEntrySize + 1];
        std::snprintf(shown, sizeof shown, "%.*s", static_cast<int>(typed + 1), asterisks);
        SetCtrlVal(panel, control, shown);
    } else if (key == VAL_ENTER_VKEY) {
        HidePanel(panel);
        const bool accepted = typed == std::strlen(kAccessPassword) &&
                              std::strncmp(gHiddenEntry, kAccessPassword, std::strlen(kAccessPassword)) == 0;
        if (accepted) OpenLock();
        SetCtrlVal(panel, control, "");
    } else if (key == VAL_BACKSPACE_VKEY) {
        if (typed == 0) return 0;
        gHiddenEntry[typed - 1] = '\0';
        char shown[kEntrySize + 1];
        std::snprintf(shown, sizeof shown, "%.*s", static_cast<int>(typed - 1), asterisks);
        SetCtrlVal(panel, control, shown);
    }
    return 0;
}
VCC_REGISTER_CALLBACK(Password_Callback);
