/*
 * KVSystem.h - the platform clock shared by host and plug-in.
 */
#ifndef KV_SYSTEM_H
#define KV_SYSTEM_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Sixtieths of a second of the monotonic clock, truncated to 32 bits. A host
   reads the same clock, so it can pace 'STAT' through theStatusTick. */
int32_t TickCount(void);

#ifdef __cplusplus
}
#endif

#endif /* KV_SYSTEM_H */
