/*
 * ColorUtils.cpp - packed 8-bit colours and the shared-exponent colour.
 *
 * The shared-exponent form keeps one 5-bit exponent for the brightest
 * component and a 9-bit mantissa per component, so a colour of any
 * brightness up to 32767 fits in four bytes with about 9 bits of precision.
 */
#include "ColorUtils.h"

#include <cmath>

#include <array>

#include "SafeConvert.h"

namespace {

constexpr float kPackMax = 32767.0f;  // bits 0x46FFFE00
constexpr int kExponentBias = 16;

// Scale of each stored exponent: entry i is 2^(i - 25).
constexpr std::array<float, 32> MakeUnpackScales()
{
    std::array<float, 32> t{};
    float v = 1.0f;
    for (int i = 0; i < 25; ++i) {
        v *= 0.5f;
    }
    for (int i = 0; i < 32; ++i) {
        t[static_cast<size_t>(i)] = v;
        v *= 2.0f;
    }
    return t;
}
constexpr std::array<float, 32> kUnpackScales = MakeUnpackScales();

// A mantissa truncated toward zero as the machine's conversion does it:
// INT32_MIN where the value does not fit in 32 bits. Widening to double is
// exact, so the truncation is that of the float itself.
inline int32_t TruncMantissa(float x)
{
    return TruncLongOrMin(static_cast<double>(x));
}

inline uint32_t Bit8(int32_t m)
{
    return (static_cast<uint32_t>(m) >> 8) & 1u;
}

}  // namespace

extern "C" {

void SetARGB(ARGB* theARGB, uint8_t aVal, uint8_t rVal, uint8_t gVal, uint8_t bVal)
{
    if (theARGB == nullptr) {
        return;
    }
    theARGB->argb.a = aVal;
    theARGB->argb.r = rVal;
    theARGB->argb.g = gVal;
    theARGB->argb.b = bVal;
}

uint32_t MakeARGB(uint8_t aVal, uint8_t rVal, uint8_t gVal, uint8_t bVal)
{
    ARGB c;
    SetARGB(&c, aVal, rVal, gVal, bVal);
    return c.colorValue;
}

void PackRGB(ARGB* theARGB, float r, float g, float b)
{
    if (theARGB == nullptr) {
        return;
    }
    // A NaN component carries no light: it counts as 0. Infinities need no
    // such care, the clamp below takes them.
    if (std::isnan(r)) {
        r = 0.0f;
    }
    if (std::isnan(g)) {
        g = 0.0f;
    }
    if (std::isnan(b)) {
        b = 0.0f;
    }

    float max = r;
    if (g > max) {
        max = g;
    }
    if (b > max) {
        max = b;
    }
    if (max > kPackMax) {
        max = kPackMax;
        if (r > kPackMax) {
            r = kPackMax;
        }
        if (g > kPackMax) {
            g = kPackMax;
        }
        if (b > kPackMax) {
            b = kPackMax;
        }
    }

    int e = 0;
    // Nothing brighter than 0 is black, like anything too dark for the
    // exponent range.
    const float v = max > 0.0f ? std::frexp(max, &e) : 0.0f;
    if (max > 0.0f && e > -kExponentBias) {
        const float factor = v * 512.0f / max;
        const int32_t mr = TruncMantissa(r * factor);
        const int32_t mg = TruncMantissa(g * factor);
        const int32_t mb = TruncMantissa(b * factor);
        theARGB->argb.a = static_cast<uint8_t>((Bit8(mr) << 7) + (Bit8(mg) << 6) + (Bit8(mb) << 5) +
                                               static_cast<uint32_t>(e + kExponentBias));
        theARGB->argb.r = static_cast<uint8_t>(mr);
        theARGB->argb.g = static_cast<uint8_t>(mg);
        theARGB->argb.b = static_cast<uint8_t>(mb);
    } else {
        theARGB->colorValue = 0u;
    }
}

void UnpackRGB(const ARGB* theARGB, float* r, float* g, float* b)
{
    float outR = 0.0f;
    float outG = 0.0f;
    float outB = 0.0f;
    if (theARGB != nullptr && theARGB->argb.a != 0u) {
        const uint32_t head = theARGB->argb.a;
        const float scale = kUnpackScales[head & 31u];
        const uint32_t mr = theARGB->argb.r + ((head & 0x80u) != 0u ? 256u : 0u);
        const uint32_t mg = theARGB->argb.g + ((head & 0x40u) != 0u ? 256u : 0u);
        const uint32_t mb = theARGB->argb.b + ((head & 0x20u) != 0u ? 256u : 0u);
        outR = (0.5f + static_cast<float>(mr)) * scale;
        outG = (0.5f + static_cast<float>(mg)) * scale;
        outB = (0.5f + static_cast<float>(mb)) * scale;
    }
    if (r != nullptr) {
        *r = outR;
    }
    if (g != nullptr) {
        *g = outG;
    }
    if (b != nullptr) {
        *b = outB;
    }
}

}  // extern "C"
