// Settings files as a technician uses them: save and load through the main panel's buttons,
// files edited by hand, broken files, and Apply on the simulated camera.
#include <fstream>
#include <sstream>

#include "device/Connection.h"
#include "panels/DeviceInfo.h"
#include "settings/SettingsFile.h"
#include "tests/app/ToolFixture.h"

namespace {

class Settings : public ToolTest {
protected:
    // Only what the settings buttons do counts, and no file lands beside the program.
    void SetUp() override {
        ToolTest::SetUp();
        ResetTextBox(gPanels.main, MAIN_CONSOLE, "");
        sim::camera().clearTraffic();
        std::snprintf(gSettingsPath, sizeof gSettingsPath, "%s", dir.c_str());
    }
    static void run(CtrlCallbackPtr callback) { callback(0, 0, EVENT_COMMIT, nullptr, 0, 0); }
    int value(int panel, int control) {
        int v = 0;
        GetCtrlVal(panel, control, &v);
        return v;
    }
    std::string text(int panel, int control) {
        char t[256] = "";
        GetCtrlVal(panel, control, t);
        return t;
    }
    std::string title() {
        char t[256] = "";
        GetPanelAttribute(gPanels.main, ATTR_TITLE, t);
        return t;
    }
    static std::string slurp(const std::filesystem::path &path) {
        std::ifstream in(path, std::ios::binary);
        std::stringstream s;
        s << in.rdbuf();
        return s.str();
    }
    static void spit(const std::filesystem::path &path, const std::string &content) {
        std::ofstream(path, std::ios::binary) << content;
    }
    // The default file with some lines replaced: {line number (1-based), new line}.
    std::string defaultsWith(std::initializer_list<std::pair<int, std::string>> changes) {
        std::string out;
        for (int i = 0; i < kSettingsEntries; ++i) {
            std::string line = std::string(SettingKey(i)) + SettingDefault(i);
            for (const auto &[number, replacement] : changes)
                if (number == i + 1) line = replacement;
            out += line + "\n";
        }
        return out;
    }
    void load(const std::filesystem::path &path) {
        answerFile(path);
        run(INILoad_Callback);
    }
    void connect() {
        VideoCameraConnect_Callback(gPanels.main, MAIN_VIDEO_CAMERA_CONNECT, EVENT_RIGHT_CLICK, nullptr, 0, 0);
        ASSERT_TRUE(IsDeviceConnected());
        ResetTextBox(gPanels.main, MAIN_CONSOLE, "");
        sim::camera().clearTraffic();
    }
};

TEST_F(Settings, SavedFileLoadsBackIntoEveryKindOfControlButNotTheTitle) {
    SetPanelAttribute(gPanels.main, ATTR_TITLE, "Bench camera 3");
    SetCtrlVal(gPanels.iq, IQ_BRIGHTNESS, 11);
    SetCtrlVal(gPanels.ptzfAbs, PTZFABS_PAN_LIMIT_LEFT, -120);
    SetCtrlVal(gPanels.pvInfo, PVINFO_MACHINE_SERIAL, "QT77K24050100017");
    SetCtrlVal(gPanels.main, MAIN_PWR_CTRL_METHOD, 0x55);
    const auto path = dir / "bench.ini";
    answerFile(path);
    run(INISave_Callback);
    EXPECT_EQ(console(), ">INI : SAVE\n> - done\n> - PATH = " + path.string() + " \n\n");
    EXPECT_EQ(gSettingsPath, path.string());

    const std::string file = slurp(path);
    EXPECT_EQ(std::count(file.begin(), file.end(), '\n'), kSettingsEntries);
    EXPECT_EQ(file.find('\r'), std::string::npos);
    EXPECT_EQ(file.rfind("TITLE = Bench camera 3\nMODEL = ", 0), 0u);
    EXPECT_NE(file.find("\nEU_BRIGHTNESS = 11\n"), std::string::npos);
    EXPECT_NE(file.find("\nEU_PAN_LIMIT_L = -120\n"), std::string::npos);
    EXPECT_NE(file.find("\nMACHINE SERIAL = QT77K24050100017\n"), std::string::npos);
    EXPECT_TRUE(file.ends_with("\nEU_PWR_METHOD = 85\n"));

    SetCtrlVal(gPanels.iq, IQ_BRIGHTNESS, 2);
    SetCtrlVal(gPanels.ptzfAbs, PTZFABS_PAN_LIMIT_LEFT, 0);
    SetCtrlVal(gPanels.pvInfo, PVINFO_MACHINE_SERIAL, "");
    ResetTextBox(gPanels.main, MAIN_CONSOLE, "");
    load(path);
    EXPECT_EQ(console(), ">INI : LOAD\n> - done\n> - PATH = " + path.string() + " \n\n");
    EXPECT_EQ(value(gPanels.iq, IQ_BRIGHTNESS), 11);
    EXPECT_EQ(value(gPanels.ptzfAbs, PTZFABS_PAN_LIMIT_LEFT), -120);
    EXPECT_EQ(text(gPanels.pvInfo, PVINFO_MACHINE_SERIAL), "QT77K24050100017");
    EXPECT_EQ(value(gPanels.main, MAIN_PWR_CTRL_METHOD), 0x55);
    EXPECT_EQ(title(), kTitleText);
    // Loading touches the camera's panels only: nothing went out.
    EXPECT_TRUE(sim::camera().traffic().empty());
}

TEST_F(Settings, MissingFileBecomesADefaultFileAndTheControlsShowTheDefaults) {
    SetCtrlVal(gPanels.iq, IQ_SATURATION, 3);
    SetCtrlVal(gPanels.pvInfo, PVINFO_VER1, "I77K212");
    const auto path = dir / "new.ini";
    load(path);
    EXPECT_EQ(console(),
              ">INI : LOAD\n> - incorrect INI file, load INI default\n> - PATH = " + path.string() + " \n\n");
    const std::string file = slurp(path);
    EXPECT_EQ(file.rfind(std::string("TITLE = ") + kTitleText + "\r\nMODEL = 0\r\n", 0), 0u);
    EXPECT_TRUE(file.ends_with("\r\nEU_PWR_METHOD = 170\r\n"));
    EXPECT_EQ(std::count(file.begin(), file.end(), '\n'), kSettingsEntries);
    EXPECT_EQ(value(gPanels.iq, IQ_SATURATION), 14);
    EXPECT_EQ(text(gPanels.pvInfo, PVINFO_VER1), "VHG000 ");
    EXPECT_EQ(value(gPanels.main, MAIN_PWR_CTRL_METHOD), 170);
}

TEST_F(Settings, KeysMatchInAnyCaseAnywhereInTheirLineButOnlyInTheirOwnLine) {
    const auto path = dir / "edited.ini";
    spit(path, defaultsWith({{2, "model = 1"}, {51, "  # edited: EU_BRIGHTNESS = 9 (was 7)"}}));
    load(path);
    EXPECT_EQ(value(gPanels.main, MAIN_MODEL), 1);
    EXPECT_EQ(value(gPanels.iq, IQ_BRIGHTNESS), 9);

    // The same two lines swapped: the file is wrong as a whole.
    SetCtrlVal(gPanels.iq, IQ_BRIGHTNESS, 12);
    ResetTextBox(gPanels.main, MAIN_CONSOLE, "");
    spit(path, defaultsWith({{51, "EU_CONTRAST = 4"}, {52, "EU_BRIGHTNESS = 9"}}));
    load(path);
    EXPECT_NE(console().find("> - incorrect INI file, load INI default\n"), std::string::npos);
    EXPECT_EQ(value(gPanels.iq, IQ_BRIGHTNESS), 7);
    EXPECT_EQ(value(gPanels.iq, IQ_CONTRAST), 0);
}

TEST_F(Settings, BrokenFilesShowTheDefaultsEverywhere) {
    const std::string longLine = "EU_GAMMA = 1" + std::string(1100, ' ');
    const std::pair<const char *, std::string> cases[] = {
        {"empty", ""},
        {"short", defaultsWith({}).substr(0, defaultsWith({}).find("EU_GAIN = "))},
        {"key missing", defaultsWith({{80, "PWR_METHOD = 170"}})},
        {"line too long", defaultsWith({{56, longLine}})},
    };
    for (const auto &[name, content] : cases) {
        SCOPED_TRACE(name);
        SetCtrlVal(gPanels.iq, IQ_HUE, 1);
        SetCtrlVal(gPanels.pvInfo, PVINFO_MACHINE_ID, "0x5A5A");
        ResetTextBox(gPanels.main, MAIN_CONSOLE, "");
        const auto path = dir / "broken.ini";
        spit(path, content);
        load(path);
        EXPECT_NE(console().find("> - incorrect INI file, load INI default\n"), std::string::npos);
        EXPECT_EQ(value(gPanels.iq, IQ_HUE), 7);
        EXPECT_EQ(text(gPanels.pvInfo, PVINFO_MACHINE_ID), "1234");
        EXPECT_EQ(value(gPanels.main, MAIN_PWR_CTRL_METHOD), 170);
        // A broken file is left as it was for the user to mend.
        EXPECT_EQ(slurp(path), content);
    }
    // A folder by the chosen name cannot be read either; nothing is written into it.
    const auto folder = dir / "folder.ini";
    std::filesystem::create_directory(folder);
    SetCtrlVal(gPanels.iq, IQ_HUE, 1);
    load(folder);
    EXPECT_EQ(value(gPanels.iq, IQ_HUE), 7);
    EXPECT_TRUE(std::filesystem::is_empty(folder));
}

TEST_F(Settings, ValuesReplaceWhatWasThereOrKeepItWhenTheyAreNoNumber) {
    const auto path = dir / "values.ini";
    spit(path, defaultsWith({{21, "MACHINE SERIAL = QT77K24050100017"}, {53, "EU_HUE = 9"}}));
    load(path);
    ASSERT_EQ(text(gPanels.pvInfo, PVINFO_MACHINE_SERIAL), "QT77K24050100017");
    ResetTextBox(gPanels.main, MAIN_CONSOLE, "");
    // A shorter text (here ending as an editor's lines do) leaves nothing of the longer one; a
    // non-number keeps the last value read.
    spit(path, defaultsWith({{21, "MACHINE SERIAL = AB\r"}, {53, "EU_HUE = nine"}, {54, "EU_SATURATION =   12 dB"}}));
    load(path);
    EXPECT_EQ(console(), ">INI : LOAD\n> - done\n> - PATH = " + path.string() + " \n\n");
    EXPECT_EQ(text(gPanels.pvInfo, PVINFO_MACHINE_SERIAL), "AB");
    EXPECT_EQ(value(gPanels.iq, IQ_HUE), 9);
    EXPECT_EQ(value(gPanels.iq, IQ_SATURATION), 12);
    // Texts longer than a record holds are cut, on load and on save alike.
    spit(path, defaultsWith({{22, "MACHINE ID = " + std::string(400, 'x')}}));
    load(path);
    EXPECT_EQ(text(gPanels.pvInfo, PVINFO_MACHINE_ID).size(), 255u);
}

TEST_F(Settings, DialogsProposeTheSerialNumberOrDeviceNameWithTheDateAndTime) {
    std::tm when{};
    when.tm_year = 2024 - 1900;
    when.tm_mon = 2;
    when.tm_mday = 5;
    when.tm_hour = 7;
    when.tm_min = 8;
    when.tm_sec = 9;
    vcc::clock::pinLocalTime(when);
    std::snprintf(gSerialNumber, sizeof gSerialNumber, "%s", "012345678");
    frontend.queueAnswer({vcc::ui::headless::PopupAnswer::Kind::Proposed, ""});
    run(INISave_Callback);
    const std::string proposed = "012345678_2024-03-05_07-08-09.ini";
    ASSERT_FALSE(frontend.popups.empty());
    EXPECT_NE(frontend.popups.back().find("\"SAVE to INI\" \"" + proposed + "\""), std::string::npos)
        << frontend.popups.back();
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(gSettingsPath)));
    EXPECT_EQ(std::filesystem::path(gSettingsPath).filename(), proposed);

    // Without a serial number the device name stands in; the load dialog opens where the
    // last file was.
    gSerialNumber[0] = '\0';
    frontend.queueAnswer({vcc::ui::headless::PopupAnswer::Kind::Cancel, ""});
    run(INILoad_Callback);
    EXPECT_NE(frontend.popups.back().find("\"INI to LOAD\" \"" + std::string(gDeviceName) + "_2024-03-05_07-08-09.ini\""),
              std::string::npos)
        << frontend.popups.back();
}

