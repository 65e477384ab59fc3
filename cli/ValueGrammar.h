// ValueGrammar.h - the small grammars of the command line's values.
//
//   real      a decimal number, as in "1", "-0.25", "2e-3"; finite only
//   size      WIDTHxHEIGHT in pixels, as in "1920x1080"
//   colour    "#rrggbb" (hex) or "R,G,B" (0-255 each), as in "#ff8000", "255,128,0"
//   length    a fraction of the frame ("0.3"), a percentage ("30%") or
//             pixels ("576px")
//   position  two lengths, x then y, as in "0.3,0.3", "50%,40%", "576px,324px"
//
// Each parser takes the whole text and answers nullopt for anything else.
#pragma once

#include "korvane/ImageOpen.h"
#include "korvane/Light.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace glintwave::cli {

std::optional<double> parseReal(std::string_view text);

struct FrameSize {
    std::int32_t width = 0;
    std::int32_t height = 0;
    bool operator==(const FrameSize&) const = default;
};
// Each side 1..kMaxFrameSide: the largest image the host reads, too.
inline constexpr std::int32_t kMaxFrameSide = korvane::kMaxImageSide;
std::optional<FrameSize> parseFrameSize(std::string_view text);

using korvane::Rgb8;
std::optional<Rgb8> parseColour(std::string_view text);
std::string formatColour(const Rgb8& colour);  // "#rrggbb"

using korvane::Length;
std::optional<Length> parseLength(std::string_view text);
std::string formatLength(const Length& length);

struct Position {
    Length x;
    Length y;
    bool operator==(const Position&) const = default;
};
std::optional<Position> parsePosition(std::string_view text);

} // namespace glintwave::cli
