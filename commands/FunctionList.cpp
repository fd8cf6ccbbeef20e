// The register map and the generic get and set over it.
#include "commands/FunctionList.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "device/RegisterAccess.h"
#include "ui/UserInterface.h"

namespace fl {
namespace {

using E = Encoding;

// One row per console name; names that are the same registers on another model (or on the
// single-model panel) are rows of their own.
constexpr RegisterCommand kRegisterCommands[] = {
    // identification and status
    {"USB-APP VER.", 0x80, 7, E::Text, kGet, 0},
    {"USB-BL VER.", 0x87, 3, E::Text, kGet, 0},
    {"MASTER-APP VER.", 0x8A, 7, E::Text, kGet, 0},
    {"M12MO VER.", 0x8A, 7, E::Text, kGet, 0},
    {"ISP VER.", 0x8A, 7, E::Text, kGet, 0},
    {"MASTER-BL VER.", 0x91, 3, E::Text, kGet, 0},
    {"MOTOR-APP VER.", 0x94, 7, E::Text, kGet, 0},
    {"MOTOR-BL VER.", 0x9B, 3, E::Text, kGet, 0},
    {"FPGA VER.", 0x9E, 7, E::Text, kGet, 0},
    {"CM VER.", 0x9E, 7, E::Text, kGet, 0},
    {"INTERFACE VER.", 0xA5, 7, E::Text, kGet, 0},
    {"MACHINE SERIAL", 0xAC, 16, E::Text, kGet, 0},
    {"MACHINE ID", 0xBC, 2, E::MachineId, kGet, 0},
    {"DSP VER.", 0xBE, 7, E::Text, kGet, 0},
    {"ZL38051 VER.", 0xBE, 7, E::Text, kGet, 0},
    {"AUDIO VER.", 0xBE, 7, E::Text, kGet, 0},
    {"USB STREAM TYPE / PREVIEW STATUS", 0xCC, 1, E::Plain, kGet, 0},
    {"USB RESOLUTION", 0xCD, 1, E::Plain, kGet, 0},
    {"USB FRAME RATE", 0xCE, 1, E::Plain, kGet, 0},
    {"USB SPEED / TRANS. TYPE", 0xCF, 1, E::Plain, kGet, 0},
    // power and system
    {"POWER", 0xF2, 1, E::Acknowledged, kGetSet, 25000},
    {"PWR. METHOD", 0xFB, 1, E::Plain, kGetSet, 0},
    {"PREVIEW STANDBY TIME", 0x2E, 1, E::Plain, kGetSet, 0},
    {"FACTORY RESET", 0x11, 1, E::Trigger, kSet, 8000},
    {"SYSTEM RESET", 0xF4, 1, E::Trigger, kSet, 16000},
    {"LAST MEM. SAVE", 0x23, 1, E::Trigger, kSet, 6000},
    {"ERROR CLEAR", 0xF5, 1, E::Trigger, kSet, 8000},
    {"ERROR", 0xF6, 1, E::ErrorReport, kGet, 12000},
    {"ERR LED", 0xF8, 1, E::Plain, kGetSet, 0},
    {"DBG. ENABLE", 0xF9, 1, E::Plain, kGetSet, 0},
    {"RAW/YUV(MJPG)", 0xFA, 1, E::RawYuv, kGetSet, 0},
    {"PF APP ENTER BL", 0xFF, 1, E::Plain, kSet, 0},
    {"USB APP ENTER BL", 0xFF, 1, E::Plain, kSet, 0},
    // image
    {"WDR", 0x01, 1, E::Plain, kGetSet, 0},
    {"2DNR", 0x05, 1, E::Plain, kGetSet, 0},
    {"3DNR", 0x06, 1, E::Plain, kGetSet, 0},
    {"SKIN TONE", 0x09, 1, E::Plain, kGetSet, 0},
    {"BLACK LEVEL", 0x0A, 1, E::Plain, kGetSet, 0},
    {"MIRROR", 0x0B, 1, E::Plain, kGetSet, 0},
    {"FREEZE", 0x26, 1, E::Plain, kGetSet, 0},
    {"PIC-EFFECT", 0x2F, 1, E::Plain, kGetSet, 0},
    {"BRIGHTNESS", 0xD1, 1, E::Plain, kGetSet, 0},
    {"CONTRAST", 0xD2, 1, E::Plain, kGetSet, 0},
    {"HUE", 0xD5, 1, E::Plain, kGetSet, 0},
    {"SATURATION", 0xD6, 1, E::Plain, kGetSet, 0},
    {"SHARPNESS", 0xD7, 1, E::Plain, kGetSet, 0},
    {"GAMMA", 0xD8, 1, E::Plain, kGetSet, 0},
    // exposure and white balance
    {"AE MODE", 0xDB, 1, E::Plain, kGetSet, 0},
    {"AE PRI.", 0xDC, 1, E::Plain, kGetSet, 0},
    {"AE SELECT", 0x13, 1, E::Plain, kGetSet, 0},
    {"GAIN", 0xD3, 1, E::Plain, kGetSet, 0},
    {"GAIN LIMIT", 0x12, 1, E::Plain, kGetSet, 0},
    {"EXPOSURE TIME", 0xDE, 1, E::Plain, kGetSet, 0},
    {"IRIS", 0xE1, 1, E::Plain, kGetSet, 0},
    {"POWER FREQ.", 0xD4, 1, E::Plain, kGetSet, 0},
    {"AE COMP.", 0x32, 1, E::Plain, kGetSet, 0},
    {"SPOT LIGHT", 0x33, 1, E::Plain, kGetSet, 0},
    {"SPOT LIGHT X", 0x34, 1, E::Plain, kGetSet, 0},
    {"SPOT LIGHT Y", 0x35, 1, E::Plain, kGetSet, 0},
    {"AWB MODE", 0xDA, 1, E::Plain, kGetSet, 0},
    {"AWB SELECT", 0x14, 1, E::Plain, kGetSet, 0},
    {"WB TEMP.", 0xD9, 1, E::Plain, kGetSet, 0},
    {"RED GAIN", 0x03, 1, E::Plain, kGetSet, 0},
    {"BLUE GAIN", 0x04, 1, E::Plain, kGetSet, 0},
    {"WB ONE PUSH", 0x02, 1, E::Trigger, kSet, 18000},
    {"BACKLIGHT", 0x20, 1, E::Plain, kGetSet, 0},
    {"BACKLIGHT COMP.", 0xD0, 1, E::Plain, kGetSet, 0},
    // zoom and focus
    {"ZOOM", 0xE2, 1, E::Plain, kGetSet, 0},
    {"D-ZOOM LIMIT", 0x30, 1, E::Plain, kGetSet, 0},
    {"D-ZOOM POS", 0x31, 1, E::Plain, kGetSet, 0},
    {"AF MODE", 0xE0, 1, E::Plain, kGetSet, 0},
    {"FOCUS", 0xDF, 1, E::Plain, kGetSet, 0},
    {"AF ONE PUSH", 0x25, 1, E::AfOnePush, kSet, 18000},
    {"AF SENS.", 0x0C, 1, E::Plain, kGetSet, 0},
    {"AF SPEED", 0x0D, 1, E::Plain, kGetSet, 0},
    {"AF FRAME", 0x0E, 1, E::Plain, kGetSet, 0},
    {"ZOOM CTRL", 0x2A, 1, E::Plain, kSet, 0},
    {"FOCUS CTRL", 0x2B, 1, E::Plain, kSet, 0},
    {"ZOOM SPEED", 0x2C, 1, E::Plain, kGetSet, 0},
    {"FOCUS SPEED", 0x2D, 1, E::Plain, kGetSet, 0},
    // pan and tilt, presets, infrared, audio
    {"PAN-TILT HOME", 0x21, 1, E::Trigger, kSet, 12000},
    {"PAN-TILT RESET", 0x22, 1, E::Trigger, kSet, 12000},
    {"PAN-TILT LIMIT", 0x24, 1, E::Plain, kGetSet, 0},
    {"PAN RIGHT", 0x15, 2, E::Split, kGetSet, 0},
    {"PAN LEFT", 0x17, 2, E::Split, kGetSet, 0},
    {"TILT UP", 0x19, 2, E::Split, kGetSet, 0},
    {"TILT DOWN", 0x1B, 2, E::Split, kGetSet, 0},
    {"PAN", 0xE3, 2, E::Split, kGetSet, 0},
    {"TILT", 0xE5, 2, E::Split, kGetSet, 0},
    {"PAN-TILT CTRL", 0x27, 1, E::Plain, kSet, 0},
    {"PAN SPEED", 0x28, 1, E::Plain, kGetSet, 0},
    {"TILT SPEED", 0x29, 1, E::Plain, kGetSet, 0},
    {"PRESET LOAD", 0x1D, 1, E::PresetLoad, kGetSet, 18000},
    {"PRESET SAVE", 0x1E, 1, E::Plain, kGetSet, 0},
    {"PRESET CLEAR", 0x1F, 1, E::Plain, kGetSet, 0},
    {"IR OUT", 0x10, 1, E::Plain, kGetSet, 0},
    {"IR RECEIVE", 0x0F, 1, E::Plain, kGetSet, 0},
    {"MIC CTRL", 0x36, 1, E::Plain, kGetSet, 0},
};

constexpr uint16_t kDebugEnable = 0xF9;
constexpr uint16_t kAfMode = 0xE0;
constexpr uint16_t kWarningTrigger = 0xF7;
constexpr int kTableEntries = 64;
constexpr int kDebugModeSettleMs = 1000;

// A name or a use the table does not have is a programming error: say so where a developer
// looks, and fail like any other command.
const RegisterCommand *lookUp(const char *name, uint8_t access, std::initializer_list<Encoding> kinds) {
    const RegisterCommand *c = FindRegisterCommand(name);
    if (!c) {
        std::fprintf(stderr, "FunctionList: no register command named \"%s\"\n", name ? name : "(null)");
        return nullptr;
    }
    if (!(c->access & access) || std::find(kinds.begin(), kinds.end(), c->encoding) == kinds.end()) {
        std::fprintf(stderr, "FunctionList: [%s] has no such %s\n", c->name, access == kGet ? "get" : "set");
        return nullptr;
    }
    return c;
}

int timeoutOf(const RegisterCommand &c, int timeoutMs) { return timeoutMs == kDefaultTimeout ? c.timeoutMs : timeoutMs; }

int presetLoad(const RegisterCommand &c, unsigned short preset, int timeoutMs) {
    unsigned short before = 0;
    if (!ReadRegister(kParameterUnit, c.selector, &before)) return 0;
    return RunAcknowledged(c.selector, preset, timeoutMs, before == preset);
}

int afOnePush(const RegisterCommand &c, int timeoutMs) {
    unsigned short mode = 0;
    if (!ReadRegister(kParameterUnit, kAfMode, &mode)) return 0;
    if (mode == 1) return 1;  // auto focus is on: nothing to push
    return RunAcknowledged(c.selector, 0xAA, timeoutMs);
}

int rawYuv(const RegisterCommand &c, unsigned short value) {
    unsigned short debug = 0;
    if (!ReadRegister(kParameterUnit, kDebugEnable, &debug)) return 0;
    if (!WriteRegister(kParameterUnit, kDebugEnable, 2)) return 0;
    Sleep(kDebugModeSettleMs);
    if (!WriteRegister(kParameterUnit, c.selector, value)) return 0;
    if (!WriteRegister(kParameterUnit, kDebugEnable, debug)) return 0;
    Sleep(kDebugModeSettleMs);
    return 1;
}

}  // namespace

std::span<const RegisterCommand> RegisterCommands() { return kRegisterCommands; }

const RegisterCommand *FindRegisterCommand(const char *name) {
    if (!name) return nullptr;
    for (const RegisterCommand &c : kRegisterCommands)
        if (std::strcmp(c.name, name) == 0) return &c;
    return nullptr;
}

}  // namespace fl

