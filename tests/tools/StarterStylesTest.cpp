// The delivered Glintwave.rsc: its sources are canonical and round-trip, its
// styles load the way the plug-in reads them, and its dialogs carry every item
// the plug-in addresses.

#include "RscCompiler.h"

#include "glintwave/GlintwaveRecords.h"
#include "KVToolboxTypes.h"
#include "korvane/BigEndian.h"
#include "korvane/DialogTemplate.h"
#include "korvane/ResourceFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using korvane::DialogItem;
using korvane::DialogTemplate;
using korvane::ResourceFile;

std::vector<fs::path> sourceFiles()
{
    std::vector<fs::path> files;
    for (const fs::path& folder : {fs::path(GLINTWAVE_STYLES_DIR), fs::path(GLINTWAVE_STYLES_DIR) / "dialogs"}) {
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (entry.path().extension() == ".json")
                files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string readText(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

const ResourceFile& delivered()
{
    static const ResourceFile file = ResourceFile::load(GLINTWAVE_RSC_FILE);
    return file;
}

TEST(DeliveredResources, SourcesAreInCanonicalForm)
{
    const auto files = sourceFiles();
    ASSERT_GE(files.size(), 8u);
    for (const auto& path : files) {
        const std::string text = readText(path);
        EXPECT_EQ(korvane::rsc::canonicalText({path.string(), text}), text) << path;
    }
}

TEST(DeliveredResources, FileIsWhatTheSourcesCompileToAndDumpsBackToThem)
{
    const auto files = sourceFiles();
    std::vector<std::uint8_t> bytes(fs::file_size(GLINTWAVE_RSC_FILE));
    std::ifstream(GLINTWAVE_RSC_FILE, std::ios::binary).read(reinterpret_cast<char*>(bytes.data()),
                                                              static_cast<std::streamsize>(bytes.size()));
    EXPECT_EQ(korvane::rsc::compileFiles(files), bytes);

    std::vector<std::string> sources;
    for (const auto& path : files)
        sources.push_back(readText(path));
    std::vector<std::string> dumped;
    for (const auto& source : korvane::rsc::dumpSources(delivered()))
        dumped.push_back(source.text);
    std::sort(sources.begin(), sources.end());
    std::sort(dumped.begin(), dumped.end());
    EXPECT_EQ(dumped, sources);
}

// What the plug-in's reader needs of a stored element, checked on the bytes.
struct StoredElement {
    std::int32_t kind, units, offset, outside, dirX, dirY;
    int stops;
    std::uint32_t mode;
};

StoredElement checkElement(std::uint32_t type, std::int16_t id)
{
    SCOPED_TRACE("'" + korvane::fourCCText(type) + "' " + std::to_string(id));
    const auto bytes = delivered().get(type, id);
    EXPECT_TRUE(bytes.has_value());
    if (!bytes)
        return {};
    const std::vector<std::uint8_t>& b = *bytes;
    const bool streak = type == kStreakResType;
    const std::size_t header = streak ? kStreakResHeaderSize : kRingResHeaderSize;
    EXPECT_GE(b.size(), header);
    if (b.size() < header)
        return {};
    StoredElement e{korvane::be::readS32(b, 32), korvane::be::readS32(b, 40), korvane::be::readS32(b, 44),
                    korvane::be::readS32(b, 52), 0, 0, korvane::be::readS32(b, header - 4),
                    korvane::be::readU32(b, 36)};
    EXPECT_LE(b[0], 31);
    EXPECT_GT(e.units, 0);
    EXPECT_GT(e.outside, 0);
    EXPECT_GE(e.stops, 2);
    EXPECT_EQ(static_cast<std::size_t>(e.stops), (b.size() - header) / kStoredColorSize);
    if (streak) {
        e.dirX = korvane::be::readS32(b, 56);
        e.dirY = korvane::be::readS32(b, 60);
        const std::int64_t lengthSquared = std::int64_t{e.dirX} * e.dirX + std::int64_t{e.dirY} * e.dirY;
        EXPECT_GT(lengthSquared, 0);
        EXPECT_LE(lengthSquared, INT32_MAX);
    } else {
        EXPECT_GE(e.kind, kRingReflection);
        EXPECT_LE(e.kind, kRingHalo);
    }
    for (int s = 0; s + 1 < e.stops && b.size() >= header + kStoredColorSize * e.stops; ++s)
        EXPECT_LT(korvane::be::readS32(b, header + 12 * s), korvane::be::readS32(b, header + 12 * (s + 1)));
    const std::size_t last = header + kStoredColorSize * (e.stops - 1);
    if (e.stops > 0 && b.size() >= last + kStoredColorSize) {
        for (int c = 0; c < 3; ++c)
            EXPECT_EQ(korvane::be::readU16(b, last + 6 + 2 * c), 0) << "outermost stop must be black";
    }
    return e;
}

std::map<int, std::vector<StoredElement>> loadStyles()
{
    std::map<int, std::vector<StoredElement>> styles;
    for (int number = 1; delivered().get(kFlareResType, static_cast<std::int16_t>(kFlareResBaseID + number)); ++number) {
        const auto table = *delivered().get(kFlareResType, static_cast<std::int16_t>(kFlareResBaseID + number));
        EXPECT_GE(table.size(), 12u);
        const std::int32_t count = korvane::be::readS32(table, 0);
        EXPECT_GE(table.size(), 4u + 8u * static_cast<std::uint32_t>(count));
        for (std::int32_t i = 0; i < count && table.size() >= 12 + 8 * static_cast<std::size_t>(i); ++i) {
            const std::uint32_t type = korvane::be::readU32(table, 4 + 8 * i);
            EXPECT_TRUE(type == kRingResType || type == kStreakResType);
            for (int id = korvane::be::readS16(table, 8 + 8 * i); id <= korvane::be::readS16(table, 10 + 8 * i); ++id) {
                StoredElement e = checkElement(type, static_cast<std::int16_t>(id));
                if (type == kStreakResType)
                    e.kind = -1;
                styles[number].push_back(e);
            }
        }
    }
    return styles;
}

TEST(DeliveredResources, StylesLoadTheWayThePluginReadsThem)
{
    const auto styles = loadStyles();
    ASSERT_GE(styles.size(), 12u);
    std::set<std::string> names;
    for (const auto& [number, elements] : styles) {
        SCOPED_TRACE("style " + std::to_string(number));
        const auto name = delivered().name(kFlareResType, static_cast<std::int16_t>(kFlareResBaseID + number));
        ASSERT_TRUE(name.has_value());
        EXPECT_LE(name->size(), 31u) << "the style menu shows up to 31 characters";
        EXPECT_TRUE(names.insert(*name).second) << "duplicate style name " << *name;
        const auto originGlow = std::find_if(elements.begin(), elements.end(),
                                             [](const auto& e) { return e.kind == kRingOriginGlow; });
        ASSERT_NE(originGlow, elements.end()) << "the flare's size is measured on the origin glow";
        EXPECT_EQ(originGlow->offset, originGlow->units) << "the origin glow sits at the light";
        const double outer = static_cast<double>(originGlow->outside) / originGlow->units;
        EXPECT_GE(outer, 0.15);
        EXPECT_LE(outer, 0.3);
    }
}

// The library as a whole offers every element kind, and some elements that
// the user can switch on.
TEST(DeliveredResources, LibraryUsesEveryKindAndStartsSomeElementsOff)
{
    std::map<int, int> kinds;
    int off = 0;
    for (const auto& [number, elements] : loadStyles()) {
        for (const auto& e : elements) {
            ++kinds[e.kind];
            off += (e.mode & 0x80000000u) != 0 ? 1 : 0;
        }
    }
    for (const int kind : std::initializer_list<int>{kRingReflection, kRingOriginGlow, kRingOuterGlow, kRingHalo, -1})
        EXPECT_GT(kinds[kind], 0) << "kind " << kind << " (-1: streak)";
    EXPECT_GT(off, 0);
}

TEST(DeliveredResources, ClassicZoomHasTheClassicParts)
{
    const auto elements = loadStyles()[1];
    std::map<int, int> kinds;
    bool before = false;
    bool beyond = false;
    for (const auto& e : elements) {
        ++kinds[e.kind];
        if (e.kind == kRingReflection) {
            before = before || (e.offset > 0 && e.offset < e.units);
            beyond = beyond || e.offset < 0;
        }
    }
    EXPECT_EQ(kinds[kRingOriginGlow], 1);
    EXPECT_EQ(kinds[kRingHalo], 1);
    EXPECT_EQ(kinds[kRingOuterGlow], 1);
    EXPECT_GE(kinds[kRingReflection], 6);
    EXPECT_TRUE(before && beyond) << "reflections on both sides of the centre";
    EXPECT_GE(kinds[-1], 2);
    EXPECT_LE(kinds[-1], 6);
}

DialogTemplate dialog(std::int16_t id)
{
    const auto bytes = delivered().get(korvane::kDialogResType, id);
    if (!bytes)
        throw std::runtime_error("no dialog " + std::to_string(id));
    return korvane::decodeDialogTemplate(*bytes);
}

const DialogItem* item(const DialogTemplate& d, int id)
{
    const auto it = std::find_if(d.items.begin(), d.items.end(), [&](const auto& i) { return i.id == id; });
    return it == d.items.end() ? nullptr : &*it;
}

TEST(DeliveredResources, SettingsDialogHasEveryItemThePluginAddresses)
{
    const DialogTemplate settings = dialog(16001);
    const struct {
        int id;
        int kind;
        const char* label;  // null: any
    } expected[] = {
        {1, cKV_PushButton, "OK"},  {2, cKV_PushButton, "Cancel"}, {5, cKV_PopupMenu, nullptr},
        {6, cKV_EditText, nullptr}, {7, cKV_EditText, nullptr},    {8, cKV_EditText, nullptr},
        {9, cKV_EditText, nullptr}, {10, cKV_EditText, nullptr},   {11, cKV_EditText, nullptr},
        {12, cKV_EditText, nullptr}, {13, cKV_EditText, nullptr},  {14, cKV_CheckBox, "Use aspect ratio"},
        {15, cKV_CheckBox, "Full-colour preview"}, {16, cKV_UserControl, nullptr},
        {18, cKV_CheckBox, "Grey rings"}, {19, cKV_CheckBox, "Origin glow"}, {20, cKV_CheckBox, "Outer glow"},
        {21, cKV_CheckBox, "Halo"}, {22, cKV_CheckBox, "Rings"}, {23, cKV_CheckBox, "Grey streaks"},
        {24, cKV_CheckBox, "Streaks"}, {25, cKV_CheckBox, "Follow light size"},
        {26, cKV_CheckBox, "Follow light intensity"}, {27, cKV_CheckBox, "Follow light rotation"},
        {28, cKV_ColorButton, nullptr}, {29, cKV_ColorButton, nullptr}, {30, cKV_ColorButton, nullptr},
        {31, cKV_ColorButton, nullptr}, {32, cKV_ColorButton, nullptr},
    };
    for (const auto& e : expected) {
        const DialogItem* found = item(settings, e.id);
        ASSERT_NE(found, nullptr) << "item " << e.id;
        EXPECT_EQ(found->kind, e.kind) << "item " << e.id;
        if (e.label) {
            EXPECT_EQ(found->label, e.label);
        }
    }
    EXPECT_EQ(item(settings, 1)->role, korvane::DialogRole::accept);
    EXPECT_EQ(item(settings, 2)->role, korvane::DialogRole::cancel);
    EXPECT_EQ(item(settings, 3), nullptr);
    EXPECT_EQ(item(settings, 4), nullptr);
    EXPECT_EQ(item(settings, 17), nullptr);

    std::vector<std::string> styleNames;
    for (int n = 1; auto name = delivered().name(kFlareResType, static_cast<std::int16_t>(kFlareResBaseID + n)); ++n)
        styleNames.push_back(*name);
    EXPECT_EQ(item(settings, 5)->menu, styleNames);

    const DialogItem* preview = item(settings, 16);
    EXPECT_GE(preview->right - preview->left, 320);
    EXPECT_GE(preview->bottom - preview->top, 240);

    // Each visibility box has its colour button on the same row, to its right.
    for (const auto& [box, color] : {std::pair{19, 28}, {20, 29}, {21, 30}, {22, 31}, {24, 32}}) {
        const DialogItem* b = item(settings, box);
        const DialogItem* c = item(settings, color);
        EXPECT_LT(c->top, b->bottom) << box;
        EXPECT_LT(b->top, c->bottom) << box;
        EXPECT_GE(c->left, b->right) << box;
    }
}

TEST(DeliveredResources, AlertsShowTheirTextAndAnOkButton)
{
    for (const std::int16_t id : {9000, 9002, 9003, 9004}) {
        const DialogTemplate alert = dialog(id);
        ASSERT_FALSE(alert.items.empty()) << id;
        // The text is the first control: the parameter scan walks controls in order.
        EXPECT_EQ(alert.items.front().kind, cKV_StaticText) << id;
        EXPECT_NE(alert.items.front().label.find("^0"), std::string::npos) << id;
        const DialogItem* ok = item(alert, 1);
        ASSERT_NE(ok, nullptr) << id;
        EXPECT_EQ(ok->kind, cKV_PushButton);
        EXPECT_EQ(ok->role, korvane::DialogRole::accept);
    }
}

} // namespace
