/*
 * Sketch.cpp - the wireframe of a flare for 8-bit buffers: the outline of
 * every ring-type element plotted as an ellipse of single pixels in one
 * colour index. Streaks are not sketched.
 *
 * The sketch turns the other way round from the painters (the angle's sign
 * is reversed); existing previews look that way and it is kept.
 */
#include <cmath>

#include "ElementChain.h"
#include "FlareAccess.h"
#include "FlareRender.h"
#include "PluginClient.h"
#include "RectUtils.h"

namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kNegativeDegreesToRadians = -0.017453292519943295;

/* Fewer points would not read as a ring. */
constexpr int32_t kMinRingSegments = 4;

/* One point per pixel of circumference, but no more than this: the radius it
   corresponds to (about 167000 pixels) lies far beyond the clamp range of
   frame coordinates, so only absurd rings are drawn more sparsely, and no
   ring can keep the sketch busy for long. */
constexpr int32_t kMaxRingSegments = 1 << 20;

/* Rings with at least this many points look for the stretches of their turn
   that can reach the buffer before they are walked. */
constexpr int32_t kWindowedRingSegments = 64;

/* True when every point of the ring lies outside the buffer because the
   ring encloses it: each point of an ellipse lies at least its smaller radius
   from the centre, so a buffer whose farthest corner is nearer than that gets
   no point. Close-ups of large flares meet such rings; skipping them spares
   the walk round a circumference of up to a million points. The slack covers
   the rounding of the walk's arithmetic many times over, so the skip never
   drops a point the walk would plot. */
bool RingEnclosesBuffer(const GlintwaveBuffer* theBuffer, float xc, float yc, float xr, float yr)
{
    if (theBuffer->bufferRect.width > (uint32_t)INT32_MAX || theBuffer->bufferRect.height > (uint32_t)INT32_MAX)
        return false;
    double nearX = fabs((double)xc);
    double farX = fabs((double)xc - (double)theBuffer->bufferRect.width);
    double nearY = fabs((double)yc);
    double farY = fabs((double)yc - (double)theBuffer->bufferRect.height);
    double reachX = nearX > farX ? nearX : farX;
    double reachY = nearY > farY ? nearY : farY;
    double reach = sqrt(reachX * reachX + reachY * reachY);
    double inner = xr < yr ? (double)xr : (double)yr;
    double slack = 1.0 + 1e-9 * ((double)xr + (double)yr + nearX + nearY);
    /* NaN anywhere makes the comparison false: the walk decides. */
    return reach + slack < inner;
}

/* Stretches of a ring walk's angle, in increasing order. */
struct SketchWindows {
    int32_t count;  /* -1: walk everything; 0: no point can land */
    double start[8];
    double end[8];
};

/* Sorts windows by their start and joins those that overlap. */
void MergeWindows(SketchWindows* theWindows)
{
    for (int32_t i = 1; i < theWindows->count; i++) {
        for (int32_t j = i; j > 0 && theWindows->start[j] < theWindows->start[j - 1]; j--) {
            double t = theWindows->start[j];
            theWindows->start[j] = theWindows->start[j - 1];
            theWindows->start[j - 1] = t;
            t = theWindows->end[j];
            theWindows->end[j] = theWindows->end[j - 1];
            theWindows->end[j - 1] = t;
        }
    }
    int32_t kept = 0;
    for (int32_t i = 0; i < theWindows->count; i++) {
        if (kept > 0 && theWindows->start[i] <= theWindows->end[kept - 1]) {
            if (theWindows->end[i] > theWindows->end[kept - 1])
                theWindows->end[kept - 1] = theWindows->end[i];
        } else {
            theWindows->start[kept] = theWindows->start[i];
            theWindows->end[kept] = theWindows->end[i];
            kept++;
        }
    }
    theWindows->count = kept;
}

/* The angles a in which value * sin(a) (or value * cos(a)) can lie in
   [low, high]: two stretches per turn, over the walk's turn and the hair of
   the next that its running sum may reach, widened by a margin far beyond
   the error of asin and acos. */
