/*
 * PaintPath.cpp - the choice between the painters' implementations.
 */
#include "PaintPath.h"

#include "RingPaint.h"

namespace {

int32_t forcedPath = kPaintPathBest;

}  // namespace

bool VectorPathAvailable(void)
{
    static const bool available = ProcessorHasAVX2();
    return available;
}

int32_t CurrentPaintPath(void)
{
    if (forcedPath == kPaintPathPlain || forcedPath == kPaintPathSpans)
        return forcedPath;
    return VectorPathAvailable() ? kPaintPathVector : kPaintPathSpans;
}

void SetPaintPath(int32_t thePath)
{
    forcedPath = thePath;
}
