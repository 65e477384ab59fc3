// LinearBlend.cpp - the flare and the background added in linear light,
// then encoded for the output's format.

#include "LinearBlend.h"

#include "FlarePasses.h"

#include "korvane/ColourSpaces.h"
#include "korvane/Dither.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace glintwave::cli {
namespace {

constexpr int kFullLevel48 = 16320;  // 255 x 64

// The colour conversions of one frame, from the spaces CompositeOptions
// names or their defaults.
struct ColourPlan {
    std::unique_ptr<korvane::ColourConversion> flareToWorking;
    std::unique_ptr<korvane::ColourConversion> inputToWorking;
    std::unique_ptr<korvane::ColourConversion> workingToOutput;
    std::string outputSpace;
};

ColourPlan colourPlan(const CompositeOptions& options, const std::optional<korvane::RgbImage>& background,
                      const std::filesystem::path& output)
{
    const korvane::ColourSpaces builtIn;
    const korvane::ColourSpaces& spaces = options.spaces ? *options.spaces : builtIn;
    const auto named = [&](const std::string& name, const char* option, const std::function<std::string()>& fallback) {
        return name.empty() ? fallback() : spaces.find(name, option);
    };
    if (spaces.working().empty() && (options.workingSpace.empty() || options.inputSpace.empty() ||
                                     options.outputSpace.empty()))
        throw korvane::Error(korvane::ErrorPlace{spaces.source()},
                             "names no scene_linear role; add one to it, or give --working-colorspace, "
                             "--input-colorspace and --output-colorspace");
    const std::string working = named(options.workingSpace, "--working-colorspace", [&] { return spaces.working(); });
    // Float files hold scene-linear light, integer ones display-referred.
    const auto forFile = [&](bool floatFile) { return floatFile ? spaces.working() : spaces.displayReferred(); };
    ColourPlan plan;
    plan.flareToWorking = spaces.conversion(spaces.displayReferred(), working);
    if (background) {
        const std::string input = named(options.inputSpace, "--input-colorspace", [&] {
            return forFile(background->kind == korvane::SampleKind::Float);
        });
        plan.inputToWorking = spaces.conversion(input, working);
    }
    plan.outputSpace =
        named(options.outputSpace, "--output-colorspace", [&] { return forFile(korvane::isFloatFormat(output)); });
    plan.workingToOutput = spaces.conversion(working, plan.outputSpace);
    return plan;
}

// Grey values 0..full (over full) through a conversion of one curve per
// channel: a table that converts any colour.
std::vector<float> greyTable(const korvane::ColourConversion& conversion, int full)
{
    std::vector<float> table(static_cast<std::size_t>(full + 1) * 3);
    for (int v = 0; v <= full; ++v)
        std::fill_n(&table[static_cast<std::size_t>(v) * 3], 3, static_cast<float>(static_cast<double>(v) / full));
    conversion.apply(table.data(), static_cast<std::size_t>(full) + 1, 3);
    return table;
}

// The flare's red, green, blue levels of one pixel.
struct FlareLevels {
    const korvane::FramePixels& frame;
    korvane::FrameBuffer buffer;

    void at(std::int32_t x, std::int32_t y, int (&levels)[3]) const
    {
        const auto* row = static_cast<const std::uint8_t*>(buffer.base) + static_cast<std::size_t>(buffer.rowBytes) * y;
        if (buffer.depth == 48) {
            const auto* pixel = reinterpret_cast<const std::uint16_t*>(row) + static_cast<std::size_t>(x) * 3;
            for (int c = 0; c < 3; ++c)
                levels[c] = pixel[c] > kFullLevel48 ? kFullLevel48 : pixel[c];
        } else {
            const std::uint32_t pixel = reinterpret_cast<const std::uint32_t*>(row)[x];
            for (int c = 0; c < 3; ++c)
                levels[c] = static_cast<int>((pixel >> (16 - 8 * c)) & 0xFFu);
        }
    }
};

// A background's rows in the working space, premultiplied by its alpha.
class LinearBackground {
public:
    LinearBackground(const korvane::RgbImage& image, const korvane::ColourConversion& toWorking)
        : image_(image), toWorking_(toWorking), hasAlpha_(image.alpha.initialized()),
          width_(image.pixels.spec().width), samples_(static_cast<std::size_t>(width_) * 3),
          alpha_(static_cast<std::size_t>(width_), 1.0f)
    {
        // Integer samples take few values: with one curve per channel, a
        // large image converts each value once. Either way a code becomes
        // the same float and goes through the same curve.
        const std::size_t samples = samples_.size() * static_cast<std::size_t>(image.pixels.spec().height);
        if (image.kind != korvane::SampleKind::Float && toWorking.isPerChannel() && samples > 65536)
            table_ = greyTable(toWorking, 65535);
        if (image.kind != korvane::SampleKind::Float)
            codes_.resize(samples_.size());
    }

