// The camera panels as a technician meets them, beyond what the scenarios show: every
// callback silent without a camera, the gain display toggles, the zoom range table, the
// actions keeping every control out of reach while they wait, and reads that fail half way.
#include "app/ModelProfiles.h"
#include "device/Connection.h"
#include "panels/DeviceInfo.h"
#include "panels/PanelRefresh.h"
#include "panels/ParameterControls.h"
#include "tests/app/ToolFixture.h"
#include "ui/UiModel.h"

namespace {

class Panels : public ToolTest {
protected:
    void connect() {
        VideoCameraConnect_Callback(gPanels.main, MAIN_VIDEO_CAMERA_CONNECT, EVENT_RIGHT_CLICK, nullptr, 0, 0);
        ASSERT_TRUE(IsDeviceConnected());
        forget();
    }
    // Only what happens from here on counts.
    void forget() {
        ResetTextBox(gPanels.main, MAIN_CONSOLE, "");
        sim::camera().clearTraffic();
    }
    void chooseModel(int profile) {
        SetCtrlVal(gPanels.main, MAIN_MODEL, profile);
        ConfigureModelPanels();
    }
    static void run(CtrlCallbackPtr callback, int event) { callback(0, 0, event, nullptr, 0, 0); }
    int value(int panel, int control) {
        int v = 0;
        GetCtrlVal(panel, control, &v);
        return v;
    }
    int zoomMax() {
        int max = 0;
        GetCtrlAttribute(gPanels.ptzfAbs, PTZFABS_ZOOM, ATTR_MAX_VALUE, &max);
        return max;
    }
};

#define VCC_PARAMETER_CALLBACK_POINTER(Name) Name##_Callback,
const CtrlCallbackPtr kParameterCallbacks[] = {VCC_PARAMETER_CALLBACKS(VCC_PARAMETER_CALLBACK_POINTER)};
const CtrlCallbackPtr kOtherCallbacks[] = {
    RefreshPvInfoPnl_Callback, RefreshOthersPnl_Callback, RefreshPTZFAbsPnl_Callback, RefreshPTZFRelPnl_Callback,
    RefreshIqPnl_Callback,     RefreshAePnl_Callback,     RefreshAwbPnl_Callback,     RefreshAll_Callback,
    VideoCameraInfo_Callback,  USBInfo_Callback,
};

TEST_F(Panels, WithoutACameraNoCallbackPrintsSendsOrLightsAnything) {
    forget();
    for (int event : {EVENT_COMMIT, EVENT_RIGHT_CLICK, EVENT_LEFT_CLICK, EVENT_LEFT_DOUBLE_CLICK}) {
        for (CtrlCallbackPtr callback : kParameterCallbacks) run(callback, event);
        for (CtrlCallbackPtr callback : kOtherCallbacks) run(callback, event);
    }
    EXPECT_EQ(console(), "");
    EXPECT_TRUE(sim::camera().traffic().empty());
    EXPECT_EQ(value(gPanels.main, MAIN_BUSY), 0);
    EXPECT_EQ(value(gPanels.main, MAIN_ERROR), 0);
}

TEST_F(Panels, GainDisplayTogglesWorkWithoutACameraAndEachMindsItsOwnGain) {
    auto format = [&](int control) {
        int f = -1;
        GetCtrlAttribute(gPanels.awb, control, ATTR_FORMAT, &f);
        return f;
    };
    SetCtrlVal(gPanels.awb, AWB_RED_GAIN_DATA_FMT, 0);
    RedGainDataFmt_Callback(0, 0, EVENT_COMMIT, nullptr, 0, 0);
    EXPECT_EQ(format(AWB_RED_GAIN), VAL_HEX_FORMAT);
    EXPECT_EQ(format(AWB_BLUE_GAIN), VAL_DECIMAL_FORMAT);
    // Other events leave the display alone.
    SetCtrlVal(gPanels.awb, AWB_RED_GAIN_DATA_FMT, 1);
    RedGainDataFmt_Callback(0, 0, EVENT_RIGHT_CLICK, nullptr, 0, 0);
    EXPECT_EQ(format(AWB_RED_GAIN), VAL_HEX_FORMAT);
    RedGainDataFmt_Callback(0, 0, EVENT_COMMIT, nullptr, 0, 0);
    EXPECT_EQ(format(AWB_RED_GAIN), VAL_DECIMAL_FORMAT);
    SetCtrlVal(gPanels.awb, AWB_BLUE_GAIN_DATA_FMT, 0);
    BlueGainDataFmt_Callback(0, 0, EVENT_COMMIT, nullptr, 0, 0);
    EXPECT_EQ(format(AWB_BLUE_GAIN), VAL_HEX_FORMAT);
    EXPECT_EQ(console(), std::string(">LIB : SET [INITIALIZE]\n>AP version : UI = 1.51 \n>AP version : Library = 2.10\n"));
}

TEST_F(Panels, ZoomRangeFollowsProfileResolutionAndDigitalZoomLimit) {
    chooseModel(1);
    const int steps[2][12] = {{0, 60, 80, 90, 96, 100, 103, 104, 107, 108, 109, 110},
                              {0, 27, 36, 40, 43, 44, 46, 47, 48, 49, 50, 51}};
    SetCtrlVal(gPanels.ptzfAbs, PTZFABS_ZOOM, 0);
    for (int code : {1, 2})
        for (int limit = 0; limit < 12; ++limit) {
            SetCtrlVal(gPanels.pvInfo, PVINFO_USB_RESOLUTION, code);
            SetCtrlVal(gPanels.ptzfAbs, PTZFABS_D_ZOOM_LIMIT, limit);
            EXPECT_EQ(UpdateZoomRange(), 0);
            EXPECT_EQ(zoomMax(), 1357 + steps[code - 1][limit]) << code << " " << limit;
        }
    // A zoom above the new maximum is reported, for the caller to read it back.
    SetCtrlVal(gPanels.ptzfAbs, PTZFABS_ZOOM, 1400);
    SetCtrlVal(gPanels.pvInfo, PVINFO_USB_RESOLUTION, 1);
    SetCtrlVal(gPanels.ptzfAbs, PTZFABS_D_ZOOM_LIMIT, 0);
    EXPECT_EQ(UpdateZoomRange(), 1);
    EXPECT_EQ(zoomMax(), 1357);
    // A resolution or limit without a known digital range keeps the maximum.
    SetCtrlVal(gPanels.pvInfo, PVINFO_USB_RESOLUTION, 255);
    SetCtrlVal(gPanels.ptzfAbs, PTZFABS_D_ZOOM_LIMIT, 11);
    EXPECT_EQ(UpdateZoomRange(), 0);
    SetCtrlVal(gPanels.pvInfo, PVINFO_USB_RESOLUTION, 2);
    SetCtrlVal(gPanels.ptzfAbs, PTZFABS_D_ZOOM_LIMIT, 12);
    EXPECT_EQ(UpdateZoomRange(), 0);
    EXPECT_EQ(zoomMax(), 1357);
    // The other models have a fixed maximum and never ask for a read-back.
    chooseModel(0);
    EXPECT_EQ(UpdateZoomRange(), 0);
    EXPECT_EQ(zoomMax(), 398);
    chooseModel(2);
    EXPECT_EQ(UpdateZoomRange(), 0);
    EXPECT_EQ(zoomMax(), 127);
}

TEST_F(Panels, DZoomLimitReadsTheZoomBackAfterASecondOnlyWhenItFellOutOfRange) {
    sim::camera().reset(1);
    chooseModel(1);
    connect();
    ASSERT_EQ(zoomMax(), 1357);
    SetCtrlVal(gPanels.ptzfAbs, PTZFABS_ZOOM, 1300);
    SetCtrlVal(gPanels.ptzfAbs, PTZFABS_D_ZOOM_LIMIT, 11);
    DZoomLimit_Callback(0, 0, EVENT_COMMIT, nullptr, 0, 0);
    EXPECT_EQ(sim::camera().traffic(), std::vector<std::string>{"W 5 0x0030 0x000B"});
    EXPECT_EQ(zoomMax(), 1467);

    forget();
    SetCtrlVal(gPanels.ptzfAbs, PTZFABS_ZOOM, 1400);
    SetCtrlVal(gPanels.ptzfAbs, PTZFABS_D_ZOOM_LIMIT, 0);
    const double start = vcc::clock::nowMs();
    DZoomLimit_Callback(0, 0, EVENT_COMMIT, nullptr, 0, 0);
    EXPECT_GE(vcc::clock::nowMs() - start, 1000);
    EXPECT_EQ(sim::camera().traffic(), (std::vector<std::string>{"W 5 0x0030 0x0000", "R 5 0x00E2 0x0000"}));
    EXPECT_EQ(value(gPanels.ptzfAbs, PTZFABS_ZOOM), 0);
}

TEST_F(Panels, WhileAnActionWaitsEveryCameraControlIsOutOfReach) {
    connect();
    DisplayPanel(gPanels.iq);
    vcc::ui::Model &model = vcc::ui::Model::instance();
    // A click made before the action's first wait meets the dimming and is dropped.
    model.post({gPanels.iq, IQ_BRIGHTNESS, EVENT_COMMIT});
    sim::camera().queueReads(5, 0x123, {1});
    LastMemorySave_Callback(0, 0, EVENT_COMMIT, nullptr, 0, 0);
    EXPECT_EQ(console(), ">CMND : SET [LAST MEM. SAVE]\n> - W [0x0123] = 0x00\n> - W [0x0023] = 0xAA\n"
                         "> - R [0x0123] = 0x01\n");
    EXPECT_FALSE(dimmed(gPanels.iq, IQ_BRIGHTNESS));
    EXPECT_FALSE(dimmed(gPanels.others, OTHERS_LAST_MEMORY_SAVE));

    // A plain set is no such barrier: the click runs inside it, once its own access is done.
    forget();
    model.post({gPanels.iq, IQ_BRIGHTNESS, EVENT_COMMIT});
    Contrast_Callback(0, 0, EVENT_COMMIT, nullptr, 0, 0);
    EXPECT_EQ(console(), ">CMND : SET [CONTRAST] = 8\n> - W [0x00D2] = 0x08\n"
                         ">CMND : SET [BRIGHTNESS] = 8\n> - W [0x00D1] = 0x08\n");
}

TEST_F(Panels, ARingKeepsItsItemWhenTheCameraReportsAValueItDoesNotOffer) {
    connect();
    sim::camera().setRegister(5, 0xF8, 7);
    ErrLed_Callback(0, 0, EVENT_RIGHT_CLICK, nullptr, 0, 0);
    EXPECT_EQ(value(gPanels.others, OTHERS_ERR_LED), 3);
    EXPECT_EQ(value(gPanels.main, MAIN_ERROR), 0);
}

TEST_F(Panels, DeviceInformationCopiesTheSerialAndShowsWhatAFailingReadGot) {
    connect();
    EXPECT_STREQ(gSerialNumber, "QT77K24050100017");
    sim::camera().failNext(5, 0xB0, 3);  // the fifth character of the serial
    VideoCameraInfo_Callback(0, 0, EVENT_RIGHT_CLICK, nullptr, 0, 0);
    EXPECT_STREQ(gSerialNumber, "QT77");
    EXPECT_EQ(value(gPanels.main, MAIN_ERROR), 1);
    // The reads after the failure still ran.
    EXPECT_NE(console().find(">CMND : GET [ZL38051 VER.]\n"), std::string::npos);
}

TEST_F(Panels, AFailedMachineIdReadLeavesNoStaleNumber) {
    sim::camera().reset(0);
    chooseModel(0);
    connect();
    char id[64] = "";
    GetCtrlVal(gPanels.pvInfo, PVINFO_MACHINE_ID, id);
    EXPECT_STREQ(id, "0xA21");
    sim::camera().failNext(5, 0xBD, 3);
    VideoCameraInfo_Callback(0, 0, EVENT_RIGHT_CLICK, nullptr, 0, 0);
    GetCtrlVal(gPanels.pvInfo, PVINFO_MACHINE_ID, id);
    EXPECT_STREQ(id, "");
    EXPECT_EQ(value(gPanels.main, MAIN_ERROR), 1);
}

}  // namespace
