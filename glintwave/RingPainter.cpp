/*
 * RingPainter.cpp - paints one row of every ring-type element (glows, halos,
 * rings and reflections).
 *
 * A ring is a radial ramp: a pixel's offsets from the centre, scaled by the
 * ring's 16.16 factors (and turned when the flare is rotated and not round),
 * give an unsigned 16.16 distance in ramp steps; the two ramp entries around
 * it are blended with integer weights and added to the pixel. Only the
 * columns where the ring's box meets the row are visited.
 */
#include <cmath>

#include "FlareAccess.h"
#include "FlareRender.h"
#include "PixelOps.h"
#include "RectUtils.h"

namespace {

constexpr double kDegreesToRadians = 0.017453292519943295;

/* A 16.16 distance at or past this is beyond every ramp: it no longer fits
   32 bits. */
constexpr double kDistanceRange = 4294967296.0;

/* The rotation the painters apply, once per row. */
struct RingRow {
    bool rotated;
    double s;
    double c;
};

RingRow SetupRingRow(const ControlDataRec* theControl, const PluginDataRec* theData)
{
    double theta = theControl->flareRotation;
    if ((theControl->flareFlags & FLARE_FLAG(kFlagNoLightRotation)) == 0)
        theta += theData->flareLightRotation;

    RingRow row = {false, 0.0, 1.0};
    /* Round flares need no turning even when rotated. */
    if (!(theta == 0.0) && !(theControl->flareAspectRatio == 1.0)) {
        row.rotated = true;
        row.s = sin(theta * kDegreesToRadians);
        row.c = cos(theta * kDegreesToRadians);
    }
    return row;
}

/* Blends the ramp at a 16.16 distance and adds it to the pixel. */
template <int Depth>
inline void PaintRingPixel(unsigned char* thePixel, const FlareColor* ramp, uint32_t distance, uint32_t* seed)
{
    uint32_t colorIndex = distance >> 16;
    uint32_t factor1 = distance & 0xFFFFu;
    uint32_t factor0 = 65536u - factor1;
    const FlareColor& color0 = ramp[colorIndex];
    const FlareColor& color1 = ramp[colorIndex + 1];
    uint32_t red = (color0.red * factor0 + color1.red * factor1) >> 16;
    uint32_t green = (color0.green * factor0 + color1.green * factor1) >> 16;
    uint32_t blue = (color0.blue * factor0 + color1.blue * factor1) >> 16;
    if constexpr (Depth == 48) {
        AddPixel48(thePixel, red, green, blue);
    } else {
        AddPixel32(thePixel, red, green, blue, NextDitherNoise(seed));
    }
}

template <int Depth>
void PaintRings(ControlDataRec* theControl, PluginDataRec* theData, const L_Rect* curRect, int32_t y)
{
    constexpr int pixelSize = Depth == 48 ? kPixelSize48 : kPixelSize32;
    const GlintwaveBuffer* theBuffer = &theData->flarePixelBuffer;
    const RingRow row = SetupRingRow(theControl, theData);
    uint32_t seed = (uint32_t)y;

    int32_t count = ChainLimit(theData, theControl->flareRingCount, sizeof(RingElement));
    int32_t offset = theData->flareRingFirst;
    for (int32_t i = 0; i < count; ++i) {
        const RingElement* theRing = RingAt(theData, offset);
        if (theRing == nullptr)
            break;
        offset = theRing->ringNext;

        int32_t steps = theRing->ringFlareColors;
        L_Rect scanRect;
        if (steps <= 0 || !SectLRect(curRect, &theRing->ringRect, &scanRect))
            continue;
        const FlareColor* ramp = RampAt(theData, theRing->ringFlareColorBase, steps);
        if (ramp == nullptr)
            continue;

        /* A pixel is painted when its distance's step is below the ramp's
           length: distance < steps x 65536, as a double compare that also
           drops NaN and distances too large for 32 bits. */
        double limit = (double)steps * 65536.0;
        if (limit > kDistanceRange)
            limit = kDistanceRange;

        int64_t columns = (int64_t)scanRect.right - (int64_t)scanRect.left;
        unsigned char* thePixel = PixelAddress(theBuffer, scanRect.left, y, pixelSize);

        if (!row.rotated) {
            float dyScaled = ((float)y - theRing->ringYPos) * theRing->ringYFactor;
            float dySquared = dyScaled * dyScaled;
            double xStep = theRing->ringXFactor;
            double dx = theRing->ringXFactor * ((float)scanRect.left - theRing->ringXPos);
            for (int64_t n = 0; n < columns; ++n, thePixel += pixelSize, dx += xStep) {
                double d = 0.5 + sqrt(dx * dx + dySquared);
                if (d < limit)
                    PaintRingPixel<Depth>(thePixel, ramp, TruncULong(d), &seed);
            }
        } else {
            double a = theRing->ringXFactor * row.c;
            double b = theRing->ringXFactor * -row.s;
            double e = theRing->ringYFactor * row.s;
            double f = theRing->ringYFactor * row.c;
            float Y = (float)y - theRing->ringYPos;
            float X = (float)scanRect.left - theRing->ringXPos;
            double Yb = Y * b;
            double Yf = Y * f;
            for (int64_t n = 0; n < columns; ++n, thePixel += pixelSize, X += 1.0f) {
                double u = Yb + X * a;
                double v = Yf + X * e;
                double d = 0.5 + sqrt(v * v + u * u);
                if (d < limit)
                    PaintRingPixel<Depth>(thePixel, ramp, TruncULong(d), &seed);
            }
        }
    }
}

}  // namespace

void PaintRings48(ControlDataRec* theControl, PluginDataRec* theData, const L_Rect* curRect, int32_t y)
{
    PaintRings<48>(theControl, theData, curRect, y);
}

void PaintRings32(ControlDataRec* theControl, PluginDataRec* theData, const L_Rect* curRect, int32_t y)
{
    PaintRings<32>(theControl, theData, curRect, y);
}
