/*
 * FlareResource.cpp - the flare table file Glintwave.rsc: opening on demand,
 * closing after every command, and turning its big-endian records into
 * host order.
 *
 * The byte-order fixes reverse fields in place, unconditionally: the stored
 * form is big-endian and the host little-endian. The host hands out a fresh
 * copy of a resource on every get, so a record is never converted twice.
 */
#include <cstddef>

#include "GlintwaveData.h"
#include "KVToolbox.h"
#include "PluginUtils.h"
#include "RoundUtils.h"

static const char kFlareTableFile[] = "Glintwave.rsc";

/* A missing or unreadable table is reported as 1 ("could not allocate
   needed memory"), not as 6: that is the code hosts have always seen for
   it. The next command tries to open the file again. */
void OpenTheResource(int32_t* theResult)
{
    if (*theResult != kPluginNoError || resourceFile != nullptr)
        return;
    resourceFile = OpenResourceFile(kFlareTableFile);
    *theResult = resourceFile != nullptr ? kPluginNoError : kPluginMemoryError;
}

void CloseTheResource(void)
{
    if (resourceFile == nullptr)
        return;
    KV_CloseResourceFile(resourceFile);
    resourceFile = nullptr;
}

static void ReverseAt(void* theRecord, size_t theOffset, uint32_t theWidth)
{
    ReverseField((unsigned char*)theRecord + theOffset, theWidth);
}

void FixFlareInfo(FlareInfoRec* theInfo)
{
    ReverseAt(theInfo, offsetof(FlareInfoRec, flareElementCount), 4);
}

void FixFlareRes(FlareResRec* theRes)
{
    ReverseAt(theRes, offsetof(FlareResRec, flareElementType), 4);
    ReverseAt(theRes, offsetof(FlareResRec, flareFirstID), 2);
    ReverseAt(theRes, offsetof(FlareResRec, flareLastID), 2);
}

/* The name is left alone; the seven 4-byte fields from the type on are
   reversed. */
void FixRing(RingRes* theRing)
{
    for (size_t theOffset = offsetof(RingRes, ringResType); theOffset < sizeof(RingRes); theOffset += 4)
        ReverseAt(theRing, theOffset, 4);
}

/* The nine 4-byte fields from the type on. */
void FixStreak(StreakRes* theStreak)
{
    for (size_t theOffset = offsetof(StreakRes, streakResType); theOffset < sizeof(StreakRes); theOffset += 4)
        ReverseAt(theStreak, theOffset, 4);
}

/* The stored radius is a 32-bit integer, then four 16-bit components. */
void FixElementColor(ElementColor* theColor)
{
    ReverseAt(theColor, 0, 4);
    for (size_t theOffset = 4; theOffset < sizeof(ElementColor); theOffset += 2)
        ReverseAt(theColor, theOffset, 2);
}

void FixFlareRingControl(RingControl* theControl)
{
    ReverseAt(theControl, offsetof(RingControl, ringScale), 8);
    ReverseAt(theControl, offsetof(RingControl, ringIntensity), 8);
    for (size_t i = 0; i < 4; i++)
        ReverseAt(theControl, offsetof(RingControl, ringColor) + 2 * i, 2);
}
