// Service and category feedback panels. Every block is built in a zeroed buffer, so bytes
// that no field names go out as 0; numbers travel big-endian (the command set packs them).
#include "service/ServiceCommands.h"

#include <cstring>

#include "MainUir.h"
#include "app/LogFunc.h"
#include "commands/FunctionList.h"
#include "ui/CallbackRegistry.h"
#include "ui/UserInterface.h"

namespace {

constexpr SerialFieldIds kServiceSerial = {
    SERVICE_SERIAL_1,  SERVICE_SERIAL_2,  SERVICE_SERIAL_3,  SERVICE_SERIAL_4,  SERVICE_SERIAL_5,  SERVICE_SERIAL_6,
    SERVICE_SERIAL_7,  SERVICE_SERIAL_8,  SERVICE_SERIAL_9,  SERVICE_SERIAL_10, SERVICE_SERIAL_11, SERVICE_SERIAL_12,
    SERVICE_SERIAL_13, SERVICE_SERIAL_14, SERVICE_SERIAL_15, SERVICE_SERIAL_16,
};
constexpr int kPtzR[9] = {SERVICE_PTZ_R1, SERVICE_PTZ_R2, SERVICE_PTZ_R3, SERVICE_PTZ_R4, SERVICE_PTZ_R5,
                          SERVICE_PTZ_R6, SERVICE_PTZ_R7, SERVICE_PTZ_R8, SERVICE_PTZ_R9};
constexpr int kPtzS[6] = {SERVICE_PTZ_S1, SERVICE_PTZ_S2, SERVICE_PTZ_S3,
                          SERVICE_PTZ_S4, SERVICE_PTZ_S5, SERVICE_PTZ_S6};
constexpr int kOrbvis[3] = {SERVICE_ORBVIS_B1, SERVICE_ORBVIS_B2, SERVICE_ORBVIS_B3};
constexpr int kAck[4] = {CATEFB_ACK_1, CATEFB_ACK_2, CATEFB_ACK_3, CATEFB_ACK_4};
constexpr int kComplete[4] = {CATEFB_COMPLETE_1, CATEFB_COMPLETE_2, CATEFB_COMPLETE_3, CATEFB_COMPLETE_4};
constexpr int kWrite[26] = {
    CATEFB_WR_1,  CATEFB_WR_2,  CATEFB_WR_3,  CATEFB_WR_4,  CATEFB_WR_5,  CATEFB_WR_6,  CATEFB_WR_7,
    CATEFB_WR_8,  CATEFB_WR_9,  CATEFB_WR_10, CATEFB_WR_11, CATEFB_WR_12, CATEFB_WR_13, CATEFB_WR_14,
    CATEFB_WR_15, CATEFB_WR_16, CATEFB_WR_17, CATEFB_WR_18, CATEFB_WR_19, CATEFB_WR_20, CATEFB_WR_21,
    CATEFB_WR_22, CATEFB_WR_23, CATEFB_WR_24, CATEFB_WR_25, CATEFB_WR_26,
};
constexpr int kRead[26] = {
    CATEFB_RD_1,  CATEFB_RD_2,  CATEFB_RD_3,  CATEFB_RD_4,  CATEFB_RD_5,  CATEFB_RD_6,  CATEFB_RD_7,
    CATEFB_RD_8,  CATEFB_RD_9,  CATEFB_RD_10, CATEFB_RD_11, CATEFB_RD_12, CATEFB_RD_13, CATEFB_RD_14,
    CATEFB_RD_15, CATEFB_RD_16, CATEFB_RD_17, CATEFB_RD_18, CATEFB_RD_19, CATEFB_RD_20, CATEFB_RD_21,
    CATEFB_RD_22, CATEFB_RD_23, CATEFB_RD_24, CATEFB_RD_25, CATEFB_RD_26,
};

int readInt(int panel, int control) {
    int value = 0;
    GetCtrlVal(panel, control, &value);
    return value;
}

unsigned char readByte(int panel, int control) { return static_cast<unsigned char>(readInt(panel, control)); }

// Commands act on a commit (and some on the read-back event) and only with a camera.
bool wanted(int event, bool readBack = false) {
    return (event == EVENT_COMMIT || (readBack && event == EVENT_RIGHT_CLICK)) && IsDeviceConnected();
}

template <size_t N> void showBytes(int panel, const int (&fields)[N], const unsigned char *bytes) {
    for (size_t i = 0; i < N; ++i) SetCtrlVal(panel, fields[i], static_cast<int>(bytes[i]));
}

// The acknowledge and completion words: shown even after a failed read, then as zeros.
int readFeedback(int panel, const char *name, int (*read)(unsigned char *), const int (&fields)[4]) {
    ConsolePrintf(">CMND : SET [%s]\n", name);
    unsigned char bytes[4] = {};
    const int ok = read(bytes);
    if (!ok) std::memset(bytes, 0, sizeof bytes);
    showBytes(panel, fields, bytes);
    return ok;
}

}  // namespace

