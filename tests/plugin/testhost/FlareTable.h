// FlareTable.h - flare table files for the test host.
//
// The builders write the stored records of a flare table byte for byte,
// big-endian, from readable specs: a style's table ('FLAR', a count and
// groups of element ids), rings ('RING', a 60-byte header and 12-byte colour
// stops) and streaks ('STRK', a 68-byte header and stops). A FlareTableFolder
// is a fresh temporary folder holding Glintwave.rsc; it makes itself the
// plug-in's home folder, so the plug-in opens that file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "glintwave/GlintwaveRecords.h"
#include "TempFolder.h"

namespace glintwave::testhost {

using Bytes = std::vector<std::uint8_t>;

struct StopSpec {
    std::int32_t radius = 0;  // in the element's units, like its outside value
    std::uint16_t alpha = 0xFFFF;
    std::uint16_t red = 0;
    std::uint16_t green = 0;
    std::uint16_t blue = 0;
};

struct RingSpec {
    std::string name = "Ring";             // stored as a 32-byte Pascal string
    std::optional<std::uint8_t> nameLength; // a stored length byte that lies
    std::int32_t type = kRingReflection;
    std::uint32_t mode = 0;
    std::int32_t units = 1000;
    std::int32_t offset = 500;
    std::int32_t inside = 0;
    std::int32_t outside = 100;
    std::optional<std::int32_t> declaredStops; // default: stops.size()
    std::vector<StopSpec> stops{{0, 0xFFFF, 65535, 65535, 65535}, {100, 0xFFFF, 0, 0, 0}};
};

struct StreakSpec {
    std::int32_t type = 0;
    std::uint32_t mode = 0;
    std::int32_t units = 1000;
    std::int32_t offset = 1000;
    std::int32_t inside = 0;
    std::int32_t outside = 400;
    std::int32_t dirX = 1;
    std::int32_t dirY = 0;
    std::optional<std::int32_t> declaredStops;
    std::vector<StopSpec> stops{{0, 0xFFFF, 65535, 65535, 65535}, {400, 0xFFFF, 0, 0, 0}};
};

struct GroupSpec {
    std::uint32_t type = kRingResType;
    std::int16_t first = 0;
    std::int16_t last = 0;
};

Bytes ringResource(const RingSpec& ring);
Bytes streakResource(const StreakSpec& streak);
// declaredCount defaults to groups.size().
Bytes flareInfoResource(const std::vector<GroupSpec>& groups, std::optional<std::int32_t> declaredCount = {});

// Big-endian writers.
void appendU16(Bytes& out, std::uint32_t value);
void appendU32(Bytes& out, std::uint32_t value);

// A RingControl as the control block stores it (big-endian).
Bytes storedRingControl(double scale, double intensity, std::int16_t alpha, std::int16_t red, std::int16_t green,
                        std::int16_t blue);
// Reads a stored RingControl back into host order.
RingControl readRingControl(const std::uint8_t* stored);

class FlareTableFolder {
public:
    // Makes a fresh temporary folder and points the toolbox's home folder at it.
    FlareTableFolder();
    ~FlareTableFolder();
    FlareTableFolder(const FlareTableFolder&) = delete;
    FlareTableFolder& operator=(const FlareTableFolder&) = delete;

    // Resources of the next write(); a later add of the same type and id
    // replaces the earlier one.
    void add(std::uint32_t type, std::int16_t id, Bytes data, std::string name = {});
    // Writes Glintwave.rsc from the resources added so far.
    void write();
    // Writes raw bytes as Glintwave.rsc (for damaged files).
    void writeRaw(const Bytes& bytes);
    void removeFile();
    const std::filesystem::path& folder() const { return folder_.path(); }

    // A small flare table of our own, style 1: an origin glow (10), a halo
    // (11) and a reflection (12) in one ring group, and one streak (20).
    void addStandardStyle(std::int32_t style = 1);

private:
    struct Resource {
        std::uint32_t type;
        std::int16_t id;
        std::string name;
        Bytes data;
    };
    testsupport::TempFolder folder_{"glintwave-host"};
    std::vector<Resource> resources_;
};

} // namespace glintwave::testhost
