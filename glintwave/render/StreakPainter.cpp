/*
 * StreakPainter.cpp - paints one row of every streak.
 *
 * A streak is a band 3 pixels wide whose outline the scan converter slices
 * into one span per row. Along the band the colour is the streak's ramp at
 * the pixel's distance from the streak's origin; across it the colour fades
 * linearly to nothing at 1.5 pixels from the axis.
 */
#include <algorithm>
#include <cmath>

#include "ElementChain.h"
#include "FlareAccess.h"
#include "FlareRender.h"
#include "PixelOps.h"
#include "RectUtils.h"

namespace {

/* Pixels this close to the axis (squared distance) are painted. */
constexpr float kBandHalfWidthSquared = 2.25f;

/* The fall-off across the band, per pixel from the axis: close to -2/3, so
   that the colour reaches nothing at 1.5 pixels. */
constexpr double kBandFalloff = -0.66666666667;

template <int Depth>
void PaintStreaks(ControlDataRec* theControl, PluginDataRec* theData, const L_Rect* curRect, int32_t y)
{
    constexpr int pixelSize = Depth == 48 ? kPixelSize48 : kPixelSize32;
    const GlintwaveBuffer* theBuffer = &theData->flarePixelBuffer;
    uint32_t seed = (uint32_t)y;

    ChainWalk streaks = StreakChain(theControl, theData);
    while (StreakElement* theStreak = NextStreak(theData, &streaks)) {
        int32_t steps = theStreak->streakFlareColors;
        L_Rect scanRect;
        if (steps <= 0 || !SectLRect(curRect, &theStreak->streakRect, &scanRect))
            continue;
        /* Consumes this row of the outline whether or not a pixel follows. */
        int16_t xMin, xMax;
        if (!SliceEdges(&scanRect, y, theStreak->streakEdges, &xMin, &xMax))
            continue;
        const FlareColor* ramp = RampAt(theData, theStreak->streakFlareColorBase, steps);
        if (ramp == nullptr)
            continue;
        /* The span is already inside scanRect unless the frame is wider than
           16-bit columns reach; keep it there in any case. */
        int32_t left = std::max<int32_t>(xMin, scanRect.left);
        int32_t right = std::min<int32_t>(xMax, (int32_t)((int64_t)scanRect.right - 1));

        const float xPos = theStreak->streakXPos;
        const float axisX = theStreak->streakDX;
        const float axisY = theStreak->streakDY;
        const double rampLength = (double)steps;

        const float yDist = (float)y - theStreak->streakYPos;
        const float dy = axisY * yDist;
        const float ySquared = yDist * yDist;

        unsigned char* thePixel = PixelAddress(theBuffer, left, y, pixelSize);
        for (int32_t x = left; x <= right; ++x, thePixel += pixelSize) {
            float dx = (float)x - xPos;
            double distance = sqrt((double)dx * dx + (double)ySquared);
            /* Past the ramp (or not a number): left alone. */
            if (!(distance < rampLength))
                continue;

            /* Distance from the axis: the pixel minus its projection on it. */
            float t = axisX * dx + dy;
            float px = axisX * t - dx;
            float py = axisY * t - yDist;
            float d2 = py * py + px * px;
            if (!(d2 < kBandHalfWidthSquared))
                continue;

            int32_t colorIndex = TruncLong(distance);
            double factor1 = distance - colorIndex;
            double factor0 = 1.0 - factor1;
            const FlareColor& color0 = ramp[colorIndex];
            const FlareColor& color1 = ramp[colorIndex + 1];
            int32_t red = TruncLong(color1.red * factor1 + color0.red * factor0);
            int32_t green = TruncLong(color1.green * factor1 + color0.green * factor0);
            int32_t blue = TruncLong(color1.blue * factor1 + color0.blue * factor0);

            double fall = 1.0 + sqrt((double)d2) * kBandFalloff;
            uint32_t redValue = (uint32_t)TruncLong(red * fall);
            uint32_t greenValue = (uint32_t)TruncLong(green * fall);
            uint32_t blueValue = (uint32_t)TruncLong(blue * fall);
            if constexpr (Depth == 48) {
                AddPixel48(thePixel, redValue, greenValue, blueValue);
            } else {
                AddPixel32(thePixel, redValue, greenValue, blueValue, NextDitherNoise(&seed));
            }
        }
    }
}

}  // namespace

void PaintStreaks48(ControlDataRec* theControl, PluginDataRec* theData, const L_Rect* curRect, int32_t y)
{
    PaintStreaks<48>(theControl, theData, curRect, y);
}

void PaintStreaks32(ControlDataRec* theControl, PluginDataRec* theData, const L_Rect* curRect, int32_t y)
{
    PaintStreaks<32>(theControl, theData, curRect, y);
}
