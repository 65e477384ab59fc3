// OcclusionRunTest.cpp - occluders through the built `glintwave`: a light
// behind a full matte leaves the plate as it was, half a disc gives about
// half the flare's light (by matte or by depth), a frame alone equals it
// in a smoothed run, and occluders that cannot be used are refused by name.
#include "CommandRun.h"

#include <OpenImageIO/imagebufalgo.h>
#include <gtest/gtest.h>

namespace {

using namespace command_test;
using command_test::glintwave;

double energy(const OIIO::ImageBuf& image)
{
    const auto stats = OIIO::ImageBufAlgo::computePixelStats(image);
    return stats.avg[0] + stats.avg[1] + stats.avg[2];
}

TEST(GlintwaveOcclusion, AHiddenLightLeavesThePlateAndHalfALightHalfTheFlare)
{
    TempFolder scratch;
    writeImage(scratch / "plate.png", 96, 54, OIIO::TypeDesc::UINT8,
               [](int x, int y, int c) { return (x + 2 * y + 30 * c) / 255.0f; });
    // Red hides: all of the frame, or the left half (the light sits on its edge).
    writeImage(scratch / "all.png", 96, 54, OIIO::TypeDesc::UINT8, [](int, int, int) { return 1.0f; });
    writeImage(scratch / "left.png", 96, 54, OIIO::TypeDesc::UINT8,
               [](int x, int, int c) { return c == 0 && x < 48 ? 1.0f : 0.0f; });
    const std::string light = " -q --light 0.5,0.5 --occluder-channel R ";
    ASSERT_EQ(glintwave(scratch, "render" + light + "--depth 32 --over " + quoted(scratch / "plate.png") +
                                     " --occluder " + quoted(scratch / "all.png") + " -o " +
                                     quoted(scratch / "hidden.png"))
                  .status,
              0);
    const OIIO::ImageBuf plate = readBack(scratch / "plate.png");
    const OIIO::ImageBuf hidden = readBack(scratch / "hidden.png");
    EXPECT_TRUE(OIIO::ImageBufAlgo::compare(plate, hidden, 0.0f, 0.0f).nfail == 0) << "the hidden light shows";

    ASSERT_EQ(glintwave(scratch, "render" + light + "--size 96x54 -o " + quoted(scratch / "whole.exr")).status, 0);
    ASSERT_EQ(glintwave(scratch, "render" + light + "--size 96x54 --occluder " + quoted(scratch / "left.png") +
                                     " -o " + quoted(scratch / "half.exr"))
                  .status,
              0);
    const double ratio = energy(readBack(scratch / "half.exr")) / energy(readBack(scratch / "whole.exr"));
    EXPECT_NEAR(ratio, 0.5, 0.05);

    // By depth: the left half stands at 1, the right at 10.
    writeImage(scratch / "depth.exr", 96, 54, OIIO::TypeDesc::FLOAT,
               [](int x, int, int) { return x < 48 ? 1.0f : 10.0f; });
    for (const auto& [lightDepth, expected] : {std::pair{"5", 0.5}, std::pair{"0.5", 1.0}, std::pair{"20", 0.0}}) {
        const CommandRun run = glintwave(scratch, "render -q --light 0.5,0.5 --size 96x54 --occluder-depth " +
                                                      quoted(scratch / "depth.exr") + " --light-depth " +
                                                      lightDepth + " -o " + quoted(scratch / "deep.exr"));
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_NEAR(energy(readBack(scratch / "deep.exr")) / energy(readBack(scratch / "whole.exr")), expected, 0.05)
            << "light at depth " << lightDepth;
    }
}

TEST(GlintwaveOcclusion, AFrameAloneEqualsItInARun)
{
    TempFolder scratch;
    const auto shot = scratch / "shot.json";
    ASSERT_EQ(glintwave(scratch, "-q project new " + quoted(shot) + " --size 96x54 --frames 1-4").status, 0);
    ASSERT_EQ(glintwave(scratch, "-q project set " + quoted(shot) + " --key light.x@1=0.2 --key light.x@4=0.8").status,
              0);
    for (int frame = 1; frame <= 4; ++frame)
        writeImage(scratch / ("m.000" + std::to_string(frame) + ".png"), 96, 54, OIIO::TypeDesc::UINT8,
                   [frame](int x, int, int) { return x > 20 * frame && x < 20 * frame + 8 ? 1.0f : 0.0f; });
    std::filesystem::create_directory(scratch / "run");
    std::filesystem::create_directory(scratch / "alone");
    const std::string common = "-q render --project " + quoted(shot) + " --occluder " +
                               quoted(scratch / "m.####.png") + " --occluder-channel luma --occlusion-smoothing 2 ";
    ASSERT_EQ(glintwave(scratch, common + "--threads 2 -o " + quoted(scratch / "run/f.####.exr")).status, 0);
    ASSERT_EQ(glintwave(scratch, common + "--frames 3 --threads 1 -o " + quoted(scratch / "alone/f.####.exr")).status,
              0);
    EXPECT_EQ(slurp(scratch / "alone/f.0003.exr"), slurp(scratch / "run/f.0003.exr"));

    // The same occlusion kept in the project.
    ASSERT_EQ(glintwave(scratch, "-q project set " + quoted(shot) +
                                     " --set occlusion.occluder=m.####.png --set occlusion.channel=luma"
                                     " --set occlusion.smoothing=2")
                  .status,
              0);
    std::filesystem::create_directory(scratch / "kept");
    ASSERT_EQ(glintwave(scratch, "-q render --project " + quoted(shot) + " --frames 3 -o " +
                                     quoted(scratch / "kept/f.####.exr"))
                  .status,
              0);
    EXPECT_EQ(slurp(scratch / "kept/f.0003.exr"), slurp(scratch / "run/f.0003.exr"));
}

// A fence passing the light: the light hides and shows six times a second.
TEST(GlintwaveOcclusion, AFencePassingTheLightFlashesNoMoreThanThreeTimesASecond)
{
    TempFolder scratch;
    const auto shot = scratch / "shot.json";
    ASSERT_EQ(glintwave(scratch, "-q project new " + quoted(shot) +
                                     " --size 64x36 --frames 1-48 --light 0.5,0.5 --light-radius 0.3")
                  .status,
              0);
    for (int frame = 1; frame <= 48; ++frame) {
        char name[32];
        std::snprintf(name, sizeof name, "m.%04d.png", frame);
        writeImage(scratch / name, 64, 36, OIIO::TypeDesc::UINT8,
                   [frame](int, int, int) { return (frame / 2) % 2 ? 1.0f : 0.0f; });
    }
    const std::string render = "-q render --project " + quoted(shot) + " --occluder " + quoted(scratch / "m.####.png") +
                               " --occluder-channel R --exposure 3 ";
    ASSERT_EQ(glintwave(scratch, render + "-o " + quoted(scratch / "on.####.png")).status, 0);
    ASSERT_EQ(glintwave(scratch, render + "--flash-limit off -o " + quoted(scratch / "off.####.png")).status, 0);
    const CommandRun limited = glintwave(scratch, "check-flashes " + quoted(scratch / "on.####.png"));
    EXPECT_EQ(limited.status, 0) << limited.out;
    const CommandRun strobing = glintwave(scratch, "check-flashes " + quoted(scratch / "off.####.png"));
    EXPECT_EQ(strobing.status, 1) << strobing.out;
    EXPECT_NE(strobing.out.find("frame 1: the whole frame flashes"), std::string::npos) << strobing.out;
}

TEST(GlintwaveOcclusion, OccludersThatCannotBeUsedAreRefused)
{
    TempFolder scratch;
    std::ofstream(scratch / "broken.png") << "not an image";
    writeImage(scratch / "small.png", 8, 8, OIIO::TypeDesc::UINT8, [](int, int, int) { return 1.0f; });
    writeImage(scratch / "rgb.png", 16, 9, OIIO::TypeDesc::UINT8, [](int, int, int) { return 1.0f; });
    const std::string render = "render --size 16x9 -o " + quoted(scratch / "out.png") + " --occluder ";
    const std::pair<std::string, std::string> cases[] = {
        {quoted(scratch / "broken.png"), "broken.png: cannot read it as an image"},
        {quoted(scratch / "small.png"), "small.png: is 8x8, the frame is 16x9"},
        {quoted(scratch / "rgb.png"), "rgb.png: has no alpha to hide the light with"},
        {quoted(scratch / "rgb.png") + " --occluder-channel depth", "'depth' is not a channel"},
        {quoted(scratch / "rgb.png") + " --occluder-channel R --occlusion-smoothing 2", "give --project"},
    };
    for (const auto& [arguments, message] : cases) {
        const CommandRun run = glintwave(scratch, render + arguments);
        EXPECT_NE(run.status, 0) << arguments;
        EXPECT_NE(run.err.find(message), std::string::npos) << arguments << "\n" << run.err;
        EXPECT_FALSE(std::filesystem::exists(scratch / "out.png")) << arguments;
    }
}

} // namespace
