/*
 * RectUtils.cpp - short and long rectangles.
 *
 * Edges and offsets come from hosts and from geometry of untrusted settings,
 * so edge arithmetic wraps modulo 2^32 (as 32-bit machine arithmetic does)
 * instead of overflowing, and a width or height is the wrapped difference
 * right - left stored unsigned: a rectangle whose right edge lies left of its
 * left edge therefore has a huge width, never a negative one.
 */
#include "RectUtils.h"

namespace {

inline int32_t WrapAdd(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

inline int32_t WrapSub(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

inline uint32_t Extent(int32_t from, int32_t to)
{
    return static_cast<uint32_t>(to) - static_cast<uint32_t>(from);
}

inline void SetEdges(L_Rect* r, int32_t left, int32_t top, int32_t right, int32_t bottom)
{
    r->top = top;
    r->left = left;
    r->bottom = bottom;
    r->right = right;
    r->width = Extent(left, right);
    r->height = Extent(top, bottom);
}

inline void ZeroLRect(L_Rect* r)
{
    SetEdges(r, 0, 0, 0, 0);
}

// After an inset or outset: a rectangle whose width or height came out as
// exactly 0 is cleared entirely. Only exact zeros count here.
inline void SetEdgesOrZero(L_Rect* r, int32_t left, int32_t top, int32_t right, int32_t bottom)
{
    SetEdges(r, left, top, right, bottom);
    if (r->width == 0u || r->height == 0u) {
        ZeroLRect(r);
    }
}

// The emptiness used by the union: no positive extent between the edges.
inline bool NoArea(const L_Rect* r)
{
    return r->right <= r->left || r->bottom <= r->top;
}

}  // namespace

extern "C" {

void SetSRect(SRect* theSRect, int16_t theLeft, int16_t theTop, int16_t theRight, int16_t theBottom)
{
    if (theSRect == nullptr) {
        return;
    }
    theSRect->top = theTop;
    theSRect->left = theLeft;
    theSRect->bottom = theBottom;
    theSRect->right = theRight;
}

void OffsetSRect(SRect* theSRect, int16_t hOffset, int16_t vOffset)
{
    if (theSRect == nullptr) {
        return;
    }
    // Sums are formed in int and narrowed back, wrapping modulo 2^16.
    theSRect->left = static_cast<int16_t>(theSRect->left + hOffset);
    theSRect->right = static_cast<int16_t>(theSRect->right + hOffset);
    theSRect->top = static_cast<int16_t>(theSRect->top + vOffset);
    theSRect->bottom = static_cast<int16_t>(theSRect->bottom + vOffset);
}

void SetLRect(L_Rect* theLRect, int32_t theLeft, int32_t theTop, int32_t theRight, int32_t theBottom)
{
    if (theLRect == nullptr) {
        return;
    }
    SetEdges(theLRect, theLeft, theTop, theRight, theBottom);
}

void SRectToLRect(const SRect* theRect, L_Rect* theLRect)
{
    if (theRect == nullptr || theLRect == nullptr) {
        return;
    }
    SetEdges(theLRect, theRect->left, theRect->top, theRect->right, theRect->bottom);
}

void LRectToSRect(const L_Rect* theLRect, SRect* theRect)
{
    if (theLRect == nullptr || theRect == nullptr) {
        return;
    }
    // Each edge keeps its low 16 bits.
    theRect->top = static_cast<int16_t>(theLRect->top);
    theRect->left = static_cast<int16_t>(theLRect->left);
    theRect->bottom = static_cast<int16_t>(theLRect->bottom);
    theRect->right = static_cast<int16_t>(theLRect->right);
}

void OffsetLRect(L_Rect* theLRect, int32_t hOffset, int32_t vOffset)
{
    if (theLRect == nullptr) {
        return;
    }
    theLRect->left = WrapAdd(theLRect->left, hOffset);
    theLRect->right = WrapAdd(theLRect->right, hOffset);
    theLRect->top = WrapAdd(theLRect->top, vOffset);
    theLRect->bottom = WrapAdd(theLRect->bottom, vOffset);
}

void InsetLRect(L_Rect* theLRect, int32_t x, int32_t y)
{
    if (theLRect == nullptr) {
        return;
    }
    SetEdgesOrZero(theLRect, WrapAdd(theLRect->left, x), WrapAdd(theLRect->top, y),
                   WrapSub(theLRect->right, x), WrapSub(theLRect->bottom, y));
}

void OutsetLRect(L_Rect* theLRect, int32_t x, int32_t y)
{
    if (theLRect == nullptr) {
        return;
    }
    SetEdgesOrZero(theLRect, WrapSub(theLRect->left, x), WrapSub(theLRect->top, y),
                   WrapAdd(theLRect->right, x), WrapAdd(theLRect->bottom, y));
}

bool EmptyLRect(const L_Rect* theLRect)
{
    return theLRect == nullptr || theLRect->width == 0u || theLRect->height == 0u;
}

void UnionLRect(const L_Rect* srcA, const L_Rect* srcB, L_Rect* dst)
{
    if (dst == nullptr) {
        return;
    }
    const bool emptyA = srcA == nullptr || NoArea(srcA);
    const bool emptyB = srcB == nullptr || NoArea(srcB);
    if (emptyA && emptyB) {
        ZeroLRect(dst);
    } else if (emptyA) {
        *dst = *srcB;
    } else if (emptyB) {
        *dst = *srcA;
    } else {
        // Read everything before writing: dst may be one of the sources.
        const int32_t left = srcA->left < srcB->left ? srcA->left : srcB->left;
        const int32_t top = srcA->top < srcB->top ? srcA->top : srcB->top;
        const int32_t right = srcA->right > srcB->right ? srcA->right : srcB->right;
        const int32_t bottom = srcA->bottom > srcB->bottom ? srcA->bottom : srcB->bottom;
        SetEdges(dst, left, top, right, bottom);
    }
}

bool SectLRect(const L_Rect* srcA, const L_Rect* srcB, L_Rect* dst)
{
    if (srcA == nullptr || srcB == nullptr) {
        if (dst != nullptr) {
            ZeroLRect(dst);
        }
        return false;
    }
    // Strict tests: rectangles that only share an edge do not intersect.
    if (srcA->left < srcB->right && srcA->top < srcB->bottom && srcA->right > srcB->left &&
        srcA->bottom > srcB->top) {
        const int32_t left = srcA->left > srcB->left ? srcA->left : srcB->left;
        const int32_t top = srcA->top > srcB->top ? srcA->top : srcB->top;
        const int32_t right = srcA->right < srcB->right ? srcA->right : srcB->right;
        const int32_t bottom = srcA->bottom < srcB->bottom ? srcA->bottom : srcB->bottom;
        const uint32_t width = Extent(left, right);
        const uint32_t height = Extent(top, bottom);
        if (width != 0u && height != 0u) {
            if (dst != nullptr) {
                SetEdges(dst, left, top, right, bottom);
            }
            return true;
        }
    }
    if (dst != nullptr) {
        ZeroLRect(dst);
    }
    return false;
}

}  // extern "C"
