// Console throughput with the Qt front-end attached: a million ConsolePrintf calls (nine in ten
// whole register-echo lines, one in ten a byte fragment of a block echo) with a log open and
// the console view live, against the same workload appended to a plain QPlainTextEdit, then
// the cost of repainting the console view with a million lines in it.
//
// Runs offscreen unless QT_QPA_PLATFORM says otherwise. Prints its figures; asserts nothing.
#include <sys/resource.h>

#include <QApplication>
#include <QFileDialog>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTextCursor>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "MainUir.h"
#include "app/LogFunc.h"
#include "ui/UiModel.h"
#include "ui/UserInterface.h"
#include "ui/qt/ConsoleView.h"
#include "ui/qt/QtFrontend.h"

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

long peakRssKb() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// Call i of the workload: a whole echo line, or every tenth call a fragment of a block echo.
template <typename Print> void workloadCall(int i, Print &&print) {
    if (i % 10 == 9)
        print("0x%02X, ", i & 0xFF);
    else
        print("> - R [0x%04X] = 0x%02X\n", i & 0xFFFF, (i * 7) & 0xFF);
}

// The tool's path: ConsolePrintf, then a request to redraw as a printing loop would make.
double runConsole(int calls) {
    const auto start = Clock::now();
    for (int i = 0; i < calls; ++i) {
        workloadCall(i, [](const char *format, auto... args) { ConsolePrintf(format, args...); });
        ProcessDrawEvents();
    }
    return secondsSince(start);
}

// The file dialog the log switch opens, answered with a path as a user would.
void answerNextFileDialog(const QString &path) {
    QTimer::singleShot(0, [path] {
        if (auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget())) {
            dialog->selectFile(path);
            static_cast<QDialog *>(dialog)->accept();
        }
    });
}

// The naive console: format, append to a QPlainTextEdit and keep its end in view, with paint
// events let through once a frame as an event loop would.
struct PlainConsole {
    QPlainTextEdit edit;
    Clock::time_point lastPaint = Clock::now();

    void print(const char *format, ...) __attribute__((format(printf, 2, 3))) {
        char text[256];
        va_list args;
        va_start(args, format);
        std::vsnprintf(text, sizeof text, format, args);
        va_end(args);
        QTextCursor cursor(edit.document());
        cursor.movePosition(QTextCursor::End);
        cursor.insertText(QString::fromUtf8(text));
        edit.verticalScrollBar()->setValue(edit.verticalScrollBar()->maximum());
        if (Clock::now() - lastPaint >= std::chrono::milliseconds(16)) {
            QCoreApplication::sendPostedEvents(nullptr, QEvent::UpdateRequest);
            lastPaint = Clock::now();
        }
    }
};

}  // namespace

