/*
 * ElementLoading.cpp - turns the chosen flare style's records into a chain
 * of ring elements and a chain of streak elements in the working data, and
 * writes the rings' overrides back into the settings.
 *
 * Layout of the element area (from sizeof(PluginDataRec) on): each element
 * followed directly by its colour stops, padded to a multiple of 8 bytes, in
 * reading order. Elements are linked by byte offsets from the start of the
 * block, 0 meaning none, so the host may move the block between calls.
 *
 * The table file is untrusted: counts, sizes, units and ids may lie. Every
 * stop count is cut to what the resource holds, every size is computed in
 * 64 bits, and nothing is written outside the element area.
 */
#include <cmath>
#include <cstring>

#include "ElementChain.h"
#include "ElementLoading.h"
#include "FlareModel.h"
#include "GlintwaveBlocks.h"
#include "GlintwaveData.h"
#include "KVToolbox.h"
#include "SafeConvert.h"

/* Full intensity of a 16-bit colour component. */
static const int16_t kFullComponent = (int16_t)-1; /* 0xFFFF */

/* Stored colours run 0..65535; loaded ones 0..16320, 1/64 steps of an
   8-bit level: 65535 x 64 / 257 = 16320. */
static uint16_t LoadedLevel(uint16_t theStoredLevel)
{
    return (uint16_t)(((int32_t)theStoredLevel * 64) / 257);
}

/* Bytes of an element's stop block: 12 per stop, padded to 8. */
static int64_t StopBlockSize(int32_t theStops)
{
    return ((int64_t)theStops * kStoredColorSize + 7) & ~(int64_t)7;
}

/* The stops that are used: the declared count, cut to what the resource's
   size holds; a negative declared count means none. */
static int32_t UsedStops(int32_t theDeclared, int32_t theResourceSize, int32_t theHeaderSize)
{
    const int32_t theFit = (theResourceSize - theHeaderSize) / kStoredColorSize;
    int32_t theStops = theDeclared < theFit ? theDeclared : theFit;
    return theStops > 0 ? theStops : 0;
}

/* Copies the stops from the resource (in place converted to host order) to
   theDest in resource order: the integer radius becomes a float fraction of
   the element's outer size, the colour channels 0..16320. Alpha keeps its
   range. */
static void CopyStops(unsigned char* theStored, ElementColor* theDest, int32_t theStops, int32_t theOutside)
{
    for (int32_t i = 0; i < theStops; i++) {
        ElementColor* theStoredColor = (ElementColor*)(theStored + (size_t)i * kStoredColorSize);
        FixElementColor(theStoredColor);
        std::memcpy(&theDest[i], theStoredColor, sizeof(ElementColor));

        int32_t theRadius;
        std::memcpy(&theRadius, theStoredColor, sizeof theRadius);
        theDest[i].rgb.radius = (float)theRadius / (float)theOutside;
        theDest[i].rgb.red = LoadedLevel(theDest[i].rgb.red);
        theDest[i].rgb.green = LoadedLevel(theDest[i].rgb.green);
        theDest[i].rgb.blue = LoadedLevel(theDest[i].rgb.blue);
    }
}

/* Pascal string copy into a 31-character name; a stored length byte beyond
   31 is cut to 31. */
static void CopyElementName(unsigned char* theName, const unsigned char* theStoredName)
{
    const unsigned char theLength = theStoredName[0] < 31 ? theStoredName[0] : 31;
    theName[0] = theLength;
    std::memcpy(theName + 1, theStoredName + 1, theLength);
}

/* The ring's saved override: the RingControl of index theIndex behind the
   control header, byte-reversed from its stored big-endian form. It is
   converted in a copy so that the tail the host keeps stays big-endian.
   False when the control block holds no record for the ring. */
static bool ReadRingOverride(const ControlDataRec* theControl, int32_t theIndex, RingControl* theOverride)
{
    if (theIndex < 0 || theIndex >= theControl->flareRingCount)
        return false;
    const int64_t theOffset = (int64_t)sizeof(ControlDataRec) + (int64_t)theIndex * (int64_t)sizeof(RingControl);
    if (theOffset + (int64_t)sizeof(RingControl) > ControlBlockSize(theControl))
        return false;
    std::memcpy(theOverride, (const unsigned char*)theControl + theOffset, sizeof(RingControl));
    FixFlareRingControl(theOverride);
    return true;
}

static void* GetElementResource(KV_ResourceFile* iResourceFile, IFFType theType, int16_t theID,
                                int32_t theHeaderSize, int32_t* theResourceSize, int32_t* result)
{
    *theResourceSize = 0;
    void* theResource = KV_GetResource(iResourceFile, theType, theID, theResourceSize);
    if (theResource == nullptr) {
        *result = kPluginResourceMissing;
        return nullptr;
    }
    if (*theResourceSize < theHeaderSize) {
        *result = kPluginResourceMissing;
        KV_ReleaseResource(theResource);
        return nullptr;
    }
    return theResource;
}

