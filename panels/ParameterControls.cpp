// Parameter controls: one table row per callback, a handful of handlers that read the row.
// Adding a parameter is one row here and one name in ParameterControls.h.
#include "panels/ParameterControls.h"

#include <cstdint>
#include <iterator>
#include <string_view>

#include "MainUir.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "app/ModelProfiles.h"
#include "commands/FunctionList.h"
#include "panels/DeviceInfo.h"
#include "panels/PanelRefresh.h"
#include "ui/CallbackRegistry.h"
#include "ui/UserInterface.h"

namespace {

using PanelOf = int PanelHandles::*;

enum class Pattern : uint8_t {
    Ring,           // commit sends the chosen item's value and echoes its label
    Numeric,        // commit sends the number (its low 16 bits) and echoes it whole
    Split,          // a signed 32-bit number over two registers
    ReadOnly,       // commit reads back, as the right click does
    ActionRefresh,  // an acknowledged command, then every panel read back
    ActionRestore,  // an acknowledged command, then the camera controls usable again
    Jog,            // a pan-tilt motion code, on press and on release
    Drive,          // a zoom or focus motion at the speed its PTZFRel ring shows
    Delegate,       // a PTZFRel button that runs a PTZFAbs action
    DataFormat,     // decimal or hexadecimal display of a gain; no camera involved
};

struct ParameterRow {
    std::string_view callback;
    PanelOf panel;
    int control;
    Pattern pattern;
    const char *command = nullptr;  // console name, which is also the command's name
    int timeoutMs = kDefaultTimeout;
    const char *motion = nullptr;  // Jog, Drive: the word the console line shows ("UP-LEFT", "WIDE")
    int code = 0;                  // Jog: the direction code; Drive: base of a move
    int partner = 0;               // Drive: the speed ring on PTZFRel (0: stop); DataFormat: the gain
    CtrlCallbackPtr delegate = nullptr;
    int (*action)(int timeoutMs) = nullptr;  // runs instead of the trigger
    const char *verb = "SET";                // Action: the verb of the console line
    bool dashEcho = false;                   // the ring's set line reads "] - label"
    void (*afterSet)() = nullptr;
};

// Row builders, one per pattern, so that the table reads like the list of callbacks it is.
constexpr ParameterRow R(std::string_view cb, PanelOf p, int c, const char *command) {
    return {.callback = cb, .panel = p, .control = c, .pattern = Pattern::Ring, .command = command};
}
constexpr ParameterRow N(std::string_view cb, PanelOf p, int c, const char *command, int timeoutMs = kDefaultTimeout) {
    return {.callback = cb, .panel = p, .control = c, .pattern = Pattern::Numeric, .command = command, .timeoutMs = timeoutMs};
}
constexpr ParameterRow S(std::string_view cb, PanelOf p, int c, const char *command) {
    return {.callback = cb, .panel = p, .control = c, .pattern = Pattern::Split, .command = command};
}
constexpr ParameterRow O(std::string_view cb, PanelOf p, int c, const char *command) {
    return {.callback = cb, .panel = p, .control = c, .pattern = Pattern::ReadOnly, .command = command};
}
constexpr ParameterRow ARefresh(std::string_view cb, PanelOf p, int c, const char *command, int timeoutMs) {
    return {.callback = cb, .panel = p, .control = c, .pattern = Pattern::ActionRefresh, .command = command,
            .timeoutMs = timeoutMs};
}
constexpr ParameterRow ARestore(std::string_view cb, PanelOf p, int c, const char *command, int timeoutMs) {
    return {.callback = cb, .panel = p, .control = c, .pattern = Pattern::ActionRestore, .command = command,
            .timeoutMs = timeoutMs};
}
constexpr ParameterRow J(std::string_view cb, int c, const char *motion, int code) {
    return {.callback = cb, .panel = &PanelHandles::ptzfRel, .control = c, .pattern = Pattern::Jog,
            .command = "PAN-TILT CTRL", .motion = motion, .code = code};
}
constexpr ParameterRow D(std::string_view cb, int c, const char *command, const char *motion, int base, int speedRing) {
    return {.callback = cb, .panel = &PanelHandles::ptzfRel, .control = c, .pattern = Pattern::Drive,
            .command = command, .motion = motion, .code = base, .partner = speedRing};
}
constexpr ParameterRow G(std::string_view cb, int c, CtrlCallbackPtr delegate) {
    return {.callback = cb, .panel = &PanelHandles::ptzfRel, .control = c, .pattern = Pattern::Delegate,
            .delegate = delegate};
}
constexpr ParameterRow F(std::string_view cb, int c, int gain) {
    return {.callback = cb, .panel = &PanelHandles::awb, .control = c, .pattern = Pattern::DataFormat, .partner = gain};
}

void ZoomAfterLimitChange();

constexpr PanelOf kOthers = &PanelHandles::others;
constexpr PanelOf kIq = &PanelHandles::iq;
constexpr PanelOf kAbs = &PanelHandles::ptzfAbs;
constexpr PanelOf kAwb = &PanelHandles::awb;
constexpr PanelOf kAe = &PanelHandles::ae;
constexpr PanelOf kRel = &PanelHandles::ptzfRel;

constexpr ParameterRow kRows[] = {
    // Others
    ARefresh("FactoryRst_Callback", kOthers, OTHERS_FACTORY_RST, "FACTORY RESET", 8000),
    ARefresh("SystemRst_Callback", kOthers, OTHERS_SYSTEM_RST, "SYSTEM RESET", 16000),
    ARestore("LastMemorySave_Callback", kOthers, OTHERS_LAST_MEMORY_SAVE, "LAST MEM. SAVE", 6000),
    ARestore("ClearErr_Callback", kOthers, OTHERS_CLEAR_ERR, "ERROR CLEAR", 8000),
    [] {
        ParameterRow r = ARestore("GetErr_Callback", kOthers, OTHERS_GET_ERR, "ERROR", 12000);
        r.action = RunErrorReport;
        r.verb = "GET";
        return r;
    }(),
    R("ErrLed_Callback", kOthers, OTHERS_ERR_LED, "ERR LED"),
    R("OutRaw_Callback", kOthers, OTHERS_OUT_RAW, "RAW/YUV(MJPG)"),
    R("DebugEnable_Callback", kOthers, OTHERS_DEBUG_ENABLE, "DBG. ENABLE"),
    N("PreviewStandbyTime_Callback", kOthers, OTHERS_PREVIEW_STANDBY_TIME, "PREVIEW STANDBY TIME"),
    R("Freeze_Callback", kOthers, OTHERS_FREEZE, "FREEZE"),
    R("IrOut_Callback", kOthers, OTHERS_IR_OUT, "IR OUT"),
    R("IrReceive_Callback", kOthers, OTHERS_IR_RECEIVE, "IR RECEIVE"),
    R("AfSensitivity_Callback", kOthers, OTHERS_AF_SENSITIVITY, "AF SENS."),
    R("AfSpeed_Callback", kOthers, OTHERS_AF_SPEED, "AF SPEED"),
    R("AfFrame_Callback", kOthers, OTHERS_AF_FRAME, "AF FRAME"),
    R("Mirror_Callback", kOthers, OTHERS_MIRROR, "MIRROR"),
    N("PresetLoad_Callback", kOthers, OTHERS_PRESET_LOAD, "PRESET LOAD", 18000),
    N("PresetSave_Callback", kOthers, OTHERS_PRESET_SAVE, "PRESET SAVE"),
    N("PresetClear_Callback", kOthers, OTHERS_PRESET_CLEAR, "PRESET CLEAR"),
    R("PictureEffect_Callback", kOthers, OTHERS_PICTURE_EFFECT, "PIC-EFFECT"),
    // Iq
    R("ThreeDNR_Callback", kIq, IQ_THREE_DNR, "3DNR"),
    R("TwoDNR_Callback", kIq, IQ_TWO_DNR, "2DNR"),
    R("WDR_Callback", kIq, IQ_WDR, "WDR"),
    R("SkinTone_Callback", kIq, IQ_SKIN_TONE, "SKIN TONE"),
    R("BlackLevel_Callback", kIq, IQ_BLACK_LEVEL, "BLACK LEVEL"),
    N("Brightness_Callback", kIq, IQ_BRIGHTNESS, "BRIGHTNESS"),
    N("Contrast_Callback", kIq, IQ_CONTRAST, "CONTRAST"),
    N("Hue_Callback", kIq, IQ_HUE, "HUE"),
    N("Saturation_Callback", kIq, IQ_SATURATION, "SATURATION"),
    N("Sharpness_Callback", kIq, IQ_SHARPNESS, "SHARPNESS"),
    N("Gamma_Callback", kIq, IQ_GAMMA, "GAMMA"),
    // PTZFAbs
    N("Zoom_Callback", kAbs, PTZFABS_ZOOM, "ZOOM"),
    [] {
        ParameterRow r = N("DZoomLimit_Callback", kAbs, PTZFABS_D_ZOOM_LIMIT, "D-ZOOM LIMIT");
        r.afterSet = ZoomAfterLimitChange;
        return r;
    }(),
    N("DZoomPos_Callback", kAbs, PTZFABS_D_ZOOM_POS, "D-ZOOM POS"),
    R("AfMode_Callback", kAbs, PTZFABS_AF_MODE, "AF MODE"),
    N("Focus_Callback", kAbs, PTZFABS_FOCUS, "FOCUS"),
    ARestore("FocusOnePush_Callback", kAbs, PTZFABS_FOCUS_ONE_PUSH, "AF ONE PUSH", 18000),
    ARestore("PanTiltHome_Callback", kAbs, PTZFABS_PAN_TILT_HOME, "PAN-TILT HOME", 12000),
    ARestore("PanTiltReset_Callback", kAbs, PTZFABS_PAN_TILT_RESET, "PAN-TILT RESET", 12000),
    R("PanTiltLimitOnOff_Callback", kAbs, PTZFABS_PAN_TILT_LIMIT_ON_OFF, "PAN-TILT LIMIT"),
    S("PanLimitRight_Callback", kAbs, PTZFABS_PAN_LIMIT_RIGHT, "PAN RIGHT"),
    S("PanLimitLeft_Callback", kAbs, PTZFABS_PAN_LIMIT_LEFT, "PAN LEFT"),
    S("TiltLimitUp_Callback", kAbs, PTZFABS_TILT_LIMIT_UP, "TILT UP"),
    S("TiltLimitDown_Callback", kAbs, PTZFABS_TILT_LIMIT_DOWN, "TILT DOWN"),
    S("Pan_Callback", kAbs, PTZFABS_PAN, "PAN"),
    S("Tilt_Callback", kAbs, PTZFABS_TILT, "TILT"),
    // Awb
    R("AwbMode_Callback", kAwb, AWB_AWB_MODE, "AWB MODE"),
    R("AwbSelect_Callback", kAwb, AWB_AWB_SELECT, "AWB SELECT"),
    ARestore("WBOnePush_Callback", kAwb, AWB_WB_ONE_PUSH, "WB ONE PUSH", 18000),
    N("WBTemperature_Callback", kAwb, AWB_WB_TEMPERATURE, "WB TEMP."),
    N("RedGain_Callback", kAwb, AWB_RED_GAIN, "RED GAIN"),
    N("BlueGain_Callback", kAwb, AWB_BLUE_GAIN, "BLUE GAIN"),
    F("RedGainDataFmt_Callback", AWB_RED_GAIN_DATA_FMT, AWB_RED_GAIN),
    F("BlueGainDataFmt_Callback", AWB_BLUE_GAIN_DATA_FMT, AWB_BLUE_GAIN),
    // Ae
    R("AeMode_Callback", kAe, AE_AE_MODE, "AE MODE"),
    R("AePriority_Callback", kAe, AE_AE_PRIORITY, "AE PRI."),
    R("AeSelect_Callback", kAe, AE_AE_SELECT, "AE SELECT"),
    R("Gain_Callback", kAe, AE_GAIN, "GAIN"),
    [] {
        ParameterRow r = R("GainLimit_Callback", kAe, AE_GAIN_LIMIT, "GAIN LIMIT");
        r.dashEcho = true;
        return r;
    }(),
    R("ExposureTime_Callback", kAe, AE_EXPOSURE_TIME, "EXPOSURE TIME"),
    O("PwrFreq_Callback", kAe, AE_PWR_FREQ, "POWER FREQ."),
    R("Iris_Callback", kAe, AE_IRIS, "IRIS"),
    R("BacklightOnOff_Callback", kAe, AE_BACKLIGHT_ON_OFF, "BACKLIGHT"),
    N("BacklightComp_Callback", kAe, AE_BACKLIGHT_COMP, "BACKLIGHT COMP."),
    R("AeCompOnOff_Callback", kAe, AE_AE_COMP_ON_OFF, "AE COMP."),
    R("SpotLightOnOff_Callback", kAe, AE_SPOT_LIGHT_ON_OFF, "SPOT LIGHT"),
    N("SpotLightPosX_Callback", kAe, AE_SPOT_LIGHT_POS_X, "SPOT LIGHT X"),
    N("SpotLightPosY_Callback", kAe, AE_SPOT_LIGHT_POS_Y, "SPOT LIGHT Y"),
    // PTZFRel: the direction code's high nibble pans (1 left, 2 right, 3 none), its low nibble
    // tilts (1 up, 2 down, 3 none)
    J("PanTiltStop_Callback", PTZFREL_PAN_TILT_STOP, "STOP", 0x33),
    J("PanTiltUp_Callback", PTZFREL_PAN_TILT_UP, "UP", 0x31),
    J("PanTiltDown_Callback", PTZFREL_PAN_TILT_DOWN, "DOWN", 0x32),
    J("PanTiltLeft_Callback", PTZFREL_PAN_TILT_LEFT, "LEFT", 0x13),
    J("PanTiltRight_Callback", PTZFREL_PAN_TILT_RIGHT, "RIGHT", 0x23),
    J("PanTiltUpLeft_Callback", PTZFREL_PAN_TILT_UP_LEFT, "UP-LEFT", 0x11),
    J("PanTiltUpRight_Callback", PTZFREL_PAN_TILT_UP_RIGHT, "UP-RIGHT", 0x21),
    J("PanTiltDownLeft_Callback", PTZFREL_PAN_TILT_DOWN_LEFT, "DOWN-LEFT", 0x12),
    J("PanTiltDownRight_Callback", PTZFREL_PAN_TILT_DOWN_RIGHT, "DOWN-RIGHT", 0x22),
    G("PanTiltCtrlHome_Callback", PTZFREL_PAN_TILT_CTRL_HOME, PanTiltHome_Callback),
    G("PanTiltCtrlReset_Callback", PTZFREL_PAN_TILT_CTRL_RESET, PanTiltReset_Callback),
    G("FocusAuto_Callback", PTZFREL_FOCUS_AUTO, FocusOnePush_Callback),
    R("PanSpeed_Callback", kRel, PTZFREL_PAN_SPEED, "PAN SPEED"),
    R("TiltSpeed_Callback", kRel, PTZFREL_TILT_SPEED, "TILT SPEED"),
    R("ZoomSpeed_Callback", kRel, PTZFREL_ZOOM_SPEED, "ZOOM SPEED"),
    R("FocusSpeed_Callback", kRel, PTZFREL_FOCUS_SPEED, "FOCUS SPEED"),
    D("ZoomStop_Callback", PTZFREL_ZOOM_STOP, "ZOOM CTRL", "STOP", 0, 0),
    D("ZoomWide_Callback", PTZFREL_ZOOM_WIDE, "ZOOM CTRL", "WIDE", 0x30, PTZFREL_ZOOM_SPEED),
    D("ZoomTele_Callback", PTZFREL_ZOOM_TELE, "ZOOM CTRL", "TELE", 0x20, PTZFREL_ZOOM_SPEED),
    D("FocusStop_Callback", PTZFREL_FOCUS_STOP, "FOCUS CTRL", "STOP", 0, 0),
    D("FocusFar_Callback", PTZFREL_FOCUS_FAR, "FOCUS CTRL", "FAR", 0x20, PTZFREL_FOCUS_SPEED),
    D("FocusNear_Callback", PTZFREL_FOCUS_NEAR, "FOCUS CTRL", "NEAR", 0x30, PTZFREL_FOCUS_SPEED),
};

// The row of a callback, found while compiling: a name without a row does not build.
consteval size_t RowOf(std::string_view callback) {
    for (size_t i = 0; i < std::size(kRows); ++i)
        if (kRows[i].callback == callback) return i;
    throw "a parameter callback without a row in kRows";
}

consteval bool RowsAreUnique() {
    for (size_t i = 0; i < std::size(kRows); ++i)
        for (size_t j = i + 1; j < std::size(kRows); ++j)
            if (kRows[i].callback == kRows[j].callback) return false;
    return true;
}
static_assert(RowsAreUnique(), "two rows for one callback");
#define VCC_COUNT_PARAMETER_CALLBACK(Name) +1
static_assert(std::size(kRows) == 0 VCC_PARAMETER_CALLBACKS(VCC_COUNT_PARAMETER_CALLBACK),
              "every row needs its name in VCC_PARAMETER_CALLBACKS");
#undef VCC_COUNT_PARAMETER_CALLBACK

// ---- the handlers ----------------------------------------------------------------------------------

void EndBracket(int panel, int control, int ok) {
    SetCommandBusy(panel, control, 0);
    if (!ok) SetErrorIndicator();
}

void SendValue(const ParameterRow &row) {
    const int panel = gPanels.*row.panel;
    SetCommandBusy(panel, row.control, 1);
    int value = 0;
    GetCtrlVal(panel, row.control, &value);
    if (row.pattern == Pattern::Ring) {
        char label[256] = "";
        int index = -1;
        GetCtrlIndex(panel, row.control, &index);
        if (index >= 0) GetLabelFromIndex(panel, row.control, index, label);
        if (row.dashEcho)
            ConsolePrintf(">CMND : SET [%s] - %s\n", row.command, label);
        else
            ConsolePrintf(">CMND : SET [%s] = %s\n", row.command, label);
    } else {
        ConsolePrintf(">CMND : SET [%s] = %d\n", row.command, value);
    }
    // The camera takes 16-bit words: a larger number goes out as its low half, while the
    // echo above shows what the user typed.
    const int ok = row.pattern == Pattern::Split
                       ? SetSplitCommand(row.command, value)
                       : SetCommand(row.command, static_cast<unsigned short>(value), row.timeoutMs);
    if (row.afterSet) row.afterSet();
    EndBracket(panel, row.control, ok);
}

void ReadBack(const ParameterRow &row) {
    const int panel = gPanels.*row.panel;
    SetCommandBusy(panel, row.control, 1);
    ConsolePrintf(">CMND : GET [%s]\n", row.command);
    int ok = 0;
    if (row.pattern == Pattern::Split) {
        int value = 0;
        ok = GetSplitCommand(row.command, &value);
        if (ok) SetCtrlVal(panel, row.control, value);
    } else {
        unsigned short value = 0;
        ok = GetCommand(row.command, &value);
        // A ring shows the item of that value; with no such item it keeps what it showed.
        if (ok) SetCtrlVal(panel, row.control, static_cast<int>(value));
    }
    EndBracket(panel, row.control, ok);
}

void RunAction(const ParameterRow &row) {
    const int panel = gPanels.*row.panel;
    SetCommandBusy(panel, row.control, 1);
    // Such commands change many settings at once: nothing may be committed until they end.
    DimCameraControls(1);
    ConsolePrintf(">CMND : %s [%s]\n", row.verb, row.command);
    const int ok = row.action ? row.action(row.timeoutMs) : TriggerCommand(row.command, row.timeoutMs);
    if (row.pattern == Pattern::ActionRefresh)
        RefreshAll_Callback(gPanels.main, MAIN_REFRESH_ALL, EVENT_COMMIT, nullptr, 0, 0);
    else
        DimCameraControls(0);
    EnableBaseControls();
    if (IsPreviewOn()) {
        EnablePreviewCaptureControls();
        DimSnapOption();
    }
    EndBracket(panel, row.control, ok);
}

void SendMotion(const ParameterRow &row) {
    const int panel = gPanels.*row.panel;
    SetCommandBusy(panel, row.control, 1);
    int code = row.code;
    if (row.pattern == Pattern::Drive && row.partner) {
        int speed = 0, index = -1;
        char label[256] = "";
        GetCtrlVal(gPanels.ptzfRel, row.partner, &speed);
        GetCtrlIndex(gPanels.ptzfRel, row.partner, &index);
        if (index >= 0) GetLabelFromIndex(gPanels.ptzfRel, row.partner, index, label);
        code += speed;
        ConsolePrintf(">CMND : SET [%s] = %s (%s)\n", row.command, row.motion, label);
    } else {
        ConsolePrintf(">CMND : SET [%s] = %s\n", row.command, row.motion);
    }
    const int ok = SetCommand(row.command, static_cast<unsigned short>(code));
    EndBracket(panel, row.control, ok);
}

void Delegate(const ParameterRow &row) {
    const int panel = gPanels.*row.panel;
    SetCommandBusy(panel, row.control, 1);
    // The PTZFAbs action reports its own failure.
    row.delegate(panel, row.control, EVENT_COMMIT, nullptr, 0, 0);
    SetCommandBusy(panel, row.control, 0);
}

void ShowGainFormat(const ParameterRow &row) {
    const int panel = gPanels.*row.panel;
    int decimal = 0;
    GetCtrlVal(panel, row.control, &decimal);
    SetCtrlAttribute(panel, row.partner, ATTR_FORMAT, decimal == 1 ? VAL_DECIMAL_FORMAT : VAL_HEX_FORMAT);
}

int RunRow(const ParameterRow &row, int event) {
    if (row.pattern == Pattern::DataFormat) {
        if (event == EVENT_COMMIT) ShowGainFormat(row);
        return 0;
    }
    if (!IsDeviceConnected()) return 0;
    const bool commit = event == EVENT_COMMIT;
    switch (row.pattern) {
    case Pattern::Ring:
    case Pattern::Numeric:
    case Pattern::Split:
        if (commit) SendValue(row);
        else if (event == EVENT_RIGHT_CLICK) ReadBack(row);
        break;
    case Pattern::ReadOnly:
        if (commit || event == EVENT_RIGHT_CLICK) ReadBack(row);
        break;
    case Pattern::ActionRefresh:
    case Pattern::ActionRestore:
        if (commit) RunAction(row);
        break;
    case Pattern::Jog:
    case Pattern::Drive:
        // A press arrives as a left click and the release as a commit: both send.
        if (commit || event == EVENT_LEFT_CLICK) SendMotion(row);
        break;
    case Pattern::Delegate:
        if (commit || event == EVENT_LEFT_CLICK) Delegate(row);
        break;
    case Pattern::DataFormat:
        break;
    }
    return 0;
}

// ---- the digital zoom range -----------------------------------------------------------------------

constexpr int kOpticalZoomMax = 1357;  // second profile, without digital zoom
constexpr int kFirstProfileZoomMax = 398;
constexpr int kThirdProfileZoomMax = 127;
// The digital zoom steps added per D-zoom limit (0 to 11), for USB resolution codes 1 and 2.
constexpr int kDigitalZoom[2][12] = {
    {0, 60, 80, 90, 96, 100, 103, 104, 107, 108, 109, 110},
    {0, 27, 36, 40, 43, 44, 46, 47, 48, 49, 50, 51},
};
constexpr int kZoomSettleMs = 1000;

// The camera pulls a zoom above the new maximum back by itself; show where it ends up.
void ZoomAfterLimitChange() {
    if (!UpdateZoomRange()) return;
    Sleep(kZoomSettleMs);
    Zoom_Callback(gPanels.ptzfAbs, PTZFABS_ZOOM, EVENT_RIGHT_CLICK, nullptr, 0, 0);
}

}  // namespace

