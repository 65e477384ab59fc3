/*
 * RingSpans.cpp - the ring painters that visit only the columns a ring's
 * ramp reaches, giving the same bytes as the per-pixel rule.
 *
 * Once per frame every ring the plain painter would visit is planned: its
 * columns (the same on every row), and the terms of its distance that depend
 * on the column alone, computed in the order and precision of the rule. Per
 * row the span of columns inside the ramp is found and only it is measured
 * and painted, by a kernel that applies the rule pixel by pixel (portable or
 * AVX2). The dither seed therefore advances exactly as the rule advances it:
 * once per painted pixel, in column order, ring after ring.
 *
 * Finding the span exactly. The rule paints a pixel when
 * 0.5 + sqrt(q) < limit, q being its squared term; that function of q never
 * decreases, so the pixels painted are exactly those with q < inside, the
 * smallest double at which it reaches the limit (found once per ring). On
 * the round path q = dx² + dy² where dx grows (or shrinks) by the same step
 * from column to column: rounding keeps dx monotonic, so dx² falls to its
 * smallest at one column and rises after it, and the columns with q < inside
 * form one unbroken run around that column, found by searching each side.
 * On the turned path no such order is proven, so the span is narrowed from
 * both ends to the first and last columns inside and the kernel measures
 * every column between. A ring whose terms are not all finite numbers, or
 * too wide to plan, is painted by the rule itself.
 */
#include <stdlib.h>
#include <string.h>

#include "ElementChain.h"
#include "FlareAccess.h"
#include "FlareRender.h"
#include "RectUtils.h"
#include "RingPaint.h"

