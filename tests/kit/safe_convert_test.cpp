// Narrowing of doubles that may come from anywhere: the exact machine result
// wherever the conversion is defined, the documented answer elsewhere.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>

#include "SafeConvert.h"

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();
const float kFloatInf = std::numeric_limits<float>::infinity();

// Floats compared bit for bit, so that -0 and +0 differ and NaN equals NaN.
std::uint32_t bitsOf(float value)
{
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

struct NarrowCase {
    double value;
    float expected;
};

// Around the top of the float range: half a step beyond FLT_MAX is where
// rounding to nearest reaches the infinity (the tie goes to the even
// neighbour, which is the infinity).
const NarrowCase kNarrowCases[] = {
    {0.0, 0.0f},
    {-0.0, -0.0f},
    {1.0, 1.0f},
    {0.1, 0.1f},
    {-2.5e-3, -2.5e-3f},
    {1e-40, 1e-40f},     // a float denormal
    {1e-50, 0.0f},       // below every float
    {-1e-50, -0.0f},
    {3.4028234663852886e38, FLT_MAX},
    {0x1.fffffefffffffp127, FLT_MAX},   // just short of the midpoint
    {-0x1.fffffefffffffp127, -FLT_MAX},
    {0x1.ffffffp127, kFloatInf},        // the midpoint itself
    {-0x1.ffffffp127, -kFloatInf},
    {3.5e38, kFloatInf},
    {1e300, kFloatInf},
    {-1e300, -kFloatInf},
    {std::numeric_limits<double>::max(), kFloatInf},
    {kInf, kFloatInf},
    {-kInf, -kFloatInf},
};

TEST(NarrowToFloat, RoundsToNearestAndSaturatesToInfinity)
{
    for (const NarrowCase& c : kNarrowCases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(bitsOf(NarrowToFloat(c.value)), bitsOf(c.expected));
    }
}

TEST(NarrowToFloat, KeepsNaN)
{
    EXPECT_TRUE(std::isnan(NarrowToFloat(kNaN)));
    EXPECT_TRUE(std::isnan(NarrowToFloat(-kNaN)));
}

struct TruncCase {
    double value;
    int32_t saturated;    // TruncLong
    uint32_t unsignedly;  // TruncULong
    int32_t orMin;        // TruncLongOrMin
};

const TruncCase kTruncCases[] = {
    {0.0, 0, 0u, 0},
    {-0.0, 0, 0u, 0},
    {3.99, 3, 3u, 3},
    {-3.99, -3, 0u, -3},
    {-0.99, 0, 0u, 0},
    {-1.0, -1, 0u, -1},
    {2147483647.0, INT32_MAX, 2147483647u, INT32_MAX},
    {2147483647.75, INT32_MAX, 2147483647u, INT32_MAX},
    {2147483648.0, INT32_MAX, 2147483648u, INT32_MIN},
    {-2147483648.0, INT32_MIN, 0u, INT32_MIN},
    {-2147483648.75, INT32_MIN, 0u, INT32_MIN},
    {-2147483649.0, INT32_MIN, 0u, INT32_MIN},
    {4294967295.5, INT32_MAX, UINT32_MAX, INT32_MIN},
    {4294967296.0, INT32_MAX, UINT32_MAX, INT32_MIN},
    {1e300, INT32_MAX, UINT32_MAX, INT32_MIN},
    {-1e300, INT32_MIN, 0u, INT32_MIN},
    {kInf, INT32_MAX, UINT32_MAX, INT32_MIN},
    {-kInf, INT32_MIN, 0u, INT32_MIN},
    {kNaN, 0, 0u, INT32_MIN},
};

TEST(TruncConversions, TruncateTowardZeroAndAnswerOutOfRangeAsDocumented)
{
    for (const TruncCase& c : kTruncCases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(TruncLong(c.value), c.saturated);
        EXPECT_EQ(TruncULong(c.value), c.unsignedly);
        EXPECT_EQ(TruncLongOrMin(c.value), c.orMin);
    }
}

} // namespace
