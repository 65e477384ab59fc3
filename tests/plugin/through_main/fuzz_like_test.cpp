// Randomised hostile input through Main, from a fixed seed so that every run
// makes the same few hundred rounds.
//
// Each round gives the plug-in a flare table, a settings block, a working
// block and a host whose answers are drawn at random, then a random sequence
// of commands: frame set-ups with any doubles and rectangles, paints into
// small buffers at any depth and position, and the other commands with
// records of any size. Every answer must be one of the documented result
// codes, and no paint may touch a byte the buffer description does not
// cover: each buffer sits between guard bytes and its row padding is checked
// as well. Built with the sanitizers, the same rounds also prove that nothing
// is read out of bounds and no undefined arithmetic is reached.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <utility>

#include "HostFixture.h"

namespace glintwave::testhost {
namespace {

constexpr std::uint64_t kSeed = 0x9E3779B97F4A7C15u;
constexpr int kRounds = 300;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

bool documentedCode(std::int32_t code)
{
    switch (code) {
    case kPluginNoError:
    case kPluginMemoryError:
    case kPluginUnsupported:
    case kPluginIncompatible:
    case kPluginUserCanceled:
    case kPluginOutOfSequence:
    case kPluginResourceMissing:
    case kPluginModeUnsupported:
        return true;
    default:
        return false;
    }
}

// The random source of the rounds, with the hostile values each kind of
// field is tried with.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : engine_(seed) {}

    std::uint32_t bits() { return static_cast<std::uint32_t>(engine_()); }
    std::int64_t between(std::int64_t lo, std::int64_t hi)
    {
        return std::uniform_int_distribution<std::int64_t>(lo, hi)(engine_);
    }
    bool chance(int percent) { return between(0, 99) < percent; }
    template <class T, std::size_t N>
    T pick(const T (&values)[N])
    {
        return values[between(0, static_cast<std::int64_t>(N) - 1)];
    }

    // Values at the edges of every conversion the plug-in makes, plausible
    // values, and raw bit patterns.
    double anyDouble()
    {
        static const double kSpecial[] = {
            kNaN, -kNaN, kInf, -kInf, 1e300, -1e300, 0.0, -0.0,
            std::numeric_limits<double>::denorm_min(), 1e-300, 3.4028234663852886e38, 3.5e38, -3.5e38,
            0x1.fffffefffffffp127, 0x1.ffffffp127, 2147483648.0, -2147483649.0, 4294967296.0, 1e9, -1e9,
            1.0, -1.0, 0.5, 2.0, 65536.0};
        const std::int64_t kind = between(0, 99);
        if (kind < 35)
            return pick(kSpecial);
        if (kind < 80) {
            static const double kScales[] = {1.0, 10.0, 100.0, 1000.0};
            return std::uniform_real_distribution<double>(-1.0, 1.0)(engine_) * pick(kScales);
        }
        const std::uint64_t raw = engine_();
        double value;
        std::memcpy(&value, &raw, sizeof value);
        return value;
    }

    std::int32_t anyInt32()
    {
        static const std::int32_t kSpecial[] = {0, 1, -1, 2, INT32_MIN, INT32_MAX, INT32_MIN + 1, INT32_MAX - 1,
                                                32767, -32767, -32768, 65535, 1000, -1000};
        const std::int64_t kind = between(0, 99);
        if (kind < 30)
            return pick(kSpecial);
        if (kind < 80)
            return static_cast<std::int32_t>(between(-2000, 2000));
        return static_cast<std::int32_t>(bits());
    }

    // A plausible value, or in a hostile round now and then any value.
    double maybeHostile(double plausible) { return chance(hostility) ? anyDouble() : plausible; }
    std::int32_t maybeHostile(std::int32_t plausible) { return chance(hostility) ? anyInt32() : plausible; }

    // Percent of the fields a round makes hostile. A calm round (0) keeps
    // every value plausible, so that the painters get whole flares to draw;
    // mildly hostile rounds reach them with a few extreme values.
    int hostility = 0;
    bool calm() const { return hostility == 0; }

