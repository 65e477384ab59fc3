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
#include "korvane/Project.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace glintwave::cli {

struct OcclusionOptions {
    std::string occluder;  // an image or a numbered pattern; empty: nothing occludes
    std::string depth;     // or a depth image (pattern): nearer than lightDepth hides
    double lightDepth = 0;
    korvane::MatteChannel channel = korvane::MatteChannel::alpha;
    std::string channelName = "alpha";
    std::optional<korvane::Length> radius;  // of the frame's height; default the light's radius
    korvane::OffscreenIs offscreen = korvane::OffscreenIs::leftOut;
    int smoothing = 0;  // frames on each side whose visibility is averaged in (sequences)
    bool flashLimit = true;  // sequences: no more than three flashes a second

    bool any() const { return !occluder.empty() || !depth.empty(); }
    // The occluder's file name or pattern, whichever kind it is.
    const std::string& source() const { return depth.empty() ? occluder : depth; }

    // The options that give these, for a worker process's command line.
    std::vector<std::string> asArguments() const;
};

void addOcclusionOptions(CLI::App& command, OcclusionOptions& options);

// A project's occlusion settings as options; relative file names are found
// beside the project.
OcclusionOptions occlusionFromProject(const korvane::OcclusionSettings& settings,
                                      const std::filesystem::path& projectFile);

// The visibility of a sequence's frame: its own, or with smoothing the
// average over the frames around it (weights falling off with distance,
// frames beyond `first`..`last` taken as the nearest one), so that a frame
// alone gets what it gets in any run. `at(frame)` measures one frame.
double smoothedVisibility(const OcclusionOptions& options, std::int32_t frame, std::int32_t first,
                          std::int32_t last, const std::function<double(std::int32_t)>& at);

// The visibility a frame is rendered with: the smoothed one, unless the
// frames within a second either side of it would flash more than three
// times in a second; then their weighted average, which cannot. Decided from
// that window alone, so a frame alone gets what it gets in any run.
double limitedVisibility(const OcclusionOptions& options, std::int32_t frame, std::int32_t first,
                         std::int32_t last, double framesPerSecond, const std::function<double(std::int32_t)>& at);

// The visible fraction of `light` in the occluder image `file` (a frame of
// `size`), a matte or a depth image as the options say. Reads the image through the guarded open; throws korvane::Error
// for an image that cannot be used or is not the frame's size.
double lightVisibility(const OcclusionOptions& options, const std::string& file, const korvane::Light& light,
                       FrameSize size);

} // namespace glintwave::cli
