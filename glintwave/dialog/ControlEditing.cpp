/*
 * ControlEditing.cpp - the settings dialog's hit routines: every hit rereads
 * all the controls into the live settings, works out which rebuild the
 * change needs, performs it and has the preview redrawn.
 *
 * The edits are made on a copy of the header and written back in one go,
 * before anything that may ask the host for memory (and so move the block).
 * Comparisons are exact, so typing the same number back rebuilds nothing.
 */
#include <string.h>

#include "GlintwaveData.h"
#include "GlintwaveInterface.h"
#include "KVToolbox.h"
#include "PluginUtils.h"

RGB_Color originGlowColor = {0, 0, 0};
RGB_Color haloColor = {0, 0, 0};
RGB_Color outerGlowColor = {0, 0, 0};
RGB_Color streakColor = {0, 0, 0};
RGB_Color ringColor = {0, 0, 0};
bool previewWireframeFlag = false;

namespace {

/* The change-tracking setters work on whole variables; the settings header
   is packed, so its fields go through a local. */
int32_t TrackedLong(int32_t theValue, int32_t theNewValue, bool* theFlag)
{
    SetLongInt(&theValue, theNewValue, theFlag);
    return theValue;
}

double TrackedDouble(double theValue, double theNewValue, bool* theFlag)
{
    SetDouble(&theValue, theNewValue, theFlag);
    return theValue;
}

uint32_t TrackedBit(uint32_t theFlags, int16_t theBit, bool theState, bool* theFlag)
{
    SetBooleanFlag(&theFlags, theBit, theState, theFlag);
    return theFlags;
}

/* The record's red, green and blue take the working colour; alpha stays. */
void TrackColor(ARGB_Color* theRecordColor, const RGB_Color* theWorkingColor, bool* theFlag)
{
    RGB_Color theColor;
    theColor.red = (uint16_t)theRecordColor->red;
    theColor.green = (uint16_t)theRecordColor->green;
    theColor.blue = (uint16_t)theRecordColor->blue;
    SetRGBColor(&theColor, theWorkingColor, theFlag);
    theRecordColor->red = (int16_t)theColor.red;
    theRecordColor->green = (int16_t)theColor.green;
    theRecordColor->blue = (int16_t)theColor.blue;
}

bool BoxOn(KV_Dialog* theDialog, int theItem)
{
    return GetButton(theDialog, theItem) != 0;
}

/* 8-bit component to 16 bits: 0 -> 0, 255 -> 65535. A host answer beyond
   0-255 keeps its low byte, as the kit's colour helpers do. */
uint16_t Widen(int theComponent)
{
    return (uint16_t)((theComponent & 0xFF) * 257);
}

void TakeButtonColor(KV_Control* iControl, RGB_Color* theWorkingColor)
{
    int red = 0, green = 0, blue = 0, alpha = 0;
    KV_GetColorButtonColor(iControl, &red, &green, &blue, &alpha);
    theWorkingColor->red = Widen(red);
    theWorkingColor->green = Widen(green);
    theWorkingColor->blue = Widen(blue);
}

} // namespace

