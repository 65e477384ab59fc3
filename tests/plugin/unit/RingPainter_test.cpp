/*
 * Ring painting: ramp lookup and interpolation, saturation, the two paths,
 * the 32-bit dither sequence.
 */
#include <gtest/gtest.h>

#include <vector>

#include "FlareTestBlock.h"

using flaretest::FlareTestBlock;
using flaretest::TestImage;

namespace {

std::vector<FlareColor> Flat(uint16_t level, int steps)
{
    std::vector<FlareColor> ramp(steps, FlareColor{level, level, level});
    ramp.push_back(FlareColor{0, 0, 0});
    return ramp;
}

L_Rect Row(const TestImage& image, int32_t y)
{
    L_Rect r;
    SetLRect(&r, 0, y, image.width(), y + 1);
    return r;
}

void PaintAllRows48(FlareTestBlock& block, TestImage& image)
{
    for (int32_t y = 0; y < image.height(); ++y) {
        L_Rect r = Row(image, y);
        PaintRings48(&block.control, block.data(), &r, y);
    }
}

/* Ring at (0.25, 0), one step per pixel, ramp 1000, 200, then black: the 16.16
   position blends the two entries around it with integer weights. */
TEST(RingPainter, InterpolatesWithinTheRampAndStopsAtItsEnd)
{
    FlareTestBlock block;
    TestImage image(6, 1, 48);
    image.Fill48(FlareColor{7, 7, 7});
    image.Attach(block.data());
    RingElement* r = block.AddRing(kRingReflection, 0, 0, {});
    block.SetRingPaint(r, 0.25f, 0.0f, 65536.0f, 65536.0f,
                       {FlareColor{1000, 100, 0}, FlareColor{200, 20, 0}, FlareColor{0, 0, 0}});
    PaintAllRows48(block, image);

    /* x = 0: 0.25 steps -> 3/4 of 1000 and 1/4 of 200; x = 1: 0.75 steps;
       x = 2: 1.75 steps; x = 3 lies at 2.75, past the ramp. */
    const uint16_t expectedRed[] = {7 + 800, 7 + 400, 7 + 50, 7, 7, 7};
    const uint16_t expectedGreen[] = {7 + 80, 7 + 40, 7 + 5, 7, 7, 7};
    for (int x = 0; x < 6; ++x) {
        EXPECT_EQ(image.Pixel48(x, 0).red, expectedRed[x]) << x;
        EXPECT_EQ(image.Pixel48(x, 0).green, expectedGreen[x]) << x;
        EXPECT_EQ(image.Pixel48(x, 0).blue, 7) << x;
    }
    EXPECT_TRUE(image.GuardsIntact());
}

struct SaturationCase {
    uint16_t before;
    uint16_t add;
    uint16_t after;
};

class RingSaturationTest : public ::testing::TestWithParam<SaturationCase> {};

TEST_P(RingSaturationTest, AddsUpToFullLevel)
{
    const SaturationCase& c = GetParam();
    FlareTestBlock block;
    TestImage image(3, 3, 48);
    image.Fill48(FlareColor{c.before, c.before, c.before});
    image.Attach(block.data());
    RingElement* r = block.AddRing(kRingReflection, 0, 0, {});
    block.SetRingPaint(r, 1.0f, 1.0f, 65536.0f, 65536.0f, Flat(c.add, 10));
    PaintAllRows48(block, image);
    EXPECT_EQ(image.Pixel48(1, 1).red, c.after);
}

INSTANTIATE_TEST_SUITE_P(RingPainter, RingSaturationTest,
                         ::testing::Values(SaturationCase{16000, 500, 16320}, SaturationCase{15820, 500, 16320},
                                           SaturationCase{15819, 500, 16319}, SaturationCase{0, 16320, 16320},
                                           SaturationCase{65535, 1, 16320}));

struct SkippedRingCase {
    const char* name;
    int32_t steps;
    int32_t base;   /* 0: a valid ramp */
};

class SkippedRingTest : public ::testing::TestWithParam<SkippedRingCase> {};

TEST_P(SkippedRingTest, LeavesTheImageAlone)
{
    const SkippedRingCase& c = GetParam();
    FlareTestBlock block(64 * 1024);
    TestImage image(8, 8, 48);
    image.Attach(block.data());
    RingElement* r = block.AddRing(kRingReflection, 0, 0, {});
    block.SetRingPaint(r, 4.0f, 4.0f, 65536.0f, 65536.0f, Flat(1000, 20));
    r->ringFlareColors = c.steps;
    if (c.base != 0)
        r->ringFlareColorBase = c.base;
    uint64_t blank = image.Checksum();
    PaintAllRows48(block, image);
    EXPECT_EQ(image.Checksum(), blank);
    EXPECT_TRUE(image.GuardsIntact());
}

INSTANTIATE_TEST_SUITE_P(RingPainter, SkippedRingTest,
                         ::testing::Values(SkippedRingCase{"NoSteps", 0, 0}, SkippedRingCase{"NegativeSteps", -5, 0},
                                           SkippedRingCase{"RampPastTheBlock", 2000000000, 0},
                                           SkippedRingCase{"RampInTheHeader", 20, 16},
                                           SkippedRingCase{"RampOutside", 20, 64 * 1024 - 8},
                                           SkippedRingCase{"RampOddOffset", 20, 40001}),
                         [](const ::testing::TestParamInfo<SkippedRingCase>& info) {
                             return std::string(info.param.name);
                         });

/* An elliptic ring (twice the steps per pixel vertically) turned by 90
   degrees: the turned path swaps the axes, the axis-aligned one does not. */
struct PathCase {
    const char* name;
    double rotation;
    double aspect;
    bool noLightRotation;
    double lightRotation;
    bool turned;
};

class RingPathTest : public ::testing::TestWithParam<PathCase> {};

TEST_P(RingPathTest, ChoosesThePath)
{
    const PathCase& c = GetParam();
    FlareTestBlock block;
    block.control.flareRotation = c.rotation;
    block.control.flareAspectRatio = c.aspect;
    if (c.noLightRotation)
        block.control.flareFlags |= FLARE_FLAG(kFlagNoLightRotation);
    block.data()->flareLightRotation = c.lightRotation;
    TestImage image(21, 21, 48);
    image.Attach(block.data());
    RingElement* r = block.AddRing(kRingReflection, 0, 0, {});
    std::vector<FlareColor> ramp;
    for (int k = 0; k < 10; ++k)
        ramp.push_back(FlareColor{(uint16_t)(900 - 100 * k), 0, 0});
    ramp.push_back(FlareColor{0, 0, 0});
    block.SetRingPaint(r, 10.0f, 10.0f, 65536.0f, 131072.0f, ramp);
    PaintAllRows48(block, image);

    /* Three pixels right of the centre: 3 steps along x, or 6 when turned;
       three pixels below: 6 steps, or 3 when turned. */
    EXPECT_EQ(image.Pixel48(13, 10).red, c.turned ? 300 : 600);
    EXPECT_EQ(image.Pixel48(10, 13).red, c.turned ? 600 : 300);
}

INSTANTIATE_TEST_SUITE_P(
    RingPainter, RingPathTest,
    ::testing::Values(PathCase{"NoRotation", 0, 1.2, false, 0, false},
                      /* Round flares are never turned, whatever the angle. */
                      PathCase{"RoundRotated", 90, 1.0, false, 0, false},
                      PathCase{"WideRotated", 90, 1.2, false, 0, true},
                      PathCase{"LightRotation", 0, 1.2, false, 90, true},
                      PathCase{"LightRotationIgnored", 0, 1.2, true, 90, false},
                      PathCase{"RotationsCancel", 45, 1.2, false, -45, false}),
    [](const ::testing::TestParamInfo<PathCase>& info) { return std::string(info.param.name); });

/* 32 bits: value 630 (in 1/64 steps, 9.84 levels) dithered with the row's
   generator, continued from one ring to the next; alpha kept. */
TEST(RingPainter, DitherSequenceRunsAcrossTheRingsOfARow)
{
    FlareTestBlock block;
    const int32_t y = 7;
    TestImage image(14, 10, 32);
    image.Fill32(0x80000000u);
    image.Attach(block.data());
    RingElement* first = block.AddRing(kRingReflection, 0, 0, {});
    RingElement* second = block.AddRing(kRingReflection, 0, 0, {});
    block.SetRingPaint(first, 5.0f, 7.0f, 65536.0f, 65536.0f, Flat(630, 100));
    block.SetRingPaint(second, 5.0f, 7.0f, 65536.0f, 65536.0f, Flat(630, 100));
    SetLRect(&first->ringRect, 2, 0, 8, 20);
    SetLRect(&second->ringRect, 5, 0, 12, 20);

    L_Rect row = Row(image, y);
    PaintRings32(&block.control, block.data(), &row, y);

    uint32_t expected[14];
    for (uint32_t& v : expected)
        v = 0;
    uint32_t seed = (uint32_t)y;
    for (int pass = 0; pass < 2; ++pass) {
        int from = pass == 0 ? 2 : 5, to = pass == 0 ? 8 : 12;
        for (int x = from; x < to; ++x) {
            uint32_t noise = flaretest::ReferenceNoise(&seed);
            uint32_t level = (630 + (expected[x] << 6) + noise) >> 6;
            expected[x] = level > 255 ? 255 : level;
        }
    }
    for (int x = 0; x < 14; ++x) {
        uint32_t v = expected[x];
        EXPECT_EQ(image.Pixel32(x, y), 0x80000000u | (v << 16) | (v << 8) | v) << x;
    }
    /* The noise really decides: both 9 and 10 occur. */
    bool varies = false;
    for (int x = 3; x < 8; ++x)
        varies = varies || expected[x] != expected[2];
    EXPECT_TRUE(varies);
}

TEST(RingPainter, ThirtyTwoBitChannelsSaturateAt255)
{
    FlareTestBlock block;
    TestImage image(3, 3, 32);
    image.Fill32(0x12FAFBFCu);
    image.Attach(block.data());
    RingElement* r = block.AddRing(kRingReflection, 0, 0, {});
    block.SetRingPaint(r, 1.0f, 1.0f, 65536.0f, 65536.0f, Flat(kFullLevel, 10));
    L_Rect row = Row(image, 1);
    PaintRings32(&block.control, block.data(), &row, 1);
    EXPECT_EQ(image.Pixel32(1, 1), 0x12FFFFFFu);
    EXPECT_EQ(image.Pixel32(1, 0), 0x12FAFBFCu);
}

}  // namespace
