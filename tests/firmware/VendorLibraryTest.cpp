// The binding of the vendor's library, called as the USB writer calls it, against the
// replacement library beside the programs.
#include "firmware/SunplusCamera.h"
#include "tests/firmware/FwFixture.h"

namespace {

class VendorLibrary : public FwTest {
protected:
    void TearDown() override {
        UnloadVendorLibrary();
        SetVendorLibraryName(nullptr);
        FwTest::TearDown();
    }
};

TEST_F(VendorLibrary, AModuleThatIsMissingOrLacksTheCallsIsNeverReady) {
    SetVendorLibraryName("libNoSuchVendor.so");
    EXPECT_EQ(LoadVendorLibrary(), 0);
    EXPECT_EQ(IsVendorLibraryReady(), 0);
    unsigned int type = 0;
    EXPECT_EQ(GetVendorAsicType(&type), 0);
    EXPECT_EQ(DownloadUsbImage("/dev/null"), 0);

    // A library that loads but exports none of the calls: refused, not called.
    SetVendorLibraryName("libvccsim.so");
    EXPECT_EQ(LoadVendorLibrary(), 0);
    EXPECT_EQ(IsVendorLibraryReady(), 0);
}

TEST_F(VendorLibrary, TheLibraryIsReadyOnlyWhileTheBridgeIsOnTheBus) {
    sim::camera().unplug();
    EXPECT_EQ(LoadVendorLibrary(), 0);
    sim::camera().plug();
    EXPECT_EQ(LoadVendorLibrary(), 1);
    unsigned int type = 0;
    EXPECT_EQ(GetVendorAsicType(&type), 1);
    EXPECT_EQ(type, 0x6Du);
    UnloadVendorLibrary();
    EXPECT_EQ(IsVendorLibraryReady(), 0);
    EXPECT_EQ(GetVendorAsicType(&type), 0);
}

TEST_F(VendorLibrary, TheStatusAndProgressStartFromZeroWhateverTheLastDownloadLeft) {
    writePackage(0, sim::kProgramFlashSize, 0);
    writeFile("short.bin", 1000);
    ASSERT_EQ(LoadVendorLibrary(), 1);
    ASSERT_EQ(DownloadUsbImage(image("USB").c_str()), 1);
    unsigned char status = 0, progress = 0;
    GetDownloadStatus(&status);
    GetDownloadProgress(&progress);
    EXPECT_EQ(status, 0x19);
    EXPECT_EQ(progress, 100);
    EXPECT_EQ(sim::camera().programFlash(), fileBytes(image("USB")));

    // The library refuses this image at once, without touching the two bytes.
    ASSERT_EQ(LoadVendorLibrary(), 1);
    EXPECT_EQ(DownloadUsbImage((package / "short.bin").c_str()), 0);
    GetDownloadStatus(&status);
    GetDownloadProgress(&progress);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(progress, 0);
}

TEST_F(VendorLibrary, AnImageLargerThanTheBridgesFlashIsNeverHandedOver) {
    writeFile("big.bin", 131073);
    ASSERT_EQ(LoadVendorLibrary(), 1);
    const std::vector<uint8_t> before = sim::camera().programFlash();
    EXPECT_EQ(DownloadUsbImage((package / "big.bin").c_str()), 0);
    EXPECT_EQ(sim::camera().programFlash(), before);
}

}  // namespace
