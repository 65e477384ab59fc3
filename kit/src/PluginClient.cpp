/*
 * PluginClient.cpp - requests of the host through the host procedure.
 *
 * Every request fills a record that begins with the host reference, calls
 * the host procedure with the request's selector, the record's size and its
 * address, and keeps the host's answer unchanged in *theResult.
 *
 * A null host procedure cannot answer; a request made without one is
 * answered here with kPluginIncompatible (3), the code a command gives when
 * its record lacks what it needs, and the record is left as it was.
 */
#include "PluginClient.h"

#include <string.h>

extern "C" {
void*           sTheControlData     = nullptr;
int32_t         sTheControlDataSize = 0;
void*           sThePluginData      = nullptr;
int32_t         sThePluginDataSize  = 0;
KVPluginRoutine sTheHostProc        = nullptr;
void*           sTheHostReference   = nullptr;
}

namespace {

template <typename Record>
int32_t AskHost(KVPluginRoutine theHostProc, IFFType theSelector, Record* theRecord)
{
    if (theHostProc == nullptr)
        return kPluginIncompatible;
    return theHostProc(theSelector, static_cast<int32_t>(sizeof(Record)), theRecord);
}

KVPluginRoutine HostProcOf(const PluginInfoRec* theInfo)
{
    return theInfo != nullptr ? theInfo->theHostProc : nullptr;
}

void* HostReferenceOf(const PluginInfoRec* theInfo)
{
    return theInfo != nullptr ? theInfo->theHostReference : nullptr;
}

/* The result texts, indexed by code; codes without a text give "". */
const char* const kResultTexts[] = {
    "No plug-in error",
    "Plug-in could not allocate needed memory",
    "Unsupported plug-in command was received",
    "Incompatible plug-in parameter record was received",
    "The user canceled the plug-in operation",
    "A plug-in command was received out of sequence",
    "Plug-in could not get a required resource",
    "",
    "A requested plug-in feature or mode is not supported",
};

} // namespace

