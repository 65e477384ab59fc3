// The resource compiler: the stored records byte for byte, and a message
// naming file and element for every mistake (the round trips are fuzzed).

#include "RscCompiler.h"

#include "korvane/BigEndian.h"
#include "korvane/DialogTemplate.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <vector>

namespace {

using korvane::ResourceFile;
using korvane::rsc::CompileError;
using korvane::rsc::SourceText;
using Json = nlohmann::ordered_json;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kFLAR = 0x464C4152;
constexpr std::uint32_t kRING = 0x52494E47;
constexpr std::uint32_t kSTRK = 0x5354524B;

// Written loosely on purpose: integers for fractions, colour arrays, defaults
// left out, a direction that is not stored exactly.
const char* const kLooseStyle = R"({"style": 1, "name": "Test Flare", "elements": [
  {"id": 10, "kind": "origin glow", "name": "Glow", "position": 1, "outer": 0.25,
   "stops": [{"radius": 0, "color": [255, 255, 255]}, {"radius": 1, "color": "#000000"}]},
  {"id": 11, "kind": "ring", "name": "Ring B", "off": true, "mode": 3, "position": -0.35, "inner": 0.01,
   "outer": 0.125, "stops": [{"radius": 0.0, "color": [16, 32, 48, 128]}, {"radius": 0.5, "color": "#ff8000"},
                             {"radius": 1.0, "color": "#00000000"}]},
  {"id": 12, "kind": "halo", "name": "Halo", "units": 400, "position": 1.0, "outer": 0.5,
   "stops": [{"radius": 0.0, "color": "#000000"}, {"radius": 1.0, "color": "#102030"}]},
  {"id": 20, "kind": "streak", "name": "Streak 60\u00B0", "position": 1.0, "inner": -0.5, "outer": 0.5,
   "direction": [0.5, 0.8660254], "stops": [{"radius": 0.0, "color": "#FFFFFF"}, {"radius": 1.0, "color": "#000000"}]}
]})";

const char* const kCanonicalStyle = R"({
  "style": 1,
  "name": "Test Flare",
  "elements": [
    {
      "id": 10,
      "kind": "origin glow",
      "name": "Glow",
      "position": 1.0,
      "inner": 0.0,
      "outer": 0.25,
      "stops": [
        {"radius": 0.0, "color": "#FFFFFF"},
        {"radius": 1.0, "color": "#000000"}
      ]
    },
    {
      "id": 11,
      "kind": "ring",
      "name": "Ring B",
      "off": true,
      "mode": 3,
      "position": -0.35,
      "inner": 0.01,
      "outer": 0.125,
      "stops": [
        {"radius": 0.0, "color": "#10203080"},
        {"radius": 0.5, "color": "#FF8000"},
        {"radius": 1.0, "color": "#00000000"}
      ]
    },
    {
      "id": 12,
      "kind": "halo",
      "name": "Halo",
      "units": 400,
      "position": 1.0,
      "inner": 0.0,
      "outer": 0.5,
      "stops": [
        {"radius": 0.0, "color": "#000000"},
        {"radius": 1.0, "color": "#102030"}
      ]
    },
    {
      "id": 20,
      "kind": "streak",
      "name": "Streak 60°",
      "position": 1.0,
      "inner": -0.5,
      "outer": 0.5,
      "direction": [0.5, 0.866],
      "stops": [
        {"radius": 0.0, "color": "#FFFFFF"},
        {"radius": 1.0, "color": "#000000"}
      ]
    }
  ]
}
)";

const char* const kDialog = R"({"dialog": 100, "title": "Settings", "size": [200, 100], "items": [
  {"id": 5, "kind": "popup menu", "label": "Style", "bounds": [10, 10, 190, 30], "menu": "styles"},
  {"id": 6, "kind": "edit text", "bounds": [10, 40, 100, 60], "filter": "signed real"},
  {"id": 1, "kind": "push button", "label": "OK", "bounds": [120, 70, 190, 90], "role": "default"}
]})";


