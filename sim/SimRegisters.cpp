// Units 5, 6 and 7 of the simulated camera (single registers) and the camera's life on the
// bus: acknowledged commands, power transitions, boot-loader entry, booting.
#include <algorithm>

#include "sim/SimState.h"

namespace sim::detail {
namespace {

struct Kinds {
    std::array<RegKind, kUnit5Size> kind{};
    std::array<uint16_t, kUnit5Size> duration{};
};

const Kinds &kinds() {
    static const Kinds table = [] {
        Kinds k;
        for (const RegisterRow &row : registerMap()) {
            k.kind[row.selector] = row.kind;
            k.duration[row.selector] = row.durationMs;
            if (row.durationMs) k.kind[row.selector + 0x100] = RegKind::Acknowledge;
        }
        for (uint16_t sel = 0x80; sel <= 0xC4; ++sel) k.kind[sel] = RegKind::ReadOnly;  // texts, machine id
        return k;
    }();
    return table;
}

bool isParameter(uint16_t sel) {
    const RegKind k = kinds().kind[sel];
    return k == RegKind::ReadWrite && sel != 0xF2;
}

void schedule(State &s, uint16_t sel, uint16_t value, double doneAtMs) {
    std::erase_if(s.jobs, [sel](const Job &j) { return j.selector == sel; });
    s.jobs.push_back({sel, value, doneAtMs});
}

void finish(State &s, const Job &job) {
    switch (job.selector) {
    case 0x11:  // factory reset: every parameter back to the factory value, presets gone
        for (uint16_t sel = 0; sel < kUnit5Size; ++sel)
            if (isParameter(sel)) s.reg[sel] = s.saved[sel] = factoryValue(s.profile, sel);
        s.presets.clear();
        break;
    case 0xF4:  // system reset: the parameters of the last memory
        for (uint16_t sel = 0; sel < kUnit5Size; ++sel)
            if (isParameter(sel)) s.reg[sel] = s.saved[sel];
        break;
    case 0x23:
        for (uint16_t sel = 0; sel < kUnit5Size; ++sel)
            if (isParameter(sel)) s.saved[sel] = s.reg[sel];
        break;
    case 0xF5:
        s.errors.fill(0);
        s.warnings.fill(0);
        break;
    case 0x21:
    case 0x22:
        s.reg[0xE3] = s.reg[0xE4] = s.reg[0xE5] = s.reg[0xE6] = 0;
        break;
    case 0x1D:
        if (auto it = s.presets.find(static_cast<uint8_t>(job.value)); it != s.presets.end()) {
            s.reg[0xE3] = it->second.pan[0], s.reg[0xE4] = it->second.pan[1];
            s.reg[0xE5] = it->second.tilt[0], s.reg[0xE6] = it->second.tilt[1];
            s.reg[0xE2] = it->second.zoom, s.reg[0xDF] = it->second.focus;
        }
        break;
    case 0xF2:
        if (job.value == 0xAA) s.poweringOn = false, s.reg[0xF2] = 0xAA;
        break;
    default:
        break;
    }
    if (!s.neverAcknowledge) s.reg[job.selector + 0x100] = 1;
}

}  // namespace

Firmware bootTarget(const State &s) {
    return IsApplicationSigned(s.pf) ? Firmware::Application : Firmware::BootLoader;
}

void detach(State &s, std::optional<double> reattachAtMs, std::optional<Firmware> to) {
    if (s.attached) record(s, "# detach");
    s.attached = false;
    s.reattachAtMs = reattachAtMs;
    s.reattachTo = to;
    s.jobs.clear();
    s.poweringOn = false;
    s.streaming = false;
}

void boot(State &s, Firmware firmware) {
    s.attached = true;
    s.firmware = firmware;
    s.reattachAtMs.reset();
    s.reattachTo.reset();
    s.jobs.clear();
    s.poweringOn = false;
    s.streaming = false;
    s.pfe = ProgramFlashEngine{};
    s.sfe = SerialFlashEngine{};
    // Volatile registers come back from the last memory; the camera powers up on.
    for (uint16_t sel = 0; sel < kUnit5Size; ++sel) {
        if (isParameter(sel)) s.reg[sel] = s.saved[sel];
        if (kinds().kind[sel] == RegKind::Acknowledge) s.reg[sel] = 0;
    }
    s.reg[0xF2] = 0xAA;
    fillVersionRegisters(s);
    fillSerialRegisters(s);
    loadWorkingEeprom(s);
    record(s, firmware == Firmware::Application ? "# attach app" : "# attach bl");
}

void settle(State &s, double nowMs) {
    if (!s.attached) {
        if (s.reattachAtMs && nowMs >= *s.reattachAtMs && !s.neverReattach)
            boot(s, s.reattachTo.value_or(bootTarget(s)));
        return;
    }
    if (s.jobs.empty()) return;
    std::sort(s.jobs.begin(), s.jobs.end(), [](const Job &a, const Job &b) { return a.doneAtMs < b.doneAtMs; });
    while (!s.jobs.empty() && s.jobs.front().doneAtMs <= nowMs) {
        const Job job = s.jobs.front();
        s.jobs.erase(s.jobs.begin());
        finish(s, job);
    }
}

int readUnit5(State &s, uint16_t sel, uint16_t &value, double nowMs) {
    if (s.firmware != Firmware::Application || sel >= kUnit5Size) return kStall;
    switch (kinds().kind[sel]) {
    case RegKind::Unknown:
    case RegKind::WriteOnly:
        return kStall;
    default:
        break;
    }
    value = s.reg[sel];
    if (sel == 0xF2 && s.poweringOn) {
        // Power-on passes through three transition values, a third of the time each.
        const double part = (nowMs - s.powerOnStartMs) / (s.powerOnEndMs - s.powerOnStartMs);
        value = static_cast<uint16_t>(0xF0 + std::clamp(static_cast<int>(part * 3), 0, 2));
    } else if (sel == 0xCC) {
        value = static_cast<uint16_t>((value & 0x0F) | (s.streaming ? 0x10 : 0x00));
    }
    return kOk;
}

int writeUnit5(State &s, uint16_t sel, uint16_t value, double nowMs) {
    if (s.firmware != Firmware::Application || sel >= kUnit5Size) return kStall;
    const RegKind kind = kinds().kind[sel];
    const double duration = kinds().duration[sel];
    switch (kind) {
    case RegKind::Unknown:
    case RegKind::ReadOnly:
        return kStall;
    case RegKind::Acknowledge:
        s.reg[sel] = value;
        return kOk;
    case RegKind::Trigger:
        if (value != 0xAA) return kStall;
        if (sel == 0x02) measureWhiteBalance(s);
        schedule(s, sel, value, nowMs + duration);
        return kOk;
    case RegKind::WriteOnly:  // 0xFF: only the boot-loader entry word is a command
        if (value != 0x5AA5) return kStall;
        s.leaveAfterAccess = LeaveRequest{kBootLoaderEntryMs, Firmware::BootLoader};
        return kOk;
    case RegKind::ReadWrite:
        break;
    }
    switch (sel) {
    case 0xF2:
        if (value == 0xAA) {
            if (s.reg[0xF2] == 0x55 && !s.poweringOn) {
                s.poweringOn = true;
                s.powerOnStartMs = nowMs;
                s.powerOnEndMs = nowMs + duration;
                schedule(s, sel, value, s.powerOnEndMs);
            } else if (!s.poweringOn) {
                schedule(s, sel, value, nowMs + 300);
            }
        } else if (value == 0x55) {
            s.poweringOn = false;
            s.reg[0xF2] = 0x55;
            s.streaming = false;
            schedule(s, sel, value, nowMs + kPowerOffMs);
        } else {
            return kStall;
        }
        return kOk;
    case 0xFB:
        if (value != 0xAA && value != 0x55) return kStall;
        break;
    case 0xFA:  // the output format changes only in debug mode
        if (s.reg[0xF9] != 2) return kStall;
        break;
    case 0x1D:
        schedule(s, sel, value, nowMs + duration);
        break;
    case 0x1E:
        s.presets[static_cast<uint8_t>(value)] = {
            {s.reg[0xE3], s.reg[0xE4]}, {s.reg[0xE5], s.reg[0xE6]}, s.reg[0xE2], s.reg[0xDF]};
        break;
    case 0x1F:
        s.presets.erase(static_cast<uint8_t>(value));
        break;
    default:
        break;
    }
    s.reg[sel] = value;
    return kOk;
}

int readTable(State &s, int unit, uint16_t sel, uint16_t &value) {
    if (s.firmware != Firmware::Application || sel >= 64) return kStall;
    value = unit == 6 ? s.errors[sel] : s.warnings[sel];
    return kOk;
}

}  // namespace sim::detail
