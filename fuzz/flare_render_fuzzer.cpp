/*
 * flare_render_fuzzer.cpp - libFuzzer harness of the flare model and the
 * renderer.
 *
 * The input is read as a working block: the frame and light doubles, the
 * settings header, a chain of ring and streak elements with their colour
 * stops (any floats, any counts, links that may point anywhere) and the free
 * room behind them, then a pixel buffer of any depth and position. The
 * harness lays the flare out (CalcFlareInfo) and paints it (GenerateFlare)
 * into a buffer kept between guard bytes, with a progress host that may
 * cancel. A touched guard byte traps; the sanitizers catch the rest. The
 * same flare is painted again from the same block and buffer on the other
 * painter paths (PaintPath.h), which must leave the per-pixel rule's bytes.
 *
 * The buffer described to the painters is always the buffer allocated here,
 * as a host's is: painting outside a truthful description is what the
 * harness looks for.
 */
#include <fuzzer/FuzzedDataProvider.h>

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <vector>

#include "FlareModel.h"
#include "FlareRender.h"
#include "glintwave/GlintwaveRecords.h"
#include "PaintPath.h"
#include "RectUtils.h"

namespace {

constexpr uint8_t kGuard = 0x5A;
constexpr size_t kGuardBytes = 64;
constexpr int kMaxRings = 4;
constexpr int kMaxStreaks = 3;
constexpr int32_t kMaxStops = 4;
constexpr int32_t kMaxStopBlock = (kMaxStops * 12 + 7) & ~7;
constexpr int32_t kMaxFreeRoom = 1 << 16;
constexpr int32_t kMaxBufferSide = 48;

/* The answer the progress host gives, chosen per input. */
int32_t gStatusAnswer = 0;

int32_t FuzzHostProc(uint32_t /*selector*/, int32_t /*size*/, void* /*record*/)
{
    return gStatusAnswer;
}

/* Any bit pattern (NaN, infinities, denormals) or a plausible value. */
float AnyFloat(FuzzedDataProvider& input)
{
    if (input.ConsumeBool())
        return input.ConsumeFloatingPointInRange<float>(-2000.0f, 2000.0f);
    const uint32_t bits = input.ConsumeIntegral<uint32_t>();
    float value;
    memcpy(&value, &bits, sizeof value);
    return value;
}

double AnyDouble(FuzzedDataProvider& input)
{
    if (input.ConsumeBool())
        return input.ConsumeFloatingPointInRange<double>(-2000.0, 2000.0);
    const uint64_t bits = input.ConsumeIntegral<uint64_t>();
    double value;
    memcpy(&value, &bits, sizeof value);
    return value;
}

/* Usually the honest value, sometimes anything. */
int32_t MaybeAny(FuzzedDataProvider& input, int32_t honest)
{
    return input.ConsumeIntegralInRange<int>(0, 15) == 0 ? input.ConsumeIntegral<int32_t>() : honest;
}

ARGB_Color AnyColor(FuzzedDataProvider& input)
{
    return ARGB_Color{input.ConsumeIntegral<int16_t>(), input.ConsumeIntegral<int16_t>(),
                      input.ConsumeIntegral<int16_t>(), input.ConsumeIntegral<int16_t>()};
}

void FillStops(FuzzedDataProvider& input, unsigned char* where, int32_t count)
{
    for (int32_t i = 0; i < count; i++) {
        ElementColor stop;
        stop.rgb.radius = AnyFloat(input);
        stop.rgb.alpha = input.ConsumeIntegral<uint16_t>();
        stop.rgb.red = input.ConsumeIntegral<uint16_t>();
        stop.rgb.green = input.ConsumeIntegral<uint16_t>();
        stop.rgb.blue = input.ConsumeIntegral<uint16_t>();
        memcpy(where + (size_t)i * sizeof stop, &stop, sizeof stop);
    }
}

void FillControl(FuzzedDataProvider& input, ControlDataRec* theControl)
{
    memset(theControl, 0, sizeof *theControl);
    theControl->ownerType = kFlareOwnerType;
    theControl->ownerVersion = kFlareVersion;
    for (double* field : {&theControl->flareAspectRatio, &theControl->flareRotation, &theControl->flareRingScale,
                          &theControl->flareRingIntensity, &theControl->flareRingContrast,
                          &theControl->flareStreakScale, &theControl->flareStreakIntensity,
                          &theControl->flareStreakContrast})
        *field = AnyDouble(input);
    for (ARGB_Color* color : {&theControl->flareRingColor, &theControl->flareOriginGlowColor,
                              &theControl->flareOuterGlowColor, &theControl->flareHaloColor,
                              &theControl->flareStreakColor})
        *color = AnyColor(input);
    theControl->flareFlags = input.ConsumeIntegral<uint32_t>();
}

void FillFrame(FuzzedDataProvider& input, PluginDataRec* theData)
{
    for (double* field : {&theData->flareXScale, &theData->flareYScale, &theData->flareXCenter,
                          &theData->flareYCenter, &theData->flareXPosition, &theData->flareYPosition,
                          &theData->flareLightIntensity, &theData->flareLightRotation, &theData->flareLightSize})
        *field = AnyDouble(input);
    const int32_t left = input.ConsumeIntegral<int32_t>();
    const int32_t top = input.ConsumeIntegral<int32_t>();
    const int32_t right = input.ConsumeIntegral<int32_t>();
    const int32_t bottom = input.ConsumeIntegral<int32_t>();
    SetLRect(&theData->flareRect, left, top, right, bottom);
    theData->flareLightColor.colorValue = input.ConsumeIntegral<uint32_t>();
    theData->flareHostProc = FuzzHostProc;
    theData->flareHostReference = nullptr;
}

/* Links are written by offset: a field of a packed record may not be
   aligned for a pointer to its type. */
void SetLink(unsigned char* block, size_t linkOffset, int32_t value)
{
    memcpy(block + linkOffset, &value, sizeof value);
}

/* Rings, then streaks, each followed by its stops, linked in order unless
   the input says otherwise. Returns the offset behind the last element. */
int32_t LayElements(FuzzedDataProvider& input, unsigned char* block, ControlDataRec* theControl)
{
    int32_t base = (int32_t)sizeof(PluginDataRec);

    const int rings = input.ConsumeIntegralInRange<int>(0, kMaxRings);
    size_t link = offsetof(PluginDataRec, flareRingFirst);
    for (int i = 0; i < rings; i++) {
        const int32_t stops = input.ConsumeIntegralInRange<int32_t>(0, kMaxStops);
        SetLink(block, link, MaybeAny(input, base));
        RingElement* theRing = (RingElement*)(block + base);
        memset(theRing, 0, sizeof *theRing);
        theRing->ringType = input.ConsumeIntegralInRange<int32_t>(-1, 4);
        theRing->ringMode = input.ConsumeBool() ? 0u : input.ConsumeIntegral<uint32_t>();
        theRing->ringPosition = AnyFloat(input);
        theRing->ringInner = AnyFloat(input);
        theRing->ringOuter = AnyFloat(input);
        theRing->ringScale = AnyFloat(input);
        theRing->ringIntensity = AnyFloat(input);
        theRing->ringColor = AnyColor(input);
        theRing->ringElementColors = MaybeAny(input, stops);
        FillStops(input, block + base + sizeof(RingElement), stops);
        link = (size_t)base + offsetof(RingElement, ringNext);
        base += (int32_t)sizeof(RingElement) + ((stops * 12 + 7) & ~7);
    }
    SetLink(block, link, 0);

    const int streaks = input.ConsumeIntegralInRange<int>(0, kMaxStreaks);
    link = offsetof(PluginDataRec, flareStreakFirst);
    for (int i = 0; i < streaks; i++) {
        const int32_t stops = input.ConsumeIntegralInRange<int32_t>(0, kMaxStops);
        SetLink(block, link, MaybeAny(input, base));
        StreakElement* theStreak = (StreakElement*)(block + base);
        memset(theStreak, 0, sizeof *theStreak);
        theStreak->streakMode = input.ConsumeBool() ? 0u : input.ConsumeIntegral<uint32_t>();
        theStreak->streakPosition = AnyFloat(input);
        theStreak->streakX = AnyFloat(input);
        theStreak->streakY = AnyFloat(input);
        theStreak->streakInner = AnyFloat(input);
        theStreak->streakOuter = AnyFloat(input);
        theStreak->streakScale = AnyFloat(input);
        theStreak->streakIntensity = AnyFloat(input);
        theStreak->streakColor = AnyColor(input);
        theStreak->streakElementColors = MaybeAny(input, stops);
        FillStops(input, block + base + sizeof(StreakElement), stops);
        link = (size_t)base + offsetof(StreakElement, streakNext);
        base += (int32_t)sizeof(StreakElement) + ((stops * 12 + 7) & ~7);
    }
    SetLink(block, link, 0);

    theControl->flareRingCount = MaybeAny(input, rings);
    theControl->flareStreakCount = MaybeAny(input, streaks);
    return base;
}

/* A pixel buffer between guard bytes, its rows top-down or bottom-up with
   some padding; only the pixels of its rectangle may change. */
struct GuardedBuffer {
    std::vector<unsigned char> bytes;
    size_t stride = 0;
    size_t rowPixels = 0;
    int32_t height = 0;

