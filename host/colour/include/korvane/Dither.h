// Dither.h - quantising float samples to integer codes without banding.
//
// A soft glow spans many pixels with nearly the same value; rounding each
// to the nearest code draws steps. Adding a different offset in [0, 1) code
// to every sample before taking the floor keeps the average exact and turns
// the steps into fine grain. The offset depends only on the pixel's place
// and channel, so a frame quantises to the same codes on every run and
// machine, and a still part of a shot keeps the same grain from frame to
// frame. A value that is a code, or within a float's rounding of one (a
// 256th of a code), stays that code.
#pragma once

#include <cstdint>

namespace korvane {

// The offset for (x, y, channel): one of 65536 steps from 1/256 to 255/256.
double ditherOffset(std::int32_t x, std::int32_t y, int channel);

// `value` (0..1 of the code range) as a code 0..maxCode, dithered.
std::uint32_t ditheredCode(double value, std::uint32_t maxCode, std::int32_t x, std::int32_t y, int channel);

} // namespace korvane
