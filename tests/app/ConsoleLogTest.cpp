// The console and the log as a technician reads them afterwards: exact file contents, whole
// lines under concurrent printing, and files that are replaced rather than appended to.
#include <thread>

#include "tests/app/ToolFixture.h"

namespace {

// The console and its switches live on the main panel, which a user sees after the unlock.
class ConsoleLog : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        DisplayPanel(gPanels.main);
    }
};

TEST_F(ConsoleLog, ALogHoldsTheHeaderTheConsoleLinesAndTheStopLines) {
    const auto log = dir / "log.txt";
    std::FILE *old = std::fopen(log.c_str(), "w");
    std::fputs("an older log that must disappear\n", old);
    std::fclose(old);

    answerFile(log);
    ASSERT_TRUE(userSet("MAIN.LOG", "1"));
    ConsolePrintf(">CMND : GET [ERROR]\n");
    ConsolePrintf("> - R [0x%04X] = ", 0x41);
    ConsolePrintf("0x%02X, ", 0x80);
    ConsolePrintf("0x%02X\n", 0x81);
    ConsolePrintf("%s", "");
    ASSERT_TRUE(userSet("MAIN.LOG", "0"));

    const std::string expected =
        "# Log : Video Camera Control AP - START [2026-01-02, 03:04:05]\n\n"
        "[03:04:05] >LOG : RUNNING\n"
        "[03:04:05] > - PATH = " + log.string() + "\n\n"
        "[03:04:05] >CMND : GET [ERROR]\n"
        // A fragment loses its last character and becomes a line of its own.
        "[03:04:05] > - R [0x0041] =\n"
        "[03:04:05] 0x80,\n"
        "[03:04:05] 0x81\n"
        // An empty text leaves the bracketed time without the blank behind it.
        "[03:04:05]\n"
        "[03:04:05] >LOG : STOP\n\n"
        "# Log : Video Camera Control AP - STOP [2026-01-02, 03:04:05]\n\n";
    EXPECT_EQ(readFile(log), expected);
    // The console keeps the block echo on one line.
    EXPECT_NE(console().find("> - R [0x0041] = 0x80, 0x81\n"), std::string::npos);
}

TEST_F(ConsoleLog, QuittingWithALogOpenWritesTheStopHeaderOnly) {
    const auto log = dir / "quit.txt";
    answerFile(log);
    ASSERT_TRUE(userSet("MAIN.LOG", "1"));
    MainQuit_Callback(gPanels.peT77K, 0, EVENT_CLOSE, nullptr, 0, 0);
    const std::string content = readFile(log);
    EXPECT_EQ(content.find(">LOG : STOP"), std::string::npos);
    const std::string tail = "[03:04:05] >LIB : SET [CLOSE]\n"
                             "# Log : Video Camera Control AP - STOP [2026-01-02, 03:04:05]\n\n";
    ASSERT_GE(content.size(), tail.size());
    EXPECT_EQ(content.substr(content.size() - tail.size()), tail);
}

TEST_F(ConsoleLog, CancellingTheLogDialogPutsTheSwitchBackAndPrintsNothing) {
    const std::string before = console();
    frontend.queueAnswer({vcc::ui::headless::PopupAnswer::Kind::Cancel, ""});
    ASSERT_TRUE(userSet("MAIN.LOG", "1"));
    EXPECT_EQ(read("MAIN.LOG"), "0");
    EXPECT_EQ(console(), before);
    EXPECT_EQ(frontend.popups.back().rfind("popup file \"File Name to Save\" \"Log_2026-01-02_03-04-05.txt\"", 0), 0u);
}

TEST_F(ConsoleLog, AnUncreatableLogIsReportedAndLosesNothing) {
    answerFile(dir / "no-such-folder" / "log.txt");
    ASSERT_TRUE(userSet("MAIN.LOG", "1"));
    EXPECT_EQ(read("MAIN.LOG"), "0");
    EXPECT_NE(console().find("> - fail (file open)\n\n"), std::string::npos);
}

TEST_F(ConsoleLog, TheMessageFileHoldsEveryConsoleLineInCodePage950) {
    commit("StatusMsgClear_Callback");
    EXPECT_EQ(console(), "");
    ConsolePrintf(">CMND : SET [BRIGHTNESS] = %d\n", 7);
    ConsolePrintf("> - 錯誤碼 = 無\n");
    const auto file = dir / "messages.txt";
    answerFile(file);
    ASSERT_TRUE(commit("StatusMsgSave_Callback"));
    const std::string expected = std::string("# Message : Video Camera Control AP[2026-01-02, 03:04:05]\n - START\n\n") +
                                 ">CMND : SET [BRIGHTNESS] = 7\n" + "> - \xBF\xF9\xBB\x7E\xBD\x58 = \xB5\x4C\n" +
                                 " - STOP\n\n";
    EXPECT_EQ(readFile(file), expected);
    EXPECT_NE(console().find(">MESSAGE : SAVE\n> - PATH = " + file.string() + " \n\n"), std::string::npos);
}

