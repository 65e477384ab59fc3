/*
 * InterfaceCommand.cpp - the 'INTF' command: the modal settings dialog with
 * its live preview.
 *
 * A copy of the settings header is the only undo state. The controls edit
 * the live record while the dialog runs (ControlEditing.cpp). On OK the
 * edits are committed: when any edit since the plug-in was loaded changed
 * the style, the elements are re-read and the host's channels reset; else,
 * when one changed colours, the colours are rebuilt. On Cancel the copy
 * goes back, except for the preview's wireframe choice, which the user
 * keeps either way; the answer is 4.
 *
 * A dialog that cannot be built (no dialog resource, a host without
 * dialogs) changes nothing and answers 0.
 */
#include <string.h>

#include "GlintwaveCommands.h"
#include "GlintwaveData.h"
#include "GlintwaveInterface.h"
#include "KVToolbox.h"
#include "PluginClient.h"
#include "PluginUtils.h"

namespace {

/* Digits the real fields show; trailing zeros are trimmed. */
constexpr int16_t kRealDigits = 8;

bool FlagSet(uint32_t theFlags, int theBit)
{
    return (theFlags & FLARE_FLAG(theBit)) != 0;
}

/* A check box that is on when its bit is set, or (inverted) when it is clear. */
void SetBox(KV_Dialog* theDialog, int theItem, bool theState)
{
    SetButton(theDialog, theItem, theState ? 1 : 0);
}

void LoadElement(KV_Dialog* theDialog, int theBoxItem, bool theHidden, int theColorItem,
                 const ARGB_Color* theRecordColor, RGB_Color* theWorkingColor)
{
    SetBox(theDialog, theBoxItem, !theHidden);
    theWorkingColor->red = (uint16_t)theRecordColor->red;
    theWorkingColor->green = (uint16_t)theRecordColor->green;
    theWorkingColor->blue = (uint16_t)theRecordColor->blue;
    SetColorButtonColor(theDialog, theColorItem, theWorkingColor);
}

void LoadDialogControls(KV_Dialog* theDialog, const ControlDataRec* theControl)
{
    SetTheIPopUp(theDialog, kItemLens, (int16_t)(theControl->flareLens - 1));
    SetTheIReal(theDialog, kItemRotation, theControl->flareRotation, kRealDigits);
    SetTheIReal(theDialog, kItemAspectRatio, theControl->flareAspectRatio, kRealDigits);
    SetTheIReal(theDialog, kItemRingScale, theControl->flareRingScale, kRealDigits);
    SetTheIReal(theDialog, kItemStreakScale, theControl->flareStreakScale, kRealDigits);
    SetTheIReal(theDialog, kItemRingIntensity, theControl->flareRingIntensity, kRealDigits);
    SetTheIReal(theDialog, kItemStreakIntensity, theControl->flareStreakIntensity, kRealDigits);
    SetTheIReal(theDialog, kItemRingContrast, theControl->flareRingContrast, kRealDigits);
    SetTheIReal(theDialog, kItemStreakContrast, theControl->flareStreakContrast, kRealDigits);
    SelectItem(theDialog, kItemRotation);

    const uint32_t flags = theControl->flareFlags;
    SetBox(theDialog, kItemUseAspectRatio, FlagSet(flags, kFlagUseAspectRatio));
    SetBox(theDialog, kItemRingGray, FlagSet(flags, kFlagRingGray));
    SetBox(theDialog, kItemStreakGray, FlagSet(flags, kFlagStreakGray));

    LoadElement(theDialog, kItemOriginGlow, FlagSet(flags, kFlagNoOriginGlow), kItemOriginGlowColor,
                &theControl->flareOriginGlowColor, &originGlowColor);
    LoadElement(theDialog, kItemHalo, FlagSet(flags, kFlagNoHalo), kItemHaloColor, &theControl->flareHaloColor,
                &haloColor);
    LoadElement(theDialog, kItemOuterGlow, FlagSet(flags, kFlagNoOuterGlow), kItemOuterGlowColor,
                &theControl->flareOuterGlowColor, &outerGlowColor);
    LoadElement(theDialog, kItemStreaks, FlagSet(flags, kFlagNoStreaks), kItemStreakColor,
                &theControl->flareStreakColor, &streakColor);
    LoadElement(theDialog, kItemRings, FlagSet(flags, kFlagNoRings), kItemRingColor, &theControl->flareRingColor,
                &ringColor);

    SetBox(theDialog, kItemFollowIntensity, !FlagSet(flags, kFlagNoLightIntensity));
    SetBox(theDialog, kItemFollowSize, !FlagSet(flags, kFlagNoLightSize));
    SetBox(theDialog, kItemFollowRotation, !FlagSet(flags, kFlagNoLightRotation));

    previewWireframeFlag = FlagSet(flags, kFlagWireframe);
    SetBox(theDialog, kItemFullColorPreview, !previewWireframeFlag);
}

void InstallHitRoutines(KV_Dialog* theDialog)
{
    for (int theItem = kItemLens; theItem <= kItemFullColorPreview; ++theItem)
        SetControlIDHitFunction(theDialog, theItem, AllPowerfulCallback);
    for (int theItem = kItemRingGray; theItem <= kItemFollowRotation; ++theItem)
        SetControlIDHitFunction(theDialog, theItem, AllPowerfulCallback);
    SetControlIDHitFunction(theDialog, kItemOriginGlowColor, OriginGlowCallback);
    SetControlIDHitFunction(theDialog, kItemOuterGlowColor, OuterGlowCallback);
    SetControlIDHitFunction(theDialog, kItemHaloColor, HaloRingCallback);
    SetControlIDHitFunction(theDialog, kItemRingColor, ReflectionsCallback);
    SetControlIDHitFunction(theDialog, kItemStreakColor, StreakCallback);
}

/* Cancel: the saved header goes back, with the wireframe choice of now. */
void RestoreControl(const ControlDataRec* saveControl)
{
    ControlDataRec* theControl = TheControl();
    if (theControl == nullptr)
        return;
    ControlDataRec theWork;
    memcpy(&theWork, saveControl, sizeof theWork);
    uint32_t flags = theWork.flareFlags;
    SetFlag(&flags, kFlagWireframe, previewWireframeFlag);
    theWork.flareFlags = flags;
    memcpy(theControl, &theWork, sizeof theWork);
}

/* OK: the rebuild that the edits since the plug-in was loaded need. */
void CommitEdits(int32_t* theResult)
{
    if (sResetElementsFlag) {
        int32_t resetResult = kPluginNoError;
        ResetFlareElements();
        SendHostResetChannel(&resetResult);
        if (*theResult == kPluginNoError)
            *theResult = resetResult;
        if (*theResult == kPluginNoError)
            *theResult = CheckData(false, true);
    } else if (sResetColorsFlag) {
        ResetFlareColors();
        if (*theResult == kPluginNoError)
            *theResult = CheckData(false, false);
    }
}

} // namespace

