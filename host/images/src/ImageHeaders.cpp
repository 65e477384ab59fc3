// ImageHeaders.cpp - formats by their first bytes, and the header fields
// that installed readers trust before allocating, checked against the file.

#include "ImageHeaders.h"

#include <algorithm>
#include <array>
#include <utility>

namespace korvane {
namespace {

constexpr std::size_t kWindow = 4096;
constexpr std::uint32_t kDpxUnset = 0xFFFFFFFFu;

bool startsWith(std::string_view bytes, std::string_view magic)
{
    return bytes.substr(0, magic.size()) == magic;
}

std::string bytesText(std::uint64_t count)
{
    return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

// DPX keeps its header fields in the byte order its magic names. The reader
// sizes a buffer from the user data length while it opens the file, and
// seeks to the image data offset: both must lie inside the file.
std::optional<std::string> dpxFault(FileBytes& file)
{
    constexpr std::uint64_t kCoreHeader = 768 + 640;  // file and image information
    const std::uint64_t size = file.size();
    if (size < kCoreHeader)
        return "is cut short: " + bytesText(size) + ", less than the " + bytesText(kCoreHeader) +
               " every DPX header holds";
    const bool bigEndian = file.at(0) == 'S';
    const std::uint32_t dataOffset = *file.u32(4, bigEndian);
    const std::uint32_t genericSize = *file.u32(24, bigEndian);
    const std::uint32_t industrySize = *file.u32(28, bigEndian);
    const std::uint32_t userSize = *file.u32(32, bigEndian);
    const std::string past = ", past the end of the file (" + bytesText(size) + "); the file is damaged";
    if (dataOffset > size)
        return "its image data offset (byte 4) is " + std::to_string(dataOffset) + past;
    std::uint64_t headers = 0;
    for (const std::uint32_t part : {genericSize, industrySize})
        if (part != kDpxUnset)
            headers += part;
    if (headers > size)
        return "its header sizes (bytes 24 and 28) add up to " + std::to_string(headers) + past;
    if (userSize != kDpxUnset && userSize > size)
        return "its user data size (byte 32) is " + std::to_string(userSize) + past;
    return std::nullopt;
}

// PNG is a chain of chunks, each with its length first; the reader
// allocates a chunk's declared length before reading it.
std::optional<std::string> pngFault(FileBytes& file)
{
    constexpr std::uint32_t kMaxChunk = 0x7FFFFFFFu;
    std::uint64_t at = 8;
    while (at + 12 <= file.size()) {
        const std::uint32_t length = *file.u32(at, true);
        std::string type;
        for (std::uint64_t i = 4; i < 8; ++i) {
            const char c = static_cast<char>(*file.at(at + i));
            type += c >= 0x20 && c < 0x7F ? c : '?';
        }
        if (length > kMaxChunk || at + 12 + length > file.size())
            return "its " + type + " chunk at byte " + std::to_string(at) + " declares " + bytesText(length) +
                   ", past the end of the file (" + bytesText(file.size()) + "); the file is damaged or cut short";
        if (type == "IEND")
            return std::nullopt;
        at += 12 + std::uint64_t{length};
    }
    return std::nullopt;  // no end chunk: the reader says the file is cut short
}

// The library reads a value of a known type by its type, not by the size
// the header gives it: the two must agree, or it reads the rest of the
// header from another place than we check.
bool exrValueFits(FileBytes& file, const std::string& type, std::uint64_t at, std::uint32_t size)
{
    static constexpr std::pair<std::string_view, std::uint32_t> kFixed[] = {
        {"box2i", 16},        {"box2f", 16},  {"v2i", 8},        {"v2f", 8},       {"v2d", 16},
        {"v3i", 12},          {"v3f", 12},    {"v3d", 24},       {"float", 4},     {"int", 4},
        {"double", 8},        {"compression", 1}, {"lineOrder", 1}, {"envmap", 1}, {"deepImageState", 1},
        {"tiledesc", 9},      {"chromaticities", 32}, {"keycode", 28}, {"timecode", 8}, {"rational", 8},
        {"m33f", 36},         {"m44f", 64},   {"m33d", 72},      {"m44d", 128},
    };
    for (const auto& [name, bytes] : kFixed)
        if (type == name)
            return size == bytes;
    if (type == "preview") {  // width and height, then four bytes a pixel
        const std::optional<std::uint32_t> width = file.u32(at, false);
        const std::optional<std::uint32_t> height = file.u32(at + 4, false);
        return size >= 8 && width && height && 8 + std::uint64_t{*width} * *height * 4 == size;
    }
    if (type == "chlist") {  // names with 16 bytes each, up to an empty name
        const std::uint64_t end = at + size;
        while (at < end) {
            std::uint64_t length = 0;
            while (at + length < end && file.at(at + length) != std::uint8_t{0})
                ++length;
            if (at + length >= end)
                return false;
            if (length == 0)
                return at + 1 == end;
            at += length + 1 + 16;
        }
        return false;
    }
    return true;  // strings, vectors and unknown types are read by their size
}

// OpenEXR headers are lists of attributes (name, type, size, value), one
// list per part; the library allocates each attribute's declared size
// before reading it, so every attribute must fit in the file.
std::optional<std::string> exrFault(FileBytes& file)
{
    constexpr std::uint32_t kLongNames = 0x400;
    constexpr std::uint32_t kMultiPart = 0x1000;
    const std::optional<std::uint32_t> version = file.u32(4, false);
    if (!version)
        return "is cut short inside its header; the file is damaged";
    const std::uint64_t maxName = (*version & kLongNames) ? 256 : 32;
    const bool multiPart = (*version & kMultiPart) != 0;
    const std::string cut = "is cut short inside its header; the file is damaged";

    // Reads a NUL-terminated name at `at`; returns it and moves past it.
    auto name = [&](std::uint64_t& at) -> std::optional<std::string> {
        std::string text;
        for (std::uint64_t i = 0; i < maxName; ++i) {
            const std::optional<std::uint8_t> byte = file.at(at + i);
            if (!byte)
                return std::nullopt;
            if (*byte == 0) {
                at += i + 1;
                return text;
            }
            text += static_cast<char>(*byte);
        }
        return std::nullopt;
    };

    std::uint64_t at = 8;
    for (int part = 0;; ++part) {
        const std::optional<std::uint8_t> first = file.at(at);
        if (!first)
            return cut;
        if (*first == 0) {
            // An empty header ends a multi-part file's list of headers.
            return part > 0 || !multiPart ? std::nullopt : std::optional<std::string>(cut);
        }
        for (;;) {
            const std::optional<std::uint8_t> next = file.at(at);
            if (!next)
                return cut;
            if (*next == 0) {
                ++at;
                break;
            }
            const std::optional<std::string> attribute = name(at);
            const std::optional<std::string> type = attribute ? name(at) : std::nullopt;
            if (!type)
                return "has a header attribute name longer than " + std::to_string(maxName - 1) +
                       " characters or cut short; the file is damaged";
            const std::optional<std::uint32_t> size = file.u32(at, false);
            if (!size)
                return cut;
            at += 4;
            if (*size > 0x7FFFFFFFu || at + *size > file.size())
                return "its header attribute \"" + *attribute + "\" declares " + bytesText(*size) +
                       ", past the end of the file (" + bytesText(file.size()) + "); the file is damaged";
            if (!exrValueFits(file, *type, at, *size))
                return "its header attribute \"" + *attribute + "\" of type " + *type + " does not hold the " +
                       bytesText(*size) + " it declares; the file is damaged";
            at += *size;
        }
        if (!multiPart)
            return std::nullopt;
    }
}

} // namespace

FileBytes::FileBytes(const std::string& name) : in_(name, std::ios::binary)
{
    if (!in_)
        return;
    in_.seekg(0, std::ios::end);
    const std::streamoff end = in_.tellg();
    if (end < 0)
        return;
    size_ = static_cast<std::uint64_t>(end);
    opened_ = true;
}

std::optional<std::uint8_t> FileBytes::at(std::uint64_t offset)
{
    if (!opened_ || offset >= size_)
        return std::nullopt;
    if (offset < windowStart_ || offset >= windowStart_ + window_.size()) {
        windowStart_ = offset - offset % kWindow;
        window_.resize(static_cast<std::size_t>(std::min<std::uint64_t>(kWindow, size_ - windowStart_)));
        in_.clear();
        in_.seekg(static_cast<std::streamoff>(windowStart_));
        in_.read(reinterpret_cast<char*>(window_.data()), static_cast<std::streamsize>(window_.size()));
        if (in_.gcount() != static_cast<std::streamsize>(window_.size())) {
            // The file shrank under us: take it as ending here.
            size_ = windowStart_ + static_cast<std::uint64_t>(std::max<std::streamsize>(in_.gcount(), 0));
            window_.resize(static_cast<std::size_t>(size_ - windowStart_));
            if (offset >= size_)
                return std::nullopt;
        }
    }
    return window_[static_cast<std::size_t>(offset - windowStart_)];
}

std::optional<std::uint32_t> FileBytes::u32(std::uint64_t offset, bool bigEndian)
{
    std::uint32_t value = 0;
    for (std::uint64_t i = 0; i < 4; ++i) {
        const std::optional<std::uint8_t> byte = at(offset + (bigEndian ? i : 3 - i));
        if (!byte)
            return std::nullopt;
        value = value << 8 | *byte;
    }
    return value;
}

std::string formatByContent(std::string_view bytes)
{
    struct Magic {
        std::string_view bytes;
        const char* format;
    };
    using namespace std::string_view_literals;
    static constexpr std::array<Magic, 20> kMagics = {{
        {"\x89PNG\r\n\x1a\n"sv, "png"},
        {"\xFF\xD8\xFF"sv, "jpeg"},
        {"II*\0"sv, "tiff"},
        {"MM\0*"sv, "tiff"},
        {"II+\0"sv, "tiff"},
        {"MM\0+"sv, "tiff"},
        {"v/1\x01"sv, "openexr"},
        {"SDPX"sv, "dpx"},
        {"XPDS"sv, "dpx"},
        {"#?RADIANCE"sv, "hdr"},
        {"#?RGBE"sv, "hdr"},
        {"BM"sv, "bmp"},
        {"PF"sv, "pnm"},
        {"Pf"sv, "pnm"},
        {"P1"sv, "pnm"},
        {"P4"sv, "pnm"},
        {"P5"sv, "pnm"},
        {"P2"sv, "pnm"},
        {"P3"sv, "pnm"},
        {"P6"sv, "pnm"},
    }};
    for (const Magic& magic : kMagics)
        if (startsWith(bytes, magic.bytes))
            return magic.format;
    return {};
}

// BMP: the reader's run-length decoding trusts the header (an RLE8 image
// that claims 24 bits a pixel crashed it), and compressed BMPs are not what
// artists hand us; only plain and bit-field images are read.
std::optional<std::string> bmpFault(FileBytes& file)
{
    constexpr std::uint64_t kInfoHeaderAt = 14;
    const std::optional<std::uint32_t> infoSize = file.u32(kInfoHeaderAt, false);
    if (!infoSize)
        return "is cut short before its header ends; the file is damaged";
    if (*infoSize < 40)  // the oldest header has no compression field
        return std::nullopt;
    const std::optional<std::uint32_t> compression = file.u32(30, false);
    if (!compression)
        return "is cut short before its header ends; the file is damaged";
    if (*compression != 0 && *compression != 3)
        return "is compressed (method " + std::to_string(*compression) +
               "), which is not read here; save it uncompressed or as PNG";
    return std::nullopt;
}

std::optional<std::string> headerFault(const std::string& format, FileBytes& file)
{
    if (format == "bmp")
        return bmpFault(file);
    if (format == "dpx")
        return dpxFault(file);
    if (format == "png")
        return pngFault(file);
    if (format == "openexr")
        return exrFault(file);
    return std::nullopt;
}

} // namespace korvane
