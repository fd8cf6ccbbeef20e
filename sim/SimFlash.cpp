// Unit 9 of the simulated camera: the serial flash (512 KB, page type, identification
// C2 20 13), the ISP image store fed by the block stream, and the USB bridge's 128 KB program
// flash, which only the boot loader serves. Flash programming can only clear bits, as on the
// real parts: writing without erasing first ANDs the new data into the old.
#include <algorithm>
#include <numeric>

#include "sim/SimState.h"

namespace sim::detail {
namespace {

constexpr uint32_t kIspBlockBase = 0x01000100;
constexpr size_t kIspBlock = 512;
constexpr size_t kApplicationStart = kBootLoaderSize;

uint32_t little(std::span<const uint8_t> b) {
    uint32_t v = 0;
    for (size_t i = b.size(); i-- > 0;) v = (v << 8) | b[i];
    return v;
}

uint32_t big(std::span<const uint8_t> b) {
    uint32_t v = 0;
    for (uint8_t byte : b) v = (v << 8) | byte;
    return v;
}

void program(std::vector<uint8_t> &flash, size_t at, std::span<const uint8_t> data) {
    for (size_t i = 0; i < data.size(); ++i) flash[at + i] &= data[i];
}

bool blank(std::span<const uint8_t> region) {
    return std::all_of(region.begin(), region.end(), [](uint8_t b) { return b == 0xFF; });
}

uint8_t checksum(std::span<const uint8_t> region) {
    return static_cast<uint8_t>(std::accumulate(region.begin(), region.end(), 0u));
}

// ---- serial flash and ISP store ----------------------------------------------------------------

int writeSerial(State &s, uint16_t sel, std::span<const uint8_t> in) {
    SerialFlashEngine &e = s.sfe;
    auto need = [&](size_t n) { return in.size() == n; };
    auto sector = [&]() -> std::optional<size_t> {
        const uint32_t n = little(in);
        if (n >= kSerialFlashSize / kSectorSize) return std::nullopt;
        return n * kSectorSize;
    };
    switch (sel) {
    case 0x02:  // init
        if (!need(0)) return kStall;
        e.address = 0;
        return kOk;
    case 0x03:
    case 0x04:
    case 0x05: {
        if (!need(2)) return kStall;
        const auto at = sector();
        if (!at) return kStall;
        const std::span<uint8_t> region(s.sf.data() + *at, kSectorSize);
        if (sel == 0x03) std::fill(region.begin(), region.end(), 0xFF);
        if (sel == 0x04) e.blank = blank(region) ? 1 : 0;
        if (sel == 0x05) e.checksum = checksum(region);
        return kOk;
    }
    case 0x09:
        if (!need(4)) return kStall;
        e.address = little(in);
        return kOk;
    case 0x0A:
        if (!need(1)) return kStall;
        e.byte = in[0];
        return kOk;
    case 0x1C:  // program the byte
        if (!need(0) || e.address >= kSerialFlashSize) return kStall;
        s.sf[e.address] &= e.byte;
        return kOk;
    case 0x1E:  // fetch the byte
        if (!need(0) || e.address >= kSerialFlashSize) return kStall;
        e.byte = s.sf[e.address];
        return kOk;
    case 0x13:
        if (!need(256)) return kStall;
        std::copy(in.begin(), in.end(), e.page.begin());
        return kOk;
    case 0x1D:  // program the page
        if (!need(0) || e.address > kSerialFlashSize - 256) return kStall;
        program(s.sf, e.address, e.page);
        return kOk;
    case 0x1F:  // fetch the page
        if (!need(0) || e.address > kSerialFlashSize - 256) return kStall;
        std::copy_n(s.sf.begin() + e.address, 256, e.page.begin());
        return kOk;
    case 0x1A:
        if (!need(1) || (in[0] != 0x5A && in[0] != 0xA5)) return kStall;
        e.externalHeld = in[0] == 0x5A;
        return kOk;
    case 0x23:  // ISP block; its address, when it comes, may still move it
    case 0x21: {  // ISP block without address: it follows the previous one
        if (!need(kIspBlock) || e.pointer + kIspBlock > kIspStoreCapacity) return kStall;
        if (e.staging.size() < e.pointer + kIspBlock) e.staging.resize(e.pointer + kIspBlock, 0xFF);
        std::copy(in.begin(), in.end(), e.staging.begin() + static_cast<std::ptrdiff_t>(e.pointer));
        e.lastBlock = e.pointer;
        e.haveBlock = true;
        e.pointer += kIspBlock;
        return kOk;
    }
    case 0x20: {  // address of the block just received, big-endian
        if (!need(4) || !e.haveBlock) return kStall;
        const uint32_t address = big(in);
        if (address < kIspBlockBase || (address - kIspBlockBase) % kIspBlock) return kStall;
        const size_t at = address - kIspBlockBase;
        if (at + kIspBlock > kIspStoreCapacity) return kStall;
        if (at != e.lastBlock) {
            const std::vector<uint8_t> block(e.staging.begin() + static_cast<std::ptrdiff_t>(e.lastBlock),
                                             e.staging.begin() + static_cast<std::ptrdiff_t>(e.lastBlock + kIspBlock));
            if (e.staging.size() < at + kIspBlock) e.staging.resize(at + kIspBlock, 0xFF);
            std::copy(block.begin(), block.end(), e.staging.begin() + static_cast<std::ptrdiff_t>(at));
        }
        if (at == 0) e.staging.resize(kIspBlock);  // the first block starts a new image
        e.lastBlock = at;
        e.pointer = at + kIspBlock;
        return kOk;
    }
    case 0x22:  // end of stream: the received image replaces the stored one
        if (!need(0)) return kStall;
        e.staging.resize(e.pointer);
        s.isp = std::move(e.staging);
        e.staging.clear();
        e.pointer = e.lastBlock = 0;
        e.haveBlock = false;
        return kOk;
    default:
        return kStall;
    }
}

int readSerial(State &s, uint16_t sel, std::span<uint8_t> out) {
    const SerialFlashEngine &e = s.sfe;
    switch (sel) {
    case 0x02:
        if (out.size() != 3) return kStall;
        out[0] = 0xC2, out[1] = 0x20, out[2] = 0x13;
        return kOk;
    case 0x04:
    case 0x05:
    case 0x0A:
        if (out.size() != 1) return kStall;
        out[0] = sel == 0x04 ? e.blank : sel == 0x05 ? e.checksum : e.byte;
        return kOk;
    case 0x13:
        if (out.size() != 256) return kStall;
        std::copy(e.page.begin(), e.page.end(), out.begin());
        return kOk;
    default:
        return kStall;
    }
}

// ---- program flash ---------------------------------------------------------------------------------

int refuse(State &s) {
    s.pfe.status = 0x81;
    return kStall;
}

int writeProgram(State &s, uint16_t sel, std::span<const uint8_t> in) {
    ProgramFlashEngine &e = s.pfe;
    auto need = [&](size_t n) { return in.size() == n; };
    switch (sel) {
    case 0x42:
        if (!need(0)) return kStall;
        e.initialised = true;
        e.status = 0x80;
        return kOk;
    case 0x43: {
        if (!need(1)) return kStall;
        const size_t sector = in[0];
        // The boot loader never erases itself.
        if (!e.initialised || sector < kApplicationStart / kSectorSize || sector >= kProgramFlashSize / kSectorSize)
            return refuse(s);
        std::fill_n(s.pf.begin() + static_cast<std::ptrdiff_t>(sector * kSectorSize), kSectorSize, 0xFF);
        return kOk;
    }
    case 0x44:
    case 0x45: {
        if (!need(1) || in[0] >= kProgramFlashSize / kSectorSize) return kStall;
        size_t from = in[0] * kSectorSize;
        if (from == kApplicationStart) from += 0x20;  // the header is not part of the checksum
        const std::span<const uint8_t> region(s.pf.data() + from, (in[0] + 1) * kSectorSize - from);
        if (sel == 0x44) e.blank = blank(region) ? 1 : 0;
        else e.checksum = checksum(region);
        return kOk;
    }
    case 0x47:
        if (!need(4)) return kStall;
        e.address = little(in);
        return kOk;
    case 0x46: {
        if (!need(2)) return kStall;
        const uint16_t length = static_cast<uint16_t>(little(in));
        if (length == 0 || length > 256) return kStall;
        e.length = length;
        return kOk;
    }
    case 0x48:
        if (!need(e.length)) return kStall;
        e.data.assign(in.begin(), in.end());
        return kOk;
    case 0x49:  // program; the boot loader's own sectors are out of reach
        if (!need(0) || e.data.size() != e.length) return kStall;
        if (!e.initialised || e.address < kApplicationStart || size_t(e.address) + e.length > kProgramFlashSize)
            return refuse(s);
        program(s.pf, e.address, e.data);
        return kOk;
    case 0x4A:
        if (!need(0) || size_t(e.address) + e.length > kProgramFlashSize) return kStall;
        e.data.assign(s.pf.begin() + e.address, s.pf.begin() + e.address + e.length);
        return kOk;
    case 0x50:  // the boot loader keeps a shadow of itself; nothing the host can see
        if (!need(0)) return kStall;
        return e.initialised ? kOk : refuse(s);
    case 0x51: {
        if (!need(0)) return kStall;
        if (!e.initialised) return refuse(s);
        const auto header = ApplicationHeader(s.pf);
        program(s.pf, kApplicationStart, header);
        return IsApplicationSigned(s.pf) ? kOk : refuse(s);
    }
    case 0x52:
        if (!need(0)) return kStall;
        s.leaveAfterAccess = LeaveRequest{kRestartMs, std::nullopt};
        return kOk;
    default:
        return kStall;
    }
}

int readProgram(State &s, uint16_t sel, std::span<uint8_t> out) {
    const ProgramFlashEngine &e = s.pfe;
    switch (sel) {
    case 0x41:
    case 0x44:
    case 0x45:
        if (out.size() != 1) return kStall;
        out[0] = sel == 0x41 ? e.status : sel == 0x44 ? e.blank : e.checksum;
        return kOk;
    case 0x48:
        if (out.size() != e.length || e.data.size() != e.length) return kStall;
        std::copy(e.data.begin(), e.data.end(), out.begin());
        return kOk;
    default:
        return kStall;
    }
}

bool isProgramFlashCommand(uint16_t sel) { return sel >= 0x41 && sel <= 0x52; }

}  // namespace

int writeFlash(State &s, uint16_t sel, std::span<const uint8_t> in, double) {
    if (isProgramFlashCommand(sel))
        return s.firmware == Firmware::BootLoader ? writeProgram(s, sel, in) : kStall;
    return writeSerial(s, sel, in);
}

int readFlash(State &s, uint16_t sel, std::span<uint8_t> out) {
    if (isProgramFlashCommand(sel))
        return s.firmware == Firmware::BootLoader ? readProgram(s, sel, out) : kStall;
    return readSerial(s, sel, out);
}

}  // namespace sim::detail

