/*
 * KVToolboxList.h - the one list of the host's toolbox members.
 *
 * The host exports 206 functions named KV_...; a plug-in reaches each by name
 * at run time. This file is the single description of all of them. It has
 * two parts:
 *
 *   1. (once) the callback types a plug-in hands to the host beyond the three
 *      of KVToolboxTypes.h, the stand-ins for the platform's own types, and
 *      the kinds of "neutral" result a member gives when the host lacks it;
 *   2. (every time it is included with KV_MEMBER defined) one line per member:
 *
 *          KV_MEMBER(neutral, result, name, (parameters), (arguments))
 *
 *      neutral     KVN_NOTHING (no result), KVN_ZERO (a number or enum),
 *                  KVN_NULL (a pointer), KVN_FALSE (an int used as a flag:
 *                  non-zero means yes or success);
 *      result      the result type;
 *      name        the exported name, looked up exactly as written;
 *      parameters  the parenthesised parameter list, names included;
 *      arguments   the same names as a parenthesised argument list.
 *
 *   KVToolbox.h expands the list into declarations, kit/src/KVToolbox.cpp
 *   into the wrappers. The list is not guarded: each inclusion emits it.
 *
 * Conventions of the signatures
 *   - Argument names say the direction: i... read, o... written, io... both.
 *     Controls, dialogs and other host objects are passed by pointer, const
 *     where the member only reads them.
 *   - "long" is int32_t, "unsigned long" uint32_t, "int" stays int. Resource
 *     and file types are four-character codes in a uint32_t.
 *   - Texts are zero-terminated. A text getter takes (char* oBuffer,
 *     int* ioNumChars): on entry *ioNumChars is the room in oBuffer in bytes,
 *     terminating zero included; the host writes at most room - 1 characters
 *     and a zero, and stores the number of characters written (without the
 *     zero). Its companion ...Size returns the room the whole text needs,
 *     terminating zero included (0 when there is no text to get).
 *   - Indexes (controls of a dialog, list items, tab panels, directory names)
 *     count from 0.
 *   - Members answering yes/no or success/failure return int: non-zero is yes
 *     or success, 0 is no, failure, or an absent host function; so absence is
 *     never taken for success.
 *   - Every member must tolerate null object pointers (do nothing, answer 0).
 */

#ifndef KV_TOOLBOX_LIST_TYPES_H
#define KV_TOOLBOX_LIST_TYPES_H

#include <stdint.h>

#include "KVToolboxTypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What a wrapper answers when the host does not export its member. */
typedef enum KV_NeutralKind {
    KVN_NOTHING = 0, /* the member has no result: nothing happens */
    KVN_ZERO    = 1, /* 0 of the result's number or enum type */
    KVN_NULL    = 2, /* a null pointer */
    KVN_FALSE   = 3  /* 0 of an int flag: "no" or "failed" */
} KV_NeutralKind;

/* ---- Callbacks a plug-in hands to the host (besides the control-hit, user
        draw and user click routines of KVToolboxTypes.h). ---- */

/* The mouse moved over a user control; coordinates are those of the
   control's bounds (the dialog's), as for KV_UserClickFunction. */
typedef void (*KV_UserMouseMovedFunction)(const KV_Control* iControl, KV_DrawContext* iContext,
                                          int iModifierKeys, int iMouseH, int iMouseV);
/* A list item (0-based) was double-clicked. */
typedef void (*KV_ListDoubleClickFunction)(KV_Control* iControl, int iItem);
/* The user dragged list item iFromItem to position iToItem (both 0-based). */
typedef void (*KV_ListReorderFunction)(KV_Control* iControl, int iFromItem, int iToItem);
/* Any control of the dialog was hit; called after the control's own routine. */
typedef void (*KV_DialogHitFunction)(KV_Dialog* iDialog, KV_Control* iControl);
/* A key press reaches the dialog; return non-zero to consume it. */
typedef int  (*KV_DialogKeyFilter)(KV_Dialog* iDialog, int iKey, int iModifierKeys);
/* A character typed into an edit text with the cKV_Custom filter; return
   non-zero to accept it. */
typedef int  (*KV_EditFilterFunction)(KV_Control* iControl, int iChar);
/* A timer fired. */
typedef void (*KV_TimerFunction)(KV_Timer* iTimer);
/* An OpenGL control needs drawing; its context is current during the call. */
typedef void (*KV_GLDrawFunction)(const KV_Control* iControl);
/* A click in an OpenGL control, in the control's own coordinates; return
   non-zero when handled. */
typedef int  (*KV_GLClickFunction)(const KV_Control* iControl, int iModifierKeys,
                                   int iClickH, int iClickV);
/* The mouse moved over an OpenGL control. */
typedef void (*KV_GLMouseMovedFunction)(const KV_Control* iControl, int iModifierKeys,
                                        int iMouseH, int iMouseV);

/* ---- Stand-ins for the platform's own types. The seven platform members
        hand these through untouched; the kit never looks into them. ---- */

/* The platform's own file record, filled by KV_FileRefToFSSpec;
   the caller supplies storage of the platform's size. */
typedef struct KV_FSSpec KV_FSSpec;
/* The platform's window and offscreen-world handles. */
typedef void* KV_WindowPtr;
typedef void* KV_GWorldPtr;
/* A platform cursor resource number for KV_MakeCursor. */
typedef int KV_CursorID;

#ifdef __cplusplus
}
#endif

#endif /* KV_TOOLBOX_LIST_TYPES_H */

#ifdef KV_MEMBER

