/*
 * FlareGeometry.cpp - places every element of the loaded style in the frame
 * and lays out its colour ramp behind the elements.
 *
 * Elements sit on the line from the light through the frame centre:
 * position 1.0 at the light, 0.0 at the centre. Rings get a centre, two
 * radii, a bounding box and 16.16 factors that turn their ellipse into a
 * circle of one ramp step per pixel; streaks get an outline of four edges for
 * the scan converter and a unit direction. Each visible element's ramp is
 * placed at the next free offset of the block, (steps x 6 + 13) & ~7 bytes.
 *
 * The ring arithmetic reads the centre and radii back from the element's
 * single-precision fields, so the box is derived from exactly the values the
 * painters and the sketch see.
 */
#include <cmath>

#include "ElementChain.h"
#include "FlareAccess.h"
#include "FlareModel.h"
#include "FlareRender.h"
#include "RectUtils.h"

namespace {

constexpr double kDegreesToRadians = 0.017453292519943295;
constexpr double kFixedOne = 65536.0;  /* one ramp step in 16.16 */

bool FlagSet(const ControlDataRec* theControl, int bit)
{
    return (theControl->flareFlags & FLARE_FLAG(bit)) != 0;
}

/* Bytes a ramp of steps entries (plus the closing one) takes in the block.
   Computed wide, so a huge step count yields a huge block, never a wrap. */
int64_t RampBlockSize(int32_t steps)
{
    return ((int64_t)steps * (int64_t)sizeof(FlareColor) + 13) & ~(int64_t)7;
}

/* The tint handed to the colour model: the element's colour scales the kind
   colour, (element + 1) x kind >> 16 in 32-bit unsigned arithmetic, so an
   untinted element (0xFFFF) passes the kind colour through unchanged. */
uint16_t TintChannel(int16_t elementChannel, int16_t kindChannel)
{
    uint32_t element = (uint32_t)(uint16_t)elementChannel + 1u;
    return (uint16_t)((element * (uint32_t)(uint16_t)kindChannel) >> 16);
}

FlareColor TintColor(const ARGB_Color& elementColor, const ARGB_Color& kindColor)
{
    FlareColor tint;
    tint.red = TintChannel(elementColor.red, kindColor.red);
    tint.green = TintChannel(elementColor.green, kindColor.green);
    tint.blue = TintChannel(elementColor.blue, kindColor.blue);
    return tint;
}

double FlareRotationDegrees(const ControlDataRec* theControl, const PluginDataRec* theData)
{
    double rotation = theControl->flareRotation;
    if (!FlagSet(theControl, kFlagNoLightRotation))
        rotation += theData->flareLightRotation;
    return rotation;
}

/* A point on the light-to-centre line. */
float PlaceOnAxis(double center, double light, float position)
{
    return NarrowToFloat(center + (light - center) * position);
}

void ClearRing(RingElement* theRing)
{
    theRing->ringFlareColors = 0;
    theRing->ringFlareColorBase = 0;
    SetLRect(&theRing->ringRect, 0, 0, 0, 0);
}

}  // namespace

int32_t CalcFlareInfo(ControlDataRec* theControl, PluginDataRec* theData)
{
    int32_t result = 0;
    int32_t base = theData->flareElementSize;
    int64_t freeBytes = (int64_t)theData->flareDataSize - (int64_t)base;
    /* Ramps are laid out from the end of the elements on; an end inside the
       header or at an odd offset leaves no room to lay out anything. */
    if (base < (int32_t)sizeof(PluginDataRec) || base % (int32_t)alignof(FlareColor) != 0)
        freeBytes = 0;
    int32_t theSize = freeBytes > 0 ? (int32_t)freeBytes : 0;

    if (theSize > 0) {
        double aspect = FlagSet(theControl, kFlagUseAspectRatio) ? theControl->flareAspectRatio : 1.0;

        ChainWalk rings = RingChain(theControl, theData);
        RingElement* theRing;
        while (result == 0 && (theRing = NextRing(theData, &rings)) != nullptr)
            CalcRingInfo(theControl, theData, theRing, aspect, &theSize, &base, &result);

        ChainWalk streaks = StreakChain(theControl, theData);
        StreakElement* theStreak;
        while (result == 0 && (theStreak = NextStreak(theData, &streaks)) != nullptr)
            CalcStreakInfo(theControl, theData, theStreak, aspect, &theSize, &base, &result);
    }

    theData->flareDataSize = base;
    return result;
}

