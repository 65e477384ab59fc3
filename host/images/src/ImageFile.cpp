// ImageFile.cpp - frame levels as 16-bit samples and files written through a temporary name.

#include "korvane/ImageFile.h"

#include "korvane/Error.h"

#include "WholeFile.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include <stdexcept>
#include <string>
#include <system_error>

namespace korvane {
namespace {

constexpr std::uint32_t kFullLevel = 16320;  // 255 x 64
constexpr std::uint32_t kFull16 = 65535;

} // namespace

std::uint16_t levelTo16Bit(std::uint16_t level)
{
    const std::uint32_t clamped = level < kFullLevel ? level : kFullLevel;
    return static_cast<std::uint16_t>((clamped * kFull16 + kFullLevel / 2) / kFullLevel);
}

std::uint16_t levelFrom16Bit(std::uint16_t sample)
{
    return static_cast<std::uint16_t>((std::uint32_t{sample} * kFullLevel + kFull16 / 2) / kFull16);
}

void writeFileReplacing(const std::filesystem::path& path, std::span<const std::uint8_t> bytes)
{
    // A name of our own (hidden, with the process id) in the target's
    // folder, so the rename stays on one file system.
    std::filesystem::path temporary = path;
    temporary.replace_filename("." + path.filename().string() + ".tmp-" + std::to_string(getpid()));
    if (const int failure = writeNewFile(temporary, bytes))
        throw Error(path.string() + ": cannot write it: " + std::strerror(failure));
    std::error_code error;
    std::filesystem::rename(temporary, path, error);
    if (error) {
        std::error_code ignored;
        std::filesystem::remove(temporary, ignored);
        throw Error(path.string() + ": cannot write: " + error.message());
    }
}

} // namespace korvane
