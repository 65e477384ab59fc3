/*
 * Main.cpp - the plug-in's one exported entry point.
 *
 * The host calls Main once per request: it names the request by a four-
 * character command and hands over a record that begins with a
 * PluginInfoRec. Main mirrors the info record in the s-globals, dispatches,
 * closes the flare table file if the command opened it, and returns the
 * handler's result code. Nothing is thrown across this boundary: every path
 * ends in a result code.
 */
#include <cstring>

#include "FlareRender.h"
#include "GlintwaveCommands.h"
#include "GlintwaveData.h"
#include "PluginClient.h"

/* Copies the host's current blocks, sizes, procedure and token into the
   globals. A record too small to hold the info record gives us no blocks:
   the globals are cleared so nothing can reach a block of an earlier call
   (every handler then answers 3 for the small record anyway). */
static void CopyInfoRecord(int32_t theCommandRecSize, const void* theCommandRec)
{
    if (theCommandRecSize < (int32_t)sizeof(PluginInfoRec)) {
        sTheControlData = nullptr;
        sTheControlDataSize = 0;
        sThePluginData = nullptr;
        sThePluginDataSize = 0;
        sTheHostProc = nullptr;
        sTheHostReference = nullptr;
        return;
    }
    PluginInfoRec theInfo;
    std::memcpy(&theInfo, theCommandRec, sizeof theInfo);
    sTheControlData = theInfo.theControlData;
    sTheControlDataSize = theInfo.theControlDataSize;
    sThePluginData = theInfo.thePluginData;
    sThePluginDataSize = theInfo.thePluginDataSize;
    sTheHostReference = theInfo.theHostReference;
    sTheHostProc = theInfo.theHostProc;
}

static int32_t Dispatch(uint32_t command, int32_t theCommandRecSize, void* theCommandRec)
{
    switch (command) {
    case kCmdCheck:         return DoCheck(theCommandRecSize, theCommandRec);
    case kCmdDescribe:      return DoDescribe(theCommandRecSize, theCommandRec);
    case kCmdFinishChannel: return DoFinishChannel(theCommandRecSize, theCommandRec);
    case kCmdFinish:        return DoFinish(theCommandRecSize, theCommandRec);
    case kCmdFlareGenerate: return DoGenerate(theCommandRecSize, theCommandRec);
    case kCmdInitChannel:   return DoInitializeChannel(theCommandRecSize, theCommandRec);
    case kCmdInformation:   return DoInformation(theCommandRecSize, theCommandRec);
    case kCmdInitialize:    return DoInitialize(theCommandRecSize, theCommandRec);
    case kCmdInterface:     return DoInterface(theCommandRecSize, theCommandRec);
    case kCmdLoadChannel:   return DoLoadChannel(theCommandRecSize, theCommandRec);
    case kCmdFlareSetup:    return DoSetup(theCommandRecSize, theCommandRec);
    case kCmdUpdateChannel: return DoUpdateChannel(theCommandRecSize, theCommandRec);
    default:                return kPluginUnsupported;
    }
}

/* A null record is answered with 3 before anything is touched: there is no
   info record to mirror, and no handler could run without one. */
extern "C" __attribute__((visibility("default"))) int32_t Main(uint32_t command,
                                                              int32_t theCommandRecSize,
                                                              void* theCommandRec) noexcept
{
    if (theCommandRec == nullptr)
        return kPluginIncompatible;

    InitGlobals(false);
    CopyInfoRecord(theCommandRecSize, theCommandRec);
    int32_t theResult = Dispatch(command, theCommandRecSize, theCommandRec);
    CloseTheResource();
    return theResult;
}
