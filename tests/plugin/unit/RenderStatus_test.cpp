/*
 * Progress reports: pacing by the host's tick, the record sent, and the
 * first non-zero answer ending all further reports.
 */
#include <gtest/gtest.h>

#include "FakeStatusHost.h"
#include "FlareTestBlock.h"
#include "KVSystem.h"

using flaretest::FakeStatusHost;
using flaretest::FlareTestBlock;

namespace {

int gReference;

struct FailureCase {
    const char* name;
    int32_t code;
};

class StatusFailureTest : public ::testing::TestWithParam<FailureCase> {};

TEST_P(StatusFailureTest, FirstCodeKeptAndNothingMoreSent)
{
    FlareTestBlock block(4096);
    FakeStatusHost host;
    host.replies = {0, GetParam().code, 0};
    host.Attach(block.data(), &gReference);
    int32_t result = 0;

    CheckStatus(block.data(), &result);
    UpdateStatus(block.data(), 0.5f, 1, &result);
    EXPECT_EQ(result, GetParam().code);
    UpdateStatus(block.data(), 0.75f, 2, &result);
    CheckStatus(block.data(), &result);
    EXPECT_EQ(result, GetParam().code);
    EXPECT_EQ(host.reports.size(), 2u);
    /* A failed step leaves the record as it was. */
    EXPECT_EQ(+block.data()->theStatusRec.theStatusValue, 1);
}

INSTANTIATE_TEST_SUITE_P(RenderStatus, StatusFailureTest,
                         ::testing::Values(FailureCase{"Cancel", kPluginUserCanceled},
                                           FailureCase{"OtherCode", 99}, FailureCase{"Negative", -1}),
                         [](const ::testing::TestParamInfo<FailureCase>& info) { return std::string(info.param.name); });

TEST(RenderStatus, HostPacesReportsThroughTheTick)
{
    FlareTestBlock block(4096);
    FakeStatusHost host;
    host.Attach(block.data(), &gReference);
    int32_t result = 0;

    /* Far in the future: not due; CheckStatus sends nothing. */
    block.data()->theStatusRec.theStatusTick = TickCount() + 1000000;
    EXPECT_FALSE(StatusTime(block.data()));
    CheckStatus(block.data(), &result);
    EXPECT_TRUE(host.reports.empty());

    /* Already passed: due. */
    block.data()->theStatusRec.theStatusTick = 1;
    EXPECT_TRUE(StatusTime(block.data()));
    CheckStatus(block.data(), &result);
    EXPECT_EQ(host.reports.size(), 1u);
}

}  // namespace
