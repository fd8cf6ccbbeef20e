// The camera's command set: every register command (units 5, 6, 7) and every block command
// (units 9, 15), as data tables driven by a few generic functions. Commands are named by
// their console names without the brackets ("BRIGHTNESS" for [BRIGHTNESS]).
//
// Every operation returns 1 for success and 0 at the first failed access, and echoes nothing
// of its own: the failing access shows on the console through RegisterAccess, and the
// console line announcing a command belongs to its caller.
//
// Thread rules: like RegisterAccess, callable from the user-interface thread and one worker;
// the acknowledged commands process user-interface events between polls, which happens only
// on the user-interface thread.
#pragma once

#include <cstdint>
#include <span>

// ---- register commands -----------------------------------------------------------------------

namespace fl {

enum class Encoding : uint8_t {
    Plain,         // one register, the value as it is
    Text,          // one character per register, in the low byte
    Split,         // signed 32-bit over two registers, high half first
    MachineId,     // two registers, low bytes, high byte first
    Acknowledged,  // set: the acknowledged command with the value
    Trigger,       // set: the acknowledged command with 0xAA
    PresetLoad,    // set: acknowledged, also good when the preset was already loaded
    AfOnePush,     // set: nothing when auto focus is on, else acknowledged 0xAA
    RawYuv,        // set: only in debug mode, which is entered and left around it
    ErrorReport,   // get: the two triggers, then the error and warning tables
};

enum Access : uint8_t { kGet = 1, kSet = 2, kGetSet = 3 };

struct RegisterCommand {
    const char *name;
    uint16_t selector;  // the first one
    uint8_t count;      // registers: characters of a text, 2 for split and machine id, else 1
    Encoding encoding;
    uint8_t access;
    uint16_t timeoutMs;  // default time-out of the acknowledged kinds
};

std::span<const RegisterCommand> RegisterCommands();
const RegisterCommand *FindRegisterCommand(const char *name);

inline constexpr int kParameterUnit = 5;
inline constexpr int kErrorUnit = 6;
inline constexpr int kWarningUnit = 7;
inline constexpr int kAckPollMs = 300;

}  // namespace fl

inline constexpr int kDefaultTimeout = -1;  // the command's own time-out

// Plain, machine id, and the get face of the acknowledged and special kinds.
int GetCommand(const char *name, unsigned short *value);
// Plain, acknowledged, trigger (send 0xAA), preset load, AF one push (value unused),
// raw/yuv. timeoutMs applies to the acknowledged kinds; 0 sends without waiting.
int SetCommand(const char *name, unsigned short value, int timeoutMs = kDefaultTimeout);
// A trigger: the acknowledged command with 0xAA.
int TriggerCommand(const char *name, int timeoutMs = kDefaultTimeout);
int GetSplitCommand(const char *name, int *value);
int SetSplitCommand(const char *name, int value);
// size must be at least the text length plus one; the buffer is zero-filled over size.
int GetTextCommand(const char *name, char *buffer, int size);
// [ERROR]: zeroes both buffers over size (at least 64), then fills entries 0 to 63.
int GetErrorReport(unsigned char *errors, unsigned char *warnings, int size, int timeoutMs = kDefaultTimeout);

// The acknowledged command itself: 0 to S + 0x100, value to S, then a poll every 300 ms for
// up to timeoutMs. alreadyThere: the command also succeeds after a poll without
// acknowledgement (the preset that was already loaded).
int RunAcknowledged(unsigned short selector, unsigned short value, int timeoutMs, bool alreadyThere = false);

// ---- block commands ------------------------------------------------------------------------------

