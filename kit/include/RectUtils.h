/*
 * RectUtils.h - short and long rectangles.
 *
 * Rectangles are half-open: right and bottom are one past the last pixel.
 * An L_Rect's width and height are kept equal to right - left and
 * bottom - top by every routine that moves an edge.
 */
#ifndef KV_RECT_UTILS_H
#define KV_RECT_UTILS_H

#include "KVPluginAPI.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma pack(push, 2)
typedef struct SRect {
    int16_t top;
    int16_t left;
    int16_t bottom;
    int16_t right;
} SRect;
#pragma pack(pop)

void SetSRect(SRect* theSRect, int16_t theLeft, int16_t theTop, int16_t theRight, int16_t theBottom);
void OffsetSRect(SRect* theSRect, int16_t hOffset, int16_t vOffset);
void SetLRect(L_Rect* theLRect, int32_t theLeft, int32_t theTop, int32_t theRight, int32_t theBottom);
void SRectToLRect(const SRect* theRect, L_Rect* theLRect);
void LRectToSRect(const L_Rect* theLRect, SRect* theRect);
void OffsetLRect(L_Rect* theLRect, int32_t hOffset, int32_t vOffset);
void InsetLRect(L_Rect* theLRect, int32_t x, int32_t y);
void OutsetLRect(L_Rect* theLRect, int32_t x, int32_t y);
bool EmptyLRect(const L_Rect* theLRect);
void UnionLRect(const L_Rect* srcA, const L_Rect* srcB, L_Rect* dst);
/* dst = the intersection; true when it is not empty. Rectangles that only
   touch at an edge do not intersect. dst may alias either source. */
bool SectLRect(const L_Rect* srcA, const L_Rect* srcB, L_Rect* dst);

#ifdef __cplusplus
}
#endif

#endif /* KV_RECT_UTILS_H */
