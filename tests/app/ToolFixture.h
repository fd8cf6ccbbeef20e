// The whole tool started headless on the simulated camera, for tests that act as a user.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "MainUir.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "app/Main.h"
#include "sim/SimCamera.h"
#include "ui/UiModel.h"
#include "ui/headless/HeadlessFrontend.h"

class ToolTest : public ::testing::Test {
protected:
    void SetUp() override {
        vcc::clock::setScale(1000);
        std::tm when{};
        when.tm_year = 2026 - 1900;
        when.tm_mon = 0;
        when.tm_mday = 2;
        when.tm_hour = 3;
        when.tm_min = 4;
        when.tm_sec = 5;
        vcc::clock::pinLocalTime(when);
        setenv("UVCLINK_DEVICE", "sim", 1);
        sim::camera().reset(2);
        vcc::ui::Model::instance().reset();
        vcc::ui::Model::instance().setFrontend(&frontend);
        ASSERT_EQ(VccStartUp(0, nullptr), 0);
        dir = std::filesystem::temp_directory_path() /
              ("vcc-" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
        std::filesystem::remove_all(dir);
        std::filesystem::create_directories(dir);
    }
    void TearDown() override {
        StartStopLog(0);
        SetConsoleListener(nullptr);
        vcc::ui::Model::instance().setFrontend(nullptr);
        vcc::clock::pinLocalTime(std::nullopt);
    }

    vcc::ui::headless::Target target(const std::string &name) {
        vcc::ui::headless::Target t;
        std::string error;
        EXPECT_TRUE(vcc::ui::headless::resolve(name, t, error)) << error;
        return t;
    }
    // A user's click or change, processed at once; false when dropped.
    bool commit(const std::string &name) {
        return vcc::ui::headless::deliver(target(name), EVENT_COMMIT);
    }
    bool userSet(const std::string &name, const std::string &value) {
        std::string error;
        return vcc::ui::headless::userSet(target(name), value, error);
    }
    std::string read(const std::string &name) { return vcc::ui::headless::read(target(name)); }
    bool dimmed(int panel, int control) {
        int value = 0;
        GetCtrlAttribute(panel, control, ATTR_DIMMED, &value);
        return value != 0;
    }
    std::string console() {
        std::vector<char> text(8 << 20);
        GetCtrlVal(gPanels.main, MAIN_CONSOLE, text.data(), text.size());
        return text.data();
    }
    void answerFile(const std::filesystem::path &path) {
        frontend.queueAnswer({vcc::ui::headless::PopupAnswer::Kind::File, path.string()});
    }

    vcc::ui::headless::HeadlessFrontend frontend;
    std::filesystem::path dir;
};

inline std::string readFile(const std::filesystem::path &path) {
    std::FILE *f = std::fopen(path.c_str(), "rb");
    if (!f) return "<missing>";
    std::string out;
    char buf[4096];
    for (size_t n; (n = std::fread(buf, 1, sizeof buf, f)) > 0;) out.append(buf, n);
    std::fclose(f);
    return out;
}
