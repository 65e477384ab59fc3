// Project.cpp - project files: reading with checks that name the line, the
// field and the reason; writing in a fixed, readable layout.

#include "korvane/Project.h"

#include "ProjectJson.h"
#include "korvane/Base64.h"
#include "korvane/ImageFile.h"
#include "korvane/Spelling.h"

#include <cmath>
#include <fstream>
#include <limits>
#include <set>
#include <sstream>

namespace korvane {
namespace {

using Json = nlohmann::json;
using OrderedJson = nlohmann::ordered_json;

constexpr char kFormatName[] = "glintwave-project";
// A settings block is a few kilobytes; anything far larger is not one.
constexpr std::size_t kMaxControlText = 16 * 1024 * 1024;
constexpr std::uintmax_t kMaxFileSize = 256 * 1024 * 1024;

const char* const kLightParts[] = {"x", "y", "color", "intensity", "radius", "rotation"};

// Reads a located document and refuses with the place of the offence.
class Reader {
public:
    Reader(const LocatedJson& located, std::string_view text, const std::string& source)
        : located_(located), text_(text), source_(source)
    {
    }

    [[noreturn]] void fail(const std::string& field, const std::string& reason) const
    {
        // A field that is missing has no place of its own: its parent's.
        std::string at = field;
        auto found = located_.offsets.find(at);
        while (found == located_.offsets.end() && !at.empty()) {
            const auto cut = at.find_last_of(".[");
            at = cut == std::string::npos ? std::string() : at.substr(0, cut);
            found = located_.offsets.find(at);
        }
        const std::size_t offset = found != located_.offsets.end() ? found->second : 0;
        const std::size_t line = lineAt(text_, offset > 0 ? offset - 1 : 0);
        throw Error(ErrorPlace{source_, static_cast<int>(line), field}, reason);
    }

    const Json& member(const Json& object, const std::string& parent, const std::string& key) const
    {
        const auto found = object.find(key);
        if (found == object.end())
            fail(fieldName(parent, key), "missing");
        return *found;
    }

    const Json& object(const Json& value, const std::string& field) const
    {
        if (!value.is_object())
            fail(field, "must be an object ({...})");
        return value;
    }

    void onlyKnown(const Json& object, const std::string& field, std::initializer_list<const char*> known) const
    {
        for (const auto& item : object.items()) {
            const std::string& key = item.key();
            if (std::none_of(known.begin(), known.end(), [&](const char* k) { return key == k; }))
                fail(fieldName(field, key), "unknown field");
        }
    }

    std::int64_t integer(const Json& value, const std::string& field, std::int64_t low, std::int64_t high) const
    {
        std::int64_t result = 0;
        if (value.is_number_integer())
            result = value.get<std::int64_t>();
        else if (value.is_number_unsigned())
            result = std::numeric_limits<std::int64_t>::max();
        else
            fail(field, "must be a whole number");
        if (result < low || result > high)
            fail(field, "must be a whole number from " + std::to_string(low) + " to " + std::to_string(high));
        return result;
    }

    double real(const Json& value, const std::string& field) const
    {
        if (!value.is_number())
            fail(field, "must be a number");
        const double result = value.get<double>();
        if (!std::isfinite(result))
            fail(field, "must be a finite number");
        return result;
    }

    ChannelValue channelValue(const Json& value, const std::string& field, std::uint32_t type, int colorMax) const
    {
        switch (type) {
        case kChannelReal:
            return real(value, field);
        case kChannelBoolean:
            if (!value.is_boolean())
                fail(field, "must be true or false");
            return value.get<bool>();
        default: {
            if (!value.is_array() || value.size() != 3)
                fail(field, "must be a color [red, green, blue]");
            ChannelColor color{};
            for (std::size_t i = 0; i < 3; i++)
                color[i] = static_cast<std::uint16_t>(integer(value[i], elementName(field, i), 0, colorMax));
            return color;
        }
        }
    }

    Keys keys(const Json& value, const std::string& field, std::uint32_t type, int colorMax) const
    {
        if (!value.is_array())
            fail(field, "must be a list of [frame, value] keys");
        Keys result;
        for (std::size_t i = 0; i < value.size(); i++) {
            const std::string key = elementName(field, i);
            const Json& pair = value[i];
            if (!pair.is_array() || pair.size() != 2)
                fail(key, "must be a [frame, value] key");
            const auto frame = static_cast<std::int32_t>(integer(pair[0], elementName(key, 0), kMinFrame, kMaxFrame));
            if (result.contains(frame))
                fail(key, "frame " + std::to_string(frame) + " is keyed twice");
            result[frame] = channelValue(pair[1], elementName(key, 1), type, colorMax);
        }
        return result;
    }

