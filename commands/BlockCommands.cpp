// The block commands of the flash unit and the service unit: each a short sequence of block
// accesses from one table, and the named functions that pack their parameters.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "commands/FunctionList.h"
#include "device/RegisterAccess.h"
#include "ui/UserInterface.h"

namespace fl {
namespace {

constexpr Dir W = Dir::Write;
constexpr Dir R = Dir::Read;
constexpr uint16_t kCategoryPauseMs = 300;

constexpr BlockCommand kBlockCommands[] = {
    // serial flash
    {"SF INIT", kFlashUnit, {{W, 0x02, 0}}, 1},
    {"SF ID", kFlashUnit, {{R, 0x02, 3}}, 1},
    {"SF ERASE", kFlashUnit, {{W, 0x03, 2}}, 1},
    {"SF BLANK set", kFlashUnit, {{W, 0x04, 2}}, 1},
    {"SF BLANK get", kFlashUnit, {{R, 0x04, 1}}, 1},
    {"SF CHECKSUM set", kFlashUnit, {{W, 0x05, 2}}, 1},
    {"SF CHECKSUM get", kFlashUnit, {{R, 0x05, 1}}, 1},
    {"SF BYTE set", kFlashUnit, {{W, 0x09, 4}, {W, 0x0A, 1}, {W, 0x1C, 0}}, 3},
    {"SF BYTE get", kFlashUnit, {{W, 0x09, 4}, {W, 0x1E, 0}, {R, 0x0A, 1}}, 3},
    {"SF PAGE set", kFlashUnit, {{W, 0x09, 4}, {W, 0x13, 256}, {W, 0x1D, 0}}, 3},
    {"SF PAGE get", kFlashUnit, {{W, 0x09, 4}, {W, 0x1F, 0}, {R, 0x13, 256}}, 3},
    {"SF RST EXT.", kFlashUnit, {{W, 0x1A, 1}}, 1},
    {"SF ADDRESSED BLOCK", kFlashUnit, {{W, 0x23, 512}, {W, 0x20, 4, true}}, 2},
    {"SF STREAMED BLOCK", kFlashUnit, {{W, 0x21, 512}}, 1},
    {"SF STREAM END", kFlashUnit, {{W, 0x22, 0}}, 1},
    // program flash
    {"PF STATUS", kFlashUnit, {{R, 0x41, 1}}, 1},
    {"PF INIT", kFlashUnit, {{W, 0x42, 0}}, 1},
    {"PF ERASE", kFlashUnit, {{W, 0x43, 1}}, 1},
    {"PF BLANK set", kFlashUnit, {{W, 0x44, 1}}, 1},
    {"PF BLANK get", kFlashUnit, {{R, 0x44, 1}}, 1},
    {"PF CHECKSUM set", kFlashUnit, {{W, 0x45, 1}}, 1},
    {"PF CHECKSUM get", kFlashUnit, {{R, 0x45, 1}}, 1},
    {"PF PAGE set", kFlashUnit, {{W, 0x47, 4}, {W, 0x46, 2}, {W, 0x48, kCallerLength}, {W, 0x49, 0}}, 4},
    {"PF PAGE get", kFlashUnit, {{W, 0x47, 4}, {W, 0x46, 2}, {W, 0x4A, 0}, {R, 0x48, kCallerLength}}, 4},
    {"PF SHADOW BL", kFlashUnit, {{W, 0x50, 0}}, 1},
    {"PF SIGN APP", kFlashUnit, {{W, 0x51, 0}}, 1},
    {"PF RESET", kFlashUnit, {{W, 0x52, 0}}, 1},
    // service
    {"MACHINE SERIAL set", kServiceUnit, {{W, 0x01, 16}}, 1},
    {"MACHINE SERIAL get", kServiceUnit, {{R, 0x01, 16}}, 1},
    {"PTZ ABS. set", kServiceUnit, {{W, 0x02, 8}}, 1},
    {"PTZ ABS. get", kServiceUnit, {{R, 0x02, 24}}, 1},
    {"ORBVIS CATE.", kServiceUnit, {{W, 0xF9, 3}}, 1},
    {"CATE. TIMEOUT set", kServiceUnit, {{W, 0xFA, 4}}, 1},
    {"CATE. TIMEOUT get", kServiceUnit, {{R, 0xFA, 4}}, 1},
    {"CATE. FB RESET", kServiceUnit, {{W, 0xFB, 0}}, 1},
    {"CATE. FB ACK", kServiceUnit, {{R, 0xFC, 4}}, 1},
    {"CATE. FB COMPLETE", kServiceUnit, {{R, 0xFD, 4}}, 1},
    {"CATE. WR", kServiceUnit, {{W, 0xFE, 27, false, kCategoryPauseMs}}, 1},
    {"CATE. RD", kServiceUnit, {{W, 0xFF, 1, false, kCategoryPauseMs}, {R, 0xFF, 26}}, 2},
};

const BlockCommand &command(const char *name) {
    const BlockCommand *c = FindBlockCommand(name);
    if (!c) {  // only a typo in this file can get here
        std::fprintf(stderr, "FunctionList: no block command named \"%s\"\n", name);
        std::abort();
    }
    return *c;
}

template <size_t N> int run(const char *name, unsigned char *const (&buffers)[N], uint16_t callerLength = 0) {
    return RunBlockCommand(command(name), std::span<unsigned char *const>(buffers, N), callerLength);
}

int run(const char *name) { return RunBlockCommand(command(name), {}); }

void putLittle(unsigned char *out, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out[i] = static_cast<unsigned char>(value >> (8 * i));
}

void putBig(unsigned char *out, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out[i] = static_cast<unsigned char>(value >> (8 * (bytes - 1 - i)));
}

uint32_t getBig(const unsigned char *in, int bytes) {
    uint32_t v = 0;
    for (int i = 0; i < bytes; ++i) v = v << 8 | in[i];
    return v;
}

// A copy that is ours to pass as a buffer: the accesses take writable pointers.
template <size_t N> struct Bytes {
    unsigned char b[N];
    explicit Bytes(const unsigned char *from) { std::memcpy(b, from, N); }
};

int sectorCommand(const char *name, int sector) {
    unsigned char s[2];
    putLittle(s, static_cast<uint32_t>(sector), 2);
    unsigned char *const buffers[] = {s};
    return run(name, buffers);
}

int pfSectorCommand(const char *name, int sector) {
    unsigned char s = static_cast<unsigned char>(sector);
    unsigned char *const buffers[] = {&s};
    return run(name, buffers);
}

int oneByte(const char *name, unsigned char *out) {
    unsigned char *const buffers[] = {out};
    return out ? run(name, buffers) : 0;
}

}  // namespace

std::span<const BlockCommand> BlockCommands() { return kBlockCommands; }

const BlockCommand *FindBlockCommand(const char *name) {
    if (!name) return nullptr;
    for (const BlockCommand &c : kBlockCommands)
        if (std::strcmp(c.name, name) == 0) return &c;
    return nullptr;
}

int RunBlockCommand(const BlockCommand &command, std::span<unsigned char *const> buffers, uint16_t callerLength) {
    for (uint8_t i = 0; i < command.stepCount; ++i) {
        const BlockStep &step = command.steps[i];
        const uint16_t length = step.length == kCallerLength ? callerLength : step.length;
        unsigned char *buffer = i < buffers.size() ? buffers[i] : nullptr;
        if (length && !buffer) return 0;
        int ok;
        if (step.dir == Dir::Read) ok = ReadRegisterBlock(command.unit, step.selector, buffer, length);
        else if (step.tolerant) ok = WriteRegisterBlockTolerant(command.unit, step.selector, buffer, length);
        else ok = WriteRegisterBlock(command.unit, step.selector, buffer, length);
        if (!ok) return 0;
        if (step.pauseMs) Sleep(step.pauseMs);
    }
    return 1;
}

}  // namespace fl

