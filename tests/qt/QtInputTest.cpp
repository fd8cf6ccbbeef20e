// User input through the Qt widgets reaches the tool as the events its callbacks expect, and
// never reaches a dimmed control.
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QSpinBox>
#include <QTimer>
#include <chrono>

#include "QtTestSupport.h"
#include "ui/qt/Indicators.h"

namespace vcc::ui::qt::testing {
namespace {

using Input = QtTest;

TEST_F(Input, ButtonActsOnPressAndReleaseOnlyWhileUndimmed) {
    const int main = loadAndShow(PNL_MAIN);
    bind(main, MAIN_REFRESH_ALL);  // dimmed in the resource until a camera is connected
    auto *button = widget(main, MAIN_REFRESH_ALL);
    ASSERT_NE(button, nullptr);
    EXPECT_FALSE(button->isEnabled());
    click(button);
    ProcessSystemEvents();
    EXPECT_TRUE(calls().empty());

    SetCtrlAttribute(main, MAIN_REFRESH_ALL, ATTR_DIMMED, 0);
    ProcessSystemEvents();
    EXPECT_TRUE(button->isEnabled());
    click(button);
    ProcessSystemEvents();
    ASSERT_EQ(calls().size(), 2u);
    EXPECT_EQ(calls()[0].event, EVENT_LEFT_CLICK);
    EXPECT_EQ(calls()[0].data1, 1);  // press
    EXPECT_EQ(calls()[1].event, EVENT_COMMIT);
    EXPECT_EQ(calls()[1].data1, 0);  // release

    // A click made while a command runs meets the dimming that command left, and is dropped.
    calls().clear();
    click(button);
    SetCtrlAttribute(main, MAIN_REFRESH_ALL, ATTR_DIMMED, 1);
    ProcessSystemEvents();
    EXPECT_TRUE(calls().empty());
    EXPECT_FALSE(button->isEnabled());
}

TEST_F(Input, RightClickReadsBackAndDoubleClickDisconnects) {
    const int main = loadAndShow(PNL_MAIN);
    bind(main, MAIN_VIDEO_CAMERA_CONNECT);
    auto *button = widget(main, MAIN_VIDEO_CAMERA_CONNECT);
    click(button, Qt::RightButton);
    ProcessSystemEvents();
    EXPECT_EQ(eventsOf(MAIN_VIDEO_CAMERA_CONNECT), std::vector<int>{EVENT_RIGHT_CLICK});
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr) << "right click must not open a context menu";

