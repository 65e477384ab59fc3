// ColourSpaces.h - the colour spaces images are read and written in, and
// conversions between them in float RGB.
//
// Flares and backgrounds are added in a scene-linear working space. Two
// spaces are built in, both with Rec.709 primaries and a D65 white:
//   "linear"  scene-linear: the working space, and what EXR and HDR files hold;
//   "sRGB"    the sRGB transfer curve over the same primaries: what 8- and
//             16-bit images hold, and what the plug-in paints.
// Names compare without regard to case.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

inline constexpr std::string_view kLinearSpace = "linear";
inline constexpr std::string_view kSrgbSpace = "sRGB";

// Rec.709 red, green, blue primaries and the D65 white point as CIE x, y:
// the EXR "chromaticities" of the built-in spaces.
inline constexpr std::array<float, 8> kRec709Chromaticities = {0.64f, 0.33f, 0.30f, 0.60f,
                                                               0.15f, 0.06f, 0.3127f, 0.3290f};

// A conversion of float pixels, in place: `channels` floats a pixel, the
// first three red, green, blue; a fourth (alpha) stays as it is.
class ColourConversion {
public:
    virtual ~ColourConversion() = default;
    virtual void apply(float* pixels, std::size_t count, int channels) const = 0;
    virtual bool isIdentity() const { return false; }
};

class ColourSpaces {
public:
    // The built-in spaces.
    ColourSpaces();

    const std::string& working() const { return working_; }
    const std::vector<std::string>& names() const { return names_; }

    // The known space `name` means. Throws Error naming `what` (the option
    // or field that gave it) and the known spaces.
    std::string find(std::string_view name, std::string_view what) const;

    // From one known space to another. Throws Error for an unknown name.
    std::unique_ptr<ColourConversion> conversion(std::string_view from, std::string_view to) const;

private:
    std::string working_;
    std::vector<std::string> names_;
};

} // namespace korvane
