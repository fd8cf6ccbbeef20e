// The firmware update, timed two ways.
//
// 1. Under the scaled clock (a thousandth of every wait, as vcc-script --fast) with no device
//    latency: the full update, USB application through the boot loader, an ISP image of 1 MB
//    and an AUDIO image of 512 KB. Wall and CPU time of the whole run, and the tool's own CPU
//    time per block command: the CPU of the run less what the simulated camera spends serving
//    the very same accesses, measured by replaying them against it alone.
// 2. In real time, the ISP-only update: the wall time it takes against the waits the sequence
//    prescribes (its 100 ms passes), to show the sequence adds next to nothing to its waits.
//
// Usage: FwUpdateBench [--fast-only]. Prints its figures; asserts nothing.
#include <time.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "MainUir.h"
#include "app/BusyState.h"
#include "app/Main.h"
#include "firmware/PackageFiles.h"
#include "firmware/UpdateSequence.h"
#include "sim/FwPackage.h"
#include "sim/SimCamera.h"
#include "ui/UiModel.h"
#include "ui/headless/HeadlessFrontend.h"

namespace {

using Steady = std::chrono::steady_clock;

double cpuSeconds() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

double wallSeconds(Steady::time_point since) { return std::chrono::duration<double>(Steady::now() - since).count(); }

vcc::ui::headless::HeadlessFrontend gFrontend;

void act(const char *name, int event = EVENT_COMMIT) {
    vcc::ui::headless::Target target;
    std::string error;
    if (!vcc::ui::headless::resolve(name, target, error) || !vcc::ui::headless::deliver(target, event)) {
        std::fprintf(stderr, "FwUpdateBench: cannot reach %s %s\n", name, error.c_str());
        std::exit(1);
    }
}

void tick(const char *box, int on) {
    vcc::ui::headless::Target target;
    std::string error;
    vcc::ui::headless::resolve(box, target, error);
    vcc::ui::headless::userSet(target, on ? "1" : "0", error);
}

std::string updateMessage() {
    char text[256] = "";
    GetCtrlVal(gPanels.peT77K, PET77K_UPDATE_MSG, text);
    return text;
}

// One block access of the traffic record, ready to be sent again.
struct Access {
    bool read;
    uint16_t selector;
    std::vector<uint8_t> bytes;
};

std::vector<Access> blockAccesses(const std::vector<std::string> &traffic) {
    std::vector<Access> out;
    for (const std::string &line : traffic) {
        std::istringstream in(line);
        std::string kind, selector;
        int unit = 0;
        size_t length = 0;
        if (!(in >> kind >> unit >> selector >> length) || (kind != "WB" && kind != "RB")) continue;
        Access a{kind == "RB", uint16_t(std::stoul(selector, nullptr, 16)), {}};
        a.bytes.resize(length);
        if (!a.read)
            for (size_t i = 0; i < length; ++i) {
                std::string hex;
                in >> hex;
                a.bytes[i] = uint8_t(std::stoul(hex, nullptr, 16));
            }
        out.push_back(std::move(a));
    }
    return out;
}

// A block command is one [SF PAGE], [PF PAGE], ISP block and so on, whatever number of accesses
// it takes: these selectors only ever continue a command that began with another access.
bool continuesACommand(uint16_t selector) {
    switch (selector) {
    case 0x46: case 0x48: case 0x49:  // PF page: length, data, trigger after the address
    case 0x13: case 0x1D:             // SF page: data, trigger after the address
    case 0x20:                        // the address after an ISP block
        return true;
    default:
        return false;
    }
}

// What the simulated camera alone spends on the same accesses, served in its boot loader as
// during the update.
double simulatedCameraSeconds(const std::vector<Access> &accesses) {
    sim::Camera &camera = sim::camera();
    camera.reset(2);
    camera.writeRegister(5, 0xFF, 0x5AA5);
    while (camera.firmware() != sim::Firmware::BootLoader) vcc::clock::sleepMs(100);
    const double start = cpuSeconds();
    for (const Access &a : accesses) {
        std::vector<uint8_t> copy = a.bytes;
        if (a.read)
            camera.readBlock(9, a.selector, copy);
        else
            camera.writeBlock(9, a.selector, copy);
    }
    return cpuSeconds() - start;
}

void fastRun(const std::filesystem::path &base) {
    std::string error;
    sim::WritePackage((base / "QM-T77K_FW_Update").string(), sim::MakePackage(1 << 20, sim::kProgramFlashSize, 512 << 10),
                      error);
    vcc::clock::setScale(1000);
    sim::camera().reset(2);
    act("PET77K.CONNECT");
    tick("PET77K.FW_FILE_CHECK_BOX_USB", 1);
    tick("PET77K.FW_FILE_CHECK_BOX_ISP", 1);
    tick("PET77K.FW_FILE_CHECK_BOX_AUDIO", 1);
    sim::camera().clearTraffic();

    const double cpu0 = cpuSeconds();
    const auto wall0 = Steady::now();
    act("PET77K.FW_UPDATE");
    const double wall = wallSeconds(wall0), cpu = cpuSeconds() - cpu0;

    const std::vector<Access> accesses = blockAccesses(sim::camera().traffic());
    size_t commands = 0;
    for (const Access &a : accesses) commands += !continuesACommand(a.selector);
    const double camera = simulatedCameraSeconds(accesses);
    const double tool = cpu - camera;

    std::printf("Full update under the scaled clock (1/1000), no device latency\n");
    std::printf("  images: USB 131072 B through the boot loader, ISP 1048576 B, AUDIO 524288 B\n");
    std::printf("  verdict: %s\n", updateMessage().c_str());
    std::printf("  wall time of the run            %8.3f s\n", wall);
    std::printf("  CPU time of the run             %8.3f s (all threads)\n", cpu);
    std::printf("  simulated camera, same accesses %8.3f s\n", camera);
    std::printf("  block commands %zu, block accesses %zu\n", commands, accesses.size());
    std::printf("  tool CPU per block command      %8.2f us (goal: under 10 us)\n", tool / double(commands) * 1e6);
    std::printf("  tool CPU per block access       %8.2f us\n", tool / double(accesses.size()) * 1e6);
    std::printf("  run CPU per block command       %8.2f us (tool and simulated camera)\n",
                cpu / double(commands) * 1e6);
}

void realTimeRun(const std::filesystem::path &base) {
    std::string error;
    sim::WritePackage((base / "QM-T77K_FW_Update").string(), sim::MakePackage(1 << 20, 0, 0), error);
    vcc::clock::setScale(1);
    sim::camera().reset(2);
    act("PET77K.CONNECT");
    tick("PET77K.FW_FILE_CHECK_BOX_USB", 0);
    tick("PET77K.FW_FILE_CHECK_BOX_AUDIO", 0);
    tick("PET77K.FW_FILE_CHECK_BOX_ISP", 1);

    const auto wall0 = Steady::now();
    act("PET77K.FW_UPDATE");
    const double wall = wallSeconds(wall0);
    const double prescribed = double(FwUpdateWaitPasses()) * 0.1;
    std::printf("ISP-only update of 1 MB in real time\n");
    std::printf("  verdict: %s\n", updateMessage().c_str());
    std::printf("  prescribed waits  %ld passes of 100 ms = %.3f s\n", FwUpdateWaitPasses(), prescribed);
    std::printf("  measured wall time              %8.3f s\n", wall);
    std::printf("  difference                      %+8.3f s (%+.2f %%, goal: within 2 %%)\n", wall - prescribed,
                (wall - prescribed) / prescribed * 100);
}

}  // namespace

int main(int argc, char *argv[]) {
    const bool fastOnly = argc > 1 && std::strcmp(argv[1], "--fast-only") == 0;
    setenv("UVCLINK_DEVICE", "sim", 1);
    vcc::ui::Model::instance().setFrontend(&gFrontend);
    if (VccStartUp(0, nullptr) != 0) {
        std::fprintf(stderr, "FwUpdateBench: start-up failed\n");
        return 1;
    }
    DisplayPanel(gPanels.peT77K);
    const std::filesystem::path base = std::filesystem::temp_directory_path() / "vcc-FwUpdateBench";
    std::filesystem::remove_all(base);
    SetFwPackageBaseDir(base.c_str());

    fastRun(base);
    if (!fastOnly) realTimeRun(base);
    std::filesystem::remove_all(base);
    return 0;
}
