// GlintwaveHostTest.cpp - the host driving the real Glintwave.so: what it
// says about itself, a whole frame, moving blocks, cancel, and its home
// folder.
#include "TempFolder.h"
#include "korvane/PluginHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace {

using korvane::FrameBuffer;
using korvane::FrameSetup;
using korvane::HostOptions;
using korvane::PluginInstance;
using korvane::PluginLibrary;

constexpr std::int32_t kWidth = 160;
constexpr std::int32_t kHeight = 90;

struct Frame {
    std::int16_t depth;
    std::vector<std::uint8_t> pixels;

    explicit Frame(std::int16_t d) : depth(d), pixels(static_cast<std::size_t>(kWidth) * kHeight * (d / 8), 0) {}

    FrameBuffer buffer()
    {
        FrameBuffer buffer;
        buffer.base = pixels.data();
        buffer.rowBytes = kWidth * (depth / 8);
        buffer.width = kWidth;
        buffer.height = kHeight;
        buffer.depth = depth;
        return buffer;
    }
    bool black() const
    {
        return std::all_of(pixels.begin(), pixels.end(), [](std::uint8_t byte) { return byte == 0; });
    }
};

FrameSetup demoFrame()
{
    FrameSetup frame = FrameSetup::centred(kWidth, kHeight, 0.3 * kWidth, 0.3 * kHeight);
    frame.lightFrameRadius = 0.1 * kHeight;
    return frame;
}

// INIT, SETF and GENF as a host runs them; the frame's result code.
std::int32_t render(PluginInstance& instance, Frame& frame)
{
    instance.require(kCmdInitialize, instance.init());
    instance.require(kCmdFlareSetup, instance.setup(demoFrame()));
    return instance.generate(frame.buffer());
}

TEST(Glintwave, InformationInUtf8)
{
    PluginLibrary library(GLINTWAVE_PLUGIN_PATH);
    PluginInstance instance(library);
    const korvane::PluginInfo info = instance.info();
    EXPECT_EQ(info.name, "Korvane\u2122 Glintwave");
    EXPECT_EQ(info.type, KV_FOURCC('F', 'L', 'A', 'R'));
    EXPECT_EQ(info.version, 6);
    EXPECT_EQ(info.description,
              "This light effects plugin can simulate lens flares.  It is table driven and can create many different "
              "effects.");
}

struct RenderCase {
    const char* label;
    std::int16_t depth;
};

class GlintwaveRender : public testing::TestWithParam<RenderCase> {};

// A frame is painted, reports its progress, and comes out the same when
// every 'ALOC' moves the blocks: the plug-in keeps no pointer across one.
TEST_P(GlintwaveRender, PaintsTheSameFrameWhetherBlocksMoveOrNot)
{
    PluginLibrary library(GLINTWAVE_PLUGIN_PATH);

    HostOptions still;
    still.statusIntervalTicks = 0;  // every report, to see them all
    PluginInstance steady(library, still);
    std::vector<korvane::Progress> reports;
    steady.setProgressCallback([&](const korvane::Progress& report) {
        reports.push_back(report);
        return 0;
    });
    Frame painted(GetParam().depth);
    ASSERT_EQ(render(steady, painted), kPluginNoError);
    EXPECT_FALSE(painted.black());
    ASSERT_FALSE(reports.empty());
    EXPECT_EQ(reports.front().heading, "Drawing Flare");
    EXPECT_EQ(reports.front().unit, "Scanline");
    EXPECT_EQ(reports.back().value, kHeight);
    EXPECT_EQ(reports.back().maximum, kHeight);

    HostOptions moving;
    moving.moveBlocks = true;
    moving.freeBudget = 4 * 1024 * 1024;
    PluginInstance mover(library, moving);
    Frame repainted(GetParam().depth);
    ASSERT_EQ(render(mover, repainted), kPluginNoError);
    EXPECT_TRUE(painted.pixels == repainted.pixels);
}

INSTANTIATE_TEST_SUITE_P(Host, GlintwaveRender,
                         testing::Values(RenderCase{"depth48", 48}, RenderCase{"depth32", 32}),
                         [](const auto& info) { return std::string(info.param.label); });

} // namespace
