// The `sim ...` lines of scripts, so that vcc-script and any other driver share one reading
// of them.
#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <vector>

#include "sim/FwPackage.h"
#include "sim/SimCamera.h"

namespace sim {
namespace {

std::string_view trim(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r' || s.back() == '\n')) s.remove_suffix(1);
    return s;
}

std::string_view nextWord(std::string_view &rest) {
    rest = trim(rest);
    const size_t end = rest.find_first_of(" \t");
    std::string_view word = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end);
    return word;
}

// Decimal, or hexadecimal with 0x; a leading minus is allowed for decimal.
bool number(std::string_view text, long long &value) {
    int base = 10;
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        text.remove_prefix(2);
        base = 16;
    }
    if (text.empty()) return false;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    return ec == std::errc() && end == text.data() + text.size();
}

struct Args {
    std::string_view rest;
    std::string &message;
    const char *usage;

    bool fail(const std::string &why) {
        message = why + " (usage: sim " + usage + ")";
        return false;
    }
    bool integer(long long &v, long long lo, long long hi, const char *what) {
        const std::string_view w = nextWord(rest);
        if (w.empty()) return fail(std::string("missing ") + what);
        if (!number(w, v)) return fail(std::string("not a number: ") + std::string(w));
        if (v < lo || v > hi) return fail(std::string(what) + " out of range: " + std::string(w));
        return true;
    }
    bool path(std::string &p) {
        p = std::string(trim(rest));
        rest = {};
        if (p.empty()) return fail("missing file name");
        return true;
    }
    bool onOff(bool &on) {
        const std::string_view w = nextWord(rest);
        if (w == "on") on = true;
        else if (w == "off") on = false;
        else return fail("expected on or off");
        return true;
    }
    bool done() { return trim(rest).empty() ? true : fail("unexpected text: " + std::string(trim(rest))); }
};

// Scripts running side by side share the program's folder and with it the package folder:
// the first run to lay out a package holds this lock until it ends, the others wait for it.
void lockPackageFolder() {
    static int fd = -1;
    if (fd >= 0) return;
    fd = open((PackageFolderBesideProgram() + ".lock").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0644);
    if (fd >= 0) flock(fd, LOCK_EX);
}

// `package`: the sample package, or the kinds given as KIND=SIZE (isp, usb, audio), or none.
bool runPackage(std::string_view rest, std::string &message) {
    Args a{rest, message, "package [none | KIND=SIZE ...] (KIND isp, usb or audio)"};
    std::vector<PackageImage> images;
    if (trim(a.rest).empty()) {
        images = SamplePackage();
    } else if (trim(a.rest) == "none") {
        a.rest = {};
    } else {
        long long sizes[3] = {0, 0, 0};
        constexpr std::string_view kinds[3] = {"isp", "usb", "audio"};
        for (std::string_view word = nextWord(a.rest); !word.empty(); word = nextWord(a.rest)) {
            const size_t eq = word.find('=');
            const std::string_view kind = word.substr(0, eq);
            const auto at = std::find(std::begin(kinds), std::end(kinds), kind);
            long long size = 0;
            if (eq == std::string_view::npos || at == std::end(kinds) || !number(word.substr(eq + 1), size) ||
                size < 1 || size > 16 * 1024 * 1024)
                return a.fail("not an image: " + std::string(word));
            sizes[at - std::begin(kinds)] = size;
        }
        images = MakePackage(size_t(sizes[0]), size_t(sizes[1]), size_t(sizes[2]));
    }
    lockPackageFolder();
    return WritePackage(PackageFolderBesideProgram(), images, message);
}

}  // namespace

