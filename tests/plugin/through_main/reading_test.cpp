// Reading a flare style from the table file: the table's groups, rings and
// streaks, their stops, the saved ring overrides, and every refusal.
#include <cmath>
#include <functional>

#include "HostFixture.h"

namespace glintwave::testhost {
namespace {

const std::int16_t kStyle1 = kFlareResBaseID + 1;

RingSpec namedRing(const char* name)
{
    RingSpec ring;
    ring.name = name;
    return ring;
}

struct TableCase {
    const char* name;
    std::function<void(FlareTableFolder&)> build;
    std::int32_t result;
    std::int32_t rings;
    std::int32_t streaks;
};

TEST_F(HostTest, TablesAreReadOrRefused)
{
    const TableCase cases[] = {
        {"one ring group and one streak group",
         [](FlareTableFolder& t) { t.addStandardStyle(); }, 0, 3, 1},
        {"FLAR of exactly 12 bytes holding its one entry",
         [](FlareTableFolder& t) {
             t.add(kRingResType, 10, ringResource(RingSpec{}));
             t.add(kFlareResType, kStyle1, flareInfoResource({{kRingResType, 10, 10}}));
         },
         0, 1, 0},
        {"FLAR of 12 bytes announcing two entries",
         [](FlareTableFolder& t) {
             t.add(kRingResType, 10, ringResource(RingSpec{}));
             t.add(kFlareResType, kStyle1, flareInfoResource({{kRingResType, 10, 10}}, 2));
         },
         6, 0, 0},
        {"FLAR shorter than 12 bytes",
         [](FlareTableFolder& t) { t.add(kFlareResType, kStyle1, flareInfoResource({})); },
         6, 0, 0},
        {"FLAR count whose entry list wraps 32 bits",
         [](FlareTableFolder& t) {
             t.add(kRingResType, 10, ringResource(RingSpec{}));
             t.add(kFlareResType, kStyle1, flareInfoResource({{kRingResType, 10, 10}}, 0x20000000));
         },
         6, 0, 0},
        {"FLAR with a negative count",
         [](FlareTableFolder& t) { t.add(kFlareResType, kStyle1, flareInfoResource({{kRingResType, 10, 10}}, -1)); },
         6, 0, 0},
        {"style missing", [](FlareTableFolder& t) { t.add(kRingResType, 10, ringResource(RingSpec{})); }, 6, 0, 0},
        {"unknown entry type skipped",
         [](FlareTableFolder& t) {
             t.add(kRingResType, 10, ringResource(RingSpec{}));
             t.add(kFlareResType, kStyle1,
                   flareInfoResource({{KV_FOURCC('X', 'X', 'X', 'X'), 1, 5}, {kRingResType, 10, 10}}));
         },
         0, 1, 0},
        {"group whose first id exceeds its last",
         [](FlareTableFolder& t) {
             t.add(kRingResType, 10, ringResource(RingSpec{}));
             t.add(kFlareResType, kStyle1, flareInfoResource({{kRingResType, 11, 10}, {kRingResType, 10, 10}}));
         },
         0, 1, 0},
        {"missing ring stops reading, earlier ones stay",
         [](FlareTableFolder& t) {
             t.add(kRingResType, 10, ringResource(RingSpec{}));
             t.add(kStreakResType, 20, streakResource(StreakSpec{}));
             t.add(kFlareResType, kStyle1,
                   flareInfoResource({{kStreakResType, 20, 20}, {kRingResType, 10, 12}, {kStreakResType, 20, 20}}));
         },
         6, 1, 1},
        {"ring shorter than its header",
         [](FlareTableFolder& t) {
             Bytes ring = ringResource(RingSpec{});
             ring.resize(59);
             t.add(kRingResType, 10, ring);
             t.add(kFlareResType, kStyle1, flareInfoResource({{kRingResType, 10, 10}}));
         },
         6, 0, 0},
        {"streak shorter than its header",
         [](FlareTableFolder& t) {
             Bytes streak = streakResource(StreakSpec{});
             streak.resize(67);
             t.add(kStreakResType, 20, streak);
             t.add(kFlareResType, kStyle1, flareInfoResource({{kStreakResType, 20, 20}}));
         },
         6, 0, 0},
        {"group over the whole id range stops at the first missing id",
         [](FlareTableFolder& t) {
             t.add(kRingResType, 1, ringResource(RingSpec{}));
             t.add(kFlareResType, kStyle1, flareInfoResource({{kRingResType, 1, 32767}}));
         },
         6, 1, 0},
        {"the same ring listed many times",
         [](FlareTableFolder& t) {
             t.add(kRingResType, 10, ringResource(RingSpec{}));
             t.add(kFlareResType, kStyle1,
                   flareInfoResource(std::vector<GroupSpec>(200, GroupSpec{kRingResType, 10, 10})));
         },
         0, 200, 0},
    };
    for (const TableCase& c : cases) {
        SCOPED_TRACE(c.name);
        FlareTableFolder folder;
        c.build(folder);
        folder.write();
        host.plugin().resize(0, true);
        host.control().resize(0, true);
        EXPECT_EQ(host.init(), c.result);
        ASSERT_NE(host.controlHeader(), nullptr);
        EXPECT_EQ(host.controlHeader()->flareRingCount, c.rings);
        EXPECT_EQ(host.controlHeader()->flareStreakCount, c.streaks);
        EXPECT_EQ(static_cast<std::int32_t>(host.rings().size()), c.rings);
        EXPECT_EQ(static_cast<std::int32_t>(host.streaks().size()), c.streaks);
    }
}

TEST_F(HostTest, RingsAreLinkedInIdOrderWithTheirValues)
{
    RingSpec ring = namedRing("Second");
    ring.type = kRingHalo;
    ring.mode = 0x80000003u;
    ring.units = 400;
    ring.offset = -200;
    ring.inside = 100;
    ring.outside = 300;
    table.add(kRingResType, 10, ringResource(namedRing("First")));
    table.add(kRingResType, 11, ringResource(ring));
    table.add(kRingResType, 12, ringResource(namedRing("Third")));
    table.add(kStreakResType, 20, streakResource(StreakSpec{}));
    table.add(kFlareResType, kStyle1, flareInfoResource({{kRingResType, 10, 12}, {kStreakResType, 20, 20}}));
    table.write();
    ASSERT_EQ(host.init(), kPluginNoError);

    const auto rings = host.rings();
    ASSERT_EQ(rings.size(), 3u);
    auto name = [](const RingElement* r) {
        return std::string(reinterpret_cast<const char*>(r->ringName + 1), r->ringName[0]);
    };
    EXPECT_EQ(name(rings[0]), "First");
    EXPECT_EQ(name(rings[1]), "Second");
    EXPECT_EQ(name(rings[2]), "Third");
    EXPECT_EQ(rings[2]->ringNext, 0);
    // Each element is followed directly by its stops, padded to 8 bytes.
    const auto* base = host.plugin().data();
    EXPECT_EQ(host.pluginHeader()->flareRingFirst, static_cast<std::int32_t>(sizeof(PluginDataRec)));
    EXPECT_EQ(rings[0]->ringNext, static_cast<std::int32_t>(sizeof(PluginDataRec) + sizeof(RingElement) + 24));
    EXPECT_EQ(reinterpret_cast<const std::uint8_t*>(rings[1]) - base, rings[0]->ringNext);

    EXPECT_EQ(rings[1]->ringType, kRingHalo);
    EXPECT_EQ(rings[1]->ringMode, 0x80000003u);
    EXPECT_EQ(rings[1]->ringPosition, static_cast<float>(-200 * (1.0 / 400)));
    EXPECT_EQ(rings[1]->ringInner, 0.25f);
    EXPECT_EQ(rings[1]->ringOuter, 0.75f);
    EXPECT_EQ(rings[1]->ringElementColors, 2);
    EXPECT_EQ(copyOf(rings[1]->ringLabelChannel), nullptr);
    EXPECT_EQ(copyOf(rings[1]->ringEndChannel), nullptr);
}

TEST_F(HostTest, StopsAreConvertedAndCutToWhatTheResourceHolds)
{
    struct Case {
        const char* name;
        std::optional<std::int32_t> declared;
        std::size_t held;
        std::int32_t used;
    };
    const Case cases[] = {
        {"declared as held", std::nullopt, 3, 3},
        {"declared more than held", 7, 3, 3},
        {"declared fewer than held", 1, 3, 1},
        {"declared negative", -4, 3, 0},
        {"exactly the 60-byte header", 5, 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        RingSpec ring;
        ring.outside = 200;
        ring.declaredStops = c.declared;
        const std::vector<StopSpec> stops = {{0, 1234, 65535, 32896, 0}, {50, 0xFFFF, 257, 256, 1}, {200, 0, 0, 0, 0}};
        ring.stops.assign(stops.begin(), stops.begin() + static_cast<std::ptrdiff_t>(c.held));
        FlareTableFolder folder;
        folder.add(kRingResType, 10, ringResource(ring));
        folder.add(kFlareResType, kStyle1, flareInfoResource({{kRingResType, 10, 10}}));
        folder.write();
        host.plugin().resize(0, true);
        ASSERT_EQ(host.init(), kPluginNoError);
        ASSERT_EQ(host.rings().size(), 1u);
        const RingElement* loaded = host.rings()[0];
        EXPECT_EQ(loaded->ringElementColors, c.used);
        if (c.used >= 2) {
            const ElementColor* stop = host.stopsOf(loaded);
            EXPECT_EQ(stop[0].rgb.radius, 0.0f);
            EXPECT_EQ(stop[0].rgb.alpha, 1234);
            EXPECT_EQ(stop[0].rgb.red, 16320);
            EXPECT_EQ(stop[0].rgb.green, 8192);
            EXPECT_EQ(stop[0].rgb.blue, 0);
            EXPECT_EQ(stop[1].rgb.radius, 0.25f);
            EXPECT_EQ(stop[1].rgb.red, 64);  // 257 x 64 / 257
            EXPECT_EQ(stop[1].rgb.green, 63);
            EXPECT_EQ(stop[1].rgb.blue, 0);
        }
    }
}

// A settings record with overrides for two rings and a style of three: the
// first two take theirs, the third is untinted at factors 1. Reading leaves
// the stored overrides as they are (big-endian).
TEST_F(HostTest, SavedOverridesApplyToTheRingsTheyWereSavedFor)
{
    table.addStandardStyle();
    table.write();
    ControlDataRec header = customControl();
    header.flareRingCount = 2;
    Bytes control = bytesOf(&header, sizeof header);
    const Bytes first = storedRingControl(0.5, 2.0, -1, 100, 200, 300);
    const Bytes second = storedRingControl(1.75, 0.25, 0, 0, 0, 0);
    control.insert(control.end(), first.begin(), first.end());
    control.insert(control.end(), second.begin(), second.end());
    host.control().assign(control);

    ASSERT_EQ(host.init(), kPluginNoError);
    const auto rings = host.rings();
    ASSERT_EQ(rings.size(), 3u);
    EXPECT_EQ(rings[0]->ringScale, 0.5f);
    EXPECT_EQ(rings[0]->ringIntensity, 2.0f);
    EXPECT_EQ(rings[0]->ringColor.red, 100);
    EXPECT_EQ(rings[0]->ringColor.blue, 300);
    EXPECT_EQ(rings[1]->ringScale, 1.75f);
    EXPECT_EQ(rings[1]->ringIntensity, 0.25f);
    EXPECT_EQ(rings[1]->ringColor.alpha, 0);
    EXPECT_EQ(rings[2]->ringScale, 1.0f);
    EXPECT_EQ(rings[2]->ringIntensity, 1.0f);
    EXPECT_EQ(rings[2]->ringColor.alpha, -1);
    EXPECT_EQ(rings[2]->ringColor.green, -1);
    const Bytes after = blockBytes(host.control());
    ASSERT_EQ(after.size(), control.size());
    EXPECT_TRUE(std::equal(after.begin() + 128, after.end(), control.begin() + 128))
        << "the stored overrides were changed";

    // The next command sizes the settings for three rings and writes every
    // ring's override back, big-endian; a switched-off ring saves no colour.
    const_cast<RingElement*>(rings[2])->ringMode |= kElementOffMode;
    ASSERT_EQ(host.setup(), kPluginNoError);
    ASSERT_EQ(host.control().size(), 128 + 3 * 24);
    const std::uint8_t* tail = host.control().data() + 128;
    const RingControl saved[3] = {readRingControl(tail), readRingControl(tail + 24), readRingControl(tail + 48)};
    EXPECT_EQ(saved[0].ringScale, 0.5);
    EXPECT_EQ(saved[0].ringColor.green, 200);
    EXPECT_EQ(saved[1].ringIntensity, 0.25);
    EXPECT_EQ(saved[2].ringScale, 1.0);
    EXPECT_EQ(saved[2].ringColor.alpha, 0);
    EXPECT_EQ(saved[2].ringColor.red, 0);
}

TEST_F(HostTest, MissingTableFileIsMemoryErrorAndRetriedLater)
{
    ASSERT_EQ(host.init(), kPluginMemoryError);
    ASSERT_EQ(host.setup(), kPluginMemoryError);
    table.addStandardStyle();
    table.write();
    EXPECT_EQ(host.setup(), kPluginNoError);
    EXPECT_EQ(host.rings().size(), 3u);

    // A damaged file is refused the same way.
    table.writeRaw(Bytes(100, 0xFF));
    EXPECT_EQ(host.init(), kPluginMemoryError);
}

TEST_F(HostTest, StyleNumbersThatCannotNameATableAreMissing)
{
    table.addStandardStyle();
    table.write();
    for (std::int32_t lens : {0, -1, 32767 - 999, 40000, INT32_MAX, INT32_MIN}) {
        SCOPED_TRACE(lens);
        ControlDataRec header = expectedDefaults();
        header.flareLens = lens;
        host.control().assign(bytesOf(&header, sizeof header));
        EXPECT_EQ(host.init(), kPluginResourceMissing);
    }
}

} // namespace
} // namespace glintwave::testhost
