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
//     A background's alpha is kept.
//   host: the flare's levels painted into the background's own pixels with
//     saturating adds, as the platform's own host paints into its frame;
//     over a float background painted on black and added to it.
// Depth 8 draws the plug-in's wireframe sketch in white over the frame.
#pragma once

#include "ValueGrammar.h"

#include "korvane/FramePixels.h"
#include "korvane/ImageIO.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace glintwave::cli {

// Paints the flare into a frame of the composition's size and depth.
using Painter = std::function<void(korvane::FramePixels&)>;

enum class Blend { linear, host };

struct CompositeOptions {
    Blend blend = Blend::linear;
    double exposure = 0.0;  // stops: the flare is scaled by 2^exposure in linear light
};

// The frame as it is written.
struct ComposedFrame {
    OIIO::ImageBuf image;
    OIIO::TypeDesc sampleType;  // the stored sample type
    std::string colourSpace;    // what its values are in: "linear" or "sRGB"
};

ComposedFrame composeFrame(const Painter& paint, int depth, const std::optional<korvane::RgbImage>& background,
                           FrameSize size, const std::filesystem::path& output, const CompositeOptions& options);

// "linear" or "host"; nullopt for another word.
std::optional<Blend> blendNamed(const std::string& name);
const char* blendName(Blend blend);

} // namespace glintwave::cli
