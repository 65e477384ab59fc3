// ResourceFile.cpp - parsing and writing resource files (layout in ResourceFile.h).

#include "korvane/ResourceFile.h"

#include "korvane/BigEndian.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <span>
#include <system_error>
#include <tuple>
#include <utility>

namespace korvane {
namespace {

constexpr std::uint64_t kHeaderSize = 16;
// The header copy, next-map handle, file reference, attributes and the two
// list offsets.
constexpr std::uint64_t kMapHeaderSize = 28;
constexpr std::uint64_t kTypeEntrySize = 8;
constexpr std::uint64_t kRefEntrySize = 12;
constexpr std::uint16_t kNoName = 0xFFFF;
// Data offsets in the reference lists have 24 bits.
constexpr std::uint64_t kMaxDataOffset = 0xFFFFFF;
// Where the writer starts the data area: the header and 240 reserved bytes
// come first, as resource tools expect.
constexpr std::uint64_t kWriterDataOffset = 256;
// No resource file of ours comes anywhere near this; a larger file is refused
// before it is read into memory.
constexpr std::uint64_t kMaxFileSize = 256ull * 1024 * 1024;

[[noreturn]] void fail(const std::string& file, const std::string& what)
{
    throw Error(ErrorPlace{file}, what);
}

std::string quoted(std::uint32_t type)
{
    return "'" + fourCCText(type) + "'";
}

// A byte range of the map or the data area and what it belongs to.
struct Extent {
    std::uint64_t start;
    std::uint64_t end;
    std::uint32_t type;
    std::int16_t id;
};

// The first two extents (in address order) that share bytes; sorts them in place.
std::optional<std::pair<Extent, Extent>> firstOverlap(std::vector<Extent>& extents)
{
    const auto inAddressOrder = [](const Extent& a, const Extent& b) {
        return std::tie(a.start, a.type, a.id) < std::tie(b.start, b.type, b.id);
    };
    // Files written in order (ours are) need no sort.
    if (!std::is_sorted(extents.begin(), extents.end(), inAddressOrder))
        std::sort(extents.begin(), extents.end(), inAddressOrder);
    for (std::size_t i = 1; i < extents.size(); ++i) {
        if (extents[i].start < extents[i - 1].end)
            return std::pair{extents[i - 1], extents[i]};
    }
    return std::nullopt;
}

std::string num(std::uint64_t value)
{
    return std::to_string(value);
}

} // namespace

// ---------------------------------------------------------------------------
// Parsing

ResourceFile ResourceFile::load(const std::filesystem::path& path)
{
    const std::string file = path.string();
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        if (!std::filesystem::exists(path, error))
            fail(file, "cannot open: no such file");
        fail(file, "cannot open: not a regular file");
    }
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error)
        fail(file, "cannot open: " + error.message());
    if (size > kMaxFileSize)
        fail(file, "file is too large for a resource file (" + num(size) + " bytes)");

    std::ifstream in(path, std::ios::binary);
    if (!in)
        fail(file, "cannot open for reading");
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
    if (size > 0 && !in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size)))
        fail(file, "read error");
    return parse(std::move(bytes), file);
}

