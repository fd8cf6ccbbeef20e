// Unit 15 of the simulated camera: machine serial, the absolute PTZ block, the category
// channel with its feedback words, and the categories behind it: the 2 KB EEPROM (0x29), the
// white-balance calibration record (0x2B) and the test pattern (0x2D).
//
// The firmware works on a RAM copy of the EEPROM: EEPROM WRITE changes the copy, SAVE ALL
// stores it, and every boot reloads the copy from the EEPROM. A reconnect is no boot, so it
// keeps unsaved data too; a re-plug loses it. Calibration writes are stored at once.
#include <algorithm>

#include "sim/SimState.h"

namespace sim::detail {
namespace {

constexpr uint8_t kEepromCategory = 0x29;
constexpr uint8_t kCalibrationCategory = 0x2B;
constexpr uint8_t kTestPatternCategory = 0x2D;
constexpr uint8_t kTestPatterns = 8;

void put16(std::span<uint8_t> out, size_t at, uint16_t v) {
    out[at] = static_cast<uint8_t>(v >> 8);
    out[at + 1] = static_cast<uint8_t>(v);
}

uint16_t get16(std::span<const uint8_t> in, size_t at) { return static_cast<uint16_t>(in[at] << 8 | in[at + 1]); }

void storeCalibration(State &s, uint16_t offset, std::span<const uint8_t> bytes) {
    for (size_t i = 0; i < bytes.size(); ++i) s.svc.working[kCalibrationBase + offset + i] = s.eeprom[kCalibrationBase + offset + i] = bytes[i];
}

// Where each calibration function keeps its payload: offset into the record, length.
std::optional<std::pair<uint16_t, uint16_t>> calibrationSlot(uint8_t function) {
    switch (function) {
    case 0xF1: return std::pair<uint16_t, uint16_t>{0, 4};   // 4000 K gains
    case 0xF2: return std::pair<uint16_t, uint16_t>{4, 1};   // 4000 K result
    case 0xF3: return std::pair<uint16_t, uint16_t>{8, 4};   // 6500 K gains
    case 0xF4: return std::pair<uint16_t, uint16_t>{12, 1};  // 6500 K result
    default: return std::nullopt;
    }
}

int eepromPacket(State &s, std::span<const uint8_t> p) {
    const uint16_t address = get16(p, 1);
    switch (p[4]) {
    case 1:  // write into the working copy
        if (address >= kEepromSize) return kStall;
        s.svc.working[address] = p[3];
        return kOk;
    case 2:
        s.eeprom = s.svc.working;
        return kOk;
    case 3:
        s.svc.working = factoryEeprom();
        return kOk;
    case 4:
        if (address >= kEepromSize) return kStall;
        s.svc.eepromRead = s.svc.working[address];
        return kOk;
    default:
        return kStall;
    }
}

int calibrationPacket(State &s, std::span<const uint8_t> p) {
    const uint8_t function = p[1];
    const uint8_t operation = p[2];
    if (operation == 0x04) {
        s.svc.calibrationRead.fill(0);
        if (function == 0xF0) {
            put16(s.svc.calibrationRead, 0, s.svc.measuredR);
            put16(s.svc.calibrationRead, 2, s.svc.measuredB);
            return kOk;
        }
        const auto slot = calibrationSlot(function);
        if (!slot) return kStall;
        std::copy_n(s.svc.working.begin() + kCalibrationBase + slot->first, slot->second, s.svc.calibrationRead.begin());
        return kOk;
    }
    if (operation == 0x01) {
        const auto slot = calibrationSlot(function);
        if (!slot) return kStall;  // the measurement is read only
        storeCalibration(s, slot->first, p.subspan(3, slot->second));
        return kOk;
    }
    return kStall;
}

int categoryPacket(State &s, std::span<const uint8_t> p) {
    switch (p[0]) {
    case kEepromCategory: return eepromPacket(s, p);
    case kCalibrationCategory: return calibrationPacket(s, p);
    case kTestPatternCategory:
        if (p[1] >= kTestPatterns) return kStall;
        s.svc.testPattern = p[1];
        return kOk;
    default:
        return kStall;
    }
}

int32_t pan(const State &s) { return static_cast<int32_t>(uint32_t(s.reg[0xE3]) << 16 | s.reg[0xE4]); }
int32_t tilt(const State &s) { return static_cast<int32_t>(uint32_t(s.reg[0xE5]) << 16 | s.reg[0xE6]); }

void setSplit(State &s, uint16_t high, int16_t value) {
    const int32_t v = value;
    s.reg[high] = static_cast<uint16_t>(v >> 16);
    s.reg[high + 1] = static_cast<uint16_t>(v);
}

}  // namespace

void loadWorkingEeprom(State &s) {
    s.svc.working = s.eeprom;
    s.svc.answer.reset();
    s.svc.ack.fill(0);
    s.svc.complete.fill(0);
}

void measureWhiteBalance(State &s) {
    if (s.svc.measurementOverride) {
        std::tie(s.svc.measuredR, s.svc.measuredB) = *s.svc.measurementOverride;
        return;
    }
    // The reference lights are tuned so that a healthy camera lands on the nominal gain 256.
    switch (s.svc.light) {
    case 4000: s.svc.measuredR = 50, s.svc.measuredB = 44; break;
    case 6500: s.svc.measuredR = 46, s.svc.measuredB = 51; break;
    default: s.svc.measuredR = 61, s.svc.measuredB = 57; break;
    }
}

int writeService(State &s, uint16_t sel, std::span<const uint8_t> in) {
    if (s.firmware != Firmware::Application) return kStall;
    auto need = [&](size_t n) { return in.size() == n; };
    switch (sel) {
    case 0x01:
        if (!need(16)) return kStall;
        std::copy(in.begin(), in.end(), s.serial.begin());
        fillSerialRegisters(s);
        return kOk;
    case 0x02:  // pan speed, tilt speed, pan, tilt
        if (!need(8)) return kStall;
        s.reg[0x28] = get16(in, 0);
        s.reg[0x29] = get16(in, 2);
        setSplit(s, 0xE3, static_cast<int16_t>(get16(in, 4)));
        setSplit(s, 0xE5, static_cast<int16_t>(get16(in, 6)));
        return kOk;
    case 0xF9:
        if (!need(3)) return kStall;
        std::copy(in.begin(), in.end(), s.svc.orbvis.begin());
        return kOk;
    case 0xFA:
        if (!need(4)) return kStall;
        s.svc.categoryTimeoutMs = static_cast<uint32_t>(get16(in, 0)) << 16 | get16(in, 2);
        return kOk;
    case 0xFB:
        if (!need(0)) return kStall;
        s.svc.ack.fill(0);
        s.svc.complete.fill(0);
        return kOk;
    case 0xFE: {
        if (!need(27)) return kStall;
        const int rc = categoryPacket(s, in);
        ++s.svc.packets;
        s.svc.ack = {in[0], 0x01, s.svc.packets, 0x00};
        s.svc.complete = {in[0], static_cast<uint8_t>(rc == kOk ? 0x01 : 0x02), s.svc.packets, 0x00};
        return rc;
    }
    case 0xFF: {  // a category read request
        if (!need(1)) return kStall;
        std::array<uint8_t, 26> answer{};
        switch (in[0]) {
        case kEepromCategory: answer[0] = s.svc.eepromRead; break;
        case kCalibrationCategory: answer = s.svc.calibrationRead; break;
        case kTestPatternCategory: answer[0] = s.svc.testPattern; break;
        default: return kStall;
        }
        s.svc.answer = answer;
        return kOk;
    }
    default:
        return kStall;
    }
}

int readService(State &s, uint16_t sel, std::span<uint8_t> out) {
    if (s.firmware != Firmware::Application) return kStall;
    auto need = [&](size_t n) { return out.size() == n; };
    switch (sel) {
    case 0x01:
        if (!need(16)) return kStall;
        std::copy(s.serial.begin(), s.serial.end(), out.begin());
        return kOk;
    case 0x02:  // R1..R9 big-endian, then S1..S6
        if (!need(24)) return kStall;
        put16(out, 0, static_cast<uint16_t>(pan(s)));
        put16(out, 2, static_cast<uint16_t>(tilt(s)));
        put16(out, 4, s.reg[0xE2]);
        put16(out, 6, s.reg[0xDF]);
        put16(out, 8, s.reg[0x28]);
        put16(out, 10, s.reg[0x29]);
        put16(out, 12, s.reg[0x2C]);
        put16(out, 14, s.reg[0x2D]);
        put16(out, 16, s.reg[0xF2]);
        out[18] = static_cast<uint8_t>(s.reg[0xDB]);
        out[19] = static_cast<uint8_t>(s.reg[0xDA]);
        out[20] = static_cast<uint8_t>(s.reg[0xE0]);
        out[21] = static_cast<uint8_t>(s.reg[0x10]);
        out[22] = static_cast<uint8_t>(s.reg[0x1D]);
        out[23] = s.svc.testPattern;
        return kOk;
    case 0xFA:
        if (!need(4)) return kStall;
        put16(out, 0, static_cast<uint16_t>(s.svc.categoryTimeoutMs >> 16));
        put16(out, 2, static_cast<uint16_t>(s.svc.categoryTimeoutMs));
        return kOk;
    case 0xFC:
    case 0xFD:
        if (!need(4)) return kStall;
        std::copy_n((sel == 0xFC ? s.svc.ack : s.svc.complete).begin(), 4, out.begin());
        return kOk;
    case 0xFF:
        if (!need(26) || !s.svc.answer) return kStall;
        std::copy(s.svc.answer->begin(), s.svc.answer->end(), out.begin());
        return kOk;
    default:
        return kStall;
    }
}

}  // namespace sim::detail