std::string secondStyle(int number = 2, int id = 30)
{
    return R"({"style": )" + std::to_string(number) + R"(, "name": "Second", "elements": [{"id": )" +
           std::to_string(id) + R"(, "kind": "ring", "name": "Only", "position": 0.5, "outer": 0.1,
        "stops": [{"radius": 0.0, "color": "#FFFFFF"}, {"radius": 1.0, "color": "#000000"}]}]})";
}

ResourceFile compileToFile(const std::vector<SourceText>& sources)
{
    return ResourceFile::parse(korvane::rsc::compileSources(sources), "compiled.rsc");
}

TEST(RscCompiler, StoresTheRecordsByteForByte)
{
    const ResourceFile file = compileToFile({{"loose.json", kLooseStyle}});
    EXPECT_EQ(file.name(kFLAR, 1001), "Test Flare");
    // Two groups: 'RING' 10..12 and 'STRK' 20..20.
    EXPECT_EQ(file.get(kFLAR, 1001), (Bytes{0, 0, 0, 2, 'R', 'I', 'N', 'G', 0, 10, 0, 12,  //
                                            'S', 'T', 'R', 'K', 0, 20, 0, 20}));
    const Bytes ring = *file.get(kRING, 11);
    ASSERT_EQ(ring.size(), 60u + 3 * 12);
    EXPECT_EQ(std::string(ring.begin() + 1, ring.begin() + 7), "Ring B");
    EXPECT_EQ(ring[0], 6);
    EXPECT_TRUE(std::all_of(ring.begin() + 7, ring.begin() + 32, [](auto b) { return b == 0; }));
    const std::int32_t header[] = {0, static_cast<std::int32_t>(0x80000003u), 10000, -3500, 100, 1250, 3};
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(korvane::be::readS32(ring, 32 + 4 * i), header[i]) << "field " << i;
    // Stops: radius in outside units, then alpha, red, green, blue x 257.
    const std::int32_t radii[] = {0, 625, 1250};
    const std::uint16_t colors[3][4] = {{0x8080, 0x1010, 0x2020, 0x3030}, {0xFFFF, 0xFFFF, 0x8080, 0}, {0, 0, 0, 0}};
    for (int s = 0; s < 3; ++s) {
        EXPECT_EQ(korvane::be::readS32(ring, 60 + 12 * s), radii[s]);
        for (int c = 0; c < 4; ++c)
            EXPECT_EQ(korvane::be::readU16(ring, 64 + 12 * s + 2 * c), colors[s][c]) << s << "," << c;
    }
    const Bytes streak = *file.get(kSTRK, 20);
    ASSERT_EQ(streak.size(), 68u + 2 * 12);
    const std::int32_t streakHeader[] = {0, 0, 10000, 10000, -5000, 5000, 5000, 8660, 2};
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(korvane::be::readS32(streak, 32 + 4 * i), streakHeader[i]) << "field " << i;
    EXPECT_EQ(korvane::be::readS32(*file.get(kRING, 12), 40), 400);  // the halo's own units
}

// ---------------------------------------------------------------------------
// Mistakes in one style source

struct StyleMistake {
    const char* name;
    std::function<void(Json&)> change;
    const char* message;
};

class StyleValidation : public ::testing::TestWithParam<StyleMistake> {};

TEST_P(StyleValidation, NamesFileAndElement)
{
    Json source = Json::parse(kCanonicalStyle);
    GetParam().change(source);
    try {
        korvane::rsc::compileSources({{"bad.json", source.dump()}});
        FAIL() << "accepted";
    } catch (const CompileError& e) {
        const std::string message = e.what();
        EXPECT_EQ(message.rfind("bad.json: style", 0), 0u) << message;
        EXPECT_NE(message.find(GetParam().message), std::string::npos) << message;
    }
}

Json& element(Json& s, int i)
{
    return s["elements"][static_cast<std::size_t>(i)];
}