ResourceFile ResourceFile::parse(std::vector<std::uint8_t> bytes, std::string displayName)
{
    const std::string file = displayName;
    const std::uint64_t size = bytes.size();
    const std::span<const std::uint8_t> all(bytes);

    if (size < kHeaderSize)
        fail(file, "truncated header: the file has " + num(size) + " bytes, a header needs 16");

    const std::uint64_t dataOffset = be::readU32(all, 0);
    const std::uint64_t mapOffset = be::readU32(all, 4);
    const std::uint64_t dataLength = be::readU32(all, 8);
    const std::uint64_t mapLength = be::readU32(all, 12);

    // Messages are spelled out only when a check fails: a good file builds none.
    const auto dataText = [&] { return "data area (offset " + num(dataOffset) + ", length " + num(dataLength) + ")"; };
    const auto mapText = [&] { return "map (offset " + num(mapOffset) + ", length " + num(mapLength) + ")"; };
    if (dataOffset < kHeaderSize)
        fail(file, dataText() + " overlaps the header");
    if (dataOffset + dataLength > size)
        fail(file, dataText() + " runs past the end of the file (" + num(size) + " bytes)");
    if (mapOffset < kHeaderSize)
        fail(file, mapText() + " overlaps the header");
    if (mapOffset + mapLength > size)
        fail(file, mapText() + " runs past the end of the file (" + num(size) + " bytes)");
    if (mapLength < kMapHeaderSize + 2)
        fail(file, mapText() + " is too short to hold a type list");
    if (dataLength > 0 && mapOffset < dataOffset + dataLength && dataOffset < mapOffset + mapLength)
        fail(file, mapText() + " overlaps the " + dataText());

    const std::span<const std::uint8_t> map = all.subspan(mapOffset, mapLength);
    const std::span<const std::uint8_t> data = all.subspan(dataOffset, dataLength);
    const std::uint64_t typeListOffset = be::readU16(map, 24);
    const std::uint64_t nameListOffset = be::readU16(map, 26);

    if (typeListOffset < kMapHeaderSize || typeListOffset + 2 > mapLength)
        fail(file, "type list offset " + num(typeListOffset) + " lies outside the map's type list area (map length " +
                       num(mapLength) + ")");
    const std::uint64_t typeCount = (be::readU16(map, typeListOffset) + 1u) & 0xFFFFu;
    const std::uint64_t typeListEnd = typeListOffset + 2 + kTypeEntrySize * typeCount;
    if (typeListEnd > mapLength)
        fail(file, "type list claims " + num(typeCount) + " types, more than the map (" + num(mapLength) +
                       " bytes) can hold");
    if (nameListOffset > mapLength)
        fail(file, "name list offset " + num(nameListOffset) + " lies outside the map (" + num(mapLength) + " bytes)");
    if (nameListOffset < typeListEnd)
        fail(file, "name list (map offset " + num(nameListOffset) + ") overlaps the type list (map offsets " +
                       num(typeListOffset) + " to " + num(typeListEnd) + ")");

    ResourceFile result;
    result.displayName_ = std::move(displayName);

    // Every reference list and every blob, to find any that share bytes.
    std::vector<Extent> refLists;
    std::vector<Extent> blobs;
    for (std::uint64_t t = 0; t < typeCount; ++t) {
        const std::uint64_t entry = typeListOffset + 2 + kTypeEntrySize * t;
        const std::uint32_t type = be::readU32(map, entry);
        const std::uint64_t refCount = be::readU16(map, entry + 4) + std::uint64_t{1};
        const std::uint64_t refStart = typeListOffset + be::readU16(map, entry + 6);
        const std::uint64_t refEnd = refStart + kRefEntrySize * refCount;
        const auto listText = [&] {
            return "reference list of " + quoted(type) + " (map offset " + num(refStart) + ", " + num(refCount) +
                   " entries)";
        };
        if (result.index_.contains(type))
            fail(file, "type " + quoted(type) + " is listed twice");
        if (refStart < typeListEnd)
            fail(file, listText() + " overlaps the type list");
        if (refEnd > mapLength)
            fail(file, listText() + " lies outside the map (" + num(mapLength) + " bytes)");
        if (refEnd > nameListOffset)
            fail(file, listText() + " overlaps the name list (map offset " + num(nameListOffset) + ")");
        refLists.push_back({refStart, refEnd, type, 0});

        auto& entries = result.index_[type];
        for (std::uint64_t r = 0; r < refCount; ++r) {
            const std::uint64_t ref = refStart + kRefEntrySize * r;
            const std::int16_t id = be::readS16(map, ref);
            const std::uint16_t nameOffset = be::readU16(map, ref + 2);
            const std::uint64_t blobOffset = be::readU24(map, ref + 5);
            const auto what = [&] { return quoted(type) + " id " + std::to_string(id); };
            if (entries.contains(id))
                fail(file, what() + " appears twice");
            if (blobOffset + 4 > dataLength)
                fail(file, what() + ": data offset " + num(blobOffset) + " lies outside the data area (" +
                               num(dataLength) + " bytes)");
            const std::uint64_t blobLength = be::readU32(data, blobOffset);
            if (blobOffset + 4 + blobLength > dataLength)
                fail(file, what() + ": data length " + num(blobLength) + " at data offset " + num(blobOffset) +
                               " runs past the end of the data area (" + num(dataLength) + " bytes)");
            blobs.push_back({blobOffset, blobOffset + 4 + blobLength, type, id});
            Entry e;
            e.offset = static_cast<std::size_t>(dataOffset + blobOffset + 4);
            e.length = static_cast<std::size_t>(blobLength);
            if (nameOffset != kNoName) {
                const std::uint64_t nameListLength = mapLength - nameListOffset;
                const std::uint64_t at = nameListOffset + nameOffset;
                if (nameOffset >= nameListLength)
                    fail(file, what() + ": name offset " + num(nameOffset) + " lies outside the name list (" +
                                   num(nameListLength) + " bytes)");
                const std::uint64_t nameLength = map[at];
                if (at + 1 + nameLength > mapLength)
                    fail(file, what() + ": name at name offset " + num(nameOffset) + " (" + num(nameLength) +
                                   " characters) runs past the end of the name list");
                e.name = std::string(reinterpret_cast<const char*>(map.data() + at + 1), nameLength);
            }
            entries.emplace(id, std::move(e));
        }
    }

    if (const auto overlap = firstOverlap(refLists))
        fail(file, "reference lists of " + quoted(overlap->first.type) + " and " + quoted(overlap->second.type) +
                       " overlap");
    if (const auto overlap = firstOverlap(blobs))
        fail(file, "data of " + quoted(overlap->first.type) + " id " + std::to_string(overlap->first.id) + " and " +
                       quoted(overlap->second.type) + " id " + std::to_string(overlap->second.id) + " overlap");

    result.bytes_ = std::move(bytes);
    return result;
}

