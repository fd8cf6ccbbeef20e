// The simulated camera's front door: locking, the bus, fault injection, scripted answers and
// the traffic record around the unit handlers.
#include "sim/SimCamera.h"

#include <cstdio>
#include <fstream>

#include "sim/SimState.h"
#include "ui/Clock.h"

namespace sim {

using namespace detail;

namespace detail {
void record(State &s, std::string line) { s.traffic.push_back(std::move(line)); }
}  // namespace detail

namespace {

constexpr char kHex[] = "0123456789ABCDEF";

void appendHex(std::string &line, uint32_t value, int digits) {
    for (int i = digits - 1; i >= 0; --i) line.push_back(kHex[(value >> (4 * i)) & 0xF]);
}

// "W 5 0x00D1" and the like: kind, unit in decimal, selector as four hex digits.
std::string head(const char *kind, int unit, uint16_t sel) {
    std::string line;
    line.reserve(32);
    line += kind;
    line += ' ';
    line += std::to_string(unit);
    line += " 0x";
    appendHex(line, sel, 4);
    return line;
}

void recordRegister(State &s, const char *kind, int unit, uint16_t sel, uint16_t value, bool showValue, int rc) {
    std::string line = head(kind, unit, sel);
    if (showValue) {
        line += " 0x";
        appendHex(line, value, 4);
    }
    if (rc < 0) line += " FAIL";
    record(s, std::move(line));
}

void recordBlock(State &s, const char *kind, int unit, uint16_t sel, std::span<const uint8_t> bytes, size_t length,
                 int rc) {
    std::string line = head(kind, unit, sel);
    line.reserve(line.size() + 8 + 3 * bytes.size());
    line += ' ';
    line += std::to_string(length);
    for (uint8_t b : bytes) {
        line += ' ';
        appendHex(line, b, 2);
    }
    if (rc < 0) line += " FAIL";
    record(s, std::move(line));
}

bool consume(std::map<Key, int> &counts, const Key &key) {
    auto it = counts.find(key);
    if (it == counts.end()) return false;
    if (--it->second <= 0) counts.erase(it);
    return true;
}

// What every access goes through before its unit sees it: presence and injected faults.
// Returns kOk when the unit handler should run.
int gate(State &s, const Key &key) {
    if (!s.attached) return kNoDevice;
    if (auto it = s.leaveCounts.find(key); it != s.leaveCounts.end() && --it->second <= 0) {
        s.leaveCounts.erase(it);
        detach(s, std::nullopt);
        return kNoDevice;
    }
    if (consume(s.failCounts, key)) return kStall;
    return kOk;
}

// A command that sends the camera off the bus does so once its own access is on record.
void leaveIfAsked(State &s, double nowMs) {
    if (!s.leaveAfterAccess) return;
    const LeaveRequest request = *s.leaveAfterAccess;
    s.leaveAfterAccess.reset();
    detach(s, nowMs + request.reattachAfterMs, request.to);
}

}  // namespace

Camera::Camera() : state_(std::make_unique<State>()) {
    factoryReset(*state_, 2);
    boot(*state_, Firmware::Application);
    state_->traffic.clear();
}

Camera::~Camera() = default;

template <typename F> auto Camera::locked(F &&f) {
    std::lock_guard lock(state_->mutex);
    settle(*state_, vcc::clock::nowMs());
    return f(*state_);
}

void Camera::sleepLatency() {
    double ms;
    {
        std::lock_guard lock(state_->mutex);
        ms = state_->latencyMs;
    }
    if (ms > 0) vcc::clock::sleepMs(ms);
}

// ---- host side --------------------------------------------------------------------------------

bool Camera::attached() {
    return locked([](State &s) { return s.attached; });
}

Firmware Camera::firmware() {
    return locked([](State &s) { return s.firmware; });
}

int Camera::profile() {
    return locked([](State &s) { return s.profile; });
}

std::string Camera::deviceName() {
    return locked([](State &s) -> std::string {
        if (!s.attached) return {};
        const Profile &p = profileData(s.profile);
        return s.firmware == Firmware::Application ? p.productName : p.bootLoaderName;
    });
}

int Camera::readRegister(int unit, uint16_t selector, uint16_t &value) {
    sleepLatency();
    return locked([&](State &s) {
        const Key key{unit, selector};
        uint16_t v = 0;
        int rc = gate(s, key);
        if (rc == kOk) {
            if (auto q = s.queuedReads.find(key); q != s.queuedReads.end()) {
                v = q->second.front();
                q->second.pop_front();
                if (q->second.empty()) s.queuedReads.erase(q);
            } else if (unit == 5) {
                rc = readUnit5(s, selector, v, vcc::clock::nowMs());
            } else if (unit == 6 || unit == 7) {
                rc = readTable(s, unit, selector, v);
            } else {
                rc = kStall;
            }
        }
        if (rc == kOk) value = v;
        recordRegister(s, "R", unit, selector, v, rc == kOk, rc);
        return rc;
    });
}

int Camera::writeRegister(int unit, uint16_t selector, uint16_t value) {
    sleepLatency();
    return locked([&](State &s) {
        const double now = vcc::clock::nowMs();
        int rc = gate(s, {unit, selector});
        if (rc == kOk) rc = unit == 5 ? writeUnit5(s, selector, value, now) : kStall;
        recordRegister(s, "W", unit, selector, value, true, rc);
        leaveIfAsked(s, now);
        return rc;
    });
}

int Camera::readBlock(int unit, uint16_t selector, std::span<uint8_t> out) {
    sleepLatency();
    return locked([&](State &s) {
        const Key key{unit, selector};
        int rc = gate(s, key);
        std::vector<uint8_t> answer(out.size(), 0);
        if (rc == kOk) {
            if (auto q = s.queuedBlocks.find(key); q != s.queuedBlocks.end()) {
                std::vector<uint8_t> scripted = std::move(q->second.front());
                q->second.pop_front();
                if (q->second.empty()) s.queuedBlocks.erase(q);
                scripted.resize(out.size(), 0);
                answer = std::move(scripted);
            } else if (unit == 9) {
                rc = readFlash(s, selector, answer);
            } else if (unit == 15) {
                rc = readService(s, selector, answer);
            } else {
                rc = kStall;
            }
        }
        if (rc == kOk) std::copy(answer.begin(), answer.end(), out.begin());
        recordBlock(s, "RB", unit, selector, rc == kOk ? std::span<const uint8_t>(answer) : std::span<const uint8_t>(),
                    out.size(), rc);
        return rc;
    });
}

int Camera::writeBlock(int unit, uint16_t selector, std::span<const uint8_t> payload) {
    sleepLatency();
    return locked([&](State &s) {
        const double now = vcc::clock::nowMs();
        int rc = gate(s, {unit, selector});
        if (rc == kOk) {
            if (unit == 9) rc = writeFlash(s, selector, payload, now);
            else if (unit == 15) rc = writeService(s, selector, payload);
            else rc = kStall;
        }
        recordBlock(s, "WB", unit, selector, payload, payload.size(), rc);
        leaveIfAsked(s, now);
        return rc;
    });
}

void Camera::setStreaming(bool on) {
    locked([on](State &s) { s.streaming = on && s.attached; });
}

// ---- USB bridge side ------------------------------------------------------------------------------

BridgeState Camera::bridge() {
    return locked([](State &s) { return s.bridge; });
}

void Camera::setBridge(const BridgeState &state) {
    locked([&](State &s) { s.bridge = state; });
}

std::vector<uint8_t> Camera::programFlash() {
    return locked([](State &s) { return s.pf; });
}

bool Camera::vendorWriteProgramFlash(std::span<const uint8_t> image) {
    if (image.size() > kProgramFlashSize) return false;
    return locked([&](State &s) {
        if (!s.attached) return false;
        std::fill(s.pf.begin(), s.pf.end(), 0xFF);
        std::copy(image.begin(), image.end(), s.pf.begin());
        return true;
    });
}

void Camera::restart() {
    locked([](State &s) {
        if (s.attached) detach(s, vcc::clock::nowMs() + kRestartMs);
    });
}

// ---- control API ------------------------------------------------------------------------------------

bool Camera::reset(int profile) {
    if (profile < 0 || profile > 2) return false;
    locked([profile](State &s) {
        factoryReset(s, profile);
        s.attached = false;
        boot(s, Firmware::Application);
        s.failCounts.clear();
        s.leaveCounts.clear();
        s.queuedReads.clear();
        s.queuedBlocks.clear();
        s.neverReattach = s.neverAcknowledge = false;
        s.latencyMs = 0;
        s.leaveAfterAccess.reset();
        s.traffic.clear();
    });
    return true;
}

void Camera::selectProfile(int profile) {
    if (this->profile() != profile) reset(profile);
}

void Camera::unplug() {
    locked([](State &s) { detach(s, std::nullopt); });
}

void Camera::plug() {
    locked([](State &s) {
        if (!s.attached) boot(s, bootTarget(s));
    });
}

void Camera::leaveBus(std::optional<double> reattachAfterMs) {
    locked([&](State &s) {
        if (!s.attached) return;
        std::optional<double> at;
        if (reattachAfterMs) at = vcc::clock::nowMs() + *reattachAfterMs;
        detach(s, at, s.firmware);
    });
}

void Camera::leaveBusAt(int unit, uint16_t selector, int count) {
    locked([&](State &s) { s.leaveCounts[{unit, selector}] = std::max(count, 1); });
}

void Camera::failNext(int unit, uint16_t selector, int count) {
    locked([&](State &s) {
        if (count > 0) s.failCounts[{unit, selector}] = count;
        else s.failCounts.erase({unit, selector});
    });
}

void Camera::setNeverReattach(bool on) {
    locked([on](State &s) { s.neverReattach = on; });
}

void Camera::setNeverAcknowledge(bool on) {
    locked([on](State &s) { s.neverAcknowledge = on; });
}

void Camera::setLatencyMs(double ms) {
    locked([ms](State &s) { s.latencyMs = ms > 0 ? ms : 0; });
}

void Camera::queueReads(int unit, uint16_t selector, std::vector<uint16_t> values) {
    locked([&](State &s) {
        auto &q = s.queuedReads[{unit, selector}];
        q.insert(q.end(), values.begin(), values.end());
        if (q.empty()) s.queuedReads.erase({unit, selector});
    });
}

void Camera::queueBlockRead(int unit, uint16_t selector, std::vector<uint8_t> payload) {
    locked([&](State &s) { s.queuedBlocks[{unit, selector}].push_back(std::move(payload)); });
}

bool Camera::setRegister(int unit, uint16_t selector, uint16_t value) {
    return locked([&](State &s) {
        if (unit == 5 && selector < kUnit5Size) {
            s.reg[selector] = value;
            if (selector == 0xF2) s.poweringOn = false;
            return true;
        }
        if ((unit == 6 || unit == 7) && selector < 64) {
            (unit == 6 ? s.errors : s.warnings)[selector] = static_cast<uint8_t>(value);
            return true;
        }
        return false;
    });
}

std::optional<uint16_t> Camera::registerValue(int unit, uint16_t selector) {
    return locked([&](State &s) -> std::optional<uint16_t> {
        if (unit == 5 && selector < kUnit5Size) return s.reg[selector];
        if ((unit == 6 || unit == 7) && selector < 64) return (unit == 6 ? s.errors : s.warnings)[selector];
        return std::nullopt;
    });
}

void Camera::setLight(int kelvin) {
    locked([kelvin](State &s) { s.svc.light = kelvin; });
}

void Camera::setMeasurement(uint16_t red, uint16_t blue) {
    locked([&](State &s) { s.svc.measurementOverride = std::pair{red, blue}; });
}

std::vector<uint8_t> Camera::serialFlash() {
    return locked([](State &s) { return s.sf; });
}

std::vector<uint8_t> Camera::ispStore() {
    return locked([](State &s) { return s.isp; });
}

std::vector<uint8_t> Camera::eeprom() {
    return locked([](State &s) { return std::vector<uint8_t>(s.eeprom.begin(), s.eeprom.end()); });
}

bool Camera::dump(DumpKind kind, const std::string &path, std::string &error) {
    const std::vector<uint8_t> data = kind == DumpKind::ProgramFlash  ? programFlash()
                                      : kind == DumpKind::SerialFlash ? serialFlash()
                                                                      : ispStore();
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (out) out.write(reinterpret_cast<const char *>(data.data()), static_cast<std::streamsize>(data.size()));
    if (!out) {
        error = "cannot write " + path;
        return false;
    }
    return true;
}

std::vector<std::string> Camera::traffic() {
    return locked([](State &s) { return s.traffic; });
}

size_t Camera::trafficSize() {
    return locked([](State &s) { return s.traffic.size(); });
}

void Camera::clearTraffic() {
    locked([](State &s) { s.traffic.clear(); });
}

bool Camera::writeTraffic(const std::string &path, std::string &error) {
    const std::vector<std::string> lines = traffic();
    std::ofstream out(path, std::ios::trunc);
    for (const std::string &line : lines) out << line << '\n';
    if (!out) {
        error = "cannot write " + path;
        return false;
    }
    return true;
}

Camera &camera() {
    static Camera instance;
    return instance;
}

}  // namespace sim
