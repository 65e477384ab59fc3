// ValueGrammar.cpp - numbers, sizes, colours, lengths and positions as typed.

#include "ValueGrammar.h"

#include "korvane/NumberText.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace glintwave::cli {
namespace {

std::optional<std::int32_t> parseWhole(std::string_view digits, std::int32_t minimum, std::int32_t maximum)
{
    if (digits.empty() || digits.size() > 9 || digits.find_first_not_of("0123456789") != std::string_view::npos)
        return std::nullopt;
    std::int32_t value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (value < minimum || value > maximum)
        return std::nullopt;
    return value;
}

bool endsWith(std::string_view text, std::string_view tail)
{
    return text.size() >= tail.size() && text.substr(text.size() - tail.size()) == tail;
}

} // namespace

std::optional<double> parseReal(std::string_view text)
{
    if (text.empty() || text.front() == '+')
        return std::nullopt;
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<FrameSize> parseFrameSize(std::string_view text)
{
    const std::size_t cross = text.find('x');
    if (cross == std::string_view::npos)
        return std::nullopt;
    const auto width = parseWhole(text.substr(0, cross), 1, kMaxFrameSide);
    const auto height = parseWhole(text.substr(cross + 1), 1, kMaxFrameSide);
    if (!width || !height)
        return std::nullopt;
    return FrameSize{*width, *height};
}

std::optional<Rgb8> parseColour(std::string_view text)
{
    if (text.size() == 7 && text.front() == '#') {
        unsigned value = 0;
        const auto [end, error] = std::from_chars(text.data() + 1, text.data() + 7, value, 16);
        if (error != std::errc() || end != text.data() + 7)
            return std::nullopt;
        return Rgb8{static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 8),
                    static_cast<std::uint8_t>(value)};
    }
    const std::size_t first = text.find(',');
    const std::size_t second = first == std::string_view::npos ? first : text.find(',', first + 1);
    if (second == std::string_view::npos)
        return std::nullopt;
    const auto red = parseWhole(text.substr(0, first), 0, 255);
    const auto green = parseWhole(text.substr(first + 1, second - first - 1), 0, 255);
    const auto blue = parseWhole(text.substr(second + 1), 0, 255);
    if (!red || !green || !blue)
        return std::nullopt;
    return Rgb8{static_cast<std::uint8_t>(*red), static_cast<std::uint8_t>(*green), static_cast<std::uint8_t>(*blue)};
}

std::string formatColour(const Rgb8& colour)
{
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", colour.red, colour.green, colour.blue);
    return text;
}

std::optional<Length> parseLength(std::string_view text)
{
    Length length;
    if (endsWith(text, "px")) {
        length.unit = Length::Unit::Pixels;
        text.remove_suffix(2);
    } else if (endsWith(text, "%")) {
        length.unit = Length::Unit::Percent;
        text.remove_suffix(1);
    }
    const auto value = parseReal(text);
    if (!value)
        return std::nullopt;
    length.value = *value;
    return length;
}

std::string formatLength(const Length& length)
{
    const std::string number = korvane::formatNumber(length.value);
    switch (length.unit) {
    case Length::Unit::Pixels: return number + "px";
    case Length::Unit::Percent: return number + "%";
    default: return number;
    }
}

std::optional<Position> parsePosition(std::string_view text)
{
    const std::size_t comma = text.find(',');
    if (comma == std::string_view::npos)
        return std::nullopt;
    const auto x = parseLength(text.substr(0, comma));
    const auto y = parseLength(text.substr(comma + 1));
    if (!x || !y)
        return std::nullopt;
    return Position{*x, *y};
}

} // namespace glintwave::cli