std::optional<std::vector<std::uint8_t>> ResourceFile::get(std::uint32_t type, std::int16_t id) const
{
    const auto t = index_.find(type);
    if (t == index_.end())
        return std::nullopt;
    const auto e = t->second.find(id);
    if (e == t->second.end())
        return std::nullopt;
    const auto first = bytes_.begin() + static_cast<std::ptrdiff_t>(e->second.offset);
    return std::vector<std::uint8_t>(first, first + static_cast<std::ptrdiff_t>(e->second.length));
}

std::vector<std::uint32_t> ResourceFile::types() const
{
    std::vector<std::uint32_t> result;
    for (const auto& [type, entries] : index_)
        result.push_back(type);
    return result;
}

std::vector<std::int16_t> ResourceFile::ids(std::uint32_t type) const
{
    std::vector<std::int16_t> result;
    if (const auto t = index_.find(type); t != index_.end()) {
        for (const auto& [id, entry] : t->second)
            result.push_back(id);
    }
    return result;
}

std::optional<std::string> ResourceFile::name(std::uint32_t type, std::int16_t id) const
{
    const auto t = index_.find(type);
    if (t == index_.end())
        return std::nullopt;
    const auto e = t->second.find(id);
    if (e == t->second.end())
        return std::nullopt;
    return e->second.name;
}

// ---------------------------------------------------------------------------
// Writing

void ResourceFileWriter::add(std::uint32_t type, std::int16_t id, std::string name, std::vector<std::uint8_t> data)
{
    if (name.size() > 255)
        throw Error("resource " + quoted(type) + " id " + std::to_string(id) + ": name is longer than 255 bytes");
    auto& entries = resources_[type];
    if (entries.contains(id))
        throw Error("resource " + quoted(type) + " id " + std::to_string(id) + " is defined twice");
    entries.emplace(id, Pending{std::move(name), std::move(data)});
}

bool ResourceFileWriter::contains(std::uint32_t type, std::int16_t id) const
{
    const auto t = resources_.find(type);
    return t != resources_.end() && t->second.contains(id);
}