void CalcRingInfo(ControlDataRec* theControl, PluginDataRec* theData, RingElement* theRing,
                  double theAspectRatio, int32_t* theSize, int32_t* theBase, int32_t* result)
{
    if (*result != 0)
        return;

    const ARGB_Color* kindColor;
    int kindBit;
    switch (theRing->ringType) {
    case kRingOriginGlow:
        kindColor = &theControl->flareOriginGlowColor;
        kindBit = kFlagNoOriginGlow;
        break;
    case kRingOuterGlow:
        kindColor = &theControl->flareOuterGlowColor;
        kindBit = kFlagNoOuterGlow;
        break;
    case kRingHalo:
        kindColor = &theControl->flareHaloColor;
        kindBit = kFlagNoHalo;
        break;
    default:
        kindColor = &theControl->flareRingColor;
        kindBit = kFlagNoRings;
        break;
    }
    if (FlagSet(theControl, kindBit) || (theRing->ringMode & kElementOffMode) != 0) {
        ClearRing(theRing);
        return;
    }

    double intensity = theRing->ringIntensity * theControl->flareRingIntensity;
    if (!FlagSet(theControl, kFlagNoLightIntensity))
        intensity *= theData->flareLightIntensity;
    double rotation = FlareRotationDegrees(theControl, theData);

    theRing->ringXPos = PlaceOnAxis(theData->flareXCenter, theData->flareXPosition, theRing->ringPosition);
    theRing->ringYPos = PlaceOnAxis(theData->flareYCenter, theData->flareYPosition, theRing->ringPosition);

    double size = theControl->flareRingScale * theRing->ringScale * theRing->ringOuter;
    theRing->ringXRadius = NarrowToFloat(theData->flareXScale * size * theAspectRatio);
    theRing->ringYRadius = NarrowToFloat(theData->flareYScale * size);

    /* Only the glows follow the light's size; halos and rings keep theirs.
       The size multiplies the radii as stored, rounded to single precision.
       (GCC 12 at -O2 has been seen to vectorise the plain casts of these two
       steps into one and multiply the unrounded doubles instead; unless
       -fno-tree-slp-vectorize is set, compare renders after touching this.) */
    if (!FlagSet(theControl, kFlagNoLightSize) && !(theData->flareLightSize == 0.0) &&
        (theRing->ringType == kRingOriginGlow || theRing->ringType == kRingOuterGlow)) {
        theRing->ringXRadius = NarrowToFloat(theRing->ringXRadius * theData->flareLightSize);
        theRing->ringYRadius = NarrowToFloat(theRing->ringYRadius * theData->flareLightSize);
    }

    float x = theRing->ringXPos;
    float y = theRing->ringYPos;
    float rx = theRing->ringXRadius;
    float ry = theRing->ringYRadius;
    if (theAspectRatio == 1.0 || rotation == 0.0) {
        SetLRect(&theRing->ringRect, TruncLong(floor(x - rx)), TruncLong(floor(y - ry)),
                 TruncLong(ceil(x + rx)), TruncLong(ceil(y + ry)));
    } else {
        /* A turned ellipse stays inside the circle of its larger radius. */
        float r = rx >= ry ? rx : ry;
        SetLRect(&theRing->ringRect, TruncLong(floor(x - r)), TruncLong(floor(y - r)),
                 TruncLong(ceil(x + r)), TruncLong(ceil(y + r)));
    }

    L_Rect visible;
    if (!SectLRect(&theRing->ringRect, &theData->flareRect, &visible)) {
        ClearRing(theRing);
        return;
    }

    double length = ry >= rx ? rx : ry;
    theRing->ringXFactor = NarrowToFloat(length * kFixedOne / rx);
    theRing->ringYFactor = NarrowToFloat(length * kFixedOne / ry);
    int32_t steps = TruncLong(ceil(length));
    theRing->ringFlareColors = steps;
    int64_t block = RampBlockSize(steps);
    if (*theSize < block) {
        *result = kPluginMemoryError;
        return;
    }

    theRing->ringFlareColorBase = *theBase;
    FlareColor tint = TintColor(theRing->ringColor, *kindColor);
    ElementColor* stops = StopsBehind(theData, OffsetInBlock(theData, theRing), sizeof(RingElement),
                                      theRing->ringElementColors);
    FlareColor* table = RampAt(theData, *theBase, steps);
    if (table != nullptr &&
        CalcRGBColors(theData, length, intensity, theControl->flareRingContrast,
                      FlagSet(theControl, kFlagRingGray), &tint, theRing->ringElementColors, steps,
                      stops, table)) {
        *theBase += (int32_t)block;
        *theSize -= (int32_t)block;
        return;
    }
    /* Nothing to draw: the ramp's memory stays free. */
    theRing->ringFlareColors = 0;
    theRing->ringFlareColorBase = 0;
}

