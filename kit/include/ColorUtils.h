/*
 * ColorUtils.h - packed 8-bit colours and the shared-exponent colour format.
 *
 * 8 to 16 bits is x 257, 16 to 8 bits takes the high byte.
 */
#ifndef KV_COLOR_UTILS_H
#define KV_COLOR_UTILS_H

#include "KVPluginAPI.h"

#ifdef __cplusplus
extern "C" {
#endif

void SetARGB(ARGB* theARGB, uint8_t aVal, uint8_t rVal, uint8_t gVal, uint8_t bVal);
uint32_t MakeARGB(uint8_t aVal, uint8_t rVal, uint8_t gVal, uint8_t bVal);
/* Byte 0: bits 7, 6, 5 = bit 8 of the red, green, blue mantissas, bits 4-0
   the exponent (0 = black); bytes 1-3 the low bytes of the 9-bit mantissas. */
void PackRGB(ARGB* theARGB, float r, float g, float b);
void UnpackRGB(const ARGB* theARGB, float* r, float* g, float* b);

#ifdef __cplusplus
}
#endif

#endif /* KV_COLOR_UTILS_H */
