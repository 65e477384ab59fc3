/*
 * LifecycleCommands.cpp - the commands that manage the plug-in's life and a
 * frame's set-up: 'INIT', 'FINI', 'INFO', 'CHEK', 'DESC' and 'SETF'.
 */
#include <cmath>

#include "FlareModel.h"
#include "GlintwaveCommands.h"
#include "GlintwaveData.h"
#include "PluginClient.h"
#include "PluginUtils.h"

/* What 'INFO' tells the host. Mac OS Roman: 0xAA is the trade-mark sign. */
static const IFFType kPluginType = KV_FOURCC('F', 'L', 'A', 'R');
static const int32_t kPluginVersion = 6;
static const char kPluginName[] = "Korvane\xAA Glintwave";
static const char kPluginCopyright[] = "Copyright 2026 Glintwave developers";
static const char kPluginAuthor[] = "Glintwave developers|Lens flare light effect|Table driven flare styles";
static const char kPluginDescription[] =
    "This light effects plugin can simulate lens flares.  It is table driven and can "
    "create many different effects.";

/* One degree in radians. */
static const double kRadiansPerDegree = 0.017453292519943295;

static bool RecordHolds(int32_t theCommandRecSize, size_t theRecordSize)
{
    return theCommandRecSize >= (int32_t)theRecordSize;
}

int32_t DoInitialize(int32_t theCommandRecSize, void* /*theCommandRec*/)
{
    InitGlobals(true);
    if (!RecordHolds(theCommandRecSize, sizeof(PluginInitializeRec)) || sTheHostProc == nullptr)
        return kPluginIncompatible;
    return CheckData(false, true);
}

int32_t DoFinish(int32_t theCommandRecSize, void* /*theCommandRec*/)
{
    FinishUtils();
    if (!RecordHolds(theCommandRecSize, sizeof(PluginFinishRec)) || sTheHostProc == nullptr)
        return kPluginIncompatible;
    return kPluginNoError;
}

int32_t DoInformation(int32_t theCommandRecSize, void* theCommandRec)
{
    if (!RecordHolds(theCommandRecSize, sizeof(PluginInformationRec)))
        return kPluginIncompatible;
    PluginInformationRec* theInfo = (PluginInformationRec*)theCommandRec;
    theInfo->thePluginType = kPluginType;
    theInfo->thePluginVersion = kPluginVersion;
    CopyStr(theInfo->thePluginName, kPluginName);
    CopyStr(theInfo->thePluginCopyright, kPluginCopyright);
    CopyStr(theInfo->thePluginAuthor, kPluginAuthor);
    CopyStr(theInfo->thePluginDescription, kPluginDescription);
    theInfo->thePluginPermission = 0;
    return kPluginNoError;
}

int32_t DoCheck(int32_t theCommandRecSize, void* theCommandRec)
{
    if (!RecordHolds(theCommandRecSize, sizeof(PluginCheckRec)))
        return kPluginIncompatible;
    switch (((PluginCheckRec*)theCommandRec)->theCommand) {
    case kCmdCheck:
    case kCmdDescribe:
    case kCmdFinishChannel:
    case kCmdFinish:
    case kCmdFlareGenerate:
    case kCmdInitChannel:
    case kCmdInformation:
    case kCmdInitialize:
    case kCmdInterface:
    case kCmdLoadChannel:
    case kCmdFlareSetup:
    case kCmdUpdateChannel:
        return kPluginNoError;
    default:
        /* Deliberately 3, not the 2 that Main answers for the command itself. */
        return kPluginIncompatible;
    }
}

int32_t DoDescribe(int32_t theCommandRecSize, void* theCommandRec)
{
    if (!RecordHolds(theCommandRecSize, sizeof(PluginDescribeRec)))
        return kPluginIncompatible;
    PluginDescribeRec* theDescribe = (PluginDescribeRec*)theCommandRec;
    DescribePluginError(theDescribe->theResult, theDescribe->theDescription);
    return kPluginNoError;
}

/* Stores the frame and the light of one frame in the working data. */
static void StoreFrameSetup(const PluginFlareSetupRec* theSetup, ControlDataRec* theControl,
                            PluginDataRec* theData)
{
    theData->flareHostProc = sTheHostProc;
    theData->flareHostReference = sTheHostReference;
    theData->flareRect = theSetup->theFrameRect;
    theData->flareXScale = theSetup->theFrameXScale;
    theData->flareYScale = theSetup->theFrameYScale;
    theData->flareXCenter = theSetup->theFrameXCenter;
    theData->flareYCenter = theSetup->theFrameYCenter;

    /* The blur position starts equal to the light's position, so moving it
       by the shutter leaves it there: the light's blur position in the
       record is not used. Kept as it is. */
    theData->flareXPosition = theSetup->theLightFramePosition.x;
    theData->flareYPosition = theSetup->theLightFramePosition.y;
    theData->flareBlurXPosition = theData->flareXPosition;
    theData->flareBlurYPosition = theData->flareYPosition;
    theData->flareBlurXPosition = theData->flareXPosition +
        theSetup->theBlurShutter * (theData->flareBlurXPosition - theData->flareXPosition);
    theData->flareBlurYPosition = theData->flareYPosition +
        theSetup->theBlurShutter * (theData->flareBlurYPosition - theData->flareYPosition);

    theData->flareLightColor = theSetup->theLightColor;

    const uint32_t theFlags = theControl->flareFlags;
    if (theFlags & FLARE_FLAG(kFlagNoLightIntensity))
        theData->flareLightIntensity = 1.0;
    else
        theData->flareLightIntensity = theSetup->theLightIntensity;

    if (theFlags & FLARE_FLAG(kFlagNoLightRotation))
        theData->flareLightRotation = 0.0;
    else
        theData->flareLightRotation =
            std::atan2(theSetup->theLightMatrix.m01, theSetup->theLightMatrix.m11) / kRadiansPerDegree;

    /* A zero flare scale gives an infinite or undefined size; it stays a
       double, and whoever turns it into pixels saturates. */
    if (theFlags & FLARE_FLAG(kFlagNoLightSize))
        theData->flareLightSize = 0.0;
    else
        theData->flareLightSize = theSetup->theLightFrameRadius / CalcFlareScale(theControl, theData);

    theData->flarePixelBuffer.bufferBase = nullptr;
    theData->flarePixelBuffer.bufferRowBytes = (int32_t)(theSetup->theFrameRect.width * 4u);
    theData->flarePixelBuffer.bufferRect = theSetup->theFrameRect;
}

int32_t DoSetup(int32_t theCommandRecSize, void* theCommandRec)
{
    if (!RecordHolds(theCommandRecSize, sizeof(PluginFlareSetupRec)) || sTheHostProc == nullptr)
        return kPluginIncompatible;

    int32_t theResult = CheckData(false, false);
    if (theResult != kPluginNoError)
        return theResult;

    /* The check may have moved the blocks: take them afresh. */
    ControlDataRec* theControl = TheControl();
    PluginDataRec* theData = TheData();
    if (theControl == nullptr || theData == nullptr)
        return kPluginMemoryError;

    StoreFrameSetup((const PluginFlareSetupRec*)theCommandRec, theControl, theData);

    /* Colours and layout depend on the light. */
    ResetFlareColors();
    return CheckData(false, false);
}