// ---- shared with the single-model panel ------------------------------------------------------------

int SendMachineSerial(int panel, const SerialFieldIds &fields) {
    char serial[17] = {};
    for (int i = 0; i < 16; ++i) {
        char field[256] = "";
        GetCtrlVal(panel, fields[i], field);
        serial[i] = field[0];
    }
    // The echo stops at the first empty field; the camera still gets all 16 bytes.
    ConsolePrintf(">CMND : SET [MACHINE SERIAL] = %s\n", serial);
    return MachineSerialSet(serial);
}

void ShowMachineSerial(int panel, const SerialFieldIds &fields, const char serial[16]) {
    for (int i = 0; i < 16; ++i) {
        const char one[2] = {serial[i], '\0'};
        SetCtrlVal(panel, fields[i], one);
    }
}

int ReadMachineSerial(int panel, const SerialFieldIds &fields) {
    ConsolePrintf(">CMND : GET [MACHINE SERIAL]\n");
    char serial[16] = {};
    if (!MachineSerialGet(serial)) return 0;
    ShowMachineSerial(panel, fields, serial);
    return 1;
}

int RunEeprom2K(int panel, int addressControl, int dataControl, int operationControl, EepromFlavour flavour) {
    const auto address = static_cast<unsigned short>(readInt(panel, addressControl));
    const unsigned char data = readByte(panel, dataControl);
    const int operation = readInt(panel, operationControl);
    const bool singleModel = flavour == EepromFlavour::SingleModel;

    unsigned char packet[fl::kCategoryPacket];
    ConsolePrintf(">CMND : SET [EEPROM 2K] = ");
    switch (operation) {
    case fl::kEepromWrite: {
        ConsolePrintf("WRITE [0x%03X] 0x%X\n", address, data);
        Eeprom2KPacket(address, data, fl::kEepromWrite, packet);
        int ok = CateWrite(packet);
        // On the single-model panel a write is never left unsaved: the camera would lose it
        // at its next boot.
        if (singleModel) {
            ConsolePrintf("SAVE ALL\n");
            Eeprom2KPacket(address, data, fl::kEepromSaveAll, packet);
            ok &= CateWrite(packet);
        }
        return ok;
    }
    case fl::kEepromSaveAll:
    case fl::kEepromDefaultAll:
        if (singleModel) break;
        ConsolePrintf(operation == fl::kEepromSaveAll ? "SAVE ALL\n" : "DEFAULT ALL\n");
        Eeprom2KPacket(address, data, static_cast<unsigned char>(operation), packet);
        return CateWrite(packet);
    case fl::kEepromRead: {
        ConsolePrintf("READ [0x%03X]\n", address);
        unsigned char value = 0;
        if (!Eeprom2K(address, data, fl::kEepromRead, &value)) return 0;
        SetCtrlVal(panel, dataControl, static_cast<int>(value));
        return 1;
    }
    default:
        break;
    }
    ConsolePrintf("UNKNOWN\n");
    return 1;
}

// ---- service panel -----------------------------------------------------------------------------------

int MachineSerial_Callback(int panel, int control, int event, void *, int, int) {
    if (!wanted(event, true)) return 0;
    RunServiceCommand(panel, control, [&] {
        return event == EVENT_COMMIT ? SendMachineSerial(panel, kServiceSerial) : ReadMachineSerial(panel, kServiceSerial);
    });
    return 0;
}
VCC_REGISTER_CALLBACK(MachineSerial_Callback);

