#include "device/UvcLink.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "device/BlockLengths.h"
#include "device/CameraBackend.h"

namespace {

using uvclink::CameraBackend;

constexpr char kSdkVersion[] = "2.10";
constexpr size_t kMaxNameLength = 32;

std::mutex gSelectMutex;
std::atomic<CameraBackend *> gBackend{nullptr};
// Replaced backends stay alive: a caller on another thread may still be inside one.
std::vector<std::unique_ptr<CameraBackend>> gBackends;
// The length the program-flash data register carries, as last announced to the camera.
std::atomic<int> gPfDataLength{256};

std::unique_ptr<CameraBackend> makeBackend(const char *spec) {
    const std::string name = spec ? spec : "";
    if (name.empty()) return uvclink::MakeAbsentBackend();
    if (name == "sim") return uvclink::MakeSimBackend(2);
    if (name.size() == 5 && name.compare(0, 4, "sim:") == 0 && name[4] >= '0' && name[4] <= '2')
        return uvclink::MakeSimBackend(name[4] - '0');
    if (name == "v4l2")
        std::fprintf(stderr, "UvcLink: the v4l2 camera backend is not available in this build; no camera\n");
    else
        std::fprintf(stderr, "UvcLink: UVCLINK_DEVICE=\"%s\" is not a device (use sim, sim:0, sim:1 or sim:2); no camera\n",
                     name.c_str());
    return nullptr;
}

int install(const char *spec) {
    std::unique_ptr<CameraBackend> backend = makeBackend(spec);
    const int ok = backend != nullptr;
    if (!backend) backend = uvclink::MakeAbsentBackend();
    std::lock_guard lock(gSelectMutex);
    gBackends.push_back(std::move(backend));
    gBackend.store(gBackends.back().get(), std::memory_order_release);
    gPfDataLength.store(256);
    return ok;
}

CameraBackend &backend() {
    if (CameraBackend *b = gBackend.load(std::memory_order_acquire)) return *b;
    static std::once_flag fromEnvironment;
    std::call_once(fromEnvironment, [] {
        if (!gBackend.load(std::memory_order_acquire)) install(std::getenv("UVCLINK_DEVICE"));
    });
    return *gBackend.load(std::memory_order_acquire);
}

// The payload length of a block command, or nothing when the library must refuse it.
std::optional<size_t> payloadLength(int unit, unsigned short selector, bool write) {
    const auto length = uvclink::FindBlockLength(unit, selector, write);
    if (!length) return std::nullopt;
    const int n = *length == uvclink::kPfDataLength ? gPfDataLength.load() : *length;
    if (n < 0 || n > uvclink::kBlockBufferSize) return std::nullopt;
    return static_cast<size_t>(n);
}

}  // namespace

namespace uvclink {
namespace {
class AbsentBackend final : public CameraBackend {
public:
    bool present() override { return false; }
    std::string name() override { return {}; }
    int read(int, uint16_t, uint16_t &) override { return -1; }
    int write(int, uint16_t, uint16_t) override { return -1; }
    int readBlock(int, uint16_t, std::span<uint8_t>) override { return -1; }
    int writeBlock(int, uint16_t, std::span<const uint8_t>) override { return -1; }
};
}  // namespace

std::unique_ptr<CameraBackend> MakeAbsentBackend() { return std::make_unique<AbsentBackend>(); }
}  // namespace uvclink

int UvcLinkSelectDevice(const char *spec) { return install(spec ? spec : std::getenv("UVCLINK_DEVICE")); }

// ---- register channel ---------------------------------------------------------------------------

int ReadFromDevice(int unit, unsigned short selector, unsigned short *value) {
    if (!value) return kUvcLinkRefused;
    uint16_t v = 0;
    const int rc = backend().read(unit, selector, v);
    if (rc >= 0) *value = v;
    return rc;
}

int WriteToDevice(int unit, unsigned short selector, unsigned short value) {
    return backend().write(unit, selector, value);
}

