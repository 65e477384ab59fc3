// TestHost.h - the host library's PluginInstance, set up to drive a plug-in
// through Main in tests.
//
// The host procedure is the host library's own, in its test mode: 'ALOC'
// moves both blocks on every request and poisons the old memory, so a
// pointer kept across a request reads garbage (and trips AddressSanitizer),
// and every 'STAT' report is wanted at once. Through the instance's request
// hook the test host logs every request and can give canned answers:
//
//   'FREE'  offers options.freeBudget, or answers options.freeAnswer.
//   'ALOC'  logged with its sizes; answers options.allocAnswer (blocks
//           untouched) when that is set. A request naming other blocks than
//           the current ones, or a negative size, is a protocol error.
//   'RCHN'  answers options.resetChannelAnswer when that is set.
//   'STAT'  logged; answers options.cancelAnswer from report number
//           options.cancelAfterReports on.
//   'ACHN'/'GCHN'/'SCHN'  answered by options.channelAnswer when that is set,
//           otherwise by the host library's channel store.
// A record smaller than its request's type is a protocol error too.
//
// The resource-file toolbox is exported by the test executable itself; the
// plug-in reads the flare table of whatever folder the test pointed the
// toolbox's home at (FlareTable.h builds such folders).
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "glintwave/GlintwaveRecords.h"
#include "KVPluginAPI.h"
#include "korvane/PluginHost.h"

namespace glintwave::testhost {

using korvane::HostBlock;

// Canned answers of the test host.
struct HostOptions {
    std::int32_t freeBudget = 64 * 1024 * 1024;  // 'FREE' offer
    std::int32_t freeAnswer = 0;                 // non-zero: 'FREE' answers it
    std::int32_t allocAnswer = 0;                // non-zero: 'ALOC' answers it, blocks untouched
    std::int32_t resetChannelAnswer = 0;         // non-zero: 'RCHN' answers it
    int cancelAfterReports = -1;                 // >= 0: 'STAT' answers cancelAnswer from that report on
    std::int32_t cancelAnswer = 4;
    bool offerHostProc = true;                   // false: theHostProc is null in every call
    // Set: answers 'ACHN', 'GCHN' and 'SCHN' instead of the host's channel store.
    std::function<std::int32_t(std::uint32_t, std::int32_t, void*)> channelAnswer;
};

// The sizes one 'ALOC' request asked for.
struct AllocationRequest {
    std::int32_t controlSize = 0;
    std::int32_t pluginSize = 0;
    bool operator==(const AllocationRequest&) const = default;
};

// One 'STAT' request as the host saw it.
struct StatusReport {
    float position = 0;
    std::int32_t value = 0;
    std::int32_t minimum = 0;
    std::int32_t maximum = 0;
    std::string unit;
    std::string info;
};

// Frame and light of one 'SETF', written into the record as given (any
// rectangle, any doubles).
struct FrameSetup {
    L_Rect frame{0, 0, 120, 160, 160, 120};  // top, left, bottom, right, width, height
    double xScale = 60.0;
    double yScale = 60.0;
    double xCenter = 80.0;
    double yCenter = 60.0;
    double blurShutter = 0.0;
    DCoordinate lightPosition{50.0, 40.0, 0.0};
    DCoordinate lightBlurPosition{50.0, 40.0, 0.0};
    std::uint32_t lightColor = 0xFFFFFFFFu;
    double lightIntensity = 1.0;
    double lightFrameRadius = 10.0;
    Matrix4 lightMatrix{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
};

class TestHost {
public:
    explicit TestHost(const std::string& pluginPath = GLINTWAVE_PLUGIN_PATH);

    bool loaded() const { return instance_ != nullptr; }
    const std::string& loadError() const { return loadError_; }

    // Calls Main with the record exactly as given.
    std::int32_t callRaw(std::uint32_t command, std::int32_t recordSize, void* record);
    // Fills the record's leading PluginInfoRec, then calls Main.
    std::int32_t call(std::uint32_t command, void* record, std::int32_t recordSize);
    template <class Record>
    std::int32_t call(std::uint32_t command, Record& record)
    {
        return call(command, &record, static_cast<std::int32_t>(sizeof(Record)));
    }
    PluginInfoRec infoRecord();

    std::int32_t init();
    std::int32_t finish();
    std::int32_t setup(const FrameSetup& frame = FrameSetup{});
    std::int32_t generate(void* base, std::int32_t rowBytes, const L_Rect& rect, std::int16_t depth,
                          std::int32_t index = 0);
    std::int32_t info(PluginInformationRec& record);
    std::int32_t check(std::uint32_t command);
    // Result of 'DESC' and the text it gave.
    std::pair<std::int32_t, std::string> describe(std::int32_t code);

    // The blocks the host keeps for the plug-in; tests fill or poke them
    // between calls.
    HostBlock& control() { return instance_->controlBlock(); }
    HostBlock& plugin() { return instance_->pluginBlock(); }
    // The headers, or null when the block is too small to hold one.
    ControlDataRec* controlHeader();
    PluginDataRec* pluginHeader();
    // The loaded elements, following the chains by their offsets (checked
    // against the block; a broken chain ends the list).
    std::vector<const RingElement*> rings();
    std::vector<const StreakElement*> streaks();
    // The colour stops stored right behind an element.
    static const ElementColor* stopsOf(const RingElement* ring) { return reinterpret_cast<const ElementColor*>(ring + 1); }
    static const ElementColor* stopsOf(const StreakElement* streak)
    {
        return reinterpret_cast<const ElementColor*>(streak + 1);
    }

    HostOptions options;

    int requestCount(std::uint32_t selector) const;
    const std::vector<std::uint32_t>& requests() const { return requests_; }
    const std::vector<AllocationRequest>& allocationRequests() const { return allocationRequests_; }
    const std::vector<StatusReport>& statusReports() const { return statusReports_; }
    const std::vector<std::string>& protocolErrors() const { return protocolErrors_; }
    void clearLog();

private:
    std::optional<std::int32_t> onRequest(std::uint32_t selector, std::int32_t size, void* record);

    std::unique_ptr<korvane::PluginLibrary> library_;
    std::unique_ptr<korvane::PluginInstance> instance_;
    std::string loadError_;
    std::vector<std::uint32_t> requests_;
    std::vector<AllocationRequest> allocationRequests_;
    std::vector<StatusReport> statusReports_;
    std::vector<std::string> protocolErrors_;
};

// The bytes of a block, as a copy.
std::vector<std::uint8_t> blockBytes(const HostBlock& block);

// "'FLAR'" for 0x464C4152, for messages.
inline std::string fourCC(std::uint32_t code)
{
    return korvane::commandName(code);
}

} // namespace glintwave::testhost
