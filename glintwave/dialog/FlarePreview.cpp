/*
 * FlarePreview.cpp - the settings dialog's flare preview.
 *
 * The preview renders the flare as the current settings would, over black,
 * with the light where the user put it, through GenerateFlare: the routines
 * of a real frame. The frame is the preview's own (scale the smaller of its
 * width and height, centre in the middle), and the render is resumable: a
 * settings change only restarts it (SetupPreview), the rows are rendered
 * when the control is drawn (UpdatePreview).
 *
 * Full colour renders one row per call straight into the host's 32-bit
 * image buffer. The wireframe sketches ten rows at a time into an 8-bit
 * scratch and copies them over as two tones: untouched background (non-zero
 * bytes) black, sketched lines (zero bytes) white.
 *
 * The buffers live from InitPreview to FinishPreview, while one dialog is
 * open. What the host reports about its buffer (bounds, row bytes, base) is
 * checked before a byte is written.
 */
#include <stdlib.h>
#include <string.h>

#include "FlareRender.h"
#include "GlintwaveData.h"
#include "GlintwaveInterface.h"
#include "KVToolbox.h"
#include "PluginClient.h"
#include "RectUtils.h"

namespace {

KV_ImageBuffer* previewBuffer = nullptr;
unsigned char* wireframeBuffer = nullptr;
int64_t wireframeWidth = 0;  /* columns the scratch was made for */
int32_t previewScanline = 0;
double previewXPos = 0.25;
double previewYPos = 0.25;

/* Rows the wireframe scratch holds: one renderer call each. */
constexpr int32_t kWireframeRows = 10;
/* Where the light starts, as fractions of the preview's width and height. */
constexpr double kStartPosition = 0.25;

constexpr uint32_t kWireframeBackground = 0xFF000000u;
constexpr uint32_t kWireframeLine = 0xFFFFFFFFu;
constexpr uint32_t kFullColorLight = 0xFFFFFFFFu;

/* The host's preview buffer as far as it can be written: its bounds, a base
   address and row bytes that hold a whole row. False when there is nothing
   safe to write. */
struct PreviewPixels {
    KV_Rect bounds;
    int32_t width;
    int32_t rowBytes;
    char* base;
};

bool GetPreviewPixels(PreviewPixels* thePixels)
{
    if (previewBuffer == nullptr)
        return false;
    KV_Rect bounds = {0, 0, 0, 0};
    KV_GetBufferBounds(previewBuffer, &bounds);
    const int64_t width = (int64_t)bounds.right - bounds.left;
    const int64_t height = (int64_t)bounds.bottom - bounds.top;
    const int32_t rowBytes = KV_GetBufferRowBytes(previewBuffer);
    char* base = KV_GetBufferBaseAddress(previewBuffer);
    if (base == nullptr || width <= 0 || height <= 0 || width > INT32_MAX / 4 || rowBytes < width * 4)
        return false;
    thePixels->bounds = bounds;
    thePixels->width = (int32_t)width;
    thePixels->rowBytes = rowBytes;
    thePixels->base = base;
    return true;
}

/* right - left without overflow; bounds the host got wrong give 0. */
int32_t Span(int theLow, int theHigh)
{
    const int64_t span = (int64_t)theHigh - theLow;
    return span < 0 ? 0 : span > INT32_MAX ? INT32_MAX : (int32_t)span;
}

char* RowAddress(const PreviewPixels* thePixels, int32_t theRow)
{
    return thePixels->base + ((int64_t)theRow - thePixels->bounds.top) * thePixels->rowBytes;
}

void SetBufferRows(GlintwaveBuffer* theBuffer, int32_t theFirstRow, int32_t theRows, int32_t theWidth)
{
    SetLRect(&theBuffer->bufferRect, 0, theFirstRow, theWidth, theFirstRow + theRows);
}

bool RowsInFrame(PluginDataRec* theData)
{
    L_Rect tempRect;
    return SectLRect(&theData->flareRect, &theData->flarePixelBuffer.bufferRect, &tempRect);
}

void RenderWireframe(const PreviewPixels* thePixels)
{
    ControlDataRec* theControl = TheControl();
    PluginDataRec* theData = TheData();
    const int32_t width = thePixels->width;
    if (wireframeBuffer == nullptr || width > wireframeWidth)
        return;
    GlintwaveBuffer* theBuffer = &theData->flarePixelBuffer;
    theBuffer->bufferBase = wireframeBuffer;
    theBuffer->bufferRowBytes = width;
    theBuffer->bufferDepth = 8;
    theBuffer->bufferIndex = 0;

    int32_t theResult = kPluginNoError;
    while (previewScanline < thePixels->bounds.bottom && theResult == kPluginNoError) {
        const int32_t left = thePixels->bounds.bottom - previewScanline;
        const int32_t step = left < kWireframeRows ? left : kWireframeRows;
        memset(wireframeBuffer, 255, (size_t)step * (size_t)width);
        SetBufferRows(theBuffer, previewScanline - thePixels->bounds.top, step, width);
        if (RowsInFrame(theData))
            theResult = GenerateFlare(theControl, theData, 8, false);
        if (theResult != kPluginNoError)
            break;  /* the batch is tried again at the next draw */
        for (int32_t row = 0; row < step; ++row) {
            char* thePixel = RowAddress(thePixels, previewScanline + row);
            const unsigned char* theSketch = wireframeBuffer + (size_t)row * (size_t)width;
            for (int32_t x = 0; x < width; ++x) {
                const uint32_t value = theSketch[x] != 0 ? kWireframeBackground : kWireframeLine;
                memcpy(thePixel + (size_t)x * 4, &value, sizeof value);
            }
        }
        previewScanline += step;
    }
}

void RenderFullColor(const PreviewPixels* thePixels)
{
    ControlDataRec* theControl = TheControl();
    PluginDataRec* theData = TheData();
    const int32_t width = thePixels->width;
    GlintwaveBuffer* theBuffer = &theData->flarePixelBuffer;
    theBuffer->bufferRowBytes = thePixels->rowBytes;
    theBuffer->bufferDepth = 32;
    theBuffer->bufferIndex = 0;

    int32_t theResult = kPluginNoError;
    while (previewScanline < thePixels->bounds.bottom && theResult == kPluginNoError) {
        char* theRow = RowAddress(thePixels, previewScanline);
        memset(theRow, 0, (size_t)width * 4);
        theBuffer->bufferBase = theRow;
        SetBufferRows(theBuffer, previewScanline - thePixels->bounds.top, 1, width);
        if (RowsInFrame(theData))
            theResult = GenerateFlare(theControl, theData, 32, false);
        /* The row counts as done even when the renderer failed. */
        previewScanline += 1;
    }
}

} // namespace

