// DemoCommand.cpp - renders one frame of every flare style of the plug-in.

#include "korvane/DemoCommand.h"

#include "korvane/ImageFile.h"
#include "korvane/MacRoman.h"
#include "korvane/PluginHost.h"
#include "korvane/ResourceFile.h"

#include <unistd.h>

#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <system_error>

#ifndef GLINTWAVE_VERSION
#define GLINTWAVE_VERSION "unknown"
#endif

namespace korvane::demo {
namespace {

constexpr std::uint32_t kFlareTableType = 0x464C4152;  // 'FLAR'
constexpr std::int32_t kFirstStyleId = 1001;           // style N is 'FLAR' 1000 + N
constexpr const char* kResourceFileName = "Glintwave.rsc";

// The plug-in's settings block is a saved format: a 128-byte header in the
// machine's byte order, then one record per ring. A style is chosen by its
// number in the header; with both element counts 0 the plug-in starts the
// style afresh, with the style's own per-ring settings.
constexpr std::size_t kSettingsHeaderSize = 128;
constexpr std::size_t kStyleNumberOffset = 116;
constexpr std::size_t kRingCountOffset = 120;
constexpr std::size_t kStreakCountOffset = 124;

// The light's place in the frame, as fractions of the width and height.
constexpr double kLightAcross = 0.3;
constexpr double kLightDown = 0.3;
// The light's radius in the frame as a fraction of the frame height. The
// plug-in sizes the origin and outer glows and the streaks by the light's
// radius over the origin glow's; a tenth of the height draws the starter
// styles at or a little under the size they were drawn at.
constexpr double kLightRadiusPerHeight = 0.1;

constexpr std::string_view kUsage =
    "usage: glintwave-demo [--plugin PATH] [--size WxH] [--out DIR] [-q]\n"
    "\n"
    "Renders one frame of every flare style of the Glintwave plug-in over black\n"
    "and writes DIR/demo-style<N>.ppm (16-bit binary PPM) for style N.\n"
    "\n"
    "  --plugin PATH  the plug-in (default: ../plugin/Glintwave.so beside this program)\n"
    "  --size WxH     frame size in pixels (default 960x540)\n"
    "  --out DIR      where the frames go, made when missing (default: .)\n"
    "  -q             no report lines\n"
    "  --help         this text\n"
    "  --version      the program's version\n";

std::filesystem::path defaultPluginPath()
{
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error)
        return "Glintwave.so";
    return (self.parent_path() / ".." / "plugin" / "Glintwave.so").lexically_normal();
}

void storeInt32(std::vector<std::uint8_t>& bytes, std::size_t at, std::int32_t value)
{
    std::memcpy(bytes.data() + at, &value, sizeof value);
}

// Shows the render's progress on one line of a terminal.
class ProgressLine {
public:
    explicit ProgressLine(bool shown) : shown_(shown) {}
    ~ProgressLine() { clear(); }

    void show(const std::string& label, float position)
    {
        if (!shown_)
            return;
        const int percent = position >= 0.0f && position <= 1.0f ? static_cast<int>(position * 100.0f)
                                                                  : (position > 1.0f ? 100 : 0);
        std::fprintf(stderr, "\r%s %3d%%", label.c_str(), percent);
        std::fflush(stderr);
        dirty_ = true;
    }
    void clear()
    {
        if (dirty_) {
            std::fputs("\r\033[K", stderr);
            std::fflush(stderr);
            dirty_ = false;
        }
    }

private:
    bool shown_;
    bool dirty_ = false;
};

struct RenderedStyle {
    std::filesystem::path file;
    std::size_t bytes = 0;
    long long milliseconds = 0;
};

RenderedStyle renderStyle(PluginInstance& instance, const std::vector<std::uint8_t>& defaults,
                          const DemoStyle& style, const DemoOptions& options, ProgressLine& progress)
{
    std::vector<std::uint8_t> settings(defaults.begin(), defaults.begin() + kSettingsHeaderSize);
    storeInt32(settings, kStyleNumberOffset, style.number);
    storeInt32(settings, kRingCountOffset, 0);
    storeInt32(settings, kStreakCountOffset, 0);
    instance.setControlData(settings);

    const std::int32_t width = options.size.width;
    const std::int32_t height = options.size.height;
    const std::string label = "style " + std::to_string(style.number) + " (" + style.name + ")";
    instance.setProgressCallback([label, &progress](const Progress& report) {
        progress.show(label, report.position);
        return 0;
    });

    FrameSetup frame = FrameSetup::centred(width, height, kLightAcross * width, kLightDown * height);
    frame.lightFrameRadius = kLightRadiusPerHeight * height;
    std::vector<std::uint16_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3, 0);
    FrameBuffer buffer;
    buffer.base = pixels.data();
    buffer.rowBytes = width * 6;
    buffer.width = width;
    buffer.height = height;
    buffer.depth = 48;

    const auto start = std::chrono::steady_clock::now();
    instance.require(kCmdInitialize, instance.init());
    instance.require(kCmdFlareSetup, instance.setup(frame));
    instance.require(kCmdFlareGenerate, instance.generate(buffer));
    const auto stop = std::chrono::steady_clock::now();
    progress.clear();

