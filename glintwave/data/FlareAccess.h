/*
 * FlareAccess.h - checked access to the elements and colour ramps inside the
 * plug-in data block. The saturating conversions the model and the renderer
 * use wherever a double is narrowed come with it from SafeConvert.h.
 *
 * The block is host memory that may hold anything: every offset read from it
 * is checked to address a whole, suitably aligned record that lies behind
 * the fixed header and before flareDataSize (the end of what is in use, or,
 * while the layout is computed, the whole block) before it is dereferenced.
 */
#ifndef GLINTWAVE_FLARE_ACCESS_H
#define GLINTWAVE_FLARE_ACCESS_H

#include <stddef.h>
#include <stdint.h>

#include "glintwave/GlintwaveRecords.h"
#include "SafeConvert.h"

/* True when size bytes at offset lie behind the header and end at or
   before end, with the given alignment. */
inline bool BlockHoldsBefore(int64_t offset, int64_t size, size_t align, int64_t end)
{
    return offset >= (int64_t)sizeof(PluginDataRec) && size >= 0 && offset % (int64_t)align == 0 &&
           offset + size <= end;
}

/* The same inside flareDataSize. */
inline bool BlockHolds(const PluginDataRec* theData, int64_t offset, int64_t size, size_t align)
{
    return BlockHoldsBefore(offset, size, align, (int64_t)theData->flareDataSize);
}

/* The record of type T at offset, or null when the block does not hold it. */
template <class T>
inline T* BlockRecordAt(PluginDataRec* theData, int32_t offset)
{
    if (!BlockHolds(theData, offset, (int64_t)sizeof(T), alignof(T)))
        return nullptr;
    return reinterpret_cast<T*>(reinterpret_cast<char*>(theData) + offset);
}

inline RingElement* RingAt(PluginDataRec* theData, int32_t offset)
{
    return BlockRecordAt<RingElement>(theData, offset);
}

/* A colour ramp of count steps: count + 1 FlareColor entries at offset. Null
   when count is negative or the block does not hold all the entries. */
inline FlareColor* RampAt(PluginDataRec* theData, int32_t offset, int32_t count)
{
    if (count < 0)
        return nullptr;
    int64_t bytes = ((int64_t)count + 1) * (int64_t)sizeof(FlareColor);
    if (!BlockHolds(theData, offset, bytes, alignof(FlareColor)))
        return nullptr;
    return reinterpret_cast<FlareColor*>(reinterpret_cast<char*>(theData) + offset);
}

/* The count colour stops stored right behind the element that starts at
   elementOffset and is elementSize bytes long; null when there are none or
   the block does not hold them. */
inline ElementColor* StopsBehind(PluginDataRec* theData, int64_t elementOffset, size_t elementSize,
                                 int32_t count)
{
    int64_t offset = elementOffset + (int64_t)elementSize;
    if (count <= 0 ||
        !BlockHolds(theData, offset, (int64_t)count * (int64_t)sizeof(ElementColor),
                    alignof(ElementColor)))
        return nullptr;
    return reinterpret_cast<ElementColor*>(reinterpret_cast<char*>(theData) + offset);
}

/* Byte offset of an element from the start of the block. */
inline int64_t OffsetInBlock(const PluginDataRec* theData, const void* theElement)
{
    return reinterpret_cast<const char*>(theElement) - reinterpret_cast<const char*>(theData);
}

#endif /* GLINTWAVE_FLARE_ACCESS_H */
