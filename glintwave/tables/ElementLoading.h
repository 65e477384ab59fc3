/*
 * ElementLoading.h - reading one element of a flare style into the working
 * data (ReadFlareElements in GlintwaveData.h reads them all).
 *
 * theSize is the free room of the element area, theBase the offset where
 * the next element goes, theCount the chain's count so far; the previous
 * element of the same chain comes in *theRingElement / *theStreakElement
 * (null before the first) and the new one goes out there. Errors go to
 * *result: 6 for a missing or short resource, 1 for too little room. No
 * host request happens while elements are read, so the block cannot move
 * under these pointers.
 */
#ifndef GLINTWAVE_ELEMENT_LOADING_H
#define GLINTWAVE_ELEMENT_LOADING_H

#include "glintwave/GlintwaveRecords.h"
#include "KVToolboxTypes.h"

void ReadRingElement(ControlDataRec* theControl, PluginDataRec* theData, KV_ResourceFile* iResourceFile,
                     int16_t theRingID, RingElement** theRingElement, int32_t* theSize, int32_t* theBase,
                     int32_t* theCount, int32_t* result);
void ReadStreakElement(ControlDataRec* theControl, PluginDataRec* theData, KV_ResourceFile* iResourceFile,
                       int16_t theStreakID, StreakElement** theStreakElement, int32_t* theSize,
                       int32_t* theBase, int32_t* theCount, int32_t* result);

#endif /* GLINTWAVE_ELEMENT_LOADING_H */
