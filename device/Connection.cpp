#include "device/Connection.h"

#include <cstring>

#include "MainUir.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "commands/FunctionList.h"
#include "device/UvcLink.h"
#include "ui/CallbackRegistry.h"
#include "ui/UserInterface.h"

char gDeviceName[65] = "Video Camera X.X";

namespace {

constexpr unsigned short kPowerOn = 0xAA;
constexpr unsigned short kPowerOff = 0x55;
constexpr int kPowerRounds = 83;
constexpr int kPowerPollMs = 300;

bool inTransition(unsigned short power) { return power >= 0xF0 && power <= 0xF2; }

// Callbacks of other parts of the tool are reached by name, so this file does not depend on
// whether they are built in.
void callByName(const char *name, int panel, int control, int event) {
    if (CtrlCallbackPtr callback = vcc::ui::findCallback(name)) callback(panel, control, event, nullptr, 0, 0);
}

void quitPreviewIfOn() {
    if (IsPreviewOn()) callByName("PreviewQuit_Callback", gPanels.video, 0, EVENT_CLOSE);
}

int indicator(int panel, int control) {
    int value = 0;
    GetCtrlVal(panel, control, &value);
    return value;
}

void connect() {
    if (IsDeviceConnected()) return;
    ConsolePrintf(">LIB : GET [DEVICE EXIST]\n");
    if (!LibDeviceExists()) {
        ConsolePrintf("> - device not exist\n");
        quitPreviewIfOn();
        ConsolePrintf(">LIB : SET [CLOSE]\n");
        LibRelease();
        ResetConnectionState(0);
        return;
    }
    SetCtrlVal(gPanels.main, MAIN_CONNECTED, 1);
    ConsolePrintf(">LIB : GET [DEVICE NAME]\n");
    LibGetDeviceName(gDeviceName, sizeof gDeviceName);
    SetCtrlVal(gPanels.pvInfo, PVINFO_DEVICE_NAME, gDeviceName);
    // A flash tool is rewriting the camera: it only needs the connection back.
    if (indicator(gPanels.sf, SF_RUNNING) || indicator(gPanels.pf, PF_RUNNING)) return;
    PowerUpDown_Callback(gPanels.main, MAIN_POWER_UP_DOWN, EVENT_RIGHT_CLICK, nullptr, 0, 0);
    DimCameraControls(IsPowerOn() ? 0 : 1);
    callByName("RefreshAll_Callback", gPanels.main, MAIN_REFRESH_ALL, EVENT_COMMIT);
    EnableBaseControls();
}

void disconnect() {
    if (!IsDeviceConnected()) return;
    ConsolePrintf(">LIB : SET [DISCONNECT DEVICE]\n");
    quitPreviewIfOn();
    ConsolePrintf(">LIB : SET [CLOSE]\n");
    LibRelease();
    ResetConnectionState(0);
}

// Powers the camera to the switch's position. Returns the command's success.
int powerTo(int wanted) {
    if (!wanted) DimCameraControls(1);
    ConsolePrintf(">CMND : GET [POWER]\n");
    unsigned short current = 0;
    if (!GetCommand("POWER", &current)) return 0;

    int ok = 1;
    if (current == kPowerOn) {
        if (wanted) {
            DimCameraControls(0);
        } else {
            ConsolePrintf(">CMND : SET [POWER] = OFF\n");
            ok = SetCommand("POWER", kPowerOff, 0);
            if (!ok) {
                EnableBaseControls();
                return 0;
            }
            // Powering down ends the camera's session: close it and open it again.
            VideoCameraConnect_Callback(gPanels.main, MAIN_VIDEO_CAMERA_CONNECT, EVENT_LEFT_DOUBLE_CLICK, nullptr, 0, 0);
            for (int i = 0; i < 10; ++i) {
                Sleep(100);
                ProcessDrawEvents();
                ProcessSystemEvents();
            }
            VideoCameraConnect_Callback(gPanels.main, MAIN_VIDEO_CAMERA_CONNECT, EVENT_RIGHT_CLICK, nullptr, 0, 0);
            quitPreviewIfOn();
            DimCameraControls(1);
        }
    } else if (current == kPowerOff) {
        DimCameraControls(1);
        if (wanted) {
            ConsolePrintf(">CMND : SET [POWER] = ON\n");
            ok = SetCommand("POWER", kPowerOn);
            if (ok) {
                ok = ReadPowerState();
                if (IsPowerOn()) DimCameraControls(0);
            }
        }
    } else {
        ok = 0;
    }
    EnableBaseControls();
    return ok;
}

}  // namespace

