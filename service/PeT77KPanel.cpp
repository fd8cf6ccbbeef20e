// The single-model panel's service side. The panel has its own connection handling: it
// neither reads the power state nor refreshes the engineering panels, because a technician
// updating firmware needs none of that, and its disconnect puts the panel's own fields back.
#include "service/PeT77KPanel.h"

#include <cstdio>

#include "MainUir.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "app/SystemTimer.h"
#include "commands/FunctionList.h"
#include "device/Connection.h"
#include "service/ServiceCommands.h"
#include "ui/CallbackRegistry.h"
#include "ui/UserInterface.h"

namespace {

constexpr SerialFieldIds kSerial = {
    PET77K_SERIAL_1,  PET77K_SERIAL_2,  PET77K_SERIAL_3,  PET77K_SERIAL_4,  PET77K_SERIAL_5,  PET77K_SERIAL_6,
    PET77K_SERIAL_7,  PET77K_SERIAL_8,  PET77K_SERIAL_9,  PET77K_SERIAL_10, PET77K_SERIAL_11, PET77K_SERIAL_12,
    PET77K_SERIAL_13, PET77K_SERIAL_14, PET77K_SERIAL_15, PET77K_SERIAL_16,
};
constexpr int kFileNameBoxes[] = {PET77K_FW_FILE_ISP, PET77K_FW_FILE_USB, PET77K_FW_FILE_AUDIO};
// Shown in the DIP, pattern and microphone controls while they hold nothing the camera said.
constexpr int kNotRead = 0xFF;
constexpr unsigned char kTestPatternCategory = 0x2D;
constexpr int kErrorTableSize = 128;
constexpr int kErrorClearTimeoutMs = 8000;
constexpr int kErrorReportTimeoutMs = 12000;
constexpr int kSystemResetTimeoutMs = 16000;

bool connectedCommit(int event) { return event == EVENT_COMMIT && IsDeviceConnected(); }
bool connectedReadBack(int event) { return event == EVENT_RIGHT_CLICK && IsDeviceConnected(); }

int readInt(int panel, int control) {
    int value = 0;
    GetCtrlVal(panel, control, &value);
    return value;
}

void ringLabel(int panel, int control, char (&label)[256]) {
    int index = -1;
    label[0] = '\0';
    if (GetCtrlIndex(panel, control, &index) >= 0 && index >= 0) GetLabelFromIndex(panel, control, index, label);
}

void stopPreviewIfRunning() {
    if (!IsPreviewOn()) return;
    if (CtrlCallbackPtr quit = vcc::ui::findCallback("PreviewQuit_Callback")) quit(gPanels.video, 0, EVENT_CLOSE, nullptr, 0, 0);
}

// Releases the camera and turns off what said it was there, busy or failing.
void releaseCamera(int panel) {
    stopPreviewIfRunning();
    ConsolePrintf(">LIB : SET [CLOSE]\n");
    LibRelease();
    for (int control : {MAIN_CONNECTED, MAIN_ERROR, MAIN_BUSY, MAIN_POWER_UP_DOWN}) SetCtrlVal(gPanels.main, control, 0);
    SetCtrlVal(gPanels.pvInfo, PVINFO_PREVIEW_ON_OFF, 0);
    SetCtrlVal(panel, PET77K_LAMP, 0);
    ClearErrorBlinkLatch();
}

void showAppBl(int panel, int visible) {
    SetCtrlAttribute(panel, PET77K_APP_BL, ATTR_VISIBLE, visible);
    SetCtrlVal(panel, PET77K_APP_BL, 0);
}

void connect(int panel) {
    ConsolePrintf(">LIB : GET [DEVICE EXIST]\n");
    if (!LibDeviceExists()) {
        ConsolePrintf("> - device not exist\n");
        releaseCamera(panel);
        showAppBl(panel, 1);
        return;
    }
    // A fresh console per camera: the technician's transcript starts with this connection.
    StatusMsgClear_Callback(gPanels.main, MAIN_STATUS_MSG_CLEAR, EVENT_COMMIT, nullptr, 0, 0);
    SetCtrlVal(gPanels.main, MAIN_CONNECTED, 1);
    SetCtrlVal(panel, PET77K_LAMP, 1);
    ClearErrorBlinkLatch();
    ConsolePrintf(">LIB : GET [DEVICE NAME]\n");
    LibGetDeviceName(gDeviceName, sizeof gDeviceName);
    SetCtrlVal(gPanels.pvInfo, PVINFO_DEVICE_NAME, gDeviceName);
    SetCtrlVal(panel, PET77K_DEVICE_NAME, gDeviceName);
    SetCtrlVal(panel, PET77K_CONN_TEXT, "  OOO  ");
    // The vendor-library path is for a camera that cannot be reached any more; with one
    // connected the update goes through its boot loader.
    showAppBl(panel, 0);
    SetCtrlVal(gPanels.main, MAIN_MSG_EN, 1);
    MsgEn_Callback(gPanels.main, MAIN_MSG_EN, EVENT_COMMIT, nullptr, 0, 0);
}

void disconnect(int panel, int keep) {
    ConsolePrintf(">LIB : SET [DISCONNECT DEVICE]\n");
    releaseCamera(panel);
    SetCtrlVal(panel, PET77K_DEVICE_NAME, "USB Device Name");
    SetCtrlVal(panel, PET77K_CONN_TEXT, "  XXX  ");
    for (int control : {PET77K_DIP1, PET77K_DIP2, PET77K_TEST_PATTERN, PET77K_MICROPHONE_CTRL})
        SetCtrlVal(panel, control, kNotRead);
    // The firmware update disconnects before it shows its verdict, which must stay readable.
    if (keep != kPeT77KKeepUpdateState) {
        SetCtrlVal(panel, PET77K_UPDATE_MSG, "FW Update Message");
        showAppBl(panel, 1);
    }
    for (int control : kFileNameBoxes) SetCtrlVal(panel, control, "File Name");
    SetCtrlVal(panel, PET77K_FAIL, 0);
    SetCtrlVal(panel, PET77K_PROGRESS, 0);
}

// After the commands that touch many settings: the camera controls come back as the
// connection, power and preview allow.
void restoreEnabling() {
    DimCameraControls(0);
    EnableBaseControls();
    if (IsPreviewOn()) {
        EnablePreviewCaptureControls();
        DimSnapOption();
    }
}

void printCountTable(const unsigned char *counts, const char *none, const char *heading) {
    bool any = false;
    for (int code = 0; code < kErrorTableSize; ++code) any |= counts[code] != 0;
    if (!any) {
        ConsolePrintf("%s", none);
        return;
    }
    ConsolePrintf(">\n");
    ConsolePrintf("%s", heading);
    for (int code = 0; code < kErrorTableSize; ++code)
        if (counts[code]) ConsolePrintf("> - [0x%02X] : %d\n", code, counts[code]);
}

}  // namespace

