// The program-flash tool. The boot loader lives in sectors 0 to 3 and must survive anything
// typed into this panel, so writes below 0x4000 never leave the tool and the sector box keeps
// to the application's sectors; reads go everywhere, so a dump holds the boot loader too.
#include "flash/PfTool.h"

#include <algorithm>
#include <cstring>

#include "MainUir.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "commands/FunctionList.h"
#include "device/Connection.h"
#include "ui/CallbackRegistry.h"
#include "ui/Clock.h"
#include "ui/UserInterface.h"

WorkerSlot gPfUpdateSlot(PfUpdateThread);

namespace flashtool {

void SectorText(char (&text)[128], int sector, unsigned int first) {
    std::snprintf(text, sizeof text, "Sector %d (0x%08X - 0x%08X)\n", sector, first,
                  static_cast<unsigned int>((sector + 1) * kSectorSize - 1));
}

void WaitRounds(int rounds) {
    for (int i = 0; i < rounds; ++i) {
        Sleep(100);
        ProcessDrawEvents();
        ProcessSystemEvents();
    }
}

int ChooseBin(char (&remembered)[1024], const char *title, int button, char (&path)[1024]) {
    char folder[1024] = "";
    int size = 0;
    if (remembered[0] == '\0' || FileExists(remembered, &size) != 1) {
        remembered[0] = '\0';
        GetProjectDir(folder);
    } else if (size < 0) {
        std::snprintf(folder, sizeof folder, "%s", remembered);
    } else {
        std::snprintf(folder, sizeof folder, "%s", remembered);
        if (char *slash = std::strrchr(folder, '/')) slash[slash == folder ? 1 : 0] = '\0';
    }
    path[0] = '\0';
    const int allowMakeDirectory = button == VAL_SAVE_BUTTON ? 1 : 0;
    return FileSelectPopup(folder, "*.bin", "*.bin", title, button, 0, 1, 1, allowMakeDirectory, path);
}

std::FILE *OpenImage(const char *path, int size) {
    ConsolePrintf("> - PATH = %s \n", path);
    std::FILE *file = size >= 0 ? std::fopen(path, "rb") : nullptr;
    ConsolePrintf(file ? "> - done (load file)\n\n" : "> - fail (file open)\n\n");
    return file;
}

void Disconnect() {
    VideoCameraConnect_Callback(gPanels.main, MAIN_VIDEO_CAMERA_CONNECT, EVENT_LEFT_DOUBLE_CLICK, nullptr, 0, 0);
}

void DumpPages(std::FILE *file, int panel, int addressControl, int pageControl, CtrlCallbackPtr readPage, int pages) {
    unsigned char buffer[1024];
    for (int page = 0; page < pages; ++page) {
        std::memset(buffer, 0xFF, sizeof buffer);
        SetCtrlVal(panel, addressControl, page * kPageSize);
        readPage(panel, pageControl, EVENT_RIGHT_CLICK, buffer, 0, 0);
        std::fwrite(buffer, 1, kPageSize, file);
    }
}

void ReconnectInBootLoader() {
    SetCtrlVal(gPanels.main, MAIN_ERROR, 0);
    WaitRounds(5);
    VideoCameraConnect_Callback(gPanels.main, MAIN_VIDEO_CAMERA_CONNECT, EVENT_RIGHT_CLICK, nullptr, 0, 0);
    Sleep(200);
}

void RunWorker(WorkerSlot &slot) {
    slot.start();
    while (!slot.done()) {
        Sleep(100);
        ProcessDrawEvents();
        ProcessSystemEvents();
    }
    slot.stop();
}

void UpdateFailed() {
    MessagePopup("FW Update", "FAIL");
    Disconnect();
}

}  // namespace flashtool

using namespace flashtool;

int PfShadowBl_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int PfErase_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int PfSignApp_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);

