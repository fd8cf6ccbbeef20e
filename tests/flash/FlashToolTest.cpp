// The two flash tools driven as an engineer would: panel callbacks on the simulated camera,
// judged by what reached the camera's memories and its traffic record.
#include <algorithm>
#include <atomic>
#include <cstring>
#include <cstdio>
#include <vector>

#include "../app/ToolFixture.h"
#include "device/Connection.h"
#include "flash/PfTool.h"
#include "flash/SfTool.h"
#include "ui/UserInterface.h"

namespace {

// Every access is tried this often before it counts as failed.
constexpr int kAttempts = 3;

class FlashToolTest : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        SetCtrlAttribute(gPanels.main, MAIN_TIMER, ATTR_ENABLED, 0);
        connect();
        ASSERT_TRUE(IsDeviceConnected());
    }
    void connect() {
        VideoCameraConnect_Callback(gPanels.main, MAIN_VIDEO_CAMERA_CONNECT, EVENT_RIGHT_CLICK, nullptr, 0, 0);
    }
    // The camera answers flash commands in its boot loader only; the tool follows it there.
    void enterBootLoader() {
        call("PF.PF_APP_ENTER_BL", EVENT_COMMIT);
        ASSERT_FALSE(IsDeviceConnected());
        Sleep(1000);
        connect();
        ASSERT_TRUE(IsDeviceConnected());
        // The main panel's refresh on connecting finds no application to answer it.
        SetCtrlVal(gPanels.main, MAIN_ERROR, 0);
    }
    void call(const std::string &name, int event) {
        const auto t = target(name);
        vcc::ui::Model::instance().call(t.panel, t.control, event);
    }
    void put(const std::string &name, int value) {
        const auto t = target(name);
        SetCtrlVal(t.panel, t.control, value);
    }
    int value(const std::string &name) {
        const auto t = target(name);
        int v = 0;
        GetCtrlVal(t.panel, t.control, &v);
        return v;
    }
    std::vector<std::string> trafficLike(const std::string &prefix) {
        std::vector<std::string> out;
        for (const std::string &line : sim::camera().traffic())
            if (line.rfind(prefix, 0) == 0) out.push_back(line);
        return out;
    }
    std::filesystem::path image(const std::string &name, size_t size) {
        std::vector<unsigned char> bytes(size);
        for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<unsigned char>((i * 7 + 3) & 0xFF);
        const auto path = dir / name;
        std::FILE *f = std::fopen(path.c_str(), "wb");
        std::fwrite(bytes.data(), 1, bytes.size(), f);
        std::fclose(f);
        return path;
    }
    bool sawPopup(const std::string &text) {
        return std::find(frontend.popups.begin(), frontend.popups.end(), text) != frontend.popups.end();
    }
    std::string errorLed() { return read("MAIN.ERROR"); }
};

// ---- program flash ---------------------------------------------------------------------------------

TEST_F(FlashToolTest, ProgramFlashPanelGuardsTheBootLoader) {
    enterBootLoader();
    call("PF.PF_INIT", EVENT_RIGHT_CLICK);
    EXPECT_EQ(read("PF.STATUS"), "NG");
    call("PF.PF_INIT", EVENT_COMMIT);
    call("PF.PF_INIT", EVENT_RIGHT_CLICK);
    EXPECT_EQ(read("PF.STATUS"), "OK");

    // The sector box keeps to the application's sectors.
    put("PF.PF_SECTOR", 2);
    call("PF.PF_SECTOR", EVENT_COMMIT);
    EXPECT_EQ(value("PF.PF_SECTOR"), 4);
    put("PF.PF_SECTOR", 40);
    call("PF.PF_SECTOR", EVENT_COMMIT);
    EXPECT_EQ(value("PF.PF_SECTOR"), 31);

    // A byte below the application is refused before it is sent, without an error.
    sim::camera().clearTraffic();
    put("PF.ADDRESS", 0x3FFF);
    put("PF.BYTE", 0x12);
    call("PF.PF_BYTE_WR_RD", EVENT_COMMIT);
    EXPECT_TRUE(trafficLike("WB 9").empty());
    EXPECT_EQ(errorLed(), "0");
    EXPECT_NE(console().find(">CMND : SET [PF BYTE] : [0x00003FFF] = 0x12 (1)\n> - fail (invalid address)\n\n"),
              std::string::npos);
    put("PF.ADDRESS", 0x4000);
    call("PF.PF_BYTE_WR_RD", EVENT_COMMIT);
    EXPECT_EQ(trafficLike("WB 9 0x0046"), std::vector<std::string>{"WB 9 0x0046 2 01 00"});

    // The page button always writes the application's first page, with the counting pattern.
    put("PF.PF_SECTOR", 4);
    call("PF.PF_ERASE", EVENT_COMMIT);
    put("PF.ADDRESS", 0x8000);
    call("PF.PF_PAGE_WR_RD", EVENT_COMMIT);
    EXPECT_EQ(value("PF.ADDRESS"), 0x4000);
    const auto flash = sim::camera().programFlash();
    for (int i = 0; i < 256; ++i) ASSERT_EQ(flash[0x4000 + i], i) << i;
    EXPECT_EQ(errorLed(), "0");

    // The byte read-back sees what the page wrote.
    put("PF.ADDRESS", 0x4005);
    call("PF.PF_BYTE_WR_RD", EVENT_RIGHT_CLICK);
    EXPECT_EQ(value("PF.BYTE"), 5);

    // The checksum of sector 4 names the range without the header.
    call("PF.PF_CHECKSUM", EVENT_COMMIT);
    put("PF.PF_SECTOR", 5);
    call("PF.PF_CHECKSUM", EVENT_COMMIT);
    EXPECT_NE(console().find(">CMND : SET [PF CHECKSUM] : Sector 4 (0x00004020 - 0x00004FFF)\n\n"), std::string::npos);
    EXPECT_NE(console().find(">CMND : SET [PF CHECKSUM] : Sector 5 (0x00005000 - 0x00005FFF)\n\n"), std::string::npos);

    sim::camera().queueBlockRead(9, 0x41, {0x82});
    call("PF.PF_INIT", EVENT_RIGHT_CLICK);
    EXPECT_EQ(read("PF.STATUS"), "Unknown (0x82)");
}