/* ======================================================================= */
/* Members the plug-in calls (29).                                          */
/* ======================================================================= */
KV_MEMBER(KVN_NULL,    KV_Control*,      KV_FindControlByID, (const KV_Dialog* iDialog, int iControlID), (iDialog, iControlID))
KV_MEMBER(KVN_NOTHING, void,             KV_InvalControl, (const KV_Control* iControl), (iControl))
KV_MEMBER(KVN_ZERO,    KV_ControlType,   KV_GetControlType, (const KV_Control* iControl), (iControl))
KV_MEMBER(KVN_NOTHING, void,             KV_GetControlBounds, (const KV_Control* iControl, KV_Rect* oBounds), (iControl, oBounds))
KV_MEMBER(KVN_NOTHING, void,             KV_SetControlValue, (KV_Control* ioControl, int iNewValue), (ioControl, iNewValue))
KV_MEMBER(KVN_NOTHING, void,             KV_SetKeyControl, (KV_Control* iControl), (iControl))
KV_MEMBER(KVN_NOTHING, void,             KV_SetEditTextString, (KV_Control* ioControl, const char* iEditString), (ioControl, iEditString))
KV_MEMBER(KVN_NOTHING, void,             KV_SetEditTextSelection, (KV_Control* ioControl, int iSelectionStart, int iSelectionEnd), (ioControl, iSelectionStart, iSelectionEnd))
KV_MEMBER(KVN_NOTHING, void,             KV_SetColorButtonColor, (KV_Control* ioControl, int iRed, int iGreen, int iBlue, int iAlpha), (ioControl, iRed, iGreen, iBlue, iAlpha))
KV_MEMBER(KVN_NOTHING, void,             KV_SetControlHitFunction, (KV_Control* ioControl, KV_ControlHitFunction iFunction), (ioControl, iFunction))
KV_MEMBER(KVN_NOTHING, void,             KV_SetUserControlDraw, (KV_Control* ioControl, KV_UserDrawFunction iFunction), (ioControl, iFunction))
KV_MEMBER(KVN_NOTHING, void,             KV_SetUserControlClick, (KV_Control* ioControl, KV_UserClickFunction iFunction), (ioControl, iFunction))
/* The dialog of resource iDialogID; null when it cannot be made. */
KV_MEMBER(KVN_NULL,    KV_Dialog*,       KV_MakeDialog, (KV_ResourceFile* iResourceFile, int iDialogID), (iResourceFile, iDialogID))
KV_MEMBER(KVN_NOTHING, void,             KV_DestroyDialog, (KV_Dialog* iDialog), (iDialog))
/* Runs the dialog modally; non-zero when the user accepted it. */
KV_MEMBER(KVN_FALSE,   int,              KV_ExecuteDialog, (KV_Dialog* iDialog), (iDialog))
/* The folder the plug-in was loaded from; the caller destroys it. */
KV_MEMBER(KVN_NULL,    KV_DirectoryRef*, KV_GetHomeDirectory, (void), ())
KV_MEMBER(KVN_NOTHING, void,             KV_DestroyDirectoryRef, (KV_DirectoryRef* iDirectoryRef), (iDirectoryRef))
KV_MEMBER(KVN_NULL,    KV_FileRef*,      KV_MakeFileRef, (const KV_DirectoryRef* iDirectoryRef, const char* iNameString, uint32_t iFileType, const char* iExtensionString), (iDirectoryRef, iNameString, iFileType, iExtensionString))
KV_MEMBER(KVN_NOTHING, void,             KV_DestroyFileRef, (KV_FileRef* iFileRef), (iFileRef))
/* A 32-bit image buffer (KV_32BitPixel) covering iBounds. */
KV_MEMBER(KVN_NULL,    KV_ImageBuffer*,  KV_MakeImageBuffer, (const KV_Rect* iBounds), (iBounds))
KV_MEMBER(KVN_NOTHING, void,             KV_DestroyImageBuffer, (KV_ImageBuffer* iImage), (iImage))
KV_MEMBER(KVN_ZERO,    int,              KV_GetBufferRowBytes, (const KV_ImageBuffer* iImage), (iImage))
KV_MEMBER(KVN_NULL,    char*,            KV_GetBufferBaseAddress, (KV_ImageBuffer* iImage), (iImage))
KV_MEMBER(KVN_NOTHING, void,             KV_GetBufferBounds, (const KV_ImageBuffer* iImage, KV_Rect* oRect), (iImage, oRect))
KV_MEMBER(KVN_NOTHING, void,             KV_InsetRect, (KV_Rect* ioRect, int iInsetX, int iInsetY), (ioRect, iInsetX, iInsetY))
KV_MEMBER(KVN_NULL,    KV_ResourceFile*, KV_OpenResourceFile, (const KV_FileRef* iFileRef), (iFileRef))
KV_MEMBER(KVN_NOTHING, void,             KV_CloseResourceFile, (KV_ResourceFile* iResourceFile), (iResourceFile))
/* The bytes of a resource (null if absent) and their count in *oResourceSize;
   every pointer returned is given back with KV_ReleaseResource. */
KV_MEMBER(KVN_NULL,    void*,            KV_GetResource, (KV_ResourceFile* iResourceFile, uint32_t iResourceType, int iResourceID, int32_t* oResourceSize), (iResourceFile, iResourceType, iResourceID, oResourceSize))
KV_MEMBER(KVN_NOTHING, void,             KV_ReleaseResource, (void* iResource), (iResource))

/* ======================================================================= */
/* Version and colour picking (3). The pickers return non-zero when the     */
/* user chose a colour; the prompt may be null.                             */
/* ======================================================================= */
KV_MEMBER(KVN_ZERO,    int,              KV_GetAPIVersion, (void), ())
KV_MEMBER(KVN_FALSE,   int,              KV_PickColor, (const char* iPrompt, const KV_Color* iInitialColor, KV_Color* oColor), (iPrompt, iInitialColor, oColor))
KV_MEMBER(KVN_FALSE,   int,              KV_PickColorWithAlpha, (const char* iPrompt, const KV_Color* iInitialColor, int iInitialAlpha, KV_Color* oColor, unsigned char* oAlpha), (iPrompt, iInitialColor, iInitialAlpha, oColor, oAlpha))

