// The simulated camera as a backend of the camera access library.
#include "device/CameraBackend.h"
#include "sim/SimCamera.h"

namespace uvclink {
namespace {

class SimBackend final : public CameraBackend {
public:
    explicit SimBackend(int profile) { sim::camera().selectProfile(profile); }

    bool present() override { return sim::camera().attached(); }
    std::string name() override { return sim::camera().deviceName(); }

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
};

}  // namespace

std::unique_ptr<CameraBackend> MakeSimBackend(int profile) { return std::make_unique<SimBackend>(profile); }

}  // namespace uvclink
