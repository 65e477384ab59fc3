// TestHost.h - a small Korvane host for driving a plug-in through its entry
// point in tests.
//
// A TestHost loads the plug-in library (dlopen), keeps the two blocks a host
// owns for a plug-in (control data and plug-in data) and answers the host
// requests through one static host procedure, finding its instance through
// the request's theReference. It is strict where a plug-in slip would
// otherwise go unnoticed:
//
//   'FREE'  offers a configurable budget (64 MiB by default), or an error.
//   'ALOC'  resizes both blocks and MOVES BOTH on every request to fresh
//           allocations: the kept bytes are copied, grown bytes are filled
//           with kFreshByte, and the old memory is overwritten with
//           kPoisonByte before it is freed, so a pointer kept across a
//           request reads garbage (and fails loudly under AddressSanitizer).
//           A request naming other blocks than the current ones is a
//           protocol error. Can answer an error instead.
//   'RCHN'  counted; answers a configurable code (0 by default).
//   'STAT'  every report is recorded; can answer a cancel (4) once a given
//           number of reports has been made.
//   'MMAL'/'MFRE'  malloc/free; whatever is left is freed with the host.
//   'ACHN'/'GCHN'/'SCHN'  handed to HostOptions::channelAnswer when a test
//           sets one; otherwise 2 (not offered by this host).
//   anything else: 2.
// A request record smaller than its type is answered 3 and counted as a
// protocol error.
//
// The resource-file toolbox (KV_GetHomeDirectory, KV_OpenResourceFile, ...)
// is exported by the test executable itself; FlareTable.h builds the flare
// table files it serves.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "GlintwaveRecords.h"
#include "KVPluginAPI.h"

namespace glintwave::testhost {

// Bytes a host block is filled with when it grows, and overwritten with
// before it is freed.
inline constexpr std::uint8_t kFreshByte = 0xBE;
inline constexpr std::uint8_t kPoisonByte = 0xDB;

// A block of memory the host owns for the plug-in. Size 0 means no memory
// (a null pointer).
class HostBlock {
public:
    HostBlock() = default;
    ~HostBlock();
    HostBlock(const HostBlock&) = delete;
    HostBlock& operator=(const HostBlock&) = delete;

    std::uint8_t* data() const { return data_; }
    std::int32_t size() const { return size_; }
    std::vector<std::uint8_t> bytes() const;

    // Replaces the contents (in a fresh allocation).
    void assign(const void* bytes, std::int32_t size);
    void assign(const std::vector<std::uint8_t>& bytes);
    // A fresh allocation of newSize bytes holding the kept bytes; the old
    // memory is poisoned and freed.
    void resize(std::int32_t newSize);
    void clear() { resize(0); }

private:
    std::uint8_t* data_ = nullptr;
    std::int32_t size_ = 0;
};

// How the host answers.
struct HostOptions {
    std::int32_t freeBudget = 64 * 1024 * 1024;  // 'FREE' offer
    std::int32_t freeAnswer = 0;                 // non-zero: 'FREE' answers it
    std::int32_t allocAnswer = 0;                // non-zero: 'ALOC' answers it, blocks untouched
    std::int32_t allocLimit = 256 * 1024 * 1024; // larger 'ALOC' requests answer 1
    std::int32_t resetChannelAnswer = 0;         // 'RCHN' answer
    int cancelAfterReports = -1;                 // >= 0: 'STAT' answers cancelAnswer from that report on
    std::int32_t cancelAnswer = 4;
    bool offerHostProc = true;                   // false: theHostProc is null in every call
    // Answers the channel requests (selector, record size, record).
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
    std::int32_t tick = 0;
    std::string unit;
    std::string info;
};

// Frame and light of one 'SETF'.
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
    // Loads the plug-in library; loaded() tells whether it worked.
    explicit TestHost(const std::string& pluginPath = GLINTWAVE_PLUGIN_PATH);
    ~TestHost();
    TestHost(const TestHost&) = delete;
    TestHost& operator=(const TestHost&) = delete;

