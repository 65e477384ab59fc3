// ImageIO.cpp - reading backgrounds and writing images through a temporary name.

#include "korvane/ImageIO.h"

#include "LibraryText.h"
#include "WholeFile.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imagebufalgo.h>
#include <OpenImageIO/imageio.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <system_error>

namespace korvane {
namespace {

constexpr const char* kWritableHint = "use .png, .exr, .tif, .jpg or .dpx";

std::string lowerExtension(const std::filesystem::path& file)
{
    std::string extension = file.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

bool describesPicture(const std::string& attribute)
{
    static constexpr std::string_view kKept[] = {"oiio:ColorSpace", "ICCProfile", "Orientation", "Make", "Model",
                                                  "DateTime", "Artist", "Copyright", "PixelAspectRatio"};
    for (const std::string_view kept : kKept)
        if (attribute == kept)
            return true;
    return attribute.rfind("Exif:", 0) == 0 || attribute.rfind("GPS:", 0) == 0;
}

void removeQuietly(const std::filesystem::path& file)
{
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
}

} // namespace

RgbImage readRgbImage(const std::filesystem::path& file, const ImageLimits& limits)
{
    const std::string name = file.string();
    OpenedImage opened = openImageSafely(file, limits);
    OIIO::ImageInput* const input = opened.input.get();
    const OIIO::ImageSpec& spec = opened.spec;

    RgbImage image;
    const OIIO::TypeDesc::BASETYPE base = static_cast<OIIO::TypeDesc::BASETYPE>(spec.format.basetype);
    if (base == OIIO::TypeDesc::HALF || base == OIIO::TypeDesc::FLOAT || base == OIIO::TypeDesc::DOUBLE)
        image.kind = SampleKind::Float;
    else if (base == OIIO::TypeDesc::UINT8)  // signed 8-bit samples are no 8-bit codes once converted
        image.kind = SampleKind::Int8;
    else
        image.kind = SampleKind::Int16;
    const OIIO::TypeDesc type = image.kind == SampleKind::Float ? OIIO::TypeDesc::FLOAT : OIIO::TypeDesc::UINT16;
    const std::uint64_t bytes = static_cast<std::uint64_t>(spec.width) * static_cast<std::uint64_t>(spec.height) *
                                static_cast<std::uint64_t>(std::min(spec.nchannels, 4) + 4) * type.size();
    const auto tooLarge = [&] {
        return Error(ErrorPlace{name}, "a " + std::to_string(spec.width) + "x" + std::to_string(spec.height) +
                                           " image needs more memory than this machine has; scale it down first");
    };
    if (limits.maxBytes != 0 && bytes > limits.maxBytes)
        throw tooLarge();

    // Read only the channels we use, then spread a grey one over red, green,
    // blue. Alpha is one of the first four channels or none.
    const int alphaChannel = spec.alpha_channel >= 1 && spec.alpha_channel < std::min(spec.nchannels, 4)
                                 ? spec.alpha_channel
                                 : -1;
    const int channels = std::max(std::min(spec.nchannels, 3), alphaChannel + 1);
    // The buffer is left uninitialised, so the system gives it memory only
    // as rows arrive: a file that declares a large image but holds little
    // fails at its first missing row having cost almost nothing.
    OIIO::ImageSpec readSpec(spec.width, spec.height, channels, type);
    // Where the address space is capped, the system may refuse even memory
    // it would never have to give.
    std::unique_ptr<std::byte[]> readPixels;
    try {
        readPixels.reset(new std::byte[readSpec.image_bytes()]);
    } catch (const std::bad_alloc&) {
        throw tooLarge();
    }
    OIIO::ImageBuf read(readSpec, readPixels.get());
    if (!input->read_image(0, 0, 0, channels, type, read.localpixels())) {
        const std::string why = input->geterror();
        throw Error(ErrorPlace{name}, "cannot read its pixels (" +
                                      lastOiioError(why.empty() ? "its pixel data is missing or cut short" : why) +
                                      "); the file may be damaged");
    }
    // Some readers fill a truncated file's missing rows and only complain.
    const std::string complaint = input->geterror();
    if (!complaint.empty())
        throw Error(ErrorPlace{name}, "is damaged (" + oneLine(complaint) + "); give an intact image");
    input->close();

    OIIO::ImageSpec rgbSpec(spec.width, spec.height, 3, type);
    image.pixels.reset(rgbSpec);
    if (alphaChannel >= 0)
        OIIO::ImageBufAlgo::channels(image.alpha, read, 1, &alphaChannel);
    const int sources[3] = {0, channels > 1 ? 1 : 0, channels > 2 ? 2 : 0};
    if (channels == 2) {  // grey and alpha: the grey three times
        const int grey[3] = {0, 0, 0};
        OIIO::ImageBufAlgo::channels(image.pixels, read, 3, grey);
    } else {
        OIIO::ImageBufAlgo::channels(image.pixels, read, 3, sources);
    }
    // Keep what describes the picture (colour space, orientation, camera
    // data), not how this file stored it (bit depth, compression).
    for (const OIIO::ParamValue& attribute : spec.extra_attribs) {
        const std::string attributeName = attribute.name().string();
        if (describesPicture(attributeName))
            image.pixels.specmod().attribute(attributeName, attribute.type(), attribute.data());
    }
    return image;
}

void requireWritableFormat(const std::filesystem::path& file)
{
    if (OIIO::ImageOutput::create(file.string()))
        return;
    OIIO::geterror();  // drop the message, ours says more
    const std::string extension = file.extension().string();
    const std::string problem = extension.empty() ? std::string("has no extension to choose an image format by")
                                                  : "no image format is known for the extension " + extension;
    throw Error(ErrorPlace{file.string()}, problem + "; " + kWritableHint);
}

bool isFloatFormat(const std::filesystem::path& file)
{
    const std::string extension = lowerExtension(file);
    return extension == ".exr" || extension == ".hdr";
}

std::filesystem::path temporaryImageName(const std::filesystem::path& file, long pid)
{
    // Hidden, with the process id, same extension (which picks the format),
    // same folder (so the rename stays on one file system).
    std::filesystem::path temporary = file;
    temporary.replace_filename("." + file.stem().string() + ".tmp-" + std::to_string(pid) + file.extension().string());
    return temporary;
}

bool writeImageReplacing(OIIO::ImageBuf& image, const std::filesystem::path& file, OIIO::TypeDesc sampleType,
                         const std::function<bool()>& keep)
{
    const std::string name = file.string();
    requireWritableFormat(file);
    // The image is encoded in memory and written with our own checked calls:
    // some of the library's writers do not notice a write that failed
    // (a full disk, a file size limit) and would leave a cut-off file.
    std::vector<unsigned char> encoded;
    OIIO::Filesystem::IOVecOutput memory(encoded);
    image.set_write_ioproxy(&memory);
    // The name picks the format; formats that record it (DPX) get the file's
    // own name, never a folder or a temporary name.
    const bool made = image.write(file.filename().string(), sampleType);
    image.set_write_ioproxy(nullptr);
    if (!made) {
        const std::string why = image.geterror();
        throw Error(ErrorPlace{name}, "cannot encode it (" + (why.empty() ? lastOiioError("write failed") : oneLine(why)) +
                                      ")");
    }
    const std::filesystem::path temporary = temporaryImageName(file, getpid());
    if (const int failure = writeNewFile(temporary, encoded))
        throw Error(ErrorPlace{name}, std::string("cannot write it: ") + std::strerror(failure) +
                                      (failure == ENOENT ? "; make the folder first" : ""));
    if (keep && !keep()) {
        removeQuietly(temporary);
        return false;
    }
    std::error_code error;
    std::filesystem::rename(temporary, file, error);
    if (error) {
        removeQuietly(temporary);
        throw Error(ErrorPlace{name}, "cannot put the image in place: " + error.message());
    }
    return true;
}

} // namespace korvane
