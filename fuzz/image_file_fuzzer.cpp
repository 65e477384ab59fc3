// image_file_fuzzer.cpp - libFuzzer harness of image files as `glintwave
// render --over` reads them: a background read through OpenImageIO and
// made into the frame a flare is painted into or added onto.
//
// The first byte picks the file's extension; the rest is the file. The
// file goes through the same guarded open the command uses, which finds the
// format from the content (the extension matters only for Targa, which has
// no signature). Reading must either succeed or throw a korvane::Error. A
// background that was read is composed in one of the ways the command has
// (a depth, blend and kind of output, or with passes) with a painter that
// touches the first and last pixel, and once more with one that paints
// nothing in the host's blend: an 8-bit file must then come back sample for
// sample.
//
// OpenImageIO and the libraries under it are the system's and are not
// instrumented: coverage guides only through our code, and a fault inside
// them shows as a crash in their frames, not ours. Header fields that the
// readers trust before allocating are checked before they see the file, so
// fuzz/image_file.options keeps the memory limits low: a reader that
// allocates what a small file declares is a fault to find.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <OpenImageIO/imageio.h>

#include "Compose.h"
#include "TempFolder.h"

namespace {

// The formats the guarded open lets through, by extension; the first ten
// keep the places the committed seeds were made for.
constexpr const char* kExtensions[] = {".png", ".jpg", ".tif", ".exr", ".hdr", ".ppm",
                                       ".pgm", ".pfm", ".bmp", ".tga", ".dpx"};
constexpr std::size_t kExtensionCount = std::size(kExtensions);

// Small enough that a declared size beyond it is refused before pixels are
// read, large enough for any image an input of a few kilobytes holds.
constexpr korvane::ImageLimits kLimits{64, 64u << 10};

// Made once the fuzzer starts; removed with its files when the run ends.
std::unique_ptr<testsupport::TempFolder> scratchFolder;

void paintCorners(korvane::FramePixels& frame)
{
    const korvane::FrameBuffer buffer = frame.frameBuffer();
    auto* row = static_cast<std::uint8_t*>(buffer.base);
    auto* last = row + static_cast<std::size_t>(buffer.rowBytes) * (buffer.height - 1);
    switch (buffer.depth) {
    case 48:
        reinterpret_cast<std::uint16_t*>(row)[0] = 16320;
        reinterpret_cast<std::uint16_t*>(last)[buffer.width * 3 - 1] = 16320;
        break;
    case 32:
        reinterpret_cast<std::uint32_t*>(row)[0] = 0xFFFFFFFFu;
        reinterpret_cast<std::uint32_t*>(last)[buffer.width - 1] = 0xFFFFFFFFu;
        break;
    default:
        row[0] = 255;
        last[buffer.width - 1] = 255;
        break;
    }
}

void requireShape(const OIIO::ImageBuf& image, const OIIO::ImageSpec& background, int channels)
{
    const OIIO::ImageSpec& spec = image.spec();
    if (spec.width != background.width || spec.height != background.height || spec.nchannels != channels)
        __builtin_trap();
}

// One of the thirteen ways to compose, chosen by `variant`: depth, kind of
// output and blend, or the linear blend with passes and joined alpha. One
// a run keeps each execution cheap; mutations of the input's length visit
// them all.
void compose(const korvane::RgbImage& background, std::size_t variant)
{
    const OIIO::ImageSpec& spec = background.pixels.spec();
    if (spec.width < 1 || spec.height < 1 || spec.width > kLimits.maxSide || spec.height > kLimits.maxSide ||
        spec.nchannels != 3 ||
        spec.format != (background.kind == korvane::SampleKind::Float ? OIIO::TypeDesc::FLOAT
                                                                      : OIIO::TypeDesc::UINT16))
        __builtin_trap();
    const std::optional<korvane::RgbImage> over(background);
    const glintwave::cli::FrameSize size{spec.width, spec.height};
    using glintwave::cli::Blend;
    glintwave::cli::CompositeOptions options;
    options.exposure = 1.5;
    variant %= 13;
    if (variant < 12) {
        constexpr int kDepths[] = {48, 32, 8};
        const int depth = kDepths[variant / 4];
        const char* output = variant % 2 == 0 ? "f.png" : "f.exr";
        options.blend = (variant / 2) % 2 == 0 ? Blend::linear : Blend::host;
        // Only the linear blend keeps alpha; the sketch is drawn in the host's way.
        const int channels =
            options.blend == Blend::linear && depth != 8 && background.alpha.initialized() ? 4 : 3;
        requireShape(glintwave::cli::composeFrame(paintCorners, depth, over, size, output, options).image, spec,
                     channels);
    } else {
        options.passes = true;
        options.flareAlpha = glintwave::cli::FlareAlpha::luminance;
        const glintwave::cli::PassPainter paintPass = [](korvane::FramePixels& frame, std::size_t) {
            paintCorners(frame);
        };
        requireShape(glintwave::cli::composeFrame(paintCorners, 48, over, size, "f.png", options, paintPass).image,
                     spec, background.alpha.initialized() ? 4 : 3);
    }

    if (background.kind != korvane::SampleKind::Int8)
        return;
    glintwave::cli::CompositeOptions host;
    host.blend = Blend::host;
    const OIIO::ImageBuf same =
        glintwave::cli::composeFrame([](korvane::FramePixels&) {}, 48, over, size, "f.png", host).image;
    const std::size_t count = static_cast<std::size_t>(spec.width) * spec.height * 3;
    std::vector<std::uint16_t> before(count), after(count);
    background.pixels.get_pixels(OIIO::ROI::All(), OIIO::TypeDesc::UINT16, before.data());
    same.get_pixels(OIIO::ROI::All(), OIIO::TypeDesc::UINT16, after.data());
    for (std::size_t i = 0; i < count; ++i)
        if (before[i] % 257 != 0 || after[i] != before[i])
            __builtin_trap();
}

} // namespace

// Leaks inside the system's OpenImageIO, not ours: its PNG reader's error
// callback leaves by libpng's longjmp with an error string still alive.
// The library has no frame pointers, so allocations are traced the slow way
// for the suppression to see its frames.
extern "C" const char* __asan_default_options()
{
    return "fast_unwind_on_malloc=0:malloc_context_size=12";
}

extern "C" const char* __lsan_default_suppressions()
{
    return "leak:OpenImageIO_v2_4::PNGInput::PngReadCallback\n";
}

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // One thread: reproducible runs, and the machine is shared.
    OIIO::attribute("threads", 1);
    OIIO::attribute("exr_threads", 1);
    scratchFolder = std::make_unique<testsupport::TempFolder>("image_file_fuzzer");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 1)
        return 0;
    const std::filesystem::path file = *scratchFolder / (std::string("input") + kExtensions[data[0] % kExtensionCount]);
    {
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(data + 1), static_cast<std::streamsize>(size - 1));
        if (!out)
            std::abort();
    }
    (void)OIIO::geterror();  // no message left over from the previous input
    std::optional<korvane::RgbImage> background;
    try {
        background = korvane::readRgbImage(file, kLimits);
    } catch (const korvane::Error&) {
        return 0;
    }
    compose(*background, size);
    return 0;
}