    Bytes bytes(std::size_t size)
    {
        Bytes out(size);
        for (std::uint8_t& byte : out)
            byte = static_cast<std::uint8_t>(engine_());
        return out;
    }

private:
    std::mt19937_64 engine_;
};

std::vector<StopSpec> randomStops(Dice& dice, std::int32_t outside)
{
    std::vector<StopSpec> stops(static_cast<std::size_t>(dice.between(0, 5)));
    std::int32_t radius = 0;
    for (StopSpec& stop : stops) {
        // Usually increasing radii within the element, as tables are written.
        const std::int64_t next = static_cast<std::int64_t>(radius) + dice.between(0, std::max(1, outside / 3));
        radius = dice.chance(dice.hostility) ? dice.anyInt32()
                                             : static_cast<std::int32_t>(std::min<std::int64_t>(next, INT32_MAX));
        stop.radius = radius;
        stop.alpha = static_cast<std::uint16_t>(dice.bits());
        stop.red = static_cast<std::uint16_t>(dice.chance(30) ? 65535 : dice.bits());
        stop.green = static_cast<std::uint16_t>(dice.bits());
        stop.blue = static_cast<std::uint16_t>(dice.bits());
    }
    return stops;
}

Bytes randomRing(Dice& dice)
{
    if (dice.chance(dice.hostility / 6))
        return dice.bytes(static_cast<std::size_t>(dice.between(0, 150)));
    RingSpec ring;
    ring.name = std::string(static_cast<std::size_t>(dice.between(0, 31)), 'r');
    if (dice.chance(dice.hostility / 3))
        ring.nameLength = static_cast<std::uint8_t>(dice.bits());
    ring.type = dice.chance(dice.hostility) ? dice.anyInt32() : static_cast<std::int32_t>(dice.between(0, 3));
    ring.mode = dice.chance(dice.hostility) ? dice.bits() : 0u;
    static const std::int32_t kUnits[] = {1000, 100, 1, 0, -1, -1000, INT32_MIN};
    ring.units = dice.chance(dice.hostility) ? dice.pick(kUnits) : 1000;
    ring.offset = dice.maybeHostile(static_cast<std::int32_t>(dice.between(-2000, 2000)));
    ring.inside = dice.maybeHostile(0);
    ring.outside = dice.maybeHostile(static_cast<std::int32_t>(dice.between(0, 3000)));
    ring.stops = randomStops(dice, ring.outside);
    if (dice.chance(dice.hostility / 2))
        ring.declaredStops = dice.anyInt32();
    return ringResource(ring);
}

Bytes randomStreak(Dice& dice)
{
    if (dice.chance(dice.hostility / 6))
        return dice.bytes(static_cast<std::size_t>(dice.between(0, 150)));
    StreakSpec streak;
    streak.mode = dice.chance(dice.hostility) ? dice.bits() : 0u;
    static const std::int32_t kUnits[] = {1000, 100, 1, 0, -1, INT32_MIN};
    streak.units = dice.chance(dice.hostility) ? dice.pick(kUnits) : 1000;
    streak.offset = dice.maybeHostile(static_cast<std::int32_t>(dice.between(-2000, 2000)));
    streak.inside = dice.maybeHostile(0);
    streak.outside = dice.maybeHostile(static_cast<std::int32_t>(dice.between(0, 3000)));
    streak.dirX = dice.maybeHostile(static_cast<std::int32_t>(dice.between(-5, 5)));
    streak.dirY = dice.maybeHostile(static_cast<std::int32_t>(dice.between(-5, 5)));
    streak.stops = randomStops(dice, streak.outside);
    if (dice.chance(dice.hostility / 2))
        streak.declaredStops = dice.anyInt32();
    return streakResource(streak);
}

// Style 1's table: rings 10.., streaks 30.., in groups that may lie about
// their ids and count.
void writeRandomTable(FlareTableFolder& folder, Dice& dice)
{
    if (dice.chance(dice.hostility / 10)) {
        folder.writeRaw(dice.bytes(static_cast<std::size_t>(dice.between(0, 300))));
        return;
    }
    const auto rings = static_cast<std::int16_t>(dice.between(0, 4));
    const auto streaks = static_cast<std::int16_t>(dice.between(0, 3));
    for (std::int16_t i = 0; i < rings; i++)
        folder.add(kRingResType, static_cast<std::int16_t>(10 + i), randomRing(dice));
    for (std::int16_t i = 0; i < streaks; i++)
        folder.add(kStreakResType, static_cast<std::int16_t>(30 + i), randomStreak(dice));

    std::vector<GroupSpec> groups;
    if (rings > 0)
        groups.push_back({kRingResType, 10, static_cast<std::int16_t>(10 + rings - 1)});
    if (streaks > 0)
        groups.push_back({kStreakResType, 30, static_cast<std::int16_t>(30 + streaks - 1)});
    if (groups.empty() || dice.chance(dice.hostility / 3)) {
        // A group of any kind over any ids.
        static const std::uint32_t kTypes[] = {kRingResType, kStreakResType, kFlareResType, 0u};
        groups.push_back({dice.pick(kTypes), static_cast<std::int16_t>(dice.bits()),
                          static_cast<std::int16_t>(dice.bits())});
    }
    std::optional<std::int32_t> declared;
    if (dice.chance(dice.hostility / 3))
        declared = dice.anyInt32();
    Bytes info = flareInfoResource(groups, declared);
    if (dice.chance(dice.hostility / 6))
        info.resize(static_cast<std::size_t>(dice.between(0, static_cast<std::int64_t>(info.size()))));
    folder.add(kFlareResType, static_cast<std::int16_t>(kFlareResBaseID + 1), info);
    folder.write();
}

// Settings a user could have made: any rotation, aspect ratio and scales in
// the dialog's ranges, any switches.
ControlDataRec calmHeader(Dice& dice)
{
    ControlDataRec header = expectedDefaults();
    header.flareAspectRatio = 0.25 + static_cast<double>(dice.between(0, 300)) / 100.0;
    header.flareRotation = static_cast<double>(dice.between(-360, 360));
    header.flareRingScale = static_cast<double>(dice.between(10, 300)) / 100.0;
    header.flareRingIntensity = static_cast<double>(dice.between(0, 300)) / 100.0;
    header.flareRingContrast = static_cast<double>(dice.between(25, 400)) / 100.0;
    header.flareStreakScale = static_cast<double>(dice.between(10, 300)) / 100.0;
    header.flareStreakIntensity = static_cast<double>(dice.between(0, 300)) / 100.0;
    header.flareStreakContrast = static_cast<double>(dice.between(25, 400)) / 100.0;
    header.flareFlags = dice.chance(25) ? dice.bits() & 0xFFF00000u : 0u;
    return header;
}

// A settings block: random bytes, or a header of ours (any version, either
// byte order) with doubles, flags and counts that are hostile as often as
// the round says, and a tail of overrides.
Bytes randomControl(Dice& dice)
{
    if (dice.chance(dice.hostility / 4))
        return dice.chance(80) ? dice.bytes(static_cast<std::size_t>(dice.between(0, 600))) : Bytes{};

    ControlDataRec header = calmHeader(dice);
    for (double* field : {&header.flareAspectRatio, &header.flareRotation, &header.flareRingScale,
                          &header.flareRingIntensity, &header.flareRingContrast, &header.flareStreakScale,
                          &header.flareStreakIntensity, &header.flareStreakContrast})
        *field = dice.maybeHostile(*field);
    for (ARGB_Color* color : {&header.flareRingColor, &header.flareOriginGlowColor, &header.flareOuterGlowColor,
                              &header.flareHaloColor, &header.flareStreakColor})
        if (dice.chance(30))
            *color = ARGB_Color{static_cast<std::int16_t>(dice.bits()), static_cast<std::int16_t>(dice.bits()),
                                static_cast<std::int16_t>(dice.bits()), static_cast<std::int16_t>(dice.bits())};
    if (dice.chance(dice.hostility))
        header.flareFlags = dice.bits();
    header.flareLens = dice.chance(dice.hostility) ? dice.anyInt32() : 1;
    header.flareRingCount =
        dice.chance(dice.hostility) ? dice.anyInt32() : static_cast<std::int32_t>(dice.between(0, 5));
    header.flareStreakCount = dice.maybeHostile(0);

    if (dice.chance(dice.hostility)) {
        switch (dice.between(0, 2)) {
        case 0:
            header.ownerType = kFlareOwnerTypeSwapped;
            header.ownerVersion = kFlareVersionSwapped;
            break;
        case 1: header.ownerVersion = 5; break;
        default: header.ownerVersion = 4; break;
        }
    }

    Bytes out = bytesOf(&header, sizeof header);
    const std::int64_t overrides = dice.between(0, 6);
    for (std::int64_t i = 0; i < overrides; i++) {
        const Bytes stored = storedRingControl(
            dice.maybeHostile(1.0), dice.maybeHostile(1.0), static_cast<std::int16_t>(dice.bits()),
            static_cast<std::int16_t>(dice.bits()), static_cast<std::int16_t>(dice.bits()),
            static_cast<std::int16_t>(dice.bits()));
        out.insert(out.end(), stored.begin(), stored.end());
    }
    if (dice.chance(dice.hostility / 2)) {
        const std::size_t size = static_cast<std::size_t>(dice.between(0, 600));
        const Bytes filler = dice.bytes(size);
        const std::size_t kept = std::min(size, out.size());
        out.resize(size);
        std::copy(filler.begin() + static_cast<std::ptrdiff_t>(kept), filler.end(),
                  out.begin() + static_cast<std::ptrdiff_t>(kept));
    }
    return out;
}

// A rectangle from its edges, with width and height either consistent or
// lying.
L_Rect rectFrom(Dice& dice, std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom)
{
    L_Rect rect{top, left, bottom, right, static_cast<std::uint32_t>(right) - static_cast<std::uint32_t>(left),
                static_cast<std::uint32_t>(bottom) - static_cast<std::uint32_t>(top)};
    if (!dice.calm() && dice.chance(15)) {
        rect.width = dice.bits();
        rect.height = dice.bits();
    }
    return rect;
}

FrameSetup randomFrame(Dice& dice)
{
    FrameSetup frame;
    const std::int64_t kind = dice.chance(dice.hostility) ? dice.between(70, 99) : 0;
    std::int32_t left = static_cast<std::int32_t>(dice.between(-30, 30));
    std::int32_t top = static_cast<std::int32_t>(dice.between(-30, 30));
    std::int32_t width = static_cast<std::int32_t>(dice.between(20, 160));
    std::int32_t height = static_cast<std::int32_t>(dice.between(15, 120));
    if (kind < 70) {
        frame.frame = rectFrom(dice, left, top, left + width, top + height);
    } else if (kind < 85) {
        // Edges anywhere, the whole 32-bit plane included.
        frame.frame = rectFrom(dice, dice.chance(50) ? INT32_MIN : dice.anyInt32(), dice.anyInt32(),
                               dice.chance(50) ? INT32_MAX : dice.anyInt32(), dice.anyInt32());
    } else {
        // Inverted or empty.
        frame.frame = rectFrom(dice, left, top, left - static_cast<std::int32_t>(dice.between(0, 40)),
                               top + static_cast<std::int32_t>(dice.between(-10, 40)));
    }
    // Scale and centre as a host derives them from the frame, the light
    // somewhere in or near it.
    frame.xScale = dice.maybeHostile(std::min(width, height) / 2.0);
    frame.yScale = dice.chance(80) ? frame.xScale : dice.maybeHostile(height / 2.0);
    frame.xCenter = dice.maybeHostile(left + width / 2.0);
    frame.yCenter = dice.maybeHostile(top + height / 2.0);
    frame.blurShutter = dice.maybeHostile(frame.blurShutter);
    frame.lightPosition =
        DCoordinate{dice.maybeHostile(static_cast<double>(left + dice.between(-20, width + 20))),
                    dice.maybeHostile(static_cast<double>(top + dice.between(-20, height + 20))),
                    dice.maybeHostile(0.0)};
    if (!dice.calm())
        frame.lightBlurPosition = DCoordinate{dice.anyDouble(), dice.anyDouble(), dice.anyDouble()};
    frame.lightColor = dice.calm() || dice.chance(50) ? 0xFFFFFFFFu : dice.bits();
    frame.lightIntensity = dice.maybeHostile(frame.lightIntensity);
    frame.lightFrameRadius = dice.maybeHostile(frame.lightFrameRadius);
    if (dice.chance(40)) {
        const double angle = dice.maybeHostile(static_cast<double>(dice.between(-360, 360)) * 0.0174533);
        frame.lightMatrix.m00 = std::cos(angle);
        frame.lightMatrix.m01 = dice.maybeHostile(std::sin(angle));
        frame.lightMatrix.m10 = -std::sin(angle);
        frame.lightMatrix.m11 = dice.maybeHostile(std::cos(angle));
    }
    return frame;
}

// A small pixel buffer as the host hands it over: its rectangle in frame
// coordinates, its rows (top-down or bottom-up, with padding) between guard
// bytes. Only the pixels of the rectangle may change.
class GuardedBuffer {
public:
    static constexpr std::uint8_t kGuard = 0xA5;
    static constexpr std::size_t kGuardBytes = 64;

