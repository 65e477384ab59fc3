/*
 * The walk along the element chain: it visits the chain in order and ends
 * at the count, at the last link, at a link that leaves the block or is
 * misaligned, and after a bounded number of steps on a chain that loops.
 */
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "ElementChain.h"
#include "FlareTestBlock.h"

using flaretest::FlareTestBlock;

namespace {

constexpr int32_t kBlockBytes = 1 << 16;

/* Three rings behind the header, linked in order. */
struct ThreeRings {
    FlareTestBlock block{kBlockBytes};
    std::vector<int32_t> offsets;
    ThreeRings()
    {
        for (int i = 0; i < 3; ++i)
            offsets.push_back((int32_t)OffsetInBlock(block.data(), block.AddRing(kRingReflection, 0.0f, 0.1f, {})));
    }
    RingElement* Ring(int i) { return block.At<RingElement>(offsets[(size_t)i]); }
};

struct ChainCase {
    const char* name;
    std::function<void(ThreeRings&)> damage;
    std::vector<int> visited;  /* places of the rings reached, in order */
};

std::vector<int32_t> Walk(ThreeRings& chain)
{
    std::vector<int32_t> offsets;
    ChainWalk walk = RingChain(&chain.block.control, chain.block.data());
    while (RingElement* ring = NextRing(chain.block.data(), &walk)) {
        EXPECT_EQ(walk.offset, OffsetInBlock(chain.block.data(), ring));
        EXPECT_EQ(walk.index, (int32_t)offsets.size());
        offsets.push_back(walk.offset);
    }
    return offsets;
}

TEST(ElementChain, EndsWhereTheChainOrItsCountEnds)
{
    const ChainCase cases[] = {
        {"whole chain", [](ThreeRings&) {}, {0, 1, 2}},
        {"count shorter than the chain", [](ThreeRings& c) { c.block.control.flareRingCount = 2; }, {0, 1}},
        {"negative count", [](ThreeRings& c) { c.block.control.flareRingCount = -1; }, {}},
        {"link into the header", [](ThreeRings& c) { c.Ring(1)->ringNext = 8; }, {0, 1}},
        {"odd link", [](ThreeRings& c) { c.Ring(0)->ringNext += 1; }, {0}},
        {"link past the data in use",
         [](ThreeRings& c) { c.Ring(0)->ringNext = c.block.data()->flareDataSize - (int32_t)sizeof(RingElement) + 2; },
         {0}},
        {"no first ring", [](ThreeRings& c) { c.block.data()->flareRingFirst = 0; }, {}},
    };
    for (const ChainCase& test : cases) {
        SCOPED_TRACE(test.name);
        ThreeRings chain;
        test.damage(chain);
        std::vector<int32_t> expected;
        for (int place : test.visited)
            expected.push_back(chain.offsets[(size_t)place]);
        EXPECT_EQ(Walk(chain), expected);
    }
}

TEST(ElementChain, LoopEndsAfterAsManyStepsAsTheBlockHoldsElements)
{
    ThreeRings chain;
    chain.Ring(2)->ringNext = chain.offsets[0];
    chain.block.control.flareRingCount = INT32_MAX;
    const size_t fits = (size_t)(kBlockBytes - (int32_t)sizeof(PluginDataRec)) / sizeof(RingElement);
    EXPECT_EQ(Walk(chain).size(), fits);
}

TEST(ElementChain, LinkIsReadBeforeTheBodyRuns)
{
    ThreeRings chain;
    std::vector<int32_t> offsets;
    ChainWalk walk = RingChain(&chain.block.control, chain.block.data());
    while (RingElement* ring = NextRing(chain.block.data(), &walk)) {
        offsets.push_back(walk.offset);
        ring->ringNext = 0;
    }
    EXPECT_EQ(offsets, chain.offsets);
}

TEST(ElementChain, StreaksWalkTheirOwnChain)
{
    FlareTestBlock block(kBlockBytes);
    block.AddRing(kRingHalo, 1.0f, 0.5f, {});
    StreakElement* first = block.AddStreak(1.0f, 1.0f, 0.0f, 0.0f, 0.5f, {});
    StreakElement* second = block.AddStreak(1.0f, 0.0f, 1.0f, 0.0f, 0.5f, {});
    ChainWalk walk = StreakChain(&block.control, block.data());
    EXPECT_EQ(NextStreak(block.data(), &walk), first);
    EXPECT_EQ(NextStreak(block.data(), &walk), second);
    EXPECT_EQ(NextStreak(block.data(), &walk), nullptr);
}

}  // namespace
