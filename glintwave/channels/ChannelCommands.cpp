/*
 * ChannelCommands.cpp - the animation channels: 'ICHN', 'UCHN', 'LCHN',
 * 'FCHN' and the three host requests behind them (see Channels.h).
 *
 * Channel references live in the host's plug-in data block, which a host
 * request may in principle move: the block is taken afresh through
 * TheData() after every request, and rings are held by their offsets.
 */
#include <cstddef>
#include <cstring>

#include "Channels.h"
#include "ElementChain.h"
#include "FlareAccess.h"
#include "GlintwaveCommands.h"
#include "GlintwaveData.h"
#include "PluginClient.h"
#include "PluginUtils.h"

namespace {

/* One global channel: its ID, type and name, where its value lies in the
   control header (-1: none) and where its reference lies in the plug-in
   data header. */
struct GlobalChannel {
    int32_t id;
    IFFType type;
    const char* name;
    ptrdiff_t valueOffset;
    size_t referenceOffset;
};

#define COLOR_AT(field) ((ptrdiff_t)(offsetof(ControlDataRec, field) + offsetof(ARGB_Color, red)))
#define REFERENCE(field) offsetof(PluginDataRec, field)

const GlobalChannel kGlobalChannels[] = {
    {1, kChannelLabel, "Glintwave", -1, REFERENCE(flareLabelChannel)},
    {2, kChannelReal, "Aspect Ratio", offsetof(ControlDataRec, flareAspectRatio), REFERENCE(flareAspectRatioChannel)},
    {3, kChannelReal, "Rotation", offsetof(ControlDataRec, flareRotation), REFERENCE(flareRotationChannel)},
    {4, kChannelReal, "Ring Scale", offsetof(ControlDataRec, flareRingScale), REFERENCE(flareRingScaleChannel)},
    {5, kChannelReal, "Ring Intensity", offsetof(ControlDataRec, flareRingIntensity),
     REFERENCE(flareRingIntensityChannel)},
    {6, kChannelReal, "Ring Contrast", offsetof(ControlDataRec, flareRingContrast),
     REFERENCE(flareRingContrastChannel)},
    {7, kChannelRGB, "Origin Glow Color", COLOR_AT(flareOriginGlowColor), REFERENCE(flareOriginGlowColorChannel)},
    {8, kChannelRGB, "Halo Color", COLOR_AT(flareHaloColor), REFERENCE(flareHaloColorChannel)},
    {9, kChannelRGB, "Outer Glow Color", COLOR_AT(flareOuterGlowColor), REFERENCE(flareOuterGlowColorChannel)},
    {10, kChannelRGB, "Lens Reflection Color", COLOR_AT(flareRingColor), REFERENCE(flareRingColorChannel)},
    {11, kChannelReal, "Streak Scale", offsetof(ControlDataRec, flareStreakScale), REFERENCE(flareStreakScaleChannel)},
    {12, kChannelReal, "Streak Intensity", offsetof(ControlDataRec, flareStreakIntensity),
     REFERENCE(flareStreakIntensityChannel)},
    {13, kChannelReal, "Streak Contrast", offsetof(ControlDataRec, flareStreakContrast),
     REFERENCE(flareStreakContrastChannel)},
    {14, kChannelRGB, "Streak Color", COLOR_AT(flareStreakColor), REFERENCE(flareStreakColorChannel)},
    {15, kChannelLabelEnd, "", -1, REFERENCE(flareEndChannel)},
};

/* The ring channels after the heading, by their place in the group. */
enum { kRingLabel = 1, kRingVisible = 2, kRingScale = 3, kRingIntensity = 4, kRingColor = 5, kRingEnd = 6 };

const size_t kRingReferenceOffsets[kChannelsPerRing] = {
    offsetof(RingElement, ringLabelChannel),     offsetof(RingElement, ringVisibleChannel),
    offsetof(RingElement, ringScaleChannel),     offsetof(RingElement, ringIntensityChannel),
    offsetof(RingElement, ringColorChannel),     offsetof(RingElement, ringEndChannel),
};

/* References sit at 2-byte aligned offsets inside packed records: they are
   read and written by copying, never through a pointer to the field. */
KVChannelRef LoadReference(const void* theRecord, size_t theOffset)
{
    KVChannelRef theReference;
    std::memcpy(&theReference, (const char*)theRecord + theOffset, sizeof theReference);
    return theReference;
}

void StoreReference(void* theRecord, size_t theOffset, KVChannelRef theReference)
{
    std::memcpy((char*)theRecord + theOffset, &theReference, sizeof theReference);
}

template <typename Record>
int32_t AskHost(IFFType theSelector, Record* theRecord)
{
    if (sTheHostProc == nullptr)
        return kPluginIncompatible;
    return sTheHostProc(theSelector, (int32_t)sizeof(Record), theRecord);
}

int32_t RingID(int32_t theRingIndex, int32_t thePlace)
{
    return kChannelGlobalEnd + kChannelsPerRing * theRingIndex + thePlace;
}

/* The walk over the ring chain. The host requests made for each ring may
   move the block, so every step is taken in the block where it is now, and
   a ring is found again by its offset. */
ChainWalk StartRingWalk(void)
{
    const ControlDataRec* theControl = TheControl();
    const PluginDataRec* theData = TheData();
    if (theControl == nullptr || theData == nullptr)
        return ChainFrom(0, 0, 0);
    return RingChain(theControl, theData);
}

RingElement* NextRingOfWalk(ChainWalk* theWalk)
{
    PluginDataRec* theData = TheData();
    return theData != nullptr ? NextRing(theData, theWalk) : nullptr;
}

/* True when the control data holds elements to animate. */
bool HasElements(void)
{
    const ControlDataRec* theControl = TheControl();
    return theControl != nullptr && (theControl->flareRingCount >= 1 || theControl->flareStreakCount >= 1);
}

void* ControlField(ptrdiff_t theOffset)
{
    return (char*)TheControl() + theOffset;
}

int32_t ValueSize(IFFType theType)
{
    return theType == kChannelReal ? kChannelRealSize : kChannelRGBSize;
}

/* Shared opening of 'UCHN' and 'LCHN': record size, data check, elements.
   Answers -1 when the command goes on. */
int32_t OpenChannelCommand(int32_t theCommandRecSize, size_t theRecordSize)
{
    if (theCommandRecSize < (int32_t)theRecordSize)
        return kPluginIncompatible;
    const int32_t theResult = CheckData(false, false);
    if (theResult != kPluginNoError)
        return theResult;
    if (TheControl() == nullptr || TheData() == nullptr)
        return kPluginMemoryError;
    return HasElements() ? -1 : kPluginNoError;
}

/* Writes the settings of one frame into every value channel. */
void UpdateFrame(int32_t theFrame, int32_t* theResult)
{
    for (const GlobalChannel& theChannel : kGlobalChannels) {
        if (theChannel.valueOffset < 0)
            continue;
        SetChannel(LoadReference(TheData(), theChannel.referenceOffset), theChannel.id, theChannel.type, theFrame,
                   ControlField(theChannel.valueOffset), theResult);
    }

    ChainWalk theWalk = StartRingWalk();
    const RingElement* theRing;
    while (*theResult == kPluginNoError && (theRing = NextRingOfWalk(&theWalk)) != nullptr) {
        const int32_t i = theWalk.index;
        KVChannelRef theReferences[kChannelsPerRing];
        for (int32_t thePlace = 0; thePlace < kChannelsPerRing; thePlace++)
            theReferences[thePlace] = LoadReference(theRing, kRingReferenceOffsets[thePlace]);
        uint8_t theVisible = (theRing->ringMode & kElementOffMode) == 0 ? 1 : 0;
        double theScale = theRing->ringScale;
        double theIntensity = theRing->ringIntensity;
        RGB_Color theColor = {(uint16_t)theRing->ringColor.red, (uint16_t)theRing->ringColor.green,
                              (uint16_t)theRing->ringColor.blue};

        SetChannel(theReferences[kRingVisible - 1], RingID(i, kRingVisible), kChannelBoolean, theFrame, &theVisible,
                   theResult);
        SetChannel(theReferences[kRingScale - 1], RingID(i, kRingScale), kChannelReal, theFrame, &theScale,
                   theResult);
        SetChannel(theReferences[kRingIntensity - 1], RingID(i, kRingIntensity), kChannelReal, theFrame,
                   &theIntensity, theResult);
        SetChannel(theReferences[kRingColor - 1], RingID(i, kRingColor), kChannelRGB, theFrame, &theColor, theResult);
    }
}

/* Reads one ring's channels at theFrame into the ring at theOffset. */
void LoadRing(int32_t theIndex, int32_t theOffset, int32_t theFrame, int32_t* theResult)
{
    RingElement* theRing = RingAt(TheData(), theOffset);
    if (theRing == nullptr)
        return;
    const KVChannelRef theVisibleChannel = LoadReference(theRing, kRingReferenceOffsets[kRingVisible - 1]);
    const KVChannelRef theScaleChannel = LoadReference(theRing, kRingReferenceOffsets[kRingScale - 1]);
    const KVChannelRef theIntensityChannel = LoadReference(theRing, kRingReferenceOffsets[kRingIntensity - 1]);
    const KVChannelRef theColorChannel = LoadReference(theRing, kRingReferenceOffsets[kRingColor - 1]);

    uint8_t theVisible = (theRing->ringMode & kElementOffMode) == 0 ? 1 : 0;
    double theScale = theRing->ringScale;
    double theIntensity = theRing->ringIntensity;
    RGB_Color theColor = {(uint16_t)theRing->ringColor.red, (uint16_t)theRing->ringColor.green,
                          (uint16_t)theRing->ringColor.blue};

    /* Each value goes into the ring as soon as it has been read, as far as
       the reads succeed; the ring is found again after every request. */
    GetChannel(theVisibleChannel, RingID(theIndex, kRingVisible), kChannelBoolean, theFrame, &theVisible,
               kChannelBoolSize, theResult);
    if (*theResult != kPluginNoError || (theRing = RingAt(TheData(), theOffset)) == nullptr)
        return;
    uint32_t theMode = theRing->ringMode;
    SetFlag(&theMode, 31, theVisible == 0);
    theRing->ringMode = theMode;

    GetChannel(theScaleChannel, RingID(theIndex, kRingScale), kChannelReal, theFrame, &theScale, kChannelRealSize,
               theResult);
    if (*theResult != kPluginNoError || (theRing = RingAt(TheData(), theOffset)) == nullptr)
        return;
    theRing->ringScale = NarrowToFloat(theScale);

    GetChannel(theIntensityChannel, RingID(theIndex, kRingIntensity), kChannelReal, theFrame, &theIntensity,
               kChannelRealSize, theResult);
    if (*theResult != kPluginNoError || (theRing = RingAt(TheData(), theOffset)) == nullptr)
        return;
    theRing->ringIntensity = NarrowToFloat(theIntensity);

    GetChannel(theColorChannel, RingID(theIndex, kRingColor), kChannelRGB, theFrame, &theColor, kChannelRGBSize,
               theResult);
    if (*theResult != kPluginNoError || (theRing = RingAt(TheData(), theOffset)) == nullptr)
        return;
    theRing->ringColor.red = (int16_t)theColor.red;
    theRing->ringColor.green = (int16_t)theColor.green;
    theRing->ringColor.blue = (int16_t)theColor.blue;
}

} // namespace

