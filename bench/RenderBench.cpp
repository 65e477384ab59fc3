/*
 * RenderBench.cpp - the heavy reference flare painted by the renderer
 * itself at 3840 x 2160 and 1920 x 1080, 48 and 32 bits (and turned, at
 * 3840 x 2160), each beside one memory pass over the same frame (the floor)
 * in the same run.
 *
 * Before timing, the frame is painted once on every painter path this
 * processor runs and the pictures are compared: a difference fails the case.
 * Every iteration starts from the freshly laid-out block, because painting
 * consumes the streaks' edge records; the frame itself is painted over again
 * (the additions saturate, the work per pixel is the same).
 */
#include <string.h>

#include <vector>

#include "BenchSupport.h"
#include "HeavyFlare.h"
#include "PaintPath.h"

namespace flarebench {
namespace {

/* The laid-out flare: the used part of the block, to restore before each
   paint. */
struct LaidOutFlare {
    flaretest::FlareTestBlock block{1 << 20};
    std::vector<char> pristine;
    int32_t result = 0;

    LaidOutFlare(FrameSize size, bool turned)
    {
        result = BuildHeavyFlare(block, size.width, size.height, turned);
        pristine.assign(block.bytes(), block.bytes() + block.data()->flareDataSize);
    }

    int32_t Paint(Frame& frame)
    {
        memcpy(block.bytes(), pristine.data(), pristine.size());
        GlintwaveBuffer& b = block.data()->flarePixelBuffer;
        b.bufferBase = frame.base();
        b.bufferRowBytes = frame.rowBytes();
        SetLRect(&b.bufferRect, 0, 0, frame.size().width, frame.size().height);
        b.bufferDepth = frame.depth();
        b.bufferIndex = 0xFF;
        return GenerateFlare(&block.control, block.data(), frame.depth(), false);
    }
};

/* The checksum of the frame painted from black on each path. */
std::vector<uint64_t> PaintOnEveryPath(LaidOutFlare& flare, Frame& frame)
{
    std::vector<uint64_t> sums;
    const int32_t paths[] = {kPaintPathPlain, kPaintPathSpans, kPaintPathVector};
    for (int32_t path : paths) {
        if (path == kPaintPathVector && !VectorPathAvailable())
            continue;
        SetPaintPath(path);
        frame.Clear();
        flare.Paint(frame);
        sums.push_back(frame.Checksum());
    }
    SetPaintPath(kPaintPathBest);
    return sums;
}

void BM_HeavyFlare(benchmark::State& state, FrameSize size, int16_t depth, bool turned)
{
    LaidOutFlare flare(size, turned);
    if (flare.result != 0) {
        state.SkipWithError("layout failed");
        return;
    }
    Frame frame(size, depth);
    if (!ReportEquality(state, PaintOnEveryPath(flare, frame), "heavy flare"))
        return;
    frame.Clear();
    TimeAgainstFloor(state, frame, [&] { benchmark::DoNotOptimize(flare.Paint(frame)); });
    state.counters["path"] = CurrentPaintPath();
}

}  // namespace

void RegisterHeavyFlare()
{
    for (FrameSize size : {kFrame4K, kFrameHD})
        for (int16_t depth : {(int16_t)48, (int16_t)32})
            benchmark::RegisterBenchmark(
                (std::string("HeavyFlare/") + size.name + "/" + std::to_string(depth)).c_str(),
                [size, depth](benchmark::State& s) { BM_HeavyFlare(s, size, depth, false); })
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
    /* The same flare turned, at 4K: the rings' turned path. */
    for (int16_t depth : {(int16_t)48, (int16_t)32})
        benchmark::RegisterBenchmark((std::string("HeavyFlareTurned/") + kFrame4K.name + "/" + std::to_string(depth)).c_str(),
                                     [depth](benchmark::State& s) { BM_HeavyFlare(s, kFrame4K, depth, true); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
}

}  // namespace flarebench
