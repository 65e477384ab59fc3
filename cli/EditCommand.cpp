// EditCommand.cpp - `glintwave edit PROJECT`: the plug-in's own settings
// dialog on a project's settings, played by a script (--set-control ...
// --ok|--cancel) or by a person in a web browser.
//
// The project's settings block and channels go into a plug-in instance,
// which runs 'INTF'. On OK the new settings block is saved with the
// channels the plug-in registers for it afresh ('ICHN'): keys of channels
// that still exist (same path, same type) are kept, the others dropped. On
// Cancel the file is not touched and the exit status is 3.

#include "Commands.h"
#include "FlareRenderer.h"
#include "Interrupt.h"
#include "Output.h"
#include "ProgramFiles.h"

#include "korvane/BrowserRunner.h"
#include "korvane/ChannelCalls.h"
#include "korvane/HeadlessRunner.h"
#include "korvane/Project.h"
#include "korvane/ShotRenderer.h"

#include <fcntl.h>
#include <spawn.h>

#include <cstdlib>
#include <iostream>

extern char** environ;

namespace glintwave::cli {
namespace {

constexpr int kCancelledInDialog = 3;

struct EditOptions {
    std::filesystem::path project;
    std::vector<std::string> edits;
    bool ok = false;
    bool cancel = false;
    std::filesystem::path preview;
    int port = 0;
    bool noOpen = false;
};

// The page's files, installed or in the build tree.
std::filesystem::path webRoot()
{
    std::error_code error;
    const std::filesystem::path root = programFolder(ProgramFolder::dialogPage);
    if (!std::filesystem::is_regular_file(root / "index.html", error))
        throw korvane::Error("the dialog page is missing (" + (root / "index.html").string() +
                             "); reinstall glintwave, or rebuild it (scripts/build.sh build)");
    return root;
}

// Hands the address to the desktop's browser, when there is a desktop: on
// a bare terminal xdg-open would start a text browser in it.
void openBrowser(const std::string& url)
{
    if (!std::getenv("DISPLAY") && !std::getenv("WAYLAND_DISPLAY"))
        return;
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&quiet, 2, "/dev/null", O_WRONLY, 0);
    std::string program = "xdg-open";
    std::string address = url;
    char* arguments[] = {program.data(), address.data(), nullptr};
    pid_t child = 0;
    posix_spawnp(&child, "xdg-open", &quiet, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&quiet);
}

void writePreview(const korvane::Pixels& preview, const std::filesystem::path& file)
{
    if (preview.argb.empty())
        throw korvane::Error("the dialog showed no preview; nothing written to " + file.string());
    // The full-colour preview leaves the alpha byte 0: the image is opaque.
    OIIO::ImageBuf image(OIIO::ImageSpec(preview.width, preview.height, 3, OIIO::TypeDesc::UINT8));
    std::vector<std::uint8_t> rgb;
    rgb.reserve(preview.argb.size() * 3);
    for (const std::uint32_t p : preview.argb)
        for (const int shift : {16, 8, 0})
            rgb.push_back(static_cast<std::uint8_t>(p >> shift));
    image.set_pixels(image.roi(), OIIO::TypeDesc::UINT8, rgb.data());
    writeOutput(image, file, OIIO::TypeDesc::UINT8);
}

// The channels the plug-in registers for the accepted settings, keyed from
// the project where a channel of the same path and type still exists.
int reregisterChannels(korvane::PluginInstance& instance, const korvane::ChannelRange& range,
                       korvane::Project& project)
{
    korvane::ChannelStore& store = instance.channels();
    store.clear();
    instance.require(kCmdInitChannel, korvane::initializeChannels(instance, range));
    int dropped = 0;
    for (const auto& [path, channel] : project.channels) {
        const korvane::Channel* now = store.find(path);
        if (!now || now->path != path || now->type != channel.type) {
            ++dropped;
            continue;
        }
        for (const auto& [frame, value] : channel.keys)
            store.setKey(path, frame, value);
    }
    korvane::captureChannels(store, project);
    return dropped;
}

int runEdit(const EditOptions& options, const CommonOptions& common)
{
    const bool headless = options.ok || options.cancel;
    if (!headless && (!options.edits.empty() || !options.preview.empty()))
        throw UsageError("--set-control and --preview belong to a scripted edit: add --ok or --cancel");
    if (headless && (options.port != 0 || options.noOpen))
        throw UsageError("--port and --no-open belong to the browser's dialog: leave out --ok and --cancel");
    if (!options.preview.empty())
        checkOutputPath(options.preview);
    std::vector<korvane::ControlEdit> edits;
    for (const std::string& text : options.edits) {
        try {
            edits.push_back(korvane::parseControlEdit(text));
        } catch (const korvane::Error& e) {
            throw UsageError(std::string("--set-control: ") + e.what());
        }
    }

    korvane::Project project = korvane::loadProject(options.project);
    FlareRenderer plugin(common.pluginFile(), false);
    korvane::PluginInstance& instance = plugin.instance();
    const korvane::ShotRenderer shot(instance, project);

    std::int32_t result = 0;
    if (headless) {
        korvane::HeadlessRunner runner(std::move(edits),
                                       options.ok ? korvane::DialogEnding::accept : korvane::DialogEnding::cancel);
        {
            const korvane::DialogRunnerScope scope(runner);
            result = instance.interface();
        }
        if (!runner.ran())
            throw korvane::Error(instance.library().displayName() + " showed no settings dialog; is " +
                                 "Glintwave.rsc beside it complete? Rebuild it (scripts/build.sh build)");
        if (!runner.error().empty())
            throw UsageError("--set-control: " + runner.error() + "; " + options.project.string() +
                             " is unchanged");
        if (!options.preview.empty())
            writePreview(runner.preview(), options.preview);
    } else {
        korvane::BrowserRunnerOptions browser;
        browser.webRoot = webRoot();
        browser.port = options.port;
        browser.stopRequested = &InterruptCatcher::interrupted;
        korvane::BrowserRunner runner(std::move(browser));
        std::cout << "glintwave: the settings dialog of " << options.project.string() << " is at\n  "
                  << runner.url() << "\n(OK saves the project; Cancel, closing the page or Ctrl-C leaves it as it is)"
                  << std::endl;
        if (!options.noOpen)
            openBrowser(runner.url());
        {
            const korvane::DialogRunnerScope scope(runner);
            result = instance.interface();
        }
        if (InterruptCatcher::interrupted())
            throw Cancelled();
        if (!runner.ran())
            throw korvane::Error(instance.library().displayName() + " showed no settings dialog; is " +
                                 "Glintwave.rsc beside it complete? Rebuild it (scripts/build.sh build)");
        if (runner.ending() == korvane::BrowserRunner::Ending::browserGone) {
            std::cerr << "glintwave: the browser went away; the dialog was cancelled and "
                      << options.project.string() << " is unchanged\n";
            return kCancelledInDialog;
        }
    }

    if (result == kPluginUserCanceled) {
        std::cerr << "glintwave: cancelled in the dialog; " << options.project.string() << " is unchanged\n";
        return kCancelledInDialog;
    }
    instance.require(kCmdInterface, result);

    const auto settings = instance.controlData();
    project.controlData.assign(settings.begin(), settings.end());
    const int dropped = reregisterChannels(instance, shot.range(), project);
    korvane::saveProject(project, options.project);
    if (!common.quiet) {
        std::cout << "glintwave: saved the new settings in " << options.project.string();
        if (dropped > 0)
            std::cout << "; dropped the keys of " << dropped << " channel(s) the plug-in no longer offers";
        std::cout << "\n";
    }
    return 0;
}

} // namespace

