// FlareRenderer.cpp - one frame through 'INIT', 'SETF' and 'GENF'.

#include "FlareRenderer.h"

#include "Interrupt.h"

#include "korvane/ResourceFile.h"

#include <system_error>

namespace glintwave::cli {
namespace {

constexpr const char* kResourceFileName = "Glintwave.rsc";

korvane::PluginLibrary loadPlugin(const std::filesystem::path& file)
{
    try {
        return korvane::PluginLibrary(file);
    } catch (const korvane::PluginError& e) {
        throw std::runtime_error(std::string(e.what()) +
                                 "; build it (scripts/build.sh build) or name it with --plugin PATH");
    }
}

std::vector<Style> loadStyles(const std::filesystem::path& home)
{
    const std::filesystem::path file = home / kResourceFileName;
    std::vector<Style> styles;
    try {
        styles = readStyles(file);
    } catch (const korvane::ResourceError& e) {
        throw std::runtime_error(std::string(e.what()) + "; " + kResourceFileName +
                                 " must lie beside the plug-in: rebuild it (scripts/build.sh build)");
    }
    if (styles.empty())
        throw std::runtime_error(file.string() + ": holds no flare styles ('FLAR' 1001 and up); rebuild it");
    return styles;
}

} // namespace

std::filesystem::path defaultPluginPath()
{
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error)
        return "Glintwave.so";
    return (self.parent_path() / ".." / "plugin" / "Glintwave.so").lexically_normal();
}

// The progress line is declared before the instance, whose callback uses it.
FlareRenderer::FlareRenderer(const std::filesystem::path& pluginFile, bool showProgress)
    : library_(loadPlugin(pluginFile)),
      styles_(loadStyles(library_.homeDirectory())),
      progress_(showProgress),
      instance_(library_)
{
}

void FlareRenderer::render(const ControlDataRec& settings, const Light& light, korvane::FramePixels& frame,
                           const std::string& label)
{
    if (InterruptCatcher::interrupted())
        throw Cancelled();
    instance_.setProgressCallback([this, &label](const korvane::Progress& report) {
        InterruptCatcher::testHook();
        if (InterruptCatcher::interrupted())
            return kPluginUserCanceled;
        progress_.show(label, report.position);
        return kPluginNoError;
    });

    instance_.setControlData(settingsBlock(settings));
    korvane::FrameSetup frameSetup =
        korvane::FrameSetup::centred(frame.width(), frame.height(), light.x, light.y);
    frameSetup.lightRed = light.colour.red;
    frameSetup.lightGreen = light.colour.green;
    frameSetup.lightBlue = light.colour.blue;
    frameSetup.lightIntensity = light.intensity;
    frameSetup.lightFrameRadius = light.radius;
    frameSetup.lightRotation = light.rotation;

    requireDone(kCmdInitialize, instance_.init());
    requireDone(kCmdFlareSetup, instance_.setup(frameSetup));
    const std::int32_t result = instance_.generate(frame.frameBuffer());
    progress_.clear();
    if (result == kPluginUserCanceled && InterruptCatcher::interrupted())
        throw Cancelled();
    requireDone(kCmdFlareGenerate, result);
}

void FlareRenderer::requireDone(std::uint32_t command, std::int32_t result)
{
    if (result == kPluginNoError)
        return;
    std::string message = instance_.failureMessage(command, result);
    // The element tables grow with the light's radius and the scales; the
    // host's budget ('FREE') bounds them.
    if (result == kPluginMemoryError)
        message += "; the flare is too large for the plug-in's memory: give a smaller --light-radius, "
                   "--ring-scale or --streak-scale";
    throw korvane::PluginError(message, result);
}

} // namespace glintwave::cli
