// ShotBench.cpp - frames of a keyed 1920x1080 shot through Glintwave.so as
// the command renders them: 'LCHN', 'SETF', 'GENF' per frame (no image
// files). Frames per second = 1 / time per iteration. And what an occluder
// adds to a 4K frame.
#include "korvane/Occlusion.h"
#include "korvane/ShotRenderer.h"

#include <OpenImageIO/imagebufalgo.h>

#include <benchmark/benchmark.h>

namespace {

void BM_ShotFrame1080p(benchmark::State& state)
{
    korvane::Project project;
    project.firstFrame = 1;
    project.lastFrame = 24;
    project.light.x = {{1, 0.2}, {24, 0.8}};
    project.light.y = {{1, 0.3}, {24, 0.4}};
    project.channels["Glintwave/Ring Scale"] = {kChannelReal, {{1, 0.8}, {24, 1.5}}};

    korvane::PluginLibrary library(GLINTWAVE_PLUGIN_PATH);
    korvane::PluginInstance instance(library);
    korvane::ShotRenderer shot(instance, project);
    std::vector<std::uint16_t> pixels(static_cast<std::size_t>(project.width) * project.height * 3);
    korvane::FrameBuffer buffer;
    buffer.base = pixels.data();
    buffer.rowBytes = project.width * 6;
    buffer.width = project.width;
    buffer.height = project.height;
    std::int32_t frame = 0;
    for (auto _ : state) {
        std::fill(pixels.begin(), pixels.end(), 0);
        shot.render(1 + frame++ % 24, buffer);
        benchmark::DoNotOptimize(pixels.data());
    }
}
BENCHMARK(BM_ShotFrame1080p)->Unit(benchmark::kMillisecond);

// What an occluder costs a 3840x2160 frame once read (the reading is the
// image library's): the matte around a light of radius 216 px, and the
// visible part of the light measured in it.
void BM_Occlusion4K(benchmark::State& state)
{
    constexpr int kWidth = 3840, kHeight = 2160;
    korvane::RgbImage image;
    image.pixels.reset(OIIO::ImageSpec(kWidth, kHeight, 3, OIIO::TypeDesc::UINT16));
    image.alpha.reset(OIIO::ImageSpec(kWidth, kHeight, 1, OIIO::TypeDesc::UINT16));
    const float half[1] = {0.5f};
    OIIO::ImageBufAlgo::fill(image.alpha, half);
    double visible = 0;
    for (auto _ : state) {
        const korvane::OcclusionMatte matte(image, korvane::MatteChannel::alpha, "bench", 1920.5, 1080.25, 216);
        visible += matte.visibleFraction(1920.5, 1080.25, 216, korvane::OffscreenIs::leftOut);
    }
    benchmark::DoNotOptimize(visible);
}
BENCHMARK(BM_Occlusion4K)->Unit(benchmark::kMillisecond);

} // namespace
