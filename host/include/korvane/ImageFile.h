// ImageFile.h - writing frames the plug-in painted.
//
// A 48-bit frame holds three unsigned 16-bit channels per pixel, red, green,
// blue, with 16320 (255 x 64) as full level. Files use the full 16-bit range,
// so every level is scaled by 65535 / 16320 with rounding.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace korvane {

// A frame level 0..16320 as a 16-bit file value; levels above 16320 are full.
std::uint16_t levelTo16Bit(std::uint16_t level);

// A binary P6 image with maxval 65535 (big-endian samples) of a 48-bit frame
// of width x height pixels, rows packed. Throws std::invalid_argument when
// the sizes are not positive or `pixels` holds fewer than width x height x 3
// values.
std::vector<std::uint8_t> encodePpm48(std::span<const std::uint16_t> pixels, std::int32_t width,
                                      std::int32_t height);

// Writes the bytes to a temporary name in the same folder and renames it over
// `path`, so a reader never sees half a file. Throws std::runtime_error
// naming the file.
void writeFileReplacing(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);

} // namespace korvane
