// DemoCommandTest.cpp - the demo's small grammars, its image files, and a run
// of the glintwave-demo program itself.
#include "TempFolder.h"
#include "korvane/DemoCommand.h"
#include "korvane/ImageFile.h"
#include "korvane/ResourceFile.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

namespace {

using korvane::demo::FrameSize;

TEST(DemoFrameSize, Grammar)
{
    const std::pair<const char*, std::optional<FrameSize>> cases[] = {
        {"960x540", FrameSize{960, 540}},
        {"1x1", FrameSize{1, 1}},
        {"8192x8192", FrameSize{8192, 8192}},
        {"0007x12", FrameSize{7, 12}},
        {"8193x10", std::nullopt},
        {"0x10", std::nullopt},
        {"10x0", std::nullopt},
        {"-5x10", std::nullopt},
        {"+5x10", std::nullopt},
        {"10X10", std::nullopt},
        {"10x10x10", std::nullopt},
        {"10 x10", std::nullopt},
        {"x10", std::nullopt},
        {"10x", std::nullopt},
        {"99999999999x1", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(korvane::demo::parseFrameSize(text), expected) << '"' << text << '"';
}

korvane::demo::DemoOptions parse(std::initializer_list<std::string_view> arguments)
{
    const std::vector<std::string_view> list(arguments);
    return korvane::demo::parseDemoArguments(list);
}

TEST(DemoArguments, OptionsAndMistakes)
{
    const auto options = parse({"-q", "--size", "32x18", "--plugin", "/p/G.so", "--out", "frames"});
    EXPECT_TRUE(options.quiet);
    EXPECT_EQ(options.size, (FrameSize{32, 18}));
    EXPECT_EQ(options.plugin, "/p/G.so");
    EXPECT_EQ(options.outDir, "frames");

    const auto defaults = parse({});
    EXPECT_EQ(defaults.size, (FrameSize{960, 540}));
    EXPECT_TRUE(defaults.plugin.empty());
    EXPECT_FALSE(defaults.quiet);

    const std::vector<std::vector<std::string_view>> mistakes = {
        {"--size"}, {"--size", "big"}, {"--out"}, {"--out", ""}, {"--plugin"}, {"frames"}, {"--frobnicate"}};
    for (const auto& arguments : mistakes)
        EXPECT_THROW(korvane::demo::parseDemoArguments(arguments), korvane::demo::UsageError)
            << (arguments.empty() ? "" : arguments[0]);
}

TEST(ImageFile, LevelsScaleTo16BitsWithRounding)
{
    const std::pair<std::uint16_t, std::uint16_t> cases[] = {
        {0, 0},          {1, 4},          {8160, 32768},   {16319, 65531},
        {16320, 65535}, {16321, 65535}, {65535, 65535}, {255, 1024},
    };
    for (const auto& [level, expected] : cases)
        EXPECT_EQ(korvane::levelTo16Bit(level), expected) << level;
}

TEST(ImageFile, PpmHeaderAndBigEndianSamplesInRowOrder)
{
    // Two pixels on one row, three in all channels different, so a swap of
    // bytes, channels or pixels shows.
    const std::vector<std::uint16_t> pixels = {16320, 0, 1, 8160, 255, 16319};
    const std::vector<std::uint8_t> ppm = korvane::encodePpm48(pixels, 2, 1);
    const std::string header = "P6\n2 1\n65535\n";
    ASSERT_EQ(ppm.size(), header.size() + 12);
    EXPECT_EQ(std::string(ppm.begin(), ppm.begin() + header.size()), header);
    const std::vector<std::uint8_t> samples(ppm.begin() + header.size(), ppm.end());
    EXPECT_EQ(samples, (std::vector<std::uint8_t>{0xFF, 0xFF, 0x00, 0x00, 0x00, 0x04, 0x80, 0x00, 0x04, 0x00,
                                                  0xFF, 0xFB}));

    EXPECT_THROW(korvane::encodePpm48(pixels, 2, 2), std::invalid_argument);
    EXPECT_THROW(korvane::encodePpm48(pixels, 0, 1), std::invalid_argument);
}

TEST(DemoStyles, FoundByIdAndNamedFromTheNameList)
{
    hosttest::TempFolder folder;
    korvane::ResourceFileWriter writer;
    const std::uint32_t flar = 0x464C4152;
    writer.add(flar, 1000, "not a style", {0});
    writer.add(flar, 1003, "", {0});
    writer.add(flar, 1001, "\x80rger", {0});  // Mac OS Roman 0x80 is A with diaeresis
    writer.add(0x52494E47, 1002, "a ring", {0});
    const std::vector<std::uint8_t> bytes = writer.bytes();
    korvane::writeFileReplacing(folder / "Glintwave.rsc", bytes);

    const auto styles = korvane::demo::findStyles(folder / "Glintwave.rsc");
    const std::vector<korvane::demo::DemoStyle> expected = {{1, "\u00C4rger"}, {3, ""}};
    EXPECT_EQ(styles, expected);
}

#ifdef GLINTWAVE_DEMO_PATH

struct DemoRun {
    int status = -1;
    std::string out;
    std::string err;
};

std::string slurp(const std::filesystem::path& file)
{
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

DemoRun runDemo(const hosttest::TempFolder& scratch, const std::string& arguments)
{
    const std::string command = std::string("'") + GLINTWAVE_DEMO_PATH + "' " + arguments + " >'" +
                                (scratch / "out.txt").string() + "' 2>'" + (scratch / "err.txt").string() +
                                "' </dev/null";
    DemoRun run;
    const int raw = std::system(command.c_str());
    run.status = raw != -1 && WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    run.out = slurp(scratch / "out.txt");
    run.err = slurp(scratch / "err.txt");
    return run;
}

TEST(DemoProgram, WritesOneFramePerStyle)
{
    hosttest::TempFolder scratch;
    const auto out = scratch / "frames";
    const DemoRun run = runDemo(scratch, "--size 48x27 --out '" + out.string() + "'");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");  // no progress line when stderr is no terminal

    const auto styles = korvane::demo::findStyles(GLINTWAVE_RSC_FILE);
    ASSERT_FALSE(styles.empty());
    const std::string header = "P6\n48 27\n65535\n";
    for (const auto& style : styles) {
        const std::string name = "demo-style" + std::to_string(style.number) + ".ppm";
        const std::string image = slurp(out / name);
        ASSERT_EQ(image.size(), header.size() + 48 * 27 * 6) << name;
        EXPECT_EQ(image.substr(0, header.size()), header) << name;
        EXPECT_NE(image.find_first_not_of('\0', header.size()), std::string::npos) << name << " is black";
        EXPECT_NE(run.out.find(name), std::string::npos) << run.out;
        EXPECT_NE(run.out.find('"' + style.name + '"'), std::string::npos) << run.out;
    }
    // One report line per frame and nothing else left in the folder.
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), static_cast<long>(styles.size()));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(out), {}), static_cast<long>(styles.size()));
}

