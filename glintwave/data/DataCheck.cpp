/*
 * DataCheck.cpp - the validation and rebuild that every data-using command
 * runs first.
 *
 * The settings block is recognised, upgraded from versions 4 and 5, byte-
 * order fixed or replaced by defaults, and sized to its header plus one
 * RingControl per ring. The working block is sized in two passes: first as
 * large as the host will give ('FREE'), because the number of elements and
 * colours is known only once the table is read; then, after the layout,
 * shrunk to what was used ('ALOC').
 *
 * Blocks move on every 'ALOC': pointers into them are taken afresh after
 * each request, never kept across one.
 */
#include <climits>
#include <cstring>

#include "FlareModel.h"
#include "GlintwaveBlocks.h"
#include "GlintwaveData.h"
#include "PluginClient.h"

int32_t CheckData(bool setControlData, bool setPluginData)
{
    int32_t theResult = kPluginNoError;
    bool resetPluginData = setPluginData;
    CheckControlData(setControlData, &resetPluginData, &theResult);
    if (theResult == kPluginNoError)
        CheckPluginData(setPluginData, resetPluginData, &theResult);
    return theResult;
}

/* Recognises the block's settings and turns them into a version 6 header
   in theWork. False when the block holds nothing usable. */
static bool ReadControlBlock(ControlDataRec* theWork, bool* setControlData, bool* resetPluginData)
{
    const unsigned char* theBlock = (const unsigned char*)sTheControlData;
    const int32_t theSize = sTheControlDataSize;
    if (theBlock == nullptr || theSize < 8)
        return false;

    IFFType theType;
    int32_t theVersion;
    std::memcpy(&theType, theBlock, sizeof theType);
    std::memcpy(&theVersion, theBlock + 4, sizeof theVersion);
    if (theType != kFlareOwnerType && theType != kFlareOwnerTypeSwapped)
        return false;

    if (theVersion == 4 && theSize >= (int32_t)sizeof(ControlDataRec)) {
        UpdateControl4(theBlock, theWork);
        *setControlData = true;
        *resetPluginData = true;
    } else if (theVersion == 5 && theSize >= (int32_t)sizeof(OldControlDataRec)) {
        UpdateControl5(theBlock, theWork);
        *setControlData = true;
        *resetPluginData = true;
    } else if ((theVersion == kFlareVersion || theVersion == kFlareVersionSwapped) &&
               theSize >= (int32_t)sizeof(ControlDataRec)) {
        if (theVersion == kFlareVersionSwapped)
            FixControl((ControlDataRec*)sTheControlData);
        std::memcpy(theWork, sTheControlData, sizeof(ControlDataRec));
    } else {
        /* A byte-reversed version 4 or 5 reads 0x04000000 or 0x05000000 and
           lands here. */
        return false;
    }

    /* A ring count that no working data could ever hold, or a negative one,
       makes the record foreign: its block size could not even be computed. */
    return theWork->flareRingCount >= 0 && theWork->flareRingCount <= MaxRingCount();
}

void CheckControlData(bool setControlData, bool* resetPluginData, int32_t* theResult)
{
    ControlDataRec theWork;
    if (setControlData || !ReadControlBlock(&theWork, &setControlData, resetPluginData)) {
        DefaultControl(&theWork);
        /* The host forgets the channels of the old settings. */
        SendHostResetChannel(theResult);
        /* It is deliberately the control block's size that is tested, though
           the write goes to the working data; the write is made only where
           the working block holds the field. */
        if (sTheControlDataSize > (int32_t)sizeof(PluginDataRec) - 1 && sThePluginData != nullptr &&
            sThePluginDataSize >= (int32_t)sizeof(PluginDataRec))
            ((PluginDataRec*)sThePluginData)->flareDataSize = 0;
        setControlData = true;
        *resetPluginData = true;
    }

    /* Header plus one RingControl per ring; the count is bounded by
       MaxRingCount, so this cannot overflow. A block whose size rounds up to
       the wanted one but falls short of it (127 bytes for 128) is resized
       too: the header must fit. */
    const int64_t theTail = (int64_t)theWork.flareRingCount * (int64_t)sizeof(RingControl);
    const int32_t theWanted = (int32_t)((theTail + (int64_t)sizeof(ControlDataRec) + 7) & ~(int64_t)7);
    if (*theResult == kPluginNoError &&
        (theWanted != RoundUp8(sTheControlDataSize) || sTheControlDataSize < theWanted)) {
        sTheControlDataSize = theWanted;
        AllocateMemory(theResult);
        setControlData = true;
    }

    if (*theResult == kPluginNoError && setControlData) {
        /* A host that answered 0 but gave no room for the header. */
        ControlDataRec* theControl = TheControl();
        if (theControl == nullptr) {
            *theResult = kPluginMemoryError;
            return;
        }
        std::memcpy(theControl, &theWork, sizeof theWork);
        CopyFlareElements(theControl, TheData());
    }
}

