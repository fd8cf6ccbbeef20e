// What a refresh-all costs the tool: the headless tool connected to the simulated camera at
// zero latency, the clock scaled so far that the one 300 ms pause of the power read is gone,
// so what remains is the tool's own work (busy brackets, dimming, console echo, register
// access) and the camera model's. Prints microseconds per read-back; asserts nothing.
//
//   RefreshAllBench [REFRESHES]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "MainUir.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "app/Main.h"
#include "device/Connection.h"
#include "panels/PanelRefresh.h"
#include "sim/SimCamera.h"
#include "ui/UiModel.h"
#include "ui/headless/HeadlessFrontend.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr int kReadBacksPerRefresh = 65;

// Returns microseconds per read-back over count refreshes; the console and the traffic record
// are emptied between refreshes, outside the timing, so memory stays flat.
double measure(long count) {
    double seconds = 0;
    for (long i = 0; i < count; ++i) {
        const auto start = Clock::now();
        RefreshAll_Callback(gPanels.main, MAIN_REFRESH_ALL, EVENT_COMMIT, nullptr, 0, 0);
        seconds += std::chrono::duration<double>(Clock::now() - start).count();
        sim::camera().clearTraffic();
        ResetTextBox(gPanels.main, MAIN_CONSOLE, "");
    }
    return seconds * 1e6 / static_cast<double>(count * kReadBacksPerRefresh);
}

void report(const char *what, double us) {
    std::printf("%-52s %7.2f us per read-back, %7.3f ms per refresh-all   (goal < 20 us)\n", what, us,
                us * kReadBacksPerRefresh / 1000.0);
}

}  // namespace

int main(int argc, char *argv[]) {
    const long refreshes = argc > 1 ? std::max(1L, std::atol(argv[1])) : 2000;
    setenv("UVCLINK_DEVICE", "sim", 1);
    vcc::clock::setScale(1e7);

    vcc::ui::headless::HeadlessFrontend frontend;
    vcc::ui::Model::instance().setFrontend(&frontend);
    if (VccStartUp(argc, argv) != 0) {
        std::fprintf(stderr, "RefreshAllBench: start-up failed\n");
        return 1;
    }
    sim::camera().setLatencyMs(0);
    VideoCameraConnect_Callback(gPanels.main, MAIN_VIDEO_CAMERA_CONNECT, EVENT_RIGHT_CLICK, nullptr, 0, 0);
    if (!IsDeviceConnected()) {
        std::fprintf(stderr, "RefreshAllBench: the simulated camera did not connect\n");
        return 1;
    }
    int error = 0;
    GetCtrlVal(gPanels.main, MAIN_ERROR, &error);
    if (error) std::fprintf(stderr, "RefreshAllBench: the connect's refresh failed somewhere\n");

    std::printf("Refresh-all on the simulated camera (QM-T77K profile), zero latency, %ld refreshes\n", refreshes);
    report("console attached, log closed", measure(refreshes));

    const auto log = std::filesystem::temp_directory_path() / "vcc-refresh-all-bench.log";
    frontend.queueAnswer({vcc::ui::headless::PopupAnswer::Kind::File, log.string()});
    if (StartStopLog(1) == 1) {
        report("console attached, log open", measure(refreshes));
        StartStopLog(0);
        std::filesystem::remove(log);
    } else {
        std::fprintf(stderr, "RefreshAllBench: cannot open the log %s\n", log.c_str());
    }

    vcc::ui::Model::instance().setFrontend(nullptr);
    return 0;
}