    bool loaded() const { return main_ != nullptr; }
    const std::string& loadError() const { return loadError_; }

    // Calls Main with the record exactly as given.
    std::int32_t callRaw(std::uint32_t command, std::int32_t recordSize, void* record);
    // Fills the record's leading PluginInfoRec with the host's blocks,
    // procedure and reference, then calls Main. The record must be at least
    // sizeof(PluginInfoRec) bytes.
    std::int32_t call(std::uint32_t command, void* record, std::int32_t recordSize);
    template <class Record>
    std::int32_t call(std::uint32_t command, Record& record)
    {
        return call(command, &record, static_cast<std::int32_t>(sizeof(Record)));
    }

    // The info record the host puts at the start of every command record.
    PluginInfoRec infoRecord();

    // The commands, with well-formed records.
    std::int32_t init();
    std::int32_t finish();
    std::int32_t setup(const FrameSetup& frame = FrameSetup{});
    std::int32_t generate(void* base, std::int32_t rowBytes, const L_Rect& rect, std::int16_t depth,
                          std::int32_t index = 0);
    std::int32_t info(PluginInformationRec& record);
    std::int32_t check(std::uint32_t command);
    // Result of 'DESC' and the text it gave.
    std::pair<std::int32_t, std::string> describe(std::int32_t code);

    // The blocks the host keeps for the plug-in; tests may fill or poke them
    // between calls.
    HostBlock& control() { return control_; }
    HostBlock& plugin() { return plugin_; }
    // The headers, or null when the block is too small to hold one.
    ControlDataRec* controlHeader();
    PluginDataRec* pluginHeader();
    // The loaded elements, following the chains by their offsets (checked
    // against the block; a broken chain ends the list).
    std::vector<const RingElement*> rings();
    std::vector<const StreakElement*> streaks();
    // The colour stops stored right behind an element.
    const ElementColor* stopsOf(const RingElement* ring) const;
    const ElementColor* stopsOf(const StreakElement* streak) const;

    HostOptions options;

    // What the plug-in asked of the host.
    int requestCount(std::uint32_t selector) const;
    const std::vector<std::uint32_t>& requests() const { return requests_; }
    const std::vector<AllocationRequest>& allocationRequests() const { return allocationRequests_; }
    const std::vector<StatusReport>& statusReports() const { return statusReports_; }
    // Requests that broke the protocol (short records, stale blocks).
    const std::vector<std::string>& protocolErrors() const { return protocolErrors_; }
    void clearLog();

private:
    static std::int32_t hostProcedure(std::uint32_t selector, std::int32_t size, void* record);
    std::int32_t answer(std::uint32_t selector, std::int32_t size, void* record);
    std::int32_t answerFree(std::int32_t size, void* record);
    std::int32_t answerAllocate(std::int32_t size, void* record);
    std::int32_t answerStatus(std::int32_t size, void* record);
    std::int32_t answerMalloc(std::int32_t size, void* record);
    std::int32_t answerFreeMemory(std::int32_t size, void* record);
    bool holds(std::uint32_t selector, std::int32_t size, std::size_t needed);

    void* library_ = nullptr;
    using MainProc = std::int32_t (*)(std::uint32_t, std::int32_t, void*);
    MainProc main_ = nullptr;
    std::string loadError_;

    HostBlock control_;
    HostBlock plugin_;
    std::map<void*, std::uint32_t> mallocs_;

    std::vector<std::uint32_t> requests_;
    std::vector<AllocationRequest> allocationRequests_;
    std::vector<StatusReport> statusReports_;
    std::vector<std::string> protocolErrors_;
};

// "FLAR" for 0x464C4152, for messages.
std::string fourCC(std::uint32_t code);

} // namespace glintwave::testhost
