// The entry routine: loads the panels, greets on the console, starts the camera library and
// shows the single-model panel; the full engineering window waits behind the password.
#include "app/Main.h"

#include <cstdio>
#include <cstring>
#include <iterator>

#include "MainUir.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "app/ModelProfiles.h"
#include "device/Connection.h"
#include "ui/CallbackRegistry.h"
#include "ui/UirFile.h"
#include "ui/UserInterface.h"

const char kTitleText[] = "Video Camera Control AP - v1.51  2018.09.28, Orbvis Technology Corp.";
int gAccessFlag = 0;
// The library's version as read at start-up, for every PvInfo panel that shows it.
static char gLibraryVersion[257];
char gSettingsPath[1024];
char gSnapshotPath[1024];

namespace {

// Panels in resource order, each with the slot that keeps its handle.
constexpr int PanelHandles::*kPanelSlots[] = {
    &PanelHandles::main,    &PanelHandles::password, &PanelHandles::video,   &PanelHandles::pvInfo,
    &PanelHandles::others,  &PanelHandles::iq,       &PanelHandles::ae,      &PanelHandles::awb,
    &PanelHandles::ptzfAbs, &PanelHandles::ptzfRel,  &PanelHandles::sf,      &PanelHandles::pf,
    &PanelHandles::service, &PanelHandles::cateFb,   &PanelHandles::peT77K,  &PanelHandles::awbCali,
};
static_assert(std::size(kPanelSlots) == 16);

// Engineering items the single-model panel keeps out of sight.
constexpr int kPeT77KHidden[] = {
    PET77K_DIP1,        PET77K_DIP2,      PET77K_TEST_PATTERN,  PET77K_MICROPHONE_CTRL, PET77K_EEPROM2_K,
    PET77K_EEPROM_ADDR, PET77K_EEPROM_DATA, PET77K_EEPROM_OP,   PET77K_ENG_GROUP,       PET77K_EEPROM_GROUP,
    PET77K_CLEAR_ERR,   PET77K_GET_ERR,   PET77K_VIDEO_CAMERA_CONNECT,
};
constexpr int kPeT77KFileNames[] = {PET77K_FW_FILE_ISP, PET77K_FW_FILE_USB, PET77K_FW_FILE_AUDIO};

}  // namespace

int GetUiVersion(char version[256]) {
    const int at = FindPattern(kTitleText, 0, -1, " - v", 0, 0);
    if (at < 0) {
        std::snprintf(version, 256, "x.xx");
        return 0;
    }
    std::snprintf(version, 256, "%.5s", kTitleText + at + 4);
    return 1;
}

void SingleModelTitle(char title[256]) {
    const char prefix[] = "Video Camera Control AP - ";
    const int at = FindPattern(kTitleText, 0, -1, prefix, 0, 0);
    if (at < 0)
        std::snprintf(title, 256, "QM-T77K FW Update AP vX.OO");
    else
        std::snprintf(title, 256, "QM-T77K FW Update AP %.5s", kTitleText + at + std::strlen(prefix));
}

static void HidePeT77KEngineeringItems(int panel) {
    for (int control : kPeT77KHidden) SetCtrlAttribute(panel, control, ATTR_VISIBLE, 0);
    SetCtrlAttribute(panel, PET77K_APP_BL, ATTR_VISIBLE, 1);
    SetCtrlVal(panel, PET77K_APP_BL, 0);
    SetCtrlAttribute(panel, PET77K_REFRESH_PE_T77_K_PNL, ATTR_DIMMED, 1);
    SetCtrlAttribute(panel, PET77K_MACHINE_SERIAL, ATTR_DIMMED, 1);
}

namespace {
// Captions and texts of the single-model panel, at start-up and again at the unlock.
void LabelPeT77KPanel(int panel) {
    if (CtrlCallbackPtr factoryReset = vcc::ui::findCallback("FactoryRst_Callback"))
        SetCtrlAttribute(panel, PET77K_SYSTEM_RST, ATTR_CALLBACK_FUNCTION_POINTER, factoryReset);
    SetCtrlAttribute(panel, PET77K_SYSTEM_RST, ATTR_LABEL_TEXT, "RESET");
    SetCtrlAttribute(panel, PET77K_MACHINE_SERIAL, ATTR_LABEL_TEXT, "MACHINE S/N");
    SetCtrlAttribute(panel, PET77K_FW_UPDATE, ATTR_LABEL_TEXT, "UPDATE");
    SetCtrlAttribute(panel, PET77K_FW_VERSION, ATTR_LABEL_TEXT, "FW Version");
    SetCtrlVal(panel, PET77K_DEVICE_NAME, "USB Device Name");
    SetCtrlVal(panel, PET77K_CONN_TEXT, "  XXX  ");
    SetCtrlVal(panel, PET77K_UPDATE_MSG, "FW Update Message");
    for (int control : kPeT77KFileNames) SetCtrlVal(panel, control, "File Name");
}
}  // namespace

