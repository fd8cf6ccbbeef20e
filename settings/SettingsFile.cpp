// Settings files: one table of 80 rows drives writing, reading, the defaults, the controls
// and, through a second table of steps, what Apply sends.
#include "settings/SettingsFile.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <iterator>
#include <string_view>

#include "MainUir.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "app/Main.h"
#include "commands/FunctionList.h"
#include "device/Connection.h"
#include "panels/DeviceInfo.h"
#include "panels/PanelRefresh.h"
#include "ui/CallbackRegistry.h"
#include "ui/Clock.h"
#include "ui/UserInterface.h"

SettingValue gSettings[kSettingsEntries];

namespace {

using PanelOf = int PanelHandles::*;
constexpr int kTitle = -1;  // the entry shown as the main panel's title, not in a control

struct SettingRow {
    std::string_view key;  // exactly as written, " = " included
    const char *defaultText;
    SettingType type;
    PanelOf panel;
    int control;
};

constexpr SettingType T = SettingType::Text;
constexpr SettingType I = SettingType::Integer;
constexpr PanelOf kMain = &PanelHandles::main;
constexpr PanelOf kPv = &PanelHandles::pvInfo;
constexpr PanelOf kOthers = &PanelHandles::others;
constexpr PanelOf kAbs = &PanelHandles::ptzfAbs;
constexpr PanelOf kIq = &PanelHandles::iq;
constexpr PanelOf kAe = &PanelHandles::ae;
constexpr PanelOf kAwb = &PanelHandles::awb;

constexpr SettingRow kRows[] = {
    {"TITLE = ", kTitleText, T, kMain, kTitle},
    {"MODEL = ", "0", I, kMain, MAIN_MODEL},
    {"SNAP_ENABLE = ", "0", I, kPv, PVINFO_SNAP_ENABLE},
    {"USB_SPEED = ", "2", I, kPv, PVINFO_USB_SPEED},
    {"USB_TRANSFER_TYPE = ", "1", I, kPv, PVINFO_USB_TRANSFER_TYPE},
    {"USB_STREAM_TYPE = ", "1", I, kPv, PVINFO_USB_STREAM_TYPE},
    {"USB_PREVIEW_STATUS = ", "0", I, kPv, PVINFO_PREVIEW_STATUS},
    {"USB_RESOLUTION = ", "1", I, kPv, PVINFO_USB_RESOLUTION},
    {"USB_FRAME_RATE = ", "0", I, kPv, PVINFO_USB_FRAME_RATE},
    {"UI_VERSION = ", "0.00", T, kPv, PVINFO_UI_VERSION},
    {"LIBRARY_VERSION = ", "0.0", T, kPv, PVINFO_LIB_VERSION},
    // The version slots of the PvInfo panel: 1 master, 2 motor, 3 the bridge (ISP), 4
    // interface, 5 CM, 6 DSP; the boot loaders in the second field of their slot.
    {"MASTER_APP_VERSION = ", "VHG000 ", T, kPv, PVINFO_VER1},
    {"MASTER_BL_VERSION = ", "B00", T, kPv, PVINFO_VER1_SECOND},
    {"MOTOR_APP_VERSION = ", "VHS000 ", T, kPv, PVINFO_VER2},
    {"MOTOR_BL_VERSION = ", "C00", T, kPv, PVINFO_VER2_SECOND},
    {"ISP_APP_VERSION = ", "VHH000 ", T, kPv, PVINFO_VER3},
    {"ISP_BL_VERSION = ", "F00", T, kPv, PVINFO_VER3_SECOND},
    {"CM_VERSION = ", "VHI000 ", T, kPv, PVINFO_VER5},
    {"INTERFACE_VERSION = ", "VHM000 ", T, kPv, PVINFO_VER4},
    {"DSP_VERSION = ", "VHK000 ", T, kPv, PVINFO_VER6},
    {"MACHINE SERIAL = ", "0123456789ABCDEF", T, kPv, PVINFO_MACHINE_SERIAL},
    {"MACHINE ID = ", "1234", T, kPv, PVINFO_MACHINE_ID},
    {"EU_IR_OUT = ", "0", I, kOthers, OTHERS_IR_OUT},
    {"EU_IR_RECEIVE = ", "2", I, kOthers, OTHERS_IR_RECEIVE},
    {"EU_AF_SENSITIVITY = ", "2", I, kOthers, OTHERS_AF_SENSITIVITY},
    {"EU_AF_SPEED = ", "2", I, kOthers, OTHERS_AF_SPEED},
    {"EU_AF_FRAME = ", "2", I, kOthers, OTHERS_AF_FRAME},
    {"EU_AF_MIRROR = ", "0", I, kOthers, OTHERS_MIRROR},
    {"EU_PRESET_LOAD = ", "1", I, kOthers, OTHERS_PRESET_LOAD},
    {"EU_PRESET_SAVE = ", "1", I, kOthers, OTHERS_PRESET_SAVE},
    {"EU_PRESET_CLEAR = ", "1", I, kOthers, OTHERS_PRESET_CLEAR},
    {"EU_PREVIEW_STANDBY_TIME = ", "5", I, kOthers, OTHERS_PREVIEW_STANDBY_TIME},
    {"EU_PICTURE_EFFECT = ", "0", I, kOthers, OTHERS_PICTURE_EFFECT},
    {"EU_PANTILT_LIMIT_ONOFF = ", "3", I, kAbs, PTZFABS_PAN_TILT_LIMIT_ON_OFF},
    {"EU_PAN_LIMIT_R = ", "100", I, kAbs, PTZFABS_PAN_LIMIT_RIGHT},
    {"EU_PAN_LIMIT_L = ", "-100", I, kAbs, PTZFABS_PAN_LIMIT_LEFT},
    {"EU_TILT_LIMIT_U = ", "30", I, kAbs, PTZFABS_TILT_LIMIT_UP},
    {"EU_TILT_LIMIT_D = ", "-30", I, kAbs, PTZFABS_TILT_LIMIT_DOWN},
    {"EU_PAN = ", "0", I, kAbs, PTZFABS_PAN},
    {"EU_TILT = ", "0", I, kAbs, PTZFABS_TILT},
    {"EU_ZOOM = ", "0", I, kAbs, PTZFABS_ZOOM},
    {"EU_DZOOM_LIMIT = ", "0", I, kAbs, PTZFABS_D_ZOOM_LIMIT},
    {"EU_DZOOM_POS = ", "0", I, kAbs, PTZFABS_D_ZOOM_POS},
    {"EU_FOCUS = ", "0", I, kAbs, PTZFABS_FOCUS},
    {"EU_AF_MODE = ", "1", I, kAbs, PTZFABS_AF_MODE},
    {"EU_3DNR = ", "6", I, kIq, IQ_THREE_DNR},
    {"EU_2DNR = ", "6", I, kIq, IQ_TWO_DNR},
    {"EU_WDR = ", "0", I, kIq, IQ_WDR},
    {"EU_SKIN_TONE = ", "0", I, kIq, IQ_SKIN_TONE},
    {"EU_BLACK_LEVEL = ", "0", I, kIq, IQ_BLACK_LEVEL},
    {"EU_BRIGHTNESS = ", "7", I, kIq, IQ_BRIGHTNESS},
    {"EU_CONTRAST = ", "0", I, kIq, IQ_CONTRAST},
    {"EU_HUE = ", "7", I, kIq, IQ_HUE},
    {"EU_SATURATION = ", "14", I, kIq, IQ_SATURATION},
    {"EU_SHARPNESS = ", "0", I, kIq, IQ_SHARPNESS},
    {"EU_GAMMA = ", "1", I, kIq, IQ_GAMMA},
    {"EU_AE_MODE = ", "2", I, kAe, AE_AE_MODE},
    {"EU_AE_PRI. = ", "0", I, kAe, AE_AE_PRIORITY},
    {"EU_AE_SELECT = ", "0", I, kAe, AE_AE_SELECT},
    {"EU_GAIN = ", "5", I, kAe, AE_GAIN},
    {"EU_GAIN_LIMIT = ", "24", I, kAe, AE_GAIN_LIMIT},
    {"EU_EXPOSURE_TIME = ", "6", I, kAe, AE_EXPOSURE_TIME},
    {"EU_POWER_FREQUENCY = ", "2", I, kAe, AE_PWR_FREQ},
    {"EU_IRIS = ", "0", I, kAe, AE_IRIS},
    {"EU_BACKLIGHT_COMPENSATION = ", "5", I, kAe, AE_BACKLIGHT_COMP},
    {"EU_BACKLIGHT_ONOFF = ", "3", I, kAe, AE_BACKLIGHT_ON_OFF},
    {"EU_AE_COMP_ONOFF = ", "3", I, kAe, AE_AE_COMP_ON_OFF},
    {"EU_SPOT_LIGHT_ONOFF = ", "3", I, kAe, AE_SPOT_LIGHT_ON_OFF},
    {"EU_SPOT_LIGHT_POSX = ", "4", I, kAe, AE_SPOT_LIGHT_POS_X},
    {"EU_SPOT_LIGHT_POSY = ", "3", I, kAe, AE_SPOT_LIGHT_POS_Y},
    {"EU_AWB_MODE = ", "1", I, kAwb, AWB_AWB_MODE},
    {"EU_AWB_SELECT = ", "0", I, kAwb, AWB_AWB_SELECT},
    {"EU_TEMPERATURE = ", "12", I, kAwb, AWB_WB_TEMPERATURE},
    {"EU_RED_GAIN = ", "40", I, kAwb, AWB_RED_GAIN},
    {"EU_BLUE_GAIN = ", "40", I, kAwb, AWB_BLUE_GAIN},
    // The key's misspelling is what files in the field carry; keep it.
    {"EU_DEBUG_ENALBE = ", "3", I, kOthers, OTHERS_DEBUG_ENABLE},
    {"EU_FREEZE = ", "3", I, kOthers, OTHERS_FREEZE},
    {"EU_LED_ERR = ", "3", I, kOthers, OTHERS_ERR_LED},
    {"EU_OUT_RAW = ", "3", I, kOthers, OTHERS_OUT_RAW},
    {"EU_PWR_METHOD = ", "170", I, kMain, MAIN_PWR_CTRL_METHOD},
};
static_assert(std::size(kRows) == kSettingsEntries);

constexpr int entryOf(std::string_view key) {
    for (int i = 0; i < kSettingsEntries; ++i)
        if (kRows[i].key == key) return i;
    throw "no settings entry with this key";  // a compile error where it is used
}

// What Apply sends, in order: a fixed value (entry -1) or the entry's value. Focus, white
// balance and exposure go to manual-friendly modes first, so that positions and manual values
// take, and get their saved modes back only at the end.
struct ApplyStep {
    const char *command;
    int entry;
    int fixed;
};
constexpr ApplyStep V(const char *command, std::string_view key) { return {command, entryOf(key), 0}; }
constexpr ApplyStep K(const char *command, int value) { return {command, -1, value}; }

constexpr ApplyStep kApplySteps[] = {
    K("AF MODE", 0),
    K("AWB MODE", 0),
    K("AE MODE", 1),
    V("ZOOM", "EU_ZOOM = "),
    V("D-ZOOM LIMIT", "EU_DZOOM_LIMIT = "),
    V("D-ZOOM POS", "EU_DZOOM_POS = "),
    V("3DNR", "EU_3DNR = "),
    V("2DNR", "EU_2DNR = "),
    V("WDR", "EU_WDR = "),
    V("SKIN TONE", "EU_SKIN_TONE = "),
    V("BLACK LEVEL", "EU_BLACK_LEVEL = "),
    V("IR OUT", "EU_IR_OUT = "),
    V("IR RECEIVE", "EU_IR_RECEIVE = "),
    V("AF SENS.", "EU_AF_SENSITIVITY = "),
    V("AF SPEED", "EU_AF_SPEED = "),
    V("AF FRAME", "EU_AF_FRAME = "),
    V("MIRROR", "EU_AF_MIRROR = "),
    V("PREVIEW STANDBY TIME", "EU_PREVIEW_STANDBY_TIME = "),
    V("PIC-EFFECT", "EU_PICTURE_EFFECT = "),
    V("PAN-TILT LIMIT", "EU_PANTILT_LIMIT_ONOFF = "),
    V("PAN RIGHT", "EU_PAN_LIMIT_R = "),
    V("PAN LEFT", "EU_PAN_LIMIT_L = "),
    V("TILT UP", "EU_TILT_LIMIT_U = "),
    V("TILT DOWN", "EU_TILT_LIMIT_D = "),
    V("PAN", "EU_PAN = "),
    V("TILT", "EU_TILT = "),
    V("BRIGHTNESS", "EU_BRIGHTNESS = "),
    V("CONTRAST", "EU_CONTRAST = "),
    V("HUE", "EU_HUE = "),
    V("SATURATION", "EU_SATURATION = "),
    V("SHARPNESS", "EU_SHARPNESS = "),
    V("GAMMA", "EU_GAMMA = "),
    V("FOCUS", "EU_FOCUS = "),
    V("AE SELECT", "EU_AE_SELECT = "),
    V("GAIN", "EU_GAIN = "),
    V("IRIS", "EU_IRIS = "),
    V("EXPOSURE TIME", "EU_EXPOSURE_TIME = "),
    V("POWER FREQ.", "EU_POWER_FREQUENCY = "),
    V("AWB SELECT", "EU_AWB_SELECT = "),
    V("WB TEMP.", "EU_TEMPERATURE = "),
    V("RED GAIN", "EU_RED_GAIN = "),
    V("BLUE GAIN", "EU_BLUE_GAIN = "),
    K("AE MODE", 2),
    V("GAIN LIMIT", "EU_GAIN_LIMIT = "),
    V("BACKLIGHT COMP.", "EU_BACKLIGHT_COMPENSATION = "),
    V("BACKLIGHT", "EU_BACKLIGHT_ONOFF = "),
    V("AE COMP.", "EU_AE_COMP_ONOFF = "),
    V("SPOT LIGHT", "EU_SPOT_LIGHT_ONOFF = "),
    V("SPOT LIGHT X", "EU_SPOT_LIGHT_POSX = "),
    V("SPOT LIGHT Y", "EU_SPOT_LIGHT_POSY = "),
    V("AE MODE", "EU_AE_MODE = "),
    V("AWB MODE", "EU_AWB_MODE = "),
    V("AF MODE", "EU_AF_MODE = "),
    V("AE PRI.", "EU_AE_PRI. = "),
    V("DBG. ENABLE", "EU_DEBUG_ENALBE = "),
    V("FREEZE", "EU_FREEZE = "),
    V("ERR LED", "EU_LED_ERR = "),
    V("RAW/YUV(MJPG)", "EU_OUT_RAW = "),
    V("PWR. METHOD", "EU_PWR_METHOD = "),
};
static_assert(std::size(kApplySteps) == 59);
constexpr int kApplyPauseMs = 200;
constexpr int kLineSize = 1024;  // a longer line goes on as the next one

// The key anywhere in the line, letter case ignored; the value starts right after it.
const char *findKey(const char *line, std::string_view key) {
    const size_t length = std::strlen(line);
    if (key.size() > length) return nullptr;
    for (size_t start = 0; start + key.size() <= length; ++start) {
        size_t i = 0;
        while (i < key.size() && std::tolower(static_cast<unsigned char>(line[start + i])) ==
                                     std::tolower(static_cast<unsigned char>(key[i])))
            ++i;
        if (i == key.size()) return line + start + key.size();
    }
    return nullptr;
}

// A value that is no number leaves the record as it was, as does one no 32-bit record holds.
void parseValue(int entry, const char *value) {
    SettingValue &record = gSettings[entry];
    switch (kRows[entry].type) {
    case SettingType::Text: {
        // The line end goes, whether the file came from this tool ("\n") or an editor
        // that writes "\r\n"; anything else is part of the value.
        size_t n = std::strlen(value);
        if (n > 0 && value[n - 1] == '\n') --n;
        if (n > 0 && value[n - 1] == '\r') --n;
        if (n > kSettingsTextSize - 1) n = kSettingsTextSize - 1;
        std::memcpy(record.text, value, n);
        record.text[n] = '\0';
        break;
    }
    case SettingType::Integer: {
        while (*value == ' ' || *value == '\t') ++value;
        char *end = nullptr;
        errno = 0;
        const long long number = std::strtoll(value, &end, 10);
        if (end != value && errno == 0 && number >= INT32_MIN && number <= INT32_MAX)
            record.integer = static_cast<int32_t>(number);
        break;
    }
    case SettingType::Real: {
        while (*value == ' ' || *value == '\t') ++value;
        char *end = nullptr;
        const float number = std::strtof(value, &end);
        if (end != value) record.real = number;
        break;
    }
    }
}

void fillStoreFromControls() {
    GetPanelAttribute(gPanels.main, ATTR_TITLE, gSettings[0].text);
    for (int i = 1; i < kSettingsEntries; ++i) {
        const SettingRow &row = kRows[i];
        if (row.type == SettingType::Text)
            GetCtrlVal(gPanels.*row.panel, row.control, gSettings[i].text);
        else
            GetCtrlVal(gPanels.*row.panel, row.control, &gSettings[i].integer);
    }
}

void showStoreInControls() {
    SetPanelAttribute(gPanels.main, ATTR_TITLE, gSettings[0].text);
    for (int i = 1; i < kSettingsEntries; ++i) {
        const SettingRow &row = kRows[i];
        if (row.type == SettingType::Text)
            SetCtrlVal(gPanels.*row.panel, row.control, gSettings[i].text);
        else
            SetCtrlVal(gPanels.*row.panel, row.control, static_cast<int>(gSettings[i].integer));
    }
}

// Both dialogs start from the current settings path and propose a name after the camera.
// After a load or save that path names a file: the dialog then opens in its folder.
int choosePath(const char *title, int button, char path[1024]) {
    char proposed[1024];
    SettingsDefaultFileName(proposed);
    std::error_code ec;
    std::string start = gSettingsPath;
    if (!start.empty() && !std::filesystem::is_directory(start, ec))
        start = std::filesystem::absolute(start, ec).parent_path().string();
    return FileSelectPopup(start.c_str(), proposed, "*.ini", title, button, 0, 1, 1, 0, path);
}

}  // namespace

