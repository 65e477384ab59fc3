// CommandRunTest.cpp - the built `glintwave` program, end to end: images
// written and read back, paint over backgrounds, the sketch, the error
// table and a cancel. Frames are small so the whole file runs in seconds.
#include "CommandRun.h"
#include "Output.h"

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>
#include <gtest/gtest.h>

#include <fstream>

namespace {

using namespace command_test;
using command_test::glintwave;  // the function, not the namespace of the command's code

TEST(GlintwaveRender, PngAndExrReadBackWithMetadata)
{
    TempFolder scratch;
    struct Case {
        const char* file;
        const char* options;
        OIIO::TypeDesc::BASETYPE stored;
    };
    const Case cases[] = {
        {"f.png", "--depth 48", OIIO::TypeDesc::UINT16},
        {"f.exr", "--depth 48", OIIO::TypeDesc::HALF},
        {"f.tif", "--depth 32", OIIO::TypeDesc::UINT8},
    };
    for (const Case& c : cases) {
        const std::string output = " -o '" + (scratch / c.file).string() + "'";
        const CommandRun run = glintwave(scratch, std::string("render -q --size 96x54 --style 2 ") + c.options + output);
        ASSERT_EQ(run.status, 0) << c.file << "\n" << run.err;
        EXPECT_EQ(run.out + run.err, "") << c.file;  // -q, and no progress bar without a terminal
        OIIO::ImageBuf image = readBack(scratch / c.file);
        const OIIO::ImageSpec& spec = image.nativespec();
        EXPECT_EQ(spec.width, 96);
        EXPECT_EQ(spec.height, 54);
        EXPECT_EQ(spec.nchannels, 3);
        EXPECT_EQ(spec.format.basetype, c.stored) << c.file;
        const std::string description = spec.get_string_attribute("ImageDescription");
        EXPECT_EQ(description.rfind("Glintwave lens flare, style 2 ", 0), 0u) << c.file << ": " << description;
        EXPECT_NE(description.find("--ring-scale 1 "), std::string::npos) << c.file;
        const auto stats = OIIO::ImageBufAlgo::computePixelStats(image);
        EXPECT_GT(stats.max[0], 0.5f) << c.file << " is (nearly) black";
        EXPECT_LE(stats.max[0], 1.0f) << c.file;
    }
    EXPECT_EQ(filesIn(scratch), (std::vector<std::string>{"f.exr", "f.png", "f.tif"}));  // no temporaries left
}

TEST(GlintwaveRender, TheHostBlendPaintsIntoAnIntegerBackgroundAndSaturates)
{
    TempFolder scratch;
    // Bright in red so the flare saturates it, dark and asymmetric elsewhere.
    writeImage(scratch / "bg.png", 80, 45, OIIO::TypeDesc::UINT8,
               [](int x, int y, int c) { return c == 0 ? 240 / 255.0f : (x + 2 * y + 30 * c) / 255.0f; });
    for (const char* depth : {"48", "32"}) {
        const std::string common = std::string("render -q --blend host --style 1 --depth ") + depth;
        ASSERT_EQ(glintwave(scratch, common + " --size 80x45 -o '" + (scratch / "black.png").string() + "'").status, 0);
        const CommandRun over = glintwave(scratch, common + " --over '" + (scratch / "bg.png").string() + "' -o '" +
                                                (scratch / "over.png").string() + "'");
        ASSERT_EQ(over.status, 0) << over.err;
        // In the frame's own levels: 8-bit v is v x 64 of 16320, a 16-bit file
        // sample s is s x 16320 / 65535.
        const double full = depth == std::string("48") ? 16320.0 : 255.0;
        const OIIO::ImageBuf bg = readBack(scratch / "bg.png");
        const OIIO::ImageBuf flare = readBack(scratch / "black.png");
        const OIIO::ImageBuf result = readBack(scratch / "over.png");
        int saturated = 0;
        for (OIIO::ImageBuf::ConstIterator<float> b(bg), f(flare), r(result); !r.done(); ++b, ++f, ++r) {
            for (int c = 0; c < 3; ++c) {
                const double expected = std::min(full, std::round(b[c] * full) + std::round(f[c] * full));
                ASSERT_EQ(std::round(r[c] * full), expected) << depth << " at " << r.x() << "," << r.y();
                saturated += expected == full && f[c] > 0;
            }
        }
        EXPECT_GT(saturated, 0) << depth;
    }
}

TEST(GlintwaveRender, FloatBackgroundKeepsValuesAboveOne)
{
    TempFolder scratch;
    writeImage(scratch / "bg.exr", 64, 36, OIIO::TypeDesc::FLOAT,
               [](int x, int, int c) { return 2.0f + 0.25f * c + x / 64.0f; });
    const std::string common = "render -q --style 1 --depth 48 ";
    ASSERT_EQ(glintwave(scratch, common + "--size 64x36 -o '" + (scratch / "black.exr").string() + "'").status, 0);
    const CommandRun over = glintwave(scratch, common + "--over '" + (scratch / "bg.exr").string() + "' -o '" +
                                            (scratch / "over.exr").string() + "'");
    ASSERT_EQ(over.status, 0) << over.err;
    const OIIO::ImageBuf bg = readBack(scratch / "bg.exr");
    const OIIO::ImageBuf flare = readBack(scratch / "black.exr");
    const OIIO::ImageBuf result = readBack(scratch / "over.exr");
    for (OIIO::ImageBuf::ConstIterator<float> b(bg), f(flare), r(result); !r.done(); ++b, ++f, ++r)
        for (int c = 0; c < 3; ++c)
            ASSERT_NEAR(r[c], b[c] + f[c], 0.004f) << r.x() << "," << r.y();  // half precision near 3
    EXPECT_GT(OIIO::ImageBufAlgo::computePixelStats(result).max[0], 3.0f);
}

TEST(GlintwaveRender, SketchIsWhitePointsOnly)
{
    TempFolder scratch;
    const CommandRun run =
        glintwave(scratch, "render -q --depth 8 --size 160x90 -o '" + (scratch / "s.png").string() + "'");
    ASSERT_EQ(run.status, 0) << run.err;
    const OIIO::ImageBuf sketch = readBack(scratch / "s.png");
    int points = 0;
    for (OIIO::ImageBuf::ConstIterator<float> p(sketch); !p.done(); ++p) {
        ASSERT_TRUE(p[0] == 0.0f || p[0] == 1.0f) << p.x() << "," << p.y();
        ASSERT_EQ(p[0], p[1]);
        points += p[0] == 1.0f;
    }
    EXPECT_GT(points, 20);
    EXPECT_LT(points, 160 * 90 / 4);  // outlines, not filled shapes
}

TEST(GlintwaveCommand, ErrorsLeaveNoFile)
{
    TempFolder scratch;
    std::ofstream(scratch / "broken.png") << "not an image";
    writeImage(scratch / "cut.jpg", 64, 36, OIIO::TypeDesc::UINT8,
               [](int x, int y, int c) { return (x * y + c) % 7 / 7.0f; });
    std::filesystem::resize_file(scratch / "cut.jpg", std::filesystem::file_size(scratch / "cut.jpg") / 2);
    // A DPX whose user data length (byte 32, little-endian here) claims 4 GB.
    writeImage(scratch / "damaged.dpx", 8, 8, OIIO::TypeDesc::UINT16, [](int, int, int) { return 0.5f; });
    {
        std::fstream dpx(scratch / "damaged.dpx", std::ios::binary | std::ios::in | std::ios::out);
        dpx.seekp(32);
        dpx.write("\x00\x00\x00\xF0", 4);
    }
    std::filesystem::create_directory(scratch / "lonely");
    std::filesystem::copy_file(GLINTWAVE_PLUGIN_PATH, scratch / "lonely" / "Glintwave.so");
    const std::string out = " -o '" + (scratch / "out.png").string() + "'";
    struct Case {
        std::string arguments;
        int status;
        std::string message;
    };
    std::vector<Case> cases = {
        {"render --size 16x9 --bogus" + out, 2, "--bogus"},
        {"render --size 16x9", 2, "--output is required"},
        {"render --ring-scale abc" + out, 2, "'abc' is not a number"},
        {"render --ring-scale 99" + out, 2, "out of range"},
        {"render --light nan,0.3" + out, 2, "not a position"},
        {"render --size 0x10" + out, 2, "not a frame size"},
        {"render --depth 24" + out, 2, "--depth"},
        {"render --size 16x9 --over x.png" + out, 2, "excludes"},
        {"render --size 16x9 --style nosuch" + out, 2, "no such style; choose one of 1 "},
        {"render --size 16x9 -o '" + (scratch / "out.xyz").string() + "'", 2, "no image format"},
        {"render --over '" + (scratch / "missing.png").string() + "'" + out, 1, "no such image file"},
        {"render --over '" + (scratch / "broken.png").string() + "'" + out, 1, "cannot read it as an image"},
        {"render --over '" + (scratch / "cut.jpg").string() + "'" + out, 1, "is damaged"},
        {"render --over '" + (scratch / "damaged.dpx").string() + "'" + out, 1,
         "damaged.dpx: its user data size (byte 32) is 4026531840, past the end of the file"},
        {"render --size 16x9 --plugin /nonexistent/Glintwave.so" + out, 1, "cannot load plug-in"},
        {"render --size 16x9 --plugin '" + (scratch / "lonely" / "Glintwave.so").string() + "'" + out, 1,
         "Glintwave.rsc"},
        {"render --size 16x9 -o '" + (scratch / "nofolder" / "out.png").string() + "'", 1, "does not exist"},
        {"render --size 16x9 --blend screen" + out, 2, "'screen' is not a blend"},
        {"render --size 16x9 --exposure nan" + out, 2, "stops from -20 to 20"},
        {"render --size 16x9 --blend host --exposure 1" + out, 2, "do not go with --blend host"},
        {"render --size 16x9 --depth 8 --passes" + out, 2, "do not go with the sketch"},
        {"render --size 16x9 --flare-only -o '" + (scratch / "out.hdr").string() + "'", 2, "HDR files hold no alpha"},
        {"render --over x.png --flare-only" + out, 2, "excludes"},
        {"render --size 16x9 --flare-alpha half" + out, 2, "'half' is not a flare alpha"},
        {"render --size 16x9 --working-colorspace ACEScg" + out, 2,
         "--working-colorspace: no colour space is called 'ACEScg' in the built-in spaces; the spaces are linear, sRGB"},
        {"render --size 16x9 --ocio '" + std::string(OCIO_TEST_CONFIG) + "' --output-colorspace linear" + out, 2,
         "the spaces are lin_rec709, sRGB texture, half_linear, gamma22"},
        {"render --size 16x9 --ocio /nonexistent.ocio" + out, 1, "no such colour configuration"},
        {"sheet --cell 8x8" + out, 2, "not a cell size"},
        {"sheet --layers '" + (scratch / "broken.png").string() + "'" + out, 1, "cannot read it as an image"},
        {"", 2, "subcommand"},
    };
    if (glintwave::cli::frameMemory(32768, 32768) > glintwave::cli::physicalMemory())
        cases.push_back({"render --size 32768x32768" + out, 1, "more than this machine's"});
    for (const Case& c : cases) {
        const CommandRun run = glintwave(scratch, c.arguments);
        EXPECT_EQ(run.status, c.status) << c.arguments << "\n" << run.err;
        EXPECT_EQ(run.err.rfind("glintwave ERROR: ", 0), 0u) << c.arguments << "\n" << run.err;
        EXPECT_NE(run.err.find(c.message), std::string::npos) << c.arguments << "\n" << run.err;
        EXPECT_EQ(run.err.find("usage: glintwave") != std::string::npos, c.status == 2) << c.arguments;
        EXPECT_EQ(filesIn(scratch), (std::vector<std::string>{"broken.png", "cut.jpg", "damaged.dpx", "lonely"})) << c.arguments;
    }
}

TEST(GlintwaveCommand, CancelAtTheFirstReportWritesNothing)
{
    TempFolder scratch;
    for (const char* command : {"render --size 64x36", "sheet --cell 32x18"}) {
        const CommandRun run = glintwave(scratch, std::string(command) + " -o '" + (scratch / "c.png").string() + "'",
                                  "GLINTWAVE_TEST_INTERRUPT=1");
        EXPECT_EQ(run.status, 130) << command << "\n" << run.err;
        EXPECT_NE(run.err.find("cancelled"), std::string::npos) << run.err;
        EXPECT_TRUE(filesIn(scratch).empty()) << command;
    }
}

TEST(GlintwaveCommand, HelpVersionStylesInfoSheet)
{
    TempFolder scratch;
    struct Case {
        std::string arguments;
        std::string inStdout;
    };
    const Case cases[] = {
        {"--help", "render"},
        {"render --help", "--ring-scale REAL"},
        {"render --help", "--no-halo"},
        {"--version", "glintwave "},
        {"styles", "  1  "},
        {"info", "'GENF'"},
        {"info", "The user canceled the plug-in operation"},
        {"sheet --cell 48x27 --columns 2 -o '" + (scratch / "sheet.png").string() + "'", "sheet.png: "},
        {"render --size 32x18 --light -0.5,1.5 --light-color 255,200,0 --ring-color '#ff0000' --no-streaks -o '" +
             (scratch / "outside.png").string() + "'",
         "outside.png: 32x18"},
    };
    for (const Case& c : cases) {
        const CommandRun run = glintwave(scratch, c.arguments);
        EXPECT_EQ(run.status, 0) << c.arguments << "\n" << run.err;
        EXPECT_NE(run.out.find(c.inStdout), std::string::npos) << c.arguments << "\n" << run.out;
    }
    const OIIO::ImageBuf sheet = readBack(scratch / "sheet.png");
    EXPECT_EQ(sheet.spec().width, 2 + 2 * (48 + 2));
}

} // namespace
