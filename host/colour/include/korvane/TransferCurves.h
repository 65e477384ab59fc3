// TransferCurves.h - the sRGB transfer curve, in double precision.
//
// Display-referred values (what 8- and 16-bit images hold, and what the
// plug-in paints) are sRGB-encoded; the working space is linear. The curve
// is the standard piecewise one: linear below 0.04045 (encoded) or
// 0.0031308 (linear), a 2.4 power above. Values below 0 are mirrored, so
// the curves are odd functions and keep negative values negative.
#pragma once

namespace korvane {

double srgbToLinear(double encoded);
double linearToSrgb(double linear);

} // namespace korvane
