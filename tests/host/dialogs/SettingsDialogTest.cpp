// SettingsDialogTest.cpp - Glintwave's settings dialog driven through Main by
// the host library and the headless runner: Cancel and OK, what an edit
// rebuilds, colours, and the preview.
#include "glintwave/GlintwaveRecords.h"
#include "TempFolder.h"
#include "korvane/DialogTemplate.h"
#include "korvane/HeadlessRunner.h"
#include "korvane/PluginHost.h"
#include "korvane/ResourceFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <functional>
#include <optional>

namespace {

using korvane::DialogEnding;
using korvane::PluginInstance;
using korvane::PluginLibrary;

constexpr std::uint32_t kFree = KV_FOURCC('F', 'R', 'E', 'E');
constexpr std::uint32_t kResetChannel = KV_FOURCC('R', 'C', 'H', 'N');

// The headless runner, noting when it is making the edits.
struct WatchedRunner : korvane::DialogRunner {
    korvane::HeadlessRunner script;
    bool editing = false;

    WatchedRunner(std::vector<korvane::ControlEdit> edits, DialogEnding ending) : script(std::move(edits), ending) {}
    void run(korvane::DialogSession& session) override
    {
        editing = true;
        script.run(session);
        editing = false;
    }
};

struct DialogRun {
    std::int32_t result = 0;
    std::vector<std::uint32_t> duringEdits;  // requests while the edits were made
    std::vector<std::uint32_t> afterwards;   // requests once the dialog had closed
    korvane::Pixels preview;
};

DialogRun runDialog(PluginInstance& instance, const std::vector<std::string>& edits, DialogEnding ending)
{
    std::vector<korvane::ControlEdit> parsed;
    for (const std::string& edit : edits)
        parsed.push_back(korvane::parseControlEdit(edit));
    WatchedRunner runner(parsed, ending);
    korvane::DialogRunnerScope scope(runner);
    DialogRun run;
    instance.options().onRequest = [&](std::uint32_t selector, std::int32_t, void*) -> std::optional<std::int32_t> {
        if (runner.editing)
            run.duringEdits.push_back(selector);
        else if (runner.script.ran())
            run.afterwards.push_back(selector);
        return std::nullopt;
    };
    run.result = instance.interface();
    instance.options().onRequest = nullptr;
    EXPECT_EQ(runner.script.error(), "");
    run.preview = runner.script.preview();
    return run;
}

ControlDataRec headerOf(const PluginInstance& instance)
{
    ControlDataRec header{};
    const auto bytes = instance.controlData();
    if (bytes.size() >= sizeof header)
        std::memcpy(&header, bytes.data(), sizeof header);
    return header;
}

PluginDataRec workingDataOf(const PluginInstance& instance)
{
    PluginDataRec data{};
    const auto bytes = instance.pluginData();
    if (bytes.size() >= sizeof data)
        std::memcpy(&data, bytes.data(), sizeof data);
    return data;
}

// A copy of a field: a packed record's fields cannot be bound to the
// references the assertions take.
template <class T>
T copyOf(T value)
{
    return value;
}

// A plug-in folder: Glintwave.so beside the delivered resources, each passed
// through `edit`, which may change it or drop it (nullopt).
using ResourceEdit = std::function<std::optional<std::vector<std::uint8_t>>(
    std::uint32_t type, std::int16_t id, std::vector<std::uint8_t> bytes)>;

std::filesystem::path makePluginFolder(const testsupport::TempFolder& folder, const ResourceEdit& edit)
{
    const korvane::ResourceFile delivered = korvane::ResourceFile::load(GLINTWAVE_RSC_FILE);
    korvane::ResourceFileWriter writer;
    for (const std::uint32_t type : delivered.types())
        for (const std::int16_t id : delivered.ids(type))
            if (auto bytes = edit(type, id, *delivered.get(type, id)))
                writer.add(type, id, delivered.name(type, id).value_or(""), std::move(*bytes));
    const std::vector<std::uint8_t> file = writer.bytes();
    std::ofstream(folder / "Glintwave.rsc", std::ios::binary)
        .write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
    std::filesystem::copy_file(GLINTWAVE_PLUGIN_PATH, folder / "Glintwave.so");
    return folder / "Glintwave.so";
}

int countOf(const std::vector<std::uint32_t>& requests, std::uint32_t selector)
{
    return static_cast<int>(std::count(requests.begin(), requests.end(), selector));
}

class SettingsDialog : public testing::Test {
protected:
    void SetUp() override { instance.require(kCmdInitialize, instance.init()); }