int ReadArrayFromDevice(int unit, unsigned short selector, unsigned char *buffer2048) {
    const auto length = payloadLength(unit, selector, false);
    if (!buffer2048 || !length) return kUvcLinkRefused;
    return backend().readBlock(unit, selector, std::span<uint8_t>(buffer2048, *length));
}

int WriteArrayToDevice(int unit, unsigned short selector, const unsigned char *buffer2048) {
    const auto length = payloadLength(unit, selector, true);
    if (!buffer2048 || !length) return kUvcLinkRefused;
    const int rc = backend().writeBlock(unit, selector, std::span<const uint8_t>(buffer2048, *length));
    if (rc >= 0 && unit == 9 && selector == 0x46) gPfDataLength.store(buffer2048[0] | buffer2048[1] << 8);
    return rc;
}

// ---- device and connection ------------------------------------------------------------------------

int InitializeDirectX() {
    backend();
    return 0;
}

int GetSDKVersion(char *version) {
    if (version) std::memcpy(version, kSdkVersion, sizeof kSdkVersion);
    return 0;
}

int DetectCaptureDeviceEx(unsigned char *present) {
    if (present) *present = backend().present() ? 1 : 0;
    return 0;
}

int GetCameraDeviceName(char *name) {
    if (!name) return 0;
    const std::string n = backend().name().substr(0, kMaxNameLength);
    std::memcpy(name, n.c_str(), n.size() + 1);
    return 0;
}

int UvcLinkCameraPort(char *port, int size) {
    if (!port || size <= 0) return -1;
    const std::string p = backend().port();
    const size_t n = std::min(p.size(), static_cast<size_t>(size - 1));
    std::memcpy(port, p.data(), n);
    port[n] = '\0';
    return 0;
}

int ReleaseControlObject() {
    backend().release();
    return 0;
}

// ---- preview and capture ------------------------------------------------------------------------------

// The stream set-up chosen by InitializePreviewVideo_SetStreamFormat, used by the next start.
std::atomic<bool> gSnapshotStream{false};

int GetDirectXObject() { return 0; }

int InitializePreviewVideo_SetStreamFormat(int, int, unsigned char snapshot) {
    // Format and resolution 0 mean the camera's own default stream, the only one offered.
    gSnapshotStream.store(snapshot != 0);
    return 0;
}

int StartPreviewVideo() { return backend().startPreview(gSnapshotStream.load()); }
int StopPreviewVideo() { return backend().stopPreview(); }

int UninitializePreviewVideo() {
    gSnapshotStream.store(false);
    return 0;
}

int ReleaseDirectXObject() { return 0; }
int CaptureRGBDataToFile(const char *path) { return backend().capture(path, false); }
int CaptureRAWDataToFile(const char *path) { return backend().capture(path, true); }
namespace {
std::atomic<UvcLinkPropertyPageShower> gPageShower{nullptr};

int showPage(const char *title, bool stream) {
    const std::string text = backend().propertyPage(stream);
    if (text.empty()) return 0;
    if (UvcLinkPropertyPageShower show = gPageShower.load()) show(title, text.c_str());
    else std::fprintf(stderr, "UvcLink: %s\n%s\n", title, text.c_str());
    return 0;
}
}  // namespace

int ShowCameraPropertyDialog(int) { return showPage("Camera Properties", false); }
int ShowStreamPropertyDialog(int) { return showPage("Stream Properties", true); }
void UvcLinkSetPropertyPageShower(UvcLinkPropertyPageShower show) { gPageShower.store(show); }

int UvcLinkPreviewFrame(unsigned char *rgb, int width, int height) {
    if (!rgb || width <= 0 || height <= 0 || width > 4096 || height > 4096) return -1;
    return backend().previewFrame(std::span<uint8_t>(rgb, static_cast<size_t>(width) * height * 3), width, height);
}
