// The simulated camera as a backend of the camera access library.
#include <cstdio>
#include <mutex>

#include "device/CameraBackend.h"
#include "sim/FrameGenerator.h"
#include "sim/SimCamera.h"

namespace uvclink {
namespace {

class SimBackend final : public CameraBackend {
public:
    explicit SimBackend(int profile) { sim::camera().selectProfile(profile); }

    bool present() override { return sim::camera().attached(); }
    std::string name() override { return sim::camera().deviceName(); }
    std::string port() override { return sim::camera().attached() ? "sim" : ""; }
    void release() override { stopPreview(); }

    int read(int unit, uint16_t selector, uint16_t &value) override {
        return sim::camera().readRegister(unit, selector, value);
    }
    int write(int unit, uint16_t selector, uint16_t value) override {
        return sim::camera().writeRegister(unit, selector, value);
    }
    int readBlock(int unit, uint16_t selector, std::span<uint8_t> payload) override {
        return sim::camera().readBlock(unit, selector, payload);
    }
    int writeBlock(int unit, uint16_t selector, std::span<const uint8_t> payload) override {
        return sim::camera().writeBlock(unit, selector, payload);
    }

    int startPreview(bool snapshots) override {
        if (!sim::camera().attached()) return -1;
        std::lock_guard lock(mutex_);
        running_ = true;
        snapshots_ = snapshots;
        sim::camera().setStreaming(true);
        return 0;
    }
    int stopPreview() override {
        std::lock_guard lock(mutex_);
        if (running_) sim::camera().setStreaming(false);
        running_ = false;
        snapshots_ = false;
        return 0;
    }

    int capture(const char *path, bool raw) override {
        {
            std::lock_guard lock(mutex_);
            // Still capture needs a stream set up for it, on a camera still on the bus.
            if (!running_ || !snapshots_ || !sim::camera().attached()) return -1;
        }
        if (!path) return -1;
        const sim::RgbFrame frame = sim::RenderFrame(sim::CurrentFrameParams());
        std::string error;
        const bool ok = sim::WriteFileWhole(path, raw ? sim::BayerFromRgb(frame) : sim::EncodeBmp(frame), error);
        if (!ok) std::fprintf(stderr, "UvcLink: snapshot not saved: %s\n", error.c_str());
        return ok ? 0 : -1;
    }

    // The simulated camera offers one fixed stream and no settings of its own outside its
    // registers, so both pages only show what is set now.
    std::string propertyPage(bool stream) override {
        char text[256];
        if (stream) {
            bool snapshots = false;
            {
                std::lock_guard lock(mutex_);
                snapshots = running_ && snapshots_;
            }
            std::snprintf(text, sizeof text, "%d x %d, RGB 24 bit, 30 frames/s\nStill capture: %s", sim::kFrameWidth,
                          sim::kFrameHeight, snapshots ? "on" : "off");
        } else {
            const sim::FrameParams p = sim::CurrentFrameParams();
            std::snprintf(text, sizeof text,
                          "Pan %d, tilt %d, zoom %d\nBrightness %d, contrast %d, hue %d, saturation %d\n"
                          "Red gain %d, blue gain %d, mirror %s",
                          p.pan, p.tilt, p.zoom, p.brightness, p.contrast, p.hue, p.saturation, p.redGain, p.blueGain,
                          p.mirror ? "on" : "off");
        }
        return text;
    }

    int previewFrame(std::span<uint8_t> rgb, int width, int height) override {
        {
            std::lock_guard lock(mutex_);
            if (!running_) return -1;
        }
        if (width <= 0 || height <= 0 || rgb.size() < static_cast<size_t>(width) * height * 3) return -1;
        const sim::RgbFrame frame = sim::RenderFrame(sim::CurrentFrameParams(), width, height);
        std::copy(frame.rgb.begin(), frame.rgb.end(), rgb.begin());
        return 0;
    }

private:
    std::mutex mutex_;
    bool running_ = false;
    bool snapshots_ = false;
};

}  // namespace

std::unique_ptr<CameraBackend> MakeSimBackend(int profile) { return std::make_unique<SimBackend>(profile); }

}  // namespace uvclink