    PluginLibrary library{GLINTWAVE_PLUGIN_PATH};
    PluginInstance instance{library};
};

TEST_F(SettingsDialog, CancelRestoresAllButTheWireframeBitAndAnswersFour)
{
    struct Case {
        const char* label;
        std::vector<std::string> edits;
        bool wireframe;
    };
    const Case cases[] = {
        {"every kind of edit",
         {"Flare style=Sun Glint", "Origin glow colour=255,0,0", "Full-colour preview=off", "Rotation=45",
          "Grey rings=on", "Rings=off", "Flare preview=30,40;200,100"},
         true},
        {"wireframe switched back", {"15=0", "15=1"}, false},
    };
    for (const Case& c : cases) {
        const ControlDataRec before = headerOf(instance);
        const DialogRun run = runDialog(instance, c.edits, DialogEnding::cancel);
        EXPECT_EQ(run.result, kPluginUserCanceled) << c.label;
        ControlDataRec expected = before;
        expected.flareFlags = c.wireframe ? before.flareFlags | FLARE_FLAG(kFlagWireframe)
                                          : before.flareFlags & ~FLARE_FLAG(kFlagWireframe);
        const ControlDataRec after = headerOf(instance);
        EXPECT_EQ(std::memcmp(&after, &expected, sizeof after), 0) << c.label;
    }
}

TEST_F(SettingsDialog, OkAfterAStyleChangeRereadsElementsAndResetsChannels)
{
    const DialogRun run = runDialog(instance, {"Flare style=2"}, DialogEnding::accept);
    EXPECT_EQ(run.result, kPluginNoError);
    EXPECT_EQ(copyOf(headerOf(instance).flareLens), 3);
    EXPECT_EQ(countOf(run.duringEdits, kResetChannel), 0);
    EXPECT_EQ(countOf(run.afterwards, kResetChannel), 1);
    // The elements of the new style are loaded.
    EXPECT_GT(copyOf(workingDataOf(instance).flareElementSize), static_cast<std::int32_t>(sizeof(PluginDataRec)));
    EXPECT_GT(copyOf(headerOf(instance).flareRingCount), 0);
}

// An edit that changes a setting rebuilds (the check asks for 'FREE'); the
// same value typed back changes nothing and rebuilds nothing.
TEST_F(SettingsDialog, OnlyARealChangeRebuilds)
{
    struct Case {
        const char* edit;
        bool rebuilds;
    };
    const Case cases[] = {
        {"Rotation=0", false},  {"Rotation=0.000", false}, {"Aspect ratio=2", false},
        {"Origin glow=on", false}, {"Rotation=0.5", true}, {"Use aspect ratio=on", true},
    };
    for (const Case& c : cases) {
        const DialogRun run = runDialog(instance, {c.edit}, DialogEnding::cancel);
        EXPECT_EQ(countOf(run.duringEdits, kFree) > 0, c.rebuilds) << c.edit;
    }
}

TEST_F(SettingsDialog, PickedColoursAreStoredInSixteenBits)
{
    struct Case {
        const char* button;
        ARGB_Color ControlDataRec::*field;
    };
    const Case cases[] = {
        {"Origin glow colour", &ControlDataRec::flareOriginGlowColor},
        {"Outer glow colour", &ControlDataRec::flareOuterGlowColor},
        {"Halo colour", &ControlDataRec::flareHaloColor},
        {"Ring colour", &ControlDataRec::flareRingColor},
        {"Streak colour", &ControlDataRec::flareStreakColor},
    };
    for (const Case& c : cases) {
        const std::int16_t alpha = (headerOf(instance).*c.field).alpha;
        const DialogRun run = runDialog(instance, {std::string(c.button) + "=255,128,0"}, DialogEnding::accept);
        EXPECT_EQ(run.result, kPluginNoError) << c.button;
        const ARGB_Color stored = headerOf(instance).*c.field;
        EXPECT_EQ(static_cast<std::uint16_t>(stored.red), 65535) << c.button;
        EXPECT_EQ(static_cast<std::uint16_t>(stored.green), 32896) << c.button;
        EXPECT_EQ(static_cast<std::uint16_t>(stored.blue), 0) << c.button;
        EXPECT_EQ(copyOf(stored.alpha), alpha) << c.button;
    }
}

// A label may be given with the other spelling of a word: "Halo color" is
// the "Halo colour" button, "Gray rings" the "Grey rings" box.
TEST_F(SettingsDialog, LabelsMatchInEitherSpelling)
{
    const DialogRun run = runDialog(instance, {"halo color=255,128,0", "Gray rings=on"}, DialogEnding::accept);
    EXPECT_EQ(run.result, kPluginNoError);
    EXPECT_EQ(static_cast<std::uint16_t>(headerOf(instance).flareHaloColor.green), 32896);
    EXPECT_NE(copyOf(headerOf(instance).flareFlags) & FLARE_FLAG(kFlagRingGray), 0u);
}

// A script the dialog cannot follow cancels it and says why.
TEST_F(SettingsDialog, ScriptMistakesCancelTheDialog)
{
    struct Case {
        const char* edit;
        const char* why;
    };
    const Case cases[] = {
        {"Brightness=2", "has no item \"Brightness\""},
        {"99=1", "has no item 99"},
        {"Scale=2", "has no item \"Scale\""},  // only static texts carry it
        {"Flare style=99", "takes a value from 0 to 13, not 99"},
        {"Flare style=Nova", "one of \"Classic Zoom\", \"Sun Glint\", \"Soft Anamorphic\""},
        {"Aspect ratio=-1", "does not accept the text \"-1\""},
        {"Rotation=abc", "does not accept the text \"abc\""},
        {"Halo colour=255,0", "takes a colour R,G,B"},
        {"Halo colour=#12345g", "takes a colour R,G,B"},
        {"Grey rings=maybe", "takes on or off"},
        {"Flare preview=320,10", "takes points X,Y"},
        {"101=x", "cannot be edited from a script"},
    };
    for (const Case& c : cases) {
        const ControlDataRec before = headerOf(instance);
        korvane::HeadlessRunner runner({korvane::parseControlEdit(c.edit)}, DialogEnding::accept);
        korvane::DialogRunnerScope scope(runner);
        EXPECT_EQ(instance.interface(), kPluginUserCanceled) << c.edit;
        EXPECT_NE(runner.error().find(c.why), std::string::npos) << c.edit << ": " << runner.error();
        const ControlDataRec after = headerOf(instance);
        EXPECT_EQ(std::memcmp(&before, &after, sizeof before), 0) << c.edit;
    }
    EXPECT_THROW(korvane::parseControlEdit("Rotation"), korvane::Error);
    EXPECT_THROW(korvane::parseControlEdit("=5"), korvane::Error);
}

// The delivered plug-in folder with the preview control of dialog 16001 at
// other bounds.
class PreviewOfAGivenSize : public testing::Test {
protected:
    void SetUp() override
    {
        const auto plugin = makePluginFolder(folder, [](std::uint32_t type, std::int16_t id, auto bytes) {
            if (type != korvane::kDialogResType || id != 16001)
                return std::optional(bytes);
            korvane::DialogTemplate dialog = korvane::decodeDialogTemplate(bytes);
            for (korvane::DialogItem& item : dialog.items)
                if (item.id == 16) {
                    // 102 x 62 with its frame: a preview of 100 x 60.
                    item.left = 10;
                    item.top = 20;
                    item.right = 112;
                    item.bottom = 82;
                }
            return std::optional(korvane::encodeDialogTemplate(dialog));
        });
        library = std::make_unique<PluginLibrary>(plugin);
        instance = std::make_unique<PluginInstance>(*library);
        instance->require(kCmdInitialize, instance->init());
    }

