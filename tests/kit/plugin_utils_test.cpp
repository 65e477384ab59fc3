// The dialog helpers that need no host: number texts, change-tracking
// setters and flag bits.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "PluginUtils.h"

namespace {

std::string Text(const unsigned char* p)
{
    return std::string(reinterpret_cast<const char*>(p + 1), p[0]);
}

struct PText {
    PStr255 bytes;
    explicit PText(const std::string& s)
    {
        bytes[0] = static_cast<unsigned char>(s.size());
        std::memcpy(bytes + 1, s.data(), s.size());
    }
};

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

TEST(Num2Str, NegativeDigitsKeepThePointAndTheZeros)
{
    struct Case {
        int16_t digits;
        double x;
        const char* text;
    } const cases[] = {
        {0, 2.5, "2"},  // printf rounds half to even
        {0, 3.0, "3"},
        {-1, 3.0, "3.0"},
        {2, 2.5, "2.50"},
        {-2, 2.5, "2.50"},
        {-3, -0.0, "-0.000"},
        {1, -0.04, "-0.0"},
    };
    for (const Case& c : cases) {
        PStr255 s;
        Num2Str(c.digits, c.x, s);
        EXPECT_EQ(Text(s), c.text) << c.x << " with " << c.digits;
    }
    // Very long texts are cut to a Pascal string's 255 characters.
    PStr255 s;
    Num2Str(8, 1e300, s);
    EXPECT_EQ(s[0], 255);
    Num2Str(-32768, 1.0, s);
    EXPECT_EQ(Text(s).substr(0, 4), "1.00");
    EXPECT_EQ(s[0], 255);
}

TEST(RealTrimStr, TrimsOnlyForNonNegativeDigits)
{
    struct Case {
        double x;
        int16_t digits;
        const char* text;
    } const cases[] = {
        {2.5, 8, "2.5"},
        {3.0, 8, "3"},
        {-1e-10, 8, "0"},
        {2.5, -2, "2.50"},
        {-1e-10, -2, "-0.00"},  // untrimmed with negative digits
        {-0.0, 3, "0"},
        {1e-9, 8, "0"},
        {10.0, 0, "10"},
        {100.0, 8, "100"},
        {1000.0, 2, "1000"},
        {-7.25, 1, "-7.2"},
        {0.000001, 8, "0.000001"},
        {kInf, 8, "inf"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Text(RealTrimStr(c.x, c.digits)), c.text) << c.x << " with " << c.digits;
}

TEST(Str2Num, ReadsWhatScanfReads)
{
    struct Case {
        const char* text;
        double value;
    } const cases[] = {
        {"2.5", 2.5}, {" 12abc", 12.0}, {"abc", 0.0}, {"", 0.0}, {"-1e3", -1000.0}, {".5", 0.5},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Str2Num(PText(c.text).bytes), c.value) << c.text;
    EXPECT_TRUE(std::isinf(Str2Num(PText("1e999").bytes)));
}

TEST(Str2Int, ReadsADecimalAndSaturates)
{
    struct Case {
        const char* text;
        int32_t value;
    } const cases[] = {
        {"42", 42},          {"-17x", -17},          {"x", 0},
        {"2147483647", INT32_MAX}, {"2147483648", INT32_MAX}, {"-2147483649", INT32_MIN},
        {"3.9", 3},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Str2Int(PText(c.text).bytes), c.value) << c.text;
}

TEST(FixDouble, ReplacesNegativeZeroInfinitiesAndNaNs)
{
    const double cases[][2] = {
        {1.5, 1.5}, {-2.0, -2.0}, {-0.0, 0.0}, {kInf, 0.0}, {-kInf, 0.0}, {kNaN, 0.0}, {1e-300, 1e-300},
    };
    for (const auto& c : cases) {
        const double fixed = FixDouble(c[0]);
        EXPECT_EQ(fixed, c[1]) << c[0];
        EXPECT_FALSE(std::signbit(fixed) && fixed == 0.0);
    }
}

TEST(ChangeTracking, DoublesCompareExactly)
{
    struct Case {
        double old, src;
        bool changed;
    } const cases[] = {
        {1.0, 1.0, false},
        {1.0, 1.0000000000000002, true},
        {0.0, -0.0, false},  // equal by ==
        {kNaN, kNaN, true},  // a NaN never equals itself
        {1.0, kNaN, true},
        {kInf, kInf, false},
    };
    for (const Case& c : cases) {
        for (bool before : {false, true}) {
            double d = c.old;
            bool flag = before;
            SetDouble(&d, c.src, &flag);
            EXPECT_EQ(std::memcmp(&d, &c.src, sizeof d), 0);  // stored whatever
            EXPECT_EQ(flag, before || c.changed) << c.old << " -> " << c.src;

            double e = c.old;
            flag = before;
            SetExtended(&e, c.src, &flag);
            EXPECT_EQ(flag, before || c.changed);

            float f = static_cast<float>(c.old);
            flag = before;
            SetReal(&f, static_cast<float>(c.src), &flag);
            const bool floatChanged = !(static_cast<float>(c.old) == static_cast<float>(c.src));
            EXPECT_EQ(flag, before || floatChanged);
        }
    }
}

TEST(ChangeTracking, IntegersAndColours)
{
    bool flag = false;
    int32_t l = 5;
    SetLongInt(&l, 5, &flag);
    EXPECT_FALSE(flag);
    SetLongInt(&l, -5, &flag);
    EXPECT_TRUE(flag);
    EXPECT_EQ(l, -5);
    SetLongInt(&l, -5, &flag);  // stays true
    EXPECT_TRUE(flag);

    struct Case {
        int16_t old, src;
        bool changed;
    } const shorts[] = {{0, 0, false}, {1, 2, true}, {-32768, 32767, true}, {-1, -1, false}};
    for (const Case& c : shorts) {
        int16_t i = c.old;
        flag = false;
        SetInteger(&i, c.src, &flag);
        EXPECT_EQ(i, c.src);
        EXPECT_EQ(flag, c.changed);

        int8_t b = static_cast<int8_t>(c.old);
        flag = false;
        SetByte(&b, static_cast<int8_t>(c.src), &flag);
        EXPECT_EQ(flag, static_cast<int8_t>(c.old) != static_cast<int8_t>(c.src));

        uint8_t u = static_cast<uint8_t>(c.old);
        flag = false;
        SetBoolean(&u, static_cast<uint8_t>(c.src), &flag);
        EXPECT_EQ(flag, static_cast<uint8_t>(c.old) != static_cast<uint8_t>(c.src));
    }

    const RGB_Color base{100, 200, 300};
    const RGB_Color colours[] = {{100, 200, 300}, {101, 200, 300}, {100, 201, 300}, {100, 200, 301}};
    for (size_t i = 0; i < 4; ++i) {
        RGB_Color c = base;
        flag = false;
        SetRGBColor(&c, &colours[i], &flag);
        EXPECT_EQ(flag, i != 0) << i;
        EXPECT_EQ(c.green, colours[i].green);
        EXPECT_EQ(c.blue, colours[i].blue);
    }

    ARGB a, b;
    a.argb = {1, 2, 3, 4};
    for (int byte = -1; byte < 4; ++byte) {
        ARGB dst = a;
        b = a;
        if (byte >= 0)
            reinterpret_cast<uint8_t*>(&b)[byte] ^= 0x80;
        flag = false;
        SetTheARGB(&dst, &b, &flag);
        EXPECT_EQ(flag, byte >= 0) << byte;
        EXPECT_EQ(dst.colorValue, b.colorValue);
    }
}

TEST(Flags, BitsAreTakenModulo32)
{
    struct Case {
        int16_t bit;
        uint32_t mask;
    } const cases[] = {{0, 1u}, {31, 0x80000000u}, {32, 1u}, {33, 2u}, {-1, 0x80000000u},
                       {22, 1u << 22}, {INT16_MAX, 0x80000000u}, {INT16_MIN, 1u}};
    for (const Case& c : cases) {
        uint32_t word = 0x0F0F0F0Fu;
        SetFlag(&word, c.bit, true);
        EXPECT_EQ(word, 0x0F0F0F0Fu | c.mask) << c.bit;
        SetFlag(&word, c.bit, false);
        EXPECT_EQ(word, 0x0F0F0F0Fu & ~c.mask) << c.bit;

        uint16_t half = 0x0F0F;
        SetIntegerFlag(&half, c.bit, true);
        EXPECT_EQ(half, static_cast<uint16_t>(0x0F0F | c.mask)) << c.bit;
        SetIntegerFlag(&half, c.bit, false);
        EXPECT_EQ(half, static_cast<uint16_t>(0x0F0F & ~c.mask)) << c.bit;
    }
}

TEST(Flags, BooleanFlagReportsADifferentBit)
{
    struct Case {
        uint32_t word;
        int16_t bit;
        bool src;
        uint32_t after;
        bool changed;
    } const cases[] = {
        {0x00000000u, 31, true, 0x80000000u, true},
        {0x80000000u, 31, true, 0x80000000u, false},
        {0x80000000u, 31, false, 0x00000000u, true},
        {0x00400001u, 22, false, 0x00000001u, true},
        {0x00000001u, 22, false, 0x00000001u, false},
        {0x00000002u, 33, true, 0x00000002u, false},
    };
    for (const Case& c : cases) {
        for (bool before : {false, true}) {
            uint32_t word = c.word;
            bool flag = before;
            SetBooleanFlag(&word, c.bit, c.src, &flag);
            EXPECT_EQ(word, c.after);
            EXPECT_EQ(flag, before || c.changed) << std::hex << c.word << " bit " << c.bit;
        }
    }
}

}  // namespace
