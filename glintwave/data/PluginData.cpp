/*
 * PluginData.cpp - the working data record: defaults, the marks that make
 * the next data check recompute colours or re-read elements, and the
 * bounds of both blocks.
 */
#include <climits>

#include "GlintwaveBlocks.h"
#include "GlintwaveData.h"
#include "PluginClient.h"

ControlDataRec* TheControl(void)
{
    if (sTheControlData == nullptr || sTheControlDataSize < (int32_t)sizeof(ControlDataRec))
        return nullptr;
    return (ControlDataRec*)sTheControlData;
}

PluginDataRec* TheData(void)
{
    if (sThePluginData == nullptr || sThePluginDataSize < (int32_t)sizeof(PluginDataRec))
        return nullptr;
    return (PluginDataRec*)sThePluginData;
}

void DefaultData(PluginDataRec* theData)
{
    theData->theInfo = nullptr;
    /* theStatusRec is left as it is. */
    theData->flarePixelBuffer.bufferBase = nullptr;
    theData->flarePixelBuffer.bufferRowBytes = 0;
    theData->flarePixelBuffer.bufferRect = L_Rect{0, 0, 0, 0, 0, 0};
    theData->flarePixelBuffer.bufferDepth = 0;
    theData->flarePixelBuffer.bufferIndex = 0;
    theData->flareXScale = 1.0;
    theData->flareYScale = 1.0;
    theData->flareXCenter = 0.0;
    theData->flareYCenter = 0.0;
    theData->flareXPosition = 0.0;
    theData->flareYPosition = 0.0;
    theData->flareBlurXPosition = 0.0;
    theData->flareBlurYPosition = 0.0;
    theData->flareLightIntensity = 1.0;
    theData->flareLightRotation = 0.0;
    theData->flareLightSize = 0.0;
    theData->flareRect = L_Rect{0, 0, 0, 0, 0, 0};
    theData->flareHostProc = sTheHostProc;
    theData->flareHostReference = sTheHostReference;
    theData->flareLightColor.colorValue = 0xFFFFFFFFu;
    theData->flareLabelChannel = nullptr;
    theData->flareAspectRatioChannel = nullptr;
    theData->flareRotationChannel = nullptr;
    theData->flareRingScaleChannel = nullptr;
    theData->flareRingIntensityChannel = nullptr;
    theData->flareRingContrastChannel = nullptr;
    theData->flareOriginGlowColorChannel = nullptr;
    theData->flareHaloColorChannel = nullptr;
    theData->flareOuterGlowColorChannel = nullptr;
    theData->flareRingColorChannel = nullptr;
    theData->flareStreakScaleChannel = nullptr;
    theData->flareStreakIntensityChannel = nullptr;
    theData->flareStreakContrastChannel = nullptr;
    theData->flareStreakColorChannel = nullptr;
    theData->flareEndChannel = nullptr;
    theData->flareRingFirst = 0;
    theData->flareStreakFirst = 0;
    theData->flareElementSize = (int32_t)sizeof(PluginDataRec);
    theData->flareDataSize = (int32_t)sizeof(PluginDataRec);
    theData->flareReset = 1;
}

void ResetFlareColors(void)
{
    if (PluginDataRec* theData = TheData())
        theData->flareReset = 1;
}

void ResetFlareElements(void)
{
    if (ControlDataRec* theControl = TheControl()) {
        theControl->flareRingCount = 0;
        theControl->flareStreakCount = 0;
    }
    if (PluginDataRec* theData = TheData()) {
        theData->flareReset = 1;
        theData->flareElementSize = (int32_t)sizeof(PluginDataRec);
        theData->flareDataSize = (int32_t)sizeof(PluginDataRec);
    }
}

int32_t ControlBlockSize(const ControlDataRec* theControl)
{
    if (theControl == nullptr)
        return 0;
    if (theControl == sTheControlData)
        return sTheControlDataSize > 0 ? sTheControlDataSize : 0;
    return (int32_t)sizeof(ControlDataRec);
}

int32_t PluginBlockSize(const PluginDataRec* theData)
{
    if (theData == nullptr)
        return 0;
    if (theData == sThePluginData)
        return sThePluginDataSize > 0 ? sThePluginDataSize : 0;
    return theData->flareDataSize > 0 ? theData->flareDataSize : 0;
}

static void* ElementAt(PluginDataRec* theData, int32_t theOffset, int32_t theLimit, size_t theSize)
{
    const int64_t theEnd = (int64_t)theOffset + (int64_t)theSize;
    if (theOffset < (int32_t)sizeof(PluginDataRec) || (theOffset & 1) != 0 || theEnd > theLimit)
        return nullptr;
    return (char*)theData + theOffset;
}

RingElement* RingWithin(PluginDataRec* theData, int32_t theOffset, int32_t theLimit)
{
    return (RingElement*)ElementAt(theData, theOffset, theLimit, sizeof(RingElement));
}

StreakElement* StreakWithin(PluginDataRec* theData, int32_t theOffset, int32_t theLimit)
{
    return (StreakElement*)ElementAt(theData, theOffset, theLimit, sizeof(StreakElement));
}

int32_t MaxRingCount(void)
{
    return (int32_t)((INT32_MAX - sizeof(PluginDataRec)) / sizeof(RingElement));
}

int64_t RoundUp8(int64_t theSize)
{
    return (theSize + 7) & ~(int64_t)7;
}
