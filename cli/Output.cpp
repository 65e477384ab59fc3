// Output.cpp - checks before a render, metadata, and the final write.

#include "Output.h"

#include "CommandLine.h"
#include "Interrupt.h"

#include "korvane/ImageIO.h"

#include <unistd.h>

#include <cstdio>
#include <system_error>

#ifndef GLINTWAVE_VERSION
#define GLINTWAVE_VERSION "unknown"
#endif

namespace glintwave::cli {
namespace {

// Per pixel: the frame (6 bytes at 48 bits), a float image of the result
// (12), a background read as float (12) and the converted samples on the
// way to the file (12): a generous bound.
constexpr std::uint64_t kBytesPerPixel = 48;
// With passes: four more 48-bit frames (24), the whole flare and four parts
// as float RGB (60) and RGBA (80), and the layered image (96).
constexpr std::uint64_t kBytesPerPixelWithPasses = kBytesPerPixel + 24 + 60 + 80 + 96;

std::string mebibytes(std::uint64_t bytes)
{
    return std::to_string((bytes + (1u << 20) - 1) >> 20) + " MiB";
}

} // namespace

void checkOutputPath(const std::filesystem::path& file)
{
    try {
        korvane::requireWritableFormat(file);
    } catch (const korvane::Error& e) {
        throw UsageError(e.what());
    }
    const std::filesystem::path folder = file.parent_path();
    std::error_code ignored;
    if (!folder.empty() && !std::filesystem::is_directory(folder, ignored))
        throw korvane::Error(file.string() + ": the folder " + folder.string() +
                             " does not exist; make it first or write elsewhere");
}

std::uint64_t frameMemory(std::int32_t width, std::int32_t height, bool passes)
{
    return static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) *
           (passes ? kBytesPerPixelWithPasses : kBytesPerPixel);
}

std::uint64_t physicalMemory()
{
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGE_SIZE);
    if (pages <= 0 || pageSize <= 0)
        return 0;
    return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize);
}

void requireFrameMemory(std::int32_t width, std::int32_t height, bool passes)
{
    const std::uint64_t needed = frameMemory(width, height, passes);
    const std::uint64_t available = physicalMemory();
    if (available != 0 && needed > available)
        throw korvane::Error("a " + std::to_string(width) + "x" + std::to_string(height) + " frame needs about " +
                             mebibytes(needed) + " of memory, more than this machine's " + mebibytes(available) +
                             (passes ? "; render the passes of a smaller frame, or without --passes"
                                     : "; choose a smaller --size"));
}

void describeImage(OIIO::ImageBuf& image, const std::string& style, const ControlDataRec& settings,
                   const SceneOptions& scene)
{
    OIIO::ImageSpec& spec = image.specmod();
    spec.attribute("glintwave:style", style);
    spec.attribute("glintwave:settings", settingsAsOptions(settings));
    spec.attribute("glintwave:light", scene.lightAsOptions());
    // Formats without attributes of their own (TIFF, JPEG, DPX) keep it all here.
    spec.attribute("ImageDescription", "Glintwave lens flare, style " + style + "; " + settingsAsOptions(settings) +
                                           " " + scene.lightAsOptions());
    spec.attribute("Software", std::string("glintwave ") + GLINTWAVE_VERSION);
    // Writers stamp the time of writing unless a DateTime is given; an empty
    // one keeps them from it, so the same frame always gives the same bytes.
    // A background's own DateTime (when it was shot) stays.
    if (!spec.find_attribute("DateTime"))
        spec.attribute("DateTime", "");
}

void writeOutput(OIIO::ImageBuf& image, const std::filesystem::path& file, OIIO::TypeDesc sampleType,
                 const std::function<void()>& whole)
{
    const auto keep = [&whole] {
        if (whole)
            whole();
        return InterruptCatcher::notInterrupted();
    };
    if (!korvane::writeImageReplacing(image, file, sampleType, keep))
        throw Cancelled();
}

std::string fileSizeText(const std::filesystem::path& file)
{
    std::error_code error;
    const auto bytes = std::filesystem::file_size(file, error);
    if (error)
        return "? bytes";
    char text[32];
    if (bytes >= 1000000)
        std::snprintf(text, sizeof text, "%.1f MB", static_cast<double>(bytes) / 1e6);
    else
        std::snprintf(text, sizeof text, "%.0f KB", static_cast<double>(bytes) / 1e3);
    return text;
}

} // namespace glintwave::cli
