// Whole frames rendered through Main with the delivered flare table, as a
// host renders them: 'INIT', 'SETF' with a typical frame and light, 'GENF'
// into a 48-bit, a 32-bit and an 8-bit buffer. The pictures are pinned by
// checksum; the rules of 'GENF' (record checks, clipping, the base moved to
// the clipped corner, progress and cancel) are checked on the same frames.
// Every buffer lies between guard bytes that must come back untouched.
//
// GLINTWAVE_RENDER_DUMP=<folder> writes every pinned frame there as a PPM
// (48 and 32 bits) or PGM (the 8-bit sketch), to look at after a deliberate
// change of the styles or the renderer, before the checksums are renewed.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>

#include <korvane/ResourceToolbox.h>

#include "HostFixture.h"
#include "RenderImage.h"

namespace glintwave::testhost {
namespace {

// The frame: 480 × 270, frame scale half its height, centre in the middle,
// the light up and left of the centre.
constexpr std::int32_t kWidth = 480;
constexpr std::int32_t kHeight = 270;
// The styles whose renders are pinned; the loops below go over these.
constexpr std::int32_t kPinnedStyleCount = 3;
constexpr std::int32_t kSketchIndex = 7;
constexpr std::uint8_t kSketchBackground = 0xFF;
constexpr std::uint32_t kUniform32 = 0x80203040u;
constexpr std::int32_t kFreeBudget = 1 << 20;

L_Rect makeRect(std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom)
{
    return L_Rect{top,
                  left,
                  bottom,
                  right,
                  static_cast<std::uint32_t>(std::max(0, right - left)),
                  static_cast<std::uint32_t>(std::max(0, bottom - top))};
}

const L_Rect kFrame = makeRect(0, 0, kWidth, kHeight);

FrameSetup typicalFrame()
{
    FrameSetup frame;
    frame.frame = kFrame;
    frame.xScale = kHeight / 2.0;
    frame.yScale = kHeight / 2.0;
    frame.xCenter = kWidth / 2.0;
    frame.yCenter = kHeight / 2.0;
    frame.lightPosition = DCoordinate{0.3 * kWidth, 0.3 * kHeight, 0.0};
    frame.lightBlurPosition = frame.lightPosition;
    frame.lightColor = 0xFFFFFFFFu;
    frame.lightIntensity = 1.0;
    frame.lightFrameRadius = 8.0;
    frame.lightMatrix = Matrix4{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    return frame;
}

std::filesystem::path deliveredFolder()
{
    return std::filesystem::path(GLINTWAVE_RSC_FILE).parent_path();
}

// What lies in the buffer before the flare is painted.
enum class Background {
    kGradient,  // 48: black; 32: an asymmetric colour gradient, alpha 0x80; 8: 0xFF
    kUniform,   // 48: black; 32: one colour, alpha 0x80; 8: 0xFF
};

// The 32-bit background at frame pixel (x, y): red grows to the right,
// green downwards, blue in diagonal bands, so a flipped or shifted copy
// shows.
std::uint32_t gradient32(std::int32_t x, std::int32_t y)
{
    const std::uint32_t red = 24u + static_cast<std::uint32_t>(x) * 128u / kWidth;
    const std::uint32_t green = 16u + static_cast<std::uint32_t>(y) * 96u / kHeight;
    const std::uint32_t blue = 64u + static_cast<std::uint32_t>(x + 2 * y) % 64u;
    return 0x80000000u | red << 16 | green << 8 | blue;
}

void paintBackground(GuardedImage& image, Background background)
{
    const L_Rect rect = image.rect();
    image.fill([&](std::uint32_t x, std::uint32_t y, std::uint8_t* pixel) {
        switch (image.depth()) {
        case 48:
            std::memset(pixel, 0, 6);
            break;
        case 32: {
            // Frame coordinates, so that any buffer shows the same picture.
            const std::int32_t fx = std::clamp(rect.left + static_cast<std::int32_t>(x), 0, kWidth - 1);
            const std::int32_t fy = std::clamp(rect.top + static_cast<std::int32_t>(y), 0, kHeight - 1);
            const std::uint32_t value = background == Background::kGradient ? gradient32(fx, fy) : kUniform32;
            std::memcpy(pixel, &value, 4);
            break;
        }
        default:
            *pixel = kSketchBackground;
        }
    });
}

std::string depthName(std::int16_t depth)
{
    return depth == 8 ? "sketch" : std::to_string(depth) + "bit";
}

class RenderTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        korvane::toolbox::setHomeDirectory(deliveredFolder());
        ASSERT_TRUE(host.loaded()) << host.loadError();
    }
    void TearDown() override
    {
        for (const std::string& error : host.protocolErrors())
            ADD_FAILURE() << "host protocol: " << error;
    }

