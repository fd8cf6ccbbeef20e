// Busy state and control enabling. The connection, power and preview state is what the
// indicators show; nothing here keeps a copy that could drift from the screen.
#include "app/BusyState.h"

#include <iterator>

#include "MainUir.h"
#include "app/SystemTimer.h"
#include "ui/UserInterface.h"

PanelHandles gPanels{};

namespace {

struct CtrlRef {
    int PanelHandles::*panel;
    int control;
};

constexpr CtrlRef kCameraControls[] = {
    // Others
    {&PanelHandles::others, OTHERS_LAST_MEMORY_SAVE}, {&PanelHandles::others, OTHERS_FACTORY_RST},
    {&PanelHandles::others, OTHERS_SYSTEM_RST}, {&PanelHandles::others, OTHERS_GET_ERR},
    {&PanelHandles::others, OTHERS_CLEAR_ERR}, {&PanelHandles::others, OTHERS_DEBUG_ENABLE},
    {&PanelHandles::others, OTHERS_FREEZE}, {&PanelHandles::others, OTHERS_ERR_LED},
    {&PanelHandles::others, OTHERS_OUT_RAW}, {&PanelHandles::others, OTHERS_PREVIEW_STANDBY_TIME},
    {&PanelHandles::others, OTHERS_IR_OUT}, {&PanelHandles::others, OTHERS_IR_RECEIVE},
    {&PanelHandles::others, OTHERS_AF_SENSITIVITY}, {&PanelHandles::others, OTHERS_AF_SPEED},
    {&PanelHandles::others, OTHERS_AF_FRAME}, {&PanelHandles::others, OTHERS_MIRROR},
    {&PanelHandles::others, OTHERS_PRESET_LOAD}, {&PanelHandles::others, OTHERS_PRESET_SAVE},
    {&PanelHandles::others, OTHERS_PRESET_CLEAR}, {&PanelHandles::others, OTHERS_PICTURE_EFFECT},
    {&PanelHandles::others, OTHERS_REFRESH_OTHERS_PNL},
    // PTZFAbs
    {&PanelHandles::ptzfAbs, PTZFABS_PAN_TILT_LIMIT_ON_OFF}, {&PanelHandles::ptzfAbs, PTZFABS_PAN_LIMIT_RIGHT},
    {&PanelHandles::ptzfAbs, PTZFABS_PAN_LIMIT_LEFT}, {&PanelHandles::ptzfAbs, PTZFABS_TILT_LIMIT_UP},
    {&PanelHandles::ptzfAbs, PTZFABS_TILT_LIMIT_DOWN}, {&PanelHandles::ptzfAbs, PTZFABS_PAN},
    {&PanelHandles::ptzfAbs, PTZFABS_TILT}, {&PanelHandles::ptzfAbs, PTZFABS_PAN_TILT_HOME},
    {&PanelHandles::ptzfAbs, PTZFABS_PAN_TILT_RESET}, {&PanelHandles::ptzfAbs, PTZFABS_ZOOM},
    {&PanelHandles::ptzfAbs, PTZFABS_D_ZOOM_LIMIT}, {&PanelHandles::ptzfAbs, PTZFABS_D_ZOOM_POS},
    {&PanelHandles::ptzfAbs, PTZFABS_FOCUS}, {&PanelHandles::ptzfAbs, PTZFABS_AF_MODE},
    {&PanelHandles::ptzfAbs, PTZFABS_FOCUS_ONE_PUSH}, {&PanelHandles::ptzfAbs, PTZFABS_REFRESH_PTZF_ABS_PNL},
    // Iq
    {&PanelHandles::iq, IQ_THREE_DNR}, {&PanelHandles::iq, IQ_TWO_DNR}, {&PanelHandles::iq, IQ_WDR},
    {&PanelHandles::iq, IQ_SKIN_TONE}, {&PanelHandles::iq, IQ_BLACK_LEVEL}, {&PanelHandles::iq, IQ_BRIGHTNESS},
    {&PanelHandles::iq, IQ_CONTRAST}, {&PanelHandles::iq, IQ_HUE}, {&PanelHandles::iq, IQ_SATURATION},
    {&PanelHandles::iq, IQ_SHARPNESS}, {&PanelHandles::iq, IQ_GAMMA}, {&PanelHandles::iq, IQ_REFRESH_IQ_PNL},
    // Ae
    {&PanelHandles::ae, AE_AE_MODE}, {&PanelHandles::ae, AE_AE_PRIORITY}, {&PanelHandles::ae, AE_AE_SELECT},
    {&PanelHandles::ae, AE_GAIN}, {&PanelHandles::ae, AE_GAIN_LIMIT}, {&PanelHandles::ae, AE_EXPOSURE_TIME},
    {&PanelHandles::ae, AE_PWR_FREQ}, {&PanelHandles::ae, AE_IRIS}, {&PanelHandles::ae, AE_BACKLIGHT_COMP},
    {&PanelHandles::ae, AE_BACKLIGHT_ON_OFF}, {&PanelHandles::ae, AE_AE_COMP_ON_OFF},
    {&PanelHandles::ae, AE_SPOT_LIGHT_ON_OFF}, {&PanelHandles::ae, AE_SPOT_LIGHT_POS_X},
    {&PanelHandles::ae, AE_SPOT_LIGHT_POS_Y}, {&PanelHandles::ae, AE_REFRESH_AE_PNL},
    // Awb
    {&PanelHandles::awb, AWB_AWB_MODE}, {&PanelHandles::awb, AWB_AWB_SELECT}, {&PanelHandles::awb, AWB_WB_TEMPERATURE},
    {&PanelHandles::awb, AWB_RED_GAIN}, {&PanelHandles::awb, AWB_BLUE_GAIN}, {&PanelHandles::awb, AWB_RED_GAIN_DATA_FMT},
    {&PanelHandles::awb, AWB_BLUE_GAIN_DATA_FMT}, {&PanelHandles::awb, AWB_WB_ONE_PUSH},
    {&PanelHandles::awb, AWB_REFRESH_AWB_PNL},
    // PvInfo
    {&PanelHandles::pvInfo, PVINFO_VIDEO_CAMERA_INFO}, {&PanelHandles::pvInfo, PVINFO_USB_INFO},
    {&PanelHandles::pvInfo, PVINFO_PREVIEW_ON_OFF}, {&PanelHandles::pvInfo, PVINFO_SNAP_ENABLE},
    {&PanelHandles::pvInfo, PVINFO_REFRESH_PV_INFO_PNL},
    // main
    {&PanelHandles::main, MAIN_INI_LOAD}, {&PanelHandles::main, MAIN_INI_SAVE},
    // PTZFRel
    {&PanelHandles::ptzfRel, PTZFREL_PAN_TILT_UP}, {&PanelHandles::ptzfRel, PTZFREL_PAN_TILT_DOWN},
    {&PanelHandles::ptzfRel, PTZFREL_PAN_TILT_LEFT}, {&PanelHandles::ptzfRel, PTZFREL_PAN_TILT_RIGHT},
    {&PanelHandles::ptzfRel, PTZFREL_PAN_TILT_UP_LEFT}, {&PanelHandles::ptzfRel, PTZFREL_PAN_TILT_UP_RIGHT},
    {&PanelHandles::ptzfRel, PTZFREL_PAN_TILT_DOWN_LEFT}, {&PanelHandles::ptzfRel, PTZFREL_PAN_TILT_DOWN_RIGHT},
    {&PanelHandles::ptzfRel, PTZFREL_PAN_TILT_STOP}, {&PanelHandles::ptzfRel, PTZFREL_PAN_TILT_CTRL_HOME},
    {&PanelHandles::ptzfRel, PTZFREL_PAN_TILT_CTRL_RESET}, {&PanelHandles::ptzfRel, PTZFREL_ZOOM_WIDE},
    {&PanelHandles::ptzfRel, PTZFREL_ZOOM_TELE}, {&PanelHandles::ptzfRel, PTZFREL_ZOOM_STOP},
    {&PanelHandles::ptzfRel, PTZFREL_FOCUS_FAR}, {&PanelHandles::ptzfRel, PTZFREL_FOCUS_NEAR},
    {&PanelHandles::ptzfRel, PTZFREL_FOCUS_STOP}, {&PanelHandles::ptzfRel, PTZFREL_FOCUS_AUTO},
    {&PanelHandles::ptzfRel, PTZFREL_PAN_SPEED}, {&PanelHandles::ptzfRel, PTZFREL_TILT_SPEED},
    {&PanelHandles::ptzfRel, PTZFREL_ZOOM_SPEED}, {&PanelHandles::ptzfRel, PTZFREL_FOCUS_SPEED},
    {&PanelHandles::ptzfRel, PTZFREL_REFRESH_PTZF_REL_PNL},
};
static_assert(std::size(kCameraControls) == 103, "the camera-command controls are 103");

// Dimmed with the camera controls, but left alone when they are enabled again: their own
// state follows power, power method and preview.
constexpr CtrlRef kDimOnlyControls[] = {
    {&PanelHandles::main, MAIN_POWER_UP_DOWN},        {&PanelHandles::main, MAIN_PWR_CTRL_METHOD},
    {&PanelHandles::main, MAIN_REFRESH_ALL},          {&PanelHandles::main, MAIN_INI_APPLY},
    {&PanelHandles::pvInfo, PVINFO_CAPTURE_PIN},      {&PanelHandles::pvInfo, PVINFO_CAPTURE_FILTER},
    {&PanelHandles::pvInfo, PVINFO_SNAP},
};

constexpr CtrlRef kRefreshButtons[] = {
    {&PanelHandles::others, OTHERS_REFRESH_OTHERS_PNL}, {&PanelHandles::ptzfAbs, PTZFABS_REFRESH_PTZF_ABS_PNL},
    {&PanelHandles::ptzfRel, PTZFREL_REFRESH_PTZF_REL_PNL}, {&PanelHandles::iq, IQ_REFRESH_IQ_PNL},
    {&PanelHandles::ae, AE_REFRESH_AE_PNL}, {&PanelHandles::awb, AWB_REFRESH_AWB_PNL},
    {&PanelHandles::pvInfo, PVINFO_REFRESH_PV_INFO_PNL},
};

constexpr CtrlRef kBaseControls[] = {
    {&PanelHandles::main, MAIN_POWER_UP_DOWN},       {&PanelHandles::main, MAIN_REFRESH_ALL},
    {&PanelHandles::main, MAIN_INI_LOAD},            {&PanelHandles::main, MAIN_INI_SAVE},
    {&PanelHandles::pvInfo, PVINFO_REFRESH_PV_INFO_PNL},
    {&PanelHandles::others, OTHERS_IR_OUT},          {&PanelHandles::others, OTHERS_IR_RECEIVE},
    {&PanelHandles::others, OTHERS_GET_ERR},         {&PanelHandles::others, OTHERS_CLEAR_ERR},
    {&PanelHandles::others, OTHERS_DEBUG_ENABLE},    {&PanelHandles::others, OTHERS_ERR_LED},
    {&PanelHandles::others, OTHERS_PREVIEW_STANDBY_TIME},
    {&PanelHandles::ptzfRel, PTZFREL_PAN_SPEED},     {&PanelHandles::ptzfRel, PTZFREL_TILT_SPEED},
    {&PanelHandles::ptzfRel, PTZFREL_ZOOM_SPEED},    {&PanelHandles::ptzfRel, PTZFREL_FOCUS_SPEED},
};

template <size_t N> void setDimmed(const CtrlRef (&controls)[N], int dimmed) {
    for (const CtrlRef &ref : controls) SetCtrlAttribute(gPanels.*ref.panel, ref.control, ATTR_DIMMED, dimmed);
}

void dim(int panel, int control, int dimmed) { SetCtrlAttribute(panel, control, ATTR_DIMMED, dimmed); }

int readInt(int panel, int control) {
    int value = 0;
    GetCtrlVal(panel, control, &value);
    return value;
}

// Kinds of control that cannot hold the input focus, so the bracket never hands it back to them.
bool takesFocus(int style) {
    return style != CTRL_LED && style != CTRL_TEXT_MSG && style != CTRL_CANVAS && style != CTRL_TIMER;
}

}  // namespace

