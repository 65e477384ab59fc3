#include "KitProbe.h"

extern "C" const KitProbeTable* KitProbe(void)
{
    static const KitProbeTable theTable = [] {
        KitProbeTable t{};
#define KV_MEMBER(neutral, result, name, params, args) t.name = &::name;
#include "KVToolboxList.h"
#undef KV_MEMBER
#define KIT_PROBE_MEMBER(name) t.name = &::name;
        KIT_PROBE_HELPERS(KIT_PROBE_MEMBER)
#undef KIT_PROBE_MEMBER
        t.errorFlag = &errorFlag;
        t.hideErrorFlag = &hideErrorFlag;
        return t;
    }();
    return &theTable;
}