    calls().clear();
    doubleClick(button);
    ProcessSystemEvents();
    const std::vector<int> events = eventsOf(MAIN_VIDEO_CAMERA_CONNECT);
    EXPECT_NE(std::find(events.begin(), events.end(), EVENT_LEFT_DOUBLE_CLICK), events.end());
}

TEST_F(Input, NumericEditIsStoredBeforeItsCommit) {
    const int others = loadAndShow(PNL_OTHERS);
    SetCtrlAttribute(others, OTHERS_PREVIEW_STANDBY_TIME, ATTR_DIMMED, 0);
    bind(others, OTHERS_PREVIEW_STANDBY_TIME);
    auto *spin = widget<QSpinBox>(others, OTHERS_PREVIEW_STANDBY_TIME);
    ASSERT_NE(spin, nullptr);
    EXPECT_EQ(spin->value(), 5);
    EXPECT_EQ(spin->maximum(), 255);

    spin->selectAll();
    typeText(spin, "42");
    EXPECT_TRUE(calls().empty()) << "typing alone commits nothing";
    typeKey(spin, Qt::Key_Return);
    ProcessSystemEvents();
    ASSERT_EQ(eventsOf(OTHERS_PREVIEW_STANDBY_TIME), std::vector<int>{EVENT_COMMIT});
    EXPECT_EQ(calls()[0].number, 42);

    // A value the tool sets shows up without raising an event.
    calls().clear();
    SetCtrlVal(others, OTHERS_PREVIEW_STANDBY_TIME, 17);
    ProcessSystemEvents();
    frontend_->syncAll();
    EXPECT_EQ(spin->value(), 17);
    EXPECT_TRUE(calls().empty());
}

TEST_F(Input, HexNumericShowsAndTakesHexadecimal) {
    const int sf = loadAndShow(PNL_SF);
    auto *spin = widget<QSpinBox>(sf, SF_ADDRESS);
    ASSERT_NE(spin, nullptr);
    SetCtrlVal(sf, SF_ADDRESS, 0x7ABCD);
    frontend_->syncAll();
    EXPECT_EQ(spin->text(), "0x7ABCD");

    spin->selectAll();
    typeText(spin, "1f");
    typeKey(spin, Qt::Key_Return);
    int value = 0;
    GetCtrlVal(sf, SF_ADDRESS, &value);
    EXPECT_EQ(value, 0x1F);
}

TEST_F(Input, RingCommitsTheValueOfTheChosenItem) {
    const int others = loadAndShow(PNL_OTHERS);
    SetCtrlAttribute(others, OTHERS_AF_SPEED, ATTR_DIMMED, 0);
    bind(others, OTHERS_AF_SPEED);
    auto *ring = widget<QComboBox>(others, OTHERS_AF_SPEED);
    ASSERT_NE(ring, nullptr);
    ASSERT_EQ(ring->count(), 3);
    EXPECT_EQ(ring->currentText(), "Normal");

    typeKey(ring, Qt::Key_Down);  // Normal (2) -> Slow (3)
    ProcessSystemEvents();
    ASSERT_EQ(eventsOf(OTHERS_AF_SPEED), std::vector<int>{EVENT_COMMIT});
    EXPECT_EQ(calls()[0].number, 3);
    EXPECT_EQ(calls()[0].text, "Slow");

    // Items the tool changes replace the list.
    ClearListCtrl(others, OTHERS_AF_SPEED);
    InsertListItem(others, OTHERS_AF_SPEED, -1, "Only", 7);
    frontend_->syncAll();
    ASSERT_EQ(ring->count(), 1);
    EXPECT_EQ(ring->currentText(), "Only");
}

// A masking callback in the manner of the engineering password: it keeps what was typed and
// shows one asterisk per character.
std::string gTyped;
int maskingCallback(int panel, int control, int event, void *data, int key, int data2) {
    recordCall(panel, control, event, data, key, data2);
    if (event != EVENT_KEYPRESS) return 0;
    if (key < 0x80 && std::isalnum(key))
        gTyped += static_cast<char>(key);
    else if (key == VAL_BACKSPACE_VKEY && !gTyped.empty())
        gTyped.pop_back();
    SetCtrlVal(panel, control, std::string(gTyped.size(), '*').c_str());
    return 0;
}

TEST_F(Input, MaskedFieldShowsOnlyWhatTheModelHolds) {
    const int password = loadAndShow(PNL_PASSWORD);
    SetCtrlAttribute(password, PASSWORD_ENTRY, ATTR_CALLBACK_FUNCTION_POINTER, maskingCallback);
    gTyped.clear();
    auto *field = widget<QLineEdit>(password, PASSWORD_ENTRY);
    ASSERT_NE(field, nullptr);

    typeKey(field, Qt::Key_K, "K");
    EXPECT_EQ(field->text(), "") << "the widget itself must not insert the typed character";
    ProcessSystemEvents();
    frontend_->syncAll();
    EXPECT_EQ(field->text(), "*");

    typeText(field, "e7");
    typeKey(field, Qt::Key_Space, " ");
    ProcessSystemEvents();
    frontend_->syncAll();
    EXPECT_EQ(field->text(), "***");
    EXPECT_EQ(gTyped, "Ke7");

    typeKey(field, Qt::Key_Backspace);
    typeKey(field, Qt::Key_Delete);
    typeKey(field, Qt::Key_Return);
    ProcessSystemEvents();
    frontend_->syncAll();
    EXPECT_EQ(field->text(), "**");
    EXPECT_EQ(gTyped, "Ke");

    std::vector<int> keys;
    for (const Call &c : calls()) {
        EXPECT_EQ(c.event, EVENT_KEYPRESS) << "a key-driven field never commits";
        keys.push_back(c.data1);
    }
    EXPECT_EQ(keys, (std::vector<int>{'K', 'e', '7', ' ', VAL_BACKSPACE_VKEY, VAL_FWD_DELETE_VKEY, VAL_ENTER_VKEY}));
    for (const Call &c : calls()) EXPECT_EQ(c.text.find_first_not_of('*'), std::string::npos);
}

TEST_F(Input, PlainStringFieldEditsThenCommitsOnEnter) {
    const int pv = loadAndShow(PNL_PVINFO);
    bind(pv, PVINFO_DEVICE_NAME);
    auto *field = widget<QLineEdit>(pv, PVINFO_DEVICE_NAME);
    ASSERT_NE(field, nullptr);
    field->selectAll();
    typeText(field, "Cam");
    EXPECT_EQ(field->text(), "Cam");
    typeKey(field, Qt::Key_Return);
    ProcessSystemEvents();
    const std::vector<int> events = eventsOf(PVINFO_DEVICE_NAME);
    EXPECT_EQ(events, (std::vector<int>{EVENT_KEYPRESS, EVENT_KEYPRESS, EVENT_KEYPRESS, EVENT_KEYPRESS, EVENT_COMMIT}));
    EXPECT_EQ(calls().back().text, "Cam");

    // While the user is typing, unrelated model changes leave the field alone.
    typeText(field, "XY");
    SetCtrlVal(pv, PVINFO_UI_VERSION, "1.51 ");
    frontend_->syncAll();
    EXPECT_EQ(field->text(), "CamXY");
}

int refuseSwitch(int panel, int control, int event, void *data, int data1, int data2) {
    recordCall(panel, control, event, data, data1, data2);
    if (event == EVENT_COMMIT) SetCtrlVal(panel, control, 0);  // as a cancelled file dialog does
    return 0;
}

TEST_F(Input, SwitchAndCheckBoxStoreTheirStateAndFollowTheTool) {
    const int main = loadAndShow(PNL_MAIN);
    SetCtrlAttribute(main, MAIN_LOG, ATTR_CALLBACK_FUNCTION_POINTER, refuseSwitch);
    auto *sw = widget<QAbstractButton>(main, MAIN_LOG);
    ASSERT_NE(sw, nullptr);
    click(sw);
    EXPECT_TRUE(sw->isChecked());
    ProcessSystemEvents();
    ASSERT_EQ(eventsOf(MAIN_LOG), std::vector<int>{EVENT_COMMIT});
    EXPECT_EQ(calls()[0].number, 1) << "the callback sees the new position";
    frontend_->syncAll();
    EXPECT_FALSE(sw->isChecked()) << "the switch shows what the tool set";

    const int pe = loadAndShow(PNL_PET77K);
    bind(pe, PET77K_FW_FILE_CHECK_BOX_ISP);
    auto *box = widget<QCheckBox>(pe, PET77K_FW_FILE_CHECK_BOX_ISP);
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->text(), "ISP");
    click(box);
    ProcessSystemEvents();
    ASSERT_EQ(eventsOf(PET77K_FW_FILE_CHECK_BOX_ISP), std::vector<int>{EVENT_COMMIT});
    EXPECT_EQ(calls().back().number, 1);
}

