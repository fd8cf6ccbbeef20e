// The serial-flash tool. Two kinds of flash part sit behind the camera's image processor: the
// streamed kind only takes a whole image through the processor's ISP stream, so the panel
// offers nothing else for it; the page kind takes sector and page commands, and can be read
// back whole.
#include "flash/SfTool.h"

#include <cstdio>
#include <cstring>

#include "MainUir.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "commands/FunctionList.h"
#include "flash/PfTool.h"
#include "ui/CallbackRegistry.h"
#include "ui/Clock.h"
#include "ui/UserInterface.h"

using namespace flashtool;

int SfResetExternal_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int SfInit_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int SfType_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int SfErase_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int SfPageWrRd_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);

WorkerSlot gSfStreamUpdateSlot(SfStreamUpdateThread);
WorkerSlot gSfPageUpdateSlot(SfPageUpdateThread);

namespace {

constexpr int kStreamType = 1;
constexpr int kStreamMaxSector = 1023;
constexpr int kPageSectors = 128;
constexpr int kPages = 2048;
constexpr unsigned char kHold = 0x5A;
constexpr unsigned char kRelease = 0xA5;

constexpr int kBlockSize = 0x200;
constexpr unsigned int kFirstBlockAddress = 0x01000100;
constexpr unsigned int kAddressedBlocksEnd = 0x01004100;
// The image processor copies the stream into its flash after the end mark.
constexpr int kStreamSettleRounds = 100;

// What the streamed type still offers; everything else on the panel is dimmed for it.
constexpr int kStreamControls[] = {SF_SF_RESET_EXTERNAL, SF_PATH, SF_LOADED, SF_SF_UPDATE, SF_SF_BIN_LOAD, SF_SF_TYPE};

char gLoadPath[1024] = "";
char gDumpPath[1024] = "";

int readInt(int control) {
    int value = 0;
    GetCtrlVal(gPanels.sf, control, &value);
    return value;
}

int flashType() { return readInt(SF_SF_TYPE); }

template <typename Body> void run(int control, Body body) {
    SetCommandBusy(gPanels.sf, control, 1);
    const int ok = body();
    SetCommandBusy(gPanels.sf, control, 0);
    if (!ok) SetErrorIndicator();
}

bool wanted(int event, bool readBack) {
    return (event == EVENT_COMMIT || (readBack && event == EVENT_RIGHT_CLICK)) && IsDeviceConnected();
}

void showHex(int control, unsigned char value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%02X", value);
    SetCtrlVal(gPanels.sf, control, text);
}

void sectorText(char (&text)[128], int sector) {
    SectorText(text, sector, static_cast<unsigned int>(sector) * kSectorSize);
}

int errorLit() {
    int on = 0;
    GetCtrlVal(gPanels.main, MAIN_ERROR, &on);
    return on;
}

void clearError() { SetCtrlVal(gPanels.main, MAIN_ERROR, 0); }

// The page update calls the erase, and with it this, from its worker: the update button stays
// dimmed meanwhile, so a second update cannot start inside the first.
void dimFor(int type) {
    const bool updating = readInt(SF_RUNNING) != 0;
    int control = 0;
    GetPanelAttribute(gPanels.sf, ATTR_PANEL_FIRST_CTRL, &control);
    while (control) {
        if (control != SF_RUNNING && !(updating && control == SF_SF_UPDATE))
            SetCtrlAttribute(gPanels.sf, control, ATTR_DIMMED, type == kStreamType ? 1 : 0);
        GetCtrlAttribute(gPanels.sf, control, ATTR_NEXT_CTRL, &control);
    }
    if (type == kStreamType)
        for (int control : kStreamControls)
            if (!(updating && control == SF_SF_UPDATE)) SetCtrlAttribute(gPanels.sf, control, ATTR_DIMMED, 0);
}

// Sector commands: the type decides the sector range first, so a sector left over from the
// other type is pulled into range before it is sent.
template <typename Send> int sectorCommand(const char *face, const char *command, Send send) {
    SfType_Callback(gPanels.sf, SF_SF_TYPE, EVENT_COMMIT, nullptr, 0, 0);
    const int sector = readInt(SF_SF_SECTOR);
    char text[128];
    sectorText(text, sector);
    ConsolePrintf(">CMND : %s [%s] : %s\n", face, command, text);
    return send(sector);
}

std::FILE *openUpdateImage(char (&path)[1024], int &size) {
    GetCtrlVal(gPanels.sf, SF_PATH, path);
    if (FileExists(path, &size) != 1) {
        ConsolePrintf("> - fail (not exist)\n\n");
        return nullptr;
    }
    return OpenImage(path, size);
}

void resetExternal(int hold) {
    SetCtrlVal(gPanels.sf, SF_SF_RESET_EXTERNAL, hold);
    clearError();
    SfResetExternal_Callback(gPanels.sf, SF_SF_RESET_EXTERNAL, EVENT_COMMIT, nullptr, 0, 0);
}

int streamImage(std::FILE *file, int size) {
    resetExternal(0);
    if (errorLit()) return 0;

    const long blocks = (long(size) + kBlockSize - 1) / kBlockSize;
    unsigned int blockAddress = kFirstBlockAddress;
    long bytesRead = 0;
    unsigned char buffer[1024];
    for (long block = 0; block < blocks; ++block) {
        std::memset(buffer, 0xFF, sizeof buffer);
        const size_t got = std::fread(buffer, 1, kBlockSize, file);
        SetCtrlVal(gPanels.sf, SF_ADDRESS, static_cast<int>(block * kBlockSize));
        int ok;
        if (blockAddress < kAddressedBlocksEnd) {
            ok = SfAddressedBlock(buffer, blockAddress);
            blockAddress += kBlockSize;
        } else {
            ok = SfStreamedBlock(buffer);
        }
        if (!ok) {
            ConsolePrintf("> - fail (command write)\n");
            return 0;
        }
        bytesRead += long(got);
        if (std::feof(file) || bytesRead >= size) {
            ConsolePrintf("> - done (file end, read file size: %ld)\n\n", bytesRead);
            break;
        }
    }
    // The wait and the reset are owed to the camera even when the end mark failed.
    const int ended = SfStreamEnd();
    if (!ended) SetErrorIndicator();
    WaitRounds(kStreamSettleRounds);
    PfReset_Callback(gPanels.pf, PF_PF_RESET, EVENT_COMMIT, nullptr, 0, 0);
    return ended;
}

int programImage(std::FILE *file, int size) {
    resetExternal(1);
    if (errorLit()) return 0;
    clearError();
    SfInit_Callback(gPanels.sf, SF_SF_INIT, EVENT_COMMIT, nullptr, 0, 0);
    SfInit_Callback(gPanels.sf, SF_SF_INIT, EVENT_RIGHT_CLICK, nullptr, 0, 0);
    if (errorLit()) return 0;

    clearError();
    for (int sector = 0; sector < kPageSectors; ++sector) {
        SetCtrlVal(gPanels.sf, SF_SF_SECTOR, sector);
        SfErase_Callback(gPanels.sf, SF_SF_ERASE, EVENT_COMMIT, nullptr, 0, 0);
        if (errorLit()) return 0;
    }

    unsigned char buffer[1024];
    long bytesRead = 0;
    for (int page = 0; page < kPages; ++page) {
        std::memset(buffer, 0xFF, sizeof buffer);
        const size_t got = std::fread(buffer, 1, kPageSize, file);
        SetCtrlVal(gPanels.sf, SF_ADDRESS, page * kPageSize);
        clearError();
        SfPageWrRd_Callback(gPanels.sf, SF_SF_PAGE_WR_RD, EVENT_COMMIT, buffer, 0, 0);
        if (errorLit()) return 0;
        bytesRead += long(got);
        if (std::feof(file) || bytesRead >= size) {
            ConsolePrintf("> - done (file end, read file size: %ld)\n\n", bytesRead);
            break;
        }
    }
    PfReset_Callback(gPanels.pf, PF_PF_RESET, EVENT_COMMIT, nullptr, 0, 0);
    return 1;
}

template <int (*Write)(std::FILE *, int)> int updateThread(WorkerSlot &slot) {
    char path[1024] = "";
    int size = 0;
    int ok = 0;
    if (std::FILE *file = openUpdateImage(path, size)) {
        ok = Write(file, size);
        std::fclose(file);
    }
    if (!ok) UpdateFailed();
    slot.finish();
    return 0;
}

}  // namespace

