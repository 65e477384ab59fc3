/*
 * RenderBench.cpp - time to paint a 1920 x 1080 frame of a style close to a
 * real one (origin glow, halo, outer glow, eight rings, four streaks), at 48
 * and 32 bits, and the time of one memory pass over a frame of the same size
 * as the yardstick: render time / memory-pass time is the figure to watch.
 *
 * Every iteration starts from the freshly laid-out block, because painting
 * consumes the streaks' edge records; the frame itself is painted over
 * again (the additions saturate, the work per pixel is the same).
 */
#include <benchmark/benchmark.h>

#include <string.h>

#include <vector>

#include "SyntheticFlare.h"

namespace {

constexpr int32_t kWidth = 1920;
constexpr int32_t kHeight = 1080;

void RenderFrame(benchmark::State& state, int16_t depth)
{
    flaretest::FlareTestBlock block(1 << 20);
    if (flaretest::BuildSyntheticFlare(block, kWidth, kHeight, 1380.0, 310.0) != 0) {
        state.SkipWithError("layout failed");
        return;
    }
    flaretest::TestImage image(kWidth, kHeight, depth);
    image.Attach(block.data());
    std::vector<char> pristine(block.bytes(), block.bytes() + block.size());

    for (auto _ : state) {
        memcpy(block.bytes(), pristine.data(), pristine.size());
        image.Attach(block.data());
        int32_t result = GenerateFlare(&block.control, block.data(), depth, false);
        benchmark::DoNotOptimize(result);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * (int64_t)image.rowBytes() * kHeight);
}

void BM_RenderFrame48(benchmark::State& state) { RenderFrame(state, 48); }
void BM_RenderFrame32(benchmark::State& state) { RenderFrame(state, 32); }

/* One pass over the frame: copy it to another buffer. */
void MemoryPass(benchmark::State& state, int pixelSize)
{
    size_t bytes = (size_t)kWidth * kHeight * pixelSize;
    std::vector<unsigned char> from(bytes, 1), to(bytes, 0);
    for (auto _ : state) {
        memcpy(to.data(), from.data(), bytes);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * (int64_t)bytes);
}

void BM_MemoryPass48(benchmark::State& state) { MemoryPass(state, 6); }
void BM_MemoryPass32(benchmark::State& state) { MemoryPass(state, 4); }

}  // namespace

BENCHMARK(BM_RenderFrame48)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RenderFrame32)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MemoryPass48)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MemoryPass32)->Unit(benchmark::kMillisecond);
