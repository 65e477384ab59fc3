// DialogObjects.h - what the host's dialog, control, image buffer and
// drawing context handles hold, and the drawing they share.
//
// One dialog owns its controls and a canvas: the dialog's pixels, which user
// controls draw into. Everything a plug-in hands the host for a dialog
// (routines, extra data) lives on these objects, reached from the handles.
#pragma once

#include "KVToolbox.h"
#include "korvane/DialogSession.h"
#include "korvane/DialogTemplate.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct KV_ImageBuffer {
    KV_Rect bounds{};
    int rowBytes = 0;
    std::vector<std::uint32_t> pixels;  // rowBytes / 4 per row

    int width() const { return bounds.right - bounds.left; }
    int height() const { return bounds.bottom - bounds.top; }
    int rowPixels() const { return rowBytes / 4; }
    // The pixel at (x, y) of the buffer's own coordinates; the caller has
    // checked that the point lies inside the bounds.
    std::size_t indexOf(int x, int y) const
    {
        return static_cast<std::size_t>(y - bounds.top) * static_cast<std::size_t>(rowPixels()) +
               static_cast<std::size_t>(x - bounds.left);
    }
    std::uint32_t& at(int x, int y) { return pixels[indexOf(x, y)]; }
    std::uint32_t at(int x, int y) const { return pixels[indexOf(x, y)]; }
};

struct KV_DrawContext {
    KV_ImageBuffer* target = nullptr;
    KV_Rect clip{};  // in the target's coordinates
    KV_PenMode penMode = cKV_PenColor;
    int penX = 0;
    int penY = 0;
    KV_Color fore{0, 0, 0};
    KV_Color back{255, 255, 255};
    int textSize = 12;
    int textStyle = 0;
};

struct KV_Control {
    KV_Dialog* dialog = nullptr;
    int id = 0;
    KV_ControlType kind = cKV_NoControlType;
    KV_Rect bounds{};
    std::string title;  // Mac OS Roman
    int value = 0;
    int maximum = 0;
    bool enabled = true;
    bool visible = true;
    bool drawImmediate = false;
    bool invalid = false;
    std::string editText;  // Mac OS Roman
    int selectionStart = 0;
    int selectionEnd = 0;
    KV_EditFilterType filter = cKV_NoFilter;
    KV_EditFilterFunction filterFunction = nullptr;
    int red = 0, green = 0, blue = 0, alpha = 255;
    std::vector<std::string> menu;  // Mac OS Roman
    korvane::DialogRole role = korvane::DialogRole::none;
    void* extraData = nullptr;
    int imageID = 0;
    int labelPosition = 0;
    int iconPosition = 0;
    KV_ControlHitFunction hit = nullptr;
    KV_UserDrawFunction draw = nullptr;
    KV_UserClickFunction click = nullptr;
    KV_UserMouseMovedFunction mouseMoved = nullptr;
};

struct KV_Dialog {
    std::string title;  // Mac OS Roman
    int left = 0;
    int top = 0;
    std::vector<std::unique_ptr<KV_Control>> controls;
    KV_Control* keyControl = nullptr;
    void* extraData = nullptr;
    KV_DialogHitFunction hit = nullptr;
    KV_DialogKeyFilter keyFilter = nullptr;
    KV_ImageBuffer canvas;  // bounds (0, 0, width, height)

    bool running = false;
    bool ended = false;
    int result = 0;
    // While a user control's click routine runs: the pointer it tracks.
    korvane::PointerSource pointer;
};

namespace korvane::toolbox {

// A 32-bit buffer covering `bounds`; rows are padded to 16 bytes. Throws
// Error for an empty or oversized rectangle.
void shapeImage(KV_ImageBuffer& image, const KV_Rect& bounds);
// A context drawing into `target`, clipped to `clip` (and always to the
// target's bounds).
KV_DrawContext contextFor(KV_ImageBuffer& target, const KV_Rect& clip);
// Runs the control's draw routine into its dialog's canvas, clipped to the
// control; clears its invalid mark.
void drawControl(KV_Control& control);
// Redraws every visible control of the dialog that is marked invalid.
void redrawInvalid(KV_Dialog& dialog);

} // namespace korvane::toolbox
