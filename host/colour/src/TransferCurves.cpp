// TransferCurves.cpp - the sRGB curve, both ways.

#include "korvane/TransferCurves.h"

#include <cmath>

namespace korvane {

double srgbToLinear(double encoded)
{
    const double magnitude = std::fabs(encoded);
    const double linear = magnitude <= 0.04045 ? magnitude / 12.92 : std::pow((magnitude + 0.055) / 1.055, 2.4);
    return std::copysign(linear, encoded);
}

double linearToSrgb(double linear)
{
    const double magnitude = std::fabs(linear);
    const double encoded =
        magnitude <= 0.0031308 ? magnitude * 12.92 : 1.055 * std::pow(magnitude, 1.0 / 2.4) - 0.055;
    return std::copysign(encoded, linear);
}

} // namespace korvane
