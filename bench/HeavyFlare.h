/*
 * HeavyFlare.h - the heavy reference flare: an outer glow that covers almost
 * the whole frame, a halo, an origin glow, twelve rings and reflections
 * along the axis and six streaks, with the light at (30 %, 30 %) of the
 * frame. One table unit is the frame's height, as the preview sets it up.
 */
#ifndef GLINTWAVE_BENCH_HEAVY_FLARE_H
#define GLINTWAVE_BENCH_HEAVY_FLARE_H

#include "FlareTestBlock.h"

namespace flarebench {

/* turned: rotated by 30 degrees with an aspect ratio of 1.3, so that the
   rings take the turned path. */
inline int32_t BuildHeavyFlare(flaretest::FlareTestBlock& block, int32_t width, int32_t height, bool turned = false)
{
    using flaretest::Stop;
    constexpr uint16_t F = kFullLevel;
    block.SetFrame(0, 0, width, height);
    block.SetLight(0.3 * width, 0.3 * height, width / 2.0, height / 2.0, height);
    block.data()->flareLightSize = 1.0;
    if (turned) {
        block.control.flareRotation = 30.0;
        block.control.flareAspectRatio = 1.3;
        block.control.flareFlags |= FLARE_FLAG(kFlagUseAspectRatio);
    }

    block.AddRing(kRingOuterGlow, 1.0f, 1.35f,
                  {{0.0f, 2600, 2100, 1600}, {0.3f, 1200, 950, 700}, {0.7f, 300, 240, 180}, {1.0f, 0, 0, 0}});
    block.AddRing(kRingHalo, 1.0f, 0.55f,
                  {{0.0f, 0, 0, 0}, {0.8f, 0, 0, 0}, {0.88f, 2600, 2200, 3400}, {0.94f, 1800, 2600, 1400},
                   {1.0f, 0, 0, 0}});
    block.AddRing(kRingOriginGlow, 1.0f, 0.2f,
                  {{0.0f, F, F, F}, {0.1f, F, 15200, 12800}, {0.45f, 6400, 3600, 1600}, {1.0f, 0, 0, 0}});

    flaretest::AddReflections(block, {
        {0.8f, 0.04f, 1800, 2600, 1200, false},   {0.6f, 0.09f, 900, 1500, 2600, true},
        {0.4f, 0.06f, 2400, 1400, 700, false},    {0.2f, 0.15f, 700, 1300, 900, true},
        {0.05f, 0.03f, 2800, 2800, 2000, false},  {-0.1f, 0.2f, 600, 800, 1500, true},
        {-0.3f, 0.07f, 1500, 2300, 1100, false},  {-0.5f, 0.28f, 500, 600, 900, true},
        {-0.7f, 0.05f, 2000, 1600, 2400, false},  {-0.9f, 0.12f, 800, 1800, 1200, true},
        {-1.1f, 0.04f, 2600, 2000, 900, false},   {-1.4f, 0.35f, 400, 500, 800, true},
    });

    const float d = 0.70710678f;
    const std::initializer_list<Stop> warm = {{0.0f, F, 14000, 11000}, {0.3f, 4000, 3200, 2400}, {1.0f, 0, 0, 0}};
    const std::initializer_list<Stop> cold = {{0.0f, 9000, 9000, F}, {1.0f, 0, 0, 0}};
    block.AddStreak(1.0f, 1.0f, 0.0f, 0.0f, 0.8f, warm);
    block.AddStreak(1.0f, -1.0f, 0.0f, 0.0f, 0.8f, warm);
    block.AddStreak(1.0f, 0.0f, 1.0f, 0.0f, 0.5f, warm);
    block.AddStreak(1.0f, 0.0f, -1.0f, 0.0f, 0.5f, warm);
    block.AddStreak(1.0f, d, d, 0.02f, 0.4f, cold);
    block.AddStreak(1.0f, -d, -d, 0.02f, 0.4f, cold);

    return block.Layout();
}

}  // namespace flarebench

#endif /* GLINTWAVE_BENCH_HEAVY_FLARE_H */
