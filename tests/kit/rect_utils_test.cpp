// Short and long rectangles.
#include <gtest/gtest.h>

#include "RectUtils.h"

namespace {

struct R {
    int32_t left, top, right, bottom;
};

L_Rect Make(const R& r)
{
    L_Rect l;
    SetLRect(&l, r.left, r.top, r.right, r.bottom);
    return l;
}

void ExpectRect(const L_Rect& got, const R& want, uint32_t width, uint32_t height, const char* what)
{
    EXPECT_EQ(got.left, want.left) << what;
    EXPECT_EQ(got.top, want.top) << what;
    EXPECT_EQ(got.right, want.right) << what;
    EXPECT_EQ(got.bottom, want.bottom) << what;
    EXPECT_EQ(got.width, width) << what;
    EXPECT_EQ(got.height, height) << what;
}

void ExpectRect(const L_Rect& got, const R& want, const char* what)
{
    ExpectRect(got, want, static_cast<uint32_t>(want.right - want.left),
               static_cast<uint32_t>(want.bottom - want.top), what);
}

TEST(LRect, SetAndWrappingEdges)
{
    L_Rect r;
    SetLRect(&r, INT32_MIN, -5, INT32_MAX, 5);
    EXPECT_EQ(r.width, 0xFFFFFFFFu);
    EXPECT_EQ(r.height, 10u);
    SetLRect(&r, 10, 10, 4, 10);
    EXPECT_EQ(r.width, static_cast<uint32_t>(-6));
    EXPECT_TRUE(EmptyLRect(&r));

    // Offsets move the edges, wrapping at the ends, and keep the extents.
    L_Rect o = Make({1, 2, 11, 22});
    OffsetLRect(&o, INT32_MAX, -3);
    ExpectRect(o, {INT32_MIN, -1, INT32_MIN + 10, 19}, 10u, 20u, "offset");

    SRect s;
    SetSRect(&s, 1, 2, 30, 40);
    OffsetSRect(&s, -1, 2);
    EXPECT_EQ(s.left, 0);
    EXPECT_EQ(s.top, 4);
    EXPECT_EQ(s.right, 29);
    EXPECT_EQ(s.bottom, 42);
    L_Rect w;
    SRectToLRect(&s, &w);
    ExpectRect(w, {0, 4, 29, 42}, "widened");
    L_Rect big = Make({-70000, 5, 70000, 6});
    SRect narrow;
    LRectToSRect(&big, &narrow);
    EXPECT_EQ(narrow.left, static_cast<int16_t>(-70000 & 0xFFFF));
    EXPECT_EQ(narrow.right, static_cast<int16_t>(70000 & 0xFFFF));
}

struct PairCase {
    R a;
    R b;
    bool sect;
    R sectWant;
    R unionWant;
};

const PairCase kPairs[] = {
    {{0, 0, 10, 10}, {5, 5, 20, 20}, true, {5, 5, 10, 10}, {0, 0, 20, 20}},
    {{5, 5, 20, 20}, {0, 0, 10, 10}, true, {5, 5, 10, 10}, {0, 0, 20, 20}},
    {{0, 0, 10, 10}, {2, 3, 4, 5}, true, {2, 3, 4, 5}, {0, 0, 10, 10}},
    // Touching at an edge or a corner is no intersection.
    {{0, 0, 10, 10}, {10, 0, 20, 10}, false, {0, 0, 0, 0}, {0, 0, 20, 10}},
    {{0, 0, 10, 10}, {0, 10, 10, 20}, false, {0, 0, 0, 0}, {0, 0, 10, 20}},
    {{0, 0, 10, 10}, {10, 10, 20, 20}, false, {0, 0, 0, 0}, {0, 0, 20, 20}},
    {{0, 0, 10, 10}, {30, 30, 40, 40}, false, {0, 0, 0, 0}, {0, 0, 40, 40}},
    {{-8, -8, -1, -1}, {-4, -20, 4, -2}, true, {-4, -8, -1, -2}, {-8, -20, 4, -1}},
};

class RectPair : public ::testing::TestWithParam<PairCase> {};

TEST_P(RectPair, SectAndUnion)
{
    const PairCase& c = GetParam();
    const L_Rect a = Make(c.a);
    const L_Rect b = Make(c.b);
    L_Rect dst = Make({99, 99, 100, 100});
    EXPECT_EQ(SectLRect(&a, &b, &dst), c.sect);
    ExpectRect(dst, c.sectWant, "sect");
    UnionLRect(&a, &b, &dst);
    ExpectRect(dst, c.unionWant, "union");

    // The destination may be either source.
    L_Rect aliasA = a;
    EXPECT_EQ(SectLRect(&aliasA, &b, &aliasA), c.sect);
    ExpectRect(aliasA, c.sectWant, "sect into a");
    L_Rect aliasB = b;
    UnionLRect(&a, &aliasB, &aliasB);
    ExpectRect(aliasB, c.unionWant, "union into b");
}

INSTANTIATE_TEST_SUITE_P(Table, RectPair, ::testing::ValuesIn(kPairs));

}  // namespace