TEST_F(Input, ClosingAWindowAsksItsPanelCallback) {
    const int password = loadAndShow(PNL_PASSWORD);
    bindPanel(password);
    PanelView *window = frontend_->panelView(password);
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->isVisible());
    window->close();
    ProcessSystemEvents();
    ASSERT_EQ(calls().size(), 1u);
    EXPECT_EQ(calls()[0].panel, password);
    EXPECT_EQ(calls()[0].control, 0);
    EXPECT_EQ(calls()[0].event, EVENT_CLOSE);
    EXPECT_TRUE(window->isVisible()) << "hiding is the callback's decision";
    HidePanel(password);
    frontend_->syncAll();
    EXPECT_FALSE(window->isVisible());
}

TEST_F(Input, AClickEndsTheEventLoopsWait) {
    const int main = loadAndShow(PNL_MAIN);
    bind(main, MAIN_STATUS_MSG_CLEAR);
    QWidget *button = widget(main, MAIN_STATUS_MSG_CLEAR);
    QTimer::singleShot(20, [button] { click(button); });
    const auto start = std::chrono::steady_clock::now();
    frontend_->pump(true, 5000);
    const auto waited = std::chrono::steady_clock::now() - start;
    ProcessSystemEvents();
    EXPECT_EQ(eventsOf(MAIN_STATUS_MSG_CLEAR), (std::vector<int>{EVENT_LEFT_CLICK, EVENT_COMMIT}));
    EXPECT_LT(waited, std::chrono::milliseconds(4000)) << "the wait must end with the input, not the time-out";
}

}  // namespace
}  // namespace vcc::ui::qt::testing
