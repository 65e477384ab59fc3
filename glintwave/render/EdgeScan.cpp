/*
 * EdgeScan.cpp - scan conversion of convex outlines of one to four points.
 *
 * CalcEdges turns an outline into up to four edge records once per frame;
 * SliceEdges then consumes the edges row by row, in increasing row order,
 * and yields the span of pixels the outline covers on each row. A row or
 * column k is covered by a stretch from a to b when a < k <= b, that is from
 * TruncLo(a) to TruncHi(b); all whole-pixel values are clamped to
 * -32767..32767 by the rounding functions, so they fit the 16-bit outputs.
 *
 * The edge records live in the host's block, so SliceEdges keeps its
 * arithmetic wide enough for any values they may hold.
 */
#include <cmath>

#include "FlareRender.h"
#include "RectUtils.h"
#include "RoundUtils.h"
#include "SafeConvert.h"

namespace {

constexpr int32_t kEdgeInactive = 32767;

/* Half the side of the square a dot covers, and half the width of a line. */
constexpr double kHalfPen = 1.5;

/* Lines shorter than this are drawn as dots. */
constexpr double kShortestLine = 1e-9;

void SetInactive(EdgeRecord* theEdge)
{
    theEdge->y1 = kEdgeInactive;
}

/* A 3 x 3 pixel dot around p0, stretched to p1: two vertical edges. */
void SetDotEdges(EdgeRecord* edges, int32_t theTop, const FacetPoint& p0, const FacetPoint& p1,
                 int16_t* xMin, int16_t* yMin, int16_t* xMax, int16_t* yMax)
{
    double x0 = p0.x - kHalfPen;
    double y0 = p0.y - kHalfPen;
    double x1 = p1.x + kHalfPen;
    double y1 = p1.y + kHalfPen;
    SetEdge(&edges[0], theTop, x0, y0, x0, y1, xMin, yMin, xMax, yMax);
    SetEdge(&edges[1], theTop, x1, y0, x1, y1, xMin, yMin, xMax, yMax);
    SetInactive(&edges[2]);
    SetInactive(&edges[3]);
}

/* Takes a crossing into the span: pixels strictly right of the leftmost
   crossing up to and including the rightmost one are covered. */
void TakeCrossing(int32_t c, int16_t* edgeLeft, int16_t* edgeRight)
{
    if (c < *edgeLeft)
        *edgeLeft = (int16_t)(c + 1);
    if (c > *edgeRight)
        *edgeRight = (int16_t)c;
}

/* After taking row y's crossing: move to the next row's crossing, or finish
   the edge on its last row. */
void AdvanceEdge(EdgeRecord* theEdge, int32_t y)
{
    if (theEdge->y2 != y) {
        double next = (double)theEdge->xPos + (double)theEdge->step;
        theEdge->xPos = NarrowToFloat(next);
        theEdge->curXPos = ITrunc(next);
        theEdge->y1 = y;
    } else {
        theEdge->y1 = kEdgeInactive;
    }
}

}  // namespace

void SetEdge(EdgeRecord* theEdge, int32_t theTop, double xp1, double yp1, double xp2, double yp2,
             int16_t* xMin, int16_t* yMin, int16_t* xMax, int16_t* yMax)
{
    double xlo, xhi;
    if (xp2 > xp1) {
        xlo = xp1;
        xhi = xp2;
    } else {
        xlo = xp2;
        xhi = xp1;
    }
    int32_t lo = TruncLo(xlo);
    int32_t hi = TruncHi(xhi);
    if (*xMin > lo)
        *xMin = (int16_t)lo;
    if (*xMax < hi)
        *xMax = (int16_t)hi;

    /* Oriented downwards. */
    double startX, startY, endX, endY;
    if (yp2 >= yp1) {
        startX = xp1;
        startY = yp1;
        endX = xp2;
        endY = yp2;
    } else {
        startX = xp2;
        startY = yp2;
        endX = xp1;
        endY = yp1;
    }

    int32_t y1 = TruncLo(startY);
    int32_t y2 = TruncHi(endY);
    if (y1 < *yMin)
        *yMin = (int16_t)y1;
    if (y2 > *yMax)
        *yMax = (int16_t)y2;

    if (y2 >= theTop && y2 >= y1) {
        if (y1 < theTop)
            y1 = theTop;
        theEdge->y1 = y1;
        theEdge->y2 = y2;
        theEdge->step = NarrowToFloat((endX - startX) / (endY - startY));
        double xp = (y1 - startY) * (double)theEdge->step + startX;
        theEdge->xPos = NarrowToFloat(xp);
        theEdge->curXPos = ITrunc(xp);
    } else {
        /* Wholly above the top row, or covering no row at all. */
        theEdge->y2 = y2;
        SetInactive(theEdge);
    }
}

