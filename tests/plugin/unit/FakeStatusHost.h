/*
 * FakeStatusHost.h - a host procedure for tests that records the 'STAT'
 * requests it receives and answers each with a scripted code.
 */
#ifndef GLINTWAVE_TEST_FAKE_STATUS_HOST_H
#define GLINTWAVE_TEST_FAKE_STATUS_HOST_H

#include <stdint.h>
#include <string.h>

#include <string>
#include <vector>

#include "glintwave/GlintwaveRecords.h"

namespace flaretest {

struct StatusReport {
    IFFType selector;
    int32_t size;
    void* reference;
    float pos;
    int32_t min, max, value;
    std::string unit, info;
};

class FakeStatusHost {
public:
    FakeStatusHost() { current_ = this; }
    ~FakeStatusHost() { current_ = nullptr; }

    /* Answers for the first requests, in order; later requests get 0. */
    std::vector<int32_t> replies;
    std::vector<StatusReport> reports;

    static int32_t Proc(IFFType selector, int32_t size, void* record)
    {
        FakeStatusHost* host = current_;
        if (host == nullptr)
            return 2;
        const HostStatusRec* s = static_cast<const HostStatusRec*>(record);
        StatusReport r{selector, size, s->theReference, s->theStatusPos, s->theStatusMin, s->theStatusMax,
                       s->theStatusValue, Text(s->theStatusUnit), Text(s->theStatusInfo)};
        size_t index = host->reports.size();
        host->reports.push_back(r);
        return index < host->replies.size() ? host->replies[index] : 0;
    }

    /* Points a data block at this host. */
    void Attach(PluginDataRec* theData, void* reference)
    {
        theData->flareHostProc = &FakeStatusHost::Proc;
        theData->flareHostReference = reference;
    }

private:
    static std::string Text(const unsigned char* p) { return std::string(reinterpret_cast<const char*>(p + 1), p[0]); }

    static inline FakeStatusHost* current_ = nullptr;
};

}  // namespace flaretest

#endif /* GLINTWAVE_TEST_FAKE_STATUS_HOST_H */
