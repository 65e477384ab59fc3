// Light.h - the light of one frame, as the command line gives it, as a
// project's light track holds it at a frame, and as the plug-in gets it in
// 'SETF' (PluginInstance::setup turns it into the record).
//
// Position and radius are lengths in the frame: a fraction of a side (x of
// the width, y and the radius of the height), a percentage of it, or pixels,
// kept as given so that what an image records is what the user typed.
#pragma once

#include <cstdint>

namespace korvane {

struct Length {
    enum class Unit { Fraction, Percent, Pixels };
    double value = 0;
    Unit unit = Unit::Fraction;

    // In pixels of a frame side `extent` pixels long.
    double pixels(double extent) const
    {
        switch (unit) {
        case Unit::Pixels: return value;
        case Unit::Percent: return value / 100.0 * extent;
        default: return value * extent;
        }
    }
    bool operator==(const Length&) const = default;
};

struct Rgb8 {
    std::uint8_t red = 255;
    std::uint8_t green = 255;
    std::uint8_t blue = 255;
    bool operator==(const Rgb8&) const = default;
};

struct Light {
    Length x{0.3};  // from the left, of the frame's width
    Length y{0.3};  // from the top, of the frame's height
    Rgb8 color;
    double intensity = 1;
    Length radius{0.1};   // of the frame's height; glows and streaks scale with it
    double rotation = 0;  // degrees

    bool operator==(const Light&) const = default;
};

} // namespace korvane