const StyleMistake kStyleMistakes[] = {
    {"UnknownKind", [](Json& s) { element(s, 1)["kind"] = "hallo"; }, "element 11: unknown kind \"hallo\""},
    {"ZeroStyleUnits", [](Json& s) { s["units"] = 0; }, "\"Test Flare\": units must be greater than zero"},
    {"ZeroElementUnits", [](Json& s) { element(s, 1)["units"] = 0; },
     "element 11 \"Ring B\": units must be greater than zero"},
    {"StopsOutOfOrder", [](Json& s) { element(s, 1)["stops"][1]["radius"] = 0.0; },
     "element 11 \"Ring B\": stop #2: stops must have increasing radii"},
    {"StopsEqualAfterRounding", [](Json& s) { element(s, 1)["stops"][1]["radius"] = 0.0001; },
     "stop #2: stops must have increasing radii"},
    {"IdTwice", [](Json& s) { element(s, 2)["id"] = 11; },
     "element 11 \"Halo\": id 11 is already used by element 11 \"Ring B\""},
    {"MissingPosition", [](Json& s) { element(s, 0).erase("position"); },
     "element 10 \"Glow\": missing field \"position\""},
    {"IdOutOfRange", [](Json& s) { element(s, 0)["id"] = 40000; }, "element #1: \"id\" 40000 is out of range"},
    {"PositionTooLarge", [](Json& s) { element(s, 0)["position"] = 1e6; }, "does not fit a 32-bit stored value"},
    {"NameTooLong", [](Json& s) { element(s, 0)["name"] = std::string(32, 'n'); }, "longer than 31 characters"},
    {"NameNotMacRoman", [](Json& s) { element(s, 0)["name"] = "Glow \xC5\x82"; },
     "which Mac OS Roman cannot represent"},
    {"OneStop", [](Json& s) { element(s, 0)["stops"].erase(1); }, "needs at least two colour stops"},
    {"ZeroDirection", [](Json& s) { element(s, 3)["direction"] = Json::array({0.0, 0.0}); },
     "element 20 \"Streak 60°\": direction must not be zero"},
    {"DirectionTooLong", [](Json& s) { element(s, 3)["direction"] = Json::array({4.0, 3.0}); }, "is too long"},
    {"MissingDirection", [](Json& s) { element(s, 3).erase("direction"); }, "missing field \"direction\""},
    {"RingWithDirection", [](Json& s) { element(s, 1)["direction"] = Json::array({1.0, 0.0}); },
     "only streaks have a direction"},
    {"MisspeltField", [](Json& s) { element(s, 1)["postion"] = 1.0; }, "unknown field \"postion\""},
    {"BadColour", [](Json& s) { element(s, 0)["stops"][0]["color"] = "#12345"; }, "stop #1: \"color\" must be"},
    {"ChannelTooLarge", [](Json& s) { element(s, 0)["stops"][0]["color"] = Json::array({256, 0, 0}); },
     "colour channel 256 is out of range"},
    {"ZeroOuter", [](Json& s) { element(s, 0)["outer"] = 0.0; }, "outer must be greater than zero"},
    {"NegativeRingInner", [](Json& s) { element(s, 1)["inner"] = -0.01; }, "inner must not be negative"},
    {"InnerBeyondOuter", [](Json& s) { element(s, 1)["inner"] = 0.2; }, "inner lies beyond outer"},
    {"StreakReachesTooFarBack", [](Json& s) { element(s, 3)["inner"] = -0.6; }, "further back than -outer"},
    {"ModeTopBit", [](Json& s) { element(s, 1)["mode"] = 2147483648u; }, "\"mode\" 2147483648 is out of range"},
    {"NoElements", [](Json& s) { s["elements"] = Json::array(); }, "a style needs at least one element"},
    {"StyleZero", [](Json& s) { s["style"] = 0; }, "\"style\" 0 is out of range"},
};

INSTANTIATE_TEST_SUITE_P(Mistakes, StyleValidation, ::testing::ValuesIn(kStyleMistakes),
                         [](const auto& info) { return std::string(info.param.name); });

// ---------------------------------------------------------------------------
// Mistakes that involve several sources, dialogs or the source as a whole

struct SetMistake {
    const char* name;
    std::vector<SourceText> sources;
    const char* message;  // must start the message
};

class SourceSetValidation : public ::testing::TestWithParam<SetMistake> {};

