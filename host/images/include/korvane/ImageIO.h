// ImageIO.h - image files through OpenImageIO: reading a background and
// writing a finished image through a temporary name.
//
// The format follows the file's extension (PNG, EXR, TIFF, JPEG, DPX, HDR and
// whatever else the installed OpenImageIO reads or writes). Every failure is
// an Error whose text names the file, says what is wrong and what to do.
#pragma once

#include "korvane/Error.h"
#include "korvane/ImageOpen.h"

#include <OpenImageIO/imagebuf.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

namespace korvane {

// How a file stores its samples: what decides how a render combines with it.
enum class SampleKind { Int8, Int16, Float };

struct RgbImage {
    OIIO::ImageBuf pixels;  // three channels: UINT16 for Int8/Int16 files, FLOAT for Float files
    OIIO::ImageBuf alpha;   // one channel of the same type, or uninitialised when the file has none
    SampleKind kind = SampleKind::Int8;
};

// Reads the first image of a file as red, green, blue, and its alpha when
// it has one: a grey image gives its one channel three times, and channels
// after the fourth are dropped. Colour comes premultiplied by alpha, as the
// image library delivers it. Integer files arrive as 16-bit samples (8-bit
// v as v x 257).
// The file is opened through openImageSafely. Throws Error for a file that
// is missing, unreadable, damaged, of a format not read, or beyond the limits.
RgbImage readRgbImage(const std::filesystem::path& file, const ImageLimits& limits = {});

// Throws Error unless OpenImageIO can write a file of this name's
// extension; the message lists the extensions to use instead.
void requireWritableFormat(const std::filesystem::path& file);

// Encodes the image in memory, writes it to a hidden temporary name with
// the same extension in the target's folder and renames that over `file`,
// so a reader never sees half an image and a failure (a full disk, a file
// size limit, a read-only or missing folder) leaves nothing behind. `sampleType` is the stored
// sample type (UINT8, UINT16, HALF, FLOAT); formats that cannot store it
// take their nearest. `keep` is asked just before the rename: false drops
// the written file and returns false (a cancel while writing). Throws
// Error.
bool writeImageReplacing(OIIO::ImageBuf& image, const std::filesystem::path& file, OIIO::TypeDesc sampleType,
                         const std::function<bool()>& keep = {});

// The temporary name writeImageReplacing uses in process `pid` for `file`:
// what to remove after a process died while writing it.
std::filesystem::path temporaryImageName(const std::filesystem::path& file, long pid);

// True for formats that store floating-point samples (EXR, HDR).
bool isFloatFormat(const std::filesystem::path& file);

} // namespace korvane
