/*
 * ColorModel.cpp - turns an element's colour stops into its colour ramp.
 *
 * A ramp has one FlareColor entry per pixel of the element's radius or
 * length, 0..16320 per channel, already multiplied by the light's colour, the
 * element's tint and its intensity and shaped by the contrast; the entry after
 * the last is always black so the painters may interpolate up to it. Each
 * entry is the box-filtered average of the stops' piecewise linear blend over
 * its one-pixel interval.
 */
#include <cmath>

#include "FlareAccess.h"
#include "FlareModel.h"

namespace {

/* Full level of the light's 8-bit channel times the full 16-bit tint. */
constexpr double kLightTintFullScale = 16711425.0;  /* 255 x 65535 */
constexpr double kFullLevelScale = 16320.0;

void SetFlareColor(FlareColor* theEntry, uint16_t red, uint16_t green, uint16_t blue)
{
    theEntry->red = red;
    theEntry->green = green;
    theEntry->blue = blue;
}

/* A channel value past the contrast curve or rounding, limited to full
   level. Stored in 16 bits as the value would be. */
uint16_t ClampChannel(int32_t value)
{
    return (uint16_t)(value < kFullLevel ? value : kFullLevel);
}

}  // namespace

/* Would order the stops by radius, but its search flag starts cleared, so it
   returns at once and the stops stay in the order the table stores them.
   Tables are authored with increasing radii; keeping the stored order is
   what existing styles are drawn with. */
void SortColors(int32_t elementColorCount, ElementColor* firstElementColor)
{
    bool searchFlag = false;
    ElementColor* curColor = firstElementColor;
    int32_t remaining = elementColorCount;
    while (searchFlag && remaining > 1) {
        ElementColor* smallest = curColor;
        for (int32_t i = 1; i < remaining; ++i) {
            if (curColor[i].rgb.radius < smallest->rgb.radius)
                smallest = &curColor[i];
        }
        if (smallest != curColor) {
            ElementColor swap = *curColor;
            *curColor = *smallest;
            *smallest = swap;
        }
        ++curColor;
        --remaining;
    }
}

/* Adds the integral of the linear blend from theElementColor to
   nextElementColor over [p1, p2]: the interval's width times the blend at its
   midpoint, split into the two stops' weights. */
void AddColor(const ElementColor* theElementColor, const ElementColor* nextElementColor,
              double p1, double p2, double* rSum, double* gSum, double* bSum)
{
    double r0 = theElementColor->rgb.radius;
    double r1 = nextElementColor->rgb.radius;
    double width = p2 - p1;
    double f1 = ((p1 + p2) / 2 - r0) * width / (r1 - r0);
    double f2 = width - f1;
    *rSum += nextElementColor->rgb.red * f1 + theElementColor->rgb.red * f2;
    *gSum += nextElementColor->rgb.green * f1 + theElementColor->rgb.green * f2;
    *bSum += nextElementColor->rgb.blue * f1 + theElementColor->rgb.blue * f2;
}

bool CalcRGBColors(PluginDataRec* theData, double theScale, double theIntensity,
                   double theContrast, bool grayFlag, const FlareColor* theColor,
                   int32_t elementColorCount, int32_t flareColorCount,
                   ElementColor* firstElementColor, FlareColor* firstFlareColor)
{
    /* Without stops or room there is nothing to evaluate: nothing to draw. */
    if (flareColorCount < 0 || elementColorCount <= 0 || firstElementColor == nullptr ||
        firstFlareColor == nullptr || theColor == nullptr)
        return false;

    bool result = false;
    bool contrastOn = !(theContrast == 1.0);
    double step = 1.0 / theScale;

    double k = theScale * theIntensity / kLightTintFullScale;
    if (contrastOn)
        k = k / kFullLevelScale;

    const ARGB& light = theData->flareLightColor;
    double rScale = (double)((int32_t)light.argb.r * (int32_t)theColor->red) * k;
    double gScale = (double)((int32_t)light.argb.g * (int32_t)theColor->green) * k;
    double bScale = (double)((int32_t)light.argb.b * (int32_t)theColor->blue) * k;
    if (!(rScale > 0.0) && !(gScale > 0.0) && !(bScale > 0.0))
        return false;

    /* The sweep moves outward once over the stops: cur is the stop at or
       below pos, next the one above it. */
    const ElementColor* cur = firstElementColor;
    int32_t remaining = elementColorCount;
    const ElementColor* next = remaining > 1 ? cur + 1 : nullptr;
    double nextPos = next != nullptr ? (double)next->rgb.radius : 0.0;
    double pos = 0.0;
    double end = step;

    FlareColor* entry = firstFlareColor;
    for (int32_t i = 0; i < flareColorCount; ++i, ++entry) {
        if (cur->rgb.radius > end || pos >= 1.0) {
            /* Before the first stop or past the outer edge: the stop's own
               colour, unscaled. */
            SetFlareColor(entry, cur->rgb.red, cur->rgb.green, cur->rgb.blue);
        } else {
            double rSum, gSum, bSum;
            if (cur->rgb.radius > pos) {
                /* The pixel holding the first stop starts from the stop's
                   full colour, not weighted by width: it is drawn brighter. */
                rSum = cur->rgb.red;
                gSum = cur->rgb.green;
                bSum = cur->rgb.blue;
                pos = cur->rgb.radius;
            } else {
                rSum = gSum = bSum = 0.0;
            }

            while (remaining > 1 && end > nextPos) {
                AddColor(cur, next, pos, nextPos, &rSum, &gSum, &bSum);
                pos = nextPos;
                cur = next;
                --remaining;
                if (remaining > 1) {
                    next = cur + 1;
                    nextPos = next->rgb.radius;
                }
            }
            if (remaining > 1)
                AddColor(cur, next, pos, end, &rSum, &gSum, &bSum);

            if (grayFlag) {
                double grey = gSum > rSum ? gSum : rSum;
                if (bSum > grey)
                    grey = bSum;
                rSum = gSum = bSum = grey;
            }

            rSum *= rScale;
            gSum *= gScale;
            bSum *= bScale;

            int32_t red, green, blue;
            if (contrastOn) {
                red = TruncLong(kFullLevelScale * exp(log(rSum) * theContrast));
                green = TruncLong(kFullLevelScale * exp(log(gSum) * theContrast));
                blue = TruncLong(kFullLevelScale * exp(log(bSum) * theContrast));
            } else {
                red = TruncLong(rSum + 0.5);
                green = TruncLong(gSum + 0.5);
                blue = TruncLong(bSum + 0.5);
            }

            if (red < 1 && green < 1 && blue < 1) {
                SetFlareColor(entry, 0, 0, 0);
            } else {
                result = true;
                SetFlareColor(entry, ClampChannel(red), ClampChannel(green), ClampChannel(blue));
            }
        }
        pos = end;
        end = end + step;
    }

    SetFlareColor(&firstFlareColor[flareColorCount], 0, 0, 0);
    return result;
}
