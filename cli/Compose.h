// Compose.h - a painted frame made into the image to write, shared by the
// single frame and the sequences of `render`.
//
// The frame is black or a background. Over an 8- or 16-bit background the
// flare is painted into the background's pixels as the plug-in paints into a
// host's frame, with saturating adds; over a float one (EXR, HDR) it is
// painted on black and added in linear float, so the background keeps values
// above 1.0. Depth 8 draws the plug-in's wireframe sketch in white over the
// frame.
#pragma once

#include "ValueGrammar.h"

#include "korvane/FramePixels.h"
#include "korvane/ImageIO.h"

#include <filesystem>
#include <functional>
#include <optional>

namespace glintwave::cli {

// Paints the flare into a frame of the composition's size and depth.
using Painter = std::function<void(korvane::FramePixels&)>;

OIIO::ImageBuf composeFrame(const Painter& paint, int depth, const std::optional<korvane::RgbImage>& background,
                            FrameSize size, bool floatOutput);

// The stored sample type: half floats in EXR and HDR, else what the render
// holds (16 bits for 48-bit frames, 8 for 32-bit frames and sketches, the
// background's own for a sketch over it).
OIIO::TypeDesc sampleTypeFor(const std::filesystem::path& output, int depth,
                             const std::optional<korvane::RgbImage>& background);

} // namespace glintwave::cli
