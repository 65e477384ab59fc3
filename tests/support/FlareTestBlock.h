/*
 * FlareTestBlock.h - plug-in data blocks built by hand for the model and
 * renderer tests and the benchmarks: a header with neutral settings, ring
 * and streak elements with their stops laid out as the loader lays them out,
 * and image buffers to paint into.
 */
#ifndef GLINTWAVE_TEST_FLARE_TEST_BLOCK_H
#define GLINTWAVE_TEST_FLARE_TEST_BLOCK_H

#include <stdint.h>
#include <string.h>

#include <initializer_list>
#include <vector>

#include "FlareModel.h"
#include "FlareRender.h"
#include "glintwave/GlintwaveRecords.h"
#include "RectUtils.h"

namespace flaretest {

struct Stop {
    float radius;
    uint16_t red, green, blue;
};

inline void SetAllChannels(ARGB_Color* theColor, uint16_t value)
{
    theColor->alpha = theColor->red = theColor->green = theColor->blue = (int16_t)value;
}

/* Neutral settings: nothing switched off, all factors 1. */
inline ControlDataRec NeutralControl()
{
    ControlDataRec c;
    memset(&c, 0, sizeof c);
    c.ownerType = kFlareOwnerType;
    c.ownerVersion = kFlareVersion;
    c.flareAspectRatio = 1.0;
    c.flareRingScale = c.flareRingIntensity = c.flareRingContrast = 1.0;
    c.flareStreakScale = c.flareStreakIntensity = c.flareStreakContrast = 1.0;
    SetAllChannels(&c.flareRingColor, 0xFFFF);
    SetAllChannels(&c.flareOriginGlowColor, 0xFFFF);
    SetAllChannels(&c.flareOuterGlowColor, 0xFFFF);
    SetAllChannels(&c.flareHaloColor, 0xFFFF);
    SetAllChannels(&c.flareStreakColor, 0xFFFF);
    return c;
}

/* A plug-in data block of a given size with elements appended behind the
   header, as the loader lays them out. */
class FlareTestBlock {
public:
    explicit FlareTestBlock(int32_t blockBytes = 1 << 20)
        : storage_(((size_t)blockBytes + 7) / 8, 0), size_(blockBytes), end_((int32_t)sizeof(PluginDataRec))
    {
        control = NeutralControl();
        PluginDataRec* d = data();
        d->flareXScale = d->flareYScale = 10.0;
        d->flareLightIntensity = 1.0;
        d->flareLightColor.colorValue = 0xFFFFFFFFu;
        SetFrame(0, 0, 100, 100);
        d->flareElementSize = end_;
        d->flareDataSize = size_;
    }

    PluginDataRec* data() { return reinterpret_cast<PluginDataRec*>(storage_.data()); }
    char* bytes() { return reinterpret_cast<char*>(storage_.data()); }
    int32_t size() const { return size_; }

    void SetFrame(int32_t left, int32_t top, int32_t right, int32_t bottom)
    {
        SetLRect(&data()->flareRect, left, top, right, bottom);
    }

    void SetLight(double lightX, double lightY, double centerX, double centerY, double scale)
    {
        PluginDataRec* d = data();
        d->flareXPosition = lightX;
        d->flareYPosition = lightY;
        d->flareXCenter = centerX;
        d->flareYCenter = centerY;
        d->flareXScale = d->flareYScale = scale;
    }

    RingElement* AddRing(int32_t type, float position, float outer, std::initializer_list<Stop> stops)
    {
        int32_t offset = end_;
        RingElement* r = At<RingElement>(offset);
        memset(r, 0, sizeof *r);
        r->ringType = type;
        r->ringPosition = position;
        r->ringOuter = outer;
        r->ringScale = r->ringIntensity = 1.0f;
        SetAllChannels(&r->ringColor, 0xFFFF);
        r->ringElementColors = (int32_t)stops.size();
        end_ += (int32_t)sizeof(RingElement);
        PutStops(stops);
        if (lastRing_ == 0)
            data()->flareRingFirst = offset;
        else
            At<RingElement>(lastRing_)->ringNext = offset;
        lastRing_ = offset;
        control.flareRingCount += 1;
        Seal();
        return r;
    }