void ShowVersionFields() {
    char version[256] = "";
    GetUiVersion(version);
    SetCtrlVal(gPanels.pvInfo, PVINFO_UI_VERSION, version);
    SetCtrlVal(gPanels.pvInfo, PVINFO_LIB_VERSION, gLibraryVersion);
}

void ConfigureForModelDisconnected() {
    ConfigureModelPanels();
    ResetConnectionState(1);
    char title[256];
    SingleModelTitle(title);
    SetPanelAttribute(gPanels.peT77K, ATTR_TITLE, title);
}

void PreparePeT77KPanel(int panel) {
    HidePeT77KEngineeringItems(panel);
    LabelPeT77KPanel(panel);
}

int VccMain(int argc, char *argv[]) {
    if (VccStartUp(argc, argv) != 0) return -1;
    DisplayPanel(gPanels.peT77K);
    RunUserInterface();
    return 0;
}

int VccStartUp(int argc, char *argv[]) {
    (void)argc;
    if (InitCVIRTE(nullptr, argv, nullptr) == 0) return -1;
    vcc::ui::expectUirSignature(kMainUirSignature);
    for (size_t i = 0; i < std::size(kPanelSlots); ++i) {
        const int handle = LoadPanel(0, "Main.uir", static_cast<int>(i) + 1);
        if (handle < 0) return -1;
        gPanels.*kPanelSlots[i] = handle;
    }

    char dir[1024] = "";
    GetProjectDir(dir);
    for (char *path : {gSettingsPath, gSnapshotPath, gLogPath, gMessagePath}) std::snprintf(path, 1024, "%s", dir);
    SetConsoleTarget(gPanels.main, MAIN_CONSOLE);
    gAccessFlag = 0;

    SetPanelAttribute(gPanels.main, ATTR_TITLE, kTitleText);
    LibInitialize();

    char version[256] = "";
    GetUiVersion(version);
    ConsolePrintf(">AP version : UI = %s\n", version);
    LibGetVersion(gLibraryVersion, 256);
    ConsolePrintf(">AP version : Library = %s\n", gLibraryVersion);
    ShowVersionFields();

    ConfigureForModelDisconnected();
    SetCtrlAttribute(gPanels.main, MAIN_PWR_CTRL_METHOD, ATTR_DIMMED, 1);
    SetCtrlAttribute(gPanels.main, MAIN_MODEL, ATTR_DIMMED, 1);
    HidePeT77KEngineeringItems(gPanels.peT77K);
    SetCtrlVal(gPanels.main, MAIN_MODEL, 2);
    LabelPeT77KPanel(gPanels.peT77K);
    return 0;
}

int MainQuit_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_CLOSE) return 0;
    DeviceExit();
    StartStopLog(0);
    QuitUserInterface(0);
    return 0;
}
VCC_REGISTER_CALLBACK(MainQuit_Callback);

int Advance_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_COMMIT) return 0;
    DisplayPanel(gPanels.password);
    return 0;
}
VCC_REGISTER_CALLBACK(Advance_Callback);

// The flash tools and the calibration panel are windows of their own, opened from the service
// sheet and hidden again when closed: closing them must not quit the tool.
int OpenSfPnl_Callback(int, int, int event, void *, int, int) {
    if (event == EVENT_COMMIT) DisplayPanel(gPanels.sf);
    return 0;
}
VCC_REGISTER_CALLBACK(OpenSfPnl_Callback);

int OpenPfPnl_Callback(int, int, int event, void *, int, int) {
    if (event == EVENT_COMMIT) DisplayPanel(gPanels.pf);
    return 0;
}
VCC_REGISTER_CALLBACK(OpenPfPnl_Callback);

int OpenAwbCaliPnl_Callback(int, int, int event, void *, int, int) {
    if (event == EVENT_COMMIT) DisplayPanel(gPanels.awbCali);
    return 0;
}
VCC_REGISTER_CALLBACK(OpenAwbCaliPnl_Callback);

int HidePnl_Callback(int panel, int, int event, void *, int, int) {
    if (event == EVENT_CLOSE) HidePanel(panel);
    return 0;
}
VCC_REGISTER_CALLBACK(HidePnl_Callback);