/* ======================================================================= */
/* Controls (27). Flags (visible, enabled, draw immediately) are ints,      */
/* non-zero for on. Extra data is one pointer the plug-in may park on a     */
/* control. KV_TrackMouseDown, called in a loop from a click routine,      */
/* stores the pointer's next position and returns non-zero while the       */
/* button is down; 0 once it is released (with the release position).     */
/* Push-button layout: where the label and the icon sit                    */
/* (host-defined position codes).                                          */
/* ======================================================================= */
KV_MEMBER(KVN_ZERO,    int,              KV_GetControlID, (const KV_Control* iControl), (iControl))
KV_MEMBER(KVN_NOTHING, void,             KV_SetControlID, (KV_Control* ioControl, int iControlID), (ioControl, iControlID))
KV_MEMBER(KVN_ZERO,    int,              KV_CountControls, (const KV_Dialog* iDialog), (iDialog))
/* iIndex from 0 to KV_CountControls - 1; null outside. */
KV_MEMBER(KVN_NULL,    KV_Control*,      KV_FindControlByIndex, (const KV_Dialog* iDialog, int iIndex), (iDialog, iIndex))
KV_MEMBER(KVN_NULL,    KV_Dialog*,       KV_GetControlDialog, (const KV_Control* iControl), (iControl))
KV_MEMBER(KVN_NOTHING, void,             KV_SetControlBounds, (KV_Control* ioControl, const KV_Rect* iBounds), (ioControl, iBounds))
KV_MEMBER(KVN_NOTHING, void,             KV_SetControlDrawImmediate, (KV_Control* ioControl, int iDrawImmediate), (ioControl, iDrawImmediate))
KV_MEMBER(KVN_FALSE,   int,              KV_GetControlDrawImmediate, (const KV_Control* iControl), (iControl))
KV_MEMBER(KVN_NOTHING, void,             KV_SetControlVisible, (KV_Control* ioControl, int iVisible), (ioControl, iVisible))
KV_MEMBER(KVN_FALSE,   int,              KV_GetControlVisible, (const KV_Control* iControl), (iControl))
KV_MEMBER(KVN_FALSE,   int,              KV_GetControlEnable, (const KV_Control* iControl), (iControl))
KV_MEMBER(KVN_NOTHING, void,             KV_SetControlEnable, (KV_Control* ioControl, int iEnable), (ioControl, iEnable))
KV_MEMBER(KVN_NOTHING, void,             KV_SetControlTitle, (KV_Control* ioControl, const char* iTitle), (ioControl, iTitle))
KV_MEMBER(KVN_ZERO,    int,              KV_GetControlTitleSize, (const KV_Control* iControl), (iControl))
KV_MEMBER(KVN_NOTHING, void,             KV_GetControlTitle, (const KV_Control* iControl, char* oBuffer, int* ioNumChars), (iControl, oBuffer, ioNumChars))
KV_MEMBER(KVN_ZERO,    int,              KV_GetControlValue, (const KV_Control* iControl), (iControl))
KV_MEMBER(KVN_ZERO,    int,              KV_GetControlMax, (const KV_Control* iControl), (iControl))
KV_MEMBER(KVN_NOTHING, void,             KV_SetControlMax, (KV_Control* ioControl, int iNewMax), (ioControl, iNewMax))
KV_MEMBER(KVN_NULL,    void*,            KV_GetControlExtraData, (const KV_Control* iControl), (iControl))
KV_MEMBER(KVN_NOTHING, void,             KV_SetControlExtraData, (KV_Control* ioControl, void* iExtraData), (ioControl, iExtraData))
/* The control that has the keyboard focus in the dialog. */
KV_MEMBER(KVN_NULL,    KV_Control*,      KV_GetKeyControl, (const KV_Dialog* iDialog), (iDialog))
KV_MEMBER(KVN_FALSE,   int,              KV_TrackMouseDown, (const KV_Control* iControl, int* oMouseX, int* oMouseY), (iControl, oMouseX, oMouseY))
KV_MEMBER(KVN_ZERO,    int,              KV_GetControlImageID, (const KV_Control* iControl), (iControl))
KV_MEMBER(KVN_NOTHING, void,             KV_SetControlImageID, (KV_Control* ioControl, int iImageID), (ioControl, iImageID))
KV_MEMBER(KVN_NOTHING, void,             KV_SetUserControlMouseMoved, (KV_Control* ioControl, KV_UserMouseMovedFunction iFunction), (ioControl, iFunction))
KV_MEMBER(KVN_NOTHING, void,             KV_GetPushButtonLayout, (const KV_Control* iControl, int* oLabelPosition, int* oIconPosition), (iControl, oLabelPosition, oIconPosition))
KV_MEMBER(KVN_NOTHING, void,             KV_SetPushButtonLayout, (KV_Control* ioControl, int iLabelPosition, int iIconPosition), (ioControl, iLabelPosition, iIconPosition))

/* ======================================================================= */
/* Edit text (4). Selection: characters iSelectionStart up to, not         */
/* including, iSelectionEnd.                                               */
/* ======================================================================= */
KV_MEMBER(KVN_ZERO,    int,              KV_GetEditTextStringSize, (const KV_Control* iControl), (iControl))
KV_MEMBER(KVN_NOTHING, void,             KV_GetEditTextString, (const KV_Control* iControl, char* oBuffer, int* ioNumChars), (iControl, oBuffer, ioNumChars))
KV_MEMBER(KVN_NOTHING, void,             KV_GetEditTextSelection, (const KV_Control* iControl, int* oSelectionStart, int* oSelectionEnd), (iControl, oSelectionStart, oSelectionEnd))
/* iFunction is used with cKV_Custom only and may be null otherwise. */
KV_MEMBER(KVN_NOTHING, void,             KV_SetEditTextFilter, (KV_Control* ioControl, KV_EditFilterType iFilterType, KV_EditFilterFunction iFunction), (ioControl, iFilterType, iFunction))

