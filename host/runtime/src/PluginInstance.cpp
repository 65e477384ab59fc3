// PluginInstance.cpp - the blocks a host keeps for a plug-in, the typed
// commands, and the host procedure that answers the plug-in's requests.

#include "korvane/PluginHost.h"

#include "korvane/MacRoman.h"
#include "korvane/ResourceToolbox.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <numbers>

namespace korvane {
namespace {

// Bytes that fill grown and released memory in the moving test mode, so that
// reading either shows up as a changed picture rather than passing by chance.
constexpr std::uint8_t kFreshByte = 0xBE;
constexpr std::uint8_t kPoisonByte = 0xDB;

std::string fromPascal(const unsigned char* text)
{
    // A PStr255 is 256 bytes, so any length byte stays inside it.
    return macRomanToUtf8(std::string_view(reinterpret_cast<const char*>(text + 1), text[0]));
}

// a + b clamped to the range of int32, for rectangles built from sizes.
std::int32_t saturatedSum(std::int32_t a, std::int32_t b)
{
    const std::int64_t sum = std::int64_t{a} + std::int64_t{b};
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(sum, std::numeric_limits<std::int32_t>::min(),
                                                              std::numeric_limits<std::int32_t>::max()));
}

L_Rect makeRect(std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height)
{
    width = std::max(width, 0);
    height = std::max(height, 0);
    L_Rect rect;
    rect.top = top;
    rect.left = left;
    rect.bottom = saturatedSum(top, height);
    rect.right = saturatedSum(left, width);
    rect.width = static_cast<std::uint32_t>(rect.right - rect.left);
    rect.height = static_cast<std::uint32_t>(rect.bottom - rect.top);
    return rect;
}

Matrix4 identity()
{
    Matrix4 m{};
    m.m00 = m.m11 = m.m22 = m.m33 = 1.0;
    return m;
}

// The light's matrix turned by `degrees` about the view axis: the plug-in
// reads the rotation back as atan2(m01, m11).
Matrix4 rotation(double degrees)
{
    Matrix4 m = identity();
    const double radians = degrees * std::numbers::pi / 180.0;
    m.m00 = std::cos(radians);
    m.m01 = std::sin(radians);
    m.m10 = -std::sin(radians);
    m.m11 = std::cos(radians);
    return m;
}

} // namespace

// ---------------------------------------------------------------------------
// HostBlock
// ---------------------------------------------------------------------------

HostBlock::~HostBlock()
{
    resize(0, false);
}

bool HostBlock::resize(std::int32_t newSize, bool move)
{
    newSize = std::max(newSize, 0);
    const auto oldBytes = static_cast<std::size_t>(size_);
    const auto newBytes = static_cast<std::size_t>(newSize);
    const std::size_t kept = std::min(oldBytes, newBytes);

    if (newBytes == 0) {
        if (data_) {
            if (move)
                std::memset(data_, kPoisonByte, oldBytes);
            std::free(data_);
        }
        data_ = nullptr;
        size_ = 0;
        return true;
    }

    if (!move) {
        if (newBytes == oldBytes)
            return true;
        if (newBytes < oldBytes) {
            if (void* smaller = std::realloc(data_, newBytes))
                data_ = static_cast<std::uint8_t*>(smaller);
            size_ = newSize;
            return true;
        }
        // Growing: fresh zeroed memory (calloc leaves large blocks untouched
        // until used, which matters for the budget-sized first pass).
        auto* fresh = static_cast<std::uint8_t*>(std::calloc(newBytes, 1));
        if (!fresh)
            return false;
        if (kept > 0)
            std::memcpy(fresh, data_, kept);
        std::free(data_);
        data_ = fresh;
        size_ = newSize;
        return true;
    }

    auto* fresh = static_cast<std::uint8_t*>(std::malloc(newBytes));
    if (!fresh)
        return false;
    if (kept > 0)
        std::memcpy(fresh, data_, kept);
    if (newBytes > kept)
        std::memset(fresh + kept, kFreshByte, newBytes - kept);
    if (data_) {
        std::memset(data_, kPoisonByte, oldBytes);
        std::free(data_);
    }
    data_ = fresh;
    size_ = newSize;
    return true;
}

