// The simulated camera alone, through its host-side and control API: the behaviours that the
// firmware update, the flash tools and the service panels rely on.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <thread>

#include "sim/SimCamera.h"
#include "ui/Clock.h"

namespace {

using Bytes = std::vector<uint8_t>;

class SimCamera : public ::testing::Test {
protected:
    void SetUp() override {
        // Fast, with room for a slow sanitizer build before the camera's delays pass.
        vcc::clock::setScale(100);
        cam.reset(2);
    }

    uint16_t read(int unit, uint16_t sel) {
        uint16_t v = 0xBEEF;
        EXPECT_EQ(cam.readRegister(unit, sel, v), sim::kOk) << unit << " " << sel;
        return v;
    }
    int write(int unit, uint16_t sel, Bytes payload = {}) { return cam.writeBlock(unit, sel, payload); }
    Bytes readBlock(int unit, uint16_t sel, size_t n) {
        Bytes out(n);
        EXPECT_EQ(cam.readBlock(unit, sel, out), sim::kOk) << unit << " " << sel;
        return out;
    }
    std::string text(uint16_t first, int length) {
        std::string t;
        for (int i = 0; i < length; ++i) t.push_back(static_cast<char>(read(5, static_cast<uint16_t>(first + i))));
        return t;
    }
    static Bytes le(uint32_t v, int n) {
        Bytes b;
        for (int i = 0; i < n; ++i) b.push_back(static_cast<uint8_t>(v >> (8 * i)));
        return b;
    }
    // Into the boot loader the way the tool does it, and [PF INIT].
    void enterBootLoader() {
        ASSERT_EQ(cam.writeRegister(5, 0xFF, 0x5AA5), sim::kOk);
        EXPECT_FALSE(cam.attached());
        vcc::clock::sleepMs(900);
        ASSERT_TRUE(cam.attached());
        ASSERT_EQ(cam.firmware(), sim::Firmware::BootLoader);
        ASSERT_EQ(write(9, 0x42), sim::kOk);
    }
    void pfPage(uint32_t address, const Bytes &data) {
        ASSERT_EQ(write(9, 0x47, le(address, 4)), sim::kOk);
        ASSERT_EQ(write(9, 0x46, le(static_cast<uint32_t>(data.size()), 2)), sim::kOk);
        ASSERT_EQ(write(9, 0x48, data), sim::kOk);
        ASSERT_EQ(write(9, 0x49), sim::kOk);
    }
    static Bytes withMarker(size_t size, uint8_t fill, const std::string &version) {
        Bytes image(size, fill);
        const std::string m = std::string(sim::kVersionMarker) + version;
        std::copy(m.begin(), m.end(), image.begin() + 16);
        return image;
    }