int main(int argc, char **argv) {
    if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QApplication app(argc, argv);
    vcc::ui::qt::QtFrontend frontend;
    vcc::ui::Model::instance().setFrontend(&frontend);
    InitCVIRTE(nullptr, argv, nullptr);

    const int main = LoadPanel(0, "Main.uir", PNL_MAIN);
    if (main < 0) {
        std::fprintf(stderr, "ConsoleQtBench: cannot load Main.uir beside the executable\n");
        return 1;
    }
    DisplayPanel(main);
    SetConsoleTarget(main, MAIN_CONSOLE);
    ProcessDrawEvents();

    // --- a million calls without a log: the console's own share ------------------------------
    constexpr int kCalls = 1'000'000;
    const double noLog = runConsole(kCalls);
    ResetTextBox(main, MAIN_CONSOLE, "");
    ProcessDrawEvents();

    // --- a million calls with a log open: the tool as it runs with logging on ------------------
    QTemporaryDir folder;
    answerNextFileDialog(folder.filePath("console.log"));
    if (!StartStopLog(1)) {
        std::fprintf(stderr, "ConsoleQtBench: the log did not open\n");
        return 1;
    }
    ResetTextBox(main, MAIN_CONSOLE, "");
    ProcessDrawEvents();
    const auto before = frontend.stats();
    const double withLog = runConsole(kCalls);
    const auto after = frontend.stats();
    StartStopLog(0);
    const long rssOurs = peakRssKb();

    // --- repainting a screen of the console with a million lines in it ----------------------------
    int lines = 0;
    GetNumTextBoxLines(main, MAIN_CONSOLE, &lines);
    SetCtrlVal(main, MAIN_CONSOLE, "\n");  // ends the last block echo's line
    for (int i = lines; i < 1'000'000; ++i) SetCtrlVal(main, MAIN_CONSOLE, "> - R [0x0000] = 0x00\n");
    GetNumTextBoxLines(main, MAIN_CONSOLE, &lines);
    frontend.syncAll();
    auto *view = qobject_cast<vcc::ui::qt::ConsoleView *>(frontend.controlWidget(main, MAIN_CONSOLE));
    std::vector<double> repaintMs;
    if (view) {
        for (int round = 0; round < 60; ++round) {
            // Alternate between the end and places all over the buffer.
            const int top = round % 2 ? view->verticalScrollBar()->maximum()
                                      : static_cast<int>((round * 15'485'863LL) % (lines + 1));
            view->verticalScrollBar()->setValue(top);
            const auto t = Clock::now();
            view->viewport()->repaint();
            repaintMs.push_back(secondsSince(t) * 1000.0);
        }
    }
    double repaintAvg = 0, repaintMax = 0;
    for (double ms : repaintMs) {
        repaintAvg += ms / static_cast<double>(repaintMs.size());
        repaintMax = std::max(repaintMax, ms);
    }

    // --- the plain widget: a tenth of the calls ---------------------------------------------------
    constexpr int kPlainCalls = 100'000;
    PlainConsole plain;
    plain.edit.setReadOnly(true);
    plain.edit.resize(752, 142);
    plain.edit.show();
    const auto plainStart = Clock::now();
    for (int i = 0; i < kPlainCalls; ++i)
        workloadCall(i, [&](const char *format, auto... args) { plain.print(format, args...); });
    const double plainSeconds = secondsSince(plainStart);
    const long rssAll = peakRssKb();

    const double us = 1e6;
    const double consolePerCall = noLog / kCalls * us;
    const double fullPerCall = withLog / kCalls * us;
    const double logPerCall = fullPerCall - consolePerCall;
    const double plainPerCall = plainSeconds / kPlainCalls * us;
    std::printf("console benchmark (view attached, offscreen; a redraw request after every call)\n");
    std::printf("  ConsolePrintf, log open   : %d calls in %.3f s = %.0f calls/s, %.3f us/call\n", kCalls, withLog,
                kCalls / withLog, fullPerCall);
    std::printf("  ConsolePrintf, no log     : %d calls in %.3f s = %.0f calls/s, %.3f us/call\n", kCalls, noLog,
                kCalls / noLog, consolePerCall);
    std::printf("    (the log line's share: %.3f us/call; view refreshes %llu, redraw requests folded %llu)\n",
                logPerCall, static_cast<unsigned long long>(after.syncs - before.syncs),
                static_cast<unsigned long long>(after.skipped - before.skipped));
    std::printf("  plain QPlainTextEdit      : %d calls in %.3f s = %.0f calls/s, %.3f us/call\n", kPlainCalls,
                plainSeconds, kPlainCalls / plainSeconds, plainPerCall);
    std::printf("  per call, console view vs plain widget: %.1f times faster without the log, "
                "%.1f times with the same log line on both\n",
                plainPerCall / consolePerCall, (plainPerCall + logPerCall) / fullPerCall);
    std::printf("  repaint of the console view with %d lines: average %.3f ms, worst %.3f ms (%zu repaints)\n",
                lines, repaintAvg, repaintMax, repaintMs.size());
    std::printf("  peak resident memory: %.1f MB after the console runs, %.1f MB after the plain widget\n",
                rssOurs / 1024.0, rssAll / 1024.0);
    return 0;
}
