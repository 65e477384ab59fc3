// RenderImage.h - host-side frame buffers for whole-frame renders through
// Main: a buffer wrapped in guard bytes, a checksum of its pixels, and
// writers that dump it as a PPM or PGM file for looking at.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "glintwave/GlintwaveRecords.h"

namespace glintwave::testhost {

// The byte a guard holds at storage position i: it changes with the
// position, so a write shifted by a few bytes shows too.
inline std::uint8_t guardByte(std::size_t i)
{
    return static_cast<std::uint8_t>(0xA5u ^ ((i * 29u) & 0xFFu));
}

inline std::size_t pixelBytes(std::int16_t depth)
{
    return depth == 48 ? 6 : depth == 32 ? 4 : 1;
}

// FNV-1a, 64 bits.
inline std::uint64_t fnv1a64(const std::vector<std::uint8_t>& bytes)
{
    std::uint64_t hash = 0xCBF29CE484222325ull;
    for (std::uint8_t byte : bytes) {
        hash ^= byte;
        hash *= 0x100000001B3ull;
    }
    return hash;
}

// A host frame buffer covering `rect` (frame coordinates) at one depth.
// Guard bytes lie before the first row, after the last and in the padding
// at the end of every row (rowBytes exceeds width × pixel size by
// `padding`); a plug-in that writes anywhere but the pixels changes them.
class GuardedImage {
public:
    static constexpr std::size_t kGuardBytes = 64;

    GuardedImage(const L_Rect& rect, std::int16_t depth, std::size_t padding = 12)
        : rect_(rect), depth_(depth), pixel_(pixelBytes(depth)), rowBytes_(rect.width * pixel_ + padding),
          storage_(kGuardBytes * 2 + rowBytes_ * rect.height)
    {
        for (std::size_t i = 0; i < storage_.size(); ++i)
            storage_[i] = guardByte(i);
    }

    const L_Rect& rect() const { return rect_; }
    std::int16_t depth() const { return depth_; }
    std::size_t pixelSize() const { return pixel_; }
    std::uint32_t width() const { return rect_.width; }
    std::uint32_t height() const { return rect_.height; }
    std::uint8_t* base() { return storage_.data() + kGuardBytes; }
    std::int32_t rowBytes() const { return static_cast<std::int32_t>(rowBytes_); }
    std::size_t rowPixelBytes() const { return rect_.width * pixel_; }

    std::uint8_t* row(std::uint32_t y) { return base() + rowBytes_ * y; }
    const std::uint8_t* row(std::uint32_t y) const { return storage_.data() + kGuardBytes + rowBytes_ * y; }
    std::uint8_t* pixel(std::uint32_t x, std::uint32_t y) { return row(y) + pixel_ * x; }
    const std::uint8_t* pixel(std::uint32_t x, std::uint32_t y) const { return row(y) + pixel_ * x; }

    // 48-bit channel c (0 red, 1 green, 2 blue) and the 32-bit pixel value.
    std::uint16_t channel48(std::uint32_t x, std::uint32_t y, int c) const
    {
        std::uint16_t value;
        std::memcpy(&value, pixel(x, y) + 2 * c, sizeof value);
        return value;
    }
    std::uint32_t pixel32(std::uint32_t x, std::uint32_t y) const
    {
        std::uint32_t value;
        std::memcpy(&value, pixel(x, y), sizeof value);
        return value;
    }
    void setPixel32(std::uint32_t x, std::uint32_t y, std::uint32_t value) { std::memcpy(pixel(x, y), &value, 4); }

    // Every pixel byte set through the callback (x, y relative to the buffer).
    void fill(const std::function<void(std::uint32_t x, std::uint32_t y, std::uint8_t* pixel)>& paint)
    {
        for (std::uint32_t y = 0; y < height(); ++y)
            for (std::uint32_t x = 0; x < width(); ++x)
                paint(x, y, pixel(x, y));
    }

    // The pixel rows one after the other, without the padding.
    std::vector<std::uint8_t> pixels() const
    {
        std::vector<std::uint8_t> out;
        out.reserve(rowPixelBytes() * height());
        for (std::uint32_t y = 0; y < height(); ++y)
            out.insert(out.end(), row(y), row(y) + rowPixelBytes());
        return out;
    }
    const std::vector<std::uint8_t>& storage() const { return storage_; }

    // Where the first changed guard byte lies, or nothing when all are intact.
    std::optional<std::string> damagedGuard() const
    {
        const std::size_t end = storage_.size();
        for (std::size_t i = 0; i < end; ++i) {
            if (isPixelByte(i) || storage_[i] == guardByte(i))
                continue;
            if (i < kGuardBytes)
                return "guard before the buffer, byte " + std::to_string(i);
            if (i >= end - kGuardBytes)
                return "guard after the buffer, byte " + std::to_string(i - (end - kGuardBytes));
            const std::size_t offset = i - kGuardBytes;
            return "padding of row " + std::to_string(offset / rowBytes_) + ", byte " +
                   std::to_string(offset % rowBytes_ - rowPixelBytes());
        }
        return std::nullopt;
    }

    // Writes the image for looking at: 48-bit as a 16-bit PPM with the
    // 16320 full level as its maximum, 32-bit as an 8-bit PPM (alpha left
    // out), 8-bit as a PGM of the raw indices.
    bool dump(const std::string& path) const
    {
        std::ofstream out(path, std::ios::binary);
        if (!out)
            return false;
        if (depth_ == 8) {
            out << "P5\n" << width() << ' ' << height() << "\n255\n";
            for (std::uint32_t y = 0; y < height(); ++y)
                out.write(reinterpret_cast<const char*>(row(y)), static_cast<std::streamsize>(width()));
            return static_cast<bool>(out);
        }
        out << "P6\n" << width() << ' ' << height() << '\n' << (depth_ == 48 ? 16320 : 255) << '\n';
        for (std::uint32_t y = 0; y < height(); ++y) {
            for (std::uint32_t x = 0; x < width(); ++x) {
                if (depth_ == 48) {
                    for (int c = 0; c < 3; ++c) {
                        const std::uint16_t value = channel48(x, y, c);
                        out.put(static_cast<char>(value >> 8)).put(static_cast<char>(value & 0xFF));
                    }
                } else {
                    const std::uint32_t value = pixel32(x, y);
                    out.put(static_cast<char>((value >> 16) & 0xFF))
                        .put(static_cast<char>((value >> 8) & 0xFF))
                        .put(static_cast<char>(value & 0xFF));
                }
            }
        }
        return static_cast<bool>(out);
    }

private:
    bool isPixelByte(std::size_t i) const
    {
        if (i < kGuardBytes || i >= storage_.size() - kGuardBytes)
            return false;
        return (i - kGuardBytes) % rowBytes_ < rowPixelBytes();
    }

    L_Rect rect_;
    std::int16_t depth_;
    std::size_t pixel_;
    std::size_t rowBytes_;
    std::vector<std::uint8_t> storage_;
};

} // namespace glintwave::testhost
