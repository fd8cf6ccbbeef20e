// What the Qt front-end shows: the tab control and its sheets, the console view over its
// buffer, coalesced drawing, and the popups.
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QScrollBar>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <atomic>
#include <thread>

#include "QtTestSupport.h"
#include "ui/qt/ConsoleView.h"
#include "ui/qt/TabControl.h"

namespace vcc::ui::qt::testing {
namespace {

// ---- the tab control ------------------------------------------------------------------------------

using Tabs = QtTest;

TEST_F(Tabs, SheetsSitInTheTabControlAndTabsSwitchThem) {
    const int main = loadAndShow(PNL_MAIN);
    int pv = 0, others = 0, service = 0;
    const int row1[] = {PNL_PVINFO, PNL_OTHERS, 0};
    int *row1Handles[] = {&pv, &others};
    const int row2[] = {PNL_SERVICE, 0};
    int *row2Handles[] = {&service};
    ASSERT_EQ(EasyTab_ConvertFromCanvas(main, MAIN_TABS), MAIN_TABS);
    ASSERT_EQ(EasyTab_LoadPanels(main, MAIN_TABS, 1, "Main.uir", row1, row1Handles), 0);
    ASSERT_EQ(EasyTab_LoadPanels(main, MAIN_TABS, 2, "Main.uir", row2, row2Handles), 0);
    EasyTab_SetTabAttribute(main, MAIN_TABS, service, EASYTAB_TAB_ATTR_COLOR, MakeColor(128, 192, 96));
    EasyTab_SetTabAttribute(main, MAIN_TABS, others, EASYTAB_TAB_ATTR_LABEL_TEXT, "Misc.");

    auto *tabs = widget<TabControl>(main, MAIN_TABS);
    ASSERT_NE(tabs, nullptr) << "the canvas must have become a tab control";
    ASSERT_NE(tabs->tabButton(pv), nullptr);
    ASSERT_NE(tabs->tabButton(service), nullptr);
    EXPECT_EQ(tabs->tabButton(others)->text(), "Misc.");
    EXPECT_LT(tabs->tabButton(pv)->y(), tabs->tabButton(service)->y()) << "two rows";
    EXPECT_EQ(tabs->active(), pv);
    PanelView *pvView = frontend_->panelView(pv);
    ASSERT_NE(pvView, nullptr);
    EXPECT_FALSE(pvView->isWindow()) << "a sheet is shown inside the tab control, not as a window";
    EXPECT_TRUE(pvView->isVisible());
    EXPECT_FALSE(frontend_->panelView(others)->isVisible()) << "one sheet at a time";
    EXPECT_FALSE(frontend_->panelView(service)->isVisible());

    click(tabs->tabButton(service));
    ProcessSystemEvents();
    const int active = Model::instance().locked([&](Model &m) { return m.control(main, MAIN_TABS)->activeSheet; });
    EXPECT_EQ(active, service);
    frontend_->syncAll();
    EXPECT_TRUE(frontend_->panelView(service)->isVisible());
    EXPECT_FALSE(pvView->isVisible());

    // Controls on the shown sheet take input like any other.
    bind(others, OTHERS_AF_SPEED);
    click(tabs->tabButton(others));
    ProcessSystemEvents();
    SetCtrlAttribute(others, OTHERS_AF_SPEED, ATTR_DIMMED, 0);
    auto *ring = widget(others, OTHERS_AF_SPEED);
    click(ring, Qt::RightButton);
    ProcessSystemEvents();
    EXPECT_EQ(eventsOf(OTHERS_AF_SPEED), std::vector<int>{EVENT_RIGHT_CLICK});
}

// ---- the console view -------------------------------------------------------------------------------

using Console = QtTest;

TEST_F(Console, ViewFollowsItsBufferAndScrollsToTheEnd) {
    const int main = loadAndShow(PNL_MAIN);
    auto *view = widget<ConsoleView>(main, MAIN_CONSOLE);
    ASSERT_NE(view, nullptr);
    for (int i = 0; i < 100'000; ++i) SetCtrlVal(main, MAIN_CONSOLE, "> - R [0x1234] = 0x56\n");
    SetCtrlVal(main, MAIN_CONSOLE, "> - R [0x0000] = ");
    SetCtrlVal(main, MAIN_CONSOLE, "0x01, ");  // a block echo builds one line from fragments
    frontend_->syncAll();
    EXPECT_EQ(view->lineCount(), 100'001u);
    EXPECT_EQ(view->verticalScrollBar()->value(), view->verticalScrollBar()->maximum());
    EXPECT_GT(view->firstVisibleLine(), 99'000);

    // Scrolled back by the user, the view stays there until the next append.
    view->verticalScrollBar()->setValue(10);
    frontend_->syncAll();
    EXPECT_EQ(view->firstVisibleLine(), 10);
    SetCtrlVal(main, MAIN_CONSOLE, "0x02\n");
    frontend_->syncAll();
    EXPECT_EQ(view->verticalScrollBar()->value(), view->verticalScrollBar()->maximum());

    ResetTextBox(main, MAIN_CONSOLE, "");
    frontend_->syncAll();
    EXPECT_EQ(view->lineCount(), 0u);
    EXPECT_EQ(view->verticalScrollBar()->maximum(), 0);
}

TEST_F(Console, WorkersPrintWhileTheUserInterfaceDraws) {
    const int main = loadAndShow(PNL_MAIN);
    constexpr int kThreads = 4, kLines = 5000;
    std::atomic<int> running{kThreads};
    std::vector<std::thread> workers;
    for (int t = 0; t < kThreads; ++t)
        workers.emplace_back([&, t] {
            char line[64];
            for (int i = 0; i < kLines; ++i) {
                std::snprintf(line, sizeof line, "> - worker %d line %d\n", t, i);
                SetCtrlVal(main, MAIN_CONSOLE, line);
                SetCtrlVal(main, MAIN_BUSY, i & 1);
            }
            --running;
        });
    while (running > 0) {
        ProcessSystemEvents();
        ProcessDrawEvents();
    }
    for (auto &w : workers) w.join();
    frontend_->syncAll();
    auto *view = widget<ConsoleView>(main, MAIN_CONSOLE);
    EXPECT_EQ(view->lineCount(), static_cast<size_t>(kThreads * kLines));
    EXPECT_FALSE(view->grab().isNull());
}

// ---- drawing --------------------------------------------------------------------------------------

using Drawing = QtTest;

TEST_F(Drawing, NothingIsRefreshedWhileTheModelStandsStill) {
    loadAndShow(PNL_MAIN);
    ProcessDrawEvents();
    const auto before = frontend_->stats().syncs;
    for (int i = 0; i < 100; ++i) ProcessDrawEvents();
    EXPECT_EQ(frontend_->stats().syncs, before);
}

TEST_F(Drawing, ABurstOfRedrawsIsFoldedAndItsLastValueShown) {
    const int pv = loadAndShow(PNL_PVINFO);
    auto *spin = widget<QSpinBox>(pv, PVINFO_USB_SPEED);
    ASSERT_NE(spin, nullptr);
    const auto before = frontend_->stats();
    constexpr int kSteps = 20'000;
    for (int i = 0; i < kSteps; ++i) {
        SetCtrlVal(pv, PVINFO_USB_SPEED, i % 256);
        ProcessDrawEvents();
    }
    const auto after = frontend_->stats();
    EXPECT_GT(after.skipped - before.skipped, 0u);
    EXPECT_LT(after.syncs - before.syncs, static_cast<uint64_t>(kSteps) / 2);

    // The change left over is drawn once the event loop comes round again.
    frontend_->pump(true, 1000);
    ProcessDrawEvents();
    EXPECT_EQ(spin->value(), (kSteps - 1) % 256);
}

TEST_F(Drawing, PanelSizeAndVisibilityFollowTheModel) {
    const int main = loadAndShow(PNL_MAIN);
    PanelView *window = frontend_->panelView(main);
    EXPECT_EQ(window->size(), QSize(760, 460));
    SetPanelAttribute(main, ATTR_HEIGHT, 310);
    SetPanelAttribute(main, ATTR_TITLE, "Video Camera Control AP - v1.51");
    SetCtrlAttribute(main, MAIN_ADVANCE, ATTR_VISIBLE, 0);
    SetCtrlAttribute(main, MAIN_MODEL, ATTR_LABEL_TEXT, "Camera");
    frontend_->syncAll();
    EXPECT_EQ(window->size(), QSize(760, 310));
    EXPECT_EQ(window->windowTitle(), "Video Camera Control AP - v1.51");
    EXPECT_FALSE(widget(main, MAIN_ADVANCE)->isVisible());
    bool captionFound = false;
    for (QLabel *label : window->findChildren<QLabel *>()) captionFound |= label->text() == "Camera";
    EXPECT_TRUE(captionFound);

    DiscardPanel(main);
    frontend_->syncAll();
    EXPECT_EQ(frontend_->panelView(main), nullptr);
}

// ---- popups ---------------------------------------------------------------------------------------

using Popups = QtTest;

struct DialogSeen {
    QString title, selected;
    QStringList filters;
};

// Answers the next file dialog: with a name to type, or cancels it when the name is empty.
void answerFileDialog(DialogSeen &seen, const QString &name) {
    QTimer::singleShot(0, [&seen, name] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        if (!dialog) return;
        seen.title = dialog->windowTitle();
        seen.filters = dialog->nameFilters();
        seen.selected = dialog->selectedFiles().value(0);
        if (name.isEmpty()) {
            static_cast<QDialog *>(dialog)->reject();
            return;
        }
        dialog->selectFile(name);
        static_cast<QDialog *>(dialog)->accept();
    });
}

TEST_F(Popups, FileSelectionTellsExistingFromNewAndCancel) {
    QTemporaryDir dir;
    QFile existing(dir.filePath("old.txt"));
    ASSERT_TRUE(existing.open(QIODevice::WriteOnly));
    existing.close();
    const std::string folder = dir.path().toStdString();
    char path[1024] = "";

    DialogSeen seen;
    answerFileDialog(seen, dir.filePath("old.txt"));
    EXPECT_EQ(FileSelectPopup(folder.c_str(), "Log_2018-01-02.txt", "*.txt", "File Name to Save", VAL_SAVE_BUTTON,
                              0, 1, 1, 0, path),
              VAL_EXISTING_FILE_SELECTED);
    EXPECT_EQ(QString(path), dir.filePath("old.txt"));
    EXPECT_EQ(seen.title, "File Name to Save");
    EXPECT_EQ(seen.filters, QStringList{"*.txt (*.txt)"});
    EXPECT_EQ(seen.selected, dir.filePath("Log_2018-01-02.txt")) << "the proposed name in the starting folder";

    answerFileDialog(seen, dir.filePath("new_log"));
    EXPECT_EQ(FileSelectPopup(folder.c_str(), "x.txt", "*.txt", "File Name to Save", VAL_SAVE_BUTTON, 0, 1, 1, 0,
                              path),
              VAL_NEW_FILE_SELECTED);
    EXPECT_EQ(QString(path), dir.filePath("new_log.txt")) << "restricted to the filter's extension";

    answerFileDialog(seen, "");
    EXPECT_EQ(FileSelectPopup(folder.c_str(), "x.txt", "*.bin;*.img", "Open image", VAL_OK_BUTTON, 0, 0, 1, 0, path),
              VAL_NO_FILE_SELECTED);
    EXPECT_EQ(seen.filters, (QStringList{"*.bin *.img (*.bin *.img)", "All files (*)"}));
    EXPECT_STREQ(path, "");
}

TEST_F(Popups, MessageFromAWorkerIsShownByTheUserInterfaceThread) {
    loadAndShow(PNL_PASSWORD);
    QString title, text;
    std::atomic<bool> done{false};
    std::thread worker([&] {
        MessagePopup("FW update", "校正 : 4000K 環境色溫 - WB onepush");
        done = true;
    });
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, [&] {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
            title = box->windowTitle();
            text = box->text();
            box->accept();
        }
    });
    answer.start(5);
    while (!done) ProcessSystemEvents();
    worker.join();
    EXPECT_EQ(title, "FW update");
    EXPECT_EQ(text, QString::fromUtf8("校正 : 4000K 環境色溫 - WB onepush"));
}

}  // namespace
}  // namespace vcc::ui::qt::testing