    sim::Camera &cam = sim::camera();
};

TEST_F(SimCamera, ProfilesIdentifyThemselvesThroughTheirRegisters) {
    EXPECT_EQ(cam.deviceName(), "QM-T77K USB Camera");
    EXPECT_EQ(text(0x80, 7), "U77K105");
    EXPECT_EQ(text(0x87, 3), "B03");
    EXPECT_EQ(text(0x8A, 7), "I77K212");
    EXPECT_EQ(text(0xBE, 7), "A77K031");
    EXPECT_EQ(text(0xAC, 16), "QT77K24050100017");
    ASSERT_TRUE(cam.reset(1));
    EXPECT_EQ(cam.deviceName(), "QM-H30 USB PTZ Camera");
    EXPECT_EQ(read(5, 0xBC) << 8 | read(5, 0xBD), 0x0B35);
    EXPECT_EQ(read(5, 0xD9), 15);  // WB temperature in the middle of that model's range
    EXPECT_FALSE(cam.reset(3));
    EXPECT_EQ(cam.profile(), 1);
}

TEST_F(SimCamera, RefusesWhatARealCameraWouldNot) {
    uint16_t v = 0;
    EXPECT_EQ(cam.readRegister(5, 0x0999, v), sim::kStall);  // unknown selector
    EXPECT_EQ(cam.readRegister(5, 0x00C5, v), sim::kStall);  // a gap in the map
    EXPECT_EQ(cam.writeRegister(5, 0x0080, 0x41), sim::kStall);  // version texts are read only
    EXPECT_EQ(cam.readRegister(5, 0x00FF, v), sim::kStall);  // the boot-loader word is write only
    EXPECT_EQ(cam.writeRegister(5, 0x00FF, 0x1234), sim::kStall);
    EXPECT_EQ(cam.writeRegister(5, 0x0011, 0x01), sim::kStall);  // triggers take 0xAA only
    EXPECT_EQ(cam.readRegister(6, 64, v), sim::kStall);
    EXPECT_EQ(cam.readRegister(9, 0x41, v), sim::kStall);  // blocks are not registers
    EXPECT_EQ(write(9, 0x41), sim::kStall);                  // the program flash needs the boot loader
    EXPECT_EQ(write(15, 0xFE, Bytes(26)), sim::kStall);      // a category packet is 27 bytes
    EXPECT_EQ(cam.writeRegister(5, 0xFA, 1), sim::kStall);   // output format only in debug mode
    EXPECT_EQ(cam.writeRegister(5, 0xF9, 2), sim::kOk);
    EXPECT_EQ(cam.writeRegister(5, 0xFA, 1), sim::kOk);
    EXPECT_EQ(cam.traffic().front(), "R 5 0x0999 FAIL");
}

TEST_F(SimCamera, AcknowledgesAfterTheCommandsDurationAndAppliesItsEffect) {
    ASSERT_EQ(cam.writeRegister(5, 0xD1, 3), sim::kOk);
    ASSERT_EQ(cam.writeRegister(5, 0x111, 0), sim::kOk);
    ASSERT_EQ(cam.writeRegister(5, 0x11, 0xAA), sim::kOk);
    EXPECT_EQ(read(5, 0x111), 0);
    EXPECT_EQ(read(5, 0xD1), 3);
    vcc::clock::sleepMs(3100);
    EXPECT_EQ(read(5, 0x111), 1);
    EXPECT_EQ(read(5, 0xD1), 8);  // factory brightness

    cam.setNeverAcknowledge(true);
    ASSERT_EQ(cam.writeRegister(5, 0x123, 0), sim::kOk);
    ASSERT_EQ(cam.writeRegister(5, 0x23, 0xAA), sim::kOk);
    vcc::clock::sleepMs(2000);
    EXPECT_EQ(read(5, 0x123), 0);
}

TEST_F(SimCamera, PowerOnPassesThroughTheTransitionValues) {
    ASSERT_EQ(cam.writeRegister(5, 0xF2, 0x55), sim::kOk);
    EXPECT_EQ(read(5, 0xF2), 0x55);
    const double start = vcc::clock::nowMs();
    ASSERT_EQ(cam.writeRegister(5, 0xF2, 0xAA), sim::kOk);
    std::vector<uint16_t> seen;
    while (vcc::clock::nowMs() - start < 5000) {
        const uint16_t v = read(5, 0xF2);
        if (seen.empty() || seen.back() != v) seen.push_back(v);
        vcc::clock::sleepMs(100);
    }
    EXPECT_EQ(seen, (std::vector<uint16_t>{0xF0, 0xF1, 0xF2, 0xAA}));
    EXPECT_EQ(read(5, 0x1F2), 1);
}

TEST_F(SimCamera, ErrorTablesAreFilledByTestsAndEmptiedByErrorClear) {
    cam.setRegister(6, 5, 3);
    cam.setRegister(7, 63, 1);
    EXPECT_EQ(read(6, 5), 3);
    EXPECT_EQ(read(7, 63), 1);
    ASSERT_EQ(cam.writeRegister(5, 0xF5, 0xAA), sim::kOk);
    vcc::clock::sleepMs(1100);
    EXPECT_EQ(read(6, 5), 0);
    EXPECT_EQ(read(7, 63), 0);
}

TEST_F(SimCamera, BootLoaderRoundTripRewritesTheApplication) {
    enterBootLoader();
    EXPECT_EQ(cam.deviceName(), "QM-T77K Boot Loader");
    uint16_t v;
    EXPECT_EQ(cam.readRegister(5, 0xD1, v), sim::kStall);  // the application is not running

    // The boot loader protects itself.
    EXPECT_EQ(write(9, 0x43, {3}), sim::kStall);
    EXPECT_EQ(readBlock(9, 0x41, 1)[0], 0x81);
    ASSERT_EQ(write(9, 0x42), sim::kOk);
    for (uint8_t sector = 4; sector < 32; ++sector) ASSERT_EQ(write(9, 0x43, {sector}), sim::kOk);
    ASSERT_EQ(write(9, 0x44, {5}), sim::kOk);
    EXPECT_EQ(readBlock(9, 0x44, 1)[0], 1);

    const Bytes app = withMarker(256, 0x5A, "U77K200");
    pfPage(0x4100, app);
    // Programming ANDs: a second write over the same bytes cannot set bits again.
    pfPage(0x4200, Bytes(256, 0x0F));
    pfPage(0x4200, Bytes(256, 0xF3));
    ASSERT_EQ(write(9, 0x51), sim::kOk);
    ASSERT_EQ(write(9, 0x52), sim::kOk);
    EXPECT_FALSE(cam.attached());
    vcc::clock::sleepMs(1100);
    ASSERT_TRUE(cam.attached());
    EXPECT_EQ(cam.firmware(), sim::Firmware::Application);
    EXPECT_EQ(text(0x80, 7), "U77K200");
    EXPECT_EQ(text(0x87, 3), "B03");

    const Bytes pf = cam.programFlash();
    EXPECT_TRUE(std::equal(app.begin(), app.end(), pf.begin() + 0x4100));
    EXPECT_EQ(pf[0x4200], 0x03);
    EXPECT_EQ(pf[0x5000], 0xFF);
    EXPECT_TRUE(sim::IsApplicationSigned(pf));
    const std::vector<std::string> t = cam.traffic();
    EXPECT_EQ(std::count(t.begin(), t.end(), "# attach app"), 1);
}

TEST_F(SimCamera, AnUnsignedApplicationLeavesTheCameraInItsBootLoader) {
    enterBootLoader();
    ASSERT_EQ(write(9, 0x43, {4}), sim::kOk);
    ASSERT_EQ(write(9, 0x52), sim::kOk);
    vcc::clock::sleepMs(1100);
    EXPECT_EQ(cam.firmware(), sim::Firmware::BootLoader);
    cam.unplug();
    cam.plug();
    EXPECT_EQ(cam.firmware(), sim::Firmware::BootLoader);
    const std::vector<std::string> t = cam.traffic();
    EXPECT_EQ(std::count(t.begin(), t.end(), "# attach bl"), 3);
}

TEST_F(SimCamera, SerialFlashErasesProgramsAndReadsBack) {
    ASSERT_EQ(write(9, 0x03, le(1, 2)), sim::kOk);
    ASSERT_EQ(write(9, 0x03, le(128, 2)), sim::kStall);  // 512 KB: sectors 0 to 127
    EXPECT_EQ(readBlock(9, 0x02, 3), (Bytes{0xC2, 0x20, 0x13}));
    Bytes page(256);
    for (int i = 0; i < 256; ++i) page[i] = static_cast<uint8_t>(i);
    ASSERT_EQ(write(9, 0x09, le(0x1000, 4)), sim::kOk);
    ASSERT_EQ(write(9, 0x13, page), sim::kOk);
    ASSERT_EQ(write(9, 0x1D), sim::kOk);
    ASSERT_EQ(write(9, 0x09, le(0x1001, 4)), sim::kOk);
    ASSERT_EQ(write(9, 0x0A, {0xF0}), sim::kOk);
    ASSERT_EQ(write(9, 0x1C), sim::kOk);  // 0x01 AND 0xF0
    ASSERT_EQ(write(9, 0x1E), sim::kOk);
    EXPECT_EQ(readBlock(9, 0x0A, 1)[0], 0x00);
    ASSERT_EQ(write(9, 0x09, le(0x1000, 4)), sim::kOk);
    ASSERT_EQ(write(9, 0x1F), sim::kOk);
    const Bytes back = readBlock(9, 0x13, 256);
    EXPECT_EQ(back[0], 0);
    EXPECT_EQ(back[2], 2);
    ASSERT_EQ(write(9, 0x05, le(1, 2)), sim::kOk);
    const Bytes sf = cam.serialFlash();
    EXPECT_EQ(sf[0x10FF], 0xFF);
    uint8_t sum = 0;
    for (size_t i = 0x1000; i < 0x2000; ++i) sum = static_cast<uint8_t>(sum + sf[i]);
    EXPECT_EQ(readBlock(9, 0x05, 1)[0], sum);
    EXPECT_EQ(sf[0x1001], 0x00);
}

TEST_F(SimCamera, IspStreamStoresTheImageEvenWhenAnAddressIsLost) {
    Bytes image(33 * 512 + 1);
    for (size_t i = 0; i < image.size(); ++i) image[i] = static_cast<uint8_t>(i * 7);
    size_t blocks = (image.size() + 511) / 512;
    for (size_t b = 0; b < blocks; ++b) {
        Bytes block(512, 0xFF);
        std::copy_n(image.begin() + b * 512, std::min<size_t>(512, image.size() - b * 512), block.begin());
        if (b < 32) {
            ASSERT_EQ(write(9, 0x23, block), sim::kOk);
            const uint32_t address = 0x01000100 + 0x200 * static_cast<uint32_t>(b);
            if (b == 7) continue;  // the camera missed this address: the block stays where it landed
            ASSERT_EQ(write(9, 0x20, {uint8_t(address >> 24), uint8_t(address >> 16), uint8_t(address >> 8),
                                      uint8_t(address)}),
                      sim::kOk);
        } else {
            ASSERT_EQ(write(9, 0x21, block), sim::kOk);
        }
    }
    EXPECT_EQ(cam.ispStore().size(), 64u * 1024);  // nothing changes before the end
    ASSERT_EQ(write(9, 0x22), sim::kOk);
    const Bytes stored = cam.ispStore();
    ASSERT_EQ(stored.size(), 34u * 512);
    EXPECT_TRUE(std::equal(image.begin(), image.end(), stored.begin()));
    EXPECT_EQ(stored.back(), 0xFF);
}

TEST_F(SimCamera, EepromKeepsSavedDataAcrossReconnectAndReplug) {
    auto packet = [](uint16_t address, uint8_t data, uint8_t op) {
        Bytes p(27, 0);
        p[0] = 0x29, p[1] = uint8_t(address >> 8), p[2] = uint8_t(address), p[3] = data, p[4] = op;
        return p;
    };
    auto eepromRead = [&](uint16_t address) {
        EXPECT_EQ(write(15, 0xFE, packet(address, 0, 4)), sim::kOk);
        EXPECT_EQ(write(15, 0xFF, {0x29}), sim::kOk);
        return readBlock(15, 0xFF, 26)[0];
    };
    ASSERT_EQ(write(15, 0xFE, packet(0x123, 0x5A, 1)), sim::kOk);
    ASSERT_EQ(write(15, 0xFE, packet(0x124, 0x77, 1)), sim::kOk);
    ASSERT_EQ(write(15, 0xFE, packet(0x123, 0, 2)), sim::kOk);  // save all
    ASSERT_EQ(write(15, 0xFE, packet(0x124, 0x66, 1)), sim::kOk);  // not saved
    EXPECT_EQ(write(15, 0xFE, packet(0x800, 1, 1)), sim::kStall);
    EXPECT_EQ(readBlock(15, 0xFD, 4), (Bytes{0x29, 0x02, 5, 0}));
    EXPECT_EQ(eepromRead(0x124), 0x66);  // a reconnect is no boot: the working copy stays
    cam.unplug();
    cam.plug();
    EXPECT_EQ(eepromRead(0x123), 0x5A);
    EXPECT_EQ(eepromRead(0x124), 0x77);
    ASSERT_EQ(write(15, 0xFE, packet(0, 0, 3)), sim::kOk);  // default all, then save
    ASSERT_EQ(write(15, 0xFE, packet(0, 0, 2)), sim::kOk);
    EXPECT_EQ(cam.eeprom()[0x123], 0xFF);
}

TEST_F(SimCamera, CalibrationMeasuresTheChosenLightAndStoresGains) {
    auto cali = [&](uint8_t function, uint8_t op, Bytes payload = {}) {
        Bytes p(27, 0);
        p[0] = 0x2B, p[1] = function, p[2] = op;
        std::copy(payload.begin(), payload.end(), p.begin() + 3);
        return write(15, 0xFE, p);
    };
    auto answer = [&]() {
        EXPECT_EQ(write(15, 0xFF, {0x2B}), sim::kOk);
        return readBlock(15, 0xFF, 26);
    };
    cam.setLight(4000);
    ASSERT_EQ(cam.writeRegister(5, 0x02, 0xAA), sim::kOk);
    ASSERT_EQ(cali(0xF0, 0x04), sim::kOk);
    Bytes a = answer();
    EXPECT_EQ((Bytes{a[0], a[1], a[2], a[3]}), (Bytes{0, 50, 0, 44}));
    cam.setLight(6500);
    ASSERT_EQ(cam.writeRegister(5, 0x02, 0xAA), sim::kOk);
    ASSERT_EQ(cali(0xF0, 0x04), sim::kOk);
    a = answer();
    EXPECT_EQ((Bytes{a[1], a[3]}), (Bytes{46, 51}));

    ASSERT_EQ(cali(0xF3, 0x01, {0x01, 0x02, 0x00, 0xFE}), sim::kOk);
    ASSERT_EQ(cali(0xF4, 0x01, {0xAA}), sim::kOk);
    EXPECT_EQ(cali(0xF0, 0x01, {1, 2, 3, 4}), sim::kStall);  // the measurement is read only
    cam.unplug();
    cam.plug();
    ASSERT_EQ(cali(0xF3, 0x04), sim::kOk);
    a = answer();
    EXPECT_EQ((Bytes{a[0], a[1], a[2], a[3], a[4]}), (Bytes{0x01, 0x02, 0x00, 0xFE, 0}));
    ASSERT_EQ(cali(0xF4, 0x04), sim::kOk);
    EXPECT_EQ(answer()[0], 0xAA);
}

TEST_F(SimCamera, TrafficRecordFollowsTheDocumentedFormat) {
    uint16_t v;
    cam.failNext(5, 0xD1, 1);
    cam.readRegister(5, 0xD1, v);
    cam.readRegister(5, 0xD1, v);
    cam.writeRegister(5, 0xD1, 7);
    cam.writeRegister(5, 0xFF, 0x5AA5);
    vcc::clock::sleepMs(900);
    write(9, 0x43, {4});
    write(9, 0x42);
    readBlock(9, 0x02, 3);
    const std::vector<std::string> expected = {
        "R 5 0x00D1 FAIL", "R 5 0x00D1 0x0008", "W 5 0x00D1 0x0007", "W 5 0x00FF 0x5AA5", "# detach", "# attach bl",
        "WB 9 0x0043 1 04 FAIL", "WB 9 0x0042 0", "RB 9 0x0002 3 C2 20 13",
    };
    EXPECT_EQ(cam.traffic(), expected);

    const auto dir = std::filesystem::temp_directory_path() / "vcc-sim-test";
    std::filesystem::create_directories(dir);
    std::string message;
    ASSERT_TRUE(sim::RunCommand("traffic " + (dir / "t.txt").string(), message)) << message;
    std::ifstream in(dir / "t.txt");
    std::string first;
    std::getline(in, first);
    EXPECT_EQ(first, "R 5 0x00D1 FAIL");
    for (const char *kind : {"pf", "sf", "isp"})
        ASSERT_TRUE(sim::RunCommand(std::string("dump ") + kind + " " + (dir / kind).string(), message)) << message;
    EXPECT_EQ(std::filesystem::file_size(dir / "pf"), sim::kProgramFlashSize);
    EXPECT_EQ(std::filesystem::file_size(dir / "sf"), sim::kSerialFlashSize);
    EXPECT_EQ(std::filesystem::file_size(dir / "isp"), 64u * 1024);
    EXPECT_FALSE(sim::RunCommand("dump pf /nonexistent-dir/x", message));
    EXPECT_NE(message.find("cannot write"), std::string::npos);
}

TEST_F(SimCamera, FaultInjectionLeavesAndStaysAway) {
    uint16_t v;
    cam.leaveBusAt(5, 0xD2, 2);
    EXPECT_EQ(cam.readRegister(5, 0xD2, v), sim::kOk);
    EXPECT_EQ(cam.readRegister(5, 0xD2, v), sim::kNoDevice);
    EXPECT_FALSE(cam.attached());
    EXPECT_EQ(cam.deviceName(), "");
    EXPECT_EQ(cam.writeRegister(5, 0xD1, 1), sim::kNoDevice);
    cam.plug();
    cam.queueReads(5, 0xF2, {0xF1});
    EXPECT_EQ(read(5, 0xF2), 0xF1);
    EXPECT_EQ(read(5, 0xF2), 0xAA);

    cam.setNeverReattach(true);
    ASSERT_EQ(cam.writeRegister(5, 0xFF, 0x5AA5), sim::kOk);
    vcc::clock::sleepMs(2000);
    EXPECT_FALSE(cam.attached());
    cam.setNeverReattach(false);
    EXPECT_TRUE(cam.attached());
}

TEST_F(SimCamera, ScriptCommandsExplainBadInput) {
    std::string message;
    EXPECT_TRUE(sim::RunCommand("reg 5 0xD1 7", message)) << message;
    EXPECT_EQ(cam.registerValue(5, 0xD1), 7);
    EXPECT_TRUE(sim::RunCommand("fail 5 0xD1 2", message)) << message;
    EXPECT_TRUE(sim::RunCommand("error 5 3", message)) << message;
    EXPECT_EQ(cam.registerValue(6, 5), 3);
    const std::pair<const char *, const char *> bad[] = {
        {"reg 5 0xD1", "missing value"},
        {"reg 5 0xZZ 1", "not a number: 0xZZ"},
        {"reg 5 0x10000 1", "selector out of range"},
        {"reg 9 1 1", "no such register"},
        {"fail 5 0xD1", "missing count"},
        {"dump eeprom /tmp/x", "unknown memory: eeprom"},
        {"traffic", "missing file name"},
        {"plug now", "unexpected text: now"},
        {"noack maybe", "expected on or off"},
        {"explode", "unknown sim command: explode"},
        {"", "missing sim command"},
    };
    for (const auto &[line, why] : bad) {
        EXPECT_FALSE(sim::RunCommand(line, message)) << line;
        EXPECT_NE(message.find(why), std::string::npos) << line << ": " << message;
    }
}

TEST_F(SimCamera, ConcurrentHostsSeeConsistentAnswers) {
    std::atomic<int> failures{0};
    auto hammer = [&](uint16_t sel) {
        for (int i = 0; i < 2000; ++i) {
            uint16_t v = 0;
            if (cam.writeRegister(5, sel, static_cast<uint16_t>(i & 0xFF)) != sim::kOk ||
                cam.readRegister(5, sel, v) != sim::kOk || v != (i & 0xFF))
                ++failures;
        }
    };
    std::thread a(hammer, 0xD1), b(hammer, 0xD2);
    for (int i = 0; i < 200; ++i) cam.traffic();
    a.join();
    b.join();
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(cam.trafficSize(), 8000u);
}

}  // namespace
