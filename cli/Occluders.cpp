// Occluders.cpp - the occlusion options and a light's visibility.

#include "Occluders.h"

#include "Output.h"

#include "korvane/Error.h"
#include "korvane/ImageIO.h"
#include "korvane/NumberText.h"

namespace glintwave::cli {

std::vector<std::string> OcclusionOptions::asArguments() const
{
    if (occluder.empty())
        return {};
    std::vector<std::string> arguments = {"--occluder", occluder, "--occluder-channel", channelName};
    if (radius)
        arguments.insert(arguments.end(), {"--occlusion-radius", formatLength(*radius)});
    if (offscreen == korvane::OffscreenIs::visible)
        arguments.insert(arguments.end(), {"--offscreen", "visible"});
    return arguments;
}

void addOcclusionOptions(CLI::App& command, OcclusionOptions& options)
{
    command
        .add_option("--occluder", options.occluder,
                    "a matte of what stands before the light (1 hides), the frame's size; with --project a "
                    "numbered sequence, as in matte.####.png")
        ->option_text("IMAGE")
        ->group("Occlusion");
    command
        .add_option_function<std::string>(
            "--occluder-channel",
            [&options](const std::string& text) {
                const std::optional<korvane::MatteChannel> channel = korvane::matteChannelNamed(text);
                if (!channel)
                    throw CLI::ValidationError("--occluder-channel",
                                               "'" + text + "' is not a channel; give alpha, luma, R, G or B");
                options.channel = *channel;
                options.channelName = text;
            },
            "the occluder's channel that hides: alpha (default), luma, R, G or B")
        ->option_text("alpha|luma|R|G|B")
        ->group("Occlusion");
    command
        .add_option_function<std::string>(
            "--occlusion-radius",
            [&options](const std::string& text) {
                const std::optional<Length> length = parseLength(text);
                if (!length || !(length->value > 0))
                    throw CLI::ValidationError("--occlusion-radius",
                                               "'" + text + "' is not a radius; give a fraction of the height, "
                                                            "N% or Npx above 0");
                options.radius = *length;
            },
            "the light's disc whose covered part dims it (default: the light's radius)")
        ->option_text("LENGTH")
        ->group("Occlusion");
    command
        .add_option_function<std::string>(
            "--offscreen",
            [&options](const std::string& text) {
                if (text != "inside" && text != "visible")
                    throw CLI::ValidationError("--offscreen", "'" + text + "' is not inside or visible");
                options.offscreen =
                    text == "visible" ? korvane::OffscreenIs::visible : korvane::OffscreenIs::leftOut;
            },
            "a disc reaching out of the frame: inside (default: only its part in the frame counts) or visible "
            "(the part outside counts as seen)")
        ->option_text("inside|visible")
        ->group("Occlusion");
}

double lightVisibility(const OcclusionOptions& options, const std::string& file, const korvane::Light& light,
                       FrameSize size)
{
    korvane::ImageLimits limits;
    limits.maxSide = kMaxFrameSide;
    limits.maxBytes = physicalMemory();
    const korvane::RgbImage image = korvane::readRgbImage(file, limits);
    const OIIO::ImageSpec& spec = image.pixels.spec();
    if (spec.width != size.width || spec.height != size.height)
        throw korvane::Error(korvane::ErrorPlace{file}, "is " + std::to_string(spec.width) + "x" +
                                                            std::to_string(spec.height) + ", the frame is " +
                                                            std::to_string(size.width) + "x" +
                                                            std::to_string(size.height) + "; an occluder is the "
                                                                                          "frame's size");
    const korvane::OcclusionMatte matte(image, options.channel, file);
    const korvane::Length radius = options.radius.value_or(light.radius);
    return matte.visibleFraction(light.x.pixels(size.width), light.y.pixels(size.height), radius.pixels(size.height),
                                 options.offscreen);
}

} // namespace glintwave::cli
