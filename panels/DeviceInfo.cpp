// Device information of the PvInfo panel, the USB status beside it and the error report of the
// Others panel.
#include "panels/DeviceInfo.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <span>

#include "MainUir.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "app/Main.h"
#include "app/ModelProfiles.h"
#include "commands/FunctionList.h"
#include "device/Connection.h"
#include "ui/CallbackRegistry.h"
#include "ui/UserInterface.h"

char gSerialNumber[17] = "012345678";
unsigned char gErrorTable[128];
unsigned char gWarningTable[128];

namespace {

constexpr int kTextBufferSize = 256;
constexpr int kNotRead = 255;

// A version text, the serial or the machine id, and the PvInfo field that shows it.
struct InfoField {
    const char *command;
    int field;
    bool machineId = false;
};

constexpr InfoField kEveryModel[] = {
    {"USB-APP VER.", PVINFO_VER3},
    {"USB-BL VER.", PVINFO_VER3_SECOND},
    {"MACHINE SERIAL", PVINFO_MACHINE_SERIAL},
};
constexpr InfoField kFirstProfile[] = {
    {"MASTER-APP VER.", PVINFO_VER1}, {"MASTER-BL VER.", PVINFO_VER1_SECOND},
    {"MOTOR-APP VER.", PVINFO_VER2},  {"MOTOR-BL VER.", PVINFO_VER2_SECOND},
    {"INTERFACE VER.", PVINFO_VER4},  {"MACHINE ID", PVINFO_MACHINE_ID, true},
    {"FPGA VER.", PVINFO_VER5},
};
constexpr InfoField kSecondProfile[] = {
    {"MASTER-APP VER.", PVINFO_VER1}, {"MASTER-BL VER.", PVINFO_VER1_SECOND},
    {"MOTOR-APP VER.", PVINFO_VER2},  {"MOTOR-BL VER.", PVINFO_VER2_SECOND},
    {"MACHINE ID", PVINFO_MACHINE_ID, true}, {"CM VER.", PVINFO_VER5},
    {"DSP VER.", PVINFO_VER6},
};
// The third model has no machine id: its field keeps whatever it showed.
constexpr InfoField kThirdProfile[] = {
    {"M12MO VER.", PVINFO_VER1},
    {"ZL38051 VER.", PVINFO_VER6},
};
constexpr std::span<const InfoField> kByProfile[] = {kFirstProfile, kSecondProfile, kThirdProfile};

// A USB status register; a register of two nibbles fills two fields, low nibble first.
struct UsbField {
    const char *command;
    int field;
    int highNibbleField = 0;
};
constexpr UsbField kUsbFields[] = {
    {"USB RESOLUTION", PVINFO_USB_RESOLUTION},
    {"USB FRAME RATE", PVINFO_USB_FRAME_RATE},
    {"USB STREAM TYPE / PREVIEW STATUS", PVINFO_USB_STREAM_TYPE, PVINFO_PREVIEW_STATUS},
    {"USB SPEED / TRANS. TYPE", PVINFO_USB_SPEED, PVINFO_USB_TRANSFER_TYPE},
};

int ReadInfoField(int panel, const InfoField &f) {
    ConsolePrintf(">CMND : GET [%s]\n", f.command);
    if (f.machineId) {
        unsigned short id = 0;
        const int ok = GetCommand(f.command, &id);
        char text[16] = "";
        // A failed read leaves no number worth showing, least of all the previous camera's.
        if (ok) std::snprintf(text, sizeof text, "0x%X", id);
        SetCtrlVal(panel, f.field, text);
        return ok;
    }
    // Shown whether or not the read got through: the characters read before a failure tell
    // the technician how far it came.
    char text[kTextBufferSize] = {};
    const int ok = GetTextCommand(f.command, text, sizeof text);
    SetCtrlVal(panel, f.field, text);
    return ok;
}

void PrintCounts(const char *kind, const unsigned char *table) {
    if (std::none_of(table, table + 128, [](unsigned char count) { return count != 0; })) {
        ConsolePrintf("> - %s CODE = NONE\n", kind);
        return;
    }
    ConsolePrintf(">\n");
    ConsolePrintf("> - %s CODE -\n", kind);
    for (int code = 0; code < 128; ++code)
        if (table[code]) ConsolePrintf("> - [0x%02X] : %d\n", code, table[code]);
}

}  // namespace

int VideoCameraInfo_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_RIGHT_CLICK || !IsDeviceConnected()) return 0;
    const int panel = gPanels.pvInfo;
    SetCommandBusy(panel, PVINFO_VIDEO_CAMERA_INFO, 1);
    SetActiveCtrl(gPanels.main, MAIN_BUSY);

    char text[kTextBufferSize] = {};
    GetUiVersion(text);
    ConsolePrintf(">AP version : UI = %s\n", text);
    SetCtrlVal(panel, PVINFO_UI_VERSION, text);
    LibGetVersion(text, sizeof text);
    ConsolePrintf(">AP version : Library = %s\n", text);
    SetCtrlVal(panel, PVINFO_LIB_VERSION, text);

    int ok = 1;
    for (const InfoField &f : kEveryModel) ok &= ReadInfoField(panel, f);
    const int profile = CurrentModelProfile();
    if (profile >= 0 && profile < static_cast<int>(std::size(kByProfile)))
        for (const InfoField &f : kByProfile[profile]) ok &= ReadInfoField(panel, f);

    char serial[kTextBufferSize] = "";
    GetCtrlVal(panel, PVINFO_MACHINE_SERIAL, serial);
    const size_t length = std::min(std::strlen(serial), sizeof gSerialNumber - 1);
    std::memcpy(gSerialNumber, serial, length);
    gSerialNumber[length] = '\0';

    SetCommandBusy(panel, PVINFO_VIDEO_CAMERA_INFO, 0);
    if (!ok) SetErrorIndicator();
    SetActiveCtrl(gPanels.main, MAIN_BUSY);
    return 0;
}
VCC_REGISTER_CALLBACK(VideoCameraInfo_Callback);

int USBInfo_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_RIGHT_CLICK || !IsDeviceConnected()) return 0;
    const int panel = gPanels.pvInfo;
    SetCommandBusy(panel, PVINFO_USB_INFO, 1);
    SetActiveCtrl(gPanels.main, MAIN_BUSY);
    int ok = 1;
    for (const UsbField &f : kUsbFields) {
        ConsolePrintf(">CMND : GET [%s]\n", f.command);
        unsigned short value = 0;
        ok &= GetCommand(f.command, &value);
        // After the first failure every later field shows "not read", so that nothing on the
        // panel (the preview status least of all) looks current when it is not.
        if (!f.highNibbleField) {
            SetCtrlVal(panel, f.field, ok ? static_cast<int>(value) : kNotRead);
        } else {
            SetCtrlVal(panel, f.field, ok ? value & 0x0F : kNotRead);
            SetCtrlVal(panel, f.highNibbleField, ok ? (value >> 4) & 0x0F : kNotRead);
        }
    }
    SetCommandBusy(panel, PVINFO_USB_INFO, 0);
    if (!ok) SetErrorIndicator();
    SetActiveCtrl(gPanels.main, MAIN_BUSY);
    return 0;
}
VCC_REGISTER_CALLBACK(USBInfo_Callback);

int RunErrorReport(int timeoutMs) {
    if (!GetErrorReport(gErrorTable, gWarningTable, static_cast<int>(sizeof gErrorTable), timeoutMs)) return 0;
    PrintCounts("ERROR", gErrorTable);
    PrintCounts("WARNING", gWarningTable);
    return 1;
}
