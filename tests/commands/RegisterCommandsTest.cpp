// The register commands as the wire sees them: encodings, acknowledged commands and their
// special cases.
#include "commands/FunctionList.h"
#include "tests/device/DeviceFixture.h"

namespace {

using RegisterCommands = DeviceTest;
using Lines = std::vector<std::string>;

TEST_F(RegisterCommands, TextsNeedRoomForTheirTerminator) {
    char version[8];
    EXPECT_EQ(GetTextCommand("USB-BL VER.", version, 3), 0);
    EXPECT_TRUE(traffic().empty());
    std::memset(version, 'x', sizeof version);
    ASSERT_EQ(GetTextCommand("USB-BL VER.", version, 4), 1);
    EXPECT_STREQ(version, "B03");
    char serial[17];
    EXPECT_EQ(GetTextCommand("MACHINE SERIAL", serial, 16), 0);
    ASSERT_EQ(GetTextCommand("ISP VER.", version, 8), 1);
    EXPECT_STREQ(version, "I77K212");

    // A failed read keeps what came before it.
    sim::camera().failNext(5, 0x83, 3);
    char app[256];
    EXPECT_EQ(GetTextCommand("USB-APP VER.", app, sizeof app), 0);
    EXPECT_STREQ(app, "U77");
}

TEST_F(RegisterCommands, SplitAndMachineIdEncodings) {
    ASSERT_EQ(SetSplitCommand("PAN", -1), 1);
    EXPECT_EQ(traffic(), (Lines{"W 5 0x00E3 0xFFFF", "W 5 0x00E4 0xFFFF"}));
    int pan = 0;
    ASSERT_EQ(GetSplitCommand("PAN", &pan), 1);
    EXPECT_EQ(pan, -1);
    ASSERT_EQ(SetSplitCommand("TILT DOWN", 0x12345), 1);
    EXPECT_EQ(sim::camera().registerValue(5, 0x1B), 0x0001);
    EXPECT_EQ(sim::camera().registerValue(5, 0x1C), 0x2345);

    sim::camera().setRegister(5, 0xBC, 0x12);
    sim::camera().setRegister(5, 0xBD, 0x34);
    unsigned short id = 0;
    ASSERT_EQ(GetCommand("MACHINE ID", &id), 1);
    EXPECT_EQ(id, 0x1234);
}

TEST_F(RegisterCommands, AnAcknowledgementOnTheLastPollCounts) {
    sim::camera().queueReads(5, 0x123, {0, 0, 1});
    EXPECT_EQ(TriggerCommand("LAST MEM. SAVE", 900), 1);
    EXPECT_EQ(traffic(), (Lines{"W 5 0x0123 0x0000", "W 5 0x0023 0x00AA", "R 5 0x0123 0x0000",
                                "R 5 0x0123 0x0000", "R 5 0x0123 0x0001"}));
    clear();
    sim::camera().setNeverAcknowledge(true);
    sim::camera().queueReads(5, 0x123, {0, 0, 1});
    EXPECT_EQ(TriggerCommand("LAST MEM. SAVE", 600), 0);
    EXPECT_EQ(traffic().size(), 4u);
    uint16_t third = 0;
    sim::camera().readRegister(5, 0x123, third);
    EXPECT_EQ(third, 1);  // the poll that would have seen it never came
    // A time-out shorter than one poll still looks once.
    clear();
    EXPECT_EQ(TriggerCommand("LAST MEM. SAVE", 100), 0);
    EXPECT_EQ(traffic().size(), 3u);
}

TEST_F(RegisterCommands, AcknowledgedCommandsRunPendingUserEvents) {
    DisplayPanel(gPanels.main);
    SetCtrlVal(gPanels.main, MAIN_MSG_EN, 1);
    vcc::ui::Model::instance().post({gPanels.main, MAIN_MSG_EN, EVENT_COMMIT, 0, 0});
    ASSERT_EQ(TriggerCommand("ERROR CLEAR"), 1);
    int height = 0;
    GetPanelAttribute(gPanels.main, ATTR_HEIGHT, &height);
    EXPECT_EQ(height, 460);
}

TEST_F(RegisterCommands, PresetLoadOfTheLoadedPresetNeedsNoAcknowledgement) {
    sim::camera().setRegister(5, 0x1D, 3);
    sim::camera().setNeverAcknowledge(true);
    EXPECT_EQ(SetCommand("PRESET LOAD", 3), 1);
    EXPECT_EQ(traffic(), (Lines{"R 5 0x001D 0x0003", "W 5 0x011D 0x0000", "W 5 0x001D 0x0003", "R 5 0x011D 0x0000"}));
    clear();
    EXPECT_EQ(SetCommand("PRESET LOAD", 4, 900), 0);
    EXPECT_EQ(traffic().size(), 6u);
}

TEST_F(RegisterCommands, AfOnePushWithAutoFocusOnSendsNothing) {
    sim::camera().setRegister(5, 0xE0, 1);
    EXPECT_EQ(SetCommand("AF ONE PUSH", 0), 1);
    EXPECT_EQ(traffic(), (Lines{"R 5 0x00E0 0x0001"}));
    clear();
    sim::camera().setRegister(5, 0xE0, 0);
    EXPECT_EQ(TriggerCommand("AF ONE PUSH"), 1);
    EXPECT_EQ(traffic()[1], "W 5 0x0125 0x0000");
    EXPECT_EQ(traffic()[2], "W 5 0x0025 0x00AA");
}

TEST_F(RegisterCommands, PowerOffWithoutWaitingThenOnThroughTheTransition) {
    EXPECT_EQ(SetCommand("POWER", 0x55, 0), 1);
    EXPECT_EQ(traffic(), (Lines{"W 5 0x01F2 0x0000", "W 5 0x00F2 0x0055"}));
    EXPECT_EQ(SetCommand("POWER", 0xAA), 1);
    unsigned short power = 0;
    ASSERT_EQ(GetCommand("POWER", &power), 1);
    EXPECT_EQ(power, 0xAA);
}

TEST_F(RegisterCommands, RawYuvIsWrittenInDebugModeOnly) {
    sim::camera().setRegister(5, 0xF9, 1);
    const double start = vcc::clock::nowMs();
    EXPECT_EQ(SetCommand("RAW/YUV(MJPG)", 2), 1);
    EXPECT_GE(vcc::clock::nowMs() - start, 2000);
    EXPECT_EQ(traffic(), (Lines{"R 5 0x00F9 0x0001", "W 5 0x00F9 0x0002", "W 5 0x00FA 0x0002", "W 5 0x00F9 0x0001"}));
    // A failed step ends the command.
    clear();
    sim::camera().failNext(5, 0xFA, 3);
    EXPECT_EQ(SetCommand("RAW/YUV(MJPG)", 1), 0);
    EXPECT_EQ(traffic().back(), "W 5 0x00FA 0x0001 FAIL");
}

TEST_F(RegisterCommands, ErrorReportFillsBothTables) {
    sim::camera().setRegister(6, 0x05, 3);
    sim::camera().setRegister(6, 0x3F, 1);
    sim::camera().setRegister(7, 0x00, 2);
    unsigned char errors[128], warnings[128];
    std::memset(errors, 0xEE, sizeof errors);
    std::memset(warnings, 0xEE, sizeof warnings);
    ASSERT_EQ(GetErrorReport(errors, warnings, 128), 1);
    EXPECT_EQ(errors[0x05], 3);
    EXPECT_EQ(errors[0x3F], 1);
    EXPECT_EQ(errors[0x40], 0);
    EXPECT_EQ(errors[127], 0);
    EXPECT_EQ(warnings[0], 2);
    const Lines t = traffic();
    ASSERT_GE(t.size(), 128u);
    EXPECT_EQ(t[t.size() - 128], "R 6 0x0000 0x0000");
    EXPECT_EQ(t.back(), "R 7 0x003F 0x0000");
    clear();
    EXPECT_EQ(GetErrorReport(errors, warnings, 63), 0);
    EXPECT_TRUE(traffic().empty());
}

TEST_F(RegisterCommands, MisusedNamesFailWithoutTraffic) {
    unsigned short v = 0;
    int i = 0;
    EXPECT_EQ(GetCommand("BRIGHTNES", &v), 0);
    EXPECT_EQ(GetCommand("ZOOM CTRL", &v), 0);      // set only
    EXPECT_EQ(SetCommand("USB-APP VER.", 1), 0);    // a text
    EXPECT_EQ(GetSplitCommand("BRIGHTNESS", &i), 0);
    EXPECT_EQ(TriggerCommand("BRIGHTNESS"), 0);
    EXPECT_TRUE(traffic().empty());
    EXPECT_EQ(console(), "");
    ASSERT_EQ(SetCommand("BRIGHTNESS", 5), 1);
    EXPECT_EQ(console(), "> - W [0x00D1] = 0x05\n");
}

}  // namespace
