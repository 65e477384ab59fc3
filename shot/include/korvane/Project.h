// Project.h - one shot: the plug-in's settings, its animated channels and
// the scene, kept as one readable JSON file.
//
//   {
//     "format": "glintwave-project",
//     "version": 1,
//     "controlData": "<base64 of the plug-in's settings block, opaque>",
//     "scene": {
//       "width": 1920, "height": 1080,
//       "firstFrame": 1, "lastFrame": 48,
//       "frameRate": 24,
//       "light": {
//         "x": [[1, 0.3], [48, 0.7]],      fraction of the width, from the left
//         "y": [[1, 0.3]],                 fraction of the height, from the top
//         "color": [[1, [255, 255, 255]]], 0-255 per component
//         "intensity": [[1, 1.0]],
//         "radius": [[1, 0.1]],            fraction of the height
//         "rotation": [[1, 0.0]]           degrees
//       },
//       "output": {                        how frames become images; each field optional
//         "blend": "linear",               or "host"
//         "exposure": [[1, 0.0]],          stops
//         "flareOnly": false, "flareAlpha": "luminance", "passes": true,
//         "ocio": "studio.ocio", "inputColorspace": "ACEScg",
//         "workingColorspace": "", "outputColorspace": ""
//       },
//       "occlusion": {                     what hides the light; each field optional
//         "occluder": "roto/m.####.png", "channel": "alpha",
//         "depth": "", "lightDepth": 0, "radius": 0.05, "offscreenVisible": false,
//         "smoothing": 2, "flashLimit": true
//       }
//     },
//     "channels": {
//       "Glintwave/Ring Scale": {"type": "REAL", "keys": [[1, 0.5], [48, 2.0]]},
//       "Halo/Visible": {"type": "BOOL", "keys": [[1, true]]},
//       "Halo/Color": {"type": "CRGB", "keys": [[1, [65535, 0, 0]]]}
//     }
//   }
//
// Words spelt two ways are read either way and written one way (Spelling.h):
// "colour" is read as "color", "Halo/Colour" as "Halo/Color".
//
// Keys are [frame, value] pairs; values between keys follow the channel
// rules (ChannelStore.h): numbers and colours linearly, booleans in steps,
// held beyond the first and last key. Channel colours are the plug-in's
// 16-bit levels (0-65535). A light value without keys takes its default.
//
// Versions: "version" is the format's version (2 added scene.output and
// scene.occlusion). A file of an older version
// is upgraded in memory when it is read, one step per version
// (upgradeProject), so a project written by any version opens in every
// later one; a file of a newer version than this program reads is refused.
//
// Errors: a file that is not a project, is damaged, or holds a value of the
// wrong kind is refused with Error, whose message names the file, the
// line, the field and the reason: "shot.json:12: scene.width: must be a
// whole number from 1 to 65535".
#pragma once

#include "korvane/ChannelStore.h"
#include "korvane/Error.h"
#include "korvane/Light.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

using Keys = std::map<std::int32_t, ChannelValue>;

// Each part of the light, keyed per frame (doubles; the colour as a CRGB of
// 0-255 components). A part without keys takes the default of Light.
struct LightTrack {
    Keys x, y, color, intensity, radius, rotation;

    // The light at a frame; position and radius as fractions of the frame.
    Light at(std::int32_t frame) const;
    // The track of a part by its name in the file ("x", "color", ...); also
    // accepts "colour". Null for an unknown name.
    Keys* part(std::string_view name);

    bool operator==(const LightTrack&) const = default;
};

struct ProjectChannel {
    std::uint32_t type = kChannelReal;
    Keys keys;

    bool operator==(const ProjectChannel&) const = default;
};

// How the frames are made into images: the render command's options of the
// same names. An empty text or an unset switch takes the command's default;
// the command's own options, when given, win.
struct OutputSettings {
    std::string blend;       // "linear" or "host"
    Keys exposure;           // stops, keyed per frame
    bool flareOnly = false;
    std::string flareAlpha;  // "luminance" or "zero"
    bool passes = false;
    std::string ocio;        // an OpenColorIO configuration file
    std::string inputColorspace, workingColorspace, outputColorspace;

    // The exposure at a frame: 0 without keys.
    double exposureAt(std::int32_t frame) const;

    bool operator==(const OutputSettings&) const = default;
};

// What stands before the light: the render command's occlusion options of
// the same names, for `render --project` where the command gives none.
struct OcclusionSettings {
    std::string occluder;        // an image or numbered sequence; relative to the project
    std::string channel;         // "alpha" (the default), "luma", "R", "G" or "B"
    std::string depth;           // or a depth image or sequence, with lightDepth
    double lightDepth = 0;
    double radius = 0;           // of the frame's height; 0: the light's radius
    bool offscreenVisible = false;
    std::int32_t smoothing = 0;  // frames on each side
    bool flashLimit = true;

    bool operator==(const OcclusionSettings&) const = default;
};

struct Project {
    static constexpr int kFormatVersion = 2;

    std::vector<std::uint8_t> controlData;  // empty: the plug-in's defaults
    std::int32_t width = 1920;
    std::int32_t height = 1080;
    std::int32_t firstFrame = 1;
    std::int32_t lastFrame = 1;
    double frameRate = 24.0;
    LightTrack light;
    OutputSettings output;
    OcclusionSettings occlusion;
    std::map<std::string, ProjectChannel> channels;  // by channel path

    bool operator==(const Project&) const = default;
};

// The text of a project file, and a project from one. sourceName prefixes
// error messages.
std::string formatProject(const Project& project);
Project parseProject(std::string_view text, const std::string& sourceName);

// Files. Saving writes a temporary file beside the target and renames it.
// Both throw Error naming the file.
Project loadProject(const std::filesystem::path& file);
void saveProject(const Project& project, const std::filesystem::path& file);

// Upgrades the JSON of an older format version to the next one, in place.
// Version 1 is the first; later versions add their step here.
void upgradeProject(nlohmann::json& document, int fromVersion);

// Between a project and the channels an instance registered: the project's
// keys go into the store (channels the project does not name keep their
// defaults), and the store's keyed channels come back into the project.
// applyChannels throws Error when the project names a channel the
// plug-in does not offer or gives it another type.
void applyChannels(const Project& project, ChannelStore& store);
void captureChannels(const ChannelStore& store, Project& project);

} // namespace korvane
