// Numbers, durations and dates as Pascal strings.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <string>

#include "PStrTestUtil.h"
#include "PString.h"

using kittest::Str;

TEST(PStrNumbers, Decimal)
{
    EXPECT_EQ(Str(PStrNum(0)), "0");
    EXPECT_EQ(Str(PStrNum(-42)), "-42");
    EXPECT_EQ(Str(PStrLongStr(INT32_MIN)), "-2147483648");
    EXPECT_EQ(Str(PStrLongStr(INT32_MAX)), "2147483647");
    EXPECT_EQ(Str(PStrULongStr(0u)), "");  // long-standing: zero gives nothing
    EXPECT_EQ(Str(PStrULongStr(7u)), "7");
    EXPECT_EQ(Str(PStrULongStr(4294967295u)), "4294967295");
}

TEST(PStrNumbers, GroupedAndShortNumbersLoseTheirSign)
{
    struct Case {
        int32_t n;
        const char* want;
    };
    const Case cases[] = {
        {0, "0"},           {7, "7"},         {-7, "7"},
        {-12, "12"},        {999, "999"},     {-999, "999"},
        {1000, "1,000"},    {-1000, "-1,000"}, {12345, "12,345"},
        {100000, "100,000"}, {1234567, "1,234,567"},
        {INT32_MIN, "-2,147,483,648"}, {INT32_MAX, "2,147,483,647"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Str(PStrNumericalStr(c.n)), c.want) << c.n;
    }
}

TEST(PStrNumbers, Kilo)
{
    EXPECT_EQ(Str(PStrKStr(1023u)), "0K");
    EXPECT_EQ(Str(PStrKStr(2048u)), "2K");
    EXPECT_EQ(Str(PStrKStr(4294967295u)), "4,194,303K");  // unsigned shift
    EXPECT_EQ(Str(PStrKSStr(-1023)), "0K");                 // division toward zero
    EXPECT_EQ(Str(PStrKSStr(-1024)), "1K");
    EXPECT_EQ(Str(PStrKSStr(-1024 * 1000)), "-1,000K");
    EXPECT_EQ(Str(PStrKSStr(INT32_MIN)), "-2,097,152K");
}

TEST(PStrNumbers, FloatTrimming)
{
    struct Case {
        double x;
        int16_t digits;
        const char* want;
    };
    const Case cases[] = {
        {2.5, 8, "2.5"},       {3.0, 8, "3"},        {-1e-10, 8, "0"},
        {2.5, -2, "2.50"},     {2.0, -1, "2.0"},     {-2.5, -1, "-2.5"},
        {3.0, -0, "3"},        {-0.3, 0, "0"},       {-0.0, 2, "0"},
        {100.0, 2, "100"},     {1200.0, 0, "1200"},  {-0.125, 2, "-0.12"},
        {0.5, 300, "0.5"},     {1.0e-5, -6, "0.000010"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Str(PStrFloatStr(c.x, c.digits)), c.want) << c.x << " with " << c.digits;
    }
    // A text longer than a Pascal string keeps its first 255 characters.
    const std::string huge = Str(PStrFloatStr(1e300, 0));
    EXPECT_EQ(huge.size(), 255u);
    EXPECT_EQ(huge.substr(0, 16), "1000000000000000");
    EXPECT_EQ(Str(PStrFloatStr(1.0, -300)), "1." + std::string(253, '0'));
}

TEST(PStrTime, Durations)
{
    struct Case {
        int32_t seconds;
        const char* want;
    };
    const Case cases[] = {
        {0, "0 Seconds"},
        {1, "1 Second"},
        {-1, "-1 Second"},
        {2, "2 Seconds"},
        {59, "59 Seconds"},
        {60, "1 Min.  0 Sec."},
        {-61, "-1 Min.  1 Sec."},
        {3599, "59 Min.  59 Sec."},
        {3600, "1Hr 0Min 0Sec"},
        {7384, "2Hr 3Min 4Sec"},
        {86399, "23Hr 59Min 59Sec"},
        {86400, "1D 0H 0M 0S"},
        {93784, "1D 2H 3M 4S"},
        {-93784, "-1D 2H 3M 4S"},
        {INT32_MIN, "-24855D 3H 14M 8S"},
        {INT32_MAX, "24855D 3H 14M 7S"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Str(PStrTimeStr(c.seconds)), c.want) << c.seconds;
    }
}

class PStrDate : public ::testing::Test {
protected:
    void SetUp() override
    {
        const char* old = getenv("TZ");
        hadTZ_ = old != nullptr;
        if (hadTZ_) {
            oldTZ_ = old;
        }
        setenv("TZ", "UTC", 1);
        tzset();
    }
    void TearDown() override
    {
        if (hadTZ_) {
            setenv("TZ", oldTZ_.c_str(), 1);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }

private:
    bool hadTZ_ = false;
    std::string oldTZ_;
};

TEST_F(PStrDate, RelativeDaysAndTheLongForm)
{
    const int64_t now = 1772723229;  // Thursday 2026-03-05 15:07:09 UTC
    const int64_t day = 86400;
    struct Case {
        int64_t second;
        const char* want;
    };
    const Case cases[] = {
        {now, "3:07:09PM Today"},
        {0, "3:07:09PM Today"},  // 0 stands for curSecond
        {now - 15 * 3600 - 7 * 60 - 9, "12:00:00AM Today"},
        {now - 3 * 3600 - 7 * 60 - 9, "12:00:00PM Today"},
        {now - 2 * 3600 - 7 * 60 - 8, "1:00:01PM Today"},
        {now - 4 * 3600, "11:07:09AM Today"},
        {now + day, "3:07:09PM Tomorrow"},
        {now - day, "3:07:09PM Yesterday"},
        {now + 9 * 3600, "12:07:09AM Tomorrow"},
        {now + 2 * day, "3:07:09PM 2/7/6"},  // month 0-based, year from "126"
        {now - 55 * day, "3:07:09PM 0/9/6"},
        {946684799, "11:59:59PM 11/31/"},  // 1999: "99" has no third character
        {2114380800, "12:00:00AM 0/1/7"},  // 2037-01-01: "137"
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Str(PStrDateStr(c.second, now)), c.want) << c.second;
    }
}

TEST_F(PStrDate, ClockAndUnplaceableMoments)
{
    // curSecond 1 is now; the same moment then reads as today.
    const std::string t = Str(PStrDateStr(static_cast<int64_t>(time(nullptr)), 1));
    EXPECT_NE(t.find(" Today"), std::string::npos) << t;
    // Moments beyond what the platform clock can express give an empty text.
    EXPECT_EQ(Str(PStrDateStr(INT64_MAX, 1772723229)), "");
    EXPECT_EQ(Str(PStrDateStr(INT64_MIN, 1772723229)), "");
    // A reference day at the end of the range cannot overflow tomorrow.
    EXPECT_EQ(Str(PStrDateStr(1772723229, INT64_MAX)), "3:07:09PM 2/5/6");
}
