// Base64.h - the standard alphabet with '=' padding, for opaque bytes inside
// text files.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

std::string encodeBase64(std::span<const std::uint8_t> bytes);
// Null when the text is not canonical base64: a length that is not a
// multiple of 4, a character outside the alphabet, or misplaced padding.
std::optional<std::vector<std::uint8_t>> decodeBase64(std::string_view text);

} // namespace korvane