namespace {

/* Wider rings than this (in columns) are left to the rule: planning them
   would take more memory than it saves time. */
constexpr int64_t kMaxPlannedColumns = 1 << 22;

/* The smallest q >= 0 whose 0.5 + sqrt(q) is not below limit: a binary search
   over the ordered bit patterns of the non-negative doubles. */
double InsideBound(double limit)
{
    uint64_t below = 0;                        /* +0.0: 0.5 is below every limit */
    uint64_t atOrAbove = 0x7FF0000000000000ull; /* +infinity */
    while (atOrAbove - below > 1) {
        uint64_t middle = below + (atOrAbove - below) / 2;
        double q;
        memcpy(&q, &middle, sizeof q);
        if (0.5 + sqrt(q) < limit)
            below = middle;
        else
            atOrAbove = middle;
    }
    double inside;
    memcpy(&inside, &atOrAbove, sizeof inside);
    return inside;
}

/* Ramps longer than this are not laid out in pairs: their 16.16 distances
   do not fit the vector kernels' 32-bit integers anyway. */
constexpr int32_t kMaxPairedSteps = 32768;

/* Entries up to this level keep the step from one entry to the next within
   16 signed bits. */
constexpr uint16_t kMaxPairedLevel = 32767;

/* Lays the ramp out as the vector kernels read it: per channel and step,
   the step's first entry in the low half and the difference to the next
   entry (signed) in the high half. A ramp with entries above
   kMaxPairedLevel gets no pairs (the kernels then read the entries). */
void PlanRampPairs(RingSpanPlan* plan, uint32_t* pairs)
{
    const int32_t steps = plan->ring->ringFlareColors;
    const FlareColor* ramp = plan->ramp;
    for (int32_t i = 0; i <= steps; ++i)
        if (ramp[i].red > kMaxPairedLevel || ramp[i].green > kMaxPairedLevel || ramp[i].blue > kMaxPairedLevel)
            return;
    plan->pairs = pairs;
    plan->pairStride = steps + kRampPairPadding;
    memset(pairs, 0, 3 * (size_t)plan->pairStride * sizeof(uint32_t));
    for (int32_t i = 0; i < steps; ++i) {
        pairs[i] = ramp[i].red | (uint32_t)(ramp[i + 1].red - ramp[i].red) << 16;
        pairs[plan->pairStride + i] = ramp[i].green | (uint32_t)(ramp[i + 1].green - ramp[i].green) << 16;
        pairs[2 * plan->pairStride + i] = ramp[i].blue | (uint32_t)(ramp[i + 1].blue - ramp[i].blue) << 16;
    }
}

/* Fills the round path's dx² per column; false when one is not finite. */
bool PlanRoundTerms(RingSpanPlan* plan, double* terms)
{
    const RingElement* theRing = plan->ring;
    double xStep = theRing->ringXFactor;
    double dx = theRing->ringXFactor * ((float)plan->left - theRing->ringXPos);
    int32_t nearest = 0;
    for (int32_t n = 0; n < plan->columns; ++n, dx += xStep) {
        terms[n] = dx * dx;
        if (!isfinite(terms[n]))
            return false;
        if (terms[n] < terms[nearest])
            nearest = n;
    }
    plan->nearest = nearest;
    plan->lastFirst = plan->lastLast = nearest;
    plan->lastFlatFirst = plan->lastFlatLast = nearest;
    return true;
}

/* Fills the turned path's X·a per column, then X·e per column; false when
   one is not finite. */
bool PlanTurnedTerms(RingSpanPlan* plan, const RingRow* row, double* terms)
{
    const RingElement* theRing = plan->ring;
    double a = theRing->ringXFactor * row->c;
    double e = theRing->ringYFactor * row->s;
    float X = (float)plan->left - theRing->ringXPos;
    for (int32_t n = 0; n < plan->columns; ++n, X += 1.0f) {
        double* columnTerms = terms + n;
        columnTerms[0] = X * a;
        columnTerms[plan->columns] = X * e;
        if (!isfinite(columnTerms[0]) || !isfinite(columnTerms[plan->columns]))
            return false;
    }
    return true;
}

/* The flat steps at the start of the ramp: the pixels on steps below k get
   exactly entry 0, because both entries they blend equal it. */
void PlanFlatSteps(RingSpanPlan* plan)
{
    const int32_t steps = plan->ring->ringFlareColors;
    const FlareColor* ramp = plan->ramp;
    int32_t k = 0;
    while (k < steps && ramp[k + 1].red == ramp[0].red && ramp[k + 1].green == ramp[0].green &&
           ramp[k + 1].blue == ramp[0].blue)
        ++k;
    plan->flatSteps = k;
    plan->flatInside = k > 0 ? InsideBound((double)k * 65536.0) : 0.0;
    plan->flatRed = ramp[0].red;
    plan->flatGreen = ramp[0].green;
    plan->flatBlue = ramp[0].blue;
}

/* Whether column n lies inside: its squared term below the bound (inside,
   or flatInside). */
inline bool Inside(const RingSpanPlan* plan, const RingRowTerms* rowTerms, int32_t n, double bound)
{
    return RingSquaredTerm(plan, rowTerms, n) < bound;
}

/* The first column in [from, to] inside the ramp, given that the columns
   inside form the tail of that range and `to` is inside. Searches outwards
   from the guess in doubling steps, then halves. */
int32_t FirstInside(const RingSpanPlan* plan, const RingRowTerms* rowTerms, double bound, int32_t from, int32_t to,
                    int32_t guess)
{
    int32_t out, in; /* out is outside (or from - 1), in is inside */
    guess = guess < from ? from : guess > to ? to : guess;
    if (Inside(plan, rowTerms, guess, bound)) {
        in = guess;
        int32_t step = 1;
        for (;;) {
            if ((int64_t)in - step < from) {
                out = from - 1;
                break;
            }
            if (!Inside(plan, rowTerms, in - step, bound)) {
                out = in - step;
                break;
            }
            in -= step;
            step *= 2;
        }
    } else {
        out = guess;
        int32_t step = 1;
        for (;;) {
            if ((int64_t)out + step >= to) {
                in = to;
                break;
            }
            if (Inside(plan, rowTerms, out + step, bound)) {
                in = out + step;
                break;
            }
            out += step;
            step *= 2;
        }
    }
    while (in - out > 1) {
        int32_t middle = out + (in - out) / 2;
        if (Inside(plan, rowTerms, middle, bound))
            in = middle;
        else
            out = middle;
    }
    return in;
}

/* The last column in [from, to] inside the ramp, given that the columns
   inside form the head of that range and `from` is inside. */
int32_t LastInside(const RingSpanPlan* plan, const RingRowTerms* rowTerms, double bound, int32_t from, int32_t to,
                   int32_t guess)
{
    int32_t in, out; /* in is inside, out is outside (or to + 1) */
    guess = guess < from ? from : guess > to ? to : guess;
    if (Inside(plan, rowTerms, guess, bound)) {
        in = guess;
        int32_t step = 1;
        for (;;) {
            if ((int64_t)in + step > to) {
                out = to + 1;
                break;
            }
            if (!Inside(plan, rowTerms, in + step, bound)) {
                out = in + step;
                break;
            }
            in += step;
            step *= 2;
        }
    } else {
        out = guess;
        int32_t step = 1;
        for (;;) {
            if ((int64_t)out - step <= from) {
                in = from;
                break;
            }
            if (Inside(plan, rowTerms, out - step, bound)) {
                in = out - step;
                break;
            }
            out -= step;
            step *= 2;
        }
    }
    while (out - in > 1) {
        int32_t middle = in + (out - in) / 2;
        if (Inside(plan, rowTerms, middle, bound))
            in = middle;
        else
            out = middle;
    }
    return in;
}

/* This row's span of a planned ring; false when no column is inside. */
bool FindSpan(RingSpanPlan* plan, const RingRowTerms* rowTerms, int32_t* first, int32_t* last)
{
    const double bound = plan->inside;
    if (!rowTerms->rotated) {
        if (!Inside(plan, rowTerms, plan->nearest, bound))
            return false;
        *first = FirstInside(plan, rowTerms, bound, 0, plan->nearest, plan->lastFirst);
        *last = LastInside(plan, rowTerms, bound, plan->nearest, plan->columns - 1, plan->lastLast);
        plan->lastFirst = *first;
        plan->lastLast = *last;
        return true;
    }
    int32_t n = 0;
    while (n < plan->columns && !Inside(plan, rowTerms, n, bound))
        ++n;
    if (n == plan->columns)
        return false;
    int32_t m = plan->columns - 1;
    while (!Inside(plan, rowTerms, m, bound))
        --m;
    *first = n;
    *last = m;
    return true;
}

/* The round path's run of columns on the flat steps, inside the span
   [first, last] and around the nearest column (the flat steps are the
   ramp's first, so they form the middle of the span); false when there is
   none on this row. */
bool FindFlatSpan(RingSpanPlan* plan, const RingRowTerms* rowTerms, int32_t* first, int32_t* last)
{
    const double bound = plan->flatInside;
    if (rowTerms->rotated || plan->flatSteps <= 0 || !Inside(plan, rowTerms, plan->nearest, bound))
        return false;
    *first = FirstInside(plan, rowTerms, bound, *first, plan->nearest, plan->lastFlatFirst);
    *last = LastInside(plan, rowTerms, bound, plan->nearest, *last, plan->lastFlatLast);
    plan->lastFlatFirst = *first;
    plan->lastFlatLast = *last;
    return true;
}

template <int Depth>
void PaintPlannedRings(RingPlan* thePlan, PluginDataRec* theData, const L_Rect* curRect, int32_t y,
                       const RingKernels* kernels)
{
    constexpr int pixelSize = Depth == 48 ? kPixelSize48 : kPixelSize32;
    const GlintwaveBuffer* theBuffer = &theData->flarePixelBuffer;
    uint32_t seed = (uint32_t)y;

    for (int32_t i = 0; i < thePlan->count; ++i) {
        RingSpanPlan* plan = &thePlan->rings[i];
        const RingElement* theRing = plan->ring;
        L_Rect scanRect;
        if (!SectLRect(curRect, &theRing->ringRect, &scanRect))
            continue;
        if (plan->plain || scanRect.left != plan->left ||
            (int64_t)scanRect.right - scanRect.left != (int64_t)plan->columns) {
            PaintRingPlain<Depth>(theBuffer, theRing, plan->ramp, &thePlan->row, &scanRect, y, &seed);
            continue;
        }

        RingRowTerms rowTerms;
        rowTerms.rotated = thePlan->row.rotated;
        if (!rowTerms.rotated) {
            float dyScaled = ((float)y - theRing->ringYPos) * theRing->ringYFactor;
            float dySquared = dyScaled * dyScaled;
            /* Not a finite number: every distance of the row is NaN or
               infinite, and nothing is painted. */
            if (!isfinite(dySquared))
                continue;
            rowTerms.dySquared = dySquared;
            rowTerms.Yb = rowTerms.Yf = 0.0;
        } else {
            double b = theRing->ringXFactor * -thePlan->row.s;
            double f = theRing->ringYFactor * thePlan->row.c;
            float Y = (float)y - theRing->ringYPos;
            rowTerms.dySquared = 0.0;
            rowTerms.Yb = Y * b;
            rowTerms.Yf = Y * f;
        }

        int32_t first, last;
        if (!FindSpan(plan, &rowTerms, &first, &last))
            continue;
        unsigned char* thePixel = PixelAddress(theBuffer, plan->left + first, y, pixelSize);
        int32_t flatFirst = first, flatLast = last;
        if (!FindFlatSpan(plan, &rowTerms, &flatFirst, &flatLast)) {
            kernels->span(plan, &rowTerms, first, last, thePixel, &seed);
            continue;
        }
        /* In column order: the ramp before the flat run, the run, the ramp
           after it. */
        if (flatFirst > first)
            kernels->span(plan, &rowTerms, first, flatFirst - 1, thePixel, &seed);
        kernels->flat(plan, flatLast - flatFirst + 1, thePixel + (size_t)(flatFirst - first) * pixelSize, &seed);
        if (last > flatLast)
            kernels->span(plan, &rowTerms, flatLast + 1, last,
                          thePixel + (size_t)(flatLast + 1 - first) * pixelSize, &seed);
    }
}

/* The next ring the span painters plan: one with a ramp whose box meets
   the frame, with that ramp and the columns where they meet. Both passes of
   MakeRingPlan choose their rings here, so they choose the same ones. */
const RingElement* NextPlannedRing(PluginDataRec* theData, ChainWalk* rings, const FlareColor** ramp,
                                   L_Rect* columns)
{
    const L_Rect* bufferRect = &theData->flarePixelBuffer.bufferRect;
    while (const RingElement* theRing = NextRing(theData, rings)) {
        if (theRing->ringFlareColors <= 0)
            continue;
        *ramp = RampAt(theData, theRing->ringFlareColorBase, theRing->ringFlareColors);
        if (*ramp != nullptr && SectLRect(bufferRect, &theRing->ringRect, columns))
            return theRing;
    }
    return nullptr;
}

}  // namespace