TEST_F(FlashToolTest, ProgramFlashRefusesAnImageOfTheWrongSize) {
    const auto shortImage = image("short.bin", 131071);
    answerFile(shortImage);
    call("PF.PF_BIN_LOAD", EVENT_COMMIT);
    EXPECT_EQ(value("PF.LOADED"), 0);
    EXPECT_EQ(read("PF.PATH"), "");

    SetCtrlVal(gPanels.pf, PF_PATH, shortImage.c_str());
    sim::camera().clearTraffic();
    call("PF.PF_UPDATE", EVENT_COMMIT);
    const std::string text = console();
    EXPECT_NE(text.find(">PF BIN : LOAD\n> - fail (invalid size)\n\n"), std::string::npos);
    EXPECT_NE(text.find(">PF BIN : FIND\n> - fail (invalid size)\n\n"), std::string::npos);
    EXPECT_TRUE(IsDeviceConnected());
    EXPECT_TRUE(trafficLike("W").empty());
}

TEST_F(FlashToolTest, ProgramFlashUpdateWritesTheApplicationAndDumpReadsItBack) {
    const auto path = image("app.bin", 131072);
    answerFile(path);
    call("PF.PF_BIN_LOAD", EVENT_COMMIT);
    ASSERT_EQ(value("PF.LOADED"), 1);
    call("PF.PF_UPDATE", EVENT_COMMIT);
    EXPECT_FALSE(sawPopup("popup message \"FW Update\" \"FAIL\""));
    EXPECT_EQ(value("PF.RUNNING"), 0);
    EXPECT_FALSE(IsDeviceConnected());
    EXPECT_NE(console().find("> - done (file end, read file size: 131072)\n\n"), std::string::npos);

    const std::string written = readFile(path);
    const auto flash = sim::camera().programFlash();
    // Everything past the header is the image's; the header is the camera's signature.
    EXPECT_TRUE(std::equal(flash.begin() + 0x4020, flash.end(), written.begin() + 0x4020,
                           [](unsigned char a, char b) { return a == static_cast<unsigned char>(b); }));
    EXPECT_TRUE(sim::IsApplicationSigned(flash));

    // The signed application runs after the reset; the dump needs the boot loader again.
    Sleep(1500);
    connect();
    enterBootLoader();
    const auto dump = dir / "dump.bin";
    answerFile(dump);
    call("PF.PF_DUMP", EVENT_COMMIT);
    const std::string dumped = readFile(dump);
    ASSERT_EQ(dumped.size(), 131072u);
    EXPECT_TRUE(std::equal(flash.begin(), flash.end(), dumped.begin(),
                           [](unsigned char a, char b) { return a == static_cast<unsigned char>(b); }));
}

