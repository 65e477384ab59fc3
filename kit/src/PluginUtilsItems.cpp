/*
 * PluginUtilsItems.cpp - dialog controls addressed by item number, and the
 * ^0..^3 substitution of static texts.
 */
#include "PluginUtils.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "KVToolbox.h"
#include "PString.h"

namespace {

/* Longest text the helpers read from a control: a Pascal string's worth. */
constexpr int kTextRoom = 256;
/* GetTheINum reads no more than this many characters. */
constexpr int kNumberChars = 50;
/* SelectItem selects an edit text's characters 0 to this. */
constexpr int kSelectAllEnd = 10000;
/* SetParamText's allowance of control visits beyond two per control. */
constexpr int64_t kExtraVisits = 256;

using TextSizeFunction = int (*)(const KV_Control*);
using TextGetFunction  = void (*)(const KV_Control*, char*, int*);

/* Reads a control's text through a ...Size / getter pair as a Pascal string
   of at most maxChars characters. The host's counts are not trusted: the
   text ends at the first zero within the room given. */
void ReadControlText(const KV_Control* theControl, TextSizeFunction sizeOf, TextGetFunction get,
                     int maxChars, unsigned char* theText)
{
    char buffer[kTextRoom + 1];
    memset(buffer, 0, sizeof buffer);
    int room = sizeOf(theControl);
    if (room > maxChars + 1)
        room = maxChars + 1;
    int32_t length = 0;
    if (room > 0) {
        int numChars = room;
        get(theControl, buffer, &numChars);
        while (length < room - 1 && buffer[length] != '\0')
            ++length;
    }
    memcpy(theText + 1, buffer, static_cast<size_t>(length));
    theText[0] = static_cast<unsigned char>(length);
}

void ReadTitle(const KV_Control* theControl, unsigned char* theText)
{
    ReadControlText(theControl, KV_GetControlTitleSize, KV_GetControlTitle, kTextRoom - 1, theText);
}

} // namespace

