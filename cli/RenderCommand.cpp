// RenderCommand.cpp - `glintwave render`: a flare to an image file, or with
// --project the frames of a project to numbered files (SequenceRender.h).
//
// A frame is black (--size) or a background image (--over); the flare joins
// it in linear light or in the host's own way (Compose.h). Depth 8 draws the
// plug-in's wireframe sketch in white over the frame.

#include "Commands.h"
#include "Compose.h"
#include "FlarePasses.h"
#include "FlareRenderer.h"
#include "Occluders.h"
#include "Output.h"
#include "SceneOptions.h"
#include "SequenceRender.h"

#include "korvane/ImageIO.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>

namespace glintwave::cli {
namespace {

constexpr FrameSize kDefaultSize{1920, 1080};

struct RenderOptions {
    SceneOptions scene;
    std::string style = "1";
    std::optional<FrameSize> size;
    std::filesystem::path over;
    std::filesystem::path output;
    int depth = 48;
    CompositeOptions composite;
    OcclusionOptions occlusion;
    // Sequences (SequenceRender.h).
    std::filesystem::path project;
    std::string frames;
    int threads = 0;
    bool skipExisting = false;
    int workerSocket = -1;
    const CLI::App* command = nullptr;
};

// A project holds the style, the frame size, the light and the settings;
// options that would give them too are refused rather than ignored.
void refuseSceneOptions(const RenderOptions& options)
{
    for (const CLI::Option* option : options.command->get_options()) {
        const bool scene = option->get_group() == "Light" || option->get_group() == "Flare settings" ||
                           option->check_lname("style") || option->check_lname("size");
        if (scene && option->count() > 0)
            throw UsageError(option->get_name() + " does not go with --project, which holds the style, size, "
                                                  "light and settings; change them with `glintwave project set`");
    }
}

int runSequence(const RenderOptions& options, const CommonOptions& common)
{
    refuseSceneOptions(options);
    SequenceOptions sequence;
    sequence.project = options.project;
    sequence.frames = options.frames;
    sequence.output = options.output.string();
    sequence.over = options.over.string();
    sequence.depth = options.depth;
    sequence.composite = options.composite;
    const auto given = [&](const char* option) { return options.command->count(option) > 0; };
    sequence.given = {given("--blend"), given("--exposure"), given("--flare-only"), given("--flare-alpha"),
                      given("--passes"), given("--ocio"), given("--input-colorspace"),
                      given("--working-colorspace"), given("--output-colorspace")};
    sequence.occlusion = options.occlusion;
    sequence.threads = options.threads;
    sequence.skipExisting = options.skipExisting;
    sequence.workerSocket = options.workerSocket;
    return renderSequence(sequence, common);
}

int runRender(RenderOptions& options, const CommonOptions& common)
{
    // A project's own output settings join the command's in the sequence.
    if (!options.project.empty())
        return runSequence(options, common);
    if (options.composite.blend == Blend::linear && options.depth != 8)
        options.composite.spaces = colourSpacesFor(options.composite.ocio);
    checkCompositeOptions(options.composite, options.depth, options.output);
    if (!options.frames.empty())
        throw UsageError("--frames renders the frames of a project: give --project P (glintwave project new "
                         "makes one)");
    checkOutputPath(options.output);
    if (options.skipExisting && std::filesystem::exists(options.output)) {
        if (!common.quiet)
            std::cout << options.output.string() << ": exists, skipped\n";
        return 0;
    }
    FlareRenderer renderer(common.pluginFile(), !common.quiet);
    ControlDataRec settings = options.scene.settings;
    const Style& style = requireStyle(renderer.styles(), options.style);
    settings.flareLens = style.number;

    const auto start = std::chrono::steady_clock::now();
    std::optional<korvane::RgbImage> background;
    FrameSize size = options.size.value_or(kDefaultSize);
    if (!options.over.empty()) {
        korvane::ImageLimits limits;
        limits.maxSide = kMaxFrameSide;
        limits.maxBytes = physicalMemory();
        background = korvane::readRgbImage(options.over, limits);
        size = FrameSize{background->pixels.spec().width, background->pixels.spec().height};
    }
    requireFrameMemory(size.width, size.height, options.composite.passes);

    const std::string styleText = std::to_string(style.number) + " " + style.name;
    korvane::Light light = options.scene.light;
    CompositeOptions composite = options.composite;
    if (options.occlusion.any()) {
        if (options.occlusion.smoothing > 0)
            throw UsageError("--occlusion-smoothing averages over the frames of a sequence; give --project");
        const double visible = lightVisibility(options.occlusion, options.occlusion.source(), light, size);
        if (composite.blend == Blend::linear && options.depth != 8)
            composite.visibility = visible;
        else
            light.intensity *= visible;
    }
    const Painter paint = [&](korvane::FramePixels& frame) {
        renderer.render(settings, light, frame, "style " + styleText);
    };
    const PassPainter paintPass = [&](korvane::FramePixels& frame, std::size_t pass) {
        renderer.render(passSettings(settings, kFlarePasses[pass]), light, frame,
                        "style " + styleText + ", " + std::string(kFlarePasses[pass].name));
    };
    ComposedFrame frame =
        composeFrame(paint, options.depth, background, size, options.output, composite, paintPass);
    for (SideImage& side : frame.sideImages) {
        describeImage(side.image, styleText, settings, options.scene);
        writeOutput(side.image, sideImageFile(options.output, side.suffix), frame.sampleType);
    }
    describeImage(frame.image, styleText, settings, options.scene);
    writeOutput(frame.image, options.output, frame.sampleType);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    if (!common.quiet) {
        char timing[32];
        std::snprintf(timing, sizeof timing, "%.2f s", seconds);
        std::cout << options.output.string() << ": " << size.width << "x" << size.height << ", style " << styleText
                  << ", " << options.depth << "-bit, " << timing << ", " << fileSizeText(options.output);
        if (!frame.sideImages.empty())
            std::cout << ", and its passes in " << sideImageFile(options.output, "*").filename().string();
        std::cout << "\n";
    }
    return 0;
}

} // namespace

void addRenderCommand(CommandLine& line)
{
    auto options = std::make_shared<RenderOptions>();
    CLI::App* command = line.addCommand("render", "render a flare, or the frames of a project, to image files",
                                        [options, &line] { return runRender(*options, line.common()); });
    command->add_option("-o,--output", options->output,
                        "the image to write; its extension picks the format (.png .exr .tif .jpg .dpx)")
        ->required()
        ->type_name("FILE");
    command->add_option("-s,--style", options->style,
                        "the flare style by number or name, as `glintwave styles` lists them (default 1)")
        ->type_name("N|NAME");
    CLI::Option* size =
        command
            ->add_option_function<std::string>(
                "--size",
                [options](const std::string& text) {
                    const auto parsed = parseFrameSize(text);
                    if (!parsed)
                        throw CLI::ValidationError("--size", "'" + text + "' is not a frame size; give WIDTHxHEIGHT, "
                                                                          "each 1 to " +
                                                                 std::to_string(kMaxFrameSide) + ", as in 1920x1080");
                    options->size = *parsed;
                },
                "the frame in pixels when there is no --over (default 1920x1080)")
            ->option_text("WxH");
    command->add_option("--over", options->over,
                        "a background image; the frame takes its size (not with --size); with --project a "
                        "numbered sequence, as in plate.####.exr")
        ->option_text("IMAGE")
        ->excludes(size);
    options->command = command;
    command
        ->add_option("--depth", options->depth,
                     "48 (16-bit color, default), 32 (8-bit color) or 8 (wireframe sketch)")
        ->check(CLI::IsMember({48, 32, 8}))
        ->option_text("48|32|8");
    command
        ->add_option_function<std::string>(
            "--blend",
            [options](const std::string& text) {
                const std::optional<Blend> blend = blendNamed(text);
                if (!blend)
                    throw CLI::ValidationError("--blend", "'" + text + "' is not a blend; give linear or host");
                options->composite.blend = *blend;
            },
            "how the flare joins the frame: linear (default: decoded from sRGB and added in linear light; EXR "
            "keeps values above 1.0, integer formats are sRGB-encoded and dithered) or host (its levels painted "
            "into the frame's, as the platform's own host paints)")
        ->option_text("linear|host")
        ->group("Colour");
    command
        ->add_option_function<double>(
            "--exposure",
            [options](double stops) {
                if (!std::isfinite(stops) || stops < -20.0 || stops > 20.0)
                    throw CLI::ValidationError("--exposure", "give a number of stops from -20 to 20");
                options->composite.exposure = stops;
            },
            "scales the flare by 2^STOPS in linear light, so +1 doubles it (default 0)")
        ->option_text("STOPS")
        ->group("Colour");
    CLI::Option* flareOnly =
        command
            ->add_flag("--flare-only", options->composite.flareOnly,
                       "the flare alone, without a background: premultiplied RGBA with the alpha of --flare-alpha")
            ->group("Colour");
    flareOnly->excludes("--over");
    command
        ->add_option_function<std::string>(
            "--flare-alpha",
            [options](const std::string& text) {
                if (text != "luminance" && text != "zero")
                    throw CLI::ValidationError("--flare-alpha", "'" + text + "' is not a flare alpha; give luminance "
                                                                             "or zero");
                options->composite.flareAlpha = text == "zero" ? FlareAlpha::zero : FlareAlpha::luminance;
            },
            "the flare's alpha: luminance (the default for --flare-only and --passes; over a background with "
            "alpha, joined to it) or zero (colour over no coverage, for adding)")
        ->option_text("luminance|zero")
        ->group("Colour");
    command
        ->add_option("--ocio", options->composite.ocio,
                     "an OpenColorIO configuration whose colour spaces the names below take (default: $OCIO, "
                     "else the built-in linear and sRGB)")
        ->option_text("CONFIG")
        ->group("Colour");
    command
        ->add_option("--input-colorspace", options->composite.inputSpace,
                     "the background's space (default: scene-linear for EXR and HDR, sRGB for integer files)")
        ->option_text("NAME")
        ->group("Colour");
    command
        ->add_option("--working-colorspace", options->composite.workingSpace,
                     "where the flare and the background add up (default: the configuration's scene_linear)")
        ->option_text("NAME")
        ->group("Colour");
    command
        ->add_option("--output-colorspace", options->composite.outputSpace,
                     "the output's space (default: scene-linear for EXR, sRGB for integer files)")
        ->option_text("NAME")
        ->group("Colour");
    command
        ->add_flag("--passes", options->composite.passes,
                   "also the flare's parts, each with the other elements off: flare, glows, halo, rings, streaks; "
                   "layers of an EXR, or files beside the output (out.rings.png)")
        ->group("Colour");
    command->add_option("--project", options->project,
                        "render the frames of a project (glintwave project new); -o then names every frame's "
                        "file with a frame token, as in out.####.exr")
        ->option_text("P")
        ->group("Sequence");
    command
        ->add_option("--frames", options->frames,
                     "the project's frames to render: 1-100, 1-100x2, 1,5,9-12 (default: all of them)")
        ->option_text("RANGE")
        ->group("Sequence");
    command
        ->add_option("--threads", options->threads,
                     "frames rendered at once, each in its own process (default: the CPUs this process may use)")
        ->check(CLI::Range(1, 1024))
        ->option_text("N")
        ->group("Sequence");
    command->add_flag("--skip-existing", options->skipExisting, "leave frames whose file exists as they are")
        ->group("Sequence");
    // How a parallel run hands frames to its worker processes; not for people.
    command->add_option("--worker-socket", options->workerSocket)->group("");
    addOcclusionOptions(*command, options->occlusion);
    addLightOptions(*command, options->scene);
    addSettingOptions(*command, options->scene.settings);
}

} // namespace glintwave::cli
