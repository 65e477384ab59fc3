// TestHost.cpp - the test host's blocks, calls and host procedure.
#include "TestHost.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace glintwave::testhost {

std::string fourCC(std::uint32_t code)
{
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const char c = static_cast<char>((code >> shift) & 0xFF);
        text += (c >= 0x20 && c < 0x7F) ? c : '?';
    }
    return text;
}

// ---------------------------------------------------------------------------
// HostBlock
// ---------------------------------------------------------------------------

HostBlock::~HostBlock()
{
    clear();
}

std::vector<std::uint8_t> HostBlock::bytes() const
{
    return data_ ? std::vector<std::uint8_t>(data_, data_ + size_) : std::vector<std::uint8_t>{};
}

void HostBlock::assign(const void* bytes, std::int32_t size)
{
    resize(0);
    resize(size);
    if (size > 0)
        std::memcpy(data_, bytes, static_cast<std::size_t>(size));
}

void HostBlock::assign(const std::vector<std::uint8_t>& bytes)
{
    assign(bytes.data(), static_cast<std::int32_t>(bytes.size()));
}

void HostBlock::resize(std::int32_t newSize)
{
    if (newSize < 0)
        newSize = 0;
    std::uint8_t* fresh = nullptr;
    if (newSize > 0) {
        fresh = static_cast<std::uint8_t*>(std::malloc(static_cast<std::size_t>(newSize)));
        const std::int32_t kept = std::min(size_, newSize);
        if (kept > 0)
            std::memcpy(fresh, data_, static_cast<std::size_t>(kept));
        if (newSize > kept)
            std::memset(fresh + kept, kFreshByte, static_cast<std::size_t>(newSize - kept));
    }
    if (data_) {
        std::memset(data_, kPoisonByte, static_cast<std::size_t>(size_));
        std::free(data_);
    }
    data_ = fresh;
    size_ = fresh ? newSize : 0;
}

// ---------------------------------------------------------------------------
// Loading and calling
// ---------------------------------------------------------------------------

TestHost::TestHost(const std::string& pluginPath)
{
    library_ = dlopen(pluginPath.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library_) {
        const char* why = dlerror();
        loadError_ = why ? why : "dlopen failed";
        return;
    }
    main_ = reinterpret_cast<MainProc>(dlsym(library_, "Main"));
    if (!main_)
        loadError_ = pluginPath + ": no Main";
}

TestHost::~TestHost()
{
    for (auto& [pointer, size] : mallocs_)
        std::free(pointer);
    if (library_)
        dlclose(library_);
}

std::int32_t TestHost::callRaw(std::uint32_t command, std::int32_t recordSize, void* record)
{
    if (!main_)
        return -1;
    return main_(command, recordSize, record);
}

PluginInfoRec TestHost::infoRecord()
{
    PluginInfoRec info;
    info.theControlData = control_.data();
    info.theControlDataSize = control_.size();
    info.thePluginData = plugin_.data();
    info.thePluginDataSize = plugin_.size();
    info.theHostProc = options.offerHostProc ? &TestHost::hostProcedure : nullptr;
    info.theHostReference = this;
    return info;
}

std::int32_t TestHost::call(std::uint32_t command, void* record, std::int32_t recordSize)
{
    const PluginInfoRec info = infoRecord();
    std::memcpy(record, &info, sizeof info);
    return callRaw(command, recordSize, record);
}

std::int32_t TestHost::init()
{
    PluginInitializeRec record{};
    return call(kCmdInitialize, record);
}

std::int32_t TestHost::finish()
{
    PluginFinishRec record{};
    return call(kCmdFinish, record);
}

std::int32_t TestHost::setup(const FrameSetup& frame)
{
    PluginFlareSetupRec record{};
    record.theFrameRect = frame.frame;
    record.theFrameXScale = frame.xScale;
    record.theFrameYScale = frame.yScale;
    record.theFrameXCenter = frame.xCenter;
    record.theFrameYCenter = frame.yCenter;
    record.theBlurShutter = frame.blurShutter;
    record.theLightFramePosition = frame.lightPosition;
    record.theLightBlurFramePosition = frame.lightBlurPosition;
    record.theLightColor.colorValue = frame.lightColor;
    record.theLightIntensity = frame.lightIntensity;
    record.theLightFrameRadius = frame.lightFrameRadius;
    record.theLightMatrix = frame.lightMatrix;
    record.theLightRotMatrix = frame.lightMatrix;
    record.theLightBlurMatrix = frame.lightMatrix;
    return call(kCmdFlareSetup, record);
}

