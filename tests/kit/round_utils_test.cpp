// Clamped truncation of pixel coordinates and byte reversal.
#include <gtest/gtest.h>

#include <limits>

#include "RoundUtils.h"

namespace {

struct TruncCase {
    double n;
    int32_t iTrunc;
    int32_t truncLo;
    int32_t truncHi;
};

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

const TruncCase kTruncCases[] = {
    {0.0, 0, 1, 0},
    {-0.0, 0, 1, 0},
    {-0.5, -1, 0, -1},
    {0.5, 0, 1, 0},
    {2.0, 2, 3, 2},
    {2.5, 2, 3, 2},
    {3.0, 3, 4, 3},
    {-3.2, -4, -3, -4},
    {-3.0, -3, -2, -3},
    {32765.5, 32765, 32766, 32765},
    {32766.0, 32766, 32767, 32766},
    {32766.5, 32766, 32767, 32766},
    {32767.0, 32767, 32767, 32767},
    {40000.25, 32767, 32767, 32767},
    {-32766.0, -32766, -32765, -32766},
    {-32766.5, -32767, -32766, -32767},
    {-32767.0, -32767, -32766, -32767},
    {-32767.5, -32767, -32767, -32767},
    {-32768.0, -32767, -32767, -32767},
    {1e9, 32767, 32767, 32767},
    {-1e9, -32767, -32767, -32767},
    {2147483647.5, 32767, 32767, 32767},
    {-2147483648.5, -32767, -32767, -32767},
    // From 2^31 on the 32-bit truncation is the most negative value, so the
    // result is -32767 whatever the sign.
    {2147483648.0, -32767, -32767, -32767},
    {1e300, -32767, -32767, -32767},
    {-1e300, -32767, -32767, -32767},
    {kInf, -32767, -32767, -32767},
    {-kInf, -32767, -32767, -32767},
    {kNaN, -32767, -32767, -32767},
};

class Truncation : public ::testing::TestWithParam<TruncCase> {};

TEST_P(Truncation, ClampsAsTheRendererExpects)
{
    const TruncCase& c = GetParam();
    EXPECT_EQ(ITrunc(c.n), c.iTrunc) << "ITrunc(" << c.n << ")";
    EXPECT_EQ(TruncLo(c.n), c.truncLo) << "TruncLo(" << c.n << ")";
    EXPECT_EQ(TruncHi(c.n), c.truncHi) << "TruncHi(" << c.n << ")";
}

INSTANTIATE_TEST_SUITE_P(Table, Truncation, ::testing::ValuesIn(kTruncCases));

TEST(ReverseField, WidthsOnAsymmetricBytes)
{
    struct Case {
        uint32_t size;
        unsigned char want[8];
    };
    const Case cases[] = {
        {0, {1, 2, 3, 4, 5, 6, 7, 8}}, {1, {1, 2, 3, 4, 5, 6, 7, 8}},
        {2, {2, 1, 3, 4, 5, 6, 7, 8}}, {3, {3, 2, 1, 4, 5, 6, 7, 8}},
        {4, {4, 3, 2, 1, 5, 6, 7, 8}}, {8, {8, 7, 6, 5, 4, 3, 2, 1}},
    };
    for (const Case& c : cases) {
        unsigned char field[10] = {0xAA, 1, 2, 3, 4, 5, 6, 7, 8, 0xBB};
        ReverseField(field + 1, c.size);
        EXPECT_EQ(field[0], 0xAA);
        EXPECT_EQ(field[9], 0xBB);
        for (int i = 0; i < 8; ++i) {
            EXPECT_EQ(field[i + 1], c.want[i]) << "size " << c.size << " byte " << i;
        }
    }
    ReverseField(nullptr, 4);  // nothing to do, and no crash
}

}  // namespace
