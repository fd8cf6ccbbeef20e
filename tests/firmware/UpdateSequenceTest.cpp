// The update sequence where scripts cannot reach: what ends up in the camera's memories, and
// what happens when the world changes in the middle of a run (an image deleted, the camera
// plugged in or gone for good, a user clicking about). The hooks act at the sequence's own
// waits, on the user-interface thread, so each test is as repeatable as a script.
#include <algorithm>
#include <climits>

#include "firmware/UpdateSequence.h"
#include "tests/firmware/FwFixture.h"

namespace {

using UpdateSequence = FwTest;

bool startsWith(const std::string &s, const std::string &prefix) { return s.rfind(prefix, 0) == 0; }

TEST_F(UpdateSequence, AFullUpdateLeavesEveryImageInTheCameraAndItsVersionInFwVersion) {
    writePackage(40000, sim::kProgramFlashSize, 20000);
    const std::vector<uint8_t> bootLoaderBefore = sim::camera().programFlash();
    connect();
    for (const char *box : {"PET77K.FW_FILE_CHECK_BOX_ISP", "PET77K.FW_FILE_CHECK_BOX_USB",
                            "PET77K.FW_FILE_CHECK_BOX_AUDIO"})
        ASSERT_TRUE(userSet(box, "1"));
    update();
    EXPECT_EQ(msg(), "FW is updated and rebooted");
    EXPECT_EQ(read("PET77K.FAIL"), "0");
    EXPECT_EQ(read("MAIN.ERROR"), "0");
    expectClosed();

    // The application part of the program flash is the image's; the boot loader stayed.
    const std::vector<uint8_t> usb = fileBytes(image("USB")), pf = sim::camera().programFlash();
    ASSERT_EQ(pf.size(), usb.size());
    EXPECT_TRUE(std::equal(pf.begin() + 0x4000, pf.end(), usb.begin() + 0x4000));
    EXPECT_TRUE(std::equal(pf.begin(), pf.begin() + 0x4000, bootLoaderBefore.begin()));
    // The AUDIO image from address 0, the rest of the chip erased.
    const std::vector<uint8_t> audio = fileBytes(image("AUDIO")), sf = sim::camera().serialFlash();
    EXPECT_TRUE(std::equal(audio.begin(), audio.end(), sf.begin()));
    EXPECT_TRUE(std::all_of(sf.begin() + long(audio.size()), sf.end(), [](uint8_t b) { return b == 0xFF; }));
    // The ISP image in whole blocks, the last one padded.
    std::vector<uint8_t> isp = fileBytes(image("ISP"));
    isp.resize((isp.size() + 511) / 512 * 512, 0xFF);
    EXPECT_EQ(sim::camera().ispStore(), isp);

    connect();
    ASSERT_TRUE(commit("PeT77K_FwVersion_Callback"));
    EXPECT_EQ(read("PET77K.FW_FILE_ISP"), "I77K300");
    EXPECT_EQ(read("PET77K.FW_FILE_USB"), "U77K200 ( B03 )");
    EXPECT_EQ(read("PET77K.FW_FILE_AUDIO"), "A77K040");
}

// Each writer checks its image again when it starts; the sequence checked it before it sent
// the camera into its boot loader. Deleting it in between must end the run in good order.
struct Vanishing {
    const char *box;
    const char *kind;
    const char *failure;
    bool appAndBootLoader;
};

class ImageVanishes : public FwTest, public ::testing::WithParamInterface<Vanishing> {};

TEST_P(ImageVanishes, BetweenTheCheckAndTheWriteTheRunEndsWithTheWritersFailure) {
    const Vanishing &v = GetParam();
    writePackage(4096, sim::kProgramFlashSize, 4096);
    connect();
    ASSERT_TRUE(userSet(v.box, "1"));
    // The panel offers [APP + BL] only without a camera; the program may still set it.
    std::string error;
    if (v.appAndBootLoader) {
        ASSERT_TRUE(vcc::ui::headless::programSet(target("PET77K.APP_BL"), "1", error)) << error;
    }
    hook.queueAnswer({vcc::ui::headless::PopupAnswer::Kind::Ok, ""});
    const auto victim = image(v.kind);
    hook.onDraw = [&] {
        if (startsWith(msg(), "FW update is now starting")) std::filesystem::remove(victim);
    };
    update();
    EXPECT_FALSE(std::filesystem::exists(victim));
    EXPECT_TRUE(consoleHas("> - fail (file open)\n"));
    EXPECT_TRUE(consoleHas("> - fw update fail\n"));
    EXPECT_EQ(msg(), v.failure);
    EXPECT_EQ(read("PET77K.FAIL"), "1");
    expectClosed();
}

INSTANTIATE_TEST_SUITE_P(
    Writers, ImageVanishes,
    ::testing::Values(Vanishing{"PET77K.FW_FILE_CHECK_BOX_ISP", "ISP", "update ISP fail", false},
                      Vanishing{"PET77K.FW_FILE_CHECK_BOX_AUDIO", "AUDIO", "update AUDIO fail", false},
                      Vanishing{"PET77K.FW_FILE_CHECK_BOX_USB", "USB", "update USB [APP] fail", false},
                      Vanishing{"PET77K.FW_FILE_CHECK_BOX_USB", "USB", "update USB [APP + BL] fail", true}));

TEST_F(UpdateSequence, APackageThatCannotBeUsedStopsTheRunBeforeTheCameraHearsOfIt) {
    std::FILE *f = std::fopen(package.c_str(), "w");  // the package folder is a file
    ASSERT_TRUE(f);
    std::fclose(f);
    connect();
    ASSERT_TRUE(userSet("PET77K.FW_FILE_CHECK_BOX_ISP", "1"));
    sim::camera().clearTraffic();
    update();
    EXPECT_EQ(msg(), "file is invalid");
    EXPECT_EQ(read("PET77K.FW_FILE_ISP"), "ISP file is not found (1)");
    EXPECT_TRUE(consoleHas("> - ISP 檔案路徑異常\n"));
    EXPECT_EQ(read("PET77K.FAIL"), "1");
    EXPECT_EQ(sim::camera().trafficSize(), 0u);
    expectClosed();

    // An image whose path would pass 1023 characters.
    std::filesystem::path deep = dir / "deep";
    while (deep.string().size() < 1023 - 19 - 60) deep /= std::string(60, 'd');
    SetFwPackageBaseDir(deep.c_str());
    package = deep / "QM-T77K_FW_Update";
    writeFile("QM-T77K_ISP_" + std::string(60, 'v') + ".bin", 4096);
    update();
    EXPECT_EQ(msg(), "file is invalid");
    EXPECT_EQ(read("PET77K.FW_FILE_ISP"), "ISP file is not found (2)");
    EXPECT_EQ(sim::camera().trafficSize(), 0u);
    expectClosed();
}

TEST_F(UpdateSequence, ACameraPluggedInDuringTheLibrarySearchIsTakenAtOnce) {
    vcc::clock::setScale(100);
    writePackage(0, sim::kProgramFlashSize, 0);
    sim::camera().unplug();
    ASSERT_TRUE(userSet("PET77K.APP_BL", "1"));
    ASSERT_TRUE(userSet("PET77K.FW_FILE_CHECK_BOX_USB", "1"));
    int lowestCount = INT_MAX;
    hook.onDraw = [&] {
        const std::string m = msg();
        const std::string searching = "update USB [APP + BL]...searching device : ";
        if (!startsWith(m, searching)) return;
        const int count = std::stoi(m.substr(searching.size()));
        lowestCount = std::min(lowestCount, count);
        if (count <= 15 && !sim::camera().attached()) sim::camera().plug();
    };
    update();
    EXPECT_EQ(msg(), "FW is updated and rebooted");
    EXPECT_EQ(read("PET77K.FAIL"), "0");
    EXPECT_LE(lowestCount, 15);
    EXPECT_GE(lowestCount, 12);  // found within a few passes, not after the full 20 s
    EXPECT_FALSE(consoleHas("fail to initialize"));
}

// The file-name boxes stay live during an update: a technician may right-click one (or press
// Refresh) while the vendor-library writer is about to open the image. Every look-up of the
// USB image must leave the writer a whole path, never an empty or half-written one. A crowded
// package folder makes each look-up spend most of its time listing.
TEST_F(UpdateSequence, LookingTheUsbImageUpWhileTheLibraryWriterOpensItLeavesItsPathWhole) {
    writePackage(0, sim::kProgramFlashSize, 0);
    for (int i = 0; i < 1000; ++i) writeFile("notes_" + std::to_string(i) + ".txt", 0);
    ASSERT_TRUE(userSet("PET77K.APP_BL", "1"));
    ASSERT_TRUE(userSet("PET77K.FW_FILE_CHECK_BOX_USB", "1"));
    sim::BridgeState bridge = sim::camera().bridge();
    bridge.libraryPresent = false;
    sim::camera().setBridge(bridge);
    hook.queueAnswer({vcc::ui::headless::PopupAnswer::Kind::Ok, ""});
    bool looked = false;
    hook.onDraw = [&] {
        if (looked || !startsWith(msg(), "update USB [APP + BL]...searching device")) return;
        looked = true;
        // The library is found at the writer's next attempt, and the image opened right after.
        bridge.libraryPresent = true;
        sim::camera().setBridge(bridge);
        for (int i = 0; i < 60; ++i)
            PeT77K_FwFileUSB_Callback(gPanels.peT77K, PET77K_FW_FILE_USB, EVENT_RIGHT_CLICK, nullptr, 0, 0);
    };
    update();
    EXPECT_TRUE(looked);
    EXPECT_FALSE(consoleHas("> - fail (command write)"));
    EXPECT_EQ(msg(), "FW is updated and rebooted");
    EXPECT_EQ(read("PET77K.FAIL"), "0");
    expectClosed();
}

TEST_F(UpdateSequence, ACameraThatNeverReturnsAfterItsApplicationWasWrittenIsNotFound) {
    vcc::clock::setScale(100);
    writePackage(0, sim::kProgramFlashSize, 0);
    connect();
    ASSERT_TRUE(userSet("PET77K.FW_FILE_CHECK_BOX_USB", "1"));
    // The final count-down starts right after [PF RESET]; the camera would be back 1 s later.
    hook.onDraw = [&] {
        if (startsWith(msg(), "update USB [APP]...final count down")) sim::camera().setNeverReattach(true);
    };
    update();
    EXPECT_EQ(msg(), "device is not found");
    EXPECT_TRUE(consoleHas(">LIB : GET [DEVICE EXIST]\n> - device not exist\n"));
    EXPECT_EQ(read("MAIN.CONNECTED"), "0");
    EXPECT_FALSE(consoleHas("> - fw update done"));
    expectClosed();
    sim::camera().setNeverReattach(false);
}

TEST_F(UpdateSequence, TheInterfaceStaysAliveWhileAWorkerWrites) {
    writePackage(256 * 1024, 0, 0);
    connect();
    ASSERT_TRUE(userSet("PET77K.FW_FILE_CHECK_BOX_ISP", "1"));
    // A camera slow enough that the write spans many of the sequence's 100 ms passes however
    // busy the machine is: 512 blocks of 20 ms each.
    sim::camera().setLatencyMs(20);
    int clicks = 0;
    hook.onDraw = [&] {
        if (msg().rfind("update ISP... ", 0) != 0 || clicks++) return;
        // A second press of UPDATE meets a dimmed button; Advance still works.
        EXPECT_FALSE(vcc::ui::headless::reachable(target("PET77K.FW_UPDATE")));
        ASSERT_TRUE(vcc::ui::headless::reachable(target("PET77K.ADVANCE")));
        vcc::ui::Model::instance().post({gPanels.peT77K, target("PET77K.ADVANCE").control, EVENT_COMMIT, 0, 0});
    };
    update();
    EXPECT_EQ(msg(), "FW is updated and rebooted");
    EXPECT_GT(clicks, 0);
    EXPECT_EQ(read("PASSWORD.visible"), "1");
    // Drawn at every one of its waits: at least one while the boot loader starts (how many
    // depends on how fast the camera comes back), 10 to settle, the ISP write, 100 for the
    // image processor, 30 for the reboot.
    EXPECT_GE(FwUpdateWaitPasses(), 1 + 10 + 1 + 100 + 30);
    EXPECT_GE(hook.draws, FwUpdateWaitPasses());
    sim::camera().setLatencyMs(0);
}

}  // namespace
