// SequenceRunTest.cpp - projects and frame sequences through the built
// `glintwave`: project new/show/set, damaged projects, keyed frames, frame
// subsets and worker processes giving the same bytes, --skip-existing, and
// failed frames named.
#include "CommandRun.h"

#include <OpenImageIO/imagebufalgo.h>
#include <gtest/gtest.h>

namespace {

using namespace command_test;
using command_test::glintwave;  // the function, not the namespace of the command's code

// A 160x90 shot of frames 1-6: the light moves right, the rings fade out,
// no streaks.
std::filesystem::path keyedShot(const TempFolder& scratch)
{
    const std::filesystem::path shot = scratch / "shot.json";
    const CommandRun made = glintwave(scratch, "-q project new " + quoted(shot) + " --size 160x90 --frames 1-6");
    EXPECT_EQ(made.status, 0) << made.err;
    const CommandRun set = glintwave(scratch, "-q project set " + quoted(shot) +
                                                  " --set 'Streak Intensity=0' --key light.x@1=0.2 --key light.x@6=0.8"
                                                  " --key 'Ring Intensity@1=1' --key 'Ring Intensity@6=0'");
    EXPECT_EQ(set.status, 0) << set.err;
    return shot;
}

std::size_t lineOf(const std::string& text, const std::string& part)
{
    return 1 + static_cast<std::size_t>(std::count(text.begin(), text.begin() + text.find(part), '\n'));
}

TEST(GlintwaveProject, NewShowSetRoundTrip)
{
    TempFolder scratch;
    const auto shot = scratch / "p.json";
    ASSERT_EQ(glintwave(scratch, "-q project new " + quoted(shot) +
                                     " --style 3 --size 320x180 --frames 1-48 --fps 25 --light 0.25,40%")
                  .status,
              0);
    const CommandRun set = glintwave(scratch, "project set " + quoted(shot) +
                                                  " --set 'Ring Intensity=0.5' --key 'Ring Scale@1=0.5'"
                                                  " --key 'Ring Scale@48=2' --key light.color@48=255,128,0");
    ASSERT_EQ(set.status, 0) << set.err;
    const CommandRun show = glintwave(scratch, "project show --all " + quoted(shot));
    ASSERT_EQ(show.status, 0) << show.err;
    for (const char* line : {"Scene: 320x180, frames 1-48 at 25 fps", "  x:  1: 0.25\n", "  y:  1: 0.4\n",
                             "  color:  1: 255,255,255  48: 255,128,0", "Glintwave/Ring Scale (REAL):  1: 0.5  48: 2",
                             "Glintwave/Ring Intensity (REAL):  1: 0.5\n", "Channels offered",
                             "  Glintwave/Halo Color (CRGB): 255,255,255"})
        EXPECT_NE(show.out.find(line), std::string::npos) << line << "\n" << show.out;
}

TEST(GlintwaveProject, MistakesAreRefusedAndLeaveTheFileAsItWas)
{
    TempFolder scratch;
    const auto shot = keyedShot(scratch);
    const std::string good = slurp(shot);
    const auto damaged = [&](const std::string& name, std::string from, std::string to) {
        std::string text = good;
        text.replace(text.find(from), from.size(), to);
        std::ofstream(scratch / name) << text;
        return name + ":" + std::to_string(lineOf(text, to)) + ": ";
    };
    struct Case {
        std::string arguments;
        int status;
        std::string message;
    };
    const std::string p = quoted(shot);
    const std::string out = " -o " + quoted(scratch / "f.####.png");
    const Case cases[] = {
        {"project show " + quoted(scratch / "w.json"), 1,
         damaged("w.json", "\"width\": 160", "\"width\": \"wide\"") + "scene.width: must be a whole number"},
        {"render --project " + quoted(scratch / "r.json") + out, 1,
         damaged("r.json", "\"frameRate\": 24.0", "\"frameRate\": -1") + "scene.frameRate"},
        {"project set " + quoted(scratch / "f.json") + " --set light.x=1", 1,
         damaged("f.json", "glintwave-project", "other-project") + "format"},
        {"project set " + p + " --key 'Sparkle@3=1'", 2, "offers no channel \"Sparkle\""},
        {"project set " + p + " --key 'Ring Scale=1'", 2, "give the frame"},
        {"project set " + p + " --set 'Ring Scale@2=1'", 2, "--key"},
        {"project set " + p + " --key 'Ring Scale@2=big'", 2, "not a number"},
        {"project new " + p, 2, "exists already"},
        {"render --project " + p + " --ring-scale 2" + out, 2, "does not go with --project"},
        {"render --frames 1-3" + out, 2, "--project"},
        {"render --project " + p + " -o " + quoted(scratch / "one.png"), 2, "frame number"},
        {"render --project " + p + " --frames 5-1" + out, 2, "frame range"},
    };
    const std::vector<std::string> before = filesIn(scratch);
    for (const Case& c : cases) {
        const CommandRun run = glintwave(scratch, c.arguments);
        EXPECT_EQ(run.status, c.status) << c.arguments << "\n" << run.err;
        EXPECT_EQ(run.err.rfind("glintwave ERROR: ", 0), 0u) << c.arguments << "\n" << run.err;
        EXPECT_NE(run.err.find(c.message), std::string::npos) << c.arguments << "\n" << run.err;
        EXPECT_EQ(slurp(shot), good) << c.arguments;
        EXPECT_EQ(filesIn(scratch), before) << c.arguments;
    }
}

TEST(GlintwaveSequence, KeysAndLightTrackChangeTheFrames)
{
    TempFolder scratch;
    const auto shot = keyedShot(scratch);
    const CommandRun run = glintwave(scratch, "render --project " + quoted(shot) + " -o " +
                                                  quoted(scratch / "k.%02d.exr"));
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("6 frames, 160x90"), std::string::npos) << run.out;
    double lastX = -1, lastEnergy = 1e30;
    for (int frame = 1; frame <= 5; frame++) {
        const OIIO::ImageBuf image = readBack(scratch / ("k.0" + std::to_string(frame) + ".exr"));
        EXPECT_EQ(image.spec().get_int_attribute("glintwave:frame"), frame);
        double energy = 0, weighted = 0;
        for (OIIO::ImageBuf::ConstIterator<float> p(image); !p.done(); ++p) {
            energy += p[0] + p[1] + p[2];
            weighted += (p[0] + p[1] + p[2]) * p.x();
        }
        EXPECT_GT(weighted / energy, lastX) << "the light moves right, frame " << frame;
        EXPECT_LT(energy, lastEnergy) << "the rings fade, frame " << frame;
        lastX = weighted / energy;
        lastEnergy = energy;
    }
    EXPECT_EQ(OIIO::ImageBufAlgo::computePixelStats(readBack(scratch / "k.06.exr")).max[0], 0.0f)
        << "rings at intensity 0, no streaks";
}