int IsDeviceConnected() { return readInt(gPanels.main, MAIN_CONNECTED) == 1; }
int IsPowerOn() { return readInt(gPanels.main, MAIN_POWER_UP_DOWN) == 1; }
int IsPwrMethodAA() { return readInt(gPanels.main, MAIN_PWR_CTRL_METHOD) == 0xAA; }
int IsPreviewOn() { return readInt(gPanels.pvInfo, PVINFO_PREVIEW_ON_OFF) == 1; }
int IsCameraPreviewActive() { return readInt(gPanels.pvInfo, PVINFO_PREVIEW_STATUS) == 1; }
int IsMsgDisplayOn() { return readInt(gPanels.main, MAIN_MSG_EN) == 1; }

void SetErrorIndicator() { SetCtrlVal(gPanels.main, MAIN_ERROR, 1); }

void SetCommandBusy(int panel, int control, int phase) {
    if (phase) {
        SetActiveCtrl(gPanels.main, MAIN_BUSY);
        SetCtrlVal(gPanels.main, MAIN_BUSY, 1);
        dim(panel, control, 1);
        ProcessDrawEvents();
        return;
    }
    // Clicks made on the dimmed control meanwhile are dropped here; a click on another
    // control runs its callback now, nested inside this one.
    ProcessSystemEvents();
    dim(panel, control, 0);
    SetCtrlVal(gPanels.main, MAIN_BUSY, 0);
    int visible = 0, style = 0;
    GetCtrlAttribute(panel, control, ATTR_VISIBLE, &visible);
    GetCtrlAttribute(panel, control, ATTR_CTRL_STYLE, &style);
    if (visible && takesFocus(style)) SetActiveCtrl(panel, control);
}

