// The service sheets and the single-model panel when things go wrong: no camera, failed
// reads, a reset that is never acknowledged, a connect that finds nothing. The bytes of the
// good paths are checked by the svc-* scenarios.
#include <string>
#include <vector>

#include "service/PeT77KPanel.h"
#include "service/ServiceCommands.h"
#include "tests/app/ToolFixture.h"

namespace {

class ServicePanel : public ToolTest {
protected:
    void connect() {
        PeT77K_Connect_Callback(gPanels.peT77K, PET77K_CONNECT, EVENT_COMMIT, nullptr, 0, 0);
        ASSERT_TRUE(IsDeviceConnected());
        sim::camera().clearTraffic();
    }
    static int run(CtrlCallbackPtr callback, int panel, int control, int event) {
        return callback(panel, control, event, nullptr, 0, 0);
    }
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
    bool errorLit() { return value(gPanels.main, MAIN_ERROR) == 1; }
    size_t countTraffic(const std::string &line) {
        size_t n = 0;
        for (const std::string &l : sim::camera().traffic()) n += l == line;
        return n;
    }
};

TEST_F(ServicePanel, NoCommandTalksToTheCameraOrTheConsoleWithoutAConnection) {
    struct Row {
        CtrlCallbackPtr callback;
        int PanelHandles::*panel;
        int control;
    };
    const Row rows[] = {
        {MachineSerial_Callback, &PanelHandles::service, SERVICE_MACHINE_SERIAL},
        {PTZAbs_Callback, &PanelHandles::service, SERVICE_PTZ_ABS},
        {CateOrbvis_Callback, &PanelHandles::service, SERVICE_CATE_ORBVIS},
        {Eeprom2K_Callback, &PanelHandles::service, SERVICE_EEPROM2_K},
        {CateFbTimeout_Callback, &PanelHandles::cateFb, CATEFB_CATE_FB_TIMEOUT},
        {CateFbReset_Callback, &PanelHandles::cateFb, CATEFB_CATE_FB_RESET},
        {CateFbAck_Callback, &PanelHandles::cateFb, CATEFB_CATE_FB_ACK},
        {CateFbComplete_Callback, &PanelHandles::cateFb, CATEFB_CATE_FB_COMPLETE},
        {CateFunctionWr_Callback, &PanelHandles::cateFb, CATEFB_CATE_FUNCTION_WR},
        {CateFunctionRd_Callback, &PanelHandles::cateFb, CATEFB_CATE_FUNCTION_RD},
        {PeT77K_DIP1_Callback, &PanelHandles::peT77K, PET77K_DIP1},
        {PeT77K_DIP2_Callback, &PanelHandles::peT77K, PET77K_DIP2},
        {PeT77K_TestPattern_Callback, &PanelHandles::peT77K, PET77K_TEST_PATTERN},
        {PeT77K_MicrophoneCtrl_Callback, &PanelHandles::peT77K, PET77K_MICROPHONE_CTRL},
        {PeT77K_ClearErr_Callback, &PanelHandles::peT77K, PET77K_CLEAR_ERR},
        {PeT77K_GetErr_Callback, &PanelHandles::peT77K, PET77K_GET_ERR},
        {PeT77K_FwVersion_Callback, &PanelHandles::peT77K, PET77K_FW_VERSION},
        {PeT77K_SystemRst_Callback, &PanelHandles::peT77K, PET77K_SYSTEM_RST},
        {PeT77K_MachineSerial_Callback, &PanelHandles::peT77K, PET77K_MACHINE_SERIAL},
        {PeT77K_Eeprom2K_Callback, &PanelHandles::peT77K, PET77K_EEPROM2_K},
        {RefreshPeT77KPnl_Callback, &PanelHandles::peT77K, PET77K_REFRESH_PE_T77_K_PNL},
        {PeT77K_Disconnect_Callback, &PanelHandles::peT77K, PET77K_DISCONNECT},
    };
    const std::string before = console();
    const std::string message = text(gPanels.peT77K, PET77K_UPDATE_MSG);
    for (const Row &row : rows)
        for (int event : {EVENT_COMMIT, EVENT_RIGHT_CLICK, EVENT_LEFT_DOUBLE_CLICK})
            run(row.callback, gPanels.*row.panel, row.control, event);
    EXPECT_TRUE(sim::camera().traffic().empty());
    EXPECT_EQ(console(), before);
    EXPECT_FALSE(errorLit());
    EXPECT_EQ(text(gPanels.peT77K, PET77K_UPDATE_MSG), message);
}

TEST_F(ServicePanel, FailedReadsLightTheLampAndLeaveOrResetTheirFieldsAsTheyShould) {
    connect();
    auto &cam = sim::camera();

    // A failed serial read keeps what the fields held.
    SetCtrlVal(gPanels.service, SERVICE_SERIAL_1, "z");
    cam.failNext(15, 0x01, 3);
    run(MachineSerial_Callback, gPanels.service, SERVICE_MACHINE_SERIAL, EVENT_RIGHT_CLICK);
    EXPECT_EQ(text(gPanels.service, SERVICE_SERIAL_1), "z");
    EXPECT_TRUE(errorLit());

    // The feedback words show zeros after a failure, not the last answer.
    SetCtrlVal(gPanels.cateFb, CATEFB_ACK_2, 0x44);
    cam.failNext(15, 0xFC, 3);
    run(CateFbAck_Callback, gPanels.cateFb, CATEFB_CATE_FB_ACK, EVENT_COMMIT);
    EXPECT_EQ(value(gPanels.cateFb, CATEFB_ACK_2), 0);

    // DIP switches say 0xFF when unread; pattern and microphone keep their value.
    SetCtrlVal(gPanels.peT77K, PET77K_DIP1, 5);
    cam.failNext(5, 0xCF, 3);
    run(PeT77K_DIP1_Callback, gPanels.peT77K, PET77K_DIP1, EVENT_RIGHT_CLICK);
    EXPECT_EQ(value(gPanels.peT77K, PET77K_DIP1), 0xFF);
    SetCtrlVal(gPanels.peT77K, PET77K_MICROPHONE_CTRL, 1);
    cam.failNext(5, 0x36, 3);
    run(PeT77K_MicrophoneCtrl_Callback, gPanels.peT77K, PET77K_MICROPHONE_CTRL, EVENT_RIGHT_CLICK);
    EXPECT_EQ(value(gPanels.peT77K, PET77K_MICROPHONE_CTRL), 1);

    // A version broken off after two characters shows those two; the others still come.
    cam.failNext(5, 0x8C, 3);
    run(PeT77K_FwVersion_Callback, gPanels.peT77K, PET77K_FW_VERSION, EVENT_COMMIT);
    EXPECT_EQ(text(gPanels.peT77K, PET77K_FW_FILE_ISP), "I7");
    EXPECT_EQ(text(gPanels.peT77K, PET77K_FW_FILE_USB), "U77K105 ( B03 )");
    EXPECT_EQ(text(gPanels.peT77K, PET77K_SERIAL_1), "Q");
}

// The panel's reset button is bound to the factory reset at start-up; the system reset is
// reached by its callback only.
TEST_F(ServicePanel, TheSystemResetEndsItsMessageWhateverTheCameraSaysButOnlyAFailureLightsTheLamp) {
    connect();
    run(PeT77K_SystemRst_Callback, gPanels.peT77K, PET77K_SYSTEM_RST, EVENT_COMMIT);
    EXPECT_EQ(text(gPanels.peT77K, PET77K_UPDATE_MSG), "出廠重置設定完畢");
    EXPECT_FALSE(errorLit());
    EXPECT_EQ(countTraffic("W 5 0x00F4 0x00AA"), 1u);

    sim::camera().clearTraffic();
    sim::camera().setNeverAcknowledge(true);
    run(PeT77K_SystemRst_Callback, gPanels.peT77K, PET77K_SYSTEM_RST, EVENT_COMMIT);
    EXPECT_EQ(text(gPanels.peT77K, PET77K_UPDATE_MSG), "出廠重置設定完畢");
    EXPECT_TRUE(errorLit());
    // 16 s at one poll per 300 ms.
    EXPECT_EQ(countTraffic("R 5 0x01F4 0x0000"), 16000u / 300u);
}

TEST_F(ServicePanel, ConnectingWithoutACameraTurnsEverythingOffAndOffersTheSelector) {
    SetCtrlAttribute(gPanels.peT77K, PET77K_APP_BL, ATTR_VISIBLE, 0);
    SetCtrlVal(gPanels.peT77K, PET77K_APP_BL, 1);
    for (int control : {MAIN_ERROR, MAIN_BUSY, MAIN_POWER_UP_DOWN}) SetCtrlVal(gPanels.main, control, 1);
    SetCtrlVal(gPanels.pvInfo, PVINFO_PREVIEW_ON_OFF, 1);
    SetCtrlVal(gPanels.peT77K, PET77K_LAMP, 1);
    sim::camera().unplug();

    run(PeT77K_Connect_Callback, gPanels.peT77K, PET77K_CONNECT, EVENT_COMMIT);
    for (int control : {MAIN_CONNECTED, MAIN_ERROR, MAIN_BUSY, MAIN_POWER_UP_DOWN})
        EXPECT_EQ(value(gPanels.main, control), 0) << control;
    EXPECT_EQ(value(gPanels.pvInfo, PVINFO_PREVIEW_ON_OFF), 0);
    EXPECT_EQ(value(gPanels.peT77K, PET77K_LAMP), 0);
    int visible = 0;
    GetCtrlAttribute(gPanels.peT77K, PET77K_APP_BL, ATTR_VISIBLE, &visible);
    EXPECT_EQ(visible, 1);
    EXPECT_EQ(value(gPanels.peT77K, PET77K_APP_BL), 0);
    EXPECT_NE(console().find(">LIB : GET [DEVICE EXIST]\n> - device not exist\n>LIB : SET [CLOSE]\n"),
              std::string::npos);
}

TEST_F(ServicePanel, TheFirmwareUpdateDisconnectKeepsItsVerdictButClearsItsProgress) {
    connect();
    SetCtrlVal(gPanels.peT77K, PET77K_UPDATE_MSG, "FW is updated and rebooted");
    SetCtrlVal(gPanels.peT77K, PET77K_FAIL, 1);
    SetCtrlVal(gPanels.peT77K, PET77K_PROGRESS, 4096);
    SetCtrlVal(gPanels.peT77K, PET77K_FW_FILE_USB, "QM-T77K_USB_U77K200.bin");
    SetCtrlVal(gPanels.main, MAIN_ERROR, 1);

    PeT77K_VideoCameraConnect_Callback(gPanels.peT77K, PET77K_VIDEO_CAMERA_CONNECT, EVENT_LEFT_DOUBLE_CLICK, nullptr, 0,
                                       kPeT77KKeepUpdateState);
    EXPECT_FALSE(IsDeviceConnected());
    EXPECT_EQ(text(gPanels.peT77K, PET77K_UPDATE_MSG), "FW is updated and rebooted");
    EXPECT_EQ(value(gPanels.peT77K, PET77K_FAIL), 0);
    EXPECT_EQ(value(gPanels.peT77K, PET77K_PROGRESS), 0);
    EXPECT_EQ(text(gPanels.peT77K, PET77K_FW_FILE_USB), "File Name");
    EXPECT_FALSE(errorLit());
    const std::string tail = ">LIB : SET [DISCONNECT DEVICE]\n>LIB : SET [CLOSE]\n";
    const std::string all = console();
    ASSERT_GE(all.size(), tail.size());
    EXPECT_EQ(all.substr(all.size() - tail.size()), tail);
}

}  // namespace
