// Settings blocks, working blocks and table files of any content: each
// command gives a documented result code or draws a flare, and never reads
// or writes outside what it was given (run under the sanitizers too).
#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include "HostFixture.h"

namespace glintwave::testhost {
namespace {

const std::int16_t kStyle1 = kFlareResBaseID + 1;
const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

Bytes randomBytes(std::size_t size, unsigned seed)
{
    std::mt19937 random(seed);
    Bytes out(size);
    for (std::uint8_t& byte : out)
        byte = static_cast<std::uint8_t>(random());
    return out;
}

Bytes control(const ControlDataRec& header, std::size_t tailBytes = 0, std::uint8_t fill = 0)
{
    Bytes out = bytesOf(&header, sizeof header);
    out.resize(out.size() + tailBytes, fill);
    return out;
}

ControlDataRec withDoubles(double value)
{
    ControlDataRec header = expectedDefaults();
    for (double* field : {&header.flareAspectRatio, &header.flareRotation, &header.flareRingScale,
                          &header.flareRingIntensity, &header.flareRingContrast, &header.flareStreakScale,
                          &header.flareStreakIntensity, &header.flareStreakContrast})
        *field = value;
    header.flareFlags = 0x80000000u;  // use the aspect ratio
    return header;
}

ControlDataRec withRings(std::int32_t count)
{
    ControlDataRec header = expectedDefaults();
    header.flareRingCount = count;
    return header;
}

// Rendering results allowed here: 0, or 1 when an element's colour ramp
// (one entry per pixel of its radius) does not fit the working memory, as
// happens for elements with absurd sizes that still touch the frame.
bool drawnOrOutOfMemory(std::int32_t result)
{
    return result == kPluginNoError || result == kPluginMemoryError;
}

class HostileTest : public HostTest {
protected:
    // A smaller offer keeps the many rebuilds quick; absurd elements then
    // run out of it sooner, which is one of the allowed answers.
    void SetUp() override
    {
        HostTest::SetUp();
        host.options.freeBudget = 8 * 1024 * 1024;
    }