void ReadRingElement(ControlDataRec* theControl, PluginDataRec* theData, KV_ResourceFile* iResourceFile,
                     int16_t theRingID, RingElement** theRingElement, int32_t* theSize, int32_t* theBase,
                     int32_t* theCount, int32_t* result)
{
    if (*result != kPluginNoError)
        return;
    int32_t theResourceSize;
    void* theResource =
        GetElementResource(iResourceFile, kRingResType, theRingID, kRingResHeaderSize, &theResourceSize, result);
    if (theResource == nullptr)
        return;

    const int64_t theLimit = (int64_t)*theBase + *theSize;
    RingElement* theRing = RingWithin(theData, *theBase, (int32_t)(theLimit < INT32_MAX ? theLimit : INT32_MAX));
    if (*theSize < (int32_t)sizeof(RingElement) || theRing == nullptr) {
        *result = kPluginMemoryError;
        KV_ReleaseResource(theResource);
        return;
    }

    RingRes* theRes = (RingRes*)theResource;
    FixRing(theRes);

    if (*theRingElement != nullptr)
        (*theRingElement)->ringNext = *theBase;
    else
        theData->flareRingFirst = *theBase;
    *theCount += 1;
    *theRingElement = theRing;
    *theBase += (int32_t)sizeof(RingElement);
    *theSize -= (int32_t)sizeof(RingElement);

    /* Units 0 give an infinite factor: the element's sizes become infinite
       or undefined, which the geometry does not draw. */
    const double theFactor = 1.0 / theRes->ringResUnits;

    theRing->ringNext = 0;
    CopyElementName(theRing->ringName, theRes->ringResName);
    theRing->ringType = theRes->ringResType;
    theRing->ringMode = theRes->ringResMode;
    theRing->ringPosition = NarrowToFloat(theRes->ringResOffset * theFactor);
    theRing->ringInner = NarrowToFloat(theRes->ringResInside * theFactor);
    theRing->ringOuter = NarrowToFloat(theRes->ringResOutside * theFactor);

    RingControl theOverride;
    if (ReadRingOverride(theControl, *theCount - 1, &theOverride)) {
        theRing->ringScale = NarrowToFloat(theOverride.ringScale);
        theRing->ringIntensity = NarrowToFloat(theOverride.ringIntensity);
        theRing->ringColor = theOverride.ringColor;
    } else {
        theRing->ringScale = 1.0f;
        theRing->ringIntensity = 1.0f;
        theRing->ringColor = ARGB_Color{kFullComponent, kFullComponent, kFullComponent, kFullComponent};
    }

    const int32_t theStops = UsedStops(theRes->ringResColors, theResourceSize, kRingResHeaderSize);
    theRing->ringElementColors = theStops;
    theRing->ringFlareColors = 0;
    theRing->ringFlareColorBase = 0;
    theRing->ringLabelChannel = nullptr;
    theRing->ringVisibleChannel = nullptr;
    theRing->ringScaleChannel = nullptr;
    theRing->ringIntensityChannel = nullptr;
    theRing->ringColorChannel = nullptr;
    theRing->ringEndChannel = nullptr;

    /* Too little room for the stops: the element stays linked and counted. */
    const int64_t theBlock = StopBlockSize(theStops);
    if (*theSize < theBlock) {
        *result = kPluginMemoryError;
    } else {
        ElementColor* theColors = (ElementColor*)((char*)theData + *theBase);
        *theBase += (int32_t)theBlock;
        *theSize -= (int32_t)theBlock;
        CopyStops((unsigned char*)theResource + kRingResHeaderSize, theColors, theStops, theRes->ringResOutside);
        SortColors(theStops, theColors);
    }
    KV_ReleaseResource(theResource);
}

/* The unit direction of a streak. The squared length is summed in 32-bit
   integers (wrapping as the machine does); a sum that is not positive
   leaves the streak pointing down the y axis. */
static void StreakDirection(int32_t theDirX, int32_t theDirY, float* theX, float* theY)
{
    const uint32_t theSquares = (uint32_t)theDirX * (uint32_t)theDirX + (uint32_t)theDirY * (uint32_t)theDirY;
    const double theLength = std::sqrt((double)(int32_t)theSquares);
    if (theLength > 0) {
        *theX = NarrowToFloat(theDirX / theLength);
        *theY = NarrowToFloat(theDirY / theLength);
    } else {
        *theX = 0.0f;
        *theY = 1.0f;
    }
}

