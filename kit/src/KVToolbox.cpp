/*
 * KVToolbox.cpp - the plug-in's wrappers of the host's KV_ toolbox.
 *
 * Every wrapper is generated from the one list in KVToolboxList.h: it looks
 * the host's function of its own name up anew on each call, calls it with
 * the arguments unchanged, and answers the member's neutral result when the
 * host does not export it.
 */
#include "KVToolbox.h"

#include <dlfcn.h>

#include <type_traits>

namespace {

/* The result of a member whose host function is absent. The list's neutral
   column must agree with the result type; a mismatch fails to compile. */
template <typename Result, KV_NeutralKind Kind>
Result NeutralResult()
{
    if constexpr (Kind == KVN_NOTHING) {
        static_assert(std::is_void_v<Result>, "KVN_NOTHING is for members without a result");
        return;
    } else if constexpr (Kind == KVN_NULL) {
        static_assert(std::is_pointer_v<Result>, "KVN_NULL is for pointer results");
        return nullptr;
    } else if constexpr (Kind == KVN_FALSE) {
        static_assert(std::is_same_v<Result, int>, "KVN_FALSE is for int flags");
        return 0;
    } else {
        static_assert(std::is_arithmetic_v<Result> || std::is_enum_v<Result>,
                      "KVN_ZERO is for number and enum results");
        return static_cast<Result>(0);
    }
}

/* The host's function of this name, or null. The wrapper's own address is
   refused: should the kit ever be linked where its wrappers are visible to
   the loader, a wrapper finding itself would call itself without end. */
void* FindHostFunction(const char* theName, const void* theWrapper)
{
    void* found = dlsym(RTLD_DEFAULT, theName);
    return found == theWrapper ? nullptr : found;
}

} // namespace

#define KV_MEMBER(neutral, result, name, params, args)                                \
    extern "C" result name params                                                     \
    {                                                                                 \
        using HostFunction = result(*) params;                                        \
        void* found = FindHostFunction(#name, reinterpret_cast<const void*>(&name)); \
        if (found == nullptr)                                                         \
            return NeutralResult<result, neutral>();                                  \
        return reinterpret_cast<HostFunction>(found) args;                            \
    }
#include "KVToolboxList.h"
#undef KV_MEMBER
