/*
 * Pinned renders of a synthetic style at every depth.
 *
 * The pinned checksums were taken after looking at the frames: set
 * GLINTWAVE_RENDER_DUMP to a folder and the tests write each frame there as
 * a PPM/PGM image. Any change of a pinned value is a change of the rendered
 * pixels and needs the same look before it is accepted.
 */
#include <gtest/gtest.h>

#include <stdio.h>
#include <stdlib.h>

#include <string>

#include "FakeStatusHost.h"
#include "FlareTestBlock.h"
#include "SyntheticFlare.h"

using flaretest::FakeStatusHost;
using flaretest::FlareTestBlock;
using flaretest::TestImage;

namespace {

/* Writes the image as PPM (colour) or PGM (8-bit) when a dump folder is set. */
void DumpImage(TestImage& image, const std::string& name)
{
    const char* folder = getenv("GLINTWAVE_RENDER_DUMP");
    if (folder == nullptr)
        return;
    bool grey = image.depth() == 8;
    std::string path = std::string(folder) + "/" + name + (grey ? ".pgm" : ".ppm");
    FILE* f = fopen(path.c_str(), "wb");
    if (f == nullptr)
        return;
    fprintf(f, "%s\n%d %d\n%d\n", grey ? "P5" : "P6", image.width(), image.height(),
            image.depth() == 48 ? kFullLevel : 255);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.depth() == 48) {
                FlareColor c = image.Pixel48(x, y);
                unsigned char b[6] = {(unsigned char)(c.red >> 8), (unsigned char)c.red,
                                      (unsigned char)(c.green >> 8), (unsigned char)c.green,
                                      (unsigned char)(c.blue >> 8), (unsigned char)c.blue};
                fwrite(b, 1, 6, f);
            } else if (image.depth() == 32) {
                uint32_t v = image.Pixel32(x, y);
                unsigned char b[3] = {(unsigned char)(v >> 16), (unsigned char)(v >> 8), (unsigned char)v};
                fwrite(b, 1, 3, f);
            } else {
                unsigned char b = image.Pixel8(x, y);
                fwrite(&b, 1, 1, f);
            }
        }
    }
    fclose(f);
}

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
    DumpImage(image, std::string("synthetic-") + c.name);
    EXPECT_TRUE(image.GuardsIntact());
    EXPECT_EQ(image.Checksum(), c.checksum) << std::hex << image.Checksum();

    /* The same frame again gives the same bytes. */
    FlareTestBlock again;
    again.control = block.control;
    again.control.flareRingCount = again.control.flareStreakCount = 0;
    ASSERT_EQ(flaretest::BuildSyntheticFlare(again, width, height, 236.0, 58.0), 0);
    TestImage second(width, height, c.depth);
    if (c.depth == 32)
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                second.SetPixel32(x, y, 0xFF000000u | (uint32_t)((x / 4) << 8) | (uint32_t)(y / 4));
    second.Attach(again.data());
    again.data()->flarePixelBuffer.bufferIndex = 0xFF;
    EXPECT_EQ(GenerateFlare(&again.control, again.data(), c.depth, false), 0);
    EXPECT_EQ(second.Checksum(), image.Checksum());
}

INSTANTIATE_TEST_SUITE_P(GenerateFlare, SyntheticFrameTest,
                         ::testing::Values(FrameCase{"Frame48", 48, 0.0, false, 0xafafc544949dcf64ull},
                                           FrameCase{"Frame32Turned", 32, 20.0, true, 0x77ec011c51c5dbbcull},
                                           FrameCase{"Sketch8", 8, 15.0, true, 0x706acb32d86256f1ull}),
                         [](const ::testing::TestParamInfo<FrameCase>& info) { return std::string(info.param.name); });

}  // namespace
