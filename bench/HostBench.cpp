/*
 * HostBench.cpp - frames rendered through Main exactly as a host renders
 * them, with the delivered Glintwave.rsc: 'SETF' then 'GENF' every
 * iteration, through the host library.
 *
 *   Style1/<frame>/<depth>     style 1, light at (30 %, 30 %), 3840 x 2160
 *                              and 1920 x 1080, 48 and 32 bits
 *   StyleSweep/<n>/3840x2160/48 every style the file holds
 *   Sketch/<n>/<frame>         the 8-bit sketch of every style
 *
 * Painted cases report the floor (one memory pass over the same frame) and
 * the ratio. Before timing, every case is checked: the frame painted through
 * Main must equal the frame the renderer linked in here paints on each of
 * its paths from the same settings and frame set-up.
 */
#include <string.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <korvane/MacRoman.h>
#include <korvane/PluginHost.h>
#include <korvane/ResourceFile.h>

#include "BenchSupport.h"
#include "FlareModel.h"
#include "FlareRender.h"
#include "PaintPath.h"
#include "RectUtils.h"

namespace flarebench {

void RegisterHeavyFlare();

namespace {

constexpr uint32_t kFlareTableType = 0x464C4152;  // 'FLAR'
constexpr int16_t kFirstStyleId = 1001;          // style N is 'FLAR' 1000 + N
// The settings header: style number and element counts (both 0: the style
// starts afresh with its own per-ring settings).
constexpr size_t kSettingsHeaderSize = 128;
constexpr size_t kStyleNumberOffset = 116;
constexpr size_t kRingCountOffset = 120;
constexpr size_t kStreakCountOffset = 124;
// A light radius of a tenth of the frame's height draws the styles at about
// the size they were drawn at.
constexpr double kLightRadiusPerHeight = 0.1;
constexpr int32_t kSketchIndex = 7;

struct Style {
    int32_t number;
    std::string name;
};

/* One loaded plug-in and one instance of it, shared by every case. */
struct Host {
    korvane::PluginLibrary library;
    korvane::PluginInstance instance;
    std::vector<uint8_t> defaults;

    explicit Host(const std::filesystem::path& file) : library(file), instance(library)
    {
        instance.require(kCmdInitialize, instance.init());
        auto written = instance.controlData();
        defaults.assign(written.begin(), written.end());
        if (defaults.size() < kSettingsHeaderSize)
            throw std::runtime_error("the settings block after 'INIT' is too small");
    }

