// ChannelStore.cpp - the channel requests of a plug-in instance and the
// values of its channels between keys.

#include "korvane/ChannelStore.h"

#include "korvane/Error.h"
#include "korvane/MacRoman.h"
#include "korvane/Spelling.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace korvane {
namespace {

std::size_t valueBytes(std::uint32_t type)
{
    switch (type) {
    case kChannelReal:    return 8;
    case kChannelBoolean: return 1;
    case kChannelRGB:     return 6;
    default:              return 0;
    }
}

bool knownType(std::uint32_t type)
{
    return type == kChannelLabel || type == kChannelLabelEnd || valueBytes(type) > 0;
}

// A value of `type` from the plug-in's bytes; null gives the type's zero.
ChannelValue decode(std::uint32_t type, const void* bytes)
{
    switch (type) {
    case kChannelReal: {
        double value = 0;
        if (bytes)
            std::memcpy(&value, bytes, sizeof value);
        return value;
    }
    case kChannelBoolean: {
        std::uint8_t value = 0;
        if (bytes)
            std::memcpy(&value, bytes, 1);
        return value != 0;
    }
    case kChannelRGB: {
        ChannelColor value{};
        if (bytes)
            std::memcpy(value.data(), bytes, sizeof value);
        return value;
    }
    default:
        return std::monostate{};
    }
}

void encode(const ChannelValue& value, std::uint8_t* out)
{
    if (const double* real = std::get_if<double>(&value))
        std::memcpy(out, real, sizeof *real);
    else if (const bool* flag = std::get_if<bool>(&value))
        out[0] = *flag ? 1 : 0;
    else if (const ChannelColor* color = std::get_if<ChannelColor>(&value))
        std::memcpy(out, color->data(), sizeof *color);
}

bool fitsType(std::uint32_t type, const ChannelValue& value)
{
    switch (type) {
    case kChannelReal:    return std::holds_alternative<double>(value);
    case kChannelBoolean: return std::holds_alternative<bool>(value);
    case kChannelRGB:     return std::holds_alternative<ChannelColor>(value);
    default:              return false;
    }
}

double lerp(double a, double b, double t)
{
    return a + (b - a) * t;
}

std::uint16_t lerpLevel(std::uint16_t a, std::uint16_t b, double t)
{
    const double level = std::round(lerp(a, b, t));
    return static_cast<std::uint16_t>(std::clamp(level, 0.0, 65535.0));
}

std::string fromPascal(const unsigned char* text)
{
    return macRomanToUtf8(std::string_view(reinterpret_cast<const char*>(text + 1), text[0]));
}

} // namespace

std::string channelTypeName(std::uint32_t type)
{
    std::string name(4, ' ');
    for (int i = 0; i < 4; i++) {
        const char c = static_cast<char>((type >> (24 - 8 * i)) & 0xFF);
        name[static_cast<std::size_t>(i)] = (c >= 0x20 && c < 0x7F) ? c : '?';
    }
    return name;
}

ChannelValue interpolate(std::uint32_t type, const std::map<std::int32_t, ChannelValue>& keys,
                         const ChannelValue& defaultValue, std::int32_t frame)
{
    if (keys.empty())
        return defaultValue;
    auto after = keys.lower_bound(frame);
    if (after != keys.end() && after->first == frame)
        return after->second;
    if (after == keys.begin())
        return after->second;         // before the first key: hold it
    auto before = std::prev(after);
    if (after == keys.end() || type == kChannelBoolean)
        return before->second;        // past the last key, or a step

    const double t = static_cast<double>(static_cast<std::int64_t>(frame) - before->first) /
                     static_cast<double>(static_cast<std::int64_t>(after->first) - before->first);
    if (type == kChannelReal)
        return lerp(std::get<double>(before->second), std::get<double>(after->second), t);
    const auto& a = std::get<ChannelColor>(before->second);
    const auto& b = std::get<ChannelColor>(after->second);
    return ChannelColor{lerpLevel(a[0], b[0], t), lerpLevel(a[1], b[1], t), lerpLevel(a[2], b[2], t)};
}

std::int32_t ChannelStore::answer(std::uint32_t selector, void* record)
{
    try {
        switch (selector) {
        case kHostAddChannel: return add(*static_cast<HostAddChannelRec*>(record));
        case kHostSetChannel: return set(*static_cast<HostSetChannelRec*>(record));
        case kHostGetChannel: return get(*static_cast<HostGetChannelRec*>(record));
        case kHostResetChannel: clear(); return kPluginNoError;
        default: return kPluginUnsupported;
        }
    } catch (const std::bad_alloc&) {
        return kPluginMemoryError;
    }
}

void ChannelStore::clear()
{
    channels_.clear();
    byHandle_.clear();
    openGroups_.clear();
}

