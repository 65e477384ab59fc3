// ColourPipelineTest.cpp - the numbers of the linear pipeline through the
// built program: linear outputs are the decoded levels the plug-in paints,
// exposure scales them, integer outputs are their sRGB codes within the
// dither, and an integer plate is decoded and keeps its alpha.
#include "CommandRun.h"

#include "korvane/TransferCurves.h"

#include <OpenImageIO/imagebuf.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace {

using namespace command_test;
using command_test::glintwave;

// Within half precision (11 significant bits, or steps of 6e-8 below
// 6e-5), and `slack` more.
void expectHalfNear(float actual, double expected, const std::string& where, double slack = 0.0)
{
    ASSERT_NEAR(actual, expected, std::max(1.2e-7, std::fabs(expected) * 1e-3) + slack) << where;
}

std::string at(const OIIO::ImageBuf::ConstIterator<float>& p, int c)
{
    return std::to_string(p.x()) + "," + std::to_string(p.y()) + " channel " + std::to_string(c);
}

TEST(ColourPipeline, LinearFilesHoldTheDecodedLevelsAndIntegerFilesTheirCodes)
{
    TempFolder scratch;
    const std::string common = "render -q --style 1 --size 96x54 --light 0.4,0.4 ";
    const auto render = [&](const std::string& options, const char* file) {
        const CommandRun run = glintwave(scratch, common + options + " -o '" + (scratch / file).string() + "'");
        EXPECT_EQ(run.status, 0) << file << "\n" << run.err;
        return readBack(scratch / file);
    };
    // The host blend writes the painted levels as they are: the reference.
    const OIIO::ImageBuf levels = render("--blend host", "levels.png");
    const OIIO::ImageBuf linear = render("", "linear.exr");
    const OIIO::ImageBuf brighter = render("--exposure 1", "brighter.exr");
    const OIIO::ImageBuf encoded = render("", "encoded.png");
    int lit = 0;
    for (OIIO::ImageBuf::ConstIterator<float> l(levels), f(linear), b(brighter), e(encoded); !l.done();
         ++l, ++f, ++b, ++e) {
        for (int c = 0; c < 3; ++c) {
            // The reference's 16-bit codes are its levels rounded: half a
            // code either way.
            const double decoded = korvane::srgbToLinear(l[c]);
            const double rounding = (korvane::srgbToLinear(l[c] + 0.5 / 65535) - korvane::srgbToLinear(l[c] - 0.5 / 65535)) / 2;
            expectHalfNear(f[c], decoded, "linear.exr " + at(f, c), rounding);
            expectHalfNear(b[c], 2.0 * f[c], "brighter.exr " + at(b, c));
            ASSERT_NEAR(e[c], l[c], 1.0 / 65535 + 1e-7) << "encoded.png " + at(e, c);
            lit += l[c] > 0.25f;
        }
    }
    EXPECT_GT(lit, 50);

    const OIIO::ImageSpec& exr = linear.spec();
    EXPECT_EQ(exr.get_string_attribute("glintwave:colorspace"), "linear");
    EXPECT_EQ(exr.get_string_attribute("glintwave:blend"), "linear");
    const OIIO::ParamValue* chromaticities = exr.find_attribute("chromaticities");
    ASSERT_NE(chromaticities, nullptr);
    EXPECT_EQ(static_cast<const float*>(chromaticities->data())[0], 0.64f);
    EXPECT_EQ(encoded.spec().get_string_attribute("glintwave:colorspace"), "sRGB");
    EXPECT_EQ(levels.spec().get_string_attribute("glintwave:blend"), "host");
}

TEST(ColourPipeline, AConfigurationsSpacesConvertTheOutput)
{
    TempFolder scratch;
    const std::string common = "render -q --style 1 --size 64x36 --light 0.4,0.4 ";
    const auto render = [&](const std::string& options, const char* file) {
        const CommandRun run = glintwave(scratch, common + options + " -o '" + (scratch / file).string() + "'");
        EXPECT_EQ(run.status, 0) << file << "\n" << run.err;
        return readBack(scratch / file);
    };
    const OIIO::ImageBuf builtIn = render("", "built-in.exr");
    const std::string config = std::string("--ocio '") + OCIO_TEST_CONFIG + "' ";
    struct Case {
        const char* options;
        double (*expected)(double);
    };
    const Case cases[] = {
        {"", [](double v) { return v; }},
        {"--output-colorspace half_linear", [](double v) { return v / 2; }},
        {"--output-colorspace gamma22", [](double v) { return std::pow(v, 1 / 2.2); }},
    };
    for (const Case& c : cases) {
        const OIIO::ImageBuf converted = render(config + c.options, "converted.exr");
        EXPECT_EQ(converted.spec().find_attribute("chromaticities"), nullptr) << c.options;
        for (OIIO::ImageBuf::ConstIterator<float> b(builtIn), o(converted); !b.done(); ++b, ++o) {
            for (int ch = 0; ch < 3; ++ch) {
                // The reference is itself a half: its rounding, through the curve.
                const double step = std::max(6e-8, std::fabs(b[ch]) * 1e-3);
                const double slack = std::fabs(c.expected(b[ch] + step) - c.expected(b[ch]));
                expectHalfNear(o[ch], c.expected(b[ch]), std::string(c.options) + " " + at(o, ch), slack + 1e-6);
            }
        }
    }
}