bool RunCommand(std::string_view line, std::string &message) {
    message.clear();
    std::string_view rest = line;
    const std::string_view verb = nextWord(rest);
    Camera &cam = camera();
    long long unit = 0, sel = 0, value = 0;

    if (verb == "unplug" || verb == "plug") {
        Args a{rest, message, "plug|unplug"};
        if (!a.done()) return false;
        verb == "plug" ? cam.plug() : cam.unplug();
        return true;
    }
    if (verb == "reg") {
        Args a{rest, message, "reg UNIT SEL VALUE"};
        if (!a.integer(unit, 0, 255, "unit") || !a.integer(sel, 0, 0xFFFF, "selector") ||
            !a.integer(value, 0, 0xFFFF, "value") || !a.done())
            return false;
        if (!cam.setRegister(int(unit), uint16_t(sel), uint16_t(value))) return a.fail("no such register");
        return true;
    }
    if (verb == "fail" || verb == "leaveat") {
        Args a{rest, message, verb == "fail" ? "fail UNIT SEL COUNT" : "leaveat UNIT SEL [COUNT]"};
        long long count = 1;
        if (!a.integer(unit, 0, 255, "unit") || !a.integer(sel, 0, 0xFFFF, "selector")) return false;
        if ((verb == "fail" || !trim(a.rest).empty()) && !a.integer(count, 0, 1000000, "count")) return false;
        if (!a.done()) return false;
        if (verb == "fail") cam.failNext(int(unit), uint16_t(sel), int(count));
        else cam.leaveBusAt(int(unit), uint16_t(sel), int(count));
        return true;
    }
    if (verb == "traffic") {
        Args a{rest, message, "traffic FILE"};
        std::string file;
        return a.path(file) && cam.writeTraffic(file, message);
    }
    if (verb == "dump") {
        Args a{rest, message, "dump pf|sf|isp FILE"};
        const std::string_view kind = nextWord(a.rest);
        DumpKind k;
        if (kind == "pf") k = DumpKind::ProgramFlash;
        else if (kind == "sf") k = DumpKind::SerialFlash;
        else if (kind == "isp") k = DumpKind::IspStore;
        else return a.fail("unknown memory: " + std::string(kind));
        std::string file;
        return a.path(file) && cam.dump(k, file, message);
    }
    if (verb == "vendorlib") {
        Args a{rest, message, "vendorlib absent|present"};
        const std::string_view w = nextWord(a.rest);
        if ((w != "absent" && w != "present") || !a.done()) return a.fail("expected absent or present");
        BridgeState b = cam.bridge();
        b.libraryPresent = w == "present";
        cam.setBridge(b);
        return true;
    }
    if (verb == "chiptype") {
        Args a{rest, message, "chiptype N"};
        if (!a.integer(value, 0, 0xFFFFFFFFLL, "chip type") || !a.done()) return false;
        BridgeState b = cam.bridge();
        b.chipType = uint32_t(value);
        cam.setBridge(b);
        return true;
    }
    if (verb == "status-1b") {
        Args a{rest, message, "status-1b"};
        if (!a.done()) return false;
        BridgeState b = cam.bridge();
        b.status1B = true;
        cam.setBridge(b);
        return true;
    }
    if (verb == "vendorfail") {
        Args a{rest, message, "vendorfail COUNT"};
        if (!a.integer(value, 0, 1000, "count") || !a.done()) return false;
        BridgeState b = cam.bridge();
        b.failDownloads = int(value);
        cam.setBridge(b);
        return true;
    }
    if (verb == "queueblock") {
        Args a{rest, message, "queueblock UNIT SEL BYTE..."};
        if (!a.integer(unit, 0, 255, "unit") || !a.integer(sel, 0, 0xFFFF, "selector")) return false;
        std::vector<uint8_t> bytes;
        while (!trim(a.rest).empty()) {
            if (!a.integer(value, 0, 0xFF, "byte")) return false;
            bytes.push_back(uint8_t(value));
        }
        if (bytes.empty()) return a.fail("missing byte");
        cam.queueBlockRead(int(unit), uint16_t(sel), std::move(bytes));
        return true;
    }
    if (verb == "package") return runPackage(rest, message);
    if (verb == "profile") {
        Args a{rest, message, "profile 0|1|2"};
        if (!a.integer(value, 0, 2, "profile") || !a.done()) return false;
        cam.reset(int(value));
        return true;
    }
    if (verb == "light") {
        Args a{rest, message, "light KELVIN"};
        if (!a.integer(value, 0, 100000, "colour temperature") || !a.done()) return false;
        cam.setLight(int(value));
        return true;
    }
    if (verb == "error" || verb == "warning") {
        Args a{rest, message, verb == "error" ? "error CODE COUNT" : "warning CODE COUNT"};
        if (!a.integer(sel, 0, 63, "code") || !a.integer(value, 0, 255, "count") || !a.done()) return false;
        cam.setRegister(verb == "error" ? 6 : 7, uint16_t(sel), uint16_t(value));
        return true;
    }
    if (verb == "latency") {
        Args a{rest, message, "latency MS"};
        if (!a.integer(value, 0, 60000, "latency") || !a.done()) return false;
        cam.setLatencyMs(double(value));
        return true;
    }
    if (verb == "noack" || verb == "noreattach") {
        Args a{rest, message, verb == "noack" ? "noack on|off" : "noreattach on|off"};
        bool on = false;
        if (!a.onOff(on) || !a.done()) return false;
        verb == "noack" ? cam.setNeverAcknowledge(on) : cam.setNeverReattach(on);
        return true;
    }
    if (verb == "leave") {
        Args a{rest, message, "leave [MS]"};
        std::optional<double> after;
        if (!trim(a.rest).empty()) {
            if (!a.integer(value, 0, 3600000, "delay")) return false;
            after = double(value);
        }
        if (!a.done()) return false;
        cam.leaveBus(after);
        return true;
    }
    if (verb == "queue") {
        Args a{rest, message, "queue UNIT SEL VALUE..."};
        if (!a.integer(unit, 0, 255, "unit") || !a.integer(sel, 0, 0xFFFF, "selector")) return false;
        std::vector<uint16_t> values;
        while (!trim(a.rest).empty()) {
            if (!a.integer(value, 0, 0xFFFF, "value")) return false;
            values.push_back(uint16_t(value));
        }
        if (values.empty()) return a.fail("missing value");
        cam.queueReads(int(unit), uint16_t(sel), std::move(values));
        return true;
    }
    if (verb.empty()) {
        message = "missing sim command";
        return false;
    }
    message = "unknown sim command: " + std::string(verb);
    return false;
}

}  // namespace sim