using fl::Encoding;

int RunAcknowledged(unsigned short selector, unsigned short value, int timeoutMs, bool alreadyThere) {
    const unsigned short ack = static_cast<unsigned short>(selector + 0x100);
    if (!WriteRegister(fl::kParameterUnit, ack, 0)) return 0;
    if (!WriteRegister(fl::kParameterUnit, selector, value)) return 0;
    if (timeoutMs == 0) return 1;
    // A time-out shorter than one poll still gets its one poll.
    const int polls = std::max(1, timeoutMs / fl::kAckPollMs);
    for (int poll = 1;; ++poll) {
        Sleep(fl::kAckPollMs);
        unsigned short done = 0;
        if (!ReadRegister(fl::kParameterUnit, ack, &done)) return 0;
        if (done == 1 || alreadyThere) return 1;
        ProcessDrawEvents();
        ProcessSystemEvents();
        if (poll >= polls) return 0;
    }
}

int GetCommand(const char *name, unsigned short *value) {
    const fl::RegisterCommand *c = fl::lookUp(
        name, fl::kGet, {Encoding::Plain, Encoding::MachineId, Encoding::Acknowledged, Encoding::PresetLoad, Encoding::RawYuv});
    if (!c || !value) return 0;
    if (c->encoding != Encoding::MachineId) return ReadRegister(fl::kParameterUnit, c->selector, value);
    unsigned short high = 0, low = 0;
    if (!ReadRegister(fl::kParameterUnit, c->selector, &high)) return 0;
    if (!ReadRegister(fl::kParameterUnit, static_cast<unsigned short>(c->selector + 1), &low)) return 0;
    *value = static_cast<unsigned short>((high & 0xFF) << 8 | (low & 0xFF));
    return 1;
}