TEST(DemoProgram, ExitStatusAndMessages)
{
    hosttest::TempFolder scratch;
    struct Case {
        std::string arguments;
        int status;
        const char* stdoutStart;
        const char* stderrPart;
    };
    const Case cases[] = {
        {"--help", 0, "usage: glintwave-demo", ""},
        {"--version", 0, "glintwave-demo ", ""},
        {"-q --size 16x9 --out '" + (scratch / "quiet").string() + "'", 0, "", ""},
        {"--plugin /nonexistent/Glintwave.so", 1, "", "glintwave ERROR: cannot load plug-in /nonexistent/Glintwave.so"},
        {"--size 0x5", 2, "", "glintwave ERROR: --size 0x5"},
        {"--bogus", 2, "", "glintwave ERROR: unknown argument --bogus"},
    };
    for (const Case& c : cases) {
        const DemoRun run = runDemo(scratch, c.arguments);
        EXPECT_EQ(run.status, c.status) << c.arguments << "\n" << run.err;
        EXPECT_EQ(run.out.rfind(c.stdoutStart, 0), 0u) << c.arguments << "\n" << run.out;
        if (*c.stdoutStart == '\0' && c.status == 0) {
            EXPECT_EQ(run.out, "") << c.arguments;
        }
        EXPECT_NE(run.err.find(c.stderrPart), std::string::npos) << c.arguments << "\n" << run.err;
    }
}

#endif

} // namespace
