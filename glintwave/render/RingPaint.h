/*
 * RingPaint.h - the per-pixel rule of the ring painters, shared by the plain
 * painter (RingPainter.cpp) and the span painters (RingSpans.cpp,
 * RingVector.cpp), and the record the span painters plan a frame with.
 *
 * A ring is a radial ramp: a pixel's offsets from the centre, scaled by the
 * ring's 16.16 factors (and turned when the flare is rotated and not round),
 * give an unsigned 16.16 distance in ramp steps; the two ramp entries around
 * it are blended with integer weights and added to the pixel.
 */
#ifndef GLINTWAVE_RING_PAINT_H
#define GLINTWAVE_RING_PAINT_H

#include <math.h>
#include <stdint.h>

#include "glintwave/GlintwaveRecords.h"
#include "PixelOps.h"
#include "SafeConvert.h"

/* A 16.16 distance at or past this is beyond every ramp: it no longer fits
   32 bits. */
#define kRingDistanceRange 4294967296.0

/* The rotation the painters apply; the same for every row of a frame. */
typedef struct RingRow {
    bool rotated;
    double s;
    double c;
} RingRow;

RingRow SetupRingRow(const ControlDataRec* theControl, const PluginDataRec* theData);

/* A pixel is painted when its distance's step is below the ramp's length:
   distance < steps x 65536, as a double compare that also drops NaN and
   distances too large for 32 bits. */
inline double RingDistanceLimit(int32_t steps)
{
    double limit = (double)steps * 65536.0;
    return limit > kRingDistanceRange ? kRingDistanceRange : limit;
}

/* The ramp colour at a 16.16 distance, blended with integer weights. */
inline void BlendRamp(const FlareColor* ramp, uint32_t distance, uint32_t* red, uint32_t* green, uint32_t* blue)
{
    uint32_t colorIndex = distance >> 16;
    uint32_t factor1 = distance & 0xFFFFu;
    uint32_t factor0 = 65536u - factor1;
    const FlareColor& color0 = ramp[colorIndex];
    const FlareColor& color1 = ramp[colorIndex + 1];
    *red = (color0.red * factor0 + color1.red * factor1) >> 16;
    *green = (color0.green * factor0 + color1.green * factor1) >> 16;
    *blue = (color0.blue * factor0 + color1.blue * factor1) >> 16;
}

/* Blends the ramp at a 16.16 distance and adds it to the pixel. */
template <int Depth>
inline void PaintRingPixel(unsigned char* thePixel, const FlareColor* ramp, uint32_t distance, uint32_t* seed)
{
    uint32_t red, green, blue;
    BlendRamp(ramp, distance, &red, &green, &blue);
    if constexpr (Depth == 48) {
        AddPixel48(thePixel, red, green, blue);
    } else {
        AddPixel32(thePixel, red, green, blue, NextDitherNoise(seed));
    }
}

/* The per-pixel rule for one ring on row y over the columns of scanRect:
   every column is measured, those inside the ramp are painted. */
template <int Depth>
void PaintRingPlain(const GlintwaveBuffer* theBuffer, const RingElement* theRing, const FlareColor* ramp,
                    const RingRow* row, const L_Rect* scanRect, int32_t y, uint32_t* seed)
{
    constexpr int pixelSize = Depth == 48 ? kPixelSize48 : kPixelSize32;
    const double limit = RingDistanceLimit(theRing->ringFlareColors);
    int64_t columns = (int64_t)scanRect->right - (int64_t)scanRect->left;
    unsigned char* thePixel = PixelAddress(theBuffer, scanRect->left, y, pixelSize);

    if (!row->rotated) {
        float dyScaled = ((float)y - theRing->ringYPos) * theRing->ringYFactor;
        float dySquared = dyScaled * dyScaled;
        double xStep = theRing->ringXFactor;
        double dx = theRing->ringXFactor * ((float)scanRect->left - theRing->ringXPos);
        for (int64_t n = 0; n < columns; ++n, thePixel += pixelSize, dx += xStep) {
            double d = 0.5 + sqrt(dx * dx + dySquared);
            if (d < limit)
                PaintRingPixel<Depth>(thePixel, ramp, TruncULong(d), seed);
        }
    } else {
        double a = theRing->ringXFactor * row->c;
        double b = theRing->ringXFactor * -row->s;
        double e = theRing->ringYFactor * row->s;
        double f = theRing->ringYFactor * row->c;
        float Y = (float)y - theRing->ringYPos;
        float X = (float)scanRect->left - theRing->ringXPos;
        double Yb = Y * b;
        double Yf = Y * f;
        for (int64_t n = 0; n < columns; ++n, thePixel += pixelSize, X += 1.0f) {
            double u = Yb + X * a;
            double v = Yf + X * e;
            double d = 0.5 + sqrt(v * v + u * u);
            if (d < limit)
                PaintRingPixel<Depth>(thePixel, ramp, TruncULong(d), seed);
        }
    }
}

/* The span painters' view of one ring for a whole frame. The columns the
   ring's box shares with the buffer are the same on every row, and so is
   every term of the distance that depends on the column alone: they are
   computed once per frame, exactly as the per-pixel rule computes them. */
