/*
 * The wireframe sketch: points per ring, clipping, the turning direction,
 * and the progress and cancel of the sketch pass.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <utility>

#include "FakeStatusHost.h"
#include "FlareTestBlock.h"

using flaretest::FakeStatusHost;
using flaretest::FlareTestBlock;
using flaretest::TestImage;

namespace {

constexpr uint8_t kInk = 0xC3;

RingElement* AddSketchRing(FlareTestBlock& block, float x, float y, float rx, float ry)
{
    RingElement* r = block.AddRing(kRingReflection, 0, 0, {});
    r->ringXPos = x;
    r->ringYPos = y;
    r->ringXRadius = rx;
    r->ringYRadius = ry;
    SetLRect(&r->ringRect, (int32_t)std::floor(x - std::fabs(rx)), (int32_t)std::floor(y - std::fabs(ry)),
             (int32_t)std::ceil(x + std::fabs(rx)) + 1, (int32_t)std::ceil(y + std::fabs(ry)) + 1);
    return r;
}

std::set<std::pair<int, int>> InkedPixels(TestImage& image)
{
    std::set<std::pair<int, int>> inked;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.Pixel8(x, y) == kInk)
                inked.insert({x, y});
    return inked;
}

/* The pixels an unturned circle of `segments` segments plots. */
std::set<std::pair<int, int>> CirclePixels(double xc, double yc, double radius, int segments, int width, int height)
{
    std::set<std::pair<int, int>> pixels;
    const double twoPi = 6.283185307179586;
    double step = twoPi / segments;
    double a = 0.0;
    for (int i = 0; i <= segments; ++i, a += step) {
        double x = std::sin(a) * radius + xc;
        double y = std::cos(a) * radius + yc;
        if (x >= 0 && y >= 0 && (int)x < width && (int)y < height)
            pixels.insert({(int)x, (int)y});
    }
    return pixels;
}

void Sketch(FlareTestBlock& block, TestImage& image, bool statusFlag = false, int32_t* result = nullptr)
{
    image.Attach(block.data());
    block.data()->flarePixelBuffer.bufferIndex = 0x700 | kInk;  /* only the low byte counts */
    int32_t local = 0;
    SketchFlare(&block.control, block.data(), statusFlag, result != nullptr ? result : &local);
}

TEST(Sketch, RadiusZeroPlotsItsCentre)
{
    FlareTestBlock block;
    TestImage image(20, 20, 8);
    AddSketchRing(block, 7.6f, 12.2f, 0.0f, 0.0f);
    Sketch(block, image);
    std::set<std::pair<int, int>> expected = {{7, 12}};
    EXPECT_EQ(InkedPixels(image), expected);
}

TEST(Sketch, RadiusTenPlotsSixtyFourPoints)
{
    FlareTestBlock block;
    TestImage image(40, 40, 8);
    AddSketchRing(block, 20.3f, 19.7f, 10.0f, -10.0f);
    Sketch(block, image);
    /* truncate(2 pi 10) + 1 = 63 segments; the neighbouring counts would
       plot other pixels. */
    auto inked = InkedPixels(image);
    EXPECT_EQ(inked, CirclePixels(20.3f, 19.7f, 10.0, 63, 40, 40));
    EXPECT_NE(inked, CirclePixels(20.3f, 19.7f, 10.0, 62, 40, 40));
    EXPECT_NE(inked, CirclePixels(20.3f, 19.7f, 10.0, 64, 40, 40));
}

struct ClipCase {
    const char* name;
    float x, y;
};

class SketchClipTest : public ::testing::TestWithParam<ClipCase> {};

TEST_P(SketchClipTest, PointsOutsideAreDroppedOneByOne)
{
    const ClipCase& c = GetParam();
    FlareTestBlock block;
    TestImage image(20, 16, 8);
    AddSketchRing(block, c.x, c.y, 10.0f, 10.0f);
    Sketch(block, image);
    auto inked = InkedPixels(image);
    EXPECT_FALSE(inked.empty());
    EXPECT_EQ(inked, CirclePixels(c.x, c.y, 10.0, 63, 20, 16));
    EXPECT_TRUE(image.GuardsIntact());
}

INSTANTIATE_TEST_SUITE_P(Sketch, SketchClipTest,
                         ::testing::Values(ClipCase{"TopLeft", 1.5f, 2.5f}, ClipCase{"Right", 25.0f, 8.0f},
                                           ClipCase{"Bottom", 10.0f, 22.0f}, ClipCase{"Left", -6.0f, 8.0f}),
                         [](const ::testing::TestParamInfo<ClipCase>& info) { return std::string(info.param.name); });

/* The sketch turns the other way round from the painters: a flat ellipse
   turned by 30 degrees runs from upper right to lower left on screen. */
