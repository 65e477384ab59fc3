// ShotRenderer.cpp - one frame of a shot: 'LCHN', 'SETF', 'GENF'.

#include "korvane/ShotRenderer.h"

namespace korvane {

FrameSetup frameSetupFor(const Project& project, std::int32_t frame, double intensity)
{
    Light light = project.light.at(frame);
    light.intensity *= intensity;
    FrameSetup setup = FrameSetup::centred(project.width, project.height, light);
    setup.frameIndex = frame;
    setup.frameTime = frame / project.frameRate;
    setup.frameTimeDelta = 1.0 / project.frameRate;
    return setup;
}

ShotRenderer::ShotRenderer(PluginInstance& instance, const Project& project)
    : instance_(instance), project_(project)
{
    range_.startFrame = project.firstFrame;
    range_.endFrame = project.lastFrame;
    range_.frameTime = 1.0 / project.frameRate;
    range_.startTime = project.firstFrame * range_.frameTime;

    instance_.setControlData(project.controlData);
    instance_.require(kCmdInitialize, instance_.init());
    // A registration starts from nothing, so channel paths stay those of
    // this one registration.
    instance_.channels().clear();
    instance_.require(kCmdInitChannel, initializeChannels(instance_, range_));
    applyChannels(project, instance_.channels());
}

void ShotRenderer::render(std::int32_t frame, const FrameBuffer& buffer, const Adjustments& adjust)
{
    // A style without elements registers no channels, and then there is
    // nothing to load.
    if (!instance_.channels().empty())
        instance_.require(kCmdLoadChannel, loadChannels(instance_, range_, frame));
    const SettingsEdit& edit = adjust.settings;
    if (!edit) {
        instance_.require(kCmdFlareSetup, instance_.setup(frameSetupFor(project_, frame, adjust.lightIntensity)));
        instance_.require(kCmdFlareGenerate, instance_.generate(buffer));
        return;
    }
    // The edit holds for this render only: settings no channel loads would
    // otherwise carry it into the next frame.
    const std::span<const std::uint8_t> loaded = instance_.controlData();
    const std::vector<std::uint8_t> kept(loaded.begin(), loaded.end());
    std::vector<std::uint8_t> edited = kept;
    edit(edited);
    instance_.setControlData(edited);
    struct Restore {
        PluginInstance& instance;
        const std::vector<std::uint8_t>& kept;
        ~Restore() { instance.setControlData(kept); }
    } restore{instance_, kept};
    instance_.require(kCmdFlareSetup, instance_.setup(frameSetupFor(project_, frame, adjust.lightIntensity)));
    instance_.require(kCmdFlareGenerate, instance_.generate(buffer));
}

} // namespace korvane
