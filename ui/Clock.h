// The tool's one clock. Every pause, time-out, date and timer tick of the tool and of the
// simulated camera goes through it, so tests and `vcc-script --fast` can run a firmware
// update in a fraction of a second by scaling time, and pin the date for file names.
//
// Thread rules: all functions are safe from any thread. Configure the scale and the pinned
// date before the tool starts its workers; changing them while waits are running is allowed
// but those waits keep the scale they started with.
#pragma once

#include <ctime>
#include <optional>

// Pauses for ms milliseconds of tool time (ms / scale of real time).
void Sleep(unsigned int ms);
// Seconds of tool time since an arbitrary origin (monotonic).
double Timer();
void GetSystemDate(int *month, int *day, int *year);
void CVI_GetSystemTime(int *hours, int *minutes, int *seconds);

namespace vcc::clock {
// 1 for real time; 1000 makes every wait a thousand times shorter.
void setScale(double speedup);
double scale();
// Freezes the local date and time the tool reads; waits still pass on the scaled clock.
void pinLocalTime(std::optional<std::tm> when);
// Tool-time milliseconds since the origin; monotonic.
double nowMs();
void sleepMs(double ms);
// The local date and time the tool reads.
std::tm localTime();
}  // namespace vcc::clock
