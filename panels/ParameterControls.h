// Parameter controls: one control per camera parameter on the Others, Iq, Ae, Awb, PTZFAbs and
// PTZFRel panels. Committing a control sends its value, the read-back event (right click) reads
// the camera's value into it. Every callback acts on its own fixed panel and control whatever
// panel and control it is given, so refreshes and other features call them directly.
//
// Thread rules: user-interface thread only. The acknowledged commands and the busy bracket
// process events while they wait, so these callbacks may run nested inside one another.
#pragma once

// Every parameter callback, by the name before "_Callback". Each one is a row of the table in
// ParameterControls.cpp; the build fails when a name here has no row or a row has no name.
#define VCC_PARAMETER_CALLBACKS(X)                                                                           \
    /* Others */                                                                                             \
    X(FactoryRst) X(SystemRst) X(LastMemorySave) X(ClearErr) X(GetErr) X(ErrLed) X(OutRaw) X(DebugEnable)   \
    X(PreviewStandbyTime) X(Freeze) X(IrOut) X(IrReceive) X(AfSensitivity) X(AfSpeed) X(AfFrame) X(Mirror)   \
    X(PresetLoad) X(PresetSave) X(PresetClear) X(PictureEffect)                                              \
    /* Iq */                                                                                                 \
    X(ThreeDNR) X(TwoDNR) X(WDR) X(SkinTone) X(BlackLevel) X(Brightness) X(Contrast) X(Hue) X(Saturation)    \
    X(Sharpness) X(Gamma)                                                                                    \
    /* PTZFAbs */                                                                                            \
    X(Zoom) X(DZoomLimit) X(DZoomPos) X(AfMode) X(Focus) X(FocusOnePush) X(PanTiltHome) X(PanTiltReset)      \
    X(PanTiltLimitOnOff) X(PanLimitRight) X(PanLimitLeft) X(TiltLimitUp) X(TiltLimitDown) X(Pan) X(Tilt)     \
    /* Awb */                                                                                                \
    X(AwbMode) X(AwbSelect) X(WBOnePush) X(WBTemperature) X(RedGain) X(BlueGain) X(RedGainDataFmt)           \
    X(BlueGainDataFmt)                                                                                       \
    /* Ae */                                                                                                 \
    X(AeMode) X(AePriority) X(AeSelect) X(Gain) X(GainLimit) X(ExposureTime) X(PwrFreq) X(Iris)              \
    X(BacklightOnOff) X(BacklightComp) X(AeCompOnOff) X(SpotLightOnOff) X(SpotLightPosX) X(SpotLightPosY)    \
    /* PTZFRel */                                                                                            \
    X(PanTiltStop) X(PanTiltUp) X(PanTiltDown) X(PanTiltLeft) X(PanTiltRight) X(PanTiltUpLeft)               \
    X(PanTiltUpRight) X(PanTiltDownLeft) X(PanTiltDownRight) X(PanTiltCtrlHome) X(PanTiltCtrlReset)          \
    X(FocusAuto) X(PanSpeed) X(TiltSpeed) X(ZoomSpeed) X(FocusSpeed) X(ZoomStop) X(ZoomWide) X(ZoomTele)     \
    X(FocusStop) X(FocusFar) X(FocusNear)

#define VCC_DECLARE_PARAMETER_CALLBACK(Name) \
    int Name##_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
VCC_PARAMETER_CALLBACKS(VCC_DECLARE_PARAMETER_CALLBACK)
#undef VCC_DECLARE_PARAMETER_CALLBACK

// Sets the maximum of the PTZFAbs zoom control for the current model profile. On the second
// profile the digital zoom adds to it by the USB resolution and the D-zoom limit; the result
// is 1 when the zoom control's value now lies above the maximum, else 0.
int UpdateZoomRange();
