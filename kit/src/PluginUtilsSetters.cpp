/*
 * PluginUtilsSetters.cpp - setters that report whether they changed
 * anything, and plain flag-bit setters.
 *
 * The dialog code stores every edited value through a change-tracking
 * setter and learns from the flag whether the flare must be rebuilt: the
 * store is unconditional, the flag only ever goes from false to true.
 */
#include "PluginUtils.h"

namespace {

template <typename Value>
void SetTracked(Value* dst, Value src, bool* flag)
{
    if (dst == nullptr)
        return;
    // Exact comparison, on purpose: doubles by ==, so a NaN always counts
    // as a change and -0.0 never differs from 0.0.
    const bool changed = !(*dst == src);
    *dst = src;
    if (flag != nullptr)
        *flag = *flag || changed;
}

/* The mask of bit theFlag taken modulo 32. */
uint32_t FlagMask(int16_t theFlag)
{
    return uint32_t{1} << (static_cast<uint32_t>(theFlag) & 31u);
}

} // namespace

extern "C" {

void SetBoolean(uint8_t* dst, uint8_t src, bool* flag)   { SetTracked(dst, src, flag); }
void SetByte(int8_t* dst, int8_t src, bool* flag)        { SetTracked(dst, src, flag); }
void SetInteger(int16_t* dst, int16_t src, bool* flag)   { SetTracked(dst, src, flag); }
void SetLongInt(int32_t* dst, int32_t src, bool* flag)   { SetTracked(dst, src, flag); }
void SetReal(float* dst, float src, bool* flag)          { SetTracked(dst, src, flag); }
void SetDouble(double* dst, double src, bool* flag)      { SetTracked(dst, src, flag); }
void SetExtended(double* dst, double src, bool* flag)    { SetTracked(dst, src, flag); }

void SetRGBColor(RGB_Color* dst, const RGB_Color* src, bool* flag)
{
    if (dst == nullptr || src == nullptr)
        return;
    const RGB_Color theColor = *src;
    SetTracked(&dst->red, theColor.red, flag);
    SetTracked(&dst->green, theColor.green, flag);
    SetTracked(&dst->blue, theColor.blue, flag);
}

void SetTheARGB(ARGB* dst, const ARGB* src, bool* flag)
{
    if (dst == nullptr || src == nullptr)
        return;
    SetTracked(&dst->colorValue, src->colorValue, flag);
}

void SetBooleanFlag(uint32_t* dst, int16_t theFlag, bool src, bool* flag)
{
    if (dst == nullptr)
        return;
    const uint32_t theMask = FlagMask(theFlag);
    const bool wasSet = (*dst & theMask) != 0;
    SetFlag(dst, theFlag, src);
    if (flag != nullptr)
        *flag = *flag || wasSet != src;
}

void SetFlag(uint32_t* theFlagFields, int16_t theFlag, bool theState)
{
    if (theFlagFields == nullptr)
        return;
    if (theState)
        *theFlagFields |= FlagMask(theFlag);
    else
        *theFlagFields &= ~FlagMask(theFlag);
}

void SetIntegerFlag(uint16_t* theFlagFields, int16_t theFlag, bool theState)
{
    if (theFlagFields == nullptr)
        return;
    // The bit is chosen in 32 bits; bits 16-31 fall outside the word.
    uint32_t theWord = *theFlagFields;
    SetFlag(&theWord, theFlag, theState);
    *theFlagFields = static_cast<uint16_t>(theWord);
}

} // extern "C"
