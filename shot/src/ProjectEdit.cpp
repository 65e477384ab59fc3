// ProjectEdit.cpp - edits of a project from "Name@Frame=Value" texts, and
// its listing.

#include "korvane/ProjectEdit.h"

#include "korvane/FrameRange.h"
#include "korvane/NumberText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <sstream>
#include <stdexcept>

namespace korvane {
namespace {

std::string_view trim(std::string_view text)
{
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);
    return text;
}

template <class Number>
std::optional<Number> parseNumber(std::string_view text)
{
    text = trim(text);
    if (!text.empty() && text.front() == '+')
        text.remove_prefix(1);
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    if constexpr (std::is_floating_point_v<Number>)
        if (!std::isfinite(value))
            return std::nullopt;
    return value;
}

ChannelColor parseColor(std::string_view text, int scale)
{
    text = trim(text);
    ChannelColor color{};
    if (!text.empty() && text.front() == '#') {
        if (text.size() != 7)
            throw Error("a color as #rrggbb has six hex digits");
        for (std::size_t i = 0; i < 3; i++) {
            unsigned value = 0;
            const auto digits = text.substr(1 + 2 * i, 2);
            const auto [end, error] = std::from_chars(digits.data(), digits.data() + 2, value, 16);
            if (error != std::errc() || end != digits.data() + 2)
                throw Error("\"" + std::string(text) + "\" is not a #rrggbb color");
            color[i] = static_cast<std::uint16_t>(value * static_cast<unsigned>(scale));
        }
        return color;
    }
    std::size_t start = 0;
    for (std::size_t i = 0; i < 3; i++) {
        const std::size_t comma = text.find(',', start);
        if ((i < 2) != (comma != std::string_view::npos))
            throw Error("a color is r,g,b with three components from 0 to 255");
        const auto part = parseNumber<int>(text.substr(start, i < 2 ? comma - start : std::string_view::npos));
        if (!part || *part < 0 || *part > 255)
            throw Error("a color is r,g,b with three components from 0 to 255");
        color[i] = static_cast<std::uint16_t>(*part * scale);
        start = comma + 1;
    }
    return color;
}

std::string formatKeys(const Keys& keys, double colorScale = 1)
{
    std::string text;
    for (const auto& [frame, value] : keys)
        text += "  " + std::to_string(frame) + ": " + formatValue(value, colorScale);
    return text;
}

void putKey(Keys& keys, const Assignment& edit, std::int32_t firstFrame, ChannelValue value)
{
    if (!edit.frame)
        keys.clear();
    keys[edit.frame.value_or(firstFrame)] = std::move(value);
}

void applyScene(Project& project, std::string_view field, const Assignment& edit)
{
    if (edit.frame)
        throw Error("scene values are not keyed: drop the @" + std::to_string(*edit.frame));
    const std::string_view value = trim(edit.value);
    if (field == "size") {
        const auto cross = value.find('x');
        const auto width = parseNumber<std::int32_t>(value.substr(0, cross));
        const auto height = cross == std::string_view::npos ? std::nullopt : parseNumber<std::int32_t>(value.substr(cross + 1));
        if (!width || !height || *width < 1 || *height < 1 || *width > 65535 || *height > 65535)
            throw Error("scene.size is WIDTHxHEIGHT, each from 1 to 65535, as in 1920x1080");
        project.width = *width;
        project.height = *height;
    } else if (field == "frames") {
        const FrameList frames = parseFrameRange(value);
        if (frames.empty())
            throw Error("scene.frames names no frame");
        project.firstFrame = frames.front();
        project.lastFrame = frames.back();
    } else if (field == "rate") {
        const auto rate = parseNumber<double>(value);
        if (!rate || *rate <= 0)
            throw Error("scene.rate is a number of frames per second above 0");
        project.frameRate = *rate;
    } else {
        throw Error("the scene has size, frames and rate, not \"" + std::string(field) + "\"");
    }
}

void applyOutput(Project& project, std::string_view field, const Assignment& edit)
{
    OutputSettings& output = project.output;
    if (field == "exposure") {
        putKey(output.exposure, edit, project.firstFrame, parseValue(kChannelReal, edit.value));
        return;
    }
    if (edit.frame)
        throw Error("only output.exposure is keyed: drop the @" + std::to_string(*edit.frame));
    const std::string value(trim(edit.value));
    // "-" clears a text back to the command's default.
    const auto textOf = [&](std::initializer_list<const char*> words, const char* names) {
        if (value == "-")
            return std::string();
        if (words.size() != 0 && std::none_of(words.begin(), words.end(), [&](const char* w) { return value == w; }))
            throw Error("output." + std::string(field) + " is " + names + " (or - for the default)");
        return value;
    };
    if (field == "blend")
        output.blend = textOf({"linear", "host"}, "linear or host");
    else if (field == "flareAlpha")
        output.flareAlpha = textOf({"luminance", "zero"}, "luminance or zero");
    else if (field == "flareOnly")
        output.flareOnly = std::get<bool>(parseValue(kChannelBoolean, value));
    else if (field == "passes")
        output.passes = std::get<bool>(parseValue(kChannelBoolean, value));
    else if (field == "ocio")
        output.ocio = textOf({}, "");
    else if (field == "inputColorspace")
        output.inputColorspace = textOf({}, "");
    else if (field == "workingColorspace")
        output.workingColorspace = textOf({}, "");
    else if (field == "outputColorspace")
        output.outputColorspace = textOf({}, "");
    else
        throw Error("the output has blend, exposure, flareOnly, flareAlpha, passes, ocio, inputColorspace, "
                    "workingColorspace and outputColorspace, not \"" + std::string(field) + "\"");
}

void applyOcclusion(Project& project, std::string_view field, const Assignment& edit)
{
    if (edit.frame)
        throw Error("occlusion values are not keyed: drop the @" + std::to_string(*edit.frame));
    OcclusionSettings& occlusion = project.occlusion;
    const std::string value(trim(edit.value));
    const std::string text = value == "-" ? std::string() : value;
    const auto number = [&](double low) {
        const auto parsed = parseNumber<double>(value);
        if (!parsed || !(*parsed >= low))
            throw Error("occlusion." + std::string(field) + " is a number from " + formatNumber(low));
        return *parsed;
    };
    if (field == "occluder") {
        occlusion.occluder = text;
        if (!text.empty())
            occlusion.depth.clear();
    } else if (field == "depth") {
        occlusion.depth = text;
        if (!text.empty())
            occlusion.occluder.clear();
    } else if (field == "channel") {
        const std::initializer_list<const char*> channels = {"alpha", "luma", "R", "G", "B"};
        if (!text.empty() && std::none_of(channels.begin(), channels.end(), [&](const char* c) { return text == c; }))
            throw Error("occlusion.channel is alpha, luma, R, G or B (or - for the default)");
        occlusion.channel = text;
    } else if (field == "lightDepth") {
        occlusion.lightDepth = number(-std::numeric_limits<double>::max());
    } else if (field == "radius") {
        occlusion.radius = number(0);
    } else if (field == "smoothing") {
        const double frames = number(0);
        if (frames > 48 || frames != std::floor(frames))
            throw Error("occlusion.smoothing is a whole number of frames from 0 to 48");
        occlusion.smoothing = static_cast<std::int32_t>(frames);
    } else if (field == "offscreenVisible") {
        occlusion.offscreenVisible = std::get<bool>(parseValue(kChannelBoolean, value));
    } else if (field == "flashLimit") {
        occlusion.flashLimit = std::get<bool>(parseValue(kChannelBoolean, value));
    } else {
        throw Error("the occlusion has occluder, channel, depth, lightDepth, radius, offscreenVisible, smoothing and "
                    "flashLimit, not \"" + std::string(field) + "\"");
    }
}

} // namespace