TEST_F(FlashToolTest, ProgramFlashUpdateStopsWhenTheBootLoaderIsNotReady) {
    const auto path = image("app.bin", 131072);
    SetCtrlVal(gPanels.pf, PF_PATH, path.c_str());
    const auto before = sim::camera().programFlash();
    sim::camera().queueBlockRead(9, 0x41, {0x81});
    sim::camera().clearTraffic();
    call("PF.PF_UPDATE", EVENT_COMMIT);
    EXPECT_NE(console().find(">CMND : GET [PF STATUS]\n> - fail (not PF_STATUS_OK)\n\n"), std::string::npos);
    EXPECT_TRUE(sawPopup("popup message \"FW Update\" \"FAIL\""));
    EXPECT_FALSE(IsDeviceConnected());
    EXPECT_EQ(value("PF.RUNNING"), 0);
    EXPECT_TRUE(trafficLike("WB 9 0x0043").empty());
    EXPECT_EQ(sim::camera().programFlash(), before);
}

TEST_F(FlashToolTest, ProgramFlashDumpOutsideTheBootLoaderLeavesAnEmptyFile) {
    const auto dump = dir / "dump.bin";
    answerFile(dump);
    call("PF.PF_DUMP", EVENT_COMMIT);
    EXPECT_EQ(readFile(dump), "");
    EXPECT_NE(console().find("> - fail (not PF_STATUS_OK)\n\n"), std::string::npos);
    EXPECT_EQ(console().find("> - done (save file)"), std::string::npos);
}

// ---- serial flash ------------------------------------------------------------------------------------

TEST_F(FlashToolTest, SerialFlashPageUpdateErasesAllAndPadsTheLastPage) {
    const auto path = image("small.bin", 300);
    answerFile(path);
    call("SF.SF_BIN_LOAD", EVENT_COMMIT);
    ASSERT_EQ(value("SF.LOADED"), 1);
    sim::camera().clearTraffic();
    // The erases re-apply the flash type's dimming; the update button must stay out of reach.
    static std::atomic<int> updateDimmedAtEnd{-1};
    SetConsoleListener([](const char *text) {
        if (std::strstr(text, "done (file end")) {
            int dimmedNow = 0;
            GetCtrlAttribute(gPanels.sf, SF_SF_UPDATE, ATTR_DIMMED, &dimmedNow);
            updateDimmedAtEnd = dimmedNow;
        }
    });
    call("SF.SF_UPDATE", EVENT_COMMIT);
    SetConsoleListener(nullptr);
    EXPECT_EQ(updateDimmedAtEnd.load(), 1);
    EXPECT_FALSE(dimmed(gPanels.sf, SF_SF_UPDATE));
    EXPECT_FALSE(sawPopup("popup message \"FW Update\" \"FAIL\""));
    EXPECT_FALSE(IsDeviceConnected());
    EXPECT_EQ(value("SF.RUNNING"), 0);

    EXPECT_EQ(trafficLike("WB 9 0x001A"), std::vector<std::string>{"WB 9 0x001A 1 5A"});
    EXPECT_EQ(trafficLike("WB 9 0x0003").size(), 128u);
    EXPECT_EQ(trafficLike("WB 9 0x0003").back(), "WB 9 0x0003 2 7F 00");
    EXPECT_EQ(trafficLike("WB 9 0x001D").size(), 2u);
    EXPECT_EQ(trafficLike("WB 9 0x0052").size(), 1u);

    const std::string written = readFile(path);
    const auto flash = sim::camera().serialFlash();
    for (size_t i = 0; i < 512; ++i)
        ASSERT_EQ(flash[i], i < 300 ? static_cast<unsigned char>(written[i]) : 0xFF) << i;
    EXPECT_NE(console().find("> - done (file end, read file size: 300)\n\n"), std::string::npos);
}

TEST_F(FlashToolTest, SerialFlashStreamUpdateReleasesTheChipAndStreamsTheImage) {
    SetCtrlVal(gPanels.sf, SF_SF_TYPE, 1);
    call("SF.SF_TYPE", EVENT_COMMIT);
    EXPECT_TRUE(dimmed(gPanels.sf, SF_SF_ERASE));
    EXPECT_FALSE(dimmed(gPanels.sf, SF_SF_UPDATE));
    put("SF.SF_SECTOR", 2000);
    call("SF.SF_SECTOR", EVENT_COMMIT);
    EXPECT_EQ(value("SF.SF_SECTOR"), 1023);

    const auto path = image("isp.bin", 16385);
    SetCtrlVal(gPanels.sf, SF_PATH, path.c_str());
    sim::camera().clearTraffic();
    call("SF.SF_UPDATE", EVENT_COMMIT);
    EXPECT_FALSE(sawPopup("popup message \"FW Update\" \"FAIL\""));
    const auto writes = trafficLike("WB 9");
    ASSERT_FALSE(writes.empty());
    EXPECT_EQ(writes.front(), "WB 9 0x001A 1 A5");
    EXPECT_EQ(trafficLike("WB 9 0x0023").size(), 32u);
    EXPECT_EQ(trafficLike("WB 9 0x0021").size(), 1u);
    const std::string written = readFile(path);
    const auto store = sim::camera().ispStore();
    ASSERT_GE(store.size(), written.size());
    EXPECT_TRUE(std::equal(written.begin(), written.end(), store.begin(),
                           [](char a, unsigned char b) { return static_cast<unsigned char>(a) == b; }));

    // The streamed part cannot be read back: the dump asks for a name and writes nothing.
    Sleep(1500);
    connect();
    const auto dump = dir / "dump.bin";
    answerFile(dump);
    call("SF.SF_DUMP", EVENT_COMMIT);
    EXPECT_EQ(readFile(dump), "<missing>");
}

