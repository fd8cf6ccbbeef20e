// The engineering password typed into the real tool through the Qt widgets: the field shows
// asterisks only, the right entry opens the tab view, a wrong one leaves the tool locked.
#include <QLineEdit>

#include "QtTestSupport.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "app/Main.h"
#include "device/UvcLink.h"
#include "sim/SimCamera.h"
#include "ui/qt/TabControl.h"

namespace vcc::ui::qt::testing {
namespace {

class Unlock : public QtTest {
protected:
    void SetUp() override {
        QtTest::SetUp();
        vcc::clock::setScale(1000);
        ASSERT_EQ(UvcLinkSelectDevice("sim"), 1);
        sim::camera().reset(2);
        ASSERT_EQ(VccStartUp(0, nullptr), 0);
        SetCtrlAttribute(gPanels.main, MAIN_TIMER, ATTR_ENABLED, 0);
        DisplayPanel(gPanels.peT77K);
        frontend_->syncAll();
    }
    void TearDown() override {
        StartStopLog(0);
        QtTest::TearDown();
        vcc::clock::setScale(1);
    }

    // Advance on the single-model panel, then the entry typed key by key and Enter.
    void typePassword(const QString &entry) {
        click(widget(gPanels.peT77K, PET77K_ADVANCE));
        ProcessSystemEvents();
        frontend_->syncAll();
        ASSERT_TRUE(frontend_->panelView(gPanels.password)->isVisible());
        auto *field = widget<QLineEdit>(gPanels.password, PASSWORD_ENTRY);
        ASSERT_NE(field, nullptr);
        for (int i = 0; i < entry.size(); ++i) {
            typeText(field, entry.mid(i, 1));
            ProcessSystemEvents();
            frontend_->syncAll();
            EXPECT_EQ(field->text(), QString(i + 1, '*')) << "after " << i + 1 << " characters";
        }
        typeKey(field, Qt::Key_Return);
        ProcessSystemEvents();
        frontend_->syncAll();
        EXPECT_EQ(field->text(), "");
        EXPECT_FALSE(frontend_->panelView(gPanels.password)->isVisible());
    }
};

TEST_F(Unlock, TheRightPasswordOpensTheTabView) {
    typePassword("KestrelOrbitFox");
    ASSERT_EQ(gAccessFlag, 1);
    PanelView *main = frontend_->panelView(gPanels.main);
    ASSERT_NE(main, nullptr);
    EXPECT_TRUE(main->isVisible());
    auto *tabs = widget<TabControl>(gPanels.main, MAIN_TABS);
    ASSERT_NE(tabs, nullptr);
    for (int sheet : {gPanels.pvInfo, gPanels.ae, gPanels.others, gPanels.service, gPanels.cateFb, gPanels.peT77K})
        EXPECT_NE(tabs->tabButton(sheet), nullptr) << sheet;
    EXPECT_TRUE(tabs->tabButton(gPanels.peT77K)->text().startsWith("QM-T77K FW Update AP"));
    const QImage image = grabPanel(gPanels.main);
    const char *dir = std::getenv("VCC_SCREENSHOT_DIR");
    image.save(QString(dir && *dir ? dir : "build/screenshots") + "/main_unlocked.png");
}

TEST_F(Unlock, AWrongLetterCaseLeavesTheToolLocked) {
    typePassword("kestrelOrbitFox");
    EXPECT_EQ(gAccessFlag, 0);
    EXPECT_FALSE(frontend_->panelView(gPanels.main)->isVisible());
}

TEST_F(Unlock, LettersBeyondLatin1NeitherTakeBackNorSendTheEntry) {
    click(widget(gPanels.peT77K, PET77K_ADVANCE));
    ProcessSystemEvents();
    auto *field = widget<QLineEdit>(gPanels.password, PASSWORD_ENTRY);
    ASSERT_NE(field, nullptr);
    typeText(field, "KestrelOrbitFox");
    // Their code points are the numbers the tool gives Backspace, Delete and Enter.
    for (char16_t letter : {u'\u0200', u'\u0100', u'\u0D00'}) typeText(field, QString(QChar(letter)));
    ProcessSystemEvents();
    frontend_->syncAll();
    EXPECT_EQ(field->text(), QString(15, '*'));
    EXPECT_EQ(gAccessFlag, 0);
    typeKey(field, Qt::Key_Return);
    ProcessSystemEvents();
    EXPECT_EQ(gAccessFlag, 1);
}

}  // namespace
}  // namespace vcc::ui::qt::testing