std::int32_t TestHost::generate(void* base, std::int32_t rowBytes, const L_Rect& rect, std::int16_t depth,
                                std::int32_t index)
{
    PluginFlareGenerateRec record{};
    record.theFlareBuffer.bufferBase = base;
    record.theFlareBuffer.bufferRowBytes = rowBytes;
    record.theFlareBuffer.bufferRect = rect;
    record.theFlareBuffer.bufferDepth = depth;
    record.theFlareBuffer.bufferIndex = index;
    return call(kCmdFlareGenerate, record);
}

std::int32_t TestHost::info(PluginInformationRec& record)
{
    return call(kCmdInformation, record);
}

std::int32_t TestHost::check(std::uint32_t command)
{
    PluginCheckRec record{};
    record.theCommand = command;
    return call(kCmdCheck, record);
}

std::pair<std::int32_t, std::string> TestHost::describe(std::int32_t code)
{
    PluginDescribeRec record{};
    record.theResult = code;
    const std::int32_t result = call(kCmdDescribe, record);
    const unsigned char* text = record.theDescription;
    return {result, std::string(reinterpret_cast<const char*>(text + 1), text[0])};
}

// ---------------------------------------------------------------------------
// Looking into the blocks
// ---------------------------------------------------------------------------

ControlDataRec* TestHost::controlHeader()
{
    if (control_.size() < static_cast<std::int32_t>(sizeof(ControlDataRec)))
        return nullptr;
    return reinterpret_cast<ControlDataRec*>(control_.data());
}

PluginDataRec* TestHost::pluginHeader()
{
    if (plugin_.size() < static_cast<std::int32_t>(sizeof(PluginDataRec)))
        return nullptr;
    return reinterpret_cast<PluginDataRec*>(plugin_.data());
}

namespace {

template <class Element>
const Element* elementAt(const HostBlock& block, std::int32_t offset)
{
    if (offset < static_cast<std::int32_t>(sizeof(PluginDataRec)) || offset % 2 != 0 ||
        static_cast<std::int64_t>(offset) + static_cast<std::int64_t>(sizeof(Element)) > block.size())
        return nullptr;
    return reinterpret_cast<const Element*>(block.data() + offset);
}

} // namespace

std::vector<const RingElement*> TestHost::rings()
{
    std::vector<const RingElement*> list;
    const PluginDataRec* data = pluginHeader();
    std::int32_t offset = data ? data->flareRingFirst : 0;
    while (const RingElement* ring = elementAt<RingElement>(plugin_, offset)) {
        list.push_back(ring);
        if (list.size() > 100000)
            break;
        offset = ring->ringNext;
    }
    return list;
}

std::vector<const StreakElement*> TestHost::streaks()
{
    std::vector<const StreakElement*> list;
    const PluginDataRec* data = pluginHeader();
    std::int32_t offset = data ? data->flareStreakFirst : 0;
    while (const StreakElement* streak = elementAt<StreakElement>(plugin_, offset)) {
        list.push_back(streak);
        if (list.size() > 100000)
            break;
        offset = streak->streakNext;
    }
    return list;
}

const ElementColor* TestHost::stopsOf(const RingElement* ring) const
{
    return reinterpret_cast<const ElementColor*>(ring + 1);
}

const ElementColor* TestHost::stopsOf(const StreakElement* streak) const
{
    return reinterpret_cast<const ElementColor*>(streak + 1);
}

// ---------------------------------------------------------------------------
// The host procedure
// ---------------------------------------------------------------------------

int TestHost::requestCount(std::uint32_t selector) const
{
    return static_cast<int>(std::count(requests_.begin(), requests_.end(), selector));
}

void TestHost::clearLog()
{
    requests_.clear();
    allocationRequests_.clear();
    statusReports_.clear();
    protocolErrors_.clear();
}

std::int32_t TestHost::hostProcedure(std::uint32_t selector, std::int32_t size, void* record)
{
    if (!record || size < static_cast<std::int32_t>(sizeof(void*)))
        return kPluginIncompatible;
    void* reference;
    std::memcpy(&reference, record, sizeof reference);
    return static_cast<TestHost*>(reference)->answer(selector, size, record);
}

bool TestHost::holds(std::uint32_t selector, std::int32_t size, std::size_t needed)
{
    if (size >= static_cast<std::int32_t>(needed))
        return true;
    protocolErrors_.push_back(fourCC(selector) + ": record of " + std::to_string(size) + " bytes");
    return false;
}

