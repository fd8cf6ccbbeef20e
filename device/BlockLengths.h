// Payload length of every block command, as the camera access library knows it: the tool
// hands the library a 2048-byte buffer and no length, so this table decides how many bytes
// travel. The program-flash data register (unit 9, 0x48) carries as many bytes as the last
// length written to 0x46 announced.
#pragma once

#include <cstdint>
#include <optional>

namespace uvclink {

inline constexpr int kBlockBufferSize = 2048;
inline constexpr int16_t kNoAccess = -1;     // the command has no such direction
inline constexpr int16_t kPfDataLength = -2;  // the length announced through unit 9, 0x46

struct BlockLength {
    int unit;
    uint16_t selector;
    int16_t read;
    int16_t write;
};

inline constexpr BlockLength kBlockLengths[] = {
    // serial flash and ISP stream
    {9, 0x02, 3, 0},            // [SF ID] / [SF INIT]
    {9, 0x03, kNoAccess, 2},    // [SF ERASE]
    {9, 0x04, 1, 2},            // [SF BLANK]
    {9, 0x05, 1, 2},            // [SF CHECKSUM]
    {9, 0x09, kNoAccess, 4},    // SF address
    {9, 0x0A, 1, 1},            // SF data byte
    {9, 0x13, 256, 256},        // SF page data
    {9, 0x1A, kNoAccess, 1},    // [SF RST EXT.]
    {9, 0x1C, kNoAccess, 0},    // SF byte write trigger
    {9, 0x1D, kNoAccess, 0},    // SF page write trigger
    {9, 0x1E, kNoAccess, 0},    // SF byte read trigger
    {9, 0x1F, kNoAccess, 0},    // SF page read trigger
    {9, 0x20, kNoAccess, 4},    // SF block address
    {9, 0x21, kNoAccess, 512},  // SF streamed block
    {9, 0x22, kNoAccess, 0},    // SF stream end
    {9, 0x23, kNoAccess, 512},  // SF addressed block data
    // program flash
    {9, 0x41, 1, kNoAccess},    // [PF STATUS]
    {9, 0x42, kNoAccess, 0},    // [PF INIT]
    {9, 0x43, kNoAccess, 1},    // [PF ERASE]
    {9, 0x44, 1, 1},            // [PF BLANK]
    {9, 0x45, 1, 1},            // [PF CHECKSUM]
    {9, 0x46, kNoAccess, 2},    // PF length
    {9, 0x47, kNoAccess, 4},    // PF address
    {9, 0x48, kPfDataLength, kPfDataLength},  // PF data
    {9, 0x49, kNoAccess, 0},    // PF write trigger
    {9, 0x4A, kNoAccess, 0},    // PF read trigger
    {9, 0x50, kNoAccess, 0},    // [PF SHADOW BL]
    {9, 0x51, kNoAccess, 0},    // [PF SIGN APP]
    {9, 0x52, kNoAccess, 0},    // [PF RESET]
    // service
    {15, 0x01, 16, 16},         // [MACHINE SERIAL]
    {15, 0x02, 24, 8},          // [PTZ ABS.]
    {15, 0xF9, kNoAccess, 3},   // [ORBVIS CATE.]
    {15, 0xFA, 4, 4},           // [CATE. TIMEOUT]
    {15, 0xFB, kNoAccess, 0},   // [CATE. FB RESET]
    {15, 0xFC, 4, kNoAccess},   // [CATE. FB ACK]
    {15, 0xFD, 4, kNoAccess},   // [CATE. FB COMPLETE]
    {15, 0xFE, kNoAccess, 27},  // [CATE. WR]
    {15, 0xFF, 26, 1},          // [CATE. RD]: request, answer
};

// The table's entry for one direction: the length, kPfDataLength, or nothing when the
// library does not know the command.
constexpr std::optional<int16_t> FindBlockLength(int unit, uint16_t selector, bool write) {
    for (const BlockLength &row : kBlockLengths) {
        if (row.unit != unit || row.selector != selector) continue;
        const int16_t length = write ? row.write : row.read;
        if (length == kNoAccess) return std::nullopt;
        return length;
    }
    return std::nullopt;
}

}  // namespace uvclink