void HostBlock::assign(std::span<const std::uint8_t> bytes)
{
    const auto size = static_cast<std::int32_t>(
        std::min<std::size_t>(bytes.size(), static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())));
    resize(0, false);
    if (size > 0 && resize(size, false))
        std::memcpy(data_, bytes.data(), static_cast<std::size_t>(size));
}

// ---------------------------------------------------------------------------
// Records and commands
// ---------------------------------------------------------------------------

FrameSetup FrameSetup::centred(std::int32_t width, std::int32_t height, const Light& light)
{
    FrameSetup frame;
    frame.width = width;
    frame.height = height;
    frame.xScale = frame.yScale = height / 2.0;
    frame.xCenter = width / 2.0;
    frame.yCenter = height / 2.0;
    frame.light = light;
    return frame;
}

PluginInstance::PluginInstance(const PluginLibrary& library, HostOptions options)
    : library_(library), options_(options)
{
}

PluginInstance::~PluginInstance()
{
    if (initialized_)
        finish();
    alive_ = 0;
    for (auto& [pointer, size] : mallocs_)
        std::free(pointer);
}

PluginInfoRec PluginInstance::infoRecord()
{
    PluginInfoRec info;
    info.theControlData = control_.data();
    info.theControlDataSize = control_.size();
    info.thePluginData = plugin_.data();
    info.thePluginDataSize = plugin_.size();
    info.theHostProc = options_.offerHostProcedure ? &PluginInstance::hostProcedure : nullptr;
    info.theHostReference = this;
    return info;
}

std::int32_t PluginInstance::call(std::uint32_t command, void* record, std::int32_t recordSize)
{
    const PluginInfoRec info = infoRecord();
    std::memcpy(record, &info, sizeof info);
    toolbox::clearLastError();
    const std::int32_t result = library_.call(command, recordSize, record);
    toolboxError_ = toolbox::lastError();
    return result;
}

std::int32_t PluginInstance::init()
{
    PluginInitializeRec record{};
    const std::int32_t result = call(kCmdInitialize, &record, sizeof record);
    initialized_ = initialized_ || result == kPluginNoError;
    return result;
}

std::int32_t PluginInstance::finish()
{
    PluginFinishRec record{};
    initialized_ = false;
    return call(kCmdFinish, &record, sizeof record);
}

PluginInfo PluginInstance::info()
{
    PluginInformationRec record{};
    require(kCmdInformation, call(kCmdInformation, &record, sizeof record));
    PluginInfo info;
    info.type = record.thePluginType;
    info.version = record.thePluginVersion;
    info.name = fromPascal(record.thePluginName);
    info.copyright = fromPascal(record.thePluginCopyright);
    info.author = fromPascal(record.thePluginAuthor);
    info.description = fromPascal(record.thePluginDescription);
    info.permission = record.thePluginPermission;
    return info;
}

std::string PluginInstance::describe(std::int32_t code)
{
    PluginDescribeRec record{};
    record.theResult = code;
    if (call(kCmdDescribe, &record, sizeof record) != kPluginNoError)
        return {};
    return fromPascal(record.theDescription);
}

std::int32_t PluginInstance::check(std::uint32_t command)
{
    PluginCheckRec record{};
    record.theCommand = command;
    return call(kCmdCheck, &record, sizeof record);
}

std::int32_t PluginInstance::setup(const FrameSetup& frame)
{
    PluginFlareSetupRec record{};
    record.theFrameIndex = frame.frameIndex;
    record.theFrameTime = frame.frameTime;
    record.theFrameTimeDelta = frame.frameTimeDelta;
    record.theFrameRect = makeRect(0, 0, frame.width, frame.height);
    record.theFrameXScale = frame.xScale;
    record.theFrameYScale = frame.yScale;
    record.theFrameXCenter = frame.xCenter;
    record.theFrameYCenter = frame.yCenter;
    record.theBlurShutter = frame.blurShutter;
    record.theCameraMatrix = record.theCameraRotMatrix = record.theCameraBlurMatrix = identity();
    const Light& light = frame.light;
    record.theLightFramePosition = {light.x.pixels(frame.width), light.y.pixels(frame.height), 0.0};
    record.theLightBlurFramePosition = record.theLightFramePosition;
    record.theLightColor.argb.a = frame.lightAlpha;
    record.theLightColor.argb.r = light.color.red;
    record.theLightColor.argb.g = light.color.green;
    record.theLightColor.argb.b = light.color.blue;
    record.theLightIntensity = light.intensity;
    record.theLightFrameRadius = light.radius.pixels(frame.height);
    record.theCameraZoom = 1.0;
    record.theCameraXScale = record.theCameraYScale = 1.0;
    record.theLightMatrix = record.theLightRotMatrix = record.theLightBlurMatrix = rotation(light.rotation);
    return call(kCmdFlareSetup, &record, sizeof record);
}

