// The three camera models as the simulated camera plays them: identification, factory
// register values and the factory images in its memories.
#include <algorithm>
#include <cstring>

#include "sim/SimState.h"

namespace sim::detail {
namespace {

using R = RegisterRow;
constexpr RegKind RW = RegKind::ReadWrite;
constexpr RegKind RO = RegKind::ReadOnly;
constexpr RegKind WO = RegKind::WriteOnly;
constexpr RegKind TR = RegKind::Trigger;

// Every unit-5 register the tool knows. Defaults lie inside the ranges the tool's panels
// offer for the QM-T77K; the other profiles override what differs. Rows with a duration are
// acknowledged at S + 0x100 that long after the command.
constexpr RegisterRow kRegisters[] = {
    // image
    {0x01, 0, RW, 0},     // WDR
    {0x05, 2, RW, 0},     // 2DNR
    {0x06, 2, RW, 0},     // 3DNR
    {0x09, 0, RW, 0},     // skin tone
    {0x0A, 0, RW, 0},     // black level
    {0x0B, 0, RW, 0},     // mirror
    {0x26, 3, RW, 0},     // freeze: off (2 on, 3 off)
    {0x2F, 0, RW, 0},     // picture effect
    {0xD1, 8, RW, 0},     // brightness
    {0xD2, 8, RW, 0},     // contrast
    {0xD5, 8, RW, 0},     // hue
    {0xD6, 8, RW, 0},     // saturation
    {0xD7, 6, RW, 0},     // sharpness
    {0xD8, 1, RW, 0},     // gamma
    // exposure and white balance
    {0xDB, 2, RW, 0},     // AE mode: auto
    {0xDC, 0, RW, 0},     // AE priority
    {0x13, 0, RW, 0},     // AE select
    {0xD3, 0, RW, 0},     // gain
    {0x12, 12, RW, 0},    // gain limit
    {0xDE, 10, RW, 0},    // exposure time
    {0xE1, 3, RW, 0},     // iris
    {0xD4, 1, RW, 0},     // power frequency
    {0x32, 3, RW, 0},     // AE compensation: off
    {0x33, 3, RW, 0},     // spot light: off
    {0x34, 0, RW, 0},     // spot light X
    {0x35, 0, RW, 0},     // spot light Y
    {0xDA, 1, RW, 0},     // AWB mode: auto
    {0x14, 0, RW, 0},     // AWB select
    {0xD9, 22, RW, 0},    // WB temperature
    {0x03, 128, RW, 0},   // red gain
    {0x04, 128, RW, 0},   // blue gain
    {0x02, 0, TR, 5000},  // WB one push
    {0x20, 3, RW, 0},     // backlight: off
    {0xD0, 0, RW, 0},     // backlight compensation
    // zoom and focus
    {0xE2, 0, RW, 0},     // zoom
    {0x30, 0, RW, 0},     // digital zoom limit
    {0x31, 0, RW, 0},     // digital zoom position
    {0xE0, 1, RW, 0},     // AF mode: auto
    {0xDF, 0, RW, 0},     // focus
    {0x25, 0, TR, 2500},  // AF one push
    {0x0C, 2, RW, 0},     // AF sensitivity: normal
    {0x0D, 2, RW, 0},     // AF speed: normal
    {0x0E, 2, RW, 0},     // AF frame: full
    {0x2A, 0, RW, 0},     // zoom motion code
    {0x2B, 0, RW, 0},     // focus motion code
    {0x2C, 3, RW, 0},     // zoom speed
    {0x2D, 3, RW, 0},     // focus speed
    // pan and tilt, presets, infrared, audio
    {0x21, 0, TR, 2000},  // pan-tilt home
    {0x22, 0, TR, 3000},  // pan-tilt reset
    {0x24, 3, RW, 0},     // pan-tilt limit: off
    {0x15, 0x0000, RW, 0}, {0x16, 100, RW, 0},     // pan right limit
    {0x17, 0xFFFF, RW, 0}, {0x18, 0xFF9C, RW, 0},  // pan left limit (-100)
    {0x19, 0x0000, RW, 0}, {0x1A, 100, RW, 0},     // tilt up limit
    {0x1B, 0xFFFF, RW, 0}, {0x1C, 0xFF9C, RW, 0},  // tilt down limit
    {0xE3, 0, RW, 0}, {0xE4, 0, RW, 0},            // pan
    {0xE5, 0, RW, 0}, {0xE6, 0, RW, 0},            // tilt
    {0x27, 0, RW, 0},     // pan-tilt motion code
    {0x28, 5, RW, 0},     // pan speed
    {0x29, 5, RW, 0},     // tilt speed
    {0x1D, 0, RW, 1500},  // preset load (acknowledged)
    {0x1E, 0, RW, 0},     // preset save
    {0x1F, 0, RW, 0},     // preset clear
    {0x10, 0, RW, 0},     // IR out
    {0x0F, 2, RW, 0},     // IR receive: on
    {0x36, 1, RW, 0},     // microphone
    // power and system
    {0xF2, 0xAA, RW, 4000},  // power (acknowledged; the duration is the power-on time)
    {0xFB, 0x55, RW, 0},     // power method
    {0x2E, 0, RW, 0},        // preview standby time
    {0x11, 0, TR, 3000},     // factory reset
    {0xF4, 0, TR, 4000},     // system reset
    {0x23, 0, TR, 1500},     // last memory save
    {0xF5, 0, TR, 1000},     // error clear
    {0xF6, 0, TR, 600},      // error table ready
    {0xF7, 0, TR, 600},      // warning table ready
    {0xF8, 3, RW, 0},        // error LED: off
    {0xF9, 3, RW, 0},        // debug enable: off
    {0xFA, 3, RW, 0},        // raw (2) / YUV (MJPG) (3), written only with debug enable 2
    {0xFF, 0, WO, 0},        // enter the boot loader
    // identification and status: the texts are filled at boot
    {0xCC, 0x01, RO, 0},  // stream type; the high nibble follows the preview stream
    {0xCD, 0x05, RO, 0},  // USB resolution
    {0xCE, 0x02, RO, 0},  // USB frame rate
    {0xCF, 0x12, RO, 0},  // USB speed / transfer type
};

constexpr std::pair<uint16_t, uint16_t> kProfile0Defaults[] = {{0x30, 0}};
constexpr std::pair<uint16_t, uint16_t> kProfile1Defaults[] = {
    {0x03, 30}, {0x04, 30}, {0xD9, 15}, {0x12, 10}, {0xE1, 4}, {0x2C, 4},
    {0xCD, 1},  // USB resolution code 1, whose digital zoom range the tool knows
};
constexpr std::pair<uint16_t, uint16_t> kProfile2Defaults[] = {
    {0x30, 3},                                      // digital zoom limit 2 to 3
    {0x16, 127}, {0x18, 0xFF81}, {0x1A, 127}, {0x1C, 0xFF81},  // limits of +-127
};

constexpr Profile kProfiles[] = {
    {"QM-S20 USB PTZ Camera", "QM-S20 Boot Loader", "QS20S23110400042", 0x0A21,
     {"US20107", "B01", "MS20112", "B02", "TS20104", "B01", "FS20007", "NS20003", "DS20001"},
     kProfile0Defaults},
    {"QM-H30 USB PTZ Camera", "QM-H30 Boot Loader", "QH30H24010200007", 0x0B35,
     {"UH30121", "B02", "MH30230", "B03", "TH30118", "B02", "CH30012", "NH30001", "DH30105"},
     kProfile1Defaults},
    {"QM-T77K USB Camera", "QM-T77K Boot Loader", "QT77K24050100017", 0x0C77,
     {"U77K105", "B03", "I77K212", "---", "-------", "---", "-------", "-------", "A77K031"},
     kProfile2Defaults},
};

// Deterministic filler so that images look like code and checksums mean something.
void fillPattern(std::vector<uint8_t> &image, size_t from, size_t to, uint32_t seed) {
    uint32_t x = seed;
    for (size_t i = from; i < to && i < image.size(); ++i) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        image[i] = static_cast<uint8_t>(x);
    }
}

void putMarker(std::vector<uint8_t> &image, size_t at, const char *version) {
    std::string text(kVersionMarker);
    text += version;
    text.push_back('\0');
    std::copy(text.begin(), text.end(), image.begin() + static_cast<std::ptrdiff_t>(at));
}

void putText(State &s, uint16_t first, std::string_view text, size_t length) {
    for (size_t i = 0; i < length; ++i)
        s.reg[first + i] = i < text.size() ? static_cast<uint8_t>(text[i]) : 0;
}

std::string versionOr(std::span<const uint8_t> region, size_t length) {
    std::string v = FindVersion(region, length);
    return v.empty() ? std::string(length, '-') : v;
}

}  // namespace

