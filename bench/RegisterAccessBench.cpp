// What one register access costs, tool and simulated camera together: the headless tool with
// its console attached and a log open, the camera at zero latency. Prints microseconds per
// access; asserts nothing.
//
//   RegisterAccessBench [ITERATIONS]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>

#include "MainUir.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "app/Main.h"
#include "commands/FunctionList.h"
#include "device/RegisterAccess.h"
#include "sim/SimCamera.h"
#include "ui/UiModel.h"
#include "ui/headless/HeadlessFrontend.h"

namespace {

using Clock = std::chrono::steady_clock;

// Runs body count times in batches, emptying the traffic record and the console between
// batches (outside the timing) so memory stays flat; returns microseconds per call.
double measure(long count, const std::function<bool()> &body) {
    constexpr long kBatch = 5000;
    double seconds = 0;
    long failures = 0;
    for (long done = 0; done < count;) {
        const long n = std::min(kBatch, count - done);
        const auto start = Clock::now();
        for (long i = 0; i < n; ++i) failures += body() ? 0 : 1;
        seconds += std::chrono::duration<double>(Clock::now() - start).count();
        done += n;
        sim::camera().clearTraffic();
        ResetTextBox(gPanels.main, MAIN_CONSOLE, "");
    }
    if (failures) std::fprintf(stderr, "  (%ld failed accesses)\n", failures);
    return seconds * 1e6 / static_cast<double>(count);
}

void report(const char *what, double us, double goal) {
    if (goal > 0)
        std::printf("%-58s %8.2f us   (goal <= %.0f us)\n", what, us, goal);
    else
        std::printf("%-58s %8.2f us\n", what, us);
}

}  // namespace

int main(int argc, char *argv[]) {
    const long iterations = argc > 1 ? std::max(1L, std::atol(argv[1])) : 100000;
    setenv("UVCLINK_DEVICE", "sim", 1);

    vcc::ui::headless::HeadlessFrontend frontend;
    vcc::ui::Model::instance().setFrontend(&frontend);
    if (VccStartUp(argc, argv) != 0) {
        std::fprintf(stderr, "RegisterAccessBench: start-up failed\n");
        return 1;
    }
    const auto log = std::filesystem::temp_directory_path() / "vcc-register-access-bench.log";
    frontend.queueAnswer({vcc::ui::headless::PopupAnswer::Kind::File, log.string()});
    if (StartStopLog(1) != 1) {
        std::fprintf(stderr, "RegisterAccessBench: cannot open the log %s\n", log.c_str());
        return 1;
    }
    sim::camera().setLatencyMs(0);

    unsigned char page[256];
    for (int i = 0; i < 256; ++i) page[i] = static_cast<unsigned char>(i);
    unsigned short value = 0;

    std::printf("Register access to the simulated camera, console attached, log open, %ld iterations\n", iterations);
    report("ReadRegister (single register, echo line)",
           measure(iterations, [&] { return ReadRegister(5, 0xD1, &value) == 1; }), 5);
    report("WriteRegister (single register, echo line)",
           measure(iterations, [&] { return WriteRegister(5, 0xD1, 7) == 1; }), 0);

    SetCtrlVal(gPanels.main, MAIN_MSG_EN, 0);  // as while a firmware writer runs
    report("WriteRegisterBlock 256 bytes, console display off",
           measure(iterations, [&] { return WriteRegisterBlock(9, 0x13, page, 256) == 1; }), 10);
    report("[SF PAGE] set (3 block accesses), console display off",
           measure(iterations / 4, [&] { return SfPageSet(0x1000, page) == 1; }), 0);

    SetCtrlVal(gPanels.main, MAIN_MSG_EN, 1);  // every byte echoed: 258 console texts a page
    report("WriteRegisterBlock 256 bytes, console display on",
           measure(std::max(1L, iterations / 100), [&] { return WriteRegisterBlock(9, 0x13, page, 256) == 1; }), 0);

    StartStopLog(0);
    std::filesystem::remove(log);
    vcc::ui::Model::instance().setFrontend(nullptr);
    return 0;
}