/* ======================================================================= */
/* Colour buttons (1). Components 0-255.                                   */
/* ======================================================================= */
KV_MEMBER(KVN_NOTHING, void,             KV_GetColorButtonColor, (const KV_Control* iControl, int* oRed, int* oGreen, int* oBlue, int* oAlpha), (iControl, oRed, oGreen, oBlue, oAlpha))

/* ======================================================================= */
/* Lists (15). Items count from 0; KV_GetListSelectedItem answers -1 when  */
/* nothing is selected (0 when the host lacks it). Item style and list     */
/* flags are host-defined bit sets.                                        */
/* ======================================================================= */
KV_MEMBER(KVN_NOTHING, void,             KV_SetListString, (KV_Control* ioControl, int iItem, const char* iString), (ioControl, iItem, iString))
KV_MEMBER(KVN_ZERO,    int,              KV_GetListStringSize, (const KV_Control* iControl, int iItem), (iControl, iItem))
KV_MEMBER(KVN_NOTHING, void,             KV_GetListString, (const KV_Control* iControl, int iItem, char* oBuffer, int* ioNumChars), (iControl, iItem, oBuffer, ioNumChars))
KV_MEMBER(KVN_NOTHING, void,             KV_SetListItemStyle, (KV_Control* ioControl, int iItem, int iStyle), (ioControl, iItem, iStyle))
KV_MEMBER(KVN_ZERO,    int,              KV_GetListItemStyle, (const KV_Control* iControl, int iItem), (iControl, iItem))
KV_MEMBER(KVN_ZERO,    int,              KV_GetListSelectedItem, (const KV_Control* iControl), (iControl))
/* Selects (iSelected non-zero) or deselects one item. */
KV_MEMBER(KVN_NOTHING, void,             KV_SelectListItem, (KV_Control* ioControl, int iItem, int iSelected), (ioControl, iItem, iSelected))
KV_MEMBER(KVN_FALSE,   int,              KV_IsListItemSelected, (const KV_Control* iControl, int iItem), (iControl, iItem))
KV_MEMBER(KVN_ZERO,    int,              KV_CountListItems, (const KV_Control* iControl), (iControl))
/* Inserts before item iBeforeItem; an index past the end appends. */
KV_MEMBER(KVN_NOTHING, void,             KV_InsertListItem, (KV_Control* ioControl, int iBeforeItem, const char* iString), (ioControl, iBeforeItem, iString))
KV_MEMBER(KVN_NOTHING, void,             KV_RemoveListItem, (KV_Control* ioControl, int iItem), (ioControl, iItem))
KV_MEMBER(KVN_NOTHING, void,             KV_SetListFlags, (KV_Control* ioControl, uint32_t iFlags), (ioControl, iFlags))
KV_MEMBER(KVN_ZERO,    uint32_t,         KV_GetListFlags, (const KV_Control* iControl), (iControl))
KV_MEMBER(KVN_NOTHING, void,             KV_SetListDoubleClickFunction, (KV_Control* ioControl, KV_ListDoubleClickFunction iFunction), (ioControl, iFunction))
KV_MEMBER(KVN_NOTHING, void,             KV_SetListReorderFunction, (KV_Control* ioControl, KV_ListReorderFunction iFunction), (ioControl, iFunction))

/* ======================================================================= */
/* Dialogs (12). Positions are screen pixels of the dialog's content's      */
/* top-left corner; sizes those of its content. KV_StopDialog ends a       */
/* running KV_ExecuteDialog, which then returns iResult. The frame offset  */
/* is how far the platform's window frame reaches beyond the content on    */
/* each side (left, top, right, bottom, as positive pixel counts).         */
/* KV_GetMonitorBounds: the screen the dialog is on (the main screen for a */
/* null dialog).                                                           */
/* ======================================================================= */
KV_MEMBER(KVN_NOTHING, void,             KV_SetDialogTitle, (KV_Dialog* ioDialog, const char* iTitle), (ioDialog, iTitle))
KV_MEMBER(KVN_NOTHING, void,             KV_MoveDialog, (KV_Dialog* ioDialog, int iLeft, int iTop), (ioDialog, iLeft, iTop))
KV_MEMBER(KVN_NOTHING, void,             KV_GetDialogPosition, (const KV_Dialog* iDialog, int* oLeft, int* oTop), (iDialog, oLeft, oTop))
KV_MEMBER(KVN_NULL,    void*,            KV_GetDialogExtraData, (const KV_Dialog* iDialog), (iDialog))
KV_MEMBER(KVN_NOTHING, void,             KV_SetDialogExtraData, (KV_Dialog* ioDialog, void* iExtraData), (ioDialog, iExtraData))
KV_MEMBER(KVN_NOTHING, void,             KV_StopDialog, (KV_Dialog* ioDialog, int iResult), (ioDialog, iResult))
KV_MEMBER(KVN_NOTHING, void,             KV_SetDialogHitFunction, (KV_Dialog* ioDialog, KV_DialogHitFunction iFunction), (ioDialog, iFunction))
KV_MEMBER(KVN_NOTHING, void,             KV_GetDialogFrameOffset, (const KV_Dialog* iDialog, KV_Rect* oFrameOffset), (iDialog, oFrameOffset))
KV_MEMBER(KVN_NOTHING, void,             KV_GetDialogSize, (const KV_Dialog* iDialog, int* oWidth, int* oHeight), (iDialog, oWidth, oHeight))
KV_MEMBER(KVN_NOTHING, void,             KV_SetDialogSize, (KV_Dialog* ioDialog, int iWidth, int iHeight), (ioDialog, iWidth, iHeight))
KV_MEMBER(KVN_NOTHING, void,             KV_SetDialogKeyFilterFunction, (KV_Dialog* ioDialog, KV_DialogKeyFilter iFunction), (ioDialog, iFunction))
KV_MEMBER(KVN_NOTHING, void,             KV_GetMonitorBounds, (const KV_Dialog* iDialog, KV_Rect* oBounds), (iDialog, oBounds))