    GuardedBuffer(Dice& dice, std::int16_t depth, std::int32_t width, std::int32_t height)
        : depth_(depth), width_(width), height_(height)
    {
        pixelSize_ = depth == 8 ? 1 : depth == 32 ? 4 : 6;
        stride_ = static_cast<std::size_t>(width) * pixelSize_ + static_cast<std::size_t>(dice.between(0, 7));
        bottomUp_ = dice.chance(20);
        storage_.assign(kGuardBytes * 2 + stride_ * static_cast<std::size_t>(height), kGuard);
        for (std::int32_t row = 0; row < height; row++) {
            const Bytes pixels = dice.bytes(static_cast<std::size_t>(width) * pixelSize_);
            std::copy(pixels.begin(), pixels.end(), rowStart(row));
        }
        before_ = storage_;
    }

    void* base()
    {
        if (height_ == 0)
            return storage_.data() + kGuardBytes;
        return &*rowStart(bottomUp_ ? height_ - 1 : 0);
    }
    std::int32_t rowBytes() const
    {
        const auto stride = static_cast<std::int32_t>(stride_);
        return bottomUp_ ? -stride : stride;
    }

    // True when every byte outside the rectangle's pixels is as it was.
    bool untouchedOutside() const
    {
        for (std::size_t i = 0; i < storage_.size(); i++)
            if (storage_[i] != before_[i] && !insidePixels(i))
                return false;
        return true;
    }
    bool changed() const { return storage_ != before_; }

private:
    std::vector<std::uint8_t>::iterator rowStart(std::int32_t row)
    {
        return storage_.begin() + static_cast<std::ptrdiff_t>(kGuardBytes + stride_ * static_cast<std::size_t>(row));
    }
    bool insidePixels(std::size_t index) const
    {
        if (index < kGuardBytes || index >= kGuardBytes + stride_ * static_cast<std::size_t>(height_))
            return false;
        return (index - kGuardBytes) % stride_ < static_cast<std::size_t>(width_) * pixelSize_;
    }

