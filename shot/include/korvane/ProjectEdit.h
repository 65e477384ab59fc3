// ProjectEdit.h - the edits `project set` makes and the listing `project
// show` prints, so the command only parses its options.
//
// An edit is NAME=VALUE (a constant: every key of the track is replaced by
// one key at the first frame) or NAME@FRAME=VALUE (one key added or
// replaced). NAME is
//   light.x, light.y, light.color (or light.colour), light.intensity,
//   light.radius, light.rotation      the light track
//   scene.size (1920x1080), scene.frames (1-48), scene.rate (24)
//                                     the scene; never keyed
//   output.exposure (keyed), output.blend, output.flareOnly,
//   output.flareAlpha, output.passes, output.ocio, output.inputColorspace,
//   output.workingColorspace, output.outputColorspace
//                                     how frames become images; "-" sets
//                                     a text back to the default
//   occlusion.occluder, occlusion.channel, occlusion.depth,
//   occlusion.lightDepth, occlusion.radius, occlusion.offscreenVisible,
//   occlusion.smoothing, occlusion.flashLimit
//                                     what hides the light; never keyed
//   anything else                     a channel the plug-in offers, by its
//                                     path ("Halo/Scale") or by a name only
//                                     one channel has ("Ring Scale")
// Values: numbers for REAL parts; true/false (also on/off, yes/no, 1/0)
// for BOOL; colours as "r,g,b" with 0-255 components or "#rrggbb". A
// channel colour's 0-255 components become the plug-in's 16-bit levels
// (x 257), so 255 is full.
#pragma once

#include "korvane/ChannelStore.h"
#include "korvane/Project.h"

#include <optional>
#include <string>
#include <string_view>

namespace korvane {

struct Assignment {
    std::string name;
    std::optional<std::int32_t> frame;  // none: a constant
    std::string value;
};

// Throws Error saying what is wrong with the text.
Assignment parseAssignment(std::string_view text);

// A value of a channel type from its text; colours here are 0-255 per
// component. Throws Error.
ChannelValue parseValue(std::uint32_t type, std::string_view text, int colorScale = 1);

// Applies one edit; channel names are resolved through the channels the
// plug-in registered. Throws Error naming the edit.
void applyAssignment(Project& project, const Assignment& edit, const ChannelStore& channels);

// A value as people type it: numbers as formatNumber writes them, on/off,
// colours as r,g,b divided by colorScale (257 for channel colours, which
// hold 16-bit levels); "-" for no value.
std::string formatValue(const ChannelValue& value, double colorScale = 1);

// The project as text for people: scene, light track, channels with keys.
std::string describeProject(const Project& project);

} // namespace korvane
