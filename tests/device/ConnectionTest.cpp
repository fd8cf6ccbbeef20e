// Connecting, disconnecting and powering the camera from the main panel, as the console and
// the wire see it.
#include "device/Connection.h"
#include "device/UvcLink.h"
#include "tests/device/DeviceFixture.h"

namespace {

using Lines = std::vector<std::string>;

class Connection : public DeviceTest {
protected:
    void TearDown() override {
        UvcLinkSelectDevice("sim");
        DeviceTest::TearDown();
    }
    void connect() {
        VideoCameraConnect_Callback(gPanels.main, MAIN_VIDEO_CAMERA_CONNECT, EVENT_RIGHT_CLICK, nullptr, 0, 0);
    }
    void disconnect() {
        VideoCameraConnect_Callback(gPanels.main, MAIN_VIDEO_CAMERA_CONNECT, EVENT_LEFT_DOUBLE_CLICK, nullptr, 0, 0);
    }
    // The user flips the power switch.
    void power(int on) {
        SetCtrlVal(gPanels.main, MAIN_POWER_UP_DOWN, on);
        PowerUpDown_Callback(gPanels.main, MAIN_POWER_UP_DOWN, EVENT_COMMIT, nullptr, 0, 0);
    }
    int value(int panel, int control) {
        int v = -1;
        GetCtrlVal(panel, control, &v);
        return v;
    }
    bool cameraControlsDimmed() { return dimmed(gPanels.iq, IQ_BRIGHTNESS); }
    ::testing::AssertionResult consoleStartsWith(const std::string &expected) {
        const std::string text = console();
        if (text.compare(0, expected.size(), expected) == 0) return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << "console:\n" << text;
    }
};

TEST_F(Connection, ConnectNamesTheCameraAndReadsItsPower) {
    connect();
    EXPECT_TRUE(IsDeviceConnected());
    EXPECT_TRUE(consoleStartsWith(
        ">LIB : GET [DEVICE EXIST]\n>LIB : GET [DEVICE NAME]\n>CMND : GET [POWER]\n> - R [0x00F2] = 0xAA\n"));
    EXPECT_EQ(traffic().at(0), "R 5 0x00F2 0x00AA");
    EXPECT_STREQ(gDeviceName, "QM-T77K USB Camera");
    EXPECT_EQ(read("PVINFO.DEVICE_NAME"), "QM-T77K USB Camera");
    EXPECT_EQ(value(gPanels.main, MAIN_POWER_UP_DOWN), 1);
    EXPECT_FALSE(dimmed(gPanels.main, MAIN_POWER_UP_DOWN));

    // Connecting again and disconnecting twice: only the first disconnect does anything.
    clear();
    connect();
    disconnect();
    disconnect();
    EXPECT_EQ(console(), ">LIB : SET [DISCONNECT DEVICE]\n>LIB : SET [CLOSE]\n");
    EXPECT_TRUE(traffic().empty());
    EXPECT_FALSE(IsDeviceConnected());
    EXPECT_TRUE(cameraControlsDimmed());
}

TEST_F(Connection, WithoutACameraTheToolSaysSo) {
    ASSERT_EQ(UvcLinkSelectDevice(""), 1);
    SetCtrlVal(gPanels.main, MAIN_ERROR, 1);
    connect();
    EXPECT_EQ(console(), ">LIB : GET [DEVICE EXIST]\n> - device not exist\n>LIB : SET [CLOSE]\n");
    EXPECT_FALSE(IsDeviceConnected());
    EXPECT_EQ(value(gPanels.main, MAIN_ERROR), 0);
    EXPECT_FALSE(dimmed(gPanels.main, MAIN_MODEL));
}

TEST_F(Connection, DuringAFlashUpdateConnectOnlyNamesTheCamera) {
    SetCtrlVal(gPanels.pf, PF_RUNNING, 1);
    connect();
    SetCtrlVal(gPanels.pf, PF_RUNNING, 0);
    EXPECT_TRUE(IsDeviceConnected());
    EXPECT_EQ(console(), ">LIB : GET [DEVICE EXIST]\n>LIB : GET [DEVICE NAME]\n");
    EXPECT_TRUE(traffic().empty());
}

TEST_F(Connection, SwitchingOnAPoweredCameraOnlyUndims) {
    connect();
    DimCameraControls(1);
    clear();
    power(1);
    EXPECT_EQ(traffic(), (Lines{"R 5 0x00F2 0x00AA"}));
    EXPECT_FALSE(cameraControlsDimmed());
    EXPECT_EQ(value(gPanels.main, MAIN_ERROR), 0);
}

TEST_F(Connection, SwitchingOffReopensTheConnectionASecondLater) {
    connect();
    clear();
    const double start = vcc::clock::nowMs();
    power(0);
    EXPECT_GE(vcc::clock::nowMs() - start, 1000);
    const Lines t = traffic();
    ASSERT_GE(t.size(), 4u);
    EXPECT_EQ((Lines{t[0], t[1], t[2], t[3]}),
              (Lines{"R 5 0x00F2 0x00AA", "W 5 0x01F2 0x0000", "W 5 0x00F2 0x0055", "R 5 0x00F2 0x0055"}));
    EXPECT_TRUE(consoleStartsWith(
        ">CMND : GET [POWER]\n> - R [0x00F2] = 0xAA\n>CMND : SET [POWER] = OFF\n> - W [0x01F2] = 0x00\n"
        "> - W [0x00F2] = 0x55\n>LIB : SET [DISCONNECT DEVICE]\n>LIB : SET [CLOSE]\n>LIB : GET [DEVICE EXIST]\n"
        ">LIB : GET [DEVICE NAME]\n>CMND : GET [POWER]\n> - R [0x00F2] = 0x55\n"));
    EXPECT_TRUE(IsDeviceConnected());
    EXPECT_EQ(value(gPanels.main, MAIN_POWER_UP_DOWN), 0);
    EXPECT_TRUE(cameraControlsDimmed());
    EXPECT_FALSE(dimmed(gPanels.main, MAIN_POWER_UP_DOWN));

    // And on again: through the camera's transition values to 0xAA.
    clear();
    power(1);
    const Lines on = traffic();
    EXPECT_EQ((Lines{on[1], on[2]}), (Lines{"W 5 0x01F2 0x0000", "W 5 0x00F2 0x00AA"}));
    EXPECT_EQ(on.back(), "R 5 0x00F2 0x00AA");
    EXPECT_NE(console().find(">CMND : SET [POWER] = ON\n"), std::string::npos);
    EXPECT_EQ(value(gPanels.main, MAIN_POWER_UP_DOWN), 1);
    EXPECT_FALSE(cameraControlsDimmed());
}

TEST_F(Connection, PowerReadWaitsOutTheTransition) {
    connect();
    clear();
    SetCtrlVal(gPanels.main, MAIN_POWER_UP_DOWN, 0);
    sim::camera().queueReads(5, 0xF2, {0xF1});
    const double start = vcc::clock::nowMs();
    EXPECT_EQ(ReadPowerState(), 1);
    EXPECT_GE(vcc::clock::nowMs() - start, 600);
    EXPECT_EQ(traffic(), (Lines{"R 5 0x00F2 0x00F1", "R 5 0x00F2 0x00AA"}));
    EXPECT_EQ(value(gPanels.main, MAIN_POWER_UP_DOWN), 1);

    // A camera that never settles fails after 83 reads, switch untouched.
    clear();
    SetCtrlVal(gPanels.main, MAIN_POWER_UP_DOWN, 0);
    sim::camera().queueReads(5, 0xF2, std::vector<uint16_t>(100, 0xF0));
    EXPECT_EQ(ReadPowerState(), 0);
    EXPECT_EQ(traffic().size(), 83u);
    EXPECT_EQ(value(gPanels.main, MAIN_POWER_UP_DOWN), 0);
}

TEST_F(Connection, AFailedPowerReadLightsTheErrorAndLeavesTheSwitch) {
    connect();
    clear();
    sim::camera().failNext(5, 0xF2, 3);
    power(0);
    EXPECT_EQ(value(gPanels.main, MAIN_ERROR), 1);
    EXPECT_EQ(value(gPanels.main, MAIN_POWER_UP_DOWN), 0);
    EXPECT_TRUE(IsDeviceConnected());
    EXPECT_EQ(traffic().size(), 3u);
}

TEST_F(Connection, PowerMethodIsWrittenByLabelAndCheckedOnReadBack) {
    connect();
    clear();
    SetCtrlVal(gPanels.main, MAIN_PWR_CTRL_METHOD, 0x55);
    PwrCtrlMethod_Callback(gPanels.main, MAIN_PWR_CTRL_METHOD, EVENT_COMMIT, nullptr, 0, 0);
    EXPECT_EQ(console(), ">CMND : SET [PWR. METHOD] = 0x55\n> - W [0x00FB] = 0x55\n");
    EXPECT_TRUE(cameraControlsDimmed());
    EXPECT_EQ(value(gPanels.main, MAIN_ERROR), 0);

    sim::camera().setRegister(5, 0xFB, 0xAA);
    PwrCtrlMethod_Callback(gPanels.main, MAIN_PWR_CTRL_METHOD, EVENT_RIGHT_CLICK, nullptr, 0, 0);
    EXPECT_EQ(value(gPanels.main, MAIN_PWR_CTRL_METHOD), 0xAA);
    EXPECT_EQ(value(gPanels.main, MAIN_ERROR), 0);
    sim::camera().setRegister(5, 0xFB, 0x00);
    PwrCtrlMethod_Callback(gPanels.main, MAIN_PWR_CTRL_METHOD, EVENT_RIGHT_CLICK, nullptr, 0, 0);
    EXPECT_EQ(value(gPanels.main, MAIN_ERROR), 1);
}

// Refreshes and other features run these callbacks directly, handing them a control of their
// own: the switch and the ring still decide, and still carry the bracket.
TEST_F(Connection, PowerCallbacksMindTheirOwnControlsWhateverTheyAreHanded) {
    connect();
    sim::camera().setRegister(5, 0xF2, 0x55);
    SetCtrlVal(gPanels.main, MAIN_POWER_UP_DOWN, 1);
    clear();
    PowerUpDown_Callback(gPanels.main, MAIN_REFRESH_ALL, EVENT_COMMIT, nullptr, 0, 0);
    const Lines t = traffic();
    ASSERT_GE(t.size(), 3u);
    EXPECT_EQ((Lines{t[0], t[1], t[2]}), (Lines{"R 5 0x00F2 0x0055", "W 5 0x01F2 0x0000", "W 5 0x00F2 0x00AA"}));
    EXPECT_EQ(value(gPanels.main, MAIN_POWER_UP_DOWN), 1);
    EXPECT_EQ(value(gPanels.main, MAIN_ERROR), 0);

    SetCtrlVal(gPanels.main, MAIN_PWR_CTRL_METHOD, 0x55);
    clear();
    PwrCtrlMethod_Callback(gPanels.main, MAIN_REFRESH_ALL, EVENT_COMMIT, nullptr, 0, 0);
    EXPECT_EQ(console(), ">CMND : SET [PWR. METHOD] = 0x55\n> - W [0x00FB] = 0x55\n");
    EXPECT_EQ(value(gPanels.main, MAIN_ERROR), 0);
    // The bracket ends on the ring, which the commit's dimming left alone, and not on the
    // control it was handed.
    EXPECT_FALSE(dimmed(gPanels.main, MAIN_PWR_CTRL_METHOD));
    EXPECT_TRUE(dimmed(gPanels.main, MAIN_REFRESH_ALL));

    sim::camera().setRegister(5, 0xFB, 0xAA);
    PwrCtrlMethod_Callback(gPanels.pvInfo, PVINFO_USB_RESOLUTION, EVENT_RIGHT_CLICK, nullptr, 0, 0);
    EXPECT_EQ(value(gPanels.main, MAIN_PWR_CTRL_METHOD), 0xAA);
    EXPECT_EQ(value(gPanels.pvInfo, PVINFO_USB_RESOLUTION), 5);
    EXPECT_EQ(value(gPanels.main, MAIN_ERROR), 0);
}

TEST_F(Connection, NothingHappensWithoutAConnection) {
    power(1);
    PwrCtrlMethod_Callback(gPanels.main, MAIN_PWR_CTRL_METHOD, EVENT_COMMIT, nullptr, 0, 0);
    EXPECT_EQ(console(), "");
    EXPECT_TRUE(traffic().empty());
}

TEST_F(Connection, WrappersRefuseSmallBuffers) {
    char small[4] = {'x', 'x', 'x', 'x'};
    EXPECT_EQ(LibGetVersion(small, 4), 0);
    EXPECT_EQ(small[0], 'x');
    char name[33];
    EXPECT_EQ(LibGetDeviceName(name, 32), 0);
    EXPECT_EQ(LibGetDeviceName(name, 33), 1);
    EXPECT_STREQ(name, "QM-T77K USB Camera");
    DeviceExit();
    EXPECT_EQ(console(), ">LIB : SET [CLOSE]\n");
}

}  // namespace
