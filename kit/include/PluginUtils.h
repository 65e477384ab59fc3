/*
 * PluginUtils.h - dialog helpers over the host's toolbox.
 *
 * Controls are addressed by their item number (control ID) within a dialog.
 * Every routine taking (iDialog, iItem) first finds the control with
 * KV_FindControlByID; when there is none it does nothing, and getters answer
 * 0 or an empty string. The exceptions, SetControlIDVisible,
 * SetControlIDTitle and SetEditTextIDString, hand whatever they found (null
 * included) straight to the host's setter.
 *
 * Texts are Pascal strings (PString.h) unless a parameter is a char*. Text
 * read from a control is taken up to 255 characters; routines returning a
 * string without a destination return a temporary from PStrNext.
 *
 * Alerts are dialogs of the resource file given: 9000 stop, 9002 warning,
 * 9003 message, 9004 caution. Their static texts may hold the placeholders
 * ^0 to ^3, replaced by the alert's texts (SetParamText).
 *
 * Single-threaded, like the rest of the kit.
 */
#ifndef KV_PLUGIN_UTILS_H
#define KV_PLUGIN_UTILS_H

#include <stdbool.h>
#include <stdint.h>

#include "KVPluginAPI.h"
#include "KVToolboxTypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Alert state and set-up ------------------------------------------- */

/* errorFlag: set by the first Error or StandardError, which suppresses the
   alerts of later ones. hideErrorFlag: suppresses error alerts entirely.
   inBackground: cleared by InitUtils only; kept for plug-ins that track it. */
extern bool errorFlag;
extern bool hideErrorFlag;
extern bool inBackground;

/* Clears the three flags above. */
void InitUtils(void);
/* The counterpart of InitUtils; nothing to undo. */
void FinishUtils(void);

/* Opens iResourceFileName in the plug-in's home folder (file type 'rsrc',
   extension "rsc"); null when the host cannot. The references made on the
   way are destroyed. */
KV_ResourceFile* OpenResourceFile(const char* iResourceFileName);

/* ---- Item access -------------------------------------------------------- */

void SetButton(KV_Dialog* iDialog, int iItem, int theValue);
int  GetButton(KV_Dialog* iDialog, int iItem);
/* Sets the value to 0 if it was non-zero, else to 1; answers the new state
   (false if there is no control). */
bool ToggleButton(KV_Dialog* iDialog, int iItem);
void SetButtonName(KV_Dialog* iDialog, int iItem, const unsigned char* theTitle);
/* The title into theTitle (a PStr255), which is also returned. */
unsigned char* GetButtonName(KV_Dialog* iDialog, int iItem, unsigned char* theTitle);
/* Gives the control the keyboard focus; an edit text gets all its text
   selected (characters 0 to 10000). */
void SelectItem(KV_Dialog* iDialog, int iItem);
void SetTheIText(KV_Dialog* iDialog, int iItem, const unsigned char* theText);
/* The edit text into theText (a PStr255). */
void GetTheIText(KV_Dialog* iDialog, int iItem, unsigned char* theText);
/* The number as decimal text ("%ld"). */
void SetTheINum(KV_Dialog* iDialog, int iItem, int32_t theNum);
/* The leading decimal number of the first 50 characters of the edit text,
   as atoi reads it (0 when none); values beyond 32 bits saturate. */
int32_t GetTheINum(KV_Dialog* iDialog, int iItem);
/* The text RealTrimStr(theValue, theDigits). */
void SetTheIReal(KV_Dialog* iDialog, int iItem, double theValue, int16_t theDigits);
/* The edit text read by Str2Num, then FixDouble: "abc" gives 0.0. */
double GetTheIReal(KV_Dialog* iDialog, int iItem);
void SetTheIPopUp(KV_Dialog* iDialog, int iItem, int16_t theIndex);
/* The control's value taken as a signed 16-bit number. */
int16_t GetTheIPopUp(KV_Dialog* iDialog, int iItem);
KV_ControlType GetTheIType(KV_Dialog* iDialog, int iItem);
/* Control bounds; nothing happens for a null rectangle. */
void SetTheIRect(KV_Dialog* iDialog, int iItem, const KV_Rect* theRect);
void GetTheIRect(KV_Dialog* iDialog, int iItem, KV_Rect* theRect);
/* A colour button's colour as the bytes a, r, g, b of an ARGB; nothing
   happens for a null ARGB. Components beyond 0-255 keep their low byte. */
void SetColorButtonIDARGB(KV_Dialog* iDialog, int iItem, const ARGB* theARGB);
void GetColorButtonIDARGB(KV_Dialog* iDialog, int iItem, ARGB* theARGB);
/* Installs a user control's draw routine, then its click routine. */
void SetUserControlIDFunctions(KV_Dialog* iDialog, int iItem,
                               KV_UserDrawFunction iDraw, KV_UserClickFunction iClick);
void SetControlIDHitFunction(KV_Dialog* iDialog, int iItem, KV_ControlHitFunction iHit);
/* Host setters on the found control, null or not. */
void SetControlIDVisible(KV_Dialog* iDialog, int iItem, int theVisible);
void SetControlIDTitle(KV_Dialog* iDialog, int iItem, const char* theTitle);
void SetEditTextIDString(KV_Dialog* iDialog, int iItem, const char* theString);

