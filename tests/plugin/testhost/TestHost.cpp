// TestHost.cpp - the host library's instance with the test host's logs and
// canned answers.
#include "TestHost.h"

#include "korvane/ResourceToolbox.h"

#include <algorithm>
#include <cstring>

namespace glintwave::testhost {

std::vector<std::uint8_t> blockBytes(const HostBlock& block)
{
    return block.data() ? std::vector<std::uint8_t>(block.data(), block.data() + block.size())
                        : std::vector<std::uint8_t>{};
}

TestHost::TestHost(const std::string& pluginPath)
{
    try {
        library_ = std::make_unique<korvane::PluginLibrary>(pluginPath);
    } catch (const korvane::PluginError& error) {
        loadError_ = error.what();
        return;
    }
    korvane::HostOptions host;
    host.freeBudget = 256 * 1024 * 1024;  // the limit of 'ALOC'; 'FREE' offers options.freeBudget
    host.moveBlocks = true;
    host.statusIntervalTicks = 0;
    host.onRequest = [this](std::uint32_t selector, std::int32_t size, void* record) {
        return onRequest(selector, size, record);
    };
    instance_ = std::make_unique<korvane::PluginInstance>(*library_, host);
}

std::int32_t TestHost::callRaw(std::uint32_t command, std::int32_t recordSize, void* record)
{
    // The plug-in reads the flare table of the folder the test chose.
    library_->setHomeDirectory(korvane::toolbox::homeDirectory());
    return library_->call(command, recordSize, record);
}

PluginInfoRec TestHost::infoRecord()
{
    instance_->options().offerHostProcedure = options.offerHostProc;
    return instance_->infoRecord();
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
    record.theLightMatrix = record.theLightRotMatrix = record.theLightBlurMatrix = frame.lightMatrix;
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

ControlDataRec* TestHost::controlHeader()
{
    if (control().size() < static_cast<std::int32_t>(sizeof(ControlDataRec)))
        return nullptr;
    return reinterpret_cast<ControlDataRec*>(control().data());
}

PluginDataRec* TestHost::pluginHeader()
{
    if (plugin().size() < static_cast<std::int32_t>(sizeof(PluginDataRec)))
        return nullptr;
    return reinterpret_cast<PluginDataRec*>(plugin().data());
}

namespace {

template <class Element, class Next>
std::vector<const Element*> chain(const HostBlock& block, std::int32_t offset, Next next)
{
    std::vector<const Element*> list;
    while (offset >= static_cast<std::int32_t>(sizeof(PluginDataRec)) && offset % 2 == 0 &&
           std::int64_t{offset} + std::int64_t{sizeof(Element)} <= block.size() && list.size() < 100000) {
        list.push_back(reinterpret_cast<const Element*>(block.data() + offset));
        offset = next(list.back());
    }
    return list;
}

} // namespace

std::vector<const RingElement*> TestHost::rings()
{
    const PluginDataRec* data = pluginHeader();
    return chain<RingElement>(plugin(), data ? data->flareRingFirst : 0,
                              [](const RingElement* ring) { return ring->ringNext; });
}

std::vector<const StreakElement*> TestHost::streaks()
{
    const PluginDataRec* data = pluginHeader();
    return chain<StreakElement>(plugin(), data ? data->flareStreakFirst : 0,
                                [](const StreakElement* streak) { return streak->streakNext; });
}

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

std::optional<std::int32_t> TestHost::onRequest(std::uint32_t selector, std::int32_t size, void* record)
{
    requests_.push_back(selector);
    const auto holds = [&](std::size_t needed) {
        if (size >= static_cast<std::int32_t>(needed))
            return true;
        protocolErrors_.push_back(fourCC(selector) + ": record of " + std::to_string(size) + " bytes");
        return false;
    };
    switch (selector) {
    case kHostFree: {
        if (!holds(sizeof(HostFreeRec)))
            return std::nullopt;
        if (options.freeAnswer != 0)
            return options.freeAnswer;
        static_cast<HostFreeRec*>(record)->theFreeSize = options.freeBudget;
        return kPluginNoError;
    }
    case kHostAllocate: {
        if (!holds(sizeof(HostAllocateRec)))
            return std::nullopt;
        const auto* request = static_cast<const HostAllocateRec*>(record);
        if (request->theControlData != control().data() || request->thePluginData != plugin().data())
            protocolErrors_.push_back("ALOC: the request names other blocks than the current ones");
        else if (request->theControlDataSize < 0 || request->thePluginDataSize < 0)
            protocolErrors_.push_back("ALOC: negative size");
        allocationRequests_.push_back({request->theControlDataSize, request->thePluginDataSize});
        if (options.allocAnswer != 0)
            return options.allocAnswer;
        return std::nullopt;
    }
    case kHostResetChannel:
        if (holds(sizeof(HostResetChannelRec)) && options.resetChannelAnswer != 0)
            return options.resetChannelAnswer;
        return std::nullopt;
    case kHostStatus: {
        if (!holds(sizeof(HostStatusRec)))
            return std::nullopt;
        const auto* status = static_cast<const HostStatusRec*>(record);
        StatusReport report;
        report.position = status->theStatusPos;
        report.value = status->theStatusValue;
        report.minimum = status->theStatusMin;
        report.maximum = status->theStatusMax;
        report.unit.assign(reinterpret_cast<const char*>(status->theStatusUnit + 1), status->theStatusUnit[0]);
        report.info.assign(reinterpret_cast<const char*>(status->theStatusInfo + 1), status->theStatusInfo[0]);
        statusReports_.push_back(report);
        if (options.cancelAfterReports >= 0 &&
            statusReports_.size() > static_cast<std::size_t>(options.cancelAfterReports))
            return options.cancelAnswer;
        return std::nullopt;
    }
    case kHostMemMalloc:
        holds(sizeof(HostMemMallocRec));
        return std::nullopt;
    case kHostMemFree:
        holds(sizeof(HostMemFreeRec));
        return std::nullopt;
    case kHostAddChannel:
    case kHostGetChannel:
    case kHostSetChannel:
        if (options.channelAnswer)
            return options.channelAnswer(selector, size, record);
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

} // namespace glintwave::testhost