void UpdateControlParameters(KV_Dialog* theDialog, bool* theResetElementsFlag, bool* theResetColorsFlag,
                             int32_t* result)
{
    bool resetElementsFlag = false;
    bool resetColorsFlag = false;
    bool resetPreviewFlag = false;

    ControlDataRec* theControl = TheControl();
    if (theControl == nullptr)
        return;
    ControlDataRec theWork;
    memcpy(&theWork, theControl, sizeof theWork);

    theWork.flareLens = TrackedLong(theWork.flareLens, GetTheIPopUp(theDialog, kItemLens) + 1, &resetElementsFlag);
    theWork.flareRotation = TrackedDouble(theWork.flareRotation, GetTheIReal(theDialog, kItemRotation),
                                          &resetColorsFlag);
    theWork.flareFlags = TrackedBit(theWork.flareFlags, kFlagUseAspectRatio,
                                    GetButton(theDialog, kItemUseAspectRatio) == 1, &resetPreviewFlag);

    theWork.flareAspectRatio = TrackedDouble(theWork.flareAspectRatio, GetTheIReal(theDialog, kItemAspectRatio),
                                             &resetColorsFlag);
    theWork.flareRingScale = TrackedDouble(theWork.flareRingScale, GetTheIReal(theDialog, kItemRingScale),
                                           &resetColorsFlag);
    theWork.flareStreakScale = TrackedDouble(theWork.flareStreakScale, GetTheIReal(theDialog, kItemStreakScale),
                                             &resetColorsFlag);
    theWork.flareRingIntensity = TrackedDouble(theWork.flareRingIntensity,
                                               GetTheIReal(theDialog, kItemRingIntensity), &resetColorsFlag);
    theWork.flareStreakIntensity = TrackedDouble(theWork.flareStreakIntensity,
                                                 GetTheIReal(theDialog, kItemStreakIntensity), &resetColorsFlag);
    theWork.flareRingContrast = TrackedDouble(theWork.flareRingContrast, GetTheIReal(theDialog, kItemRingContrast),
                                              &resetColorsFlag);
    theWork.flareStreakContrast = TrackedDouble(theWork.flareStreakContrast,
                                                GetTheIReal(theDialog, kItemStreakContrast), &resetColorsFlag);

    uint32_t flags = theWork.flareFlags;
    flags = TrackedBit(flags, kFlagRingGray, BoxOn(theDialog, kItemRingGray), &resetColorsFlag);
    flags = TrackedBit(flags, kFlagStreakGray, BoxOn(theDialog, kItemStreakGray), &resetColorsFlag);
    flags = TrackedBit(flags, kFlagNoOriginGlow, !BoxOn(theDialog, kItemOriginGlow), &resetColorsFlag);

    TrackColor(&theWork.flareOriginGlowColor, &originGlowColor, &resetColorsFlag);
    flags = TrackedBit(flags, kFlagNoHalo, !BoxOn(theDialog, kItemHalo), &resetColorsFlag);
    TrackColor(&theWork.flareHaloColor, &haloColor, &resetColorsFlag);
    flags = TrackedBit(flags, kFlagNoOuterGlow, !BoxOn(theDialog, kItemOuterGlow), &resetColorsFlag);
    TrackColor(&theWork.flareOuterGlowColor, &outerGlowColor, &resetColorsFlag);
    flags = TrackedBit(flags, kFlagNoStreaks, !BoxOn(theDialog, kItemStreaks), &resetColorsFlag);
    TrackColor(&theWork.flareStreakColor, &streakColor, &resetColorsFlag);
    flags = TrackedBit(flags, kFlagNoRings, !BoxOn(theDialog, kItemRings), &resetColorsFlag);
    TrackColor(&theWork.flareRingColor, &ringColor, &resetColorsFlag);

    flags = TrackedBit(flags, kFlagNoLightIntensity, !BoxOn(theDialog, kItemFollowIntensity), &resetColorsFlag);
    flags = TrackedBit(flags, kFlagNoLightSize, !BoxOn(theDialog, kItemFollowSize), &resetColorsFlag);
    flags = TrackedBit(flags, kFlagNoLightRotation, !BoxOn(theDialog, kItemFollowRotation), &resetColorsFlag);

    previewWireframeFlag = !BoxOn(theDialog, kItemFullColorPreview);
    flags = TrackedBit(flags, kFlagWireframe, previewWireframeFlag, &resetPreviewFlag);
    theWork.flareFlags = flags;

    /* No host request happened since the block was read: it is still there. */
    memcpy(theControl, &theWork, sizeof theWork);

    if (*result == kPluginNoError) {
        if (resetElementsFlag)
            ResetFlareElements();
        else if (resetColorsFlag)
            ResetFlareColors();
        if (resetElementsFlag || resetColorsFlag || resetPreviewFlag)
            *result = SetupPreview();
    }

    *theResetElementsFlag = *theResetElementsFlag || resetElementsFlag;
    *theResetColorsFlag = *theResetColorsFlag || resetColorsFlag;
}

void AllPowerfulCallback(KV_Control* iControl, KV_DrawContext* /*iContext*/)
{
    KV_Dialog* theDialog = KV_GetControlDialog(iControl);
    int32_t result = kPluginNoError;
    UpdateControlParameters(theDialog, &sResetElementsFlag, &sResetColorsFlag, &result);
    if (KV_Control* thePreview = KV_FindControlByID(theDialog, kItemPreview))
        KV_InvalControl(thePreview);
}

void OriginGlowCallback(KV_Control* iControl, KV_DrawContext* iContext)
{
    TakeButtonColor(iControl, &originGlowColor);
    AllPowerfulCallback(iControl, iContext);
}

void OuterGlowCallback(KV_Control* iControl, KV_DrawContext* iContext)
{
    TakeButtonColor(iControl, &outerGlowColor);
    AllPowerfulCallback(iControl, iContext);
}

void HaloRingCallback(KV_Control* iControl, KV_DrawContext* iContext)
{
    TakeButtonColor(iControl, &haloColor);
    AllPowerfulCallback(iControl, iContext);
}

void ReflectionsCallback(KV_Control* iControl, KV_DrawContext* iContext)
{
    TakeButtonColor(iControl, &ringColor);
    AllPowerfulCallback(iControl, iContext);
}

void StreakCallback(KV_Control* iControl, KV_DrawContext* iContext)
{
    TakeButtonColor(iControl, &streakColor);
    AllPowerfulCallback(iControl, iContext);
}

void SetColorButtonColor(KV_Dialog* iDialog, int iColorButtonID, const RGB_Color* iColor)
{
    ARGB theARGB;
    theARGB.argb.a = 255;
    theARGB.argb.r = (uint8_t)(iColor->red >> 8);
    theARGB.argb.g = (uint8_t)(iColor->green >> 8);
    theARGB.argb.b = (uint8_t)(iColor->blue >> 8);
    SetColorButtonIDARGB(iDialog, iColorButtonID, &theARGB);
}
