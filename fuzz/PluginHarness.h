// PluginHarness.h - what the fuzzers that drive Glintwave.so through Main
// share: the plug-in loaded once from a private home folder, a host whose
// answers the input chooses, and pixel buffers kept between guard bytes.
//
// The host is the host library's PluginInstance; its request hook gives the
// canned answers (a refused 'FREE' or 'ALOC', a cancel after some 'STAT'
// reports). Every answer of the plug-in must be one of its documented result
// codes, and no paint may touch a byte its buffer description does not
// cover; either slip traps, the sanitizers catch the rest.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>
#include <stdlib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

#include "glintwave/GlintwaveRecords.h"
#include "KVPluginAPI.h"
#include "korvane/PluginHost.h"
#include "TempFolder.h"

namespace fuzz {

inline void requireDocumented(std::int32_t code)
{
    switch (code) {
    case kPluginNoError: case kPluginMemoryError: case kPluginUnsupported: case kPluginIncompatible:
    case kPluginUserCanceled: case kPluginOutOfSequence: case kPluginResourceMissing: case kPluginModeUnsupported:
        return;
    default:
        __builtin_trap();
    }
}

// The fuzzing build of the plug-in, loaded once; its home folder is a fresh
// temporary folder that the harness may write Glintwave.rsc into.
class Plugin {
public:
    static Plugin& get()
    {
        static Plugin plugin;
        return plugin;
    }
    korvane::PluginLibrary& library() { return *library_; }
    void writeTable(const std::uint8_t* bytes, std::size_t size)
    {
        std::ofstream out(folder_ / "Glintwave.rsc", std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    }
    void writeTable(const std::vector<std::uint8_t>& bytes) { writeTable(bytes.data(), bytes.size()); }

private:
    Plugin()
    {
        library_ = std::make_unique<korvane::PluginLibrary>(GLINTWAVE_FUZZ_PLUGIN);
        library_->setHomeDirectory(folder_.path());
    }
    testsupport::TempFolder folder_{"glintwave-fuzz"};
    std::unique_ptr<korvane::PluginLibrary> library_;
};

// How the host answers, chosen by the input.
struct HostScript {
    int cancelAfterReports = -1;  // >= 0: 'STAT' answers 4 from that report on
    std::int32_t freeAnswer = 0;
    std::int32_t allocAnswer = 0;
    std::int32_t resetAnswer = 0;
    int reports = 0;

    korvane::HostOptions options(FuzzedDataProvider& input)
    {
        constexpr auto kHeader = static_cast<std::int32_t>(sizeof(PluginDataRec));
        static const std::int32_t kBudgets[] = {256 << 10, 16 << 10, 0, 100, kHeader + 1, kHeader + 3000};
        korvane::HostOptions host;
        host.moveBlocks = input.ConsumeBool();
        host.statusIntervalTicks = 0;
        host.freeBudget = input.ConsumeBool() ? 64 << 10 : input.PickValueInArray(kBudgets);
        if (input.ConsumeIntegralInRange(0, 15) == 0) {
            freeAnswer = input.ConsumeBool() ? kPluginMemoryError : 0;
            allocAnswer = input.ConsumeBool() ? kPluginMemoryError : 0;
            resetAnswer = input.PickValueInArray({0, 1, 2, 4});
        }
        cancelAfterReports = input.ConsumeBool() ? -1 : input.ConsumeIntegralInRange(0, 6);
        host.onRequest = [this](std::uint32_t selector, std::int32_t, void*) -> std::optional<std::int32_t> {
            if (selector == kHostFree && freeAnswer)
                return freeAnswer;
            if (selector == kHostAllocate && allocAnswer)
                return allocAnswer;
            if (selector == kHostResetChannel && resetAnswer)
                return resetAnswer;
            if (selector == kHostStatus && cancelAfterReports >= 0 && reports++ >= cancelAfterReports)
                return kPluginUserCanceled;
            return std::nullopt;
        };
        return host;
    }
};

// A small pixel buffer as a host hands it over: rows top-down or bottom-up,
// with padding, between guard bytes. Only the pixels may change.
class GuardedBuffer {
public:
    static constexpr std::uint8_t kGuard = 0xA5;
    static constexpr std::size_t kGuardBytes = 64;

