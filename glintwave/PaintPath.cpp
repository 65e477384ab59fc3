/*
 * PaintPath.cpp - the choice between the painters' implementations.
 */
#include "PaintPath.h"

namespace {

int32_t forcedPath = kPaintPathBest;

}  // namespace

bool VectorPathAvailable(void)
{
    return false;
}

int32_t CurrentPaintPath(void)
{
    (void)forcedPath;
    return kPaintPathPlain;
}

void SetPaintPath(int32_t thePath)
{
    forcedPath = thePath;
}
