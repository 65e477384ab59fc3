// ImageFile.h - 48-bit frame levels as 16-bit file samples, and files
// written through a temporary name.
//
// A 48-bit frame holds three unsigned 16-bit channels per pixel, red, green,
// blue, with 16320 (255 x 64) as full level. Files use the full 16-bit range,
// so every level is scaled by 65535 / 16320 with rounding, and back.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace korvane {

// A frame level 0..16320 as a 16-bit file value; levels above 16320 are full.
std::uint16_t levelTo16Bit(std::uint16_t level);
// A 16-bit file value as a frame level: the nearest of 0..16320.
std::uint16_t levelFrom16Bit(std::uint16_t sample);

// Writes the bytes to a temporary name in the same folder and renames it over
// `path`, so a reader never sees half a file. Throws Error
// naming the file.
void writeFileReplacing(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);

} // namespace korvane
