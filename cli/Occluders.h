// Occluders.h - what stands in front of the light: `--occluder IMAGE` (one
// image, or a numbered sequence as with --over) read as a matte, and the
// fraction of the light's disc it leaves visible (korvane/Occlusion.h).
// The flare is scaled by that fraction, so glows, rings and streaks fade
// together and a light wholly hidden adds nothing: in linear light (the
// flare's energy follows the visible part), or in the host's blend through
// the light's intensity.
#pragma once

#include "ValueGrammar.h"

#include "korvane/Light.h"
#include "korvane/Occlusion.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

namespace glintwave::cli {

struct OcclusionOptions {
    std::string occluder;  // an image or a numbered pattern; empty: nothing occludes
    korvane::MatteChannel channel = korvane::MatteChannel::alpha;
    std::string channelName = "alpha";
    std::optional<korvane::Length> radius;  // of the frame's height; default the light's radius
    korvane::OffscreenIs offscreen = korvane::OffscreenIs::leftOut;

    // The options that give these, for a worker process's command line.
    std::vector<std::string> asArguments() const;
};

void addOcclusionOptions(CLI::App& command, OcclusionOptions& options);

// The visible fraction of `light` in the occluder image `file` (a frame of
// `size`). Reads the image through the guarded open; throws korvane::Error
// for an image that cannot be used or is not the frame's size.
double lightVisibility(const OcclusionOptions& options, const std::string& file, const korvane::Light& light,
                       FrameSize size);

} // namespace glintwave::cli
