// ChannelStoreTest.cpp - values between keys, the channel requests, names
// and groups, and Glintwave's channels driven through the host.
#include "korvane/ChannelCalls.h"
#include "korvane/ChannelStore.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using korvane::ChannelColor;
using korvane::ChannelStore;
using korvane::ChannelValue;
using Keys = std::map<std::int32_t, ChannelValue>;

struct InterpolationCase {
    const char* what;
    std::uint32_t type;
    Keys keys;
    std::int32_t frame;
    ChannelValue expected;
};

TEST(ChannelInterpolation, BetweenAndBeyondKeys)
{
    const Keys reals{{10, 1.0}, {20, 3.0}, {30, -1.0}};
    const Keys colors{{1, ChannelColor{0, 1000, 65535}}, {5, ChannelColor{65535, 1001, 0}}};
    const Keys flags{{5, true}, {8, false}};
    const InterpolationCase cases[] = {
        {"no keys: the default", kChannelReal, {}, 7, 2.5},
        {"before the first key: held", kChannelReal, reals, -100, 1.0},
        {"on a key", kChannelReal, reals, 20, 3.0},
        {"halfway", kChannelReal, reals, 15, 2.0},
        {"falling segment", kChannelReal, reals, 25, 1.0},
        {"past the last key: held", kChannelReal, reals, 1000, -1.0},
        {"colour halfway rounds each level", kChannelRGB, colors, 3, ChannelColor{32768, 1001, 32768}},
        {"colour a quarter of the way", kChannelRGB, colors, 2, ChannelColor{16384, 1000, 49151}},
        {"bool before the first key", kChannelBoolean, flags, 1, true},
        {"bool steps, no blending", kChannelBoolean, flags, 7, true},
        {"bool at the next key", kChannelBoolean, flags, 8, false},
        {"bool past the last key", kChannelBoolean, flags, 99, false},
    };
    for (const InterpolationCase& c : cases)
        EXPECT_EQ(korvane::interpolate(c.type, c.keys, 2.5, c.frame), c.expected) << c.what;
}

// Requests as the plug-in sends them.
struct Requests {
    ChannelStore store;

    KVChannelRef add(std::int32_t id, std::uint32_t type, const char* name, const void* value = nullptr)
    {
        HostAddChannelRec record{};
        record.theChannelID = id;
        record.theChannelType = type;
        record.theChannelName[0] = static_cast<unsigned char>(std::strlen(name));
        std::memcpy(record.theChannelName + 1, name, record.theChannelName[0]);
        record.theChannelDefault = const_cast<void*>(value);
        EXPECT_EQ(store.answer(kHostAddChannel, &record), 0) << name;
        return record.theChannelReference;
    }
    std::int32_t set(KVChannelRef ref, std::int32_t id, std::uint32_t type, std::int32_t frame, const void* data)
    {
        HostSetChannelRec record{nullptr, ref, id, type, frame, const_cast<void*>(data)};
        return store.answer(kHostSetChannel, &record);
    }
    std::int32_t get(KVChannelRef ref, std::int32_t id, std::uint32_t type, std::int32_t frame, double& out)
    {
        HostGetChannelRec record{nullptr, ref, id, type, frame, nullptr};
        const std::int32_t result = store.answer(kHostGetChannel, &record);
        if (result == 0)
            std::memcpy(&out, record.theChannelData, sizeof out);
        return result;
    }
};

