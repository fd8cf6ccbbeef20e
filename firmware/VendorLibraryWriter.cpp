// UsbAppBlImageThread: the whole USB bridge image, boot loader included, through the chip
// vendor's library. The library looks for the chip itself, so the worker keeps trying to load
// it for up to 20 s: long enough for a technician to plug the camera in after pressing UPDATE.
// A failed download is tried once more after reloading the library, since the vendor's
// library is known to lose the chip on the first attempt after a re-enumeration.
#include <cstdio>

#include "app/LogFunc.h"
#include "firmware/ImageWriters.h"
#include "firmware/PackageFiles.h"
#include "firmware/SunplusCamera.h"
#include "firmware/SunplusCameraApi.h"
#include "firmware/WorkerSlot.h"

namespace {

constexpr unsigned char kSearchPasses = 200;
constexpr unsigned char kRetryPasses = 60;
constexpr unsigned int kPassMs = 100;

void showCount(const char *format, unsigned char counter) {
    char text[256];
    std::snprintf(text, sizeof text, format, counter / 10);
    SetFwMessage(text);
}

// The image as last recorded: the search may take 20 s, and a look-up made meanwhile counts.
int downloadRecordedImage() {
    char path[1024];
    CopyFwFullPath(kFwUsb, path);
    return DownloadUsbImage(path);
}

int writeThroughLibrary() {
    unsigned char counter = kSearchPasses;
    SetFwFail(0);
    int loaded = 0;
    do {
        showCount("update USB [APP + BL]...searching device : %d", counter);
        loaded = LoadVendorLibrary();
        Sleep(kPassMs);
        --counter;
    } while (!loaded && counter != 0);
    if (!IsVendorLibraryReady()) {
        ConsolePrintf("> - fail to initialize LIB/DLL\n");
        return 0;
    }
    unsigned int type = 0;
    if (!GetVendorAsicType(&type) || (type & 0xFF) != kSpcAcceptedChipType) {
        UnloadVendorLibrary();
        ConsolePrintf("> - fail to initialize LIB/DLL\n");
        return 0;
    }

    SetFwMessage("update USB [APP + BL]...preparing");
    int downloaded = downloadRecordedImage();
    if (!downloaded) {
        counter = kRetryPasses;
        SetFwFail(0);
        do {
            loaded = LoadVendorLibrary();
            showCount("update USB [APP + BL]...preparing : %d", counter);
            Sleep(kPassMs);
            --counter;
        } while (!loaded && counter != 0);
        downloaded = downloadRecordedImage();
        SetFwMessage("update USB [APP + BL]...preparing");
    }
    UnloadVendorLibrary();
    if (!downloaded) {
        ConsolePrintf("> - fail (command write)\n");
        return 0;
    }
    SetFwMessage("update USB [APP + BL]...complete");
    return 1;
}

}  // namespace

int UsbAppBlImageThread(void *) {
    int size = 0;
    std::FILE *file = OpenImageOrFail(kFwUsb, size);
    if (file) {
        if (!writeThroughLibrary()) SetFwFail(1);
        std::fclose(file);
    }
    gUsbAppBlImageSlot.finish();
    return 0;
}
