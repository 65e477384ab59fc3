/*
 * GenerateCommand.cpp - the 'GENF' command: paints the flare into the host's
 * frame buffer.
 *
 * The command record's FlareBuffer describes the host's image; its depth is
 * a 16-bit field and its colour index follows unaligned, so the fields are
 * copied out of the record byte-wise. The buffer is clipped to the flare's
 * frame, its base moved to the clipped corner, and the flare painted with
 * progress reports.
 */
#include <string.h>

#include "FlareRender.h"
#include "GlintwaveData.h"
#include "PluginClient.h"
#include "RectUtils.h"

namespace {

template <class T>
T ReadRecordField(const void* theRecord, size_t offset)
{
    T value;
    memcpy(&value, static_cast<const char*>(theRecord) + offset, sizeof value);
    return value;
}

constexpr size_t kBufferOffset = offsetof(PluginFlareGenerateRec, theFlareBuffer);

/* Bytes per column when the base is moved to the clipped corner: 2 at every
   depth. This is exact only when the buffer does not begin left of the
   frame; hosts hand over buffers that do not, and the rule is kept so that
   frames render as they always have. */
constexpr int64_t kBaseColumnBytes = 2;

}  // namespace

int32_t DoGenerate(int32_t theCommandRecSize, void* theCommandRec)
{
    if (theCommandRec == nullptr || theCommandRecSize < (int32_t)sizeof(PluginFlareGenerateRec))
        return kPluginIncompatible;

    int16_t depth = ReadRecordField<int16_t>(theCommandRec, kBufferOffset + offsetof(FlareBuffer, bufferDepth));
    if (depth != 8 && depth != 32 && depth != 48)
        return kPluginModeUnsupported;

    int32_t result = CheckData(false, false);
    if (result != 0)
        return result;

    ControlDataRec* theControl = TheControl();
    PluginDataRec* theData = TheData();
    theData->theInfo = nullptr;
    theData->flareHostProc = sTheHostProc;
    theData->flareHostReference = sTheHostReference;

    GlintwaveBuffer* theBuffer = &theData->flarePixelBuffer;
    theBuffer->bufferBase = ReadRecordField<void*>(theCommandRec, kBufferOffset + offsetof(FlareBuffer, bufferBase));
    theBuffer->bufferRowBytes =
        ReadRecordField<int32_t>(theCommandRec, kBufferOffset + offsetof(FlareBuffer, bufferRowBytes));
    theBuffer->bufferRect = ReadRecordField<L_Rect>(theCommandRec, kBufferOffset + offsetof(FlareBuffer, bufferRect));
    theBuffer->bufferDepth = depth;
    theBuffer->bufferIndex = ReadRecordField<int32_t>(theCommandRec, kBufferOffset + offsetof(FlareBuffer, bufferIndex));

    L_Rect tempRect;
    if (!SectLRect(&theData->flareRect, &theBuffer->bufferRect, &tempRect)) {
        theBuffer->bufferRect = tempRect;
        return 0;
    }
    /* A frame or buffer rectangle whose right edge lies left of its left
       edge (or bottom above top) still yields an intersection, with edges as
       inverted and a wrapped width or height far beyond the buffer. It holds
       no pixel, so it is as empty as a miss: the sketch would take the
       wrapped width and height as the buffer's bounds. */
    if (tempRect.right <= tempRect.left || tempRect.bottom <= tempRect.top) {
        SetLRect(&theBuffer->bufferRect, 0, 0, 0, 0);
        return 0;
    }

    /* The base moves in plain integer arithmetic: the host vouches for its
       buffer, the pointer is only formed once it addresses it again. */
    int64_t shift = ((int64_t)tempRect.left - theBuffer->bufferRect.left) * kBaseColumnBytes +
                    ((int64_t)tempRect.top - theBuffer->bufferRect.top) * theBuffer->bufferRowBytes;
    if (theBuffer->bufferBase != nullptr)
        theBuffer->bufferBase = reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(theBuffer->bufferBase) +
                                                        (uintptr_t)shift);
    theBuffer->bufferRect = tempRect;
    return GenerateFlare(theControl, theData, (int16_t)theBuffer->bufferDepth, true);
}