    std::int16_t depth_;
    std::int32_t width_;
    std::int32_t height_;
    std::size_t pixelSize_ = 1;
    std::size_t stride_ = 0;
    bool bottomUp_ = false;
    std::vector<std::uint8_t> storage_;
    std::vector<std::uint8_t> before_;
};

bool intersects(const L_Rect& a, const L_Rect& b)
{
    return a.left < b.right && a.top < b.bottom && a.right > b.left && a.bottom > b.top;
}

// Where a buffer of the given size lies relative to the frame: inside it,
// across its edges, far outside, at the ends of the 32-bit plane, or with
// inverted edges.
L_Rect bufferRect(Dice& dice, const L_Rect& frame, std::int32_t width, std::int32_t height,
                  const std::optional<std::pair<std::int32_t, std::int32_t>>& aim)
{
    const std::int64_t where = dice.chance(dice.hostility) ? dice.between(0, 99) : 0;
    bool horizontal = true;
    const auto place = [&](std::int32_t from, std::int32_t to, std::int32_t size) -> std::int64_t {
        const std::int64_t extent = std::clamp<std::int64_t>(static_cast<std::int64_t>(to) - from, 1, 200);
        const bool x = horizontal;
        horizontal = false;
        if (where < 35 && aim)
            return static_cast<std::int64_t>(x ? aim->first : aim->second) - dice.between(0, size);
        if (where < 60)
            return static_cast<std::int64_t>(from) + dice.between(0, extent - 1);
        if (where < 75)
            return dice.chance(50) ? static_cast<std::int64_t>(to) - dice.between(0, size + 2)
                                   : static_cast<std::int64_t>(from) - dice.between(0, size + 2);
        if (where < 85)
            return static_cast<std::int64_t>(to) + dice.between(0, 5000);
        if (where < 95)
            return dice.chance(50) ? static_cast<std::int64_t>(INT32_MAX) - size : INT32_MIN;
        return dice.anyInt32();
    };
    const auto fit = [](std::int64_t edge, std::int32_t size) {
        return static_cast<std::int32_t>(std::clamp<std::int64_t>(edge, INT32_MIN, INT32_MAX - size));
    };
    std::int32_t left = fit(place(frame.left, frame.right, width), width);
    const std::int32_t top = fit(place(frame.top, frame.bottom, height), height);
    L_Rect rect = rectFrom(dice, left, top, left + width, top + height);
    if (!dice.calm() && dice.chance(5))
        rect = rectFrom(dice, left + width, top, left, top + height);  // inverted: never painted

    // The plug-in moves the base 2 bytes per column whatever the depth, which
    // addresses the buffer exactly only when it does not begin left of the
    // frame: hosts keep to that, and so does this one.
    if (intersects(rect, frame) && rect.left < frame.left) {
        if (frame.left > INT32_MAX - width)
            return rectFrom(dice, 5, 5, 0, 5);
        left = frame.left;
        rect = rectFrom(dice, left, top, left + width, top + height);
    }
    return rect;
}

class FuzzLikeTest : public HostTest {
protected:
    void expectDocumented(const std::string& what, std::int32_t result)
    {
        EXPECT_TRUE(documentedCode(result)) << what << " answered " << result;
    }