    static constexpr std::int64_t kMinFrame = -1000000000;
    static constexpr std::int64_t kMaxFrame = 1000000000;

private:
    const LocatedJson& located_;
    std::string_view text_;
    const std::string& source_;
};

std::uint32_t typeByName(const std::string& name)
{
    for (std::uint32_t type : {kChannelReal, kChannelBoolean, kChannelRGB})
        if (channelTypeName(type) == name)
            return type;
    return 0;
}

std::string text(const Json& value, const std::string& field, const Reader& in,
                 std::initializer_list<const char*> allowed = {})
{
    constexpr std::size_t kMostText = 4096;
    if (!value.is_string() || value.get_ref<const std::string&>().size() > kMostText)
        in.fail(field, "must be a text of at most " + std::to_string(kMostText) + " characters");
    const std::string& result = value.get_ref<const std::string&>();
    if (allowed.size() != 0 && !result.empty() &&
        std::none_of(allowed.begin(), allowed.end(), [&](const char* word) { return result == word; })) {
        std::string words;
        for (const char* word : allowed)
            words += (words.empty() ? "\"" : ", \"") + std::string(word) + "\"";
        in.fail(field, "must be one of " + words);
    }
    return result;
}

bool flag(const Json& value, const std::string& field, const Reader& in)
{
    if (!value.is_boolean())
        in.fail(field, "must be true or false");
    return value.get<bool>();
}

OutputSettings readOutput(const Json& value, const Reader& in)
{
    const Json& output = in.object(value, "scene.output");
    in.onlyKnown(output, "scene.output",
                 {"blend", "exposure", "flareOnly", "flareAlpha", "passes", "ocio", "inputColorspace",
                  "workingColorspace", "outputColorspace"});
    OutputSettings settings;
    const auto field = [](const char* name) { return std::string("scene.output.") + name; };
    if (output.contains("blend"))
        settings.blend = text(output["blend"], field("blend"), in, {"linear", "host"});
    if (output.contains("exposure"))
        settings.exposure = in.keys(output["exposure"], field("exposure"), kChannelReal, 0);
    if (output.contains("flareOnly"))
        settings.flareOnly = flag(output["flareOnly"], field("flareOnly"), in);
    if (output.contains("flareAlpha"))
        settings.flareAlpha = text(output["flareAlpha"], field("flareAlpha"), in, {"luminance", "zero"});
    if (output.contains("passes"))
        settings.passes = flag(output["passes"], field("passes"), in);
    const std::pair<const char*, std::string*> texts[] = {{"ocio", &settings.ocio},
                                                          {"inputColorspace", &settings.inputColorspace},
                                                          {"workingColorspace", &settings.workingColorspace},
                                                          {"outputColorspace", &settings.outputColorspace}};
    for (const auto& [name, target] : texts)
        if (output.contains(name))
            *target = text(output[name], field(name), in);
    return settings;
}

OcclusionSettings readOcclusion(const Json& value, const Reader& in)
{
    const Json& occlusion = in.object(value, "scene.occlusion");
    in.onlyKnown(occlusion, "scene.occlusion",
                 {"occluder", "channel", "depth", "lightDepth", "radius", "offscreenVisible", "smoothing",
                  "flashLimit"});
    OcclusionSettings settings;
    const auto field = [](const char* name) { return std::string("scene.occlusion.") + name; };
    if (occlusion.contains("occluder"))
        settings.occluder = text(occlusion["occluder"], field("occluder"), in);
    if (occlusion.contains("channel"))
        settings.channel = text(occlusion["channel"], field("channel"), in, {"alpha", "luma", "R", "G", "B"});
    if (occlusion.contains("depth"))
        settings.depth = text(occlusion["depth"], field("depth"), in);
    if (occlusion.contains("lightDepth"))
        settings.lightDepth = in.real(occlusion["lightDepth"], field("lightDepth"));
    if (occlusion.contains("radius")) {
        settings.radius = in.real(occlusion["radius"], field("radius"));
        if (settings.radius < 0)
            in.fail(field("radius"), "must be 0 (the light's) or above");
    }
    if (occlusion.contains("offscreenVisible"))
        settings.offscreenVisible = flag(occlusion["offscreenVisible"], field("offscreenVisible"), in);
    if (occlusion.contains("smoothing"))
        settings.smoothing = static_cast<std::int32_t>(in.integer(occlusion["smoothing"], field("smoothing"), 0, 48));
    if (occlusion.contains("flashLimit"))
        settings.flashLimit = flag(occlusion["flashLimit"], field("flashLimit"), in);
    if (!settings.occluder.empty() && !settings.depth.empty())
        in.fail(field("depth"), "gives a depth image beside an occluder; keep one");
    return settings;
}

Project readProject(const Json& root, const Reader& in)
{
    Project project;
    in.object(root, "");
    const Json& controlData = in.member(root, "", "controlData");
    if (!controlData.is_string() || controlData.get_ref<const std::string&>().size() > kMaxControlText)
        in.fail("controlData", "must be the settings block as base64 text");
    auto bytes = decodeBase64(controlData.get_ref<const std::string&>());
    if (!bytes)
        in.fail("controlData", "is not valid base64");
    project.controlData = std::move(*bytes);

    const Json& scene = in.object(in.member(root, "", "scene"), "scene");
    in.onlyKnown(scene, "scene",
                 {"width", "height", "firstFrame", "lastFrame", "frameRate", "light", "output", "occlusion"});
    project.width = static_cast<std::int32_t>(in.integer(in.member(scene, "scene", "width"), "scene.width", 1, 65535));
    project.height =
        static_cast<std::int32_t>(in.integer(in.member(scene, "scene", "height"), "scene.height", 1, 65535));
    project.firstFrame = static_cast<std::int32_t>(
        in.integer(in.member(scene, "scene", "firstFrame"), "scene.firstFrame", Reader::kMinFrame, Reader::kMaxFrame));
    project.lastFrame = static_cast<std::int32_t>(
        in.integer(in.member(scene, "scene", "lastFrame"), "scene.lastFrame", Reader::kMinFrame, Reader::kMaxFrame));
    if (project.lastFrame < project.firstFrame)
        in.fail("scene.lastFrame", "comes before scene.firstFrame");
    project.frameRate = in.real(in.member(scene, "scene", "frameRate"), "scene.frameRate");
    if (project.frameRate <= 0)
        in.fail("scene.frameRate", "must be above 0");

    if (scene.contains("light")) {
        const Json& light = in.object(scene["light"], "scene.light");
        in.onlyKnown(light, "scene.light", {"x", "y", "color", "colour", "intensity", "radius", "rotation"});
        if (light.contains("color") && light.contains("colour"))
            in.fail("scene.light.colour", "gives scene.light.color a second time");
        for (const auto& [key, keys] : light.items()) {
            const std::string field = fieldName("scene.light", key);
            const std::uint32_t type = canonicalSpelling(key) == "color" ? kChannelRGB : kChannelReal;
            *project.light.part(key) = in.keys(keys, field, type, 255);
        }
    }

    if (scene.contains("output"))
        project.output = readOutput(scene["output"], in);
    if (scene.contains("occlusion"))
        project.occlusion = readOcclusion(scene["occlusion"], in);

    const Json& channels = in.object(in.member(root, "", "channels"), "channels");
    for (const auto& [path, channel] : channels.items()) {
        const std::string field = fieldName("channels", path);
        in.object(channel, field);
        in.onlyKnown(channel, field, {"type", "keys"});
        const Json& typeName = in.member(channel, field, "type");
        const std::uint32_t type = typeName.is_string() ? typeByName(typeName.get<std::string>()) : 0;
        if (type == 0)
            in.fail(fieldName(field, "type"), "must be \"REAL\", \"BOOL\" or \"CRGB\"");
        ProjectChannel entry;
        entry.type = type;
        entry.keys = in.keys(in.member(channel, field, "keys"), fieldName(field, "keys"), type, 65535);
        if (!project.channels.emplace(canonicalSpelling(path), std::move(entry)).second)
            in.fail(field, "names the channel of another entry, spelt the other way");
    }
    return project;
}

OrderedJson valueJson(const ChannelValue& value)
{
    if (const double* real = std::get_if<double>(&value))
        return *real;
    if (const bool* flag = std::get_if<bool>(&value))
        return *flag;
    if (const ChannelColor* color = std::get_if<ChannelColor>(&value))
        return OrderedJson::array({(*color)[0], (*color)[1], (*color)[2]});
    return nullptr;
}

OrderedJson keysJson(const Keys& keys)
{
    OrderedJson list = OrderedJson::array();
    for (const auto& [frame, value] : keys)
        list.push_back(OrderedJson::array({frame, valueJson(value)}));
    return list;
}

// Objects one field per line; a list of lists one element per line; any
// other list on one line: keys read as "[48, 2.0]".
void writeJson(std::ostringstream& out, const OrderedJson& value, int indent)
{
    const std::string pad(static_cast<std::size_t>(indent + 2), ' ');
    const std::string closing(static_cast<std::size_t>(indent), ' ');
    if (value.is_object() && !value.empty()) {
        out << "{\n";
        std::size_t i = 0;
        for (const auto& [key, member] : value.items()) {
            out << pad << OrderedJson(key).dump() << ": ";
            writeJson(out, member, indent + 2);
            out << (++i < value.size() ? ",\n" : "\n");
        }
        out << closing << "}";
    } else if (value.is_array() && !value.empty() && value[0].is_array()) {
        out << "[\n";
        for (std::size_t i = 0; i < value.size(); i++) {
            out << pad;
            writeJson(out, value[i], indent + 2);
            out << (i + 1 < value.size() ? ",\n" : "\n");
        }
        out << closing << "]";
    } else if (value.is_array()) {
        out << "[";
        for (std::size_t i = 0; i < value.size(); i++) {
            out << (i ? ", " : "");
            writeJson(out, value[i], indent);
        }
        out << "]";
    } else {
        out << value.dump();
    }
}

} // namespace

Light LightTrack::at(std::int32_t frame) const
{
    const Light d;
    auto real = [&](const Keys& keys, double fallback) {
        return std::get<double>(interpolate(kChannelReal, keys, fallback, frame));
    };
    const ChannelColor white{d.color.red, d.color.green, d.color.blue};
    const auto rgb = std::get<ChannelColor>(interpolate(kChannelRGB, color, white, frame));
    Light light;
    light.x = Length{real(x, d.x.value)};
    light.y = Length{real(y, d.y.value)};
    light.color = Rgb8{static_cast<std::uint8_t>(rgb[0]), static_cast<std::uint8_t>(rgb[1]),
                       static_cast<std::uint8_t>(rgb[2])};
    light.intensity = real(intensity, d.intensity);
    light.radius = Length{real(radius, d.radius.value)};
    light.rotation = real(rotation, d.rotation);
    return light;
}

Keys* LightTrack::part(std::string_view name)
{
    if (name == "x") return &x;
    if (name == "y") return &y;
    if (name == "color" || name == "colour") return &color;
    if (name == "intensity") return &intensity;
    if (name == "radius") return &radius;
    if (name == "rotation") return &rotation;
    return nullptr;
}

double OutputSettings::exposureAt(std::int32_t frame) const
{
    return std::get<double>(interpolate(kChannelReal, exposure, 0.0, frame));
}

void upgradeProject(nlohmann::json& /*document*/, int fromVersion)
{
    // Each later format version adds the step from the one before here, so
    // that a file goes through every step from its own version on.
    switch (fromVersion) {
    case 1: return;  // 2 added scene.output, whose absence keeps the defaults
    default: throw Error("no upgrade from project format version " + std::to_string(fromVersion));
    }
}

std::string formatProject(const Project& project)
{
    OrderedJson root;
    root["format"] = kFormatName;
    root["version"] = Project::kFormatVersion;
    root["controlData"] = encodeBase64(project.controlData);
    OrderedJson& scene = root["scene"];
    scene["width"] = project.width;
    scene["height"] = project.height;
    scene["firstFrame"] = project.firstFrame;
    scene["lastFrame"] = project.lastFrame;
    scene["frameRate"] = project.frameRate;
    OrderedJson light = OrderedJson::object();
    LightTrack track = project.light;
    for (const char* part : kLightParts)
        if (!track.part(part)->empty())
            light[part] = keysJson(*track.part(part));
    scene["light"] = light;
    const OutputSettings& settings = project.output;
    OrderedJson output = OrderedJson::object();
    if (!settings.blend.empty())
        output["blend"] = settings.blend;
    if (!settings.exposure.empty())
        output["exposure"] = keysJson(settings.exposure);
    if (settings.flareOnly)
        output["flareOnly"] = true;
    if (!settings.flareAlpha.empty())
        output["flareAlpha"] = settings.flareAlpha;
    if (settings.passes)
        output["passes"] = true;
    const std::pair<const char*, const std::string*> texts[] = {{"ocio", &settings.ocio},
                                                                {"inputColorspace", &settings.inputColorspace},
                                                                {"workingColorspace", &settings.workingColorspace},
                                                                {"outputColorspace", &settings.outputColorspace}};
    for (const auto& [name, value] : texts)
        if (!value->empty())
            output[name] = *value;
    if (!output.empty())
        scene["output"] = output;
    const OcclusionSettings& hides = project.occlusion;
    OrderedJson occlusion = OrderedJson::object();
    if (!hides.occluder.empty())
        occlusion["occluder"] = hides.occluder;
    if (!hides.channel.empty())
        occlusion["channel"] = hides.channel;
    if (!hides.depth.empty())
        occlusion["depth"] = hides.depth;
    if (hides.lightDepth != 0)
        occlusion["lightDepth"] = hides.lightDepth;
    if (hides.radius != 0)
        occlusion["radius"] = hides.radius;
    if (hides.offscreenVisible)
        occlusion["offscreenVisible"] = true;
    if (hides.smoothing != 0)
        occlusion["smoothing"] = hides.smoothing;
    if (!hides.flashLimit)
        occlusion["flashLimit"] = false;
    if (!occlusion.empty())
        scene["occlusion"] = occlusion;
    OrderedJson channels = OrderedJson::object();
    for (const auto& [path, channel] : project.channels) {
        channels[path]["type"] = channelTypeName(channel.type);
        channels[path]["keys"] = keysJson(channel.keys);
    }
    root["channels"] = channels;

    std::ostringstream out;
    writeJson(out, root, 0);
    out << "\n";
    return out.str();
}

Project parseProject(std::string_view text, const std::string& sourceName)
{
    LocatedJson located = parseLocated(text, sourceName);
    const Reader in(located, text, sourceName);
    Json& root = located.document;
    if (!root.is_object())
        in.fail("", "not a Glintwave project: the file holds no JSON object");
    const auto format = root.find("format");
    if (format == root.end() || !format->is_string() || format->get<std::string>() != kFormatName)
        in.fail("format", "not a Glintwave project (\"format\" must be \"" + std::string(kFormatName) + "\")");
    const int version =
        static_cast<int>(in.integer(in.member(root, "", "version"), "version", 1, std::numeric_limits<int>::max()));
    if (version > Project::kFormatVersion)
        in.fail("version", "written by a newer Glintwave (format version " + std::to_string(version) +
                               "); this one reads up to version " + std::to_string(Project::kFormatVersion));
    for (int step = version; step < Project::kFormatVersion; step++)
        upgradeProject(root, step);
    in.onlyKnown(root, "", {"format", "version", "controlData", "scene", "channels"});
    return readProject(root, in);
}

Project loadProject(const std::filesystem::path& file)
{
    const std::string name = file.string();
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    if (error)
        throw Error(name + ": cannot read the project: " + error.message());
    if (size > kMaxFileSize)
        throw Error(name + ": too large to be a project (" + std::to_string(size) + " bytes)");
    std::ifstream in(file, std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (!in.good() && !in.eof())
        throw Error(name + ": cannot read the project");
    return parseProject(text, name);
}

void saveProject(const Project& project, const std::filesystem::path& file)
{
    const std::string text = formatProject(project);
    try {
        writeFileReplacing(file, std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
    } catch (const std::exception& failure) {
        throw Error(failure.what());
    }
}

void applyChannels(const Project& project, ChannelStore& store)
{
    for (const auto& [path, channel] : project.channels) {
        const Channel* target = store.find(path);
        if (!target || !target->hasValue())
            throw Error("channel \"" + path + "\": the plug-in offers no such channel");
        if (target->type != channel.type)
            throw Error("channel \"" + path + "\": the project keys a " + channelTypeName(channel.type) +
                        " value, the plug-in's channel holds " + channelTypeName(target->type));
        const std::string targetPath = target->path;
        store.clearKeys(targetPath);
        for (const auto& [frame, value] : channel.keys)
            store.setKey(targetPath, frame, value);
    }
}

void captureChannels(const ChannelStore& store, Project& project)
{
    project.channels.clear();
    for (const Channel& channel : store.channels())
        if (channel.hasValue() && !channel.keys.empty())
            project.channels[channel.path] = ProjectChannel{channel.type, channel.keys};
}

} // namespace korvane