    bool hasAlpha() const { return hasAlpha_; }

    // Red, green, blue, alpha of row y, four values a pixel.
    void row(std::int32_t y, std::vector<double>& rgba)
    {
        const OIIO::ROI line(0, width_, y, y + 1);
        if (hasAlpha_)
            image_.alpha.get_pixels(line, OIIO::TypeDesc::FLOAT, alpha_.data());
        if (image_.kind != korvane::SampleKind::Float) {
            integerRow(line, rgba);
            return;
        }
        image_.pixels.get_pixels(line, OIIO::TypeDesc::FLOAT, samples_.data());
        if (!toWorking_.isIdentity()) {
            for (std::int32_t x = 0; hasAlpha_ && x < width_; ++x)
                for (int c = 0; c < 3; ++c)
                    samples_[x * 3 + c] = alpha_[x] > 0.0f ? samples_[x * 3 + c] / alpha_[x] : 0.0f;
            toWorking_.apply(samples_.data(), static_cast<std::size_t>(width_), 3);
            for (std::int32_t x = 0; hasAlpha_ && x < width_; ++x)
                for (int c = 0; c < 3; ++c)
                    samples_[x * 3 + c] *= alpha_[x];
        }
        for (std::int32_t x = 0; x < width_; ++x) {
            for (int c = 0; c < 3; ++c)
                rgba[x * 4 + c] = samples_[x * 3 + c];
            rgba[x * 4 + 3] = alpha_[x];
        }
    }

private:
    // Integer colour comes premultiplied: divided out to the nearest code
    // before the curve, multiplied again after it.
    void integerRow(const OIIO::ROI& line, std::vector<double>& rgba)
    {
        image_.pixels.get_pixels(line, OIIO::TypeDesc::UINT16, codes_.data());
        for (std::int32_t x = 0; hasAlpha_ && x < width_; ++x) {
            const double alpha = alpha_[x];
            for (int c = 0; c < 3; ++c) {
                const double straight = alpha > 0.0 ? std::min(1.0, codes_[x * 3 + c] / 65535.0 / alpha) : 0.0;
                codes_[x * 3 + c] = static_cast<std::uint16_t>(std::lround(straight * 65535.0));
            }
        }
        if (table_.empty()) {
            for (std::size_t i = 0; i < samples_.size(); ++i)
                samples_[i] = static_cast<float>(static_cast<double>(codes_[i]) / 65535);
            toWorking_.apply(samples_.data(), static_cast<std::size_t>(width_), 3);
        } else {
            for (std::size_t i = 0; i < samples_.size(); ++i)
                samples_[i] = table_[static_cast<std::size_t>(codes_[i]) * 3];
        }
        for (std::int32_t x = 0; x < width_; ++x) {
            const double alpha = alpha_[x];
            for (int c = 0; c < 3; ++c)
                rgba[x * 4 + c] = samples_[x * 3 + c] * (hasAlpha_ ? alpha : 1.0);
            rgba[x * 4 + 3] = alpha;
        }
    }