int SetCommand(const char *name, unsigned short value, int timeoutMs) {
    const fl::RegisterCommand *c =
        fl::lookUp(name, fl::kSet,
                   {Encoding::Plain, Encoding::Acknowledged, Encoding::Trigger, Encoding::PresetLoad, Encoding::AfOnePush,
                    Encoding::RawYuv});
    if (!c) return 0;
    switch (c->encoding) {
    case Encoding::Acknowledged: return RunAcknowledged(c->selector, value, fl::timeoutOf(*c, timeoutMs));
    case Encoding::Trigger: return RunAcknowledged(c->selector, 0xAA, fl::timeoutOf(*c, timeoutMs));
    case Encoding::PresetLoad: return fl::presetLoad(*c, value, fl::timeoutOf(*c, timeoutMs));
    case Encoding::AfOnePush: return fl::afOnePush(*c, fl::timeoutOf(*c, timeoutMs));
    case Encoding::RawYuv: return fl::rawYuv(*c, value);
    default: return WriteRegister(fl::kParameterUnit, c->selector, value);
    }
}

int TriggerCommand(const char *name, int timeoutMs) {
    const fl::RegisterCommand *c = fl::lookUp(name, fl::kSet, {Encoding::Trigger, Encoding::AfOnePush});
    if (!c) return 0;
    return SetCommand(name, 0xAA, timeoutMs);
}

