// Firmware package images that the simulated camera understands: deterministic bytes carrying
// the version marker the camera reports once an image is written, so an update shows in the
// version read-back. make-fw-package, the `sim package` script command and the tests all lay
// out their packages with these functions.
//
// Thread rules: the image makers are pure; WritePackage touches only the folder it is given.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "sim/SimCamera.h"

namespace sim {

inline constexpr std::string_view kPackageFolderName = "QM-T77K_FW_Update";

// The versions the sample package carries: newer than every factory image of the QM-T77K.
inline constexpr std::string_view kSampleIspVersion = "I77K300";
inline constexpr std::string_view kSampleUsbAppVersion = "U77K200";
inline constexpr std::string_view kSampleUsbBlVersion = "B04";
inline constexpr std::string_view kSampleAudioVersion = "A77K040";

// A serial-flash image (ISP or AUDIO) of size bytes; the version marker sits near its start
// when the image has room for it. The seed keeps two images of the same size apart.
std::vector<uint8_t> MakeSerialImage(size_t size, std::string_view version, uint32_t seed);
// A complete program flash of the USB bridge: boot loader with its version, application with
// its version and a valid header, so it boots whichever way it is written. Any other size
// cuts the image or pads it with 0xFF (for checks of the size rule).
std::vector<uint8_t> MakeUsbImage(std::string_view appVersion, std::string_view blVersion,
                                  size_t size = kProgramFlashSize);

struct PackageImage {
    std::string fileName;
    std::vector<uint8_t> bytes;
};

// Images named as the tool looks for them (QM-T77K_ISP_<version>.bin and so on) with the
// sample versions; a size of 0 for a kind leaves that kind out.
std::vector<PackageImage> MakePackage(size_t ispSize, size_t usbSize, size_t audioSize);
// The sample package: ISP of 256 KB, USB of 128 KB, AUDIO of 128 KB.
std::vector<PackageImage> SamplePackage();

// Creates folder (with its parents), removes the image files already in it, then writes the
// images. False with a message when something could not be written.
bool WritePackage(const std::string &folder, const std::vector<PackageImage> &images, std::string &error);

// The package folder beside the running program, where the tool looks for it.
std::string PackageFolderBesideProgram();

}  // namespace sim