// ---- connection --------------------------------------------------------------------------------------

int PeT77K_VideoCameraConnect_Callback(int panel, int, int event, void *, int, int eventData2) {
    if (event == EVENT_RIGHT_CLICK && !IsDeviceConnected())
        connect(panel);
    else if (event == EVENT_LEFT_DOUBLE_CLICK && IsDeviceConnected())
        disconnect(panel, eventData2);
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_VideoCameraConnect_Callback);

int PeT77K_Connect_Callback(int panel, int, int event, void *, int, int) {
    if (event == EVENT_COMMIT)
        PeT77K_VideoCameraConnect_Callback(panel, PET77K_VIDEO_CAMERA_CONNECT, EVENT_RIGHT_CLICK, nullptr, 0,
                                           kPeT77KKeepUpdateState);
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_Connect_Callback);

int PeT77K_Disconnect_Callback(int panel, int, int event, void *, int, int) {
    if (event == EVENT_COMMIT)
        PeT77K_VideoCameraConnect_Callback(panel, PET77K_VIDEO_CAMERA_CONNECT, EVENT_LEFT_DOUBLE_CLICK, nullptr, 0,
                                           kPeT77KKeepUpdateState);
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_Disconnect_Callback);

// ---- read-outs and settings --------------------------------------------------------------------------

