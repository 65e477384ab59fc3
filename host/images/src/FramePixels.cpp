// FramePixels.cpp - 'GENF' buffers at 48, 32 and 8 bits and their images.

#include "korvane/FramePixels.h"

#include "korvane/ImageFile.h"

#include <algorithm>
#include <stdexcept>

namespace korvane {
namespace {

constexpr float kFullLevel = 16320.0f;  // 255 x 64

std::size_t pixelCount(std::int32_t width, std::int32_t height)
{
    if (width < 1 || height < 1)
        throw Error("a frame needs a positive width and height");
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

std::uint8_t byteOf(std::uint32_t pixel, int shift)
{
    return static_cast<std::uint8_t>(pixel >> shift);
}

// A float sample 0..1 as a level 0..16320, clamped and rounded.
std::uint16_t levelFromFloat(float value)
{
    if (!(value > 0.0f))
        return 0;
    if (value >= 1.0f)
        return static_cast<std::uint16_t>(kFullLevel);
    return static_cast<std::uint16_t>(value * kFullLevel + 0.5f);
}

} // namespace

FramePixels::FramePixels(std::int32_t width, std::int32_t height, std::int16_t depth)
    : width_(width), height_(height), depth_(depth)
{
    const std::size_t count = pixelCount(width, height);
    switch (depth) {
    case 48: rgb48_.assign(count * 3, 0); break;
    case 32: argb32_.assign(count, 0xFF000000u); break;
    case 8: index8_.assign(count, 0); break;
    default: throw Error("a frame's depth is 48, 32 or 8");
    }
}

FramePixels FramePixels::fromImage(const OIIO::ImageBuf& rgb, std::int16_t depth)
{
    const OIIO::ImageSpec& spec = rgb.spec();
    if (depth == 8)
        throw Error("a sketch frame starts empty, not from an image");
    FramePixels frame(spec.width, spec.height, depth);
    const std::size_t count = pixelCount(spec.width, spec.height);
    // Integer images hold 16-bit samples, rounded to levels exactly; float
    // ones are clamped to 0..1.
    std::vector<std::uint16_t> levels(count * 3);
    if (spec.format.basetype == OIIO::TypeDesc::FLOAT) {
        std::vector<float> samples(count * 3);
        rgb.get_pixels(OIIO::ROI::All(), OIIO::TypeDesc::FLOAT, samples.data());
        std::transform(samples.begin(), samples.end(), levels.begin(), levelFromFloat);
    } else {
        rgb.get_pixels(OIIO::ROI::All(), OIIO::TypeDesc::UINT16, levels.data());
        std::transform(levels.begin(), levels.end(), levels.begin(), levelFrom16Bit);
    }
    if (depth == 48) {
        frame.rgb48_ = std::move(levels);
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            frame.argb32_[i] = 0xFF000000u | std::uint32_t{static_cast<std::uint8_t>(levels[i * 3] / 64)} << 16 |
                               std::uint32_t{static_cast<std::uint8_t>(levels[i * 3 + 1] / 64)} << 8 |
                               std::uint32_t{static_cast<std::uint8_t>(levels[i * 3 + 2] / 64)};
        }
    }
    return frame;
}

FrameBuffer FramePixels::frameBuffer(std::int32_t sketchIndex)
{
    FrameBuffer buffer;
    buffer.width = width_;
    buffer.height = height_;
    buffer.depth = depth_;
    buffer.index = sketchIndex;
    switch (depth_) {
    case 48:
        buffer.base = rgb48_.data();
        buffer.rowBytes = width_ * 6;
        break;
    case 32:
        buffer.base = argb32_.data();
        buffer.rowBytes = width_ * 4;
        break;
    default:
        buffer.base = index8_.data();
        buffer.rowBytes = width_;
        break;
    }
    return buffer;
}

OIIO::ImageBuf FramePixels::toImage(bool asFloat) const
{
    if (depth_ == 8)
        throw std::logic_error("a sketch is drawn over an image, not turned into one");
    const OIIO::TypeDesc type = asFloat ? OIIO::TypeDesc::FLOAT
                                        : (depth_ == 48 ? OIIO::TypeDesc::UINT16 : OIIO::TypeDesc::UINT8);
    OIIO::ImageBuf image(OIIO::ImageSpec(width_, height_, 3, type));
    const std::size_t count = pixelCount(width_, height_);
    if (asFloat) {
        std::vector<float> samples(count * 3);
        for (std::size_t i = 0; i < count; ++i) {
            for (int c = 0; c < 3; ++c) {
                samples[i * 3 + c] = depth_ == 48 ? rgb48_[i * 3 + c] / kFullLevel
                                                  : byteOf(argb32_[i], 16 - 8 * c) / 255.0f;
            }
        }
        image.set_pixels(OIIO::ROI::All(), OIIO::TypeDesc::FLOAT, samples.data());
    } else if (depth_ == 48) {
        std::vector<std::uint16_t> samples(count * 3);
        std::transform(rgb48_.begin(), rgb48_.end(), samples.begin(), levelTo16Bit);
        image.set_pixels(OIIO::ROI::All(), OIIO::TypeDesc::UINT16, samples.data());
    } else {
        std::vector<std::uint8_t> samples(count * 3);
        for (std::size_t i = 0; i < count; ++i)
            for (int c = 0; c < 3; ++c)
                samples[i * 3 + c] = byteOf(argb32_[i], 16 - 8 * c);
        image.set_pixels(OIIO::ROI::All(), OIIO::TypeDesc::UINT8, samples.data());
    }
    return image;
}

void FramePixels::addTo(OIIO::ImageBuf& floatImage) const
{
    const OIIO::ImageSpec& spec = floatImage.spec();
    if (spec.width != width_ || spec.height != height_ || spec.nchannels < 3 ||
        spec.format != OIIO::TypeDesc::FLOAT)
        throw Error("the flare is added to a float image of the frame's size");
    std::size_t at = 0;
    for (OIIO::ImageBuf::Iterator<float> pixel(floatImage); !pixel.done(); ++pixel, ++at) {
        for (int c = 0; c < 3; ++c) {
            const float flare =
                depth_ == 48 ? rgb48_[at * 3 + c] / kFullLevel : byteOf(argb32_[at], 16 - 8 * c) / 255.0f;
            pixel[c] = pixel[c] + flare;
        }
    }
}

void FramePixels::drawSketchOver(OIIO::ImageBuf& image) const
{
    const OIIO::ImageSpec& spec = image.spec();
    if (depth_ != 8 || spec.width != width_ || spec.height != height_)
        throw Error("the image and the sketch differ in size");
    // setpixel converts to the image's own sample type; a sketch has few points.
    const std::vector<float> white(static_cast<std::size_t>(spec.nchannels), 1.0f);
    std::size_t at = 0;
    for (std::int32_t y = 0; y < height_; ++y)
        for (std::int32_t x = 0; x < width_; ++x, ++at)
            if (index8_[at] != 0)
                image.setpixel(spec.x + x, spec.y + y, white.data(), spec.nchannels);
}

} // namespace korvane
