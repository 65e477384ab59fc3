// NumberText.cpp - the shortest round-trip text of a double.

#include "korvane/NumberText.h"

#include <charconv>
#include <system_error>

namespace korvane {

std::string formatNumber(double value)
{
    char text[32];  // the longest shortest form, "-2.2250738585072014e-308", needs 24
    const auto [end, error] = std::to_chars(text, text + sizeof text, value);
    return error == std::errc() ? std::string(text, end) : std::string("?");
}

} // namespace korvane
