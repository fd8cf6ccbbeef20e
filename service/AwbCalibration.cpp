// White-balance calibration panel. The calibration state lives in the camera: each light has
// a gain pair and a result code in the category 0x2B record, and the panel only drives the
// steps and shows what it measured, computed and read back. The order start, measure, done
// is the technician's to keep.
#include "service/AwbCalibration.h"

#include <cstdio>
#include <cstring>
#include <initializer_list>

#include "MainUir.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "app/SystemTimer.h"
#include "commands/FunctionList.h"
#include "device/Connection.h"
#include "ui/CallbackRegistry.h"
#include "ui/UserInterface.h"

namespace {

constexpr unsigned char kCalibrationCategory = 0x2B;
constexpr unsigned char kOpWrite = 0x01;
constexpr unsigned char kOpPrepareRead = 0x04;
constexpr unsigned char kMeasurementFunction = 0xF0;

constexpr unsigned char kCodeInitialised = 0x55;
constexpr unsigned char kCodeVerified = 0xAA;
constexpr unsigned char kCodeStoreFault = 0x5A;
constexpr unsigned char kCodeOutOfRange = 0xA5;

constexpr int kGainMin = 239;
constexpr int kGainMax = 275;
// Unity gain, what the EEPROM write's default fill offers.
constexpr int kNeutralGain = 256;

constexpr int kFactoryResetTimeoutMs = 16000;
constexpr int kOnePushTimeoutMs = 18000;

constexpr char kResultPrefix[] = "校正結果顯示 : ";

struct Light {
    const char *name;
    int start, measure, done;
    int measuredR, measuredB, gainR, gainB;
    int numeratorR, numeratorB;
    unsigned char gainFunction, resultFunction;
};

constexpr Light k4000K = {"4000K",
                          AWBCALI_AWB_CALI_4000K_START,
                          AWBCALI_AWB_CALI_4000_K,
                          AWBCALI_AWB_CALI_4000K_DONE,
                          AWBCALI_MEAS_R_4000K,
                          AWBCALI_MEAS_B_4000K,
                          AWBCALI_GAIN_R_4000K,
                          AWBCALI_GAIN_B_4000K,
                          12800000,
                          11264000,
                          0xF1,
                          0xF2};
constexpr Light k6500K = {"6500K",
                          AWBCALI_AWB_CALI_6500K_START,
                          AWBCALI_AWB_CALI_6500_K,
                          AWBCALI_AWB_CALI_6500K_DONE,
                          AWBCALI_MEAS_R_6500K,
                          AWBCALI_MEAS_B_6500K,
                          AWBCALI_GAIN_R_6500K,
                          AWBCALI_GAIN_B_6500K,
                          11776000,
                          13056000,
                          0xF3,
                          0xF4};

constexpr int kStepButtons[] = {AWBCALI_AWB_CALI_4000K_START, AWBCALI_AWB_CALI_4000_K, AWBCALI_AWB_CALI_4000K_DONE,
                                AWBCALI_AWB_CALI_6500K_START, AWBCALI_AWB_CALI_6500_K, AWBCALI_AWB_CALI_6500K_DONE};
constexpr int kEepromButtons[] = {AWBCALI_AWB_CALI_EEPROM_R, AWBCALI_AWB_CALI_EEPROM_W};

int panel() { return gPanels.awbCali; }

int readInt(int control) {
    int value = 0;
    GetCtrlVal(panel(), control, &value);
    return value;
}

void dim(int control, int dimmed) { SetCtrlAttribute(panel(), control, ATTR_DIMMED, dimmed); }

void message(const char *text) { SetCtrlVal(panel(), AWBCALI_MESSAGE, text); }

void lightMessage(const Light &light, const char *what) {
    char text[128];
    std::snprintf(text, sizeof text, "校正 : %s 環境色溫 - %s", light.name, what);
    message(text);
}

void showResult(const char *verdict) {
    char text[64];
    std::snprintf(text, sizeof text, "%s%s", kResultPrefix, verdict);
    SetCtrlVal(panel(), AWBCALI_RESULT, text);
}

unsigned char high(int value) { return static_cast<unsigned char>((value >> 8) & 0xFF); }
unsigned char low(int value) { return static_cast<unsigned char>(value & 0xFF); }
int big16(const unsigned char *bytes) { return bytes[0] * 256 + bytes[1]; }

int writeRecord(unsigned char function, std::initializer_list<unsigned char> payload) {
    ConsolePrintf(">CMND : SET [CATE. WR]\n");
    unsigned char packet[fl::kCategoryPacket] = {kCalibrationCategory, function, kOpWrite};
    std::memcpy(packet + 3, payload.begin(), payload.size());
    return CateWrite(packet);
}

// The answer is all zeros unless both halves of the exchange worked: after a failed prepare
// the camera would answer whatever was prepared before, which may be another function's data.
int readRecord(unsigned char function, unsigned char (&answer)[fl::kCategoryAnswer]) {
    std::memset(answer, 0, sizeof answer);
    ConsolePrintf(">CMND : SET [CATE. WR]\n");
    const unsigned char packet[fl::kCategoryPacket] = {kCalibrationCategory, function, kOpPrepareRead};
    if (!CateWrite(packet)) return 0;
    ConsolePrintf(">CMND : GET [CATE. RD]\n");
    if (CateRead(kCalibrationCategory, answer)) return 1;
    std::memset(answer, 0, sizeof answer);
    return 0;
}

// Integer arithmetic as the camera firmware expects it: truncated, and 0 for no measurement,
// which the range check then rejects.
int gain(int numerator, int measured) { return measured == 0 ? 0 : numerator / measured / 1000; }
bool inRange(int value) { return value >= kGainMin && value <= kGainMax; }

// The read and write buttons follow the enable switch, and stay dimmed without a camera.
void applyEepromSwitch() {
    int on = 0;
    GetCtrlVal(panel(), AWBCALI_AWB_CALI_EEPROM_EN, &on);
    const int dimmed = !(on && IsDeviceConnected());
    for (int control : kEepromButtons) dim(control, dimmed);
}

void dimAllButtons() {
    for (int control : kStepButtons) dim(control, 1);
    for (int control : kEepromButtons) dim(control, 1);
    dim(AWBCALI_AWB_CALI_EEPROM_EN, 1);
    SetCtrlVal(panel(), AWBCALI_AWB_CALI_EEPROM_EN, 0);
}

// A step keeps the technician from starting another one meanwhile. A disconnect clicked
// while the step waited for the camera has already put the panel into its disconnected
// state, which the end of the step must not undo.
template <typename Body> void runStep(int own, Body body) {
    SetCommandBusy(panel(), own, 1);
    for (int control : kStepButtons)
        if (control != own) dim(control, 1);
    for (int control : kEepromButtons) dim(control, 1);
    const int ok = body();
    SetCommandBusy(panel(), own, 0);
    if (IsDeviceConnected()) {
        for (int control : kStepButtons) dim(control, 0);
        AwbCaliEepromEn_Callback(panel(), AWBCALI_AWB_CALI_EEPROM_EN, EVENT_COMMIT, nullptr, 0, 0);
    } else {
        dimAllButtons();
    }
    if (!ok) SetErrorIndicator();
}

template <typename Body> void runEeprom(int own, Body body) {
    SetCommandBusy(panel(), own, 1);
    for (int control : kEepromButtons) dim(control, 1);
    const int ok = body();
    SetCommandBusy(panel(), own, 0);
    if (IsDeviceConnected())
        applyEepromSwitch();
    else
        dimAllButtons();
    if (!ok) SetErrorIndicator();
}

bool connectedCommit(int event) { return event == EVENT_COMMIT && IsDeviceConnected(); }

// ---- the three steps -----------------------------------------------------------------------------------

int startStep(const Light &light) {
    showResult("");
    ProcessDrawEvents();
    message("出廠重置設定... ");
    // The technician knows this step as the system reset; the camera needs the factory
    // settings, so that no earlier white-balance tuning leaks into the measurement.
    ConsolePrintf(">CMND : SET [SYSTEM RESET]\n");
    int ok = TriggerCommand("FACTORY RESET", kFactoryResetTimeoutMs);
    if (ok) {
        message("設定AWB Mode = 手動");
        ConsolePrintf(">CMND : SET [AWB MODE] = OFF\n");
        ok = SetCommand("AWB MODE", 0);
    }
    if (!ok) {
        message("AWB 校正 : 初始化失敗 ");
        return 0;
    }
    const int marked = writeRecord(light.resultFunction, {kCodeInitialised});
    message("AWB 校正 : 初始化成功 ");
    return marked;
}

int measureStep(const Light &light) {
    showResult("");
    ProcessDrawEvents();
    lightMessage(light, "WB onepush");
    ConsolePrintf(">CMND : SET [WB ONE PUSH]\n");
    if (!TriggerCommand("WB ONE PUSH", kOnePushTimeoutMs)) {
        lightMessage(light, "失敗");
        return 0;
    }
    lightMessage(light, "讀取 R / B");
    unsigned char answer[fl::kCategoryAnswer];
    const int ok = readRecord(kMeasurementFunction, answer);
    // Zeros after a failed read rather than the last light's values, so that a done step on
    // them ends out of range instead of storing gains of another light.
    SetCtrlVal(panel(), light.measuredR, big16(answer));
    SetCtrlVal(panel(), light.measuredB, big16(answer + 2));
    lightMessage(light, "完成");
    return ok;
}

int doneStep(const Light &light) {
    showResult("");
    ProcessDrawEvents();
    message("校正 : 計算參數並寫入機器...");
    const int gainR = gain(light.numeratorR, readInt(light.measuredR));
    const int gainB = gain(light.numeratorB, readInt(light.measuredB));
    SetCtrlVal(panel(), light.gainR, gainR);
    SetCtrlVal(panel(), light.gainB, gainB);

    // Stored before the range check, so the camera keeps what was computed even when the
    // result code says it is unusable.
    int ok = writeRecord(light.gainFunction, {high(gainR), low(gainR), high(gainB), low(gainB)});
    if (!inRange(gainR) || !inRange(gainB)) {
        ok &= writeRecord(light.resultFunction, {kCodeOutOfRange});
        message("校正 : 結束 - 失敗 (計算值超出範圍)");
        showResult("NG");
        return ok;
    }
    unsigned char answer[fl::kCategoryAnswer];
    ok &= readRecord(light.gainFunction, answer);
    if (big16(answer) == gainR && big16(answer + 2) == gainB) {
        ok &= writeRecord(light.resultFunction, {kCodeVerified});
        message("校正 : 結束 - 成功 ");
        showResult("OK");
    } else {
        ok &= writeRecord(light.resultFunction, {kCodeStoreFault});
        message("校正 : 結束 - 失敗 (參數儲存異常)");
        showResult("NG");
    }
    return ok;
}

// ---- connection ------------------------------------------------------------------------------------------

void stopPreviewIfRunning() {
    if (!IsPreviewOn()) return;
    if (CtrlCallbackPtr quit = vcc::ui::findCallback("PreviewQuit_Callback"))
        quit(gPanels.video, 0, EVENT_CLOSE, nullptr, 0, 0);
}

void releaseCamera() {
    stopPreviewIfRunning();
    ConsolePrintf(">LIB : SET [CLOSE]\n");
    LibRelease();
    for (int control : {MAIN_CONNECTED, MAIN_ERROR, MAIN_BUSY, MAIN_POWER_UP_DOWN}) SetCtrlVal(gPanels.main, control, 0);
    SetCtrlVal(gPanels.pvInfo, PVINFO_PREVIEW_ON_OFF, 0);
    SetCtrlVal(gPanels.peT77K, PET77K_LAMP, 0);
    SetCtrlVal(panel(), AWBCALI_LAMP, 0);
    ClearErrorBlinkLatch();
    dimAllButtons();
    showResult("");
}

void connect() {
    ConsolePrintf(">LIB : GET [DEVICE EXIST]\n");
    if (!LibDeviceExists()) {
        ConsolePrintf("> - device not exist\n");
        releaseCamera();
        return;
    }
    // A fresh console per camera: the calibration transcript starts with this connection.
    StatusMsgClear_Callback(gPanels.main, MAIN_STATUS_MSG_CLEAR, EVENT_COMMIT, nullptr, 0, 0);
    SetCtrlVal(gPanels.main, MAIN_CONNECTED, 1);
    SetCtrlVal(gPanels.peT77K, PET77K_LAMP, 1);
    ConsolePrintf(">LIB : GET [DEVICE NAME]\n");
    LibGetDeviceName(gDeviceName, sizeof gDeviceName);
    SetCtrlVal(gPanels.pvInfo, PVINFO_DEVICE_NAME, gDeviceName);
    SetCtrlVal(gPanels.peT77K, PET77K_DEVICE_NAME, gDeviceName);
    SetCtrlVal(gPanels.peT77K, PET77K_CONN_TEXT, "  連線  ");
    SetCtrlVal(panel(), AWBCALI_CONN_TEXT, "  連線  ");
    SetCtrlVal(panel(), AWBCALI_LAMP, 1);
    SetCtrlVal(gPanels.main, MAIN_MSG_EN, 1);
    MsgEn_Callback(gPanels.main, MAIN_MSG_EN, EVENT_COMMIT, nullptr, 0, 0);
    // A calibration begins with a start step; measure and done become usable after one.
    for (int control : kStepButtons) dim(control, 1);
    for (int control : kEepromButtons) dim(control, 1);
    for (int control : {k4000K.start, k6500K.start, AWBCALI_AWB_CALI_EEPROM_EN}) dim(control, 0);
    SetCtrlVal(panel(), AWBCALI_AWB_CALI_EEPROM_EN, 0);
    showResult("");
}

void disconnect() {
    ConsolePrintf(">LIB : SET [DISCONNECT DEVICE]\n");
    releaseCamera();
    SetCtrlVal(gPanels.peT77K, PET77K_DEVICE_NAME, "USB 裝置名稱");
    SetCtrlVal(gPanels.peT77K, PET77K_CONN_TEXT, "  斷線  ");
    SetCtrlVal(panel(), AWBCALI_CONN_TEXT, "  斷線  ");
    message("AWB 校正訊息顯示");
    // What was measured belonged to that camera; the stored values stay for the next one.
    for (const Light *light : {&k4000K, &k6500K})
        for (int control : {light->measuredR, light->measuredB, light->gainR, light->gainB})
            SetCtrlVal(panel(), control, 0);
}

}  // namespace

