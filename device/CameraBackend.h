// One way of reaching a camera, behind the camera access library's C-style API (UvcLink.h).
// The library picks one backend from UVCLINK_DEVICE; the tool never sees which.
//
// Thread rules: a backend is called from the user-interface thread and from one worker at a
// time besides; implementations must be safe for such concurrent calls.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace uvclink {

class CameraBackend {
public:
    virtual ~CameraBackend() = default;

    virtual bool present() = 0;
    // The product name, at most 32 characters; empty when no camera is there.
    virtual std::string name() = 0;
    // Where the camera is plugged in: the USB port path ("3-1.4") of a real camera, "sim" for
    // the simulated one; empty when no camera is there.
    virtual std::string port() { return {}; }
    // Closes the connection; the next presence test opens it again.
    virtual void release() {}

    // Register channel: 0 or more on success, negative on failure. Block payloads have the
    // command's length, which the library has already looked up.
    virtual int read(int unit, uint16_t selector, uint16_t &value) = 0;
    virtual int write(int unit, uint16_t selector, uint16_t value) = 0;
    virtual int readBlock(int unit, uint16_t selector, std::span<uint8_t> payload) = 0;
    virtual int writeBlock(int unit, uint16_t selector, std::span<const uint8_t> payload) = 0;

    // Preview and capture; backends without video accept and ignore them.
    virtual int startPreview(bool /*snapshots*/) { return 0; }
    virtual int stopPreview() { return 0; }
    virtual int capture(const char * /*path*/, bool /*raw*/) { return 0; }
    // The text of the device's (stream false) or its stream format's (true) property page;
    // empty when the backend has none.
    virtual std::string propertyPage(bool /*stream*/) { return {}; }
    // The picture the preview shows now, 8-bit RGB rows top to bottom; negative when none runs.
    virtual int previewFrame(std::span<uint8_t> /*rgb*/, int /*width*/, int /*height*/) { return -1; }
};

// The simulated camera of libvccsim, switched to the given model profile.
std::unique_ptr<CameraBackend> MakeSimBackend(int profile);
// No camera at all: nothing present, every access fails.
std::unique_ptr<CameraBackend> MakeAbsentBackend();

}  // namespace uvclink
