// Register access as the wire and the console see it: retries, echo lines byte for byte, and
// what is refused before anything is sent.
#include "device/RegisterAccess.h"
#include "device/UvcLink.h"
#include "tests/device/DeviceFixture.h"

namespace {

using RegisterAccess = DeviceTest;
using Lines = std::vector<std::string>;

TEST_F(RegisterAccess, ARetriedReadShowsOnlyItsValue) {
    sim::camera().failNext(5, 0xD1, 2);
    unsigned short value = 0;
    EXPECT_EQ(ReadRegister(5, 0xD1, &value), 1);
    EXPECT_EQ(value, 8);
    EXPECT_EQ(console(), "> - R [0x00D1] = 0x08\n");
    EXPECT_EQ(traffic(), (Lines{"R 5 0x00D1 FAIL", "R 5 0x00D1 FAIL", "R 5 0x00D1 0x0008"}));
}

TEST_F(RegisterAccess, ThreeFailuresGiveOneFailLine) {
    sim::camera().failNext(5, 0xD1, 6);
    unsigned short value = 0x1234;
    EXPECT_EQ(ReadRegister(5, 0xD1, &value), 0);
    EXPECT_EQ(value, 0x1234);
    EXPECT_EQ(WriteRegister(5, 0xD1, 3), 0);
    EXPECT_EQ(console(), "> - R [0x00D1] fail\n> - W [0x00D1] fail\n");
    EXPECT_EQ(traffic().size(), 6u);
    // The camera does not know this register at all: the same single line.
    clear();
    EXPECT_EQ(ReadRegister(5, 0x0999, &value), 0);
    EXPECT_EQ(console(), "> - R [0x0999] fail\n");
}

TEST_F(RegisterAccess, EchoesTheWholeWordAndUnitsOtherThanFive) {
    sim::camera().setRegister(6, 3, 2);
    unsigned short value = 0;
    EXPECT_EQ(ReadRegister(6, 3, &value), 1);
    EXPECT_EQ(WriteRegister(5, 0xFF, 0x5AA5), 1);
    EXPECT_EQ(console(), "> - R [0x0003] = 0x02\n> - W [0x00FF] = 0x5AA5\n");
    const Lines t = traffic();
    ASSERT_GE(t.size(), 3u);
    EXPECT_EQ((Lines{t[0], t[1], t[2]}), (Lines{"R 6 0x0003 0x0002", "W 5 0x00FF 0x5AA5", "# detach"}));
}

TEST_F(RegisterAccess, BlockEchoesFollowTheConsoleDisplaySwitch) {
    unsigned char id[3] = {};
    EXPECT_EQ(ReadRegisterBlock(9, 0x02, id, 3), 1);
    unsigned char status = 0;
    intoBootLoader();
    EXPECT_EQ(ReadRegisterBlock(9, 0x41, &status, 1), 1);
    EXPECT_EQ(WriteRegisterBlock(9, 0x42, nullptr, 0), 1);
    EXPECT_EQ(console(), "> - R [0x0041] = 0x80\n> - W [0x0042]\n");
    EXPECT_EQ(traffic(), (Lines{"RB 9 0x0041 1 80", "WB 9 0x0042 0"}));

    clear();
    SetCtrlVal(gPanels.main, MAIN_MSG_EN, 0);
    const unsigned char sector[2] = {0x2C, 0x01};
    EXPECT_EQ(WriteRegisterBlock(9, 0x04, sector, 2), 0);  // sector 300 of a 128-sector flash
    EXPECT_EQ(ReadRegisterBlock(9, 0x02, id, 3), 1);
    EXPECT_EQ(console(), "> - W [0x0004] fail\n");
    SetCtrlVal(gPanels.main, MAIN_MSG_EN, 1);
    clear();
    EXPECT_EQ(ReadRegisterBlock(9, 0x02, id, 3), 1);
    EXPECT_EQ(console(), "> - R [0x0002] = 0xC2, 0x20, 0x13\n");
}

TEST_F(RegisterAccess, AZeroLengthWriteSendsAnEmptyCommand) {
    EXPECT_EQ(WriteRegisterBlock(15, 0xFB, nullptr, 0), 1);
    EXPECT_EQ(console(), "> - W [0x00FB]\n");
    EXPECT_EQ(traffic(), (Lines{"WB 15 0x00FB 0"}));
}

TEST_F(RegisterAccess, AFailedReadLeavesTheDestinationAlone) {
    sim::camera().failNext(15, 0xFC, 3);
    unsigned char ack[4] = {1, 2, 3, 4};
    EXPECT_EQ(ReadRegisterBlock(15, 0xFC, ack, 4), 0);
    EXPECT_EQ(ack[0], 1);
    EXPECT_EQ(ack[3], 4);
    EXPECT_EQ(console(), "> - R [0x00FC] fail\n");
}

TEST_F(RegisterAccess, TheTolerantWriteTriesOnceAndWarns) {
    const unsigned char address[4] = {0x01, 0x00, 0x01, 0x00};
    // No block received yet: the camera refuses the address.
    EXPECT_EQ(WriteRegisterBlockTolerant(9, 0x20, address, 4), 1);
    EXPECT_EQ(console(), "> - W [0x0020] warning\n");
    EXPECT_EQ(traffic(), (Lines{"WB 9 0x0020 4 01 00 01 00 FAIL"}));
    clear();
    const unsigned char block[512] = {};
    EXPECT_EQ(WriteRegisterBlock(9, 0x23, block, 512), 1);
    EXPECT_EQ(WriteRegisterBlockTolerant(9, 0x20, address, 4), 1);
    EXPECT_EQ(console().substr(console().find("> - W [0x0020]")), "> - W [0x0020] = 0x01, 0x00, 0x01, 0x00\n");
}

TEST_F(RegisterAccess, LengthsBeyondTheBufferAreRefusedBeforeSending) {
    static unsigned char big[4096];
    EXPECT_EQ(WriteRegisterBlock(9, 0x13, big, 2049), 0);
    EXPECT_EQ(ReadRegisterBlock(9, 0x13, big, 2049), 0);
    EXPECT_EQ(ReadRegisterBlock(9, 0x13, big, 0), 0);
    EXPECT_EQ(WriteRegisterBlockTolerant(9, 0x20, big, 2049), 1);
    EXPECT_EQ(console(), "> - W [0x0013] fail\n> - R [0x0013] fail\n> - R [0x0013] fail\n> - W [0x0020] warning\n");
    EXPECT_TRUE(traffic().empty());
}

TEST_F(RegisterAccess, TheLogGetsOneLinePerEchoedByte) {
    const auto log = dir / "log.txt";
    DisplayPanel(gPanels.main);
    answerFile(log);
    ASSERT_TRUE(userSet("MAIN.LOG", "1"));
    unsigned char id[3];
    ASSERT_EQ(ReadRegisterBlock(9, 0x02, id, 3), 1);
    ASSERT_TRUE(userSet("MAIN.LOG", "0"));
    const std::string text = readFile(log);
    EXPECT_NE(text.find("] > - R [0x0002] =\n"), std::string::npos) << text;
    EXPECT_NE(text.find("] 0xC2,\n"), std::string::npos) << text;
    EXPECT_NE(text.find("] 0x13\n"), std::string::npos) << text;
}

}  // namespace
