// HostProcedureTest.cpp - the host's answers to the plug-in's requests, made
// directly through the procedure and reference an instance hands out.
#include "korvane/PluginHost.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using korvane::HostOptions;
using korvane::PluginInstance;
using korvane::PluginLibrary;

constexpr std::int32_t kBudget = 1 << 20;

// The records are packed: their fields are read by value before a check
// binds a reference to them.
template <class T>
T unpacked(T value)
{
    return value;
}

class HostProcedure : public testing::Test {
protected:
    HostProcedure() : library_(MINIMAL_PLUGIN_PATH) {}

    PluginInstance& make(bool moveBlocks = false, std::int32_t statusInterval = 6)
    {
        HostOptions options;
        options.freeBudget = kBudget;
        options.moveBlocks = moveBlocks;
        options.statusIntervalTicks = statusInterval;
        instance_.emplace(library_, options);
        info_ = instance_->infoRecord();
        return *instance_;
    }

    template <class Record>
    std::int32_t request(std::uint32_t selector, Record& record, std::int32_t size = sizeof(Record))
    {
        std::memcpy(&record, &info_.theHostReference, sizeof(void*));
        return info_.theHostProc(selector, size, &record);
    }

    HostAllocateRec allocation(std::int32_t controlSize, std::int32_t pluginSize)
    {
        const PluginInfoRec now = instance_->infoRecord();
        return HostAllocateRec{nullptr, now.theControlData, controlSize, now.thePluginData, pluginSize};
    }

    PluginLibrary library_;
    std::optional<PluginInstance> instance_;
    PluginInfoRec info_{};
};

TEST_F(HostProcedure, SimpleRequests)
{
    make();
    struct Case {
        std::uint32_t selector;
        std::int32_t size;
        std::int32_t expected;
    };
    // Every request arrives in a record big enough for any of them; the size
    // passed is what counts.
    const Case cases[] = {
        {kHostFree, sizeof(HostFreeRec), 0},
        {kHostFree, sizeof(HostFreeRec) - 1, 3},
        {kHostResetChannel, sizeof(HostResetChannelRec), 0},
        // Channel requests naming no type or no registered channel.
        {kHostAddChannel, sizeof(HostAddChannelRec), 3},
        {kHostAddChannel, sizeof(HostAddChannelRec) - 1, 3},
        {kHostGetChannel, sizeof(HostGetChannelRec), 3},
        {kHostSetChannel, sizeof(HostSetChannelRec), 3},
        {KV_FOURCC('Z', 'Z', 'Z', 'Z'), 64, 2},
        {kHostStatus, sizeof(HostStatusRec) - 1, 3},
        {kHostAllocate, sizeof(HostAllocateRec) - 1, 3},
        {kHostMemMalloc, sizeof(HostMemMallocRec) - 1, 3},
        {kHostMemFree, sizeof(HostMemFreeRec) - 1, 3},
    };
    for (const Case& c : cases) {
        HostStatusRec record{};
        EXPECT_EQ(request(c.selector, record, c.size), c.expected) << korvane::commandName(c.selector) << " " << c.size;
    }

    HostFreeRec offer{};
    ASSERT_EQ(request(kHostFree, offer), 0);
    EXPECT_EQ(unpacked(offer.theFreeSize), kBudget);
}

TEST_F(HostProcedure, StrayReferencesAreRefused)
{
    make();
    HostFreeRec offer{nullptr, 0};
    EXPECT_EQ(info_.theHostProc(kHostFree, sizeof offer, &offer), 3);
    EXPECT_EQ(info_.theHostProc(kHostFree, sizeof offer, nullptr), 3);
    EXPECT_EQ(unpacked(offer.theFreeSize), 0);
}

