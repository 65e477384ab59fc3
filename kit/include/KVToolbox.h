/*
 * KVToolbox.h - the host's toolbox of KV_ functions.
 *
 * The host exports these 206 functions from its executable; a plug-in never
 * links against them. The kit gives the plug-in a wrapper of the same name
 * and signature for each (kit/src/KVToolbox.cpp) which, on every call:
 *
 *   1. looks the host's function up by exactly its own name in the process's
 *      global symbol scope (dlsym(RTLD_DEFAULT, "KV_...")); nothing is
 *      cached, so a host may come and go between calls;
 *   2. if found, calls it with the arguments unchanged and returns its result;
 *   3. if not found, returns 0 (null for pointers, 0 for flags) or, for a
 *      member without a result, does nothing.
 *
 * A caller therefore reads 0 or null both as "the host lacks this" and as
 * failure: a null dialog from KV_MakeDialog means no dialog, whatever the
 * reason. A missing function is never an error in itself.
 *
 * The wrappers are built with hidden visibility, so that from inside a
 * plug-in the lookup finds the host's function and never the wrapper itself.
 * The same declarations serve a host that implements the members.
 *
 * Signatures, argument conventions and the meaning of each member are listed
 * in KVToolboxList.h.
 */
#ifndef KV_TOOLBOX_H
#define KV_TOOLBOX_H

#include <stdint.h>

#include "KVToolboxTypes.h"
#include "KVToolboxList.h"

#ifdef __cplusplus
extern "C" {
#endif

#define KV_MEMBER(neutral, result, name, params, args) result name params;
#include "KVToolboxList.h"
#undef KV_MEMBER

/* One enumerator per member, in list order; kKVToolboxMemberCount counts them. */
enum KV_ToolboxMemberIndex {
#define KV_MEMBER(neutral, result, name, params, args) kKVMember_##name,
#include "KVToolboxList.h"
#undef KV_MEMBER
    kKVToolboxMemberCount
};

#ifdef __cplusplus
}
static_assert(kKVToolboxMemberCount == 206, "the host's toolbox has 206 members");
#else
_Static_assert(kKVToolboxMemberCount == 206, "the host's toolbox has 206 members");
#endif

#endif /* KV_TOOLBOX_H */