SketchWindows PartWindows(bool cosine, double value, double low, double high)
{
    const double kMargin = 1e-7;
    SketchWindows windows;
    windows.count = -1;
    if (value == 0.0) {
        if (!(low <= 0.0 && high >= 0.0))
            windows.count = 0;
        return windows;
    }
    double s0 = low / value - 1e-9;
    double s1 = high / value + 1e-9;
    if (s1 < -1.0 || s0 > 1.0) {
        windows.count = 0;
        return windows;
    }
    if (s0 <= -1.0 && s1 >= 1.0)
        return windows;
    if (s0 < -1.0)
        s0 = -1.0;
    if (s1 > 1.0)
        s1 = 1.0;
    double first0, first1, second0, second1;
    if (cosine) {
        first0 = acos(s1);
        first1 = acos(s0);
        second0 = kTwoPi - first1;
        second1 = kTwoPi - first0;
    } else {
        first0 = asin(s0);
        first1 = asin(s1);
        second0 = kTwoPi / 2.0 - first1;
        second1 = kTwoPi / 2.0 - first0;
    }
    windows.count = 0;
    for (int32_t turn = 0; turn < 2; turn++) {
        double shift = turn * kTwoPi;
        windows.start[windows.count] = first0 + shift - kMargin;
        windows.end[windows.count++] = first1 + shift + kMargin;
        windows.start[windows.count] = second0 + shift - kMargin;
        windows.end[windows.count++] = second1 + shift + kMargin;
    }
    MergeWindows(&windows);
    return windows;
}

/* The stretches of the walk's angle in which a point of the ring can land in
   the buffer, in increasing order. A ring far larger than the buffer passes
   through it in a sliver of its turn; the walk still steps its angle through
   every point (the angle is a running sum and must stay exactly that), but
   takes sine and cosine only inside these stretches.

   A plotted point lies in the buffer, so the ellipse point it was made from,
   turned back by the ring's rotation, lies in a disc round the buffer's
   centre turned back the same way. Its sine part xr sin(a) then lies in one
   range and its cosine part yr cos(a) in another. Every bound is widened far
   beyond the rounding of the walk's arithmetic, so no point the walk would
   plot falls outside. */
SketchWindows FindSketchWindows(const GlintwaveBuffer* theBuffer, float xc, float yc, float xr, float yr,
                                double sinTheta, double cosTheta)
{
    SketchWindows windows;
    windows.count = -1;
    if (theBuffer->bufferRect.width > (uint32_t)INT32_MAX || theBuffer->bufferRect.height > (uint32_t)INT32_MAX)
        return windows;
    if (!std::isfinite(xc) || !std::isfinite(yc) || !std::isfinite(xr) || !std::isfinite(yr) ||
        !std::isfinite(sinTheta) || !std::isfinite(cosTheta))
        return windows;
    /* The bounds below hold for a true rotation only. */
    if (!(sinTheta == 0.0) && !(fabs(sinTheta * sinTheta + cosTheta * cosTheta - 1.0) < 1e-9))
        return windows;

    double width = (double)theBuffer->bufferRect.width;
    double height = (double)theBuffer->bufferRect.height;
    double slack = 1.0 + 1e-9 * ((double)xr + (double)yr + fabs((double)xc) + fabs((double)yc));
    double bx = width * 0.5 - (double)xc;
    double by = height * 0.5 - (double)yc;
    double reach = 0.5 * sqrt(width * width + height * height) + 2.0 * slack;
    double bu = bx;
    double bv = by;
    if (!(sinTheta == 0.0)) {
        bu = bx * cosTheta + by * sinTheta;
        bv = by * cosTheta - bx * sinTheta;
    }
    reach += 1e-9 * (reach + fabs(bx) + fabs(by));

    SketchWindows sines = PartWindows(false, (double)xr, bu - reach, bu + reach);
    SketchWindows cosines = PartWindows(true, (double)yr, bv - reach, bv + reach);
    if (sines.count == 0 || cosines.count == 0) {
        windows.count = 0;
        return windows;
    }
    if (sines.count < 0)
        return cosines;
    if (cosines.count < 0)
        return sines;
    /* Both must hold: the overlaps of two sorted lists of disjoint windows. */
    windows.count = 0;
    int32_t i = 0;
    int32_t j = 0;
    while (i < sines.count && j < cosines.count && windows.count < 8) {
        double lo = sines.start[i] > cosines.start[j] ? sines.start[i] : cosines.start[j];
        double hi = sines.end[i] < cosines.end[j] ? sines.end[i] : cosines.end[j];
        if (lo <= hi) {
            windows.start[windows.count] = lo;
            windows.end[windows.count++] = hi;
        }
        if (sines.end[i] < cosines.end[j])
            i++;
        else
            j++;
    }
    return windows;
}

}  // namespace

