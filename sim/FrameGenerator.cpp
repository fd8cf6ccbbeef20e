#include "sim/FrameGenerator.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>

#include "sim/SimCamera.h"

namespace sim {
namespace {

constexpr int kParameterUnit = 5;
constexpr int kTile = 80;            // chart squares, in chart pixels
constexpr double kPanStep = 0.25;    // chart pixels per pan or tilt step
constexpr double kZoomSteps = 64.0;  // zoom steps per unit of magnification
constexpr double kMaxZoom = 24.0;

// Eight chart colours, as a colour checker's strong patches.
constexpr uint8_t kPalette[8][3] = {
    {200, 40, 40}, {230, 150, 30}, {220, 210, 40}, {60, 170, 60},
    {40, 160, 190}, {50, 70, 190}, {140, 60, 170}, {180, 180, 180},
};

int reg(uint16_t selector, int fallback) {
    const auto v = camera().registerValue(kParameterUnit, selector);
    return v ? *v : fallback;
}

int split(uint16_t selector) {
    const uint32_t high = static_cast<uint32_t>(reg(selector, 0));
    const uint32_t low = static_cast<uint32_t>(reg(static_cast<uint16_t>(selector + 1), 0));
    return static_cast<int32_t>(high << 16 | low);
}

uint8_t clampByte(double v) { return v <= 0.0 ? 0 : v >= 255.0 ? 255 : static_cast<uint8_t>(v + 0.5); }

// Chart colour at a chart position: squares of the palette with dark seams and a grey ramp
// inside each square, so zoom changes the size of visible detail.
void chart(double x, double y, double rgb[3]) {
    const long tx = static_cast<long>(std::floor(x / kTile));
    const long ty = static_cast<long>(std::floor(y / kTile));
    const double fx = x - static_cast<double>(tx) * kTile;
    const double fy = y - static_cast<double>(ty) * kTile;
    if (fx < 2 || fy < 2) {
        rgb[0] = rgb[1] = rgb[2] = 20;
        return;
    }
    const auto &c = kPalette[static_cast<unsigned long>((tx * 3 + ty * 5) % 8 + 8) % 8];
    const double shade = 0.75 + 0.25 * (fy / kTile);
    for (int i = 0; i < 3; ++i) rgb[i] = c[i] * shade;
}

}  // namespace

FrameParams CurrentFrameParams() {
    FrameParams p;
    p.pan = split(0xE3);
    p.tilt = split(0xE5);
    p.zoom = reg(0xE2, 0);
    p.brightness = reg(0xD1, 8);
    p.contrast = reg(0xD2, 8);
    p.hue = reg(0xD5, 8);
    p.saturation = reg(0xD6, 8);
    p.redGain = reg(0x03, 128);
    p.blueGain = reg(0x04, 128);
    p.mirror = reg(0x0B, 0) != 0;
    return p;
}

RgbFrame RenderFrame(const FrameParams &p, int width, int height) {
    RgbFrame frame;
    width = std::clamp(width, 1, 4096);
    height = std::clamp(height, 1, 4096);
    frame.width = width;
    frame.height = height;
    frame.rgb.resize(static_cast<size_t>(width) * height * 3);

    const double zoom = std::clamp(1.0 + std::max(p.zoom, 0) / kZoomSteps, 1.0, kMaxZoom);
    const double cx = p.pan * kPanStep, cy = -p.tilt * kPanStep;
    // Hue turns the colours about the grey axis, 15 degrees a step from the neutral 8.
    const double angle = (p.hue - 8) * 15.0 * 3.14159265358979 / 180.0;
    const double cosA = std::cos(angle), sinA = std::sin(angle);
    const double k = 1.0 / 3.0, s3 = std::sqrt(k);
    const double m[3][3] = {
        {cosA + (1 - cosA) * k, k * (1 - cosA) - s3 * sinA, k * (1 - cosA) + s3 * sinA},
        {k * (1 - cosA) + s3 * sinA, cosA + k * (1 - cosA), k * (1 - cosA) - s3 * sinA},
        {k * (1 - cosA) - s3 * sinA, k * (1 - cosA) + s3 * sinA, cosA + k * (1 - cosA)},
    };
    const double sat = std::max(p.saturation, 0) / 8.0;
    const double con = std::max(p.contrast, 0) / 8.0;
    const double bri = (p.brightness - 8) * 12.0;
    const double gains[3] = {std::max(p.redGain, 0) / 128.0, 1.0, std::max(p.blueGain, 0) / 128.0};
    // Hue, saturation, contrast and the gains are all linear in the chart colour: fold them into
    // one matrix and one offset, so a pixel costs a handful of multiplications.
    constexpr double kLuma[3] = {0.299, 0.587, 0.114};
    double lumaRow[3] = {0, 0, 0};
    for (int j = 0; j < 3; ++j)
        for (int i = 0; i < 3; ++i) lumaRow[j] += kLuma[i] * m[i][j];
    double mat[3][3], offset[3];
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) mat[i][j] = gains[i] * con * (lumaRow[j] + (m[i][j] - lumaRow[j]) * sat);
        offset[i] = gains[i] * (128.0 * (1.0 - con) + bri);
    }

    uint8_t *out = frame.rgb.data();
    for (int py = 0; py < height; ++py) {
        const double y = cy + (py - height / 2.0) / zoom;
        for (int px = 0; px < width; ++px) {
            const int sx = p.mirror ? width - 1 - px : px;
            const double x = cx + (sx - width / 2.0) / zoom;
            double c[3];
            chart(x, y, c);
            for (int i = 0; i < 3; ++i)
                *out++ = clampByte(mat[i][0] * c[0] + mat[i][1] * c[1] + mat[i][2] * c[2] + offset[i]);
        }
    }
    return frame;
}

