// Occlusion.cpp - mattes and the visible part of a light's disc.

#include "korvane/Occlusion.h"

#include "korvane/Error.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <optional>

namespace korvane {
namespace {

constexpr int kSamples = 256;

struct Offset {
    double x, y;
};

// Points of the unit disc spread evenly: the n-th at radius sqrt((n + 0.5)
// / N), turned from the one before by the golden angle. The turn is a
// rotation by constants, so no library sine or cosine (whose last bit may
// differ between machines) decides where a point falls.
std::array<Offset, kSamples> sunflower()
{
    constexpr double kCos = -0.7373688780783197;  // of the golden angle, pi (3 - sqrt 5)
    constexpr double kSin = 0.6754902942615238;
    std::array<Offset, kSamples> points{};
    double cx = 1.0, sy = 0.0;  // the direction of the n-th point
    for (int n = 0; n < kSamples; ++n) {
        const double r = std::sqrt((n + 0.5) / kSamples);
        points[static_cast<std::size_t>(n)] = {r * cx, r * sy};
        const double turnedX = cx * kCos - sy * kSin;
        const double turnedY = cx * kSin + sy * kCos;
        cx = turnedX;
        sy = turnedY;
    }
    return points;
}

float clamped(float value)
{
    return value > 0.0f ? (value < 1.0f ? value : 1.0f) : 0.0f;
}

} // namespace

std::optional<MatteChannel> matteChannelNamed(const std::string& name)
{
    std::string lower = name;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (lower == "alpha" || lower == "a")
        return MatteChannel::alpha;
    if (lower == "luma")
        return MatteChannel::luma;
    if (lower == "r")
        return MatteChannel::red;
    if (lower == "g")
        return MatteChannel::green;
    if (lower == "b")
        return MatteChannel::blue;
    return std::nullopt;
}

OcclusionMatte::OcclusionMatte(const RgbImage& image, MatteChannel channel, const std::string& name)
    : width_(image.pixels.spec().width), height_(image.pixels.spec().height)
{
    read(image, channel, name, OIIO::ROI(0, width_, 0, height_));
}

OcclusionMatte::OcclusionMatte(const RgbImage& image, MatteChannel channel, const std::string& name, double x,
                               double y, double radius)
    : width_(image.pixels.spec().width), height_(image.pixels.spec().height)
{
    // The disc's box, a pixel wider for the bilinear reads, within the frame.
    const double r = std::isfinite(radius) ? std::max(radius, 0.5) : 0.5;
    const auto edge = [](double v, std::int32_t limit) {
        return static_cast<int>(std::clamp(std::floor(std::isfinite(v) ? v : 0.0), 0.0, double(limit)));
    };
    int x0 = edge(x - r - 2, width_), x1 = edge(x + r + 2, width_);
    int y0 = edge(y - r - 2, height_), y1 = edge(y + r + 2, height_);
    if (x1 <= x0 || y1 <= y0) {  // nothing of the disc in the frame: one pixel, never read
        x0 = y0 = 0;
        x1 = y1 = 1;
    }
    read(image, channel, name, OIIO::ROI(x0, x1, y0, y1));
}

void OcclusionMatte::read(const RgbImage& image, MatteChannel channel, const std::string& name,
                          const OIIO::ROI& region)
{
    region_ = region;
    const std::size_t count = static_cast<std::size_t>(region.width()) * static_cast<std::size_t>(region.height());
    coverage_.resize(count);
    if (channel == MatteChannel::alpha) {
        if (!image.alpha.initialized())
            throw Error(ErrorPlace{name}, "has no alpha to hide the light with; give --occluder-channel luma, R, G "
                                          "or B");
        image.alpha.get_pixels(region, OIIO::TypeDesc::FLOAT, coverage_.data());
    } else {
        std::vector<float> rgb(count * 3);
        image.pixels.get_pixels(region, OIIO::TypeDesc::FLOAT, rgb.data());
        for (std::size_t i = 0; i < count; ++i) {
            const float* p = &rgb[i * 3];
            switch (channel) {
            case MatteChannel::red: coverage_[i] = p[0]; break;
            case MatteChannel::green: coverage_[i] = p[1]; break;
            case MatteChannel::blue: coverage_[i] = p[2]; break;
            default:
                coverage_[i] = static_cast<float>(0.2126 * p[0] + 0.7152 * p[1] + 0.0722 * p[2]);
                break;
            }
        }
    }
    for (float& value : coverage_)
        value = clamped(std::isnan(value) ? 1.0f : value);
}

OcclusionMatte::OcclusionMatte(std::int32_t width, std::int32_t height, std::vector<float> coverage)
    : width_(width), height_(height), region_(0, width, 0, height), coverage_(std::move(coverage))
{
    if (width < 1 || height < 1 ||
        coverage_.size() != static_cast<std::size_t>(width) * static_cast<std::size_t>(height))
        throw Error("a matte needs one value per pixel");
    for (float& value : coverage_)
        value = clamped(std::isnan(value) ? 1.0f : value);
}

double OcclusionMatte::coverageAt(double x, double y) const
{
    // Pixel (i, j) covers [i, i+1) x [j, j+1); its value sits at its centre.
    const double fx = x - 0.5, fy = y - 0.5;
    const double x0 = std::floor(fx), y0 = std::floor(fy);
    const double tx = fx - x0, ty = fy - y0;
    // Neighbours beyond the frame's edge repeat the edge; the region held
    // reaches every pixel a disc's points read.
    const auto at = [&](double px, double py) -> double {
        const auto ix = static_cast<std::int64_t>(
            std::clamp(px, 0.0, static_cast<double>(width_ - 1)) - region_.xbegin);
        const auto iy = static_cast<std::int64_t>(
            std::clamp(py, 0.0, static_cast<double>(height_ - 1)) - region_.ybegin);
        const std::int64_t w = region_.width();
        return coverage_[static_cast<std::size_t>(std::clamp<std::int64_t>(iy, 0, region_.height() - 1) * w +
                                                  std::clamp<std::int64_t>(ix, 0, w - 1))];
    };
    const double top = at(x0, y0) * (1 - tx) + at(x0 + 1, y0) * tx;
    const double bottom = at(x0, y0 + 1) * (1 - tx) + at(x0 + 1, y0 + 1) * tx;
    return top * (1 - ty) + bottom * ty;
}

double OcclusionMatte::visibleFraction(double x, double y, double radius, OffscreenIs offscreen) const
{
    if (!std::isfinite(x) || !std::isfinite(y) || !std::isfinite(radius))
        return 1.0;
    const double r = std::max(radius, 0.5);
    double visible = 0.0;
    int counted = 0;
    for (const Offset& point : sunflower()) {  // 256 points: cheaper made than kept
        const double px = x + point.x * r;
        const double py = y + point.y * r;
        if (px < 0.0 || py < 0.0 || px >= width_ || py >= height_) {
            if (offscreen == OffscreenIs::visible) {
                visible += 1.0;
                ++counted;
            }
            continue;
        }
        visible += 1.0 - coverageAt(px, py);
        ++counted;
    }
    return counted == 0 ? 1.0 : visible / counted;
}

} // namespace korvane
