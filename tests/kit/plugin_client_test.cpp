// Requests through the host procedure: what is sent, what is kept of the
// answer, and the result texts.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "PluginClient.h"

namespace {

struct Request {
    IFFType selector;
    int32_t size;
    std::vector<unsigned char> record;  // the record as the host received it
};

// A host procedure whose answers and record edits the test chooses.
struct FakeHost {
    std::vector<Request> requests;
    int32_t answer = 0;
    int32_t freeSize = 0;
    void* movedControlData = nullptr;
    int32_t movedControlDataSize = 0;
    void* movedPluginData = nullptr;
    int32_t movedPluginDataSize = 0;
    void* mallocPtr = nullptr;
    int32_t statusTick = 0;
};

FakeHost gHost;

int32_t FakeHostProc(IFFType selector, int32_t size, void* record)
{
    const auto* bytes = static_cast<const unsigned char*>(record);
    gHost.requests.push_back({selector, size, std::vector<unsigned char>(bytes, bytes + size)});
    switch (selector) {
    case kHostFree:
        static_cast<HostFreeRec*>(record)->theFreeSize = gHost.freeSize;
        break;
    case kHostAllocate: {
        auto* r = static_cast<HostAllocateRec*>(record);
        r->theControlData = gHost.movedControlData;
        r->theControlDataSize = gHost.movedControlDataSize;
        r->thePluginData = gHost.movedPluginData;
        r->thePluginDataSize = gHost.movedPluginDataSize;
        break;
    }
    case kHostMemMalloc:
        static_cast<HostMemMallocRec*>(record)->thePtr = gHost.mallocPtr;
        break;
    case kHostStatus:
        static_cast<HostStatusRec*>(record)->theStatusTick = gHost.statusTick;
        break;
    default:
        break;
    }
    return gHost.answer;
}

// Fields of packed records are read by value: on 64 bits they may sit at
// addresses a reference must not bind to.
template <typename T>
T Value(T field)
{
    return field;
}

template <typename Record>
Record Sent(const Request& request)
{
    Record r;
    EXPECT_EQ(request.record.size(), sizeof(Record));
    std::memcpy(&r, request.record.data(), sizeof(Record));
    return r;
}

int gControl, gPlugin, gMovedControl, gMovedPlugin, gReference, gMalloc;

class PluginClientTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        gHost = FakeHost{};
        sTheHostProc = FakeHostProc;
        sTheHostReference = &gReference;
        sTheControlData = &gControl;
        sTheControlDataSize = 128;
        sThePluginData = &gPlugin;
        sThePluginDataSize = 784;
        info = PluginInfoRec{&gControl, 128, &gPlugin, 784, FakeHostProc, &gReference};
    }
    PluginInfoRec info{};
};

TEST_F(PluginClientTest, GetFreeSizeKeepsTheAnswerWhateverTheResultHeld)
{
    struct Case {
        int32_t answer, before, expectedSize;
    } const cases[] = {
        {0, 0, 5000},
        {1, 0, 0},   // an error answer yields 0 and the error, even from 0
        {0, 3, 5000}, // the answer replaces an earlier failure too
        {4, 1, 0},
    };
    for (const Case& c : cases) {
        gHost = FakeHost{};
        gHost.answer = c.answer;
        gHost.freeSize = 5000;
        int32_t result = c.before;
        EXPECT_EQ(GetFreeSize(&result), c.expectedSize) << c.answer << "/" << c.before;
        EXPECT_EQ(result, c.answer);
        ASSERT_EQ(gHost.requests.size(), 1u);
        EXPECT_EQ(gHost.requests[0].selector, kHostFree);
        EXPECT_EQ(gHost.requests[0].size, static_cast<int32_t>(sizeof(HostFreeRec)));
        const auto sent = Sent<HostFreeRec>(gHost.requests[0]);
        EXPECT_EQ(Value(sent.theReference), &gReference);
        EXPECT_EQ(Value(sent.theFreeSize), 0);
    }
}

TEST_F(PluginClientTest, AllocateMemoryAdoptsTheRecordWhateverTheAnswer)
{
    for (int32_t answer : {0, 1}) {
        SetUp();
        gHost.answer = answer;
        gHost.movedControlData = &gMovedControl;
        gHost.movedControlDataSize = 136;
        gHost.movedPluginData = &gMovedPlugin;
        gHost.movedPluginDataSize = 4096;
        sThePluginDataSize = 100000;  // the wanted size
        int32_t result = 0;
        AllocateMemory(&result);
        EXPECT_EQ(result, answer);
        ASSERT_EQ(gHost.requests.size(), 1u);
        EXPECT_EQ(gHost.requests[0].selector, kHostAllocate);
        const auto sent = Sent<HostAllocateRec>(gHost.requests[0]);
        EXPECT_EQ(Value(sent.theReference), &gReference);
        EXPECT_EQ(Value(sent.theControlData), &gControl);
        EXPECT_EQ(Value(sent.theControlDataSize), 128);
        EXPECT_EQ(Value(sent.thePluginData), &gPlugin);
        EXPECT_EQ(Value(sent.thePluginDataSize), 100000);
        EXPECT_EQ(sTheControlData, &gMovedControl) << answer;
        EXPECT_EQ(sTheControlDataSize, 136);
        EXPECT_EQ(sThePluginData, &gMovedPlugin);
        EXPECT_EQ(sThePluginDataSize, 4096);
    }
}