const char *SettingKey(int entry) { return kRows[entry].key.data(); }
const char *SettingDefault(int entry) { return kRows[entry].defaultText; }
SettingType SettingTypeOf(int entry) { return kRows[entry].type; }
int FindSetting(const char *key) {
    for (int i = 0; i < kSettingsEntries; ++i)
        if (kRows[i].key == key) return i;
    return -1;
}

void SettingsLoadDefaults() {
    for (int i = 0; i < kSettingsEntries; ++i) parseValue(i, kRows[i].defaultText);
}

void SettingsDefaultFileName(char name[1024]) {
    int month = 0, day = 0, year = 0, hours = 0, minutes = 0, seconds = 0;
    GetSystemDate(&month, &day, &year);
    CVI_GetSystemTime(&hours, &minutes, &seconds);
    const char *prefix = gSerialNumber[0] ? gSerialNumber : gDeviceName;
    std::snprintf(name, 1024, "%s_%04d-%02d-%02d_%02d-%02d-%02d.ini", prefix, year, month, day, hours, minutes,
                  seconds);
}

int SettingsReadFile(std::FILE *file) {
    char line[kLineSize];
    // The title line only has to be there: the title always comes from the tool itself.
    if (!file || !std::fgets(line, sizeof line, file)) {
        SettingsLoadDefaults();
        return 0;
    }
    for (int i = 1; i < kSettingsEntries; ++i) {
        const char *value = std::fgets(line, sizeof line, file) ? findKey(line, kRows[i].key) : nullptr;
        if (!value) {
            SettingsLoadDefaults();
            return 0;
        }
        parseValue(i, value);
    }
    parseValue(0, kRows[0].defaultText);
    return 1;
}