std::int32_t PluginInstance::generate(const FrameBuffer& buffer)
{
    PluginFlareGenerateRec record{};
    record.theFlareBuffer.bufferBase = buffer.base;
    record.theFlareBuffer.bufferRowBytes = buffer.rowBytes;
    record.theFlareBuffer.bufferRect = makeRect(buffer.left, buffer.top, buffer.width, buffer.height);
    record.theFlareBuffer.bufferDepth = buffer.depth;
    record.theFlareBuffer.bufferIndex = buffer.index;
    return call(kCmdFlareGenerate, &record, sizeof record);
}

std::int32_t PluginInstance::interface()
{
    PluginInterfaceRec record{};
    return call(kCmdInterface, &record, sizeof record);
}

std::string PluginInstance::failureMessage(std::uint32_t command, std::int32_t code)
{
    // Asking for the text is itself a call: keep what the failing one left.
    const std::string toolboxError = toolboxError_;
    std::string text = describe(code);
    if (text.empty())
        text = "result code " + std::to_string(code) + ", which the plug-in does not describe";
    std::string message = library_.displayName() + ": " + commandName(command) + " failed: " + text + " (code " +
                          std::to_string(code) + ")";
    if (!toolboxError.empty())
        message += "; " + toolboxError;
    return message;
}

void PluginInstance::require(std::uint32_t command, std::int32_t code)
{
    if (code != kPluginNoError)
        throw PluginError(failureMessage(command, code), code);
}

std::span<const std::uint8_t> PluginInstance::controlData() const
{
    return {control_.data(), static_cast<std::size_t>(control_.size())};
}

void PluginInstance::setControlData(std::span<const std::uint8_t> bytes)
{
    control_.assign(bytes);
}

std::span<const std::uint8_t> PluginInstance::pluginData() const
{
    return {plugin_.data(), static_cast<std::size_t>(plugin_.size())};
}

// ---------------------------------------------------------------------------
// The host procedure
// ---------------------------------------------------------------------------

namespace {

// The smallest record each request may come with.
std::size_t recordSizeOf(std::uint32_t selector)
{
    switch (selector) {
    case kHostFree:         return sizeof(HostFreeRec);
    case kHostAllocate:     return sizeof(HostAllocateRec);
    case kHostResetChannel: return sizeof(HostResetChannelRec);
    case kHostAddChannel:   return sizeof(HostAddChannelRec);
    case kHostGetChannel:   return sizeof(HostGetChannelRec);
    case kHostSetChannel:   return sizeof(HostSetChannelRec);
    case kHostStatus:       return sizeof(HostStatusRec);
    case kHostMemMalloc:    return sizeof(HostMemMallocRec);
    case kHostMemFree:      return sizeof(HostMemFreeRec);
    default:                return sizeof(void*);
    }
}

} // namespace

std::int32_t PluginInstance::hostProcedure(std::uint32_t selector, std::int32_t size, void* record)
{
    if (!record || size < static_cast<std::int32_t>(sizeof(void*)))
        return kPluginIncompatible;
    void* reference;
    std::memcpy(&reference, record, sizeof reference);
    auto* instance = static_cast<PluginInstance*>(reference);
    if (!instance || instance->alive_ != kAlive)
        return kPluginIncompatible;
    return instance->answer(selector, size, record);
}