    RenderedStyle rendered;
    rendered.file = options.outDir / ("demo-style" + std::to_string(style.number) + ".ppm");
    const std::vector<std::uint8_t> image = encodePpm48(pixels, width, height);
    writeFileReplacing(rendered.file, image);
    rendered.bytes = image.size();
    rendered.milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(stop - start).count();
    return rendered;
}

int render(const DemoOptions& options)
{
    const std::filesystem::path pluginPath = options.plugin.empty() ? defaultPluginPath() : options.plugin;
    PluginLibrary library(pluginPath);
    const std::vector<DemoStyle> styles = findStyles(library.homeDirectory() / kResourceFileName);
    if (styles.empty())
        throw std::runtime_error((library.homeDirectory() / kResourceFileName).string() +
                                 ": holds no flare styles ('FLAR' 1001 and up)");

    std::error_code error;
    std::filesystem::create_directories(options.outDir, error);
    if (error)
        throw std::runtime_error(options.outDir.string() + ": cannot make the folder: " + error.message());

    // Declared before the instance, whose callback draws on it.
    ProgressLine progress(!options.quiet && isatty(STDERR_FILENO));
    PluginInstance instance(library);
    // The plug-in's own defaults: the first 'INIT' writes them into an empty
    // settings block.
    instance.require(kCmdInitialize, instance.init());
    const std::span<const std::uint8_t> written = instance.controlData();
    if (written.size() < kSettingsHeaderSize)
        throw std::runtime_error(library.displayName() + ": the settings block after 'INIT' holds " +
                                 std::to_string(written.size()) + " bytes, not a Glintwave settings header");
    const std::vector<std::uint8_t> defaults(written.begin(), written.end());

    for (const DemoStyle& style : styles) {
        const RenderedStyle rendered = renderStyle(instance, defaults, style, options, progress);
        if (!options.quiet)
            std::cout << rendered.file.string() << ": " << rendered.bytes << " bytes, " << rendered.milliseconds
                      << " ms, style " << style.number << " \"" << style.name << "\"\n";
    }
    instance.require(kCmdFinish, instance.finish());
    return 0;
}

} // namespace

std::optional<FrameSize> parseFrameSize(std::string_view text)
{
    const std::size_t cross = text.find('x');
    if (cross == std::string_view::npos)
        return std::nullopt;
    auto side = [](std::string_view digits) -> std::optional<std::int32_t> {
        if (digits.empty() || digits.size() > 9 || digits.find_first_not_of("0123456789") != std::string_view::npos)
            return std::nullopt;
        std::int32_t value = 0;
        std::from_chars(digits.data(), digits.data() + digits.size(), value);
        if (value < 1 || value > kMaxFrameSide)
            return std::nullopt;
        return value;
    };
    const auto width = side(text.substr(0, cross));
    const auto height = side(text.substr(cross + 1));
    if (!width || !height)
        return std::nullopt;
    return FrameSize{*width, *height};
}

DemoOptions parseDemoArguments(std::span<const std::string_view> arguments)
{
    DemoOptions options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        auto value = [&]() -> std::string_view {
            if (i + 1 == arguments.size())
                throw UsageError(std::string(argument) + " needs a value");
            return arguments[++i];
        };
        if (argument == "--help" || argument == "-h") {
            options.help = true;
        } else if (argument == "--version") {
            options.version = true;
        } else if (argument == "-q" || argument == "--quiet") {
            options.quiet = true;
        } else if (argument == "--plugin") {
            options.plugin = std::string(value());
        } else if (argument == "--out") {
            options.outDir = std::string(value());
        } else if (argument == "--size") {
            const std::string_view text = value();
            const auto size = parseFrameSize(text);
            if (!size)
                throw UsageError("--size " + std::string(text) + ": expected WIDTHxHEIGHT, each 1 to " +
                                 std::to_string(kMaxFrameSide) + " pixels, as in 960x540");
            options.size = *size;
        } else {
            throw UsageError("unknown argument " + std::string(argument));
        }
    }
    if (options.outDir.empty())
        throw UsageError("--out needs a folder name");
    return options;
}

std::vector<DemoStyle> findStyles(const std::filesystem::path& resourceFile)
{
    const ResourceFile file = ResourceFile::load(resourceFile);
    std::vector<DemoStyle> styles;
    for (const std::int16_t id : file.ids(kFlareTableType)) {
        if (id < kFirstStyleId)
            continue;
        DemoStyle style;
        style.number = id - 1000;
        style.name = macRomanToUtf8(file.name(kFlareTableType, id).value_or(""));
        styles.push_back(std::move(style));
    }
    return styles;
}

int runDemoCommand(std::span<const std::string_view> arguments)
{
    DemoOptions options;
    try {
        options = parseDemoArguments(arguments);
    } catch (const UsageError& e) {
        std::cerr << "glintwave ERROR: " << e.what() << "\n(glintwave-demo --help shows the options)\n";
        return 2;
    }
    if (options.help) {
        std::cout << kUsage;
        return 0;
    }
    if (options.version) {
        std::cout << "glintwave-demo " << GLINTWAVE_VERSION << "\n";
        return 0;
    }
    try {
        return render(options);
    } catch (const std::exception& e) {
        std::cout.flush();
        std::cerr << "glintwave ERROR: " << e.what() << "\n";
        return 1;
    }
}

} // namespace korvane::demo
