/*
 * RingVector.cpp - the span kernels of the ring painters with AVX2, eight
 * pixels at a time, giving the bytes of the per-pixel rule.
 *
 * Every step is the rule's own operation on more lanes: the squared term and
 * 0.5 + its square root in double (correctly rounded, as the scalar sqrt),
 * truncation to the 16.16 distance, the ramp entries looked up in a window
 * of steps (or gathered), the blend in 32-bit integers (a colour times a weight stays below 2^32), and
 * the write: for 48 bits a saturating add, for 32 bits the dither add with
 * the seeds of eight consecutive pixels, taken from the row's seed by the
 * generator's jump constants. An octet in which not every pixel lies inside
 * the ramp (only at the ends of a turned ring's span) and the last few
 * pixels of a span go pixel by pixel through the rule.
 *
 * Only these functions are compiled for AVX2; the build stays baseline and
 * they are called only when the processor reports AVX2.
 */
#include <string.h>

#include "RingPaint.h"

#if defined(__x86_64__) || defined(__i386__)

#include <immintrin.h>

#define GLINTWAVE_AVX2 __attribute__((target("avx2")))
#define GLINTWAVE_AVX2_INLINE __attribute__((target("avx2"), always_inline)) inline

namespace {

/* 16.16 distances must convert to 32-bit integers. */
constexpr double kVectorDistanceRange = 2147483648.0;

/* The dither generator advanced by j steps in one: seed x multiplier[j] +
   increment[j], all modulo 2^32. */
struct DitherJumps {
    uint32_t multiplier[9];
    uint32_t increment[9];
};

constexpr DitherJumps MakeDitherJumps()
{
    DitherJumps jumps = {};
    jumps.multiplier[0] = 1u;
    jumps.increment[0] = 0u;
    for (int j = 1; j <= 8; ++j) {
        jumps.multiplier[j] = jumps.multiplier[j - 1] * 1103515245u;
        jumps.increment[j] = jumps.increment[j - 1] * 1103515245u + 12345u;
    }
    return jumps;
}

constexpr DitherJumps kDitherJumps = MakeDitherJumps();

/* Byte shuffles that interleave eight reds, greens and blues (16 bits each)
   into the three 16-byte blocks of eight 48-bit pixels: block k, channel c. */
struct InterleaveMasks {
    int8_t bytes[3][3][16];
};

constexpr InterleaveMasks MakeInterleaveMasks()
{
    InterleaveMasks masks = {};
    for (int k = 0; k < 3; ++k)
        for (int c = 0; c < 3; ++c)
            for (int p = 0; p < 8; ++p) {
                int t = 8 * k + p;
                bool mine = t % 3 == c;
                masks.bytes[k][c][2 * p] = mine ? (int8_t)(2 * (t / 3)) : (int8_t)-128;
                masks.bytes[k][c][2 * p + 1] = mine ? (int8_t)(2 * (t / 3) + 1) : (int8_t)-128;
            }
    return masks;
}

alignas(16) constexpr InterleaveMasks kInterleave = MakeInterleaveMasks();

/* Loads four doubles, or only the lanes of mask (the others read as zero,
   and nothing past them is touched). */
template <bool Masked>
GLINTWAVE_AVX2_INLINE __m256d LoadTerms(const double* from, __m256i mask)
{
    if constexpr (Masked)
        return _mm256_maskload_pd(from, mask);
    else
        return _mm256_loadu_pd(from);
}

/* The squared terms of columns n..n+7 (with Masked, of the lanes in mask0
   and mask1 only). */
template <bool Masked>
GLINTWAVE_AVX2_INLINE void SquaredTerms(const RingSpanPlan* plan, const RingRowTerms* rowTerms, int32_t n,
                                        __m256i mask0, __m256i mask1, __m256d* q0, __m256d* q1)
{
    if (!rowTerms->rotated) {
        const __m256d dy = _mm256_set1_pd(rowTerms->dySquared);
        *q0 = _mm256_add_pd(LoadTerms<Masked>(plan->terms + n, mask0), dy);
        *q1 = _mm256_add_pd(LoadTerms<Masked>(plan->terms + n + 4, mask1), dy);
    } else {
        const double* xa = plan->terms + n;
        const double* xe = plan->terms + plan->columns + n;
        const __m256d yb = _mm256_set1_pd(rowTerms->Yb);
        const __m256d yf = _mm256_set1_pd(rowTerms->Yf);
        __m256d u0 = _mm256_add_pd(yb, LoadTerms<Masked>(xa, mask0));
        __m256d u1 = _mm256_add_pd(yb, LoadTerms<Masked>(xa + 4, mask1));
        __m256d v0 = _mm256_add_pd(yf, LoadTerms<Masked>(xe, mask0));
        __m256d v1 = _mm256_add_pd(yf, LoadTerms<Masked>(xe + 4, mask1));
        *q0 = _mm256_add_pd(_mm256_mul_pd(v0, v0), _mm256_mul_pd(u0, u0));
        *q1 = _mm256_add_pd(_mm256_mul_pd(v1, v1), _mm256_mul_pd(u1, u1));
    }
}

/* One channel's blend from its pairs (entry colorIndex low, the signed
   difference to entry colorIndex + 1 high): color0 x factor0 + color1 x
   factor1 = (color0 << 16) + (color1 - color0) x factor1, and the true sum
   lies below 2^32, so the same sum modulo 2^32 is the same number. */
GLINTWAVE_AVX2_INLINE __m256i BlendPairs(__m256i pairs, __m256i factor1)
{
    __m256i sum = _mm256_add_epi32(_mm256_slli_epi32(pairs, 16),
                                   _mm256_mullo_epi32(_mm256_srai_epi32(pairs, 16), factor1));
    return _mm256_srli_epi32(sum, 16);
}

/* The pairs of sixteen consecutive steps from base, looked up by index. */
GLINTWAVE_AVX2_INLINE __m256i LookUpPairs(const uint32_t* window, __m256i index)
{
    __m256i low = _mm256_permutevar8x32_epi32(_mm256_loadu_si256((const __m256i*)window), index);
    __m256i high = _mm256_permutevar8x32_epi32(_mm256_loadu_si256((const __m256i*)(window + 8)), index);
    /* Index bit 3 moved to the sign bit chooses the upper eight. */
    return _mm256_castps_si256(_mm256_blendv_ps(_mm256_castsi256_ps(low), _mm256_castsi256_ps(high),
                                                _mm256_castsi256_ps(_mm256_slli_epi32(index, 28))));
}

/* Eight pixels measured: their distances, and where their ramp steps lie.
   Neighbouring pixels lie at most about one step apart on the ramp, so the
   eight steps usually fall in a window of sixteen from base, which two
   loads and permutes read (windowed); otherwise the entries are gathered. */
struct Octet {
    __m256d d0, d1;      /* 0.5 + square root, in double */
    __m256i distance;    /* 16.16, when every pixel is inside the ramp */
    __m256i index;       /* step - base */
    int32_t base;
    bool windowed;
    bool narrow;         /* the steps fall in the first eight of the window */
};

/* The rest of an octet whose d0 and d1 are known: the 16.16 distances and
   the window of steps (meaningful when every pixel is inside the ramp; the
   caller checks d0 and d1 when it does not know). */
GLINTWAVE_AVX2_INLINE void FinishOctet(const RingSpanPlan* plan, Octet* octet)
{
    octet->distance = _mm256_set_m128i(_mm256_cvttpd_epi32(octet->d1), _mm256_cvttpd_epi32(octet->d0));
    octet->windowed = octet->narrow = false;
    octet->base = 0;
    octet->index = _mm256_setzero_si256();
    if (plan->pairs != nullptr) {
        __m256i colorIndex = _mm256_srli_epi32(octet->distance, 16);
        int32_t first = _mm256_cvtsi256_si32(colorIndex);
        int32_t last = _mm256_extract_epi32(colorIndex, 7);
        /* Steps that run one way start the window at the lower end; steps
           that turn (at the ring's centre column) may dip below both ends
           by up to four. */
        int32_t base = first < last ? first : last;
        __m256i index = _mm256_sub_epi32(colorIndex, _mm256_set1_epi32(base));
        const __m256i seven = _mm256_set1_epi32(7);
        octet->narrow = _mm256_movemask_epi8(_mm256_cmpeq_epi32(_mm256_max_epu32(index, seven), seven)) == -1;
        if (!octet->narrow) {
            base = base >= 4 ? base - 4 : 0;
            index = _mm256_sub_epi32(colorIndex, _mm256_set1_epi32(base));
        }
        octet->base = base;
        octet->index = index;
        const __m256i top = _mm256_set1_epi32(kRampPairPadding - 1);
        octet->windowed =
            octet->narrow || _mm256_movemask_epi8(_mm256_cmpeq_epi32(_mm256_max_epu32(index, top), top)) == -1;
    }
}

/* Measures columns n..n+7: 0.5 + the square root of their squared terms. */
GLINTWAVE_AVX2_INLINE void MeasureOctet(const RingSpanPlan* plan, const RingRowTerms* rowTerms, int32_t n,
                                        Octet* octet)
{
    const __m256d half = _mm256_set1_pd(0.5);
    __m256d q0, q1;
    const __m256i all = _mm256_set1_epi32(-1);
    SquaredTerms<false>(plan, rowTerms, n, all, all, &q0, &q1);
    octet->d0 = _mm256_add_pd(half, _mm256_sqrt_pd(q0));
    octet->d1 = _mm256_add_pd(half, _mm256_sqrt_pd(q1));
    FinishOctet(plan, octet);
}

/* Measures the count (1 to 7) columns from n; the lanes past them repeat
   the first column, so that every lane holds a distance of this span. */
GLINTWAVE_AVX2_INLINE void MeasurePartialOctet(const RingSpanPlan* plan, const RingRowTerms* rowTerms, int32_t n,
                                               int32_t count, Octet* octet)
{
    const __m256d half = _mm256_set1_pd(0.5);
    const __m256i lanes = _mm256_set1_epi64x(count);
    __m256i mask0 = _mm256_cmpgt_epi64(lanes, _mm256_setr_epi64x(0, 1, 2, 3));
    __m256i mask1 = _mm256_cmpgt_epi64(lanes, _mm256_setr_epi64x(4, 5, 6, 7));
    __m256d q0, q1;
    SquaredTerms<true>(plan, rowTerms, n, mask0, mask1, &q0, &q1);
    __m256d d0 = _mm256_add_pd(half, _mm256_sqrt_pd(q0));
    __m256d d1 = _mm256_add_pd(half, _mm256_sqrt_pd(q1));
    __m256d firstColumn = _mm256_permute4x64_pd(d0, 0);
    octet->d0 = _mm256_blendv_pd(firstColumn, d0, _mm256_castsi256_pd(mask0));
    octet->d1 = _mm256_blendv_pd(firstColumn, d1, _mm256_castsi256_pd(mask1));
    FinishOctet(plan, octet);
}

/* The blended ramp colours of a measured octet whose pixels all lie inside
   the ramp. */
GLINTWAVE_AVX2_INLINE void BlendRamp8(const RingSpanPlan* plan, const Octet* octet, __m256i* red, __m256i* green,
                                      __m256i* blue)
{
    __m256i distance = octet->distance;
    if (octet->windowed) {
        __m256i factor1 = _mm256_and_si256(distance, _mm256_set1_epi32(0xFFFF));
        const uint32_t* window = plan->pairs + octet->base;
        if (octet->narrow) {
            *red = BlendPairs(_mm256_permutevar8x32_epi32(_mm256_loadu_si256((const __m256i*)window), octet->index),
                              factor1);
            *green = BlendPairs(_mm256_permutevar8x32_epi32(
                                    _mm256_loadu_si256((const __m256i*)(window + plan->pairStride)), octet->index),
                                factor1);
            *blue = BlendPairs(_mm256_permutevar8x32_epi32(
                                   _mm256_loadu_si256((const __m256i*)(window + 2 * (size_t)plan->pairStride)),
                                   octet->index),
                               factor1);
            return;
        }
        *red = BlendPairs(LookUpPairs(window, octet->index), factor1);
        *green = BlendPairs(LookUpPairs(window + plan->pairStride, octet->index), factor1);
        *blue = BlendPairs(LookUpPairs(window + 2 * (size_t)plan->pairStride, octet->index), factor1);
        return;
    }
    const FlareColor* ramp = plan->ramp;
    const __m256i low16 = _mm256_set1_epi32(0xFFFF);
    __m256i colorIndex = _mm256_srli_epi32(distance, 16);
    __m256i factor1 = _mm256_and_si256(distance, low16);
    __m256i factor0 = _mm256_sub_epi32(_mm256_set1_epi32(65536), factor1);
    /* Byte offset of entry colorIndex: six bytes an entry. The three loads
       of four bytes read entries colorIndex and colorIndex + 1, no further. */
    __m256i offset = _mm256_add_epi32(_mm256_slli_epi32(colorIndex, 2), _mm256_slli_epi32(colorIndex, 1));
    const char* bytes = reinterpret_cast<const char*>(ramp);
    __m256i redGreen0 = _mm256_i32gather_epi32(reinterpret_cast<const int*>(bytes), offset, 1);
    __m256i blue0Red1 = _mm256_i32gather_epi32(reinterpret_cast<const int*>(bytes + 4), offset, 1);
    __m256i greenBlue1 = _mm256_i32gather_epi32(reinterpret_cast<const int*>(bytes + 8), offset, 1);

    __m256i red0 = _mm256_and_si256(redGreen0, low16);
    __m256i green0 = _mm256_srli_epi32(redGreen0, 16);
    __m256i blue0 = _mm256_and_si256(blue0Red1, low16);
    __m256i red1 = _mm256_srli_epi32(blue0Red1, 16);
    __m256i green1 = _mm256_and_si256(greenBlue1, low16);
    __m256i blue1 = _mm256_srli_epi32(greenBlue1, 16);
    *red = _mm256_srli_epi32(
        _mm256_add_epi32(_mm256_mullo_epi32(red0, factor0), _mm256_mullo_epi32(red1, factor1)), 16);
    *green = _mm256_srli_epi32(
        _mm256_add_epi32(_mm256_mullo_epi32(green0, factor0), _mm256_mullo_epi32(green1, factor1)), 16);
    *blue = _mm256_srli_epi32(
        _mm256_add_epi32(_mm256_mullo_epi32(blue0, factor0), _mm256_mullo_epi32(blue1, factor1)), 16);
}

GLINTWAVE_AVX2_INLINE __m128i Pack16(__m256i values)
{
    return _mm_packus_epi32(_mm256_castsi256_si128(values), _mm256_extracti128_si256(values, 1));
}

GLINTWAVE_AVX2_INLINE void Paint8Pixels48(unsigned char* thePixel, const RingSpanPlan* plan, const Octet* octet)
{
    __m256i red, green, blue;
    BlendRamp8(plan, octet, &red, &green, &blue);
    __m128i r = Pack16(red), g = Pack16(green), b = Pack16(blue);
    const __m128i full = _mm_set1_epi16((short)kFullLevel);
    for (int k = 0; k < 3; ++k) {
        __m128i add = _mm_or_si128(
            _mm_or_si128(_mm_shuffle_epi8(r, _mm_load_si128((const __m128i*)kInterleave.bytes[k][0])),
                         _mm_shuffle_epi8(g, _mm_load_si128((const __m128i*)kInterleave.bytes[k][1]))),
            _mm_shuffle_epi8(b, _mm_load_si128((const __m128i*)kInterleave.bytes[k][2])));
        __m128i* block = reinterpret_cast<__m128i*>(thePixel + 16 * k);
        __m128i old = _mm_loadu_si128(block);
        /* A sum past 65535 stops there, which is past the full level too. */
        _mm_storeu_si128(block, _mm_min_epu16(_mm_adds_epu16(old, add), full));
    }
}

/* The dither add of one channel, (value + (old << 6) + noise) >> 6 capped at
   255, is old + ((value + noise) >> 6) capped at 255, because old << 6 is a
   whole multiple of 64: the increment, capped at 255 itself, is added to
   the old byte with a byte-saturating add. */
GLINTWAVE_AVX2_INLINE __m256i DitherIncrement(__m256i value, __m256i noise)
{
    return _mm256_min_epu32(_mm256_srli_epi32(_mm256_add_epi32(value, noise), 6), _mm256_set1_epi32(255));
}

GLINTWAVE_AVX2_INLINE void Paint8Pixels32(unsigned char* thePixel, const RingSpanPlan* plan, const Octet* octet,
                                          uint32_t* seed)
{
    __m256i red, green, blue;
    BlendRamp8(plan, octet, &red, &green, &blue);
    __m256i seeds = _mm256_add_epi32(
        _mm256_mullo_epi32(_mm256_set1_epi32((int)*seed),
                           _mm256_loadu_si256((const __m256i*)(kDitherJumps.multiplier + 1))),
        _mm256_loadu_si256((const __m256i*)(kDitherJumps.increment + 1)));
    *seed = *seed * kDitherJumps.multiplier[8] + kDitherJumps.increment[8];
    __m256i noise = _mm256_srli_epi32(seeds, 26);

    /* Alpha gets a zero increment and stays as it is. */
    __m256i increment = _mm256_or_si256(
        _mm256_or_si256(_mm256_slli_epi32(DitherIncrement(red, noise), 16),
                        _mm256_slli_epi32(DitherIncrement(green, noise), 8)),
        DitherIncrement(blue, noise));
    __m256i* pixels = reinterpret_cast<__m256i*>(thePixel);
    _mm256_storeu_si256(pixels, _mm256_adds_epu8(_mm256_loadu_si256(pixels), increment));
}

/* The seed after count more pixels: the generator's step raised to the
   count, by squaring. */
uint32_t AdvanceDither(uint32_t seed, int32_t count)
{
    uint32_t multiplier = 1103515245u, increment = 12345u;
    for (uint32_t n = (uint32_t)count; n != 0; n >>= 1) {
        if (n & 1u)
            seed = seed * multiplier + increment;
        increment = increment * multiplier + increment;
        multiplier = multiplier * multiplier;
    }
    return seed;
}

GLINTWAVE_AVX2 void PaintRingFlatAVX2_48(const RingSpanPlan* plan, int32_t count, unsigned char* thePixel)
{
    uint16_t pattern[24];
    for (int j = 0; j < 8; ++j) {
        pattern[3 * j] = (uint16_t)plan->flatRed;
        pattern[3 * j + 1] = (uint16_t)plan->flatGreen;
        pattern[3 * j + 2] = (uint16_t)plan->flatBlue;
    }
    /* Flat colours come from 16-bit entries, so they fit the lanes. */
    const __m128i add0 = _mm_loadu_si128((const __m128i*)pattern);
    const __m128i add1 = _mm_loadu_si128((const __m128i*)(pattern + 8));
    const __m128i add2 = _mm_loadu_si128((const __m128i*)(pattern + 16));
    const __m128i full = _mm_set1_epi16((short)kFullLevel);
    int32_t n = 0;
    for (; count - n >= 8; n += 8, thePixel += 8 * kPixelSize48) {
        __m128i* block = reinterpret_cast<__m128i*>(thePixel);
        _mm_storeu_si128(block, _mm_min_epu16(_mm_adds_epu16(_mm_loadu_si128(block), add0), full));
        _mm_storeu_si128(block + 1, _mm_min_epu16(_mm_adds_epu16(_mm_loadu_si128(block + 1), add1), full));
        _mm_storeu_si128(block + 2, _mm_min_epu16(_mm_adds_epu16(_mm_loadu_si128(block + 2), add2), full));
    }
    PaintRingFlatScalar<48>(plan, count - n, thePixel, nullptr);
}

GLINTWAVE_AVX2 void PaintRingFlatAVX2_32(const RingSpanPlan* plan, int32_t count, unsigned char* thePixel,
                                         uint32_t* seed)
{
    /* Black adds less than one level even with the most noise: the pixels
       stay as they are and only the dither moves on. */
    if ((plan->flatRed | plan->flatGreen | plan->flatBlue) == 0) {
        *seed = AdvanceDither(*seed, count);
        return;
    }
    const __m256i red = _mm256_set1_epi32((int)plan->flatRed);
    const __m256i green = _mm256_set1_epi32((int)plan->flatGreen);
    const __m256i blue = _mm256_set1_epi32((int)plan->flatBlue);
    const __m256i multipliers = _mm256_loadu_si256((const __m256i*)(kDitherJumps.multiplier + 1));
    const __m256i increments = _mm256_loadu_si256((const __m256i*)(kDitherJumps.increment + 1));
    int32_t n = 0;
    for (; count - n >= 8; n += 8, thePixel += 8 * kPixelSize32) {
        __m256i seeds = _mm256_add_epi32(_mm256_mullo_epi32(_mm256_set1_epi32((int)*seed), multipliers), increments);
        *seed = *seed * kDitherJumps.multiplier[8] + kDitherJumps.increment[8];
        __m256i noise = _mm256_srli_epi32(seeds, 26);
        __m256i increment = _mm256_or_si256(
            _mm256_or_si256(_mm256_slli_epi32(DitherIncrement(red, noise), 16),
                            _mm256_slli_epi32(DitherIncrement(green, noise), 8)),
            DitherIncrement(blue, noise));
        __m256i* pixels = reinterpret_cast<__m256i*>(thePixel);
        _mm256_storeu_si256(pixels, _mm256_adds_epu8(_mm256_loadu_si256(pixels), increment));
    }
    PaintRingFlatScalar<32>(plan, count - n, thePixel, seed);
}

/* The last 1 to 7 columns of a span, measured and blended as an octet and
   written through a copy of just their pixels; the dither moves on by
   their number. */
template <int Depth, bool AllInside>
GLINTWAVE_AVX2_INLINE void PaintPartialOctet(const RingSpanPlan* plan, const RingRowTerms* rowTerms, int32_t n,
                                             int32_t count, unsigned char* thePixel, uint32_t* seed)
{
    constexpr int pixelSize = Depth == 48 ? kPixelSize48 : kPixelSize32;
    Octet octet;
    MeasurePartialOctet(plan, rowTerms, n, count, &octet);
    const int valid = (1 << count) - 1;
    int inside = valid;
    if (!AllInside) {
        const __m256d limit = _mm256_set1_pd(plan->limit);
        inside = (_mm256_movemask_pd(_mm256_cmp_pd(octet.d0, limit, _CMP_LT_OQ)) |
                  (_mm256_movemask_pd(_mm256_cmp_pd(octet.d1, limit, _CMP_LT_OQ)) << 4)) &
                 valid;
    }
    if (inside == valid) {
        /* Every lane, the repeats of the first included, is inside. */
        alignas(32) unsigned char pixels[8 * pixelSize] = {};
        memcpy(pixels, thePixel, (size_t)count * pixelSize);
        if constexpr (Depth == 48) {
            Paint8Pixels48(pixels, plan, &octet);
        } else {
            uint32_t octetSeed = *seed;
            Paint8Pixels32(pixels, plan, &octet, &octetSeed);
            *seed = *seed * kDitherJumps.multiplier[count] + kDitherJumps.increment[count];
        }
        memcpy(thePixel, pixels, (size_t)count * pixelSize);
    } else if (inside != 0) {
        double d[8];
        _mm256_storeu_pd(d, octet.d0);
        _mm256_storeu_pd(d + 4, octet.d1);
        for (int j = 0; j < count; ++j)
            if (d[j] < plan->limit)
                PaintRingPixel<Depth>(thePixel + j * pixelSize, plan->ramp, TruncULong(d[j]), seed);
    }
}

/* AllInside: every column of the span is known to lie inside the ramp (the
   round path's spans are exact), so the test is left out. The next octet is
   measured before the current one is painted, so that its square roots and
   conversions overlap the painting. */
template <int Depth, bool AllInside>
GLINTWAVE_AVX2 void PaintRingSpanAVX2(const RingSpanPlan* plan, const RingRowTerms* rowTerms, int32_t first,
                                      int32_t last, unsigned char* thePixel, uint32_t* seed)
{
    constexpr int pixelSize = Depth == 48 ? kPixelSize48 : kPixelSize32;
    int32_t n = first;
    if (plan->limit <= kVectorDistanceRange && (int64_t)last - n >= 7) {
        const __m256d limit = _mm256_set1_pd(plan->limit);
        Octet next;
        MeasureOctet(plan, rowTerms, n, &next);
        for (;;) {
            const Octet octet = next;
            bool more = (int64_t)last - n >= 15;
            if (more)
                MeasureOctet(plan, rowTerms, n + 8, &next);
            int inside = AllInside ? 0xFF
                                   : _mm256_movemask_pd(_mm256_cmp_pd(octet.d0, limit, _CMP_LT_OQ)) |
                                         (_mm256_movemask_pd(_mm256_cmp_pd(octet.d1, limit, _CMP_LT_OQ)) << 4);
            if (inside == 0xFF) {
                if constexpr (Depth == 48)
                    Paint8Pixels48(thePixel, plan, &octet);
                else
                    Paint8Pixels32(thePixel, plan, &octet, seed);
            } else if (inside != 0) {
                double d[8];
                _mm256_storeu_pd(d, octet.d0);
                _mm256_storeu_pd(d + 4, octet.d1);
                for (int j = 0; j < 8; ++j)
                    if (d[j] < plan->limit)
                        PaintRingPixel<Depth>(thePixel + j * pixelSize, plan->ramp, TruncULong(d[j]), seed);
            }
            n += 8;
            thePixel += 8 * pixelSize;
            if (!more)
                break;
        }
    }
    if (plan->limit <= kVectorDistanceRange && n <= last) {
        PaintPartialOctet<Depth, AllInside>(plan, rowTerms, n, last - n + 1, thePixel, seed);
        return;
    }
    PaintRingSpanScalar<Depth>(plan, rowTerms, n, last, thePixel, seed);
}

}  // namespace