    void randomHost(Dice& dice)
    {
        static const std::int32_t kBudgets[] = {2 * 1024 * 1024, 256 * 1024, 0, 100,
                                                static_cast<std::int32_t>(sizeof(PluginDataRec)) + 1,
                                                static_cast<std::int32_t>(sizeof(PluginDataRec)) + 3000};
        host.options.freeBudget = dice.chance(70) ? 2 * 1024 * 1024 : dice.pick(kBudgets);
        host.options.freeAnswer = dice.chance(4) ? kPluginMemoryError : 0;
        host.options.allocAnswer = dice.chance(4) ? kPluginMemoryError : 0;
        static const std::int32_t kResetAnswers[] = {kPluginMemoryError, kPluginUnsupported, kPluginUserCanceled};
        host.options.resetChannelAnswer = dice.chance(5) ? dice.pick(kResetAnswers) : 0;
        host.options.cancelAfterReports = dice.chance(15) ? static_cast<int>(dice.between(0, 3)) : -1;
    }

    // Random bytes over the element area and the header's offsets and sizes:
    // a working block the host kept may hold anything.
    void pokePluginBlock(Dice& dice)
    {
        HostBlock& block = host.plugin();
        if (block.size() < static_cast<std::int32_t>(sizeof(PluginDataRec)))
            return;
        const std::int64_t pokes = dice.between(1, 6);
        for (std::int64_t i = 0; i < pokes; i++) {
            if (dice.chance(40)) {
                PluginDataRec* header = host.pluginHeader();
                std::int32_t value = dice.anyInt32();
                switch (dice.between(0, 4)) {
                case 0: std::memcpy(&header->flareRingFirst, &value, sizeof value); break;
                case 1: std::memcpy(&header->flareStreakFirst, &value, sizeof value); break;
                case 2: std::memcpy(&header->flareElementSize, &value, sizeof value); break;
                case 3: std::memcpy(&header->flareDataSize, &value, sizeof value); break;
                default: std::memcpy(&header->flareReset, &value, sizeof value); break;
                }
            } else if (block.size() > static_cast<std::int32_t>(sizeof(PluginDataRec))) {
                const auto at = static_cast<std::size_t>(dice.between(sizeof(PluginDataRec), block.size() - 1));
                const std::size_t length = std::min<std::size_t>(static_cast<std::size_t>(dice.between(1, 8)),
                                                                 static_cast<std::size_t>(block.size()) - at);
                const Bytes noise = dice.bytes(length);
                std::memcpy(block.data() + at, noise.data(), length);
            }
        }
    }

