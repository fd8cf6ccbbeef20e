// libSunplusCamera.so for the simulated camera: the chip vendor's firmware library for the
// USB bridge, rebuilt from what the tool expects of it. It reaches the bridge by itself through
// sim::camera(), whether or not the tool has connected, which is what lets the tool rescue a
// camera whose application no longer enumerates. Only the four calls the tool makes do work;
// the other exports answer with a failure, as an old library would for a call it lacks.
//
// Thread rules: the tool calls in from one worker at a time; the status and progress bytes are
// written here while the tool's user-interface thread reads them, one byte at a time.
#include <atomic>
#include <span>

#include "firmware/SunplusCameraApi.h"
#include "sim/SimCamera.h"
#include "ui/Clock.h"

#define SPC_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

// Tool-time milliseconds the download takes in its phases.
constexpr double kInitializingMs = 300;
constexpr double kSectorMs = 100;
constexpr double kUnexpectedMs = 10000;  // a 100 ms poll sees it even on a busy machine
constexpr double kRestartPollMs = 100;
constexpr double kRestartLimitMs = 10000;
constexpr unsigned kSectors = sim::kProgramFlashSize / sim::kSectorSize;

constexpr int kNotServed = -1;
constexpr int kNotFound = 1;

void put(unsigned char *byte, unsigned char value) {
    if (byte) std::atomic_ref<unsigned char>(*byte).store(value, std::memory_order_relaxed);
}

std::atomic<bool> initialised{false};

}  // namespace

SPC_EXPORT int SunplusCam_Init(int) {
    const sim::BridgeState bridge = sim::camera().bridge();
    initialised = bridge.libraryPresent && sim::camera().attached();
    return initialised ? 0 : kNotFound;
}

SPC_EXPORT int SunplusCam_UnInit(int) {
    initialised = false;
    return 0;
}

SPC_EXPORT int Get_ASICType(unsigned int *type) {
    if (!type) return kNotServed;
    *type = sim::camera().bridge().chipType;
    return initialised ? 0 : kNotFound;
}

SPC_EXPORT int Download_FW_2630_MCM(unsigned char *image, unsigned int size, unsigned int *out1, unsigned int *out2,
                                    unsigned char *status, unsigned char *progress, int mode) {
    sim::Camera &camera = sim::camera();
    if (!initialised || !image || size != sim::kProgramFlashSize || mode != kSpcDownloadMode) return kNotServed;
    sim::BridgeState bridge = camera.bridge();
    if (bridge.failDownloads > 0) {
        --bridge.failDownloads;
        camera.setBridge(bridge);
        return kNotFound;
    }
    const bool unexpected = bridge.status1B;
    if (unexpected) {
        bridge.status1B = false;
        camera.setBridge(bridge);
    }

    put(status, kSpcStatusInitializing);
    vcc::clock::sleepMs(kInitializingMs);
    put(status, kSpcStatusWriting);
    for (unsigned sector = 0; sector < kSectors; ++sector) {
        put(progress, static_cast<unsigned char>(sector * 100 / kSectors));
        if (unexpected && sector == kSectors / 2) {
            put(status, kSpcStatusUnexpected);
            vcc::clock::sleepMs(kUnexpectedMs);
            put(status, kSpcStatusWriting);
        }
        vcc::clock::sleepMs(kSectorMs);
    }
    if (!camera.vendorWriteProgramFlash(std::span<const uint8_t>(image, size))) return kNotFound;
    put(progress, 100);

    put(status, kSpcStatusWaiting);
    camera.restart();
    for (double waited = 0; !camera.attached() && waited < kRestartLimitMs; waited += kRestartPollMs)
        vcc::clock::sleepMs(kRestartPollMs);
    if (out1) *out1 = size;
    if (out2) *out2 = camera.bridge().chipType;
    put(status, kSpcStatusComplete);
    return 0;
}

// ---- exports the tool binds but never calls ----------------------------------------------------------

SPC_EXPORT int GetASICRegister(unsigned short, unsigned char *) { return kNotServed; }
SPC_EXPORT int SetASICRegister(unsigned short, unsigned char) { return kNotServed; }
SPC_EXPORT int GetSensorRegister(unsigned short, unsigned short *) { return kNotServed; }
SPC_EXPORT int SetSensorRegister(unsigned short, unsigned short) { return kNotServed; }
SPC_EXPORT int Download_FW(unsigned char *, unsigned int) { return kNotServed; }
SPC_EXPORT int Download_FW_Verbose(unsigned char *, unsigned int, unsigned char *, unsigned char *) { return kNotServed; }
SPC_EXPORT int Upload_FW(unsigned char *, unsigned int) { return kNotServed; }
SPC_EXPORT int Upload_Sector(unsigned int, unsigned char *) { return kNotServed; }
SPC_EXPORT int Get_FlashType(unsigned int *) { return kNotServed; }
SPC_EXPORT int SetSF_WProtect_ON(void) { return kNotServed; }
SPC_EXPORT int SetSF_WProtect_OFF(void) { return kNotServed; }
SPC_EXPORT int GetSF_WProtect(unsigned char *) { return kNotServed; }
SPC_EXPORT int GetSF_SR(unsigned char *) { return kNotServed; }
SPC_EXPORT int GetFWVersion(char *, int) { return kNotServed; }
SPC_EXPORT int GetVIDPID(unsigned short *, unsigned short *) { return kNotServed; }
SPC_EXPORT int GetSerialNumberString(char *, int) { return kNotServed; }
SPC_EXPORT int SetSerialNumberString(const char *) { return kNotServed; }
SPC_EXPORT int GetManufacturerString(char *, int) { return kNotServed; }
SPC_EXPORT int SetManufacturerString(const char *) { return kNotServed; }
SPC_EXPORT int GetProductString(char *, int) { return kNotServed; }
SPC_EXPORT int GetFlashAvailableCapacity(unsigned int *) { return kNotServed; }
SPC_EXPORT int Upload_Calibration(unsigned char *, unsigned int) { return kNotServed; }
SPC_EXPORT int Download_Calibration(unsigned char *, unsigned int) { return kNotServed; }
SPC_EXPORT int CompareWithSF(unsigned char *, unsigned int) { return kNotServed; }
