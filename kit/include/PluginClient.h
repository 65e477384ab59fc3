/*
 * PluginClient.h - the plug-in side of the host procedure.
 *
 * Main copies the six fields of every command's PluginInfoRec into the
 * s-globals below before it dispatches; the routines here make requests of
 * the host through sTheHostProc with sTheHostReference. Every routine takes
 * an int32_t* theResult in/out: a step guarded by *theResult == 0 does
 * nothing once an earlier step failed, and the host's answer is stored
 * unchanged, so the first failure travels back to the host.
 */
#ifndef KV_PLUGIN_CLIENT_H
#define KV_PLUGIN_CLIENT_H

#include "KVPluginAPI.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The current call's blocks, sizes, host procedure and token. Updated by
   AllocateMemory when the host moves or resizes a block. */
extern void*           sTheControlData;
extern int32_t         sTheControlDataSize;
extern void*           sThePluginData;
extern int32_t         sThePluginDataSize;
extern KVPluginRoutine sTheHostProc;
extern void*           sTheHostReference;

/* 'FREE': stores the host's answer in *theResult (whatever it held) and
   returns the offered size when the answer is 0, else 0. */
int32_t GetFreeSize(int32_t* theResult);

/* 'ALOC' with the four block globals (set the size globals to the wanted
   sizes first); the answer goes to *theResult and the record's four fields
   are copied back into the globals whatever the answer. */
void AllocateMemory(int32_t* theResult);

/* 'RCHN'; an answer of 2 (a host that does not know it) counts as 0. */
void SendHostResetChannel(int32_t* theResult);

/* General client routines taking the info record explicitly. */
void KVPluginMalloc(PluginInfoRec* theInfo, int32_t* theResult, uint32_t theSize, void** thePtr);
void KVPluginFree(PluginInfoRec* theInfo, int32_t* theResult, void* thePtr);
void KVPluginStatusSetup(PluginInfoRec* theInfo, HostStatusRec* theStatus,
                         const unsigned char* theUnit, const unsigned char* theHeading,
                         int32_t theMin, int32_t theMax, float thePos, int32_t theValue,
                         int32_t* theResult);
void KVPluginStatusUpdate(PluginInfoRec* theInfo, HostStatusRec* theStatus,
                          float thePos, int32_t theValue, int32_t* theResult);
void KVPluginStatusCheck(PluginInfoRec* theInfo, HostStatusRec* theStatus, int32_t* theResult);
void KVPluginStatusFinish(PluginInfoRec* theInfo, HostStatusRec* theStatus, int32_t* theResult);

/* Calls a plug-in entry or host procedure through a pointer. */
int32_t CallPluginRoutine(IFFType command, int32_t parameterSize, void* parameters,
                          KVPluginRoutine theRoutine);

/* The text of a result code; unknown codes give the empty string. */
void DescribePluginError(int32_t theResultCode, unsigned char* theString);

/* Zero-terminated to Pascal (at most 255 characters), and Pascal to Pascal. */
void CopyStr(unsigned char* dst, const char* src);
void CopyPStr(unsigned char* dst, const unsigned char* src);

#ifdef __cplusplus
}
#endif

#endif /* KV_PLUGIN_CLIENT_H */
