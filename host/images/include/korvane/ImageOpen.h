// ImageOpen.h - the one way an image file from outside is opened: its
// format found from its first bytes, the header fields the readers size
// buffers from checked against the file, the reader of that format alone
// opening it, and what it declares checked against our limits before any
// pixel is read.
#pragma once

#include <OpenImageIO/imageio.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace korvane {

// The largest side of any image or frame the host reads or makes.
inline constexpr std::int32_t kMaxImageSide = 32768;
// Channels a file may declare: room for a render's layers, far below what
// would let a header alone claim gigabytes.
inline constexpr int kMaxImageChannels = 256;

// Limits a caller puts on an image before its pixels are read.
struct ImageLimits {
    std::int32_t maxSide = kMaxImageSide;
    std::uint64_t maxBytes = 0;  // of the decoded image, ours or the reader's; 0: no limit
};

struct OpenedImage {
    std::unique_ptr<OIIO::ImageInput> input;
    OIIO::ImageSpec spec;  // checked: one flat, not deep, image within the limits
    std::string format;    // the reader's format name ("png", "openexr", ...)
};

// Opens the first image of an untrusted file. Throws Error naming the file
// and what is wrong for a file that is missing, of a format we do not read,
// damaged, or beyond the limits. Sets the image libraries' own process-wide
// limits the first time it is called.
OpenedImage openImageSafely(const std::filesystem::path& file, const ImageLimits& limits = {});

} // namespace korvane
