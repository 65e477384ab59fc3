// The settings block as the host hands it over: recognised, upgraded from
// versions 4 and 5, byte-order fixed, or replaced by defaults; and sized to
// its header plus one ring override per ring.
#include <bit>
#include <cmath>

#include "HostFixture.h"

namespace glintwave::testhost {
namespace {

Bytes nativeV6(const ControlDataRec& control)
{
    return bytesOf(&control, sizeof control);
}

// A version 6 header as a machine of the other byte order writes it.
Bytes reversedV6(const ControlDataRec& control)
{
    Bytes out = nativeV6(control);
    auto reverse = [&](std::size_t offset, std::size_t width) {
        std::reverse(out.begin() + static_cast<std::ptrdiff_t>(offset),
                     out.begin() + static_cast<std::ptrdiff_t>(offset + width));
    };
    reverse(0, 4);
    reverse(4, 4);
    for (std::size_t offset = 8; offset < 72; offset += 8)
        reverse(offset, 8);
    for (std::size_t offset = 72; offset < 112; offset += 2)
        reverse(offset, 2);
    for (std::size_t offset = 112; offset < 128; offset += 4)
        reverse(offset, 4);
    return out;
}

// Version 5 of the custom settings, with three rings announced.
Bytes version5(std::size_t size)
{
    const ControlDataRec c = customControl();
    OldControlDataRec old;
    std::memset(&old, 0x77, sizeof old);
    old.ownerType = kFlareOwnerType;
    old.ownerVersion = 5;
    old.flareAspectRatio = c.flareAspectRatio;
    old.flareRotation = c.flareRotation;
    old.flareRingScale = c.flareRingScale;
    old.flareRingIntensity = c.flareRingIntensity;
    old.flareRingContrast = c.flareRingContrast;
    old.flareStreakScale = c.flareStreakScale;
    old.flareStreakIntensity = c.flareStreakIntensity;
    old.flareStreakContrast = c.flareStreakContrast;
    old.flareFlags = c.flareFlags;
    old.flareLens = c.flareLens;
    old.flareRingCount = 3;
    old.flareRingColor = c.flareRingColor;
    old.flareOriginGlowColor = c.flareOriginGlowColor;
    old.flareOuterGlowColor = c.flareOuterGlowColor;
    old.flareHaloColor = c.flareHaloColor;
    old.flareStreakCount = 2;
    old.flareStreakColor = c.flareStreakColor;
    Bytes out = bytesOf(&old, sizeof old);
    out.resize(size);
    return out;
}

// Version 4 of the custom settings, at its unaligned offsets. Version 4 has
// no alpha: the upgrade makes it 0xFFFF.
Bytes version4()
{
    const ControlDataRec c = customControl();
    Bytes out(128, 0x66);
    put(out, 0, static_cast<std::uint32_t>(kFlareOwnerType));
    put(out, 4, static_cast<std::int32_t>(4));
    put(out, 8, c.flareFlags);
    put(out, 12, static_cast<std::int16_t>(c.flareLens));
    put(out, 14, c.flareAspectRatio);
    put(out, 22, c.flareRotation);
    put(out, 30, c.flareRingScale);
    put(out, 38, c.flareRingIntensity);
    put(out, 46, c.flareRingContrast);
    auto rgb = [&](std::size_t offset, const ARGB_Color& color) {
        put(out, offset, color.red);
        put(out, offset + 2, color.green);
        put(out, offset + 4, color.blue);
    };
    rgb(58, c.flareRingColor);
    rgb(64, c.flareOriginGlowColor);
    rgb(70, c.flareHaloColor);
    rgb(76, c.flareOuterGlowColor);
    put(out, 86, c.flareStreakScale);
    put(out, 94, c.flareStreakIntensity);
    put(out, 102, c.flareStreakContrast);
    rgb(110, c.flareStreakColor);
    return out;
}

Bytes withTypeAndVersion(std::uint32_t type, std::int32_t version)
{
    ControlDataRec control = customControl();
    control.ownerType = type;
    control.ownerVersion = version;
    return nativeV6(control);
}

Bytes withRingCount(std::int32_t count)
{
    ControlDataRec control = customControl();
    control.flareRingCount = count;
    return nativeV6(control);
}

Bytes shortened(Bytes bytes, std::size_t size)
{
    bytes.resize(size);
    return bytes;
}

struct SettingsCase {
    const char* name;
    Bytes block;
    bool upgraded;       // the custom values survive
    bool channelsReset;  // 'RCHN' was sent: the settings were replaced
};

// Run with a style of no elements, so that the counts seen afterwards are
// the settings check's own and the block ends at 128 bytes.
TEST_F(HostTest, SettingsAreUpgradedFixedOrReplaced)
{
    writeEmptyStyle();
    const SettingsCase cases[] = {
        {"native v6", nativeV6(customControl()), true, false},
        {"reversed v6", reversedV6(customControl()), true, false},
        {"v5 of 144 bytes", version5(144), true, false},
        {"v5 of only 128 bytes", version5(128), false, true},
        {"v4", version4(), true, false},
        {"v4 of 127 bytes", shortened(version4(), 127), false, true},
        {"reversed v5", withTypeAndVersion(kFlareOwnerTypeSwapped, 0x05000000), false, true},
        {"FLAR v7", withTypeAndVersion(kFlareOwnerType, 7), false, true},
        {"foreign type", withTypeAndVersion(KV_FOURCC('L', 'E', 'N', 'S'), 6), false, true},
        {"empty", Bytes{}, false, true},
        {"seven bytes", Bytes(7, 0), false, true},
        {"negative ring count", withRingCount(-1), false, true},
        {"ring count beyond any block", withRingCount(INT32_MAX / 24), false, true},
    };
    for (const SettingsCase& c : cases) {
        SCOPED_TRACE(c.name);
        host.control().assign(c.block);
        host.plugin().resize(0, true);
        host.clearLog();
        ASSERT_EQ(host.init(), kPluginNoError);

        ASSERT_EQ(host.control().size(), 128);
        const ControlDataRec expected = c.upgraded ? customControl() : expectedDefaults();
        expectSameControl(*host.controlHeader(), expected);
        EXPECT_EQ(host.requestCount(kHostResetChannel), c.channelsReset ? 1 : 0);
    }
}

TEST_F(HostTest, ReversedVersion6IsFixedInPlaceWithoutReallocation)
{
    writeEmptyStyle();
    host.control().assign(reversedV6(customControl()));
    ASSERT_EQ(host.init(), kPluginNoError);
    ASSERT_GT(host.requestCount(kHostAllocate), 0);
    // Every request kept the settings block at its size: only the working
    // block was sized.
    for (const AllocationRequest& request : host.allocationRequests())
        EXPECT_EQ(request.controlSize, 128);
    expectSameControl(*host.controlHeader(), customControl());

    // A second command finds a native record and leaves it as it is.
    const Bytes fixed = blockBytes(host.control());
    ASSERT_EQ(host.setup(), kPluginNoError);
    EXPECT_EQ(blockBytes(host.control()), fixed);
}

TEST_F(HostTest, EmptySettingsAreReplacedAndSizedBeforeTheWorkingData)
{
    writeEmptyStyle();
    ASSERT_EQ(host.init(), kPluginNoError);
    // The first request sizes the settings; the working block is sized after.
    ASSERT_GE(host.requests().size(), 2u);
    EXPECT_EQ(host.requests()[0], kHostResetChannel);
    EXPECT_EQ(host.requests()[1], kHostAllocate);
    EXPECT_EQ(host.control().size(), 128);
    expectSameControl(*host.controlHeader(), expectedDefaults());
}

TEST_F(HostTest, ChannelResetAnswers)
{
    writeEmptyStyle();
    // A host that does not know 'RCHN' answers 2: tolerated.
    host.options.resetChannelAnswer = kPluginUnsupported;
    EXPECT_EQ(host.init(), kPluginNoError);

    // Any other error stops the check before the block is sized.
    host.control().resize(0, true);
    host.plugin().resize(0, true);
    host.options.resetChannelAnswer = kPluginMemoryError;
    host.clearLog();
    EXPECT_EQ(host.init(), kPluginMemoryError);
    EXPECT_EQ(host.requestCount(kHostAllocate), 0);
    EXPECT_EQ(host.control().size(), 0);
}

TEST_F(HostTest, SettingsAllocationFailurePassesThrough)
{
    writeEmptyStyle();
    host.options.allocAnswer = 9;
    EXPECT_EQ(host.init(), 9);
    EXPECT_EQ(host.requestCount(kHostFree), 0);
}

// Replaced settings invalidate the working data when the settings block is
// at least a working header large: deliberately that block's size is
// tested. An invalid working header starts again from its defaults, so the
// frame set-up kept in it is lost; otherwise it is kept.
TEST_F(HostTest, ForcedDefaultsInvalidateTheWorkingDataByTheSettingsSize)
{
    writeStandardStyle();
    ASSERT_EQ(host.init(), kPluginNoError);
    FrameSetup frame;
    frame.xScale = 60.0;
    const std::pair<std::size_t, double> cases[] = {
        {16, 60.0},
        {sizeof(PluginDataRec) - 1, 60.0},
        {sizeof(PluginDataRec), 1.0},
        {sizeof(PluginDataRec) + 100, 1.0},
    };
    for (const auto& [size, expectedScale] : cases) {
        SCOPED_TRACE(size);
        ASSERT_EQ(host.setup(frame), kPluginNoError);
        host.control().assign(Bytes(size, 0));
        host.clearLog();
        ASSERT_EQ(checkOnly(), kPluginNoError);
        EXPECT_EQ(host.requestCount(kHostResetChannel), 1);
        EXPECT_EQ(host.pluginHeader()->flareXScale, expectedScale);
        EXPECT_EQ(host.rings().size(), 3u);
    }
}

} // namespace
} // namespace glintwave::testhost
