/*
 * RenderStatus.cpp - progress reports to the host while a frame is painted.
 *
 * The host paces the reports: it answers each 'STAT' request with the tick
 * count before which it wants no further report (theStatusTick, 0 = report
 * at once), and its non-zero answer is the user's cancel. Once a request has
 * failed, nothing more is sent and the first code is kept.
 */
#include "FlareRender.h"
#include "KVSystem.h"

namespace {

/* Sends the whole status record through the host procedure captured when
   the frame was set up. Without a host procedure nothing is sent. */
void SendStatus(PluginDataRec* theData, int32_t* result)
{
    if (theData->flareHostProc == nullptr)
        return;
    theData->theStatusRec.theReference = theData->flareHostReference;
    *result = theData->flareHostProc(kHostStatus, (int32_t)sizeof(HostStatusRec), &theData->theStatusRec);
}

}  // namespace

bool StatusTime(const PluginDataRec* theData)
{
    int32_t tick = theData->theStatusRec.theStatusTick;
    return tick == 0 || TickCount() >= tick;
}

void UpdateStatus(PluginDataRec* theData, float thePos, int32_t theValue, int32_t* result)
{
    if (*result != 0)
        return;
    theData->theStatusRec.theStatusPos = thePos;
    theData->theStatusRec.theStatusValue = theValue;
    SendStatus(theData, result);
}

void CheckStatus(PluginDataRec* theData, int32_t* result)
{
    if (*result == 0 && StatusTime(theData))
        SendStatus(theData, result);
}