int UpdateZoomRange() {
    switch (CurrentModelProfile()) {
    case 0:
        SetCtrlAttribute(gPanels.ptzfAbs, PTZFABS_ZOOM, ATTR_MAX_VALUE, kFirstProfileZoomMax);
        return 0;
    case 2:
        SetCtrlAttribute(gPanels.ptzfAbs, PTZFABS_ZOOM, ATTR_MAX_VALUE, kThirdProfileZoomMax);
        return 0;
    case 1:
        break;
    default:
        return 0;
    }
    int resolution = 0, limit = 0, zoom = 0;
    GetCtrlVal(gPanels.pvInfo, PVINFO_USB_RESOLUTION, &resolution);
    GetCtrlVal(gPanels.ptzfAbs, PTZFABS_D_ZOOM_LIMIT, &limit);
    // Other resolutions (255 after a failed read) and limits have no known digital range:
    // keep the maximum the model profile gave rather than guess one.
    if (resolution < 1 || resolution > 2 || limit < 0 || limit > 11) return 0;
    const int maximum = kOpticalZoomMax + kDigitalZoom[resolution - 1][limit];
    SetCtrlAttribute(gPanels.ptzfAbs, PTZFABS_ZOOM, ATTR_MAX_VALUE, maximum);
    GetCtrlVal(gPanels.ptzfAbs, PTZFABS_ZOOM, &zoom);
    return zoom > maximum ? 1 : 0;
}

// Each callback is a named door to its row; the door ignores the panel and control it is
// handed, so that refreshes can call it from anywhere.
#define VCC_DEFINE_PARAMETER_CALLBACK(Name)                                              \
    int Name##_Callback(int, int, int event, void *, int, int) {                         \
        return RunRow(kRows[RowOf(#Name "_Callback")], event);                           \
    }                                                                                    \
    VCC_REGISTER_CALLBACK(Name##_Callback);
VCC_PARAMETER_CALLBACKS(VCC_DEFINE_PARAMETER_CALLBACK)
#undef VCC_DEFINE_PARAMETER_CALLBACK