void InitPreview(KV_Dialog* theDialog, int theItem)
{
    KV_Control* theControl = KV_FindControlByID(theDialog, theItem);
    if (theControl == nullptr)
        return;
    KV_Rect theRect = {0, 0, 0, 0};
    KV_GetControlBounds(theControl, &theRect);
    KV_InsetRect(&theRect, 1, 1);

    previewBuffer = KV_MakeImageBuffer(&theRect);
    if (previewBuffer != nullptr)
        ErasePreview();

    const int64_t width = (int64_t)theRect.right - theRect.left;
    wireframeWidth = 0;
    wireframeBuffer = nullptr;
    if (width > 0 && width <= INT32_MAX / kWireframeRows) {
        wireframeBuffer = (unsigned char*)malloc((size_t)width * kWireframeRows);
        if (wireframeBuffer != nullptr)
            wireframeWidth = width;
    }
    previewScanline = theRect.top;
    previewXPos = previewYPos = kStartPosition;
    KV_InvalControl(theControl);
}

void ErasePreview(void)
{
    PreviewPixels thePixels;
    if (!GetPreviewPixels(&thePixels))
        return;
    for (int32_t row = thePixels.bounds.top; row < thePixels.bounds.bottom; ++row)
        memset(RowAddress(&thePixels, row), 0, (size_t)thePixels.width * 4);
}