KVChannelRef AddChannel(int32_t theID, IFFType theType, const unsigned char* theName, void* theValue,
                        void* minValue, void* maxValue, int32_t* theResult)
{
    if (*theResult != kPluginNoError)
        return nullptr;
    HostAddChannelRec theRecord;
    std::memset(&theRecord, 0, sizeof theRecord);
    theRecord.theReference = sTheHostReference;
    theRecord.theChannelID = theID;
    theRecord.theChannelType = theType;
    if (theName != nullptr)
        CopyPStr(theRecord.theChannelName, theName);
    theRecord.theChannelDefault = theValue;
    theRecord.theChannelMinimum = minValue;
    theRecord.theChannelMaximum = maxValue;
    theRecord.theChannelBefore = nullptr;
    theRecord.theChannelReference = nullptr;
    *theResult = AskHost(kHostAddChannel, &theRecord);
    return *theResult == kPluginNoError ? theRecord.theChannelReference : nullptr;
}

void GetChannel(KVChannelRef theChannel, int32_t theID, IFFType theType, int32_t theFrame, void* theData,
                int32_t theSize, int32_t* theResult)
{
    if (*theResult != kPluginNoError || theChannel == nullptr)
        return;
    HostGetChannelRec theRecord;
    theRecord.theReference = sTheHostReference;
    theRecord.theChannelReference = theChannel;
    theRecord.theChannelID = theID;
    theRecord.theChannelType = theType;
    theRecord.theChannelFrame = theFrame;
    theRecord.theChannelData = nullptr;
    *theResult = AskHost(kHostGetChannel, &theRecord);
    if (*theResult != kPluginNoError)
        return;
    if (theRecord.theChannelID == theID && theRecord.theChannelType == theType && theRecord.theChannelData != nullptr)
        std::memcpy(theData, theRecord.theChannelData, (size_t)theSize);
    else
        *theResult = kPluginIncompatible;
}

