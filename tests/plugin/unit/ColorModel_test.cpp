/*
 * Colour ramps from stops: box filtering, scaling, contrast, grey, clamping.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "FlareTestBlock.h"

using flaretest::FlareTestBlock;

namespace {

constexpr uint16_t F = kFullLevel;

struct RampCase {
    const char* name;
    std::vector<flaretest::Stop> stops;
    double length;
    double intensity;
    double contrast;
    bool gray;
    uint32_t light;          /* ARGB bytes a, r, g, b from the high byte down */
    FlareColor tint;
    std::vector<FlareColor> expected;  /* entries before the closing black one */
};

ElementColor MakeStop(const flaretest::Stop& s)
{
    ElementColor c{};
    c.rgb.radius = s.radius;
    c.rgb.alpha = 0xFFFF;
    c.rgb.red = s.red;
    c.rgb.green = s.green;
    c.rgb.blue = s.blue;
    return c;
}

void SetLight(PluginDataRec* d, uint32_t argb)
{
    d->flareLightColor.argb.a = (uint8_t)(argb >> 24);
    d->flareLightColor.argb.r = (uint8_t)(argb >> 16);
    d->flareLightColor.argb.g = (uint8_t)(argb >> 8);
    d->flareLightColor.argb.b = (uint8_t)argb;
}

class RampTest : public ::testing::TestWithParam<RampCase> {};

TEST_P(RampTest, EntriesAndClosingBlack)
{
    const RampCase& c = GetParam();
    FlareTestBlock block(4096);
    SetLight(block.data(), c.light);
    std::vector<ElementColor> stops;
    for (const auto& s : c.stops)
        stops.push_back(MakeStop(s));
    int32_t count = (int32_t)c.expected.size();
    std::vector<FlareColor> table(count + 2, FlareColor{0xBEEF, 0xBEEF, 0xBEEF});

    bool drawn = CalcRGBColors(block.data(), c.length, c.intensity, c.contrast, c.gray, &c.tint,
                               (int32_t)stops.size(), count, stops.data(), table.data());

    EXPECT_TRUE(drawn);
    for (int32_t i = 0; i < count; ++i) {
        EXPECT_EQ(table[i].red, c.expected[i].red) << "entry " << i;
        EXPECT_EQ(table[i].green, c.expected[i].green) << "entry " << i;
        EXPECT_EQ(table[i].blue, c.expected[i].blue) << "entry " << i;
    }
    EXPECT_EQ(table[count].red | table[count].green | table[count].blue, 0) << "closing entry";
    EXPECT_EQ(table[count + 1].red, 0xBEEF) << "nothing written past the closing entry";
}

const FlareColor kWhiteTint{0xFFFF, 0xFFFF, 0xFFFF};

INSTANTIATE_TEST_SUITE_P(
    ColorModel, RampTest,
    ::testing::Values(
        /* Falls off linearly; the first entry integrates [0, 0.25] from 0. */
        RampCase{"TwoStopsLinear", {{0.0f, F, F, F}, {1.0f, 0, 0, 0}}, 4, 1, 1, false, 0xFFFFFFFF, kWhiteTint,
                 {{14280, 14280, 14280}, {10200, 10200, 10200}, {6120, 6120, 6120}, {2040, 2040, 2040}}},
        /* Contrast 2: a full channel stays full, half level becomes a quarter. */
        RampCase{"ContrastKeepsFull", {{0.0f, F, F, F}, {1.0f, F, F, F}}, 4, 1, 2.0, false, 0xFFFFFFFF, kWhiteTint,
                 {{F, F, F}, {F, F, F}, {F, F, F}, {F, F, F}}},
        RampCase{"ContrastDarkensMidTones", {{0.0f, 8160, 8160, 8160}, {1.0f, 8160, 8160, 8160}}, 4, 1, 2.0, false,
                 0xFFFFFFFF, kWhiteTint,
                 {{4080, 4080, 4080}, {4080, 4080, 4080}, {4080, 4080, 4080}, {4080, 4080, 4080}}},
        /* 16320 * (8000 / 16320)^2 = 3921.57: truncated, not rounded. */
        RampCase{"ContrastTruncates", {{0.0f, 8000, 8000, 8000}, {1.0f, 8000, 8000, 8000}}, 2, 1, 2.0, false,
                 0xFFFFFFFF, kWhiteTint, {{3921, 3921, 3921}, {3921, 3921, 3921}}},
        RampCase{"LinearKeepsMidTones", {{0.0f, 8160, 8160, 8160}, {1.0f, 8160, 8160, 8160}}, 4, 1, 1.0, false,
                 0xFFFFFFFF, kWhiteTint,
                 {{8160, 8160, 8160}, {8160, 8160, 8160}, {8160, 8160, 8160}, {8160, 8160, 8160}}},
        /* Grey: red's level in every channel, then each channel's own scale
           (green light 128 of 255, blue tint 0). */
        RampCase{"GreyCarriesRedThenScales", {{0.0f, F, 0, 0}, {1.0f, F, 0, 0}}, 4, 1, 1, true, 0xFFFF80FF,
                 FlareColor{0xFFFF, 0xFFFF, 0},
                 {{F, 8192, 0}, {F, 8192, 0}, {F, 8192, 0}, {F, 8192, 0}}},
        /* Intensity 2 pushes the inner entries past full level: clamped. */
        RampCase{"ClampedAtFullLevel", {{0.0f, F, F, F}, {1.0f, 0, 0, 0}}, 4, 2, 1, false, 0xFFFFFFFF, kWhiteTint,
                 {{F, F, F}, {F, F, F}, {12240, 12240, 12240}, {4080, 4080, 4080}}},
        /* The first stop at 0.3: entry 0 lies before it and copies it
           unscaled; entry 1 starts from its full, unweighted colour. */
        RampCase{"UnweightedStartAtFirstStop", {{0.3f, 4000, 4000, 4000}, {1.0f, 0, 0, 0}}, 4, 0.25, 1, false,
                 0xFFFFFFFF, kWhiteTint,
                 {{4000, 4000, 4000}, {4686, 4686, 4686}, {536, 536, 536}, {179, 179, 179}}},
        /* Three stops: the sweep passes the middle one once. */
        RampCase{"ThreeStopsSweep", {{0.0f, F, F, F}, {0.5f, 0, F, 0}, {1.0f, 0, 0, 0}}, 8, 1, 1, false, 0xFFFFFFFF,
                 kWhiteTint,
                 {{14280, F, 14280}, {10200, F, 10200}, {6120, F, 6120}, {2040, F, 2040},
                  {0, 14280, 0}, {0, 10200, 0}, {0, 6120, 0}, {0, 2040, 0}}}),
    [](const ::testing::TestParamInfo<RampCase>& info) { return std::string(info.param.name); });

TEST(ColorModel, AddColorIntegratesTheBlend)
{
    /* Over [0.25, 0.75] between 1000 at 0 and 3000 at 1: width 0.5, blend at
       the midpoint 2000, so 1000 is added. */
    ElementColor a = MakeStop({0.0f, 1000, 0, 500});
    ElementColor b = MakeStop({1.0f, 3000, 100, 500});
    double r = 1.0, g = 0.0, bl = 0.0;
    AddColor(&a, &b, 0.25, 0.75, &r, &g, &bl);
    EXPECT_DOUBLE_EQ(r, 1001.0);
    EXPECT_DOUBLE_EQ(g, 25.0);
    EXPECT_DOUBLE_EQ(bl, 250.0);
}

}  // namespace
