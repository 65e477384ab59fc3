// FrameRangeTest.cpp - frame range lists and numbered file names.
#include "korvane/FrameRange.h"

#include <gtest/gtest.h>

namespace {

using korvane::FrameList;
using korvane::Error;

TEST(FrameRange, Lists)
{
    const std::pair<const char*, FrameList> cases[] = {
        {"7", {7}},
        {"1-5", {1, 2, 3, 4, 5}},
        {"1-10x3", {1, 4, 7, 10}},
        {"1-10x4", {1, 5, 9}},
        {"1,5,9-12", {1, 5, 9, 10, 11, 12}},
        {"9-12,1,5", {1, 5, 9, 10, 11, 12}},
        {"1-4,3-6", {1, 2, 3, 4, 5, 6}},
        {"-2-1", {-2, -1, 0, 1}},
        {"-5--3", {-5, -4, -3}},
        {"2147483646-2147483647", {2147483646, 2147483647}},
    };
    for (const auto& [text, frames] : cases)
        EXPECT_EQ(korvane::parseFrameRange(text), frames) << text;
}

TEST(FrameRange, ErrorsSayWhatIsWrong)
{
    const std::pair<const char*, const char*> cases[] = {
        {"", "frame range is empty"},
        {"1-", "a frame number is missing after '-'"},
        {"1-10x", "a frame number is missing after 'x'"},
        {"1-10x0", "the step after 'x' must be 1 or more"},
        {"10-1", "\"10-1\" ends before it starts"},
        {"1,,2", "an empty part between commas"},
        {"1,", "an empty part between commas"},
        {"a", "a frame number is missing at the start"},
        {"1 - 5", "unexpected \" - 5\" in \"1 - 5\""},
        {"1-5y", "unexpected \"y\""},
        {"99999999999", "does not fit 32 bits"},
        {"1-2000000000", "more than 10000000 frames"},
    };
    for (const auto& [text, reason] : cases) {
        try {
            korvane::parseFrameRange(text);
            ADD_FAILURE() << text << ": accepted";
        } catch (const Error& error) {
            EXPECT_NE(std::string(error.what()).find(reason), std::string::npos) << text << ": " << error.what();
        }
    }
}

TEST(FramePattern, Names)
{
    struct Case {
        const char* pattern;
        std::int32_t frame;
        const char* name;
    };
    const Case cases[] = {
        {"out.####.exr", 7, "out.0007.exr"},
        {"out.#.exr", 7, "out.0007.exr"},
        {"out.##.exr", 7, "out.07.exr"},
        {"out.@.exr", 7, "out.7.exr"},
        {"out.@@@.exr", 12, "out.012.exr"},
        {"out.%04d.exr", 12345, "out.12345.exr"},
        {"out.%d.exr", 42, "out.42.exr"},
        {"out.%04d.exr", -5, "out.-005.exr"},
        {"50%_#.png", 3, "50%_0003.png"},
        {"still.exr", 3, "still.exr"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(korvane::FramePattern(c.pattern).name(c.frame), c.name) << c.pattern;
    EXPECT_FALSE(korvane::FramePattern("still.exr").numbered());
    for (const char* bad : {"a.##.b.##.exr", "a.%04d.#.exr", "a.###########.exr"})
        EXPECT_THROW(korvane::FramePattern{bad}, Error) << bad;
}

} // namespace