namespace {

constexpr int kImageSize = 128 * 1024;
constexpr int kFirstSector = 4;
constexpr int kLastSector = 31;
constexpr int kApplicationStart = 0x4000;
constexpr int kHeaderEnd = 0x4020;
constexpr int kFirstWrite = kPageSize - 0x20;  // the rest of the header's page
constexpr int kApplicationPages = 448;
constexpr int kDumpPages = kImageSize / kPageSize;
constexpr unsigned char kStatusOk = 0x80;
constexpr unsigned char kStatusNg = 0x81;
constexpr unsigned short kEnterBootLoader = 0x5AA5;

char gLoadPath[1024] = "";
char gDumpPath[1024] = "";

int readInt(int control) {
    int value = 0;
    GetCtrlVal(gPanels.pf, control, &value);
    return value;
}

// A callback's command: the busy bracket on its control, the error indicator on failure.
template <typename Body> void run(int control, Body body) {
    SetCommandBusy(gPanels.pf, control, 1);
    const int ok = body();
    SetCommandBusy(gPanels.pf, control, 0);
    if (!ok) SetErrorIndicator();
}

bool wanted(int event, bool readBack) {
    return (event == EVENT_COMMIT || (readBack && event == EVENT_RIGHT_CLICK)) && IsDeviceConnected();
}

void showHex(int control, unsigned char value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%02X", value);
    SetCtrlVal(gPanels.pf, control, text);
}

// Erase, blank check and checksum share their announcement; the checksum of sector 4 leaves
// out the application header, and says so.
void announceSector(const char *command, int sector, bool headerExcluded) {
    char text[128];
    const unsigned int first = headerExcluded && sector == kFirstSector ? kHeaderEnd : sector * kSectorSize;
    SectorText(text, sector, first);
    ConsolePrintf(">CMND : SET [%s] : %s\n", command, text);
}

// 1 when the image at path has the one size the panel accepts; echoes why not otherwise.
int imageAcceptable(const char *path, int &size) {
    if (FileExists(path, &size) != 1) {
        ConsolePrintf("> - fail (not exist)\n\n");
        return 0;
    }
    if (size != kImageSize) {
        ConsolePrintf("> - fail (invalid size)\n\n");
        return 0;
    }
    return 1;
}

std::FILE *openUpdateImage(char (&path)[1024]) {
    GetCtrlVal(gPanels.pf, PF_PATH, path);
    int size = 0;
    return imageAcceptable(path, size) ? OpenImage(path, size) : nullptr;
}

// The status the boot loader must report before it takes a write.
int statusOk() {
    unsigned char status = 0;
    PfInit_Callback(gPanels.pf, PF_PF_INIT, EVENT_RIGHT_CLICK, &status, 0, 0);
    if (status == kStatusOk) return 1;
    ConsolePrintf("> - fail (not PF_STATUS_OK)\n\n");
    return 0;
}

int errorLit() {
    int on = 0;
    GetCtrlVal(gPanels.main, MAIN_ERROR, &on);
    return on;
}

int writeApplication(std::FILE *file) {
    PfInit_Callback(gPanels.pf, PF_PF_INIT, EVENT_COMMIT, nullptr, 0, 0);
    if (!statusOk()) return 0;
    PfShadowBl_Callback(gPanels.pf, PF_PF_SHADOW_BL, EVENT_COMMIT, nullptr, 0, 0);
    if (!statusOk()) return 0;

    SetCtrlVal(gPanels.main, MAIN_ERROR, 0);
    for (int sector = kFirstSector; sector <= kLastSector; ++sector) {
        SetCtrlVal(gPanels.pf, PF_PF_SECTOR, sector);
        PfErase_Callback(gPanels.pf, PF_PF_ERASE, EVENT_COMMIT, nullptr, 0, 0);
        if (errorLit()) return 0;
    }

    unsigned char buffer[1024];
    std::memset(buffer, 0xFF, sizeof buffer);
    std::fseek(file, kHeaderEnd, SEEK_SET);
    long count = kHeaderEnd + long(std::fread(buffer, 1, kFirstWrite, file));
    SetCtrlVal(gPanels.main, MAIN_ERROR, 0);
    PfPageWrRd_Callback(gPanels.pf, PF_PF_PAGE_WR_RD, EVENT_COMMIT, buffer, kHeaderEnd, kFirstWrite);
    if (errorLit()) return 0;

    for (int page = 1; page < kApplicationPages; ++page) {
        std::memset(buffer, 0xFF, sizeof buffer);
        const size_t got = std::fread(buffer, 1, kPageSize, file);
        SetCtrlVal(gPanels.main, MAIN_ERROR, 0);
        PfPageWrRd_Callback(gPanels.pf, PF_PF_PAGE_WR_RD, EVENT_COMMIT, buffer, kApplicationStart + page * kPageSize,
                            kPageSize);
        if (errorLit()) return 0;
        count += long(got);
        if (std::feof(file) || count >= kImageSize) {
            ConsolePrintf("> - done (file end, read file size: %ld)\n\n", count);
            break;
        }
    }
    return 1;
}

}  // namespace

