// The tool started headless on a factory-new simulated QM-T77K, with an empty console and an
// empty traffic record, so a test sees only its own accesses.
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "tests/app/ToolFixture.h"

class DeviceTest : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        // Slower than the tool's own tests: the camera's delays (re-attaching, acknowledging)
        // must not pass while a sanitizer build is still checking the state before them.
        vcc::clock::setScale(100);
        ResetTextBox(gPanels.main, MAIN_CONSOLE, "");
        SetCtrlVal(gPanels.main, MAIN_MSG_EN, 1);
        sim::camera().clearTraffic();
    }
    std::vector<std::string> traffic() { return sim::camera().traffic(); }
    void clear() {
        ResetTextBox(gPanels.main, MAIN_CONSOLE, "");
        sim::camera().clearTraffic();
    }
    // Puts the camera into its boot loader behind the tool's back and readies its program
    // flash, as a firmware writer finds it.
    void intoBootLoader() {
        sim::camera().writeRegister(5, 0xFF, 0x5AA5);
        vcc::clock::sleepMs(900);
        ASSERT_EQ(sim::camera().firmware(), sim::Firmware::BootLoader);
        sim::camera().writeBlock(9, 0x42, {});
        clear();
    }
};
