// The white-balance calibration panel through its callbacks: the gain window's edges, the
// handshake time-outs, the enabling around the steps, and what survives failed reads. The
// bytes of whole calibrations are checked by the awbcali-* scenarios.
#include <cstdio>
#include <string>

#include "service/AwbCalibration.h"
#include "tests/app/ToolFixture.h"

namespace {

class AwbCalibration : public ToolTest {
protected:
    int panel() const { return gPanels.awbCali; }
    void connect() {
        PeT77K_AwbCali_VideoCameraConnect_Callback(panel(), AWBCALI_AWB_CALI_VIDEO_CAMERA_CONNECT, EVENT_RIGHT_CLICK,
                                                   nullptr, 0, 0);
        ASSERT_TRUE(IsDeviceConnected());
        sim::camera().clearTraffic();
    }
    void run(CtrlCallbackPtr callback, int control, int event = EVENT_COMMIT) {
        callback(panel(), control, event, nullptr, 0, 0);
    }
    int value(int control, int onPanel = 0) {
        int v = 0;
        GetCtrlVal(onPanel ? onPanel : panel(), control, &v);
        return v;
    }
    std::string text(int control) {
        char t[256] = "";
        GetCtrlVal(panel(), control, t);
        return t;
    }
    bool errorLit() { return value(MAIN_ERROR, gPanels.main) == 1; }
    size_t countTraffic(const std::string &line) {
        size_t n = 0;
        for (const std::string &l : sim::camera().traffic()) n += l == line;
        return n;
    }
    std::string lastTraffic() {
        const auto traffic = sim::camera().traffic();
        return traffic.empty() ? std::string() : traffic.back();
    }
};

// The record write of function F with first payload byte P, as the traffic record shows it.
std::string recordWrite(int function, int payload) {
    char line[160];
    std::snprintf(line, sizeof line, "WB 15 0x00FE 27 2B %02X 01 %02X", function, payload);
    std::string s = line;
    for (int i = 0; i < 23; ++i) s += " 00";
    return s;
}

TEST_F(AwbCalibration, NothingTalksToTheCameraWithoutAConnection) {
    const std::string before = console();
    SetCtrlVal(panel(), AWBCALI_STORED_GAIN_R_4000K, 7);
    const struct {
        CtrlCallbackPtr callback;
        int control;
    } rows[] = {
        {PeT77K_AwbCali_4000kStart_Callback, AWBCALI_AWB_CALI_4000K_START},
        {PeT77K_AwbCali_6500kStart_Callback, AWBCALI_AWB_CALI_6500K_START},
        {PeT77K_AwbCali_4000K_Callback, AWBCALI_AWB_CALI_4000_K},
        {PeT77K_AwbCali_6500K_Callback, AWBCALI_AWB_CALI_6500_K},
        {PeT77K_AwbCali_4000kDone_Callback, AWBCALI_AWB_CALI_4000K_DONE},
        {PeT77K_AwbCali_6500kDone_Callback, AWBCALI_AWB_CALI_6500K_DONE},
        {PeT77K_AwbCali_EepromR_Callback, AWBCALI_AWB_CALI_EEPROM_R},
        {PeT77K_AwbCali_EepromW_Callback, AWBCALI_AWB_CALI_EEPROM_W},
        {AwbCaliEepromEn_Callback, AWBCALI_AWB_CALI_EEPROM_EN},
    };
    for (const auto &row : rows)
        for (int event : {EVENT_COMMIT, EVENT_RIGHT_CLICK, EVENT_LEFT_DOUBLE_CLICK}) run(row.callback, row.control, event);
    // A disconnect request without a connection is ignored too.
    run(PeT77K_AwbCali_VideoCameraConnect_Callback, AWBCALI_AWB_CALI_VIDEO_CAMERA_CONNECT, EVENT_LEFT_DOUBLE_CLICK);
    EXPECT_TRUE(sim::camera().traffic().empty());
    EXPECT_EQ(console(), before);
    EXPECT_FALSE(errorLit());
    EXPECT_EQ(value(AWBCALI_STORED_GAIN_R_4000K), 7);  // no default fill either
    EXPECT_EQ(text(AWBCALI_MESSAGE), "AWB 校正訊息顯示");
}

TEST_F(AwbCalibration, GainsAreAcceptedFrom239To275AndStoredEvenWhenRejected) {
    connect();
    const struct {
        int measuredR;
        int gain;
        bool accepted;
    } cases[] = {{50, 256, true}, {47, 272, true}, {46, 278, false}, {53, 241, true}, {54, 237, false}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.measuredR);
        sim::camera().clearTraffic();
        SetCtrlVal(panel(), AWBCALI_MEAS_R_4000K, c.measuredR);
        SetCtrlVal(panel(), AWBCALI_MEAS_B_4000K, 44);
        run(PeT77K_AwbCali_4000kDone_Callback, AWBCALI_AWB_CALI_4000K_DONE);
        EXPECT_EQ(value(AWBCALI_GAIN_R_4000K), c.gain);
        EXPECT_EQ(value(AWBCALI_GAIN_B_4000K), 256);
        const auto traffic = sim::camera().traffic();
        ASSERT_FALSE(traffic.empty());
        // The gains go out first, whatever the verdict.
        char gains[40];
        std::snprintf(gains, sizeof gains, "WB 15 0x00FE 27 2B F1 01 %02X %02X 01 00", c.gain >> 8, c.gain & 0xFF);
        EXPECT_EQ(traffic.front().substr(0, 36), gains);
        EXPECT_EQ(lastTraffic(), recordWrite(0xF2, c.accepted ? 0xAA : 0xA5));
        EXPECT_EQ(text(AWBCALI_RESULT), std::string("校正結果顯示 : ") + (c.accepted ? "OK" : "NG"));
        // A rejected gain is not read back for verification.
        EXPECT_EQ(countTraffic("WB 15 0x00FF 1 2B"), c.accepted ? 1u : 0u);
    }
    EXPECT_FALSE(errorLit());
}

