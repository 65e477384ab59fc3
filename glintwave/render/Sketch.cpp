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

    unsigned char* base = static_cast<unsigned char*>(theBuffer->bufferBase);
    unsigned char index = (unsigned char)(theBuffer->bufferIndex & 0xFF);
    double a = 0.0;
    /* The last point repeats the first. */
    for (int32_t i = 0; i <= ringSegments; ++i, a += thetaStep) {
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