    // A fresh project with the given style, made ready for the typical
    // frame as a host does it: 'INIT', then 'SETF'.
    static void startStyle(TestHost& on, std::int32_t style)
    {
        // Every 'SETF' takes all the memory offered and gives back the rest;
        // the delivered styles need a few kilobytes.
        on.options.freeBudget = kFreeBudget;
        ControlDataRec header = expectedDefaults();
        header.flareLens = style;
        on.control().assign(bytesOf(&header, sizeof header));
        on.plugin().resize(0, true);
        ASSERT_EQ(on.init(), kPluginNoError) << "style " << style;
        ASSERT_EQ(on.setup(typicalFrame()), kPluginNoError) << "style " << style;
    }

    static std::int32_t generate(TestHost& on, GuardedImage& image)
    {
        return on.generate(image.base(), image.rowBytes(), image.rect(), image.depth(), kSketchIndex);
    }

    // The whole frame painted over a background.
    static std::unique_ptr<GuardedImage> renderFrame(TestHost& on, std::int16_t depth,
                                                     Background background = Background::kGradient,
                                                     const L_Rect& rect = kFrame)
    {
        auto image = std::make_unique<GuardedImage>(rect, depth);
        paintBackground(*image, background);
        const std::int32_t result = generate(on, *image);
        EXPECT_EQ(result, kPluginNoError) << depthName(depth);
        return image;
    }