/* ======================================================================= */
/* Tabs (3), on a cKV_TabGroup control; panels count from 0.               */
/* ======================================================================= */
KV_MEMBER(KVN_ZERO,    int,              KV_GetNumTabPanels, (const KV_Control* iControl), (iControl))
KV_MEMBER(KVN_ZERO,    int,              KV_GetCurrentTabPanel, (const KV_Control* iControl), (iControl))
KV_MEMBER(KVN_NOTHING, void,             KV_SetCurrentTabPanel, (KV_Control* ioControl, int iPanel), (ioControl, iPanel))

/* ======================================================================= */
/* Disk images (3): a picture resource read into an image buffer that the  */
/* disk image owns.                                                        */
/* ======================================================================= */
KV_MEMBER(KVN_NULL,    KV_DiskImage*,    KV_MakeDiskImage, (KV_ResourceFile* iResourceFile, uint32_t iResourceType, int iResourceID), (iResourceFile, iResourceType, iResourceID))
KV_MEMBER(KVN_NOTHING, void,             KV_DestroyDiskImage, (KV_DiskImage* iDiskImage), (iDiskImage))
KV_MEMBER(KVN_NULL,    KV_ImageBuffer*,  KV_GetDiskImageBuffer, (const KV_DiskImage* iDiskImage), (iDiskImage))

/* ======================================================================= */
/* Drawing contexts (22). Rectangles are half-open. KV_DrawImage copies    */
/* iSourceRect of the image to iDestRect of the context; KV_CaptureImage   */
/* copies iSourceRect of the context to iDestRect of the image.            */
/* KV_HiliteRect swaps iBackColor for iHiliteColor inside iBounds.         */
/* ======================================================================= */
KV_MEMBER(KVN_NULL,    KV_DrawContext*,  KV_MakeContextForImageBuffer, (KV_ImageBuffer* iImage), (iImage))
KV_MEMBER(KVN_NULL,    KV_DrawContext*,  KV_MakeContextForDialog, (KV_Dialog* iDialog), (iDialog))
KV_MEMBER(KVN_NOTHING, void,             KV_DestroyContext, (KV_DrawContext* iContext), (iContext))
KV_MEMBER(KVN_NOTHING, void,             KV_SetClip, (KV_DrawContext* ioContext, const KV_Rect* iClip), (ioContext, iClip))
KV_MEMBER(KVN_NOTHING, void,             KV_GetClip, (const KV_DrawContext* iContext, KV_Rect* oClip), (iContext, oClip))
KV_MEMBER(KVN_NOTHING, void,             KV_SetPenMode, (KV_DrawContext* ioContext, KV_PenMode iPenMode), (ioContext, iPenMode))
KV_MEMBER(KVN_ZERO,    KV_PenMode,       KV_GetPenMode, (const KV_DrawContext* iContext), (iContext))
KV_MEMBER(KVN_NOTHING, void,             KV_MoveTo, (KV_DrawContext* ioContext, int iX, int iY), (ioContext, iX, iY))
KV_MEMBER(KVN_NOTHING, void,             KV_LineTo, (KV_DrawContext* ioContext, int iX, int iY), (ioContext, iX, iY))
KV_MEMBER(KVN_NOTHING, void,             KV_GetPenLocation, (const KV_DrawContext* iContext, int* oX, int* oY), (iContext, oX, oY))
KV_MEMBER(KVN_NOTHING, void,             KV_SetForeColor, (KV_DrawContext* ioContext, const KV_Color* iColor), (ioContext, iColor))
KV_MEMBER(KVN_NOTHING, void,             KV_GetForeColor, (const KV_DrawContext* iContext, KV_Color* oColor), (iContext, oColor))
KV_MEMBER(KVN_NOTHING, void,             KV_SetBackColor, (KV_DrawContext* ioContext, const KV_Color* iColor), (ioContext, iColor))
KV_MEMBER(KVN_NOTHING, void,             KV_GetBackColor, (const KV_DrawContext* iContext, KV_Color* oColor), (iContext, oColor))
KV_MEMBER(KVN_NOTHING, void,             KV_FrameRect, (KV_DrawContext* ioContext, const KV_Rect* iRect), (ioContext, iRect))
KV_MEMBER(KVN_NOTHING, void,             KV_PaintRect, (KV_DrawContext* ioContext, const KV_Rect* iRect), (ioContext, iRect))
KV_MEMBER(KVN_NOTHING, void,             KV_EraseRect, (KV_DrawContext* ioContext, const KV_Rect* iRect), (ioContext, iRect))
KV_MEMBER(KVN_NOTHING, void,             KV_FrameOval, (KV_DrawContext* ioContext, const KV_Rect* iRect), (ioContext, iRect))
KV_MEMBER(KVN_NOTHING, void,             KV_PaintOval, (KV_DrawContext* ioContext, const KV_Rect* iRect), (ioContext, iRect))
KV_MEMBER(KVN_NOTHING, void,             KV_DrawImage, (KV_DrawContext* ioContext, const KV_ImageBuffer* iImage, const KV_Rect* iSourceRect, const KV_Rect* iDestRect), (ioContext, iImage, iSourceRect, iDestRect))
KV_MEMBER(KVN_NOTHING, void,             KV_CaptureImage, (const KV_DrawContext* iContext, KV_ImageBuffer* ioImage, const KV_Rect* iSourceRect, const KV_Rect* iDestRect), (iContext, ioImage, iSourceRect, iDestRect))
KV_MEMBER(KVN_NOTHING, void,             KV_HiliteRect, (KV_DrawContext* ioContext, const KV_Rect* iBounds, const KV_Color* iHiliteColor, const KV_Color* iBackColor), (ioContext, iBounds, iHiliteColor, iBackColor))