    void randomSetup(Dice& dice)
    {
        const FrameSetup frame = randomFrame(dice);
        if (!dice.calm() && dice.chance(5)) {
            // A record too short for the set-up.
            PluginFlareSetupRec record{};
            const auto size = static_cast<std::int32_t>(dice.between(sizeof(PluginInfoRec), sizeof record - 1));
            expectDocumented("short SETF", host.call(kCmdFlareSetup, &record, size));
            return;
        }
        expectDocumented("SETF", host.setup(frame));
    }

    void randomPaint(Dice& dice)
    {
        static const std::int16_t kDepths[] = {48, 32, 8};
        static const std::int16_t kOtherDepths[] = {24, 16, 0, -48, 64};
        std::int16_t depth = dice.pick(kDepths);
        if (dice.chance(10))
            depth = dice.chance(50) ? dice.pick(kOtherDepths) : static_cast<std::int16_t>(dice.bits());
        const auto width = static_cast<std::int32_t>(dice.between(0, 40));
        const auto height = static_cast<std::int32_t>(dice.between(0, 24));
        GuardedBuffer buffer(dice, depth, width, height);

        // The frame the plug-in will clip against: the one its working data
        // holds now (a rebuild can only reset it to the empty rectangle).
        L_Rect frame{0, 0, 0, 0, 0, 0};
        if (const PluginDataRec* header = host.pluginHeader())
            std::memcpy(&frame, &header->flareRect, sizeof frame);
        // Often aimed at an element, so that the painters have work.
        std::optional<std::pair<std::int32_t, std::int32_t>> aim;
        const std::vector<const RingElement*> rings = host.rings();
        if (!rings.empty()) {
            const RingElement* ring = rings[static_cast<std::size_t>(dice.between(0, rings.size() - 1))];
            const double x = copyOf(ring->ringXPos);
            const double y = copyOf(ring->ringYPos);
            if (std::fabs(x) < 1e9 && std::fabs(y) < 1e9)
                aim = std::make_pair(static_cast<std::int32_t>(x), static_cast<std::int32_t>(y));
        }
        const L_Rect rect = bufferRect(dice, frame, width, height, aim);

        if (dice.chance(5)) {
            PluginFlareGenerateRec record{};
            record.theFlareBuffer.bufferBase = buffer.base();
            record.theFlareBuffer.bufferRowBytes = buffer.rowBytes();
            record.theFlareBuffer.bufferRect = rect;
            record.theFlareBuffer.bufferDepth = depth;
            const auto size = static_cast<std::int32_t>(dice.between(sizeof(PluginInfoRec), sizeof record - 1));
            expectDocumented("short GENF", host.call(kCmdFlareGenerate, &record, size));
        } else {
            const std::int32_t result = host.generate(buffer.base(), buffer.rowBytes(), rect, depth,
                                                      static_cast<std::int32_t>(dice.bits()));
            expectDocumented("GENF", result);
            if (result == kPluginNoError && buffer.changed())
                paintsThatChangedPixels_++;
        }
        EXPECT_TRUE(buffer.untouchedOutside())
            << "depth " << depth << ", buffer " << rect.left << "," << rect.top << " " << width << "x" << height
            << ", frame " << frame.left << "," << frame.top << ".." << frame.right << "," << frame.bottom;
    }

