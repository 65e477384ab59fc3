// LinearBlend.cpp - the flare and the background added in linear light,
// then encoded for the output's format.

#include "LinearBlend.h"

#include "korvane/ColourSpaces.h"
#include "korvane/Dither.h"
#include "korvane/TransferCurves.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace glintwave::cli {
namespace {

constexpr int kFullLevel48 = 16320;  // 255 x 64

// Linear light, scaled by the exposure, for every level the frame can hold:
// levels are few, so each is decoded once.
std::vector<double> levelsToLinear(int depth, double scale)
{
    const int full = depth == 48 ? kFullLevel48 : 255;
    std::vector<double> table(static_cast<std::size_t>(full) + 1);
    for (int level = 0; level <= full; ++level)
        table[static_cast<std::size_t>(level)] = korvane::srgbToLinear(static_cast<double>(level) / full) * scale;
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

// A background's rows in linear light, premultiplied by its alpha.
class LinearBackground {
public:
    explicit LinearBackground(const korvane::RgbImage& image)
        : image_(image), hasAlpha_(image.alpha.initialized()), width_(image.pixels.spec().width)
    {
        if (image.kind != korvane::SampleKind::Float) {
            decoded_.resize(65536);
            for (std::size_t code = 0; code < decoded_.size(); ++code)
                decoded_[code] = korvane::srgbToLinear(static_cast<double>(code) / 65535.0);
            codes_.resize(static_cast<std::size_t>(width_) * 3);
        } else {
            samples_.resize(static_cast<std::size_t>(width_) * 3);
        }
        alpha_.assign(static_cast<std::size_t>(width_), 1.0f);
    }

    bool hasAlpha() const { return hasAlpha_; }

    // Red, green, blue, alpha of row y, four values a pixel.
    void row(std::int32_t y, std::vector<double>& rgba)
    {
        const OIIO::ROI line(0, width_, y, y + 1);
        if (hasAlpha_)
            image_.alpha.get_pixels(line, OIIO::TypeDesc::FLOAT, alpha_.data());
        if (image_.kind == korvane::SampleKind::Float) {
            image_.pixels.get_pixels(line, OIIO::TypeDesc::FLOAT, samples_.data());
            for (std::int32_t x = 0; x < width_; ++x) {
                for (int c = 0; c < 3; ++c)
                    rgba[x * 4 + c] = samples_[x * 3 + c];
                rgba[x * 4 + 3] = alpha_[x];
            }
            return;
        }
        image_.pixels.get_pixels(line, OIIO::TypeDesc::UINT16, codes_.data());
        for (std::int32_t x = 0; x < width_; ++x) {
            const double alpha = alpha_[x];
            for (int c = 0; c < 3; ++c) {
                const std::uint16_t code = codes_[x * 3 + c];
                if (!hasAlpha_) {
                    rgba[x * 4 + c] = decoded_[code];
                    continue;
                }
                // Integer files hold encoded colour premultiplied by alpha:
                // divided out, decoded, and multiplied again in linear light.
                const double encoded = alpha > 0.0 ? std::min(1.0, code / 65535.0 / alpha) : 0.0;
                rgba[x * 4 + c] = decoded_[static_cast<std::size_t>(std::lround(encoded * 65535.0))] * alpha;
            }
            rgba[x * 4 + 3] = alpha;
        }
    }

private:
    const korvane::RgbImage& image_;
    bool hasAlpha_;
    std::int32_t width_;
    std::vector<double> decoded_;
    std::vector<std::uint16_t> codes_;
    std::vector<float> samples_;
    std::vector<float> alpha_;
};

// Linear values as sRGB codes of `type`, dithered; colour divided by alpha,
// since integer files keep it apart.
OIIO::ImageBuf encodedForIntegerFile(const std::vector<float>& linear, int width, int height, int channels,
                                     OIIO::TypeDesc type)
{
    const std::uint32_t maxCode = type == OIIO::TypeDesc::UINT8 ? 255u : 65535u;
    std::vector<std::uint16_t> codes(linear.size());
    std::size_t at = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x, at += static_cast<std::size_t>(channels)) {
            const double alpha = channels == 4 ? linear[at + 3] : 1.0;
            for (int c = 0; c < 3; ++c) {
                double value = linear[at + c];
                if (channels == 4)
                    value = alpha > 0.0 ? value / alpha : 0.0;
                codes[at + c] = static_cast<std::uint16_t>(
                    korvane::ditheredCode(korvane::linearToSrgb(value), maxCode, x, y, c));
            }
            if (channels == 4)
                codes[at + 3] = static_cast<std::uint16_t>(korvane::ditheredCode(alpha, maxCode, x, y, 3));
        }
    }
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

} // namespace

ComposedFrame composeLinear(const Painter& paint, int depth, const std::optional<korvane::RgbImage>& background,
                            FrameSize size, const std::filesystem::path& output, double exposure)
{
    korvane::FramePixels flare(size.width, size.height, static_cast<std::int16_t>(depth));
    paint(flare);
    const FlareLevels levels{flare, flare.frameBuffer()};
    const std::vector<double> flareLinear = levelsToLinear(depth, std::exp2(exposure));

    std::optional<LinearBackground> plate;
    if (background)
        plate.emplace(*background);
    const int channels = plate && plate->hasAlpha() ? 4 : 3;
    std::vector<float> linear(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) *
                              static_cast<std::size_t>(channels));
    std::vector<double> under(static_cast<std::size_t>(size.width) * 4, 0.0);
    for (std::int32_t x = 0; x < size.width; ++x)
        under[static_cast<std::size_t>(x) * 4 + 3] = 1.0;
    std::size_t at = 0;
    for (std::int32_t y = 0; y < size.height; ++y) {
        if (plate)
            plate->row(y, under);
        for (std::int32_t x = 0; x < size.width; ++x, at += static_cast<std::size_t>(channels)) {
            int flareLevels[3];
            levels.at(x, y, flareLevels);
            const double* pixel = &under[static_cast<std::size_t>(x) * 4];
            for (int c = 0; c < 3; ++c)
                linear[at + c] = static_cast<float>(pixel[c] + flareLinear[static_cast<std::size_t>(flareLevels[c])]);
            if (channels == 4)
                linear[at + 3] = static_cast<float>(pixel[3]);
        }
    }

    ComposedFrame frame;
    if (korvane::isFloatFormat(output)) {
        frame.image.reset(OIIO::ImageSpec(size.width, size.height, channels, OIIO::TypeDesc::FLOAT));
        frame.image.set_pixels(OIIO::ROI::All(), OIIO::TypeDesc::FLOAT, linear.data());
        frame.sampleType = OIIO::TypeDesc::HALF;
        frame.colourSpace = std::string(korvane::kLinearSpace);
    } else {
        frame.sampleType = depth == 48 ? OIIO::TypeDesc::UINT16 : OIIO::TypeDesc::UINT8;
        frame.image = encodedForIntegerFile(linear, size.width, size.height, channels, frame.sampleType);
        frame.colourSpace = std::string(korvane::kSrgbSpace);
    }
    if (background) {
        // What describes the picture (camera data, orientation) stays.
        for (const OIIO::ParamValue& attribute : background->pixels.spec().extra_attribs)
            if (!frame.image.spec().find_attribute(attribute.name()))
                frame.image.specmod().attribute(attribute.name().string(), attribute.type(), attribute.data());
    }
    return frame;
}

} // namespace glintwave::cli