    GuardedBuffer(FuzzedDataProvider& input, std::int16_t depth, std::int32_t width, std::int32_t height)
        : width_(width), height_(height)
    {
        pixelSize_ = depth == 8 ? 1 : depth == 32 ? 4 : 6;
        stride_ = static_cast<std::size_t>(width) * pixelSize_ + input.ConsumeIntegralInRange<std::size_t>(0, 7);
        bottomUp_ = input.ConsumeIntegralInRange(0, 4) == 0;
        storage_.assign(kGuardBytes * 2 + stride_ * static_cast<std::size_t>(height), kGuard);
        const std::uint8_t fill = input.ConsumeIntegral<std::uint8_t>();
        for (std::int32_t row = 0; row < height; row++)
            std::memset(rowStart(row), fill, static_cast<std::size_t>(width) * pixelSize_);
    }
    void* base() { return height_ == 0 ? storage_.data() + kGuardBytes : rowStart(bottomUp_ ? height_ - 1 : 0); }
    std::int32_t rowBytes() const
    {
        const auto stride = static_cast<std::int32_t>(stride_);
        return bottomUp_ ? -stride : stride;
    }
    void requireGuardsIntact() const
    {
        for (std::size_t i = 0; i < storage_.size(); i++) {
            const bool pixel = i >= kGuardBytes && i < kGuardBytes + stride_ * static_cast<std::size_t>(height_) &&
                               (i - kGuardBytes) % stride_ < static_cast<std::size_t>(width_) * pixelSize_;
            if (!pixel && storage_[i] != kGuard)
                __builtin_trap();
        }
    }

private:
    std::uint8_t* rowStart(std::int32_t row)
    {
        return storage_.data() + kGuardBytes + stride_ * static_cast<std::size_t>(row);
    }
    std::int32_t width_;
    std::int32_t height_;
    std::size_t pixelSize_ = 1;
    std::size_t stride_ = 0;
    bool bottomUp_ = false;
    std::vector<std::uint8_t> storage_;
};

inline L_Rect rectOf(std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom)
{
    return L_Rect{top, left, bottom, right, static_cast<std::uint32_t>(right) - static_cast<std::uint32_t>(left),
                  static_cast<std::uint32_t>(bottom) - static_cast<std::uint32_t>(top)};
}

inline bool intersects(const L_Rect& a, const L_Rect& b)
{
    return a.left < b.right && a.top < b.bottom && a.right > b.left && a.bottom > b.top;
}

// 'GENF' into a fresh guarded buffer of the input's size, depth and place
// near the frame the working data holds. The plug-in moves the base two
// bytes per column whatever the depth, which addresses the buffer exactly
// only when it does not begin left of the frame: hosts keep to that, and so
// does this one.
inline void paint(FuzzedDataProvider& input, korvane::PluginInstance& instance)
{
    std::int16_t depth = input.PickValueInArray<std::int16_t>({48, 32, 8});
    if (input.ConsumeIntegralInRange(0, 15) == 0)
        depth = input.ConsumeIntegral<std::int16_t>();
    const auto width = input.ConsumeIntegralInRange<std::int32_t>(0, 40);
    const auto height = input.ConsumeIntegralInRange<std::int32_t>(0, 24);
    GuardedBuffer buffer(input, depth, width, height);

    L_Rect frame{0, 0, 0, 0, 0, 0};
    if (instance.pluginData().size() >= sizeof(PluginDataRec))
        std::memcpy(&frame, instance.pluginData().data() + offsetof(PluginDataRec, flareRect), sizeof frame);
    const auto place = [&](std::int32_t from, std::int32_t size) {
        const std::int64_t at = input.ConsumeIntegralInRange(0, 15) == 0
                                    ? input.ConsumeIntegral<std::int32_t>()
                                    : std::int64_t{from} + input.ConsumeIntegralInRange<std::int64_t>(-60, 240);
        return static_cast<std::int32_t>(std::clamp<std::int64_t>(at, INT32_MIN, std::int64_t{INT32_MAX} - size));
    };
    std::int32_t left = place(frame.left, width);
    const std::int32_t top = place(frame.top, height);
    L_Rect rect = rectOf(left, top, left + width, top + height);
    if (intersects(rect, frame) && rect.left < frame.left) {
        if (frame.left > INT32_MAX - width)
            return;
        left = frame.left;
        rect = rectOf(left, top, left + width, top + height);
    }
    if (input.ConsumeIntegralInRange(0, 15) == 0) {  // a rectangle whose sizes lie
        rect.width = input.ConsumeIntegral<std::uint32_t>();
        rect.height = input.ConsumeIntegral<std::uint32_t>();
    }
    PluginFlareGenerateRec record{};
    record.theFlareBuffer.bufferBase = buffer.base();
    record.theFlareBuffer.bufferRowBytes = buffer.rowBytes();
    record.theFlareBuffer.bufferRect = rect;
    record.theFlareBuffer.bufferDepth = depth;
    record.theFlareBuffer.bufferIndex = input.ConsumeIntegral<std::int32_t>();
    requireDocumented(instance.call(kCmdFlareGenerate, &record, sizeof record));
    buffer.requireGuardsIntact();
}

} // namespace fuzz