int PTZAbs_Callback(int panel, int control, int event, void *, int, int) {
    if (!wanted(event, true)) return 0;
    RunServiceCommand(panel, control, [&] {
        if (event == EVENT_COMMIT) {
            // The camera takes R5, R6, R1, R2 in this order: speeds first, then the position.
            const unsigned short values[4] = {
                static_cast<unsigned short>(readInt(panel, kPtzR[4])),
                static_cast<unsigned short>(readInt(panel, kPtzR[5])),
                static_cast<unsigned short>(readInt(panel, kPtzR[0])),
                static_cast<unsigned short>(readInt(panel, kPtzR[1])),
            };
            char text[9] = {};
            for (int i = 0; i < 4; ++i) {
                text[2 * i] = static_cast<char>(values[i] >> 8);
                text[2 * i + 1] = static_cast<char>(values[i] & 0xFF);
            }
            ConsolePrintf(">CMND : SET [PTZ ABS.] = %s\n", text);
            return PtzAbsSet(values);
        }
        ConsolePrintf(">CMND : GET [PTZ ABS.]\n");
        PtzAbs ptz{};
        if (!PtzAbsGet(&ptz)) return 0;
        for (int i = 0; i < 9; ++i) SetCtrlVal(panel, kPtzR[i], static_cast<int>(ptz.r[i]));
        showBytes(panel, kPtzS, ptz.s);
        return 1;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PTZAbs_Callback);

int CateOrbvis_Callback(int panel, int control, int event, void *, int, int) {
    if (!wanted(event)) return 0;
    RunServiceCommand(panel, control, [&] {
        unsigned char bytes[3];
        for (int i = 0; i < 3; ++i) bytes[i] = readByte(panel, kOrbvis[i]);
        ConsolePrintf(">CMND : SET [ORBVIS CATE.] = 0x%X 0x%X 0x%X\n", bytes[0], bytes[1], bytes[2]);
        return OrbvisCate(bytes);
    });
    return 0;
}
VCC_REGISTER_CALLBACK(CateOrbvis_Callback);

int Eeprom2K_Callback(int panel, int control, int event, void *, int, int) {
    if (!wanted(event)) return 0;
    RunServiceCommand(panel, control, [&] {
        return RunEeprom2K(panel, SERVICE_EEPROM_ADDR, SERVICE_EEPROM_DATA, SERVICE_EEPROM_OP, EepromFlavour::Service);
    });
    return 0;
}
VCC_REGISTER_CALLBACK(Eeprom2K_Callback);

// ---- category feedback panel -------------------------------------------------------------------------

int CateFbTimeout_Callback(int panel, int control, int event, void *, int, int) {
    if (!wanted(event, true)) return 0;
    RunServiceCommand(panel, control, [&] {
        if (event == EVENT_COMMIT) {
            const int milliseconds = readInt(panel, control);
            ConsolePrintf(">CMND : SET [CATE. TIMEOUT] = %d\n", milliseconds);
            return CateTimeoutSet(milliseconds);
        }
        ConsolePrintf(">CMND : GET [CATE. TIMEOUT]\n");
        int milliseconds = 0;
        if (!CateTimeoutGet(&milliseconds)) return 0;
        SetCtrlVal(panel, control, milliseconds);
        return 1;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(CateFbTimeout_Callback);

int CateFbReset_Callback(int panel, int control, int event, void *, int, int) {
    if (!wanted(event)) return 0;
    RunServiceCommand(panel, control, [] {
        ConsolePrintf(">CMND : SET [CATE. FB RESET]\n");
        return CateFbReset();
    });
    return 0;
}
VCC_REGISTER_CALLBACK(CateFbReset_Callback);

int CateFbAck_Callback(int panel, int control, int event, void *, int, int) {
    if (!wanted(event)) return 0;
    RunServiceCommand(panel, control, [&] { return readFeedback(panel, "CATE. FB ACK", CateFbAck, kAck); });
    return 0;
}
VCC_REGISTER_CALLBACK(CateFbAck_Callback);

int CateFbComplete_Callback(int panel, int control, int event, void *, int, int) {
    if (!wanted(event)) return 0;
    RunServiceCommand(panel, control,
                      [&] { return readFeedback(panel, "CATE. FB COMPLETE", CateFbComplete, kComplete); });
    return 0;
}
VCC_REGISTER_CALLBACK(CateFbComplete_Callback);

int CateFunctionWr_Callback(int panel, int control, int event, void *, int, int) {
    if (!wanted(event)) return 0;
    RunServiceCommand(panel, control, [&] {
        unsigned char packet[fl::kCategoryPacket];
        packet[0] = readByte(panel, CATEFB_WR_CATEGORY);
        for (int i = 0; i < fl::kCategoryAnswer; ++i) packet[i + 1] = readByte(panel, kWrite[i]);
        ConsolePrintf(">CMND : SET [CATE. WR]\n");
        return CateWrite(packet);
    });
    return 0;
}
VCC_REGISTER_CALLBACK(CateFunctionWr_Callback);

int CateFunctionRd_Callback(int panel, int control, int event, void *, int, int) {
    if (!wanted(event)) return 0;
    RunServiceCommand(panel, control, [&] {
        ConsolePrintf(">CMND : GET [CATE. RD]\n");
        unsigned char answer[fl::kCategoryAnswer] = {};
        const int ok = CateRead(readByte(panel, CATEFB_RD_CATEGORY), answer);
        // The fields always show the answer, zeros when there was none.
        if (!ok) std::memset(answer, 0, sizeof answer);
        showBytes(panel, kRead, answer);
        return ok;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(CateFunctionRd_Callback);
