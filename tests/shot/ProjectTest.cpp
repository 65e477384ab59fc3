// ProjectTest.cpp - project files: round trips, refused files, edits.
#include "TempFolder.h"
#include "korvane/Base64.h"
#include "korvane/ProjectEdit.h"

#include <gtest/gtest.h>

#include <cstring>
#include <tuple>

namespace {

using korvane::ChannelColor;
using korvane::Project;
using korvane::Error;

Project keyedProject()
{
    Project project;
    project.controlData = {0x46, 0x4C, 0x41, 0x52, 0, 1, 2, 0xFF, 0x80};
    project.width = 640;
    project.height = 360;
    project.firstFrame = -2;
    project.lastFrame = 48;
    project.frameRate = 23.976;
    project.light.x = {{1, 0.1}, {48, 0.9}};
    project.light.color = {{1, ChannelColor{255, 128, 0}}};
    project.light.rotation = {{10, -45.5}};
    project.channels["Glintwave/Ring Scale"] = {kChannelReal, {{1, 0.5}, {48, 2.0}}};
    project.channels["Halo/Visible"] = {kChannelBoolean, {{3, false}, {9, true}}};
    project.channels["Halo/Color"] = {kChannelRGB, {{1, ChannelColor{65535, 0, 257}}}};
    project.channels["Glintwave/Rotation"] = {kChannelReal, {{7, 0.1 + 0.2}}};  // not a short decimal
    project.output.exposure = {{1, 0.0}, {48, 1.5}};
    project.output.passes = true;
    project.output.flareAlpha = "zero";
    project.output.ocio = "looks/studio.ocio";
    project.output.inputColorspace = "ACEScg";
    project.occlusion.occluder = "roto/m.####.png";
    project.occlusion.channel = "luma";
    project.occlusion.radius = 0.05;
    project.occlusion.smoothing = 2;
    project.occlusion.flashLimit = false;
    return project;
}

TEST(Project, RoundTripsThroughTextAndFiles)
{
    for (const Project& project : {Project{}, keyedProject()}) {
        const std::string text = korvane::formatProject(project);
        EXPECT_EQ(korvane::parseProject(text, "p.json"), project) << text;
    }
    testsupport::TempFolder folder;
    korvane::saveProject(keyedProject(), folder / "shot.json");
    EXPECT_EQ(korvane::loadProject(folder / "shot.json"), keyedProject());
    // Only the project is left: the temporary name was renamed over it.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

// A file written by format version 1, kept as it was: every later version
// must still open it (upgrading it in memory).
TEST(Project, Version1FilesOpen)
{
    const Project project = korvane::loadProject(PROJECTS_DIR "/version-1.json");
    EXPECT_EQ(project.controlData, (std::vector<std::uint8_t>{'F', 'L', 'A', 'R', 0, 0, 0, 6}));
    EXPECT_EQ(project.lastFrame, 48);
    EXPECT_DOUBLE_EQ(project.light.at(24).x.value, 0.3 + 0.4 * 23.0 / 47.0);
    EXPECT_EQ(project.light.at(24).color, (korvane::Rgb8{255, 200, 180}));
    EXPECT_EQ(project.channels.at("Glintwave/Ring Scale").keys, (korvane::Keys{{1, 0.5}, {48, 2.0}}));
    EXPECT_EQ(project.channels.at("Halo/Visible").keys, (korvane::Keys{{1, true}}));
}

TEST(Project, Base64IsStrict)
{
    for (std::size_t size = 0; size < 7; size++) {
        std::vector<std::uint8_t> bytes(size);
        for (std::size_t i = 0; i < size; i++)
            bytes[i] = static_cast<std::uint8_t>(0xF0 + i * 37);
        EXPECT_EQ(korvane::decodeBase64(korvane::encodeBase64(bytes)), bytes);
    }
    for (const char* bad : {"A", "AB=C", "====", "QQ=A", "QR==", "Q Q=", "QQ==QQ=="})
        EXPECT_FALSE(korvane::decodeBase64(bad)) << bad;
}

struct DamagedCase {
    const char* what;
    std::string text;
    std::string message;  // the whole start of the error
};

// A valid file, one line per field, to damage one line at a time.
std::string fileWith(const std::string& replace, const std::string& by)
{
    std::string text = "{\n"
                       "  \"format\": \"glintwave-project\",\n"
                       "  \"version\": 1,\n"
                       "  \"controlData\": \"RkxBUg==\",\n"
                       "  \"scene\": {\n"
                       "    \"width\": 64,\n"
                       "    \"height\": 32,\n"
                       "    \"firstFrame\": 1,\n"
                       "    \"lastFrame\": 9,\n"
                       "    \"frameRate\": 24,\n"
                       "    \"light\": {\"x\": [[1, 0.5]]}\n"
                       "  },\n"
                       "  \"channels\": {\n"
                       "    \"Halo/Color\": {\"type\": \"CRGB\", \"keys\": [[1, [1, 2, 3]]]}\n"
                       "  }\n"
                       "}\n";
    if (!replace.empty())
        text.replace(text.find(replace), replace.size(), by);
    return text;
}

TEST(Project, DamagedAndForeignFilesAreRefusedWithLineFieldAndReason)
{
    ASSERT_NO_THROW(korvane::parseProject(fileWith("", ""), "p"));
    const DamagedCase cases[] = {
        {"not JSON", fileWith("\"height\": 32,", "\"height\": 32,,"), "p:7: not valid JSON"},
        {"cut short", fileWith("", "").substr(0, 120), "p:7: not valid JSON"},
        {"foreign JSON", "{\"name\": \"a shopping list\"}", "p:1: format: not a Glintwave project"},
        {"not an object", "[1, 2]", "p:1: not a Glintwave project"},
        {"newer version", fileWith("\"version\": 1", "\"version\": 7"),
         "p:3: version: written by a newer Glintwave (format version 7)"},
        {"version 0", fileWith("\"version\": 1", "\"version\": 0"), "p:3: version: must be a whole number from 1"},
        {"bad base64", fileWith("RkxBUg==", "RkxBU!=="), "p:4: controlData: is not valid base64"},
        {"width not a number", fileWith("\"width\": 64", "\"width\": \"wide\""), "p:6: scene.width: must be a whole"},
        {"height zero", fileWith("\"height\": 32", "\"height\": 0"), "p:7: scene.height: must be a whole number from 1"},
        {"missing field", fileWith("    \"frameRate\": 24,\n", ""), "p:5: scene.frameRate: missing"},
        {"frames backwards", fileWith("\"lastFrame\": 9", "\"lastFrame\": -9"), "p:9: scene.lastFrame: comes before"},
        {"unknown field", fileWith("\"width\": 64", "\"widht\": 64"), "p:6: scene.widht: unknown field"},
        {"light part", fileWith("{\"x\": [[1, 0.5]]}", "{\"x\": [[1, \"left\"]]}"),
         "p:11: scene.light.x[0][1]: must be a number"},
        {"key twice", fileWith("[[1, 0.5]]", "[[1, 0.5], [1, 0.6]]"), "p:11: scene.light.x[1]: frame 1 is keyed twice"},
        {"channel type", fileWith("\"CRGB\"", "\"RGB\""), "p:14: channels[\"Halo/Color\"].type: must be"},
        {"colour level", fileWith("[1, 2, 3]", "[1, 2, 70000]"),
         "p:14: channels[\"Halo/Color\"].keys[0][1][2]: must be a whole number from 0 to 65535"},
        {"huge number", fileWith("\"width\": 64", "\"width\": 1e400"), "p:6: not valid JSON"},
        {"colour twice", fileWith("{\"x\": [[1, 0.5]]}", "{\"color\": [], \"colour\": []}"),
         "p:11: scene.light.colour: gives scene.light.color a second time"},
        {"output blend", fileWith("\"light\": {", "\"output\": {\"blend\": \"screen\"}, \"light\": {"),
         "p:11: scene.output.blend: must be one of \"linear\", \"host\""},
        {"output switch", fileWith("\"light\": {", "\"output\": {\"passes\": 1}, \"light\": {"),
         "p:11: scene.output.passes: must be true or false"},
        {"output field", fileWith("\"light\": {", "\"output\": {\"gain\": 2}, \"light\": {"),
         "p:11: scene.output.gain: unknown field"},
        {"occlusion channel", fileWith("\"light\": {", "\"occlusion\": {\"channel\": \"Z\"}, \"light\": {"),
         "p:11: scene.occlusion.channel: must be one of"},
        {"occlusion smoothing", fileWith("\"light\": {", "\"occlusion\": {\"smoothing\": 99}, \"light\": {"),
         "p:11: scene.occlusion.smoothing: must be a whole number from 0 to 48"},
        {"channel twice", fileWith("\"Halo/Color\": {", "\"Halo/Colour\": {\"type\": \"REAL\", \"keys\": []}, \"Halo/Color\": {"),
         "p:14: channels[\"Halo/Colour\"]: names the channel of another entry"},
    };
    for (const DamagedCase& c : cases) {
        try {
            korvane::parseProject(c.text, "p");
            ADD_FAILURE() << c.what << ": accepted";
        } catch (const Error& error) {
            EXPECT_EQ(std::string(error.what()).substr(0, c.message.size()), c.message) << c.what << "\n" << error.what();
        }
    }
    testsupport::TempFolder folder;
    EXPECT_THROW(korvane::loadProject(folder / "missing.json"), Error);
}

// Saved projects may spell a word either way (Spelling.h); what is written
// again uses the one spelling.
TEST(Project, OtherSpellingsAreReadAndWrittenTheOneWay)
{
    struct Case {
        const char* what;
        std::string text;
        std::string written;  // in the file written again
    };
    const Case cases[] = {
        {"light colour", fileWith("{\"x\": [[1, 0.5]]}", "{\"colour\": [[1, [255, 128, 0]]]}"),
         "\"color\": [\n        [1, [255, 128, 0]]"},
        {"channel path", fileWith("\"Halo/Color\"", "\"Halo/Colour\""), "\"Halo/Color\": {"},
    };
    for (const Case& c : cases) {
        const std::string written = korvane::formatProject(korvane::parseProject(c.text, "p"));
        EXPECT_NE(written.find(c.written), std::string::npos) << c.what << "\n" << written;
        EXPECT_EQ(written.find("olour"), std::string::npos) << c.what << "\n" << written;
    }

    // A key given with the other spelling lands on the plug-in's channel.
    korvane::ChannelStore channels;
    HostAddChannelRec add{};
    for (const auto& [id, type, name] : {std::tuple{16, kChannelLabel, "Halo"}, std::tuple{20, kChannelRGB, "Color"},
                                         std::tuple{21, kChannelLabelEnd, ""}}) {
        add.theChannelID = id;
        add.theChannelType = type;
        add.theChannelName[0] = static_cast<unsigned char>(std::strlen(name));
        std::memcpy(add.theChannelName + 1, name, add.theChannelName[0]);
        channels.answer(kHostAddChannel, &add);
    }
    Project project;
    korvane::applyAssignment(project, korvane::parseAssignment("Halo/Colour@2=0,0,255"), channels);
    EXPECT_EQ(project.channels["Halo/Color"].keys, (korvane::Keys{{2, ChannelColor{0, 0, 65535}}}));
}

TEST(ProjectEdit, AssignmentsKeyChannelsLightAndScene)
{
    korvane::ChannelStore channels;
    HostAddChannelRec add{};
    auto addChannel = [&](std::int32_t id, std::uint32_t type, const char* name) {
        add.theChannelID = id;
        add.theChannelType = type;
        add.theChannelName[0] = static_cast<unsigned char>(std::strlen(name));
        std::memcpy(add.theChannelName + 1, name, add.theChannelName[0]);
        channels.answer(kHostAddChannel, &add);
    };
    addChannel(1, kChannelLabel, "Glintwave");
    addChannel(4, kChannelReal, "Ring Scale");
    addChannel(15, kChannelLabelEnd, "");
    addChannel(16, kChannelLabel, "Halo");
    addChannel(17, kChannelBoolean, "Visible");
    addChannel(20, kChannelRGB, "Color");
    addChannel(21, kChannelLabelEnd, "");

    Project project;
    project.firstFrame = 1;
    for (const char* edit : {"Ring Scale@1=0.5", "Ring Scale@48=2", "light.x@1=0.3", "light.colour@5=#ff8000",
                             "Halo/Visible@3=off", "Color=255,0,1", "scene.size=320x180", "scene.frames=1-48x2",
                             "light.y = 0.25"})
        korvane::applyAssignment(project, korvane::parseAssignment(edit), channels);
    EXPECT_EQ(project.channels["Glintwave/Ring Scale"].keys, (korvane::Keys{{1, 0.5}, {48, 2.0}}));
    EXPECT_EQ(project.channels["Halo/Visible"].keys, (korvane::Keys{{3, false}}));
    EXPECT_EQ(project.channels["Halo/Color"].keys, (korvane::Keys{{1, ChannelColor{65535, 0, 257}}}));
    EXPECT_EQ(project.light.color, (korvane::Keys{{5, ChannelColor{255, 128, 0}}}));
    EXPECT_EQ(project.light.y, (korvane::Keys{{1, 0.25}}));
    EXPECT_EQ(project.width, 320);
    EXPECT_EQ(project.lastFrame, 47);
    // A constant replaces the keys.
    korvane::applyAssignment(project, korvane::parseAssignment("Ring Scale=1.5"), channels);
    EXPECT_EQ(project.channels["Glintwave/Ring Scale"].keys, (korvane::Keys{{1, 1.5}}));

    for (const char* edit : {"output.exposure@1=0", "output.exposure@9=2", "output.passes=on", "output.blend=host",
                             "output.blend=-", "output.outputColorspace=ACEScg"})
        korvane::applyAssignment(project, korvane::parseAssignment(edit), channels);
    EXPECT_EQ(project.output.exposure, (korvane::Keys{{1, 0.0}, {9, 2.0}}));
    EXPECT_DOUBLE_EQ(project.output.exposureAt(5), 1.0);
    EXPECT_TRUE(project.output.passes);
    EXPECT_EQ(project.output.blend, "");
    EXPECT_EQ(project.output.outputColorspace, "ACEScg");
    for (const char* edit : {"occlusion.depth=z.####.exr", "occlusion.lightDepth=12.5", "occlusion.smoothing=3",
                             "occlusion.flashLimit=off"})
        korvane::applyAssignment(project, korvane::parseAssignment(edit), channels);
    EXPECT_EQ(project.occlusion.depth, "z.####.exr");
    EXPECT_EQ(project.occlusion.lightDepth, 12.5);
    EXPECT_EQ(project.occlusion.smoothing, 3);
    EXPECT_FALSE(project.occlusion.flashLimit);

    for (const char* bad : {"Ring Scale", "=1", "Ring Scale@x=1", "Ring Scale=big", "Nothing=1", "Visible@1=maybe",
                            "Color=256,0,0", "light.z=1", "scene.size@2=1x1", "scene.frames=9-1", "Glintwave=1",
                            "output.blend=screen", "output.passes@3=on", "output.gain=2", "output.flareOnly=maybe",
                            "occlusion.smoothing=2.5", "occlusion.channel=Z", "occlusion.radius=-1",
                            "occlusion.occluder@2=m.png"})
        EXPECT_THROW(korvane::applyAssignment(project, korvane::parseAssignment(bad), channels), korvane::Error)
            << bad;
    EXPECT_NE(korvane::describeProject(project).find("Glintwave/Ring Scale (REAL):  1: 1.5"), std::string::npos)
        << korvane::describeProject(project);
}

} // namespace