std::int32_t ChannelStore::add(HostAddChannelRec& record)
{
    record.theChannelReference = nullptr;
    if (!knownType(record.theChannelType))
        return kPluginIncompatible;

    Channel channel;
    channel.id = record.theChannelID;
    channel.type = record.theChannelType;
    channel.name = fromPascal(record.theChannelName);
    channel.defaultValue = decode(channel.type, record.theChannelDefault);

    const std::string parent = openGroups_.empty() ? std::string() : openGroups_.back() + "/";
    if (channel.type == kChannelLabelEnd) {
        if (!openGroups_.empty())
            openGroups_.pop_back();
    } else {
        auto taken = [this](const std::string& path) {
            return std::any_of(channels_.begin(), channels_.end(), [&](const Channel& c) { return c.path == path; });
        };
        std::string path = parent + channel.name;
        for (int copy = 2; taken(path); copy++)
            path = parent + channel.name + " #" + std::to_string(copy);
        channel.path = path;
        if (channel.type == kChannelLabel)
            openGroups_.push_back(path);
    }

    const std::uintptr_t handle = nextHandle_++;
    byHandle_[handle] = channels_.size();
    channels_.push_back(std::move(channel));
    record.theChannelReference = reinterpret_cast<KVChannelRef>(handle);
    return kPluginNoError;
}

Channel* ChannelStore::byReference(KVChannelRef reference, std::int32_t id, std::uint32_t type)
{
    const auto found = byHandle_.find(reinterpret_cast<std::uintptr_t>(reference));
    if (found == byHandle_.end())
        return nullptr;
    Channel& channel = channels_[found->second];
    if (channel.id != id || channel.type != type || !channel.hasValue())
        return nullptr;
    return &channel;
}

std::int32_t ChannelStore::set(const HostSetChannelRec& record)
{
    Channel* channel = byReference(record.theChannelReference, record.theChannelID, record.theChannelType);
    if (!channel || !record.theChannelData)
        return kPluginIncompatible;
    channel->keys[record.theChannelFrame] = decode(channel->type, record.theChannelData);
    return kPluginNoError;
}

std::int32_t ChannelStore::get(HostGetChannelRec& record)
{
    Channel* channel = byReference(record.theChannelReference, record.theChannelID, record.theChannelType);
    if (!channel)
        return kPluginIncompatible;
    answer_.fill(0);
    encode(interpolate(channel->type, channel->keys, channel->defaultValue, record.theChannelFrame), answer_.data());
    record.theChannelData = answer_.data();
    return kPluginNoError;
}

const Channel* ChannelStore::find(std::string_view name) const
{
    // As given first; only when nothing matches, in either spelling.
    const std::string canonical = canonicalSpelling(name);
    for (const bool respelt : {false, true}) {
        if (respelt && canonical == name)
            break;
        const auto same = [&](const std::string& text) {
            return respelt ? canonicalSpelling(text) == canonical : text == name;
        };
        const Channel* byName = nullptr;
        int named = 0;
        for (const Channel& channel : channels_) {
            if (channel.type == kChannelLabelEnd)
                continue;
            if (same(channel.path))
                return &channel;
            if (same(channel.name)) {
                byName = &channel;
                named++;
            }
        }
        if (named > 0)
            return named == 1 ? byName : nullptr;
    }
    return nullptr;
}

bool ChannelStore::ambiguous(std::string_view name) const
{
    int named = 0;
    for (const Channel& channel : channels_) {
        if (channel.path == name && channel.type != kChannelLabelEnd)
            return false;
        if (channel.name == name && channel.type != kChannelLabelEnd)
            named++;
    }
    return named > 1;
}

Channel& ChannelStore::require(std::string_view name)
{
    return const_cast<Channel&>(std::as_const(*this).require(name));
}

const Channel& ChannelStore::require(std::string_view name) const
{
    if (const Channel* channel = find(name))
        return *channel;
    if (ambiguous(name))
        throw Error("channel name \"" + std::string(name) +
                    "\" is ambiguous: give its group too, as in \"Group/" + std::string(name) + "\"");
    throw Error("no channel named \"" + std::string(name) + "\"");
}

void ChannelStore::setKey(std::string_view name, std::int32_t frame, const ChannelValue& value)
{
    Channel& channel = require(name);
    if (!channel.hasValue())
        throw Error("channel \"" + channel.path + "\" is a heading and holds no value");
    if (!fitsType(channel.type, value))
        throw Error("channel \"" + channel.path + "\" holds a " + channelTypeName(channel.type) + " value");
    channel.keys[frame] = value;
}

void ChannelStore::clearKeys(std::string_view name)
{
    require(name).keys.clear();
}

ChannelValue ChannelStore::valueAt(std::string_view name, std::int32_t frame) const
{
    const Channel& channel = require(name);
    return interpolate(channel.type, channel.keys, channel.defaultValue, frame);
}

} // namespace korvane