int PeT77K_AwbCali_VideoCameraConnect_Callback(int, int, int event, void *, int, int) {
    if (event == EVENT_RIGHT_CLICK && !IsDeviceConnected())
        connect();
    else if (event == EVENT_LEFT_DOUBLE_CLICK && IsDeviceConnected())
        disconnect();
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_AwbCali_VideoCameraConnect_Callback);

// ---- steps ---------------------------------------------------------------------------------------------------

int PeT77K_AwbCali_4000kStart_Callback(int, int, int event, void *, int, int) {
    if (connectedCommit(event)) runStep(k4000K.start, [] { return startStep(k4000K); });
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_AwbCali_4000kStart_Callback);

int PeT77K_AwbCali_6500kStart_Callback(int, int, int event, void *, int, int) {
    if (connectedCommit(event)) runStep(k6500K.start, [] { return startStep(k6500K); });
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_AwbCali_6500kStart_Callback);

int PeT77K_AwbCali_4000K_Callback(int, int, int event, void *, int, int) {
    if (connectedCommit(event)) runStep(k4000K.measure, [] { return measureStep(k4000K); });
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_AwbCali_4000K_Callback);

int PeT77K_AwbCali_6500K_Callback(int, int, int event, void *, int, int) {
    if (connectedCommit(event)) runStep(k6500K.measure, [] { return measureStep(k6500K); });
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_AwbCali_6500K_Callback);