int SettingsReadPath(const char *path) {
    int size = 0;
    if (!path || !FileExists(path, &size) || size < 0) return 0;
    std::FILE *file = std::fopen(path, "r");
    if (!file) return 0;
    const int result = SettingsReadFile(file);
    std::fclose(file);
    return result;
}

int SettingsWriteFile(int mode, const char *path) {
    if (mode == 0) fillStoreFromControls();
    std::FILE *file = path ? std::fopen(path, "w") : nullptr;
    if (!file) return 0;
    for (int i = 0; i < kSettingsEntries; ++i) {
        const SettingRow &row = kRows[i];
        if (mode == 1) {
            std::fprintf(file, "%s%s\r\n", row.key.data(), row.defaultText);
            parseValue(i, row.defaultText);
        } else if (row.type == SettingType::Text) {
            std::fprintf(file, "%s%.255s\n", row.key.data(), gSettings[i].text);
        } else if (row.type == SettingType::Integer) {
            std::fprintf(file, "%s%d\n", row.key.data(), static_cast<int>(gSettings[i].integer));
        } else {
            std::fprintf(file, "%s%f\n", row.key.data(), static_cast<double>(gSettings[i].real));
        }
    }
    return std::fclose(file) == 0 ? 1 : 0;
}

int SettingsLoadFile(const char *path) {
    int result = 0;
    int size = 0;
    if (path && FileExists(path, &size)) {
        std::FILE *file = size >= 0 ? std::fopen(path, "r") : nullptr;
        if (file) {
            result = SettingsReadFile(file);
            std::fclose(file);
        } else {
            SettingsLoadDefaults();
        }
    } else {
        // A name that does not exist yet becomes a default file to edit; defaults either way,
        // also when that file cannot be created.
        if (!SettingsWriteFile(1, path)) SettingsLoadDefaults();
    }
    showStoreInControls();
    return result;
}

