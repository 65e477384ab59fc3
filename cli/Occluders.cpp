// Occluders.cpp - the occlusion options and a light's visibility.

#include "Occluders.h"

#include "Output.h"

#include "korvane/Error.h"
#include "korvane/Flashes.h"
#include "korvane/ImageIO.h"
#include "korvane/NumberText.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace glintwave::cli {

std::vector<std::string> OcclusionOptions::asArguments() const
{
    if (!any())
        return {};
    std::vector<std::string> arguments =
        depth.empty() ? std::vector<std::string>{"--occluder", occluder, "--occluder-channel", channelName}
                      : std::vector<std::string>{"--occluder-depth", depth, "--light-depth", korvane::formatNumber(lightDepth)};
    if (smoothing > 0)
        arguments.insert(arguments.end(), {"--occlusion-smoothing", std::to_string(smoothing)});
    if (!flashLimit)
        arguments.insert(arguments.end(), {"--flash-limit", "off"});
    if (radius)
        arguments.insert(arguments.end(), {"--occlusion-radius", formatLength(*radius)});
    if (offscreen == korvane::OffscreenIs::visible)
        arguments.insert(arguments.end(), {"--offscreen", "visible"});
    return arguments;
}

OcclusionOptions occlusionFromProject(const korvane::OcclusionSettings& settings,
                                      const std::filesystem::path& projectFile)
{
    OcclusionOptions options;
    const auto beside = [&](const std::string& name) {
        return name.empty() ? name : (projectFile.parent_path() / name).string();
    };
    options.occluder = beside(settings.occluder);
    options.depth = beside(settings.depth);
    options.lightDepth = settings.lightDepth;
    if (!settings.channel.empty()) {
        options.channel = korvane::matteChannelNamed(settings.channel).value_or(korvane::MatteChannel::alpha);
        options.channelName = settings.channel;
    }
    if (settings.radius > 0)
        options.radius = korvane::Length{settings.radius};
    options.offscreen = settings.offscreenVisible ? korvane::OffscreenIs::visible : korvane::OffscreenIs::leftOut;
    options.smoothing = settings.smoothing;
    options.flashLimit = settings.flashLimit;
    return options;
}

void addOcclusionOptions(CLI::App& command, OcclusionOptions& options)
{
    command
        .add_option("--occluder", options.occluder,
                    "a matte of what stands before the light (1 hides), the frame's size; with --project a "
                    "numbered sequence, as in matte.####.png")
        ->option_text("IMAGE")
        ->group("Occlusion");
    CLI::Option* depth =
        command
            .add_option("--occluder-depth", options.depth,
                        "instead of a matte, the depth of the frame's pixels (its first channel): nearer than "
                        "--light-depth hides")
            ->option_text("IMAGE")
            ->group("Occlusion");
    command.get_option("--occluder")->excludes(depth);
    CLI::Option* lightDepth =
        command
            .add_option_function<double>(
                "--light-depth",
                [&options](double z) {
                    if (!std::isfinite(z))
                        throw CLI::ValidationError("--light-depth", "give the light's depth as a number");
                    options.lightDepth = z;
                },
                "the light's depth, in the depth image's units")
            ->option_text("Z")
            ->group("Occlusion");
    depth->needs(lightDepth);
    lightDepth->needs(depth);
    command
        .add_option("--occlusion-smoothing", options.smoothing,
                    "in sequences, average the light's visibility over this many frames on each side (default 0)")
        ->check(CLI::Range(0, 48))
        ->option_text("FRAMES")
        ->group("Occlusion");
    command
        .add_option_function<std::string>(
            "--flash-limit",
            [&options](const std::string& text) {
                if (text != "on" && text != "off")
                    throw CLI::ValidationError("--flash-limit", "'" + text + "' is not on or off");
                options.flashLimit = text == "on";
            },
            "in sequences, keep an occluded flare from flashing more than three times a second (default on)")
        ->option_text("on|off")
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

namespace {

// Hidden where the depth is nearer than the light's; no depth (NaN) hides nothing.
korvane::OcclusionMatte depthMatte(const korvane::RgbImage& image, double lightDepth)
{
    const OIIO::ImageSpec& spec = image.pixels.spec();
    const std::size_t count = static_cast<std::size_t>(spec.width) * static_cast<std::size_t>(spec.height);
    std::vector<float> rgb(count * 3), coverage(count);
    image.pixels.get_pixels(OIIO::ROI::All(), OIIO::TypeDesc::FLOAT, rgb.data());
    for (std::size_t i = 0; i < count; ++i)
        coverage[i] = rgb[i * 3] < lightDepth ? 1.0f : 0.0f;
    return korvane::OcclusionMatte(spec.width, spec.height, std::move(coverage));
}

} // namespace

double smoothedVisibility(const OcclusionOptions& options, std::int32_t frame, std::int32_t first,
                          std::int32_t last, const std::function<double(std::int32_t)>& at)
{
    if (options.smoothing <= 0)
        return at(frame);
    double sum = 0.0, weights = 0.0;
    for (int offset = -options.smoothing; offset <= options.smoothing; ++offset) {
        const double weight = options.smoothing + 1 - std::abs(offset);
        const std::int64_t neighbour = std::clamp<std::int64_t>(std::int64_t{frame} + offset, first, last);
        sum += weight * at(static_cast<std::int32_t>(neighbour));
        weights += weight;
    }
    return sum / weights;
}

double limitedVisibility(const OcclusionOptions& options, std::int32_t frame, std::int32_t first,
                         std::int32_t last, double framesPerSecond, const std::function<double(std::int32_t)>& at)
{
    const auto smoothed = [&](std::int32_t g) { return smoothedVisibility(options, g, first, last, at); };
    if (!options.flashLimit)
        return smoothed(frame);
    const int reach = static_cast<int>(std::ceil(std::clamp(framesPerSecond, 1.0, 240.0)));
    std::vector<double> window;
    double sum = 0.0, weights = 0.0;
    for (int offset = -reach; offset <= reach; ++offset) {
        const std::int64_t g = std::clamp<std::int64_t>(std::int64_t{frame} + offset, first, last);
        const double value = smoothed(static_cast<std::int32_t>(g));
        window.push_back(value);
        const double weight = reach + 1 - std::abs(offset);
        sum += weight * value;
        weights += weight;
    }
    if (korvane::tooManyFlashes(window, framesPerSecond).empty())
        return window[static_cast<std::size_t>(reach)];
    return sum / weights;
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
    const korvane::Length radius = options.radius.value_or(light.radius);
    const double x = light.x.pixels(size.width), y = light.y.pixels(size.height), r = radius.pixels(size.height);
    const korvane::OcclusionMatte matte = options.depth.empty()
                                              ? korvane::OcclusionMatte(image, options.channel, file, x, y, r)
                                              : depthMatte(image, options.lightDepth);
    return matte.visibleFraction(x, y, r, options.offscreen);
}

} // namespace glintwave::cli
