/*
 * RoundUtils.h - clamped truncation of pixel coordinates and byte reversal.
 *
 * The renderer's pixel coverage follows from these: a span from a to b
 * covers the whole numbers k with a < k <= b, that is TruncLo(a)..TruncHi(b).
 * All three clamp to -32767..32767, and never convert an out-of-range or
 * non-finite double to an integer.
 */
#ifndef KV_ROUND_UTILS_H
#define KV_ROUND_UTILS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* floor(n), clamped when the truncated value reaches +-32767. */
int32_t ITrunc(double n);
/* The least whole number strictly greater than n; clamps below -32767 and
   above 32765. */
int32_t TruncLo(double n);
/* floor(n), same clamps as ITrunc. */
int32_t TruncHi(double n);
/* Reverses the size bytes of a field in place. */
void ReverseField(void* theField, uint32_t size);

#ifdef __cplusplus
}
#endif

#endif /* KV_ROUND_UTILS_H */
