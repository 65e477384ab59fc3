/*
 * ElementChain.h - the one walk along a chain of elements (the rings or the
 * streaks), linked through the block by offsets.
 *
 *     ChainWalk theWalk = RingChain(theControl, theData);
 *     while (RingElement* theRing = NextRing(theData, &theWalk)) { ... }
 *
 * Every offset is checked to address a whole element inside the walk's end
 * before the element is touched, and a walk visits no more elements than its
 * count, so a chain that loops back on itself still ends. The link to the
 * next element is read as soon as an element is reached: what the loop body
 * then writes into the element, or a host request that moves the block (the
 * caller passes the block's new address at the next step), does not change
 * where the walk goes.
 */
#ifndef GLINTWAVE_ELEMENT_CHAIN_H
#define GLINTWAVE_ELEMENT_CHAIN_H

#include <stddef.h>
#include <stdint.h>

#include "FlareAccess.h"
#include "glintwave/GlintwaveRecords.h"

typedef struct ChainWalk {
    int32_t left;    /* elements the walk may still visit */
    int32_t end;     /* no element reaches past this offset */
    int32_t index;   /* place in the chain of the element last reached, -1 before the first */
    int32_t offset;  /* that element's offset */
    int32_t next;    /* offset of the element after it */
} ChainWalk;

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

/* A walk of at most count elements from the offset first, reading nothing
   at or past end. */
inline ChainWalk ChainFrom(int32_t first, int32_t count, int32_t end)
{
    ChainWalk theWalk = {count > 0 ? count : 0, end, -1, 0, first};
    return theWalk;
}

/* The rings and the streaks as the settings count them, inside the part of
   the block in use. */
inline ChainWalk RingChain(const ControlDataRec* theControl, const PluginDataRec* theData)
{
    return ChainFrom(theData->flareRingFirst, ChainLimit(theData, theControl->flareRingCount, sizeof(RingElement)),
                     theData->flareDataSize);
}

inline ChainWalk StreakChain(const ControlDataRec* theControl, const PluginDataRec* theData)
{
    return ChainFrom(theData->flareStreakFirst,
                     ChainLimit(theData, theControl->flareStreakCount, sizeof(StreakElement)), theData->flareDataSize);
}

inline int32_t ElementLink(const RingElement* theRing)
{
    return theRing->ringNext;
}

inline int32_t ElementLink(const StreakElement* theStreak)
{
    return theStreak->streakNext;
}

/* The next element of the walk, or null when the walk is over: its count is
   used up or the link does not address a whole element. */
template <class Element>
inline Element* NextElement(PluginDataRec* theData, ChainWalk* theWalk)
{
    if (theWalk->left <= 0)
        return nullptr;
    if (!BlockHoldsBefore(theWalk->next, (int64_t)sizeof(Element), alignof(Element), theWalk->end)) {
        theWalk->left = 0;
        return nullptr;
    }
    Element* theElement = reinterpret_cast<Element*>(reinterpret_cast<char*>(theData) + theWalk->next);
    theWalk->left -= 1;
    theWalk->index += 1;
    theWalk->offset = theWalk->next;
    theWalk->next = ElementLink(theElement);
    return theElement;
}

inline RingElement* NextRing(PluginDataRec* theData, ChainWalk* theWalk)
{
    return NextElement<RingElement>(theData, theWalk);
}

inline StreakElement* NextStreak(PluginDataRec* theData, ChainWalk* theWalk)
{
    return NextElement<StreakElement>(theData, theWalk);
}

#endif /* GLINTWAVE_ELEMENT_CHAIN_H */