    testsupport::TempFolder folder;
    std::unique_ptr<PluginLibrary> library;
    std::unique_ptr<PluginInstance> instance;
};

TEST_F(PreviewOfAGivenSize, ScaleCentreAndLightFollowTheControl)
{
    struct Case {
        const char* label;
        std::vector<std::string> edits;
        double lightX, lightY;
    };
    const Case cases[] = {
        {"as opened", {}, 25.0, 15.0},
        // Control pixel (101, 61) is the frame's far corner; the light stops
        // at the last pixel inside, (width - 1) / width of the way.
        {"dragged to the far corner", {"Flare preview=50,30;101,61"}, 99.0, 59.0},
        {"clicked at the near corner", {"Flare preview=0,0"}, 0.0, 0.0},
    };
    for (const Case& c : cases) {
        runDialog(*instance, c.edits, DialogEnding::cancel);
        const PluginDataRec data = workingDataOf(*instance);
        EXPECT_EQ(copyOf(data.flareRect.width), 100u) << c.label;
        EXPECT_EQ(copyOf(data.flareRect.height), 60u) << c.label;
        EXPECT_EQ(copyOf(data.flareXScale), 60.0) << c.label;
        EXPECT_EQ(copyOf(data.flareYScale), 60.0) << c.label;
        EXPECT_EQ(copyOf(data.flareXCenter), 50.0) << c.label;
        EXPECT_EQ(copyOf(data.flareYCenter), 30.0) << c.label;
        EXPECT_EQ(copyOf(data.flareXPosition), c.lightX) << c.label;
        EXPECT_EQ(copyOf(data.flareYPosition), c.lightY) << c.label;
    }
}

// The preview is the frame the renderer paints for the same light and size,
// inside a one-pixel frame.
TEST_F(PreviewOfAGivenSize, ShowsWhatTheRendererPaints)
{
    const DialogRun run = runDialog(*instance, {}, DialogEnding::cancel);
    ASSERT_EQ(run.preview.width, 102);
    ASSERT_EQ(run.preview.height, 62);

    korvane::Light light;
    light.x = {25.0, korvane::Length::Unit::Pixels};
    light.y = {15.0, korvane::Length::Unit::Pixels};
    light.radius = {};
    korvane::FrameSetup frame = korvane::FrameSetup::centred(100, 60, light);
    frame.xScale = frame.yScale = 60.0;
    instance->require(kCmdFlareSetup, instance->setup(frame));
    std::vector<std::uint32_t> painted(100 * 60, 0);
    korvane::FrameBuffer buffer;
    buffer.base = painted.data();
    buffer.rowBytes = 100 * 4;
    buffer.width = 100;
    buffer.height = 60;
    buffer.depth = 32;
    instance->require(kCmdFlareGenerate, instance->generate(buffer));

    int lit = 0;
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 100; ++x) {
            const std::uint32_t pixel = painted[static_cast<std::size_t>(y) * 100 + x];
            ASSERT_EQ(run.preview.at(x + 1, y + 1), pixel) << x << "," << y;
            lit += (pixel & 0xFFFFFFu) != 0;
        }
    EXPECT_GT(lit, 600);
    EXPECT_EQ(run.preview.at(0, 0), 0xFF000000u);  // the frame, in the default black pen
}