int SfStreamUpdateThread(void *) { return updateThread<streamImage>(gSfStreamUpdateSlot); }
int SfPageUpdateThread(void *) { return updateThread<programImage>(gSfPageUpdateSlot); }

int RefreshSfPnl_Callback(int, int, int event, void *, int, int) {
    if (event == EVENT_COMMIT && IsDeviceConnected()) UpdateControlEnabling();
    return 0;
}
VCC_REGISTER_CALLBACK(RefreshSfPnl_Callback);

int SfResetExternal_Callback(int, int, int event, void *, int, int) {
    if (!wanted(event, false)) return 0;
    run(SF_SF_RESET_EXTERNAL, [] {
        const int hold = readInt(SF_SF_RESET_EXTERNAL);
        ConsolePrintf(">CMND : SET [SF RST EXT.] = %s\n", hold ? "RST" : "RELEASE");
        return SfResetExternal(hold ? kHold : kRelease);
    });
    return 0;
}
VCC_REGISTER_CALLBACK(SfResetExternal_Callback);

int SfInit_Callback(int, int, int event, void *callbackData, int, int) {
    if (!wanted(event, true)) return 0;
    run(SF_SF_INIT, [&] {
        if (event == EVENT_COMMIT) {
            ConsolePrintf(">CMND : SET [SF INIT]\n");
            return SfInit();
        }
        ConsolePrintf(">CMND : GET [SF ID]\n");
        unsigned char id[3] = {0, 0, 0};
        if (!SfId(id)) return 0;
        char text[32];
        std::snprintf(text, sizeof text, "0x%02X 0x%02X 0x%02X", id[0], id[1], id[2]);
        SetCtrlVal(gPanels.sf, SF_ID, text);
        if (callbackData) std::memcpy(callbackData, id, sizeof id);
        return 1;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(SfInit_Callback);

int SfType_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_COMMIT) return 0;
    const int type = flashType();
    dimFor(type);
    if (!IsDeviceConnected()) return 0;
    const int maximum = type == kStreamType ? kStreamMaxSector : kPageSectors - 1;
    if (readInt(SF_SF_SECTOR) > maximum) SetCtrlVal(gPanels.sf, SF_SF_SECTOR, maximum);
    SetCtrlAttribute(gPanels.sf, SF_SF_SECTOR, ATTR_MAX_VALUE, maximum);
    return 0;
}
VCC_REGISTER_CALLBACK(SfType_Callback);

int SfSector_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_COMMIT || !IsDeviceConnected()) return 0;
    const int maximum = flashType() == kStreamType ? kStreamMaxSector : kPageSectors - 1;
    if (readInt(SF_SF_SECTOR) > maximum) SetCtrlVal(gPanels.sf, SF_SF_SECTOR, maximum);
    return 0;
}
VCC_REGISTER_CALLBACK(SfSector_Callback);