int PeT77K_DIP1_Callback(int panel, int control, int event, void *, int, int) {
    if (!connectedReadBack(event)) return 0;
    RunServiceCommand(panel, control, [&] {
        ConsolePrintf(">CMND : GET [USB SPEED / TRANS. TYPE]\n");
        unsigned short value = 0;
        const int ok = GetCommand("USB SPEED / TRANS. TYPE", &value);
        // The first DIP switch sits in the high nibble of the USB status register.
        SetCtrlVal(panel, control, ok ? (value >> 4) & 0x0F : kNotRead);
        return ok;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_DIP1_Callback);

int PeT77K_DIP2_Callback(int panel, int control, int event, void *, int, int) {
    if (!connectedReadBack(event)) return 0;
    RunServiceCommand(panel, control, [&] {
        ConsolePrintf(">CMND : GET [POWER FREQ.]\n");
        unsigned short value = 0;
        const int ok = GetCommand("POWER FREQ.", &value);
        SetCtrlVal(panel, control, ok ? static_cast<int>(value) : kNotRead);
        return ok;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_DIP2_Callback);

int PeT77K_TestPattern_Callback(int panel, int control, int event, void *, int, int) {
    if (!connectedCommit(event) && !connectedReadBack(event)) return 0;
    RunServiceCommand(panel, control, [&] {
        if (event == EVENT_COMMIT) {
            char label[256];
            ringLabel(panel, control, label);
            ConsolePrintf(">CMND : SET [TEST PATTERN] = %s\n", label);
            unsigned char packet[fl::kCategoryPacket] = {kTestPatternCategory,
                                                         static_cast<unsigned char>(readInt(panel, control))};
            return CateWrite(packet);
        }
        ConsolePrintf(">CMND : GET [TEST PATTERN]\n");
        unsigned char answer[fl::kCategoryAnswer] = {};
        if (!CateRead(kTestPatternCategory, answer)) return 0;
        SetCtrlVal(panel, control, static_cast<int>(answer[0]));
        return 1;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_TestPattern_Callback);

int PeT77K_MicrophoneCtrl_Callback(int panel, int control, int event, void *, int, int) {
    if (!connectedCommit(event) && !connectedReadBack(event)) return 0;
    RunServiceCommand(panel, control, [&] {
        if (event == EVENT_COMMIT) {
            char label[256];
            ringLabel(panel, control, label);
            ConsolePrintf(">CMND : SET [MIC CTRL] = %s\n", label);
            return SetCommand("MIC CTRL", static_cast<unsigned short>(readInt(panel, control)));
        }
        ConsolePrintf(">CMND : GET [MIC CTRL]\n");
        unsigned short value = 0;
        if (!GetCommand("MIC CTRL", &value)) return 0;
        SetCtrlVal(panel, control, static_cast<int>(value));
        return 1;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_MicrophoneCtrl_Callback);

// ---- errors ------------------------------------------------------------------------------------------

// Both error commands change what the camera reports everywhere, so the bracket sits on the
// engineering sheet's buttons and the camera controls stay dimmed meanwhile.
int PeT77K_ClearErr_Callback(int, int, int event, void *, int, int) {
    if (!connectedCommit(event)) return 0;
    RunServiceCommand(gPanels.others, OTHERS_CLEAR_ERR, [] {
        DimCameraControls(1);
        ConsolePrintf(">CMND : SET [ERROR CLEAR]\n");
        const int ok = TriggerCommand("ERROR CLEAR", kErrorClearTimeoutMs);
        restoreEnabling();
        return ok;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_ClearErr_Callback);

int PeT77K_GetErr_Callback(int, int, int event, void *, int, int) {
    if (!connectedCommit(event)) return 0;
    RunServiceCommand(gPanels.others, OTHERS_GET_ERR, [] {
        DimCameraControls(1);
        ConsolePrintf(">CMND : GET [ERROR]\n");
        unsigned char errors[kErrorTableSize], warnings[kErrorTableSize];
        const int ok = GetErrorReport(errors, warnings, kErrorTableSize, kErrorReportTimeoutMs);
        if (ok) {
            printCountTable(errors, "> - 錯誤碼 = 無\n", "> - 錯誤碼 - [代碼] : 次數\n");
            printCountTable(warnings, "> - 警告碼 = 無\n", "> - 警告碼 - [代碼] : 次數\n");
        }
        restoreEnabling();
        return ok;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_GetErr_Callback);

// ---- versions, reset, serial, EEPROM ------------------------------------------------------------------

int PeT77K_FwVersion_Callback(int panel, int control, int event, void *, int, int) {
    if (!connectedCommit(event)) return 0;
    RunServiceCommand(panel, control, [&] {
        // Every box is written, also after a failed read, so a stale version never survives.
        int ok = 1;
        char isp[8], app[8], bl[4], audio[8];
        ConsolePrintf(">CMND : GET [ISP VER.]\n");
        ok &= GetTextCommand("ISP VER.", isp, sizeof isp);
        SetCtrlVal(panel, PET77K_FW_FILE_ISP, isp);

        ConsolePrintf(">CMND : GET [USB-APP VER.]\n");
        ok &= GetTextCommand("USB-APP VER.", app, sizeof app);
        ConsolePrintf(">CMND : GET [USB-BL VER.]\n");
        ok &= GetTextCommand("USB-BL VER.", bl, sizeof bl);
        char usb[32];
        std::snprintf(usb, sizeof usb, "%s ( %s )", app, bl);
        SetCtrlVal(panel, PET77K_FW_FILE_USB, usb);

        ConsolePrintf(">CMND : GET [AUDIO VER.]\n");
        ok &= GetTextCommand("AUDIO VER.", audio, sizeof audio);
        SetCtrlVal(panel, PET77K_FW_FILE_AUDIO, audio);

        ok &= ReadMachineSerial(panel, kSerial);
        return ok;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_FwVersion_Callback);

int PeT77K_SystemRst_Callback(int panel, int control, int event, void *, int, int) {
    if (!connectedCommit(event)) return 0;
    RunServiceCommand(panel, control, [&] {
        SetCtrlVal(panel, PET77K_UPDATE_MSG, "出廠重置設定... ");
        ConsolePrintf(">CMND : SET [SYSTEM RESET]\n");
        const int ok = TriggerCommand("SYSTEM RESET", kSystemResetTimeoutMs);
        // The message says the wait is over; the error indicator tells whether it worked.
        SetCtrlVal(panel, PET77K_UPDATE_MSG, "出廠重置設定完畢");
        return ok;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_SystemRst_Callback);

int PeT77K_MachineSerial_Callback(int panel, int control, int event, void *, int, int) {
    if (!connectedCommit(event) && !connectedReadBack(event)) return 0;
    RunServiceCommand(panel, control, [&] {
        return event == EVENT_COMMIT ? SendMachineSerial(panel, kSerial) : ReadMachineSerial(panel, kSerial);
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_MachineSerial_Callback);

int PeT77K_Eeprom2K_Callback(int panel, int control, int event, void *, int, int) {
    if (!connectedCommit(event)) return 0;
    RunServiceCommand(panel, control, [&] {
        return RunEeprom2K(panel, PET77K_EEPROM_ADDR, PET77K_EEPROM_DATA, PET77K_EEPROM_OP, EepromFlavour::SingleModel);
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_Eeprom2K_Callback);

// ---- refresh -----------------------------------------------------------------------------------------

int RefreshPeT77KPnl_Callback(int panel, int control, int event, void *, int, int) {
    if (!connectedCommit(event)) return 0;
    RunServiceCommand(panel, control, [&] {
        struct Step {
            CtrlCallbackPtr callback;
            int control;
        };
        const Step steps[] = {
            {PeT77K_DIP1_Callback, PET77K_DIP1},
            {PeT77K_DIP2_Callback, PET77K_DIP2},
            {PeT77K_TestPattern_Callback, PET77K_TEST_PATTERN},
            {PeT77K_MicrophoneCtrl_Callback, PET77K_MICROPHONE_CTRL},
            {PeT77K_MachineSerial_Callback, PET77K_MACHINE_SERIAL},
            // The package look-ups belong to the firmware update; bound by name so that this
            // panel does not depend on it being built.
            {vcc::ui::findCallback("PeT77K_FwFileISP_Callback"), PET77K_FW_FILE_ISP},
            {vcc::ui::findCallback("PeT77K_FwFileUSB_Callback"), PET77K_FW_FILE_USB},
            {vcc::ui::findCallback("PeT77K_FwFileAUDIO_Callback"), PET77K_FW_FILE_AUDIO},
        };
        for (const Step &step : steps)
            if (step.callback) step.callback(panel, step.control, EVENT_RIGHT_CLICK, nullptr, 0, 0);
        // Each step lights the error indicator itself.
        return 1;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(RefreshPeT77KPnl_Callback);