/* ======================================================================= */
/* Text (9), drawn at the pen location in the fore colour. Counts are      */
/* characters of iText (which need not be terminated). Text size in        */
/* points; text style a host-defined bit set. KV_DrawTextToFit shortens    */
/* the text (condensing it first when iAllowCondensed is non-zero) to fit  */
/* iMaxWidth pixels; KV_DrawTextInRect wraps it inside iRect.              */
/* ======================================================================= */
KV_MEMBER(KVN_NOTHING, void,             KV_SetTextSize, (KV_DrawContext* ioContext, int iSize), (ioContext, iSize))
KV_MEMBER(KVN_ZERO,    int,              KV_GetTextSize, (const KV_DrawContext* iContext), (iContext))
KV_MEMBER(KVN_NOTHING, void,             KV_SetTextStyle, (KV_DrawContext* ioContext, int iStyle), (ioContext, iStyle))
KV_MEMBER(KVN_ZERO,    int,              KV_GetTextStyle, (const KV_DrawContext* iContext), (iContext))
/* Width in pixels. */
KV_MEMBER(KVN_ZERO,    int,              KV_MeasureText, (const KV_DrawContext* iContext, const char* iText, int iNumChars), (iContext, iText, iNumChars))
KV_MEMBER(KVN_NOTHING, void,             KV_GetFontMetrics, (const KV_DrawContext* iContext, int* oAscent, int* oDescent, int* oLeading), (iContext, oAscent, oDescent, oLeading))
KV_MEMBER(KVN_NOTHING, void,             KV_DrawText, (KV_DrawContext* ioContext, const char* iText, int iNumChars), (ioContext, iText, iNumChars))
KV_MEMBER(KVN_NOTHING, void,             KV_DrawTextToFit, (KV_DrawContext* ioContext, const char* iText, int iNumChars, int iMaxWidth, int iAllowCondensed), (ioContext, iText, iNumChars, iMaxWidth, iAllowCondensed))
KV_MEMBER(KVN_NOTHING, void,             KV_DrawTextInRect, (KV_DrawContext* ioContext, const char* iText, int iNumChars, const KV_Rect* iRect), (ioContext, iText, iNumChars, iRect))

/* ======================================================================= */
/* Directories (11). A directory reference is a path split into names;     */
/* name indexes count from 0. Every returned reference is the caller's to  */
/* destroy. KV_CreateDirectory returns non-zero when the folder exists     */
/* afterwards.                                                             */
/* ======================================================================= */
KV_MEMBER(KVN_NULL,    KV_DirectoryRef*, KV_MakeDirectoryRef, (const char* iPathString), (iPathString))
KV_MEMBER(KVN_NOTHING, void,             KV_AppendDirectoryName, (KV_DirectoryRef* ioDirectoryRef, const char* iName), (ioDirectoryRef, iName))
KV_MEMBER(KVN_NOTHING, void,             KV_RemoveLastDirectoryName, (KV_DirectoryRef* ioDirectoryRef), (ioDirectoryRef))
KV_MEMBER(KVN_ZERO,    int,              KV_GetNumDirectoryNames, (const KV_DirectoryRef* iDirectoryRef), (iDirectoryRef))
KV_MEMBER(KVN_ZERO,    int,              KV_GetDirectoryNameSize, (const KV_DirectoryRef* iDirectoryRef, int iIndex), (iDirectoryRef, iIndex))
KV_MEMBER(KVN_NOTHING, void,             KV_GetDirectoryName, (const KV_DirectoryRef* iDirectoryRef, int iIndex, char* oBuffer, int* ioNumChars), (iDirectoryRef, iIndex, oBuffer, ioNumChars))
KV_MEMBER(KVN_ZERO,    int,              KV_GetDirectoryPathNameSize, (const KV_DirectoryRef* iDirectoryRef), (iDirectoryRef))
KV_MEMBER(KVN_NOTHING, void,             KV_GetDirectoryPathName, (const KV_DirectoryRef* iDirectoryRef, char* oBuffer, int* ioNumChars), (iDirectoryRef, oBuffer, ioNumChars))
KV_MEMBER(KVN_NULL,    KV_DirectoryRef*, KV_GetPreferencesDirectory, (void), ())
KV_MEMBER(KVN_NULL,    KV_DirectoryRef*, KV_GetTemporaryDirectory, (void), ())
KV_MEMBER(KVN_FALSE,   int,              KV_CreateDirectory, (const KV_DirectoryRef* iDirectoryRef), (iDirectoryRef))