TEST_P(SourceSetValidation, NamesTheFileAtFault)
{
    try {
        korvane::rsc::compileSources(GetParam().sources);
        FAIL() << "accepted";
    } catch (const CompileError& e) {
        EXPECT_EQ(std::string(e.what()).rfind(GetParam().message, 0), 0u) << e.what();
    }
}

std::string dialogWith(const std::string& items)
{
    return R"({"dialog": 100, "size": [200, 100], "items": [)" + items + "]}";
}

const SetMistake kSetMistakes[] = {
    {"StyleGap",
     {{"a.json", kLooseStyle}, {"c.json", secondStyle(3)}},
     "c.json: style 3 \"Second\": styles must be numbered 1, 2, 3 ... without gaps; style 2 is missing"},
    {"StyleNumberTwice",
     {{"a.json", kLooseStyle}, {"b.json", secondStyle(1)}},
     "b.json: style 1 \"Second\": style number 1 is already used by style 1 \"Test Flare\" in a.json"},
    {"ElementIdShared",
     {{"a.json", kLooseStyle}, {"b.json", secondStyle(2, 10)}},
     "b.json: style 2 \"Second\": element 10 \"Only\": id 10 is already used by element 10 \"Glow\" of style 1 "
     "\"Test Flare\" in a.json"},
    {"StyleMenuWithoutStyles", {{"d.json", kDialog}}, "d.json: dialog 100: item 5: the menu lists the styles"},
    {"RawCollides",
     {{"a.json", kLooseStyle},
      {"r.json", R"({"resources": [{"type": "FLAR", "id": 1001, "hex": []}]})"}},
     "r.json: resource 'FLAR' id 1001 is defined twice"},
    {"NotJson", {{"x.json", "{\"style\": 1,"}}, "x.json: not valid JSON"},
    {"UnknownDocument", {{"x.json", R"({"stlye": 1})"}}, "x.json: unknown field \"stlye\""},
    {"ItemIdTwice",
     {{"d.json", dialogWith(R"({"id": 1, "kind": "check box", "bounds": [0, 0, 10, 10]},
                            {"id": 1, "kind": "check box", "bounds": [0, 20, 10, 30]})")}},
     "d.json: dialog 100: item 1: id 1 is used twice"},
    {"ItemOutside",
     {{"d.json", dialogWith(R"({"id": 7, "kind": "check box", "bounds": [150, 0, 210, 10]})")}},
     "d.json: dialog 100: item 7: bounds lie outside the dialog"},
    {"ItemEmpty",
     {{"d.json", dialogWith(R"({"id": 7, "kind": "check box", "bounds": [10, 10, 10, 20]})")}},
     "d.json: dialog 100: item 7: bounds [left, top, right, bottom] must have left < right"},
    {"RoleOnCheckBox",
     {{"d.json", dialogWith(R"({"id": 7, "kind": "check box", "bounds": [0, 0, 10, 10], "role": "default"})")}},
     "d.json: dialog 100: item 7: only push buttons have a role"},
    {"TwoDefaults",
     {{"d.json", dialogWith(R"({"id": 1, "kind": "push button", "bounds": [0, 0, 10, 10], "role": "default"},
                            {"id": 2, "kind": "push button", "bounds": [0, 20, 10, 30], "role": "default"})")}},
     "d.json: dialog 100: item 2: a second \"default\" button"},
    {"UnknownItemKind",
     {{"d.json", dialogWith(R"({"id": 7, "kind": "knob", "bounds": [0, 0, 10, 10]})")}},
     "d.json: dialog 100: item 7: unknown kind \"knob\""},
    {"MenuOnButton",
     {{"d.json", dialogWith(R"({"id": 7, "kind": "push button", "bounds": [0, 0, 10, 10], "menu": ["a"]})")}},
     "d.json: dialog 100: item 7: only popup menus and list boxes have menu items"},
    {"BadHex", {{"r.json", R"({"resources": [{"type": "DATA", "id": 1, "hex": ["0g"]}]})"}},
     "r.json: resource 'DATA' 1: a \"hex\" line holds a character that is not a hex digit"},
};

INSTANTIATE_TEST_SUITE_P(Mistakes, SourceSetValidation, ::testing::ValuesIn(kSetMistakes),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