TEST(ChannelStore, RequestsGroupsAndNames)
{
    Requests host;
    const double scale = 1.0;
    const std::uint8_t visible = 1;
    host.add(1, kChannelLabel, "Glintwave");
    KVChannelRef ringScale = host.add(4, kChannelReal, "Ring Scale", &scale);
    host.add(15, kChannelLabelEnd, "");
    for (std::int32_t ring = 0; ring < 2; ring++) {
        host.add(16 + 6 * ring, kChannelLabel, "Reflection");
        host.add(17 + 6 * ring, kChannelBoolean, "Visible", &visible);
        host.add(18 + 6 * ring, kChannelReal, "Scale", &scale);
        host.add(21 + 6 * ring, kChannelLabelEnd, "");
    }
    std::vector<std::string> paths;
    for (const korvane::Channel& channel : host.store.channels())
        if (channel.type != kChannelLabelEnd)
            paths.push_back(channel.path);
    EXPECT_EQ(paths, (std::vector<std::string>{"Glintwave", "Glintwave/Ring Scale", "Reflection", "Reflection/Visible",
                                               "Reflection/Scale", "Reflection #2", "Reflection #2/Visible",
                                               "Reflection #2/Scale"}));
    EXPECT_NE(host.store.find("Ring Scale"), nullptr);
    EXPECT_EQ(host.store.find("Scale"), nullptr);
    EXPECT_TRUE(host.store.ambiguous("Scale"));
    EXPECT_EQ(host.store.find("Reflection #2/Scale")->id, 24);

    // Keys set by the plug-in come back interpolated, with ID and type echoed.
    const double two = 2.0, four = 4.0;
    ASSERT_EQ(host.set(ringScale, 4, kChannelReal, 0, &two), 0);
    ASSERT_EQ(host.set(ringScale, 4, kChannelReal, 10, &four), 0);
    double value = 0;
    ASSERT_EQ(host.get(ringScale, 4, kChannelReal, 5, value), 0);
    EXPECT_EQ(value, 3.0);

    struct Refused {
        const char* what;
        KVChannelRef ref;
        std::int32_t id;
        std::uint32_t type;
    };
    const Refused refused[] = {
        {"another ID", ringScale, 5, kChannelReal},
        {"another type", ringScale, 4, kChannelBoolean},
        {"no such reference", reinterpret_cast<KVChannelRef>(std::uintptr_t{999}), 4, kChannelReal},
        {"a heading", reinterpret_cast<KVChannelRef>(std::uintptr_t{1}), 1, kChannelLabel},
    };
    for (const Refused& r : refused) {
        EXPECT_EQ(host.get(r.ref, r.id, r.type, 0, value), 3) << r.what;
        EXPECT_EQ(host.set(r.ref, r.id, r.type, 0, &two), 3) << r.what;
    }
    EXPECT_EQ(host.set(ringScale, 4, kChannelReal, 0, nullptr), 3);

    // The C++ side keys by name and checks the kind of value.
    host.store.setKey("Ring Scale", 20, 8.0);
    EXPECT_EQ(host.store.valueAt("Glintwave/Ring Scale", 15), ChannelValue{6.0});
    EXPECT_THROW(host.store.setKey("Ring Scale", 1, true), korvane::Error);
    EXPECT_THROW(host.store.setKey("Scale", 1, 1.0), korvane::Error);
    EXPECT_THROW(host.store.valueAt("Nothing", 1), korvane::Error);

    // 'RCHN' drops everything; old references are refused from then on.
    HostResetChannelRec reset{nullptr};
    EXPECT_EQ(host.store.answer(kHostResetChannel, &reset), 0);
    EXPECT_TRUE(host.store.empty());
    EXPECT_EQ(host.get(ringScale, 4, kChannelReal, 5, value), 3);
}

TEST(ChannelStore, GlintwaveKeysReachItsSettings)
{
    korvane::PluginLibrary library(GLINTWAVE_PLUGIN_PATH);
    korvane::PluginInstance instance(library);
    ASSERT_EQ(instance.init(), 0);
    const korvane::ChannelRange range{1, 48, 0.0, 1.0 / 24};
    EXPECT_EQ(korvane::loadChannels(instance, range, 1), kPluginOutOfSequence);
    ASSERT_EQ(korvane::initializeChannels(instance, range), 0);
    const korvane::ChannelStore& store = instance.channels();
    ASSERT_GT(store.channels().size(), 15u);
    EXPECT_EQ(store.channels()[1].path, "Glintwave/Aspect Ratio");

    instance.channels().setKey("Ring Scale", 1, 0.5);
    instance.channels().setKey("Ring Scale", 48, 2.0);
    ASSERT_EQ(korvane::loadChannels(instance, range, 24), 0);
    double ringScale = 0;
    std::memcpy(&ringScale, instance.controlData().data() + 24, sizeof ringScale);  // flareRingScale
    EXPECT_DOUBLE_EQ(ringScale, 0.5 + 1.5 * 23.0 / 47.0);
    EXPECT_EQ(korvane::finishChannels(instance), 0);
}

} // namespace