void SetChannel(KVChannelRef theChannel, int32_t theID, IFFType theType, int32_t theFrame, void* theData,
                int32_t* theResult)
{
    if (*theResult != kPluginNoError || theChannel == nullptr)
        return;
    HostSetChannelRec theRecord;
    theRecord.theReference = sTheHostReference;
    theRecord.theChannelReference = theChannel;
    theRecord.theChannelID = theID;
    theRecord.theChannelType = theType;
    theRecord.theChannelFrame = theFrame;
    theRecord.theChannelData = theData;
    *theResult = AskHost(kHostSetChannel, &theRecord);
}

void InitRingChannels(int32_t* theResult)
{
    ChainWalk theWalk = StartRingWalk();
    const RingElement* theRing;
    while (*theResult == kPluginNoError && (theRing = NextRingOfWalk(&theWalk)) != nullptr) {
        const int32_t i = theWalk.index;
        const int32_t theOffset = theWalk.offset;

        /* The defaults are copies: the ring may move with the block. The
           name is clamped to the 31 characters its field holds. */
        PStr255 theName;
        const uint8_t theLength = theRing->ringName[0] < 31 ? theRing->ringName[0] : 31;
        theName[0] = theLength;
        std::memcpy(theName + 1, theRing->ringName + 1, theLength);
        uint8_t theVisible = (theRing->ringMode & kElementOffMode) == 0 ? 1 : 0;
        double theScale = theRing->ringScale;
        double theIntensity = theRing->ringIntensity;
        RGB_Color theColor = {(uint16_t)theRing->ringColor.red, (uint16_t)theRing->ringColor.green,
                              (uint16_t)theRing->ringColor.blue};

        const PStr255 theEmpty = {0};
        PStr255 theVisibleName, theScaleName, theIntensityName, theColorName;
        CopyStr(theVisibleName, "Visible");
        CopyStr(theScaleName, "Scale");
        CopyStr(theIntensityName, "Intensity");
        CopyStr(theColorName, "Color");
        struct {
            IFFType type;
            const unsigned char* name;
            void* value;
        } const theChannels[kChannelsPerRing] = {
            {kChannelLabel, theName, theName},
            {kChannelBoolean, theVisibleName, &theVisible},
            {kChannelReal, theScaleName, &theScale},
            {kChannelReal, theIntensityName, &theIntensity},
            {kChannelRGB, theColorName, &theColor},
            {kChannelLabelEnd, theEmpty, nullptr},
        };
        for (int32_t thePlace = 0; thePlace < kChannelsPerRing && *theResult == kPluginNoError; thePlace++) {
            const KVChannelRef theReference =
                AddChannel(RingID(i, thePlace + 1), theChannels[thePlace].type, theChannels[thePlace].name,
                           theChannels[thePlace].value, nullptr, nullptr, theResult);
            if (RingElement* theMoved = RingAt(TheData(), theOffset))
                StoreReference(theMoved, kRingReferenceOffsets[thePlace], theReference);
        }
    }
}

