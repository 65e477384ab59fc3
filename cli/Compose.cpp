// Compose.cpp - the frame joined by the chosen blend, and its colour
// described in the image's metadata.

#include "Compose.h"

#include "HostBlend.h"
#include "LinearBlend.h"

#include "korvane/ColourSpaces.h"

namespace glintwave::cli {

std::optional<Blend> blendNamed(const std::string& name)
{
    if (name == "linear")
        return Blend::linear;
    if (name == "host")
        return Blend::host;
    return std::nullopt;
}

const char* blendName(Blend blend)
{
    return blend == Blend::host ? "host" : "linear";
}

ComposedFrame composeFrame(const Painter& paint, int depth, const std::optional<korvane::RgbImage>& background,
                           FrameSize size, const std::filesystem::path& output, const CompositeOptions& options)
{
    ComposedFrame frame = depth == 8 || options.blend == Blend::host
                              ? composeHostBlend(paint, depth, background, size, output)
                              : composeLinear(paint, depth, background, size, output, options.exposure);
    OIIO::ImageSpec& spec = frame.image.specmod();
    // Not the image library's own colour space tag: its TIFF writer turns
    // that into a directory it then writes damaged.
    spec.attribute("glintwave:colorspace", frame.colourSpace);
    spec.attribute("glintwave:blend", depth == 8 ? "sketch" : blendName(options.blend));
    if (options.blend == Blend::linear && depth != 8)
        spec.attribute("glintwave:exposure", static_cast<float>(options.exposure));
    if (korvane::isFloatFormat(output))
        spec.attribute("chromaticities", OIIO::TypeDesc(OIIO::TypeDesc::FLOAT, 8),
                       korvane::kRec709Chromaticities.data());
    return frame;
}

} // namespace glintwave::cli
