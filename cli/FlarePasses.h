// FlarePasses.h - the flare's parts, each rendered on its own by switching
// the other elements off: glows (origin and outer glow), halo, rings (rings
// and reflections) and streaks.
#pragma once

#include "SettingsTable.h"

#include <array>
#include <string_view>

namespace glintwave::cli {

struct FlarePass {
    std::string_view name;                    // the layer's name, "rings"
    std::array<std::string_view, 2> switches;  // the settings' switches of its elements
};

inline constexpr std::array<FlarePass, 4> kFlarePasses = {{
    {"glows", {"origin-glow", "outer-glow"}},
    {"halo", {"halo", ""}},
    {"rings", {"rings", ""}},
    {"streaks", {"streaks", ""}},
}};

// The settings with every element outside `pass` switched off; the pass's
// own switches stay as the user set them.
ControlDataRec passSettings(const ControlDataRec& settings, const FlarePass& pass);

} // namespace glintwave::cli
