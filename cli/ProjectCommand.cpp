// ProjectCommand.cpp - `glintwave project new|show|set`: shot files made,
// listed and edited through the host library's projects (korvane/Project.h,
// korvane/ProjectEdit.h).
//
// Channel names are those the plug-in registers for the project's style, so
// every subcommand loads the plug-in; a new or edited project is registered
// with it before it is saved, so a saved project always renders.

#include "Commands.h"
#include "FlareRenderer.h"
#include "SceneOptions.h"

#include "korvane/NumberText.h"
#include "korvane/ProjectEdit.h"
#include "korvane/ShotRenderer.h"

#include <iostream>
#include <memory>

namespace glintwave::cli {
namespace {

struct ProjectOptions {
    std::filesystem::path file;
    // new
    SceneOptions scene;
    std::string style = "1";
    std::string size, frames, rate;
    bool force = false;
    // show
    bool all = false;
    // set
    std::vector<std::string> sets, keys;
};

void edit(korvane::Project& project, const std::string& option, const korvane::Assignment& assignment,
          const korvane::ChannelStore& channels)
{
    try {
        korvane::applyAssignment(project, assignment, channels);
    } catch (const korvane::Error& e) {
        throw UsageError(option + " " + e.what());
    }
}

korvane::Assignment parse(const std::string& option, const std::string& text)
{
    try {
        return korvane::parseAssignment(text);
    } catch (const korvane::Error& e) {
        throw UsageError(option + " " + e.what());
    }
}

double fraction(const Length& length, double extent)
{
    return length.unit == Length::Unit::Fraction ? length.value : length.pixels(extent) / extent;
}

// A channel's value at a frame, as `project show --all` lists it (an empty
// value shows as nothing).
std::string valueText(const korvane::ChannelValue& value)
{
    return std::holds_alternative<std::monostate>(value) ? "" : korvane::formatValue(value, 257);
}

int runNew(const ProjectOptions& options, const CommonOptions& common)
{
    std::error_code ignored;
    if (!options.force && std::filesystem::exists(options.file, ignored))
        throw UsageError(options.file.string() + " exists already; edit it with `glintwave project set`, or give "
                                                 "--force to replace it");
    FlareRenderer renderer(common.pluginFile(), false);
    ControlDataRec settings = options.scene.settings;
    const Style& style = requireStyle(renderer.styles(), options.style);
    settings.flareLens = style.number;

    korvane::Project project;
    project.controlData = settingsBlock(settings);
    const korvane::ChannelStore noChannels;
    for (const auto& [option, field, text] : {std::tuple{"--size", "scene.size", options.size},
                                              std::tuple{"--frames", "scene.frames", options.frames},
                                              std::tuple{"--fps", "scene.rate", options.rate}})
        if (!text.empty())
            edit(project, option, korvane::Assignment{field, std::nullopt, text}, noChannels);

    // The light options as one key each at the first frame, in fractions of the frame.
    const SceneOptions& scene = options.scene;
    const std::int32_t first = project.firstFrame;
    project.light.x = {{first, fraction(scene.light.x, project.width)}};
    project.light.y = {{first, fraction(scene.light.y, project.height)}};
    project.light.color = {{first, korvane::ChannelColor{scene.light.color.red, scene.light.color.green,
                                                         scene.light.color.blue}}};
    project.light.intensity = {{first, scene.light.intensity}};
    project.light.radius = {{first, fraction(scene.light.radius, project.height)}};
    project.light.rotation = {{first, scene.light.rotation}};

    // The plug-in builds the style's whole settings block (rings included);
    // the project keeps that block.
    korvane::ShotRenderer shot(renderer.instance(), project);
    const auto block = renderer.instance().controlData();
    project.controlData.assign(block.begin(), block.end());
    korvane::saveProject(project, options.file);
    if (!common.quiet)
        std::cout << options.file.string() << ": style " << style.number << " " << style.name << ", "
                  << project.width << "x" << project.height << ", frames " << project.firstFrame << "-"
                  << project.lastFrame << " at " << korvane::formatNumber(project.frameRate) << " fps, "
                  << renderer.instance().channels().channels().size() << " channels\n";
    return 0;
}

int runShow(const ProjectOptions& options, const CommonOptions& common)
{
    const korvane::Project project = korvane::loadProject(options.file);
    std::cout << options.file.string() << "\n" << korvane::describeProject(project);
    if (!options.all)
        return 0;
    FlareRenderer renderer(common.pluginFile(), false);
    korvane::ShotRenderer shot(renderer.instance(), project);
    std::cout << "Channels offered (value at frame " << project.firstFrame << "):\n";
    for (const korvane::Channel& channel : renderer.instance().channels().channels())
        if (channel.hasValue())
            std::cout << "  " << channel.path << " (" << korvane::channelTypeName(channel.type) << "): "
                      << valueText(korvane::interpolate(channel.type, channel.keys, channel.defaultValue,
                                                        project.firstFrame))
                      << "\n";
    return 0;
}

int runSet(const ProjectOptions& options, const CommonOptions& common)
{
    korvane::Project project = korvane::loadProject(options.file);
    if (options.sets.empty() && options.keys.empty())
        throw UsageError("nothing to change: give --set NAME=VALUE or --key NAME@FRAME=VALUE");
    FlareRenderer renderer(common.pluginFile(), false);
    {
        korvane::ShotRenderer registration(renderer.instance(), project);
    }
    const korvane::ChannelStore& channels = renderer.instance().channels();
    for (const std::string& text : options.sets) {
        const korvane::Assignment assignment = parse("--set", text);
        if (assignment.frame)
            throw UsageError("--set " + text + ": --set gives one value for every frame; key a frame with --key");
        edit(project, "--set", assignment, channels);
    }
    for (const std::string& text : options.keys) {
        const korvane::Assignment assignment = parse("--key", text);
        if (!assignment.frame)
            throw UsageError("--key " + text + ": give the frame, as in NAME@FRAME=VALUE");
        edit(project, "--key", assignment, channels);
    }
    // The edited project must register before it replaces the file.
    korvane::ShotRenderer check(renderer.instance(), project);
    korvane::saveProject(project, options.file);
    if (!common.quiet)
        std::cout << options.file.string() << ": " << options.sets.size() + options.keys.size() << " changes saved\n";
    return 0;
}

} // namespace

void addProjectCommand(CommandLine& line)
{
    auto options = std::make_shared<ProjectOptions>();
    auto actions = std::make_shared<std::map<const CLI::App*, std::function<int()>>>();
    CLI::App* project = line.addCommand("project", "make, show and edit project files", [&line, actions] {
        for (const CLI::App* chosen : line.app().get_subcommand("project")->get_subcommands())
            return (*actions)[chosen]();
        throw UsageError("choose project new, show or set");
    });
    project->require_subcommand(1);
    project->fallthrough();
    const auto add = [&](const std::string& name, const std::string& description, auto run) {
        CLI::App* command = project->add_subcommand(name, description);
        command->fallthrough();
        command->add_option("project", options->file, "the project file (JSON)")->required()->type_name("P");
        (*actions)[command] = [run, options, &line] { return run(*options, line.common()); };
        return command;
    };

    CLI::App* create = add("new", "make a project: style, frame size, frames, rate, light and settings", runNew);
    create->add_option("-s,--style", options->style, "the flare style by number or name (default 1)")
        ->type_name("N|NAME");
    create->add_option("--size", options->size, "the frame in pixels (default 1920x1080)")->type_name("WxH");
    create->add_option("--frames", options->frames, "the project's frames, FIRST-LAST (default 1-1)")
        ->type_name("A-B");
    create->add_option("--fps", options->rate, "frames per second (default 24)")->type_name("N");
    create->add_flag("--force", options->force, "replace an existing file");
    addLightOptions(*create, options->scene);
    addSettingOptions(*create, options->scene.settings);

    CLI::App* show = add("show", "the scene, the light track and the keyed channels", runShow);
    show->add_flag("--all", options->all, "also every channel the plug-in offers, with its value");

    CLI::App* set = add("set", "set or key values: light.x, light.color, scene.size, channels by name", runSet);
    set->add_option("--set", options->sets,
                    "NAME=VALUE: one value for every frame (replaces the keys); applied before --key")
        ->type_name("NAME=VALUE")
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    set->add_option("--key", options->keys, "NAME@FRAME=VALUE: a key at a frame")
        ->type_name("NAME@FRAME=VALUE")
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

} // namespace glintwave::cli
