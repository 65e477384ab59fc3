// Packed 8-bit colours and the shared-exponent colour.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "ColorUtils.h"

namespace {

struct Bytes {
    uint8_t b0, b1, b2, b3;
};

Bytes BytesOf(const ARGB& c)
{
    unsigned char m[4];
    std::memcpy(m, &c, 4);
    return {m[0], m[1], m[2], m[3]};
}

TEST(ARGBColor, MemoryOrderIsAlphaRedGreenBlue)
{
    ARGB c;
    SetARGB(&c, 0x11, 0x22, 0x33, 0x44);
    const Bytes b = BytesOf(c);
    EXPECT_EQ(b.b0, 0x11);
    EXPECT_EQ(b.b1, 0x22);
    EXPECT_EQ(b.b2, 0x33);
    EXPECT_EQ(b.b3, 0x44);
    EXPECT_EQ(MakeARGB(0x11, 0x22, 0x33, 0x44), c.colorValue);
}

struct PackCase {
    float r, g, b;
    Bytes want;
};

const float kInf = std::numeric_limits<float>::infinity();
const float kNaN = std::numeric_limits<float>::quiet_NaN();

const PackCase kPackCases[] = {
    {1.0f, 0.5f, 0.25f, {145, 0, 128, 64}},
    {0.0f, 0.0f, 0.0f, {0, 0, 0, 0}},
    // Ties for the largest go to the earlier component; the result is the same.
    {0.5f, 0.5f, 0.5f, {16 + 224, 0, 0, 0}},
    {0.75f, 0.0f, 0.0f, {128 + 16, 128, 0, 0}},
    {3.0f, 1.0f, 0.0f, {128 + 18, 128, 128, 0}},
    // Above 32767 the largest component is clamped: mantissa 32767/64 = 511.98.
    {1e6f, 0.0f, 0.0f, {128 + 31, 255, 0, 0}},
    {1e6f, 1e7f, 32767.0f, {224 + 31, 255, 255, 255}},
    {kInf, 16383.5f, 0.0f, {128 + 31, 255, 255, 0}},
    // Too dark for the exponent range: black.
    {1e-6f, 0.0f, 0.0f, {0, 0, 0, 0}},
    {std::ldexp(1.0f, -17), 0.0f, 0.0f, {0, 0, 0, 0}},
    {std::ldexp(1.0f, -16), 0.0f, 0.0f, {128 + 1, 0, 0, 0}},
    {std::ldexp(1.0f, -15), 0.0f, 0.0f, {128 + 2, 0, 0, 0}},
    // Nothing above zero is black; NaN counts as zero.
    {-1.0f, -2.0f, -0.5f, {0, 0, 0, 0}},
    {kNaN, kNaN, kNaN, {0, 0, 0, 0}},
    {kNaN, 1.0f, 0.0f, {64 + 17, 0, 0, 0}},
    // A negative component keeps the two's complement bits of its truncated
    // mantissa; one beyond 32 bits gives zero bits.
    {1.0f, -0.5f, 0.0f, {128 + 64 + 17, 0, 0x80, 0}},
    {1.0f, -kInf, -1e30f, {128 + 17, 0, 0, 0}},
};

class Pack : public ::testing::TestWithParam<PackCase> {};

TEST_P(Pack, Bytes)
{
    const PackCase& c = GetParam();
    ARGB packed;
    packed.colorValue = 0xDEADBEEFu;
    PackRGB(&packed, c.r, c.g, c.b);
    const Bytes got = BytesOf(packed);
    EXPECT_EQ(got.b0, c.want.b0) << c.r << " " << c.g << " " << c.b;
    EXPECT_EQ(got.b1, c.want.b1);
    EXPECT_EQ(got.b2, c.want.b2);
    EXPECT_EQ(got.b3, c.want.b3);
}

INSTANTIATE_TEST_SUITE_P(Table, Pack, ::testing::ValuesIn(kPackCases));

TEST(Unpack, ExampleAndBlack)
{
    ARGB c;
    SetARGB(&c, 145, 0, 128, 64);
    float r = -1, g = -1, b = -1;
    UnpackRGB(&c, &r, &g, &b);
    EXPECT_EQ(r, 256.5f / 256.0f);
    EXPECT_EQ(g, 128.5f / 256.0f);
    EXPECT_EQ(b, 64.5f / 256.0f);

    SetARGB(&c, 0, 200, 100, 50);  // exponent byte 0: black whatever follows
    UnpackRGB(&c, &r, &g, &b);
    EXPECT_EQ(r, 0.0f);
    EXPECT_EQ(g, 0.0f);
    EXPECT_EQ(b, 0.0f);

    SetARGB(&c, 0xE0, 1, 2, 3);  // exponent 0: scale 2^-25, all high bits set
    UnpackRGB(&c, &r, &g, &b);
    EXPECT_EQ(r, 257.5f * std::ldexp(1.0f, -25));
    EXPECT_EQ(g, 258.5f * std::ldexp(1.0f, -25));
    EXPECT_EQ(b, 259.5f * std::ldexp(1.0f, -25));
}

}  // namespace
