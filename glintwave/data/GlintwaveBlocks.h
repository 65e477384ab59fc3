/*
 * GlintwaveBlocks.h - bounds of the two host-owned blocks, for the code
 * that reads and writes inside them.
 *
 * The blocks come from the host and their contents from the project and the
 * flare table file: every offset is checked against the block's size before
 * it is followed, and every size computation is done so that it cannot
 * overflow.
 */
#ifndef GLINTWAVE_BLOCKS_H
#define GLINTWAVE_BLOCKS_H

#include "glintwave/GlintwaveRecords.h"

/* Bytes of the control block that may be touched: the host's size for the
   block of the current call; a record that is not that block is taken to be
   a bare header. */
int32_t ControlBlockSize(const ControlDataRec* theControl);

/* Bytes of the plug-in data block that may be touched: the host's size for
   the block of the current call; a block made by a caller holds what its
   header's flareDataSize says. */
int32_t PluginBlockSize(const PluginDataRec* theData);

/* The ring or streak at theOffset when the whole element lies inside the
   element area [sizeof(PluginDataRec), theLimit) at an even offset (the
   records' alignment), else null. */
RingElement* RingWithin(PluginDataRec* theData, int32_t theOffset, int32_t theLimit);
StreakElement* StreakWithin(PluginDataRec* theData, int32_t theOffset, int32_t theLimit);

/* The most rings a control record may announce: more could never be loaded
   into a plug-in data block, and with this bound the control block's size
   128 + 24 x count always fits 32 bits. */
int32_t MaxRingCount(void);

/* theSize rounded up to a multiple of 8, computed without overflow. */
int64_t RoundUp8(int64_t theSize);

#endif /* GLINTWAVE_BLOCKS_H */