bool CalcEdges(const L_Rect* theRect, L_Rect* theBounds, EdgeRecord* edges, FacetPoints points,
               int16_t numPoints)
{
    int16_t xMin = 32767, yMin = 32767;
    int16_t xMax = -32767, yMax = -32767;
    int32_t theTop = theRect->top;

    switch (numPoints) {
    case 1:
        SetDotEdges(edges, theTop, points[0], points[0], &xMin, &yMin, &xMax, &yMax);
        break;
    case 2: {
        FacetPoint p0 = points[0];
        FacetPoint p1 = points[1];
        double a = p1.x - p0.x;
        double b = p1.y - p0.y;
        double distance = sqrt(a * a + b * b);
        if (distance < kShortestLine) {
            SetDotEdges(edges, theTop, p0, p1, &xMin, &yMin, &xMax, &yMax);
            break;
        }
        /* A band 3 pixels wide, lengthened by half its width at each end. */
        a = kHalfPen * a / distance;
        b = kHalfPen * b / distance;
        p0.x -= a;
        p0.y -= b;
        p1.x += a;
        p1.y += b;
        SetEdge(&edges[0], theTop, p0.x + b, p0.y - a, p0.x - b, p0.y + a, &xMin, &yMin, &xMax, &yMax);
        SetEdge(&edges[1], theTop, p0.x - b, p0.y + a, p1.x - b, p1.y + a, &xMin, &yMin, &xMax, &yMax);
        SetEdge(&edges[2], theTop, p1.x - b, p1.y + a, p1.x + b, p1.y - a, &xMin, &yMin, &xMax, &yMax);
        SetEdge(&edges[3], theTop, p1.x + b, p1.y - a, p0.x + b, p0.y - a, &xMin, &yMin, &xMax, &yMax);
        break;
    }
    case 3:
        SetEdge(&edges[0], theTop, points[0].x, points[0].y, points[1].x, points[1].y, &xMin, &yMin, &xMax, &yMax);
        SetEdge(&edges[1], theTop, points[1].x, points[1].y, points[2].x, points[2].y, &xMin, &yMin, &xMax, &yMax);
        SetEdge(&edges[2], theTop, points[2].x, points[2].y, points[0].x, points[0].y, &xMin, &yMin, &xMax, &yMax);
        SetInactive(&edges[3]);
        break;
    case 4:
        SetEdge(&edges[0], theTop, points[0].x, points[0].y, points[1].x, points[1].y, &xMin, &yMin, &xMax, &yMax);
        SetEdge(&edges[1], theTop, points[1].x, points[1].y, points[2].x, points[2].y, &xMin, &yMin, &xMax, &yMax);
        SetEdge(&edges[2], theTop, points[2].x, points[2].y, points[3].x, points[3].y, &xMin, &yMin, &xMax, &yMax);
        SetEdge(&edges[3], theTop, points[3].x, points[3].y, points[0].x, points[0].y, &xMin, &yMin, &xMax, &yMax);
        break;
    default:
        /* Not a shape: the edges keep what they held, the box stays empty. */
        break;
    }

    SetLRect(theBounds, xMin, yMin, xMax + 1, yMax + 1);
    return SectLRect(theBounds, theRect, theBounds);
}

bool SliceEdges(const L_Rect* theRect, int32_t y, EdgeRecord* edges, int16_t* edgeLeft,
                int16_t* edgeRight)
{
    /* An empty span to start with. */
    *edgeLeft = (int16_t)theRect->right;
    *edgeRight = (int16_t)((int64_t)theRect->left - 1);

    for (int i = 0; i < 4; ++i) {
        EdgeRecord* theEdge = &edges[i];
        int64_t delta = (int64_t)y - (int64_t)theEdge->y1;
        if (delta < 0)
            continue;  /* not begun yet, or inactive */
        if (delta <= 1) {
            TakeCrossing(theEdge->curXPos, edgeLeft, edgeRight);
            AdvanceEdge(theEdge, y);
        } else if (theEdge->y2 >= y) {
            /* Rows were skipped: one multiply catches up. */
            float skipped = (float)(delta - 1) * theEdge->step;
            double caughtUp = (double)skipped + (double)theEdge->xPos;
            theEdge->xPos = NarrowToFloat(caughtUp);
            theEdge->curXPos = ITrunc(caughtUp);
            TakeCrossing(theEdge->curXPos, edgeLeft, edgeRight);
            AdvanceEdge(theEdge, y);
        } else {
            theEdge->y1 = kEdgeInactive;
        }
    }

    if (*edgeLeft < theRect->right && *edgeRight >= theRect->left && *edgeLeft <= *edgeRight) {
        if (*edgeLeft < theRect->left)
            *edgeLeft = (int16_t)theRect->left;
        if (*edgeRight >= theRect->right)
            *edgeRight = (int16_t)((int64_t)theRect->right - 1);
        return true;
    }
    *edgeLeft = 32767;
    *edgeRight = -32767;
    return false;
}
