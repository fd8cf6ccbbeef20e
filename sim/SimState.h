// Inside the simulated camera: its whole state and the handlers of each unit. Everything here
// runs with the camera's mutex held (see SimCamera.cpp); nothing here locks or sleeps.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "sim/SimCamera.h"

namespace sim::detail {

// Delays of the camera's own life, in tool-time milliseconds.
inline constexpr double kBootLoaderEntryMs = 800;  // 0x5AA5 to re-attaching in the boot loader
inline constexpr double kRestartMs = 1000;         // [PF RESET] or a re-plug to re-attaching
inline constexpr double kPowerOnMs = 4000;         // 0x55 to 0xAA, through 0xF0, 0xF1, 0xF2
inline constexpr double kPowerOffMs = 200;

// ---- profiles -----------------------------------------------------------------------------
struct Versions {
    const char *usbApp, *usbBl, *master, *masterBl, *motor, *motorBl, *fpga, *interface, *dsp;
};

struct Profile {
    const char *productName;     // as the USB descriptor names it, at most 32 characters
    const char *bootLoaderName;  // the same while the boot loader runs
    const char *serial;          // 16 characters
    uint16_t machineId;
    Versions versions;  // the factory images carry usbApp, usbBl, master (ISP) and dsp (AUDIO)
    std::span<const std::pair<uint16_t, uint16_t>> defaults;  // overrides of the common defaults
};

const Profile &profileData(int profile);

// ---- unit 5: the parameter registers -----------------------------------------------------
enum class RegKind : uint8_t { Unknown, ReadWrite, ReadOnly, WriteOnly, Trigger, Acknowledge };

struct RegisterRow {
    uint16_t selector;
    uint16_t defaultValue;
    RegKind kind;
    uint16_t durationMs;  // triggers and the other acknowledged commands: time to acknowledge
};

std::span<const RegisterRow> registerMap();
uint16_t factoryValue(int profile, uint16_t selector);

inline constexpr size_t kUnit5Size = 0x200;  // S + 0x100 of the highest acknowledged selector

struct Job {
    uint16_t selector;
    uint16_t value;
    double doneAtMs;
};

struct Preset {
    uint16_t pan[2], tilt[2], zoom, focus;
};

// ---- unit 9 --------------------------------------------------------------------------------
struct ProgramFlashEngine {
    uint8_t status = 0x81;  // NG until [PF INIT]
    bool initialised = false;
    uint32_t address = 0;
    uint16_t length = 256;
    std::vector<uint8_t> data;  // the payload of 0x48, written or read
    uint8_t blank = 0, checksum = 0;
};

struct SerialFlashEngine {
    uint32_t address = 0;
    uint8_t byte = 0xFF;
    std::array<uint8_t, 256> page{};
    uint8_t blank = 0, checksum = 0;
    bool externalHeld = false;
    // The ISP stream being received, committed to the ISP store by the stream end.
    std::vector<uint8_t> staging;
    size_t pointer = 0, lastBlock = 0;
    bool haveBlock = false;
};

// ---- unit 15 -------------------------------------------------------------------------------
inline constexpr size_t kCalibrationBase = 0x7E0;  // where the calibration record lives

struct ServiceState {
    std::array<uint8_t, 3> orbvis{};
    uint32_t categoryTimeoutMs = 3000;
    std::array<uint8_t, 4> ack{}, complete{};
    uint8_t packets = 0;
    std::optional<std::array<uint8_t, 26>> answer;  // of the last category read request
    uint8_t eepromRead = 0xFF;                      // prepared by an EEPROM READ
    std::array<uint8_t, 26> calibrationRead{};      // prepared by a calibration read
    std::array<uint8_t, kEepromSize> working{};  // the EEPROM as the firmware holds it in RAM
    uint8_t testPattern = 0;
    uint16_t measuredR = 0, measuredB = 0;
    int light = 0;
    std::optional<std::pair<uint16_t, uint16_t>> measurementOverride;
};

// ---- the camera ----------------------------------------------------------------------------
using Key = std::pair<int, uint16_t>;

struct LeaveRequest {
    double reattachAfterMs;
    std::optional<Firmware> to;  // nullopt: whatever the program flash can run
};

struct State {
    std::mutex mutex;
    int profile = 2;
    bool attached = true;
    Firmware firmware = Firmware::Application;
    std::optional<double> reattachAtMs;
    std::optional<Firmware> reattachTo;
    // Set by a command that makes the camera leave the bus once its own access is answered.
    std::optional<LeaveRequest> leaveAfterAccess;
    bool neverReattach = false;
    bool streaming = false;

    std::array<uint16_t, kUnit5Size> reg{};
    std::array<uint16_t, kUnit5Size> saved{};  // last-memory set, restored at every boot
    std::vector<Job> jobs;
    bool neverAcknowledge = false;
    double powerOnStartMs = 0, powerOnEndMs = 0;
    bool poweringOn = false;
    std::map<uint8_t, Preset> presets;
    std::array<uint8_t, 64> errors{}, warnings{};

    std::vector<uint8_t> pf, sf, isp;
    std::array<uint8_t, kEepromSize> eeprom{};  // saved content, survives everything
    std::array<char, 16> serial{};
    ProgramFlashEngine pfe;
    SerialFlashEngine sfe;
    ServiceState svc;
    BridgeState bridge;

    std::map<Key, int> failCounts;
    std::map<Key, int> leaveCounts;
    std::map<Key, std::deque<uint16_t>> queuedReads;
    std::map<Key, std::deque<std::vector<uint8_t>>> queuedBlocks;
    double latencyMs = 0;

    std::vector<std::string> traffic;
};

std::array<uint8_t, kEepromSize> factoryEeprom();
// Factory state of a profile (memories, registers, EEPROM), attached and running.
void factoryReset(State &s, int profile);
// Processes everything that became due by now: re-attaching, power, acknowledgements.
void settle(State &s, double nowMs);
// The camera boots what its program flash holds: registers from the last-memory set, engines
// reset, version registers from the images.
void boot(State &s, Firmware firmware);
void detach(State &s, std::optional<double> reattachAtMs, std::optional<Firmware> to = std::nullopt);
// What a restart runs: the application when it is signed, else the boot loader.
Firmware bootTarget(const State &s);
void record(State &s, std::string line);

// Handlers: kOk or kStall. The caller has already checked presence and faults.
int readUnit5(State &s, uint16_t sel, uint16_t &value, double nowMs);
int writeUnit5(State &s, uint16_t sel, uint16_t value, double nowMs);
int readTable(State &s, int unit, uint16_t sel, uint16_t &value);
int readFlash(State &s, uint16_t sel, std::span<uint8_t> out);
int writeFlash(State &s, uint16_t sel, std::span<const uint8_t> in, double nowMs);
int readService(State &s, uint16_t sel, std::span<uint8_t> out);
int writeService(State &s, uint16_t sel, std::span<const uint8_t> in);

// Service helpers shared with unit 5 (the serial is readable from both units).
void loadWorkingEeprom(State &s);
void measureWhiteBalance(State &s);
void fillVersionRegisters(State &s);
void fillSerialRegisters(State &s);

}  // namespace sim::detail