TEST(GlintwaveSequence, SubsetsAndWorkersGiveTheSameBytes)
{
    TempFolder scratch;
    const auto shot = keyedShot(scratch);
    const std::string render = "-q render --project " + quoted(shot);
    for (const char* extension : {"exr", "png"}) {
        const std::string whole = std::string("whole.####.") + extension;
        ASSERT_EQ(glintwave(scratch, render + " --threads 1 -o " + quoted(scratch / whole)).status, 0);
        struct Case {
            const char* options;
            std::vector<int> frames;
        };
        const Case cases[] = {
            {"--frames 5,2 --threads 1", {2, 5}},
            {"--frames 1-6x2 --threads 2", {1, 3, 5}},
            {"--threads 2", {1, 2, 3, 4, 5, 6}},
        };
        for (const Case& c : cases) {
            const std::string part = std::string("part.@.") + extension;
            const CommandRun run = glintwave(scratch, render + " " + c.options + " -o " + quoted(scratch / part));
            ASSERT_EQ(run.status, 0) << c.options << "\n" << run.err;
            for (const int frame : c.frames) {
                const std::string name = std::to_string(frame);
                EXPECT_EQ(slurp(scratch / ("part." + name + "." + extension)),
                          slurp(scratch / ("whole.000" + name + "." + extension)))
                    << c.options << ", frame " << frame << " " << extension;
                std::filesystem::remove(scratch / ("part." + name + "." + extension));
            }
            EXPECT_EQ(filesIn(scratch).size(), 7u) << c.options << ": only the frames asked for";
        }
        for (int frame = 1; frame <= 6; frame++)
            std::filesystem::remove(scratch / ("whole.000" + std::to_string(frame) + "." + extension));
    }
}

