// The user-interface layer as the tool uses it: events reach callbacks only the way a user
// could make them, programmatic changes stay silent, popups answer from any thread, and a
// broken resource file is refused with a reason.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>

#include "ui/CallbackRegistry.h"
#include "ui/UiModel.h"
#include "ui/UirFile.h"
#include "ui/UserInterface.h"
#include "ui/headless/HeadlessFrontend.h"

using namespace vcc::ui;
using vcc::ui::headless::HeadlessFrontend;
using vcc::ui::headless::PopupAnswer;
using vcc::ui::headless::Target;

namespace {

struct Seen {
    int panel, control, event, data1;
};
std::vector<Seen> gSeen;

int TestCtrl_Callback(int panel, int control, int event, void *, int data1, int) {
    gSeen.push_back({panel, control, event, data1});
    return 0;
}
VCC_REGISTER_CALLBACK(TestCtrl_Callback);

int TestKey_Callback(int panel, int control, int event, void *, int data1, int) {
    gSeen.push_back({panel, control, event, data1});
    return 0;
}
VCC_REGISTER_CALLBACK(TestKey_Callback);

int TestPanel_Callback(int panel, int, int event, void *, int, int) {
    gSeen.push_back({panel, 0, event, 0});
    return 0;
}
VCC_REGISTER_CALLBACK(TestPanel_Callback);

std::atomic<int> gTicks{0};
int TestTimer_Callback(int, int, int event, void *, int, int) {
    if (event == EVENT_TIMER_TICK) ++gTicks;
    return 0;
}
VCC_REGISTER_CALLBACK(TestTimer_Callback);

// Runs a nested event round, as the busy bracket does while a command ends.
int TestNest_Callback(int panel, int control, int event, void *, int, int) {
    gSeen.push_back({panel, control, event, 100});
    if (event == EVENT_COMMIT) ProcessSystemEvents();
    gSeen.push_back({panel, control, event, 200});
    return 0;
}
VCC_REGISTER_CALLBACK(TestNest_Callback);

std::string resourcePath() { return std::string(VCC_TEST_SOURCE_DIR) + "/ui/Test.uir"; }

class UiLayer : public ::testing::Test {
protected:
    void SetUp() override {
        Model::instance().reset();
        Model::instance().setFrontend(&frontend);
        gSeen.clear();
        one = LoadPanel(0, resourcePath().c_str(), 1);
        two = LoadPanel(0, resourcePath().c_str(), 2);
        ASSERT_GT(one, 0);
        ASSERT_GT(two, 0);
        DisplayPanel(one);
        DisplayPanel(two);
    }
    void TearDown() override { Model::instance().setFrontend(nullptr); }

    void user(int control, int event, int data1 = 0) {
        vcc::ui::headless::deliver(Target{one, control, ""}, event, data1);
    }

