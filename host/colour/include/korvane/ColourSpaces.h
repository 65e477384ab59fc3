// ColourSpaces.h - the colour spaces images are read and written in, and
// conversions between them in float RGB.
//
// Flares and backgrounds are added in a scene-linear working space. Without
// a configuration two spaces are built in, both with Rec.709 primaries and a
// D65 white:
//   "linear"  scene-linear: the working space, and what EXR and HDR files hold;
//   "sRGB"    the sRGB transfer curve over the same primaries: what 8- and
//             16-bit images hold, and what the plug-in paints.
// An OpenColorIO configuration brings its own spaces instead: its
// scene_linear role is the working space, and its color_picking role (or a
// space called sRGB) the display-referred one. Names compare as the
// configuration compares them (roles and aliases too); the built-in ones
// without regard to case.
#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
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
    // True when each of red, green, blue is converted on its own by one
    // curve, so a table of grey values converts any colour.
    virtual bool isPerChannel() const { return false; }
};

class ColourSpaces {
public:
    // The built-in spaces.
    ColourSpaces();
    // The spaces of an OpenColorIO configuration file. Throws Error naming
    // the file and what is wrong with it.
    static ColourSpaces fromConfig(const std::filesystem::path& file);
    ~ColourSpaces();
    ColourSpaces(ColourSpaces&&) noexcept;
    ColourSpaces& operator=(ColourSpaces&&) noexcept;

    // "built in" or the configuration's file.
    const std::string& source() const { return source_; }
    bool builtIn() const;
    // Where light adds up, and the space of display-referred pictures (what
    // the plug-in paints, and 8- and 16-bit files unless told otherwise).
    // working is empty for a configuration without a scene_linear role;
    // displayReferred throws Error when one has neither a color_picking role
    // nor a space called sRGB.
    const std::string& working() const { return working_; }
    std::string displayReferred() const;
    const std::vector<std::string>& names() const { return names_; }

    // The known space `name` means. Throws Error naming `what` (the option
    // or field that gave it) and the known spaces.
    std::string find(std::string_view name, std::string_view what) const;

    // From one known space to another. Throws Error for an unknown name.
    std::unique_ptr<ColourConversion> conversion(std::string_view from, std::string_view to) const;

private:
    struct Config;
    std::string source_ = "built in";
    std::string working_;
    std::vector<std::string> names_;
    std::unique_ptr<Config> config_;
};

} // namespace korvane