int32_t SetupPreview(void)
{
    if (previewBuffer == nullptr)
        return kPluginNoError;
    KV_Rect bounds = {0, 0, 0, 0};
    KV_GetBufferBounds(previewBuffer, &bounds);
    const int32_t width = Span(bounds.left, bounds.right);
    const int32_t height = Span(bounds.top, bounds.bottom);
    previewScanline = bounds.top;

    if (PluginDataRec* theData = TheData()) {
        SetLRect(&theData->flareRect, 0, 0, width, height);
        const double theScale = width < height ? width : height;
        theData->flareXScale = theScale;
        theData->flareYScale = theScale;
        theData->flareXCenter = 0.5 * width;
        theData->flareYCenter = 0.5 * height;
        theData->flareXPosition = previewXPos * width;
        theData->flareYPosition = previewYPos * height;
        /* Only the horizontal blur position follows the light; the vertical
           one keeps what it held (kept deliberately). */
        theData->flareBlurXPosition = theData->flareXPosition;
        if (previewWireframeFlag) {
            theData->flareLightColor.colorValue = 0;
            theData->flareLightIntensity = 0.0;
        } else {
            theData->flareLightColor.colorValue = kFullColorLight;
            theData->flareLightIntensity = 1.0;
        }
        theData->flareLightRotation = 0.0;
        theData->flareLightSize = 0.0;
        GlintwaveBuffer* theBuffer = &theData->flarePixelBuffer;
        theBuffer->bufferBase = nullptr;
        theBuffer->bufferRowBytes = KV_GetBufferRowBytes(previewBuffer);
        theBuffer->bufferDepth = 32;
        theBuffer->bufferRect = theData->flareRect;
    }

    ResetFlareColors();
    (void)CheckData(false, false);
    return kPluginNoError;
}

void UpdatePreview(void)
{
    PreviewPixels thePixels;
    if (!GetPreviewPixels(&thePixels))
        return;
    if (previewScanline < thePixels.bounds.top)
        previewScanline = thePixels.bounds.top;
    if (previewScanline >= thePixels.bounds.bottom)
        return;
    PluginDataRec* theData = TheData();
    if (theData == nullptr || TheControl() == nullptr)
        return;
    /* No status record: the preview is never reported as render progress. */
    theData->theInfo = nullptr;
    theData->flareHostProc = sTheHostProc;
    theData->flareHostReference = sTheHostReference;

    if (previewWireframeFlag)
        RenderWireframe(&thePixels);
    else
        RenderFullColor(&thePixels);
}

void FinishPreview(void)
{
    KV_DestroyImageBuffer(previewBuffer);
    previewBuffer = nullptr;
    if (wireframeBuffer != nullptr) {
        free(wireframeBuffer);
        wireframeBuffer = nullptr;
    }
    wireframeWidth = 0;
}

void PreviewWindow(const KV_Control* iControl, KV_DrawContext* iContext)
{
    UpdatePreview();
    KV_Rect theBounds = {0, 0, 0, 0};
    KV_GetControlBounds(iControl, &theBounds);
    KV_FrameRect(iContext, &theBounds);
    KV_InsetRect(&theBounds, 1, 1);
    if (previewBuffer != nullptr) {
        KV_Rect theSource = {0, 0, 0, 0};
        KV_GetBufferBounds(previewBuffer, &theSource);
        KV_DrawImage(iContext, previewBuffer, &theSource, &theBounds);
    }
}

int PreviewHitFunction(const KV_Control* iControl, KV_DrawContext* iContext, int /*iModifierKeys*/, int iClickH,
                       int iClickV)
{
    KV_Rect r = {0, 0, 0, 0};
    KV_GetControlBounds(iControl, &r);
    KV_InsetRect(&r, 1, 1);
    /* An empty preview has no position to take. */
    if (r.right <= r.left || r.bottom <= r.top)
        return 0;
    int h = iClickH;
    int v = iClickV;
    while (KV_TrackMouseDown(iControl, &h, &v)) {
        h = h < r.left ? r.left : h;
        h = h > r.right - 1 ? r.right - 1 : h;
        v = v < r.top ? r.top : v;
        v = v > r.bottom - 1 ? r.bottom - 1 : v;
        previewXPos = (double)((int64_t)h - r.left) / (double)((int64_t)r.right - r.left);
        previewYPos = (double)((int64_t)v - r.top) / (double)((int64_t)r.bottom - r.top);
        (void)SetupPreview();
        PreviewWindow(iControl, iContext);
    }
    return 0;
}
