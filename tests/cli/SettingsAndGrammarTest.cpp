// SettingsAndGrammarTest.cpp - the settings table against the plug-in's own
// defaults, the record fields the table writes, and the value grammars.
#include "CommandLine.h"
#include "SceneOptions.h"
#include "SettingsTable.h"
#include "Styles.h"
#include "ValueGrammar.h"

#include "korvane/ImageFile.h"
#include "korvane/PluginHost.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>

namespace {

using namespace glintwave::cli;

const Setting& settingNamed(std::string_view name)
{
    for (const Setting& setting : settingsTable())
        if (setting.name == name)
            return setting;
    throw std::logic_error("no setting " + std::string(name));
}

TEST(SettingsTable, DefaultsAreThePluginsOwn)
{
    // An empty settings block makes the plug-in write its defaults on 'INIT'
    // (and the element counts of style 1, which the command leaves 0).
    korvane::PluginLibrary library(GLINTWAVE_PLUGIN_PATH);
    korvane::PluginInstance instance(library);
    ASSERT_EQ(instance.init(), 0);
    const auto written = instance.controlData();
    ASSERT_GE(written.size(), sizeof(ControlDataRec));
    const std::vector<std::uint8_t> ours = settingsBlock(defaultSettings());
    EXPECT_EQ(std::memcmp(written.data(), ours.data(), offsetof(ControlDataRec, flareRingCount)), 0);
}

TEST(SettingsTable, EachKindLandsInItsField)
{
    ControlDataRec settings = defaultSettings();
    const std::pair<const char*, const char*> edits[] = {
        {"ring-scale", "2.5"}, {"rotation", "-45"}, {"halo", "off"}, {"grey-rings", "on"},
        {"use-aspect-ratio", "on"}, {"follow-light-size", "off"}, {"ring-color", "#ff8000"},
        {"streak-color", "0,1,255"},
    };
    for (const auto& [name, text] : edits)
        applySetting(settings, settingNamed(name), text);
    EXPECT_EQ(settings.flareRingScale, 2.5);
    EXPECT_EQ(settings.flareRotation, -45.0);
    EXPECT_EQ(settings.flareFlags, FLARE_FLAG(kFlagNoHalo) | FLARE_FLAG(kFlagRingGray) |
                                       FLARE_FLAG(kFlagUseAspectRatio) | FLARE_FLAG(kFlagNoLightSize));
    EXPECT_EQ(static_cast<std::uint16_t>(settings.flareRingColor.alpha), 0xFFFF);
    EXPECT_EQ(static_cast<std::uint16_t>(settings.flareRingColor.red), 65535);
    EXPECT_EQ(static_cast<std::uint16_t>(settings.flareRingColor.green), 32896);
    EXPECT_EQ(static_cast<std::uint16_t>(settings.flareRingColor.blue), 0);
    EXPECT_EQ(static_cast<std::uint16_t>(settings.flareStreakColor.green), 257);
    // The text form reads back to the same record.
    ControlDataRec again = defaultSettings();
    for (const Setting& setting : settingsTable())
        applySetting(again, setting, formatSetting(settings, setting));
    EXPECT_EQ(std::memcmp(&again, &settings, sizeof settings), 0);

    const std::pair<const char*, const char*> refused[] = {
        {"ring-scale", "11"}, {"ring-scale", "nan"}, {"ring-contrast", "0"}, {"rotation", "1e400"},
        {"halo", "maybe"}, {"ring-color", "#ff80"}, {"ring-color", "256,0,0"},
    };
    for (const auto& [name, text] : refused)
        EXPECT_THROW(applySetting(settings, settingNamed(name), text), korvane::Error) << name << " " << text;
}

// The user guide's table of flare settings keeps one row per setting.
TEST(SettingsTable, UserGuideListsEverySetting)
{
    std::ifstream in(USER_GUIDE_FILE);
    ASSERT_TRUE(in) << "cannot read " << USER_GUIDE_FILE;
    const std::string guide((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    for (const Setting& setting : settingsTable()) {
        const std::string row = "| `--" + std::string(setting.name) + "` | ";
        EXPECT_NE(guide.find(row), std::string::npos) << "docs/user-guide.md has no row for --" << setting.name;
    }
}

// The options as `render` takes them, after the given arguments.
SceneOptions parsedScene(const std::string& arguments, std::string* help = nullptr)
{
    CommandLine line;
    SceneOptions scene;
    CLI::App* render = line.addCommand("render", "", [] { return 0; });
    addSettingOptions(*render, scene.settings);
    addLightOptions(*render, scene);
    line.app().parse("render " + arguments, false);
    if (help)
        *help = render->help();
    return scene;
}

TEST(SceneOptions, OtherSpellingsAreAliasesHelpTeachesOne)
{
    const std::pair<const char*, const char*> cases[] = {
        {"--light-colour 255,128,0", "--light-color 255,128,0"},
        {"--halo-colour #ff0000 --streak-colour 0,0,9", "--halo-color #ff0000 --streak-color 0,0,9"},
        {"--gray-rings --gray-streaks", "--grey-rings --grey-streaks"},
        {"--gray-rings --no-gray-rings --gray-streaks", "--grey-streaks"},
    };
    for (const auto& [alias, chosen] : cases) {
        const SceneOptions byAlias = parsedScene(alias);
        const SceneOptions byChosen = parsedScene(chosen);
        EXPECT_EQ(byAlias.light, byChosen.light) << alias;
        EXPECT_EQ(settingsBlock(byAlias.settings), settingsBlock(byChosen.settings)) << alias;
        const SceneOptions defaults;
        EXPECT_FALSE(byAlias.light == defaults.light &&
                     settingsBlock(byAlias.settings) == settingsBlock(defaults.settings))
            << alias << " changed nothing";
    }
    std::string help;
    parsedScene("", &help);
    EXPECT_NE(help.find("--light-color"), std::string::npos) << help;
    EXPECT_NE(help.find("--no-grey-rings"), std::string::npos) << help;
    for (const char* hidden : {"colour", "gray"})
        EXPECT_EQ(help.find(hidden), std::string::npos) << hidden << "\n" << help;
}

TEST(ValueGrammar, SizesColoursLengthsPositions)
{
    EXPECT_EQ(parseFrameSize("1920x1080"), (FrameSize{1920, 1080}));
    EXPECT_EQ(parseFrameSize("32768x1"), (FrameSize{32768, 1}));
    for (const char* bad : {"0x10", "32769x1", "10X10", "-5x10", "10x", "x10", "1e3x10", ""})
        EXPECT_EQ(parseFrameSize(bad), std::nullopt) << bad;

    EXPECT_EQ(parseColour("#FF8001"), (Rgb8{255, 128, 1}));
    EXPECT_EQ(parseColour("0,128,255"), (Rgb8{0, 128, 255}));
    for (const char* bad : {"#ff800", "ff8000", "#gg0000", "1,2", "1,2,3,4", "-1,0,0", ""})
        EXPECT_EQ(parseColour(bad), std::nullopt) << bad;

    const auto position = parsePosition("30%,576px");
    ASSERT_TRUE(position);
    EXPECT_DOUBLE_EQ(position->x.pixels(1920), 576.0);
    EXPECT_DOUBLE_EQ(position->y.pixels(1080), 576.0);
    EXPECT_DOUBLE_EQ(parsePosition("-0.5,1.5")->y.pixels(100), 150.0);  // outside the frame is allowed
    for (const char* bad : {"nan,0.3", "0.3,inf", "0.3", "0.3;0.3", "px,1", "+1,1", "1,,1"})
        EXPECT_EQ(parsePosition(bad), std::nullopt) << bad;
}

TEST(FrameLevels, SixteenBitSamplesAndBack)
{
    const std::pair<std::uint16_t, std::uint16_t> levelTo16[] = {
        {0, 0}, {1, 4}, {8160, 32768}, {16319, 65531}, {16320, 65535}, {16321, 65535}};
    for (const auto& [level, sample] : levelTo16)
        EXPECT_EQ(korvane::levelTo16Bit(level), sample) << level;
    for (std::uint32_t v = 0; v < 256; ++v)  // an 8-bit value v is level v x 64
        EXPECT_EQ(korvane::levelFrom16Bit(static_cast<std::uint16_t>(v * 257)), v * 64) << v;
    for (std::uint32_t level = 0; level <= 16320; ++level)
        ASSERT_EQ(korvane::levelFrom16Bit(korvane::levelTo16Bit(static_cast<std::uint16_t>(level))), level);
}

TEST(Styles, ByNumberNameOrSlug)
{
    const std::vector<Style> styles = {{1, "Classic zoom"}, {2, "Sun glint"}, {12, "4-point star"}};
    const std::pair<const char*, int> cases[] = {
        {"1", 1}, {"12", 12}, {"Sun glint", 2}, {"sun-glint", 2}, {"SUN GLINT", 2}, {"4-point star", 12},
        {"3", 0}, {"sun", 0}, {"", 0}, {"01", 0},
    };
    for (const auto& [text, number] : cases) {
        const Style* found = findStyle(styles, text);
        EXPECT_EQ(found ? found->number : 0, number) << text;
    }
}

} // namespace