const Profile &profileData(int profile) { return kProfiles[std::clamp(profile, 0, 2)]; }

std::span<const RegisterRow> registerMap() { return kRegisters; }

uint16_t factoryValue(int profile, uint16_t selector) {
    for (const auto &[sel, value] : profileData(profile).defaults)
        if (sel == selector) return value;
    for (const RegisterRow &row : kRegisters)
        if (row.selector == selector) return row.defaultValue;
    return 0;
}

void fillVersionRegisters(State &s) {
    const Versions &v = profileData(s.profile).versions;
    const std::span<const uint8_t> pf(s.pf);
    putText(s, 0x80, versionOr(pf.subspan(kBootLoaderSize), 7), 7);  // USB application
    putText(s, 0x87, versionOr(pf.first(kBootLoaderSize), 3), 3);    // USB boot loader
    putText(s, 0x8A, versionOr(s.isp, 7), 7);                         // master / ISP
    putText(s, 0x91, v.masterBl, 3);
    putText(s, 0x94, v.motor, 7);
    putText(s, 0x9B, v.motorBl, 3);
    putText(s, 0x9E, v.fpga, 7);
    putText(s, 0xA5, v.interface, 7);
    putText(s, 0xBE, versionOr(s.sf, 7), 7);  // DSP / AUDIO
    const uint16_t id = profileData(s.profile).machineId;
    s.reg[0xBC] = id >> 8;
    s.reg[0xBD] = id & 0xFF;
}