int SettingsApply() {
    for (const ApplyStep &step : kApplySteps) {
        const int value = step.entry < 0 ? step.fixed : gSettings[step.entry].integer;
        const fl::RegisterCommand *command = fl::FindRegisterCommand(step.command);
        if (command && command->encoding == fl::Encoding::Split)
            SetSplitCommand(step.command, value);
        else
            SetCommand(step.command, static_cast<unsigned short>(value & 0xFFFF));
        Sleep(kApplyPauseMs);
    }
    return 1;
}

int SettingsLoadDialog() {
    char path[1024] = "";
    if (choosePath("INI to LOAD", VAL_OK_BUTTON, path) == VAL_NO_FILE_SELECTED) return 0;
    if (SettingsLoadFile(path) == 0)
        ConsolePrintf("> - incorrect INI file, load INI default\n");
    else
        ConsolePrintf("> - done\n");
    std::snprintf(gSettingsPath, sizeof gSettingsPath, "%s", path);
    return 1;
}

int SettingsSaveDialog() {
    char path[1024] = "";
    const int chosen = choosePath("SAVE to INI", VAL_SAVE_BUTTON, path);
    if (chosen == VAL_NO_FILE_SELECTED) return 0;
    if (chosen == VAL_EXISTING_FILE_SELECTED) std::remove(path);
    if (SettingsWriteFile(0, path) == 0)
        ConsolePrintf("> - fail\n");
    else
        ConsolePrintf("> - done\n");
    std::snprintf(gSettingsPath, sizeof gSettingsPath, "%s", path);
    return 1;
}

