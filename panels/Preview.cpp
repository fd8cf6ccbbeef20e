#include "panels/Preview.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <vector>

#include "MainUir.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "device/Connection.h"
#include "device/UvcLink.h"
#include "panels/DeviceInfo.h"
#include "ui/CallbackRegistry.h"
#include "ui/Clock.h"
#include "ui/UserInterface.h"

char gLastSnapPath[1024] = "";

namespace {

constexpr int kUsbInfoDelayMs = 200;
constexpr int kOutputFormatDelayMs = 1500;
constexpr int kAaRefreshDelayMs = 1000;
constexpr int kRawFormat = 2;
constexpr int kRgbFormat = 3;
// Frames are fetched at most this often in real time, whatever the timer's (scaled) rhythm.
constexpr auto kFramePeriod = std::chrono::milliseconds(40);

// Read-backs of other panels are reached by name, so the preview builds without them.
void callByName(const char *name, int panel, int control, int event) {
    if (CtrlCallbackPtr callback = vcc::ui::findCallback(name)) callback(panel, control, event, nullptr, 0, 0);
}

int switchValue(int panel, int control) {
    int value = 0;
    GetCtrlVal(panel, control, &value);
    return value;
}

// The stream just set up (or changed by its property page) as the camera reports it.
void readStreamBack() {
    Sleep(kUsbInfoDelayMs);
    callByName("USBInfo_Callback", gPanels.pvInfo, PVINFO_USB_INFO, EVENT_RIGHT_CLICK);
    Sleep(kOutputFormatDelayMs);
    callByName("OutRaw_Callback", gPanels.others, OTHERS_OUT_RAW, EVENT_RIGHT_CLICK);
}

void startPreview(int snapshots) {
    ConsolePrintf(snapshots ? ">LIB : SET [PREVIEW START] - Snap Enable\n" : ">LIB : SET [PREVIEW START] - Snap Disable\n");
    GetDirectXObject();
    InitializePreviewVideo_SetStreamFormat(0, 0, static_cast<unsigned char>(snapshots ? 1 : 0));
    StartPreviewVideo();
    // The library of the original platform opened its own video window; here the video
    // window panel is where the picture appears, and closing it stops the preview.
    DisplayPanel(gPanels.video);
    SetCtrlAttribute(gPanels.video, VIDEO_FRAME_TIMER, ATTR_ENABLED, 1);
    readStreamBack();
}

void stopPreview() {
    ConsolePrintf(">LIB : SET [PREVIEW STOP]\n");
    StopPreviewVideo();
    UninitializePreviewVideo();
    ReleaseDirectXObject();
    HidePanel(gPanels.video);
    CanvasDrawRgbImage(gPanels.video, VIDEO_IMAGE, 0, 0, nullptr);
}

const char *lastSnapPath() {
    // The program's own folder is the first starting place of the file dialog.
    if (gLastSnapPath[0] == '\0') GetProjectDir(gLastSnapPath);
    return gLastSnapPath;
}

int snapToFile(const char *extension, const char *filter, int (*capture)(const char *)) {
    int month = 0, day = 0, year = 0, hours = 0, minutes = 0, seconds = 0;
    GetSystemDate(&month, &day, &year);
    CVI_GetSystemTime(&hours, &minutes, &seconds);
    const char *prefix = gSerialNumber[0] != '\0' ? gSerialNumber : gDeviceName;
    char proposed[1024];
    std::snprintf(proposed, sizeof proposed, "%s_%04d-%02d-%02d_%02d-%02d-%02d.%s", prefix, year, month, day, hours,
                  minutes, seconds, extension);
    char path[1024] = "";
    const int chosen = FileSelectPopup(lastSnapPath(), proposed, filter, "File Name to Save", VAL_SAVE_BUTTON, 0, 1, 1,
                                       0, path);
    if (chosen == VAL_NO_FILE_SELECTED) return 0;
    capture(path);
    std::snprintf(gLastSnapPath, sizeof gLastSnapPath, "%s", path);
    return 1;
}

// The library's property pages appear as the tool's own message popups (a small dialog in the
// desktop front-end, a popup line in scripts).
void showPropertyPage(const char *title, const char *text) { MessagePopup(title, text); }
[[maybe_unused]] const bool gPageShowerInstalled = (UvcLinkSetPropertyPageShower(showPropertyPage), true);

}  // namespace