TEST(ColourPipeline, AnIntegerPlateIsDecodedAddedAndKeepsItsAlpha)
{
    TempFolder scratch;
    // 8-bit RGBA: colour ramps, alpha from transparent to opaque.
    writeImage(
        scratch / "plate.png", 80, 45, OIIO::TypeDesc::UINT8,
        [](int x, int y, int c) { return c == 3 ? std::round(x * 255 / 79.0) / 255.0f : (x + 2 * y + 30 * c) / 255.0f; },
        4);
    const std::string common = "render -q --style 1 --light 0.5,0.5 ";
    ASSERT_EQ(glintwave(scratch, common + "--size 80x45 -o '" + (scratch / "flare.exr").string() + "'").status, 0);
    const CommandRun over = glintwave(scratch, common + "--over '" + (scratch / "plate.png").string() + "' -o '" +
                                                 (scratch / "over.png").string() + "'");
    ASSERT_EQ(over.status, 0) << over.err;

    // Read back as the image library gives them: colour premultiplied.
    const OIIO::ImageBuf plate = readBack(scratch / "plate.png");
    const OIIO::ImageBuf flare = readBack(scratch / "flare.exr");
    const OIIO::ImageBuf result = readBack(scratch / "over.png");
    ASSERT_EQ(result.spec().nchannels, 4);
    for (OIIO::ImageBuf::ConstIterator<float> p(plate), f(flare), r(result); !r.done(); ++p, ++f, ++r) {
        const double alpha = p[3];
        ASSERT_NEAR(r[3], p[3], 1e-6) << "alpha at " << at(r, 3);
        if (alpha == 0.0)
            continue;
        for (int c = 0; c < 3; ++c) {
            const double plateLinear = korvane::srgbToLinear(p[c] / alpha) * alpha;
            const double expected = std::min(1.0, korvane::linearToSrgb((plateLinear + f[c]) / alpha)) * alpha;
            // The plate's 8 bits, the flare's half floats and one dithered code.
            ASSERT_NEAR(r[c], expected, 2e-3 + std::fabs(expected) * 1e-3) << at(r, c);
        }
    }
}

TEST(ColourPipeline, TheFlareAloneAndItsPassesAddUpAndCarryAlpha)
{
    TempFolder scratch;
    const std::string common = "render -q --style 1 --size 96x54 --light 0.35,0.4 ";
    const CommandRun layered =
        glintwave(scratch, common + "--flare-only --passes -o '" + (scratch / "f.exr").string() + "'");
    ASSERT_EQ(layered.status, 0) << layered.err;
    const OIIO::ImageBuf image = readBack(scratch / "f.exr");
    const std::vector<std::string> layers = {"flare", "glows", "halo", "rings", "streaks"};
    std::vector<std::string> expected = {"R", "G", "B", "A"};
    for (const std::string& layer : layers)
        for (const char* channel : {".R", ".G", ".B", ".A"})
            expected.push_back(layer + channel);
    std::vector<std::string> names = image.spec().channelnames;
    std::sort(names.begin(), names.end());
    std::sort(expected.begin(), expected.end());
    ASSERT_EQ(names, expected);

    const auto channel = [&](const std::string& name) { return image.spec().channelindex(name); };
    std::vector<int> passRed;
    for (std::size_t i = 1; i < layers.size(); ++i)
        passRed.push_back(channel(layers[i] + ".R"));
    int parts = 0;
    for (OIIO::ImageBuf::ConstIterator<float> p(image); !p.done(); ++p) {
        for (int c = 0; c < 3; ++c) {
            const float flare = p[channel("flare.R") + c];
            ASSERT_EQ(p[c], flare) << at(p, c);
            double sum = 0;
            int nonzero = 0;
            for (const int red : passRed) {
                sum += p[red + c];
                nonzero += p[red + c] > 0;
            }
            expectHalfNear(static_cast<float>(sum), flare, "sum of passes " + at(p, c), 4e-3 * flare);
            parts += nonzero > 1;
        }
        const double luminance = 0.2126 * p[0] + 0.7152 * p[1] + 0.0722 * p[2];
        expectHalfNear(p[3], std::min(1.0, luminance), "alpha " + at(p, 3));
    }
    EXPECT_GT(parts, 0) << "no pixel where parts overlap";

    // The layers as a contact sheet.
    const CommandRun sheet = glintwave(scratch, "sheet --layers '" + (scratch / "f.exr").string() + "' -o '" +
                                                    (scratch / "sheet.png").string() + "'");
    ASSERT_EQ(sheet.status, 0) << sheet.err;
    EXPECT_NE(sheet.out.find(": 6 layers of f.exr, "), std::string::npos) << sheet.out;

    // Formats without layers: one file per pass, RGBA, beside the frame.
    const CommandRun files =
        glintwave(scratch, common + "--passes --flare-alpha zero -o '" + (scratch / "c.png").string() + "'");
    ASSERT_EQ(files.status, 0) << files.err;
    for (const std::string& layer : layers)
        EXPECT_EQ(readBack(scratch / ("c." + layer + ".png")).spec().nchannels, 4) << layer;
    EXPECT_EQ(readBack(scratch / "c.png").spec().nchannels, 3);
}

} // namespace
