/*
 * Pinned renders of a synthetic style at every depth.
 *
 * Any change of a pinned value is a change of the rendered pixels and
 * needs a look at the frames (as the render tests through Main write them
 * with GLINTWAVE_RENDER_DUMP) before it is accepted.
 */
#include <gtest/gtest.h>

#include <string>

#include "FlareTestBlock.h"
#include "SyntheticFlare.h"

using flaretest::FlareTestBlock;
using flaretest::TestImage;

namespace {

/* Pinned frames of the synthetic style. */
struct FrameCase {
    const char* name;
    int16_t depth;
    double rotation;
    bool aspect;
    uint64_t checksum;
};

class SyntheticFrameTest : public ::testing::TestWithParam<FrameCase> {};

TEST_P(SyntheticFrameTest, RendersThePinnedFrame)
{
    const FrameCase& c = GetParam();
    const int32_t width = 320, height = 200;
    FlareTestBlock block;
    block.control.flareRotation = c.rotation;
    if (c.aspect) {
        block.control.flareFlags |= FLARE_FLAG(kFlagUseAspectRatio);
        block.control.flareAspectRatio = 1.3;
    }
    ASSERT_EQ(flaretest::BuildSyntheticFlare(block, width, height, 236.0, 58.0), 0);

    TestImage image(width, height, c.depth);
    if (c.depth == 32) {
        /* A background to add to: a diagonal gradient with full alpha. */
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                image.SetPixel32(x, y, 0xFF000000u | (uint32_t)((x / 4) << 8) | (uint32_t)(y / 4));
    }
    image.Attach(block.data());
    block.data()->flarePixelBuffer.bufferIndex = 0xFF;

    EXPECT_EQ(GenerateFlare(&block.control, block.data(), c.depth, false), 0);
    EXPECT_TRUE(image.GuardsIntact());
    EXPECT_EQ(image.Checksum(), c.checksum) << std::hex << image.Checksum();

}

INSTANTIATE_TEST_SUITE_P(GenerateFlare, SyntheticFrameTest,
                         ::testing::Values(FrameCase{"Frame48", 48, 0.0, false, 0xafafc544949dcf64ull},
                                           FrameCase{"Frame32Turned", 32, 20.0, true, 0x77ec011c51c5dbbcull},
                                           FrameCase{"Sketch8", 8, 15.0, true, 0x706acb32d86256f1ull}),
                         [](const ::testing::TestParamInfo<FrameCase>& info) { return std::string(info.param.name); });

}  // namespace
