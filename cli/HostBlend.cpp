// HostBlend.cpp - levels painted into the frame, and the sketch.

#include "HostBlend.h"

#include "korvane/ColourSpaces.h"

namespace glintwave::cli {
namespace {

// The stored sample type: half floats in EXR and HDR, else what the render
// holds (16 bits for 48-bit frames, 8 for 32-bit frames and sketches, the
// background's own for a sketch over it).
OIIO::TypeDesc sampleTypeFor(const std::filesystem::path& output, int depth,
                             const std::optional<korvane::RgbImage>& background)
{
    if (korvane::isFloatFormat(output))
        return OIIO::TypeDesc::HALF;
    if (background && background->kind == korvane::SampleKind::Float)
        return OIIO::TypeDesc::UINT16;
    if (depth == 8 && background)
        return background->kind == korvane::SampleKind::Int16 ? OIIO::TypeDesc::UINT16 : OIIO::TypeDesc::UINT8;
    return depth == 48 ? OIIO::TypeDesc::UINT16 : OIIO::TypeDesc::UINT8;
}

OIIO::ImageBuf paintedImage(const Painter& paint, int depth, const std::optional<korvane::RgbImage>& background,
                            FrameSize size, bool floatOutput)
{
    const auto frameDepth = static_cast<std::int16_t>(depth);
    if (frameDepth == 8) {
        korvane::FramePixels sketch(size.width, size.height, 8);
        paint(sketch);
        OIIO::ImageBuf image = background ? background->pixels.copy(OIIO::TypeUnknown)
                                          : OIIO::ImageBuf(OIIO::ImageSpec(size.width, size.height, 3,
                                                                           OIIO::TypeDesc::UINT8));
        sketch.drawSketchOver(image);
        return image;
    }
    if (background && background->kind == korvane::SampleKind::Float) {
        korvane::FramePixels flare(size.width, size.height, frameDepth);
        paint(flare);
        OIIO::ImageBuf image = background->pixels.copy(OIIO::TypeUnknown);
        flare.addTo(image);
        return image;
    }
    korvane::FramePixels frame = background ? korvane::FramePixels::fromImage(background->pixels, frameDepth)
                                            : korvane::FramePixels(size.width, size.height, frameDepth);
    paint(frame);
    OIIO::ImageBuf image = frame.toImage(floatOutput);
    if (background) {
        for (const OIIO::ParamValue& attribute : background->pixels.spec().extra_attribs)
            image.specmod().attribute(attribute.name().string(), attribute.type(), attribute.data());
    }
    return image;
}

} // namespace

ComposedFrame composeHostBlend(const Painter& paint, int depth, const std::optional<korvane::RgbImage>& background,
                               FrameSize size, const std::filesystem::path& output)
{
    const bool floatBackground = background && background->kind == korvane::SampleKind::Float;
    ComposedFrame frame;
    frame.image = paintedImage(paint, depth, background, size, korvane::isFloatFormat(output));
    frame.sampleType = sampleTypeFor(output, depth, background);
    // Levels are sRGB-encoded; only a float background's values are linear.
    frame.colourSpace = std::string(floatBackground ? korvane::kLinearSpace : korvane::kSrgbSpace);
    return frame;
}

} // namespace glintwave::cli
