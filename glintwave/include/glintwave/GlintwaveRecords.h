/*
 * GlintwaveRecords.h - the records of Glintwave's two host-owned blocks and
 * of its flare table resources.
 *
 * The control data block (ControlDataRec + one RingControl per ring) is saved
 * with the host's project: its offsets are a persisted format. The plug-in
 * data block (PluginDataRec + the element area) is working memory the host
 * keeps between calls; everything in the element area is linked by byte
 * offsets from the start of the block, never by pointers, because the host
 * may move the block on any request.
 *
 * All records use the host interface's 2-byte packing (see KVPluginAPI.h).
 */
#ifndef GLINTWAVE_RECORDS_H
#define GLINTWAVE_RECORDS_H

#include "KVPluginAPI.h"

/* The plug-in's type and settings version. */
enum {
    kFlareOwnerType       = KV_FOURCC('F', 'L', 'A', 'R'),
    kFlareOwnerTypeSwapped = 0x52414C46u,   /* 'FLAR' written by the other byte order */
    kFlareVersion         = 6,
    kFlareVersionSwapped  = 0x06000000
};

/* Resource types of the flare table file Glintwave.rsc. */
enum {
    kFlareResType  = KV_FOURCC('F', 'L', 'A', 'R'),  /* FlareInfoRec, ID 1000 + style */
    kRingResType   = KV_FOURCC('R', 'I', 'N', 'G'),  /* RingRes */
    kStreakResType = KV_FOURCC('S', 'T', 'R', 'K'),  /* StreakRes */
    kFlareResBaseID = 1000
};

/* Bits of flareFlags. Most switch a feature off when set; 29, 30 and 31
   switch one on. */
enum {
    kFlagNoLightRotation  = 20,  /* ignore the light's rotation */
    kFlagNoLightSize      = 21,  /* ignore the light's size */
    kFlagWireframe        = 22,  /* preview drawn as wireframe */
    kFlagNoLightIntensity = 23,  /* ignore the light's intensity */
    kFlagNoRings          = 24,  /* rings and reflections off */
    kFlagNoStreaks        = 25,  /* streaks off */
    kFlagNoHalo           = 26,  /* halos off */
    kFlagNoOuterGlow      = 27,  /* outer glows off */
    kFlagNoOriginGlow     = 28,  /* origin glows off */
    kFlagStreakGray       = 29,  /* streak colours evaluated grey */
    kFlagRingGray         = 30,  /* ring colours evaluated grey */
    kFlagUseAspectRatio   = 31   /* use flareAspectRatio (else 1.0) */
};

#define FLARE_FLAG(bit) ((uint32_t)1u << (bit))

/* Top bit of an element's mode: the element starts switched off. */
#define kElementOffMode 0x80000000u

/* Ring kinds (ringType / ringResType). */
enum {
    kRingReflection = 0,
    kRingOriginGlow = 1,
    kRingOuterGlow  = 2,
    kRingHalo       = 3
};

/* Full level of a colour stop, ramp entry and 48-bit channel: 255 x 64. */
#define kFullLevel 16320

#pragma pack(push, 2)

/* ------------------------------------------------------------------------ */
/* Control data: version 6 header, native byte order.                        */
/* ------------------------------------------------------------------------ */
typedef struct ControlDataRec {
    IFFType    ownerType;
    int32_t    ownerVersion;
    double     flareAspectRatio;
    double     flareRotation;          /* degrees */
    double     flareRingScale;
    double     flareRingIntensity;
    double     flareRingContrast;
    double     flareStreakScale;
    double     flareStreakIntensity;
    double     flareStreakContrast;
    ARGB_Color flareRingColor;
    ARGB_Color flareOriginGlowColor;
    ARGB_Color flareOuterGlowColor;
    ARGB_Color flareHaloColor;
    ARGB_Color flareStreakColor;
    uint32_t   flareFlags;
    int32_t    flareLens;              /* style number: 'FLAR' resource 1000 + lens */
    int32_t    flareRingCount;
    int32_t    flareStreakCount;
} ControlDataRec, *ControlDataPtr;