    HeadlessFrontend frontend;
    int one = 0, two = 0;
    // Control ids of Test.uir, in file order.
    enum { NUMBER = 1, RING, TEXT, BOX, LED, BUTTON, TICK, HEX, CANVAS };
};

TEST_F(UiLayer, EventsReachCallbacksOnlyWhereAUserCouldClick) {
    user(BUTTON, EVENT_COMMIT);
    ASSERT_EQ(gSeen.size(), 1u);
    EXPECT_EQ(gSeen[0].control, BUTTON);

    SetCtrlAttribute(one, BUTTON, ATTR_DIMMED, 1);
    user(BUTTON, EVENT_COMMIT);
    SetCtrlAttribute(one, BUTTON, ATTR_DIMMED, 0);
    SetCtrlAttribute(one, BUTTON, ATTR_VISIBLE, 0);
    user(BUTTON, EVENT_COMMIT);
    EXPECT_EQ(gSeen.size(), 1u) << "dimmed and hidden controls must not receive events";

    // A click queued while the control was enabled meets the dimming a command left behind.
    SetCtrlAttribute(one, BUTTON, ATTR_VISIBLE, 1);
    Model::instance().post({one, BUTTON, EVENT_COMMIT, 0, 0});
    SetCtrlAttribute(one, BUTTON, ATTR_DIMMED, 1);
    ProcessSystemEvents();
    EXPECT_EQ(gSeen.size(), 1u);

    // The tool's own calls reach the callback whatever the state.
    Model::instance().call(one, BUTTON, EVENT_RIGHT_CLICK);
    EXPECT_EQ(gSeen.size(), 2u);

    HidePanel(one);
    Model::instance().post({one, 0, EVENT_CLOSE, 0, 0});
    ProcessSystemEvents();
    EXPECT_EQ(gSeen.size(), 2u) << "a hidden panel cannot be closed by a user";
}

TEST_F(UiLayer, ProgrammaticChangesRaiseNoEvent) {
    SetCtrlVal(one, NUMBER, 42);
    SetCtrlVal(one, RING, 20);
    SetCtrlVal(one, TEXT, "typed by the program");
    ProcessSystemEvents();
    EXPECT_TRUE(gSeen.empty());
}

TEST_F(UiLayer, ValuesFollowTheControlKind) {
    // A ring selects by value; an unknown value leaves the selection.
    SetCtrlVal(one, RING, 30);
    int value = 0, index = -1;
    GetCtrlVal(one, RING, &value);
    GetCtrlIndex(one, RING, &index);
    EXPECT_EQ(value, 30);
    EXPECT_EQ(index, 2);
    EXPECT_LT(SetCtrlVal(one, RING, 99), 0);
    GetCtrlVal(one, RING, &value);
    EXPECT_EQ(value, 30);

    // Refilling a ring keeps it free of duplicates.
    ClearListCtrl(one, RING);
    InsertListItem(one, RING, -1, "X", 1);
    InsertListItem(one, RING, -1, "Y", 2);
    int count = 0;
    GetNumListItems(one, RING, &count);
    EXPECT_EQ(count, 2);
    char label[16];
    GetLabelFromIndex(one, RING, 1, label);
    EXPECT_STREQ(label, "Y");

    // A text box appends; its lines read back one by one.
    SetCtrlVal(one, BOX, "first\nsec");
    SetCtrlVal(one, BOX, "ond\n");
    int lines = 0;
    GetNumTextBoxLines(one, BOX, &lines);
    EXPECT_EQ(lines, 2);
    char line[8];
    GetTextBoxLine(one, BOX, 1, line);
    EXPECT_STREQ(line, "second");
    GetTextBoxLine(one, BOX, 0, line);
    EXPECT_STREQ(line, "first");
    ResetTextBox(one, BOX, "");
    GetNumTextBoxLines(one, BOX, &lines);
    EXPECT_EQ(lines, 0);

    // Text read into a small buffer is cut, never overflowed.
    SetCtrlVal(one, TEXT, "a rather long text");
    char small[6];
    GetCtrlVal(one, TEXT, small);
    EXPECT_STREQ(small, "a rat");

    int format = -1;
    GetCtrlAttribute(one, HEX, ATTR_FORMAT, &format);
    EXPECT_EQ(format, VAL_HEX_FORMAT);
    SetCtrlAttribute(one, HEX, ATTR_FORMAT, VAL_DECIMAL_FORMAT);
    GetCtrlAttribute(one, HEX, ATTR_FORMAT, &format);
    EXPECT_EQ(format, VAL_DECIMAL_FORMAT);
}

TEST_F(UiLayer, UserEditsAreCoercedToTheRangeAndCommitted) {
    std::string error;
    ASSERT_TRUE(vcc::ui::headless::userSet(Target{one, NUMBER, ""}, "250", error));
    int value = 0;
    GetCtrlVal(one, NUMBER, &value);
    EXPECT_EQ(value, 100);
    ASSERT_EQ(gSeen.size(), 1u);
    EXPECT_EQ(gSeen[0].event, EVENT_COMMIT);
}

TEST_F(UiLayer, ScriptValuesThatAreNoFiniteNumberAreRefused) {
    SetCtrlVal(one, NUMBER, 7);
    for (const char *value : {"nan", "inf", "-inf", "1e400"}) {
        for (int control : {NUMBER, RING, LED}) {
            std::string error;
            EXPECT_FALSE(vcc::ui::headless::programSet(Target{one, control, ""}, value, error)) << value;
            EXPECT_EQ(error, std::string("not a number: ") + value);
        }
        std::string error;
        EXPECT_FALSE(vcc::ui::headless::userSet(Target{one, NUMBER, ""}, value, error)) << value;
        EXPECT_FALSE(vcc::ui::headless::programSet(Target{one, NUMBER, "max"}, value, error)) << value;
    }
    int value = 0;
    GetCtrlVal(one, NUMBER, &value);
    EXPECT_EQ(value, 7);
    EXPECT_TRUE(gSeen.empty()) << "no commit for a refused value";
}

TEST_F(UiLayer, CallbacksNestInsideEventProcessing) {
    const int nest = 1;  // TWO.BUTTON
    Model::instance().post({two, nest, EVENT_COMMIT, 0, 0});
    Model::instance().post({one, BUTTON, EVENT_COMMIT, 0, 0});
    ProcessSystemEvents();
    // The outer callback's event round runs the queued click before the outer one returns.
    ASSERT_EQ(gSeen.size(), 3u);
    EXPECT_EQ(gSeen[0].data1, 100);
    EXPECT_EQ(gSeen[1].control, BUTTON);
    EXPECT_EQ(gSeen[2].data1, 200);
}

TEST_F(UiLayer, TimerTicksFireDuringEventProcessing) {
    vcc::clock::setScale(100);
    gTicks = 0;
    const double start = vcc::clock::nowMs();
    // However late a busy machine lets this loop run, ticks keep coming and never in a burst:
    // no more than one per 100 ms interval of tool time has passed.
    while (gTicks < 5 && vcc::clock::nowMs() - start < 100000) {
        ProcessSystemEvents();
        EXPECT_LE(gTicks.load(), (vcc::clock::nowMs() - start) / 100 + 1);
        vcc::clock::sleepMs(5);
    }
    vcc::clock::setScale(1);
    EXPECT_EQ(gTicks.load(), 5);
}

TEST_F(UiLayer, FilePopupsReportCancelExistingAndNew) {
    const auto dir = std::filesystem::temp_directory_path() / "vcc-ui-popups";
    std::filesystem::create_directories(dir);
    std::ofstream(dir / "there.txt") << "x";
    char path[1024];

    frontend.queueAnswer({PopupAnswer::Kind::Cancel, ""});
    EXPECT_EQ(FileSelectPopup(dir.c_str(), "x.txt", "*.txt", "T", 0, 0, 1, 1, 0, path), VAL_NO_FILE_SELECTED);
    frontend.queueAnswer({PopupAnswer::Kind::File, (dir / "there.txt").string()});
    EXPECT_EQ(FileSelectPopup(dir.c_str(), "x.txt", "*.txt", "T", 0, 0, 1, 1, 0, path), VAL_EXISTING_FILE_SELECTED);
    frontend.queueAnswer({PopupAnswer::Kind::Proposed, ""});
    EXPECT_EQ(FileSelectPopup(dir.c_str(), "new.txt", "*.txt", "Title", 0, 0, 1, 1, 0, path), VAL_NEW_FILE_SELECTED);
    EXPECT_EQ(std::string(path), (dir / "new.txt").string());
    EXPECT_EQ(frontend.popups.back(), "popup file \"Title\" \"new.txt\" \"" + dir.string() + "\"");

    // A path longer than the tool's 1024-byte buffers is refused rather than cut into another file.
    frontend.queueAnswer({PopupAnswer::Kind::File, "/" + std::string(1100, 'a')});
    EXPECT_EQ(FileSelectPopup(dir.c_str(), "x.txt", "*.txt", "T", 0, 0, 1, 1, 0, path), VAL_NO_FILE_SELECTED);
}

TEST_F(UiLayer, APopupAskedByAWorkerIsShownByTheUserInterfaceThread) {
    frontend.queueAnswer({PopupAnswer::Kind::Ok, ""});
    std::atomic<bool> done{false};
    std::thread::id shownOn;
    std::thread worker([&] {
        MessagePopup("Update BL Fail", "Please remove USB plug");
        done = true;
    });
    while (!done) {
        ProcessSystemEvents();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    worker.join();
    ASSERT_EQ(frontend.popups.size(), 1u);
    EXPECT_EQ(frontend.popups[0], "popup message \"Update BL Fail\" \"Please remove USB plug\"");
}

int slowWorker(void *data) {
    auto *flag = static_cast<std::atomic<int> *>(data);
    vcc::clock::sleepMs(30);
    *flag = 1;
    return 0;
}

TEST_F(UiLayer, ThreadPoolReportsCompletionAndWaitsWhileProcessingEvents) {
    std::atomic<int> flag{0};
    int id = 0;
    ASSERT_EQ(CmtScheduleThreadPoolFunctionAdv(DEFAULT_THREAD_POOL_HANDLE, slowWorker, &flag,
                                               THREAD_PRIORITY_HIGHEST, nullptr, 0, nullptr, 0, &id), 0);
    Model::instance().post({one, BUTTON, EVENT_COMMIT, 0, 0});
    EXPECT_EQ(CmtWaitForThreadPoolFunctionCompletion(DEFAULT_THREAD_POOL_HANDLE, id,
                                                     OPT_TP_PROCESS_EVENTS_WHILE_WAITING), 0);
    int status = 0;
    CmtGetThreadPoolFunctionAttribute(DEFAULT_THREAD_POOL_HANDLE, id, ATTR_TP_FUNCTION_EXECUTION_STATUS, &status);
    EXPECT_EQ(status, kCmtThreadFunctionComplete);
    EXPECT_EQ(flag.load(), 1);
    EXPECT_EQ(gSeen.size(), 1u) << "the click made while waiting runs";
    EXPECT_EQ(CmtReleaseThreadPoolFunctionID(DEFAULT_THREAD_POOL_HANDLE, id), 0);
    EXPECT_LT(CmtGetThreadPoolFunctionAttribute(DEFAULT_THREAD_POOL_HANDLE, id, ATTR_TP_FUNCTION_EXECUTION_STATUS,
                                                &status), 0);
}

TEST_F(UiLayer, TabSheetsReplaceThePanelsTheyStandFor) {
    const int tab = EasyTab_ConvertFromCanvas(one, CANVAS);
    ASSERT_EQ(tab, CANVAS);
    int sheet = 0;
    int *handles[] = {&sheet};
    const int ids[] = {2, 0};
    ASSERT_EQ(EasyTab_LoadPanels(one, tab, 1, resourcePath().c_str(), ids, handles), 0);
    EXPECT_GT(sheet, two);
    EXPECT_EQ(Model::instance().findPanel("TWO"), sheet);
    // Discarding the main panel takes its sheets with it.
    DiscardPanel(one);
    EXPECT_EQ(Model::instance().findPanel("TWO"), two);
}

// ---- the resource file --------------------------------------------------------------------------------

std::string writeResource(const std::string &name, const std::string &text) {
    const auto path = std::filesystem::temp_directory_path() / name;
    std::ofstream(path) << text;
    return path.string();
}

TEST(UirFile, MalformedResourcesAreRefusedWithAReason) {
    struct Case {
        const char *name, *text, *reason;
    } cases[] = {
        {"bad-yaml.uir", "panels: [ {name: A, controls: [", "bad-yaml.uir"},
        {"unknown-type.uir", "panels:\n  - name: A\n    controls:\n      - {name: X, type: slider}\n",
         "unknown control type 'slider'"},
        {"duplicate.uir",
         "panels:\n  - name: A\n    controls:\n      - {name: X, type: button}\n      - {name: X, type: led}\n",
         "duplicate control name X"},
        {"no-panels.uir", "something: else\n", "no 'panels' list"},
    };
    for (const Case &c : cases) {
        std::string error;
        EXPECT_EQ(parseUirFile(writeResource(c.name, c.text), error), nullptr) << c.name;
        EXPECT_NE(error.find(c.reason), std::string::npos) << error;
        EXPECT_EQ(error.find('\n'), std::string::npos) << "one line: " << error;
    }
    std::string error;
    EXPECT_EQ(parseUirFile("/nonexistent/Main.uir", error), nullptr);
    EXPECT_NE(error.find("no such resource file"), std::string::npos);
    EXPECT_LT(LoadPanel(0, "/nonexistent/Main.uir", 1), 0);
}

TEST(UirFile, ControlNamesFollowTheirCallbacks) {
    EXPECT_EQ(controlNameForCallback("AeMode_Callback"), "AE_MODE");
    EXPECT_EQ(controlNameForCallback("WBTemperature_Callback"), "WB_TEMPERATURE");
    EXPECT_EQ(controlNameForCallback("RefreshPTZFAbsPnl_Callback"), "REFRESH_PTZF_ABS_PNL");
    EXPECT_EQ(controlNameForCallback("PeT77K_FwUpdate_Callback"), "FW_UPDATE");
    EXPECT_EQ(controlNameForCallback("USBInfo_Callback"), "USB_INFO");
}

TEST(Toolbox, FilesAndPatterns) {
    const auto dir = std::filesystem::temp_directory_path() / "vcc-ui-files";
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir / "sub");
    std::ofstream(dir / "b.bin") << "12345";
    std::ofstream(dir / "a.bin") << "1";
    char name[1024];
    ASSERT_EQ(GetFirstFile((dir / "*").c_str(), 1, 0, 0, 0, 0, 0, name), 0);
    EXPECT_STREQ(name, "a.bin");
    ASSERT_EQ(GetNextFile(name), 0);
    EXPECT_STREQ(name, "b.bin");
    EXPECT_EQ(GetNextFile(name), -1) << "sub-folders are not files";
    EXPECT_EQ(GetFirstFile((dir / "missing" / "*").c_str(), 1, 0, 0, 0, 0, 0, name), -1);
    int size = 0;
    EXPECT_EQ(FileExists((dir / "b.bin").c_str(), &size), 1);
    EXPECT_EQ(size, 5);
    EXPECT_EQ(FileExists((dir / "none").c_str(), &size), 0);

    EXPECT_EQ(FindPattern("Video Camera Control AP - v1.51", 0, -1, " - v", 0, 0), 23);
    EXPECT_EQ(FindPattern("ABCabc", 0, -1, "abc", 0, 0), 0);
    EXPECT_EQ(FindPattern("ABCabc", 0, -1, "abc", 1, 0), 3);
    EXPECT_EQ(FindPattern("ABCabc", 0, -1, "xyz", 0, 0), -1);
}

}  // namespace
