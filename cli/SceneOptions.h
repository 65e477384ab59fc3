// SceneOptions.h - the options that describe what is rendered: the flare's
// settings (from the settings table) and the light. Shared by `render` and
// `sheet`.
//
// Light position and radius are lengths: a plain number is a fraction of
// the frame (x of its width, y and the radius of its height), "N%" a
// percentage, "Npx" pixels: --light 0.3,0.3 = --light 30%,30% =
// --light 576px,324px in a 1920x1080 frame. A light outside the frame is
// rendered; only non-numbers (NaN) are refused.
#pragma once

#include "FlareRenderer.h"
#include "SettingsTable.h"
#include "ValueGrammar.h"

#include <CLI/CLI.hpp>

#include <string>

namespace glintwave::cli {

struct SceneOptions {
    ControlDataRec settings = defaultSettings();
    korvane::Light light;  // its radius defaults to a tenth of the height, as the styles were drawn

    // The light as the options that give it.
    std::string lightAsOptions() const;
};

// One option per row of the settings table (a switch gets --NAME and
// --no-NAME), each checked against its range as it is parsed.
void addSettingOptions(CLI::App& command, ControlDataRec& settings);
void addLightOptions(CLI::App& command, SceneOptions& scene);

} // namespace glintwave::cli