    // Any of the other commands, with a record of any size.
    void randomOtherCommand(Dice& dice)
    {
        static const std::uint32_t kCommands[] = {kCmdInformation, kCmdCheck,        kCmdDescribe,
                                                  kCmdInterface,   kCmdInitChannel,  kCmdFinishChannel,
                                                  kCmdUpdateChannel, kCmdLoadChannel, kCmdFinish,
                                                  kCmdInitialize,  0u,               KV_FOURCC('G', 'E', 'N', 'X')};
        const std::uint32_t command = dice.chance(90) ? dice.pick(kCommands) : dice.bits();
        // Room for the largest record; the size handed over may be smaller.
        constexpr std::size_t kRoom = sizeof(PluginInformationRec) + 256;
        std::vector<std::uint8_t> record(kRoom);
        const Bytes noise = dice.bytes(record.size());
        std::copy(noise.begin(), noise.end(), record.begin());
        const PluginInfoRec info = host.infoRecord();
        std::memcpy(record.data(), &info, sizeof info);
        const auto size = static_cast<std::int32_t>(
            dice.chance(70) ? dice.between(sizeof(PluginInfoRec), kRoom) : dice.between(0, sizeof(PluginInfoRec)));
        expectDocumented(fourCC(command), host.callRaw(command, size, record.data()));
    }