void CalcStreakInfo(ControlDataRec* theControl, PluginDataRec* theData, StreakElement* theStreak,
                    double theAspectRatio, int32_t* theSize, int32_t* theBase, int32_t* result)
{
    if (*result != 0)
        return;

    if (!FlagSet(theControl, kFlagNoStreaks) && (theStreak->streakMode & kElementOffMode) == 0) {
        double intensity = theControl->flareStreakIntensity;
        if (!FlagSet(theControl, kFlagNoLightIntensity))
            intensity *= theData->flareLightIntensity;

        theStreak->streakXPos =
            PlaceOnAxis(theData->flareXCenter, theData->flareXPosition, theStreak->streakPosition);
        theStreak->streakYPos =
            PlaceOnAxis(theData->flareYCenter, theData->flareYPosition, theStreak->streakPosition);

        double dx = theStreak->streakX;
        double dy = theStreak->streakY;
        double rotation = FlareRotationDegrees(theControl, theData);
        if (!(rotation == 0.0)) {
            double angle = rotation * kDegreesToRadians;
            double s = sin(angle);
            double c = cos(angle);
            double turnedX = dx * c - dy * s;
            double turnedY = dy * c + dx * s;
            dx = turnedX;
            dy = turnedY;
        }

        /* Streaks follow the light's size even when it is 0, unlike rings. */
        if (!FlagSet(theControl, kFlagNoLightSize)) {
            dx *= theData->flareLightSize;
            dy *= theData->flareLightSize;
        }

        dx *= theData->flareXScale * (theControl->flareStreakScale * theStreak->streakScale) * theAspectRatio;
        dy *= theControl->flareStreakScale * theStreak->streakScale * theData->flareYScale;

        FacetPoints points = {};
        points[0].x = dx * theStreak->streakInner + theStreak->streakXPos;
        points[0].y = dy * theStreak->streakInner + theStreak->streakYPos;
        dx *= theStreak->streakOuter;
        dy *= theStreak->streakOuter;
        double length = sqrt(dx * dx + dy * dy);
        /* The tip lies one pixel beyond the outer extent. */
        points[1].x = dx * (1 + length) / length + theStreak->streakXPos;
        points[1].y = dy * (1 + length) / length + theStreak->streakYPos;

        if (CalcEdges(&theData->flareRect, &theStreak->streakRect, theStreak->streakEdges, points, 2)) {
            theStreak->streakDX = NarrowToFloat(dx / length);
            theStreak->streakDY = NarrowToFloat(dy / length);
            int32_t steps = TruncLong(ceil(length));
            theStreak->streakFlareColors = steps;
            int64_t block = RampBlockSize(steps);
            if (*theSize < block) {
                *result = kPluginMemoryError;
                return;
            }

            theStreak->streakFlareColorBase = *theBase;
            FlareColor tint = TintColor(theStreak->streakColor, theControl->flareStreakColor);
            ElementColor* stops = StopsBehind(theData, OffsetInBlock(theData, theStreak),
                                              sizeof(StreakElement), theStreak->streakElementColors);
            FlareColor* table = RampAt(theData, *theBase, steps);
            if (table != nullptr &&
                CalcRGBColors(theData, length, theStreak->streakIntensity * intensity,
                              theControl->flareStreakContrast, FlagSet(theControl, kFlagStreakGray),
                              &tint, theStreak->streakElementColors, steps, stops, table)) {
                *theBase += (int32_t)block;
                *theSize -= (int32_t)block;
                return;
            }
        }
    }

    /* Off, outside the frame or nothing to draw; the box stays as the
       outline set-up left it. */
    theStreak->streakFlareColors = 0;
    theStreak->streakFlareColorBase = 0;
}

double CalcFlareScale(ControlDataRec* theControl, PluginDataRec* theData)
{
    ChainWalk rings = RingChain(theControl, theData);
    while (const RingElement* theRing = NextRing(theData, &rings))
        if (theRing->ringType == kRingOriginGlow)
            return theRing->ringOuter * theData->flareYScale;
    return 0.0;
}
