// FlareRenderer.cpp - one frame through 'INIT', 'SETF' and 'GENF'.

#include "FlareRenderer.h"

#include "Interrupt.h"
#include "ProgramFiles.h"

#include "korvane/ResourceFile.h"

namespace glintwave::cli {
namespace {

constexpr const char* kResourceFileName = "Glintwave.rsc";

korvane::PluginLibrary loadPlugin(const std::filesystem::path& file)
{
    try {
        return korvane::PluginLibrary(file);
    } catch (const korvane::PluginError& e) {
        throw korvane::Error(std::string(e.what()) +
                             "; build it (scripts/build.sh build) or name it with --plugin PATH");
    }
}

std::vector<Style> loadStyles(const std::filesystem::path& home)
{
    const std::filesystem::path file = home / kResourceFileName;
    std::vector<Style> styles;
    try {
        styles = readStyles(file);
    } catch (const korvane::Error& e) {
        throw korvane::Error(std::string(e.what()) + "; " + kResourceFileName +
                             " must lie beside the plug-in: rebuild it (scripts/build.sh build)");
    }
    if (styles.empty())
        throw korvane::Error(file.string() + ": holds no flare styles ('FLAR' 1001 and up); rebuild it");
    return styles;
}

} // namespace

std::filesystem::path defaultPluginPath()
{
    return programFolder(ProgramFolder::plugin) / "Glintwave.so";
}

// The progress line is declared before the instance, whose callback uses it.
FlareRenderer::FlareRenderer(const std::filesystem::path& pluginFile, bool showProgress)
    : library_(loadPlugin(pluginFile)),
      styles_(loadStyles(library_.homeDirectory())),
      progress_(showProgress),
      instance_(library_)
{
}

void FlareRenderer::render(const ControlDataRec& settings, const korvane::Light& light, korvane::FramePixels& frame,
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
    const korvane::FrameSetup frameSetup = korvane::FrameSetup::centred(frame.width(), frame.height(), light);

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