int PreviewOnOff_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_COMMIT || !IsDeviceConnected()) return 0;
    SetCommandBusy(gPanels.pvInfo, PVINFO_PREVIEW_ON_OFF, 1);
    // Without power (or the method that streams while powered down) the switch only moves.
    if (IsPowerOn() || IsPwrMethodAA()) {
        const int aa = IsPwrMethodAA();
        if (aa) DimCameraControls(1);
        const int on = IsPreviewOn();
        if (on)
            startPreview(switchValue(gPanels.pvInfo, PVINFO_SNAP_ENABLE) == 1);
        else
            stopPreview();
        if (aa) {
            Sleep(kAaRefreshDelayMs);
            callByName("RefreshAll_Callback", gPanels.main, MAIN_REFRESH_ALL, EVENT_COMMIT);
        }
        if (IsPreviewOn()) {
            EnablePreviewCaptureControls();
            DimSnapOption();
        } else {
            DimPreviewCaptureControls();
            EnableSnapOption();
        }
    }
    SetCommandBusy(gPanels.pvInfo, PVINFO_PREVIEW_ON_OFF, 0);
    return 0;
}
VCC_REGISTER_CALLBACK(PreviewOnOff_Callback);

int PreviewQuit_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_CLOSE) return 0;
    HidePanel(gPanels.video);
    SetCtrlVal(gPanels.pvInfo, PVINFO_PREVIEW_ON_OFF, 0);
    PreviewOnOff_Callback(gPanels.main, 0, EVENT_COMMIT, nullptr, 0, 0);
    return 0;
}
VCC_REGISTER_CALLBACK(PreviewQuit_Callback);

int PreviewFrame_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_TIMER_TICK) return 0;
    if (!IsPreviewOn()) {
        // Nothing to show until the next start enables the timer again.
        SetCtrlAttribute(gPanels.video, VIDEO_FRAME_TIMER, ATTR_ENABLED, 0);
        return 0;
    }
    static std::chrono::steady_clock::time_point last;
    const auto now = std::chrono::steady_clock::now();
    if (now - last < kFramePeriod) return 0;
    last = now;
    int width = 0, height = 0;
    // The canvas fills the video window: a picture of the window's size needs no scaling.
    GetPanelAttribute(gPanels.video, ATTR_WIDTH, &width);
    GetPanelAttribute(gPanels.video, ATTR_HEIGHT, &height);
    if (width < 1 || height < 1 || width > 4096 || height > 4096) return 0;
    static std::vector<unsigned char> rgb;
    rgb.resize(static_cast<size_t>(width) * height * 3);
    if (UvcLinkPreviewFrame(rgb.data(), width, height) < 0) return 0;
    CanvasDrawRgbImage(gPanels.video, VIDEO_IMAGE, width, height, rgb.data());
    return 0;
}
VCC_REGISTER_CALLBACK(PreviewFrame_Callback);

int CapturePin_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_COMMIT || !IsDeviceConnected()) return 0;
    SetCommandBusy(gPanels.pvInfo, PVINFO_CAPTURE_PIN, 1);
    LibShowStreamProperties();
    readStreamBack();
    SetCommandBusy(gPanels.pvInfo, PVINFO_CAPTURE_PIN, 0);
    return 0;
}
VCC_REGISTER_CALLBACK(CapturePin_Callback);

int CaptureFilter_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_COMMIT || !IsDeviceConnected()) return 0;
    SetCommandBusy(gPanels.pvInfo, PVINFO_CAPTURE_FILTER, 1);
    LibShowCameraProperties();
    SetCommandBusy(gPanels.pvInfo, PVINFO_CAPTURE_FILTER, 0);
    return 0;
}
VCC_REGISTER_CALLBACK(CaptureFilter_Callback);

int SnapRgbToFile() { return snapToFile("bmp", "*.bmp", CaptureRGBDataToFile); }
int SnapRawToFile() { return snapToFile("raw", "*.raw", CaptureRAWDataToFile); }

int Snap_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_COMMIT || !IsDeviceConnected()) return 0;
    SetCommandBusy(gPanels.pvInfo, PVINFO_SNAP, 1);
    if (IsPreviewOn()) {
        callByName("OutRaw_Callback", gPanels.others, OTHERS_OUT_RAW, EVENT_RIGHT_CLICK);
        int format = 0;
        GetCtrlVal(gPanels.others, OTHERS_OUT_RAW, &format);
        if (format == kRawFormat) {
            ConsolePrintf(">LIB : SET [SNAP RAW]\n");
            if (SnapRawToFile()) ConsolePrintf("> - PATH = %s \n\n", gLastSnapPath);
        } else if (format == kRgbFormat) {
            ConsolePrintf(">LIB : SET [SNAP RGB]\n");
            if (SnapRgbToFile()) ConsolePrintf("> - PATH = %s \n\n", gLastSnapPath);
        }
    }
    SetCommandBusy(gPanels.pvInfo, PVINFO_SNAP, 0);
    return 0;
}
VCC_REGISTER_CALLBACK(Snap_Callback);