/* Version 5 settings, recognised only to upgrade them. */
typedef struct OldControlDataRec {
    IFFType    ownerType;
    int32_t    ownerVersion;
    double     flareAspectRatio;
    double     flareRotation;
    double     flareRingScale;
    double     flareRingIntensity;
    double     flareRingContrast;
    double     flareStreakScale;
    double     flareStreakIntensity;
    double     flareStreakContrast;
    uint32_t   flareFlags;
    int32_t    flareLens;
    int32_t    flareRingCount;
    int32_t    flareRingFirst;
    ARGB_Color flareRingColor;
    ARGB_Color flareOriginGlowColor;
    ARGB_Color flareOuterGlowColor;
    ARGB_Color flareHaloColor;
    int32_t    flareStreakCount;
    int32_t    flareStreakFirst;
    ARGB_Color flareStreakColor;
    int32_t    flareControlSize;
    int32_t    filler;
} OldControlDataRec;

/* Per-ring override behind the control header; stored big-endian at rest. */
typedef struct RingControl {
    double     ringScale;
    double     ringIntensity;
    ARGB_Color ringColor;              /* all 0xFFFF: untinted; all 0: ring off */
} RingControl;

/* ------------------------------------------------------------------------ */
/* Working data.                                                             */
/* ------------------------------------------------------------------------ */

/* The image being painted. bufferBase addresses (bufferRect.left,
   bufferRect.top); depth 48, 32 or 8 (sketch). */
typedef struct GlintwaveBuffer {
    void*   bufferBase;
    int32_t bufferRowBytes;
    L_Rect  bufferRect;
    int32_t bufferDepth;
    int32_t bufferIndex;
} GlintwaveBuffer;

typedef struct PluginDataRec {
    PluginInfoRec*  theInfo;           /* not filled by this plug-in */
    HostStatusRec   theStatusRec;      /* progress record for 'STAT' */
    GlintwaveBuffer flarePixelBuffer;
    double          flareXScale;
    double          flareYScale;
    double          flareXCenter;
    double          flareYCenter;
    double          flareXPosition;
    double          flareYPosition;
    double          flareBlurXPosition;
    double          flareBlurYPosition;
    double          flareLightIntensity;
    double          flareLightRotation;  /* degrees */
    double          flareLightSize;
    L_Rect          flareRect;
    KVPluginRoutine flareHostProc;
    void*           flareHostReference;
    ARGB            flareLightColor;
    KVChannelRef    flareLabelChannel;
    KVChannelRef    flareAspectRatioChannel;
    KVChannelRef    flareRotationChannel;
    KVChannelRef    flareRingScaleChannel;
    KVChannelRef    flareRingIntensityChannel;
    KVChannelRef    flareRingContrastChannel;
    KVChannelRef    flareOriginGlowColorChannel;
    KVChannelRef    flareHaloColorChannel;
    KVChannelRef    flareOuterGlowColorChannel;
    KVChannelRef    flareRingColorChannel;
    KVChannelRef    flareStreakScaleChannel;
    KVChannelRef    flareStreakIntensityChannel;
    KVChannelRef    flareStreakContrastChannel;
    KVChannelRef    flareStreakColorChannel;
    KVChannelRef    flareEndChannel;
    int32_t         flareRingFirst;    /* offset of the first RingElement, 0 if none */
    int32_t         flareStreakFirst;  /* offset of the first StreakElement, 0 if none */
    int32_t         flareElementSize;  /* end of the loaded elements */
    int32_t         flareDataSize;     /* end of everything in use */
    int32_t         flareReset;        /* non-zero: recompute colours and layout */
} PluginDataRec, *PluginDataPtr;

/* One colour stop. Stored with an integer radius; after loading, radius is a
   float fraction of the element's outer size and red, green, blue are in
   0..16320. Only the rgb view is used. */
