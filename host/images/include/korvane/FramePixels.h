// FramePixels.h - the pixel buffer a plug-in paints in 'GENF', at one of the
// three depths of the host interface, and its conversions to images.
//
//   48  three unsigned 16-bit channels per pixel, red, green, blue, full
//       level 16320 (255 x 64); an 8-bit level v is v x 64.
//   32  one 32-bit pixel: alpha, red, green, blue in bits 24-31, 16-23, 8-15, 0-7.
//   8   one byte per pixel: a colour index (the plug-in's wireframe sketch).
//
// Rows are packed, top row first; frame coordinates start at (0, 0).
// Conversions to images (OpenImageIO buffers, three channels) keep the
// levels as they are: 16320 is 1.0 in a float image and 65535 in a 16-bit one.
#pragma once

#include "korvane/PluginHost.h"

#include <OpenImageIO/imagebuf.h>

#include <cstdint>
#include <vector>

namespace korvane {

class FramePixels {
public:
    // A black frame (every index 0). Throws std::bad_alloc when memory runs out.
    FramePixels(std::int32_t width, std::int32_t height, std::int16_t depth);

    // A 48- or 32-bit frame holding an image's red, green, blue (16-bit
    // samples rounded to the nearest level; float samples clamped to 0..1).
    static FramePixels fromImage(const OIIO::ImageBuf& rgb, std::int16_t depth);

    std::int32_t width() const { return width_; }
    std::int32_t height() const { return height_; }
    std::int16_t depth() const { return depth_; }

    // The 'GENF' description of the whole frame; the index an 8-bit sketch
    // writes is `sketchIndex`.
    FrameBuffer frameBuffer(std::int32_t sketchIndex = 255);

    // A three-channel image of a 48- or 32-bit frame: UINT16 (48), UINT8 (32)
    // or FLOAT (levels over full level) when `asFloat`.
    OIIO::ImageBuf toImage(bool asFloat) const;

    // Adds a 48- or 32-bit frame painted over black to a FLOAT image of the
    // same size, in linear float: values above 1.0 stay.
    void addTo(OIIO::ImageBuf& floatImage) const;

    // Sets every pixel of `image` whose sketch index is non-zero to full
    // white, in the image's own sample type.
    void drawSketchOver(OIIO::ImageBuf& image) const;

private:
    std::int32_t width_;
    std::int32_t height_;
    std::int16_t depth_;
    std::vector<std::uint16_t> rgb48_;
    std::vector<std::uint32_t> argb32_;
    std::vector<std::uint8_t> index8_;
};

} // namespace korvane
