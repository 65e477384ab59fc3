// Compose.cpp - the frame joined by the chosen blend, and its colour
// described in the image's metadata.

#include "Compose.h"

#include "CommandLine.h"
#include "HostBlend.h"
#include "LinearBlend.h"

#include "korvane/ColourSpaces.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <stdexcept>
#include <utility>

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

namespace {

void describeColour(OIIO::ImageBuf& image, const ComposedFrame& frame, int depth, const CompositeOptions& options,
                    bool floatFile)
{
    OIIO::ImageSpec& spec = image.specmod();
    // Not the image library's own colour space tag: its TIFF writer turns
    // that into a directory it then writes damaged.
    spec.attribute("glintwave:colorspace", frame.colourSpace);
    spec.attribute("glintwave:blend", depth == 8 ? "sketch" : blendName(options.blend));
    if (options.blend == Blend::linear && depth != 8)
        spec.attribute("glintwave:exposure", static_cast<float>(options.exposure));
    // The built-in spaces' primaries are Rec.709; a configuration's spaces
    // may have any, which it does not say in a form to copy.
    if (floatFile && !options.spaces)
        spec.attribute("chromaticities", OIIO::TypeDesc(OIIO::TypeDesc::FLOAT, 8),
                       korvane::kRec709Chromaticities.data());
}

} // namespace

void checkCompositeOptions(const CompositeOptions& options, int depth, const std::filesystem::path& output)
{
    const bool linearOnly = options.exposure != 0.0 || options.flareOnly || options.flareAlpha || options.passes ||
                            !options.inputSpace.empty() || !options.workingSpace.empty() ||
                            !options.outputSpace.empty();
    if (linearOnly && (options.blend == Blend::host || depth == 8))
        throw UsageError(std::string("--exposure, --flare-only, --flare-alpha, --passes and the colour spaces work "
                                     "in linear light; they do not go with ") +
                         (depth == 8 ? "the sketch (--depth 8)" : "--blend host, which paints the flare's levels "
                                                                   "as they are"));
    std::string extension = output.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if ((options.flareOnly || options.passes) && extension == ".hdr")
        throw UsageError(output.string() + ": HDR files hold no alpha or layers; write EXR for --flare-only and "
                                           "--passes");
    const korvane::ColourSpaces builtIn;
    const korvane::ColourSpaces& spaces = options.spaces ? *options.spaces : builtIn;
    const std::pair<const std::string&, const char*> names[] = {{options.inputSpace, "--input-colorspace"},
                                                                {options.workingSpace, "--working-colorspace"},
                                                                {options.outputSpace, "--output-colorspace"}};
    for (const auto& [name, option] : names) {
        try {
            if (!name.empty())
                spaces.find(name, option);
        } catch (const korvane::Error& e) {
            throw UsageError(e.what());
        }
    }
}

std::shared_ptr<const korvane::ColourSpaces> colourSpacesFor(const std::string& file)
{
    std::string chosen = file;
    if (chosen.empty())
        if (const char* environment = std::getenv("OCIO"))
            chosen = environment;
    if (chosen.empty())
        return nullptr;
    return std::make_shared<const korvane::ColourSpaces>(korvane::ColourSpaces::fromConfig(chosen));
}

std::filesystem::path sideImageFile(const std::filesystem::path& output, const std::string& suffix)
{
    std::filesystem::path file = output;
    file.replace_filename(output.stem().string() + "." + suffix + output.extension().string());
    return file;
}

ComposedFrame composeFrame(const Painter& paint, int depth, const std::optional<korvane::RgbImage>& background,
                           FrameSize size, const std::filesystem::path& output, const CompositeOptions& options,
                           const PassPainter& paintPass)
{
    const bool host = depth == 8 || options.blend == Blend::host;
    if (!host && options.passes && !paintPass)
        throw std::logic_error("passes need a painter of passes");
    ComposedFrame frame = host ? composeHostBlend(paint, depth, background, size, output)
                               : composeLinear(paint, paintPass, depth, background, size, output, options);
    const bool floatFile = korvane::isFloatFormat(output);
    describeColour(frame.image, frame, depth, options, floatFile);
    for (SideImage& side : frame.sideImages)
        describeColour(side.image, frame, depth, options, floatFile);
    return frame;
}

} // namespace glintwave::cli