std::vector<uint8_t> BayerFromRgb(const RgbFrame &frame) {
    std::vector<uint8_t> raw(static_cast<size_t>(frame.width) * frame.height);
    for (int y = 0; y < frame.height; ++y)
        for (int x = 0; x < frame.width; ++x) {
            // RGGB: red on even rows and columns, blue on odd ones, green between.
            const int channel = (y % 2 == 0) ? (x % 2 == 0 ? 0 : 1) : (x % 2 == 0 ? 1 : 2);
            const size_t i = static_cast<size_t>(y) * frame.width + x;
            raw[i] = frame.rgb[i * 3 + channel];
        }
    return raw;
}

std::vector<uint8_t> EncodeBmp(const RgbFrame &frame) {
    const uint32_t rowSize = (static_cast<uint32_t>(frame.width) * 3 + 3) & ~3u;
    const uint32_t imageSize = rowSize * static_cast<uint32_t>(frame.height);
    const uint32_t offset = 14 + 40;
    std::vector<uint8_t> bmp(offset + imageSize, 0);
    auto put16 = [&](size_t at, uint32_t v) {
        bmp[at] = v & 0xFF;
        bmp[at + 1] = (v >> 8) & 0xFF;
    };
    auto put32 = [&](size_t at, uint32_t v) {
        put16(at, v & 0xFFFF);
        put16(at + 2, v >> 16);
    };
    bmp[0] = 'B';
    bmp[1] = 'M';
    put32(2, offset + imageSize);
    put32(10, offset);
    put32(14, 40);
    put32(18, static_cast<uint32_t>(frame.width));
    put32(22, static_cast<uint32_t>(frame.height));  // positive: bottom-up rows
    put16(26, 1);
    put16(28, 24);
    put32(30, 0);  // no compression
    put32(34, imageSize);
    put32(38, 2835);  // 72 dpi
    put32(42, 2835);
    for (int y = 0; y < frame.height; ++y) {
        const uint8_t *src = frame.rgb.data() + static_cast<size_t>(y) * frame.width * 3;
        uint8_t *dst = bmp.data() + offset + static_cast<size_t>(frame.height - 1 - y) * rowSize;
        for (int x = 0; x < frame.width; ++x) {
            dst[x * 3] = src[x * 3 + 2];  // bitmaps store blue, green, red
            dst[x * 3 + 1] = src[x * 3 + 1];
            dst[x * 3 + 2] = src[x * 3];
        }
    }
    return bmp;
}

bool WriteFileWhole(const std::string &path, const std::vector<uint8_t> &bytes, std::string &error) {
    if (path.empty()) {
        error = "no file name";
        return false;
    }
    // Written beside the target and renamed over it, so a full disk or a vanished folder
    // never leaves half a picture under the chosen name.
    const std::string part = path + ".part";
    std::FILE *f = std::fopen(part.c_str(), "wb");
    if (!f) {
        error = "cannot create " + part;
        return false;
    }
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
    const bool closed = std::fclose(f) == 0;
    std::error_code ec;
    if (!written || !closed) {
        std::filesystem::remove(part, ec);
        error = "cannot write " + path;
        return false;
    }
    std::filesystem::rename(part, path, ec);
    if (ec) {
        std::filesystem::remove(part, ec);
        error = "cannot replace " + path;
        return false;
    }
    return true;
}

}  // namespace sim