TEST_F(Settings, ApplySendsTheFileAsItIsOnDiskInItsFixedOrder) {
    connect();
    const auto path = dir / "apply.ini";
    spit(path, defaultsWith({{36, "EU_PAN_LIMIT_L = -100"}, {51, "EU_BRIGHTNESS = 9"}, {80, "EU_PWR_METHOD = 85"}}));
    load(path);
    EXPECT_EQ(value(gPanels.iq, IQ_BRIGHTNESS), 9);
    // The panel changed after the load does not count: the file does.
    SetCtrlVal(gPanels.iq, IQ_BRIGHTNESS, 3);
    ResetTextBox(gPanels.main, MAIN_CONSOLE, "");
    sim::camera().clearTraffic();
    run(INIApply_Callback);
    EXPECT_EQ(console().rfind(">INI : APPLY\n> - PATH = " + path.string() + " \n\n", 0), 0u);
    std::vector<std::string> writes;
    for (const std::string &line : sim::camera().traffic())
        if (line.rfind("W 5 ", 0) == 0) writes.push_back(line);
    // 59 commands; the six split ones write two registers, the raw/yuv switch two more around
    // its own (debug mode on and back).
    ASSERT_EQ(writes.size(), 59u + 6u + 2u);
    EXPECT_EQ(writes[0], "W 5 0x00E0 0x0000");  // auto focus off first
    EXPECT_NE(std::find(writes.begin(), writes.end(), "W 5 0x0017 0xFFFF"), writes.end());
    EXPECT_NE(std::find(writes.begin(), writes.end(), "W 5 0x0018 0xFF9C"), writes.end());
    EXPECT_NE(std::find(writes.begin(), writes.end(), "W 5 0x00D1 0x0009"), writes.end());
    EXPECT_EQ(writes.back(), "W 5 0x00FB 0x0055");
    EXPECT_EQ(value(gPanels.iq, IQ_BRIGHTNESS), 3);
    EXPECT_EQ(value(gPanels.main, MAIN_BUSY), 0);
    EXPECT_FALSE(dimmed(gPanels.main, MAIN_INI_APPLY));
}

