// The refresh orders are data: one list of read-backs per panel, and refresh-all walks the
// power state and then the panels' lists in a fixed order.
#include "panels/PanelRefresh.h"

#include <span>

#include "MainUir.h"
#include "app/BusyState.h"
#include "device/Connection.h"
#include "panels/DeviceInfo.h"
#include "panels/ParameterControls.h"
#include "ui/CallbackRegistry.h"
#include "ui/UserInterface.h"

namespace {

using PanelOf = int PanelHandles::*;

constexpr CtrlCallbackPtr kPvInfo[] = {USBInfo_Callback, VideoCameraInfo_Callback};
constexpr CtrlCallbackPtr kOthers[] = {
    DebugEnable_Callback,   Freeze_Callback,      ErrLed_Callback,      OutRaw_Callback,
    PreviewStandbyTime_Callback, IrOut_Callback,  IrReceive_Callback,   AfSensitivity_Callback,
    AfSpeed_Callback,       AfFrame_Callback,     Mirror_Callback,      PresetLoad_Callback,
    PresetSave_Callback,    PresetClear_Callback, PictureEffect_Callback,
};
constexpr CtrlCallbackPtr kPTZFAbs[] = {
    PanTiltLimitOnOff_Callback, PanLimitRight_Callback, PanLimitLeft_Callback, TiltLimitUp_Callback,
    TiltLimitDown_Callback,     Pan_Callback,           Tilt_Callback,         Zoom_Callback,
    DZoomLimit_Callback,        DZoomPos_Callback,      Focus_Callback,        AfMode_Callback,
};
constexpr CtrlCallbackPtr kPTZFRel[] = {PanSpeed_Callback, TiltSpeed_Callback, ZoomSpeed_Callback, FocusSpeed_Callback};
constexpr CtrlCallbackPtr kIq[] = {
    ThreeDNR_Callback, TwoDNR_Callback,   WDR_Callback,        SkinTone_Callback,  BlackLevel_Callback, Brightness_Callback,
    Contrast_Callback, Hue_Callback,      Saturation_Callback, Sharpness_Callback, Gamma_Callback,
};
constexpr CtrlCallbackPtr kAe[] = {
    AeMode_Callback,        AePriority_Callback,    AeSelect_Callback,      Gain_Callback,
    GainLimit_Callback,     ExposureTime_Callback,  PwrFreq_Callback,       Iris_Callback,
    BacklightComp_Callback, BacklightOnOff_Callback, AeCompOnOff_Callback,  SpotLightOnOff_Callback,
    SpotLightPosX_Callback, SpotLightPosY_Callback,
};
constexpr CtrlCallbackPtr kAwb[] = {
    AwbMode_Callback, AwbSelect_Callback, WBTemperature_Callback, RedGain_Callback, BlueGain_Callback,
};

struct PanelRefresh {
    PanelOf panel;
    int button;
    std::span<const CtrlCallbackPtr> readBacks;
};
// In the order refresh-all reads them.
constexpr PanelRefresh kPvInfoRefresh{&PanelHandles::pvInfo, PVINFO_REFRESH_PV_INFO_PNL, kPvInfo};
constexpr PanelRefresh kOthersRefresh{&PanelHandles::others, OTHERS_REFRESH_OTHERS_PNL, kOthers};
constexpr PanelRefresh kPTZFAbsRefresh{&PanelHandles::ptzfAbs, PTZFABS_REFRESH_PTZF_ABS_PNL, kPTZFAbs};
constexpr PanelRefresh kPTZFRelRefresh{&PanelHandles::ptzfRel, PTZFREL_REFRESH_PTZF_REL_PNL, kPTZFRel};
constexpr PanelRefresh kIqRefresh{&PanelHandles::iq, IQ_REFRESH_IQ_PNL, kIq};
constexpr PanelRefresh kAeRefresh{&PanelHandles::ae, AE_REFRESH_AE_PNL, kAe};
constexpr PanelRefresh kAwbRefresh{&PanelHandles::awb, AWB_REFRESH_AWB_PNL, kAwb};
constexpr const PanelRefresh *kAllPanels[] = {
    &kPvInfoRefresh, &kOthersRefresh, &kPTZFAbsRefresh, &kPTZFRelRefresh, &kIqRefresh, &kAeRefresh, &kAwbRefresh,
};

// Power and power method come first: what the others show, and which controls are usable
// afterwards, depends on them.
constexpr CtrlCallbackPtr kPowerReadBacks[] = {PowerUpDown_Callback, PwrCtrlMethod_Callback};

void ReadBack(CtrlCallbackPtr callback, int panel, int control) {
    callback(panel, control, EVENT_RIGHT_CLICK, nullptr, 0, 0);
}

int RefreshPanel(const PanelRefresh &refresh, int event) {
    if (event != EVENT_COMMIT || !IsDeviceConnected()) return 0;
    const int panel = gPanels.*refresh.panel;
    SetCommandBusy(panel, refresh.button, 1);
    // A failing read-back lights the error indicator by itself and the next one still runs.
    for (CtrlCallbackPtr callback : refresh.readBacks) ReadBack(callback, panel, refresh.button);
    UpdateControlEnabling();
    SetCommandBusy(panel, refresh.button, 0);
    return 0;
}

}  // namespace

