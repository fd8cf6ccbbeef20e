// UsbAppImageThread: rewrites the application part of the USB bridge's program flash through
// the camera's boot loader. The first four sectors hold the boot loader itself and are never
// touched, nor is the application header at 0x4000: [PF SIGN APP] writes it once the body is
// in place, so an interrupted write leaves an application the boot loader refuses to start.
#include <cstdio>
#include <cstring>

#include "app/LogFunc.h"
#include "commands/FunctionList.h"
#include "firmware/ImageWriters.h"
#include "firmware/PackageFiles.h"
#include "firmware/WorkerSlot.h"

namespace {

constexpr int kSectorSize = 0x1000;
constexpr int kFirstApplicationSector = 4;
constexpr int kSectors = 32;
constexpr unsigned int kHeaderEnd = 0x4020;
constexpr int kFirstWrite = 0x100 - 0x20;  // the rest of the header's page
constexpr int kPageSize = 0x100;
constexpr int kPages = 448;
constexpr unsigned char kStatusReady = 0x80;

int statusReady() {
    ConsolePrintf(">CMND : GET [PF STATUS]\n");
    unsigned char status = 0;
    return PfStatus(&status) && status == kStatusReady;
}

int writeApplication(std::FILE *file, int imageSize) {
    ConsolePrintf(">CMND : SET [PF INIT]\n");
    if (!PfInit() || !statusReady()) return 0;
    ConsolePrintf(">CMND : SET [PF SHADOW BL]\n");
    if (!PfShadowBl() || !statusReady()) return 0;

    for (int sector = kFirstApplicationSector; sector < kSectors; ++sector) {
        SetFwProgress(sector);
        char text[256];
        std::snprintf(text, sizeof text, "Sector %d (0x%08X - 0x%08X)\n", sector, sector * kSectorSize,
                      (sector + 1) * kSectorSize - 1);
        ConsolePrintf(">CMND : SET [PF ERASE] : %s\n", text);
        if (!PfErase(sector)) return 0;
    }

    unsigned char buffer[1024];
    std::memset(buffer, 0xFF, sizeof buffer);
    std::fseek(file, kHeaderEnd, SEEK_SET);
    long reached = kHeaderEnd + long(std::fread(buffer, 1, kFirstWrite, file));
    SetFwProgress(kHeaderEnd);
    ConsolePrintf(">CMND : SET [PF PAGE] : [0x%08X] (%d)\n", kHeaderEnd, kFirstWrite);
    if (!PfPageSet(kHeaderEnd, buffer, kFirstWrite)) return 0;

    for (int page = 1; page < kPages; ++page) {
        std::memset(buffer, 0xFF, sizeof buffer);
        const unsigned int address = 0x4000 + page * kPageSize;
        const size_t got = std::fread(buffer, 1, kPageSize, file);
        SetFwProgress(address);
        ConsolePrintf(">CMND : SET [PF PAGE] : [0x%08X] (%d)\n", address, kPageSize);
        if (!PfPageSet(address, buffer, kPageSize)) return 0;
        reached += long(got);
        if (std::feof(file) || reached >= imageSize) {
            ConsolePrintf("> - done (file end, read file size: %ld)\n\n", reached);
            break;
        }
    }

    SetFwMessage("update USB [APP]...final count down");
    ConsolePrintf(">CMND : SET [PF SIGN APP]\n");
    if (!PfSignApp()) return 0;
    ConsolePrintf(">CMND : SET [PF RESET]\n");
    return PfReset();
}

}  // namespace

int UsbAppImageThread(void *) {
    int size = 0;
    std::FILE *file = OpenImageOrFail(kFwUsb, size);
    if (file) {
        SetFwProgressRange(kSectors * kSectorSize);
        if (!writeApplication(file, size)) {
            SetFwFail(1);
            ConsolePrintf("> - fail (command write)\n");
        }
        std::fclose(file);
    }
    gUsbAppImageSlot.finish();
    return 0;
}
