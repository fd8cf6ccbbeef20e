// The ISP and AUDIO images go into the camera's serial flash in two different ways. The AUDIO
// image is programmed page by page at explicit addresses after the whole 512 KB chip has been
// erased. The ISP image is streamed to the image processor in 512-byte blocks: the first 16 KB
// carry their block addresses, the rest follow without, and a stream end tells the camera the
// image is complete. Neither is read back: the camera checks what it receives.
#include <cstdio>
#include <cstring>

#include "app/LogFunc.h"
#include "commands/FunctionList.h"
#include "firmware/ImageWriters.h"
#include "firmware/PackageFiles.h"
#include "firmware/WorkerSlot.h"

namespace {

constexpr int kSectorSize = 0x1000;
constexpr int kAudioSectors = 128;
constexpr int kPageSize = 0x100;
constexpr int kAudioPages = 2048;
constexpr unsigned char kHoldExternal = 0x5A;

constexpr int kBlockSize = 0x200;
constexpr unsigned int kFirstBlockAddress = 0x01000100;
constexpr unsigned int kAddressedBlocksEnd = 0x01004100;

// Serial-flash chips the camera is built with: any one of the three identification bytes
// marks a known part.
bool knownChip(const unsigned char id[3]) { return id[0] == 0xC2 || id[1] == 0x20 || id[2] == 0x13; }

void doneLine(long bytes) { ConsolePrintf("> - done (file end, read file size: %ld)\n\n", bytes); }

void commandFailed() {
    SetFwFail(1);
    ConsolePrintf("> - fail (command write)\n");
}

int writeAudio(std::FILE *file, int imageSize) {
    ConsolePrintf(">CMND : SET [SF RST EXT.] = RST\n");
    if (!SfResetExternal(kHoldExternal)) return 0;
    ConsolePrintf(">CMND : SET [SF INIT]\n");
    if (!SfInit()) return 0;
    ConsolePrintf(">CMND : GET [SF ID]\n");
    unsigned char id[3] = {0, 0, 0};
    if (!SfId(id) || !knownChip(id)) return 0;

    for (int sector = 0; sector < kAudioSectors; ++sector) {
        SetFwProgress(sector);
        char text[256];
        std::snprintf(text, sizeof text, "Sector %d (0x%08X - 0x%08X)\n", sector, sector * kSectorSize,
                      (sector + 1) * kSectorSize - 1);
        ConsolePrintf(">CMND : SET [SF ERASE] : %s\n", text);
        if (!SfErase(sector)) return 0;
    }

    unsigned char buffer[1024];
    long bytesRead = 0;
    for (int page = 0; page < kAudioPages; ++page) {
        std::memset(buffer, 0xFF, sizeof buffer);
        const size_t got = std::fread(buffer, 1, kPageSize, file);
        const unsigned int address = page * kPageSize;
        SetFwProgress(address);
        ConsolePrintf(">CMND : SET [SF PAGE] : [0x%08X]\n", address);
        if (!SfPageSet(address, buffer)) return 0;
        bytesRead += long(got);
        if (std::feof(file) || bytesRead >= imageSize) {
            doneLine(bytesRead);
            break;
        }
    }
    return 1;
}

int writeIsp(std::FILE *file, int imageSize) {
    ConsolePrintf(">CMND : SET [SF RST EXT.] = RST\n");
    if (!SfResetExternal(kHoldExternal)) return 0;

    const long blocks = (long(imageSize) + kBlockSize - 1) / kBlockSize;
    unsigned int blockAddress = kFirstBlockAddress;
    int allOk = 1;
    long bytesRead = 0;
    unsigned char buffer[1024];
    for (long block = 0; block < blocks; ++block) {
        std::memset(buffer, 0xFF, sizeof buffer);
        const size_t got = std::fread(buffer, 1, kBlockSize, file);
        SetFwProgress(static_cast<unsigned int>(block * kBlockSize));
        int ok;
        if (blockAddress < kAddressedBlocksEnd) {
            ok = SfAddressedBlock(buffer, blockAddress);
            blockAddress += kBlockSize;
        } else {
            ok = SfStreamedBlock(buffer);
        }
        allOk = allOk && ok;
        bytesRead += long(got);
        if (std::feof(file) || bytesRead >= imageSize) {
            doneLine(bytesRead);
            break;
        }
        if (!allOk) return 0;
    }
    // Sent even after a failed last block, so the camera does not wait for more.
    const int ended = SfStreamEnd();
    return allOk && ended;
}

}  // namespace

int AudioImageThread(void *) {
    int size = 0;
    if (std::FILE *file = OpenImageOrFail(kFwAudio, size)) {
        SetFwProgressRange(kAudioPages * kPageSize);
        if (!writeAudio(file, size)) commandFailed();
        std::fclose(file);
    }
    gAudioImageSlot.finish();
    return 0;
}

std::FILE *OpenImageOrFail(int kind, int &size) {
    char path[1024];
    CopyFwFullPath(kind, path);
    std::FILE *file = FileExists(path, &size) == 1 ? OpenFwImage(path) : nullptr;
    if (!file) {
        SetFwFail(1);
        ConsolePrintf("> - fail (file open)\n");
    }
    return file;
}

int IspImageThread(void *) {
    int size = 0;
    if (std::FILE *file = OpenImageOrFail(kFwIsp, size)) {
        SetFwProgressRange(size > 0 ? size : 1);
        if (!writeIsp(file, size)) commandFailed();
        std::fclose(file);
    }
    gIspImageSlot.finish();
    return 0;
}
