// The update sequence. Stages run in the order the camera needs them: the USB bridge first
// (the camera restarts into its new application afterwards), then the boot loader is entered
// once for the serial-flash images, ISP before AUDIO, and a final [PF RESET] starts whatever
// was written. Every end passes through the closing, so the controls always come back and the
// busy state is always released, whatever failed.
#include "firmware/UpdateSequence.h"

#include <cstdarg>
#include <cstdio>

#include "MainUir.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "commands/FunctionList.h"
#include "device/UvcLink.h"
#include "firmware/ImageWriters.h"
#include "firmware/PackageFiles.h"
#include "firmware/SunplusCamera.h"
#include "firmware/SunplusCameraApi.h"
#include "firmware/WorkerSlot.h"
#include "service/PeT77KPanel.h"
#include "ui/CallbackRegistry.h"
#include "ui/UserInterface.h"

namespace {

constexpr unsigned int kPassMs = 100;
constexpr unsigned short kEnterBootLoader = 0x5AA5;

// Estimates of each wait in tenths of a second; the waits for the workers are not limited by
// them, only the number shown is.
constexpr unsigned int kLibraryWriteCount = 400;
constexpr unsigned int kAppWriteCount = 1210;
constexpr unsigned int kIspWriteCount = 1500;
constexpr unsigned int kAudioWriteCount = 600;
constexpr unsigned int kReappearCount = 300;
constexpr unsigned int kEnterBlCount = 200;
constexpr unsigned int kIspSettleCount = 100;
constexpr unsigned int kRebootCount = 30;
constexpr unsigned int kReopenCount = 10;

int gEnterBlResult = 1;
long gPasses = 0;

enum class End { Done, FileInvalid, DeviceMissing, Failed };

void status(const char *format, ...) __attribute__((format(printf, 1, 2)));
void status(const char *format, ...) {
    char text[256];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    SetFwMessage(text);
}

// One wait of the sequence: the interface stays drawn and clickable through it.
void pass() {
    Sleep(kPassMs);
    ProcessDrawEvents();
    ProcessSystemEvents();
    ++gPasses;
}

// Past its estimate a count-down stays at 0 rather than wrapping.
void countDown(unsigned int &counter) {
    if (counter) --counter;
}

int cameraPresent() {
    unsigned char present = 0;
    DetectCaptureDeviceEx(&present);
    return present == 1;
}

// While a worker writes hundreds of blocks, their data bytes stay off the console.
void consoleDisplay(int on) {
    SetCtrlVal(gPanels.main, MAIN_MSG_EN, on);
    MsgEn_Callback(gPanels.main, MAIN_MSG_EN, EVENT_COMMIT, nullptr, 0, 0);
}

void dimSelection(int dimmed) {
    for (int control : {PET77K_FW_FILE_CHECK_BOX_USB, PET77K_FW_FILE_CHECK_BOX_ISP, PET77K_FW_FILE_CHECK_BOX_AUDIO,
                        PET77K_APP_BL})
        SetCtrlAttribute(gPanels.peT77K, control, ATTR_DIMMED, dimmed);
    SetCtrlAttribute(gPanels.main, MAIN_MSG_EN, ATTR_DIMMED, dimmed);
}

void disconnectKeepingVerdict() {
    PeT77K_VideoCameraConnect_Callback(gPanels.peT77K, PET77K_VIDEO_CAMERA_CONNECT, EVENT_LEFT_DOUBLE_CLICK, nullptr,
                                       0, kPeT77KKeepUpdateState);
}

// The camera has just left the bus and come back (or not): let go of the old connection,
// give the camera a second to settle, and open it again.
int reopenCamera() {
    ConsolePrintf(">LIB : SET [DISCONNECT DEVICE]\n");
    ConsolePrintf(">LIB : SET [CLOSE]\n");
    ReleaseControlObject();
    for (unsigned int counter = kReopenCount; counter >= 1; --counter) {
        status("waiting : %d", counter / 10);
        pass();
    }
    ConsolePrintf(">LIB : GET [DEVICE EXIST]\n");
    if (!cameraPresent()) {
        ConsolePrintf("> - device not exist\n");
        return 0;
    }
    SetCtrlVal(gPanels.main, MAIN_CONNECTED, 1);
    SetCtrlVal(gPanels.peT77K, PET77K_LAMP, 1);
    SetCtrlVal(gPanels.peT77K, PET77K_CONN_TEXT, "  OOO  ");
    return 1;
}

// A failed write of the command does not stop the update: the camera may have switched all
// the same. It only lights the error indicator at the end.
int enterBootLoader() {
    ConsolePrintf(">CMND : SET [USB APP ENTER BL]\n");
    gEnterBlResult = SetCommand("USB APP ENTER BL", kEnterBootLoader) && gEnterBlResult;
    for (unsigned int counter = kEnterBlCount;;) {
        status("FW update is now starting - enter BL : %d", counter / 10);
        pass();
        if (cameraPresent()) break;
        if (--counter == 0) break;
    }
    return reopenCamera();
}

// Starts a writer and waits for it, showing its count-down; true when it did not fail.
bool runWriter(WorkerSlot &slot, const char *message, unsigned int counter) {
    consoleDisplay(0);
    status("%s", message);
    if (!slot.start()) SetFwFail(1);
    while (!slot.done()) {
        pass();
        status("%s %u", message, counter / 10);
        countDown(counter);
    }
    slot.stop();
    return !FwFailed();
}

void showLibraryStatus(unsigned int &counter) {
    unsigned char code = 0, progress = 0;
    GetDownloadStatus(&code);
    switch (code) {
    case kSpcStatusInitializing: status("update USB [APP + BL]...initializing"); break;
    case kSpcStatusWriting:
        GetDownloadProgress(&progress);
        status("update USB [APP + BL]...%d", progress);
        break;
    case kSpcStatusWaiting:
    case kSpcStatusWaitingAgain:
        status("update USB [APP + BL]...waiting %u", counter / 10);
        countDown(counter);
        break;
    case kSpcStatusComplete: status("update USB [APP + BL]...complete"); break;
    case kSpcStatusUnexpected:
        status("update USB [APP + BL]...unexpected status (%d)", code);
        SetFwFail(1);
        break;
    default: break;  // the worker's own texts stay
    }
}

// The whole USB image through the vendor's library; true when it did not fail. An unexpected
// status seen on the way counts as a failure even when the library later reports success.
bool libraryWrite() {
    consoleDisplay(0);
    status("update USB [APP + BL]...");
    unsigned int counter = kLibraryWriteCount;
    if (!gUsbAppBlImageSlot.start()) SetFwFail(1);
    while (!gUsbAppBlImageSlot.done()) {
        showLibraryStatus(counter);
        pass();
    }
    gUsbAppBlImageSlot.stop();
    consoleDisplay(1);
    return !FwFailed();
}

void libraryWriteFailed() {
    ConsolePrintf("> - fw update fail\n");
    MessagePopup("Update BL Fail", "Please remove USB plug -> plug in, then try again");
}

void rebootAndDisconnect() {
    for (unsigned int counter = kRebootCount; counter >= 1; --counter) {
        status("FW update is done, wait for rebooting : %d", counter / 10);
        pass();
    }
    disconnectKeepingVerdict();
    status("FW is updated and rebooted");
}

End usbStage() {
    status("FW update is now starting...");
    int appAndBootLoader = 0;
    GetCtrlVal(gPanels.peT77K, PET77K_APP_BL, &appAndBootLoader);
    if (appAndBootLoader == 1) {
        if (!libraryWrite()) {
            libraryWriteFailed();
            status("update USB [APP + BL] fail");
            return End::Failed;
        }
    } else {
        if (!cameraPresent() || !enterBootLoader()) return End::DeviceMissing;
        const bool written = runWriter(gUsbAppImageSlot, "update USB [APP]...", kAppWriteCount);
        consoleDisplay(1);
        if (!written) {
            ConsolePrintf("> - fw update fail\n");
            status("update USB [APP] fail");
            return End::Failed;
        }
    }
    // The bridge restarts into its new application: wait for it, then open it again.
    for (unsigned int counter = kReappearCount;;) {
        status("update USB [APP]...final count down : %d", counter / 10);
        pass();
        if (cameraPresent()) break;
        if (--counter == 0) break;
    }
    status("re-connecting...");
    return reopenCamera() ? End::Done : End::DeviceMissing;
}

End ispStage() {
    const bool written = runWriter(gIspImageSlot, "update ISP...", kIspWriteCount);
    // The image processor copies the new image into place on its own; give it the time.
    if (!FwFailed())
        for (unsigned int counter = kIspSettleCount; counter >= 1; --counter) {
            status("update ISP...final count down : %d", counter / 10);
            pass();
        }
    consoleDisplay(1);
    if (written) return End::Done;
    ConsolePrintf("> - fw update fail\n");
    status("update ISP fail");
    return End::Failed;
}

End audioStage() {
    const bool written = runWriter(gAudioImageSlot, "update AUDIO...", kAudioWriteCount);
    consoleDisplay(1);
    if (written) return End::Done;
    ConsolePrintf("> - fw update fail\n");
    status("update AUDIO fail");
    return End::Failed;
}

End fullSequence() {
    for (int kind : {kFwUsb, kFwIsp, kFwAudio})
        if (ReadFwCheckBox(kind) == 1 && !LookUpFwImage(kind, 1)) return End::FileInvalid;
    const int usb = gFwSelected[kFwUsb] == 1, isp = gFwSelected[kFwIsp] == 1, audio = gFwSelected[kFwAudio] == 1;

    End end = End::Done;
    if (usb && (end = usbStage()) != End::Done) return end;
    if (isp || audio)
        if (!cameraPresent() || !enterBootLoader()) return End::DeviceMissing;
    if (isp && (end = ispStage()) != End::Done) return end;
    if (audio && (end = audioStage()) != End::Done) return end;

    ConsolePrintf("> - fw update done\n");
    SetFwFail(0);
    if (!usb && !isp && !audio) {
        status("no one is updated");
        return End::Done;
    }
    if (isp || audio) {
        // Starts the images just written; a camera already on its way back may not answer.
        ConsolePrintf(">CMND : SET [PF RESET]\n");
        PfReset();
    }
    rebootAndDisconnect();
    return End::Done;
}

// No camera is connected: only the vendor's library can reach the bridge, and only the whole
// USB image makes sense then.
End recoverySequence() {
    if (!LookUpFwImage(kFwUsb, 1)) return End::FileInvalid;
    status("FW update is now starting...");
    if (!libraryWrite()) {
        libraryWriteFailed();
        status("USB [APP + BL] FW update fail");
        return End::Failed;
    }
    ConsolePrintf("> - fw update done\n");
    SetFwFail(0);
    rebootAndDisconnect();
    return End::Done;
}

void finish(End end) {
    switch (end) {
    case End::FileInvalid:
        SetFwFail(1);
        status("file is invalid");
        break;
    case End::DeviceMissing:
        SetFwFail(1);
        status("device is not found");
        disconnectKeepingVerdict();
        break;
    case End::Failed: SetFwFail(1); break;
    case End::Done: break;
    }
    dimSelection(0);
    SetCommandBusy(gPanels.peT77K, PET77K_FW_UPDATE, 0);
    if (gEnterBlResult != 1) SetErrorIndicator();
}

void open() {
    gEnterBlResult = 1;
    gPasses = 0;
    SetCommandBusy(gPanels.peT77K, PET77K_FW_UPDATE, 1);
    SetFwFail(0);
    dimSelection(1);
    status("loading file");
    ConsolePrintf(">CMND : [FW UPDATE]\n");
}

}  // namespace

long FwUpdateWaitPasses() { return gPasses; }

int PeT77K_FwUpdate_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_COMMIT) return 0;
    if (IsDeviceConnected()) {
        open();
        finish(fullSequence());
        return 0;
    }
    const int usb = ReadFwCheckBox(kFwUsb), isp = ReadFwCheckBox(kFwIsp), audio = ReadFwCheckBox(kFwAudio);
    int appAndBootLoader = 0;
    GetCtrlVal(gPanels.peT77K, PET77K_APP_BL, &appAndBootLoader);
    if (usb == 1 && isp == 0 && audio == 0 && appAndBootLoader == 1) {
        open();
        finish(recoverySequence());
    }
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_FwUpdate_Callback);
