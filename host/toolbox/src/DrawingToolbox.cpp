// DrawingToolbox.cpp - image buffers, drawing contexts and rectangles for
// plug-ins.
//
// Image buffers hold KV_32BitPixel rows (alpha 24-31, red 16-23, green 8-15,
// blue 0-7), padded to 16 bytes; the base address is the pixel at the
// buffer's (left, top). A context draws into an image buffer or a dialog's
// canvas, in the target's own coordinates, clipped to its clip rectangle and
// the target's bounds. Rectangles are half-open. Pen colours are opaque;
// the XOR pen flips the colour bits and keeps alpha. Images are copied as
// they are (nearest pixel when the sizes differ), alpha included.
//
// Text drawing is not offered: a dialog's texts are the runner's to show.

#include "DialogObjects.h"
#include "ToolboxGuard.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstdint>
#include <limits>

namespace korvane::toolbox {
namespace {

// Largest image side and pixel count a plug-in may ask for (256 MiB).
constexpr int kMaxImageSide = 32767;
constexpr std::int64_t kMaxImagePixels = std::int64_t{1} << 26;

int saturate(std::int64_t value)
{
    return static_cast<int>(std::clamp<std::int64_t>(value, std::numeric_limits<int>::min(),
                                                     std::numeric_limits<int>::max()));
}

bool isEmpty(const KV_Rect& r)
{
    return r.right <= r.left || r.bottom <= r.top;
}

KV_Rect intersect(const KV_Rect& a, const KV_Rect& b)
{
    return KV_Rect{std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                   std::min(a.bottom, b.bottom)};
}

std::uint32_t opaque(const KV_Color& color)
{
    return 0xFF000000u | (std::uint32_t{color.red} << 16) | (std::uint32_t{color.green} << 8) | color.blue;
}

// Where a context may draw: its clip within the target.
KV_Rect drawable(const KV_DrawContext& context)
{
    return intersect(context.clip, context.target->bounds);
}

void plot(KV_DrawContext& context, const KV_Rect& area, int x, int y, std::uint32_t color)
{
    if (x < area.left || x >= area.right || y < area.top || y >= area.bottom)
        return;
    std::uint32_t& pixel = context.target->at(x, y);
    pixel = context.penMode == cKV_PenXOR ? pixel ^ (color & 0x00FFFFFFu) : color;
}

void fill(KV_DrawContext& context, const KV_Rect& rect, std::uint32_t color)
{
    const KV_Rect area = intersect(rect, drawable(context));
    for (int y = area.top; y < area.bottom; ++y)
        for (int x = area.left; x < area.right; ++x)
            plot(context, area, x, y, color);
}

void frame(KV_DrawContext& context, const KV_Rect& r, std::uint32_t color)
{
    if (isEmpty(r))
        return;
    const KV_Rect area = drawable(context);
    // Every edge pixel exactly once, so that an XOR frame drawn twice vanishes.
    for (int x = r.left; x < r.right; ++x) {
        plot(context, area, x, r.top, color);
        if (r.bottom - 1 > r.top)
            plot(context, area, x, r.bottom - 1, color);
    }
    for (int y = r.top + 1; y < r.bottom - 1; ++y) {
        plot(context, area, r.left, y, color);
        if (r.right - 1 > r.left)
            plot(context, area, r.right - 1, y, color);
    }
}

// Whether the centre of pixel (x, y) lies inside the oval of r.
bool insideOval(const KV_Rect& r, int x, int y)
{
    const double rx = (static_cast<double>(r.right) - r.left) / 2.0;
    const double ry = (static_cast<double>(r.bottom) - r.top) / 2.0;
    const double dx = (x + 0.5 - (r.left + rx)) / rx;
    const double dy = (y + 0.5 - (r.top + ry)) / ry;
    return dx * dx + dy * dy <= 1.0;
}

void oval(KV_DrawContext& context, const KV_Rect& r, bool outlineOnly)
{
    if (isEmpty(r))
        return;
    const KV_Rect area = intersect(r, drawable(context));
    const std::uint32_t color = opaque(context.fore);
    for (int y = area.top; y < area.bottom; ++y)
        for (int x = area.left; x < area.right; ++x) {
            if (!insideOval(r, x, y))
                continue;
            const bool edge = x == r.left || x == r.right - 1 || y == r.top || y == r.bottom - 1 ||
                              !insideOval(r, x - 1, y) || !insideOval(r, x + 1, y) || !insideOval(r, x, y - 1) ||
                              !insideOval(r, x, y + 1);
            if (!outlineOnly || edge)
                plot(context, area, x, y, color);
        }
}

// Copies `source` of one buffer onto `dest` of another, nearest pixel, only
// where the destination lies inside `destArea` and the source inside its
// buffer.
void copyPixels(const KV_ImageBuffer& from, const KV_Rect& source, KV_ImageBuffer& to, const KV_Rect& dest,
                const KV_Rect& destArea)
{
    const std::int64_t sourceWidth = std::int64_t{source.right} - source.left;
    const std::int64_t sourceHeight = std::int64_t{source.bottom} - source.top;
    const std::int64_t destWidth = std::int64_t{dest.right} - dest.left;
    const std::int64_t destHeight = std::int64_t{dest.bottom} - dest.top;
    if (sourceWidth <= 0 || sourceHeight <= 0 || destWidth <= 0 || destHeight <= 0)
        return;
    const KV_Rect area = intersect(dest, destArea);
    for (int y = area.top; y < area.bottom; ++y) {
        const std::int64_t sy = source.top + (y - std::int64_t{dest.top}) * sourceHeight / destHeight;
        if (sy < from.bounds.top || sy >= from.bounds.bottom)
            continue;
        for (int x = area.left; x < area.right; ++x) {
            const std::int64_t sx = source.left + (x - std::int64_t{dest.left}) * sourceWidth / destWidth;
            if (sx < from.bounds.left || sx >= from.bounds.right)
                continue;
            to.at(x, y) = from.at(static_cast<int>(sx), static_cast<int>(sy));
        }
    }
}

} // namespace

void shapeImage(KV_ImageBuffer& image, const KV_Rect& bounds)
{
    const std::int64_t width = std::int64_t{bounds.right} - bounds.left;
    const std::int64_t height = std::int64_t{bounds.bottom} - bounds.top;
    if (width <= 0 || height <= 0 || width > kMaxImageSide || height > kMaxImageSide ||
        width * height > kMaxImagePixels)
        throw Error("an image of " + std::to_string(width) + " x " + std::to_string(height) +
                    " pixels cannot be made");
    const std::int64_t rowPixels = (width + 3) & ~std::int64_t{3};
    image.bounds = bounds;
    image.rowBytes = static_cast<int>(rowPixels * 4);
    image.pixels.assign(static_cast<std::size_t>(rowPixels * height), 0);
}

KV_DrawContext contextFor(KV_ImageBuffer& target, const KV_Rect& clip)
{
    KV_DrawContext context;
    context.target = &target;
    context.clip = clip;
    return context;
}

} // namespace korvane::toolbox