    int paintsThatChangedPixels_ = 0;
};

TEST_F(FuzzLikeTest, EveryAnswerIsDocumentedAndNoPaintLeavesItsBuffer)
{
    Dice dice(kSeed);
    for (int round = 0; round < kRounds; round++) {
        SCOPED_TRACE("round " + std::to_string(round));
        static const int kHostility[] = {0, 0, 0, 3, 10, 30, 60};
        dice.hostility = dice.pick(kHostility);
        auto folder = std::make_unique<FlareTableFolder>();
        if (dice.calm() || dice.chance(40)) {
            folder->addStandardStyle();
            folder->write();
        } else {
            writeRandomTable(*folder, dice);
        }

        host.options = HostOptions{};
        host.options.freeBudget = 2 * 1024 * 1024;
        if (dice.chance(dice.hostility))
            randomHost(dice);
        host.control().assign(randomControl(dice));
        if (dice.calm() || dice.chance(70))
            host.plugin().clear();
        else if (dice.chance(30))
            host.plugin().assign(dice.bytes(static_cast<std::size_t>(dice.between(0, 2000))));
        // Otherwise the working block of the previous round stays.

        expectDocumented("INIT", host.init());

        // Most rounds set a frame up and paint it before anything else.
        if (dice.calm() || dice.chance(70)) {
            randomSetup(dice);
            randomPaint(dice);
        }
        const std::int64_t steps = dice.between(1, 6);
        for (std::int64_t step = 0; step < steps; step++) {
            const std::int64_t what = dice.between(0, 99);
            if (what < 35)
                randomSetup(dice);
            else if (what < 80)
                randomPaint(dice);
            else if (what < 90)
                randomOtherCommand(dice);
            else
                pokePluginBlock(dice);
        }
    }

    // The rounds must reach the painters, or they prove nothing about them.
    EXPECT_GE(paintsThatChangedPixels_, 40);
}

// Found by the rounds: a buffer or frame rectangle with inverted edges meets
// the other one in an "intersection" whose wrapped width and height are huge,
// and the sketch took those as its bounds and plotted past the buffer. Such
// a rectangle holds no pixel: nothing may be painted, at any depth.
TEST_F(FuzzLikeTest, InvertedRectanglesPaintNothing)
{
    struct Case {
        const char* name;
        L_Rect frame;   // top, left, bottom, right, width, height
        L_Rect buffer;
    };
    const L_Rect frame{0, 0, 120, 160, 160, 120};
    const Case cases[] = {
        {"buffer right of its right edge", frame, L_Rect{30, 60, 46, 40, UINT32_MAX - 19, 16}},
        {"buffer below its bottom edge", frame, L_Rect{46, 40, 30, 60, 20, UINT32_MAX - 15}},
        {"frame inverted", L_Rect{0, 160, 120, 0, UINT32_MAX - 159, 120}, L_Rect{30, 40, 46, 60, 20, 16}},
    };
    writeStandardStyle();
    ASSERT_EQ(host.init(), kPluginNoError);
    for (const Case& c : cases) {
        FrameSetup setup;
        setup.frame = c.frame;
        ASSERT_EQ(host.setup(setup), kPluginNoError) << c.name;
        for (std::int16_t depth : {48, 32, 8}) {
            SCOPED_TRACE(std::string(c.name) + ", depth " + std::to_string(depth));
            // Room for 64 x 64 pixels of 6 bytes around the base, all of
            // which must stay as they were.
            Bytes memory(64 * 64 * 6 * 2, 0x5A);
            const Bytes before = memory;
            EXPECT_EQ(host.generate(memory.data() + memory.size() / 2, 64 * 6, c.buffer, depth), kPluginNoError);
            EXPECT_TRUE(memory == before);
        }
    }
}

// The largest base move a buffer description can ask for: the whole 32-bit
// plane with rows of 2 GB, clipped to a one-pixel frame at the far corner,
// (2^32 - 2) x (2^31 + 1) bytes, just inside a signed 64-bit sum. With no
// element to paint nothing is written; the move itself must stay defined
// (the sanitizer build checks that).
TEST_F(FuzzLikeTest, BaseMoveAcrossTheWholePlaneStaysDefined)
{
    writeEmptyStyle();
    ASSERT_EQ(host.init(), kPluginNoError);
    FrameSetup frame;
    frame.frame = L_Rect{INT32_MAX - 1, INT32_MAX - 1, INT32_MAX, INT32_MAX, 1, 1};
    ASSERT_EQ(host.setup(frame), kPluginNoError);
    std::uint64_t pixel = 0;
    const L_Rect plane{INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX, UINT32_MAX, UINT32_MAX};
    for (std::int16_t depth : {48, 32, 8})
        EXPECT_EQ(host.generate(&pixel, INT32_MAX, plane, depth), kPluginNoError) << depth;
    EXPECT_EQ(pixel, 0u);
}

} // namespace
} // namespace glintwave::testhost