bool ProcessorHasAVX2(void)
{
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2");
}

void PaintRingFlatVector48(const RingSpanPlan* plan, int32_t count, unsigned char* thePixel, uint32_t* seed)
{
    (void)seed;
    PaintRingFlatAVX2_48(plan, count, thePixel);
}

void PaintRingFlatVector32(const RingSpanPlan* plan, int32_t count, unsigned char* thePixel, uint32_t* seed)
{
    PaintRingFlatAVX2_32(plan, count, thePixel, seed);
}

void PaintRingSpanVector48(const RingSpanPlan* plan, const RingRowTerms* rowTerms, int32_t first, int32_t last,
                           unsigned char* thePixel, uint32_t* seed)
{
    if (rowTerms->rotated)
        PaintRingSpanAVX2<48, false>(plan, rowTerms, first, last, thePixel, seed);
    else
        PaintRingSpanAVX2<48, true>(plan, rowTerms, first, last, thePixel, seed);
}

void PaintRingSpanVector32(const RingSpanPlan* plan, const RingRowTerms* rowTerms, int32_t first, int32_t last,
                           unsigned char* thePixel, uint32_t* seed)
{
    if (rowTerms->rotated)
        PaintRingSpanAVX2<32, false>(plan, rowTerms, first, last, thePixel, seed);
    else
        PaintRingSpanAVX2<32, true>(plan, rowTerms, first, last, thePixel, seed);
}

#else /* no AVX2 on this architecture: the portable kernels stand in */

void PaintRingFlatVector48(const RingSpanPlan* plan, int32_t count, unsigned char* thePixel, uint32_t* seed)
{
    PaintRingFlatScalar<48>(plan, count, thePixel, seed);
}

void PaintRingFlatVector32(const RingSpanPlan* plan, int32_t count, unsigned char* thePixel, uint32_t* seed)
{
    PaintRingFlatScalar<32>(plan, count, thePixel, seed);
}

bool ProcessorHasAVX2(void)
{
    return false;
}

void PaintRingSpanVector48(const RingSpanPlan* plan, const RingRowTerms* rowTerms, int32_t first, int32_t last,
                           unsigned char* thePixel, uint32_t* seed)
{
    PaintRingSpanScalar<48>(plan, rowTerms, first, last, thePixel, seed);
}

void PaintRingSpanVector32(const RingSpanPlan* plan, const RingRowTerms* rowTerms, int32_t first, int32_t last,
                           unsigned char* thePixel, uint32_t* seed)
{
    PaintRingSpanScalar<32>(plan, rowTerms, first, last, thePixel, seed);
}

#endif