std::int32_t TestHost::answer(std::uint32_t selector, std::int32_t size, void* record)
{
    requests_.push_back(selector);
    switch (selector) {
    case kHostFree:
        return answerFree(size, record);
    case kHostAllocate:
        return answerAllocate(size, record);
    case kHostResetChannel:
        return holds(selector, size, sizeof(HostResetChannelRec)) ? options.resetChannelAnswer
                                                                  : kPluginIncompatible;
    case kHostStatus:
        return answerStatus(size, record);
    case kHostMemMalloc:
        return answerMalloc(size, record);
    case kHostMemFree:
        return answerFreeMemory(size, record);
    case kHostAddChannel:
    case kHostGetChannel:
    case kHostSetChannel:
        return options.channelAnswer ? options.channelAnswer(selector, size, record) : kPluginUnsupported;
    default:
        return kPluginUnsupported;
    }
}

std::int32_t TestHost::answerFree(std::int32_t size, void* record)
{
    if (!holds(kHostFree, size, sizeof(HostFreeRec)))
        return kPluginIncompatible;
    if (options.freeAnswer != 0)
        return options.freeAnswer;
    auto* offer = static_cast<HostFreeRec*>(record);
    offer->theFreeSize = options.freeBudget;
    return kPluginNoError;
}

std::int32_t TestHost::answerAllocate(std::int32_t size, void* record)
{
    if (!holds(kHostAllocate, size, sizeof(HostAllocateRec)))
        return kPluginIncompatible;
    auto* allocate = static_cast<HostAllocateRec*>(record);
    if (allocate->theControlData != control_.data() || allocate->thePluginData != plugin_.data()) {
        protocolErrors_.push_back("ALOC: the request names other blocks than the current ones");
        return kPluginIncompatible;
    }
    allocationRequests_.push_back({allocate->theControlDataSize, allocate->thePluginDataSize});
    if (options.allocAnswer != 0)
        return options.allocAnswer;
    if (allocate->theControlDataSize < 0 || allocate->thePluginDataSize < 0) {
        protocolErrors_.push_back("ALOC: negative size");
        return kPluginIncompatible;
    }
    if (allocate->theControlDataSize > options.allocLimit || allocate->thePluginDataSize > options.allocLimit)
        return kPluginMemoryError;

    control_.resize(allocate->theControlDataSize);
    plugin_.resize(allocate->thePluginDataSize);
    allocate->theControlData = control_.data();
    allocate->theControlDataSize = control_.size();
    allocate->thePluginData = plugin_.data();
    allocate->thePluginDataSize = plugin_.size();
    return kPluginNoError;
}

std::int32_t TestHost::answerStatus(std::int32_t size, void* record)
{
    if (!holds(kHostStatus, size, sizeof(HostStatusRec)))
        return kPluginIncompatible;
    const auto* status = static_cast<const HostStatusRec*>(record);
    StatusReport report;
    report.position = status->theStatusPos;
    report.value = status->theStatusValue;
    report.minimum = status->theStatusMin;
    report.maximum = status->theStatusMax;
    report.tick = status->theStatusTick;
    report.unit.assign(reinterpret_cast<const char*>(status->theStatusUnit + 1), status->theStatusUnit[0]);
    report.info.assign(reinterpret_cast<const char*>(status->theStatusInfo + 1), status->theStatusInfo[0]);
    statusReports_.push_back(report);
    if (options.cancelAfterReports >= 0 &&
        statusReports_.size() > static_cast<std::size_t>(options.cancelAfterReports))
        return options.cancelAnswer;
    return kPluginNoError;
}

std::int32_t TestHost::answerMalloc(std::int32_t size, void* record)
{
    if (!holds(kHostMemMalloc, size, sizeof(HostMemMallocRec)))
        return kPluginIncompatible;
    auto* request = static_cast<HostMemMallocRec*>(record);
    void* pointer = std::malloc(request->theSize ? request->theSize : 1);
    if (!pointer)
        return kPluginMemoryError;
    mallocs_[pointer] = request->theSize;
    request->thePtr = pointer;
    return kPluginNoError;
}

std::int32_t TestHost::answerFreeMemory(std::int32_t size, void* record)
{
    if (!holds(kHostMemFree, size, sizeof(HostMemFreeRec)))
        return kPluginIncompatible;
    auto* request = static_cast<HostMemFreeRec*>(record);
    auto found = mallocs_.find(request->thePtr);
    if (found == mallocs_.end()) {
        protocolErrors_.push_back("MFRE: a pointer the host did not give");
        return kPluginIncompatible;
    }
    std::free(found->first);
    mallocs_.erase(found);
    return kPluginNoError;
}

} // namespace glintwave::testhost