typedef union ElementColor {
    struct {
        float    radius;
        uint16_t alpha;
        uint16_t red;
        uint16_t green;
        uint16_t blue;
    } rgb;
    struct {
        int32_t  position;
        uint16_t alpha;
        uint16_t hue;
        uint16_t saturation;
        uint16_t value;
    } hsv;
} ElementColor, *ElementColorPtr;

/* One entry of a computed colour ramp, 0..16320 per channel. Also the 48-bit
   pixel layout. */
typedef struct FlareColor {
    uint16_t red;
    uint16_t green;
    uint16_t blue;
} FlareColor, *FlareColorPtr;

/* One edge of a scan-converted outline. */
typedef struct EdgeRecord {
    int32_t curXPos;   /* whole-pixel crossing for the next row consumed */
    int32_t y1;        /* first row; while scanning the last row consumed; 32767 = inactive */
    int32_t y2;        /* last row, inclusive */
    float   step;      /* dx per row */
    float   xPos;      /* exact crossing that curXPos was rounded from */
} EdgeRecord;

typedef struct RingElement {
    PStr31       ringName;
    float        ringPosition;         /* 1.0 at the light, 0.0 at the frame centre */
    float        ringInner;
    float        ringOuter;
    float        ringScale;
    float        ringIntensity;
    ARGB_Color   ringColor;
    int32_t      ringNext;             /* offset of the next ring, 0 for the last */
    int32_t      ringType;
    uint32_t     ringMode;
    int32_t      ringElementColors;    /* stops stored right behind the element */
    L_Rect       ringRect;
    float        ringXPos;
    float        ringYPos;
    float        ringXRadius;
    float        ringYRadius;
    float        ringXFactor;
    float        ringYFactor;
    int32_t      ringFlareColors;      /* ramp steps; 0 = not drawn */
    int32_t      ringFlareColorBase;   /* offset of the ramp, 0 if none */
    KVChannelRef ringLabelChannel;
    KVChannelRef ringVisibleChannel;
    KVChannelRef ringScaleChannel;
    KVChannelRef ringIntensityChannel;
    KVChannelRef ringColorChannel;
    KVChannelRef ringEndChannel;
} RingElement, *RingElementPtr;

typedef struct StreakElement {
    float        streakPosition;
    float        streakX;
    float        streakY;
    float        streakInner;
    float        streakOuter;
    float        streakScale;
    float        streakIntensity;
    ARGB_Color   streakColor;
    int32_t      streakNext;
    uint32_t     streakMode;
    int32_t      streakElementColors;
    L_Rect       streakRect;
    float        streakXPos;
    float        streakYPos;
    float        streakDX;
    float        streakDY;
    EdgeRecord   streakEdges[4];
    int32_t      streakFlareColors;
    int32_t      streakFlareColorBase;
} StreakElement, *StreakElementPtr;

/* ------------------------------------------------------------------------ */
/* Flare table resources as stored: big-endian, converted in place after    */
/* reading.                                                                  */
/* ------------------------------------------------------------------------ */
typedef struct FlareResRec {
    IFFType flareElementType;          /* 'RING' or 'STRK'; others are skipped */
    int16_t flareFirstID;
    int16_t flareLastID;               /* inclusive */
} FlareResRec;

typedef struct FlareInfoRec {
    int32_t     flareElementCount;
    FlareResRec flareElements[1];      /* flareElementCount entries */
} FlareInfoRec;

typedef struct RingRes {
    PStr31   ringResName;
    int32_t  ringResType;
    uint32_t ringResMode;
    int32_t  ringResUnits;             /* fixed-point denominator */
    int32_t  ringResOffset;
    int32_t  ringResInside;
    int32_t  ringResOutside;
    int32_t  ringResColors;            /* declared number of stops */
} RingRes;

typedef struct StreakRes {
    PStr31   streakResName;
    int32_t  streakResType;
    uint32_t streakResMode;
    int32_t  streakResUnits;
    int32_t  streakResOffset;
    int32_t  streakResInside;
    int32_t  streakResOutside;
    int32_t  streakResDirX;
    int32_t  streakResDirY;
    int32_t  streakResColors;
} StreakRes;