    const korvane::RgbImage& image_;
    const korvane::ColourConversion& toWorking_;
    bool hasAlpha_;
    std::int32_t width_;
    std::vector<float> table_;
    std::vector<std::uint16_t> codes_;
    std::vector<float> samples_;
    std::vector<float> alpha_;
};

// Working-space values as codes of `type` in the output's space,
// dithered; colour divided by alpha first, since integer files keep it apart.
OIIO::ImageBuf encodedForIntegerFile(std::vector<float> values, int width, int height, int channels,
                                     OIIO::TypeDesc type, const korvane::ColourConversion& toOutput)
{
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    if (channels == 4)
        for (std::size_t i = 0; i < count; ++i)
            for (int c = 0; c < 3; ++c)
                values[i * 4 + c] = values[i * 4 + 3] > 0.0f ? values[i * 4 + c] / values[i * 4 + 3] : 0.0f;
    toOutput.apply(values.data(), count, channels);
    const std::uint32_t maxCode = type == OIIO::TypeDesc::UINT8 ? 255u : 65535u;
    std::vector<std::uint16_t> codes(values.size());
    std::size_t at = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c, ++at)
                codes[at] = static_cast<std::uint16_t>(korvane::ditheredCode(values[at], maxCode, x, y, c));
    OIIO::ImageBuf image(OIIO::ImageSpec(width, height, channels, type));
    if (type == OIIO::TypeDesc::UINT8) {
        const std::vector<std::uint8_t> bytes(codes.begin(), codes.end());
        image.set_pixels(OIIO::ROI::All(), OIIO::TypeDesc::UINT8, bytes.data());
    } else {
        image.set_pixels(OIIO::ROI::All(), OIIO::TypeDesc::UINT16, codes.data());
    }
    if (channels == 4)
        image.specmod().attribute("oiio:UnassociatedAlpha", 1);
    return image;
}

// Working-space values in the output's space, for float files: colour
// stays premultiplied, converted as straight colour.
void convertForFloatFile(std::vector<float>& values, int channels, const korvane::ColourConversion& toOutput)
{
    if (toOutput.isIdentity())
        return;
    const std::size_t count = values.size() / static_cast<std::size_t>(channels);
    const auto scaleColour = [&](bool divide) {
        for (std::size_t i = 0; channels == 4 && i < count; ++i) {
            const float alpha = values[i * 4 + 3];
            for (int c = 0; c < 3; ++c)
                values[i * 4 + c] = divide ? (alpha > 0.0f ? values[i * 4 + c] / alpha : 0.0f)
                                           : values[i * 4 + c] * alpha;
        }
    };
    scaleColour(true);
    toOutput.apply(values.data(), count, channels);
    scaleColour(false);
}

// The flare and its parts in linear light: red, green, blue floats a pixel.
struct LinearFlare {
    std::vector<float> whole;
    std::vector<std::vector<float>> passes;  // kFlarePasses' order
};

