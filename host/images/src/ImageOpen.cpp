// ImageOpen.cpp - untrusted image files opened by the reader of their
// format alone, after their headers were checked, with what they declare
// checked before any pixel is read.

#include "korvane/ImageOpen.h"

#include "korvane/Error.h"

#include "ImageHeaders.h"
#include "LibraryText.h"

#include <OpenEXR/ImfHeader.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <mutex>
#include <string_view>
#include <system_error>

namespace korvane {
namespace {

constexpr const char* kReadableHint = "give a PNG, JPEG, TIFF, EXR, DPX or HDR file";

// The readers we let see a file: the formats artists hand us, each tried
// against damaged headers. Others (camera raw, video, the many rarely used
// formats the library also knows) are refused rather than trusted.
constexpr std::array<std::string_view, 9> kReadable = {"png", "jpeg", "tiff", "openexr", "hdr",
                                                       "dpx", "pnm",  "bmp",  "targa"};

bool readable(std::string_view format)
{
    return std::find(kReadable.begin(), kReadable.end(), format) != kReadable.end();
}

// The libraries' own caps, for the checks they make themselves: no side
// beyond ours, no more channels than we accept, no image larger than four
// float channels at the largest size.
void setLibraryLimits()
{
    static std::once_flag once;
    std::call_once(once, [] {
        constexpr std::uint64_t kMaxImageMB =
            std::uint64_t{kMaxImageSide} * kMaxImageSide * 4 * sizeof(float) / (1024 * 1024);
        OIIO::attribute("limits:channels", kMaxImageChannels);
        OIIO::attribute("limits:imagesize_MB", static_cast<int>(kMaxImageMB));
        Imf::Header::setMaxImageSize(kMaxImageSide, kMaxImageSide);
        Imf::Header::setMaxTileSize(kMaxImageSide, kMaxImageSide);
    });
}

// The format of a file: by its first bytes, or for a format without a
// signature (Targa) by the name's extension.
std::string formatOf(const std::string& name, FileBytes& bytes)
{
    std::string first;
    for (std::uint64_t i = 0; i < 16; ++i)
        if (const std::optional<std::uint8_t> byte = bytes.at(i))
            first += static_cast<char>(*byte);
    std::string format = formatByContent(first);
    if (!format.empty())
        return format;
    // By our own test of the name: the library's lookup by name would
    // offer a file its named reader refuses to every other reader it has.
    std::string extension = std::filesystem::path(name).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (extension == ".tga" || extension == ".tpic")
        return "targa";
    throw Error(ErrorPlace{name}, std::string("cannot read it as an image (its first bytes are of no format read "
                                              "here); ") + kReadableHint);
}

std::string sizeText(const OIIO::ImageSpec& spec)
{
    return std::to_string(spec.width) + "x" + std::to_string(spec.height);
}

void checkSpec(const std::string& name, const OIIO::ImageSpec& spec, const ImageLimits& limits)
{
    if (spec.deep)
        throw Error(ErrorPlace{name}, "holds deep samples, not a flat image; give a flat image");
    if (spec.width < 1 || spec.height < 1 || spec.depth != 1 || spec.nchannels < 1)
        throw Error(ErrorPlace{name}, "holds no flat image with pixels; give a 2D image");
    if (spec.width > limits.maxSide || spec.height > limits.maxSide)
        throw Error(ErrorPlace{name}, "is " + sizeText(spec) + " pixels; each side may be at most " +
                                      std::to_string(limits.maxSide));
    if (spec.nchannels > kMaxImageChannels)
        throw Error(ErrorPlace{name}, "declares " + std::to_string(spec.nchannels) + " channels; at most " +
                                      std::to_string(kMaxImageChannels) + " are read");
    if (spec.tile_width != 0 &&
        (spec.tile_width < 0 || spec.tile_height < 1 || spec.tile_width > limits.maxSide ||
         spec.tile_height > limits.maxSide || spec.tile_depth > 1))
        throw Error(ErrorPlace{name}, "declares tiles of " + std::to_string(spec.tile_width) + "x" +
                                      std::to_string(spec.tile_height) + "x" + std::to_string(spec.tile_depth) +
                                      " pixels; each side may be at most " + std::to_string(limits.maxSide));
    if (limits.maxBytes != 0 && spec.image_bytes(true) > limits.maxBytes)
        throw Error(ErrorPlace{name}, "a " + sizeText(spec) + " image of " + std::to_string(spec.nchannels) +
                                      " channels needs more memory than this machine has; scale it down first");
}

} // namespace

OpenedImage openImageSafely(const std::filesystem::path& file, const ImageLimits& limits)
{
    setLibraryLimits();
    const std::string name = file.string();
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error))
        throw Error(ErrorPlace{name}, "no such image file; check the path");
    FileBytes bytes(name);
    if (!bytes.opened())
        throw Error(ErrorPlace{name}, "cannot open it; check that it may be read");

    OpenedImage opened;
    opened.format = formatOf(name, bytes);
    if (!readable(opened.format))
        throw Error(ErrorPlace{name}, "cannot read it as an image (" + opened.format + " files are not read here); " +
                                      kReadableHint);
    if (const std::optional<std::string> fault = headerFault(opened.format, bytes))
        throw Error(ErrorPlace{name}, *fault);

    // The reader of the format we checked, and no other: opening by name
    // would let the library try every reader it has on a file its own
    // reader refuses.
    opened.input = OIIO::ImageInput::create(opened.format, false);
    if (!opened.input)
        throw Error(ErrorPlace{name}, "cannot read it as an image (" + lastOiioError("no " + opened.format + " reader") +
                                      "); " + kReadableHint);
    OIIO::ImageSpec spec;
    if (!opened.input->open(name, spec)) {
        const std::string why = opened.input->geterror();
        throw Error(ErrorPlace{name}, "cannot read it as an image (" + (why.empty() ? lastOiioError("unreadable")
                                                                                     : oneLine(why)) +
                                      "); the file may be damaged");
    }
    checkSpec(name, spec, limits);
    opened.spec = std::move(spec);
    return opened;
}

} // namespace korvane
