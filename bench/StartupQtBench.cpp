// Start-up time and peak memory of both programs:
//   - vcc-script on an empty script, from exec to exit;
//   - the desktop tool (offscreen), from exec to its first panel on screen.
// The second is measured by running this program again as a child that does what vcc's main
// does and reports the moment the single-model panel is visible.
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <QApplication>
#include <QWidget>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "app/BusyState.h"
#include "app/Main.h"
#include "ui/UiModel.h"
#include "ui/qt/PanelView.h"
#include "ui/qt/QtFrontend.h"

namespace {

double monotonicMs() {
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return ts.tv_sec * 1000.0 + ts.tv_nsec / 1e6;
}

std::string binDir(const char *argv0) {
    std::string self = argv0;
    const auto slash = self.rfind('/');
    return slash == std::string::npos ? "." : self.substr(0, slash);
}

struct Run {
    double ms;
    long maxRssKb;
};

// Runs argv as a child; returns its wall time (or the time it reports on its stdout) and peak RSS.
Run runChild(const std::vector<std::string> &args, bool childReportsTime) {
    int pipeFd[2];
    if (pipe(pipeFd) != 0) std::exit(1);
    const double start = monotonicMs();
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(pipeFd[1], 1);
        close(pipeFd[0]);
        std::vector<char *> argv;
        for (const auto &a : args) argv.push_back(const_cast<char *>(a.c_str()));
        argv.push_back(nullptr);
        execv(argv[0], argv.data());
        _exit(127);
    }
    close(pipeFd[1]);
    std::string out;
    char buf[256];
    for (ssize_t n; (n = read(pipeFd[0], buf, sizeof buf)) > 0;) out.append(buf, static_cast<size_t>(n));
    close(pipeFd[0]);
    int status = 0;
    rusage usage{};
    wait4(pid, &status, 0, &usage);
    const double end = monotonicMs();
    double ms = end - start;
    if (childReportsTime) {
        const auto at = out.find("shown-at ");
        if (at == std::string::npos) {
            std::fprintf(stderr, "child did not report: %s\n", out.c_str());
            std::exit(1);
        }
        ms = std::atof(out.c_str() + at + 9) - start;
    }
    return {ms, usage.ru_maxrss};
}

void report(const char *what, std::vector<Run> runs, double goalMs) {
    std::sort(runs.begin(), runs.end(), [](const Run &a, const Run &b) { return a.ms < b.ms; });
    long rss = 0;
    for (const Run &r : runs) rss = std::max(rss, r.maxRssKb);
    std::printf("%-44s median %7.1f ms  min %7.1f ms  max %7.1f ms  peak RSS %6.1f MB  (goal < %.0f ms, %zu runs)\n",
                what, runs[runs.size() / 2].ms, runs.front().ms, runs.back().ms, rss / 1024.0, goalMs, runs.size());
}

// The child: vcc's own start, stopping at the first panel shown.
int child(int argc, char *argv[]) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QApplication app(argc, argv);
    vcc::ui::qt::QtFrontend frontend;
    vcc::ui::Model::instance().setFrontend(&frontend);
    if (VccStartUp(argc, argv) != 0) return 2;
    DisplayPanel(gPanels.peT77K);
    ProcessDrawEvents();
    QWidget *window = frontend.panelView(gPanels.peT77K);
    while (!window || !window->isVisible()) {
        QCoreApplication::processEvents();
        window = frontend.panelView(gPanels.peT77K);
    }
    std::printf("shown-at %.3f\n", monotonicMs());
    std::fflush(stdout);
    _exit(0);
}

}  // namespace

int main(int argc, char *argv[]) {
    if (argc > 1 && std::strcmp(argv[1], "--child") == 0) return child(argc, argv);

    const std::string bin = binDir(argv[0]);
    const std::string script = "/tmp/vcc-startup-bench.vcs";
    std::ofstream(script) << "# empty\n";
    setenv("UVCLINK_DEVICE", "sim", 1);
    constexpr int kRuns = 15;

    std::vector<Run> scriptRuns, guiRuns;
    for (int i = 0; i < kRuns; ++i) scriptRuns.push_back(runChild({bin + "/vcc-script", script}, false));
    for (int i = 0; i < kRuns; ++i) guiRuns.push_back(runChild({std::string(argv[0]), "--child"}, true));
    std::printf("start-up benchmark (simulated camera, this machine: %ld cores)\n", sysconf(_SC_NPROCESSORS_ONLN));
    report("vcc-script, empty script, exec to exit", scriptRuns, 150);
    report("vcc (offscreen), exec to first panel shown", guiRuns, 400);
    return 0;
}
