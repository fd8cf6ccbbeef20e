// vcc-script: the tool itself with the headless front-end, driven by a script. The same entry
// routine and callbacks run as in the desktop program; only the hands and eyes differ.
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iostream>
#include <string>

#include "MainUir.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "app/Main.h"
#include "sim/SimCamera.h"
#include "ui/UiModel.h"
#include "ui/headless/HeadlessFrontend.h"
#include "ui/headless/ScriptRunner.h"

namespace {

int usage() {
    std::cerr << "usage: vcc-script [--fast] [--console FILE] [--date YYYY-MM-DDTHH:MM:SS] SCRIPT\n";
    return 2;
}

std::ofstream gConsoleFile;
void echoConsole(const char *text) {
    gConsoleFile << text;
    gConsoleFile.flush();
}

}  // namespace

int main(int argc, char *argv[]) {
    std::string script, consolePath, date;
    bool fast = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--fast") {
            fast = true;
        } else if (arg == "--console" && i + 1 < argc) {
            consolePath = argv[++i];
        } else if (arg == "--date" && i + 1 < argc) {
            date = argv[++i];
        } else if (!arg.empty() && arg[0] != '-' && script.empty()) {
            script = arg;
        } else {
            return usage();
        }
    }
    if (script.empty()) return usage();

    if (fast) vcc::clock::setScale(1000);
    if (!date.empty()) {
        std::tm when{};
        if (!strptime(date.c_str(), "%Y-%m-%dT%H:%M:%S", &when)) {
            std::cerr << "vcc-script: --date wants YYYY-MM-DDTHH:MM:SS, not " << date << "\n";
            return 2;
        }
        vcc::clock::pinLocalTime(when);
    }
    if (!consolePath.empty()) {
        gConsoleFile.open(consolePath, std::ios::trunc | std::ios::binary);
        if (!gConsoleFile) {
            std::cerr << "vcc-script: cannot write " << consolePath << "\n";
            return 2;
        }
        SetConsoleListener(echoConsole);
    }

    vcc::ui::headless::HeadlessFrontend frontend;
    vcc::ui::headless::ScriptRunner runner(frontend, std::cout);
    std::string error;
    if (!runner.load(script, error)) {
        std::cerr << "vcc-script: " << error << "\n";
        return 2;
    }
    frontend.setPopupLog(&std::cout);
    frontend.onUnanswered = [&](const std::string &what) { runner.fail("no answer queued for " + what); };
    frontend.idle = [&] { runner.step(); };
    runner.setSimHandler([](const std::vector<std::string> &words, std::string &message) {
        std::string line;
        for (const auto &w : words) line += (line.empty() ? "" : " ") + w;
        return sim::RunCommand(line, message);
    });
    // After the last line the tool quits as closing its window does.
    runner.setQuitHandler([] {
        MainQuit_Callback(gAccessFlag ? gPanels.main : gPanels.peT77K, 0, EVENT_CLOSE, nullptr, 0, 0);
    });
    vcc::ui::Model::instance().setFrontend(&frontend);

    const int status = VccMain(argc, argv);
    std::cout.flush();
    if (status != 0) {
        std::cerr << "vcc-script: start-up failed\n";
        return 2;
    }
    if (runner.failedExpectations() > 0) {
        std::cout << runner.failedExpectations() << " expectation(s) failed" << std::endl;
        return 1;
    }
    return 0;
}
