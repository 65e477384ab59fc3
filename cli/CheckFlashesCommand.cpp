// CheckFlashesCommand.cpp - `glintwave check-flashes SEQUENCE`: the frames of
// any image sequence where the brightness of the whole frame, or of one of
// its quarters, flashes more than three times a second (korvane/Flashes.h).
// Exit status 1 when it finds any: a check to run before delivery.

#include "Commands.h"
#include "Output.h"

#include "korvane/Flashes.h"
#include "korvane/FrameRange.h"
#include "korvane/ImageIO.h"
#include "korvane/TransferCurves.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <memory>

namespace glintwave::cli {
namespace {

struct FlashOptions {
    std::string sequence;
    std::string frames;
    double fps = 24;
};

// The whole frame and its four quarters.
constexpr std::size_t kRegions = 5;
constexpr const char* kRegionNames[kRegions] = {"the whole frame", "the upper left quarter", "the upper right quarter",
                                                "the lower left quarter", "the lower right quarter"};

// Mean relative luminance (linear, clamped to 0..1) of each region.
std::array<double, kRegions> regionLuminance(const std::string& file)
{
    korvane::ImageLimits limits;
    limits.maxSide = kMaxFrameSide;
    limits.maxBytes = physicalMemory();
    const korvane::RgbImage image = korvane::readRgbImage(file, limits);
    const OIIO::ImageSpec& spec = image.pixels.spec();
    const bool linear = image.kind == korvane::SampleKind::Float;
    std::vector<float> row(static_cast<std::size_t>(spec.width) * 3);
    std::array<double, kRegions> sums{};
    std::array<double, kRegions> counts{};
    for (int y = 0; y < spec.height; ++y) {
        image.pixels.get_pixels(OIIO::ROI(0, spec.width, y, y + 1), OIIO::TypeDesc::FLOAT, row.data());
        for (int x = 0; x < spec.width; ++x) {
            double rgb[3];
            for (int c = 0; c < 3; ++c) {
                const double v = row[static_cast<std::size_t>(x) * 3 + c];
                rgb[c] = std::clamp(linear ? v : korvane::srgbToLinear(v), 0.0, 1.0);
            }
            const double y709 = 0.2126 * rgb[0] + 0.7152 * rgb[1] + 0.0722 * rgb[2];
            const std::size_t quarter = 1 + (y * 2 >= spec.height ? 2 : 0) + (x * 2 >= spec.width ? 1 : 0);
            for (const std::size_t region : {std::size_t{0}, quarter}) {
                sums[region] += y709;
                counts[region] += 1;
            }
        }
    }
    for (std::size_t r = 0; r < kRegions; ++r)
        sums[r] = counts[r] > 0 ? sums[r] / counts[r] : 0.0;
    return sums;
}

// The frames of the sequence: the range given, or every file in its folder
// whose name the pattern makes.
korvane::FrameList framesOf(const korvane::FramePattern& pattern, const FlashOptions& options)
{
    if (!options.frames.empty())
        return korvane::parseFrameRange(options.frames);
    const std::filesystem::path first(pattern.name(0));
    const std::filesystem::path folder = first.parent_path().empty() ? "." : first.parent_path();
    korvane::FrameList frames;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::filesystem::path name = first.parent_path() / entry.path().filename();
        if (const std::optional<std::int32_t> frame = pattern.frameOf(name.string()))
            frames.push_back(*frame);
    }
    std::sort(frames.begin(), frames.end());
    return frames;
}

int runCheckFlashes(const FlashOptions& options, const CommonOptions& common)
{
    korvane::FramePattern pattern("");
    korvane::FrameList frames;
    try {
        pattern = korvane::FramePattern(options.sequence);
        if (!pattern.numbered())
            throw korvane::Error(options.sequence + ": names no numbered sequence; give a frame token, as in "
                                                    "out.####.png");
        frames = framesOf(pattern, options);
    } catch (const korvane::Error& e) {
        throw UsageError(e.what());
    }
    if (frames.empty())
        throw korvane::Error(options.sequence + ": no frame of this sequence exists; check the name");
    std::array<std::vector<double>, kRegions> series;
    for (const std::int32_t frame : frames) {
        const std::array<double, kRegions> luminance = regionLuminance(pattern.name(frame));
        for (std::size_t r = 0; r < kRegions; ++r)
            series[r].push_back(luminance[r]);
    }
    bool found = false;
    for (std::size_t r = 0; r < kRegions; ++r) {
        for (const std::size_t start : korvane::tooManyFlashes(series[r], options.fps)) {
            found = true;
            std::cout << options.sequence << ": frame " << frames[start] << ": " << kRegionNames[r]
                      << " flashes more than three times in the second from here\n";
        }
    }
    if (!found && !common.quiet)
        std::cout << options.sequence << ": " << frames.size() << " frames, no more than three flashes in any second\n";
    return found ? 1 : 0;
}

} // namespace

void addCheckFlashesCommand(CommandLine& line)
{
    auto options = std::make_shared<FlashOptions>();
    CLI::App* command = line.addCommand(
        "check-flashes", "report where an image sequence flashes more than three times a second (exit status 1)",
        [options, &line] { return runCheckFlashes(*options, line.common()); });
    command->add_option("sequence", options->sequence, "the sequence's numbered name, as in out.####.png")
        ->required()
        ->type_name("SEQUENCE");
    command->add_option("--frames", options->frames, "the frames to check (default: every file the name makes)")
        ->option_text("RANGE");
    command
        ->add_option_function<double>(
            "--fps",
            [options](double fps) {
                if (!std::isfinite(fps) || fps < 1 || fps > 1000)
                    throw CLI::ValidationError("--fps", "give the frames per second, 1 to 1000");
                options->fps = fps;
            },
            "frames per second (default 24)")
        ->option_text("N");
}

} // namespace glintwave::cli
