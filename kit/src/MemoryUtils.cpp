/*
 * MemoryUtils.cpp - small word-wise block copies and fills.
 *
 * Words are moved through memcpy of one word at a time, so neither block
 * needs any alignment; the compiler turns each into a single load or store.
 * Counts of zero or less do nothing.
 */
#include "MemoryUtils.h"

#include <string.h>

namespace {

// Copies count units of Unit bytes upwards, one unit after the other, so
// overlapping blocks behave as a word-by-word forward copy does.
template <typename Unit>
void CopyUnitsForwards(const unsigned char* src, unsigned char* dst, int32_t units)
{
    for (int32_t i = 0; i < units; ++i) {
        Unit u;
        memcpy(&u, src + static_cast<size_t>(i) * sizeof(Unit), sizeof(Unit));
        memcpy(dst + static_cast<size_t>(i) * sizeof(Unit), &u, sizeof(Unit));
    }
}

}  // namespace

extern "C" {

void CopySmallBlockForwards(const void* src, void* dst, int32_t count)
{
    if (src == nullptr || dst == nullptr || count <= 0) {
        return;
    }
    const unsigned char* s = static_cast<const unsigned char*>(src);
    unsigned char* d = static_cast<unsigned char*>(dst);
    if ((count & 3) == 0) {
        CopyUnitsForwards<uint32_t>(s, d, count / 4);
    } else if ((count & 1) != 0) {
        CopyUnitsForwards<uint8_t>(s, d, count);
    } else {
        CopyUnitsForwards<uint16_t>(s, d, count / 2);
    }
}

void CopySmallBlockBackwards(const void* src, void* dst, int32_t count)
{
    // A reversing copy: the first source byte lands on the last destination
    // byte. Callers use it to turn byte order around while copying, so it
    // stays a reversal. The blocks must not overlap.
    if (src == nullptr || dst == nullptr || count <= 0) {
        return;
    }
    const unsigned char* s = static_cast<const unsigned char*>(src);
    unsigned char* d = static_cast<unsigned char*>(dst) + count;
    for (int32_t i = 0; i < count; ++i) {
        *--d = s[i];
    }
}

void ZeroMem(void* p, int32_t count)
{
    FillMem(p, count, 0u);
}

void FillMem(void* p, int32_t count, uint32_t value)
{
    if (p == nullptr) {
        return;
    }
    unsigned char* d = static_cast<unsigned char*>(p);
    for (int32_t i = 0; i < count; ++i) {
        memcpy(d + static_cast<size_t>(i) * sizeof value, &value, sizeof value);
    }
}

}  // extern "C"
