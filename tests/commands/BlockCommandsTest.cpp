// The block commands as the wire sees them: order of accesses, byte order, stops at the
// first failure, and the camera leaving in the middle.
#include "commands/FunctionList.h"
#include "tests/device/DeviceFixture.h"

namespace {

using BlockCommands = DeviceTest;
using Lines = std::vector<std::string>;

std::string hexRun(int first, int count) {
    std::string s;
    for (int i = 0; i < count; ++i) {
        char b[4];
        std::snprintf(b, sizeof b, " %02X", (first + i) & 0xFF);
        s += b;
    }
    return s;
}

TEST_F(BlockCommands, SectorNumbersGoLittleEndian) {
    EXPECT_EQ(SfErase(5), 1);
    EXPECT_EQ(SfErase(300), 0);  // beyond this 512 KB flash
    EXPECT_EQ(traffic(), (Lines{"WB 9 0x0003 2 05 00", "WB 9 0x0003 2 2C 01 FAIL", "WB 9 0x0003 2 2C 01 FAIL",
                                "WB 9 0x0003 2 2C 01 FAIL"}));
    EXPECT_EQ(console(), "> - W [0x0003] = 0x05, 0x00\n> - W [0x0003] fail\n");
}

TEST_F(BlockCommands, SerialFlashByteAndPageRoundTrip) {
    unsigned char page[256];
    for (int i = 0; i < 256; ++i) page[i] = static_cast<unsigned char>(i);
    ASSERT_EQ(SfErase(2), 1);
    ASSERT_EQ(SfPageSet(0x2100, page), 1);
    unsigned char back[256] = {}, byte = 0;
    ASSERT_EQ(SfPageGet(0x2100, back), 1);
    EXPECT_EQ(std::memcmp(page, back, 256), 0);
    ASSERT_EQ(SfByteGet(0x2105, &byte), 1);
    EXPECT_EQ(byte, 5);
    unsigned char id[3];
    ASSERT_EQ(SfId(id), 1);
    EXPECT_EQ(id[0], 0xC2);

    // A failed first access sends neither the data byte nor the trigger.
    clear();
    sim::camera().failNext(9, 0x09, 3);
    EXPECT_EQ(SfByteSet(0x2105, 0x00), 0);
    EXPECT_EQ(traffic(), (Lines(3, "WB 9 0x0009 4 05 21 00 00 FAIL")));
}

TEST_F(BlockCommands, ProgramFlashPageAtTheApplicationStart) {
    intoBootLoader();
    unsigned char page[256];
    for (int i = 0; i < 256; ++i) page[i] = static_cast<unsigned char>(i);
    ASSERT_EQ(PfErase(4), 1);
    ASSERT_EQ(PfPageSet(0x4000, page, 256), 1);
    EXPECT_EQ(traffic(), (Lines{"WB 9 0x0043 1 04", "WB 9 0x0047 4 00 40 00 00", "WB 9 0x0046 2 00 01",
                                "WB 9 0x0048 256" + hexRun(0, 256), "WB 9 0x0049 0"}));
    clear();
    unsigned char byte = 0;
    ASSERT_EQ(PfPageGet(0x40FF, &byte, 1), 1);
    EXPECT_EQ(byte, 0xFF);
    EXPECT_EQ(traffic(), (Lines{"WB 9 0x0047 4 FF 40 00 00", "WB 9 0x0046 2 01 00", "WB 9 0x004A 0",
                                "RB 9 0x0048 1 FF"}));
    // The boot loader stays out of reach.
    EXPECT_EQ(PfPageSet(0x3F00, page, 256), 0);
    unsigned char status = 0;
    ASSERT_EQ(PfStatus(&status), 1);
    EXPECT_EQ(status, 0x81);

    sim::camera().queueBlockRead(9, 0x41, {0x7F});
    ASSERT_EQ(PfStatus(&status), 1);
    EXPECT_EQ(status, 0x7F);
}

TEST_F(BlockCommands, IspImageThroughAddressedAndStreamedBlocks) {
    std::vector<unsigned char> image(33 * 512);
    for (size_t i = 0; i < image.size(); ++i) image[i] = static_cast<unsigned char>(i / 512 + i);
    sim::camera().failNext(9, 0x20, 1);  // one address lost: only a warning
    for (unsigned int b = 0; b < 33; ++b) {
        const unsigned char *block = image.data() + b * 512;
        if (b < 32) ASSERT_EQ(SfAddressedBlock(block, 0x01000100 + 0x200 * b), 1);
        else ASSERT_EQ(SfStreamedBlock(block), 1);
    }
    ASSERT_EQ(SfStreamEnd(), 1);
    EXPECT_EQ(sim::camera().ispStore(), image);
    const Lines t = traffic();
    EXPECT_EQ(t[1], "WB 9 0x0020 4 01 00 01 00 FAIL");
    EXPECT_EQ(t[2].substr(0, 16), "WB 9 0x0023 512 ");
    EXPECT_EQ(t[3], "WB 9 0x0020 4 01 00 03 00");
    EXPECT_NE(console().find("> - W [0x0020] warning\n"), std::string::npos);
}

TEST_F(BlockCommands, ServiceNumbersGoBigEndian) {
    ASSERT_EQ(CateTimeoutSet(1000), 1);
    ASSERT_EQ(CateTimeoutSet(70000), 1);
    int timeout = 0;
    ASSERT_EQ(CateTimeoutGet(&timeout), 1);
    EXPECT_EQ(timeout, 70000);
    const unsigned short ptz[4] = {3, 4, 0xFFF6, 20};  // pan speed, tilt speed, pan -10, tilt 20
    ASSERT_EQ(PtzAbsSet(ptz), 1);
    PtzAbs back{};
    ASSERT_EQ(PtzAbsGet(&back), 1);
    EXPECT_EQ(traffic(), (Lines{"WB 15 0x00FA 4 00 00 03 E8", "WB 15 0x00FA 4 00 01 11 70", "RB 15 0x00FA 4 00 01 11 70",
                                "WB 15 0x0002 8 00 03 00 04 FF F6 00 14",
                                "RB 15 0x0002 24 FF F6 00 14 00 00 00 00 00 03 00 04 00 03 00 03 00 AA 02 01 01 00 00 00"}));
    EXPECT_EQ(back.r[0], 0xFFF6);
    EXPECT_EQ(back.r[4], 3);
    EXPECT_EQ(back.s[0], 2);
    int pan = 0;
    ASSERT_EQ(GetSplitCommand("PAN", &pan), 1);
    EXPECT_EQ(pan, -10);
}

TEST_F(BlockCommands, EepromPacketsAndTheCategoryPause) {
    const double start = vcc::clock::nowMs();
    ASSERT_EQ(Eeprom2K(0x123, 0x5A, fl::kEepromWrite), 1);
    EXPECT_GE(vcc::clock::nowMs() - start, 300);
    std::string zeros;
    for (int i = 0; i < 22; ++i) zeros += " 00";
    EXPECT_EQ(traffic(), (Lines{"WB 15 0x00FE 27 29 01 23 5A 01" + zeros}));
    clear();
    unsigned char data = 0;
    const double before = vcc::clock::nowMs();
    ASSERT_EQ(Eeprom2K(0x123, 0, fl::kEepromRead, &data), 1);
    EXPECT_GE(vcc::clock::nowMs() - before, 600);
    EXPECT_EQ(data, 0x5A);
    EXPECT_EQ(traffic()[1], "WB 15 0x00FF 1 29");
    EXPECT_EQ(traffic()[2].substr(0, 20), "RB 15 0x00FF 26 5A 0");

    // A failed category write ends the operation.
    clear();
    sim::camera().failNext(15, 0xFE, 3);
    EXPECT_EQ(Eeprom2K(0x123, 0, fl::kEepromRead, &data), 0);
    EXPECT_EQ(traffic().size(), 3u);
}

TEST_F(BlockCommands, MachineSerialIsOneValueOnBothUnits) {
    const char serial[16] = {'A', 'B', 0, 'C'};
    ASSERT_EQ(MachineSerialSet(serial), 1);
    EXPECT_EQ(traffic()[0], "WB 15 0x0001 16 41 42 00 43 00 00 00 00 00 00 00 00 00 00 00 00");
    char text[17];
    ASSERT_EQ(GetTextCommand("MACHINE SERIAL", text, sizeof text), 1);
    EXPECT_STREQ(text, "AB");
    char back[16];
    ASSERT_EQ(MachineSerialGet(back), 1);
    EXPECT_EQ(std::memcmp(back, serial, 16), 0);
}

TEST_F(BlockCommands, TheCameraLeavingMidSequenceEndsItCleanly) {
    sim::camera().leaveBusAt(9, 0x0A);
    EXPECT_EQ(SfByteSet(0x10, 0x12), 0);
    EXPECT_EQ(traffic(), (Lines{"WB 9 0x0009 4 10 00 00 00", "# detach", "WB 9 0x000A 1 12 FAIL", "WB 9 0x000A 1 12 FAIL",
                                "WB 9 0x000A 1 12 FAIL"}));
    unsigned char answer[26];
    EXPECT_EQ(CateRead(0x29, answer), 0);
    EXPECT_EQ(SfStreamEnd(), 0);
    unsigned short v;
    EXPECT_EQ(GetCommand("POWER", &v), 0);
    sim::camera().plug();
    EXPECT_EQ(GetCommand("POWER", &v), 1);
}

}  // namespace
