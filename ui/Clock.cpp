#include "ui/Clock.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

namespace {
using Steady = std::chrono::steady_clock;

// The scaled clock is piecewise linear: changing the scale restarts it from its current
// reading, so tool time never jumps backwards.
struct ScaledClock {
    std::mutex mutex;
    Steady::time_point realOrigin = Steady::now();
    double toolOriginMs = 0.0;
    double speedup = 1.0;
    std::optional<std::tm> pinned;
};

ScaledClock &clockState() {
    static ScaledClock state;
    return state;
}

double nowLocked(ScaledClock &c) {
    const double realMs = std::chrono::duration<double, std::milli>(Steady::now() - c.realOrigin).count();
    return c.toolOriginMs + realMs * c.speedup;
}
}  // namespace

namespace vcc::clock {
void setScale(double speedup) {
    auto &c = clockState();
    std::lock_guard lock(c.mutex);
    c.toolOriginMs = nowLocked(c);
    c.realOrigin = Steady::now();
    c.speedup = speedup > 0 ? speedup : 1.0;
}

double scale() {
    auto &c = clockState();
    std::lock_guard lock(c.mutex);
    return c.speedup;
}

void pinLocalTime(std::optional<std::tm> when) {
    auto &c = clockState();
    std::lock_guard lock(c.mutex);
    c.pinned = when;
}

double nowMs() {
    auto &c = clockState();
    std::lock_guard lock(c.mutex);
    return nowLocked(c);
}

void sleepMs(double ms) {
    if (ms <= 0) return;
    const double realMs = ms / scale();
    std::this_thread::sleep_for(std::chrono::duration<double, std::milli>(realMs));
}

std::tm localTime() {
    auto &c = clockState();
    std::lock_guard lock(c.mutex);
    if (c.pinned) return *c.pinned;
    // Every log line reads the time: convert once per second, not once per line.
    static std::time_t cachedSecond = -1;
    static std::tm cached{};
    const std::time_t now = std::time(nullptr);
    if (now != cachedSecond) {
        localtime_r(&now, &cached);
        cachedSecond = now;
    }
    return cached;
}
}  // namespace vcc::clock

void Sleep(unsigned int ms) { vcc::clock::sleepMs(ms); }

double Timer() { return vcc::clock::nowMs() / 1000.0; }

void GetSystemDate(int *month, int *day, int *year) {
    const std::tm t = vcc::clock::localTime();
    if (month) *month = t.tm_mon + 1;
    if (day) *day = t.tm_mday;
    if (year) *year = t.tm_year + 1900;
}

void CVI_GetSystemTime(int *hours, int *minutes, int *seconds) {
    const std::tm t = vcc::clock::localTime();
    if (hours) *hours = t.tm_hour;
    if (minutes) *minutes = t.tm_min;
    if (seconds) *seconds = t.tm_sec;
}