// Where parts overlap, the flare's light is shared among them in proportion
// to the levels each paints there, so the passes add up to the flare
// everywhere; a part alone is its own light exactly.
LinearFlare linearFlare(const Painter& paint, const PassPainter& paintPass, int depth, FrameSize size,
                        double scale, bool withPasses, const korvane::ColourConversion& toWorking)
{
    const auto frameDepth = static_cast<std::int16_t>(depth);
    korvane::FramePixels frame(size.width, size.height, frameDepth);
    paint(frame);
    // Levels are few: with one curve per channel a large frame converts
    // each once; otherwise the frame's colours are converted below, from
    // the same floats through the same curve.
    const int full = depth == 48 ? kFullLevel48 : 255;
    const bool byTable = toWorking.isPerChannel() &&
                         static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) * 3 >
                             static_cast<std::size_t>(full) + 1;
    const std::vector<float> table = byTable ? greyTable(toWorking, full) : std::vector<float>{};
    const std::size_t samples = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) * 3;
    LinearFlare flare;
    flare.whole.resize(samples);
    std::vector<korvane::FramePixels> parts;
    if (withPasses) {
        for (std::size_t pass = 0; pass < kFlarePasses.size(); ++pass) {
            parts.emplace_back(size.width, size.height, frameDepth);
            paintPass(parts.back(), pass);
        }
        flare.passes.assign(parts.size(), std::vector<float>(samples));
    }
    const FlareLevels levels{frame, frame.frameBuffer()};
    std::vector<FlareLevels> partLevels;
    for (korvane::FramePixels& part : parts)
        partLevels.push_back(FlareLevels{part, part.frameBuffer()});

    std::size_t at = 0;
    for (std::int32_t y = 0; y < size.height; ++y) {
        for (std::int32_t x = 0; x < size.width; ++x, at += 3) {
            int whole[3];
            levels.at(x, y, whole);
            for (int c = 0; c < 3; ++c)
                flare.whole[at + c] = byTable ? static_cast<float>(table[static_cast<std::size_t>(whole[c]) * 3] * scale)
                                              : static_cast<float>(static_cast<double>(whole[c]) / full);
        }
    }
    if (!byTable) {
        toWorking.apply(flare.whole.data(), flare.whole.size() / 3, 3);
        for (float& value : flare.whole)
            value = static_cast<float>(value * scale);
    }
    if (!withPasses)
        return flare;
    at = 0;
    for (std::int32_t y = 0; y < size.height; ++y) {
        for (std::int32_t x = 0; x < size.width; ++x, at += 3) {
            int partLevel[kFlarePasses.size()][3];
            int total[3] = {0, 0, 0};
            for (std::size_t pass = 0; pass < partLevels.size(); ++pass) {
                partLevels[pass].at(x, y, partLevel[pass]);
                for (int c = 0; c < 3; ++c)
                    total[c] += partLevel[pass][c];
            }
            for (std::size_t pass = 0; pass < partLevels.size(); ++pass)
                for (int c = 0; c < 3; ++c)
                    flare.passes[pass][at + c] =
                        total[c] > 0 ? static_cast<float>(static_cast<double>(flare.whole[at + c]) *
                                                          partLevel[pass][c] / total[c])
                                     : 0.0f;
        }
    }
    return flare;
}

double luminance(const float* rgb)
{
    const double y = 0.2126 * rgb[0] + 0.7152 * rgb[1] + 0.0722 * rgb[2];
    return y < 0.0 ? 0.0 : (y > 1.0 ? 1.0 : y);
}

// Light on its own as premultiplied RGBA, with the alpha asked for.
std::vector<float> withAlpha(const std::vector<float>& rgb, FlareAlpha alpha)
{
    std::vector<float> rgba(rgb.size() / 3 * 4);
    for (std::size_t i = 0, j = 0; i < rgb.size(); i += 3, j += 4) {
        std::copy(&rgb[i], &rgb[i] + 3, &rgba[j]);
        rgba[j + 3] = alpha == FlareAlpha::luminance ? static_cast<float>(luminance(&rgb[i])) : 0.0f;
    }
    return rgba;
}

// The background and the flare added; alpha as CompositeOptions says.
std::vector<float> composite(const korvane::RgbImage& background, const std::vector<float>& flare, FrameSize size,
                             const CompositeOptions& options, int channels, const korvane::ColourConversion& toWorking)
{
    LinearBackground plate(background, toWorking);
    std::vector<double> under(static_cast<std::size_t>(size.width) * 4);
    std::vector<float> result(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) *
                              static_cast<std::size_t>(channels));
    const bool joinAlpha = options.flareAlpha == FlareAlpha::luminance;
    std::size_t at = 0, from = 0;
    for (std::int32_t y = 0; y < size.height; ++y) {
        plate.row(y, under);
        for (std::int32_t x = 0; x < size.width; ++x, at += static_cast<std::size_t>(channels), from += 3) {
            const double* pixel = &under[static_cast<std::size_t>(x) * 4];
            for (int c = 0; c < 3; ++c)
                result[at + c] = static_cast<float>(pixel[c] + flare[from + c]);
            if (channels == 4) {
                const double a = pixel[3];
                const double f = joinAlpha ? luminance(&flare[from]) : 0.0;
                result[at + 3] = static_cast<float>(a + f - a * f);
            }
        }
    }
    return result;
}