using namespace fl;

// ---- serial flash -----------------------------------------------------------------------------

int SfInit() { return run("SF INIT"); }

int SfId(unsigned char id[3]) {
    unsigned char *const buffers[] = {id};
    return id ? run("SF ID", buffers) : 0;
}

int SfErase(int sector) { return sectorCommand("SF ERASE", sector); }
int SfBlankSet(int sector) { return sectorCommand("SF BLANK set", sector); }
int SfBlankGet(unsigned char *result) { return oneByte("SF BLANK get", result); }
int SfChecksumSet(int sector) { return sectorCommand("SF CHECKSUM set", sector); }
int SfChecksumGet(unsigned char *checksum) { return oneByte("SF CHECKSUM get", checksum); }

int SfByteSet(unsigned int address, unsigned char data) {
    unsigned char a[4];
    putLittle(a, address, 4);
    unsigned char *const buffers[] = {a, &data, nullptr};
    return run("SF BYTE set", buffers);
}

int SfByteGet(unsigned int address, unsigned char *data) {
    if (!data) return 0;
    unsigned char a[4];
    putLittle(a, address, 4);
    unsigned char *const buffers[] = {a, nullptr, data};
    return run("SF BYTE get", buffers);
}

int SfPageSet(unsigned int address, const unsigned char data[256]) {
    if (!data) return 0;
    unsigned char a[4];
    putLittle(a, address, 4);
    Bytes<256> page(data);
    unsigned char *const buffers[] = {a, page.b, nullptr};
    return run("SF PAGE set", buffers);
}

