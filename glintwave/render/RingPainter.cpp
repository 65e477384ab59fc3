/*
 * RingPainter.cpp - paints one row of every ring-type element (glows, halos,
 * rings and reflections) by the per-pixel rule.
 *
 * Only the columns where the ring's box meets the row are visited; each is
 * measured and painted when it lies inside the ramp. This is the rule the
 * span painters (RingSpans.cpp) reproduce byte for byte.
 */
#include "ElementChain.h"
#include "FlareAccess.h"
#include "FlareRender.h"
#include "RectUtils.h"
#include "RingPaint.h"

namespace {

constexpr double kDegreesToRadians = 0.017453292519943295;

template <int Depth>
void PaintRings(ControlDataRec* theControl, PluginDataRec* theData, const L_Rect* curRect, int32_t y)
{
    const GlintwaveBuffer* theBuffer = &theData->flarePixelBuffer;
    const RingRow row = SetupRingRow(theControl, theData);
    uint32_t seed = (uint32_t)y;

    ChainWalk rings = RingChain(theControl, theData);
    while (const RingElement* theRing = NextRing(theData, &rings)) {
        int32_t steps = theRing->ringFlareColors;
        L_Rect scanRect;
        if (steps <= 0 || !SectLRect(curRect, &theRing->ringRect, &scanRect))
            continue;
        const FlareColor* ramp = RampAt(theData, theRing->ringFlareColorBase, steps);
        if (ramp == nullptr)
            continue;
        PaintRingPlain<Depth>(theBuffer, theRing, ramp, &row, &scanRect, y, &seed);
    }
}

}  // namespace

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

void PaintRings48(ControlDataRec* theControl, PluginDataRec* theData, const L_Rect* curRect, int32_t y)
{
    PaintRings<48>(theControl, theData, curRect, y);
}

void PaintRings32(ControlDataRec* theControl, PluginDataRec* theData, const L_Rect* curRect, int32_t y)
{
    PaintRings<32>(theControl, theData, curRect, y);
}