int32_t DoInitializeChannel(int32_t theCommandRecSize, void* /*theCommandRec*/)
{
    if (theCommandRecSize < (int32_t)sizeof(PluginInitializeChannelRec))
        return kPluginIncompatible;
    int32_t theResult = CheckData(false, false);
    if (theResult != kPluginNoError)
        return theResult;
    if (TheControl() == nullptr || TheData() == nullptr)
        return kPluginMemoryError;
    if (!HasElements())
        return kPluginNoError;

    for (const GlobalChannel& theChannel : kGlobalChannels) {
        PStr255 theName;
        CopyStr(theName, theChannel.name);
        void* theDefault = theChannel.valueOffset >= 0 ? ControlField(theChannel.valueOffset) : nullptr;
        const KVChannelRef theReference =
            AddChannel(theChannel.id, theChannel.type, theName, theDefault, nullptr, nullptr, &theResult);
        if (PluginDataRec* theData = TheData())
            StoreReference(theData, theChannel.referenceOffset, theReference);
    }
    InitRingChannels(&theResult);
    return theResult;
}

int32_t DoUpdateChannel(int32_t theCommandRecSize, void* theCommandRec)
{
    const int32_t theOpening = OpenChannelCommand(theCommandRecSize, sizeof(PluginUpdateChannelRec));
    if (theOpening >= 0)
        return theOpening;
    const PluginUpdateChannelRec* theRecord = (const PluginUpdateChannelRec*)theCommandRec;
    int32_t theResult = kPluginNoError;
    for (int64_t theFrame = theRecord->theStartFrame;
         theFrame <= (int64_t)theRecord->theEndFrame && theResult == kPluginNoError; theFrame++)
        UpdateFrame((int32_t)theFrame, &theResult);
    return theResult;
}

