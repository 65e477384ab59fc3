/*
 * SyntheticFlare.h - a flare style built in memory that looks like a real
 * one: origin glow, halo and outer glow at the light, eight rings and
 * reflections along the axis, four streaks. Used by the whole-frame tests and
 * the benchmarks.
 */
#ifndef GLINTWAVE_TEST_SYNTHETIC_FLARE_H
#define GLINTWAVE_TEST_SYNTHETIC_FLARE_H

#include "FlareTestBlock.h"

namespace flaretest {

/* Lays the style out for a frame of width x height with the light at
   (lightX, lightY), one table unit being the frame's height in pixels, as
   the preview sets it up. Returns CalcFlareInfo's result. */
inline int32_t BuildSyntheticFlare(FlareTestBlock& block, int32_t width, int32_t height, double lightX,
                                   double lightY)
{
    constexpr uint16_t F = kFullLevel;
    block.SetFrame(0, 0, width, height);
    block.SetLight(lightX, lightY, width / 2.0, height / 2.0, height);
    block.data()->flareLightSize = 1.0;

    block.AddRing(kRingOriginGlow, 1.0f, 0.16f,
                  {{0.0f, F, F, F}, {0.12f, F, 15200, 12800}, {0.45f, 6400, 3600, 1600}, {1.0f, 0, 0, 0}});
    block.AddRing(kRingHalo, 1.0f, 0.5f,
                  {{0.0f, 0, 0, 0}, {0.82f, 0, 0, 0}, {0.9f, 2600, 2200, 3400}, {0.95f, 1800, 2600, 1400},
                   {1.0f, 0, 0, 0}});
    block.AddRing(kRingOuterGlow, 1.0f, 1.1f, {{0.0f, 2400, 1900, 1400}, {0.4f, 900, 700, 500}, {1.0f, 0, 0, 0}});

    AddReflections(block, {
        {0.72f, 0.035f, 1800, 2600, 1200, false}, {0.45f, 0.08f, 900, 1500, 2600, true},
        {0.22f, 0.05f, 2400, 1400, 700, false},   {-0.08f, 0.12f, 700, 1300, 900, true},
        {-0.32f, 0.03f, 2800, 2800, 2000, false}, {-0.55f, 0.18f, 600, 800, 1500, true},
        {-0.85f, 0.06f, 1500, 2300, 1100, false}, {-1.25f, 0.25f, 500, 600, 900, true},
    });

    const float d = 0.70710678f;
    block.AddStreak(1.0f, 1.0f, 0.0f, 0.0f, 0.55f, {{0.0f, F, 14000, 11000}, {0.3f, 4000, 3200, 2400}, {1.0f, 0, 0, 0}});
    block.AddStreak(1.0f, -1.0f, 0.0f, 0.0f, 0.55f, {{0.0f, F, 14000, 11000}, {0.3f, 4000, 3200, 2400}, {1.0f, 0, 0, 0}});
    block.AddStreak(1.0f, d, d, 0.02f, 0.3f, {{0.0f, 9000, 9000, F}, {1.0f, 0, 0, 0}});
    block.AddStreak(1.0f, -d, -d, 0.02f, 0.3f, {{0.0f, 9000, 9000, F}, {1.0f, 0, 0, 0}});

    return block.Layout();
}

}  // namespace flaretest

#endif /* GLINTWAVE_TEST_SYNTHETIC_FLARE_H */