int SfErase_Callback(int, int, int event, void *, int, int) {
    if (!wanted(event, false)) return 0;
    run(SF_SF_ERASE, [] { return sectorCommand("SET", "SF ERASE", SfErase); });
    return 0;
}
VCC_REGISTER_CALLBACK(SfErase_Callback);

int SfBlankCheck_Callback(int, int, int event, void *callbackData, int, int) {
    if (!wanted(event, true)) return 0;
    run(SF_SF_BLANK_CHECK, [&] {
        if (event == EVENT_COMMIT) return sectorCommand("SET", "SF BLANK", SfBlankSet);
        return sectorCommand("GET", "SF BLANK", [&](int) {
            unsigned char result = 0;
            if (!SfBlankGet(&result)) return 0;
            showHex(SF_BLANK_RESULT, result);
            if (callbackData) *static_cast<unsigned char *>(callbackData) = result;
            return 1;
        });
    });
    return 0;
}
VCC_REGISTER_CALLBACK(SfBlankCheck_Callback);

int SfChecksum_Callback(int, int, int event, void *callbackData, int, int) {
    if (!wanted(event, true)) return 0;
    run(SF_SF_CHECKSUM, [&] {
        if (event == EVENT_COMMIT) return sectorCommand("SET", "SF CHECKSUM", SfChecksumSet);
        return sectorCommand("GET", "SF CHECKSUM", [&](int) {
            unsigned char checksum = 0;
            if (!SfChecksumGet(&checksum)) return 0;
            showHex(SF_CHECKSUM_RESULT, checksum);
            if (callbackData) *static_cast<unsigned char *>(callbackData) = checksum;
            return 1;
        });
    });
    return 0;
}
VCC_REGISTER_CALLBACK(SfChecksum_Callback);

