/*
 * Scan conversion: edges of dots, bands, triangles; spans per row; clipping,
 * skipped rows and the clamp range.
 */
#include <gtest/gtest.h>

#include <string.h>

#include <cmath>

#include <vector>

#include "FlareRender.h"
#include "RectUtils.h"

namespace {

FacetPoint P(double x, double y)
{
    return FacetPoint{x, y};
}

L_Rect MakeRect(int32_t left, int32_t top, int32_t right, int32_t bottom)
{
    L_Rect r;
    SetLRect(&r, left, top, right, bottom);
    return r;
}

struct Span {
    int32_t row;
    bool covered;
    int16_t left, right;
};

struct ShapeCase {
    const char* name;
    std::vector<FacetPoint> points;
    L_Rect clip;
    bool inFrame;
    L_Rect bounds;
    std::vector<Span> rows;   /* sliced in this order */
};

class ShapeTest : public ::testing::TestWithParam<ShapeCase> {};

TEST_P(ShapeTest, BoundsAndSpans)
{
    const ShapeCase& c = GetParam();
    FacetPoints points = {};
    for (size_t i = 0; i < c.points.size(); ++i)
        points[i] = c.points[i];
    EdgeRecord edges[4];
    L_Rect bounds;
    ASSERT_EQ(CalcEdges(&c.clip, &bounds, edges, points, (int16_t)c.points.size()), c.inFrame);
    EXPECT_EQ(+bounds.left, +c.bounds.left);
    EXPECT_EQ(+bounds.top, +c.bounds.top);
    EXPECT_EQ(+bounds.right, +c.bounds.right);
    EXPECT_EQ(+bounds.bottom, +c.bounds.bottom);

    for (const Span& s : c.rows) {
        int16_t left = 0, right = 0;
        bool covered = SliceEdges(&c.clip, s.row, edges, &left, &right);
        EXPECT_EQ(covered, s.covered) << "row " << s.row;
        if (covered) {
            EXPECT_EQ(left, s.left) << "row " << s.row;
            EXPECT_EQ(right, s.right) << "row " << s.row;
        } else {
            EXPECT_EQ(left, 32767) << "row " << s.row;
            EXPECT_EQ(right, -32767) << "row " << s.row;
        }
    }
}

const L_Rect kFrame = MakeRect(0, 0, 100, 100);

INSTANTIATE_TEST_SUITE_P(
    EdgeScan, ShapeTest,
    ::testing::Values(
        /* A dot covers floor(c - 1.5) + 1 .. floor(c + 1.5) both ways. */
        ShapeCase{"Dot", {P(10.2, 20.7)}, kFrame, true, MakeRect(9, 20, 12, 23),
                  {{19, false, 0, 0}, {20, true, 9, 11}, {21, true, 9, 11}, {22, true, 9, 11}, {23, false, 0, 0}}},
        /* Two coincident points: a dot. */
        ShapeCase{"ZeroLengthLine", {P(10, 20), P(10, 20)}, kFrame, true, MakeRect(9, 19, 12, 22),
                  {{19, true, 9, 11}, {21, true, 9, 11}, {22, false, 0, 0}}},
        /* A vertical band, lengthened by 1.5 at both ends: rows 4..16. */
        ShapeCase{"VerticalBand", {P(10, 5), P(10, 15)}, kFrame, true, MakeRect(9, 4, 12, 17),
                  {{3, false, 0, 0}, {4, true, 9, 11}, {10, true, 9, 11}, {16, true, 9, 11}, {17, false, 0, 0}}},
        /* A horizontal band renders through its two vertical sides. */
        ShapeCase{"HorizontalBand", {P(5, 10), P(15, 10)}, kFrame, true, MakeRect(4, 9, 17, 12),
                  {{8, false, 0, 0}, {9, true, 4, 16}, {11, true, 4, 16}, {12, false, 0, 0}}},
        /* Rows may be skipped; the span follows the slanted edge. */
        ShapeCase{"Triangle", {P(0, 0), P(10, 0), P(0, 10)}, kFrame, true, MakeRect(1, 1, 11, 11),
                  {{0, false, 0, 0}, {1, true, 1, 9}, {2, true, 1, 8}, {6, true, 1, 4}, {9, true, 1, 1},
                   {10, false, 0, 0}}},
        ShapeCase{"Quadrilateral", {P(2, 2), P(12, 2), P(12, 8), P(2, 8)}, kFrame, true, MakeRect(3, 3, 13, 9),
                  {{2, false, 0, 0}, {3, true, 3, 12}, {8, true, 3, 12}, {9, false, 0, 0}}},
        /* Clipped at the left edge and at the top row. */
        ShapeCase{"ClippedLeft", {P(0.2, 5)}, kFrame, true, MakeRect(0, 4, 2, 7),
                  {{4, true, 0, 1}, {6, true, 0, 1}}},
        ShapeCase{"ClippedTop", {P(10, 5)}, MakeRect(0, 5, 100, 100), true, MakeRect(9, 5, 12, 7),
                  {{4, false, 0, 0}, {5, true, 9, 11}, {6, true, 9, 11}, {7, false, 0, 0}}},
        ShapeCase{"ClippedRight", {P(10, 20)}, MakeRect(0, 0, 10, 100), true, MakeRect(9, 19, 10, 22),
                  {{20, true, 9, 9}}},
        /* Far-off shapes end at the clamp limit instead of overflowing. */
        ShapeCase{"FarRight", {P(1e5, 1e5)}, MakeRect(-1000000000, -1000000000, 1000000000, 1000000000), true,
                  MakeRect(32767, 32767, 32768, 32768), {}},
        ShapeCase{"FarLeft", {P(-1e5, -1e5)}, MakeRect(-1000000000, -1000000000, 1000000000, 1000000000), true,
                  MakeRect(-32767, -32767, -32766, -32766), {}},
        /* Past 32 bits the truncation overflows to the most negative value,
           so even a far right shape lands at the negative limit. */
        ShapeCase{"Beyond32Bits", {P(1e12, 1e12)}, MakeRect(-1000000000, -1000000000, 1000000000, 1000000000),
                  true, MakeRect(-32767, -32767, -32766, -32766), {}},
        ShapeCase{"OutsideFrame", {P(500, 500)}, kFrame, false, MakeRect(0, 0, 0, 0), {{500, false, 0, 0}}}),
    [](const ::testing::TestParamInfo<ShapeCase>& info) { return std::string(info.param.name); });

TEST(EdgeScan, ShapesOfNoPointOrTooManyLeaveTheEdges)
{
    for (int16_t numPoints : {0, 5, -1}) {
        EdgeRecord edges[4];
        memset(edges, 0x5A, sizeof edges);
        EdgeRecord before[4];
        memcpy(before, edges, sizeof edges);
        FacetPoints points = {P(1, 1), P(5, 1), P(5, 5), P(1, 5)};
        L_Rect bounds;
        EXPECT_FALSE(CalcEdges(&kFrame, &bounds, edges, points, numPoints)) << numPoints;
        EXPECT_EQ(memcmp(before, edges, sizeof edges), 0) << numPoints;
    }
}

struct SetEdgeCase {
    const char* name;
    int32_t top;
    double x1, y1, x2, y2;
    int32_t edgeY1, edgeY2, curXPos;
    int16_t xMin, yMin, xMax, yMax;
};

class SetEdgeTest : public ::testing::TestWithParam<SetEdgeCase> {};

TEST_P(SetEdgeTest, EdgeAndBox)
{
    const SetEdgeCase& c = GetParam();
    EdgeRecord e{};
    int16_t xMin = 32767, yMin = 32767, xMax = -32767, yMax = -32767;
    SetEdge(&e, c.top, c.x1, c.y1, c.x2, c.y2, &xMin, &yMin, &xMax, &yMax);
    EXPECT_EQ(+e.y1, c.edgeY1);
    EXPECT_EQ(+e.y2, c.edgeY2);
    if (e.y1 != 32767) {
        EXPECT_EQ(+e.curXPos, c.curXPos);
    }
    EXPECT_EQ(xMin, c.xMin);
    EXPECT_EQ(yMin, c.yMin);
    EXPECT_EQ(xMax, c.xMax);
    EXPECT_EQ(yMax, c.yMax);
}

INSTANTIATE_TEST_SUITE_P(
    EdgeScan, SetEdgeTest,
    ::testing::Values(
        /* Slope 1 from (0, 0.5): row 1 crosses at 0.5. */
        SetEdgeCase{"Slanted", 0, 0, 0.5, 10, 10.5, 1, 10, 0, 1, 1, 10, 10},
        /* Given upwards: oriented downwards first. */
        SetEdgeCase{"Upwards", 0, 10, 10.5, 0, 0.5, 1, 10, 0, 1, 1, 10, 10},
        /* A horizontal edge covers no row: inactive, but the box grows. */
        SetEdgeCase{"HorizontalHalf", 0, 0, 5.5, 10, 5.5, 32767, 5, 0, 1, 6, 10, 5},
        SetEdgeCase{"HorizontalWhole", 0, 0, 5, 10, 5, 32767, 5, 0, 1, 6, 10, 5},
        /* Wholly above the top row: inactive; the box is not clipped. */
        SetEdgeCase{"AboveTop", 50, 0, 0, 0, 10, 32767, 10, 0, 1, 1, 0, 10},
        /* Starting above the top row: begins at the top row's crossing. */
        SetEdgeCase{"StartsAboveTop", 5, 0, 0.5, 10, 10.5, 5, 10, 4, 1, 1, 10, 10}),
    [](const ::testing::TestParamInfo<SetEdgeCase>& info) { return std::string(info.param.name); });

TEST(EdgeScan, SkippedRowsCatchUpWithOneMultiply)
{
    /* One slanted edge with an awkward step; rows 10 and then 15. */
    const float step = 0.3f;
    const float start = 0.7f;
    EdgeRecord edges[4];
    for (EdgeRecord& e : edges)
        e = EdgeRecord{0, 32767, 0, 0.0f, 0.0f};
    edges[0] = EdgeRecord{0, 10, 100, step, start};
    edges[1] = EdgeRecord{50, 10, 100, 0.0f, 50.0f};
    L_Rect clip = MakeRect(-100, 0, 100, 200);

    int16_t left, right;
    ASSERT_TRUE(SliceEdges(&clip, 10, edges, &left, &right));
    float row11 = (float)((double)start + (double)step);
    EXPECT_EQ(+edges[0].xPos, row11);

    ASSERT_TRUE(SliceEdges(&clip, 15, edges, &left, &right));
    float caughtUp = (float)((double)(4.0f * step) + (double)row11);
    EXPECT_EQ(+edges[0].y1, 15);
    EXPECT_EQ(+edges[0].xPos, (float)((double)caughtUp + (double)step));
    EXPECT_EQ(left, (int16_t)((int32_t)std::floor((double)caughtUp) + 1));

    /* Four single steps would have landed elsewhere. */
    float stepped = row11;
    for (int i = 0; i < 4; ++i)
        stepped = (float)((double)stepped + (double)step);
    EXPECT_NE(stepped, caughtUp);
}

TEST(EdgeScan, EdgesFinishOnTheirLastRow)
{
    FacetPoints points = {P(10, 20)};
    EdgeRecord edges[4];
    L_Rect bounds;
    ASSERT_TRUE(CalcEdges(&kFrame, &bounds, edges, points, 1));
    int16_t left, right;
    EXPECT_TRUE(SliceEdges(&kFrame, 21, edges, &left, &right));
    /* Rows past the shape, whether reached directly or by skipping. */
    EXPECT_FALSE(SliceEdges(&kFrame, 40, edges, &left, &right));
    EXPECT_EQ(+edges[0].y1, 32767);
    EXPECT_EQ(+edges[1].y1, 32767);
    EXPECT_FALSE(SliceEdges(&kFrame, 41, edges, &left, &right));
}

TEST(EdgeScan, HostileEdgeRecordsStayInRange)
{
    EdgeRecord edges[4] = {
        {INT32_MAX, INT32_MIN, INT32_MAX, 1e30f, 1e30f},
        {INT32_MIN, -5, INT32_MAX, std::nanf(""), std::nanf("")},
        {100000, 0, INT32_MAX, 0, 0},
        {-100000, 0, INT32_MAX, 0, 0},
    };
    L_Rect clip = MakeRect(0, 0, 50, 50);
    for (int32_t y = 0; y < 5; ++y) {
        int16_t left, right;
        if (SliceEdges(&clip, y, edges, &left, &right)) {
            EXPECT_GE(left, 0);
            EXPECT_LE(right, 49);
            EXPECT_LE(left, right);
        }
    }
}

}  // namespace
