// The span painters (portable and AVX2) against the per-pixel rule: random
// flares in random frames, painted on every path from the same block and
// background, must leave the same bytes, the same result and the same
// progress reports. Each table row draws its cases from its own seed.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "FakeStatusHost.h"
#include "FlareTestBlock.h"
#include "PaintPath.h"

using namespace flaretest;

namespace {

struct PathCase {
    const char* name;
    int16_t depth;
    bool turned;     // rotated and not round: the turned ring path
    bool handRamps;  // hand-made ramps with levels past 32767 and long flat runs
    bool cancel;     // the host cancels after a random number of rows
    uint32_t seed;
};

void PrintTo(const PathCase& c, std::ostream* os)
{
    *os << c.name;
}

constexpr int kCasesPerRow = 40;
int gReference;

class PathFixture {
public:
    explicit PathFixture(std::mt19937& rng) : rng_(rng) {}

    int Int(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng_); }
    double Real(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng_); }
    uint16_t Level() { return (uint16_t)Int(0, kFullLevel); }

    // Stops by increasing radius; sometimes the first two share a colour (a
    // flat start, black or not).
    std::vector<Stop> Stops()
    {
        int count = Int(2, 5);
        std::vector<float> radii(count);
        for (float& r : radii)
            r = (float)Real(0.0, 1.0);
        std::sort(radii.begin(), radii.end());
        radii.front() = 0.0f;
        std::vector<Stop> stops;
        for (float r : radii)
            stops.push_back({r, Level(), Level(), Level()});
        int flat = Int(0, 2);
        if (flat > 0) {
            if (flat == 1)
                stops[0].red = stops[0].green = stops[0].blue = 0;
            stops[1] = {stops[1].radius < 0.3f ? 0.6f : stops[1].radius, stops[0].red, stops[0].green, stops[0].blue};
            std::sort(stops.begin() + 1, stops.end(), [](const Stop& a, const Stop& b) { return a.radius < b.radius; });
        }
        return stops;
    }

    template <class Add>
    void WithStops(Add add)
    {
        std::vector<Stop> s = Stops();
        switch (s.size()) {
        case 2: add({s[0], s[1]}); break;
        case 3: add({s[0], s[1], s[2]}); break;
        case 4: add({s[0], s[1], s[2], s[3]}); break;
        default: add({s[0], s[1], s[2], s[3], s[4]}); break;
        }
    }

    // A flare laid out as the data check lays it out.
    void BuildLaidOut(FlareTestBlock& block, int32_t width, int32_t height, bool turned)
    {
        block.SetFrame(0, 0, width, height);
        block.SetLight(Real(-0.5, 1.5) * width, Real(-0.5, 1.5) * height, width / 2.0, height / 2.0,
                       height * Real(0.3, 1.5));
        block.data()->flareLightSize = Real(0.5, 2.0);
        if (turned) {
            block.control.flareRotation = Real(-180.0, 180.0);
            block.control.flareAspectRatio = Real(0.4, 2.5);
            block.control.flareFlags |= FLARE_FLAG(kFlagUseAspectRatio);
        }
        const int32_t types[] = {kRingOriginGlow, kRingHalo, kRingOuterGlow, kRingReflection};
        for (int i = Int(1, 7); i > 0; --i) {
            int32_t type = types[Int(0, 3)];
            float position = (float)Real(-1.5, 1.5), outer = (float)Real(0.02, 1.5);
            WithStops([&](std::initializer_list<Stop> s) { block.AddRing(type, position, outer, s); });
        }
        for (int i = Int(0, 2); i > 0; --i) {
            double angle = Real(0.0, 6.283);
            float dirX = (float)cos(angle), dirY = (float)sin(angle);
            block.AddStreak(1.0f, dirX, dirY, (float)Real(0.0, 0.1), (float)Real(0.2, 1.0),
                            {{0.0f, Level(), Level(), Level()}, {1.0f, 0, 0, 0}});
        }
        ASSERT_EQ(block.Layout(), 0);
    }

    // Rings with hand-made ramps: levels anywhere in 16 bits and long runs of
    // equal entries, at centres and factors the data check would not give.
    void BuildHandMade(FlareTestBlock& block, int32_t width, int32_t height)
    {
        block.SetFrame(0, 0, width, height);
        for (int i = Int(1, 4); i > 0; --i) {
            RingElement* r = block.AddRing(kRingReflection, 1.0f, 1.0f, {{0.0f, 0, 0, 0}, {1.0f, 0, 0, 0}});
            std::vector<FlareColor> ramp(Int(2, 60));
            bool wide = Int(0, 1) == 1;
            FlareColor flat = {(uint16_t)Int(0, wide ? 65535 : kFullLevel), (uint16_t)Int(0, 40), 0};
            int flatRun = Int(0, (int)ramp.size());
            for (size_t k = 0; k < ramp.size(); ++k)
                ramp[k] = (int)k < flatRun ? flat
                                           : FlareColor{(uint16_t)Int(0, wide ? 65535 : kFullLevel),
                                                        (uint16_t)Int(0, kFullLevel), (uint16_t)Int(0, 300)};
            float scale = (float)Real(0.05, 1.0) * 65536.0f;
            block.SetRingPaint(r, (float)Real(-10.0, width + 10.0), (float)Real(-10.0, height + 10.0),
                               scale * (float)Real(0.3, 1.0), scale * (float)Real(0.3, 1.0), ramp);
        }
    }

    void FillBackground(TestImage& image, bool wideLevels)
    {
        for (int32_t y = 0; y < image.height(); ++y)
            for (int32_t x = 0; x < image.width(); ++x) {
                if (image.depth() == 48) {
                    int top = wideLevels ? 65535 : kFullLevel;
                    image.SetPixel48(x, y, {(uint16_t)Int(0, top), (uint16_t)Int(0, top), (uint16_t)Int(0, top)});
                } else {
                    image.SetPixel32(x, y, (uint32_t)Int(0, 0x7FFFFFFF) * 2u + (uint32_t)Int(0, 1));
                }
            }
    }

