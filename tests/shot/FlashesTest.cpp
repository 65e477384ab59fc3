// FlashesTest.cpp - counted changes of luminance, and seconds with more
// than three flashes.
#include "korvane/Flashes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

// `seconds` of a square wave of `perSecond` flashes at 24 frames a second
// between `dark` and `bright`.
std::vector<double> squareWave(double perSecond, double dark, double bright, int seconds = 2)
{
    std::vector<double> values;
    for (int i = 0; i < 24 * seconds; ++i)
        values.push_back(std::fmod(i * perSecond / 24.0, 1.0) < 0.5 ? dark : bright);
    return values;
}

TEST(Flashes, SecondsWithMoreThanThreeAreFound)
{
    struct Case {
        const char* what;
        std::vector<double> luminance;
        bool tooMany;
    };
    std::vector<double> fade;
    for (int i = 0; i < 48; ++i)
        fade.push_back(i / 47.0);
    std::vector<double> flicker;  // small steps: under a tenth each way
    for (int i = 0; i < 48; ++i)
        flicker.push_back(0.4 + (i % 2) * 0.05);
    const Case cases[] = {
        {"six a second", squareWave(6, 0.05, 0.6), true},
        {"four a second", squareWave(4, 0.05, 0.6), true},
        {"three a second", squareWave(3, 0.05, 0.6), false},
        {"six a second, all bright", squareWave(6, 0.85, 1.0), false},
        {"six a second, under a tenth", squareWave(6, 0.3, 0.38), false},
        {"a fade", fade, false},
        {"a flicker", flicker, false},
        {"nothing", {}, false},
    };
    for (const Case& c : cases)
        EXPECT_EQ(!korvane::tooManyFlashes(c.luminance, 24).empty(), c.tooMany) << c.what;
    // A change counts once however many frames it takes.
    EXPECT_EQ(korvane::flashChanges({0.0, 0.05, 0.1, 0.2, 0.15, 0.05, 0.3}).size(), 3u);
}

} // namespace
