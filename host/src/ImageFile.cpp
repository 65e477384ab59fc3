// ImageFile.cpp - 16-bit PPM frames and files written through a temporary name.

#include "korvane/ImageFile.h"

#include <unistd.h>

#include <fstream>
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

std::vector<std::uint8_t> encodePpm48(std::span<const std::uint16_t> pixels, std::int32_t width,
                                      std::int32_t height)
{
    if (width <= 0 || height <= 0)
        throw std::invalid_argument("an image needs a positive width and height");
    const std::size_t samples = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3;
    if (pixels.size() < samples)
        throw std::invalid_argument("the frame holds fewer pixels than its size says");

    const std::string header = "P6\n" + std::to_string(width) + " " + std::to_string(height) + "\n65535\n";
    std::vector<std::uint8_t> bytes(header.begin(), header.end());
    bytes.reserve(header.size() + samples * 2);
    for (std::size_t i = 0; i < samples; ++i) {
        const std::uint16_t value = levelTo16Bit(pixels[i]);
        bytes.push_back(static_cast<std::uint8_t>(value >> 8));
        bytes.push_back(static_cast<std::uint8_t>(value));
    }
    return bytes;
}

void writeFileReplacing(const std::filesystem::path& path, std::span<const std::uint8_t> bytes)
{
    // A name of our own (hidden, with the process id) in the target's
    // folder, so the rename stays on one file system.
    std::filesystem::path temporary = path;
    temporary.replace_filename("." + path.filename().string() + ".tmp-" + std::to_string(getpid()));
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        if (!out)
            throw std::runtime_error(path.string() + ": cannot create " + temporary.filename().string());
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        out.flush();
        if (!out) {
            out.close();
            std::error_code ignored;
            std::filesystem::remove(temporary, ignored);
            throw std::runtime_error(path.string() + ": write error (disk full?)");
        }
    }
    std::error_code error;
    std::filesystem::rename(temporary, path, error);
    if (error) {
        std::error_code ignored;
        std::filesystem::remove(temporary, ignored);
        throw std::runtime_error(path.string() + ": cannot write: " + error.message());
    }
}

} // namespace korvane