    void SelectStyle(int32_t number)
    {
        std::vector<uint8_t> settings(defaults.begin(), defaults.begin() + kSettingsHeaderSize);
        int32_t zero = 0;
        memcpy(settings.data() + kStyleNumberOffset, &number, sizeof number);
        memcpy(settings.data() + kRingCountOffset, &zero, sizeof zero);
        memcpy(settings.data() + kStreakCountOffset, &zero, sizeof zero);
        instance.setControlData(settings);
        instance.require(kCmdInitialize, instance.init());
    }
};

Host* theHost = nullptr;

korvane::FrameSetup SceneFrame(FrameSize size)
{
    korvane::Light light;
    light.radius = {kLightRadiusPerHeight};
    return korvane::FrameSetup::centred(size.width, size.height, light);
}

korvane::FrameBuffer BufferOf(Frame& frame)
{
    korvane::FrameBuffer buffer;
    buffer.base = frame.base();
    buffer.rowBytes = frame.rowBytes();
    buffer.width = frame.size().width;
    buffer.height = frame.size().height;
    buffer.depth = frame.depth();
    buffer.index = kSketchIndex;
    return buffer;
}

/* The checksums of the frame painted from zero through Main, then by the
   renderer linked here on each path, from the blocks as 'SETF' left them:
   the layout is recomputed as 'GENF' recomputes it. */
std::vector<uint64_t> PaintEveryWay(Host& host, FrameSize size, Frame& frame)
{
    std::vector<uint64_t> sums;
    korvane::PluginInstance& instance = host.instance;
    instance.require(kCmdFlareSetup, instance.setup(SceneFrame(size)));
    auto control = instance.controlData();
    auto plugin = instance.pluginData();
    std::vector<uint64_t> controlCopy((control.size() + 7) / 8 + 1, 0);
    memcpy(controlCopy.data(), control.data(), control.size());
    const size_t blockBytes = plugin.size() + (4u << 20);
    std::vector<uint64_t> pluginCopy(blockBytes / 8, 0);

    frame.Clear();
    instance.require(kCmdFlareGenerate, instance.generate(BufferOf(frame)));
    sums.push_back(frame.Checksum());

    const int32_t paths[] = {kPaintPathPlain, kPaintPathSpans, kPaintPathVector};
    for (int32_t path : paths) {
        if (path == kPaintPathVector && !VectorPathAvailable())
            continue;
        memset(pluginCopy.data(), 0, blockBytes);
        memcpy(pluginCopy.data(), plugin.data(), plugin.size());
        ControlDataRec* theControl = reinterpret_cast<ControlDataRec*>(controlCopy.data());
        PluginDataRec* theData = reinterpret_cast<PluginDataRec*>(pluginCopy.data());
        theData->flareDataSize = (int32_t)blockBytes;
        if (CalcFlareInfo(theControl, theData) != 0)
            return {1, 2};
        GlintwaveBuffer& b = theData->flarePixelBuffer;
        b.bufferBase = frame.base();
        b.bufferRowBytes = frame.rowBytes();
        SetLRect(&b.bufferRect, 0, 0, size.width, size.height);
        b.bufferDepth = frame.depth();
        b.bufferIndex = kSketchIndex;
        SetPaintPath(path);
        frame.Clear();
        GenerateFlare(theControl, theData, frame.depth(), false);
        sums.push_back(frame.Checksum());
    }
    SetPaintPath(kPaintPathBest);
    return sums;
}

void BM_HostFrame(benchmark::State& state, int32_t style, FrameSize size, int16_t depth)
{
    Host& host = *theHost;
    host.SelectStyle(style);
    Frame frame(size, depth);
    try {
        if (!ReportEquality(state, PaintEveryWay(host, size, frame), "style " + std::to_string(style)))
            return;
        korvane::PluginInstance& instance = host.instance;
        const korvane::FrameSetup setup = SceneFrame(size);
        const korvane::FrameBuffer buffer = BufferOf(frame);
        auto render = [&] {
            instance.require(kCmdFlareSetup, instance.setup(setup));
            instance.require(kCmdFlareGenerate, instance.generate(buffer));
        };
        if (depth == 8) {
            for (auto _ : state) {
                double t0 = Now();
                render();
                state.SetIterationTime(Now() - t0);
            }
        } else {
            TimeAgainstFloor(state, frame, render);
        }
    } catch (const std::exception& e) {
        state.SkipWithError(e.what());
    }
}

std::vector<Style> FindStyles(const std::filesystem::path& file)
{
    const korvane::ResourceFile resources = korvane::ResourceFile::load(file);
    std::vector<Style> styles;
    for (int16_t id : resources.ids(kFlareTableType))
        if (id >= kFirstStyleId)
            styles.push_back({id - 1000, korvane::macRomanToUtf8(resources.name(kFlareTableType, id).value_or(""))});
    return styles;
}

void Register(const std::string& name, int32_t style, FrameSize size, int16_t depth)
{
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& s) { BM_HostFrame(s, style, size, depth); })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

}  // namespace
}  // namespace flarebench

int main(int argc, char** argv)
{
    using namespace flarebench;
    benchmark::Initialize(&argc, argv);
    std::unique_ptr<Host> host;
    std::vector<Style> styles;
    try {
        host = std::make_unique<Host>(GLINTWAVE_PLUGIN_FILE);
        styles = FindStyles(host->library.homeDirectory() / "Glintwave.rsc");
    } catch (const std::exception& e) {
        std::fprintf(stderr, "render_bench: %s\n", e.what());
        return 1;
    }
    theHost = host.get();

    for (FrameSize size : {kFrame4K, kFrameHD})
        for (int16_t depth : {(int16_t)48, (int16_t)32})
            Register(std::string("Style1/") + size.name + "/" + std::to_string(depth), 1, size, depth);
    RegisterHeavyFlare();
    for (const Style& style : styles)
        Register("StyleSweep/" + std::to_string(style.number) + "/" + kFrame4K.name + "/48", style.number, kFrame4K,
                 48);
    for (const Style& style : styles)
        for (FrameSize size : {kFrame4K, kFrameHD})
            Register("Sketch/" + std::to_string(style.number) + "/" + size.name, style.number, size, 8);

    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    theHost = nullptr;
    return 0;
}