TEST_F(FlashToolTest, SerialFlashHandsOnCommandsAndDump) {
    put("SF.SF_SECTOR", 5);
    call("SF.SF_ERASE", EVENT_COMMIT);
    EXPECT_NE(console().find(">CMND : SET [SF ERASE] : Sector 5 (0x00005000 - 0x00005FFF)\n\n"), std::string::npos);
    put("SF.SF_SECTOR", 1000);
    call("SF.SF_SECTOR", EVENT_COMMIT);
    EXPECT_EQ(value("SF.SF_SECTOR"), 127);

    put("SF.ADDRESS", 0x5000);
    call("SF.SF_PAGE_WR_RD", EVENT_COMMIT);
    auto flash = sim::camera().serialFlash();
    for (int i = 0; i < 256; ++i) ASSERT_EQ(flash[0x5000 + i], i) << i;
    put("SF.ADDRESS", 0x5007);
    call("SF.SF_BYTE_WR_RD", EVENT_RIGHT_CLICK);
    EXPECT_EQ(value("SF.BYTE"), 7);

    call("SF.SF_INIT", EVENT_RIGHT_CLICK);
    EXPECT_EQ(read("SF.ID"), "0xC2 0x20 0x13");
    put("SF.SF_SECTOR", 5);
    call("SF.SF_BLANK_CHECK", EVENT_COMMIT);
    call("SF.SF_BLANK_CHECK", EVENT_RIGHT_CLICK);
    EXPECT_EQ(read("SF.BLANK_RESULT"), "0x00");
    EXPECT_EQ(errorLed(), "0");

    // A failed page read lights the indicator but the dump goes on; the page is written as read.
    sim::camera().failNext(9, 0x13, kAttempts);
    const auto dump = dir / "sf.bin";
    answerFile(dump);
    call("SF.SF_DUMP", EVENT_COMMIT);
    EXPECT_EQ(errorLed(), "1");
    flash = sim::camera().serialFlash();
    const std::string dumped = readFile(dump);
    ASSERT_EQ(dumped.size(), 524288u);
    EXPECT_EQ(static_cast<unsigned char>(dumped[0]), 0xFF);
    EXPECT_TRUE(std::equal(flash.begin() + 256, flash.end(), dumped.begin() + 256,
                           [](unsigned char a, char b) { return a == static_cast<unsigned char>(b); }));
}

TEST_F(FlashToolTest, FailedSerialFlashUpdateSaysFailAndLetsTheCameraGo) {
    const auto path = image("small.bin", 300);
    SetCtrlVal(gPanels.sf, SF_PATH, path.c_str());
    sim::camera().failNext(9, 0x03, kAttempts);
    sim::camera().clearTraffic();
    call("SF.SF_UPDATE", EVENT_COMMIT);
    EXPECT_TRUE(sawPopup("popup message \"FW Update\" \"FAIL\""));
    EXPECT_FALSE(IsDeviceConnected());
    EXPECT_EQ(value("SF.RUNNING"), 0);
    EXPECT_TRUE(trafficLike("WB 9 0x001D").empty());
    EXPECT_TRUE(trafficLike("WB 9 0x0052").empty());

    // A missing image stops before the camera is touched.
    connect();
    SetCtrlVal(gPanels.sf, SF_PATH, (dir / "absent.bin").c_str());
    sim::camera().clearTraffic();
    call("SF.SF_UPDATE", EVENT_COMMIT);
    EXPECT_NE(console().find(">SF BIN : FIND\n> - fail (not exist)\n\n"), std::string::npos);
    EXPECT_TRUE(IsDeviceConnected());
}

}  // namespace