private:
    std::mt19937& rng_;
};

struct Painted {
    std::vector<unsigned char> bytes;
    int32_t result;
    size_t reports;
};

class PaintPathsTest : public ::testing::TestWithParam<PathCase> {
protected:
    void TearDown() override { SetPaintPath(kPaintPathBest); }
};

TEST_P(PaintPathsTest, EveryPathPaintsTheRulesBytes)
{
    const PathCase& c = GetParam();
    std::mt19937 rng(c.seed);
    PathFixture f(rng);
    for (int n = 0; n < kCasesPerRow; ++n) {
        const int32_t width = f.Int(1, 97), height = f.Int(1, 48);
        FlareTestBlock block(1 << 18);
        if (c.handRamps)
            f.BuildHandMade(block, width, height);
        else
            f.BuildLaidOut(block, width, height, c.turned);
        if (c.handRamps && c.turned) {
            block.control.flareRotation = f.Real(-90.0, 90.0);
            block.control.flareAspectRatio = 1.5;
        }

        // The buffer: the whole frame or a part that starts inside it.
        const int32_t left = f.Int(0, 1) ? 0 : f.Int(0, width - 1);
        const int32_t top = f.Int(0, 1) ? 0 : f.Int(0, height - 1);
        TestImage image(f.Int(1, width - left), f.Int(1, height - top), c.depth);
        f.FillBackground(image, c.handRamps);
        const std::vector<unsigned char> background = image.storage();
        image.Attach(block.data(), left, top);
        const std::vector<char> pristine(block.bytes(), block.bytes() + block.size());
        std::vector<int32_t> replies;
        if (c.cancel) {
            replies.assign(f.Int(0, image.height() + 1), 0);
            replies.push_back(kPluginUserCanceled);
        }

        auto paint = [&](int32_t path) {
            memcpy(block.bytes(), pristine.data(), pristine.size());
            memcpy(image.base() - TestImage::kGuard, background.data(), background.size());
            FakeStatusHost host;
            host.replies = replies;
            host.Attach(block.data(), &gReference);
            SetPaintPath(path);
            Painted p;
            p.result = GenerateFlare(&block.control, block.data(), c.depth, c.cancel);
            p.bytes = image.storage();
            p.reports = host.reports.size();
            return p;
        };
        const Painted rule = paint(kPaintPathPlain);
        for (int32_t path : {kPaintPathSpans, kPaintPathVector}) {
            const Painted fast = paint(path);
            SCOPED_TRACE("case " + std::to_string(n) + ", path " + std::to_string(CurrentPaintPath()) + ", frame " +
                         std::to_string(width) + "x" + std::to_string(height) + ", buffer at " +
                         std::to_string(left) + "," + std::to_string(top));
            ASSERT_EQ(fast.result, rule.result);
            ASSERT_EQ(fast.reports, rule.reports);
            ASSERT_TRUE(fast.bytes == rule.bytes);
            ASSERT_TRUE(image.GuardsIntact());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    PaintPaths, PaintPathsTest,
    ::testing::Values(PathCase{"Round48", 48, false, false, false, 11}, PathCase{"Round32", 32, false, false, false, 12},
                      PathCase{"Turned48", 48, true, false, false, 13}, PathCase{"Turned32", 32, true, false, false, 14},
                      PathCase{"HandRamps48", 48, false, true, false, 15},
                      PathCase{"HandRamps32", 32, false, true, false, 16},
                      PathCase{"HandRampsTurned32", 32, true, true, false, 17},
                      PathCase{"Cancel48", 48, false, false, true, 18}, PathCase{"Cancel32", 32, true, false, true, 19}),
    [](const ::testing::TestParamInfo<PathCase>& info) { return std::string(info.param.name); });

// Where the processor has AVX2 the automatic choice is the vector path, and a
// forced portable path stays forced.
TEST(PaintPaths, ChoosesTheVectorPathOnlyWhereItRuns)
{
    SetPaintPath(kPaintPathBest);
    EXPECT_EQ(CurrentPaintPath(), VectorPathAvailable() ? kPaintPathVector : kPaintPathSpans);
    SetPaintPath(kPaintPathSpans);
    EXPECT_EQ(CurrentPaintPath(), kPaintPathSpans);
    SetPaintPath(kPaintPathVector);
    EXPECT_EQ(CurrentPaintPath(), VectorPathAvailable() ? kPaintPathVector : kPaintPathSpans);
    SetPaintPath(kPaintPathBest);
}

}  // namespace