TEST(Sketch, TurnsAgainstThePainters)
{
    FlareTestBlock block;
    block.control.flareRotation = 30.0;
    TestImage image(100, 100, 8);
    AddSketchRing(block, 50.0f, 50.0f, 20.0f, 3.0f);
    Sketch(block, image);
    auto inked = InkedPixels(image);
    auto near = [&](int x, int y) {
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx)
                if (inked.count({x + dx, y + dy}))
                    return true;
        return false;
    };
    EXPECT_TRUE(near(67, 40));
    EXPECT_TRUE(near(32, 59));
    EXPECT_FALSE(near(67, 60));
    EXPECT_FALSE(near(32, 40));
}

TEST(Sketch, RingsWithoutRampsAreSketchedAndStreaksAreNot)
{
    FlareTestBlock block;
    TestImage image(40, 40, 8);
    RingElement* r = AddSketchRing(block, 20.0f, 20.0f, 5.0f, 5.0f);
    r->ringFlareColors = 0;
    StreakElement* s = block.AddStreak(0, 1, 0, 0, 1, {});
    s->streakFlareColors = 10;
    SetLRect(&s->streakRect, 0, 0, 40, 40);
    Sketch(block, image);
    EXPECT_EQ(InkedPixels(image), CirclePixels(20.0, 20.0, 5.0, 32, 40, 40));
}

struct HostileSketchCase {
    const char* name;
    float x, y, rx, ry;
};

class HostileSketchTest : public ::testing::TestWithParam<HostileSketchCase> {};

TEST_P(HostileSketchTest, StaysInsideTheBuffer)
{
    const HostileSketchCase& c = GetParam();
    FlareTestBlock block;
    TestImage image(30, 30, 8);
    RingElement* r = AddSketchRing(block, 15, 15, 5, 5);
    r->ringXPos = c.x;
    r->ringYPos = c.y;
    r->ringXRadius = c.rx;
    r->ringYRadius = c.ry;
    Sketch(block, image);
    EXPECT_TRUE(image.GuardsIntact());
}

INSTANTIATE_TEST_SUITE_P(
    Sketch, HostileSketchTest,
    ::testing::Values(HostileSketchCase{"NaNRadius", 15, 15, std::nanf(""), 5},
                      HostileSketchCase{"NaNCentre", std::nanf(""), 15, 5, 5},
                      HostileSketchCase{"HugeRadius", 15, 15, 1e30f, 3},
                      HostileSketchCase{"InfiniteRadius", 15, 15, INFINITY, 3},
                      HostileSketchCase{"HugeCentre", 3e9f, -3e9f, 5, 5}),
    [](const ::testing::TestParamInfo<HostileSketchCase>& info) { return std::string(info.param.name); });

TEST(Sketch, NaNRadiusDrawsNothing)
{
    FlareTestBlock block;
    TestImage image(30, 30, 8);
    AddSketchRing(block, 15, 15, 5, 5)->ringYRadius = std::nanf("");
    Sketch(block, image);
    EXPECT_TRUE(InkedPixels(image).empty());
}

TEST(Sketch, ReportsElementsAndStopsOnCancel)
{
    FlareTestBlock block;
    TestImage image(60, 30, 8);
    AddSketchRing(block, 10, 15, 5, 5);
    AddSketchRing(block, 30, 15, 5, 5);
    AddSketchRing(block, 50, 15, 5, 5);
    int reference = 0;

    {
        FakeStatusHost host;
        host.Attach(block.data(), &reference);
        int32_t result = 0;
        Sketch(block, image, true, &result);
        EXPECT_EQ(result, 0);
        ASSERT_EQ(host.reports.size(), 5u);
        for (size_t i = 0; i < 5; ++i) {
            EXPECT_EQ(host.reports[i].unit, "Element");
            EXPECT_EQ(host.reports[i].info, "Sketching Flare");
            EXPECT_EQ(host.reports[i].min, 0);
            EXPECT_EQ(host.reports[i].max, 3);
        }
        EXPECT_EQ(host.reports[0].value, 0);
        EXPECT_EQ(host.reports[1].value, 1);
        EXPECT_FLOAT_EQ(host.reports[1].pos, 1.0f / 3.0f);
        EXPECT_EQ(host.reports[4].value, 3);
        EXPECT_EQ(host.reports[4].pos, 1.0f);
    }

    TestImage cancelled(60, 30, 8);
    FakeStatusHost host;
    host.replies = {0, kPluginUserCanceled};
    host.Attach(block.data(), &reference);
    int32_t result = 0;
    Sketch(block, cancelled, true, &result);
    EXPECT_EQ(result, kPluginUserCanceled);
    EXPECT_EQ(host.reports.size(), 2u);
    auto inked = InkedPixels(cancelled);
    ASSERT_FALSE(inked.empty());
    for (const auto& p : inked)
        EXPECT_LT(p.first, 20) << "only the first ring is drawn";
}

}  // namespace
