// FlareTable.cpp - stored flare table records and the folder that serves them.
#include "FlareTable.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>

#include "korvane/ResourceFile.h"
#include "korvane/ResourceToolbox.h"

namespace glintwave::testhost {

void appendU16(Bytes& out, std::uint32_t value)
{
    out.push_back(static_cast<std::uint8_t>(value >> 8));
    out.push_back(static_cast<std::uint8_t>(value));
}

void appendU32(Bytes& out, std::uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(static_cast<std::uint8_t>(value >> shift));
}

namespace {

void appendS32(Bytes& out, std::int32_t value)
{
    appendU32(out, static_cast<std::uint32_t>(value));
}

void appendName(Bytes& out, const std::string& name, std::optional<std::uint8_t> lengthByte)
{
    std::uint8_t stored[32] = {};
    const std::size_t length = std::min<std::size_t>(name.size(), 31);
    stored[0] = lengthByte ? *lengthByte : static_cast<std::uint8_t>(length);
    std::memcpy(stored + 1, name.data(), length);
    // Bytes past the name are don't-care: make them visible if copied.
    for (std::size_t i = length + 1; i < sizeof stored; i++)
        stored[i] = static_cast<std::uint8_t>('#');
    out.insert(out.end(), stored, stored + sizeof stored);
}

void appendStops(Bytes& out, const std::vector<StopSpec>& stops)
{
    for (const StopSpec& stop : stops) {
        appendS32(out, stop.radius);
        appendU16(out, stop.alpha);
        appendU16(out, stop.red);
        appendU16(out, stop.green);
        appendU16(out, stop.blue);
    }
}

void appendDouble(Bytes& out, double value)
{
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    for (int shift = 56; shift >= 0; shift -= 8)
        out.push_back(static_cast<std::uint8_t>(bits >> shift));
}

double readDouble(const std::uint8_t* stored)
{
    std::uint64_t bits = 0;
    for (int i = 0; i < 8; i++)
        bits = (bits << 8) | stored[i];
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

std::int16_t readS16(const std::uint8_t* stored)
{
    return static_cast<std::int16_t>((stored[0] << 8) | stored[1]);
}

} // namespace

Bytes ringResource(const RingSpec& ring)
{
    Bytes out;
    appendName(out, ring.name, ring.nameLength);
    appendS32(out, ring.type);
    appendU32(out, ring.mode);
    appendS32(out, ring.units);
    appendS32(out, ring.offset);
    appendS32(out, ring.inside);
    appendS32(out, ring.outside);
    appendS32(out, ring.declaredStops.value_or(static_cast<std::int32_t>(ring.stops.size())));
    appendStops(out, ring.stops);
    return out;
}

Bytes streakResource(const StreakSpec& streak)
{
    Bytes out;
    appendName(out, "Streak", std::nullopt);
    appendS32(out, streak.type);
    appendU32(out, streak.mode);
    appendS32(out, streak.units);
    appendS32(out, streak.offset);
    appendS32(out, streak.inside);
    appendS32(out, streak.outside);
    appendS32(out, streak.dirX);
    appendS32(out, streak.dirY);
    appendS32(out, streak.declaredStops.value_or(static_cast<std::int32_t>(streak.stops.size())));
    appendStops(out, streak.stops);
    return out;
}

Bytes flareInfoResource(const std::vector<GroupSpec>& groups, std::optional<std::int32_t> declaredCount)
{
    Bytes out;
    appendS32(out, declaredCount.value_or(static_cast<std::int32_t>(groups.size())));
    for (const GroupSpec& group : groups) {
        appendU32(out, group.type);
        appendU16(out, static_cast<std::uint16_t>(group.first));
        appendU16(out, static_cast<std::uint16_t>(group.last));
    }
    return out;
}

Bytes storedRingControl(double scale, double intensity, std::int16_t alpha, std::int16_t red, std::int16_t green,
                        std::int16_t blue)
{
    Bytes out;
    appendDouble(out, scale);
    appendDouble(out, intensity);
    for (std::int16_t component : {alpha, red, green, blue})
        appendU16(out, static_cast<std::uint16_t>(component));
    return out;
}

RingControl readRingControl(const std::uint8_t* stored)
{
    RingControl control;
    control.ringScale = readDouble(stored);
    control.ringIntensity = readDouble(stored + 8);
    control.ringColor.alpha = readS16(stored + 16);
    control.ringColor.red = readS16(stored + 18);
    control.ringColor.green = readS16(stored + 20);
    control.ringColor.blue = readS16(stored + 22);
    return control;
}

// ---------------------------------------------------------------------------
// The folder
// ---------------------------------------------------------------------------

FlareTableFolder::FlareTableFolder()
{
    korvane::toolbox::setHomeDirectory(folder_.path());
}

FlareTableFolder::~FlareTableFolder()
{
    korvane::toolbox::setHomeDirectory({});
}

void FlareTableFolder::add(std::uint32_t type, std::int16_t id, Bytes data, std::string name)
{
    for (Resource& resource : resources_) {
        if (resource.type == type && resource.id == id) {
            resource.data = std::move(data);
            resource.name = std::move(name);
            return;
        }
    }
    resources_.push_back({type, id, std::move(name), std::move(data)});
}

void FlareTableFolder::write()
{
    korvane::ResourceFileWriter writer;
    for (const Resource& resource : resources_)
        writer.add(resource.type, resource.id, resource.name, resource.data);
    writeRaw(writer.bytes());
}

void FlareTableFolder::writeRaw(const Bytes& bytes)
{
    std::ofstream out(folder_ / "Glintwave.rsc", std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!out)
        throw std::runtime_error("cannot write Glintwave.rsc");
}

void FlareTableFolder::removeFile()
{
    std::error_code ignored;
    std::filesystem::remove(folder_ / "Glintwave.rsc", ignored);
}

void FlareTableFolder::addStandardStyle(std::int32_t style)
{
    RingSpec glow;
    glow.name = "Origin Glow";
    glow.type = kRingOriginGlow;
    glow.offset = 1000;
    glow.outside = 200;
    glow.stops = {{0, 0xFFFF, 65535, 60000, 50000}, {200, 0xFFFF, 0, 0, 0}};
    RingSpec halo;
    halo.name = "Halo";
    halo.type = kRingHalo;
    halo.offset = 1000;
    halo.inside = 250;
    halo.outside = 300;
    halo.stops = {{250, 0xFFFF, 0, 0, 0}, {275, 0xFFFF, 30000, 40000, 65535}, {300, 0xFFFF, 0, 0, 0}};
    RingSpec reflection;
    reflection.name = "Reflection";
    reflection.offset = -500;
    reflection.outside = 80;
    reflection.stops = {{0, 0xFFFF, 20000, 65535, 20000}, {80, 0xFFFF, 0, 0, 0}};

    add(kRingResType, 10, ringResource(glow), glow.name);
    add(kRingResType, 11, ringResource(halo), halo.name);
    add(kRingResType, 12, ringResource(reflection), reflection.name);
    add(kStreakResType, 20, streakResource(StreakSpec{}), "Streak");
    add(kFlareResType, static_cast<std::int16_t>(kFlareResBaseID + style),
        flareInfoResource({{kRingResType, 10, 12}, {kStreakResType, 20, 20}}), "Standard");
}

} // namespace glintwave::testhost
