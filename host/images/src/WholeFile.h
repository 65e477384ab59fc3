// WholeFile.h - a file written whole or not at all, for the writers of
// this folder.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

namespace korvane {

// Creates (or empties) `file` and writes all the bytes to it. Returns 0, or
// the errno value of the failure (a full disk, a file size limit, a
// read-only folder), after removing what it wrote.
int writeNewFile(const std::filesystem::path& file, std::span<const std::uint8_t> bytes);

} // namespace korvane
