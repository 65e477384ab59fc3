// ErrorTest.cpp - how an error names where its input went wrong.
#include "korvane/Error.h"

#include <gtest/gtest.h>

namespace {

using korvane::ErrorPlace;

TEST(Error, MessageNamesTheFileLineAndFieldItKnows)
{
    struct Case {
        ErrorPlace place;
        const char* message;
    };
    const Case cases[] = {
        {ErrorPlace{"shot.json", 12, "scene.width"}, "shot.json:12: scene.width: must be whole"},
        {ErrorPlace{"shot.json", 3}, "shot.json:3: must be whole"},
        {ErrorPlace{"Glintwave.rsc"}, "Glintwave.rsc: must be whole"},
        {ErrorPlace{"shot.json", 0, "scene"}, "shot.json: scene: must be whole"},
        {ErrorPlace{"", 0, "frame range \"1-\""}, "frame range \"1-\": must be whole"},
        {ErrorPlace{"", 7}, "must be whole"},  // a line of no file says nothing
    };
    for (const Case& c : cases) {
        const korvane::Error error(c.place, "must be whole");
        EXPECT_STREQ(error.what(), c.message);
        EXPECT_EQ(error.file(), c.place.file);
        EXPECT_EQ(error.line(), c.place.line);
        EXPECT_EQ(error.field(), c.place.field);
    }
    const korvane::Error plain("cannot start worker processes");
    EXPECT_STREQ(plain.what(), "cannot start worker processes");
    EXPECT_EQ(plain.file(), "");
    EXPECT_EQ(plain.line(), 0);
}

} // namespace
