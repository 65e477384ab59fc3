// Occlusion.h - how much of a light an occluder leaves visible.
//
// An occluder is a matte of the frame's size: 0 where the light shows, 1
// where something stands in front of it, values between counting in part.
// The light is a disc (its centre and radius in pixels); what counts is the
// fraction of the disc the matte leaves visible, measured at 256 fixed
// points spread evenly over the disc (a sunflower pattern) with the matte
// read between pixels by bilinear weights. The same points are used for
// every frame, so the answer moves smoothly as the light moves by parts of
// a pixel, and is the same on every run and machine.
//
// Points outside the frame are left out of the measure (the part of the
// disc inside the frame decides), or with `OffscreenIs::visible` count as
// visible. A disc entirely outside the frame, left out, is visible.
#pragma once

#include "korvane/ImageIO.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace korvane {

enum class MatteChannel { alpha, luma, red, green, blue };
enum class OffscreenIs { leftOut, visible };

class OcclusionMatte {
public:
    // The channel of an image as a matte, clamped to 0..1: all of it, or
    // only what a disc at (x, y) of `radius` pixels reads (the rest of a
    // large frame is never looked at). Throws Error naming the file when it
    // asks for alpha the image lacks.
    OcclusionMatte(const RgbImage& image, MatteChannel channel, const std::string& name);
    OcclusionMatte(const RgbImage& image, MatteChannel channel, const std::string& name, double x, double y,
                   double radius);
    // A matte of the given coverage values, width x height, row by row.
    OcclusionMatte(std::int32_t width, std::int32_t height, std::vector<float> coverage);

    std::int32_t width() const { return width_; }
    std::int32_t height() const { return height_; }

    // The visible fraction, 0..1, of the disc at (x, y) with `radius`
    // (pixels; a radius below half a pixel is taken as half a pixel).
    double visibleFraction(double x, double y, double radius, OffscreenIs offscreen) const;

private:
    // Coverage at a point in pixel coordinates (pixel centres at +0.5),
    // between the four nearest pixels; nothing outside.
    double coverageAt(double x, double y) const;

    void read(const RgbImage& image, MatteChannel channel, const std::string& name, const OIIO::ROI& region);

    std::int32_t width_ = 0;   // the frame's
    std::int32_t height_ = 0;
    OIIO::ROI region_;         // the pixels held, row by row in coverage_
    std::vector<float> coverage_;
};

// "alpha", "luma", "R", "G", "B" (either case); nullopt otherwise.
std::optional<MatteChannel> matteChannelNamed(const std::string& name);

} // namespace korvane
