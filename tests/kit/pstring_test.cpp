// Pascal strings: the temporary ring, conversions, searches and edits.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PStrTestUtil.h"
#include "PString.h"

using kittest::PBuf;
using kittest::Str;

TEST(PStrRing, TwentySlotsThenTheFirstAgain)
{
    std::vector<unsigned char*> slots;
    for (int i = 0; i < kPStrQueueSize; ++i) {
        slots.push_back(PStrNext());
    }
    for (size_t i = 0; i < slots.size(); ++i) {
        for (size_t j = i + 1; j < slots.size(); ++j) {
            EXPECT_NE(slots[i], slots[j]) << i << " and " << j;
        }
    }
    EXPECT_EQ(PStrNext(), slots[0]);
    EXPECT_EQ(PStrNext(), slots[1]);
}

TEST(PStrRing, EachRoutineTakesOneTemporary)
{
    // A caller may keep 19 temporaries across one call; routines built from
    // other temporary-returning routines must not eat more than one slot.
    unsigned char* before = PStrNext();
    PStrTimeStr(93784);
    PStrKSStr(-1024000);
    PStrDateStr(1000000, 1000000);
    PStrFloatStr(2.5, 3);
    for (int i = 0; i < kPStrQueueSize - 5; ++i) {
        PStrNext();
    }
    EXPECT_EQ(PStrNext(), before);
}

TEST(PStrConvert, ZeroTerminatedAndPascal)
{
    std::string longText(300, 'x');
    longText[254] = 'L';
    std::vector<char> buf(longText.begin(), longText.end());
    buf.push_back('\0');
    unsigned char* p = PStrC2P(buf.data());
    EXPECT_EQ(p[0], 255);
    EXPECT_EQ(p[255], 'L');

    char text[] = "hello";
    unsigned char* hp = PStrC2P(text);
    EXPECT_EQ(Str(hp), "hello");
    EXPECT_STREQ(PStrP2C(hp), "hello");

    EXPECT_EQ(Str(PS(longText.c_str())).size(), 255u);
    EXPECT_EQ(Str(PS(nullptr)), "");
    PBuf abc("abc");
    EXPECT_STREQ(CS(abc.s), "abc");
    EXPECT_STREQ(PrintPStr(abc.s), "abc");
    char out[8];
    EXPECT_EQ(PStrPToC(abc.s, out), out);
    EXPECT_STREQ(out, "abc");

    EXPECT_EQ(CStrLength("four"), 4);
    EXPECT_EQ(CStrIn('u', "four"), 2);
    EXPECT_EQ(CStrIn('z', "four"), -1);
    char copy[8];
    EXPECT_STREQ(CStrCpy(copy, "four"), "four");
    EXPECT_STREQ(PrintBoolean(true), "1");
    EXPECT_STREQ(PrintBoolean(false), "0");
}

TEST(PStrConvert, FourCharacterCodes)
{
    EXPECT_EQ(Str(PStrType(0x464C4152u)), "FLAR");
    EXPECT_EQ(MakeType("FLAR"), 0x464C4152u);
    EXPECT_EQ(MakeType(PStrType(KV_FOURCC('R', 'I', 'N', 'G')) + 1), KV_FOURCC('R', 'I', 'N', 'G'));
}

TEST(PStrCompare, Table)
{
    struct Case {
        const char* a;
        const char* b;
        int32_t want;
    };
    const Case cases[] = {
        {"abc", "abc", 0},  {"abc", "abd", -1}, {"abd", "abc", 1},   {"ab", "abcd", -2},
        {"abcd", "a", 3},   {"", "", 0},        {"\xC0", "a", 1},    {"Z", "a", -1},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(PStrCompare(PBuf(c.a).s, PBuf(c.b).s), c.want) << c.a << " vs " << c.b;
    }
}

TEST(PStrAppend, CutsAt255)
{
    PBuf dst(std::string(200, 'a'));
    PBuf src(std::string(200, 'b'));
    PStrAppend(dst.s, src.s);
    EXPECT_EQ(dst.str(), std::string(200, 'a') + std::string(55, 'b'));

    PBuf self("ab");
    PStrAppend(self.s, self.s);
    EXPECT_EQ(self.str(), "abab");

    EXPECT_EQ(Str(PStrAppend(nullptr, PBuf("copy").s)), "copy");

    PBuf full(std::string(255, 'c'));
    PStrAppendChar(full.s, 'd');
    EXPECT_EQ(full.str(), std::string(255, 'c'));
    PBuf one("x");
    EXPECT_EQ(Str(PStrAppendChar(one.s, 'y')), "xy");

    EXPECT_EQ(Str(PStrConcat(PBuf("a").s, PBuf("bc").s, PBuf("").s, PBuf("d").s, nullptr)), "abcd");
}

