#include "sim/FwPackage.h"

#include <strings.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace sim {
namespace {

constexpr std::string_view kFilePrefix = "QM-T77K_";
constexpr size_t kUsbBlMarkerAt = 0x100;
constexpr size_t kUsbAppMarkerAt = 0x4100;
constexpr size_t kUsbBodyStart = kBootLoaderSize + 0x20;

// The same xorshift filler as the factory images, so package images look like code.
void fill(std::vector<uint8_t> &image, size_t from, size_t to, uint32_t seed) {
    uint32_t x = seed ? seed : 1;
    for (size_t i = from; i < to && i < image.size(); ++i) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        image[i] = static_cast<uint8_t>(x);
    }
}

// The marker, the version and a terminating zero, when they fit at that place.
void mark(std::vector<uint8_t> &image, size_t at, std::string_view version) {
    std::string text(kVersionMarker);
    text += version;
    text.push_back('\0');
    if (at + text.size() > image.size()) return;
    std::copy(text.begin(), text.end(), image.begin() + static_cast<std::ptrdiff_t>(at));
}

std::string imageName(std::string_view kind, std::string_view version) {
    return std::string(kFilePrefix) + std::string(kind) + "_" + std::string(version) + ".bin";
}

}  // namespace

std::vector<uint8_t> MakeSerialImage(size_t size, std::string_view version, uint32_t seed) {
    std::vector<uint8_t> image(size);
    fill(image, 0, size, seed);
    // Near the start, where the smallest images still have room; 0x40 keeps it off the
    // first bytes, which a real image uses for its own header.
    mark(image, size >= 0x200 ? 0x40 : 0, version);
    return image;
}

std::vector<uint8_t> MakeUsbImage(std::string_view appVersion, std::string_view blVersion, size_t size) {
    std::vector<uint8_t> flash(kProgramFlashSize, 0xFF);
    fill(flash, 0, kBootLoaderSize - 0x800, 0xB04u);
    mark(flash, kUsbBlMarkerAt, blVersion);
    fill(flash, kUsbBodyStart, kProgramFlashSize, 0xA9Bu);
    mark(flash, kUsbAppMarkerAt, appVersion);
    const auto header = ApplicationHeader(flash);
    std::copy(header.begin(), header.end(), flash.begin() + static_cast<std::ptrdiff_t>(kBootLoaderSize));
    flash.resize(size, 0xFF);
    return flash;
}

std::vector<PackageImage> MakePackage(size_t ispSize, size_t usbSize, size_t audioSize) {
    std::vector<PackageImage> images;
    if (ispSize)
        images.push_back({imageName("ISP", kSampleIspVersion), MakeSerialImage(ispSize, kSampleIspVersion, 0x15Cu)});
    if (usbSize)
        images.push_back({imageName("USB", kSampleUsbAppVersion),
                          MakeUsbImage(kSampleUsbAppVersion, kSampleUsbBlVersion, usbSize)});
    if (audioSize)
        images.push_back(
            {imageName("AUDIO", kSampleAudioVersion), MakeSerialImage(audioSize, kSampleAudioVersion, 0xA0D11u)});
    return images;
}

std::vector<PackageImage> SamplePackage() { return MakePackage(256 * 1024, kProgramFlashSize, 128 * 1024); }

bool WritePackage(const std::string &folder, const std::vector<PackageImage> &images, std::string &error) {
    std::error_code ec;
    fs::create_directories(folder, ec);
    if (!fs::is_directory(folder, ec)) {
        error = folder + " is not a folder and cannot be made one";
        return false;
    }
    // Only what looks like a package image goes: the folder may hold the user's own files.
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        const std::string name = it->path().filename().string();
        if (!it->is_directory(ec) && strncasecmp(name.c_str(), kFilePrefix.data(), kFilePrefix.size()) == 0)
            fs::remove(it->path(), ec);
    }
    for (const PackageImage &image : images) {
        const fs::path path = fs::path(folder) / image.fileName;
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char *>(image.bytes.data()), static_cast<std::streamsize>(image.bytes.size()));
        if (!out) {
            error = "cannot write " + path.string();
            return false;
        }
    }
    return true;
}

std::string PackageFolderBesideProgram() {
    std::error_code ec;
    const fs::path exe = fs::read_symlink("/proc/self/exe", ec);
    const fs::path dir = ec ? fs::path(".") : exe.parent_path();
    return (dir / std::string(kPackageFolderName)).string();
}

}  // namespace sim