TEST(GlintwaveSequence, TheProjectsOutputSettingsKeyTheExposureAndAddPasses)
{
    TempFolder scratch;
    const auto shot = keyedShot(scratch);
    ASSERT_EQ(glintwave(scratch, "-q project set " + quoted(shot) +
                                     " --set output.passes=on --key output.exposure@1=0 --key output.exposure@3=2")
                  .status,
              0);
    std::filesystem::create_directory(scratch / "keyed");
    std::filesystem::create_directory(scratch / "plain");
    const CommandRun keyed = glintwave(scratch, "-q render --project " + quoted(shot) + " --frames 1-3 --threads 2 -o " +
                                                    quoted(scratch / "keyed/f.####.exr"));
    ASSERT_EQ(keyed.status, 0) << keyed.err;
    // The command's own --exposure wins over the project's keys.
    const CommandRun plain = glintwave(scratch, "-q render --project " + quoted(shot) +
                                                    " --frames 1-3 --threads 1 --exposure 0 -o " +
                                                    quoted(scratch / "plain/f.####.exr"));
    ASSERT_EQ(plain.status, 0) << plain.err;
    for (const auto& [frame, scale] : {std::pair{"0001", 1.0f}, std::pair{"0002", 2.0f}, std::pair{"0003", 4.0f}}) {
        const OIIO::ImageBuf k = readBack(scratch / "keyed" / ("f." + std::string(frame) + ".exr"));
        const OIIO::ImageBuf p = readBack(scratch / "plain" / ("f." + std::string(frame) + ".exr"));
        EXPECT_EQ(k.spec().channelindex("rings.R"), p.spec().channelindex("rings.R")) << frame;
        EXPECT_GE(k.spec().channelindex("rings.R"), 3) << frame;
        for (OIIO::ImageBuf::ConstIterator<float> a(k), b(p); !a.done(); ++a, ++b)
            for (int c = 0; c < 3; ++c)
                ASSERT_NEAR(a[c], scale * b[c], std::max(scale * 1.2e-7, scale * b[c] * 2e-3)) << frame << " " << a.x() << ","
                                                                                      << a.y();
    }
}

TEST(GlintwaveSequence, SkipExistingLeavesFilesThatExist)
{
    TempFolder scratch;
    const auto shot = keyedShot(scratch);
    std::ofstream(scratch / "s.0003.png") << "kept";
    const CommandRun run = glintwave(scratch, "render --project " + quoted(shot) + " --skip-existing -o " +
                                                  quoted(scratch / "s.####.png"));
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("5 frames"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("1 skipped"), std::string::npos) << run.out;
    EXPECT_EQ(slurp(scratch / "s.0003.png"), "kept");
    EXPECT_EQ(readBack(scratch / "s.0004.png").spec().width, 160);
}

TEST(GlintwaveSequence, EveryFailedFrameIsNamedAndTheOthersAreWritten)
{
    for (const char* threads : {"1", "2"}) {
        TempFolder scratch;
        const auto shot = keyedShot(scratch);
        for (int frame : {1, 2, 4, 5})
            writeImage(scratch / ("plate." + std::to_string(frame) + ".png"), frame == 5 ? 80 : 160,
                       frame == 5 ? 45 : 90, OIIO::TypeDesc::UINT8, [](int x, int, int) { return x / 200.0f; });
        const CommandRun run = glintwave(scratch, "render --project " + quoted(shot) + " --frames 1-5 --threads " +
                                                      threads + " --over " + quoted(scratch / "plate.%d.png") +
                                                      " -o " + quoted(scratch / "o.#.png"));
        EXPECT_EQ(run.status, 1) << threads;
        for (const std::string& part : {"frame 3 failed: " + (scratch / "plate.3.png").string() + ": no such image",
                                       std::string("frame 5 failed: "), std::string("is 80x45"),
                                       std::string("glintwave ERROR: 2 of 5 frames failed: 3, 5 ")})
            EXPECT_NE(run.err.find(part), std::string::npos) << threads << ": " << part << "\n" << run.err;
        EXPECT_EQ(filesIn(scratch), (std::vector<std::string>{"o.0001.png", "o.0002.png", "o.0004.png",
                                                             "plate.1.png", "plate.2.png", "plate.4.png",
                                                             "plate.5.png", "shot.json"}))
            << threads;
    }
}

} // namespace