namespace sim {

std::array<uint8_t, 32> ApplicationHeader(std::span<const uint8_t> programFlash) {
    std::array<uint8_t, 32> header{};
    constexpr std::string_view magic = "QMAPPSIG";
    std::copy(magic.begin(), magic.end(), header.begin());
    const size_t start = kBootLoaderSize + 0x20;
    const size_t end = std::min(programFlash.size(), kProgramFlashSize);
    const uint32_t length = end > start ? static_cast<uint32_t>(end - start) : 0;
    uint32_t sum = 0;
    for (size_t i = start; i < end; ++i) sum += programFlash[i];
    for (int i = 0; i < 4; ++i) {
        header[8 + i] = static_cast<uint8_t>(length >> (8 * i));
        header[12 + i] = static_cast<uint8_t>(sum >> (8 * i));
    }
    return header;
}

bool IsApplicationSigned(std::span<const uint8_t> programFlash) {
    if (programFlash.size() < kProgramFlashSize) return false;
    const auto header = ApplicationHeader(programFlash);
    return std::equal(header.begin(), header.end(), programFlash.begin() + kBootLoaderSize);
}

std::string FindVersion(std::span<const uint8_t> data, size_t length) {
    const auto it = std::search(data.begin(), data.end(), kVersionMarker.begin(), kVersionMarker.end());
    if (it == data.end()) return {};
    std::string version;
    for (auto c = it + static_cast<std::ptrdiff_t>(kVersionMarker.size());
         c != data.end() && version.size() < length && *c >= 0x20 && *c < 0x7F; ++c)
        version.push_back(static_cast<char>(*c));
    return version;
}

}  // namespace sim
