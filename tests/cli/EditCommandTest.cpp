// EditCommandTest.cpp - `glintwave edit` scripted: what OK saves, what Cancel
// and a bad script leave alone, the preview it writes.
#include "CommandRun.h"
#include "korvane/Project.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using command_test::glintwave;
using command_test::readBack;
using command_test::slurp;
using command_test::TempFolder;

// The style number in a saved settings block (flareLens, after the header,
// eight doubles and five colours).
std::int32_t styleOf(const korvane::Project& project)
{
    std::int32_t lens = 0;
    if (project.controlData.size() >= 120)
        std::memcpy(&lens, project.controlData.data() + 116, sizeof lens);
    return lens;
}

TEST(EditCommand, ScriptedDialogSavesOnlyOnOk)
{
    struct Case {
        const char* label;
        std::string arguments;
        int status;
        std::int32_t savedStyle;  // 0: the file is left as it was
        std::vector<std::string> channels;
    };
    const Case cases[] = {
        {"OK after a style change", "--set-control 'Flare style=Sun Glint' --ok", 0, 2, {"Glintwave/Ring Scale"}},
        {"OK by item id, no change", "--set-control 5=0 --ok", 0, 1, {"Glintwave/Ring Scale", "Halo/Visible"}},
        {"Cancel after edits", "--set-control 'Flare style=3' --set-control Rotation=45 --cancel", 3, 0, {}},
        {"an unknown item", "--set-control 'Lens=1' --ok", 2, 0, {}},
        {"a value the item does not take", "--set-control 'Rings=maybe' --ok", 2, 0, {}},
        {"no ending with a script", "--set-control 'Rings=off'", 2, 0, {}},
        {"OK and Cancel", "--ok --cancel", 2, 0, {}},
    };
    for (const Case& c : cases) {
        const TempFolder folder;
        const std::filesystem::path file = folder / "shot.json";
        // A project keying one channel every style has and one only some have.
        std::filesystem::copy_file(PROJECTS_DIR "/version-1.json", file);
        const std::string before = slurp(file);

        const command_test::CommandRun run = glintwave(folder, "edit '" + file.string() + "' " + c.arguments);
        EXPECT_EQ(run.status, c.status) << c.label << ": " << run.err;
        if (c.savedStyle == 0) {
            EXPECT_EQ(slurp(file), before) << c.label;
            continue;
        }
        const korvane::Project saved = korvane::loadProject(file);
        EXPECT_EQ(styleOf(saved), c.savedStyle) << c.label;
        std::vector<std::string> channels;
        for (const auto& [path, channel] : saved.channels)
            channels.push_back(path);
        EXPECT_EQ(channels, c.channels) << c.label;
        EXPECT_EQ(saved.width, 1920) << c.label << ": the scene is kept";
    }
}

TEST(EditCommand, PreviewIsWrittenAsDrawnAndOpaque)
{
    const TempFolder folder;
    korvane::saveProject(korvane::Project{}, folder / "shot.json");
    const command_test::CommandRun run =
        glintwave(folder, "edit '" + (folder / "shot.json").string() +
                              "' --set-control 'Flare preview=100,60' --cancel --preview '" +
                              (folder / "preview.png").string() + "'");
    EXPECT_EQ(run.status, 3) << run.err;

    const OIIO::ImageBuf preview = readBack(folder / "preview.png");
    // The size of the dialog's preview control, three channels: alpha dropped.
    EXPECT_EQ(preview.spec().width, 320);
    EXPECT_EQ(preview.spec().height, 240);
    EXPECT_EQ(preview.spec().nchannels, 3);
    // The flare is lit around the light where it was dragged.
    float lit[3] = {};
    preview.getpixel(100, 60, lit);
    EXPECT_GT(lit[0] + lit[1] + lit[2], 1.5f);
}

} // namespace