TEST_F(ConsoleLog, LinesFromFourThreadsStayWholeInConsoleAndLog) {
    const auto log = dir / "threads.txt";
    answerFile(log);
    ASSERT_TRUE(userSet("MAIN.LOG", "1"));
    commit("StatusMsgClear_Callback");
    constexpr int kLines = 2000;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            for (int i = 0; i < kLines; ++i) ConsolePrintf("> - thread %d line %04d of the stress test\n", t, i);
        });
    for (auto &th : threads) th.join();
    ASSERT_TRUE(userSet("MAIN.LOG", "0"));

    auto checkLines = [](const std::string &text, const std::string &prefix) {
        int count = 0;
        size_t start = 0;
        while ((start = text.find(prefix + "> - thread", start)) != std::string::npos) {
            const size_t end = text.find('\n', start);
            const std::string line = text.substr(start + prefix.size(), end - start - prefix.size());
            int t = -1, i = -1;
            char tail[64] = "";
            EXPECT_EQ(std::sscanf(line.c_str(), "> - thread %d line %d of the %63[^\n]", &t, &i, tail), 3) << line;
            EXPECT_STREQ(tail, "stress test") << line;
            ++count;
            start = end;
        }
        return count;
    };
    EXPECT_EQ(checkLines(console(), ""), 4 * kLines);
    EXPECT_EQ(checkLines(readFile(log), "[03:04:05] "), 4 * kLines);
}

TEST_F(ConsoleLog, OverlongTextsAreCutNotOverflowed) {
    commit("StatusMsgClear_Callback");
    const std::string longPath(600, 'p');
    ConsolePrintf("> - PATH = %s\n", longPath.c_str());
    EXPECT_EQ(console().size(), 255u);
}

TEST_F(ConsoleLog, ACutTextEndsOnAWholeCharacter) {
    const auto log = dir / "cut-log.txt";
    answerFile(log);
    ASSERT_TRUE(userSet("MAIN.LOG", "1"));
    commit("StatusMsgClear_Callback");
    // 254 bytes and a three-byte character: only the bytes before the character fit.
    ConsolePrintf("%s錯誤\n", std::string(254, 'a').c_str());
    EXPECT_EQ(console(), std::string(254, 'a'));
    // Whole in the console, but its time-stamped log line is cut inside the character.
    ConsolePrintf("%s錯誤\n", std::string(240, 'b').c_str());
    // One console line of 257 bytes from two texts, cut for the message file.
    ConsolePrintf("%s", std::string(200, 'c').c_str());
    ConsolePrintf("%s錯\n", std::string(54, 'c').c_str());
    ASSERT_TRUE(userSet("MAIN.LOG", "0"));
    const auto messages = dir / "cut-messages.txt";
    answerFile(messages);
    ASSERT_TRUE(commit("StatusMsgSave_Callback"));

    // Code page 950 marks a broken character with '?'; no cut may leave one behind.
    const std::string logText = readFile(log);
    EXPECT_NE(logText.find("\n[03:04:05] " + std::string(240, 'b') + "\n"), std::string::npos) << logText;
    EXPECT_EQ(logText.find('?'), std::string::npos) << logText;
    const std::string messageText = readFile(messages);
    EXPECT_NE(messageText.find("\n" + std::string(254, 'c') + "\n"), std::string::npos) << messageText;
    EXPECT_EQ(messageText.find('?'), std::string::npos) << messageText;
}

TEST_F(ConsoleLog, TheConsoleAreaIsShownOrCutOffByThePanelHeight) {
    EXPECT_EQ(read("MAIN.height"), "310");
    ASSERT_FALSE(IsDeviceConnected());
    ASSERT_TRUE(userSet("MAIN.MSG_EN", "1"));
    EXPECT_EQ(read("MAIN.height"), "460");
    EXPECT_EQ(read("MAIN.width"), "760");
    ASSERT_TRUE(userSet("MAIN.MSG_EN", "0"));
    EXPECT_EQ(read("MAIN.height"), "310");
}

}  // namespace