void SketchFlare(ControlDataRec* theControl, PluginDataRec* theData, bool statusFlag, int32_t* result)
{
    double theta = theControl->flareRotation;
    if ((theControl->flareFlags & FLARE_FLAG(kFlagNoLightRotation)) == 0)
        theta += theData->flareLightRotation;
    theta *= kNegativeDegreesToRadians;
    double sinTheta = sin(theta);
    double cosTheta = cos(theta);

    int32_t ringCount = theControl->flareRingCount;
    if (statusFlag) {
        HostStatusRec* theStatus = &theData->theStatusRec;
        theStatus->theReference = theData->flareHostReference;
        theStatus->theStatusPos = 0.0f;
        CopyStr(theStatus->theStatusUnit, "Element");
        CopyStr(theStatus->theStatusInfo, "Sketching Flare");
        theStatus->theStatusMin = 0;
        theStatus->theStatusMax = ringCount;
        theStatus->theStatusValue = 0;
        theStatus->theStatusTick = 0;
        CheckStatus(theData, result);
    }

    const GlintwaveBuffer* theBuffer = &theData->flarePixelBuffer;
    ChainWalk rings = RingChain(theControl, theData);
    const RingElement* theRing;
    while (*result == 0 && (theRing = NextRing(theData, &rings)) != nullptr) {
        /* Unlike the painters, rings without colour steps are sketched too. */
        L_Rect visible;
        if (SectLRect(&theBuffer->bufferRect, &theRing->ringRect, &visible))
            SketchRing(theBuffer, theRing, sinTheta, cosTheta);

        int32_t done = rings.index + 1;
        if (statusFlag && StatusTime(theData))
            UpdateStatus(theData, (float)done / (float)ringCount, done, result);
    }

    if (statusFlag)
        UpdateStatus(theData, 1.0f, ringCount, result);
}

void SketchRing(const GlintwaveBuffer* theBuffer, const RingElement* theRing, double sinTheta, double cosTheta)
{
    float xc = theRing->ringXPos - (float)theBuffer->bufferRect.left;
    float yc = theRing->ringYPos - (float)theBuffer->bufferRect.top;
    float xr = fabsf(theRing->ringXRadius);
    float yr = fabsf(theRing->ringYRadius);
    if (theBuffer->bufferBase == nullptr || std::isnan(xr) || std::isnan(yr))
        return;
    if (RingEnclosesBuffer(theBuffer, xc, yc, xr, yr))
        return;

    float largest = xr > yr ? xr : yr;
    int64_t segments = (int64_t)TruncLong(kTwoPi * largest) + 1;
    if (segments < kMinRingSegments)
        segments = kMinRingSegments;
    if (segments > kMaxRingSegments)
        segments = kMaxRingSegments;
    int32_t ringSegments = (int32_t)segments;
    double thetaStep = kTwoPi / ringSegments;

    /* Small rings are walked whole; the windows pay off for large ones. */
    SketchWindows windows;
    windows.count = -1;
    if (ringSegments >= kWindowedRingSegments)
        windows = FindSketchWindows(theBuffer, xc, yc, xr, yr, sinTheta, cosTheta);
    if (windows.count == 0)
        return;
    int32_t window = 0;

    unsigned char* base = static_cast<unsigned char*>(theBuffer->bufferBase);
    unsigned char index = (unsigned char)(theBuffer->bufferIndex & 0xFF);
    double a = 0.0;
    /* The last point repeats the first. */
    for (int32_t i = 0; i <= ringSegments; ++i, a += thetaStep) {
        if (windows.count > 0) {
            while (window < windows.count && a > windows.end[window])
                window++;
            if (window == windows.count)
                break;
            if (a < windows.start[window])
                continue;
        }
        double x = sin(a) * xr;
        double y = cos(a) * yr;
        if (!(sinTheta == 0.0)) {
            double turnedX = x * cosTheta - y * sinTheta;
            double turnedY = y * cosTheta + x * sinTheta;
            x = turnedX;
            y = turnedY;
        }
        x += xc;
        y += yc;

        /* Points outside the buffer are dropped one by one. */
        if (x >= 0 && y >= 0) {
            int32_t xi = TruncLong(x);
            int32_t yi = TruncLong(y);
            if ((uint32_t)xi < theBuffer->bufferRect.width && (uint32_t)yi < theBuffer->bufferRect.height)
                base[(intptr_t)theBuffer->bufferRowBytes * yi + xi] = index;
        }
    }
}
