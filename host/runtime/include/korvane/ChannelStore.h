// ChannelStore.h - the animation channels a plug-in instance registers, with
// their keys per frame.
//
// A plug-in offers its animatable values through four host requests:
//   'ACHN'  registers a channel: the plug-in's ID, a type, a name and a
//           default. The answer is an opaque reference (a handle that is
//           never reused, so a reference kept past 'RCHN' is refused).
//   'SCHN'  keys a value at a frame (replacing a key at that frame).
//   'GCHN'  answers the value at a frame: the record's data pointer is set
//           to the store's copy (valid until the next request) and the ID
//           and type are echoed.
//   'RCHN'  drops every channel of the instance.
// A malformed request (unknown reference, another ID or type than the
// channel's, no data) answers 3.
//
// Values between keys: REAL and CRGB interpolate linearly between the keys
// on either side and hold the first and last key's value beyond them; a
// colour component is rounded to the nearest level. BOOL steps: the last
// key at or before the frame (before the first key, the first key). A
// channel without keys answers its default. LABL and LEND carry no value.
//
// Channels are grouped by their headings: a LABL opens a group, LEND closes
// the latest open one. A channel's path joins the open headings and its name
// with "/" ("Glintwave/Ring Scale", "Halo/Scale"); a heading whose path is
// taken already gets " #2", " #3", ... so every path is unique. find()
// accepts a whole path or a name that only one channel has.
#pragma once

#include "KVPluginAPI.h"

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace korvane {

using ChannelColor = std::array<std::uint16_t, 3>;  // red, green, blue

// No value (LABL, LEND), a REAL, a BOOL or a CRGB.
using ChannelValue = std::variant<std::monostate, double, bool, ChannelColor>;

struct Channel {
    std::int32_t id = 0;
    std::uint32_t type = 0;   // kChannelLabel, ... (four-character code)
    std::string name;         // UTF-8
    std::string path;         // unique within the store
    ChannelValue defaultValue;
    std::map<std::int32_t, ChannelValue> keys;  // by frame

    bool hasValue() const { return type == kChannelReal || type == kChannelBoolean || type == kChannelRGB; }
};

// "REAL" for kChannelReal.
std::string channelTypeName(std::uint32_t type);

// The value a channel of `type` has at `frame` given its keys and default.
ChannelValue interpolate(std::uint32_t type, const std::map<std::int32_t, ChannelValue>& keys,
                         const ChannelValue& defaultValue, std::int32_t frame);

class ChannelStore {
public:
    // Answers 'ACHN', 'SCHN', 'GCHN' and 'RCHN' (the record at least the
    // size of its type; the caller checks that). Never throws.
    std::int32_t answer(std::uint32_t selector, void* record);

    const std::vector<Channel>& channels() const { return channels_; }
    bool empty() const { return channels_.empty(); }
    void clear();

    // The channel with this path, or the only channel with this name, as
    // given or else in either spelling (Spelling.h: "Halo/Colour" finds
    // "Halo/Color"); null when there is none. ambiguous() tells a name
    // several have.
    const Channel* find(std::string_view name) const;
    bool ambiguous(std::string_view name) const;

    // Keys a value: its kind must match the channel's type (a double for
    // REAL, bool for BOOL, a colour for CRGB). Throws Error
    // naming the channel otherwise, or when the channel has no value.
    void setKey(std::string_view name, std::int32_t frame, const ChannelValue& value);
    // Drops every key of the channel, so it answers its default.
    void clearKeys(std::string_view name);
    // Throws Error when there is no such channel.
    ChannelValue valueAt(std::string_view name, std::int32_t frame) const;

private:
    std::int32_t add(HostAddChannelRec& record);
    std::int32_t set(const HostSetChannelRec& record);
    std::int32_t get(HostGetChannelRec& record);
    Channel* byReference(KVChannelRef reference, std::int32_t id, std::uint32_t type);
    Channel& require(std::string_view name);
    const Channel& require(std::string_view name) const;

    std::vector<Channel> channels_;
    std::map<std::uintptr_t, std::size_t> byHandle_;  // reference -> index
    std::uintptr_t nextHandle_ = 1;
    std::vector<std::string> openGroups_;  // paths of the headings not yet closed
    alignas(8) std::array<std::uint8_t, 8> answer_{};  // the data a 'GCHN' points at
};

} // namespace korvane