TEST_F(PreviewOfAGivenSize, WireframeIsWhiteLinesOnBlack)
{
    const DialogRun run = runDialog(*instance, {"Full-colour preview=off"}, DialogEnding::cancel);
    int lines = 0;
    for (int y = 1; y < 61; ++y)
        for (int x = 1; x < 101; ++x) {
            const std::uint32_t pixel = run.preview.at(x, y);
            ASSERT_TRUE(pixel == 0xFF000000u || pixel == 0xFFFFFFFFu) << x << "," << y;
            lines += pixel == 0xFFFFFFFFu;
        }
    EXPECT_GT(lines, 50);
}

TEST(SettingsDialogCommand, AnswersWithoutADialog)
{
    PluginLibrary library(GLINTWAVE_PLUGIN_PATH);
    {
        PluginInstance instance(library);
        EXPECT_EQ(instance.interface(), kPluginIncompatible) << "no settings yet";
    }
    {
        // A host that cannot show dialogs: the dialog is cancelled at once.
        PluginInstance instance(library);
        instance.require(kCmdInitialize, instance.init());
        EXPECT_EQ(instance.interface(), kPluginUserCanceled);
        EXPECT_NE(instance.failureMessage(kCmdInterface, kPluginUserCanceled).find("shows no dialogs"),
                  std::string::npos);
    }

    // A resource file without the dialog: nothing shown, nothing changed.
    testsupport::TempFolder folder;
    PluginLibrary alone(makePluginFolder(folder, [](std::uint32_t type, std::int16_t, auto bytes) {
        return type == korvane::kDialogResType ? std::nullopt : std::optional(bytes);
    }));
    PluginInstance instance(alone);
    instance.require(kCmdInitialize, instance.init());
    const ControlDataRec before = headerOf(instance);
    korvane::HeadlessRunner runner({}, DialogEnding::cancel);
    korvane::DialogRunnerScope scope(runner);
    EXPECT_EQ(instance.interface(), kPluginNoError);
    EXPECT_FALSE(runner.ran());
    const ControlDataRec after = headerOf(instance);
    EXPECT_EQ(std::memcmp(&before, &after, sizeof before), 0);
}

} // namespace
