// make-fw-package DIR: writes a sample firmware package for the QM-T77K into DIR, usually the
// QM-T77K_FW_Update folder beside vcc. Its images carry versions the simulated camera reports
// once they are written, so a newcomer can run an update and see it in FW Version.
#include <cstdio>
#include <string>

#include "sim/FwPackage.h"

int main(int argc, char *argv[]) {
    if (argc != 2 || argv[1][0] == '\0' || argv[1][0] == '-') {
        std::fprintf(stderr, "usage: make-fw-package DIR\n"
                             "  writes the sample QM-T77K firmware package (ISP, USB, AUDIO images) into DIR,\n"
                             "  usually the QM-T77K_FW_Update folder beside vcc\n");
        return 2;
    }
    const std::string folder = argv[1];
    const auto images = sim::SamplePackage();
    std::string error;
    if (!sim::WritePackage(folder, images, error)) {
        std::fprintf(stderr, "make-fw-package: %s\n", error.c_str());
        return 1;
    }
    for (const sim::PackageImage &image : images)
        std::printf("%s/%s (%zu bytes)\n", folder.c_str(), image.fileName.c_str(), image.bytes.size());
    std::printf("versions: ISP %.*s, USB %.*s (boot loader %.*s), AUDIO %.*s\n",
                int(sim::kSampleIspVersion.size()), sim::kSampleIspVersion.data(),
                int(sim::kSampleUsbAppVersion.size()), sim::kSampleUsbAppVersion.data(),
                int(sim::kSampleUsbBlVersion.size()), sim::kSampleUsbBlVersion.data(),
                int(sim::kSampleAudioVersion.size()), sim::kSampleAudioVersion.data());
    return 0;
}
