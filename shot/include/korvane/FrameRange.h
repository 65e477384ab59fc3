// FrameRange.h - frame lists and numbered file names as compositing tools
// write them.
//
// Frame ranges: comma-separated parts, each a frame ("7", "-3"), a range
// with both ends included ("1-100", "-5--1") or a range with a step
// ("1-100x2": 1, 3, ..., 99). The result is the set of frames named, in
// ascending order, each once. A range whose end lies before its start, a
// step below 1, a missing number or a stray character is an error, as is a
// list of more than kMaxFrames frames.
//
// Numbered file names carry one frame token:
//   "####", "##", ...  one digit per '#' (padded with zeros)
//   "#" alone          four digits: a lone '#' stands for the usual 4-digit
//                      frame, so "out.#.exr" and "out.####.exr" agree
//   "@", "@@@", ...    one digit per '@'
//   "%d", "%04d"       printf style: no padding, or N digits
// A frame with more digits than the padding is written whole; a negative
// frame's sign counts as one of the digits ("%04d" of -5 is "-005"), as in
// printf. Any other '%' is part of the name. Two frame tokens in one name,
// or padding to more than 10 digits, are an error.
#pragma once

#include "korvane/Error.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

using FrameList = std::vector<std::int32_t>;

inline constexpr std::size_t kMaxFrames = 10'000'000;

// Throws Error: "frame range "1-": a frame number is missing
// after '-'".
FrameList parseFrameRange(std::string_view text);

class FramePattern {
public:
    // Throws Error for a second frame token or padding too wide.
    explicit FramePattern(std::string_view pattern);

    // False when the name holds no frame token (one file for every frame).
    bool numbered() const { return numbered_; }
    int padding() const { return padding_; }
    // The name of a frame's file.
    std::string name(std::int32_t frame) const;
    // The frame a file name is of, when it is one of this pattern's (a
    // sign and at least the padding's digits between prefix and suffix).
    std::optional<std::int32_t> frameOf(std::string_view fileName) const;

private:
    std::string prefix_;
    std::string suffix_;
    int padding_ = 0;
    bool numbered_ = false;
};

} // namespace korvane
