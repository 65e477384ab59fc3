// Compose.h - a painted frame made into the image to write, shared by the
// single frame and the sequences of `render`.
//
// The frame is black or a background. Two ways to join the flare to it:
//   linear (the default): the plug-in's levels are display-referred
//     (sRGB-encoded); they are decoded to linear light, scaled by the
//     exposure and added to the background decoded from its own space
//     (EXR and HDR linear, integer formats sRGB). The result is encoded for
//     the output: EXR and HDR keep linear values, above 1.0 too; PNG, TIFF,
//     DPX and JPEG take sRGB codes, dithered so that soft glows do not band.
//     A background's alpha is kept. The flare may also be written alone,
//     with an alpha, and its parts as passes: layers of an EXR, or files
//     beside the frame's in other formats.
//   host: the flare's levels painted into the background's own pixels with
//     saturating adds, as the platform's own host paints into its frame;
//     over a float background painted on black and added to it.
// Depth 8 draws the plug-in's wireframe sketch in white over the frame.
#pragma once

#include "ValueGrammar.h"

#include "korvane/ColourSpaces.h"
#include "korvane/FramePixels.h"
#include "korvane/ImageIO.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace glintwave::cli {

// Paints the flare into a frame of the composition's size and depth.
using Painter = std::function<void(korvane::FramePixels&)>;
// Paints one part of the flare (FlarePasses.h), by its index in kFlarePasses.
using PassPainter = std::function<void(korvane::FramePixels&, std::size_t pass)>;

enum class Blend { linear, host };

// The flare's own alpha, in the linear blend: its Rec.709 luminance (so that
// an over-composite of the flare alone works) or none (for adding).
enum class FlareAlpha { luminance, zero };

struct CompositeOptions {
    Blend blend = Blend::linear;
    double exposure = 0.0;  // stops: the flare is scaled by 2^exposure in linear light
    double visibility = 1.0;  // the part of the light an occluder leaves seen, scaling the flare's light too
    bool flareOnly = false; // the flare alone, premultiplied RGBA, without a background
    // Unset: luminance for the flare alone and its passes; over a background
    // the background's alpha as it is. Set over a background with alpha, the
    // flare's alpha is joined to it (a + f - a f).
    std::optional<FlareAlpha> flareAlpha;
    bool passes = false;    // the flare's parts too (needs a PassPainter)
    // The colour spaces: built in when null. Empty names take the defaults
    // (ColourSpaces.h): working, the configuration's scene-linear space;
    // input and output, scene-linear for float files and display-referred
    // for integer ones.
    std::shared_ptr<const korvane::ColourSpaces> spaces;
    std::string ocio;  // the configuration file --ocio gave, for worker processes
    std::string inputSpace, workingSpace, outputSpace;
};

// An image the frame writes beside its own file (a pass, in formats
// without layers): written as NAME.SUFFIX.EXT.
struct SideImage {
    std::string suffix;
    OIIO::ImageBuf image;
};

// The frame as it is written.
struct ComposedFrame {
    OIIO::ImageBuf image;
    OIIO::TypeDesc sampleType;  // the stored sample type
    std::string colourSpace;    // what its values are in: "linear" or "sRGB"
    std::vector<SideImage> sideImages;
};

ComposedFrame composeFrame(const Painter& paint, int depth, const std::optional<korvane::RgbImage>& background,
                           FrameSize size, const std::filesystem::path& output, const CompositeOptions& options,
                           const PassPainter& paintPass = {});

// Throws UsageError for options that do not go together (a linear blend's
// options with the host blend or the sketch, alpha or layers into HDR) and
// for colour space names the spaces do not know.
void checkCompositeOptions(const CompositeOptions& options, int depth, const std::filesystem::path& output);

// The colour spaces of the configuration `file` names, or of $OCIO when
// it is empty; the built-in ones (null) when neither names one.
std::shared_ptr<const korvane::ColourSpaces> colourSpacesFor(const std::string& file);

// The file a side image is written to: "out.rings.png" beside "out.png".
std::filesystem::path sideImageFile(const std::filesystem::path& output, const std::string& suffix);

// "linear" or "host"; nullopt for another word.
std::optional<Blend> blendNamed(const std::string& name);
const char* blendName(Blend blend);

} // namespace glintwave::cli