int RefreshPvInfoPnl_Callback(int, int, int event, void *, int, int) { return RefreshPanel(kPvInfoRefresh, event); }
VCC_REGISTER_CALLBACK(RefreshPvInfoPnl_Callback);
int RefreshOthersPnl_Callback(int, int, int event, void *, int, int) { return RefreshPanel(kOthersRefresh, event); }
VCC_REGISTER_CALLBACK(RefreshOthersPnl_Callback);
int RefreshPTZFAbsPnl_Callback(int, int, int event, void *, int, int) { return RefreshPanel(kPTZFAbsRefresh, event); }
VCC_REGISTER_CALLBACK(RefreshPTZFAbsPnl_Callback);
int RefreshPTZFRelPnl_Callback(int, int, int event, void *, int, int) { return RefreshPanel(kPTZFRelRefresh, event); }
VCC_REGISTER_CALLBACK(RefreshPTZFRelPnl_Callback);
int RefreshIqPnl_Callback(int, int, int event, void *, int, int) { return RefreshPanel(kIqRefresh, event); }
VCC_REGISTER_CALLBACK(RefreshIqPnl_Callback);
int RefreshAePnl_Callback(int, int, int event, void *, int, int) { return RefreshPanel(kAeRefresh, event); }
VCC_REGISTER_CALLBACK(RefreshAePnl_Callback);
int RefreshAwbPnl_Callback(int, int, int event, void *, int, int) { return RefreshPanel(kAwbRefresh, event); }
VCC_REGISTER_CALLBACK(RefreshAwbPnl_Callback);

int RefreshAll_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_COMMIT || !IsDeviceConnected()) return 0;
    const int main = gPanels.main;
    SetCommandBusy(main, MAIN_REFRESH_ALL, 1);
    SetActiveCtrl(main, MAIN_BUSY);
    for (const PanelRefresh *refresh : kAllPanels)
        SetCtrlAttribute(gPanels.*refresh->panel, refresh->button, ATTR_DIMMED, 1);
    DimCameraControls(1);

    // Each read-back's bracket undims its own control when it ends; dim again at once so
    // that nothing can be committed while the panels are being filled.
    for (CtrlCallbackPtr callback : kPowerReadBacks) {
        ReadBack(callback, main, MAIN_REFRESH_ALL);
        DimCameraControls(1);
    }
    for (const PanelRefresh *refresh : kAllPanels)
        for (CtrlCallbackPtr callback : refresh->readBacks) {
            ReadBack(callback, main, MAIN_REFRESH_ALL);
            DimCameraControls(1);
        }

    UpdateControlEnabling();
    UpdateZoomRange();
    SetCommandBusy(main, MAIN_REFRESH_ALL, 0);
    return 0;
}
VCC_REGISTER_CALLBACK(RefreshAll_Callback);