int PeT77K_AwbCali_4000kDone_Callback(int, int, int event, void *, int, int) {
    if (connectedCommit(event)) runStep(k4000K.done, [] { return doneStep(k4000K); });
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_AwbCali_4000kDone_Callback);

int PeT77K_AwbCali_6500kDone_Callback(int, int, int event, void *, int, int) {
    if (connectedCommit(event)) runStep(k6500K.done, [] { return doneStep(k6500K); });
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_AwbCali_6500kDone_Callback);

// ---- stored record -----------------------------------------------------------------------------------------

int PeT77K_AwbCali_EepromR_Callback(int, int, int event, void *, int, int) {
    if (!connectedCommit(event)) return 0;
    runEeprom(AWBCALI_AWB_CALI_EEPROM_R, [] {
        message("校正 : 讀取 EEPROM 參數值");
        struct Read {
            unsigned char function;
            int first, second;  // the second field takes bytes 2-3; 0 for a one-byte result code
        };
        const Read reads[] = {
            {k4000K.gainFunction, AWBCALI_STORED_GAIN_R_4000K, AWBCALI_STORED_GAIN_B_4000K},
            {k6500K.gainFunction, AWBCALI_STORED_GAIN_R_6500K, AWBCALI_STORED_GAIN_B_6500K},
            {k4000K.resultFunction, AWBCALI_STORED_RESULT_4000K, 0},
            {k6500K.resultFunction, AWBCALI_STORED_RESULT_6500K, 0},
        };
        int ok = 1;
        for (const Read &read : reads) {
            unsigned char answer[fl::kCategoryAnswer];
            // A failed read keeps the field: it may hold values the technician typed in.
            if (!readRecord(read.function, answer)) {
                ok = 0;
                continue;
            }
            if (read.second) {
                SetCtrlVal(panel(), read.first, big16(answer));
                SetCtrlVal(panel(), read.second, big16(answer + 2));
            } else {
                SetCtrlVal(panel(), read.first, static_cast<int>(answer[0]));
            }
        }
        message("校正 : 讀取 EEPROM 參數值 - 完成");
        return ok;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_AwbCali_EepromR_Callback);

int PeT77K_AwbCali_EepromW_Callback(int, int, int event, void *, int, int) {
    if (event == EVENT_RIGHT_CLICK && IsDeviceConnected()) {
        for (int control : {AWBCALI_STORED_GAIN_R_4000K, AWBCALI_STORED_GAIN_B_4000K, AWBCALI_STORED_GAIN_R_6500K,
                            AWBCALI_STORED_GAIN_B_6500K})
            SetCtrlVal(panel(), control, kNeutralGain);
        for (int control : {AWBCALI_STORED_RESULT_4000K, AWBCALI_STORED_RESULT_6500K})
            SetCtrlVal(panel(), control, static_cast<int>(kCodeVerified));
        return 0;
    }
    if (!connectedCommit(event)) return 0;
    runEeprom(AWBCALI_AWB_CALI_EEPROM_W, [] {
        message("校正 : 寫入 EEPROM 參數值");
        const int r4000 = readInt(AWBCALI_STORED_GAIN_R_4000K), b4000 = readInt(AWBCALI_STORED_GAIN_B_4000K);
        const int r6500 = readInt(AWBCALI_STORED_GAIN_R_6500K), b6500 = readInt(AWBCALI_STORED_GAIN_B_6500K);
        const int code4000 = readInt(AWBCALI_STORED_RESULT_4000K), code6500 = readInt(AWBCALI_STORED_RESULT_6500K);
        int ok = writeRecord(k4000K.gainFunction, {high(r4000), low(r4000), high(b4000), low(b4000)});
        ok &= writeRecord(k6500K.gainFunction, {high(r6500), low(r6500), high(b6500), low(b6500)});
        ok &= writeRecord(k4000K.resultFunction, {low(code4000)});
        ok &= writeRecord(k6500K.resultFunction, {low(code6500)});
        message("校正 : 寫入 EEPROM 參數值 - 完成");
        return ok;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PeT77K_AwbCali_EepromW_Callback);

int AwbCaliEepromEn_Callback(int, int, int event, void *, int, int) {
    if (connectedCommit(event)) applyEepromSwitch();
    return 0;
}
VCC_REGISTER_CALLBACK(AwbCaliEepromEn_Callback);