int SfPageGet(unsigned int address, unsigned char data[256]) {
    if (!data) return 0;
    unsigned char a[4];
    putLittle(a, address, 4);
    unsigned char *const buffers[] = {a, nullptr, data};
    return run("SF PAGE get", buffers);
}

int SfResetExternal(unsigned char value) {
    unsigned char *const buffers[] = {&value};
    return run("SF RST EXT.", buffers);
}

int SfAddressedBlock(const unsigned char data[512], unsigned int blockAddress) {
    if (!data) return 0;
    Bytes<512> block(data);
    unsigned char a[4];
    putBig(a, blockAddress, 4);
    unsigned char *const buffers[] = {block.b, a};
    return run("SF ADDRESSED BLOCK", buffers);
}

int SfStreamedBlock(const unsigned char data[512]) {
    if (!data) return 0;
    Bytes<512> block(data);
    unsigned char *const buffers[] = {block.b};
    return run("SF STREAMED BLOCK", buffers);
}

int SfStreamEnd() { return run("SF STREAM END"); }

// ---- program flash ------------------------------------------------------------------------------

int PfStatus(unsigned char *status) { return oneByte("PF STATUS", status); }
int PfInit() { return run("PF INIT"); }
int PfErase(int sector) { return pfSectorCommand("PF ERASE", sector); }
int PfBlankSet(int sector) { return pfSectorCommand("PF BLANK set", sector); }
int PfBlankGet(unsigned char *result) { return oneByte("PF BLANK get", result); }
int PfChecksumSet(int sector) { return pfSectorCommand("PF CHECKSUM set", sector); }
int PfChecksumGet(unsigned char *checksum) { return oneByte("PF CHECKSUM get", checksum); }

int PfPageSet(unsigned int address, const unsigned char *data, unsigned short length) {
    if (!data || length == 0 || length > 2048) return 0;
    unsigned char a[4], n[2], copy[2048];
    putLittle(a, address, 4);
    putLittle(n, length, 2);
    std::memcpy(copy, data, length);
    unsigned char *const buffers[] = {a, n, copy, nullptr};
    return run("PF PAGE set", buffers, length);
}

int PfPageGet(unsigned int address, unsigned char *data, unsigned short length) {
    if (!data || length == 0 || length > 2048) return 0;
    unsigned char a[4], n[2];
    putLittle(a, address, 4);
    putLittle(n, length, 2);
    unsigned char *const buffers[] = {a, n, nullptr, data};
    return run("PF PAGE get", buffers, length);
}