namespace fl {

enum class Dir : uint8_t { Write, Read };

inline constexpr uint16_t kCallerLength = 0xFFFF;  // the length the caller gives

struct BlockStep {
    Dir dir;
    uint16_t selector;
    uint16_t length;
    bool tolerant = false;    // a failure is only a warning (the ISP block address)
    uint16_t pauseMs = 0;     // the camera's processing time after a successful access
};

struct BlockCommand {
    const char *name;  // console name, and " set" / " get" for the two faces of one name
    int unit;
    BlockStep steps[4];
    uint8_t stepCount;
};

std::span<const BlockCommand> BlockCommands();
const BlockCommand *FindBlockCommand(const char *name);
// Runs the accesses in order with one buffer each (destination of a read, source of a
// write, nullptr for a trigger); stops at the first failure.
int RunBlockCommand(const BlockCommand &command, std::span<unsigned char *const> buffers,
                    uint16_t callerLength = 0);

inline constexpr int kFlashUnit = 9;
inline constexpr int kServiceUnit = 15;
inline constexpr int kCategoryPacket = 27;
inline constexpr int kCategoryAnswer = 26;
inline constexpr unsigned char kEepromCategory = 0x29;

// The EEPROM 2K operations.
enum : unsigned char { kEepromWrite = 1, kEepromSaveAll = 2, kEepromDefaultAll = 3, kEepromRead = 4 };

}  // namespace fl

// Serial flash and ISP stream. Sectors and addresses go little-endian, the ISP block address
// big-endian.
int SfInit();
int SfId(unsigned char id[3]);
int SfErase(int sector);
int SfBlankSet(int sector);
int SfBlankGet(unsigned char *result);
int SfChecksumSet(int sector);
int SfChecksumGet(unsigned char *checksum);
int SfByteSet(unsigned int address, unsigned char data);
int SfByteGet(unsigned int address, unsigned char *data);
int SfPageSet(unsigned int address, const unsigned char data[256]);
int SfPageGet(unsigned int address, unsigned char data[256]);
// 0x5A holds the external device in reset, 0xA5 releases it.
int SfResetExternal(unsigned char value);
// 512 image bytes, then their block address (a failed address is only a warning).
int SfAddressedBlock(const unsigned char data[512], unsigned int blockAddress);
int SfStreamedBlock(const unsigned char data[512]);
int SfStreamEnd();

// Program flash (served by the camera's boot loader).
int PfStatus(unsigned char *status);
int PfInit();
int PfErase(int sector);
int PfBlankSet(int sector);
int PfBlankGet(unsigned char *result);
int PfChecksumSet(int sector);
int PfChecksumGet(unsigned char *checksum);
// [PF BYTE] is a page access of length 1.
int PfPageSet(unsigned int address, const unsigned char *data, unsigned short length);
int PfPageGet(unsigned int address, unsigned char *data, unsigned short length);
int PfShadowBl();
int PfSignApp();
int PfReset();

// Service unit. Numbers go big-endian.
struct PtzAbs {
    unsigned short r[9];  // R1 to R9
    unsigned char s[6];   // S1 to S6
};
int MachineSerialSet(const char serial[16]);
int MachineSerialGet(char serial[16]);
// Four values, sent in the order given.
int PtzAbsSet(const unsigned short values[4]);
int PtzAbsGet(PtzAbs *ptz);
int OrbvisCate(const unsigned char bytes[3]);
int CateTimeoutSet(int milliseconds);
int CateTimeoutGet(int *milliseconds);
int CateFbReset();
int CateFbAck(unsigned char bytes[4]);
int CateFbComplete(unsigned char bytes[4]);
// A category packet: the code, then 26 data bytes; waits 300 ms after it.
int CateWrite(const unsigned char packet[27]);
// Asks for a category, waits 300 ms, reads its 26-byte answer.
int CateRead(unsigned char category, unsigned char answer[26]);
// The EEPROM 2K packet: 0x29, address high, address low, data, operation, zeros.
void Eeprom2KPacket(unsigned short address, unsigned char data, unsigned char operation, unsigned char packet[27]);
// One EEPROM 2K operation; READ also asks for the answer and delivers its first byte.
int Eeprom2K(unsigned short address, unsigned char data, unsigned char operation, unsigned char *readBack = nullptr);