RingPlan* MakeRingPlan(ControlDataRec* theControl, PluginDataRec* theData)
{
    /* First pass: which rings are painted at all, and how many terms. */
    int64_t planned = 0;
    int64_t termCount = 0;
    int64_t pairCount = 0;
    const RingRow row = SetupRingRow(theControl, theData);
    const FlareColor* ramp;
    L_Rect columns;
    ChainWalk rings = RingChain(theControl, theData);
    while (const RingElement* theRing = NextPlannedRing(theData, &rings, &ramp, &columns)) {
        planned += 1;
        if ((int64_t)columns.width <= kMaxPlannedColumns)
            termCount += (int64_t)columns.width * (row.rotated ? 2 : 1);
        if (theRing->ringFlareColors <= kMaxPairedSteps)
            pairCount += 3 * ((int64_t)theRing->ringFlareColors + kRampPairPadding);
    }

    RingPlan* thePlan = (RingPlan*)calloc(1, sizeof(RingPlan));
    if (thePlan == nullptr)
        return nullptr;
    thePlan->row = row;
    thePlan->rings = (RingSpanPlan*)calloc((size_t)(planned > 0 ? planned : 1), sizeof(RingSpanPlan));
    thePlan->storage = (double*)malloc((size_t)(termCount > 0 ? termCount : 1) * sizeof(double));
    thePlan->pairStorage = (uint32_t*)malloc((size_t)(pairCount > 0 ? pairCount : 1) * sizeof(uint32_t));
    if (thePlan->rings == nullptr || thePlan->storage == nullptr || thePlan->pairStorage == nullptr) {
        FreeRingPlan(thePlan);
        return nullptr;
    }

    /* Second pass: the same walk, planning each ring. */
    double* terms = thePlan->storage;
    uint32_t* pairs = thePlan->pairStorage;
    rings = RingChain(theControl, theData);
    const RingElement* theRing;
    while (thePlan->count < planned && (theRing = NextPlannedRing(theData, &rings, &ramp, &columns)) != nullptr) {
        RingSpanPlan* plan = &thePlan->rings[thePlan->count++];
        plan->ring = theRing;
        plan->ramp = ramp;
        plan->limit = RingDistanceLimit(theRing->ringFlareColors);
        plan->inside = InsideBound(plan->limit);
        plan->left = columns.left;
        plan->plain = true;
        PlanFlatSteps(plan);
        if (theRing->ringFlareColors <= kMaxPairedSteps) {
            PlanRampPairs(plan, pairs);
            pairs += 3 * ((size_t)theRing->ringFlareColors + kRampPairPadding);
        }
        if ((int64_t)columns.width > kMaxPlannedColumns)
            continue;
        plan->columns = (int32_t)columns.width;
        plan->terms = terms;
        plan->plain = row.rotated ? !PlanTurnedTerms(plan, &row, terms) : !PlanRoundTerms(plan, terms);
        terms += (size_t)plan->columns * (row.rotated ? 2 : 1);
    }
    return thePlan;
}

void FreeRingPlan(RingPlan* thePlan)
{
    if (thePlan == nullptr)
        return;
    free(thePlan->rings);
    free(thePlan->storage);
    free(thePlan->pairStorage);
    free(thePlan);
}

void PaintPlannedRings48(RingPlan* thePlan, PluginDataRec* theData, const L_Rect* curRect, int32_t y,
                         const RingKernels* kernels)
{
    PaintPlannedRings<48>(thePlan, theData, curRect, y, kernels);
}

void PaintPlannedRings32(RingPlan* thePlan, PluginDataRec* theData, const L_Rect* curRect, int32_t y,
                         const RingKernels* kernels)
{
    PaintPlannedRings<32>(thePlan, theData, curRect, y, kernels);
}
