// Dither.cpp - place-seeded offsets and dithered codes.

#include "korvane/Dither.h"

#include <cmath>

namespace korvane {

double ditherOffset(std::int32_t x, std::int32_t y, int channel)
{
    // An integer hash with good mixing: neighbouring pixels and channels
    // get unrelated offsets.
    std::uint32_t h = static_cast<std::uint32_t>(x) * 0x9E3779B1u;
    h ^= static_cast<std::uint32_t>(y) * 0x85EBCA77u;
    h ^= static_cast<std::uint32_t>(channel) * 0xC2B2AE3Du;
    h ^= h >> 15;
    h *= 0x2C1B3C6Du;
    h ^= h >> 12;
    h *= 0x297A2D39u;
    h ^= h >> 15;
    // Kept a 256th of a code away from either end, so a value within a
    // float's rounding of a code still gives that code; symmetric about
    // one half, so the average stays exact.
    constexpr double kMargin = 1.0 / 256.0;
    return kMargin + (static_cast<double>(h >> 16) + 0.5) / 65536.0 * (1.0 - 2.0 * kMargin);
}

std::uint32_t ditheredCode(double value, std::uint32_t maxCode, std::int32_t x, std::int32_t y, int channel)
{
    if (!(value > 0.0))
        return 0;
    if (value >= 1.0)
        return maxCode;
    const double code = std::floor(value * maxCode + ditherOffset(x, y, channel));
    return code >= maxCode ? maxCode : static_cast<std::uint32_t>(code);
}

} // namespace korvane
