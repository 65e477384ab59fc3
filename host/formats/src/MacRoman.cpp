// MacRoman.cpp - Mac OS Roman <-> UTF-8.

#include "korvane/MacRoman.h"

#include <array>
#include <cstdint>

namespace korvane {
namespace {

// Code points of the bytes 0x80..0xFF; 0x00..0x7F are ASCII.
constexpr std::array<char32_t, 128> kHighHalf = {
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1,  // 80
    0x00E0, 0x00E2, 0x00E4, 0x00E3, 0x00E5, 0x00E7, 0x00E9, 0x00E8,  // 88
    0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3,  // 90
    0x00F2, 0x00F4, 0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC,  // 98
    0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7, 0x2022, 0x00B6, 0x00DF,  // A0
    0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8,  // A8
    0x221E, 0x00B1, 0x2264, 0x2265, 0x00A5, 0x00B5, 0x2202, 0x2211,  // B0
    0x220F, 0x03C0, 0x222B, 0x00AA, 0x00BA, 0x03A9, 0x00E6, 0x00F8,  // B8
    0x00BF, 0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB,  // C0
    0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5, 0x0152, 0x0153,  // C8
    0x2013, 0x2014, 0x201C, 0x201D, 0x2018, 0x2019, 0x00F7, 0x25CA,  // D0
    0x00FF, 0x0178, 0x2044, 0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02,  // D8
    0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1,  // E0
    0x00CB, 0x00C8, 0x00CD, 0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4,  // E8
    0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9, 0x0131, 0x02C6, 0x02DC,  // F0
    0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7,  // F8
};

void appendUtf8(std::string& out, char32_t c)
{
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        // The table holds nothing beyond the basic plane.
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

// Decodes one UTF-8 character at `at`; returns its length, 0 when invalid.
std::size_t decodeUtf8(std::string_view text, std::size_t at, char32_t& out)
{
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    const std::uint8_t lead = byte(at);
    std::size_t length;
    char32_t c;
    if (lead < 0x80)
        return out = lead, 1;
    if (lead >= 0xC2 && lead <= 0xDF)
        length = 2, c = lead & 0x1F;
    else if (lead >= 0xE0 && lead <= 0xEF)
        length = 3, c = lead & 0x0F;
    else if (lead >= 0xF0 && lead <= 0xF4)
        length = 4, c = lead & 0x07;
    else
        return 0;
    if (at + length > text.size())
        return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xC0) != 0x80)
            return 0;
        c = (c << 6) | (byte(at + i) & 0x3F);
    }
    // Refuse overlong forms, surrogates and code points past U+10FFFF.
    if ((length == 3 && c < 0x800) || (length == 4 && (c < 0x10000 || c > 0x10FFFF)) ||
        (c >= 0xD800 && c <= 0xDFFF))
        return 0;
    out = c;
    return length;
}

} // namespace

std::string macRomanToUtf8(std::string_view macRoman)
{
    std::string out;
    out.reserve(macRoman.size());
    for (const char ch : macRoman) {
        const auto b = static_cast<std::uint8_t>(ch);
        appendUtf8(out, b < 0x80 ? char32_t{b} : kHighHalf[b - 0x80]);
    }
    return out;
}

std::optional<std::string> utf8ToMacRoman(std::string_view utf8, std::string* badCharacter)
{
    std::string out;
    out.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size();) {
        char32_t c = 0;
        const std::size_t length = decodeUtf8(utf8, at, c);
        if (length == 0) {
            if (badCharacter)
                *badCharacter = std::string(utf8.substr(at, 1));
            return std::nullopt;
        }
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else {
            std::size_t i = 0;
            while (i < kHighHalf.size() && kHighHalf[i] != c)
                ++i;
            if (i == kHighHalf.size()) {
                if (badCharacter)
                    *badCharacter = std::string(utf8.substr(at, length));
                return std::nullopt;
            }
            out += static_cast<char>(0x80 + i);
        }
        at += length;
    }
    return out;
}

} // namespace korvane