#pragma pack(pop)

/* Header sizes of the stored element resources and of one stored stop. */
#define kRingResHeaderSize   60
#define kStreakResHeaderSize 68
#define kStoredColorSize     12

KV_STATIC_ASSERT(sizeof(ControlDataRec) == 128, "ControlDataRec");
KV_STATIC_ASSERT(offsetof(ControlDataRec, flareRingColor) == 72, "ControlDataRec");
KV_STATIC_ASSERT(offsetof(ControlDataRec, flareFlags) == 112, "ControlDataRec");
KV_STATIC_ASSERT(sizeof(OldControlDataRec) == 144, "OldControlDataRec");
KV_STATIC_ASSERT(offsetof(OldControlDataRec, flareFlags) == 72, "OldControlDataRec");
KV_STATIC_ASSERT(offsetof(OldControlDataRec, flareRingColor) == 88, "OldControlDataRec");
KV_STATIC_ASSERT(offsetof(OldControlDataRec, flareStreakCount) == 120, "OldControlDataRec");
KV_STATIC_ASSERT(offsetof(OldControlDataRec, flareStreakColor) == 128, "OldControlDataRec");
KV_STATIC_ASSERT(sizeof(RingControl) == 24, "RingControl");
KV_STATIC_ASSERT(sizeof(ElementColor) == 12, "ElementColor");
KV_STATIC_ASSERT(sizeof(FlareColor) == 6, "FlareColor");
KV_STATIC_ASSERT(sizeof(EdgeRecord) == 20, "EdgeRecord");
KV_STATIC_ASSERT(sizeof(FlareResRec) == 8, "FlareResRec");
KV_STATIC_ASSERT(sizeof(RingRes) == kRingResHeaderSize, "RingRes");
KV_STATIC_ASSERT(sizeof(StreakRes) == kStreakResHeaderSize, "StreakRes");

#if UINTPTR_MAX == 0xFFFFFFFFu
KV_STATIC_ASSERT(sizeof(GlintwaveBuffer) == 40, "GlintwaveBuffer");
KV_STATIC_ASSERT(offsetof(PluginDataRec, flarePixelBuffer) == 540, "PluginDataRec");
KV_STATIC_ASSERT(offsetof(PluginDataRec, flareXScale) == 580, "PluginDataRec");
KV_STATIC_ASSERT(offsetof(PluginDataRec, flareRect) == 668, "PluginDataRec");
KV_STATIC_ASSERT(offsetof(PluginDataRec, flareLightColor) == 700, "PluginDataRec");
KV_STATIC_ASSERT(offsetof(PluginDataRec, flareLabelChannel) == 704, "PluginDataRec");
KV_STATIC_ASSERT(offsetof(PluginDataRec, flareEndChannel) == 760, "PluginDataRec");
KV_STATIC_ASSERT(offsetof(PluginDataRec, flareRingFirst) == 764, "PluginDataRec");
KV_STATIC_ASSERT(sizeof(PluginDataRec) == 784, "PluginDataRec");
KV_STATIC_ASSERT(offsetof(RingElement, ringRect) == 76, "RingElement");
KV_STATIC_ASSERT(offsetof(RingElement, ringFlareColors) == 124, "RingElement");
KV_STATIC_ASSERT(offsetof(RingElement, ringLabelChannel) == 132, "RingElement");
KV_STATIC_ASSERT(offsetof(RingElement, ringEndChannel) == 152, "RingElement");
KV_STATIC_ASSERT(sizeof(RingElement) == 156, "RingElement");
KV_STATIC_ASSERT(offsetof(StreakElement, streakRect) == 48, "StreakElement");
KV_STATIC_ASSERT(offsetof(StreakElement, streakEdges) == 88, "StreakElement");
KV_STATIC_ASSERT(sizeof(StreakElement) == 176, "StreakElement");
#endif

#endif /* GLINTWAVE_RECORDS_H */