int32_t DoLoadChannel(int32_t theCommandRecSize, void* theCommandRec)
{
    const int32_t theOpening = OpenChannelCommand(theCommandRecSize, sizeof(PluginLoadChannelRec));
    if (theOpening >= 0)
        return theOpening;
    if (TheData()->flareLabelChannel == nullptr)
        return kPluginOutOfSequence;

    const int32_t theFrame = ((const PluginLoadChannelRec*)theCommandRec)->theFrame;
    int32_t theResult = kPluginNoError;
    for (const GlobalChannel& theChannel : kGlobalChannels) {
        if (theChannel.valueOffset < 0)
            continue;
        /* Read into a copy first: the block may move during the request. */
        unsigned char theValue[kChannelRealSize];
        const int32_t theSize = ValueSize(theChannel.type);
        std::memcpy(theValue, ControlField(theChannel.valueOffset), (size_t)theSize);
        GetChannel(LoadReference(TheData(), theChannel.referenceOffset), theChannel.id, theChannel.type, theFrame,
                   theValue, theSize, &theResult);
        std::memcpy(ControlField(theChannel.valueOffset), theValue, (size_t)theSize);
    }

    ChainWalk theWalk = StartRingWalk();
    while (theResult == kPluginNoError && NextRingOfWalk(&theWalk) != nullptr)
        LoadRing(theWalk.index, theWalk.offset, theFrame, &theResult);

    if (theResult == kPluginNoError)
        CopyFlareElements(TheControl(), TheData());
    return theResult;
}

int32_t DoFinishChannel(int32_t theCommandRecSize, void* /*theCommandRec*/)
{
    if (theCommandRecSize < (int32_t)sizeof(PluginFinishChannelRec))
        return kPluginIncompatible;
    return kPluginNoError;
}
