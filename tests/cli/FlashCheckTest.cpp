// FlashCheckTest.cpp - `glintwave check-flashes` on sequences made here: a
// strobing frame and a strobing quarter are reported, a steady sequence and
// a slow fade are not.
#include "CommandRun.h"

#include <gtest/gtest.h>

namespace {

using namespace command_test;
using command_test::glintwave;

TEST(GlintwaveCheckFlashes, StrobesAreReportedAndSteadyLightIsNot)
{
    TempFolder scratch;
    struct Case {
        const char* name;
        float (*value)(int frame, int x, int y);
        int status;
        const char* says;
    };
    const Case cases[] = {
        {"strobe", [](int frame, int, int) { return (frame / 2) % 2 ? 1.0f : 0.0f; }, 1,
         "frame 1: the whole frame flashes"},
        {"corner", [](int frame, int x, int y) { return x < 8 && y < 5 && (frame / 3) % 2 ? 1.0f : 0.2f; }, 1,
         "the upper left quarter flashes"},
        {"fade", [](int frame, int, int) { return frame / 48.0f; }, 0, "no more than three flashes"},
    };
    for (const Case& c : cases) {
        const std::filesystem::path folder = scratch / c.name;
        std::filesystem::create_directory(folder);
        for (int frame = 1; frame <= 48; ++frame) {
            char name[32];
            std::snprintf(name, sizeof name, "f.%04d.png", frame);
            writeImage(folder / name, 16, 10, OIIO::TypeDesc::UINT8,
                       [&](int x, int y, int) { return c.value(frame, x, y); });
        }
        const CommandRun run = glintwave(scratch, "check-flashes '" + (folder / "f.####.png").string() + "' --fps 24");
        EXPECT_EQ(run.status, c.status) << c.name << "\n" << run.out << run.err;
        EXPECT_NE(run.out.find(c.says), std::string::npos) << c.name << "\n" << run.out;
    }
    EXPECT_EQ(glintwave(scratch, "check-flashes '" + (scratch / "none.####.png").string() + "'").status, 1);
}

} // namespace
