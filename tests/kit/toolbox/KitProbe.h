// The kit seen from outside a plug-in: a shared module that links the kit
// (whose KV_ wrappers stay hidden inside it, as in a real plug-in) and hands
// out the addresses of its wrappers and dialog helpers. Test programs play
// the host by exporting KV_ functions of their own, or none at all.
#ifndef KIT_PROBE_H
#define KIT_PROBE_H

#include "KVToolbox.h"
#include "PluginUtils.h"

// Dialog helpers that reach the host, by name.
#define KIT_PROBE_HELPERS(X)                                                                  \
    X(SetButton) X(GetButton) X(ToggleButton) X(SetButtonName) X(GetButtonName) X(SelectItem) \
    X(SetTheIText) X(GetTheIText) X(SetTheINum) X(GetTheINum) X(SetTheIReal) X(GetTheIReal)   \
    X(SetTheIPopUp) X(GetTheIPopUp) X(GetTheIType) X(SetTheIRect) X(GetTheIRect)             \
    X(SetColorButtonIDARGB) X(GetColorButtonIDARGB) X(SetUserControlIDFunctions)             \
    X(SetControlIDHitFunction) X(SetControlIDVisible) X(SetControlIDTitle)                   \
    X(SetEditTextIDString) X(SetParamText) X(StandardDialog) X(Stop) X(Warning) X(Message)   \
    X(Caution) X(Error) X(StandardError) X(InitUtils) X(OpenResourceFile)

struct KitProbeTable {
#define KV_MEMBER(neutral, result, name, params, args) result(*name) params;
#include "KVToolboxList.h"
#undef KV_MEMBER
#define KIT_PROBE_MEMBER(name) decltype(&::name) name;
    KIT_PROBE_HELPERS(KIT_PROBE_MEMBER)
#undef KIT_PROBE_MEMBER
    bool* errorFlag;
    bool* hideErrorFlag;
};

extern "C" __attribute__((visibility("default"))) const KitProbeTable* KitProbe(void);

#endif