// Colours are shown in the 0-255 units they are typed in; channel colours
// hold 16-bit levels (scale 257).
std::string formatValue(const ChannelValue& value, double colorScale)
{
    if (const double* real = std::get_if<double>(&value))
        return formatNumber(*real);
    if (const bool* flag = std::get_if<bool>(&value))
        return *flag ? "on" : "off";
    if (const ChannelColor* color = std::get_if<ChannelColor>(&value))
        return formatNumber((*color)[0] / colorScale) + "," + formatNumber((*color)[1] / colorScale) + "," +
               formatNumber((*color)[2] / colorScale);
    return "-";
}

Assignment parseAssignment(std::string_view text)
{
    const auto equals = text.find('=');
    if (equals == std::string_view::npos)
        throw Error("\"" + std::string(text) + "\" is not NAME=VALUE or NAME@FRAME=VALUE");
    Assignment edit;
    std::string_view name = text.substr(0, equals);
    edit.value = std::string(trim(text.substr(equals + 1)));
    if (const auto at = name.rfind('@'); at != std::string_view::npos) {
        const auto frame = parseNumber<std::int32_t>(name.substr(at + 1));
        if (!frame || *frame < -1000000000 || *frame > 1000000000)
            throw Error("\"" + std::string(name.substr(at + 1)) + "\" after @ is not a frame number");
        edit.frame = *frame;
        name = name.substr(0, at);
    }
    edit.name = std::string(trim(name));
    if (edit.name.empty())
        throw Error("\"" + std::string(text) + "\" names nothing before the =");
    if (edit.value.empty())
        throw Error("\"" + std::string(text) + "\" gives no value after the =");
    return edit;
}