extern "C" {

void SetButton(KV_Dialog* iDialog, int iItem, int theValue)
{
    if (KV_Control* theControl = KV_FindControlByID(iDialog, iItem))
        KV_SetControlValue(theControl, theValue);
}

int GetButton(KV_Dialog* iDialog, int iItem)
{
    if (KV_Control* theControl = KV_FindControlByID(iDialog, iItem))
        return KV_GetControlValue(theControl);
    return 0;
}

bool ToggleButton(KV_Dialog* iDialog, int iItem)
{
    KV_Control* theControl = KV_FindControlByID(iDialog, iItem);
    if (theControl == nullptr)
        return false;
    const int theValue = KV_GetControlValue(theControl) != 0 ? 0 : 1;
    KV_SetControlValue(theControl, theValue);
    return theValue != 0;
}

void SetButtonName(KV_Dialog* iDialog, int iItem, const unsigned char* theTitle)
{
    if (KV_Control* theControl = KV_FindControlByID(iDialog, iItem)) {
        char buffer[kTextRoom];
        PStrPToC(theTitle, buffer);
        KV_SetControlTitle(theControl, buffer);
    }
}

unsigned char* GetButtonName(KV_Dialog* iDialog, int iItem, unsigned char* theTitle)
{
    if (theTitle == nullptr)
        return nullptr;
    theTitle[0] = 0;
    if (KV_Control* theControl = KV_FindControlByID(iDialog, iItem))
        ReadTitle(theControl, theTitle);
    return theTitle;
}

void SelectItem(KV_Dialog* iDialog, int iItem)
{
    KV_Control* theControl = KV_FindControlByID(iDialog, iItem);
    if (theControl == nullptr)
        return;
    KV_SetKeyControl(theControl);
    if (KV_GetControlType(theControl) == cKV_EditText)
        KV_SetEditTextSelection(theControl, 0, kSelectAllEnd);
}

void SetTheIText(KV_Dialog* iDialog, int iItem, const unsigned char* theText)
{
    if (KV_Control* theControl = KV_FindControlByID(iDialog, iItem)) {
        char buffer[kTextRoom];
        PStrPToC(theText, buffer);
        KV_SetEditTextString(theControl, buffer);
    }
}

void GetTheIText(KV_Dialog* iDialog, int iItem, unsigned char* theText)
{
    if (theText == nullptr)
        return;
    theText[0] = 0;
    if (KV_Control* theControl = KV_FindControlByID(iDialog, iItem))
        ReadControlText(theControl, KV_GetEditTextStringSize, KV_GetEditTextString,
                        kTextRoom - 1, theText);
}

void SetTheINum(KV_Dialog* iDialog, int iItem, int32_t theNum)
{
    if (KV_Control* theControl = KV_FindControlByID(iDialog, iItem)) {
        char buffer[32];
        snprintf(buffer, sizeof buffer, "%ld", static_cast<long>(theNum));
        KV_SetEditTextString(theControl, buffer);
    }
}

int32_t GetTheINum(KV_Dialog* iDialog, int iItem)
{
    KV_Control* theControl = KV_FindControlByID(iDialog, iItem);
    if (theControl == nullptr)
        return 0;
    unsigned char theText[kTextRoom];
    ReadControlText(theControl, KV_GetEditTextStringSize, KV_GetEditTextString, kNumberChars,
                    theText);
    char buffer[kTextRoom];
    PStrPToC(theText, buffer);
    // atoi's reading, with out-of-range values saturated instead of undefined.
    const long long theValue = strtoll(buffer, nullptr, 10);
    if (theValue > INT32_MAX)
        return INT32_MAX;
    if (theValue < INT32_MIN)
        return INT32_MIN;
    return static_cast<int32_t>(theValue);
}

void SetTheIReal(KV_Dialog* iDialog, int iItem, double theValue, int16_t theDigits)
{
    SetTheIText(iDialog, iItem, RealTrimStr(theValue, theDigits));
}

double GetTheIReal(KV_Dialog* iDialog, int iItem)
{
    unsigned char* theText = PStrNext();
    GetTheIText(iDialog, iItem, theText);
    return FixDouble(Str2Num(theText));
}

void SetTheIPopUp(KV_Dialog* iDialog, int iItem, int16_t theIndex)
{
    if (KV_Control* theControl = KV_FindControlByID(iDialog, iItem))
        KV_SetControlValue(theControl, theIndex);
}

int16_t GetTheIPopUp(KV_Dialog* iDialog, int iItem)
{
    if (KV_Control* theControl = KV_FindControlByID(iDialog, iItem))
        return static_cast<int16_t>(KV_GetControlValue(theControl));
    return 0;
}

KV_ControlType GetTheIType(KV_Dialog* iDialog, int iItem)
{
    if (KV_Control* theControl = KV_FindControlByID(iDialog, iItem))
        return KV_GetControlType(theControl);
    return cKV_NoControlType;
}

void SetTheIRect(KV_Dialog* iDialog, int iItem, const KV_Rect* theRect)
{
    if (theRect == nullptr)
        return;
    if (KV_Control* theControl = KV_FindControlByID(iDialog, iItem))
        KV_SetControlBounds(theControl, theRect);
}

void GetTheIRect(KV_Dialog* iDialog, int iItem, KV_Rect* theRect)
{
    if (theRect == nullptr)
        return;
    if (KV_Control* theControl = KV_FindControlByID(iDialog, iItem))
        KV_GetControlBounds(theControl, theRect);
}

void SetColorButtonIDARGB(KV_Dialog* iDialog, int iItem, const ARGB* theARGB)
{
    if (theARGB == nullptr)
        return;
    if (KV_Control* theControl = KV_FindControlByID(iDialog, iItem))
        KV_SetColorButtonColor(theControl, theARGB->argb.r, theARGB->argb.g, theARGB->argb.b,
                               theARGB->argb.a);
}

void GetColorButtonIDARGB(KV_Dialog* iDialog, int iItem, ARGB* theARGB)
{
    if (theARGB == nullptr)
        return;
    KV_Control* theControl = KV_FindControlByID(iDialog, iItem);
    if (theControl == nullptr)
        return;
    int r = 0, g = 0, b = 0, a = 0;
    KV_GetColorButtonColor(theControl, &r, &g, &b, &a);
    theARGB->argb.a = static_cast<uint8_t>(a);
    theARGB->argb.r = static_cast<uint8_t>(r);
    theARGB->argb.g = static_cast<uint8_t>(g);
    theARGB->argb.b = static_cast<uint8_t>(b);
}

void SetUserControlIDFunctions(KV_Dialog* iDialog, int iItem,
                               KV_UserDrawFunction iDraw, KV_UserClickFunction iClick)
{
    if (KV_Control* theControl = KV_FindControlByID(iDialog, iItem)) {
        KV_SetUserControlDraw(theControl, iDraw);
        KV_SetUserControlClick(theControl, iClick);
    }
}

void SetControlIDHitFunction(KV_Dialog* iDialog, int iItem, KV_ControlHitFunction iHit)
{
    if (KV_Control* theControl = KV_FindControlByID(iDialog, iItem))
        KV_SetControlHitFunction(theControl, iHit);
}

void SetControlIDVisible(KV_Dialog* iDialog, int iItem, int theVisible)
{
    KV_SetControlVisible(KV_FindControlByID(iDialog, iItem), theVisible);
}

void SetControlIDTitle(KV_Dialog* iDialog, int iItem, const char* theTitle)
{
    KV_SetControlTitle(KV_FindControlByID(iDialog, iItem), theTitle);
}

void SetEditTextIDString(KV_Dialog* iDialog, int iItem, const char* theString)
{
    KV_SetEditTextString(KV_FindControlByID(iDialog, iItem), theString);
}

void SetParamText(KV_Dialog* iDialog, const unsigned char* text0, const unsigned char* text1,
                  const unsigned char* text2, const unsigned char* text3)
{
    const unsigned char* const theTexts[4] = {
        text0 != nullptr ? text0 : aEmptyPStr, text1 != nullptr ? text1 : aEmptyPStr,
        text2 != nullptr ? text2 : aEmptyPStr, text3 != nullptr ? text3 : aEmptyPStr};
    const int theCount = KV_CountControls(iDialog);
    // i is both the control index and the character position, deliberately:
    // after a static text the visit resumes where the character scan ended,
    // which may skip controls or go back to earlier ones. Going back can
    // come round to the same text for ever, so the visits are bounded; a
    // dialog that moves forward is never near the bound.
    const int64_t theMaxVisits = 2 * static_cast<int64_t>(theCount) + kExtraVisits;
    int64_t theVisits = 0;
    for (int i = 0; i < theCount && theVisits < theMaxVisits; i++, theVisits++) {
        KV_Control* theControl = KV_FindControlByIndex(iDialog, i);
        if (theControl == nullptr || KV_GetControlType(theControl) != cKV_StaticText)
            continue;
        PStr255 theTitle;
        ReadTitle(theControl, theTitle);
        i = 1;
        while (i < theTitle[0]) {
            const unsigned char theDigit = theTitle[i + 1];
            if (theTitle[i] == '^' && theDigit >= '0' && theDigit <= '3') {
                const unsigned char* theText = theTexts[theDigit - '0'];
                PStrDelete(theTitle, static_cast<int16_t>(i), 2);
                PStrInsert(theText, theTitle, static_cast<int16_t>(i));
                i += theText[0];
            } else {
                i++;
            }
        }
        char buffer[kTextRoom];
        PStrPToC(theTitle, buffer);
        KV_SetControlTitle(theControl, buffer);
    }
}

} // extern "C"