int PfUpdateThread(void *) {
    char path[1024] = "";
    int ok = 0;
    if (std::FILE *file = openUpdateImage(path)) {
        ok = writeApplication(file);
        if (ok) {
            PfSignApp_Callback(gPanels.pf, PF_PF_SIGN_APP, EVENT_COMMIT, nullptr, 0, 0);
            PfReset_Callback(gPanels.pf, PF_PF_RESET, EVENT_COMMIT, nullptr, 0, 0);
        }
        std::fclose(file);
    }
    if (!ok) UpdateFailed();
    gPfUpdateSlot.finish();
    return 0;
}

int RefreshPfPnl_Callback(int, int, int event, void *, int, int) {
    if (event == EVENT_COMMIT && IsDeviceConnected()) UpdateControlEnabling();
    return 0;
}
VCC_REGISTER_CALLBACK(RefreshPfPnl_Callback);

int PfInit_Callback(int, int, int event, void *callbackData, int, int) {
    if (!wanted(event, true)) return 0;
    run(PF_PF_INIT, [&] {
        if (event == EVENT_COMMIT) {
            ConsolePrintf(">CMND : SET [PF INIT]\n");
            return PfInit();
        }
        ConsolePrintf(">CMND : GET [PF STATUS]\n");
        unsigned char status = 0;
        const int ok = PfStatus(&status);
        char text[32] = "Fail";
        if (ok && status == kStatusOk) std::snprintf(text, sizeof text, "OK");
        else if (ok && status == kStatusNg) std::snprintf(text, sizeof text, "NG");
        else if (ok) std::snprintf(text, sizeof text, "Unknown (0x%X)", status);
        SetCtrlVal(gPanels.pf, PF_STATUS, text);
        if (callbackData) *static_cast<unsigned char *>(callbackData) = status;
        return ok;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PfInit_Callback);

int PfShadowBl_Callback(int, int, int event, void *, int, int) {
    if (!wanted(event, false)) return 0;
    run(PF_PF_SHADOW_BL, [] {
        ConsolePrintf(">CMND : SET [PF SHADOW BL]\n");
        return PfShadowBl();
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PfShadowBl_Callback);

int PfSector_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_COMMIT || !IsDeviceConnected()) return 0;
    const int sector = readInt(PF_PF_SECTOR);
    if (sector < kFirstSector) SetCtrlVal(gPanels.pf, PF_PF_SECTOR, kFirstSector);
    else if (sector > kLastSector) SetCtrlVal(gPanels.pf, PF_PF_SECTOR, kLastSector);
    return 0;
}
VCC_REGISTER_CALLBACK(PfSector_Callback);

int PfErase_Callback(int, int, int event, void *, int, int) {
    if (!wanted(event, false)) return 0;
    run(PF_PF_ERASE, [] {
        const int sector = readInt(PF_PF_SECTOR);
        announceSector("PF ERASE", sector, false);
        return PfErase(sector);
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PfErase_Callback);

int PfBlankCheck_Callback(int, int, int event, void *callbackData, int, int) {
    if (!wanted(event, true)) return 0;
    run(PF_PF_BLANK_CHECK, [&] {
        if (event == EVENT_COMMIT) {
            const int sector = readInt(PF_PF_SECTOR);
            announceSector("PF BLANK", sector, false);
            return PfBlankSet(sector);
        }
        ConsolePrintf(">CMND : GET [PF BLANK]\n");
        unsigned char result = 0;
        if (!PfBlankGet(&result)) return 0;
        showHex(PF_BLANK_RESULT, result);
        if (callbackData) *static_cast<unsigned char *>(callbackData) = result;
        return 1;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PfBlankCheck_Callback);

int PfChecksum_Callback(int, int, int event, void *callbackData, int, int) {
    if (!wanted(event, true)) return 0;
    run(PF_PF_CHECKSUM, [&] {
        if (event == EVENT_COMMIT) {
            const int sector = readInt(PF_PF_SECTOR);
            announceSector("PF CHECKSUM", sector, true);
            return PfChecksumSet(sector);
        }
        ConsolePrintf(">CMND : GET [PF CHECKSUM]\n");
        unsigned char checksum = 0;
        if (!PfChecksumGet(&checksum)) return 0;
        showHex(PF_CHECKSUM_RESULT, checksum);
        if (callbackData) *static_cast<unsigned char *>(callbackData) = checksum;
        return 1;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PfChecksum_Callback);

int PfByteWrRd_Callback(int, int, int event, void *, int, int) {
    if (!wanted(event, true)) return 0;
    run(PF_PF_BYTE_WR_RD, [&] {
        const unsigned int address = static_cast<unsigned int>(readInt(PF_ADDRESS));
        if (event == EVENT_COMMIT) {
            unsigned char data = static_cast<unsigned char>(readInt(PF_BYTE));
            ConsolePrintf(">CMND : SET [PF BYTE] : [0x%08X] = 0x%02X (%d)\n", address, data, 1);
            // Refused here, not by the camera: the indicator stays as it was.
            if (address < kApplicationStart) {
                ConsolePrintf("> - fail (invalid address)\n\n");
                return 1;
            }
            return PfPageSet(address, &data, 1);
        }
        ConsolePrintf(">CMND : GET [PF BYTE] : [0x%08X] (%d)\n", address, 1);
        unsigned char data = 0;
        if (!PfPageGet(address, &data, 1)) return 0;
        SetCtrlVal(gPanels.pf, PF_BYTE, static_cast<int>(data));
        return 1;
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PfByteWrRd_Callback);

int PfPageWrRd_Callback(int, int, int event, void *callbackData, int eventData1, int eventData2) {
    if (!wanted(event, true)) return 0;
    unsigned char *data = static_cast<unsigned char *>(callbackData);
    run(PF_PF_PAGE_WR_RD, [&] {
        if (event == EVENT_RIGHT_CLICK) {
            const unsigned int address = static_cast<unsigned int>(readInt(PF_ADDRESS));
            ConsolePrintf(">CMND : GET [PF PAGE] : [0x%08X] (%d)\n", address, kPageSize);
            unsigned char page[kPageSize];
            if (!PfPageGet(address, page, kPageSize)) return 0;
            if (data) std::memcpy(data, page, kPageSize);
            return 1;
        }
        // Only the update passes an address; the button always writes the application's
        // first page, whatever the address box says.
        int address = kApplicationStart;
        int length = kPageSize;
        if (eventData1 >= kHeaderEnd && eventData1 <= kImageSize) {
            address = eventData1;
            // One page at most travels in one command, and the buffer holds no more.
            length = std::clamp(eventData2, 1, kPageSize);
        }
        SetCtrlVal(gPanels.pf, PF_ADDRESS, address);
        address = readInt(PF_ADDRESS);
        unsigned char pattern[kPageSize];
        for (int i = 0; i < kPageSize; ++i) pattern[i] = static_cast<unsigned char>(i);
        ConsolePrintf(">CMND : SET [PF PAGE] : [0x%08X] (%d)\n", static_cast<unsigned int>(address), length);
        if (address < kApplicationStart) {
            ConsolePrintf("> - fail (invalid address)\n\n");
            return 1;
        }
        return PfPageSet(static_cast<unsigned int>(address), data ? data : pattern,
                         static_cast<unsigned short>(length));
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PfPageWrRd_Callback);

int PfSignApp_Callback(int, int, int event, void *, int, int) {
    if (!wanted(event, false)) return 0;
    run(PF_PF_SIGN_APP, [] {
        ConsolePrintf(">CMND : SET [PF SIGN APP]\n");
        return PfSignApp();
    });
    return 0;
}
VCC_REGISTER_CALLBACK(PfSignApp_Callback);

// The camera restarts on its own; the tool lets go of the handle that restart invalidates.
int PfReset_Callback(int, int, int event, void *, int, int) {
    if (!wanted(event, false)) return 0;
    run(PF_PF_RESET, [] {
        ConsolePrintf(">CMND : SET [PF RESET]\n");
        const int ok = PfReset();
        WaitRounds(5);
        return ok;
    });
    Disconnect();
    return 0;
}
VCC_REGISTER_CALLBACK(PfReset_Callback);

int PfAppEnterBl_Callback(int, int, int event, void *, int, int) {
    if (!wanted(event, false)) return 0;
    run(PF_PF_APP_ENTER_BL, [] {
        ConsolePrintf(">CMND : SET [PF APP ENTER BL]\n");
        const int ok = SetCommand("USB APP ENTER BL", kEnterBootLoader);
        WaitRounds(10);
        return ok;
    });
    Disconnect();
    return 0;
}
VCC_REGISTER_CALLBACK(PfAppEnterBl_Callback);

int PfBinLoad_Callback(int, int, int event, void *, int, int) {
    if (!wanted(event, false)) return 0;
    SetCommandBusy(gPanels.pf, PF_PF_BIN_LOAD, 1);
    SetCtrlVal(gPanels.pf, PF_LOADED, 0);
    ConsolePrintf(">PF BIN : LOAD\n");
    char path[1024];
    int size = 0;
    if (ChooseBin(gLoadPath, "BIN to LOAD", VAL_OK_BUTTON, path) != VAL_NO_FILE_SELECTED &&
        imageAcceptable(path, size)) {
        std::snprintf(gLoadPath, sizeof gLoadPath, "%s", path);
        SetCtrlVal(gPanels.pf, PF_PATH, path);
        SetCtrlVal(gPanels.pf, PF_LOADED, 1);
        ConsolePrintf("> - PATH = %s \n", path);
    }
    SetCommandBusy(gPanels.pf, PF_PF_BIN_LOAD, 0);
    return 0;
}
VCC_REGISTER_CALLBACK(PfBinLoad_Callback);

int PfUpdate_Callback(int, int, int event, void *, int, int) {
    if (!wanted(event, false)) return 0;
    SetCommandBusy(gPanels.pf, PF_PF_UPDATE, 1);
    ConsolePrintf(">PF BIN : FIND\n");
    char path[1024] = "";
    if (std::FILE *file = openUpdateImage(path)) {
        SetCtrlVal(gPanels.pf, PF_RUNNING, 1);
        PfAppEnterBl_Callback(gPanels.pf, PF_PF_APP_ENTER_BL, EVENT_COMMIT, nullptr, 0, 0);
        ReconnectInBootLoader();
        RunWorker(gPfUpdateSlot);
        SetCtrlVal(gPanels.pf, PF_RUNNING, 0);
        std::fclose(file);
    }
    SetCommandBusy(gPanels.pf, PF_PF_UPDATE, 0);
    return 0;
}
VCC_REGISTER_CALLBACK(PfUpdate_Callback);

int PfDump_Callback(int, int, int event, void *, int, int) {
    if (!wanted(event, false)) return 0;
    SetCommandBusy(gPanels.pf, PF_PF_UPDATE, 1);
    ConsolePrintf(">PF DUJMP : SAVE\n");
    char path[1024];
    if (ChooseBin(gDumpPath, "SAVE to BIN", VAL_SAVE_BUTTON, path) != VAL_NO_FILE_SELECTED) {
        std::snprintf(gDumpPath, sizeof gDumpPath, "%s", path);
        ConsolePrintf("> - PATH = %s \n", path);
        if (std::FILE *file = std::fopen(path, "wb")) {
            PfInit_Callback(gPanels.pf, PF_PF_INIT, EVENT_COMMIT, nullptr, 0, 0);
            if (statusOk()) {
                DumpPages(file, gPanels.pf, PF_ADDRESS, PF_PF_PAGE_WR_RD, PfPageWrRd_Callback, kDumpPages);
                ConsolePrintf("> - done (save file)\n\n");
            }
            std::fclose(file);
        } else {
            ConsolePrintf("> - fail (file open)\n\n");
        }
    }
    SetCommandBusy(gPanels.pf, PF_PF_UPDATE, 0);
    return 0;
}
VCC_REGISTER_CALLBACK(PfDump_Callback);
