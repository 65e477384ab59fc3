/*
 * PString.cpp - Pascal and zero-terminated strings: the temporary ring,
 * conversions, copies, searches and edits.
 *
 * Every routine here takes at most one temporary from the ring, so a caller
 * can hold up to 19 earlier temporaries across any single call. Null string
 * arguments read as empty strings and null destinations (where a routine
 * has no optional one) make the routine do nothing: texts come from hosts,
 * dialogs and resource files, none of which is trusted.
 *
 * Buffers given as Pascal destinations must hold 256 bytes; zero-terminated
 * destinations must hold the converted length plus one.
 */
#include "PString.h"

#include <stdarg.h>
#include <string.h>

namespace {

constexpr int32_t kPStrMax = 255;
constexpr int32_t kPStrSlotSize = 256;

// The ring of temporaries. Plain module state: the kit is single-threaded.
unsigned char pStrQueue[kPStrQueueSize][kPStrSlotSize];
int32_t pStrQueueIndex = 0;

// Length of a zero-terminated text, looking at no more than limit bytes.
int32_t BoundedCLength(const char* s, int32_t limit)
{
    if (s == nullptr) {
        return 0;
    }
    int32_t n = 0;
    while (n < limit && s[n] != '\0') {
        ++n;
    }
    return n;
}

inline int32_t PLen(const unsigned char* s)
{
    return s == nullptr ? 0 : s[0];
}

}  // namespace

