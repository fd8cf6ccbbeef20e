// The camera access library: which camera it finds, and the block lengths it knows.
#include <cstring>

#include "commands/FunctionList.h"
#include "device/BlockLengths.h"
#include "device/UvcLink.h"
#include "tests/device/DeviceFixture.h"

namespace {

class UvcLink : public DeviceTest {
protected:
    void TearDown() override {
        UvcLinkSelectDevice("sim");
        sim::camera().reset(2);
        DeviceTest::TearDown();
    }
    std::string name() {
        char buffer[65] = {};
        GetCameraDeviceName(buffer);
        return buffer;
    }
    int present() {
        unsigned char p = 7;
        DetectCaptureDeviceEx(&p);
        return p;
    }
};

TEST_F(UvcLink, TheDeviceComesFromItsName) {
    EXPECT_EQ(present(), 1);
    EXPECT_EQ(name(), "QM-T77K USB Camera");
    char version[256] = {};
    GetSDKVersion(version);
    EXPECT_GE(std::strlen(version), 1u);
    EXPECT_LE(std::strlen(version), 4u);

    ASSERT_EQ(UvcLinkSelectDevice("sim:1"), 1);
    EXPECT_EQ(name(), "QM-H30 USB PTZ Camera");

    ASSERT_EQ(UvcLinkSelectDevice(""), 1);  // unset: no camera
    EXPECT_EQ(present(), 0);
    EXPECT_EQ(name(), "");
    unsigned short value = 0;
    EXPECT_LT(ReadFromDevice(5, 0xD1, &value), 0);

    EXPECT_EQ(UvcLinkSelectDevice("sim:7"), 0);
    EXPECT_EQ(present(), 0);
    EXPECT_EQ(UvcLinkSelectDevice("camera"), 0);
    EXPECT_EQ(present(), 0);
}

TEST_F(UvcLink, UnknownBlockCommandsNeverReachTheCamera) {
    unsigned char buffer[2048] = {};
    EXPECT_EQ(WriteArrayToDevice(9, 0x99, buffer), kUvcLinkRefused);
    EXPECT_EQ(ReadArrayFromDevice(9, 0x03, buffer), kUvcLinkRefused);  // [SF ERASE] has no read
    EXPECT_EQ(ReadArrayFromDevice(5, 0xD1, buffer), kUvcLinkRefused);
    EXPECT_TRUE(traffic().empty());
}

TEST_F(UvcLink, ProgramFlashDataCarriesTheAnnouncedLength) {
    intoBootLoader();
    unsigned char buffer[2048] = {};
    buffer[0] = 0x01;  // one byte
    ASSERT_GE(WriteArrayToDevice(9, 0x46, buffer), 0);
    buffer[0] = 0xAB;
    ASSERT_GE(WriteArrayToDevice(9, 0x48, buffer), 0);
    EXPECT_EQ(traffic().back(), "WB 9 0x0048 1 AB");
    // A length the camera refuses is not taken up.
    buffer[0] = 0x00, buffer[1] = 0x02;
    EXPECT_LT(WriteArrayToDevice(9, 0x46, buffer), 0);
    ASSERT_GE(WriteArrayToDevice(9, 0x48, buffer), 0);
    EXPECT_EQ(traffic().back(), "WB 9 0x0048 1 00");
}

TEST_F(UvcLink, TheLibrarysLengthsAgreeWithEveryBlockCommand) {
    for (const fl::BlockCommand &command : fl::BlockCommands()) {
        for (int i = 0; i < command.stepCount; ++i) {
            const fl::BlockStep &step = command.steps[i];
            const auto length = uvclink::FindBlockLength(command.unit, step.selector, step.dir == fl::Dir::Write);
            ASSERT_TRUE(length.has_value()) << command.name << " step " << i;
            if (step.length == fl::kCallerLength) EXPECT_EQ(*length, uvclink::kPfDataLength) << command.name;
            else EXPECT_EQ(*length, step.length) << command.name << " step " << i;
        }
    }
}

}  // namespace
