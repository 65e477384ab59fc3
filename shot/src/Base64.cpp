// Base64.cpp - encoding and strict decoding.

#include "korvane/Base64.h"

#include <algorithm>

namespace korvane {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

int sextet(char c)
{
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    if (c >= '0' && c <= '9') return c - '0' + 52;
    if (c == '+') return 62;
    if (c == '/') return 63;
    return -1;
}

} // namespace

std::string encodeBase64(std::span<const std::uint8_t> bytes)
{
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t n = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t group = std::uint32_t{bytes[i]} << 16;
        if (n > 1) group |= std::uint32_t{bytes[i + 1]} << 8;
        if (n > 2) group |= bytes[i + 2];
        for (std::size_t k = 0; k < 4; k++)
            text += k <= n ? kAlphabet[(group >> (18 - 6 * k)) & 63] : '=';
    }
    return text;
}

std::optional<std::vector<std::uint8_t>> decodeBase64(std::string_view text)
{
    if (text.size() % 4 != 0)
        return std::nullopt;
    std::vector<std::uint8_t> bytes;
    bytes.reserve(text.size() / 4 * 3);
    for (std::size_t i = 0; i < text.size(); i += 4) {
        const bool last = i + 4 == text.size();
        const std::size_t padding = last ? (text[i + 3] == '=') + (text[i + 2] == '=' && text[i + 3] == '=') : 0;
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 4; k++) {
            const int value = k < 4 - padding ? sextet(text[i + k]) : 0;
            if (value < 0)
                return std::nullopt;
            group = group << 6 | static_cast<std::uint32_t>(value);
        }
        // Bits below the last byte must be zero, so each text has one reading.
        if ((padding == 1 && (group & 0xFF) != 0) || (padding == 2 && (group & 0xFFFF) != 0))
            return std::nullopt;
        for (std::size_t k = 0; k < 3 - padding; k++)
            bytes.push_back(static_cast<std::uint8_t>(group >> (16 - 8 * k)));
    }
    return bytes;
}

} // namespace korvane