TEST_F(PluginClientTest, ResetChannelToleratesHostsThatDoNotKnowIt)
{
    struct Case {
        int32_t answer, expected;
    } const cases[] = {{0, 0}, {2, 0}, {1, 1}, {4, 4}, {3, 3}};
    for (const Case& c : cases) {
        gHost = FakeHost{};
        gHost.answer = c.answer;
        int32_t result = 0;
        SendHostResetChannel(&result);
        EXPECT_EQ(result, c.expected) << c.answer;
        ASSERT_EQ(gHost.requests.size(), 1u);
        EXPECT_EQ(gHost.requests[0].selector, kHostResetChannel);
        EXPECT_EQ(gHost.requests[0].size, static_cast<int32_t>(sizeof(HostResetChannelRec)));
        EXPECT_EQ(Value(Sent<HostResetChannelRec>(gHost.requests[0]).theReference), &gReference);
    }
}

TEST_F(PluginClientTest, WithoutHostProcedureRequestsAnswerIncompatible)
{
    sTheHostProc = nullptr;
    int32_t result = 0;
    EXPECT_EQ(GetFreeSize(&result), 0);
    EXPECT_EQ(result, kPluginIncompatible);

    result = 0;
    AllocateMemory(&result);
    EXPECT_EQ(result, kPluginIncompatible);
    EXPECT_EQ(sTheControlData, &gControl);  // the record comes back unchanged
    EXPECT_EQ(sThePluginDataSize, 784);

    result = 0;
    SendHostResetChannel(&result);
    EXPECT_EQ(result, kPluginIncompatible);

    info.theHostProc = nullptr;
    void* ptr = &gControl;
    result = 0;
    KVPluginMalloc(&info, &result, 16, &ptr);
    EXPECT_EQ(result, kPluginIncompatible);
    EXPECT_EQ(ptr, &gControl);
    EXPECT_EQ(CallPluginRoutine(kCmdInformation, 0, nullptr, nullptr), kPluginIncompatible);
}

TEST_F(PluginClientTest, MallocAndFreeSkipAfterAnEarlierFailure)
{
    struct Case {
        int32_t before, answer;
        bool sends;
        int32_t expected;
    } const cases[] = {
        {0, 0, true, 0},
        {0, 1, true, 1},
        {3, 0, false, 3},
        {4, 0, false, 4},
    };
    for (const Case& c : cases) {
        gHost = FakeHost{};
        gHost.answer = c.answer;
        gHost.mallocPtr = &gMalloc;
        void* ptr = &gPlugin;
        int32_t result = c.before;
        KVPluginMalloc(&info, &result, 77, &ptr);
        EXPECT_EQ(result, c.expected);
        EXPECT_EQ(gHost.requests.size(), c.sends ? 1u : 0u);
        if (c.sends) {
            EXPECT_EQ(ptr, &gMalloc);
            const auto sent = Sent<HostMemMallocRec>(gHost.requests[0]);
            EXPECT_EQ(gHost.requests[0].selector, kHostMemMalloc);
            EXPECT_EQ(Value(sent.theReference), &gReference);
            EXPECT_EQ(Value(sent.theSize), 77u);
            EXPECT_EQ(Value(sent.thePtr), &gPlugin);
        } else {
            EXPECT_EQ(ptr, &gPlugin);  // untouched
        }

        gHost = FakeHost{};
        gHost.answer = c.answer;
        result = c.before;
        KVPluginFree(&info, &result, &gMalloc);
        EXPECT_EQ(result, c.expected);
        ASSERT_EQ(gHost.requests.size(), c.sends ? 1u : 0u);
        if (c.sends) {
            EXPECT_EQ(gHost.requests[0].selector, kHostMemFree);
            EXPECT_EQ(Value(Sent<HostMemFreeRec>(gHost.requests[0]).thePtr), &gMalloc);
        }
    }
}