void DimCameraControls(int dimmed) {
    setDimmed(kCameraControls, dimmed);
    if (dimmed) setDimmed(kDimOnlyControls, 1);
    SetActiveCtrl(gPanels.main, MAIN_BUSY);
    ProcessDrawEvents();
    ProcessSystemEvents();
}

void EnableBaseControls() {
    setDimmed(kBaseControls, 0);
    dim(gPanels.main, MAIN_MODEL, 1);
    if (IsPwrMethodAA()) {
        dim(gPanels.pvInfo, PVINFO_PREVIEW_ON_OFF, 0);
        dim(gPanels.pvInfo, PVINFO_SNAP_ENABLE, 0);
    }
}

void EnablePreviewCaptureControls() {
    dim(gPanels.pvInfo, PVINFO_CAPTURE_PIN, 0);
    dim(gPanels.pvInfo, PVINFO_CAPTURE_FILTER, 0);
    if (readInt(gPanels.pvInfo, PVINFO_SNAP_ENABLE) == 1) dim(gPanels.pvInfo, PVINFO_SNAP, 0);
}

void DimPreviewCaptureControls() {
    dim(gPanels.pvInfo, PVINFO_CAPTURE_PIN, 1);
    dim(gPanels.pvInfo, PVINFO_CAPTURE_FILTER, 1);
    dim(gPanels.pvInfo, PVINFO_SNAP, 1);
}

