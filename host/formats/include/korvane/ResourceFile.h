// ResourceFile.h - resource files in the classic data-fork layout.
//
// A resource file is a set of byte blobs, each known by a four-character type
// and a signed 16-bit id, optionally named. On disk, all numbers big-endian:
//
//   header (16 bytes)   data offset U32, map offset U32, data length U32,
//                       map length U32 (offsets from the start of the file)
//   data area           blobs, each a U32 length followed by its bytes
//   map                 16 bytes (a copy of the header, not read), next-map
//                       handle U32, file reference U16, attributes U16,
//                       type list offset U16, name list offset U16 (both
//                       from the start of the map)
//   type list           type count - 1 (U16; 0xFFFF = no types), then per
//                       type: type U32, resource count - 1 U16, offset of its
//                       reference list U16 (from the start of the type list)
//   reference lists     12 bytes per resource: id S16, name offset U16 (from
//                       the start of the name list, 0xFFFF = no name),
//                       attributes U8, data offset U24 (from the start of the
//                       data area), reserved handle U32
//   name list           names as a length byte followed by the characters
//
// Files are untrusted. `parse` checks every offset and length before it is
// used and refuses a truncated, overlapping or inconsistent file with a
// Error whose text is "<file>: <what is wrong>". Names are returned as
// the raw bytes of the file (Mac OS Roman by convention).
#pragma once

#include "korvane/Error.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

class ResourceFile {
public:
    // Reads and parses a file; throws Error "<file>: <what is wrong>".
    static ResourceFile load(const std::filesystem::path& path);
    // Parses bytes already in memory; displayName stands for the file in messages.
    static ResourceFile parse(std::vector<std::uint8_t> bytes, std::string displayName);

    // A fresh copy of the resource's bytes every call (callers convert in
    // place), or nullopt when there is no such resource.
    std::optional<std::vector<std::uint8_t>> get(std::uint32_t type, std::int16_t id) const;
    // Types present, in ascending order.
    std::vector<std::uint32_t> types() const;
    // Ids of one type, in ascending order (empty for an absent type).
    std::vector<std::int16_t> ids(std::uint32_t type) const;
    // The raw bytes of the resource's name; nullopt when the resource is
    // absent or has no name.
    std::optional<std::string> name(std::uint32_t type, std::int16_t id) const;

    const std::string& displayName() const { return displayName_; }

private:
    struct Entry {
        std::size_t offset = 0;  // of the blob's first byte in bytes_
        std::size_t length = 0;
        std::optional<std::string> name;
    };

    ResourceFile() = default;

    std::vector<std::uint8_t> bytes_;
    std::string displayName_;
    std::map<std::uint32_t, std::map<std::int16_t, Entry>> index_;
};

// Builds a resource file in the layout above. The output is a function of the
// resources added, not of the order they were added in: types ascending, ids
// ascending within a type, blobs and names in that same order.
class ResourceFileWriter {
public:
    // Throws Error on a duplicate (type, id) or a name over 255 bytes.
    void add(std::uint32_t type, std::int16_t id, std::string name, std::vector<std::uint8_t> data);
    bool contains(std::uint32_t type, std::int16_t id) const;
    // Throws Error when the resources do not fit the layout's 16-
    // and 24-bit offsets.
    std::vector<std::uint8_t> bytes() const;

private:
    struct Pending {
        std::string name;
        std::vector<std::uint8_t> data;
    };
    std::map<std::uint32_t, std::map<std::int16_t, Pending>> resources_;
};

// "FLAR" for 0x464C4152. Codes with a byte outside printable ASCII are
// written as "0x" and eight hex digits so that they read back unchanged.
std::string fourCCText(std::uint32_t code);
// The reverse of fourCCText: four characters, or "0x" and eight hex digits.
// Throws Error for any other text.
std::uint32_t fourCCFromText(std::string_view text);

} // namespace korvane