/* ======================================================================= */
/* File references (16): a directory, a name, a type code and an           */
/* extension. KV_GetFileDirectory returns a new reference (caller          */
/* destroys). The two askers let the user choose a file, fill ioFileRef    */
/* and return non-zero, or 0 when the user cancelled. KV_DeleteFile        */
/* returns non-zero when the file is gone.                                 */
/* ======================================================================= */
KV_MEMBER(KVN_NULL,    KV_FileRef*,      KV_MakeEmptyFileRef, (void), ())
KV_MEMBER(KVN_NULL,    KV_DirectoryRef*, KV_GetFileDirectory, (const KV_FileRef* iFileRef), (iFileRef))
KV_MEMBER(KVN_NOTHING, void,             KV_SetFileDirectory, (KV_FileRef* ioFileRef, const KV_DirectoryRef* iDirectoryRef), (ioFileRef, iDirectoryRef))
KV_MEMBER(KVN_NOTHING, void,             KV_SetFileRefType, (KV_FileRef* ioFileRef, uint32_t iFileType), (ioFileRef, iFileType))
KV_MEMBER(KVN_ZERO,    uint32_t,         KV_GetFileRefType, (const KV_FileRef* iFileRef), (iFileRef))
KV_MEMBER(KVN_NOTHING, void,             KV_SetFileRefExtension, (KV_FileRef* ioFileRef, const char* iExtensionString), (ioFileRef, iExtensionString))
KV_MEMBER(KVN_ZERO,    int,              KV_GetFileRefExtensionSize, (const KV_FileRef* iFileRef), (iFileRef))
KV_MEMBER(KVN_NOTHING, void,             KV_GetFileRefExtension, (const KV_FileRef* iFileRef, char* oBuffer, int* ioNumChars), (iFileRef, oBuffer, ioNumChars))
KV_MEMBER(KVN_NOTHING, void,             KV_SetFileName, (KV_FileRef* ioFileRef, const char* iNameString), (ioFileRef, iNameString))
KV_MEMBER(KVN_ZERO,    int,              KV_GetFileNameSize, (const KV_FileRef* iFileRef), (iFileRef))
KV_MEMBER(KVN_NOTHING, void,             KV_GetFileName, (const KV_FileRef* iFileRef, char* oBuffer, int* ioNumChars), (iFileRef, oBuffer, ioNumChars))
KV_MEMBER(KVN_ZERO,    int,              KV_GetFilePathNameSize, (const KV_FileRef* iFileRef), (iFileRef))
KV_MEMBER(KVN_NOTHING, void,             KV_GetFilePathName, (const KV_FileRef* iFileRef, char* oBuffer, int* ioNumChars), (iFileRef, oBuffer, ioNumChars))
KV_MEMBER(KVN_FALSE,   int,              KV_AskUserForNewFile, (const char* iPrompt, KV_FileRef* ioFileRef), (iPrompt, ioFileRef))
KV_MEMBER(KVN_FALSE,   int,              KV_AskUserForExistingFile, (const char* iPrompt, KV_FileRef* ioFileRef), (iPrompt, ioFileRef))
KV_MEMBER(KVN_FALSE,   int,              KV_DeleteFile, (const KV_FileRef* iFileRef), (iFileRef))

/* ======================================================================= */
/* Rectangles (9), half-open KV_Rect. KV_IsPtInRect: left <= x < right and */
/* top <= y < bottom. KV_IntersectRects returns non-zero when the          */
/* intersection is not empty.                                              */
/* ======================================================================= */
KV_MEMBER(KVN_ZERO,    int,              KV_GetRectWidth, (const KV_Rect* iRect), (iRect))
KV_MEMBER(KVN_ZERO,    int,              KV_GetRectHeight, (const KV_Rect* iRect), (iRect))
KV_MEMBER(KVN_NOTHING, void,             KV_SetRect, (KV_Rect* oRect, int iLeft, int iTop, int iRight, int iBottom), (oRect, iLeft, iTop, iRight, iBottom))
KV_MEMBER(KVN_FALSE,   int,              KV_IsRectEmpty, (const KV_Rect* iRect), (iRect))
KV_MEMBER(KVN_FALSE,   int,              KV_IsPtInRect, (int iX, int iY, const KV_Rect* iRect), (iX, iY, iRect))
KV_MEMBER(KVN_NOTHING, void,             KV_UnionRects, (const KV_Rect* iRect1, const KV_Rect* iRect2, KV_Rect* oUnion), (iRect1, iRect2, oUnion))
KV_MEMBER(KVN_FALSE,   int,              KV_IntersectRects, (const KV_Rect* iRect1, const KV_Rect* iRect2, KV_Rect* oIntersection), (iRect1, iRect2, oIntersection))
KV_MEMBER(KVN_NOTHING, void,             KV_OffsetRect, (KV_Rect* ioRect, int iOffsetX, int iOffsetY), (ioRect, iOffsetX, iOffsetY))
KV_MEMBER(KVN_FALSE,   int,              KV_AreRectsEqual, (const KV_Rect* iRect1, const KV_Rect* iRect2), (iRect1, iRect2))

/* ======================================================================= */
/* Streams (21). Every member but KV_OpenFileStream returns int: non-zero  */
/* on success, 0 on failure (or an absent host function). Positions and    */
/* sizes are byte counts. KV_ReadStream and KV_WriteStream transfer up to  */
/* *ioCount bytes and store the number transferred. The typed members      */
/* move big-endian values; KV_WriteUInt8/SInt16/UInt16 write the low 8 or  */
/* 16 bits of iData.                                                       */
/* ======================================================================= */
KV_MEMBER(KVN_NULL,    KV_Stream*,       KV_OpenFileStream, (const KV_FileRef* iFileRef, KV_StreamAccess iAccess), (iFileRef, iAccess))
KV_MEMBER(KVN_FALSE,   int,              KV_CloseStream, (KV_Stream* iStream), (iStream))
KV_MEMBER(KVN_FALSE,   int,              KV_SetStreamPosition, (KV_Stream* ioStream, int32_t iPosition), (ioStream, iPosition))
KV_MEMBER(KVN_FALSE,   int,              KV_GetStreamPosition, (const KV_Stream* iStream, int32_t* oPosition), (iStream, oPosition))
KV_MEMBER(KVN_FALSE,   int,              KV_GetStreamSize, (const KV_Stream* iStream, int32_t* oSize), (iStream, oSize))
KV_MEMBER(KVN_FALSE,   int,              KV_ReadStream, (KV_Stream* ioStream, void* oBuffer, int32_t* ioCount), (ioStream, oBuffer, ioCount))
KV_MEMBER(KVN_FALSE,   int,              KV_WriteStream, (KV_Stream* ioStream, const void* iBuffer, int32_t* ioCount), (ioStream, iBuffer, ioCount))
KV_MEMBER(KVN_FALSE,   int,              KV_WriteUInt8, (KV_Stream* ioStream, int iData), (ioStream, iData))
KV_MEMBER(KVN_FALSE,   int,              KV_WriteSInt16, (KV_Stream* ioStream, int iData), (ioStream, iData))
KV_MEMBER(KVN_FALSE,   int,              KV_WriteUInt16, (KV_Stream* ioStream, int iData), (ioStream, iData))
KV_MEMBER(KVN_FALSE,   int,              KV_WriteSInt32, (KV_Stream* ioStream, int32_t iData), (ioStream, iData))
KV_MEMBER(KVN_FALSE,   int,              KV_WriteUInt32, (KV_Stream* ioStream, uint32_t iData), (ioStream, iData))
KV_MEMBER(KVN_FALSE,   int,              KV_WriteFloat32, (KV_Stream* ioStream, float iData), (ioStream, iData))
KV_MEMBER(KVN_FALSE,   int,              KV_WriteFloat64, (KV_Stream* ioStream, double iData), (ioStream, iData))
KV_MEMBER(KVN_FALSE,   int,              KV_ReadUInt8, (KV_Stream* ioStream, uint8_t* oData), (ioStream, oData))
KV_MEMBER(KVN_FALSE,   int,              KV_ReadSInt16, (KV_Stream* ioStream, int16_t* oData), (ioStream, oData))
KV_MEMBER(KVN_FALSE,   int,              KV_ReadUInt16, (KV_Stream* ioStream, uint16_t* oData), (ioStream, oData))
KV_MEMBER(KVN_FALSE,   int,              KV_ReadSInt32, (KV_Stream* ioStream, int32_t* oData), (ioStream, oData))
KV_MEMBER(KVN_FALSE,   int,              KV_ReadUInt32, (KV_Stream* ioStream, uint32_t* oData), (ioStream, oData))
KV_MEMBER(KVN_FALSE,   int,              KV_ReadFloat32, (KV_Stream* ioStream, float* oData), (ioStream, oData))
KV_MEMBER(KVN_FALSE,   int,              KV_ReadFloat64, (KV_Stream* ioStream, double* oData), (ioStream, oData))

