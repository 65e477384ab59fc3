/*
 * KVToolboxTypes.h - the value and handle types of the host's toolbox.
 *
 * The host exports a library of KV_ functions (dialogs, controls, drawing,
 * image buffers, files, resources, streams, timers, cursors). Plug-ins reach
 * them by name at run time (KVToolbox.h); hosts implement them. Both sides
 * share these types. Host objects are opaque and always handled by pointer.
 */
#ifndef KV_TOOLBOX_TYPES_H
#define KV_TOOLBOX_TYPES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct KV_Control      KV_Control;
typedef struct KV_Dialog       KV_Dialog;
typedef struct KV_DrawContext  KV_DrawContext;
typedef struct KV_ImageBuffer  KV_ImageBuffer;
typedef struct KV_DiskImage    KV_DiskImage;
typedef struct KV_ResourceFile KV_ResourceFile;
typedef struct KV_DirectoryRef KV_DirectoryRef;
typedef struct KV_FileRef      KV_FileRef;
typedef struct KV_Stream       KV_Stream;
typedef struct KV_Timer        KV_Timer;
typedef struct KV_Cursor       KV_Cursor;

/* Note the field order: left, top, right, bottom (L_Rect differs). */
typedef struct KV_Rect {
    int left;
    int top;
    int right;
    int bottom;
} KV_Rect;

typedef struct KV_Color {
    uint8_t red;
    uint8_t green;
    uint8_t blue;
} KV_Color;

/* Alpha in bits 24-31, red 16-23, green 8-15, blue 0-7. */
typedef uint32_t KV_32BitPixel;

typedef enum KV_ControlType {
    cKV_NoControlType = 0,
    cKV_PushButton    = 1,
    cKV_CheckBox      = 2,
    cKV_RadioGroup    = 3,
    cKV_DividerLine   = 4,
    cKV_GroupBox      = 5,
    cKV_TabGroup      = 6,
    cKV_ColorSlider   = 7,
    cKV_Scroller      = 8,
    cKV_StaticText    = 9,
    cKV_EditText      = 10,
    cKV_ColorButton   = 11,
    cKV_ListBox       = 12,
    cKV_PopupMenu     = 13,
    cKV_Picture       = 14,
    cKV_UserControl   = 15,
    cKV_OpenGLControl = 16
} KV_ControlType;

typedef enum KV_EditFilterType {
    cKV_NoFilter      = 0,
    cKV_UnsignedInt   = 1,
    cKV_SignedInt     = 2,
    cKV_UnsignedFloat = 3,
    cKV_SignedFloat   = 4,
    cKV_Custom        = 5
} KV_EditFilterType;

typedef enum KV_PenMode {
    cKV_PenColor = 0,
    cKV_PenXOR   = 1
} KV_PenMode;

typedef enum KV_StreamAccess {
    cKV_ReadOnly  = 0,
    cKV_WriteOnly = 1,
    cKV_ReadWrite = 2
} KV_StreamAccess;

/* Callbacks a plug-in hands to the host. */
typedef void (*KV_ControlHitFunction)(KV_Control* iControl, KV_DrawContext* iContext);
typedef void (*KV_UserDrawFunction)(const KV_Control* iControl, KV_DrawContext* iContext);
typedef int  (*KV_UserClickFunction)(const KV_Control* iControl, KV_DrawContext* iContext,
                                     int iModifierKeys, int iClickH, int iClickV);

#ifdef __cplusplus
}
#endif

#endif /* KV_TOOLBOX_TYPES_H */
