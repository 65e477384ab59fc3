// OcclusionTest.cpp - the visible part of a light's disc: whole, none,
// half, steady under sub-pixel moves, and the part outside the frame.
#include "korvane/Occlusion.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using korvane::OcclusionMatte;
using korvane::OffscreenIs;

// A width x height matte hiding where hidden(x, y) (pixel indices).
template <typename Hidden>
OcclusionMatte matte(int width, int height, Hidden hidden)
{
    std::vector<float> coverage(static_cast<std::size_t>(width) * height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            coverage[static_cast<std::size_t>(y) * width + x] = hidden(x, y);
    return OcclusionMatte(width, height, std::move(coverage));
}

TEST(Occlusion, TheVisiblePartOfTheDisc)
{
    struct Case {
        const char* what;
        OcclusionMatte matte;
        double x, y, radius;
        OffscreenIs offscreen;
        double visible, tolerance;
    };
    const Case cases[] = {
        {"nothing in front", matte(100, 60, [](int, int) { return 0.0f; }), 50, 30, 10, OffscreenIs::leftOut, 1, 0},
        {"all hidden", matte(100, 60, [](int, int) { return 1.0f; }), 50, 30, 10, OffscreenIs::leftOut, 0, 0},
        {"half-grey matte", matte(100, 60, [](int, int) { return 0.5f; }), 50, 30, 10, OffscreenIs::leftOut, 0.5,
         1e-12},
        {"left half hidden", matte(100, 60, [](int x, int) { return x < 50 ? 1.0f : 0.0f; }), 50, 30, 10,
         OffscreenIs::leftOut, 0.5, 0.03},
        {"a NaN hides", matte(100, 60, [](int, int) { return std::nanf(""); }), 50, 30, 10, OffscreenIs::leftOut, 0,
         0},
        {"half outside, left out", matte(100, 60, [](int, int) { return 1.0f; }), 0, 30, 10, OffscreenIs::leftOut, 0,
         0},
        {"half outside, seen", matte(100, 60, [](int, int) { return 1.0f; }), 0, 30, 10, OffscreenIs::visible, 0.5,
         0.03},
        {"wholly outside", matte(100, 60, [](int, int) { return 1.0f; }), -50, 30, 10, OffscreenIs::leftOut, 1, 0},
    };
    for (const Case& c : cases)
        EXPECT_NEAR(c.matte.visibleFraction(c.x, c.y, c.radius, c.offscreen), c.visible, c.tolerance) << c.what;
}

// A bar two pixels wide swept across a light of radius 10 in steps of a
// tenth of a pixel: the visible part dips smoothly and comes back, never
// jumping between neighbouring steps.
TEST(Occlusion, ABarPassingTheLightDipsSmoothly)
{
    double lowest = 1.0, largestStep = 0.0, previous = 1.0;
    for (int step = 0; step <= 450; ++step) {
        const double barLeft = 20.0 + step * 0.1;
        const OcclusionMatte bar = matte(100, 60, [&](int x, int) {
            // The bar's share of each pixel, so it moves by parts of a pixel too.
            const double covered = std::min(x + 1.0, barLeft + 2.0) - std::max(double(x), barLeft);
            return static_cast<float>(std::clamp(covered, 0.0, 1.0));
        });
        const double visible = bar.visibleFraction(50, 30, 10, OffscreenIs::leftOut);
        lowest = std::min(lowest, visible);
        largestStep = std::max(largestStep, std::fabs(visible - previous));
        previous = visible;
    }
    EXPECT_NEAR(lowest, 1.0 - 2.0 * 20 / (3.14159265 * 100), 0.04);  // a strip of 2 x 20 of the disc's area
    EXPECT_LT(largestStep, 0.01);
    EXPECT_EQ(previous, 1.0);
}

} // namespace