// ---- library wrappers ------------------------------------------------------------------------------

void LibInitialize() {
    ConsolePrintf(">LIB : SET [INITIALIZE]\n");
    InitializeDirectX();
}

int LibGetVersion(char *buffer, int size) {
    if (!buffer || size < 5) return 0;
    std::memset(buffer, 0, static_cast<size_t>(size));
    GetSDKVersion(buffer);
    return 1;
}

int LibDeviceExists() {
    unsigned char present = 0;
    DetectCaptureDeviceEx(&present);
    return present == 1;
}

int LibGetDeviceName(char *buffer, int size) {
    if (!buffer || size < 33) return 0;
    std::memset(buffer, 0, static_cast<size_t>(size));
    GetCameraDeviceName(buffer);
    return 1;
}

void LibRelease() { ReleaseControlObject(); }
void LibShowCameraProperties() { ShowCameraPropertyDialog(0); }
void LibShowStreamProperties() { ShowStreamPropertyDialog(0); }

void DeviceExit() {
    if (IsPreviewOn()) {
        ConsolePrintf(">LIB : SET [PREVIEW STOP]\n");
        StopPreviewVideo();
        UninitializePreviewVideo();
        ReleaseDirectXObject();
    }
    ConsolePrintf(">LIB : SET [CLOSE]\n");
    LibRelease();
}

// ---- power -----------------------------------------------------------------------------------------

int ReadPowerState() {
    ConsolePrintf(">CMND : GET [POWER]\n");
    unsigned short power = 0;
    for (int round = 0; round < kPowerRounds; ++round) {
        if (!GetCommand("POWER", &power)) return 0;
        Sleep(kPowerPollMs);
        if (!inTransition(power)) break;
    }
    if (power == kPowerOn) SetCtrlVal(gPanels.main, MAIN_POWER_UP_DOWN, 1);
    else if (power == kPowerOff) SetCtrlVal(gPanels.main, MAIN_POWER_UP_DOWN, 0);
    else return 0;
    return 1;
}

// ---- callbacks ---------------------------------------------------------------------------------------

int VideoCameraConnect_Callback(int, int, int event, void *, int, int) {
    if (event == EVENT_RIGHT_CLICK) connect();
    else if (event == EVENT_LEFT_DOUBLE_CLICK) disconnect();
    return 0;
}
VCC_REGISTER_CALLBACK(VideoCameraConnect_Callback);

// Both power callbacks act on their own main-panel control whatever they are handed, since
// refreshes call them directly.
int PowerUpDown_Callback(int, int, int event, void *, int, int) {
    if ((event != EVENT_COMMIT && event != EVENT_RIGHT_CLICK) || !IsDeviceConnected()) return 0;
    const int panel = gPanels.main, control = MAIN_POWER_UP_DOWN;
    SetCommandBusy(panel, control, 1);
    int ok;
    if (event == EVENT_COMMIT) {
        int wanted = 0;
        GetCtrlVal(panel, control, &wanted);
        ok = powerTo(wanted);
    } else {
        ok = ReadPowerState();
    }
    SetCommandBusy(panel, control, 0);
    if (!ok) SetErrorIndicator();
    return 0;
}
VCC_REGISTER_CALLBACK(PowerUpDown_Callback);

int PwrCtrlMethod_Callback(int, int, int event, void *, int, int) {
    if ((event != EVENT_COMMIT && event != EVENT_RIGHT_CLICK) || !IsDeviceConnected()) return 0;
    const int panel = gPanels.main, control = MAIN_PWR_CTRL_METHOD;
    SetCommandBusy(panel, control, 1);
    int ok;
    if (event == EVENT_COMMIT) {
        int index = -1, value = 0;
        char label[256] = "";
        GetCtrlIndex(panel, control, &index);
        if (index >= 0) GetLabelFromIndex(panel, control, index, label);
        GetCtrlVal(panel, control, &value);
        ConsolePrintf(">CMND : SET [PWR. METHOD] = %s\n", label);
        ok = SetCommand("PWR. METHOD", static_cast<unsigned short>(value));
        DimCameraControls(1);
    } else {
        ConsolePrintf(">CMND : GET [PWR. METHOD]\n");
        unsigned short method = 0;
        ok = GetCommand("PWR. METHOD", &method);
        if (ok) {
            SetCtrlVal(panel, control, static_cast<int>(method));
            ok = method == kPowerOn || method == kPowerOff;
        }
    }
    SetCommandBusy(panel, control, 0);
    if (!ok) SetErrorIndicator();
    return 0;
}
VCC_REGISTER_CALLBACK(PwrCtrlMethod_Callback);
