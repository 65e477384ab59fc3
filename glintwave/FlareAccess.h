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

#include "GlintwaveRecords.h"
#include "SafeConvert.h"

/* True when the block holds size bytes at offset, behind the header and
   inside flareDataSize, with the given alignment. */
inline bool BlockHolds(const PluginDataRec* theData, int64_t offset, int64_t size, size_t align)
{
    return offset >= (int64_t)sizeof(PluginDataRec) && size >= 0 &&
           offset % (int64_t)align == 0 && offset + size <= (int64_t)theData->flareDataSize;
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

inline StreakElement* StreakAt(PluginDataRec* theData, int32_t offset)
{
    return BlockRecordAt<StreakElement>(theData, offset);
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

/* How many elements of a chain a walk visits: the count the settings give,
   but never more than the block could hold, so that a chain that loops back
   on itself still ends. A valid chain always fits, so the cap never cuts it. */
inline int32_t ChainLimit(const PluginDataRec* theData, int32_t count, size_t elementSize)
{
    int64_t room = (int64_t)theData->flareDataSize - (int64_t)sizeof(PluginDataRec);
    int64_t fits = room > 0 ? room / (int64_t)elementSize : 0;
    if (count < 0)
        return 0;
    return (int64_t)count < fits ? count : (int32_t)fits;
}

/* Byte offset of an element from the start of the block. */
inline int64_t OffsetInBlock(const PluginDataRec* theData, const void* theElement)
{
    return reinterpret_cast<const char*>(theElement) - reinterpret_cast<const char*>(theData);
}

#endif /* GLINTWAVE_FLARE_ACCESS_H */
