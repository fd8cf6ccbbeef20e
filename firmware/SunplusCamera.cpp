// The vendor library is loaded when first needed and never freed: the vendor's library keeps
// threads and handles of its own that do not survive being unmapped. Its unload entry point
// doubles as the ready flag, as every call into the library checks it first.
#include "firmware/SunplusCamera.h"

#include <dlfcn.h>

#include <atomic>
#include <cstdio>
#include <string>

#include "firmware/PackageFiles.h"
#include "firmware/SunplusCameraApi.h"
#include "ui/UserInterface.h"

namespace {

constexpr char kVendorLibrary[] = "libSunplusCamera.so";

std::string gLibraryName = kVendorLibrary;
void *gModule = nullptr;
void *gEntry[kSpcEntryCount];

// The image handed to the library, the two out-values it fills, and the status and progress
// bytes it keeps current during a download.
unsigned char gImage[kUsbImageSize];
bool gImageSet = false;
unsigned int gOut1 = 0, gOut2 = 0;
unsigned char gStatus = 0, gProgress = 0;

template <typename Fn> Fn entry(size_t index) { return reinterpret_cast<Fn>(gEntry[index]); }

void putByte(unsigned char &byte, unsigned char value) {
    std::atomic_ref<unsigned char>(byte).store(value, std::memory_order_relaxed);
}
unsigned char getByte(unsigned char &byte) {
    return std::atomic_ref<unsigned char>(byte).load(std::memory_order_relaxed);
}

// The program's own folder first, then the system's search path, as the platform the vendor
// wrote the library for looks for it. The run path of the programs says the same, but a
// sanitizer that wraps dlopen searches on behalf of its own library, without that run path.
void *openModule(const std::string &name) {
    char dir[1024] = "";
    if (name.find('/') == std::string::npos && GetProjectDir(dir) >= 0 && dir[0]) {
        if (void *module = dlopen((std::string(dir) + "/" + name).c_str(), RTLD_NOW | RTLD_LOCAL)) return module;
    }
    return dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
}

void forgetEntries() {
    for (void *&p : gEntry) p = nullptr;
}

}  // namespace

int IsVendorLibraryReady() { return gEntry[kSpcUnInit] != nullptr; }

int UnloadVendorLibrary() {
    if (IsVendorLibraryReady()) entry<SpcUnInitFn>(kSpcUnInit)(0);
    forgetEntries();
    return 1;
}

int LoadVendorLibrary() {
    UnloadVendorLibrary();
    if (!gModule) gModule = openModule(gLibraryName);
    if (!gModule) return 0;
    gEntry[kSpcInit] = dlsym(gModule, kSpcEntryNames[kSpcInit]);
    if (!gEntry[kSpcInit] || entry<SpcInitFn>(kSpcInit)(0) != 0) return 0;
    for (size_t i = 1; i < kSpcEntryCount; ++i) gEntry[i] = dlsym(gModule, kSpcEntryNames[i]);
    // A library without one of the calls the tool makes is no use: treat it as not found.
    if (!gEntry[kSpcUnInit] || !gEntry[kSpcGetAsicType] || !gEntry[kSpcDownloadFw2630]) {
        if (gEntry[kSpcUnInit]) entry<SpcUnInitFn>(kSpcUnInit)(0);
        forgetEntries();
        return 0;
    }
    gImageSet = true;
    return 1;
}

int GetVendorAsicType(unsigned int *type) {
    if (!IsVendorLibraryReady() || !type) return 0;
    entry<SpcGetAsicTypeFn>(kSpcGetAsicType)(type);
    return 1;
}

int DownloadUsbImage(const char *path) {
    if (!IsVendorLibraryReady() || !gImageSet || !path) return 0;
    std::FILE *file = OpenFwImage(path);
    if (!file) return 0;
    long size = -1;
    if (std::fseek(file, 0, SEEK_END) == 0) size = std::ftell(file);
    // The buffer holds the bridge's whole flash and no more; an image that grew since its
    // check is refused rather than overrun it.
    const bool fits = size >= 0 && size <= long(sizeof gImage) && std::fseek(file, 0, SEEK_SET) == 0 &&
                      std::fread(gImage, 1, size_t(size), file) == size_t(size);
    std::fclose(file);
    if (!fits) return 0;
    putByte(gStatus, 0);
    putByte(gProgress, 0);
    const int rc = entry<SpcDownloadFw2630Fn>(kSpcDownloadFw2630)(gImage, static_cast<unsigned int>(size), &gOut1,
                                                                    &gOut2, &gStatus, &gProgress, kSpcDownloadMode);
    return rc == 0;
}

int GetDownloadStatus(unsigned char *status) {
    if (status) *status = getByte(gStatus);
    return 1;
}

int GetDownloadProgress(unsigned char *progress) {
    if (progress) *progress = getByte(gProgress);
    return 1;
}

void SetVendorLibraryName(const char *name) {
    UnloadVendorLibrary();
    gLibraryName = name ? name : kVendorLibrary;
    gModule = nullptr;  // the old module stays mapped, as the vendor's library must
}
