// The animation channels through Main: what 'ICHN' registers, what 'UCHN'
// keys, what 'LCHN' reads back, and the answers for out-of-order and foreign
// hosts.
#include "HostFixture.h"

#include <map>

namespace glintwave::testhost {
namespace {

struct AddedChannel {
    std::int32_t id;
    std::uint32_t type;
    std::string name;
    Bytes value;  // the default's bytes, as many as the type carries
};

std::size_t valueSize(std::uint32_t type)
{
    return type == kChannelReal ? 8 : type == kChannelBoolean ? 1 : type == kChannelRGB ? 6 : 0;
}

// A channel host of the simplest kind: every channel holds one value, the
// last one set, whatever the frame.
struct ChannelHost {
    std::vector<AddedChannel> added;
    std::vector<std::pair<std::int32_t, std::int32_t>> sets;  // (ID, frame)
    std::map<std::int32_t, Bytes> values;                     // by ID
    std::uint32_t echoTypeOverride = 0;                       // non-zero: 'GCHN' echoes this type

    std::int32_t answer(std::uint32_t selector, std::int32_t, void* record)
    {
        if (selector == kHostAddChannel) {
            auto* add = static_cast<HostAddChannelRec*>(record);
            const auto* bytes = static_cast<const std::uint8_t*>(add->theChannelDefault);
            const std::size_t size = bytes ? valueSize(add->theChannelType) : 0;
            added.push_back({add->theChannelID, add->theChannelType,
                             std::string(reinterpret_cast<const char*>(add->theChannelName + 1), add->theChannelName[0]),
                             Bytes(bytes, bytes + size)});
            values[add->theChannelID] = added.back().value;
            add->theChannelReference = reinterpret_cast<KVChannelRef>(static_cast<std::uintptr_t>(added.size()));
            return kPluginNoError;
        }
        auto* get = static_cast<HostGetChannelRec*>(record);
        if (selector == kHostSetChannel) {
            sets.emplace_back(get->theChannelID, get->theChannelFrame);
            const auto* bytes = static_cast<const std::uint8_t*>(get->theChannelData);
            values[get->theChannelID] = Bytes(bytes, bytes + valueSize(get->theChannelType));
            return kPluginNoError;
        }
        if (echoTypeOverride != 0)
            get->theChannelType = echoTypeOverride;
        get->theChannelData = values[get->theChannelID].data();
        return kPluginNoError;
    }
    template <class T>
    void put(std::int32_t id, const T& value)
    {
        values[id] = bytesOf(&value, sizeof value);
    }
};

class ChannelsTest : public HostTest {
protected:
    void SetUp() override
    {
        HostTest::SetUp();
        host.options.channelAnswer = [this](std::uint32_t s, std::int32_t n, void* r) { return channels.answer(s, n, r); };
        writeStandardStyle();
        ASSERT_EQ(host.init(), kPluginNoError);
    }
    std::int32_t initialize()
    {
        PluginInitializeChannelRec record{};
        return host.call(kCmdInitChannel, record);
    }
    std::int32_t update(std::int32_t start, std::int32_t end)
    {
        PluginUpdateChannelRec record{};
        record.theStartFrame = start;
        record.theEndFrame = end;
        return host.call(kCmdUpdateChannel, record);
    }
    std::int32_t load(std::int32_t frame)
    {
        PluginLoadChannelRec record{};
        record.theFrame = frame;
        return host.call(kCmdLoadChannel, record);
    }
    ChannelHost channels;
};

TEST_F(ChannelsTest, InitializeRegistersTheGlobalTableThenSixPerRing)
{
    ASSERT_EQ(initialize(), kPluginNoError);
    struct Expected {
        std::uint32_t type;
        const char* name;
    };
    const Expected table[] = {
        {kChannelLabel, "Glintwave"},       {kChannelReal, "Aspect Ratio"},       {kChannelReal, "Rotation"},
        {kChannelReal, "Ring Scale"},       {kChannelReal, "Ring Intensity"},     {kChannelReal, "Ring Contrast"},
        {kChannelRGB, "Origin Glow Color"}, {kChannelRGB, "Halo Color"},          {kChannelRGB, "Outer Glow Color"},
        {kChannelRGB, "Lens Reflection Color"}, {kChannelReal, "Streak Scale"},   {kChannelReal, "Streak Intensity"},
        {kChannelReal, "Streak Contrast"},  {kChannelRGB, "Streak Color"},        {kChannelLabelEnd, ""},
    };
    const char* ringNames[] = {"Origin Glow", "Halo", "Reflection"};
    const Expected ring[] = {{kChannelLabel, nullptr},   {kChannelBoolean, "Visible"}, {kChannelReal, "Scale"},
                             {kChannelReal, "Intensity"}, {kChannelRGB, "Color"},      {kChannelLabelEnd, ""}};
    ASSERT_EQ(channels.added.size(), 33u);
    for (std::size_t i = 0; i < 33; i++) {
        const Expected& want = i < 15 ? table[i] : ring[(i - 15) % 6];
        const std::string name = want.name ? want.name : ringNames[(i - 15) / 6];
        EXPECT_EQ(channels.added[i].id, static_cast<std::int32_t>(i + 1));
        EXPECT_EQ(channels.added[i].type, want.type) << i;
        EXPECT_EQ(channels.added[i].name, name) << i;
    }
    // Defaults are the current settings: 2.0 aspect ratio, white colours,
    // visible rings at their loaded scale.
    const ControlDataRec defaults = expectedDefaults();
    EXPECT_EQ(channels.added[1].value, bytesOf(&defaults.flareAspectRatio, 8));
    EXPECT_EQ(channels.added[6].value, Bytes(6, 0xFF));
    EXPECT_EQ(channels.added[16].value, Bytes{1});
    EXPECT_EQ(channels.added[29].id, 30);  // the third ring's "Scale"
    const double scale = host.rings()[2]->ringScale;
    EXPECT_EQ(channels.added[29].value, bytesOf(&scale, 8));
}

TEST_F(ChannelsTest, UpdateKeysEveryValueChannelOfEveryFrame)
{
    ASSERT_EQ(initialize(), kPluginNoError);
    EXPECT_EQ(update(5, 4), kPluginNoError);
    EXPECT_TRUE(channels.sets.empty());
    ASSERT_EQ(update(7, 8), kPluginNoError);
    ASSERT_EQ(channels.sets.size(), 2u * (13 + 3 * 4));
    EXPECT_EQ(channels.sets.front(), std::make_pair(2, 7));
    EXPECT_EQ(channels.sets.back(), std::make_pair(15 + 12 + 5, 8));
}

TEST_F(ChannelsTest, LoadReadsTheFrameIntoSettingsAndRings)
{
    EXPECT_EQ(load(1), kPluginOutOfSequence);
    ASSERT_EQ(initialize(), kPluginNoError);
    channels.put(4, 1.75);                                      // Ring Scale
    channels.put(8, RGB_Color{100, 200, 300});                  // Halo Color
    channels.put(15 + 6 + 2, std::uint8_t{0});                  // Halo ring: Visible
    channels.put(15 + 12 + 3, 0.5);                             // Reflection: Scale
    ASSERT_EQ(load(3), kPluginNoError);

    const ControlDataRec* control = host.controlHeader();
    EXPECT_EQ(copyOf(control->flareRingScale), 1.75);
    EXPECT_EQ(copyOf(control->flareHaloColor.red), 100);
    EXPECT_EQ(copyOf(control->flareHaloColor.blue), 300);
    EXPECT_EQ(copyOf(control->flareHaloColor.alpha), -1);  // not part of the channel
    const auto rings = host.rings();
    EXPECT_NE(rings[1]->ringMode & kElementOffMode, 0u);
    EXPECT_EQ(rings[0]->ringMode & kElementOffMode, 0u);
    EXPECT_EQ(rings[2]->ringScale, 0.5f);
    // The switched-off ring's saved override colour is zeros.
    const RingControl saved = readRingControl(host.control().data() + sizeof(ControlDataRec) + sizeof(RingControl));
    EXPECT_EQ(copyOf(saved.ringColor.red), 0);
    EXPECT_EQ(copyOf(saved.ringColor.alpha), 0);
}

TEST_F(ChannelsTest, ForeignAnswersAndEmptyStyles)
{
    ASSERT_EQ(initialize(), kPluginNoError);
    channels.echoTypeOverride = kChannelBoolean;
    EXPECT_EQ(load(1), kPluginIncompatible);

    PluginFinishChannelRec finish{};
    EXPECT_EQ(host.call(kCmdFinishChannel, finish), kPluginNoError);
}

using EmptyStyleChannelsTest = HostTest;

TEST_F(EmptyStyleChannelsTest, AStyleWithoutElementsGetsNoChannels)
{
    ChannelHost channels;
    host.options.channelAnswer = [&](std::uint32_t s, std::int32_t n, void* r) { return channels.answer(s, n, r); };
    writeEmptyStyle();
    ASSERT_EQ(host.init(), kPluginNoError);
    PluginInitializeChannelRec record{};
    EXPECT_EQ(host.call(kCmdInitChannel, record), kPluginNoError);
    EXPECT_TRUE(channels.added.empty());
    PluginLoadChannelRec loadRecord{};
    EXPECT_EQ(host.call(kCmdLoadChannel, loadRecord), kPluginNoError);  // nothing to load, so never out of sequence
}

} // namespace
} // namespace glintwave::testhost
