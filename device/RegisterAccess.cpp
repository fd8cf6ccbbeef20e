#include "device/RegisterAccess.h"

#include <cstring>

#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "device/UvcLink.h"

namespace {

constexpr int kAttempts = 3;
constexpr unsigned short kStagingSize = 2048;

template <typename Call> int withRetries(Call call) {
    int rc = -1;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        rc = call();
        if (rc >= 0) break;
    }
    return rc;
}

// The data dump of a block access, one call per byte so that the log gets a line per byte
// while the console keeps them on one line. Only while the console display is on.
void echoBlock(char direction, unsigned short selector, const unsigned char *data, unsigned short length) {
    if (!IsMsgDisplayOn()) return;
    if (length == 0) {
        ConsolePrintf("> - %c [0x%04X]\n", direction, selector);
        return;
    }
    ConsolePrintf("> - %c [0x%04X] = ", direction, selector);
    for (unsigned short i = 0; i + 1 < length; ++i) ConsolePrintf("0x%02X, ", data[i]);
    ConsolePrintf("0x%02X\n", data[length - 1]);
}

bool blockWriteAllowed(const unsigned char *source, unsigned short length) {
    return length <= kStagingSize && (source || length == 0);
}

}  // namespace

int ReadRegister(int unit, unsigned short selector, unsigned short *value) {
    const int rc = value ? withRetries([&] { return ReadFromDevice(unit, selector, value); }) : -1;
    if (rc < 0) {
        ConsolePrintf("> - R [0x%04X] fail\n", selector);
        return 0;
    }
    ConsolePrintf("> - R [0x%04X] = 0x%02X\n", selector, *value);
    return 1;
}

int WriteRegister(int unit, unsigned short selector, unsigned short value) {
    const int rc = withRetries([&] { return WriteToDevice(unit, selector, value); });
    if (rc < 0) {
        ConsolePrintf("> - W [0x%04X] fail\n", selector);
        return 0;
    }
    ConsolePrintf("> - W [0x%04X] = 0x%02X\n", selector, value);
    return 1;
}

int ReadRegisterBlock(int unit, unsigned short selector, unsigned char *destination, unsigned short length) {
    unsigned char staging[kStagingSize];
    std::memset(staging, 0, sizeof staging);
    const bool allowed = destination && length >= 1 && length <= kStagingSize;
    const int rc = allowed ? withRetries([&] { return ReadArrayFromDevice(unit, selector, staging); }) : -1;
    if (rc < 0) {
        ConsolePrintf("> - R [0x%04X] fail\n", selector);
        return 0;
    }
    std::memcpy(destination, staging, length);
    echoBlock('R', selector, staging, length);
    return 1;
}

int WriteRegisterBlock(int unit, unsigned short selector, const unsigned char *source, unsigned short length) {
    unsigned char staging[kStagingSize];
    std::memset(staging, 0, sizeof staging);
    const bool allowed = blockWriteAllowed(source, length);
    if (allowed && length) std::memcpy(staging, source, length);
    const int rc = allowed ? withRetries([&] { return WriteArrayToDevice(unit, selector, staging); }) : -1;
    if (rc < 0) {
        ConsolePrintf("> - W [0x%04X] fail\n", selector);
        return 0;
    }
    echoBlock('W', selector, staging, length);
    return 1;
}

int WriteRegisterBlockTolerant(int unit, unsigned short selector, const unsigned char *source,
                               unsigned short length) {
    unsigned char staging[kStagingSize];
    std::memset(staging, 0, sizeof staging);
    const bool allowed = blockWriteAllowed(source, length);
    if (allowed && length) std::memcpy(staging, source, length);
    if (!allowed || WriteArrayToDevice(unit, selector, staging) < 0) {
        ConsolePrintf("> - W [0x%04X] warning\n", selector);
        return 1;
    }
    echoBlock('W', selector, staging, length);
    return 1;
}