    TestHost host;
};

// ---------------------------------------------------------------------------
// The delivered styles, pinned
// ---------------------------------------------------------------------------

struct PinnedRender {
    std::int32_t style;
    std::int16_t depth;
    std::uint64_t checksum;  // FNV-1a 64 of the pixel rows (native byte order)
};

// Taken after looking at the frames (GLINTWAVE_RENDER_DUMP).
const PinnedRender kPinned[] = {
    {1, 48, 0xCADCE4E46B6A0243ull},
    {1, 32, 0x97CB7555AAA2F2BFull},
    {1, 8, 0x8C39D8471D066FCDull},
    {2, 48, 0xE6E79E4D003520D8ull},
    {2, 32, 0x5C53B2E936548A87ull},
    {2, 8, 0xBF0A9F56E5E14C75ull},
    {3, 48, 0x0E891E5086E804DAull},
    {3, 32, 0xA85B2A81010E633Bull},
    {3, 8, 0x28E85F348D48E8CDull},
};

void PrintTo(const PinnedRender& pinned, std::ostream* out)
{
    *out << "style " << pinned.style << " " << depthName(pinned.depth);
}

class PinnedRenderTest : public RenderTest, public ::testing::WithParamInterface<PinnedRender> {};

void dumpIfAsked(const GuardedImage& image, const PinnedRender& pinned)
{
    const char* folder = std::getenv("GLINTWAVE_RENDER_DUMP");
    if (!folder || !*folder)
        return;
    const std::string name = "style" + std::to_string(pinned.style) + "-" + depthName(pinned.depth) +
                             (pinned.depth == 8 ? ".pgm" : ".ppm");
    const std::filesystem::path path = std::filesystem::path(folder) / name;
    EXPECT_TRUE(image.dump(path.string())) << path;
    std::cout << "wrote " << path.string() << "\n";
}

TEST_P(PinnedRenderTest, FrameMatchesItsChecksum)
{
    const PinnedRender& pinned = GetParam();
    ASSERT_NO_FATAL_FAILURE(startStyle(host, pinned.style));
    host.clearLog();
    const auto image = renderFrame(host, pinned.depth);
    EXPECT_EQ(image->damagedGuard(), std::nullopt);
    dumpIfAsked(*image, pinned);

    const std::uint64_t checksum = fnv1a64(image->pixels());
    char text[32];
    std::snprintf(text, sizeof text, "0x%016llXull", static_cast<unsigned long long>(checksum));
    EXPECT_EQ(checksum, pinned.checksum) << "style " << pinned.style << " " << depthName(pinned.depth)
                                         << ": checksum " << text;
}

INSTANTIATE_TEST_SUITE_P(DeliveredStyles, PinnedRenderTest, ::testing::ValuesIn(kPinned),
                         [](const ::testing::TestParamInfo<PinnedRender>& info) {
                             return "Style" + std::to_string(info.param.style) + "_" +
                                    depthName(info.param.depth);
                         });

// Styles are numbered without gaps: each loads and has something to paint in
// the typical frame, up to the first number the table does not hold.
TEST_F(RenderTest, DeliveredTableHoldsEveryStyle)
{
    host.options.freeBudget = kFreeBudget;
    std::int32_t style = 1;
    for (; style < 1000; ++style) {
        ControlDataRec header = expectedDefaults();
        header.flareLens = style;
        host.control().assign(bytesOf(&header, sizeof header));
        host.plugin().resize(0, true);
        const std::int32_t result = host.init();
        if (result == kPluginResourceMissing)
            break;
        ASSERT_EQ(result, kPluginNoError) << style;
        ASSERT_EQ(host.setup(typicalFrame()), kPluginNoError) << style;
        const auto rings = host.rings();
        const auto painted = [](const RingElement* r) { return r->ringFlareColors > 0; };
        EXPECT_TRUE(std::any_of(rings.begin(), rings.end(), painted)) << "style " << style << " paints nothing";
    }
    EXPECT_GT(style, 12);
}

// ---------------------------------------------------------------------------
// Records the plug-in refuses, buffers it leaves alone
// ---------------------------------------------------------------------------

struct RefusedCase {
    const char* name;
    std::int32_t sizeChange;  // to sizeof(PluginFlareGenerateRec)
    std::int16_t depth;
    std::int32_t expected;
};

TEST_F(RenderTest, RefusedRecordsLeaveTheBufferAlone)
{
    const RefusedCase cases[] = {
        {"one byte short", -1, 48, kPluginIncompatible},
        {"one byte short, sketch", -1, 8, kPluginIncompatible},
        {"depth 24", 0, 24, kPluginModeUnsupported},
        {"depth 0", 0, 0, kPluginModeUnsupported},
        {"depth 16", 0, 16, kPluginModeUnsupported},
        {"depth 64", 0, 64, kPluginModeUnsupported},
        {"depth -48", 0, -48, kPluginModeUnsupported},
        {"depth 24, longer record", 16, 24, kPluginModeUnsupported},
    };
    ASSERT_NO_FATAL_FAILURE(startStyle(host, 1));
    for (const RefusedCase& c : cases) {
        SCOPED_TRACE(c.name);
        // The buffer is laid out for the depth it names; bad depths get one
        // of 48 bits, the largest.
        const std::int16_t layout = (c.depth == 8 || c.depth == 32) ? c.depth : 48;
        GuardedImage image(kFrame, layout);
        paintBackground(image, Background::kGradient);
        const std::vector<std::uint8_t> before = image.storage();

        Bytes record(sizeof(PluginFlareGenerateRec) + 16, 0);
        PluginFlareGenerateRec generate{};
        generate.theFlareBuffer.bufferBase = image.base();
        generate.theFlareBuffer.bufferRowBytes = image.rowBytes();
        generate.theFlareBuffer.bufferRect = kFrame;
        generate.theFlareBuffer.bufferDepth = c.depth;
        generate.theFlareBuffer.bufferIndex = kSketchIndex;
        std::memcpy(record.data(), &generate, sizeof generate);
        host.clearLog();
        const auto size = static_cast<std::int32_t>(sizeof(PluginFlareGenerateRec)) + c.sizeChange;
        EXPECT_EQ(host.call(kCmdFlareGenerate, record.data(), size), c.expected);
        EXPECT_TRUE(image.storage() == before) << "the buffer changed";
        EXPECT_EQ(host.requestCount(kHostStatus), 0);
    }
}

// ---------------------------------------------------------------------------
// Buffers that hold part of the frame
// ---------------------------------------------------------------------------

enum class Expect {
    kExact,    // every pixel inside the frame equals the full frame's
    kDither,   // as kExact but 32-bit channels may differ by the dither
    kShifted,  // the base moved 2 bytes per column the buffer begins left of the frame
};

struct PartCase {
    const char* name;
    L_Rect rect;
    Background background;
    Expect expect48;
    Expect expect32;
    // The buffer's first row lies inside a streak's rows. A streak edge that
    // has not been consumed yet and is first sliced several rows below its
    // top catches up by one step fewer than the rows it skipped, so on such
    // a buffer a slanted streak lies up to a step off the full frame's. Its
    // pixels may differ; all others may not.
    bool startsInStreaks;
};

// The byte offset at which the flare row starts in a buffer row, as the
// 'GENF' rule moves the base: 2 bytes for every column that the buffer
// begins left of the frame, whatever the pixel size.
std::size_t shiftedStart(const L_Rect& rect)
{
    return rect.left < kFrame.left ? static_cast<std::size_t>(kFrame.left - rect.left) * 2 : 0;
}

// Whether frame pixel (x, y) lies in the band of one of the streaks: within
// 3 pixels of its axis and of its length from its origin.
bool inStreakBand(const std::vector<const StreakElement*>& streaks, std::int32_t x, std::int32_t y)
{
    for (const StreakElement* streak : streaks) {
        const double dx = x - static_cast<double>(streak->streakXPos);
        const double dy = y - static_cast<double>(streak->streakYPos);
        const double across = std::fabs(dx * streak->streakDY - dy * streak->streakDX);
        if (streak->streakFlareColors > 0 && across <= 3.0 &&
            std::hypot(dx, dy) <= streak->streakFlareColors + 3.0)
            return true;
    }
    return false;
}

struct PartCheck {
    Expect expect;
    int writers;  // elements that may write one pixel: each write may round the other way under other noise
    const std::vector<const StreakElement*>* streaks;  // non-null: their bands may differ
};

void expectPart(const GuardedImage& part, const GuardedImage& whole, const GuardedImage& untouched,
                const PartCheck& check)
{
    const L_Rect rect = part.rect();
    const std::size_t pixel = part.pixelSize();
    for (std::uint32_t y = 0; y < part.height(); ++y) {
        const std::int32_t fy = rect.top + static_cast<std::int32_t>(y);
        const bool rowInFrame = fy >= kFrame.top && fy < kFrame.bottom;
        if (check.expect == Expect::kShifted) {
            // The flare row of frame columns left..right-1 lands at the
            // moved base; the rest of the buffer row keeps its background.
            const std::size_t start = shiftedStart(rect);
            const std::size_t length = kFrame.width * pixel;
            ASSERT_LE(start + length, part.rowPixelBytes());
            for (std::size_t b = 0; b < part.rowPixelBytes(); ++b) {
                std::uint8_t expected = untouched.row(y)[b];
                if (rowInFrame && b >= start && b < start + length)
                    expected = whole.row(static_cast<std::uint32_t>(fy - kFrame.top))[b - start];
                ASSERT_EQ(part.row(y)[b], expected) << "row " << fy << " byte " << b;
            }
            continue;
        }
        for (std::uint32_t x = 0; x < part.width(); ++x) {
            const std::int32_t fx = rect.left + static_cast<std::int32_t>(x);
            const std::uint8_t* got = part.pixel(x, y);
            if (!rowInFrame || fx < kFrame.left || fx >= kFrame.right) {
                ASSERT_EQ(0, std::memcmp(got, untouched.pixel(x, y), pixel)) << "outside the frame: " << fx << ","
                                                                              << fy;
                continue;
            }
            const std::uint8_t* want =
                whole.pixel(static_cast<std::uint32_t>(fx - kFrame.left), static_cast<std::uint32_t>(fy - kFrame.top));
            if (check.streaks && std::memcmp(got, want, pixel) != 0 && inStreakBand(*check.streaks, fx, fy))
                continue;
            if (check.expect == Expect::kExact || pixel != 4) {
                ASSERT_EQ(0, std::memcmp(got, want, pixel)) << "frame pixel " << fx << "," << fy;
                continue;
            }
            // 32 bits, dithered: the noise of a pixel depends on how many
            // pixels of its row were written before it, which a buffer that
            // begins right of the frame's left does not see. The noise adds
            // less than one level per write.
            ASSERT_EQ(got[3], want[3]) << "alpha at " << fx << "," << fy;
            for (int c = 0; c < 3; ++c)
                ASSERT_LE(std::abs(got[c] - want[c]), check.writers)
                    << "channel " << c << " at " << fx << "," << fy;
        }
    }
}

TEST_F(RenderTest, BuffersHoldingPartOfTheFrame)
{
    // The streaks of the styles lie between rows 37 and 125 of the frame.
    const PartCase cases[] = {
        {"below the top and the streaks, at the frame's left", makeRect(0, 150, kWidth, kHeight),
         Background::kGradient, Expect::kExact, Expect::kExact, false},
        {"below the streaks, reaching past the bottom", makeRect(0, 140, kWidth, kHeight + 60),
         Background::kGradient, Expect::kExact, Expect::kExact, false},
        {"starting inside the streaks, at the frame's left", makeRect(0, 100, kWidth, kHeight),
         Background::kGradient, Expect::kExact, Expect::kExact, true},
        {"the light's row alone", makeRect(0, 81, kWidth, 82), Background::kGradient, Expect::kExact, Expect::kExact,
         true},
        // The base needs no column move when the buffer begins right of the
        // frame's left; only the 32-bit dither sees the missing columns.
        {"right of the left, past the right and bottom", makeRect(200, 40, kWidth + 100, kHeight + 40),
         Background::kGradient, Expect::kExact, Expect::kDither, false},
        {"inside the frame", makeRect(100, 30, 300, 200), Background::kGradient, Expect::kExact, Expect::kDither,
         false},
        {"inside the frame and the streaks", makeRect(120, 70, 200, 110), Background::kGradient, Expect::kExact,
         Expect::kDither, true},
        // A buffer that begins left of the frame: the base moves 2 bytes a
        // column (80 bytes here), not a pixel a column.
        {"left of the frame, rows inside", makeRect(-40, 30, kWidth, 200), Background::kUniform, Expect::kShifted,
         Expect::kShifted, false},
        {"left of and above the frame", makeRect(-8, -12, kWidth + 4, 120), Background::kUniform, Expect::kShifted,
         Expect::kShifted, false},
    };
    for (std::int32_t style = 1; style <= kPinnedStyleCount; ++style) {
        for (std::int16_t depth : {48, 32}) {
            ASSERT_NO_FATAL_FAILURE(startStyle(host, style));
            const auto gradientWhole = renderFrame(host, depth, Background::kGradient);
            ASSERT_EQ(host.setup(typicalFrame()), kPluginNoError);
            const auto uniformWhole = renderFrame(host, depth, Background::kUniform);
            for (const PartCase& c : cases) {
                SCOPED_TRACE(std::string(c.name) + ", style " + std::to_string(style) + " " + depthName(depth));
                ASSERT_EQ(host.setup(typicalFrame()), kPluginNoError);
                GuardedImage untouched(c.rect, depth);
                paintBackground(untouched, c.background);
                GuardedImage part(c.rect, depth);
                paintBackground(part, c.background);
                host.clearLog();
                ASSERT_EQ(generate(host, part), kPluginNoError);
                EXPECT_EQ(part.damagedGuard(), std::nullopt);
                const GuardedImage& whole = c.background == Background::kGradient ? *gradientWhole : *uniformWhole;
                const auto streaks = host.streaks();
                const PartCheck check{depth == 48 ? c.expect48 : c.expect32,
                                      static_cast<int>(host.rings().size() + streaks.size()),
                                      c.startsInStreaks ? &streaks : nullptr};
                ASSERT_NO_FATAL_FAILURE(expectPart(part, whole, untouched, check));

                // Progress counts the frame's rows: from the first row the
                // buffer holds to the last, one report per row.
                const std::int32_t first = std::max(c.rect.top, kFrame.top) - kFrame.top;
                const std::int32_t last = std::min(c.rect.bottom, kFrame.bottom) - kFrame.top;
                const auto& reports = host.statusReports();
                ASSERT_EQ(reports.size(), static_cast<std::size_t>(last - first + 2));
                EXPECT_EQ(reports.front().value, first);
                EXPECT_EQ(reports.front().maximum, kHeight);
                EXPECT_FLOAT_EQ(reports.front().position, static_cast<float>(first) / kHeight);
                EXPECT_EQ(reports.back().value, last);
            }
        }
    }
}

// A streak edge first sliced below its top row lags one step behind: the
// rows of a streak rendered in a buffer that begins inside it are not those
// of the whole frame (a host that splits a frame into bands sees it at the
// seams). Pinned, so that a change to the catch-up shows.
TEST_F(RenderTest, BandStartingInsideADiagonalStreakLagsOneStep)
{
    ASSERT_NO_FATAL_FAILURE(startStyle(host, 2));
    const auto whole = renderFrame(host, 48, Background::kGradient);
    ASSERT_EQ(host.setup(typicalFrame()), kPluginNoError);
    GuardedImage band(makeRect(0, 100, kWidth, kHeight), 48);
    paintBackground(band, Background::kGradient);
    ASSERT_EQ(generate(host, band), kPluginNoError);
    std::size_t differing = 0;
    for (std::uint32_t y = 0; y < band.height(); ++y)
        for (std::uint32_t x = 0; x < kWidth; ++x)
            differing += std::memcmp(band.pixel(x, y), whole->pixel(x, y + 100), 6) != 0;
    EXPECT_GT(differing, 0u) << "the band's streaks now match the whole frame's: the catch-up changed";
}

// ---------------------------------------------------------------------------
// Progress and cancel
// ---------------------------------------------------------------------------

struct CancelCase {
    std::int16_t depth;
    int cancelAt;  // the report (counted from 0) that the host answers with a cancel
};

// The host answers 4 from a given report on: the command returns 4, the
// rows before the cancel are done exactly as in a whole render, nothing
// after it is touched, and no report follows the cancel.
TEST_F(RenderTest, CancelStopsBeforeTheNextRow)
{
    const CancelCase cases[] = {{48, 0}, {48, 2}, {48, 120}, {32, 2}, {32, 97}, {8, 0}, {8, 2}, {8, 5}};
    for (std::int32_t style = 1; style <= kPinnedStyleCount; ++style) {
        ASSERT_NO_FATAL_FAILURE(startStyle(host, style));
        for (const CancelCase& c : cases) {
            SCOPED_TRACE("style " + std::to_string(style) + " " + depthName(c.depth) + " cancel at report " +
                         std::to_string(c.cancelAt));
            host.options.cancelAfterReports = -1;
            ASSERT_EQ(host.setup(typicalFrame()), kPluginNoError);
            const auto whole = renderFrame(host, c.depth);

            ASSERT_EQ(host.setup(typicalFrame()), kPluginNoError);
            GuardedImage image(kFrame, c.depth);
            paintBackground(image, Background::kGradient);
            GuardedImage untouched(kFrame, c.depth);
            paintBackground(untouched, Background::kGradient);
            host.options.cancelAfterReports = c.cancelAt;
            host.clearLog();
            EXPECT_EQ(generate(host, image), kPluginUserCanceled);
            host.options.cancelAfterReports = -1;
            EXPECT_EQ(host.statusReports().size(), static_cast<std::size_t>(c.cancelAt + 1));
            EXPECT_EQ(image.damagedGuard(), std::nullopt);

            if (c.depth == 8)
                continue;
            const auto rowsDone = static_cast<std::uint32_t>(c.cancelAt);
            for (std::uint32_t y = 0; y < kHeight; ++y) {
                const GuardedImage& expected = y < rowsDone ? *whole : untouched;
                ASSERT_EQ(0, std::memcmp(image.row(y), expected.row(y), image.rowPixelBytes()))
                    << "row " << y << (y < rowsDone ? " should be painted" : " should be untouched");
            }
        }
    }
}

} // namespace
} // namespace glintwave::testhost