    // Sets up a frame and paints it at both depths.
    void drawFrame()
    {
        FrameSetup frame;
        const std::int32_t setup = host.setup(frame);
        EXPECT_TRUE(drawnOrOutOfMemory(setup)) << "setup " << setup;
        const std::size_t pixels = static_cast<std::size_t>(frame.frame.width) * frame.frame.height;
        std::vector<std::uint16_t> deep(pixels * 3);
        const std::int32_t deepResult =
            host.generate(deep.data(), static_cast<std::int32_t>(frame.frame.width * 6), frame.frame, 48);
        EXPECT_TRUE(drawnOrOutOfMemory(deepResult)) << "48-bit " << deepResult;
        std::vector<std::uint32_t> packed(pixels);
        const std::int32_t packedResult =
            host.generate(packed.data(), static_cast<std::int32_t>(frame.frame.width * 4), frame.frame, 32);
        EXPECT_TRUE(drawnOrOutOfMemory(packedResult)) << "32-bit " << packedResult;
    }
};

struct ControlCase {
    const char* name;
    Bytes block;
};

// Any settings block: replaced by defaults or taken as it is, then a flare
// is drawn.
TEST_F(HostileTest, AnySettingsBlockGivesAFlare)
{
    writeStandardStyle();
    ControlDataRec swappedType = expectedDefaults();
    swappedType.ownerType = kFlareOwnerTypeSwapped;  // with a native version: taken, not fixed
    std::vector<ControlCase> cases = {
        {"NaN everywhere", control(withDoubles(kNaN))},
        {"infinities", control(withDoubles(kInf))},
        {"huge values", control(withDoubles(1e300))},
        {"negative values", control(withDoubles(-3.5))},
        {"zeros", control(withDoubles(0.0))},
        {"ring count 3, block of 128", control(withRings(3))},
        {"ring count 3, tail of NaNs", control(withRings(3), 72, 0xFF)},
        {"ring count 1000, block of 128", control(withRings(1000))},
        {"ring count -1", control(withRings(-1))},
        {"ring count INT32_MIN", control(withRings(INT32_MIN))},
        {"ring count INT32_MAX", control(withRings(INT32_MAX))},
        {"type swapped, version native", control(swappedType)},
        {"ring and streak counts lying in a v5", Bytes(144, 0x7F)},
    };
    for (unsigned seed = 1; seed <= 12; seed++) {
        Bytes bytes = randomBytes(seed * 37 % 400, seed);
        if (seed % 3 == 0 && bytes.size() >= 8) {
            // Random settings that claim to be ours.
            put(bytes, 0, static_cast<std::uint32_t>(kFlareOwnerType));
            put(bytes, 4, static_cast<std::int32_t>(6 - seed % 2));
        }
        cases.push_back({"random", bytes});
    }
    for (const ControlCase& c : cases) {
        SCOPED_TRACE(std::string(c.name) + ", " + std::to_string(c.block.size()) + " bytes");
        host.control().assign(c.block);
        host.plugin().clear();
        const std::int32_t result = host.init();
        // A settings record of ours may name a style that does not exist.
        if (result == kPluginResourceMissing) {
            ASSERT_NE(host.controlHeader(), nullptr);
            EXPECT_NE(host.controlHeader()->flareLens, 1);
            continue;
        }
        ASSERT_EQ(result, kPluginNoError);
        ASSERT_NE(host.controlHeader(), nullptr);
        EXPECT_EQ(host.controlHeader()->ownerVersion, 6);
        drawFrame();
        EXPECT_EQ(host.control().size(),
                  static_cast<std::int32_t>(128 + 24 * host.controlHeader()->flareRingCount));
    }
}

// Sizes in the info record that do not describe the blocks: a negative
// settings size reads as no settings, a negative working size as no working
// data.
TEST_F(HostileTest, NegativeBlockSizesReadAsNoBlock)
{
    writeStandardStyle();
    host.control().assign(control(customControl()));
    PluginInitializeRec record{};
    record.theInfo = host.infoRecord();
    record.theInfo.theControlDataSize = -5;
    ASSERT_EQ(host.callRaw(kCmdInitialize, sizeof record, &record), kPluginNoError);
    expectSameControl(*host.controlHeader(), [] {
        ControlDataRec expected = expectedDefaults();
        expected.flareRingCount = 3;
        expected.flareStreakCount = 1;
        return expected;
    }());

    host.control().assign(control(customControl()));
    host.plugin().clear();
    record.theInfo = host.infoRecord();
    record.theInfo.thePluginDataSize = INT32_MIN;
    ASSERT_EQ(host.callRaw(kCmdInitialize, sizeof record, &record), kPluginNoError);
    EXPECT_EQ(host.controlHeader()->flareAspectRatio, customControl().flareAspectRatio);
    EXPECT_EQ(host.rings().size(), 3u);
    drawFrame();
}

struct TableCase {
    const char* name;
    Bytes ring;
    Bytes streak;
};

Bytes ringWith(std::function<void(RingSpec&)> change)
{
    RingSpec ring;
    change(ring);
    return ringResource(ring);
}

Bytes streakWith(std::function<void(StreakSpec&)> change)
{
    StreakSpec streak;
    change(streak);
    return streakResource(streak);
}

// Elements whose values lie: loaded and drawn without a fault.
TEST_F(HostileTest, AnyElementValuesDrawWithoutFault)
{
    const TableCase cases[] = {
        {"units 0", ringWith([](RingSpec& r) { r.units = 0; }), streakWith([](StreakSpec& s) { s.units = 0; })},
        {"units -1", ringWith([](RingSpec& r) { r.units = -1; }), streakWith([](StreakSpec& s) { s.units = -1; })},
        {"outside 0", ringWith([](RingSpec& r) { r.outside = 0; }), streakWith([](StreakSpec& s) { s.outside = 0; })},
        {"extreme sizes",
         ringWith([](RingSpec& r) {
             r.units = 1;
             r.offset = INT32_MIN;
             r.inside = INT32_MAX;
             r.outside = INT32_MAX;
         }),
         streakWith([](StreakSpec& s) {
             s.units = 1;
             s.offset = INT32_MAX;
             s.outside = INT32_MAX;
             s.dirX = INT32_MAX;
         })},
        {"huge radius, tiny units",
         ringWith([](RingSpec& r) {
             r.units = 1;
             r.outside = 100000;
             r.stops = {{0, 0xFFFF, 65535, 65535, 65535}, {100000, 0xFFFF, 0, 0, 0}};
         }),
         streakResource(StreakSpec{})},
        {"stop counts lying",
         ringWith([](RingSpec& r) { r.declaredStops = INT32_MAX; }),
         streakWith([](StreakSpec& s) { s.declaredStops = INT32_MIN; })},
        {"stops out of order and beyond the element",
         ringWith([](RingSpec& r) {
             r.stops = {{500, 0, 1, 2, 3}, {-7, 0xFFFF, 65535, 0, 0}, {INT32_MAX, 1, 65535, 65535, 65535}};
         }),
         streakWith([](StreakSpec& s) { s.stops = {{INT32_MIN, 0xFFFF, 65535, 65535, 65535}}; })},
        {"no stops", ringWith([](RingSpec& r) { r.stops.clear(); }),
         streakWith([](StreakSpec& s) { s.stops.clear(); })},
        {"every ring kind and mode",
         ringWith([](RingSpec& r) {
             r.type = 7;
             r.mode = 0xFFFFFFFFu;
         }),
         streakWith([](StreakSpec& s) { s.mode = 0x7FFFFFFFu; })},
    };
    for (const TableCase& c : cases) {
        SCOPED_TRACE(c.name);
        for (std::int32_t kind : {kRingReflection, kRingOriginGlow, kRingOuterGlow, kRingHalo}) {
            Bytes ring = c.ring;
            put(ring, 32, static_cast<std::uint32_t>(__builtin_bswap32(static_cast<std::uint32_t>(kind))));
            FlareTableFolder folder;
            folder.add(kRingResType, 10, ring);
            folder.add(kStreakResType, 20, c.streak);
            folder.add(kFlareResType, kStyle1, flareInfoResource({{kRingResType, 10, 10}, {kStreakResType, 20, 20}}));
            folder.write();
            host.plugin().clear();
            ASSERT_EQ(host.init(), kPluginNoError);
            EXPECT_EQ(host.rings().size(), 1u);
            EXPECT_EQ(host.streaks().size(), 1u);
            drawFrame();
        }
    }
}

// Table files of random bytes, or with random element records: refused with
// a documented code, or read and drawn.
TEST_F(HostileTest, RandomTablesAreRefusedOrDrawn)
{
    for (unsigned seed = 1; seed <= 24; seed++) {
        SCOPED_TRACE(seed);
        FlareTableFolder folder;
        std::int32_t allowed;
        if (seed % 4 == 0) {
            folder.writeRaw(randomBytes(seed * 50, seed));
            allowed = kPluginMemoryError;  // the file cannot be opened
        } else {
            std::mt19937 random(seed);
            folder.add(kRingResType, 10, randomBytes(random() % 200, seed + 100));
            folder.add(kRingResType, 11, randomBytes(60 + random() % 100, seed + 200));
            folder.add(kStreakResType, 20, randomBytes(68 + random() % 100, seed + 300));
            Bytes info = randomBytes(4 + random() % 40, seed + 400);
            if (seed % 2 == 0)
                info = flareInfoResource({{kRingResType, 10, 11}, {kStreakResType, 20, 20}});
            folder.add(kFlareResType, kStyle1, info);
            folder.write();
            allowed = kPluginResourceMissing;
        }
        host.plugin().clear();
        host.control().clear();
        const std::int32_t result = host.init();
        EXPECT_TRUE(result == kPluginNoError || result == allowed) << "result " << result;
        if (result == kPluginNoError)
            drawFrame();
    }
}

// A working block whose header looks settled but whose element links point
// anywhere: following them must stay inside the block.
TEST_F(HostileTest, PokedElementLinksStayInsideTheBlock)
{
    writeStandardStyle();
    const std::int32_t header = static_cast<std::int32_t>(sizeof(PluginDataRec));
    const std::int32_t offsets[] = {0, 1, 2, -4, INT32_MAX, INT32_MIN, 100000000, header + 3};
    for (std::int32_t offset : offsets) {
        SCOPED_TRACE(offset);
        host.plugin().clear();
        ASSERT_EQ(host.init(), kPluginNoError);
        auto rings = host.rings();
        ASSERT_EQ(rings.size(), 3u);
        const_cast<RingElement*>(rings[1])->ringNext = offset;
        const_cast<StreakElement*>(host.streaks()[0])->streakNext = offset;
        host.pluginHeader()->flareReset = 1;
        drawFrame();

        // And the settings written back from such a chain stay inside their block.
        host.pluginHeader()->flareRingFirst = offset;
        host.controlHeader()->flareRingCount = 5;
        drawFrame();
    }
}

} // namespace
} // namespace glintwave::testhost
