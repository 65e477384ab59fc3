// The working data block: sized in two passes through 'FREE' and 'ALOC',
// re-read only when stale, and never larger than what the layout used.
#include "HostFixture.h"

namespace glintwave::testhost {
namespace {

std::int32_t roundUp8(std::int32_t size)
{
    return (size + 7) & ~7;
}

using PluginDataTest = HostTest;

TEST_F(PluginDataTest, EmptyBlockIsGrownToTheOfferReadAndShrunk)
{
    writeStandardStyle();
    host.options.freeBudget = 99999;  // rounded up to 100000
    ASSERT_EQ(host.init(), kPluginNoError);

    // 'RCHN', 'ALOC' (settings), 'FREE', 'ALOC' (grow), 'ALOC' (shrink).
    const std::vector<std::uint32_t> expected = {kHostResetChannel, kHostAllocate, kHostFree, kHostAllocate,
                                                 kHostAllocate};
    EXPECT_EQ(host.requests(), expected);

    const PluginDataRec* data = host.pluginHeader();
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(host.plugin().size(), roundUp8(data->flareDataSize));
    const std::vector<AllocationRequest> sizes = {{128, 0}, {128, 100000}, {128, host.plugin().size()}};
    EXPECT_EQ(host.allocationRequests(), sizes);
    EXPECT_GE(data->flareDataSize, data->flareElementSize);
    EXPECT_GT(data->flareElementSize, static_cast<std::int32_t>(sizeof(PluginDataRec)));
    EXPECT_EQ(data->flareReset, 0);
    EXPECT_EQ(host.rings().size(), 3u);
    EXPECT_EQ(host.streaks().size(), 1u);
    EXPECT_EQ(host.controlHeader()->flareRingCount, 3);
    EXPECT_EQ(host.controlHeader()->flareStreakCount, 1);
}

TEST_F(PluginDataTest, OffersThatAreTooSmallOrRefusedFail)
{
    writeStandardStyle();
    const std::int32_t header = static_cast<std::int32_t>(sizeof(PluginDataRec));
    const std::pair<std::int32_t, std::int32_t> offers[] = {
        {0, kPluginMemoryError},
        {-8, kPluginMemoryError},
        {header, kPluginMemoryError},
    };
    for (const auto& [offer, expected] : offers) {
        SCOPED_TRACE(offer);
        host.plugin().resize(0, true);
        host.options.freeBudget = offer;
        EXPECT_EQ(host.init(), expected);
    }
    // A host's own error code comes back unchanged.
    host.options.freeBudget = 1 << 20;
    host.options.freeAnswer = 42;
    EXPECT_EQ(host.init(), 42);
}

TEST_F(PluginDataTest, AreaTooSmallForTheFirstRingLoadsNothing)
{
    writeStandardStyle();
    host.options.freeBudget = static_cast<std::int32_t>(sizeof(PluginDataRec) + sizeof(RingElement) - 8);
    EXPECT_EQ(host.init(), kPluginMemoryError);
    ASSERT_NE(host.controlHeader(), nullptr);
    EXPECT_EQ(host.controlHeader()->flareRingCount, 0);
    EXPECT_EQ(host.controlHeader()->flareStreakCount, 0);
    ASSERT_NE(host.pluginHeader(), nullptr);
    EXPECT_EQ(host.pluginHeader()->flareRingFirst, 0);
    EXPECT_EQ(host.pluginHeader()->flareStreakFirst, 0);
}

TEST_F(PluginDataTest, AreaExhaustedAfterTheFirstRingKeepsIt)
{
    writeStandardStyle();
    // Room for the first ring and its two stops (24 bytes), not for the second.
    host.options.freeBudget = static_cast<std::int32_t>(sizeof(PluginDataRec) + sizeof(RingElement) + 24 + 16);
    EXPECT_EQ(host.init(), kPluginMemoryError);
    EXPECT_EQ(host.controlHeader()->flareRingCount, 1);
    EXPECT_EQ(host.controlHeader()->flareStreakCount, 0);
    ASSERT_EQ(host.rings().size(), 1u);
}

// Elements are re-read only when the host hands back a block of another
// size (rounded up to 8) than the one the plug-in settled on. The test pokes
// a ring's name between calls: a re-read restores it.
TEST_F(PluginDataTest, ElementsAreReReadOnlyWhenTheBlockSizeChanged)
{
    writeStandardStyle();
    struct Case {
        std::int32_t extra;  // host block beyond roundUp8(flareDataSize)
        bool reread;
    };
    for (const Case c : {Case{0, false}, Case{8, true}, Case{-8, true}}) {
        SCOPED_TRACE(c.extra);
        host.plugin().resize(0, true);
        ASSERT_EQ(host.init(), kPluginNoError);
        PluginDataRec* data = host.pluginHeader();
        // An odd flareDataSize that rounds up to the next multiple of 8.
        const std::int32_t dataSize = roundUp8(data->flareDataSize) + 1;
        data->flareDataSize = dataSize;
        host.plugin().resize(roundUp8(dataSize) + c.extra, true);

        auto* ring = const_cast<RingElement*>(host.rings().at(0));
        ring->ringName[1] = 'Z';
        host.clearLog();
        ASSERT_EQ(host.setup(), kPluginNoError);
        ASSERT_FALSE(host.rings().empty());
        EXPECT_EQ(host.rings()[0]->ringName[1], c.reread ? 'O' : 'Z');  // "Origin Glow"
    }
}

TEST_F(PluginDataTest, GrowAllocationFailurePassesThrough)
{
    writeStandardStyle();
    ASSERT_EQ(host.init(), kPluginNoError);
    host.pluginHeader()->flareReset = 1;
    host.options.allocAnswer = 7;
    EXPECT_EQ(host.setup(), 7);
}

} // namespace
} // namespace glintwave::testhost
