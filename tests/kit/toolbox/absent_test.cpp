// A process without any of the host's functions: every wrapper answers its
// neutral value (0, null, nothing) and the dialog helpers degrade to doing
// nothing and answering 0 or empty text.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "KitProbe.h"

namespace {

template <typename Result, typename... Args>
void CheckNeutral(const char* name, Result (*wrapper)(Args...))
{
    ASSERT_NE(wrapper, nullptr) << name;
    if constexpr (std::is_void_v<Result>) {
        wrapper(Args{}...);
    } else {
        const Result answer = wrapper(Args{}...);
        EXPECT_EQ(answer, Result{}) << name;
    }
}

struct Member {
    const char* name;
    void (*check)();
};

void PrintTo(const Member& member, std::ostream* os)
{
    *os << member.name;
}

std::vector<Member> AllMembers()
{
    return {
#define KV_MEMBER(neutral, result, name, params, args) \
    {#name, [] { CheckNeutral(#name, KitProbe()->name); }},
#include "KVToolboxList.h"
#undef KV_MEMBER
    };
}

class Absent : public ::testing::TestWithParam<Member> {};

TEST_P(Absent, AnswersTheNeutralValue)
{
    GetParam().check();
}

INSTANTIATE_TEST_SUITE_P(EveryMember, Absent, ::testing::ValuesIn(AllMembers()),
                         [](const ::testing::TestParamInfo<Member>& info) {
                             return std::string(info.param.name);
                         });

// Members called with real arguments leave them alone.
TEST(AbsentHost, MembersLeaveTheirArgumentsAlone)
{
    const KitProbeTable* kit = KitProbe();
    EXPECT_EQ(kit->KV_GetAPIVersion(), 0);
    EXPECT_EQ(kit->KV_MakeDialog(nullptr, 16001), nullptr);
    KV_Rect r{1, 2, 3, 4};
    kit->KV_SetRect(&r, 10, 20, 30, 40);
    kit->KV_InsetRect(&r, 1, 1);
    EXPECT_EQ(r.left, 1);
    EXPECT_EQ(r.bottom, 4);
    int32_t size = 77;
    EXPECT_EQ(kit->KV_GetResource(nullptr, 0x464C4152u, 1001, &size), nullptr);
    EXPECT_EQ(size, 77);
}

const unsigned char kText[] = "\x04" "text";

TEST(AbsentHost, DialogHelpersDoNothingAndAnswerZero)
{
    const KitProbeTable* kit = KitProbe();
    auto* dialog = reinterpret_cast<KV_Dialog*>(static_cast<uintptr_t>(0x4000));

    kit->SetButton(dialog, 3, 1);
    EXPECT_EQ(kit->GetButton(dialog, 3), 0);
    EXPECT_FALSE(kit->ToggleButton(dialog, 3));
    EXPECT_EQ(kit->GetTheINum(dialog, 6), 0);
    EXPECT_EQ(kit->GetTheIReal(dialog, 6), 0.0);
    EXPECT_FALSE(std::signbit(kit->GetTheIReal(dialog, 6)));
    EXPECT_EQ(kit->GetTheIPopUp(dialog, 5), 0);
    EXPECT_EQ(kit->GetTheIType(dialog, 5), cKV_NoControlType);

    PStr255 text;
    std::memset(text, 'x', sizeof text);
    kit->GetTheIText(dialog, 6, text);
    EXPECT_EQ(text[0], 0);
    std::memset(text, 'x', sizeof text);
    EXPECT_EQ(kit->GetButtonName(dialog, 6, text), text);
    EXPECT_EQ(text[0], 0);

    KV_Rect r{5, 6, 7, 8};
    kit->GetTheIRect(dialog, 16, &r);
    EXPECT_EQ(r.left, 5);
    ARGB color;
    color.colorValue = 0x11223344u;
    kit->GetColorButtonIDARGB(dialog, 28, &color);
    EXPECT_EQ(color.colorValue, 0x11223344u);

    kit->SetParamText(dialog, kText, kText, kText, kText);
    kit->SetControlIDVisible(dialog, 1, 0);
    kit->SetControlIDTitle(dialog, 1, "t");
    kit->SetEditTextIDString(dialog, 1, "e");
    EXPECT_EQ(kit->StandardDialog(nullptr, 9000, kText, kText, kText, kText), 0);
    EXPECT_EQ(kit->Stop(nullptr, kText), 0);
    EXPECT_EQ(kit->OpenResourceFile("Glintwave.rsc"), nullptr);

    // Error still marks the error as shown.
    kit->InitUtils();
    kit->Error(nullptr, kText, 3);
    EXPECT_TRUE(*kit->errorFlag);
}

}  // namespace