int SfByteWrRd_Callback(int, int, int event, void *, int, int) {
    if (!wanted(event, true)) return 0;
    run(SF_SF_BYTE_WR_RD, [&] {
        const unsigned int address = static_cast<unsigned int>(readInt(SF_ADDRESS));
        if (event == EVENT_COMMIT) {
            const unsigned char data = static_cast<unsigned char>(readInt(SF_BYTE));
            ConsolePrintf(">CMND : SET [SF BYTE] : [0x%08X] = 0x%02X\n", address, data);
            return SfByteSet(address, data);
        }
        ConsolePrintf(">CMND : GET [SF BYTE] : [0x%08X]\n", address);
        unsigned char data = 0;
        if (!SfByteGet(address, &data)) return 0;
        SetCtrlVal(gPanels.sf, SF_BYTE, static_cast<int>(data));
        return 1;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(SfByteWrRd_Callback);

int SfPageWrRd_Callback(int, int, int event, void *callbackData, int, int) {
    if (!wanted(event, true)) return 0;
    unsigned char *data = static_cast<unsigned char *>(callbackData);
    run(SF_SF_PAGE_WR_RD, [&] {
        const unsigned int address = static_cast<unsigned int>(readInt(SF_ADDRESS));
        unsigned char page[kPageSize];
        if (event == EVENT_COMMIT) {
            for (int i = 0; i < kPageSize; ++i) page[i] = static_cast<unsigned char>(i);
            ConsolePrintf(">CMND : SET [SF PAGE] : [0x%08X]\n", address);
            return SfPageSet(address, data ? data : page);
        }
        ConsolePrintf(">CMND : GET [SF PAGE] : [0x%08X]\n", address);
        if (!SfPageGet(address, page)) return 0;
        if (data) std::memcpy(data, page, kPageSize);
        return 1;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(SfPageWrRd_Callback);

int SfBinLoad_Callback(int, int, int event, void *, int, int) {
    if (!wanted(event, false)) return 0;
    SetCommandBusy(gPanels.sf, SF_SF_BIN_LOAD, 1);
    SetCtrlVal(gPanels.sf, SF_LOADED, 0);
    ConsolePrintf(">SF BIN : LOAD\n");
    char path[1024];
    if (ChooseBin(gLoadPath, "BIN to LOAD", VAL_OK_BUTTON, path) != VAL_NO_FILE_SELECTED) {
        std::snprintf(gLoadPath, sizeof gLoadPath, "%s", path);
        SetCtrlVal(gPanels.sf, SF_PATH, path);
        SetCtrlVal(gPanels.sf, SF_LOADED, 1);
        ConsolePrintf("> - PATH = %s \n", path);
    }
    SetCommandBusy(gPanels.sf, SF_SF_BIN_LOAD, 0);
    return 0;
}
VCC_REGISTER_CALLBACK(SfBinLoad_Callback);

int SfUpdate_Callback(int, int, int event, void *, int, int) {
    if (!wanted(event, false)) return 0;
    SetCommandBusy(gPanels.sf, SF_SF_UPDATE, 1);
    ConsolePrintf(">SF BIN : FIND\n");
    char path[1024] = "";
    int size = 0;
    if (std::FILE *file = openUpdateImage(path, size)) {
        SetCtrlVal(gPanels.sf, SF_RUNNING, 1);
        PfAppEnterBl_Callback(gPanels.pf, PF_PF_APP_ENTER_BL, EVENT_COMMIT, nullptr, 0, 0);
        ReconnectInBootLoader();
        RunWorker(flashType() == kStreamType ? gSfStreamUpdateSlot : gSfPageUpdateSlot);
        SetCtrlVal(gPanels.sf, SF_RUNNING, 0);
        std::fclose(file);
    }
    SetCommandBusy(gPanels.sf, SF_SF_UPDATE, 0);
    return 0;
}
VCC_REGISTER_CALLBACK(SfUpdate_Callback);

int SfDump_Callback(int, int, int event, void *, int, int) {
    if (!wanted(event, false)) return 0;
    SetCommandBusy(gPanels.sf, SF_SF_UPDATE, 1);
    ConsolePrintf(">SF DUJMP : SAVE\n");
    char path[1024];
    // The streamed type cannot be read back: the name is asked for, and nothing is written.
    if (ChooseBin(gDumpPath, "SAVE to BIN", VAL_SAVE_BUTTON, path) != VAL_NO_FILE_SELECTED &&
        flashType() != kStreamType) {
        std::snprintf(gDumpPath, sizeof gDumpPath, "%s", path);
        ConsolePrintf("> - PATH = %s \n", path);
        if (std::FILE *file = std::fopen(path, "wb")) {
            SfInit_Callback(gPanels.sf, SF_SF_INIT, EVENT_COMMIT, nullptr, 0, 0);
            SfInit_Callback(gPanels.sf, SF_SF_INIT, EVENT_RIGHT_CLICK, nullptr, 0, 0);
            DumpPages(file, gPanels.sf, SF_ADDRESS, SF_SF_PAGE_WR_RD, SfPageWrRd_Callback, kPages);
            ConsolePrintf("> - done (save file)\n\n");
            std::fclose(file);
        } else {
            ConsolePrintf("> - fail (file open)\n\n");
        }
    }
    SetCommandBusy(gPanels.sf, SF_SF_UPDATE, 0);
    return 0;
}
VCC_REGISTER_CALLBACK(SfDump_Callback);
