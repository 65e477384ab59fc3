/*
 * MemoryUtils.h - small word-wise block copies and fills.
 */
#ifndef KV_MEMORY_UTILS_H
#define KV_MEMORY_UTILS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Copies count bytes from the first byte up, as 32-bit words when count is
   a multiple of 4, as bytes when it is odd, else as 16-bit words. */
void CopySmallBlockForwards(const void* src, void* dst, int32_t count);
/* Writes the count source bytes into dst in reverse order. */
void CopySmallBlockBackwards(const void* src, void* dst, int32_t count);
/* Clears count 32-bit words. */
void ZeroMem(void* p, int32_t count);
/* Stores value into count consecutive 32-bit words. */
void FillMem(void* p, int32_t count, uint32_t value);

#ifdef __cplusplus
}
#endif

#endif /* KV_MEMORY_UTILS_H */