// Named layers of RGBA beside the main channels, in one float image.
OIIO::ImageBuf layeredImage(const std::vector<float>& main, int mainChannels,
                            const std::vector<std::pair<std::string, std::vector<float>>>& layers, FrameSize size)
{
    const int channels = mainChannels + 4 * static_cast<int>(layers.size());
    OIIO::ImageSpec spec(size.width, size.height, channels, OIIO::TypeDesc::FLOAT);
    spec.channelnames = {"R", "G", "B"};
    if (mainChannels == 4)
        spec.channelnames.push_back("A");
    for (const auto& [name, rgba] : layers)
        for (const char* channel : {".R", ".G", ".B", ".A"})
            spec.channelnames.push_back(name + channel);
    spec.alpha_channel = mainChannels == 4 ? 3 : -1;
    // Filled in place: a frame of layers is large.
    OIIO::ImageBuf image(spec);
    auto* pixels = static_cast<float*>(image.localpixels());
    const std::size_t count = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    for (std::size_t i = 0; i < count; ++i) {
        float* out = &pixels[i * static_cast<std::size_t>(channels)];
        std::copy(&main[i * static_cast<std::size_t>(mainChannels)],
                  &main[i * static_cast<std::size_t>(mainChannels)] + mainChannels, out);
        out += mainChannels;
        for (const auto& layer : layers) {
            std::copy(&layer.second[i * 4], &layer.second[i * 4] + 4, out);
            out += 4;
        }
    }
    return image;
}

} // namespace

ComposedFrame composeLinear(const Painter& paint, const PassPainter& paintPass, int depth,
                            const std::optional<korvane::RgbImage>& background, FrameSize size,
                            const std::filesystem::path& output, const CompositeOptions& options)
{
    const ColourPlan plan = colourPlan(options, background, output);
    const LinearFlare flare = linearFlare(paint, paintPass, depth, size, std::exp2(options.exposure) * options.visibility, options.passes,
                                          *plan.flareToWorking);
    const FlareAlpha ownAlpha = options.flareAlpha.value_or(FlareAlpha::luminance);

    std::vector<float> main;
    int channels = 3;
    if (options.flareOnly) {
        main = withAlpha(flare.whole, ownAlpha);
        channels = 4;
    } else if (background) {
        channels = background->alpha.initialized() ? 4 : 3;
        main = composite(*background, flare.whole, size, options, channels, *plan.inputToWorking);
    } else {
        main = flare.whole;
    }
    std::vector<std::pair<std::string, std::vector<float>>> layers;
    if (options.passes) {
        layers.emplace_back("flare", withAlpha(flare.whole, ownAlpha));
        for (std::size_t pass = 0; pass < kFlarePasses.size(); ++pass)
            layers.emplace_back(std::string(kFlarePasses[pass].name), withAlpha(flare.passes[pass], ownAlpha));
    }

    ComposedFrame frame;
    frame.colourSpace = plan.outputSpace;
    if (korvane::isFloatFormat(output)) {
        convertForFloatFile(main, channels, *plan.workingToOutput);
        for (auto& layer : layers)
            convertForFloatFile(layer.second, 4, *plan.workingToOutput);
        frame.image = layeredImage(main, channels, layers, size);
        frame.sampleType = OIIO::TypeDesc::HALF;
    } else {
        frame.sampleType = depth == 48 ? OIIO::TypeDesc::UINT16 : OIIO::TypeDesc::UINT8;
        frame.image = encodedForIntegerFile(std::move(main), size.width, size.height, channels, frame.sampleType,
                                            *plan.workingToOutput);
        for (auto& [name, rgba] : layers)
            frame.sideImages.push_back({name, encodedForIntegerFile(std::move(rgba), size.width, size.height, 4,
                                                                    frame.sampleType, *plan.workingToOutput)});
    }
    if (background && !options.flareOnly) {
        // What describes the picture (camera data, orientation) stays; what
        // described the background's colour encoding no longer holds.
        for (const OIIO::ParamValue& attribute : background->pixels.spec().extra_attribs) {
            const std::string name = attribute.name().string();
            if (name == "ICCProfile" || name == "oiio:ColorSpace" || name == "oiio:Gamma" ||
                name == "Exif:ColorSpace" || frame.image.spec().find_attribute(name))
                continue;
            frame.image.specmod().attribute(name, attribute.type(), attribute.data());
        }
    }
    return frame;
}

} // namespace glintwave::cli