/* ======================================================================= */
/* Timers (8). The timer function runs on the plug-in's thread from the    */
/* host's event loop (only while a dialog runs).                           */
/* ======================================================================= */
KV_MEMBER(KVN_NULL,    KV_Timer*,        KV_MakeTimer, (void), ())
KV_MEMBER(KVN_NOTHING, void,             KV_DestroyTimer, (KV_Timer* iTimer), (iTimer))
KV_MEMBER(KVN_NOTHING, void,             KV_SetTimerFunction, (KV_Timer* ioTimer, KV_TimerFunction iFunction), (ioTimer, iFunction))
KV_MEMBER(KVN_NOTHING, void,             KV_SetTimerExtraData, (KV_Timer* ioTimer, void* iExtraData), (ioTimer, iExtraData))
KV_MEMBER(KVN_NULL,    void*,            KV_GetTimerExtraData, (const KV_Timer* iTimer), (iTimer))
KV_MEMBER(KVN_NOTHING, void,             KV_StartPeriodicTimer, (KV_Timer* ioTimer, int iMilliseconds), (ioTimer, iMilliseconds))
KV_MEMBER(KVN_NOTHING, void,             KV_StartOneShotTimer, (KV_Timer* ioTimer, int iMilliseconds), (ioTimer, iMilliseconds))
KV_MEMBER(KVN_NOTHING, void,             KV_StopTimer, (KV_Timer* ioTimer), (ioTimer))

/* ======================================================================= */
/* OpenGL controls (7), on a cKV_OpenGLControl. KV_BeginGLDrawing makes    */
/* the control's context current and returns non-zero when it could.      */
/* KV_WindowToGL and KV_GLToWindow convert a point in place between        */
/* window coordinates (y down) and the control's GL coordinates (y up).    */
/* ======================================================================= */
KV_MEMBER(KVN_NOTHING, void,             KV_SetGLDrawFunction, (KV_Control* ioControl, KV_GLDrawFunction iFunction), (ioControl, iFunction))
KV_MEMBER(KVN_NOTHING, void,             KV_SetGLClickFunction, (KV_Control* ioControl, KV_GLClickFunction iFunction), (ioControl, iFunction))
KV_MEMBER(KVN_NOTHING, void,             KV_SetGLControlMouseMoved, (KV_Control* ioControl, KV_GLMouseMovedFunction iFunction), (ioControl, iFunction))
KV_MEMBER(KVN_FALSE,   int,              KV_BeginGLDrawing, (KV_Control* ioControl), (ioControl))
KV_MEMBER(KVN_NOTHING, void,             KV_EndGLDrawing, (KV_Control* ioControl), (ioControl))
KV_MEMBER(KVN_NOTHING, void,             KV_WindowToGL, (const KV_Control* iControl, int* ioX, int* ioY), (iControl, ioX, ioY))
KV_MEMBER(KVN_NOTHING, void,             KV_GLToWindow, (const KV_Control* iControl, int* ioX, int* ioY), (iControl, ioX, ioY))

/* ======================================================================= */
/* Cursors (3). KV_SetCursor with null restores the arrow.                 */
/* ======================================================================= */
KV_MEMBER(KVN_NULL,    KV_Cursor*,       KV_MakeCursor, (KV_CursorID iCursorID), (iCursorID))
KV_MEMBER(KVN_NOTHING, void,             KV_DestroyCursor, (KV_Cursor* iCursor), (iCursor))
KV_MEMBER(KVN_NOTHING, void,             KV_SetCursor, (const KV_Cursor* iCursor), (iCursor))

/* ======================================================================= */
/* Platform conversions (3): the platform object behind a host object.     */
/* Each returns non-zero when it filled its output.                        */
/* ======================================================================= */
KV_MEMBER(KVN_FALSE,   int,              KV_FileRefToFSSpec, (const KV_FileRef* iFileRef, KV_FSSpec* oFSSpec), (iFileRef, oFSSpec))
KV_MEMBER(KVN_FALSE,   int,              KV_DialogToWindowPtr, (const KV_Dialog* iDialog, KV_WindowPtr* oWindow), (iDialog, oWindow))
KV_MEMBER(KVN_FALSE,   int,              KV_ImageBufferToGWorld, (const KV_ImageBuffer* iImage, KV_GWorldPtr* oGWorld), (iImage, oGWorld))

#endif /* KV_MEMBER */