/* The biggest size a block may have: the largest multiple of 8 that fits. */
static const int64_t kLargestBlock = INT32_MAX & ~7;

static int32_t BlockSizeFrom(int64_t theSize)
{
    theSize = RoundUp8(theSize);
    return (int32_t)(theSize < kLargestBlock ? theSize : kLargestBlock);
}

/* Asks the host for the new size of the working block. False when it
   failed, with the code in *theResult; a host that answered 0 but gave a
   block too small for the header gets 1. */
static bool ResizePluginData(int32_t theSize, int32_t* theResult)
{
    sThePluginDataSize = theSize;
    AllocateMemory(theResult);
    if (*theResult == kPluginNoError && TheData() == nullptr)
        *theResult = kPluginMemoryError;
    return *theResult == kPluginNoError;
}

void CheckPluginData(bool setPluginData, bool resetPluginData, int32_t* theResult)
{
    PluginDataRec theWork;
    std::memset(&theWork, 0, sizeof theWork);
    bool setPluginColors;

    const PluginDataRec* theBlock = TheData();
    if (!setPluginData && theBlock != nullptr && theBlock->flareElementSize > (int32_t)sizeof(PluginDataRec) - 1 &&
        theBlock->flareDataSize >= theBlock->flareElementSize) {
        std::memcpy(&theWork, theBlock, sizeof theWork);
        /* The host gave back a block of another size than the one settled
           on, or a header claims more than the block holds: re-read. */
        if (!resetPluginData)
            resetPluginData = RoundUp8(theWork.flareDataSize) != RoundUp8(sThePluginDataSize) ||
                              theWork.flareDataSize > sThePluginDataSize;
        setPluginColors = resetPluginData || theWork.flareReset != 0;
    } else {
        DefaultData(&theWork);
        resetPluginData = true;
        setPluginColors = true;
    }

    /* First pass: all the memory the host offers, unless the block is
       settled and nothing needs recomputing. */
    int32_t theSize;
    if (!resetPluginData && !setPluginColors && theWork.flareDataSize > (int32_t)sizeof(PluginDataRec)) {
        theSize = BlockSizeFrom(theWork.flareDataSize);
    } else {
        const int32_t theFree = GetFreeSize(theResult);
        if (*theResult == kPluginNoError && theFree < (int32_t)sizeof(PluginDataRec) + 1)
            *theResult = kPluginMemoryError;
        else if (*theResult == kPluginNoError)
            setPluginColors = true;
        theSize = BlockSizeFrom(theFree);
    }

    if (*theResult == kPluginNoError && theSize != RoundUp8(sThePluginDataSize)) {
        ResizePluginData(theSize, theResult);
        setPluginColors = true;
    }
    /* A host that now offers less than the loaded elements take has cut
       them off: they are read again into what there is. */
    if (*theResult == kPluginNoError && !resetPluginData && theWork.flareElementSize > sThePluginDataSize)
        resetPluginData = true;

    if (*theResult == kPluginNoError && resetPluginData) {
        OpenTheResource(theResult);
        if (*theResult == kPluginNoError) {
            PluginDataRec* theData = TheData();
            ControlDataRec* theControl = TheControl();
            if (theData == nullptr || theControl == nullptr) {
                *theResult = kPluginMemoryError;
                return;
            }
            std::memcpy(theData, &theWork, sizeof theWork);
            theData->flareElementSize = (int32_t)sizeof(PluginDataRec);
            theData->flareDataSize = theSize < sThePluginDataSize ? theSize : sThePluginDataSize;
            *theResult = ReadFlareElements(theControl, theData, resourceFile);
        }
    }

    if (*theResult == kPluginNoError && setPluginColors) {
        PluginDataRec* theData = TheData();
        ControlDataRec* theControl = TheControl();
        if (theData == nullptr || theControl == nullptr) {
            *theResult = kPluginMemoryError;
            return;
        }
        /* Never claim more room than the block has. */
        theData->flareDataSize = theSize < sThePluginDataSize ? theSize : sThePluginDataSize;
        theData->flareReset = 0;
        *theResult = CalcFlareInfo(theControl, theData);

        /* Second pass: give back what the layout did not use. */
        int32_t theUsed = theData->flareDataSize;
        if (theUsed < (int32_t)sizeof(PluginDataRec))
            theUsed = (int32_t)sizeof(PluginDataRec);
        theSize = BlockSizeFrom(theUsed);
        if (*theResult == kPluginNoError && theSize != RoundUp8(sThePluginDataSize))
            ResizePluginData(theSize, theResult);
    }
}
