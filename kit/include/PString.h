/*
 * PString.h - Pascal and zero-terminated strings.
 *
 * A Pascal string is a length byte L (0-255) followed by L characters, no
 * terminator; positions are 1-based. Zero-terminated strings are used at the
 * boundary to the host and the C library. Texts are Mac OS Roman.
 *
 * Routines that return a string and take no destination return a temporary
 * from a ring of 20 strings of 256 bytes (PStrNext): it stays valid until 20
 * further temporaries have been taken, so callers copy what they keep. Where
 * a destination is optional (PStrCpy, PStrCToP, PStrPToC, PStrAppend) a null
 * destination means a temporary. Single-threaded use only.
 */
#ifndef KV_PSTRING_H
#define KV_PSTRING_H

#include <stdint.h>

#include "KVPluginAPI.h"

#ifdef __cplusplus
extern "C" {
#endif

#define kPStrQueueSize 20

extern const unsigned char aEmptyPStr[1];

int32_t CStrLength(const char* s);
int32_t CStrIn(char c, const char* s);                 /* 0-based, -1 if absent */
char*   CStrCpy(char* dst, const char* src);

unsigned char* PStrNext(void);
unsigned char* PStrC2P(char* s);                        /* in place, cut to 255 */
char*          PStrP2C(unsigned char* s);               /* in place */
unsigned char* PStrCToP(const char* src, unsigned char* dst);
char*          PStrPToC(const unsigned char* src, char* dst);
unsigned char* PS(const char* cStr);
char*          CS(const unsigned char* pStr);
unsigned char* PStrType(IFFType code);
unsigned char* PStrNum(int32_t n);
int32_t        PStrCompare(const unsigned char* a, const unsigned char* b);
unsigned char* PStrCpy(unsigned char* dst, const unsigned char* src);
unsigned char* PStrAppend(unsigned char* dst, const unsigned char* src);
unsigned char* PStrAppendChar(unsigned char* s, unsigned char c);
unsigned char* PStrConcat(const unsigned char* first, ...);   /* ends at a null argument */
int16_t        PStrIn(unsigned char c, const unsigned char* s);
int16_t        PStrPos(const unsigned char* sub, const unsigned char* s);
unsigned char* PStrSub(const unsigned char* s, int16_t pos, int16_t count);
void           PStrDelete(unsigned char* s, int16_t pos, int16_t count);
unsigned char* PStrOmit(const unsigned char* s, int16_t pos, int16_t count);
void           PStrInsert(const unsigned char* src, unsigned char* dst, int16_t pos);
unsigned char* PStrInclude(const unsigned char* src, const unsigned char* s, int16_t pos);
unsigned char* PStrLongStr(int32_t n);
unsigned char* PStrULongStr(uint32_t n);
unsigned char* PStrFloatStr(double x, int16_t digits);
unsigned char* PStrNumericalStr(int32_t n);
unsigned char* PStrKStr(uint32_t n);
unsigned char* PStrKSStr(int32_t n);
void           PStrUpperCase(unsigned char* s);
unsigned char* PStrUpCase(const unsigned char* s);
void           PStrStrip(unsigned char* s);
char*          PrintPStr(const unsigned char* s);
const char*    PrintBoolean(bool b);
IFFType        MakeType(const void* p);
/* A signed duration in seconds: "1D 2H 3M 4S", "2Hr 3Min 4Sec", ... */
unsigned char* PStrTimeStr(int32_t seconds);
/* A moment on the platform clock (seconds since the epoch) relative to
   curSecond (1 = now): "3:07:09PM Today", ... */
unsigned char* PStrDateStr(int64_t theSecond, int64_t curSecond);

#ifdef __cplusplus
}
#endif

#endif /* KV_PSTRING_H */
