/*
 * The sketch of a ring skips whole stretches of its walk that cannot reach
 * the buffer. Every ring must still come out exactly as the plain walk over
 * every point plots it: rings of every size, shape and turn, inside, around,
 * across and beside buffers of every shape.
 */
#include <gtest/gtest.h>

#include <math.h>

#include <cstdint>
#include <random>
#include <vector>

#include "FlareRender.h"
#include "SafeConvert.h"

namespace {

const double kTwoPi = 6.283185307179586;

/* The walk over every point, as the sketch is defined. */
void PlainSketchRing(const GlintwaveBuffer* theBuffer, const RingElement* theRing, double sinTheta, double cosTheta)
{
    float xc = theRing->ringXPos - (float)theBuffer->bufferRect.left;
    float yc = theRing->ringYPos - (float)theBuffer->bufferRect.top;
    float xr = fabsf(theRing->ringXRadius);
    float yr = fabsf(theRing->ringYRadius);
    if (std::isnan(xr) || std::isnan(yr))
        return;
    float largest = xr > yr ? xr : yr;
    int64_t segments = (int64_t)TruncLong(kTwoPi * largest) + 1;
    segments = segments < 4 ? 4 : segments > (1 << 20) ? (1 << 20) : segments;
    int32_t ringSegments = (int32_t)segments;
    double thetaStep = kTwoPi / ringSegments;
    auto* base = static_cast<unsigned char*>(theBuffer->bufferBase);
    double a = 0.0;
    for (int32_t i = 0; i <= ringSegments; ++i, a += thetaStep) {
        double x = sin(a) * xr;
        double y = cos(a) * yr;
        if (!(sinTheta == 0.0)) {
            double turnedX = x * cosTheta - y * sinTheta;
            double turnedY = y * cosTheta + x * sinTheta;
            x = turnedX;
            y = turnedY;
        }
        x += xc;
        y += yc;
        if (x >= 0 && y >= 0) {
            int32_t xi = TruncLong(x);
            int32_t yi = TruncLong(y);
            if ((uint32_t)xi < theBuffer->bufferRect.width && (uint32_t)yi < theBuffer->bufferRect.height)
                base[(intptr_t)theBuffer->bufferRowBytes * yi + xi] = (unsigned char)theBuffer->bufferIndex;
        }
    }
}

enum class Placement { NearTheBuffer, ThroughAPoint, FarAway };

struct RingCase {
    const char* name;
    Placement placement;
    double smallestRadius;
    double largestRadius;
    int count;
};

class SketchRingTest : public ::testing::TestWithParam<RingCase> {};

TEST_P(SketchRingTest, PlotsExactlyWhatThePlainWalkPlots)
{
    const RingCase& c = GetParam();
    std::mt19937_64 random(20261124);
    auto uniform = [&random](double low, double high) { return std::uniform_real_distribution<double>(low, high)(random); };
    int plotted = 0;
    for (int n = 0; n < c.count; ++n) {
        const int32_t width = 1 + (int32_t)(random() % 48), height = 1 + (int32_t)(random() % 32);
        GlintwaveBuffer buffer{};
        buffer.bufferRect.left = (int32_t)(random() % 400) - 200;
        buffer.bufferRect.top = (int32_t)(random() % 400) - 200;
        buffer.bufferRect.width = (uint32_t)width;
        buffer.bufferRect.height = (uint32_t)height;
        buffer.bufferRowBytes = width;
        buffer.bufferIndex = 0xFF;

        /* Radii spread evenly over the orders of magnitude; some rings flat or round. */
        const double xr = exp(uniform(log(c.smallestRadius), log(c.largestRadius)));
        const int shape = (int)(random() % 4);
        const double yr = shape == 0 ? xr : shape == 1 ? 0.0 : exp(uniform(log(c.smallestRadius), log(c.largestRadius)));
        const double theta = random() % 4 == 0 ? 0.0 : uniform(-720.0, 720.0) * -0.017453292519943295;
        const double s = sin(theta), co = cos(theta);

        /* A point in or just beside the buffer, and a ring centre placed so
           that the ring passes through it, or lies around it, or far off. */
        const double px = buffer.bufferRect.left + uniform(-2.0, width + 2.0);
        const double py = buffer.bufferRect.top + uniform(-2.0, height + 2.0);
        double cx = px, cy = py;
        if (c.placement == Placement::ThroughAPoint || c.placement == Placement::FarAway) {
            const double a = uniform(0.0, kTwoPi);
            const double ux = sin(a) * xr, uy = cos(a) * yr;
            const double reach = c.placement == Placement::FarAway ? uniform(1.0, 3.0) : 1.0;
            cx -= reach * (s == 0.0 ? ux : ux * co - uy * s);
            cy -= reach * (s == 0.0 ? uy : uy * co + ux * s);
        } else {
            cx += uniform(-3.0 * xr, 3.0 * xr);
            cy += uniform(-3.0 * xr, 3.0 * xr);
        }
        RingElement ring{};
        ring.ringXPos = (float)cx;
        ring.ringYPos = (float)cy;
        ring.ringXRadius = (float)(random() % 2 ? xr : -xr);
        ring.ringYRadius = (float)yr;

        std::vector<unsigned char> sketched((size_t)width * height), plain((size_t)width * height);
        buffer.bufferBase = sketched.data();
        SketchRing(&buffer, &ring, s, co);
        buffer.bufferBase = plain.data();
        PlainSketchRing(&buffer, &ring, s, co);
        ASSERT_EQ(sketched, plain) << c.name << " case " << n << ": centre " << ring.ringXPos << ","
                                   << ring.ringYPos << " radii " << ring.ringXRadius << "," << ring.ringYRadius
                                   << " turn " << theta;
        for (unsigned char value : plain)
            if (value != 0) {
                ++plotted;
                break;
            }
    }
    /* The table is worth something only if its rings reach the buffers. */
    if (c.placement == Placement::ThroughAPoint) {
        EXPECT_GT(plotted, c.count / 3);
    }
}

INSTANTIATE_TEST_SUITE_P(
    SketchRing, SketchRingTest,
    /* Counts kept small enough for an emulated 32-bit run. */
    ::testing::Values(RingCase{"Small", Placement::NearTheBuffer, 0.5, 30.0, 3000},
                      RingCase{"AroundTheBuffer", Placement::NearTheBuffer, 10.0, 500.0, 1000},
                      RingCase{"Through", Placement::ThroughAPoint, 5.0, 2e4, 400},
                      RingCase{"HugeThrough", Placement::ThroughAPoint, 1e4, 1e6, 10},
                      RingCase{"Beside", Placement::FarAway, 5.0, 2e4, 250}),
    [](const ::testing::TestParamInfo<RingCase>& info) { return std::string(info.param.name); });

}  // namespace