void DimSnapOption() { dim(gPanels.pvInfo, PVINFO_SNAP_ENABLE, 1); }
void EnableSnapOption() { dim(gPanels.pvInfo, PVINFO_SNAP_ENABLE, 0); }

void UpdateControlEnabling() {
    if (IsPowerOn()) {
        if (IsPwrMethodAA())
            DimCameraControls(IsCameraPreviewActive() ? 0 : 1);
        else
            DimCameraControls(0);
        if (IsPreviewOn()) {
            EnablePreviewCaptureControls();
            DimSnapOption();
        } else {
            DimPreviewCaptureControls();
            EnableSnapOption();
        }
    } else {
        DimCameraControls(1);
    }
    EnableBaseControls();
    setDimmed(kRefreshButtons, 0);
}

void ResetConnectionState(int hideConsole) {
    SetCtrlVal(gPanels.main, MAIN_CONNECTED, 0);
    SetCtrlVal(gPanels.main, MAIN_ERROR, 0);
    SetCtrlVal(gPanels.main, MAIN_BUSY, 0);
    SetCtrlVal(gPanels.main, MAIN_POWER_UP_DOWN, 0);
    SetCtrlVal(gPanels.pvInfo, PVINFO_PREVIEW_ON_OFF, 0);
    if (hideConsole == 1) {
        SetCtrlVal(gPanels.main, MAIN_MSG_EN, 0);
        SetPanelAttribute(gPanels.main, ATTR_HEIGHT, 310);
        SetPanelAttribute(gPanels.main, ATTR_WIDTH, 760);
    }
    DimCameraControls(1);
    dim(gPanels.main, MAIN_INI_LOAD, 0);
    dim(gPanels.main, MAIN_INI_SAVE, 0);
    dim(gPanels.main, MAIN_MODEL, 0);
    dim(gPanels.main, MAIN_PWR_CTRL_METHOD, 1);
    ClearErrorBlinkLatch();
}
