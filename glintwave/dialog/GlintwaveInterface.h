/*
 * GlintwaveInterface.h - the settings dialog: its items, the editing of the
 * settings while it is open, and the flare preview.
 *
 * 'INTF' (DoInterface, GlintwaveCommands.h) shows dialog 16001 of the flare
 * table file. Every hit on an editing control rereads all the controls into
 * the live settings (UpdateControlParameters) and has the preview redrawn.
 * The preview renders with the very routines of a real frame (GenerateFlare)
 * into a host image buffer, in full colour or as a wireframe sketch.
 *
 * The settings block may move on any host request: nothing here keeps a
 * pointer into it across a call that may make one (SetupPreview,
 * CheckData).
 */
#ifndef GLINTWAVE_INTERFACE_H
#define GLINTWAVE_INTERFACE_H

#include <stdint.h>

#include "KVPluginAPI.h"
#include "KVToolboxTypes.h"

/* The settings dialog and its items. Check boxes named after an element
   are on when the element is shown (their flag bit switches it off). */
enum {
    kSettingsDialogID      = 16001,
    kItemLens              = 5,   /* pop-up: flare style, index = flareLens - 1 */
    kItemRotation          = 6,
    kItemAspectRatio       = 7,
    kItemStreakScale       = 8,
    kItemStreakIntensity   = 9,
    kItemStreakContrast    = 10,
    kItemRingScale         = 11,
    kItemRingIntensity     = 12,
    kItemRingContrast      = 13,
    kItemUseAspectRatio    = 14,  /* bit 31 */
    kItemFullColorPreview  = 15,  /* inverted bit 22 */
    kItemPreview           = 16,  /* user control */
    kItemRingGray          = 18,  /* bit 30 */
    kItemOriginGlow        = 19,  /* inverted bit 28 */
    kItemOuterGlow         = 20,  /* inverted bit 27 */
    kItemHalo              = 21,  /* inverted bit 26 */
    kItemRings             = 22,  /* inverted bit 24 */
    kItemStreakGray        = 23,  /* bit 29 */
    kItemStreaks           = 24,  /* inverted bit 25 */
    kItemFollowSize        = 25,  /* inverted bit 21 */
    kItemFollowIntensity   = 26,  /* inverted bit 23 */
    kItemFollowRotation    = 27,  /* inverted bit 20 */
    kItemOriginGlowColor   = 28,
    kItemOuterGlowColor    = 29,
    kItemHaloColor         = 30,
    kItemRingColor         = 31,
    kItemStreakColor       = 32
};

/* The dialog's working copies of the five element colours (the record's
   alpha word is not carried), and the preview's wireframe choice (bit 22). */
extern RGB_Color originGlowColor;
extern RGB_Color haloColor;
extern RGB_Color outerGlowColor;
extern RGB_Color streakColor;
extern RGB_Color ringColor;
extern bool previewWireframeFlag;

/* ---- Editing (ControlEditing.cpp) ----------------------------------------- */

/* Rereads every control into the live settings and rebuilds what the change
   needs: elements when the style changed, else colours when a number, flag
   or colour feeding them changed; then the preview is set up again. A
   non-zero *result on entry skips the rebuild (the record is still
   updated). The two flags are ORed with what this edit needed. */
void UpdateControlParameters(KV_Dialog* theDialog, bool* theResetElementsFlag, bool* theResetColorsFlag,
                             int32_t* result);
/* The hit routine of every editing control: updates, then invalidates the
   preview so the host redraws it. */
void AllPowerfulCallback(KV_Control* iControl, KV_DrawContext* iContext);
/* The colour buttons' hit routines: take the button's colour into the
   working colour (8 to 16 bits, x 257), then AllPowerfulCallback. */
void OriginGlowCallback(KV_Control* iControl, KV_DrawContext* iContext);
void OuterGlowCallback(KV_Control* iControl, KV_DrawContext* iContext);
void HaloRingCallback(KV_Control* iControl, KV_DrawContext* iContext);
void ReflectionsCallback(KV_Control* iControl, KV_DrawContext* iContext);
void StreakCallback(KV_Control* iControl, KV_DrawContext* iContext);
/* Shows a working colour on a colour button (16 to 8 bits: the high byte). */
void SetColorButtonColor(KV_Dialog* iDialog, int iColorButtonID, const RGB_Color* iColor);

/* ---- Preview (FlarePreview.cpp) ------------------------------------------- */

/* Makes the preview buffers for user control theItem (its bounds inset by
   one pixel) and puts the light at a quarter of the width and height. */
void InitPreview(KV_Dialog* theDialog, int theItem);
/* Sets the working data up for a preview render and restarts it from the
   top; rebuilds the colours and checks the data. Always 0. */
int32_t SetupPreview(void);
/* Renders the rows still owed, from previewScanline to the bottom. */
void UpdatePreview(void);
void ErasePreview(void);
void FinishPreview(void);
/* The preview control's draw routine: finish the render, frame the control,
   draw the image inside the frame. */
void PreviewWindow(const KV_Control* iControl, KV_DrawContext* iContext);
/* The preview control's click routine: while the button is down the light
   follows the pointer, re-rendering at every step. Returns 0. */
int PreviewHitFunction(const KV_Control* iControl, KV_DrawContext* iContext, int iModifierKeys, int iClickH,
                       int iClickV);

#endif /* GLINTWAVE_INTERFACE_H */
