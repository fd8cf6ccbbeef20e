// Synthetic video of the simulated camera: a test chart that the camera "looks at" through its
// pan, tilt and zoom, coloured by its image parameters, so that a preview or a snapshot shows
// what the tool last set. Frames are computed on demand from the camera's registers.
//
// Thread rules: every function is safe from any thread (the camera is read under its own lock).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace sim {

// What shapes a frame: the registers of the parameter unit, decoded.
struct FrameParams {
    int pan = 0, tilt = 0;   // signed positions as the split registers hold them
    int zoom = 0;            // optical zoom position, 0 = widest
    int brightness = 8, contrast = 8, saturation = 8, hue = 8;  // 8 = neutral
    int redGain = 128, blueGain = 128;                          // 128 = neutral
    bool mirror = false;
};

// An 8-bit RGB picture, rows top to bottom, three bytes a pixel (R, G, B).
struct RgbFrame {
    int width = 0, height = 0;
    std::vector<uint8_t> rgb;
};

inline constexpr int kFrameWidth = 640;
inline constexpr int kFrameHeight = 480;

// The parameters the camera holds now (neutral values for a camera without them).
FrameParams CurrentFrameParams();
RgbFrame RenderFrame(const FrameParams &params, int width = kFrameWidth, int height = kFrameHeight);
// The sensor's view of the same picture: one byte a pixel in an RGGB Bayer mosaic.
std::vector<uint8_t> BayerFromRgb(const RgbFrame &frame);
// A 24-bit uncompressed Windows bitmap of the frame (bottom-up rows padded to 4 bytes).
std::vector<uint8_t> EncodeBmp(const RgbFrame &frame);
// Writes bytes to path whole or not at all: a failed write leaves no file behind.
bool WriteFileWhole(const std::string &path, const std::vector<uint8_t> &bytes, std::string &error);

}  // namespace sim