int INILoad_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_COMMIT) return 0;
    ConsolePrintf(">INI : LOAD\n");
    if (SettingsLoadDialog() == 1) {
        ConsolePrintf("> - PATH = %s \n\n", gSettingsPath);
        if (IsPowerOn()) SetCtrlAttribute(gPanels.main, MAIN_INI_APPLY, ATTR_DIMMED, 0);
    }
    return 0;
}
VCC_REGISTER_CALLBACK(INILoad_Callback);

int INISave_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_COMMIT) return 0;
    // What the camera holds, not what the panels happened to show, goes into the file.
    RefreshAll_Callback(gPanels.main, MAIN_REFRESH_ALL, EVENT_COMMIT, nullptr, 0, 0);
    ConsolePrintf(">INI : SAVE\n");
    if (SettingsSaveDialog() == 1) ConsolePrintf("> - PATH = %s \n\n", gSettingsPath);
    return 0;
}
VCC_REGISTER_CALLBACK(INISave_Callback);

int INIApply_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_COMMIT || !IsDeviceConnected()) return 0;
    SetCommandBusy(gPanels.main, MAIN_INI_APPLY, 1);
    ConsolePrintf(">INI : APPLY\n");
    // The file as it is on disk now, not the panels: Apply sends what the file holds.
    if (SettingsReadPath(gSettingsPath) == 0) {
        ConsolePrintf("> - fail \n\n");
    } else {
        ConsolePrintf("> - PATH = %s \n\n", gSettingsPath);
        SetActiveCtrl(gPanels.main, MAIN_BUSY);
        DimCameraControls(1);
        SettingsApply();
        if (IsPowerOn()) DimCameraControls(0);
        if (IsPreviewOn()) {
            EnablePreviewCaptureControls();
            DimSnapOption();
        } else {
            DimPreviewCaptureControls();
            EnableSnapOption();
        }
        EnableBaseControls();
    }
    SetCommandBusy(gPanels.main, MAIN_INI_APPLY, 0);
    return 0;
}
VCC_REGISTER_CALLBACK(INIApply_Callback);