TEST_F(AwbCalibration, HandshakesWaitSixteenSecondsForTheResetAndEighteenForTheOnePush) {
    connect();
    sim::camera().setNeverAcknowledge(true);
    run(PeT77K_AwbCali_6500kStart_Callback, AWBCALI_AWB_CALI_6500K_START);
    EXPECT_EQ(countTraffic("R 5 0x0111 0x0000"), 16000u / 300u);
    EXPECT_EQ(text(AWBCALI_MESSAGE), "AWB 校正 : 初始化失敗 ");
    EXPECT_EQ(countTraffic("W 5 0x00DA 0x0000"), 0u);
    EXPECT_TRUE(errorLit());

    sim::camera().clearTraffic();
    SetCtrlVal(panel(), AWBCALI_MEAS_B_6500K, 51);
    run(PeT77K_AwbCali_6500K_Callback, AWBCALI_AWB_CALI_6500_K);
    EXPECT_EQ(countTraffic("R 5 0x0102 0x0000"), 18000u / 300u);
    EXPECT_EQ(text(AWBCALI_MESSAGE), "校正 : 6500K 環境色溫 - 失敗");
    EXPECT_EQ(value(AWBCALI_MEAS_B_6500K), 51);
    EXPECT_EQ(lastTraffic(), "R 5 0x0102 0x0000");
}

// What the panel looked like when the one-push went out, seen from the console echo.
struct DuringStep {
    static inline bool seen = false;
    static inline bool ownDimmed = false, othersDimmed = false, eepromDimmed = false, busy = false;
    static void listen(const char *text) {
        if (std::string(text).find("[WB ONE PUSH]") == std::string::npos) return;
        seen = true;
        auto isDimmed = [](int control) {
            int d = 0;
            GetCtrlAttribute(gPanels.awbCali, control, ATTR_DIMMED, &d);
            return d != 0;
        };
        ownDimmed = isDimmed(AWBCALI_AWB_CALI_6500_K);
        othersDimmed = true;
        for (int control : {AWBCALI_AWB_CALI_4000K_START, AWBCALI_AWB_CALI_4000_K, AWBCALI_AWB_CALI_4000K_DONE,
                            AWBCALI_AWB_CALI_6500K_START, AWBCALI_AWB_CALI_6500K_DONE})
            othersDimmed &= isDimmed(control);
        eepromDimmed = isDimmed(AWBCALI_AWB_CALI_EEPROM_R) && isDimmed(AWBCALI_AWB_CALI_EEPROM_W);
        int b = 0;
        GetCtrlVal(gPanels.main, MAIN_BUSY, &b);
        busy = b == 1;
    }
};

TEST_F(AwbCalibration, WhileAStepRunsEveryOtherStepAndBothEepromButtonsAreDimmed) {
    connect();
    SetCtrlVal(panel(), AWBCALI_AWB_CALI_EEPROM_EN, 1);
    for (int control : {AWBCALI_AWB_CALI_4000_K, AWBCALI_AWB_CALI_EEPROM_R, AWBCALI_AWB_CALI_EEPROM_W})
        SetCtrlAttribute(panel(), control, ATTR_DIMMED, 0);
    sim::camera().setLight(6500);
    DuringStep::seen = false;
    SetConsoleListener(DuringStep::listen);
    run(PeT77K_AwbCali_6500K_Callback, AWBCALI_AWB_CALI_6500_K);
    SetConsoleListener(nullptr);
    ASSERT_TRUE(DuringStep::seen);
    EXPECT_TRUE(DuringStep::ownDimmed);
    EXPECT_TRUE(DuringStep::othersDimmed);
    EXPECT_TRUE(DuringStep::eepromDimmed);
    EXPECT_TRUE(DuringStep::busy);
    EXPECT_EQ(value(AWBCALI_MEAS_R_6500K), 46);
    EXPECT_EQ(value(AWBCALI_MEAS_B_6500K), 51);
    // Afterwards the switch, still on, gives the EEPROM buttons back.
    EXPECT_FALSE(dimmed(panel(), AWBCALI_AWB_CALI_EEPROM_R));
    EXPECT_FALSE(value(MAIN_BUSY, gPanels.main));
}

