// RenderCommand.cpp - `glintwave render`: one frame of a flare to an image file.
//
// The frame is black (--size) or a background image (--over). Over an 8- or
// 16-bit background the flare is painted into the background's pixels as the
// plug-in paints into a host's frame, with saturating adds; over a float one
// (EXR, HDR) it is painted on black and added in linear float, so the
// background keeps values above 1.0. Depth 8 draws the plug-in's wireframe
// sketch in white over the frame.

#include "Commands.h"
#include "FlareRenderer.h"
#include "Output.h"
#include "SceneOptions.h"

#include "korvane/ImageIO.h"

#include <chrono>
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
};

// The stored sample type: half floats in EXR and HDR, else what the render
// holds (16 bits for 48-bit frames, 8 for 32-bit frames and sketches, the
// background's own for a sketch over it).
OIIO::TypeDesc sampleTypeFor(const RenderOptions& options, const std::optional<korvane::RgbImage>& background)
{
    if (korvane::isFloatFormat(options.output))
        return OIIO::TypeDesc::HALF;
    if (background && background->kind == korvane::SampleKind::Float)
        return OIIO::TypeDesc::UINT16;
    if (options.depth == 8 && background)
        return background->kind == korvane::SampleKind::Int16 ? OIIO::TypeDesc::UINT16 : OIIO::TypeDesc::UINT8;
    return options.depth == 48 ? OIIO::TypeDesc::UINT16 : OIIO::TypeDesc::UINT8;
}

OIIO::ImageBuf composeFrame(FlareRenderer& renderer, const RenderOptions& options, const ControlDataRec& settings,
                            const std::optional<korvane::RgbImage>& background, FrameSize size,
                            const std::string& label)
{
    const Light light = options.scene.lightFor(size.width, size.height);
    const bool floatOutput = korvane::isFloatFormat(options.output);
    const auto depth = static_cast<std::int16_t>(options.depth);

    if (depth == 8) {
        korvane::FramePixels sketch(size.width, size.height, 8);
        renderer.render(settings, light, sketch, label);
        OIIO::ImageBuf image = background ? background->pixels.copy(OIIO::TypeUnknown)
                                          : OIIO::ImageBuf(OIIO::ImageSpec(size.width, size.height, 3,
                                                                           OIIO::TypeDesc::UINT8));
        sketch.drawSketchOver(image);
        return image;
    }
    if (background && background->kind == korvane::SampleKind::Float) {
        korvane::FramePixels flare(size.width, size.height, depth);
        renderer.render(settings, light, flare, label);
        OIIO::ImageBuf image = background->pixels.copy(OIIO::TypeUnknown);
        flare.addTo(image);
        return image;
    }
    korvane::FramePixels frame = background ? korvane::FramePixels::fromImage(background->pixels, depth)
                                            : korvane::FramePixels(size.width, size.height, depth);
    renderer.render(settings, light, frame, label);
    OIIO::ImageBuf image = frame.toImage(floatOutput);
    if (background) {
        for (const OIIO::ParamValue& attribute : background->pixels.spec().extra_attribs)
            image.specmod().attribute(attribute.name().string(), attribute.type(), attribute.data());
    }
    return image;
}

int runRender(const RenderOptions& options, const CommonOptions& common)
{
    checkOutputPath(options.output);
    FlareRenderer renderer(common.pluginFile(), !common.quiet);
    const Style* style = findStyle(renderer.styles(), options.style);
    if (!style)
        throw UsageError("--style " + options.style + ": no such style; choose one of " +
                         styleChoices(renderer.styles()));
    ControlDataRec settings = options.scene.settings;
    settings.flareLens = style->number;

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
    requireFrameMemory(size.width, size.height);

    const std::string styleText = std::to_string(style->number) + " " + style->name;
    OIIO::ImageBuf image = composeFrame(renderer, options, settings, background, size, "style " + styleText);
    describeImage(image, styleText, settings, options.scene);
    writeOutput(image, options.output, sampleTypeFor(options, background));
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    if (!common.quiet) {
        char timing[32];
        std::snprintf(timing, sizeof timing, "%.2f s", seconds);
        std::cout << options.output.string() << ": " << size.width << "x" << size.height << ", style " << styleText
                  << ", " << options.depth << "-bit, " << timing << ", " << fileSizeText(options.output) << "\n";
    }
    return 0;
}

} // namespace

void addRenderCommand(CommandLine& line)
{
    auto options = std::make_shared<RenderOptions>();
    CLI::App* command = line.addCommand("render", "render one frame of a flare to an image file",
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
    command->add_option("--over", options->over, "a background image; the frame takes its size (not with --size)")
        ->option_text("IMAGE")
        ->excludes(size);
    command
        ->add_option("--depth", options->depth,
                     "48 (16-bit colour, default), 32 (8-bit colour) or 8 (wireframe sketch)")
        ->check(CLI::IsMember({48, 32, 8}))
        ->option_text("48|32|8");
    addLightOptions(*command, options->scene);
    addSettingOptions(*command, options->scene.settings);
}

} // namespace glintwave::cli
