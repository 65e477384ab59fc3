// SourceModel.h - what resource sources describe, between their JSON text and
// their stored records.
//
// Values are held exactly as they are stored (fixed-point integers, 16-bit
// colours, Mac OS Roman names); the JSON side converts to and from the
// readable forms. Every conversion from JSON checks the values; every
// conversion to JSON throws CompileError when a stored value has no readable
// form, which tells the dumper to keep that resource as hex.
#pragma once

#include "JsonText.h"

#include "korvane/DialogTemplate.h"
#include "korvane/ResourceFile.h"

#include <cstdint>
#include <string>
#include <vector>

namespace korvane::rsc {

// Denominator of positions and sizes when a style names none.
inline constexpr std::int32_t kDefaultUnits = 10000;
// Streak directions are stored as integers: the written vector times this.
inline constexpr double kDirectionScale = 10000.0;

enum class ElementKind { ring, originGlow, outerGlow, halo, streak };

struct ColorStop {
    std::int32_t radius = 0;  // in the element's outside units
    std::uint16_t alpha = 0xFFFF;
    std::uint16_t red = 0;
    std::uint16_t green = 0;
    std::uint16_t blue = 0;
};

struct Element {
    std::int16_t id = 0;
    ElementKind kind = ElementKind::ring;
    std::string name;         // Mac OS Roman, at most 31 bytes
    std::uint32_t mode = 0;   // all 32 stored bits; the top one is "off"
    std::int32_t units = kDefaultUnits;
    std::int32_t offset = 0;  // position
    std::int32_t inside = 0;
    std::int32_t outside = 0;
    std::int32_t dirX = 0;    // streaks only
    std::int32_t dirY = 0;
    std::vector<ColorStop> stops;
};

struct Style {
    int number = 0;    // 'FLAR' id 1000 + number
    std::string name;  // Mac OS Roman; the 'FLAR' resource's name
    std::vector<Element> elements;
};

struct Dialog {
    std::int16_t id = 0;
    DialogTemplate layout;  // menus marked menuFromStyles are filled when compiling
};

struct RawResource {
    std::uint32_t type = 0;
    std::int16_t id = 0;
    std::string name;  // Mac OS Roman; empty = none
    std::vector<std::uint8_t> data;
};

struct EncodedResource {
    std::uint32_t type = 0;
    std::int16_t id = 0;
    std::string name;
    std::vector<std::uint8_t> data;
};

// Styles.
Style styleFromJson(const Json& value);
Json styleToJson(const Style& style);
std::string styleContext(const Style& style);
std::string elementContext(const Element& element);
bool isStreak(const Element& element);
// The 'FLAR' table and one 'RING' or 'STRK' resource per element.
std::vector<EncodedResource> encodeStyle(const Style& style);
// Reads style `number` back; throws CompileError for anything encodeStyle
// would not have written.
Style decodeStyle(const ResourceFile& file, int number);

// Dialogs.
Dialog dialogFromJson(const Json& value);
Json dialogToJson(const Dialog& dialog);

// Other resources.
RawResource rawFromJson(const Json& value);
Json rawToJson(const RawResource& raw);

} // namespace korvane::rsc