ChannelValue parseValue(std::uint32_t type, std::string_view text, int colorScale)
{
    const std::string_view value = trim(text);
    switch (type) {
    case kChannelReal:
        if (const auto number = parseNumber<double>(value))
            return *number;
        throw Error("\"" + std::string(value) + "\" is not a number");
    case kChannelBoolean:
        for (std::string_view on : {"true", "on", "yes", "1"})
            if (value == on)
                return true;
        for (std::string_view off : {"false", "off", "no", "0"})
            if (value == off)
                return false;
        throw Error("\"" + std::string(value) + "\" is not true or false (on/off, yes/no, 1/0)");
    case kChannelRGB:
        return parseColor(value, colorScale);
    default:
        throw Error("a " + channelTypeName(type) + " channel holds no value");
    }
}

void applyAssignment(Project& project, const Assignment& edit, const ChannelStore& channels)
{
    const std::string_view name = edit.name;
    try {
        if (name.starts_with("scene.")) {
            applyScene(project, name.substr(6), edit);
        } else if (name.starts_with("output.")) {
            applyOutput(project, name.substr(7), edit);
        } else if (name.starts_with("occlusion.")) {
            applyOcclusion(project, name.substr(10), edit);
        } else if (name.starts_with("light.")) {
            const std::string_view part = name.substr(6);
            Keys* keys = project.light.part(part);
            if (!keys)
                throw Error("the light has x, y, color, intensity, radius and rotation");
            const bool isColor = keys == &project.light.color;
            putKey(*keys, edit, project.firstFrame, parseValue(isColor ? kChannelRGB : kChannelReal, edit.value));
        } else {
            const Channel* channel = channels.find(name);
            if (!channel) {
                if (channels.ambiguous(name))
                    throw Error("several channels are named \"" + edit.name +
                                "\": give the group too, as in \"Group/" + edit.name + "\"");
                throw Error("the plug-in offers no channel \"" + edit.name + "\"");
            }
            if (!channel->hasValue())
                throw Error("\"" + channel->path + "\" is a heading and holds no value");
            ProjectChannel& target = project.channels[channel->path];
            target.type = channel->type;
            putKey(target.keys, edit, project.firstFrame, parseValue(channel->type, edit.value, 257));
        }
    } catch (const Error& problem) {
        const std::string at = edit.frame ? "@" + std::to_string(*edit.frame) : "";
        throw Error(ErrorPlace{"", 0, edit.name + at + "=" + edit.value}, problem.what());
    }
}

std::string describeProject(const Project& project)
{
    std::ostringstream out;
    out << "Scene: " << project.width << "x" << project.height << ", frames " << project.firstFrame << "-"
        << project.lastFrame << " at " << formatNumber(project.frameRate) << " fps\n";
    out << "Settings: " << (project.controlData.empty() ? std::string("the plug-in's defaults")
                                                        : std::to_string(project.controlData.size()) + " bytes")
        << "\n";
    out << "Light:\n";
    LightTrack light = project.light;
    const Light d;
    const std::pair<const char*, ChannelValue> parts[] = {
        {"x", d.x.value},
        {"y", d.y.value},
        {"color", ChannelColor{d.color.red, d.color.green, d.color.blue}},
        {"intensity", d.intensity},
        {"radius", d.radius.value},
        {"rotation", d.rotation}};
    for (const auto& [part, fallback] : parts) {
        const Keys& keys = *light.part(part);
        out << "  " << part << ":" << (keys.empty() ? "  " + formatValue(fallback) + " (default)" : formatKeys(keys))
            << "\n";
    }
    const OutputSettings& output = project.output;
    const auto orDefault = [](const std::string& text) { return text.empty() ? std::string("(default)") : text; };
    out << "Output: blend " << orDefault(output.blend) << ", exposure"
        << (output.exposure.empty() ? std::string(" 0 (default)") : formatKeys(output.exposure))
        << (output.flareOnly ? ", flare only" : "") << ", flare alpha " << orDefault(output.flareAlpha)
        << (output.passes ? ", with passes" : "") << "\n";
    if (!output.ocio.empty() || !output.inputColorspace.empty() || !output.workingColorspace.empty() ||
        !output.outputColorspace.empty())
        out << "Colour spaces: configuration " << orDefault(output.ocio) << ", input "
            << orDefault(output.inputColorspace) << ", working " << orDefault(output.workingColorspace) << ", output "
            << orDefault(output.outputColorspace) << "\n";
    const OcclusionSettings& occlusion = project.occlusion;
    if (!occlusion.occluder.empty() || !occlusion.depth.empty())
        out << "Occlusion: " << (occlusion.depth.empty() ? "matte " + occlusion.occluder + " (" +
                                                                orDefault(occlusion.channel) + ")"
                                                          : "depth " + occlusion.depth + " behind " +
                                                                formatNumber(occlusion.lightDepth))
            << ", smoothing " << occlusion.smoothing << ", flash limit " << (occlusion.flashLimit ? "on" : "off")
            << "\n";
    out << "Channels:" << (project.channels.empty() ? " none keyed, the settings hold\n" : "\n");
    for (const auto& [path, channel] : project.channels)
        out << "  " << path << " (" << channelTypeName(channel.type) << "):" << formatKeys(channel.keys, 257) << "\n";
    return out.str();
}

} // namespace korvane
