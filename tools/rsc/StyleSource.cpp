// StyleSource.cpp - flare styles: JSON source <-> model <-> 'FLAR', 'RING' and
// 'STRK' records.

#include "SourceModel.h"

#include "glintwave/GlintwaveRecords.h"
#include "korvane/BigEndian.h"
#include "korvane/MacRoman.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <set>

namespace korvane::rsc {
namespace {

// Style numbers whose 'FLAR' id 1000 + number still fits a 16-bit id.
constexpr std::int64_t kMaxStyleNumber = std::numeric_limits<std::int16_t>::max() - kFlareResBaseID;
constexpr std::int64_t kS32Min = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t kS32Max = std::numeric_limits<std::int32_t>::max();
constexpr std::size_t kMaxElementName = 31;  // PStr31
constexpr std::size_t kPStr31Size = 32;

struct KindInfo {
    ElementKind kind;
    const char* name;
    std::uint32_t resType;
    std::int32_t typeCode;  // ringResType; streaks store 0
};

constexpr std::array<KindInfo, 5> kKinds = {{
    {ElementKind::ring, "ring", kRingResType, kRingReflection},
    {ElementKind::originGlow, "origin glow", kRingResType, kRingOriginGlow},
    {ElementKind::outerGlow, "outer glow", kRingResType, kRingOuterGlow},
    {ElementKind::halo, "halo", kRingResType, kRingHalo},
    {ElementKind::streak, "streak", kStreakResType, 0},
}};

const KindInfo& kindInfo(ElementKind kind)
{
    for (const KindInfo& info : kKinds) {
        if (info.kind == kind)
            return info;
    }
    return kKinds[0];
}

std::string numberText(double value)
{
    return Json(value).dump();
}

[[noreturn]] void fail(const std::string& context, const std::string& problem)
{
    throw CompileError(context + ": " + problem);
}

// value x scale, rounded, as a stored 32-bit value.
std::int32_t toFixed(double value, double scale, const std::string& context, const std::string& what)
{
    if (!std::isfinite(value))
        fail(context, what + " must be a finite number");
    const double scaled = std::round(value * scale);
    if (!(scaled >= static_cast<double>(kS32Min) && scaled <= static_cast<double>(kS32Max)))
        fail(context, what + " " + numberText(value) + " times " + numberText(scale) +
                          " does not fit a 32-bit stored value");
    return static_cast<std::int32_t>(scaled);
}

std::int32_t unitsValue(std::int64_t units, ObjectReader& r)
{
    if (units <= 0)
        r.fail("units must be greater than zero, found " + std::to_string(units));
    return static_cast<std::int32_t>(units);
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// "#RRGGBB", "#RRGGBBAA", [r, g, b] or [r, g, b, a], 0-255; stored x 257.
void readColor(const Json& value, ColorStop& stop, const std::string& context)
{
    const std::string usage = "\"color\" must be \"#RRGGBB\", \"#RRGGBBAA\", [r, g, b] or [r, g, b, a] (0-255)";
    std::array<int, 4> channels = {0, 0, 0, 255};
    if (value.is_string()) {
        const std::string text = value.get<std::string>();
        if ((text.size() != 7 && text.size() != 9) || text[0] != '#')
            fail(context, usage + ", found \"" + text + "\"");
        for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
            const int high = hexDigit(text[i + 1]);
            const int low = i + 2 < text.size() ? hexDigit(text[i + 2]) : -1;
            if (high < 0 || low < 0)
                fail(context, usage + ", found \"" + text + "\"");
            channels[i / 2] = high * 16 + low;
        }
    } else if (value.is_array() && (value.size() == 3 || value.size() == 4)) {
        for (std::size_t i = 0; i < value.size(); ++i)
            channels[i] = static_cast<int>(integerValue(value[i], 0, 255, context, "colour channel"));
    } else {
        fail(context, usage);
    }
    stop.red = static_cast<std::uint16_t>(channels[0] * 257);
    stop.green = static_cast<std::uint16_t>(channels[1] * 257);
    stop.blue = static_cast<std::uint16_t>(channels[2] * 257);
    stop.alpha = static_cast<std::uint16_t>(channels[3] * 257);
}

std::string colorText(const ColorStop& stop, const std::string& context)
{
    for (const std::uint16_t channel : {stop.red, stop.green, stop.blue, stop.alpha}) {
        if (channel % 257 != 0)
            fail(context, "a 16-bit colour channel (" + std::to_string(channel) + ") has no 8-bit form");
    }
    char text[10];
    if (stop.alpha == 0xFFFF)
        std::snprintf(text, sizeof text, "#%02X%02X%02X", stop.red / 257, stop.green / 257, stop.blue / 257);
    else
        std::snprintf(text, sizeof text, "#%02X%02X%02X%02X", stop.red / 257, stop.green / 257, stop.blue / 257,
                      stop.alpha / 257);
    return text;
}

void readDirection(ObjectReader& r, Element& e)
{
    const Json& d = r.required("direction");
    if (!d.is_array() || d.size() != 2)
        r.fail("\"direction\" must be [x, y]");
    const double x = numberValue(d[0], r.context(), "direction x");
    const double y = numberValue(d[1], r.context(), "direction y");
    e.dirX = toFixed(x, kDirectionScale, r.context(), "direction x");
    e.dirY = toFixed(y, kDirectionScale, r.context(), "direction y");
    if (e.dirX == 0 && e.dirY == 0)
        r.fail("direction must not be zero");
    // The loader squares and adds the stored components in 32-bit integers.
    const std::int64_t lengthSquared = std::int64_t{e.dirX} * e.dirX + std::int64_t{e.dirY} * e.dirY;
    if (lengthSquared > kS32Max)
        r.fail("direction [" + numberText(x) + ", " + numberText(y) +
               "] is too long: x*x + y*y must stay below 21.47 (only its direction matters)");
}

void readStops(ObjectReader& r, Element& e)
{
    const Json& stops = r.required("stops");
    if (!stops.is_array())
        r.fail("\"stops\" must be an array");
    // The colour evaluation always reads a stop and the one after it.
    if (stops.size() < 2)
        r.fail("needs at least two colour stops");
    for (std::size_t i = 0; i < stops.size(); ++i) {
        ObjectReader s(stops[i], r.context() + ": stop #" + std::to_string(i + 1));
        ColorStop stop;
        const double radius = s.number("radius");
        if (radius < 0)
            s.fail("radius must not be negative, found " + numberText(radius));
        stop.radius = toFixed(radius, e.outside, s.context(), "radius");
        readColor(s.required("color"), stop, s.context());
        s.finish();
        // Stops are drawn in stored order, so they must already be sorted.
        if (!e.stops.empty() && stop.radius <= e.stops.back().radius)
            s.fail("stops must have increasing radii: radius " + numberText(radius) +
                   " does not lie beyond the previous stop's " +
                   numberText(e.stops.back().radius / static_cast<double>(e.outside)));
        e.stops.push_back(stop);
    }
}

Element elementFromJson(const Json& value, std::size_t index, std::int32_t styleUnits, const std::string& styleCtx)
{
    ObjectReader r(value, styleCtx + ": element #" + std::to_string(index + 1));
    Element e;
    e.id = static_cast<std::int16_t>(r.integer("id", std::numeric_limits<std::int16_t>::min(),
                                               std::numeric_limits<std::int16_t>::max()));
    r.setContext(styleCtx + ": element " + std::to_string(e.id));
    const std::string kindText = r.string("kind");
    const KindInfo* info = nullptr;
    for (const KindInfo& k : kKinds) {
        if (kindText == k.name)
            info = &k;
    }
    if (!info)
        r.fail("unknown kind \"" + kindText + "\" (ring, origin glow, outer glow, halo or streak)");
    e.kind = info->kind;
    e.name = macRomanText(r.string("name"), kMaxElementName, r.context(), "name");
    r.setContext(styleCtx + ": " + elementContext(e));

    const bool off = r.optionalBoolean("off", false);
    const auto mode = r.optionalInteger("mode", 0, 0x7FFFFFFF).value_or(0);
    e.mode = static_cast<std::uint32_t>(mode) | (off ? kElementOffMode : 0u);
    e.units = styleUnits;
    if (const auto units = r.optionalInteger("units", kS32Min, kS32Max))
        e.units = unitsValue(*units, r);

    e.offset = toFixed(r.number("position"), e.units, r.context(), "position");
    e.inside = toFixed(r.optionalNumber("inner").value_or(0.0), e.units, r.context(), "inner");
    e.outside = toFixed(r.number("outer"), e.units, r.context(), "outer");
    if (e.outside <= 0)
        r.fail("outer must be greater than zero, found " + numberText(e.outside / static_cast<double>(e.units)));
    // A ring's inner radius is not drawn; a streak runs from inner to outer
    // along its direction and may reach back through its centre.
    if (e.inside > e.outside)
        r.fail("inner lies beyond outer");
    if (e.kind == ElementKind::streak ? e.inside < -std::int64_t{e.outside} : e.inside < 0)
        r.fail(e.kind == ElementKind::streak ? "inner must not lie further back than -outer"
                                             : "inner must not be negative");

    if (e.kind == ElementKind::streak)
        readDirection(r, e);
    else if (r.has("direction"))
        r.fail("only streaks have a direction");
    readStops(r, e);
    r.finish();
    return e;
}

// A name field of 32 bytes; bytes past the name are written as zeros.
std::vector<std::uint8_t> pstr31(const std::string& text)
{
    std::vector<std::uint8_t> field(kPStr31Size, 0);
    const std::size_t length = std::min(text.size(), kMaxElementName);
    field[0] = static_cast<std::uint8_t>(length);
    for (std::size_t i = 0; i < length; ++i)
        field[1 + i] = static_cast<std::uint8_t>(text[i]);
    return field;
}

std::vector<std::uint8_t> encodeElement(const Element& e)
{
    std::vector<std::uint8_t> out = pstr31(e.name);
    out.reserve(kStreakResHeaderSize + e.stops.size() * kStoredColorSize);
    be::appendU32(out, static_cast<std::uint32_t>(kindInfo(e.kind).typeCode));
    be::appendU32(out, e.mode);
    be::appendU32(out, static_cast<std::uint32_t>(e.units));
    be::appendU32(out, static_cast<std::uint32_t>(e.offset));
    be::appendU32(out, static_cast<std::uint32_t>(e.inside));
    be::appendU32(out, static_cast<std::uint32_t>(e.outside));
    if (isStreak(e)) {
        be::appendU32(out, static_cast<std::uint32_t>(e.dirX));
        be::appendU32(out, static_cast<std::uint32_t>(e.dirY));
    }
    be::appendU32(out, static_cast<std::uint32_t>(e.stops.size()));
    for (const ColorStop& stop : e.stops) {
        be::appendU32(out, static_cast<std::uint32_t>(stop.radius));
        be::appendU16(out, stop.alpha);
        be::appendU16(out, stop.red);
        be::appendU16(out, stop.green);
        be::appendU16(out, stop.blue);
    }
    return out;
}

Element decodeElement(const ResourceFile& file, std::uint32_t type, std::int16_t id)
{
    const std::string what = "'" + fourCCText(type) + "' " + std::to_string(id);
    const auto bytes = file.get(type, id);
    if (!bytes)
        throw CompileError(what + " is missing");
    if (file.name(type, id))
        throw CompileError(what + " has a resource name");
    const std::span<const std::uint8_t> b(*bytes);
    const bool streak = type == kStreakResType;
    const std::size_t header = streak ? kStreakResHeaderSize : kRingResHeaderSize;
    if (b.size() < header)
        throw CompileError(what + " is shorter than its header");

    Element e;
    e.id = id;
    const std::size_t nameLength = b[0];
    if (nameLength > kMaxElementName)
        throw CompileError(what + " has a name longer than 31 bytes");
    for (std::size_t i = 1 + nameLength; i < kPStr31Size; ++i) {
        if (b[i] != 0)
            throw CompileError(what + " has bytes after its name");
    }
    e.name.assign(reinterpret_cast<const char*>(b.data() + 1), nameLength);

    const std::int32_t typeCode = be::readS32(b, 32);
    bool known = false;
    for (const KindInfo& k : kKinds) {
        if (k.resType == type && k.typeCode == typeCode) {
            e.kind = k.kind;
            known = true;
        }
    }
    if (!known)
        throw CompileError(what + " has element type " + std::to_string(typeCode));
    e.mode = be::readU32(b, 36);
    e.units = be::readS32(b, 40);
    e.offset = be::readS32(b, 44);
    e.inside = be::readS32(b, 48);
    e.outside = be::readS32(b, 52);
    if (streak) {
        e.dirX = be::readS32(b, 56);
        e.dirY = be::readS32(b, 60);
    }
    const std::int64_t count = be::readS32(b, header - 4);
    if (count < 0 || b.size() - header != static_cast<std::uint64_t>(count) * kStoredColorSize)
        throw CompileError(what + " holds a different number of stops than it declares");
    for (std::int64_t i = 0; i < count; ++i) {
        const std::size_t at = header + static_cast<std::size_t>(i) * kStoredColorSize;
        ColorStop stop;
        stop.radius = be::readS32(b, at);
        stop.alpha = be::readU16(b, at + 4);
        stop.red = be::readU16(b, at + 6);
        stop.green = be::readU16(b, at + 8);
        stop.blue = be::readU16(b, at + 10);
        e.stops.push_back(stop);
    }
    return e;
}

} // namespace

bool isStreak(const Element& element)
{
    return element.kind == ElementKind::streak;
}

std::string styleContext(const Style& style)
{
    return "style " + std::to_string(style.number) + " \"" + macRomanToUtf8(style.name) + "\"";
}

std::string elementContext(const Element& element)
{
    return "element " + std::to_string(element.id) + " \"" + macRomanToUtf8(element.name) + "\"";
}

Style styleFromJson(const Json& value)
{
    ObjectReader r(value, "style");
    Style style;
    style.number = static_cast<int>(r.integer("style", 1, kMaxStyleNumber));
    r.setContext("style " + std::to_string(style.number));
    style.name = macRomanText(r.string("name"), 255, r.context(), "name");
    if (style.name.empty())
        r.fail("the style needs a name: it is the style's entry in the style menu");
    r.setContext(styleContext(style));

    std::int32_t units = kDefaultUnits;
    if (const auto u = r.optionalInteger("units", kS32Min, kS32Max))
        units = unitsValue(*u, r);
    const Json& elements = r.required("elements");
    if (!elements.is_array())
        r.fail("\"elements\" must be an array");
    if (elements.empty())
        r.fail("a style needs at least one element");
    for (std::size_t i = 0; i < elements.size(); ++i)
        style.elements.push_back(elementFromJson(elements[i], i, units, r.context()));
    r.finish();
    return style;
}

Json styleToJson(const Style& style)
{
    const std::string context = styleContext(style);
    Json j;
    j["style"] = style.number;
    j["name"] = macRomanToUtf8(style.name);
    const std::int32_t units = style.elements.empty() ? kDefaultUnits : style.elements.front().units;
    if (units != kDefaultUnits)
        j["units"] = units;
    Json elements = Json::array();
    for (const Element& e : style.elements) {
        const std::string where = context + ": " + elementContext(e);
        if (e.units <= 0 || e.outside <= 0)
            fail(where, "units and outer must be greater than zero");
        Json o;
        o["id"] = e.id;
        o["kind"] = kindInfo(e.kind).name;
        o["name"] = macRomanToUtf8(e.name);
        if (e.mode & kElementOffMode)
            o["off"] = true;
        if (e.mode & ~kElementOffMode)
            o["mode"] = e.mode & ~kElementOffMode;
        if (e.units != units)
            o["units"] = e.units;
        const double u = e.units;
        o["position"] = e.offset / u;
        o["inner"] = e.inside / u;
        o["outer"] = e.outside / u;
        if (isStreak(e))
            o["direction"] = Json::array({e.dirX / kDirectionScale, e.dirY / kDirectionScale});
        Json stops = Json::array();
        for (const ColorStop& stop : e.stops) {
            Json s;
            s["radius"] = stop.radius / static_cast<double>(e.outside);
            s["color"] = colorText(stop, where);
            stops.push_back(std::move(s));
        }
        o["stops"] = std::move(stops);
        elements.push_back(std::move(o));
    }
    j["elements"] = std::move(elements);
    return j;
}

std::vector<EncodedResource> encodeStyle(const Style& style)
{
    // Runs of consecutive ids of one type share a table entry.
    struct Group {
        std::uint32_t type;
        std::int16_t first;
        std::int16_t last;
    };
    std::vector<Group> groups;
    for (const Element& e : style.elements) {
        const std::uint32_t type = kindInfo(e.kind).resType;
        if (!groups.empty() && groups.back().type == type &&
            groups.back().last != std::numeric_limits<std::int16_t>::max() && e.id == groups.back().last + 1)
            groups.back().last = e.id;
        else
            groups.push_back({type, e.id, e.id});
    }

    std::vector<std::uint8_t> table;
    be::appendU32(table, static_cast<std::uint32_t>(groups.size()));
    for (const Group& g : groups) {
        be::appendU32(table, g.type);
        be::appendU16(table, static_cast<std::uint16_t>(g.first));
        be::appendU16(table, static_cast<std::uint16_t>(g.last));
    }

    std::vector<EncodedResource> out;
    out.push_back({kFlareResType, static_cast<std::int16_t>(kFlareResBaseID + style.number), style.name,
                   std::move(table)});
    for (const Element& e : style.elements)
        out.push_back({kindInfo(e.kind).resType, e.id, std::string(), encodeElement(e)});
    return out;
}

Style decodeStyle(const ResourceFile& file, int number)
{
    const auto id = static_cast<std::int16_t>(kFlareResBaseID + number);
    const std::string what = "'FLAR' " + std::to_string(id);
    const auto bytes = file.get(kFlareResType, id);
    if (!bytes)
        throw CompileError(what + " is missing");
    const std::span<const std::uint8_t> b(*bytes);
    if (b.size() < 12)
        throw CompileError(what + " is too short");
    const std::int64_t count = be::readS32(b, 0);
    if (count < 1 || b.size() != 4 + 8 * static_cast<std::uint64_t>(count))
        throw CompileError(what + " holds a different number of entries than it declares");

    Style style;
    style.number = number;
    style.name = file.name(kFlareResType, id).value_or(std::string());
    // Sources give every element its own id, whatever its type; a table
    // that lists one twice has no source form. Stopping at the first repeat
    // also bounds the work to the number of element resources.
    std::set<std::int16_t> seen;
    for (std::int64_t i = 0; i < count; ++i) {
        const std::size_t at = 4 + static_cast<std::size_t>(i) * 8;
        const std::uint32_t type = be::readU32(b, at);
        const std::int16_t first = be::readS16(b, at + 4);
        const std::int16_t last = be::readS16(b, at + 6);
        if ((type != kRingResType && type != kStreakResType) || first > last)
            throw CompileError(what + " has an entry the compiler would not write");
        for (int element = first; element <= last; ++element) {
            if (!seen.insert(static_cast<std::int16_t>(element)).second)
                throw CompileError(what + " lists element " + std::to_string(element) + " twice");
            style.elements.push_back(decodeElement(file, type, static_cast<std::int16_t>(element)));
        }
    }
    return style;
}

} // namespace korvane::rsc
