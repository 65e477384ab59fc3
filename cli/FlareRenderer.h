// FlareRenderer.h - Glintwave loaded as a host loads it, rendering frames.
//
// Finds the plug-in (by default Glintwave.so in the program's plug-in
// folder, see ProgramFiles.h) and its styles in the Glintwave.rsc beside
// it, and paints a flare into a frame: settings block, 'INIT', 'SETF' with
// the light, 'GENF' with the frame's pixels. Progress goes to a terminal line; Ctrl-C cancels.
#pragma once

#include "ProgressLine.h"
#include "SettingsTable.h"
#include "Styles.h"
#include "ValueGrammar.h"

#include "korvane/FramePixels.h"
#include "korvane/PluginHost.h"

#include <filesystem>
#include <string>
#include <vector>

namespace glintwave::cli {

// Where the plug-in is looked for when --plugin is not given.
std::filesystem::path defaultPluginPath();

class FlareRenderer {
public:
    // Throws korvane::Error with what to do when the plug-in or its
    // resource file cannot be used.
    FlareRenderer(const std::filesystem::path& pluginFile, bool showProgress);

    const std::vector<Style>& styles() const { return styles_; }
    korvane::PluginInstance& instance() { return instance_; }

    // Paints the flare of `settings` into the frame. `label` heads the
    // progress line. Throws Cancelled on Ctrl-C, korvane::PluginError when
    // the plug-in fails.
    void render(const ControlDataRec& settings, const korvane::Light& light, korvane::FramePixels& frame,
                const std::string& label);

private:
    // Throws PluginError with the plug-in's text and what to do unless result is 0.
    void requireDone(std::uint32_t command, std::int32_t result);

    korvane::PluginLibrary library_;
    std::vector<Style> styles_;
    korvane::ProgressLine progress_;
    korvane::PluginInstance instance_;  // last: its callback draws on progress_
};

} // namespace glintwave::cli