void ReadStreakElement(ControlDataRec* /*theControl*/, PluginDataRec* theData, KV_ResourceFile* iResourceFile,
                       int16_t theStreakID, StreakElement** theStreakElement, int32_t* theSize,
                       int32_t* theBase, int32_t* theCount, int32_t* result)
{
    if (*result != kPluginNoError)
        return;
    int32_t theResourceSize;
    void* theResource = GetElementResource(iResourceFile, kStreakResType, theStreakID, kStreakResHeaderSize,
                                           &theResourceSize, result);
    if (theResource == nullptr)
        return;

    const int64_t theLimit = (int64_t)*theBase + *theSize;
    StreakElement* theStreak = StreakWithin(theData, *theBase, (int32_t)(theLimit < INT32_MAX ? theLimit : INT32_MAX));
    if (*theSize < (int32_t)sizeof(StreakElement) || theStreak == nullptr) {
        *result = kPluginMemoryError;
        KV_ReleaseResource(theResource);
        return;
    }

    StreakRes* theRes = (StreakRes*)theResource;
    FixStreak(theRes);

    if (*theStreakElement != nullptr)
        (*theStreakElement)->streakNext = *theBase;
    else
        theData->flareStreakFirst = *theBase;
    *theCount += 1;
    *theStreakElement = theStreak;
    *theBase += (int32_t)sizeof(StreakElement);
    *theSize -= (int32_t)sizeof(StreakElement);

    const double theFactor = 1.0 / theRes->streakResUnits;

    /* Streaks keep no name and no type, and have no saved overrides. */
    theStreak->streakNext = 0;
    theStreak->streakMode = theRes->streakResMode;
    theStreak->streakPosition = NarrowToFloat(theRes->streakResOffset * theFactor);
    theStreak->streakInner = NarrowToFloat(theRes->streakResInside * theFactor);
    theStreak->streakOuter = NarrowToFloat(theRes->streakResOutside * theFactor);
    StreakDirection(theRes->streakResDirX, theRes->streakResDirY, &theStreak->streakX, &theStreak->streakY);
    theStreak->streakScale = 1.0f;
    theStreak->streakIntensity = 1.0f;
    /* The alpha is left as the memory held it: nothing reads it. */
    theStreak->streakColor.red = kFullComponent;
    theStreak->streakColor.green = kFullComponent;
    theStreak->streakColor.blue = kFullComponent;

    const int32_t theStops = UsedStops(theRes->streakResColors, theResourceSize, kStreakResHeaderSize);
    theStreak->streakElementColors = theStops;
    theStreak->streakFlareColors = 0;
    theStreak->streakFlareColorBase = 0;

    const int64_t theBlock = StopBlockSize(theStops);
    if (*theSize < theBlock) {
        *result = kPluginMemoryError;
    } else {
        ElementColor* theColors = (ElementColor*)((char*)theData + *theBase);
        *theBase += (int32_t)theBlock;
        *theSize -= (int32_t)theBlock;
        CopyStops((unsigned char*)theResource + kStreakResHeaderSize, theColors, theStops,
                  theRes->streakResOutside);
        SortColors(theStops, theColors);
    }
    KV_ReleaseResource(theResource);
}

/* Resource id of a style's table: 1000 + the style number. A number whose
   id cannot exist reads as a missing table. */
static bool FlareTableID(int32_t theLens, int* theID)
{
    const int64_t theWideID = (int64_t)kFlareResBaseID + theLens;
    if (theWideID < INT16_MIN || theWideID > INT16_MAX)
        return false;
    *theID = (int)theWideID;
    return true;
}