void addEditCommand(CommandLine& line)
{
    auto options = std::make_shared<EditOptions>();
    CLI::App* command = line.addCommand(
        "edit",
        "change a project's flare settings in the plug-in's settings dialog: in a web browser, or scripted with "
        "--set-control and --ok or --cancel",
        [options, &line] { return runEdit(*options, line.common()); });
    command->add_option("project", options->project, "the project file to edit")->required()->type_name("PROJECT");
    command
        ->add_option("--set-control", options->edits,
                     "an edit made as a user would: ITEM is a control's id or label (\"Flare style\", 6), VALUE "
                     "suits its kind (on/off, a menu item, a number, R,G,B or #RRGGBB, X,Y in the preview); "
                     "repeatable, applied in order")
        ->allow_extra_args(false)  // one edit per --set-control: a project after it stays the project
        ->type_name("ITEM=VALUE");
    CLI::Option* ok = command->add_flag("--ok", options->ok, "press OK after the edits: the project is saved");
    CLI::Option* cancel =
        command->add_flag("--cancel", options->cancel, "press Cancel after the edits: the project is left as it is");
    ok->excludes(cancel);
    command->add_option("--preview", options->preview, "write the dialog's preview, as drawn after the edits")
        ->type_name("FILE");
    command->add_option("--port", options->port, "serve the browser's dialog on this port (default: a free one)")
        ->check(CLI::Range(1, 65535))
        ->type_name("N");
    command->add_flag("--no-open", options->noOpen, "print the dialog's address without opening a browser");
}

} // namespace glintwave::cli
