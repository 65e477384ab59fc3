// DemoCommand.h - `glintwave-demo`: one frame of every flare style.
//
// Loads the Glintwave plug-in, finds its styles in the Glintwave.rsc beside
// it ('FLAR' resources 1001 and up, named after the style) and renders each
// one over black at 48 bits: the frame scale half the frame height, the
// centre in the middle, the light at 30 % of the width and height. Every
// frame goes to <out>/demo-style<N>.ppm (16-bit binary PPM), written through
// a temporary name.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace korvane::demo {

struct FrameSize {
    std::int32_t width = 0;
    std::int32_t height = 0;
    bool operator==(const FrameSize&) const = default;
};

// Each side may be 1..kMaxFrameSide pixels.
inline constexpr std::int32_t kMaxFrameSide = 8192;

// "960x540": two decimal numbers and an 'x', nothing else. nullopt for any
// other text or a side outside 1..kMaxFrameSide.
std::optional<FrameSize> parseFrameSize(std::string_view text);

// A mistake on the command line (exit status 2).
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct DemoOptions {
    bool help = false;
    bool version = false;
    bool quiet = false;
    std::filesystem::path plugin;  // empty: beside the executable, ../plugin/Glintwave.so
    FrameSize size{960, 540};
    std::filesystem::path outDir = ".";
};

// Throws UsageError for an unknown option, a missing value or a bad size.
DemoOptions parseDemoArguments(std::span<const std::string_view> arguments);

// One style of a flare table file: its number (the 'FLAR' id - 1000) and name.
struct DemoStyle {
    std::int32_t number = 0;
    std::string name;  // UTF-8
    bool operator==(const DemoStyle&) const = default;
};

// The styles of a resource file in number order. Throws ResourceError.
std::vector<DemoStyle> findStyles(const std::filesystem::path& resourceFile);

// The whole command: arguments without the program name. Returns the exit
// status: 0 done, 1 a render or file failed, 2 a command-line mistake.
int runDemoCommand(std::span<const std::string_view> arguments);

} // namespace korvane::demo