typedef struct RingSpanPlan {
    const RingElement* ring;
    const FlareColor* ramp;
    double limit;          /* 16.16 distances below this are painted */
    double inside;         /* ... exactly those whose squared term is below this */
    int32_t left;          /* first column */
    int32_t columns;       /* columns from left on */
    bool plain;            /* painted by the per-pixel rule */
    int32_t nearest;       /* round path: the column closest to the centre */
    int32_t lastFirst;     /* round path: the previous row's span, a guess */
    int32_t lastLast;
    const double* terms;   /* round: dx² per column; turned: X·a per column,
                              then X·e per column */
    const uint32_t* pairs; /* per channel (red, green, blue) and ramp step i:
                              entry i in the low half, entry i + 1 - entry i
                              in the high half (signed); kRampPairPadding
                              zeros after the last; null when not laid out */
    int32_t pairStride;    /* entries from one channel's pairs to the next */
    int32_t flatSteps;     /* round path: the first steps whose entries all
                              equal the first (0: none) */
    double flatInside;     /* ... the pixels on them: squared term below this */
    uint32_t flatRed, flatGreen, flatBlue; /* ... and the colour they get */
    int32_t lastFlatFirst; /* round path: the previous row's flat span */
    int32_t lastFlatLast;
} RingSpanPlan;

/* The vector kernels read the pairs in windows of this many. */
#define kRampPairPadding 16

/* The terms of one row that the span kernels combine with the columns'. */
typedef struct RingRowTerms {
    bool rotated;
    double dySquared;      /* round path */
    double Yb, Yf;         /* turned path */
} RingRowTerms;

/* The squared term of column n: the value whose 0.5 + square root is the
   pixel's 16.16 distance. */
inline double RingSquaredTerm(const RingSpanPlan* plan, const RingRowTerms* rowTerms, int32_t n)
{
    if (!rowTerms->rotated)
        return plan->terms[n] + rowTerms->dySquared;
    double u = rowTerms->Yb + plan->terms[n];
    double v = rowTerms->Yf + plan->terms[(size_t)plan->columns + n];
    return v * v + u * u;
}

/* Paints columns first..last (inclusive) of a planned ring on one row:
   thePixel is the pixel of column first. Each pixel is measured and painted
   by the per-pixel rule; seed is the row's dither. */
typedef void (*RingSpanProc)(const RingSpanPlan* plan, const RingRowTerms* rowTerms, int32_t first,
                             int32_t last, unsigned char* thePixel, uint32_t* seed);

template <int Depth>
void PaintRingSpanScalar(const RingSpanPlan* plan, const RingRowTerms* rowTerms, int32_t first, int32_t last,
                         unsigned char* thePixel, uint32_t* seed)
{
    constexpr int pixelSize = Depth == 48 ? kPixelSize48 : kPixelSize32;
    const double limit = plan->limit;
    for (int32_t n = first; n <= last; ++n, thePixel += pixelSize) {
        double d = 0.5 + sqrt(RingSquaredTerm(plan, rowTerms, n));
        if (d < limit)
            PaintRingPixel<Depth>(thePixel, plan->ramp, TruncULong(d), seed);
    }
}

/* Paints count pixels from thePixel on that all lie on a ring's flat
   steps: each gets the flat colour by the per-pixel rule. */
typedef void (*RingFlatProc)(const RingSpanPlan* plan, int32_t count, unsigned char* thePixel, uint32_t* seed);

template <int Depth>
void PaintRingFlatScalar(const RingSpanPlan* plan, int32_t count, unsigned char* thePixel, uint32_t* seed)
{
    constexpr int pixelSize = Depth == 48 ? kPixelSize48 : kPixelSize32;
    for (int32_t n = 0; n < count; ++n, thePixel += pixelSize) {
        if constexpr (Depth == 48)
            AddPixel48(thePixel, plan->flatRed, plan->flatGreen, plan->flatBlue);
        else
            AddPixel32(thePixel, plan->flatRed, plan->flatGreen, plan->flatBlue, NextDitherNoise(seed));
    }
}

/* A path's kernels. */
typedef struct RingKernels {
    RingSpanProc span;
    RingFlatProc flat;
} RingKernels;

/* The AVX2 kernels (RingVector.cpp); only called when the processor has it. */
void PaintRingFlatVector48(const RingSpanPlan* plan, int32_t count, unsigned char* thePixel, uint32_t* seed);
void PaintRingFlatVector32(const RingSpanPlan* plan, int32_t count, unsigned char* thePixel, uint32_t* seed);
void PaintRingSpanVector48(const RingSpanPlan* plan, const RingRowTerms* rowTerms, int32_t first, int32_t last,
                           unsigned char* thePixel, uint32_t* seed);
void PaintRingSpanVector32(const RingSpanPlan* plan, const RingRowTerms* rowTerms, int32_t first, int32_t last,
                           unsigned char* thePixel, uint32_t* seed);
bool ProcessorHasAVX2(void);

/* A frame's plan: every ring the plain painter would visit, in its order. */
typedef struct RingPlan {
    RingRow row;
    int32_t count;
    RingSpanPlan* rings;
    double* storage;
    uint32_t* pairStorage;
} RingPlan;

/* Null when the frame cannot be planned (no memory): paint it plainly. */
RingPlan* MakeRingPlan(ControlDataRec* theControl, PluginDataRec* theData);
void FreeRingPlan(RingPlan* thePlan);
void PaintPlannedRings48(RingPlan* thePlan, PluginDataRec* theData, const L_Rect* curRect, int32_t y,
                         const RingKernels* kernels);
void PaintPlannedRings32(RingPlan* thePlan, PluginDataRec* theData, const L_Rect* curRect, int32_t y,
                         const RingKernels* kernels);

#endif /* GLINTWAVE_RING_PAINT_H */