extern "C" {

extern const unsigned char aEmptyPStr[1] = {0};

int32_t CStrLength(const char* s)
{
    if (s == nullptr) {
        return 0;
    }
    const size_t n = strlen(s);
    return n > static_cast<size_t>(INT32_MAX) ? INT32_MAX : static_cast<int32_t>(n);
}

int32_t CStrIn(char c, const char* s)
{
    if (s == nullptr) {
        return -1;
    }
    for (int32_t i = 0; i < INT32_MAX && s[i] != '\0'; ++i) {
        if (s[i] == c) {
            return i;
        }
    }
    return -1;
}

char* CStrCpy(char* dst, const char* src)
{
    if (dst == nullptr) {
        return dst;
    }
    if (src == nullptr) {
        dst[0] = '\0';
        return dst;
    }
    memmove(dst, src, strlen(src) + 1);
    return dst;
}

unsigned char* PStrNext(void)
{
    // The index is checked on the way in so that a damaged value can never
    // address outside the ring.
    if (pStrQueueIndex < 0 || pStrQueueIndex >= kPStrQueueSize) {
        pStrQueueIndex = 0;
    }
    unsigned char* slot = pStrQueue[pStrQueueIndex];
    ++pStrQueueIndex;
    slot[0] = 0;
    return slot;
}

unsigned char* PStrC2P(char* s)
{
    if (s == nullptr) {
        return nullptr;
    }
    // The text occupies bytes 0..n with its terminator, so shifting it up by
    // one and storing the length in byte 0 stays inside the same bytes.
    const int32_t n = BoundedCLength(s, kPStrMax);
    memmove(s + 1, s, static_cast<size_t>(n));
    unsigned char* p = reinterpret_cast<unsigned char*>(s);
    p[0] = static_cast<unsigned char>(n);
    return p;
}

char* PStrP2C(unsigned char* s)
{
    if (s == nullptr) {
        return nullptr;
    }
    const int32_t n = s[0];
    memmove(s, s + 1, static_cast<size_t>(n));
    s[n] = 0;
    return reinterpret_cast<char*>(s);
}

unsigned char* PStrCToP(const char* src, unsigned char* dst)
{
    if (dst == nullptr) {
        dst = PStrNext();
    }
    const int32_t n = BoundedCLength(src, kPStrMax);
    if (n > 0) {
        memmove(dst + 1, src, static_cast<size_t>(n));
    }
    dst[0] = static_cast<unsigned char>(n);
    return dst;
}

char* PStrPToC(const unsigned char* src, char* dst)
{
    if (dst == nullptr) {
        dst = reinterpret_cast<char*>(PStrNext());
    }
    const int32_t n = PLen(src);
    if (n > 0) {
        memmove(dst, src + 1, static_cast<size_t>(n));
    }
    dst[n] = '\0';
    return dst;
}

unsigned char* PS(const char* cStr)
{
    return PStrCToP(cStr, nullptr);
}

char* CS(const unsigned char* pStr)
{
    return PStrPToC(pStr, nullptr);
}

unsigned char* PStrType(IFFType code)
{
    unsigned char* s = PStrNext();
    s[0] = 4;
    s[1] = static_cast<unsigned char>(code >> 24);
    s[2] = static_cast<unsigned char>(code >> 16);
    s[3] = static_cast<unsigned char>(code >> 8);
    s[4] = static_cast<unsigned char>(code);
    return s;
}

int32_t PStrCompare(const unsigned char* a, const unsigned char* b)
{
    const int32_t la = PLen(a);
    const int32_t lb = PLen(b);
    const int32_t common = la < lb ? la : lb;
    for (int32_t i = 1; i <= common; ++i) {
        if (a[i] != b[i]) {
            return a[i] < b[i] ? -1 : 1;
        }
    }
    return la - lb;
}

unsigned char* PStrCpy(unsigned char* dst, const unsigned char* src)
{
    if (dst == nullptr) {
        dst = PStrNext();
    }
    if (src == nullptr) {
        dst[0] = 0;
        return dst;
    }
    memmove(dst, src, static_cast<size_t>(src[0]) + 1);
    return dst;
}

unsigned char* PStrAppend(unsigned char* dst, const unsigned char* src)
{
    if (dst == nullptr) {
        return PStrCpy(nullptr, src);
    }
    const int32_t have = dst[0];
    int32_t add = PLen(src);
    if (add > kPStrMax - have) {
        add = kPStrMax - have;
    }
    if (add > 0) {
        // memmove: src may be dst itself.
        memmove(dst + 1 + have, src + 1, static_cast<size_t>(add));
        dst[0] = static_cast<unsigned char>(have + add);
    }
    return dst;
}

unsigned char* PStrAppendChar(unsigned char* s, unsigned char c)
{
    if (s != nullptr && s[0] < kPStrMax) {
        s[0] = static_cast<unsigned char>(s[0] + 1);
        s[s[0]] = c;
    }
    return s;
}

unsigned char* PStrConcat(const unsigned char* first, ...)
{
    unsigned char* result = PStrNext();
    if (first == nullptr) {
        return result;
    }
    PStrCpy(result, first);
    va_list args;
    va_start(args, first);
    for (;;) {
        const unsigned char* next = va_arg(args, const unsigned char*);
        if (next == nullptr) {
            break;
        }
        PStrAppend(result, next);
    }
    va_end(args);
    return result;
}

int16_t PStrIn(unsigned char c, const unsigned char* s)
{
    const int32_t n = PLen(s);
    for (int32_t i = 1; i <= n; ++i) {
        if (s[i] == c) {
            return static_cast<int16_t>(i);
        }
    }
    return 0;
}

int16_t PStrPos(const unsigned char* sub, const unsigned char* s)
{
    const int32_t ls = PLen(s);
    const int32_t lsub = PLen(sub);
    if (lsub > ls) {
        return 0;
    }
    if (lsub == 0) {
        return 1;
    }
    for (int32_t pos = 1; pos + lsub - 1 <= ls; ++pos) {
        if (memcmp(s + pos, sub + 1, static_cast<size_t>(lsub)) == 0) {
            return static_cast<int16_t>(pos);
        }
    }
    return 0;
}

unsigned char* PStrSub(const unsigned char* s, int16_t pos, int16_t count)
{
    // Positions before the first character count as the first; a count
    // running past the end is cut to what is there.
    unsigned char* result = PStrNext();
    const int32_t n = PLen(s);
    const int32_t from = pos < 1 ? 1 : pos;
    int32_t take = count;
    if (take > n + 1 - from) {
        take = n + 1 - from;
    }
    if (take > 0) {
        memmove(result + 1, s + from, static_cast<size_t>(take));
        result[0] = static_cast<unsigned char>(take);
    }
    return result;
}

void PStrDelete(unsigned char* s, int16_t pos, int16_t count)
{
    if (s == nullptr || pos < 1) {
        return;
    }
    const int32_t n = s[0];
    int32_t take = count;
    if (take > n + 1 - pos) {
        take = n + 1 - pos;
    }
    if (take <= 0) {
        return;
    }
    // Characters after the deleted run move down over it.
    memmove(s + pos, s + pos + take, static_cast<size_t>(n + 1 - pos - take));
    s[0] = static_cast<unsigned char>(n - take);
}

unsigned char* PStrOmit(const unsigned char* s, int16_t pos, int16_t count)
{
    unsigned char* result = PStrCpy(nullptr, s);
    PStrDelete(result, pos, count);
    return result;
}

void PStrInsert(const unsigned char* src, unsigned char* dst, int16_t pos)
{
    if (dst == nullptr) {
        return;
    }
    // A private copy, so that a string can be inserted into itself.
    unsigned char ins[kPStrSlotSize];
    PStrCpy(ins, src);
    const int32_t add = ins[0];

    int32_t n = dst[0];
    if (n + add > kPStrMax) {
        // Room is made by cutting the destination, never the inserted text.
        n = kPStrMax - add;
        dst[0] = static_cast<unsigned char>(n);
    }
    int32_t at = pos < 1 ? 1 : pos;
    if (at > n + 1) {
        at = n + 1;
    }
    memmove(dst + at + add, dst + at, static_cast<size_t>(n + 1 - at));
    memcpy(dst + at, ins + 1, static_cast<size_t>(add));
    dst[0] = static_cast<unsigned char>(n + add);
}

unsigned char* PStrInclude(const unsigned char* src, const unsigned char* s, int16_t pos)
{
    unsigned char* result = PStrCpy(nullptr, s);
    PStrInsert(src, result, pos);
    return result;
}

void PStrUpperCase(unsigned char* s)
{
    const int32_t n = PLen(s);
    for (int32_t i = 1; i <= n; ++i) {
        if (s[i] >= 'a' && s[i] <= 'z') {
            s[i] = static_cast<unsigned char>(s[i] - 'a' + 'A');
        }
    }
}

unsigned char* PStrUpCase(const unsigned char* s)
{
    unsigned char* result = PStrCpy(nullptr, s);
    PStrUpperCase(result);
    return result;
}

void PStrStrip(unsigned char* s)
{
    const int32_t n = PLen(s);
    int32_t kept = 0;
    for (int32_t i = 1; i <= n; ++i) {
        if (s[i] != ' ') {
            s[++kept] = s[i];
        }
    }
    if (s != nullptr) {
        s[0] = static_cast<unsigned char>(kept);
    }
}

char* PrintPStr(const unsigned char* s)
{
    return PStrPToC(s, nullptr);
}

const char* PrintBoolean(bool b)
{
    return b ? "1" : "0";
}

IFFType MakeType(const void* p)
{
    // The four characters as they stand in memory, the first one becoming
    // the most significant byte, so that the text FLAR reads as 'FLAR'
    // whatever the machine's byte order.
    if (p == nullptr) {
        return 0;
    }
    const unsigned char* c = static_cast<const unsigned char*>(p);
    return (static_cast<IFFType>(c[0]) << 24) | (static_cast<IFFType>(c[1]) << 16) |
           (static_cast<IFFType>(c[2]) << 8) | static_cast<IFFType>(c[3]);
}

}  // extern "C"
