// ColourTest.cpp - the sRGB curve against its published values, dithered
// codes that keep exact values and average out, and the built-in spaces.
#include "korvane/ColourSpaces.h"
#include "korvane/Dither.h"
#include "korvane/Error.h"
#include "korvane/TransferCurves.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

TEST(TransferCurves, MatchTheStandardAndInvertEachOther)
{
    struct Pair {
        double encoded, linear;
    };
    // Values of the piecewise sRGB definition, negatives mirrored.
    const Pair pairs[] = {{0.0, 0.0},           {0.02, 0.02 / 12.92}, {0.5, 0.214041140482232},
                          {0.75, 0.522521553968866}, {1.0, 1.0},                 {-0.5, -0.214041140482232},
                          {1.5, 2.537155239391517}};
    for (const Pair& p : pairs) {
        EXPECT_NEAR(korvane::srgbToLinear(p.encoded), p.linear, 1e-12) << p.encoded;
        EXPECT_NEAR(korvane::linearToSrgb(p.linear), p.encoded, 1e-12) << p.linear;
    }
    for (int i = 0; i <= 1000; ++i) {
        const double v = i / 1000.0;
        ASSERT_NEAR(korvane::linearToSrgb(korvane::srgbToLinear(v)), v, 1e-12) << v;
    }
}

TEST(Dither, ExactCodesStayAndOthersAverageToTheirValue)
{
    for (const std::uint32_t maxCode : {255u, 65535u}) {
        // A code, or a rounding error off one, is that code at every pixel.
        for (std::uint32_t code : {0u, 1u, maxCode / 3, maxCode / 2 + 7, maxCode - 1, maxCode}) {
            const double value = static_cast<double>(code) / maxCode;
            for (int i = 0; i < 4096; ++i) {
                const int x = i % 64, y = i / 64;
                ASSERT_EQ(korvane::ditheredCode(value, maxCode, x, y, i % 3), code);
                ASSERT_EQ(korvane::ditheredCode(value * (1 - 1e-12), maxCode, x, y, i % 3), code);
                ASSERT_EQ(korvane::ditheredCode(static_cast<float>(value), maxCode, x, y, i % 3), code);
            }
        }
        // Between codes, the codes of a patch average to the value, where
        // rounding would give one code to the whole patch (a band).
        for (const double fraction : {0.1, 0.3, 0.5, 0.9}) {
            const double value = (100 + fraction) / maxCode;
            double sum = 0;
            for (int y = 0; y < 128; ++y)
                for (int x = 0; x < 128; ++x)
                    sum += korvane::ditheredCode(value, maxCode, x, y, 1);
            EXPECT_NEAR(sum / (128 * 128), 100 + fraction, 0.02) << maxCode << " " << fraction;
        }
    }
    EXPECT_EQ(korvane::ditheredCode(-1.0, 255, 0, 0, 0), 0u);
    EXPECT_EQ(korvane::ditheredCode(std::nan(""), 255, 0, 0, 0), 0u);
    EXPECT_EQ(korvane::ditheredCode(7.0, 255, 0, 0, 0), 255u);
}

TEST(ColourSpaces, NamesAreFoundAndConversionsKeepAlpha)
{
    const korvane::ColourSpaces spaces;
    EXPECT_EQ(spaces.working(), "linear");
    EXPECT_EQ(spaces.find("SRGB", "--input-colorspace"), "sRGB");
    try {
        spaces.find("ACEScg", "--input-colorspace");
        ADD_FAILURE() << "an unknown space was found";
    } catch (const korvane::Error& e) {
        EXPECT_STREQ(e.what(), "--input-colorspace: no colour space is called 'ACEScg' in the built-in spaces; the spaces are linear, sRGB");
    }
    std::vector<float> pixels = {0.5f, 0.25f, 1.0f, 0.3f, 0.0f, 2.0f, 0.04f, 1.0f};
    const std::vector<float> before = pixels;
    spaces.conversion("sRGB", "linear")->apply(pixels.data(), 2, 4);
    EXPECT_NEAR(pixels[0], 0.214041f, 1e-6f);
    EXPECT_EQ(pixels[3], 0.3f);
    EXPECT_EQ(pixels[7], 1.0f);
    spaces.conversion("linear", "sRGB")->apply(pixels.data(), 2, 4);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        EXPECT_NEAR(pixels[i], before[i], 1e-6f) << i;
    EXPECT_TRUE(spaces.conversion("linear", "LINEAR")->isIdentity());
}

TEST(ColourSpaces, AConfigurationGivesItsSpacesRolesAndConversions)
{
    const korvane::ColourSpaces spaces = korvane::ColourSpaces::fromConfig(OCIO_TEST_CONFIG);
    EXPECT_FALSE(spaces.builtIn());
    EXPECT_EQ(spaces.working(), "lin_rec709");
    EXPECT_EQ(spaces.displayReferred(), "sRGB texture");
    EXPECT_EQ(spaces.find("srgb_tx", "--input-colorspace"), "sRGB texture");  // an alias
    EXPECT_EQ(spaces.find("scene_linear", "--working-colorspace"), "lin_rec709");  // a role

    struct Case {
        const char* from;
        const char* to;
        double (*expected)(double);
    };
    const Case cases[] = {
        {"sRGB texture", "lin_rec709", [](double v) { return korvane::srgbToLinear(v); }},
        {"lin_rec709", "sRGB texture", [](double v) { return korvane::linearToSrgb(v); }},
        {"lin_rec709", "half_linear", [](double v) { return v / 2; }},
        {"lin_rec709", "gamma22", [](double v) { return std::pow(v, 1 / 2.2); }},
    };
    for (const Case& c : cases) {
        std::vector<float> pixels;
        for (int i = 0; i <= 20; ++i)
            pixels.insert(pixels.end(), {i / 20.0f, i / 40.0f, i / 80.0f, 0.5f});
        spaces.conversion(c.from, c.to)->apply(pixels.data(), 21, 4);
        for (int i = 0; i <= 20; ++i) {
            const double inputs[3] = {i / 20.0, i / 40.0, i / 80.0};
            for (int ch = 0; ch < 3; ++ch)
                EXPECT_NEAR(pixels[i * 4 + ch], c.expected(inputs[ch]), 2e-6) << c.from << " to " << c.to << " " << i;
            EXPECT_EQ(pixels[i * 4 + 3], 0.5f);
        }
    }

    for (const char* file : {"/nonexistent/config.ocio", "/etc/hostname"}) {
        try {
            korvane::ColourSpaces::fromConfig(file);
            ADD_FAILURE() << file << " was taken";
        } catch (const korvane::Error& e) {
            EXPECT_EQ(std::string(e.what()).rfind(file, 0), 0u) << e.what();
        }
    }
}

} // namespace