void fillSerialRegisters(State &s) {
    for (size_t i = 0; i < s.serial.size(); ++i) s.reg[0xAC + i] = static_cast<uint8_t>(s.serial[i]);
}

std::array<uint8_t, kEepromSize> factoryEeprom() {
    // Erased, with a neutral calibration record: both lights at the nominal gain 256.
    std::array<uint8_t, kEepromSize> e;
    e.fill(0xFF);
    for (size_t at : {kCalibrationBase, kCalibrationBase + 8u}) e[at] = 0x01, e[at + 1] = 0x00, e[at + 2] = 0x01, e[at + 3] = 0x00;
    return e;
}

void factoryReset(State &s, int profile) {
    const Profile &p = profileData(profile);
    s.profile = profile;

    s.reg.fill(0);
    for (const RegisterRow &row : kRegisters) s.reg[row.selector] = factoryValue(profile, row.selector);
    s.saved = s.reg;
    s.presets.clear();
    s.errors.fill(0);
    s.warnings.fill(0);

    // Program flash: boot loader, then a signed application.
    s.pf.assign(kProgramFlashSize, 0xFF);
    fillPattern(s.pf, 0, kBootLoaderSize - 0x800, 0xB007u + profile);
    putMarker(s.pf, 0x100, p.versions.usbBl);
    fillPattern(s.pf, 0x4020, 0x4020 + 48 * 1024, 0xA99u + profile);
    putMarker(s.pf, 0x4100, p.versions.usbApp);
    const auto header = ApplicationHeader(s.pf);
    std::copy(header.begin(), header.end(), s.pf.begin() + 0x4000);

    // Serial flash with the AUDIO (DSP) image; the ISP (master) image in its stream store.
    s.sf.assign(kSerialFlashSize, 0xFF);
    fillPattern(s.sf, 0, 96 * 1024, 0xA0D10u + profile);
    putMarker(s.sf, 0x40, p.versions.dsp);
    s.isp.assign(64 * 1024, 0);
    fillPattern(s.isp, 0, s.isp.size(), 0x15Bu + profile);
    putMarker(s.isp, 0x200, p.versions.master);

    s.eeprom = factoryEeprom();
    std::memcpy(s.serial.data(), p.serial, s.serial.size());
    s.svc = ServiceState{};
    s.bridge = BridgeState{};
}

}  // namespace sim::detail
