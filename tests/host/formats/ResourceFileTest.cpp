// The resource file reader and writer: round trips, and damaged files refused
// with a message that names the file and the fault.

#include "korvane/BigEndian.h"
#include "korvane/MacRoman.h"
#include "korvane/ResourceFile.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using korvane::Error;
using korvane::ResourceFile;
using korvane::ResourceFileWriter;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kTypeA = 0x41414141;  // 'AAAA'
constexpr std::uint32_t kTypeB = 0x42424242;  // 'BBBB'

// 'AAAA' 1 "one", 'AAAA' -5 "two", 'BBBB' 7 (no name), 'BBBB' 8 (empty).
Bytes sampleFile()
{
    ResourceFileWriter writer;
    writer.add(kTypeB, 7, "", {9, 8, 7});
    writer.add(kTypeA, 1, "one", {1, 2, 3, 4});
    writer.add(kTypeB, 8, "", {});
    writer.add(kTypeA, -5, "two", {5});
    return writer.bytes();
}

TEST(ResourceFile, ReadsBackWhatWasWritten)
{
    const ResourceFile file = ResourceFile::parse(sampleFile(), "sample.rsc");
    EXPECT_EQ(file.types(), (std::vector<std::uint32_t>{kTypeA, kTypeB}));
    EXPECT_EQ(file.ids(kTypeA), (std::vector<std::int16_t>{-5, 1}));
    EXPECT_EQ(file.ids(kTypeB), (std::vector<std::int16_t>{7, 8}));
    EXPECT_EQ(file.get(kTypeA, 1), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(file.get(kTypeA, -5), (Bytes{5}));
    EXPECT_EQ(file.get(kTypeB, 8), Bytes{});
    EXPECT_EQ(file.name(kTypeA, -5), "two");
    EXPECT_EQ(file.name(kTypeB, 7), std::nullopt);
    EXPECT_EQ(file.get(kTypeA, 2), std::nullopt);
    EXPECT_EQ(file.get(0x43434343, 1), std::nullopt);
    EXPECT_TRUE(file.ids(0x43434343).empty());
}

// Where the parts of the sample file lie, read from the file itself.
struct Layout {
    Bytes& bytes;
    std::size_t map() const { return korvane::be::readU32(bytes, 4); }
    std::size_t typeList() const { return map() + korvane::be::readU16(bytes, map() + 24); }
    std::size_t typeEntry(int i) const { return typeList() + 2 + 8 * i; }
    std::size_t refList(int type) const { return typeList() + korvane::be::readU16(bytes, typeEntry(type) + 6); }
    std::size_t ref(int type, int i) const { return refList(type) + 12 * i; }
    std::size_t nameList() const { return map() + korvane::be::readU16(bytes, map() + 26); }
    void u32(std::size_t at, std::uint32_t v) { korvane::be::putU32(bytes, at, v); }
    void u16(std::size_t at, std::uint32_t v) { korvane::be::putU16(bytes, at, v); }
};

struct Corruption {
    const char* name;
    std::function<void(Layout&)> damage;
    const char* message;  // fragment of the expected message
};

class CorruptFile : public ::testing::TestWithParam<Corruption> {};

TEST_P(CorruptFile, IsRefusedWithAMessageNamingFileAndFault)
{
    Bytes bytes = sampleFile();
    Layout layout{bytes};
    GetParam().damage(layout);
    try {
        ResourceFile::parse(bytes, "broken.rsc");
        FAIL() << "accepted a damaged file";
    } catch (const Error& e) {
        const std::string message = e.what();
        EXPECT_EQ(message.rfind("broken.rsc: ", 0), 0u) << message;
        EXPECT_NE(message.find(GetParam().message), std::string::npos) << message;
    }
}

const Corruption kCorruptions[] = {
    {"TruncatedHeader", [](Layout& l) { l.bytes.resize(10); }, "truncated header"},
    {"DataPastEnd", [](Layout& l) { l.u32(0, static_cast<std::uint32_t>(l.bytes.size())); },
     "data area (offset"},
    {"DataInHeader", [](Layout& l) { l.u32(0, 8); }, "overlaps the header"},
    {"MapPastEnd", [](Layout& l) { l.bytes.pop_back(); }, "runs past the end of the file"},
    {"MapOverlapsData", [](Layout& l) { l.u32(8, korvane::be::readU32(l.bytes, 8) + 8); },
     "overlaps the data area"},
    {"MapTooShort", [](Layout& l) { l.u32(12, 20); }, "too short"},
    {"TypeCountLies", [](Layout& l) { l.u16(l.typeList(), 200); }, "type list claims 201 types"},
    {"TypeListOutsideMap", [](Layout& l) { l.u16(l.map() + 24, 0xFFF0); }, "type list offset"},
    {"NameListOutsideMap", [](Layout& l) { l.u16(l.map() + 26, 0xFFF0); }, "name list offset"},
    {"NameListInTypeList", [](Layout& l) { l.u16(l.map() + 26, 30); }, "overlaps the type list"},
    {"RefListOutsideMap", [](Layout& l) { l.u16(l.typeEntry(0) + 6, 0xFF00); }, "lies outside the map"},
    {"RefListOverType", [](Layout& l) { l.u16(l.typeEntry(0) + 6, 2); }, "overlaps the type list"},
    {"RefCountLies", [](Layout& l) { l.u16(l.typeEntry(1) + 4, 2); }, "(map offset 70, 3 entries) lies outside the map"},
    {"NameListInsideRefList", [](Layout& l) { l.u16(l.map() + 26, 90); }, "'BBBB' (map offset 70, 2 entries) overlaps the name list"},
    {"RefListsShareBytes",
     [](Layout& l) { l.u16(l.typeEntry(1) + 6, korvane::be::readU16(l.bytes, l.typeEntry(0) + 6)); },
     "reference lists of 'AAAA' and 'BBBB' overlap"},
    {"DuplicateType", [](Layout& l) { l.u32(l.typeEntry(1), kTypeA); }, "'AAAA' is listed twice"},
    {"DuplicateId", [](Layout& l) { l.u16(l.ref(0, 1), 0xFFFB); }, "'AAAA' id -5 appears twice"},
    {"NameOffsetOutside", [](Layout& l) { l.u16(l.ref(0, 0) + 2, 0x7000); }, "lies outside the name list"},
    {"NameRunsPastList", [](Layout& l) { l.bytes[l.nameList() + 4] = 200; }, "runs past the end of the name list"},
    {"BlobOffsetOutside", [](Layout& l) { l.bytes[l.ref(1, 0) + 5] = 0x7F; }, "lies outside the data area"},
    {"BlobsShareBytes", [](Layout& l) { l.bytes[l.ref(1, 1) + 7] = l.bytes[l.ref(1, 0) + 7]; },
     "data of 'BBBB' id 7 and 'BBBB' id 8 overlap"},
    {"BlobLengthLies",
     [](Layout& l) {
         const std::size_t data = korvane::be::readU32(l.bytes, 0);
         l.u32(data, 0x10000);
     },
     "runs past the end of the data area"},
};

INSTANTIATE_TEST_SUITE_P(Damage, CorruptFile, ::testing::ValuesIn(kCorruptions),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(MacRoman, EveryByteRoundTripsThroughUtf8)
{
    std::string all;
    for (int b = 0; b < 256; ++b)
        all += static_cast<char>(b);
    EXPECT_EQ(korvane::utf8ToMacRoman(korvane::macRomanToUtf8(all)), all);
}

TEST(MacRoman, ConvertsAndRefuses)
{
    EXPECT_EQ(korvane::utf8ToMacRoman("Caf\xC3\xA9"), "Caf\x8E");             // é
    EXPECT_EQ(korvane::utf8ToMacRoman("Glintwave\xE2\x84\xA2"), "Glintwave\xAA");  // ™
    EXPECT_EQ(korvane::utf8ToMacRoman("90\xC2\xB0"), "90\xA1");                // °
    EXPECT_EQ(korvane::macRomanToUtf8("\xDB"), "\xE2\x82\xAC");                // €
    std::string bad;
    EXPECT_EQ(korvane::utf8ToMacRoman("ring \xC5\x82", &bad), std::nullopt);  // ł
    EXPECT_EQ(bad, "\xC5\x82");
    EXPECT_EQ(korvane::utf8ToMacRoman("cut \xC3"), std::nullopt);
    EXPECT_EQ(korvane::utf8ToMacRoman("overlong \xC0\xAF"), std::nullopt);
}

} // namespace
