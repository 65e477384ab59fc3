// A host that exports every one of the 206 members. Each records the name it
// was called by and the bytes of its arguments, and answers a value of its
// own; every wrapper must reach the function of its own name with its
// arguments unchanged and hand the answer back.
//
// Host and wrappers are both made from the list, so a list whose argument
// column disagreed with its parameters would fool that check in both places
// alike; the column is therefore checked on its own as well.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "KitProbe.h"

namespace {

struct Call {
    std::string name;
    std::vector<unsigned char> arguments;
};
std::vector<Call> gCalls;

template <typename T>
void AppendBytes(std::vector<unsigned char>& bytes, const T& value)
{
    const auto* p = reinterpret_cast<const unsigned char*>(&value);
    bytes.insert(bytes.end(), p, p + sizeof(T));
}

uint32_t NameHash(const char* name)
{
    uint32_t h = 2166136261u;
    for (; *name != '\0'; ++name)
        h = (h ^ static_cast<unsigned char>(*name)) * 16777619u;
    return h;
}

// The answer of the member of this name: distinct per member and never the
// neutral value. Enum answers stay within every enum's range.
template <typename Result>
Result AnswerOf(const char* name)
{
    const uint32_t h = NameHash(name) | 1u;
    if constexpr (std::is_void_v<Result>)
        return;
    else if constexpr (std::is_pointer_v<Result>)
        return reinterpret_cast<Result>(static_cast<uintptr_t>(h & 0x7FFFFFF0u) + 0x1000u);
    else if constexpr (std::is_enum_v<Result>)
        return static_cast<Result>(1);
    else
        return static_cast<Result>(h & 0x7FFFFFFFu);
}

template <typename Result>
struct Recorder {
    const char* name;
    template <typename... Args>
    Result operator()(Args... arguments) const
    {
        Call call{name, {}};
        (AppendBytes(call.arguments, arguments), ...);
        gCalls.push_back(call);
        return AnswerOf<Result>(name);
    }
};

// A distinct, recognisable value for argument number i of type T.
template <typename T>
T ArgumentValue(int i)
{
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<T>(static_cast<uintptr_t>(0x5000 + 0x100 * i));
    else if constexpr (std::is_enum_v<T>)
        return static_cast<T>(1);
    else if constexpr (std::is_floating_point_v<T>)
        return static_cast<T>(1.5 + i);
    else if constexpr (std::is_unsigned_v<T>)
        return static_cast<T>(0xA0000000u + static_cast<unsigned>(i));
    else
        return static_cast<T>(-100 - i);
}

template <typename Result, typename... Args, size_t... I>
void CheckPassThrough(const char* name, Result (*wrapper)(Args...), std::index_sequence<I...>)
{
    std::vector<unsigned char> expected;
    (AppendBytes(expected, ArgumentValue<Args>(static_cast<int>(I))), ...);
    gCalls.clear();
    if constexpr (std::is_void_v<Result>) {
        wrapper(ArgumentValue<Args>(static_cast<int>(I))...);
    } else {
        const Result answer = wrapper(ArgumentValue<Args>(static_cast<int>(I))...);
        EXPECT_EQ(answer, AnswerOf<Result>(name)) << name;
    }
    ASSERT_EQ(gCalls.size(), 1u) << name;
    EXPECT_EQ(gCalls[0].name, name);
    EXPECT_EQ(gCalls[0].arguments, expected) << name;
}

template <typename Result, typename... Args>
void CheckPassThrough(const char* name, Result (*wrapper)(Args...))
{
    ASSERT_NE(wrapper, nullptr) << name;
    CheckPassThrough(name, wrapper, std::index_sequence_for<Args...>{});
}

template <typename Tuple, size_t... I>
std::vector<unsigned char> TupleBytes(const Tuple& values, std::index_sequence<I...>)
{
    std::vector<unsigned char> bytes;
    (AppendBytes(bytes, std::get<I>(values)), ...);
    return bytes;
}

// The argument column names the parameters, all of them, in their order.
template <typename Result, typename... Args, typename Echo, size_t... I>
void CheckArgumentColumn(const char* name, Result (*)(Args...), Echo echo,
                         std::index_sequence<I...> order)
{
    const auto echoed = echo(ArgumentValue<Args>(static_cast<int>(I))...);
    static_assert(std::tuple_size_v<std::decay_t<decltype(echoed)>> == sizeof...(Args));
    std::vector<unsigned char> expected;
    (AppendBytes(expected, ArgumentValue<Args>(static_cast<int>(I))), ...);
    EXPECT_EQ(TupleBytes(echoed, order), expected) << name;
}

template <typename Result, typename... Args, typename Echo>
void CheckArgumentColumn(const char* name, Result (*wrapper)(Args...), Echo echo)
{
    CheckArgumentColumn(name, wrapper, echo, std::index_sequence_for<Args...>{});
}

}  // namespace

// The host's side: every member, exported from this program.
#define KV_MEMBER(neutral, result, name, params, args) \
    extern "C" result name params { return Recorder<result>{#name} args; }
#include "KVToolboxList.h"
#undef KV_MEMBER

namespace {

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
#define KV_MEMBER(neutral, result, name, params, args)                                   \
    {#name, [] {                                                                         \
         CheckArgumentColumn(#name, KitProbe()->name, [] params { return std::make_tuple args; }); \
         CheckPassThrough(#name, KitProbe()->name);                                      \
     }},
#include "KVToolboxList.h"
#undef KV_MEMBER
    };
}

class PassThrough : public ::testing::TestWithParam<Member> {};

TEST_P(PassThrough, ReachesTheHostFunctionOfItsNameWithItsArgumentsUnchanged)
{
    GetParam().check();
}

INSTANTIATE_TEST_SUITE_P(EveryMember, PassThrough, ::testing::ValuesIn(AllMembers()),
                         [](const ::testing::TestParamInfo<Member>& info) {
                             return std::string(info.param.name);
                         });

}  // namespace