std::int32_t PluginInstance::answer(std::uint32_t selector, std::int32_t size, void* record)
{
    if (options_.onRequest) {
        // Nothing may be thrown through the plug-in: a failing hook refuses
        // the request.
        try {
            if (const std::optional<std::int32_t> given = options_.onRequest(selector, size, record))
                return *given;
        } catch (...) {
            return kPluginIncompatible;
        }
    }
    if (static_cast<std::size_t>(size) < recordSizeOf(selector))
        return kPluginIncompatible;
    switch (selector) {
    case kHostFree:         return answerFree(record);
    case kHostAllocate:     return answerAllocate(record);
    case kHostResetChannel:
    case kHostAddChannel:
    case kHostGetChannel:
    case kHostSetChannel:   return channels_.answer(selector, record);
    case kHostStatus:       return answerStatus(record);
    case kHostMemMalloc:    return answerMalloc(record);
    case kHostMemFree:      return answerMemFree(record);
    default:                return kPluginUnsupported;
    }
}

std::int32_t PluginInstance::answerFree(void* record)
{
    auto* offer = static_cast<HostFreeRec*>(record);
    offer->theFreeSize = options_.freeBudget;
    return kPluginNoError;
}

std::int32_t PluginInstance::answerAllocate(void* record)
{
    auto* request = static_cast<HostAllocateRec*>(record);
    // Whatever happens, the record ends up describing the blocks as they
    // are: the plug-in adopts it even when the answer is an error.
    auto describeBlocks = [&] {
        request->theControlData = control_.data();
        request->theControlDataSize = control_.size();
        request->thePluginData = plugin_.data();
        request->thePluginDataSize = plugin_.size();
    };
    const std::int32_t controlSize = request->theControlDataSize;
    const std::int32_t pluginSize = request->thePluginDataSize;
    std::int32_t result = kPluginNoError;
    if (request->theControlData != control_.data() || request->thePluginData != plugin_.data() ||
        controlSize < 0 || pluginSize < 0)
        result = kPluginIncompatible;
    else if (controlSize > options_.freeBudget || pluginSize > options_.freeBudget)
        result = kPluginMemoryError;
    else if (!control_.resize(controlSize, options_.moveBlocks) || !plugin_.resize(pluginSize, options_.moveBlocks))
        result = kPluginMemoryError;
    describeBlocks();
    return result;
}

std::int32_t PluginInstance::answerStatus(void* record)
{
    auto* status = static_cast<HostStatusRec*>(record);
    std::int32_t result = kPluginNoError;
    if (progress_) {
        Progress progress;
        progress.position = status->theStatusPos;
        progress.value = status->theStatusValue;
        progress.minimum = status->theStatusMin;
        progress.maximum = status->theStatusMax;
        progress.unit = fromPascal(status->theStatusUnit);
        progress.heading = fromPascal(status->theStatusInfo);
        // Nothing may be thrown through the plug-in: a failing callback
        // stops the render as a cancel would.
        try {
            result = progress_(progress);
        } catch (...) {
            result = kPluginUserCanceled;
        }
    }
    if (options_.statusIntervalTicks > 0) {
        const auto due = static_cast<std::uint32_t>(tickCount()) +
                         static_cast<std::uint32_t>(options_.statusIntervalTicks);
        status->theStatusTick = static_cast<std::int32_t>(due);
    } else {
        status->theStatusTick = 0;
    }
    return result;
}

std::int32_t PluginInstance::answerMalloc(void* record)
{
    auto* request = static_cast<HostMemMallocRec*>(record);
    if (options_.freeBudget < 0 || request->theSize > static_cast<std::uint32_t>(options_.freeBudget))
        return kPluginMemoryError;
    void* pointer = std::malloc(request->theSize > 0 ? request->theSize : 1);
    if (!pointer)
        return kPluginMemoryError;
    mallocs_[pointer] = request->theSize;
    request->thePtr = pointer;
    return kPluginNoError;
}

std::int32_t PluginInstance::answerMemFree(void* record)
{
    auto* request = static_cast<HostMemFreeRec*>(record);
    if (!request->thePtr)
        return kPluginNoError;
    const auto found = mallocs_.find(request->thePtr);
    if (found == mallocs_.end())
        return kPluginIncompatible;
    std::free(found->first);
    mallocs_.erase(found);
    return kPluginNoError;
}

} // namespace korvane
