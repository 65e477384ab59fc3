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

/* Only the glows follow the light's size, and only when it is not 0 and
   its flag does not turn it off. */
struct LightSizeCase {
    int32_t type;
    double lightSize;
    bool ignoreSize;
    float radius;
};

class LightSizeTest : public ::testing::TestWithParam<LightSizeCase> {};

TEST_P(LightSizeTest, Radius)
{
    const LightSizeCase& c = GetParam();
    FlareTestBlock block;
    block.SetLight(50, 50, 50, 50, 10);
    block.data()->flareLightSize = c.lightSize;
    if (c.ignoreSize)
        block.control.flareFlags |= FLARE_FLAG(kFlagNoLightSize);
    RingElement* r = block.AddRing(c.type, 1.0f, 1.0f, kFade);
    ASSERT_EQ(block.Layout(), 0);
    EXPECT_FLOAT_EQ(+r->ringXRadius, c.radius);
    EXPECT_FLOAT_EQ(+r->ringYRadius, c.radius);
}

INSTANTIATE_TEST_SUITE_P(FlareGeometry, LightSizeTest,
                         ::testing::Values(LightSizeCase{kRingOriginGlow, 2.0, false, 20},
                                           LightSizeCase{kRingOuterGlow, 2.0, false, 20},
                                           LightSizeCase{kRingHalo, 2.0, false, 10},
                                           LightSizeCase{kRingReflection, 2.0, false, 10},
                                           LightSizeCase{kRingOriginGlow, 0.0, false, 10},
                                           LightSizeCase{kRingOriginGlow, 2.0, true, 10}));

TEST(FlareGeometry, TintScalesTheKindColour)
{
    FlareTestBlock plain, tinted;
    for (FlareTestBlock* b : {&plain, &tinted})
        b->SetLight(50, 50, 50, 50, 10);
    RingElement* p = plain.AddRing(kRingReflection, 1.0f, 2.0f, kFade);
    RingElement* t = tinted.AddRing(kRingReflection, 1.0f, 2.0f, kFade);
    t->ringColor.red = 0x7FFF;   /* about half */
    t->ringColor.blue = 0;       /* (0 + 1) x 0xFFFF >> 16 = 0 */
    ASSERT_EQ(plain.Layout(), 0);
    ASSERT_EQ(tinted.Layout(), 0);
    const FlareColor* pr = plain.RampOf(p);
    const FlareColor* tr = tinted.RampOf(t);
    for (int i = 0; i < 20; ++i) {
        EXPECT_NEAR(tr[i].red, pr[i].red / 2.0, 1.0) << i;
        EXPECT_EQ(tr[i].green, pr[i].green) << i;
        EXPECT_EQ(tr[i].blue, 0) << i;
    }
}

struct HostileRingCase {
    const char* name;
    float outer;
    int32_t expectedResult;
};

class HostileRingTest : public ::testing::TestWithParam<HostileRingCase> {};

/* Streaks: light and centre at (50, 50), 10 pixels per unit, direction
   (1, 0), inner 0, outer 2. */
struct StreakCase {
    const char* name;
    uint32_t flags;
    double lightSize;
    double rotation;
    int32_t steps;      /* 0: not drawn */
    float dirX, dirY;
};

class StreakLayoutTest : public ::testing::TestWithParam<StreakCase> {};

TEST_P(StreakLayoutTest, DirectionAndRamp)
{
    const StreakCase& c = GetParam();
    FlareTestBlock block;
    block.SetLight(50, 50, 50, 50, 10);
    block.control.flareFlags = c.flags;
    block.control.flareRotation = c.rotation;
    block.data()->flareLightSize = c.lightSize;
    StreakElement* s = block.AddStreak(1.0f, 1.0f, 0.0f, 0.0f, 2.0f, kFade);
    int32_t elementEnd = block.data()->flareElementSize;

    ASSERT_EQ(block.Layout(), 0);
    EXPECT_EQ(+s->streakFlareColors, c.steps);
    if (c.steps == 0) {
        EXPECT_EQ(+s->streakFlareColorBase, 0);
        EXPECT_EQ(+block.data()->flareDataSize, elementEnd);
        return;
    }
    EXPECT_EQ(+s->streakFlareColorBase, elementEnd);
    EXPECT_NEAR(+s->streakDX, c.dirX, 1e-6);
    EXPECT_NEAR(+s->streakDY, c.dirY, 1e-6);
    EXPECT_FLOAT_EQ(+s->streakXPos, 50.0f);
    EXPECT_FLOAT_EQ(+s->streakYPos, 50.0f);
}

INSTANTIATE_TEST_SUITE_P(
    FlareGeometry, StreakLayoutTest,
    ::testing::Values(
        /* Streaks follow the light's size even when it is 0: no length. */
        StreakCase{"LightSizeZero", 0, 0.0, 0.0, 0, 0, 0},
        StreakCase{"LightSizeIgnored", FLARE_FLAG(kFlagNoLightSize), 0.0, 0.0, 20, 1, 0},
        StreakCase{"LightSizeOne", 0, 1.0, 0.0, 20, 1, 0},
        StreakCase{"LightSizeHalf", 0, 0.5, 0.0, 10, 1, 0},
        StreakCase{"Rotated90", FLARE_FLAG(kFlagNoLightSize), 1.0, 90.0, 20, 0, 1},
        StreakCase{"StreaksOff", FLARE_FLAG(kFlagNoLightSize) | FLARE_FLAG(kFlagNoStreaks), 1.0, 0.0, 0, 0, 0}),
    [](const ::testing::TestParamInfo<StreakCase>& info) { return std::string(info.param.name); });

}  // namespace