TEST_F(Settings, ApplyOfABrokenOrVanishedFileSendsNothing) {
    connect();
    const auto path = dir / "apply.ini";
    spit(path, defaultsWith({}));
    load(path);
    spit(path, defaultsWith({{80, ""}}));
    ResetTextBox(gPanels.main, MAIN_CONSOLE, "");
    run(INIApply_Callback);
    std::filesystem::remove(path);
    run(INIApply_Callback);
    EXPECT_EQ(console(), ">INI : APPLY\n> - fail \n\n>INI : APPLY\n> - fail \n\n");
    EXPECT_TRUE(sim::camera().traffic().empty());
}

TEST_F(Settings, WithThePowerOffLoadLeavesApplyDimmedAndApplyLeavesTheCameraControlsDimmed) {
    connect();
    SetCtrlVal(gPanels.main, MAIN_POWER_UP_DOWN, 0);
    SetCtrlAttribute(gPanels.main, MAIN_INI_APPLY, ATTR_DIMMED, 1);
    const auto path = dir / "off.ini";
    spit(path, defaultsWith({}));
    load(path);
    EXPECT_TRUE(dimmed(gPanels.main, MAIN_INI_APPLY));
    run(INIApply_Callback);
    EXPECT_FALSE(sim::camera().traffic().empty());
    EXPECT_TRUE(dimmed(gPanels.iq, IQ_BRIGHTNESS));
    EXPECT_EQ(value(gPanels.main, MAIN_BUSY), 0);
}

}  // namespace
