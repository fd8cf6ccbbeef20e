// Which controls a technician can use in each connection, power and preview state, and how
// callbacks nest inside the busy bracket.
#include "tests/app/ToolFixture.h"

namespace {

using BusyState = ToolTest;

// A sample of the camera-command controls across their panels.
struct Ref {
    int PanelHandles::*panel;
    int control;
};
const Ref kCameraSample[] = {
    {&PanelHandles::others, OTHERS_FACTORY_RST}, {&PanelHandles::ptzfAbs, PTZFABS_ZOOM},
    {&PanelHandles::iq, IQ_BRIGHTNESS},          {&PanelHandles::ae, AE_AE_MODE},
    {&PanelHandles::awb, AWB_WB_ONE_PUSH},       {&PanelHandles::pvInfo, PVINFO_PREVIEW_ON_OFF},
    {&PanelHandles::ptzfRel, PTZFREL_PAN_TILT_UP_LEFT},
};
// Dimmed with the camera controls, left alone when they are enabled again.
const Ref kDimOnly[] = {
    {&PanelHandles::main, MAIN_POWER_UP_DOWN}, {&PanelHandles::main, MAIN_PWR_CTRL_METHOD},
    {&PanelHandles::main, MAIN_REFRESH_ALL},   {&PanelHandles::main, MAIN_INI_APPLY},
    {&PanelHandles::pvInfo, PVINFO_CAPTURE_PIN}, {&PanelHandles::pvInfo, PVINFO_CAPTURE_FILTER},
    {&PanelHandles::pvInfo, PVINFO_SNAP},
};

TEST_F(BusyState, DisconnectedLeavesOnlyTheSettingsButtonsAndTheModelRing) {
    ResetConnectionState(0);
    for (const Ref &r : kCameraSample) EXPECT_TRUE(dimmed(gPanels.*r.panel, r.control)) << r.control;
    EXPECT_FALSE(dimmed(gPanels.main, MAIN_INI_LOAD));
    EXPECT_FALSE(dimmed(gPanels.main, MAIN_INI_SAVE));
    EXPECT_FALSE(dimmed(gPanels.main, MAIN_MODEL));
    EXPECT_TRUE(dimmed(gPanels.main, MAIN_PWR_CTRL_METHOD));
    EXPECT_FALSE(IsDeviceConnected());
    EXPECT_FALSE(IsPowerOn());
}

TEST_F(BusyState, UndimmingLeavesTheSevenDimOnlyControlsAsTheyWere) {
    DimCameraControls(1);
    for (const Ref &r : kDimOnly) EXPECT_TRUE(dimmed(gPanels.*r.panel, r.control));
    DimCameraControls(0);
    for (const Ref &r : kCameraSample) EXPECT_FALSE(dimmed(gPanels.*r.panel, r.control));
    for (const Ref &r : kDimOnly) EXPECT_TRUE(dimmed(gPanels.*r.panel, r.control)) << r.control;

    // And when they were enabled, undimming does not dim them either.
    for (const Ref &r : kDimOnly) SetCtrlAttribute(gPanels.*r.panel, r.control, ATTR_DIMMED, 0);
    DimCameraControls(0);
    for (const Ref &r : kDimOnly) EXPECT_FALSE(dimmed(gPanels.*r.panel, r.control));
}

TEST_F(BusyState, PowerMethodAAWithoutStreamingKeepsCameraControlsDimmedButRefreshUsable) {
    SetCtrlVal(gPanels.main, MAIN_CONNECTED, 1);
    SetCtrlVal(gPanels.main, MAIN_POWER_UP_DOWN, 1);
    SetCtrlVal(gPanels.main, MAIN_PWR_CTRL_METHOD, 0xAA);
    SetCtrlVal(gPanels.pvInfo, PVINFO_PREVIEW_STATUS, 0);
    UpdateControlEnabling();
    EXPECT_TRUE(dimmed(gPanels.iq, IQ_BRIGHTNESS));
    EXPECT_TRUE(dimmed(gPanels.others, OTHERS_FACTORY_RST));
    for (int control : {IQ_REFRESH_IQ_PNL}) EXPECT_FALSE(dimmed(gPanels.iq, control));
    EXPECT_FALSE(dimmed(gPanels.ae, AE_REFRESH_AE_PNL));
    EXPECT_FALSE(dimmed(gPanels.pvInfo, PVINFO_REFRESH_PV_INFO_PNL));
    EXPECT_FALSE(dimmed(gPanels.main, MAIN_POWER_UP_DOWN));
    EXPECT_FALSE(dimmed(gPanels.others, OTHERS_GET_ERR)) << "a base control";
    EXPECT_FALSE(dimmed(gPanels.pvInfo, PVINFO_PREVIEW_ON_OFF)) << "the preview can be started";
    EXPECT_TRUE(dimmed(gPanels.main, MAIN_MODEL));

    SetCtrlVal(gPanels.pvInfo, PVINFO_PREVIEW_STATUS, 1);
    UpdateControlEnabling();
    EXPECT_FALSE(dimmed(gPanels.iq, IQ_BRIGHTNESS));

    // The other power method does not wait for streaming.
    SetCtrlVal(gPanels.main, MAIN_PWR_CTRL_METHOD, 0x55);
    SetCtrlVal(gPanels.pvInfo, PVINFO_PREVIEW_STATUS, 0);
    UpdateControlEnabling();
    EXPECT_FALSE(dimmed(gPanels.iq, IQ_BRIGHTNESS));
    EXPECT_TRUE(dimmed(gPanels.pvInfo, PVINFO_CAPTURE_PIN)) << "no preview, no capture";
    EXPECT_FALSE(dimmed(gPanels.pvInfo, PVINFO_SNAP_ENABLE));

    SetCtrlVal(gPanels.pvInfo, PVINFO_PREVIEW_ON_OFF, 1);
    SetCtrlVal(gPanels.pvInfo, PVINFO_SNAP_ENABLE, 0);
    UpdateControlEnabling();
    EXPECT_FALSE(dimmed(gPanels.pvInfo, PVINFO_CAPTURE_PIN));
    EXPECT_TRUE(dimmed(gPanels.pvInfo, PVINFO_SNAP)) << "snapshots need the enable switch";
    EXPECT_TRUE(dimmed(gPanels.pvInfo, PVINFO_SNAP_ENABLE)) << "fixed while the preview runs";
}

TEST_F(BusyState, PowerOffDimsEverythingButTheBaseAndRefreshControls) {
    SetCtrlVal(gPanels.main, MAIN_CONNECTED, 1);
    SetCtrlVal(gPanels.main, MAIN_POWER_UP_DOWN, 0);
    UpdateControlEnabling();
    for (const Ref &r : kCameraSample) {
        if (r.control != PVINFO_PREVIEW_ON_OFF) {
            EXPECT_TRUE(dimmed(gPanels.*r.panel, r.control)) << r.control;
        }
    }
    EXPECT_FALSE(dimmed(gPanels.ptzfRel, PTZFREL_PAN_SPEED));
    EXPECT_FALSE(dimmed(gPanels.others, OTHERS_REFRESH_OTHERS_PNL));
}

TEST_F(BusyState, AClickOnADimmedControlDoesNothing) {
    const std::string before = console();
    ResetConnectionState(0);
    DisplayPanel(gPanels.main);
    EXPECT_FALSE(commit("Brightness_Callback"));
    EXPECT_FALSE(commit("FactoryRst_Callback"));
    EXPECT_EQ(console(), before);
}

TEST_F(BusyState, ACallbackNestsInsideTheBusyBracketsEventProcessing) {
    // The model change holds its ring dimmed until its bracket ends; a log switch clicked
    // meanwhile runs inside that end, before the ring is enabled again.
    DisplayPanel(gPanels.main);
    ResetConnectionState(0);
    static std::vector<std::pair<std::string, bool>> seen;
    seen.clear();
    SetConsoleListener([](const char *text) {
        int ringDimmed = 0, busy = 0;
        GetCtrlAttribute(gPanels.main, MAIN_MODEL, ATTR_DIMMED, &ringDimmed);
        GetCtrlVal(gPanels.main, MAIN_BUSY, &busy);
        seen.emplace_back(text, ringDimmed && busy);
    });
    answerFile(dir / "nested.txt");
    SetCtrlVal(gPanels.main, MAIN_MODEL, 1);
    SetCtrlVal(gPanels.main, MAIN_LOG, 1);
    vcc::ui::Model::instance().post({gPanels.main, MAIN_MODEL, EVENT_COMMIT, 0, 0});
    vcc::ui::Model::instance().post({gPanels.main, MAIN_LOG, EVENT_COMMIT, 0, 0});
    ProcessSystemEvents();
    ASSERT_GE(seen.size(), 2u);
    EXPECT_EQ(seen[0].first.rfind(">CMND : SET [MODEL] = ", 0), 0u);
    EXPECT_EQ(seen[1].first, ">LOG : RUNNING\n");
    EXPECT_TRUE(seen[1].second) << "the log callback ran inside the model change's bracket";
    EXPECT_FALSE(dimmed(gPanels.main, MAIN_MODEL));
    EXPECT_EQ(read("MAIN.BUSY"), "0");
}

}  // namespace