int PfShadowBl() { return run("PF SHADOW BL"); }
int PfSignApp() { return run("PF SIGN APP"); }
int PfReset() { return run("PF RESET"); }

// ---- service ------------------------------------------------------------------------------------------

int MachineSerialSet(const char serial[16]) {
    if (!serial) return 0;
    Bytes<16> s(reinterpret_cast<const unsigned char *>(serial));
    unsigned char *const buffers[] = {s.b};
    return run("MACHINE SERIAL set", buffers);
}

int MachineSerialGet(char serial[16]) {
    unsigned char *const buffers[] = {reinterpret_cast<unsigned char *>(serial)};
    return serial ? run("MACHINE SERIAL get", buffers) : 0;
}

int PtzAbsSet(const unsigned short values[4]) {
    if (!values) return 0;
    unsigned char b[8];
    for (int i = 0; i < 4; ++i) putBig(b + 2 * i, values[i], 2);
    unsigned char *const buffers[] = {b};
    return run("PTZ ABS. set", buffers);
}

int PtzAbsGet(PtzAbs *ptz) {
    if (!ptz) return 0;
    unsigned char b[24];
    unsigned char *const buffers[] = {b};
    if (!run("PTZ ABS. get", buffers)) return 0;
    for (int i = 0; i < 9; ++i) ptz->r[i] = static_cast<unsigned short>(getBig(b + 2 * i, 2));
    std::memcpy(ptz->s, b + 18, 6);
    return 1;
}

int OrbvisCate(const unsigned char bytes[3]) {
    if (!bytes) return 0;
    Bytes<3> b(bytes);
    unsigned char *const buffers[] = {b.b};
    return run("ORBVIS CATE.", buffers);
}

int CateTimeoutSet(int milliseconds) {
    unsigned char b[4];
    putBig(b, static_cast<uint32_t>(milliseconds), 4);
    unsigned char *const buffers[] = {b};
    return run("CATE. TIMEOUT set", buffers);
}

int CateTimeoutGet(int *milliseconds) {
    if (!milliseconds) return 0;
    unsigned char b[4];
    unsigned char *const buffers[] = {b};
    if (!run("CATE. TIMEOUT get", buffers)) return 0;
    *milliseconds = static_cast<int>(getBig(b, 4));
    return 1;
}

int CateFbReset() { return run("CATE. FB RESET"); }

int CateFbAck(unsigned char bytes[4]) {
    unsigned char *const buffers[] = {bytes};
    return bytes ? run("CATE. FB ACK", buffers) : 0;
}

int CateFbComplete(unsigned char bytes[4]) {
    unsigned char *const buffers[] = {bytes};
    return bytes ? run("CATE. FB COMPLETE", buffers) : 0;
}

int CateWrite(const unsigned char packet[27]) {
    if (!packet) return 0;
    Bytes<kCategoryPacket> p(packet);
    unsigned char *const buffers[] = {p.b};
    return run("CATE. WR", buffers);
}

int CateRead(unsigned char category, unsigned char answer[26]) {
    if (!answer) return 0;
    unsigned char *const buffers[] = {&category, answer};
    return run("CATE. RD", buffers);
}

void Eeprom2KPacket(unsigned short address, unsigned char data, unsigned char operation, unsigned char packet[27]) {
    std::memset(packet, 0, kCategoryPacket);
    packet[0] = kEepromCategory;
    putBig(packet + 1, address, 2);
    packet[3] = data;
    packet[4] = operation;
}

int Eeprom2K(unsigned short address, unsigned char data, unsigned char operation, unsigned char *readBack) {
    unsigned char packet[kCategoryPacket];
    Eeprom2KPacket(address, data, operation, packet);
    if (!CateWrite(packet)) return 0;
    if (operation != kEepromRead) return 1;
    unsigned char answer[kCategoryAnswer] = {};
    if (!CateRead(kEepromCategory, answer)) return 0;
    if (readBack) *readBack = answer[0];
    return 1;
}