TEST(PStrSearch, InAndPos)
{
    struct Case {
        const char* sub;
        const char* s;
        int16_t want;
    };
    const Case cases[] = {
        {"", "", 1},       {"", "abc", 1},    {"a", "abc", 1},     {"bc", "abc", 2},
        {"abc", "abc", 1}, {"abcd", "abc", 0}, {"x", "abc", 0},    {"aab", "aaab", 2},
        {"c", "abcabc", 3},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(PStrPos(PBuf(c.sub).s, PBuf(c.s).s), c.want) << c.sub << " in " << c.s;
    }
    EXPECT_EQ(PStrIn('c', PBuf("abcabc").s), 3);
    EXPECT_EQ(PStrIn('z', PBuf("abc").s), 0);
}

TEST(PStrEdit, SubDeleteOmit)
{
    struct Case {
        int16_t pos;
        int16_t count;
        const char* sub;   // PStrSub("abcdef", pos, count)
        const char* omit;  // PStrOmit("abcdef", pos, count)
    };
    const Case cases[] = {
        {1, 2, "ab", "cdef"}, {3, 2, "cd", "abef"},     {5, 10, "ef", "abcd"},
        {6, 1, "f", "abcde"}, {7, 1, "", "abcdef"},     {2, 0, "", "abcdef"},
        {2, -3, "", "abcdef"}, {1, 32767, "abcdef", ""}, {32767, 32767, "", "abcdef"},
    };
    for (const Case& c : cases) {
        PBuf s("abcdef");
        EXPECT_EQ(Str(PStrSub(s.s, c.pos, c.count)), c.sub) << c.pos << "," << c.count;
        EXPECT_EQ(Str(PStrOmit(s.s, c.pos, c.count)), c.omit) << c.pos << "," << c.count;
        PStrDelete(s.s, c.pos, c.count);
        EXPECT_EQ(s.str(), c.omit) << c.pos << "," << c.count;
    }
}

TEST(PStrEdit, InsertCutsTheDestinationAndAppendsPastItsEnd)
{
    struct Case {
        std::string src;
        std::string dst;
        int16_t pos;
        std::string want;
    };
    const std::string d250 = std::string(245, 'd') + "VWXYZ";
    const std::string s10(10, 's');
    const Case cases[] = {
        {"XY", "abc", 0, "XYabc"},
        {"XY", "abc", 1, "XYabc"},
        {"XY", "abc", 2, "aXYbc"},
        {"XY", "abc", 4, "abcXY"},
        {"XY", "abc", 200, "abcXY"},
        {"", "abc", 2, "abc"},
        {"XY", "", 5, "XY"},
        // 250 + 10 > 255: the destination is first cut to 245 characters.
        {s10, d250, 1, s10 + std::string(245, 'd')},
        {s10, d250, 246, std::string(245, 'd') + s10},
        {s10, d250, 250, std::string(245, 'd') + s10},
        {std::string(255, 'S'), "abc", 2, std::string(255, 'S')},
    };
    for (const Case& c : cases) {
        PBuf dst(c.dst);
        PStrInsert(PBuf(c.src).s, dst.s, c.pos);
        EXPECT_EQ(dst.str(), c.want) << "pos " << c.pos << " dst length " << c.dst.size();
        EXPECT_EQ(Str(PStrInclude(PBuf(c.src).s, PBuf(c.dst).s, c.pos)), c.want);
    }

    PBuf self("ab");
    PStrInsert(self.s, self.s, 2);
    EXPECT_EQ(self.str(), "aabb");
}

TEST(PStrEdit, CaseAndSpaces)
{
    PBuf s("a Mixed\xE0 text z");
    EXPECT_EQ(Str(PStrUpCase(s.s)), "A MIXED\xE0 TEXT Z");
    EXPECT_EQ(s.str(), "a Mixed\xE0 text z");
    PStrStrip(s.s);
    EXPECT_EQ(s.str(), "aMixed\xE0textz");
    PBuf spaces("   ");
    PStrStrip(spaces.s);
    EXPECT_EQ(spaces.str(), "");
}