TEST_F(AwbCalibration, AfterAStepTheStepsAreUsableAndTheEepromButtonsFollowTheSwitch) {
    connect();
    const int steps[] = {AWBCALI_AWB_CALI_4000K_START, AWBCALI_AWB_CALI_4000_K, AWBCALI_AWB_CALI_4000K_DONE,
                         AWBCALI_AWB_CALI_6500K_START, AWBCALI_AWB_CALI_6500_K, AWBCALI_AWB_CALI_6500K_DONE};
    for (int control : steps) EXPECT_EQ(dimmed(panel(), control), control != AWBCALI_AWB_CALI_4000K_START &&
                                                                     control != AWBCALI_AWB_CALI_6500K_START);
    EXPECT_TRUE(dimmed(panel(), AWBCALI_AWB_CALI_EEPROM_R));
    EXPECT_FALSE(dimmed(panel(), AWBCALI_AWB_CALI_EEPROM_EN));

    SetCtrlVal(panel(), AWBCALI_MEAS_R_4000K, 50);
    SetCtrlVal(panel(), AWBCALI_MEAS_B_4000K, 44);
    run(PeT77K_AwbCali_4000kDone_Callback, AWBCALI_AWB_CALI_4000K_DONE);
    for (int control : steps) EXPECT_FALSE(dimmed(panel(), control)) << control;
    EXPECT_TRUE(dimmed(panel(), AWBCALI_AWB_CALI_EEPROM_R));
    EXPECT_TRUE(dimmed(panel(), AWBCALI_AWB_CALI_EEPROM_W));
    EXPECT_FALSE(value(MAIN_BUSY, gPanels.main));

    SetCtrlVal(panel(), AWBCALI_AWB_CALI_EEPROM_EN, 1);
    run(PeT77K_AwbCali_4000kDone_Callback, AWBCALI_AWB_CALI_4000K_DONE);
    EXPECT_FALSE(dimmed(panel(), AWBCALI_AWB_CALI_EEPROM_R));
    EXPECT_FALSE(dimmed(panel(), AWBCALI_AWB_CALI_EEPROM_W));
    run(PeT77K_AwbCali_EepromW_Callback, AWBCALI_AWB_CALI_EEPROM_W);
    EXPECT_FALSE(dimmed(panel(), AWBCALI_AWB_CALI_EEPROM_R));
    EXPECT_FALSE(dimmed(panel(), AWBCALI_AWB_CALI_EEPROM_W));
    EXPECT_FALSE(errorLit());

    // A disconnect dims everything and turns the switch off; the stored values stay.
    SetCtrlVal(panel(), AWBCALI_STORED_GAIN_B_6500K, 300);
    run(PeT77K_AwbCali_VideoCameraConnect_Callback, AWBCALI_AWB_CALI_VIDEO_CAMERA_CONNECT, EVENT_LEFT_DOUBLE_CLICK);
    for (int control : steps) EXPECT_TRUE(dimmed(panel(), control)) << control;
    EXPECT_TRUE(dimmed(panel(), AWBCALI_AWB_CALI_EEPROM_W));
    EXPECT_TRUE(dimmed(panel(), AWBCALI_AWB_CALI_EEPROM_EN));
    EXPECT_EQ(value(AWBCALI_AWB_CALI_EEPROM_EN), 0);
    EXPECT_EQ(value(AWBCALI_GAIN_R_4000K), 0);
    EXPECT_EQ(value(AWBCALI_STORED_GAIN_B_6500K), 300);
}

TEST_F(AwbCalibration, AFailedStoredReadKeepsItsFieldsAndTheOthersStillRun) {
    connect();
    SetCtrlVal(panel(), AWBCALI_STORED_GAIN_R_4000K, 111);
    SetCtrlVal(panel(), AWBCALI_STORED_GAIN_B_4000K, 222);
    // The first prepare write fails in all its attempts; its read is then not asked for.
    sim::camera().failNext(15, 0xFE, 3);
    run(PeT77K_AwbCali_EepromR_Callback, AWBCALI_AWB_CALI_EEPROM_R);
    EXPECT_EQ(value(AWBCALI_STORED_GAIN_R_4000K), 111);
    EXPECT_EQ(value(AWBCALI_STORED_GAIN_B_4000K), 222);
    EXPECT_EQ(countTraffic("WB 15 0x00FF 1 2B"), 3u);
    EXPECT_EQ(text(AWBCALI_MESSAGE), "校正 : 讀取 EEPROM 參數值 - 完成");
    EXPECT_TRUE(errorLit());
}

}  // namespace
