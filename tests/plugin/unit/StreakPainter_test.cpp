/*
 * Streak painting: the band's fall-off across the axis, the ramp along it,
 * and the dither advancing only for painted pixels.
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

/* A horizontal streak from (x, y) to the right, its outline set up over the
   image's frame as the layout does. */
StreakElement* AddHorizontalStreak(FlareTestBlock& block, const TestImage& image, float x, float y, float length,
                                   const std::vector<FlareColor>& ramp)
{
    StreakElement* s = block.AddStreak(0, 1, 0, 0, 0, {});
    s->streakXPos = x;
    s->streakYPos = y;
    s->streakDX = 1.0f;
    s->streakDY = 0.0f;
    s->streakFlareColors = (int32_t)ramp.size() - 1;
    s->streakFlareColorBase = block.AddRamp(ramp);
    L_Rect frame;
    SetLRect(&frame, 0, 0, image.width(), image.height());
    FacetPoints points = {FacetPoint{x, y}, FacetPoint{x + length, y}};
    EXPECT_TRUE(CalcEdges(&frame, &s->streakRect, s->streakEdges, points, 2));
    return s;
}

template <int Depth>
void PaintAllRows(FlareTestBlock& block, TestImage& image)
{
    for (int32_t y = 0; y < image.height(); ++y) {
        L_Rect r;
        SetLRect(&r, 0, y, image.width(), y + 1);
        if (Depth == 48)
            PaintStreaks48(&block.control, block.data(), &r, y);
        else
            PaintStreaks32(&block.control, block.data(), &r, y);
    }
}

/* Axis at y = 8.5: rows 7..10 are in the band's outline; rows 8 and 9 lie
   half a pixel off the axis, rows 7 and 10 exactly 1.5 pixels off. */
TEST(StreakPainter, FadesAcrossTheBandAndStopsAtOneAndAHalfPixels)
{
    FlareTestBlock block;
    TestImage image(30, 16, 48);
    image.Attach(block.data());
    AddHorizontalStreak(block, image, 0.0f, 8.5f, 20.0f, Flat(1000, 25));
    PaintAllRows<48>(block, image);

    for (int x = 0; x < 20; ++x) {
        EXPECT_EQ(image.Pixel48(x, 6).red, 0) << x;
        EXPECT_EQ(image.Pixel48(x, 7).red, 0) << x;
        EXPECT_NEAR(image.Pixel48(x, 8).red, 666, 1) << x;
        EXPECT_NEAR(image.Pixel48(x, 9).red, 666, 1) << x;
        EXPECT_EQ(image.Pixel48(x, 10).red, 0) << x;
    }
    EXPECT_TRUE(image.GuardsIntact());
}

/* Axis at y = 8 from x = 0: on the axis, at whole distances, the pixel gets
   the ramp entry itself; beyond the ramp's 10 steps nothing is painted
   although the band goes on. */
TEST(StreakPainter, OnTheAxisFullColourUpToTheRampsEnd)
{
    FlareTestBlock block;
    TestImage image(30, 16, 48);
    image.Attach(block.data());
    std::vector<FlareColor> ramp;
    for (int k = 0; k < 10; ++k)
        ramp.push_back(FlareColor{(uint16_t)(1000 + k), 50, 5});
    ramp.push_back(FlareColor{0, 0, 0});
    AddHorizontalStreak(block, image, 0.0f, 8.0f, 25.0f, ramp);
    PaintAllRows<48>(block, image);

    for (int x = 0; x < 30; ++x) {
        FlareColor p = image.Pixel48(x, 8);
        if (x < 10) {
            EXPECT_EQ(p.red, 1000 + x) << x;
            EXPECT_EQ(p.green, 50) << x;
            EXPECT_EQ(p.blue, 5) << x;
        } else {
            EXPECT_EQ(p.red | p.green | p.blue, 0) << x;
        }
    }
    /* Rows the outline does not reach stay untouched. */
    for (int y : {0, 5, 6, 10, 15})
        for (int x = 0; x < 30; ++x)
            EXPECT_EQ(image.Pixel48(x, y).red, 0) << x << "," << y;
}

TEST(StreakPainter, SaturatesAtFullLevel)
{
    FlareTestBlock block;
    TestImage image(12, 12, 48);
    image.Fill48(FlareColor{16000, 0, 16320});
    image.Attach(block.data());
    AddHorizontalStreak(block, image, 0.0f, 5.0f, 10.0f, Flat(500, 10));
    PaintAllRows<48>(block, image);
    EXPECT_EQ(image.Pixel48(3, 5).red, 16320);
    EXPECT_EQ(image.Pixel48(3, 5).green, 500);
    EXPECT_EQ(image.Pixel48(3, 5).blue, 16320);
}

/* 32 bits: two streaks on row 8. The first paints x = 0..9 and passes over
   x = 10..36 past its ramp without painting; the second, starting at 20,
   paints x = 19..24 (its band begins 1.5 pixels early). The row's generator
   advances only for the sixteen painted pixels. */
TEST(StreakPainter, DitherAdvancesOnlyForPaintedPixels)
{
    FlareTestBlock block;
    TestImage image(40, 16, 32);
    image.Fill32(0x40000000u);
    image.Attach(block.data());
    AddHorizontalStreak(block, image, 0.0f, 8.0f, 35.0f, Flat(620, 10));
    AddHorizontalStreak(block, image, 20.0f, 8.0f, 10.0f, Flat(620, 5));
    PaintAllRows<32>(block, image);

    uint32_t seed = 8;
    bool varies = false;
    uint32_t first = 0;
    for (int x = 0; x < 40; ++x) {
        bool painted = x < 10 || (x >= 19 && x < 25);
        uint32_t expected = 0x40000000u;
        if (painted) {
            uint32_t level = (620 + flaretest::ReferenceNoise(&seed)) >> 6;
            expected |= (level << 16) | (level << 8) | level;
            if (x == 0)
                first = level;
            varies = varies || level != first;
        }
        EXPECT_EQ(image.Pixel32(x, 8), expected) << x;
    }
    EXPECT_TRUE(varies);
}

TEST(StreakPainter, HostileRampIsSkippedAfterTheRowIsConsumed)
{
    FlareTestBlock block(64 * 1024);
    TestImage image(30, 16, 48);
    image.Attach(block.data());
    StreakElement* s = AddHorizontalStreak(block, image, 0.0f, 8.0f, 20.0f, Flat(1000, 25));
    s->streakFlareColorBase = 64 * 1024 - 6;
    uint64_t blank = image.Checksum();
    PaintAllRows<48>(block, image);
    EXPECT_EQ(image.Checksum(), blank);
    /* The outline was sliced all the same. */
    for (const EdgeRecord& e : s->streakEdges)
        EXPECT_EQ(+e.y1, 32767);
}

}  // namespace