TEST_F(PluginClientTest, StatusSetupFillsTheRecordAndFinishFollowsTheTick)
{
    const unsigned char unit[] = "\x05" "Lines";
    const unsigned char heading[] = "\x09" "Rendering";
    struct Case {
        int32_t before;
        int32_t hostTick;      // what the host stores into theStatusTick
        size_t setupRequests;  // requests made by the set-up
        size_t finishRequests; // requests made by the finish
    } const cases[] = {
        {0, 0, 1, 0},   // finish right after set-up sends nothing
        {0, 120, 1, 1}, // a host that paces the reports gets a final one
        {4, 120, 0, 0}, // after a failure nothing is sent, the record is still filled
    };
    for (const Case& c : cases) {
        gHost = FakeHost{};
        gHost.statusTick = c.hostTick;
        HostStatusRec status;
        std::memset(&status, 0xAB, sizeof status);
        int32_t result = c.before;
        KVPluginStatusSetup(&info, &status, unit, heading, 2, 480, 0.25f, 7, &result);
        EXPECT_EQ(result, c.before);
        EXPECT_EQ(Value(status.theReference), &gReference);
        EXPECT_EQ(Value(status.theStatusPos), 0.25f);
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(status.theStatusUnit + 1),
                              status.theStatusUnit[0]), "Lines");
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(status.theStatusInfo + 1),
                              status.theStatusInfo[0]), "Rendering");
        EXPECT_EQ(Value(status.theStatusMin), 2);
        EXPECT_EQ(Value(status.theStatusMax), 480);
        EXPECT_EQ(Value(status.theStatusValue), 7);
        EXPECT_EQ(Value(status.theStatusTick), c.setupRequests ? c.hostTick : 0);
        ASSERT_EQ(gHost.requests.size(), c.setupRequests);
        if (c.setupRequests) {
            EXPECT_EQ(gHost.requests[0].selector, kHostStatus);
            EXPECT_EQ(gHost.requests[0].size, static_cast<int32_t>(sizeof(HostStatusRec)));
            EXPECT_EQ(Value(Sent<HostStatusRec>(gHost.requests[0]).theStatusTick), 0);
        }

        KVPluginStatusCheck(&info, &status, &result);
        EXPECT_EQ(gHost.requests.size(), c.setupRequests);

        KVPluginStatusFinish(&info, &status, &result);
        ASSERT_EQ(gHost.requests.size(), c.setupRequests + c.finishRequests);
        if (c.finishRequests) {
            const auto sent = Sent<HostStatusRec>(gHost.requests.back());
            EXPECT_EQ(Value(sent.theStatusPos), 1.0f);
            EXPECT_EQ(Value(sent.theStatusValue), 480);
        }
    }
}

TEST_F(PluginClientTest, StatusUpdatePassesTheCancelOn)
{
    HostStatusRec status{};
    gHost.answer = kPluginUserCanceled;
    int32_t result = 0;
    KVPluginStatusUpdate(&info, &status, 0.5f, 240, &result);
    EXPECT_EQ(result, kPluginUserCanceled);
    KVPluginStatusUpdate(&info, &status, 0.75f, 360, &result);
    EXPECT_EQ(gHost.requests.size(), 1u);
    EXPECT_EQ(Value(status.theStatusValue), 240);
}

std::string Text(const unsigned char* p)
{
    return std::string(reinterpret_cast<const char*>(p + 1), p[0]);
}

TEST(DescribePluginError, GivesTheTextOfEveryCodeAndNothingElse)
{
    struct Case {
        int32_t code;
        const char* text;
    } const cases[] = {
        {0, "No plug-in error"},
        {1, "Plug-in could not allocate needed memory"},
        {2, "Unsupported plug-in command was received"},
        {3, "Incompatible plug-in parameter record was received"},
        {4, "The user canceled the plug-in operation"},
        {5, "A plug-in command was received out of sequence"},
        {6, "Plug-in could not get a required resource"},
        {7, ""},
        {8, "A requested plug-in feature or mode is not supported"},
        {9, ""},
        {-1, ""},
        {INT32_MIN, ""},
        {INT32_MAX, ""},
    };
    for (const Case& c : cases) {
        PStr255 s;
        std::memset(s, 'x', sizeof s);
        DescribePluginError(c.code, s);
        EXPECT_EQ(Text(s), c.text) << c.code;
    }
}

TEST(CopyStr, CopiesUpTo255CharactersAndStopsAtTheTerminator)
{
    const std::string longText(300, 'k');
    const std::string exactText(255, 'k');
    struct Case {
        const char* src;
        std::string expected;
    } const cases[] = {
        {"", ""},
        {"abc", "abc"},
        {longText.c_str(), std::string(255, 'k')},
        {exactText.c_str(), exactText},
        {nullptr, ""},
    };
    for (const Case& c : cases) {
        PStr255 s;
        std::memset(s, 0xEE, sizeof s);
        CopyStr(s, c.src);
        EXPECT_EQ(Text(s), c.expected);
    }
    // A copy goes no further than the length byte says.
    PStr255 dst;
    std::memset(dst, 'z', sizeof dst);
    const unsigned char src[] = "\x03" "abcdef";
    CopyPStr(dst, src);
    EXPECT_EQ(Text(dst), "abc");
    EXPECT_EQ(dst[4], 'z');
}

}  // namespace