using korvane::toolbox::guarded;
using korvane::toolbox::guardedVoid;
using korvane::toolbox::saturate;

extern "C" {

// ---- Image buffers -----------------------------------------------------------

KORVANE_TOOLBOX_EXPORT KV_ImageBuffer* KV_MakeImageBuffer(const KV_Rect* iBounds)
{
    return guarded("KV_MakeImageBuffer", static_cast<KV_ImageBuffer*>(nullptr), [&]() -> KV_ImageBuffer* {
        if (!iBounds)
            return nullptr;
        auto image = std::make_unique<KV_ImageBuffer>();
        korvane::toolbox::shapeImage(*image, *iBounds);
        return image.release();
    });
}

KORVANE_TOOLBOX_EXPORT void KV_DestroyImageBuffer(KV_ImageBuffer* iImage)
{
    delete iImage;
}

KORVANE_TOOLBOX_EXPORT int KV_GetBufferRowBytes(const KV_ImageBuffer* iImage)
{
    return iImage ? iImage->rowBytes : 0;
}

KORVANE_TOOLBOX_EXPORT char* KV_GetBufferBaseAddress(KV_ImageBuffer* iImage)
{
    return iImage ? reinterpret_cast<char*>(iImage->pixels.data()) : nullptr;
}

KORVANE_TOOLBOX_EXPORT void KV_GetBufferBounds(const KV_ImageBuffer* iImage, KV_Rect* oRect)
{
    if (iImage && oRect)
        *oRect = iImage->bounds;
}

// ---- Drawing contexts --------------------------------------------------------

KORVANE_TOOLBOX_EXPORT KV_DrawContext* KV_MakeContextForImageBuffer(KV_ImageBuffer* iImage)
{
    return guarded("KV_MakeContextForImageBuffer", static_cast<KV_DrawContext*>(nullptr), [&]() -> KV_DrawContext* {
        if (!iImage)
            return nullptr;
        return new KV_DrawContext(korvane::toolbox::contextFor(*iImage, iImage->bounds));
    });
}

KORVANE_TOOLBOX_EXPORT KV_DrawContext* KV_MakeContextForDialog(KV_Dialog* iDialog)
{
    return guarded("KV_MakeContextForDialog", static_cast<KV_DrawContext*>(nullptr), [&]() -> KV_DrawContext* {
        if (!iDialog)
            return nullptr;
        return new KV_DrawContext(korvane::toolbox::contextFor(iDialog->canvas, iDialog->canvas.bounds));
    });
}

KORVANE_TOOLBOX_EXPORT void KV_DestroyContext(KV_DrawContext* iContext)
{
    delete iContext;
}

KORVANE_TOOLBOX_EXPORT void KV_SetClip(KV_DrawContext* ioContext, const KV_Rect* iClip)
{
    if (ioContext && iClip)
        ioContext->clip = *iClip;
}

KORVANE_TOOLBOX_EXPORT void KV_GetClip(const KV_DrawContext* iContext, KV_Rect* oClip)
{
    if (iContext && oClip)
        *oClip = iContext->clip;
}

KORVANE_TOOLBOX_EXPORT void KV_SetPenMode(KV_DrawContext* ioContext, KV_PenMode iPenMode)
{
    if (ioContext)
        ioContext->penMode = iPenMode == cKV_PenXOR ? cKV_PenXOR : cKV_PenColor;
}

KORVANE_TOOLBOX_EXPORT KV_PenMode KV_GetPenMode(const KV_DrawContext* iContext)
{
    return iContext ? iContext->penMode : cKV_PenColor;
}

KORVANE_TOOLBOX_EXPORT void KV_MoveTo(KV_DrawContext* ioContext, int iX, int iY)
{
    if (ioContext) {
        ioContext->penX = iX;
        ioContext->penY = iY;
    }
}

KORVANE_TOOLBOX_EXPORT void KV_LineTo(KV_DrawContext* ioContext, int iX, int iY)
{
    if (!ioContext)
        return;
    // Bresenham from the pen to (iX, iY), both ends drawn.
    const KV_Rect area = korvane::toolbox::drawable(*ioContext);
    const std::uint32_t color = korvane::toolbox::opaque(ioContext->fore);
    std::int64_t x = ioContext->penX, y = ioContext->penY;
    const std::int64_t dx = std::llabs(iX - x), dy = -std::llabs(iY - y);
    const std::int64_t sx = x < iX ? 1 : -1, sy = y < iY ? 1 : -1;
    std::int64_t error = dx + dy;
    for (;;) {
        if (x >= area.left && x < area.right && y >= area.top && y < area.bottom)
            korvane::toolbox::plot(*ioContext, area, static_cast<int>(x), static_cast<int>(y), color);
        if (x == iX && y == iY)
            break;
        const std::int64_t twice = 2 * error;
        if (twice >= dy) {
            error += dy;
            x += sx;
        }
        if (twice <= dx) {
            error += dx;
            y += sy;
        }
    }
    ioContext->penX = iX;
    ioContext->penY = iY;
}

KORVANE_TOOLBOX_EXPORT void KV_GetPenLocation(const KV_DrawContext* iContext, int* oX, int* oY)
{
    if (!iContext)
        return;
    if (oX)
        *oX = iContext->penX;
    if (oY)
        *oY = iContext->penY;
}

KORVANE_TOOLBOX_EXPORT void KV_SetForeColor(KV_DrawContext* ioContext, const KV_Color* iColor)
{
    if (ioContext && iColor)
        ioContext->fore = *iColor;
}

KORVANE_TOOLBOX_EXPORT void KV_GetForeColor(const KV_DrawContext* iContext, KV_Color* oColor)
{
    if (iContext && oColor)
        *oColor = iContext->fore;
}

KORVANE_TOOLBOX_EXPORT void KV_SetBackColor(KV_DrawContext* ioContext, const KV_Color* iColor)
{
    if (ioContext && iColor)
        ioContext->back = *iColor;
}

KORVANE_TOOLBOX_EXPORT void KV_GetBackColor(const KV_DrawContext* iContext, KV_Color* oColor)
{
    if (iContext && oColor)
        *oColor = iContext->back;
}

KORVANE_TOOLBOX_EXPORT void KV_FrameRect(KV_DrawContext* ioContext, const KV_Rect* iRect)
{
    if (ioContext && iRect)
        korvane::toolbox::frame(*ioContext, *iRect, korvane::toolbox::opaque(ioContext->fore));
}

KORVANE_TOOLBOX_EXPORT void KV_PaintRect(KV_DrawContext* ioContext, const KV_Rect* iRect)
{
    if (ioContext && iRect)
        korvane::toolbox::fill(*ioContext, *iRect, korvane::toolbox::opaque(ioContext->fore));
}

KORVANE_TOOLBOX_EXPORT void KV_EraseRect(KV_DrawContext* ioContext, const KV_Rect* iRect)
{
    if (!ioContext || !iRect)
        return;
    // Erasing paints the back colour whatever the pen mode.
    const KV_PenMode mode = ioContext->penMode;
    ioContext->penMode = cKV_PenColor;
    korvane::toolbox::fill(*ioContext, *iRect, korvane::toolbox::opaque(ioContext->back));
    ioContext->penMode = mode;
}

KORVANE_TOOLBOX_EXPORT void KV_FrameOval(KV_DrawContext* ioContext, const KV_Rect* iRect)
{
    if (ioContext && iRect)
        korvane::toolbox::oval(*ioContext, *iRect, true);
}

KORVANE_TOOLBOX_EXPORT void KV_PaintOval(KV_DrawContext* ioContext, const KV_Rect* iRect)
{
    if (ioContext && iRect)
        korvane::toolbox::oval(*ioContext, *iRect, false);
}

KORVANE_TOOLBOX_EXPORT void KV_DrawImage(KV_DrawContext* ioContext, const KV_ImageBuffer* iImage,
                                         const KV_Rect* iSourceRect, const KV_Rect* iDestRect)
{
    if (!ioContext || !iImage || !iSourceRect || !iDestRect)
        return;
    korvane::toolbox::copyPixels(*iImage, *iSourceRect, *ioContext->target, *iDestRect,
                                 korvane::toolbox::drawable(*ioContext));
}

KORVANE_TOOLBOX_EXPORT void KV_CaptureImage(const KV_DrawContext* iContext, KV_ImageBuffer* ioImage,
                                            const KV_Rect* iSourceRect, const KV_Rect* iDestRect)
{
    if (!iContext || !ioImage || !iSourceRect || !iDestRect)
        return;
    const KV_Rect readable = korvane::toolbox::intersect(*iSourceRect, korvane::toolbox::drawable(*iContext));
    if (korvane::toolbox::isEmpty(readable))
        return;
    korvane::toolbox::copyPixels(*iContext->target, *iSourceRect, *ioImage, *iDestRect, ioImage->bounds);
}

KORVANE_TOOLBOX_EXPORT void KV_HiliteRect(KV_DrawContext* ioContext, const KV_Rect* iBounds,
                                          const KV_Color* iHiliteColor, const KV_Color* iBackColor)
{
    if (!ioContext || !iBounds || !iHiliteColor || !iBackColor)
        return;
    const KV_Rect area = korvane::toolbox::intersect(*iBounds, korvane::toolbox::drawable(*ioContext));
    const std::uint32_t back = korvane::toolbox::opaque(*iBackColor) & 0x00FFFFFFu;
    const std::uint32_t hilite = korvane::toolbox::opaque(*iHiliteColor);
    for (int y = area.top; y < area.bottom; ++y)
        for (int x = area.left; x < area.right; ++x) {
            std::uint32_t& pixel = ioContext->target->at(x, y);
            if ((pixel & 0x00FFFFFFu) == back)
                pixel = hilite;
        }
}

// ---- Rectangles --------------------------------------------------------------

KORVANE_TOOLBOX_EXPORT int KV_GetRectWidth(const KV_Rect* iRect)
{
    return iRect ? saturate(std::int64_t{iRect->right} - iRect->left) : 0;
}

KORVANE_TOOLBOX_EXPORT int KV_GetRectHeight(const KV_Rect* iRect)
{
    return iRect ? saturate(std::int64_t{iRect->bottom} - iRect->top) : 0;
}

KORVANE_TOOLBOX_EXPORT void KV_SetRect(KV_Rect* oRect, int iLeft, int iTop, int iRight, int iBottom)
{
    if (oRect)
        *oRect = KV_Rect{iLeft, iTop, iRight, iBottom};
}

KORVANE_TOOLBOX_EXPORT int KV_IsRectEmpty(const KV_Rect* iRect)
{
    return iRect && korvane::toolbox::isEmpty(*iRect);
}

KORVANE_TOOLBOX_EXPORT int KV_IsPtInRect(int iX, int iY, const KV_Rect* iRect)
{
    return iRect && iX >= iRect->left && iX < iRect->right && iY >= iRect->top && iY < iRect->bottom;
}

KORVANE_TOOLBOX_EXPORT void KV_UnionRects(const KV_Rect* iRect1, const KV_Rect* iRect2, KV_Rect* oUnion)
{
    if (!iRect1 || !iRect2 || !oUnion)
        return;
    // An empty rectangle adds nothing.
    const KV_Rect a = *iRect1, b = *iRect2;
    if (korvane::toolbox::isEmpty(a))
        *oUnion = b;
    else if (korvane::toolbox::isEmpty(b))
        *oUnion = a;
    else
        *oUnion = KV_Rect{std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
                          std::max(a.bottom, b.bottom)};
}

KORVANE_TOOLBOX_EXPORT int KV_IntersectRects(const KV_Rect* iRect1, const KV_Rect* iRect2, KV_Rect* oIntersection)
{
    if (!iRect1 || !iRect2)
        return 0;
    KV_Rect both = korvane::toolbox::intersect(*iRect1, *iRect2);
    const bool empty = korvane::toolbox::isEmpty(both);
    if (empty)
        both = KV_Rect{0, 0, 0, 0};
    if (oIntersection)
        *oIntersection = both;
    return !empty;
}

KORVANE_TOOLBOX_EXPORT void KV_OffsetRect(KV_Rect* ioRect, int iOffsetX, int iOffsetY)
{
    if (!ioRect)
        return;
    ioRect->left = saturate(std::int64_t{ioRect->left} + iOffsetX);
    ioRect->right = saturate(std::int64_t{ioRect->right} + iOffsetX);
    ioRect->top = saturate(std::int64_t{ioRect->top} + iOffsetY);
    ioRect->bottom = saturate(std::int64_t{ioRect->bottom} + iOffsetY);
}

KORVANE_TOOLBOX_EXPORT void KV_InsetRect(KV_Rect* ioRect, int iInsetX, int iInsetY)
{
    if (!ioRect)
        return;
    ioRect->left = saturate(std::int64_t{ioRect->left} + iInsetX);
    ioRect->right = saturate(std::int64_t{ioRect->right} - iInsetX);
    ioRect->top = saturate(std::int64_t{ioRect->top} + iInsetY);
    ioRect->bottom = saturate(std::int64_t{ioRect->bottom} - iInsetY);
}

KORVANE_TOOLBOX_EXPORT int KV_AreRectsEqual(const KV_Rect* iRect1, const KV_Rect* iRect2)
{
    return iRect1 && iRect2 && iRect1->left == iRect2->left && iRect1->top == iRect2->top &&
           iRect1->right == iRect2->right && iRect1->bottom == iRect2->bottom;
}

} // extern "C"
