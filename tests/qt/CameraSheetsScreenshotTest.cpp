// The seven camera sheets as a technician sees them after connecting a camera of the second
// model and of the QM-T77K: every sheet filled by the connect's full refresh, shown controls
// only, saved as pictures ($VCC_SCREENSHOT_DIR, default build/screenshots) for the README.
#include <QDir>
#include <QImage>

#include "QtTestSupport.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "app/Main.h"
#include "app/ModelProfiles.h"
#include "device/Connection.h"
#include "device/UvcLink.h"
#include "sim/SimCamera.h"

namespace vcc::ui::qt::testing {
namespace {

class CameraSheets : public QtTest, public ::testing::WithParamInterface<int> {
protected:
    void SetUp() override {
        QtTest::SetUp();
        vcc::clock::setScale(1000);
        const int profile = GetParam();
        ASSERT_EQ(UvcLinkSelectDevice(("sim:" + std::to_string(profile)).c_str()), 1);
        sim::camera().reset(profile);
        ASSERT_EQ(VccStartUp(0, nullptr), 0);
        SetCtrlAttribute(gPanels.main, MAIN_TIMER, ATTR_ENABLED, 0);
        for (char key : std::string("KestrelOrbitFox"))
            Model::instance().call(gPanels.password, PASSWORD_ENTRY, EVENT_KEYPRESS, key);
        Model::instance().call(gPanels.password, PASSWORD_ENTRY, EVENT_KEYPRESS, VAL_ENTER_VKEY);
        ASSERT_EQ(gAccessFlag, 1);
        // The model is chosen while no camera is connected, as the ring allows.
        SetCtrlVal(gPanels.main, MAIN_MODEL, profile);
        ConfigureModelPanels();
        Model::instance().call(gPanels.main, MAIN_VIDEO_CAMERA_CONNECT, EVENT_RIGHT_CLICK);
        ASSERT_TRUE(IsDeviceConnected());
        frontend_->syncAll();
    }
    void TearDown() override {
        StartStopLog(0);
        QtTest::TearDown();
        vcc::clock::setScale(1);
        UvcLinkSelectDevice("sim");
    }
};

TEST_P(CameraSheets, EverySheetIsFilledAfterTheConnect) {
    struct Sheet {
        int PanelHandles::*panel;
        const char *name;
    } const sheets[] = {
        {&PanelHandles::pvInfo, "pvinfo"}, {&PanelHandles::others, "others"}, {&PanelHandles::iq, "iq"},
        {&PanelHandles::ae, "ae"},         {&PanelHandles::awb, "awb"},       {&PanelHandles::ptzfAbs, "ptzfabs"},
        {&PanelHandles::ptzfRel, "ptzfrel"},
    };
    const char *dir = std::getenv("VCC_SCREENSHOT_DIR");
    const QString path = dir && *dir ? QString::fromLocal8Bit(dir) : QStringLiteral("build/screenshots");
    QDir().mkpath(path);
    // The refresh wrote what the camera holds, not the resource's placeholders.
    char text[64] = "";
    GetCtrlVal(gPanels.pvInfo, PVINFO_DEVICE_NAME, text);
    EXPECT_STRNE(text, "Video Camera X.X");
    for (const Sheet &sheet : sheets) {
        const QImage image = grabPanel(gPanels.*sheet.panel);
        ASSERT_FALSE(image.isNull()) << sheet.name;
        const QString file = QString("panels-profile%1-%2.png").arg(GetParam()).arg(sheet.name);
        EXPECT_TRUE(image.save(QDir(path).filePath(file))) << file.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Models, CameraSheets, ::testing::Values(1, 2));

}  // namespace
}  // namespace vcc::ui::qt::testing
