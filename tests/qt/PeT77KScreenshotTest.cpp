// The single-model panel as a technician sees it in the desktop tool: the whole tool started
// on the simulated QM-T77K, Connect and FW Version pressed on the widgets, the window saved
// as a picture ($VCC_SCREENSHOT_DIR, default build/screenshots).
#include <QDir>
#include <QImage>
#include <QLineEdit>

#include "QtTestSupport.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "app/Main.h"
#include "device/UvcLink.h"
#include "sim/SimCamera.h"

namespace vcc::ui::qt::testing {
namespace {

class PeT77KWindow : public QtTest {
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
    void press(int control) {
        QWidget *button = widget(gPanels.peT77K, control);
        ASSERT_NE(button, nullptr);
        ASSERT_TRUE(button->isEnabled());
        click(button);
        ProcessSystemEvents();
        frontend_->syncAll();
    }
    QString shown(int control) {
        auto *field = widget<QLineEdit>(gPanels.peT77K, control);
        return field ? field->text() : QStringLiteral("<no field>");
    }
};

TEST_F(PeT77KWindow, AfterConnectAndFirmwareVersionTheWindowShowsTheCamera) {
    press(PET77K_CONNECT);
    ASSERT_TRUE(IsDeviceConnected());
    press(PET77K_FW_VERSION);

    EXPECT_EQ(shown(PET77K_CONN_TEXT), "  OOO  ");
    EXPECT_EQ(shown(PET77K_DEVICE_NAME), "QM-T77K USB Camera");
    EXPECT_EQ(shown(PET77K_FW_FILE_ISP), "I77K212");
    EXPECT_EQ(shown(PET77K_FW_FILE_USB), "U77K105 ( B03 )");
    EXPECT_EQ(shown(PET77K_FW_FILE_AUDIO), "A77K031");
    EXPECT_EQ(shown(PET77K_SERIAL_1), "Q");
    EXPECT_EQ(shown(PET77K_SERIAL_16), "7");
    QWidget *selector = widget(gPanels.peT77K, PET77K_APP_BL);
    ASSERT_NE(selector, nullptr);
    EXPECT_TRUE(selector->isHidden());

    const QImage image = grabPanel(gPanels.peT77K);
    ASSERT_FALSE(image.isNull());
    const char *dir = std::getenv("VCC_SCREENSHOT_DIR");
    const QString path = dir && *dir ? QString::fromLocal8Bit(dir) : QStringLiteral("build/screenshots");
    QDir().mkpath(path);
    EXPECT_TRUE(image.save(QDir(path).filePath("pet77k_connected_fw_version.png")));
}

}  // namespace
}  // namespace vcc::ui::qt::testing
