// Compose.cpp - the frame over black, over a background, or as a sketch.

#include "Compose.h"

namespace glintwave::cli {

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

OIIO::ImageBuf composeFrame(const Painter& paint, int depth, const std::optional<korvane::RgbImage>& background,
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

} // namespace glintwave::cli