/* Reads every group of the style's table, stopping at the first error. */
static int32_t ReadFlareTable(ControlDataRec* theControl, PluginDataRec* theData, KV_ResourceFile* iResourceFile,
                              int32_t* theBase, int32_t* theSize, int32_t* theRingCount, int32_t* theStreakCount)
{
    int theID;
    if (!FlareTableID(theControl->flareLens, &theID))
        return kPluginResourceMissing;
    int32_t theResourceSize = 0;
    void* theResource = KV_GetResource(iResourceFile, kFlareResType, theID, &theResourceSize);
    if (theResource == nullptr)
        return kPluginResourceMissing;

    int32_t result = kPluginNoError;
    if (theResourceSize < (int32_t)(sizeof(int32_t) + sizeof(FlareResRec))) {
        result = kPluginResourceMissing;
    } else {
        FlareInfoRec* theInfo = (FlareInfoRec*)theResource;
        FixFlareInfo(theInfo);
        const uint32_t theCount = (uint32_t)theInfo->flareElementCount;
        /* A negative count reads as a huge one and is refused with the rest. */
        if ((uint64_t)(uint32_t)theResourceSize < 4 + 8 * (uint64_t)theCount)
            result = kPluginResourceMissing;

        RingElement* theLastRing = nullptr;
        StreakElement* theLastStreak = nullptr;
        for (uint32_t i = 0; i < theCount && result == kPluginNoError; i++) {
            FlareResRec theGroup;
            std::memcpy(&theGroup, (unsigned char*)theResource + 4 + (size_t)i * sizeof(FlareResRec),
                        sizeof theGroup);
            FixFlareRes(&theGroup);
            for (int32_t theElementID = theGroup.flareFirstID;
                 theElementID <= theGroup.flareLastID && result == kPluginNoError; theElementID++) {
                if (theGroup.flareElementType == kRingResType)
                    ReadRingElement(theControl, theData, iResourceFile, (int16_t)theElementID, &theLastRing,
                                    theSize, theBase, theRingCount, &result);
                else if (theGroup.flareElementType == kStreakResType)
                    ReadStreakElement(theControl, theData, iResourceFile, (int16_t)theElementID,
                                      &theLastStreak, theSize, theBase, theStreakCount, &result);
                else
                    break; /* neither kind: the group is skipped */
            }
        }
    }
    KV_ReleaseResource(theResource);
    return result;
}

int32_t ReadFlareElements(ControlDataRec* theControl, PluginDataRec* theData, KV_ResourceFile* iResourceFile)
{
    theData->flareRingFirst = 0;
    theData->flareStreakFirst = 0;
    int32_t theRingCount = 0;
    int32_t theStreakCount = 0;
    int32_t result = kPluginNoError;

    /* The area ends at flareDataSize, and never beyond the block itself. */
    int32_t theBase = theData->flareElementSize;
    int32_t theLimit = theData->flareDataSize;
    const int32_t theBlockSize = PluginBlockSize(theData);
    if (theLimit > theBlockSize)
        theLimit = theBlockSize;
    int64_t theFree = (int64_t)theLimit - theBase;
    if (theBase < (int32_t)sizeof(PluginDataRec))
        theFree = 0;

    if (theFree > 0) {
        int32_t theSize = (int32_t)theFree;
        result = ReadFlareTable(theControl, theData, iResourceFile, &theBase, &theSize, &theRingCount,
                                &theStreakCount);
    }

    theControl->flareRingCount = theRingCount;
    theControl->flareStreakCount = theStreakCount;
    theData->flareElementSize = theBase;
    theData->flareDataSize = theBase;
    return result;
}

/* The override a ring without a loaded element gets: untinted, factors 1. */
static RingControl NeutralOverride(void)
{
    RingControl theOverride;
    theOverride.ringScale = 1.0;
    theOverride.ringIntensity = 1.0;
    theOverride.ringColor = ARGB_Color{kFullComponent, kFullComponent, kFullComponent, kFullComponent};
    return theOverride;
}

/* Writes one RingControl per ring into the control block's tail, big-endian.
   Only records that lie inside the block are written. When the ring chain
   ends early (or the working data holds none), the remaining records get the
   neutral override, so the tail never keeps bytes that are not an
   override. */
void CopyFlareElements(ControlDataRec* theControl, PluginDataRec* theData)
{
    const int64_t theRoom = ((int64_t)ControlBlockSize(theControl) - (int64_t)sizeof(ControlDataRec)) /
                            (int64_t)sizeof(RingControl);
    int64_t theCount = theControl->flareRingCount;
    if (theCount > theRoom)
        theCount = theRoom;

    /* The working data may not have been checked yet: the walk stays inside
       the block as allocated, whatever its header says is in use. */
    const int32_t theLimit = theData != nullptr ? PluginBlockSize(theData) : 0;
    ChainWalk theWalk = theLimit >= (int32_t)sizeof(PluginDataRec)
                            ? ChainFrom(theData->flareRingFirst, (int32_t)theCount, theLimit)
                            : ChainFrom(0, 0, 0);

    unsigned char* theTail = (unsigned char*)theControl + sizeof(ControlDataRec);
    for (int64_t i = 0; i < theCount; i++) {
        RingControl theOverride = NeutralOverride();
        if (const RingElement* theRing = NextRing(theData, &theWalk)) {
            theOverride.ringScale = theRing->ringScale;
            theOverride.ringIntensity = theRing->ringIntensity;
            if (theRing->ringMode & kElementOffMode)
                theOverride.ringColor = ARGB_Color{0, 0, 0, 0};
            else
                theOverride.ringColor = theRing->ringColor;
        }
        FixFlareRingControl(&theOverride);
        std::memcpy(theTail + i * (int64_t)sizeof(RingControl), &theOverride, sizeof theOverride);
    }
}