std::vector<std::uint8_t> ResourceFileWriter::bytes() const
{
    std::vector<std::uint8_t> data;
    std::vector<std::uint8_t> names;
    std::vector<std::uint8_t> typeList;
    std::vector<std::uint8_t> refLists;

    // add() never leaves a type without resources.
    const std::size_t typeCount = resources_.size();

    const std::uint64_t refListBase = 2 + kTypeEntrySize * typeCount;
    be::appendU16(typeList, static_cast<std::uint32_t>(typeCount - 1));  // 0xFFFF when empty
    for (const auto& [type, entries] : resources_) {
        const std::uint64_t refListOffset = refListBase + refLists.size();
        if (refListOffset > 0xFFFF)
            throw Error("too many resources for the map's 16-bit offsets");
        be::appendU32(typeList, type);
        be::appendU16(typeList, static_cast<std::uint32_t>(entries.size() - 1));
        be::appendU16(typeList, static_cast<std::uint32_t>(refListOffset));

        for (const auto& [id, pending] : entries) {
            const std::uint64_t blobOffset = data.size();
            if (blobOffset > kMaxDataOffset)
                throw Error("resource data exceeds the 24-bit offsets of the layout");
            if (pending.data.size() > 0xFFFFFFFFu - data.size() - 4)
                throw Error("resource data exceeds the layout's 32-bit lengths");
            std::uint32_t nameOffset = kNoName;
            if (!pending.name.empty()) {
                if (names.size() >= kNoName)
                    throw Error("resource names exceed the name list's 16-bit offsets");
                nameOffset = static_cast<std::uint32_t>(names.size());
                be::appendU8(names, static_cast<std::uint32_t>(pending.name.size()));
                names.insert(names.end(), pending.name.begin(), pending.name.end());
            }
            be::appendU16(refLists, static_cast<std::uint16_t>(id));
            be::appendU16(refLists, nameOffset);
            be::appendU8(refLists, 0);  // attributes
            be::appendU24(refLists, static_cast<std::uint32_t>(blobOffset));
            be::appendU32(refLists, 0);  // reserved handle
            be::appendU32(data, static_cast<std::uint32_t>(pending.data.size()));
            data.insert(data.end(), pending.data.begin(), pending.data.end());
        }
    }

    const std::uint64_t nameListOffset = kMapHeaderSize + typeList.size() + refLists.size();
    if (nameListOffset > 0xFFFF)
        throw Error("too many resources for the map's 16-bit offsets");
    const std::uint64_t mapLength = nameListOffset + names.size();
    const std::uint64_t mapOffset = kWriterDataOffset + data.size();
    if (mapOffset + mapLength > 0xFFFFFFFFu)
        throw Error("resource file exceeds the layout's 32-bit offsets");

    std::vector<std::uint8_t> header;
    be::appendU32(header, static_cast<std::uint32_t>(kWriterDataOffset));
    be::appendU32(header, static_cast<std::uint32_t>(mapOffset));
    be::appendU32(header, static_cast<std::uint32_t>(data.size()));
    be::appendU32(header, static_cast<std::uint32_t>(mapLength));

    std::vector<std::uint8_t> out;
    out.reserve(static_cast<std::size_t>(mapOffset + mapLength));
    out.insert(out.end(), header.begin(), header.end());
    out.resize(kWriterDataOffset, 0);
    out.insert(out.end(), data.begin(), data.end());
    out.insert(out.end(), header.begin(), header.end());  // the map's copy of the header
    be::appendU32(out, 0);                                // next-map handle
    be::appendU16(out, 0);                                // file reference
    be::appendU16(out, 0);                                // attributes
    be::appendU16(out, static_cast<std::uint32_t>(kMapHeaderSize));
    be::appendU16(out, static_cast<std::uint32_t>(nameListOffset));
    out.insert(out.end(), typeList.begin(), typeList.end());
    out.insert(out.end(), refLists.begin(), refLists.end());
    out.insert(out.end(), names.begin(), names.end());
    return out;
}

// ---------------------------------------------------------------------------
// Four-character codes

std::string fourCCText(std::uint32_t code)
{
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const char c = static_cast<char>((code >> shift) & 0xFF);
        if (c < 0x20 || c > 0x7E) {
            char hex[11];
            std::snprintf(hex, sizeof hex, "0x%08X", code);
            return hex;
        }
        text += c;
    }
    return text;
}

std::uint32_t fourCCFromText(std::string_view text)
{
    if (text.size() == 4) {
        std::uint32_t code = 0;
        for (const char c : text)
            code = (code << 8) | static_cast<std::uint8_t>(c);
        return code;
    }
    if (text.size() == 10 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        std::uint32_t code = 0;
        for (const char c : text.substr(2)) {
            int digit;
            if (c >= '0' && c <= '9')
                digit = c - '0';
            else if (c >= 'a' && c <= 'f')
                digit = c - 'a' + 10;
            else if (c >= 'A' && c <= 'F')
                digit = c - 'A' + 10;
            else
                throw Error("not a four-character code: \"" + std::string(text) + "\"");
            code = (code << 4) | static_cast<std::uint32_t>(digit);
        }
        return code;
    }
    throw Error("not a four-character code: \"" + std::string(text) + "\"");
}

} // namespace korvane