int GetSplitCommand(const char *name, int *value) {
    const fl::RegisterCommand *c = fl::lookUp(name, fl::kGet, {Encoding::Split});
    if (!c || !value) return 0;
    unsigned short high = 0, low = 0;
    if (!ReadRegister(fl::kParameterUnit, c->selector, &high)) return 0;
    if (!ReadRegister(fl::kParameterUnit, static_cast<unsigned short>(c->selector + 1), &low)) return 0;
    *value = static_cast<int>(static_cast<uint32_t>(high) << 16 | low);
    return 1;
}

int SetSplitCommand(const char *name, int value) {
    const fl::RegisterCommand *c = fl::lookUp(name, fl::kSet, {Encoding::Split});
    if (!c) return 0;
    if (!WriteRegister(fl::kParameterUnit, c->selector, static_cast<unsigned short>((value >> 16) & 0xFFFF))) return 0;
    return WriteRegister(fl::kParameterUnit, static_cast<unsigned short>(c->selector + 1),
                         static_cast<unsigned short>(value & 0xFFFF));
}

int GetTextCommand(const char *name, char *buffer, int size) {
    const fl::RegisterCommand *c = fl::lookUp(name, fl::kGet, {Encoding::Text});
    if (!c || !buffer || size < c->count + 1) return 0;
    std::memset(buffer, 0, static_cast<size_t>(size));
    for (int i = 0; i < c->count; ++i) {
        unsigned short character = 0;
        if (!ReadRegister(fl::kParameterUnit, static_cast<unsigned short>(c->selector + i), &character)) return 0;
        buffer[i] = static_cast<char>(character & 0xFF);
    }
    return 1;
}

int GetErrorReport(unsigned char *errors, unsigned char *warnings, int size, int timeoutMs) {
    const fl::RegisterCommand *c = fl::lookUp("ERROR", fl::kGet, {Encoding::ErrorReport});
    if (!c || !errors || !warnings || size < fl::kTableEntries) return 0;
    std::memset(errors, 0, static_cast<size_t>(size));
    std::memset(warnings, 0, static_cast<size_t>(size));
    const int timeout = fl::timeoutOf(*c, timeoutMs);
    if (!RunAcknowledged(c->selector, 0xAA, timeout)) return 0;
    if (!RunAcknowledged(fl::kWarningTrigger, 0xAA, timeout)) return 0;
    for (int unit : {fl::kErrorUnit, fl::kWarningUnit}) {
        unsigned char *table = unit == fl::kErrorUnit ? errors : warnings;
        for (int code = 0; code < fl::kTableEntries; ++code) {
            unsigned short count = 0;
            if (!ReadRegister(unit, static_cast<unsigned short>(code), &count)) return 0;
            table[code] = static_cast<unsigned char>(count & 0xFF);
        }
    }
    return 1;
}