    StreakElement* AddStreak(float position, float dirX, float dirY, float inner, float outer,
                             std::initializer_list<Stop> stops)
    {
        int32_t offset = end_;
        StreakElement* s = At<StreakElement>(offset);
        memset(s, 0, sizeof *s);
        s->streakPosition = position;
        s->streakX = dirX;
        s->streakY = dirY;
        s->streakInner = inner;
        s->streakOuter = outer;
        s->streakScale = s->streakIntensity = 1.0f;
        SetAllChannels(&s->streakColor, 0xFFFF);
        s->streakElementColors = (int32_t)stops.size();
        end_ += (int32_t)sizeof(StreakElement);
        PutStops(stops);
        if (lastStreak_ == 0)
            data()->flareStreakFirst = offset;
        else
            At<StreakElement>(lastStreak_)->streakNext = offset;
        lastStreak_ = offset;
        control.flareStreakCount += 1;
        Seal();
        return s;
    }

    /* A ramp of hand-made entries for painter tests that set an element's
       geometry themselves; ramps are kept in the upper half of the block,
       clear of the elements. Returns its offset. */
    int32_t AddRamp(const std::vector<FlareColor>& entries)
    {
        int32_t offset = rampEnd_;
        memcpy(bytes() + offset, entries.data(), entries.size() * sizeof(FlareColor));
        rampEnd_ += ((int32_t)(entries.size() * sizeof(FlareColor)) + 7) & ~7;
        return offset;
    }

    /* Gives a ring a hand-made ramp and geometry: centre, 16.16 factors and
       box, as the painters read them. */
    void SetRingPaint(RingElement* r, float x, float y, float xFactor, float yFactor,
                      const std::vector<FlareColor>& entries)
    {
        r->ringXPos = x;
        r->ringYPos = y;
        r->ringXFactor = xFactor;
        r->ringYFactor = yFactor;
        r->ringFlareColors = (int32_t)entries.size() - 1;
        r->ringFlareColorBase = AddRamp(entries);
        SetLRect(&r->ringRect, -100000, -100000, 100000, 100000);
    }

    /* Lays out geometry and ramps as the data check does. */
    int32_t Layout()
    {
        data()->flareElementSize = end_;
        data()->flareDataSize = size_;
        return CalcFlareInfo(&control, data());
    }

    template <class T>
    T* At(int32_t offset)
    {
        return reinterpret_cast<T*>(bytes() + offset);
    }

    FlareColor* RampOf(const RingElement* r) { return At<FlareColor>(r->ringFlareColorBase); }
    FlareColor* RampOf(const StreakElement* s) { return At<FlareColor>(s->streakFlareColorBase); }

    ControlDataRec control;

private:
    void PutStops(std::initializer_list<Stop> stops)
    {
        ElementColor* c = At<ElementColor>(end_);
        for (const Stop& s : stops) {
            memset(c, 0, sizeof *c);
            c->rgb.radius = s.radius;
            c->rgb.alpha = 0xFFFF;
            c->rgb.red = s.red;
            c->rgb.green = s.green;
            c->rgb.blue = s.blue;
            ++c;
        }
        end_ += ((int32_t)stops.size() * (int32_t)sizeof(ElementColor) + 7) & ~7;
    }

    /* Element area ends here; the rest of the block is free. */
    void Seal()
    {
        data()->flareElementSize = end_;
        data()->flareDataSize = size_;
    }

    std::vector<uint64_t> storage_;
    int32_t size_;
    int32_t end_;
    int32_t lastRing_ = 0;
    int32_t lastStreak_ = 0;
    int32_t rampEnd_ = (size_ / 2 + 7) & ~7;
};

/* An image to paint into, with guard bytes around it so stray writes show. */
class TestImage {
public:
    static constexpr int kGuard = 64;

    TestImage(int32_t width, int32_t height, int32_t depth, uint8_t fill = 0)
        : width_(width), height_(height), depth_(depth),
          rowBytes_(width * (depth == 48 ? 6 : depth == 32 ? 4 : 1) + 8),
          storage_((size_t)rowBytes_ * height + 2 * kGuard, fill)
    {
        memset(storage_.data(), kGuardByte, kGuard);
        memset(storage_.data() + storage_.size() - kGuard, kGuardByte, kGuard);
    }

    unsigned char* base() { return storage_.data() + kGuard; }
    int32_t rowBytes() const { return rowBytes_; }
    int32_t width() const { return width_; }
    int32_t height() const { return height_; }
    int32_t depth() const { return depth_; }

