// ShotRendererTest.cpp - a keyed sequence through Glintwave.so: the keys and
// the light track change the pixels, and every frame is the same whether
// rendered alone, in order or backwards.
#include "korvane/ShotRenderer.h"

#include "glintwave/GlintwaveRecords.h"

#include <gtest/gtest.h>

#include <cstring>
#include <numeric>

namespace {

using korvane::Project;

constexpr std::int32_t kWidth = 160;
constexpr std::int32_t kHeight = 90;
using Pixels = std::vector<std::uint16_t>;

Project keyedShot()
{
    Project project;
    project.width = kWidth;
    project.height = kHeight;
    project.firstFrame = 1;
    project.lastFrame = 5;
    project.light.x = {{1, 0.2}, {5, 0.8}};
    project.light.radius = {{1, 0.05}};
    project.channels["Glintwave/Streak Intensity"] = {kChannelReal, {{1, 0.0}}};
    project.channels["Glintwave/Ring Intensity"] = {kChannelReal, {{1, 1.0}, {5, 0.0}}};
    return project;
}

// Renders the frames in the order given with one instance; `edit`, when
// given, changes the settings of every odd frame's render.
std::map<std::int32_t, Pixels> render(const Project& project, const std::vector<std::int32_t>& frames,
                                      const korvane::ShotRenderer::SettingsEdit& edit = {})
{
    korvane::PluginLibrary library(GLINTWAVE_PLUGIN_PATH);
    korvane::PluginInstance instance(library);
    korvane::ShotRenderer shot(instance, project);
    std::map<std::int32_t, Pixels> out;
    for (std::int32_t frame : frames) {
        Pixels& pixels = out[frame];
        pixels.assign(static_cast<std::size_t>(kWidth) * kHeight * 3, 0);
        korvane::FrameBuffer buffer;
        buffer.base = pixels.data();
        buffer.rowBytes = kWidth * 6;
        buffer.width = kWidth;
        buffer.height = kHeight;
        shot.render(frame, buffer, {frame % 2 != 0 ? edit : korvane::ShotRenderer::SettingsEdit{}});
    }
    return out;
}

double energy(const Pixels& pixels)
{
    return std::accumulate(pixels.begin(), pixels.end(), 0.0);
}

// Brightness-weighted mean column.
double centroidX(const Pixels& pixels)
{
    double sum = 0, weighted = 0;
    for (std::size_t i = 0; i < pixels.size(); i++) {
        sum += pixels[i];
        weighted += pixels[i] * static_cast<double>((i / 3) % kWidth);
    }
    return weighted / sum;
}

TEST(ShotRenderer, KeysAndLightTrackChangeTheFrames)
{
    const auto frames = render(keyedShot(), {1, 2, 3, 4, 5});
    for (std::int32_t f = 1; f < 4; f++) {
        EXPECT_LT(centroidX(frames.at(f)), centroidX(frames.at(f + 1))) << "the light moves right, frame " << f;
        EXPECT_GT(energy(frames.at(f)), energy(frames.at(f + 1))) << "the rings fade, frame " << f;
    }
    EXPECT_EQ(energy(frames.at(5)), 0.0) << "rings at intensity 0, no streaks";
}

TEST(ShotRenderer, EveryFrameIsTheSameAloneInOrderAndBackwards)
{
    Project project = keyedShot();
    project.channels["Glintwave/Streak Intensity"].keys = {{1, 0.5}, {5, 2.0}};
    project.light.rotation = {{1, 0.0}, {5, 90.0}};
    const auto inOrder = render(project, {1, 2, 3, 4, 5});
    const auto backwards = render(project, {5, 4, 3, 2, 1});
    EXPECT_EQ(inOrder, backwards);
    for (std::int32_t frame : {3, 5})
        EXPECT_EQ(render(project, {frame}).at(frame), inOrder.at(frame)) << frame;
}

TEST(ShotRenderer, ASettingsEditHoldsForItsRenderAlone)
{
    const Project project = keyedShot();
    const auto plain = render(project, {1, 2, 3, 4});
    // Every element switched off: an edited frame is black.
    const auto blank = [](std::vector<std::uint8_t>& bytes) {
        ASSERT_GE(bytes.size(), sizeof(ControlDataRec));
        ControlDataRec settings;
        std::memcpy(&settings, bytes.data(), sizeof settings);
        for (const int bit : {kFlagNoOriginGlow, kFlagNoOuterGlow, kFlagNoHalo, kFlagNoRings, kFlagNoStreaks})
            settings.flareFlags |= FLARE_FLAG(bit);
        std::memcpy(bytes.data(), &settings, sizeof settings);
    };
    const auto edited = render(project, {1, 2, 3, 4}, blank);
    EXPECT_GT(energy(plain.at(1)), 0.0);
    EXPECT_EQ(energy(edited.at(1)), 0.0) << "the edit changed nothing";
    EXPECT_EQ(energy(edited.at(3)), 0.0) << "the edit changed nothing";
    EXPECT_EQ(edited.at(2), plain.at(2)) << "the edit outlived its render";
    EXPECT_EQ(edited.at(4), plain.at(4)) << "the edit outlived its render";
}

TEST(ShotRenderer, UnknownChannelsInTheProjectAreRefused)
{
    Project project = keyedShot();
    project.channels["Glintwave/Sparkle"] = {kChannelReal, {{1, 1.0}}};
    EXPECT_THROW(render(project, {1}), korvane::Error);
}

} // namespace
