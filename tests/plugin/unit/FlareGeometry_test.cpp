/*
 * Placement of rings and streaks, their boxes, factors and ramp layout.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "FlareTestBlock.h"

using flaretest::FlareTestBlock;
using flaretest::Stop;

namespace {

constexpr uint16_t F = kFullLevel;
const std::initializer_list<Stop> kFade = {{0.0f, F, F, F}, {1.0f, 0, 0, 0}};

struct RectExpect {
    int32_t left, top, right, bottom;
};

void ExpectRect(const L_Rect& r, RectExpect e)
{
    EXPECT_EQ(+r.left, e.left);
    EXPECT_EQ(+r.top, e.top);
    EXPECT_EQ(+r.right, e.right);
    EXPECT_EQ(+r.bottom, e.bottom);
    EXPECT_EQ(+r.width, (uint32_t)(e.right - e.left));
    EXPECT_EQ(+r.height, (uint32_t)(e.bottom - e.top));
}

/* Light (100, 50), centre (50, 50), 10 pixels per unit, ring at 0.5 with
   outer radius 2.0. */
struct RingLayoutCase {
    const char* name;
    bool useAspect;
    double aspect;
    double rotation;
    float radiusX, radiusY;
    RectExpect rect;
    float xFactor, yFactor;
    int32_t steps;      /* one per pixel of the smaller radius */
};

class RingLayoutTest : public ::testing::TestWithParam<RingLayoutCase> {};

TEST_P(RingLayoutTest, CentreRadiiBoxAndRamp)
{
    const RingLayoutCase& c = GetParam();
    FlareTestBlock block;
    block.SetLight(100, 50, 50, 50, 10);
    if (c.useAspect)
        block.control.flareFlags |= FLARE_FLAG(kFlagUseAspectRatio);
    block.control.flareAspectRatio = c.aspect;
    block.control.flareRotation = c.rotation;
    RingElement* r = block.AddRing(kRingReflection, 0.5f, 2.0f, kFade);
    int32_t elementEnd = block.data()->flareElementSize;

    ASSERT_EQ(block.Layout(), 0);
    EXPECT_FLOAT_EQ(+r->ringXPos, 75.0f);
    EXPECT_FLOAT_EQ(+r->ringYPos, 50.0f);
    EXPECT_FLOAT_EQ(+r->ringXRadius, c.radiusX);
    EXPECT_FLOAT_EQ(+r->ringYRadius, c.radiusY);
    ExpectRect(r->ringRect, c.rect);
    EXPECT_FLOAT_EQ(+r->ringXFactor, c.xFactor);
    EXPECT_FLOAT_EQ(+r->ringYFactor, c.yFactor);
    EXPECT_EQ(+r->ringFlareColors, c.steps);
    EXPECT_EQ(+r->ringFlareColorBase, elementEnd);
    EXPECT_EQ(+block.data()->flareDataSize, elementEnd + ((c.steps * 6 + 13) & ~7));
    const FlareColor* ramp = block.RampOf(r);
    EXPECT_GT(ramp[0].red, ramp[c.steps / 2].red);
    EXPECT_EQ(+ramp[c.steps].red | ramp[c.steps].green | ramp[c.steps].blue, 0);
}

INSTANTIATE_TEST_SUITE_P(
    FlareGeometry, RingLayoutTest,
    ::testing::Values(
        /* The worked example: 21 ramp entries. */
        RingLayoutCase{"Round", false, 1.0, 0.0, 20, 20, {55, 30, 95, 70}, 65536, 65536, 20},
        /* The aspect ratio counts only with its flag. */
        RingLayoutCase{"AspectFlagOff", false, 2.0, 30.0, 20, 20, {55, 30, 95, 70}, 65536, 65536, 20},
        RingLayoutCase{"WideUnrotated", true, 2.0, 0.0, 40, 20, {35, 30, 115, 70}, 32768, 65536, 20},
        /* Turned and not round: a square box of side 2 rx. */
        RingLayoutCase{"WideRotated", true, 2.0, 30.0, 40, 20, {35, 10, 115, 90}, 32768, 65536, 20},
        RingLayoutCase{"TallRotated", true, 0.5, 30.0, 10, 20, {55, 30, 95, 70}, 65536, 32768, 10}),
    [](const ::testing::TestParamInfo<RingLayoutCase>& info) { return std::string(info.param.name); });

/* Each kind has its own switch; turning one off leaves the others drawn. */
struct KindSwitchCase {
    int bit;
    int32_t switchedType;
};

class KindSwitchTest : public ::testing::TestWithParam<KindSwitchCase> {};

TEST_P(KindSwitchTest, OnlyThatKindIsOff)
{
    const KindSwitchCase& c = GetParam();
    FlareTestBlock block;
    block.SetLight(50, 50, 50, 50, 10);
    block.control.flareFlags |= FLARE_FLAG(c.bit);
    const int32_t types[] = {kRingReflection, kRingOriginGlow, kRingOuterGlow, kRingHalo, 7};
    RingElement* rings[5];
    for (int i = 0; i < 5; ++i)
        rings[i] = block.AddRing(types[i], 1.0f, 1.0f, kFade);
    ASSERT_EQ(block.Layout(), 0);
    for (int i = 0; i < 5; ++i) {
        bool off = types[i] == c.switchedType || (c.switchedType == kRingReflection && types[i] == 7);
        EXPECT_EQ(+rings[i]->ringFlareColors == 0, off) << "type " << types[i];
    }
}

INSTANTIATE_TEST_SUITE_P(FlareGeometry, KindSwitchTest,
                         ::testing::Values(KindSwitchCase{kFlagNoOriginGlow, kRingOriginGlow},
                                           KindSwitchCase{kFlagNoOuterGlow, kRingOuterGlow},
                                           KindSwitchCase{kFlagNoHalo, kRingHalo},
                                           KindSwitchCase{kFlagNoRings, kRingReflection}));

}  // namespace