extern "C" {

int32_t GetFreeSize(int32_t* theResult)
{
    HostFreeRec theRecord;
    theRecord.theReference = sTheHostReference;
    theRecord.theFreeSize  = 0;
    const int32_t theAnswer = AskHost(sTheHostProc, kHostFree, &theRecord);
    if (theResult != nullptr)
        *theResult = theAnswer;
    return theAnswer == kPluginNoError ? theRecord.theFreeSize : 0;
}

void AllocateMemory(int32_t* theResult)
{
    HostAllocateRec theRecord;
    theRecord.theReference       = sTheHostReference;
    theRecord.theControlData     = sTheControlData;
    theRecord.theControlDataSize = sTheControlDataSize;
    theRecord.thePluginData      = sThePluginData;
    theRecord.thePluginDataSize  = sThePluginDataSize;
    const int32_t theAnswer = AskHost(sTheHostProc, kHostAllocate, &theRecord);
    if (theResult != nullptr)
        *theResult = theAnswer;
    // Adopted whatever the answer: a failing host leaves the record valid.
    sTheControlData     = theRecord.theControlData;
    sTheControlDataSize = theRecord.theControlDataSize;
    sThePluginData      = theRecord.thePluginData;
    sThePluginDataSize  = theRecord.thePluginDataSize;
}

void SendHostResetChannel(int32_t* theResult)
{
    HostResetChannelRec theRecord;
    theRecord.theReference = sTheHostReference;
    int32_t theAnswer = AskHost(sTheHostProc, kHostResetChannel, &theRecord);
    // An older host that does not know the request answers 2; that is fine.
    if (theAnswer == kPluginUnsupported)
        theAnswer = kPluginNoError;
    if (theResult != nullptr)
        *theResult = theAnswer;
}

void KVPluginMalloc(PluginInfoRec* theInfo, int32_t* theResult, uint32_t theSize, void** thePtr)
{
    if (theResult == nullptr || *theResult != kPluginNoError || thePtr == nullptr)
        return;
    HostMemMallocRec theRecord;
    theRecord.theReference = HostReferenceOf(theInfo);
    theRecord.theSize      = theSize;
    theRecord.thePtr       = *thePtr;
    *theResult = AskHost(HostProcOf(theInfo), kHostMemMalloc, &theRecord);
    *thePtr = theRecord.thePtr;
}

void KVPluginFree(PluginInfoRec* theInfo, int32_t* theResult, void* thePtr)
{
    if (theResult == nullptr || *theResult != kPluginNoError)
        return;
    HostMemFreeRec theRecord;
    theRecord.theReference = HostReferenceOf(theInfo);
    theRecord.thePtr       = thePtr;
    *theResult = AskHost(HostProcOf(theInfo), kHostMemFree, &theRecord);
}

void KVPluginStatusSetup(PluginInfoRec* theInfo, HostStatusRec* theStatus,
                         const unsigned char* theUnit, const unsigned char* theHeading,
                         int32_t theMin, int32_t theMax, float thePos, int32_t theValue,
                         int32_t* theResult)
{
    if (theStatus == nullptr)
        return;
    // The record is filled even after a failure; only the request is skipped.
    theStatus->theReference = HostReferenceOf(theInfo);
    theStatus->theStatusPos = thePos;
    CopyPStr(theStatus->theStatusUnit, theUnit);
    CopyPStr(theStatus->theStatusInfo, theHeading);
    theStatus->theStatusMin   = theMin;
    theStatus->theStatusMax   = theMax;
    theStatus->theStatusValue = theValue;
    theStatus->theStatusTick  = 0;
    KVPluginStatusUpdate(theInfo, theStatus, thePos, theValue, theResult);
}

void KVPluginStatusUpdate(PluginInfoRec* theInfo, HostStatusRec* theStatus,
                          float thePos, int32_t theValue, int32_t* theResult)
{
    if (theStatus == nullptr || theResult == nullptr || *theResult != kPluginNoError)
        return;
    theStatus->theReference   = HostReferenceOf(theInfo);
    theStatus->theStatusValue = theValue;
    theStatus->theStatusPos   = thePos;
    *theResult = AskHost(HostProcOf(theInfo), kHostStatus, theStatus);
}

void KVPluginStatusCheck(PluginInfoRec*, HostStatusRec*, int32_t*)
{
}

void KVPluginStatusFinish(PluginInfoRec* theInfo, HostStatusRec* theStatus, int32_t* theResult)
{
    // A tick of 0 means no report was ever paced, so there is no bar to finish.
    if (theStatus == nullptr || theResult == nullptr || *theResult != kPluginNoError ||
        theStatus->theStatusTick == 0)
        return;
    KVPluginStatusUpdate(theInfo, theStatus, 1.0f, theStatus->theStatusMax, theResult);
}

int32_t CallPluginRoutine(IFFType command, int32_t parameterSize, void* parameters,
                          KVPluginRoutine theRoutine)
{
    if (theRoutine == nullptr)
        return kPluginIncompatible;
    return theRoutine(command, parameterSize, parameters);
}

void DescribePluginError(int32_t theResultCode, unsigned char* theString)
{
    const int32_t theCount = static_cast<int32_t>(sizeof(kResultTexts) / sizeof(kResultTexts[0]));
    const bool known = theResultCode >= 0 && theResultCode < theCount;
    CopyStr(theString, known ? kResultTexts[theResultCode] : "");
}

void CopyStr(unsigned char* dst, const char* src)
{
    if (dst == nullptr)
        return;
    size_t theLength = 0;
    if (src != nullptr) {
        while (theLength < 255 && src[theLength] != '\0')
            ++theLength;
        memcpy(dst + 1, src, theLength);
    }
    dst[0] = static_cast<unsigned char>(theLength);
}

void CopyPStr(unsigned char* dst, const unsigned char* src)
{
    if (dst == nullptr)
        return;
    if (src == nullptr) {
        dst[0] = 0;
        return;
    }
    memmove(dst, src, static_cast<size_t>(src[0]) + 1);
}

} // extern "C"
