/*
 * GenerateFlare.cpp - paints a whole flare into the buffer described by
 * flarePixelBuffer, row by row, or sketches it for an 8-bit buffer.
 *
 * Within a row all rings are painted in list order, then all streaks; every
 * addition saturates, so the order shows only at full level and in the
 * 32-bit dither. With statusFlag the rows are reported to the host as they
 * are done ("Drawing Flare", counted in "Scanline"s of the flare's frame),
 * and the host's cancel stops the painting before the next row; the preview
 * paints without reports.
 *
 * The rings are painted by the span painters (RingSpans.cpp) unless the
 * plain per-pixel rule is asked for (PaintPath.h): the same bytes, with the
 * frame's rings planned once before the first row.
 *
 * The host owns the buffer, and its base, row bytes and rectangle are taken
 * as given. A buffer without a base address is the one case guarded here:
 * nothing is painted or reported and the result is 0.
 */
#include "FlareRender.h"
#include "PaintPath.h"
#include "PluginClient.h"
#include "RectUtils.h"
#include "RingPaint.h"

namespace {

using PaintRowProc = void (*)(ControlDataRec*, PluginDataRec*, const L_Rect*, int32_t);
using PaintPlannedProc = void (*)(RingPlan*, PluginDataRec*, const L_Rect*, int32_t, const RingKernels*);

/* The rings of one depth: the per-pixel rule, and the span painter with the
   kernel of each path. */
struct RingPainters {
    PaintRowProc plain;
    PaintPlannedProc planned;
    RingKernels scalar;
    RingKernels vector;
};

const RingPainters kRings48 = {PaintRings48, PaintPlannedRings48,
                               {PaintRingSpanScalar<48>, PaintRingFlatScalar<48>},
                               {PaintRingSpanVector48, PaintRingFlatVector48}};
const RingPainters kRings32 = {PaintRings32, PaintPlannedRings32,
                               {PaintRingSpanScalar<32>, PaintRingFlatScalar<32>},
                               {PaintRingSpanVector32, PaintRingFlatVector32}};

/* Progress through the frame's rows when row y is next. */
float RowPosition(const PluginDataRec* theData, int32_t y)
{
    return (float)((int64_t)y - theData->flareRect.top) / (float)theData->flareRect.height;
}

int32_t RowValue(const PluginDataRec* theData, int32_t y)
{
    return (int32_t)((int64_t)y - theData->flareRect.top);
}

void PaintFlareRows(ControlDataRec* theControl, PluginDataRec* theData, bool statusFlag, int32_t* result,
                    const RingPainters* rings, PaintRowProc paintStreaks)
{
    const L_Rect bufferRect = theData->flarePixelBuffer.bufferRect;
    int32_t y = bufferRect.top;

    if (statusFlag) {
        HostStatusRec* theStatus = &theData->theStatusRec;
        theStatus->theReference = theData->flareHostReference;
        theStatus->theStatusPos = RowPosition(theData, y);
        CopyStr(theStatus->theStatusUnit, "Scanline");
        CopyStr(theStatus->theStatusInfo, "Drawing Flare");
        theStatus->theStatusMin = 0;
        theStatus->theStatusMax = (int32_t)theData->flareRect.height;
        theStatus->theStatusValue = RowValue(theData, y);
        theStatus->theStatusTick = 0;
        CheckStatus(theData, result);
    }

    /* The span painters plan the frame's rings once; without memory for the
       plan the rule paints them. */
    const int32_t path = CurrentPaintPath();
    RingPlan* thePlan = nullptr;
    if (path != kPaintPathPlain && *result == 0 && y < bufferRect.bottom)
        thePlan = MakeRingPlan(theControl, theData);
    const RingKernels* kernels = path == kPaintPathVector ? &rings->vector : &rings->scalar;

    while (y < bufferRect.bottom && *result == 0) {
        L_Rect curRect;
        SetLRect(&curRect, bufferRect.left, y, bufferRect.right, y + 1);
        if (thePlan != nullptr)
            rings->planned(thePlan, theData, &curRect, y, kernels);
        else
            rings->plain(theControl, theData, &curRect, y);
        paintStreaks(theControl, theData, &curRect, y);
        y += 1;
        if (statusFlag && StatusTime(theData))
            UpdateStatus(theData, RowPosition(theData, y), RowValue(theData, y), result);
    }

    FreeRingPlan(thePlan);

    if (statusFlag)
        UpdateStatus(theData, RowPosition(theData, y), RowValue(theData, y), result);
}

}  // namespace

int32_t GenerateFlare(ControlDataRec* theControl, PluginDataRec* theData, int16_t theDepth, bool statusFlag)
{
    int32_t result = 0;
    if (theData->flarePixelBuffer.bufferBase == nullptr)
        return result;

    if (theDepth == 48)
        PaintFlare48(theControl, theData, statusFlag, &result);
    else if (theDepth == 32)
        PaintFlare32(theControl, theData, statusFlag, &result);
    else
        SketchFlare(theControl, theData, statusFlag, &result);
    return result;
}

void PaintFlare48(ControlDataRec* theControl, PluginDataRec* theData, bool statusFlag, int32_t* result)
{
    PaintFlareRows(theControl, theData, statusFlag, result, &kRings48, PaintStreaks48);
}

void PaintFlare32(ControlDataRec* theControl, PluginDataRec* theData, bool statusFlag, int32_t* result)
{
    PaintFlareRows(theControl, theData, statusFlag, result, &kRings32, PaintStreaks32);
}
