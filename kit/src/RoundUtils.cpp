/*
 * RoundUtils.cpp - clamped truncation of pixel coordinates and byte reversal.
 *
 * All three truncations start from the double truncated toward zero into a
 * 32-bit integer. Where that does not fit (|n| >= 2^31, NaN) the machine's
 * conversion yields the most negative 32-bit value, which then clamps to
 * -32767; the renderer's coverage rules were tuned against exactly that, so
 * the result is reproduced here without ever converting an out-of-range
 * double.
 */
#include "RoundUtils.h"

#include <stddef.h>

#include "SafeConvert.h"

namespace {

constexpr int32_t kTruncMin = -32767;
constexpr int32_t kTruncMax = 32767;

// floor(n) within -32767..32767, clamping once the truncation reaches either
// end.
inline int32_t FloorClamped(double n)
{
    const int32_t t = TruncLongOrMin(n);
    if (t <= kTruncMin) {
        return kTruncMin;
    }
    if (t >= kTruncMax) {
        return kTruncMax;
    }
    return static_cast<double>(t) > n ? t - 1 : t;
}

}  // namespace

extern "C" {

int32_t ITrunc(double n)
{
    return FloorClamped(n);
}

int32_t TruncLo(double n)
{
    // Clamped a step earlier at the top than ITrunc, so that the "+ 1" can
    // never leave the range.
    const int32_t t = TruncLongOrMin(n);
    if (t < kTruncMin) {
        return kTruncMin;
    }
    if (t > kTruncMax - 2) {
        return kTruncMax;
    }
    return static_cast<double>(t) > n ? t : t + 1;
}

int32_t TruncHi(double n)
{
    return FloorClamped(n);
}

void ReverseField(void* theField, uint32_t size)
{
    if (theField == nullptr || size < 2u) {
        return;
    }
    unsigned char* lo = static_cast<unsigned char*>(theField);
    unsigned char* hi = lo + (size - 1u);
    while (lo < hi) {
        const unsigned char c = *lo;
        *lo++ = *hi;
        *hi-- = c;
    }
}

}  // extern "C"
