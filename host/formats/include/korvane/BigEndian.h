// BigEndian.h - reading and writing big-endian numbers in byte buffers.
//
// Resource files store every number most significant byte first, whatever the
// machine. These helpers are the one place where that order is decided. The
// readers never look past the end of the buffer: the caller checks the range
// first (they assert nothing and throw nothing).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace korvane::be {

inline std::uint16_t readU16(std::span<const std::uint8_t> bytes, std::size_t at)
{
    return static_cast<std::uint16_t>((bytes[at] << 8) | bytes[at + 1]);
}

inline std::int16_t readS16(std::span<const std::uint8_t> bytes, std::size_t at)
{
    return static_cast<std::int16_t>(readU16(bytes, at));
}

inline std::uint32_t readU24(std::span<const std::uint8_t> bytes, std::size_t at)
{
    return (std::uint32_t{bytes[at]} << 16) | (std::uint32_t{bytes[at + 1]} << 8) |
           std::uint32_t{bytes[at + 2]};
}

inline std::uint32_t readU32(std::span<const std::uint8_t> bytes, std::size_t at)
{
    return (std::uint32_t{bytes[at]} << 24) | (std::uint32_t{bytes[at + 1]} << 16) |
           (std::uint32_t{bytes[at + 2]} << 8) | std::uint32_t{bytes[at + 3]};
}

inline std::int32_t readS32(std::span<const std::uint8_t> bytes, std::size_t at)
{
    return static_cast<std::int32_t>(readU32(bytes, at));
}

inline void appendU8(std::vector<std::uint8_t>& out, std::uint32_t value)
{
    out.push_back(static_cast<std::uint8_t>(value));
}

inline void appendU16(std::vector<std::uint8_t>& out, std::uint32_t value)
{
    out.push_back(static_cast<std::uint8_t>(value >> 8));
    out.push_back(static_cast<std::uint8_t>(value));
}

inline void appendU24(std::vector<std::uint8_t>& out, std::uint32_t value)
{
    out.push_back(static_cast<std::uint8_t>(value >> 16));
    out.push_back(static_cast<std::uint8_t>(value >> 8));
    out.push_back(static_cast<std::uint8_t>(value));
}

inline void appendU32(std::vector<std::uint8_t>& out, std::uint32_t value)
{
    out.push_back(static_cast<std::uint8_t>(value >> 24));
    out.push_back(static_cast<std::uint8_t>(value >> 16));
    out.push_back(static_cast<std::uint8_t>(value >> 8));
    out.push_back(static_cast<std::uint8_t>(value));
}

inline void putU32(std::vector<std::uint8_t>& out, std::size_t at, std::uint32_t value)
{
    out[at] = static_cast<std::uint8_t>(value >> 24);
    out[at + 1] = static_cast<std::uint8_t>(value >> 16);
    out[at + 2] = static_cast<std::uint8_t>(value >> 8);
    out[at + 3] = static_cast<std::uint8_t>(value);
}

inline void putU16(std::vector<std::uint8_t>& out, std::size_t at, std::uint32_t value)
{
    out[at] = static_cast<std::uint8_t>(value >> 8);
    out[at + 1] = static_cast<std::uint8_t>(value);
}

} // namespace korvane::be
