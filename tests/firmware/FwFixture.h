// The whole tool on the simulated camera with a firmware package of the test's own, and a
// front-end that lets a test act at every wait of an update: each wait draws the interface,
// and the test's hook runs right there, on the user-interface thread, as a user would.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "firmware/PackageFiles.h"
#include "sim/FwPackage.h"
#include "tests/app/ToolFixture.h"

class HookFrontend : public vcc::ui::headless::HeadlessFrontend {
public:
    void draw() override {
        ++draws;
        if (onDraw) onDraw();
    }
    std::function<void()> onDraw;
    long draws = 0;
};

class FwTest : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        vcc::ui::Model::instance().setFrontend(&hook);
        DisplayPanel(gPanels.peT77K);
        SetFwPackageBaseDir(dir.c_str());
        package = dir / "QM-T77K_FW_Update";
    }
    void TearDown() override {
        SetFwPackageBaseDir(nullptr);
        ToolTest::TearDown();
    }

    void writePackage(size_t isp, size_t usb, size_t audio) {
        std::string error;
        ASSERT_TRUE(sim::WritePackage(package, sim::MakePackage(isp, usb, audio), error)) << error;
    }
    void writeFile(const std::string &name, size_t size) {
        std::filesystem::create_directories(package);
        std::FILE *f = std::fopen((package / name).c_str(), "wb");
        ASSERT_TRUE(f);
        for (size_t i = 0; i < size; ++i) std::fputc(int(i * 7 & 0xFF), f);
        std::fclose(f);
    }
    std::filesystem::path image(const char *kind) const {
        return package / ("QM-T77K_" + std::string(kind) + "_" +
                          std::string(std::string(kind) == "ISP"   ? sim::kSampleIspVersion
                                       : std::string(kind) == "USB" ? sim::kSampleUsbAppVersion
                                                                    : sim::kSampleAudioVersion) +
                          ".bin");
    }
    std::string msg() { return read("PET77K.UPDATE_MSG"); }
    void connect() { ASSERT_TRUE(commit("PET77K.CONNECT")); }
    void update() { ASSERT_TRUE(commit("PET77K.FW_UPDATE")); }
    // The closing of every run: nothing stays dimmed or busy.
    void expectClosed() {
        EXPECT_EQ(read("MAIN.BUSY"), "0");
        for (const char *c : {"PET77K.FW_UPDATE", "PET77K.FW_FILE_CHECK_BOX_ISP", "PET77K.FW_FILE_CHECK_BOX_USB",
                              "PET77K.FW_FILE_CHECK_BOX_AUDIO", "PET77K.APP_BL", "MAIN.MSG_EN"})
            EXPECT_EQ(read(std::string(c) + ".dimmed"), "0") << c;
    }
    bool consoleHas(const std::string &text) { return console().find(text) != std::string::npos; }

    HookFrontend hook;
    std::filesystem::path package;
};

inline std::vector<uint8_t> fileBytes(const std::filesystem::path &path) {
    const std::string s = readFile(path);
    return std::vector<uint8_t>(s.begin(), s.end());
}