    GuardedBuffer(FuzzedDataProvider& input, int32_t width, int32_t rows, size_t pixelSize)
    {
        height = rows;
        rowPixels = (size_t)width * pixelSize;
        stride = rowPixels + input.ConsumeIntegralInRange<size_t>(0, 7);
        bytes.assign(2 * kGuardBytes + stride * (size_t)rows, kGuard);
        for (int32_t row = 0; row < rows; row++)
            for (size_t i = 0; i < rowPixels; i++)
                bytes[kGuardBytes + stride * (size_t)row + i] = input.ConsumeIntegral<uint8_t>();
    }

    unsigned char* Row(int32_t row) { return bytes.data() + kGuardBytes + stride * (size_t)row; }

    bool GuardsIntact() const
    {
        for (size_t i = 0; i < bytes.size(); i++) {
            const bool pixel = i >= kGuardBytes && i < kGuardBytes + stride * (size_t)height &&
                               (i - kGuardBytes) % stride < rowPixels;
            if (!pixel && bytes[i] != kGuard)
                return false;
        }
        return true;
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input(data, size);

    ControlDataRec control;
    FillControl(input, &control);

    const int32_t freeRoom = input.ConsumeIntegralInRange<int32_t>(0, kMaxFreeRoom);
    const size_t elementRoom = (size_t)kMaxRings * (sizeof(RingElement) + kMaxStopBlock) +
                               (size_t)kMaxStreaks * (sizeof(StreakElement) + kMaxStopBlock);
    /* 8-byte aligned storage, as the host's blocks are. */
    std::vector<uint64_t> storage((sizeof(PluginDataRec) + elementRoom + (size_t)freeRoom + 7) / 8, 0);
    unsigned char* block = (unsigned char*)storage.data();
    const int32_t blockSize = (int32_t)(storage.size() * 8);
    PluginDataRec* theData = (PluginDataRec*)block;
    FillFrame(input, theData);

    const int32_t elementEnd = LayElements(input, block, &control);
    /* The data check never lays out behind an element end beyond the block
       (it re-reads the elements then), and sets the whole block as the room
       before the layout. */
    const int32_t claimedEnd = MaybeAny(input, elementEnd);
    theData->flareElementSize = claimedEnd < blockSize ? claimedEnd : blockSize;
    theData->flareDataSize = blockSize;
    theData->flareReset = 0;
    CalcFlareInfo(&control, theData);
    if (theData->flareDataSize > blockSize)
        __builtin_trap();

    /* Paint a buffer clipped to the frame, as the 'GENF' command does. */
    static const int16_t kDepths[] = {48, 32, 8};
    const int16_t depth = kDepths[input.ConsumeIntegralInRange<int>(0, 2)];
    const size_t pixelSize = depth == 48 ? 6 : depth == 32 ? 4 : 1;
    L_Rect wanted;
    const int32_t left = input.ConsumeIntegral<int32_t>();
    const int32_t top = input.ConsumeIntegral<int32_t>();
    const int32_t width = input.ConsumeIntegralInRange<int32_t>(1, kMaxBufferSide);
    const int32_t height = input.ConsumeIntegralInRange<int32_t>(1, kMaxBufferSide);
    SetLRect(&wanted, left, top, left > INT32_MAX - width ? INT32_MAX : left + width,
             top > INT32_MAX - height ? INT32_MAX : top + height);
    L_Rect clipped;
    if (!SectLRect(&theData->flareRect, &wanted, &clipped))
        return 0;
    /* An inverted frame still intersects, with inverted edges and a wrapped
       size; 'GENF' treats that as a miss, and so does the harness. */
    if (clipped.right <= clipped.left || clipped.bottom <= clipped.top)
        return 0;

    GuardedBuffer buffer(input, (int32_t)clipped.width, (int32_t)clipped.height, pixelSize);
    const bool bottomUp = input.ConsumeBool();
    GlintwaveBuffer* theBuffer = &theData->flarePixelBuffer;
    theBuffer->bufferBase = bottomUp ? buffer.Row((int32_t)clipped.height - 1) : buffer.Row(0);
    theBuffer->bufferRowBytes = bottomUp ? -(int32_t)buffer.stride : (int32_t)buffer.stride;
    theBuffer->bufferRect = clipped;
    theBuffer->bufferDepth = depth;
    theBuffer->bufferIndex = input.ConsumeIntegral<int32_t>();
    theData->theStatusRec.theStatusTick = 0;

    static const int32_t kAnswers[] = {0, 0, 0, 4};
    gStatusAnswer = kAnswers[input.ConsumeIntegralInRange<int>(0, 3)];
    const bool statusFlag = input.ConsumeBool();
    const std::vector<uint64_t> laidOut = storage;
    const std::vector<unsigned char> background = buffer.bytes;
    SetPaintPath(kPaintPathPlain);
    const int32_t result = GenerateFlare(&control, theData, depth, statusFlag);
    if (result != 0 && result != gStatusAnswer)
        __builtin_trap();
    if (!buffer.GuardsIntact())
        __builtin_trap();
    /* The painters' other paths must give the same bytes; the sketch has
       only the one path, and running it again would prove nothing. */
    if (depth == 8) {
        SetPaintPath(kPaintPathBest);
        return 0;
    }
    const std::vector<unsigned char> ruled = buffer.bytes;
    for (int32_t path : {kPaintPathSpans, kPaintPathBest}) {
        memcpy(storage.data(), laidOut.data(), laidOut.size() * sizeof(uint64_t));
        memcpy(buffer.bytes.data(), background.data(), background.size());
        SetPaintPath(path);
        if (GenerateFlare(&control, theData, depth, statusFlag) != result || buffer.bytes != ruled)
            __builtin_trap();
    }
    SetPaintPath(kPaintPathBest);
    return 0;
}
