/*
 * SafeConvert.h - the one place where a double becomes a float or a 32-bit
 * integer.
 *
 * Doubles reach the kit and the plug-ins from saved settings, the host's
 * frame and light records and flare tables, so any of them may be NaN,
 * infinite or far beyond the range of the narrower type. A plain cast of such
 * a value is undefined in C++; these helpers give exactly what the cast gives
 * wherever the cast is defined, and a fixed, documented answer elsewhere:
 *
 *   NarrowToFloat   round to nearest (IEEE); beyond the float range the
 *                   infinity of the value's sign; NaN stays NaN.
 *   TruncLong       toward zero; NaN 0; beyond the range INT32_MIN/INT32_MAX.
 *   TruncULong      toward zero; NaN and anything below 0 give 0; beyond the
 *                   range UINT32_MAX.
 *   TruncLongOrMin  toward zero; NaN and anything beyond the range give
 *                   INT32_MIN, the value the 32-bit machine conversion
 *                   produces for them. The clamped pixel rounding and the
 *                   colour packing were tuned against that value and keep it.
 *
 * All are inline and branch only on the rare out-of-range cases, so they may
 * sit in a renderer's inner loop.
 */
#ifndef KV_SAFE_CONVERT_H
#define KV_SAFE_CONVERT_H

#include <float.h>
#include <math.h>
#include <stdint.h>

/* The smallest magnitude that rounds to a float infinity: FLT_MAX plus half
   of its last step (2^128 - 2^103). A tie rounds to the even neighbour,
   which is the infinity, since FLT_MAX's last bit is odd. */
#define KV_FLOAT_OVERFLOW 0x1.ffffffp127

/* Bounds of the doubles whose truncation fits 32 bits: -2^31 - 1 and 2^31
   (exclusive), and 2^32 for the unsigned range. */
#define KV_LONG_LOW (-2147483649.0)
#define KV_LONG_HIGH 2147483648.0
#define KV_ULONG_HIGH 4294967296.0

inline float NarrowToFloat(double theValue)
{
    if (theValue > (double)FLT_MAX || theValue < -(double)FLT_MAX) {
        /* Between FLT_MAX and half a step beyond, rounding goes back to
           FLT_MAX; further out it reaches the infinity. */
        const double magnitude = fabs(theValue);
        const float result = magnitude >= KV_FLOAT_OVERFLOW ? HUGE_VALF : FLT_MAX;
        return theValue < 0 ? -result : result;
    }
    return (float)theValue;
}

inline int32_t TruncLong(double theValue)
{
    if (theValue > KV_LONG_LOW && theValue < KV_LONG_HIGH)
        return (int32_t)theValue;
    if (theValue >= KV_LONG_HIGH)
        return INT32_MAX;
    if (theValue <= KV_LONG_LOW)
        return INT32_MIN;
    return 0; /* NaN */
}

inline uint32_t TruncULong(double theValue)
{
    if (theValue > -1.0 && theValue < KV_ULONG_HIGH)
        return (uint32_t)theValue;
    if (theValue >= KV_ULONG_HIGH)
        return UINT32_MAX;
    return 0; /* NaN, or at or below -1 */
}

inline int32_t TruncLongOrMin(double theValue)
{
    if (theValue > KV_LONG_LOW && theValue < KV_LONG_HIGH)
        return (int32_t)theValue;
    return INT32_MIN;
}

#endif /* KV_SAFE_CONVERT_H */