/* Replaces ^0..^3 in the dialog's static texts by text0..text3 (null means
   empty). Controls are visited by index from 0; in each static text the
   characters are scanned from position 1 while below the length, a caret
   followed by 0-3 is replaced and the scan goes on after the inserted text.
   The control index and the character position share one counter: after
   a static text, the visit of controls resumes at the position the scan
   reached plus one, so later controls may be skipped (or earlier ones
   visited again). Alerts rely on this exact behaviour; keep it. A dialog
   whose texts would send the visit round in circles is left after at most
   2 x controls + 256 visits. */
void SetParamText(KV_Dialog* iDialog, const unsigned char* text0, const unsigned char* text1,
                  const unsigned char* text2, const unsigned char* text3);

/* ---- Number text -------------------------------------------------------- */

/* A one-character string (temporary). */
unsigned char* CharStr(unsigned char theChar);
/* Signed decimal (temporary); PStrNum. */
unsigned char* NumStr(int32_t theNum);
/* The number sscanf "%lf" reads from the text; 0.0 when nothing parses. */
double Str2Num(const unsigned char* s);
/* The number sscanf "%d" reads from the text, 0 when nothing parses;
   values beyond 32 bits saturate. */
int32_t Str2Int(const unsigned char* s);
/* x as text into s (a PStr255): digits < 0 gives -digits decimals and
   always a decimal point ("%#1.*f"); otherwise "%1.*f" with digits
   decimals. Texts beyond 255 characters are cut. */
void Num2Str(int16_t digits, double x, unsigned char* s);
/* Num2Str into a temporary; for theDigits >= 0, trailing zeros after the
   decimal point go, then the point if nothing follows it, and "-0" becomes
   "0": RealTrimStr(2.5, 8) = "2.5", (3.0, 8) = "3", (-1e-10, 8) = "0",
   (2.5, -2) = "2.50". */
unsigned char* RealTrimStr(double theNum, int16_t theDigits);
/* x, except that negative zero, infinities and NaNs become 0.0. */
double FixDouble(double x);

/* ---- Change-tracking setters -------------------------------------------- */
/* Each stores src into *dst unconditionally and sets *flag to true when it
   was already true or the old value differed (exact comparison: doubles by
   ==, so 0.0 equals -0.0 and a NaN always differs). A null flag is not
   touched; a null dst does nothing. */

void SetBoolean(uint8_t* dst, uint8_t src, bool* flag);
void SetByte(int8_t* dst, int8_t src, bool* flag);
void SetInteger(int16_t* dst, int16_t src, bool* flag);
void SetLongInt(int32_t* dst, int32_t src, bool* flag);
void SetReal(float* dst, float src, bool* flag);
void SetDouble(double* dst, double src, bool* flag);
void SetExtended(double* dst, double src, bool* flag);
/* Component by component (red, green, blue). */
void SetRGBColor(RGB_Color* dst, const RGB_Color* src, bool* flag);
/* All four bytes. */
void SetTheARGB(ARGB* dst, const ARGB* src, bool* flag);
/* Bit theFlag (modulo 32) of *dst against src, then set or cleared. */
void SetBooleanFlag(uint32_t* dst, int16_t theFlag, bool src, bool* flag);

/* ---- Plain flag setters --------------------------------------------------- */
/* Set bit theFlag (taken modulo 32, so -1 is bit 31) when theState is true,
   else clear it. In the 16-bit word bits 16-31 do not exist, so those
   numbers leave it unchanged. */
void SetFlag(uint32_t* theFlagFields, int16_t theFlag, bool theState);
void SetIntegerFlag(uint16_t* theFlagFields, int16_t theFlag, bool theState);

/* ---- Alerts ----------------------------------------------------------------- */

/* Shows dialog iDialogID with SetParamText(texts) and answers what
   KV_ExecuteDialog answered; 0 when the dialog cannot be made. */
int StandardDialog(KV_ResourceFile* iResFile, int iDialogID,
                   const unsigned char* iText0, const unsigned char* iText1,
                   const unsigned char* iText2, const unsigned char* iText3);
/* The alerts 9000, 9002, 9003, 9004 with theText as ^0. */
int Stop(KV_ResourceFile* iResFile, const unsigned char* theText);
int Warning(KV_ResourceFile* iResFile, const unsigned char* theText);
int Message(KV_ResourceFile* iResFile, const unsigned char* theText);
int Caution(KV_ResourceFile* iResFile, const unsigned char* theText);
/* Stop alert "theText: theCode", shown only while neither errorFlag nor
   hideErrorFlag is set; sets errorFlag in every case. */
void Error(KV_ResourceFile* iResFile, const unsigned char* theText, int32_t theCode);
/* As Error without the code, and shown only for a non-empty text; sets
   errorFlag in every case. */
void StandardError(KV_ResourceFile* iResFile, const unsigned char* theText);

#ifdef __cplusplus
}
#endif

#endif /* KV_PLUGIN_UTILS_H */
