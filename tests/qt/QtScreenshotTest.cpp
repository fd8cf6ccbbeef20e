// Every panel of Main.uir shown by the Qt front-end and saved as a picture, for the eye and for
// the documentation: $VCC_SCREENSHOT_DIR (default build/screenshots).
#include <QDir>
#include <QImage>

#include "QtTestSupport.h"

namespace vcc::ui::qt::testing {
namespace {

QString screenshotDir() {
    const char *dir = std::getenv("VCC_SCREENSHOT_DIR");
    const QString path = dir && *dir ? QString::fromLocal8Bit(dir) : QStringLiteral("build/screenshots");
    QDir().mkpath(path);
    return path;
}

void save(const QImage &image, const QString &name) {
    const QString file = QDir(screenshotDir()).filePath(name + ".png");
    EXPECT_TRUE(image.save(file)) << file.toStdString();
}

using Screenshots = QtTest;

TEST_F(Screenshots, EveryPanelAtItsOwnSize) {
    struct Expected {
        int id;
        const char *name;
    };
    const Expected panels[] = {
        {PNL_MAIN, "MAIN"},         {PNL_PASSWORD, "PASSWORD"}, {PNL_VIDEO, "VIDEO"},     {PNL_PVINFO, "PVINFO"},
        {PNL_OTHERS, "OTHERS"},     {PNL_IQ, "IQ"},             {PNL_AE, "AE"},           {PNL_AWB, "AWB"},
        {PNL_PTZFABS, "PTZFABS"},   {PNL_PTZFREL, "PTZFREL"},   {PNL_SF, "SF"},           {PNL_PF, "PF"},
        {PNL_SERVICE, "SERVICE"},   {PNL_CATEFB, "CATEFB"},     {PNL_PET77K, "PET77K"},   {PNL_AWBCALI, "AWBCALI"},
    };
    for (const Expected &p : panels) {
        const int handle = load(p.id);
        ASSERT_GT(handle, 0) << p.name;
        DisplayPanel(handle);
        ProcessDrawEvents();
        int width = 0, height = 0;
        GetPanelAttribute(handle, ATTR_WIDTH, &width);
        GetPanelAttribute(handle, ATTR_HEIGHT, &height);
        const QImage image = grabPanel(handle);
        ASSERT_FALSE(image.isNull()) << p.name;
        EXPECT_EQ(image.size() / image.devicePixelRatio(), QSize(width, height)) << p.name;
        save(image, QString("%1_%2").arg(p.id, 2, 10, QChar('0')).arg(p.name));
    }
}

TEST_F(Screenshots, EngineeringViewWithTabsAndConsole) {
    const int main = loadAndShow(PNL_MAIN);
    SetPanelAttribute(main, ATTR_TITLE, "Video Camera Control AP - v1.51  2018.xx.xx");
    const int row1[] = {PNL_PVINFO, PNL_AE, PNL_AWB, PNL_IQ, PNL_PTZFABS, PNL_PTZFREL, PNL_OTHERS, 0};
    const int row2[] = {PNL_SERVICE, PNL_CATEFB, PNL_PET77K, 0};
    int sheets[10] = {};
    int *row1Handles[] = {&sheets[0], &sheets[1], &sheets[2], &sheets[3], &sheets[4], &sheets[5], &sheets[6]};
    int *row2Handles[] = {&sheets[7], &sheets[8], &sheets[9]};
    EasyTab_ConvertFromCanvas(main, MAIN_TABS);
    ASSERT_EQ(EasyTab_LoadPanels(main, MAIN_TABS, 1, "Main.uir", row1, row1Handles), 0);
    ASSERT_EQ(EasyTab_LoadPanels(main, MAIN_TABS, 2, "Main.uir", row2, row2Handles), 0);
    for (int i = 0; i < 7; ++i) EasyTab_SetTabAttribute(main, MAIN_TABS, sheets[i], EASYTAB_TAB_ATTR_COLOR, MakeColor(192, 192, 192));
    for (int i = 7; i < 9; ++i) EasyTab_SetTabAttribute(main, MAIN_TABS, sheets[i], EASYTAB_TAB_ATTR_COLOR, MakeColor(128, 192, 96));
    EasyTab_SetTabAttribute(main, MAIN_TABS, sheets[9], EASYTAB_TAB_ATTR_COLOR, MakeColor(255, 192, 0));
    EasyTab_SetTabAttribute(main, MAIN_TABS, sheets[9], EASYTAB_TAB_ATTR_LABEL_TEXT, "QM-T77K FW Update AP v1.51");
    EasyTab_SetAttribute(main, MAIN_TABS, EASYTAB_ATTR_ACTIVE_COLOR, MakeColor(128, 0, 255));
    EasyTab_SetAttribute(main, MAIN_TABS, EASYTAB_ATTR_FRAME_COLOR, VAL_BLACK);
    SetCtrlVal(main, MAIN_MSG_EN, 1);
    SetCtrlVal(main, MAIN_CONNECTED, 1);
    const char *lines[] = {">LIB : SET [INITIALIZE]\n", ">AP version : UI = 1.51 \n", ">AP version : Library = 2.3.0.1\n",
                           ">CMND : GET [ERROR]\n", "> - R [0x0050] = 0x00\n", "> - R [0x0060] = ",
                           "0x12, ", "0x34, ", "0x56\n", "> - 韌體檔案不存在 (firmware file missing)\n",
                           "> - done (load file)\n\n"};
    for (const char *line : lines) SetCtrlVal(main, MAIN_CONSOLE, line);
    ProcessDrawEvents();
    const QImage image = grabPanel(main);
    ASSERT_FALSE(image.isNull());
    save(image, "main_engineering");

    // Without the console the window is cut off just below the tabs.
    SetPanelAttribute(main, ATTR_HEIGHT, 310);
    const QImage cut = grabPanel(main);
    EXPECT_EQ(cut.height() / cut.devicePixelRatio(), 310);
    save(cut, "main_console_hidden");
}

TEST_F(Screenshots, ChineseTextOfTheCalibrationPanel) {
    const int cali = loadAndShow(PNL_AWBCALI);
    SetCtrlVal(cali, AWBCALI_RESULT, "校正結果顯示 : PASS");
    SetCtrlVal(cali, AWBCALI_MESSAGE, "校正 : 計算參數並寫入機器...");
    ProcessDrawEvents();
    save(grabPanel(cali), "awbcali_chinese");
}

}  // namespace
}  // namespace vcc::ui::qt::testing