TEST_F(HostProcedure, AllocationAnswersAndAlwaysDescribesTheBlocks)
{
    PluginInstance& instance = make();
    HostAllocateRec grow = allocation(24, 100);
    ASSERT_EQ(request(kHostAllocate, grow), 0);
    ASSERT_EQ(instance.controlData().size(), 24u);
    ASSERT_EQ(instance.pluginData().size(), 100u);
    for (std::uint8_t byte : instance.pluginData())
        ASSERT_EQ(byte, 0);  // grown memory is cleared
    std::memset(grow.thePluginData, 0x5A, 100);

    struct Case {
        const char* label;
        std::int32_t controlSize;
        std::int32_t pluginSize;
        bool stale;
        std::int32_t expected;
    };
    const Case refused[] = {
        {"stale pointers", 24, 100, true, 3},
        {"negative control size", -1, 100, false, 3},
        {"negative plug-in size", 24, -8, false, 3},
        {"over the budget", 24, kBudget + 1, false, 1},
    };
    for (const Case& c : refused) {
        HostAllocateRec record = allocation(c.controlSize, c.pluginSize);
        if (c.stale)
            record.thePluginData = &record;
        EXPECT_EQ(request(kHostAllocate, record), c.expected) << c.label;
        // The plug-in adopts the record whatever the answer: it must still
        // describe the blocks as they are.
        EXPECT_EQ(unpacked(record.theControlData), instance.controlData().data()) << c.label;
        EXPECT_EQ(unpacked(record.theControlDataSize), 24) << c.label;
        EXPECT_EQ(unpacked(record.thePluginData), instance.pluginData().data()) << c.label;
        EXPECT_EQ(unpacked(record.thePluginDataSize), 100) << c.label;
    }

    HostAllocateRec shrink = allocation(8, 40);
    ASSERT_EQ(request(kHostAllocate, shrink), 0);
    ASSERT_EQ(instance.pluginData().size(), 40u);
    for (std::uint8_t byte : instance.pluginData())
        ASSERT_EQ(byte, 0x5A);  // kept bytes survive
}

TEST_F(HostProcedure, MovingModeMovesOnEveryRequestAndPoisonsNothingKept)
{
    PluginInstance& instance = make(true);
    HostAllocateRec first = allocation(16, 64);
    ASSERT_EQ(request(kHostAllocate, first), 0);
    std::memset(first.thePluginData, 0x11, 64);

    // The same sizes again: the blocks still move, the bytes come along.
    HostAllocateRec second = allocation(16, 64);
    const void* before = second.thePluginData;
    ASSERT_EQ(request(kHostAllocate, second), 0);
    EXPECT_NE(unpacked(second.thePluginData), before);
    EXPECT_EQ(unpacked(second.thePluginData), instance.pluginData().data());
    for (std::uint8_t byte : instance.pluginData())
        ASSERT_EQ(byte, 0x11);

    HostAllocateRec grown = allocation(16, 80);
    ASSERT_EQ(request(kHostAllocate, grown), 0);
    const auto plugin = instance.pluginData();
    EXPECT_EQ(plugin[63], 0x11);
    EXPECT_NE(plugin[64], 0x00);  // grown bytes are marked, not cleared
}

void setPascal(unsigned char* destination, const char* text)
{
    destination[0] = static_cast<unsigned char>(std::strlen(text));
    std::memcpy(destination + 1, text, destination[0]);
}

TEST_F(HostProcedure, StatusGoesToTheCallbackWhoseAnswerIsTheAnswer)
{
    struct Case {
        std::int32_t interval;
        std::int32_t answer;
    };
    for (const Case c : {Case{6, 0}, Case{0, 0}, Case{6, 4}}) {
        PluginInstance& instance = make(false, c.interval);
        std::vector<korvane::Progress> seen;
        instance.setProgressCallback([&](const korvane::Progress& report) {
            seen.push_back(report);
            return c.answer;
        });
        HostStatusRec status{};
        status.theStatusPos = 0.25f;
        setPascal(status.theStatusUnit, "Scanline");
        setPascal(status.theStatusInfo, "Drawing \xA5");
        status.theStatusMin = 0;
        status.theStatusMax = 40;
        status.theStatusValue = 10;
        const std::int32_t before = korvane::tickCount();
        EXPECT_EQ(request(kHostStatus, status), c.answer);
        ASSERT_EQ(seen.size(), 1u);
        EXPECT_EQ(seen[0].position, 0.25f);
        EXPECT_EQ(seen[0].unit, "Scanline");
        EXPECT_EQ(seen[0].heading, "Drawing \u2022");
        EXPECT_EQ(seen[0].maximum, 40);
        EXPECT_EQ(seen[0].value, 10);
        if (c.interval == 0) {
            EXPECT_EQ(unpacked(status.theStatusTick), 0);
        } else {
            // Due no sooner than the interval from now.
            EXPECT_GE(static_cast<std::int32_t>(static_cast<std::uint32_t>(status.theStatusTick) -
                                                static_cast<std::uint32_t>(before)),
                      c.interval);
        }
    }
}

} // namespace