int32_t DoInterface(int32_t theCommandRecSize, void* /*theCommandRec*/)
{
    int32_t theResult = kPluginNoError;
    if (theCommandRecSize < (int32_t)sizeof(PluginInterfaceRec) || sTheControlData == nullptr ||
        sTheControlDataSize < (int32_t)sizeof(ControlDataRec))
        theResult = kPluginIncompatible;
    else
        theResult = CheckData(false, false);
    OpenTheResource(&theResult);
    if (theResult != kPluginNoError)
        return theResult;

    ControlDataRec* theControl = TheControl();
    if (theControl == nullptr)
        return kPluginMemoryError;
    KV_Dialog* theDialog = KV_MakeDialog(resourceFile, kSettingsDialogID);
    if (theDialog == nullptr)
        return theResult;

    ControlDataRec saveControl;
    memcpy(&saveControl, theControl, sizeof saveControl);
    LoadDialogControls(theDialog, &saveControl);

    SetUserControlIDFunctions(theDialog, kItemPreview, PreviewWindow, PreviewHitFunction);
    InitPreview(theDialog, kItemPreview);
    theResult = SetupPreview();
    InstallHitRoutines(theDialog);

    const bool dialogAccepted = KV_ExecuteDialog(theDialog) != 0;
    FinishPreview();

    if (!dialogAccepted)
        RestoreControl(&saveControl);
    else
        CommitEdits(&theResult);
    if (!dialogAccepted && theResult == kPluginNoError)
        theResult = kPluginUserCanceled;

    KV_DestroyDialog(theDialog);
    return theResult;
}