    /* Describes the image, placed at (left, top) of the frame, as the buffer
       being painted. */
    void Attach(PluginDataRec* theData, int32_t left = 0, int32_t top = 0)
    {
        GlintwaveBuffer& b = theData->flarePixelBuffer;
        b.bufferBase = base();
        b.bufferRowBytes = rowBytes_;
        SetLRect(&b.bufferRect, left, top, left + width_, top + height_);
        b.bufferDepth = depth_;
        b.bufferIndex = 0;
    }

    bool GuardsIntact() const
    {
        for (int i = 0; i < kGuard; ++i)
            if (storage_[i] != kGuardByte || storage_[storage_.size() - 1 - i] != kGuardByte)
                return false;
        return true;
    }

    FlareColor Pixel48(int32_t x, int32_t y)
    {
        FlareColor c;
        memcpy(&c, base() + (size_t)y * rowBytes_ + (size_t)x * 6, sizeof c);
        return c;
    }
    void SetPixel48(int32_t x, int32_t y, FlareColor c)
    {
        memcpy(base() + (size_t)y * rowBytes_ + (size_t)x * 6, &c, sizeof c);
    }
    uint32_t Pixel32(int32_t x, int32_t y)
    {
        uint32_t v;
        memcpy(&v, base() + (size_t)y * rowBytes_ + (size_t)x * 4, sizeof v);
        return v;
    }
    void SetPixel32(int32_t x, int32_t y, uint32_t v)
    {
        memcpy(base() + (size_t)y * rowBytes_ + (size_t)x * 4, &v, sizeof v);
    }
    uint8_t Pixel8(int32_t x, int32_t y) { return base()[(size_t)y * rowBytes_ + x]; }

    void Fill48(FlareColor c)
    {
        for (int32_t y = 0; y < height_; ++y)
            for (int32_t x = 0; x < width_; ++x)
                SetPixel48(x, y, c);
    }
    void Fill32(uint32_t v)
    {
        for (int32_t y = 0; y < height_; ++y)
            for (int32_t x = 0; x < width_; ++x)
                SetPixel32(x, y, v);
    }

    /* FNV-1a over the pixel bytes of every row (row padding excluded). */
    uint64_t Checksum() const
    {
        uint64_t h = 14695981039346656037ull;
        int bytesPerRow = width_ * (depth_ == 48 ? 6 : depth_ == 32 ? 4 : 1);
        for (int32_t y = 0; y < height_; ++y) {
            const unsigned char* row = storage_.data() + kGuard + (size_t)y * rowBytes_;
            for (int i = 0; i < bytesPerRow; ++i) {
                h ^= row[i];
                h *= 1099511628211ull;
            }
        }
        return h;
    }

    const std::vector<unsigned char>& storage() const { return storage_; }

private:
    static constexpr uint8_t kGuardByte = 0xA5;
    int32_t width_, height_, depth_, rowBytes_;
    std::vector<unsigned char> storage_;
};

/* The painters' dither sequence, written out independently for checking. */
inline uint32_t ReferenceNoise(uint32_t* seed)
{
    *seed = *seed * 1103515245u + 12345u;
    return *seed >> 26;
}

/* A lens reflection along the axis: solid (its colour out to 85 % of the
   radius) or hollow (a bright rim at 92 % over a third of the colour). */
struct ReflectionSpec {
    float position, outer;
    uint16_t r, g, b;
    bool hollow;
};

inline void AddReflections(FlareTestBlock& block, std::initializer_list<ReflectionSpec> reflections)
{
    for (const ReflectionSpec& r : reflections) {
        if (r.hollow)
            block.AddRing(kRingReflection, r.position, r.outer,
                          {{0.0f, 0, 0, 0}, {0.7f, (uint16_t)(r.r / 3), (uint16_t)(r.g / 3), (uint16_t)(r.b / 3)},
                           {0.92f, r.r, r.g, r.b}, {1.0f, 0, 0, 0}});
        else
            block.AddRing(kRingReflection, r.position, r.outer,
                          {{0.0f, r.r, r.g, r.b}, {0.85f, r.r, r.g, r.b}, {1.0f, 0, 0, 0}});
    }
}

}  // namespace flaretest

#endif /* GLINTWAVE_TEST_FLARE_TEST_BLOCK_H */
