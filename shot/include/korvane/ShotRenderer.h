// ShotRenderer.h - the frames of a project through one plug-in instance.
//
// Opening a shot gives the instance the project's settings, initialises it,
// has it register its channels ('ICHN') and keys them from the project.
// Every frame is then independent of the ones before it: 'LCHN' loads all
// of the frame's channel values into the settings, 'SETF' sets the frame
// and the light from the light track, 'GENF' paints into the buffer. So a
// frame rendered alone is byte for byte the frame rendered inside a run, in
// any order and in any process.
#pragma once

#include "korvane/ChannelCalls.h"
#include "korvane/PluginHost.h"
#include "korvane/Project.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace korvane {

// The 'SETF' of a frame of the project: the frame's size, the light at its
// place (fractions of the frame), colour, intensity, radius (a fraction of
// the height) and rotation, and the frame's time at the project's rate.
// `intensity` multiplies the light's.
FrameSetup frameSetupFor(const Project& project, std::int32_t frame, double intensity = 1.0);

// Changes the settings block of one frame's render (its channels already
// loaded), as a caller that knows the plug-in's records may.
using SettingsEdit = std::function<void(std::vector<std::uint8_t>& controlData)>;

// What one render changes for itself alone.
struct RenderAdjustments {
    SettingsEdit settings;
    double lightIntensity = 1.0;  // multiplies the light track's intensity
};

class ShotRenderer {
public:
    // Throws PluginError when the plug-in refuses a step, Error when
    // the project keys channels the plug-in does not offer.
    ShotRenderer(PluginInstance& instance, const Project& project);

    using SettingsEdit = korvane::SettingsEdit;
    using Adjustments = RenderAdjustments;

    // Paints frame `frame` into the buffer (the project's frame size),
    // adjusted for this render alone. Throws PluginError naming the command
    // that failed.
    void render(std::int32_t frame, const FrameBuffer& buffer, const Adjustments& adjust = {});

    const ChannelRange& range() const { return range_; }

private:
    PluginInstance& instance_;
    const Project& project_;
    ChannelRange range_;
};

} // namespace korvane
