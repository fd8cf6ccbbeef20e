// The simulated camera: a model of the camera's side of every exchange the tool makes, good
// enough to run every feature end to end without hardware. It lives in the shared library
// libvccsim so that the camera access library (device/) and the vendor library replacement
// (libSunplusCamera.so) talk to the very same camera.
//
// One camera per process, reached through sim::camera(). It has three faces:
//   - the host side: what a USB host sees (presence, name, single registers, blocks);
//   - the USB bridge side: what the chip vendor's tools reach (program flash, restart);
//   - the control API for tests and scripts: reset to a profile, plug and unplug, fault
//     injection, scripted answers, the traffic record and flash dumps.
// Every timing (acknowledgements, power transitions, re-attaching after a reset) is computed
// lazily from vcc::clock, so scaled tests run fast and no thread is needed.
//
// Thread rules: every member function is safe from any thread; one mutex guards the whole
// camera and each call is atomic with respect to the others. The device latency is slept
// outside the mutex.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

namespace detail {
struct State;
}

// Results of host-side accesses, as a USB host sees them.
enum : int {
    kOk = 0,
    kStall = -1,     // the camera refused the request (unknown register, bad payload, wrong mode)
    kNoDevice = -2,  // nothing on the bus
};

enum class Firmware { Application, BootLoader };
enum class DumpKind { ProgramFlash, SerialFlash, IspStore };

// Sizes of the camera's memories.
inline constexpr size_t kProgramFlashSize = 128 * 1024;
inline constexpr size_t kBootLoaderSize = 0x4000;  // sectors 0 to 3
inline constexpr size_t kSerialFlashSize = 512 * 1024;
inline constexpr size_t kIspStoreCapacity = 4 * 1024 * 1024;
inline constexpr size_t kEepromSize = 2048;
inline constexpr size_t kSectorSize = 4096;

// Version marker: an image carries its version as this text followed by the version
// characters (7 for an application, 3 for the USB bridge's boot loader). The camera reports
// the version of the first marker it finds in the region an image occupies.
inline constexpr std::string_view kVersionMarker = "@(#)VER:";

// The 32-byte application header that [PF SIGN APP] writes at 0x4000, computed over the
// application body (0x4020 to the end of the program flash). A program flash image is
// bootable when its header equals this.
std::array<uint8_t, 32> ApplicationHeader(std::span<const uint8_t> programFlash);
bool IsApplicationSigned(std::span<const uint8_t> programFlash);
// The version text behind the first marker in data, or an empty text when there is none.
std::string FindVersion(std::span<const uint8_t> data, size_t length);

// State of the USB bridge as the vendor library replacement sees it.
struct BridgeState {
    bool libraryPresent = true;  // libSunplusCamera.so pretends to be absent when false
    uint32_t chipType = 0x6D;    // the low byte is what Get_ASICType reports
    bool status1B = false;       // the next download reports the unexpected status 0x1B
    int failDownloads = 0;       // the next downloads fail at once, as a chip that stops answering
};

class Camera {
public:
    Camera();
    ~Camera();
    Camera(const Camera &) = delete;
    Camera &operator=(const Camera &) = delete;

    // ---- host side --------------------------------------------------------------------------
    bool attached();
    Firmware firmware();
    int profile();
    // The USB product name; empty while detached.
    std::string deviceName();
    int readRegister(int unit, uint16_t selector, uint16_t &value);
    int writeRegister(int unit, uint16_t selector, uint16_t value);
    // out.size() is the payload length the host asks for; the camera stalls when it is not
    // the length the command carries.
    int readBlock(int unit, uint16_t selector, std::span<uint8_t> out);
    int writeBlock(int unit, uint16_t selector, std::span<const uint8_t> payload);
    // The preview stream, reflected in the high nibble of register 0xCC.
    void setStreaming(bool on);

    // ---- USB bridge side (vendor library replacement) ----------------------------------------
    BridgeState bridge();
    void setBridge(const BridgeState &state);
    std::vector<uint8_t> programFlash();
    // Rewrites the whole program flash, boot loader included (the vendor path); a shorter
    // image leaves the rest erased. No restart: call restart() afterwards.
    bool vendorWriteProgramFlash(std::span<const uint8_t> image);
    // Leaves the bus now and re-attaches after the boot delay, running the application when
    // it is signed, else the boot loader.
    void restart();

    // ---- control API -------------------------------------------------------------------------
    // A factory-new camera of profile 0, 1 or 2, attached and running its application; clears
    // faults, scripted answers, latency and the traffic record. Other profiles are refused.
    bool reset(int profile);
    // Resets to the profile unless the camera already is one of it.
    void selectProfile(int profile);
    // The cable: unplug drops the camera off the bus and loses everything volatile (the
    // EEPROM and the flashes keep their contents); plug boots it.
    void unplug();
    void plug();
    // Leaves the bus now; re-attaches after the given delay (nullopt: only when plugged again).
    void leaveBus(std::optional<double> reattachAfterMs);
    // The count-th next access of unit and selector finds the camera gone: it fails and the
    // camera leaves the bus for good (until plug()).
    void leaveBusAt(int unit, uint16_t selector, int count = 1);
    // The next count accesses of unit and selector (reads and writes alike) fail.
    void failNext(int unit, uint16_t selector, int count);
    void setNeverReattach(bool on);
    void setNeverAcknowledge(bool on);
    // Each host access takes this long (tool-time milliseconds). 0 by default.
    void setLatencyMs(double ms);
    // Scripted answers: the next reads of unit and selector return these values (or payloads),
    // one per read, before the camera answers normally again.
    void queueReads(int unit, uint16_t selector, std::vector<uint16_t> values);
    void queueBlockRead(int unit, uint16_t selector, std::vector<uint8_t> payload);
    // Sets a register as the camera's firmware would (units 5, 6, 7; no checks, no traffic).
    bool setRegister(int unit, uint16_t selector, uint16_t value);
    std::optional<uint16_t> registerValue(int unit, uint16_t selector);
    // The light in front of the lens: 4000 or 6500 (kelvin) are the calibration lights; any
    // other value is a dim mixed light. A one-push white balance measures it.
    void setLight(int kelvin);
    // Overrides the measurement of the next one-push white balances.
    void setMeasurement(uint16_t red, uint16_t blue);

    // Memories.
    std::vector<uint8_t> serialFlash();
    std::vector<uint8_t> ispStore();
    std::vector<uint8_t> eeprom();  // the saved EEPROM content
    bool dump(DumpKind kind, const std::string &path, std::string &error);

    // Traffic record: one line per host access, plus bus events.
    std::vector<std::string> traffic();
    size_t trafficSize();
    void clearTraffic();
    bool writeTraffic(const std::string &path, std::string &error);

private:
    template <typename F> auto locked(F &&f);
    void sleepLatency();
    std::unique_ptr<detail::State> state_;
};

Camera &camera();

// Runs one line of the script language's `sim` command (without the word "sim"): unplug,
// plug, reg UNIT SEL VALUE, fail UNIT SEL COUNT, traffic FILE, dump pf|sf|isp FILE,
// vendorlib absent|present, chiptype N, status-1b, and the extras listed in sim/README.md.
// Returns true on success; otherwise message says what was wrong.
bool RunCommand(std::string_view line, std::string &message);

}  // namespace sim
