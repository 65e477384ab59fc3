/*
 * KVPluginAPI.h - the binary interface between a Korvane host and its plug-ins.
 *
 * This header is the contract. Every record below crosses the boundary between
 * host and plug-in, so its field order and packing are fixed:
 *
 *   - records are declared in their documented order under 2-byte packing
 *     (a double may start at any even offset);
 *   - "long" is int32_t, "unsigned long" uint32_t, "short" int16_t, a record's
 *     boolean uint8_t; float and double are IEEE 32 and 64 bit;
 *   - pointers, host references, channel references and function pointers keep
 *     their native size. Built for 32 bits (-m32 -msse2 -mfpmath=sse) every
 *     offset and size equals the documented tables; the static assertions at
 *     the end prove it. On 64 bits the same order gives larger records, and
 *     every documented record size means sizeof() of that record.
 *
 * Calling convention
 *   The host calls the plug-in's one exported entry point
 *       extern "C" int32_t Main(uint32_t command, int32_t theCommandRecSize,
 *                               void* theCommandRec);
 *   with a four-character command and a record that always begins with a
 *   PluginInfoRec. The plug-in calls back through the host procedure in that
 *   record:  int32_t theHostProc(uint32_t selector, int32_t size, void* record).
 *   Both return a result code (kPlugin... below); 0 is success.
 *
 * Four-character codes (IFFType) are 32-bit unsigned integers whose first
 * character is the most significant byte: 'FLAR' == 0x464C4152. They are
 * compared as integers, never as strings.
 *
 * Texts inside records are Pascal strings (a length byte, then up to 255
 * characters) in the Mac OS Roman character set.
 */
#ifndef KV_PLUGIN_API_H
#define KV_PLUGIN_API_H

#include <stddef.h>
#include <stdint.h>

typedef uint32_t IFFType;

/* Builds a four-character code at compile time: KV_FOURCC('F','L','A','R'). */
#define KV_FOURCC(a, b, c, d) \
    ((IFFType)(((uint32_t)(uint8_t)(a) << 24) | ((uint32_t)(uint8_t)(b) << 16) | \
               ((uint32_t)(uint8_t)(c) << 8) | (uint32_t)(uint8_t)(d)))

typedef unsigned char PStr255[256];  /* length byte + up to 255 characters */
typedef unsigned char PStr31[32];    /* length byte + up to 31 characters */

/* The host procedure: (selector, record size, record) -> result code. */
typedef int32_t (*KVPluginRoutine)(IFFType selector, int32_t size, void* record);

/* ------------------------------------------------------------------------ */
/* Result codes. Internal routines pass them through an int32_t* theResult   */
/* and do nothing once it is non-zero, so the first failure travels back.    */
/* ------------------------------------------------------------------------ */
enum {
    kPluginNoError          = 0, /* "No plug-in error" */
    kPluginMemoryError      = 1, /* "Plug-in could not allocate needed memory" */
    kPluginUnsupported      = 2, /* "Unsupported plug-in command was received" */
    kPluginIncompatible     = 3, /* "Incompatible plug-in parameter record was received" */
    kPluginUserCanceled     = 4, /* "The user canceled the plug-in operation" */
    kPluginOutOfSequence    = 5, /* "A plug-in command was received out of sequence" */
    kPluginResourceMissing  = 6, /* "Plug-in could not get a required resource" */
    kPluginModeUnsupported  = 8  /* "A requested plug-in feature or mode is not supported" */
};

/* ------------------------------------------------------------------------ */
/* Commands the host sends to Main.                                          */
/* ------------------------------------------------------------------------ */
enum {
    /* 'INIT' PluginInitializeRec: set up; the plug-in rebuilds its working
       data in every case. Needs the host procedure (else 3). */
    kCmdInitialize      = KV_FOURCC('I', 'N', 'I', 'T'),
    /* 'FINI' PluginFinishRec: the plug-in is about to be unloaded. */
    kCmdFinish          = KV_FOURCC('F', 'I', 'N', 'I'),
    /* 'INFO' PluginInformationRec: fill type, version, name, copyright,
       author, description, permission. Touches no data. */
    kCmdInformation     = KV_FOURCC('I', 'N', 'F', 'O'),
    /* 'CHEK' PluginCheckRec: 0 when theCommand is understood, else 3. */
    kCmdCheck           = KV_FOURCC('C', 'H', 'E', 'K'),
    /* 'DESC' PluginDescribeRec: text of theResult into theDescription. */
    kCmdDescribe        = KV_FOURCC('D', 'E', 'S', 'C'),
    /* 'INTF' PluginInterfaceRec: run the settings dialog; 4 on cancel. */
    kCmdInterface       = KV_FOURCC('I', 'N', 'T', 'F'),
    /* 'ICHN' PluginInitializeChannelRec: register the animation channels. */
    kCmdInitChannel     = KV_FOURCC('I', 'C', 'H', 'N'),
    /* 'FCHN' PluginFinishChannelRec: end of the channel exchange. */
    kCmdFinishChannel   = KV_FOURCC('F', 'C', 'H', 'N'),
    /* 'UCHN' PluginUpdateChannelRec: write the settings into the channels
       for theStartFrame..theEndFrame. */
    kCmdUpdateChannel   = KV_FOURCC('U', 'C', 'H', 'N'),
    /* 'LCHN' PluginLoadChannelRec: read theFrame's channel values back;
       5 when the channels were never registered. */
    kCmdLoadChannel     = KV_FOURCC('L', 'C', 'H', 'N'),
    /* 'SETF' PluginFlareSetupRec: frame and light set-up before 'GENF'. */
    kCmdFlareSetup      = KV_FOURCC('S', 'E', 'T', 'F'),
    /* 'GENF' PluginFlareGenerateRec: paint into the host's frame buffer
       (depth 48 or 32) or sketch into an 8-bit one; reports 'STAT'. */
    kCmdFlareGenerate   = KV_FOURCC('G', 'E', 'N', 'F')
};

/* ------------------------------------------------------------------------ */
/* Requests the plug-in sends through the host procedure.                    */
/* ------------------------------------------------------------------------ */
enum {
    kHostFree           = KV_FOURCC('F', 'R', 'E', 'E'), /* HostFreeRec */
    kHostAllocate       = KV_FOURCC('A', 'L', 'O', 'C'), /* HostAllocateRec */
    kHostResetChannel   = KV_FOURCC('R', 'C', 'H', 'N'), /* HostResetChannelRec */
    kHostAddChannel     = KV_FOURCC('A', 'C', 'H', 'N'), /* HostAddChannelRec */
    kHostGetChannel     = KV_FOURCC('G', 'C', 'H', 'N'), /* HostGetChannelRec */
    kHostSetChannel     = KV_FOURCC('S', 'C', 'H', 'N'), /* HostSetChannelRec */
    kHostStatus         = KV_FOURCC('S', 'T', 'A', 'T'), /* HostStatusRec */
    kHostMemMalloc      = KV_FOURCC('M', 'M', 'A', 'L'), /* HostMemMallocRec */
    kHostMemFree        = KV_FOURCC('M', 'F', 'R', 'E')  /* HostMemFreeRec */
};

/* Channel value types. */
enum {
    kChannelLabel       = KV_FOURCC('L', 'A', 'B', 'L'), /* group heading, no data */
    kChannelLabelEnd    = KV_FOURCC('L', 'E', 'N', 'D'), /* closes the group, no data */
    kChannelReal        = KV_FOURCC('R', 'E', 'A', 'L'), /* one double */
    kChannelBoolean     = KV_FOURCC('B', 'O', 'O', 'L'), /* one byte, 0 or 1 */
    kChannelRGB         = KV_FOURCC('C', 'R', 'G', 'B')  /* three uint16: red, green, blue */
};

/* A host channel reference: opaque, zero when the channel does not exist. */
typedef void* KVChannelRef;

#pragma pack(push, 2)

/* ------------------------------------------------------------------------ */
/* Shared value records.                                                     */
/* ------------------------------------------------------------------------ */

/* Half-open rectangle: right and bottom are one past the last pixel; width
   and height are kept equal to right - left and bottom - top. */
typedef struct L_Rect {
    int32_t  top;
    int32_t  left;
    int32_t  bottom;
    int32_t  right;
    uint32_t width;
    uint32_t height;
} L_Rect;

typedef struct DCoordinate {
    double x;
    double y;
    double z;
} DCoordinate;

/* Sixteen doubles m00..m33, row by row. */
typedef struct Matrix4 {
    double m00, m01, m02, m03;
    double m10, m11, m12, m13;
    double m20, m21, m22, m23;
    double m30, m31, m32, m33;
} Matrix4;

/* Packed 8-bit colour: the bytes a, r, g, b in that memory order, or the
   same four bytes as one 32-bit value. */
typedef union ARGB {
    uint32_t colorValue;
    struct {
        uint8_t a;
        uint8_t r;
        uint8_t g;
        uint8_t b;
    } argb;
} ARGB;

/* 16-bit colour of the settings records; 0xFFFF is full intensity. The
   fields are declared signed and are read as 16-bit components. */
typedef struct ARGB_Color {
    int16_t alpha;
    int16_t red;
    int16_t green;
    int16_t blue;
} ARGB_Color;

typedef struct RGB_Color {
    uint16_t red;
    uint16_t green;
    uint16_t blue;
} RGB_Color;

/* ------------------------------------------------------------------------ */
/* Command records. Each begins with theInfo; Main copies its six fields     */
/* into the plug-in's globals before dispatching.                            */
/* ------------------------------------------------------------------------ */

typedef struct PluginInfoRec {
    void*           theControlData;     /* settings block, saved with the project */
    int32_t         theControlDataSize;
    void*           thePluginData;      /* working block, kept between calls */
    int32_t         thePluginDataSize;
    KVPluginRoutine theHostProc;        /* may be null */
    void*           theHostReference;   /* passed back in every host request */
} PluginInfoRec;

typedef struct PluginInitializeRec { PluginInfoRec theInfo; } PluginInitializeRec;
typedef struct PluginFinishRec     { PluginInfoRec theInfo; } PluginFinishRec;
typedef struct PluginInterfaceRec  { PluginInfoRec theInfo; } PluginInterfaceRec;
typedef struct PluginFinishChannelRec { PluginInfoRec theInfo; } PluginFinishChannelRec;

typedef struct PluginInformationRec {
    PluginInfoRec theInfo;
    IFFType       thePluginType;
    int32_t       thePluginVersion;
    PStr255       thePluginName;
    PStr255       thePluginCopyright;
    PStr255       thePluginAuthor;
    PStr255       thePluginDescription;
    uint32_t      thePluginPermission;
} PluginInformationRec;

typedef struct PluginCheckRec {
    PluginInfoRec theInfo;
    IFFType       theCommand;           /* the command asked about */
} PluginCheckRec;

typedef struct PluginDescribeRec {
    PluginInfoRec theInfo;
    int32_t       theResult;            /* a result code */
    PStr255       theDescription;       /* out: its text */
} PluginDescribeRec;

typedef struct PluginInitializeChannelRec {
    PluginInfoRec theInfo;
    int32_t       theStartFrame;
    int32_t       theEndFrame;
    double        theStartTime;
    double        theFrameTime;
} PluginInitializeChannelRec;

typedef PluginInitializeChannelRec PluginUpdateChannelRec;

typedef struct PluginLoadChannelRec {
    PluginInfoRec theInfo;
    int32_t       theStartFrame;
    int32_t       theEndFrame;
    double        theStartTime;
    double        theFrameTime;
    int32_t       theFrame;
} PluginLoadChannelRec;

typedef struct PluginFlareSetupRec {
    PluginInfoRec theInfo;
    int32_t       theFrameIndex;
    double        theFrameTime;
    double        theFrameTimeDelta;
    L_Rect        theFrameRect;
    double        theFrameXScale;
    double        theFrameYScale;
    double        theFrameXCenter;
    double        theFrameYCenter;
    double        theBlurShutter;
    Matrix4       theCameraMatrix;
    Matrix4       theCameraRotMatrix;
    Matrix4       theCameraBlurMatrix;
    DCoordinate   theLightWorldPosition;
    DCoordinate   theLightBlurWorldPosition;
    DCoordinate   theLightFramePosition;
    DCoordinate   theLightBlurFramePosition;
    DCoordinate   theLightDirection;
    DCoordinate   theLightBlurDirection;
    ARGB          theLightColor;
    double        theLightIntensity;
    double        theLightDropoff;
    double        theLightWorldRadius;
    double        theLightFrameRadius;
    double        theLightOuterAngle;
    double        theLightInnerAngle;
    double        theLightSoftExponent;
    double        theCameraView;
    double        theCameraZoom;
    double        theCameraXScale;
    double        theCameraYScale;
    double        theCameraXOffset;
    double        theCameraYOffset;
    Matrix4       theLightMatrix;
    Matrix4       theLightRotMatrix;
    Matrix4       theLightBlurMatrix;
} PluginFlareSetupRec;

/* The host's frame buffer for 'GENF'. bufferBase addresses the pixel at
   (bufferRect.left, bufferRect.top); rows are bufferRowBytes apart.
   Depth 48: three uint16 per pixel, red, green, blue, full level 16320.
   Depth 32: one uint32 per pixel, alpha in bits 24-31, red 16-23, green
   8-15, blue 0-7. Depth 8: one byte per pixel (the sketch). */
typedef struct FlareBuffer {
    void*    bufferBase;
    int32_t  bufferRowBytes;
    L_Rect   bufferRect;
    int16_t  bufferDepth;
    int32_t  bufferIndex;               /* sketch colour index (low 8 bits) */
} FlareBuffer;

typedef struct PluginFlareGenerateRec {
    PluginInfoRec theInfo;
    FlareBuffer   theFlareBuffer;
} PluginFlareGenerateRec;

/* ------------------------------------------------------------------------ */
/* Host request records. Each begins with theReference, which the plug-in    */
/* sets to the current theHostReference before the call.                     */
/* ------------------------------------------------------------------------ */

/* 'FREE': out theFreeSize = bytes the host will give the plug-in data
   block (the plug-in clears it before asking). */
typedef struct HostFreeRec {
    void*   theReference;
    int32_t theFreeSize;
} HostFreeRec;

/* 'ALOC': in the current blocks and the wanted sizes; out the blocks and
   sizes now given. Either block may move. A host that fails must leave the
   record describing valid blocks: the plug-in adopts it whatever the answer. */
typedef struct HostAllocateRec {
    void*   theReference;
    void*   theControlData;
    int32_t theControlDataSize;
    void*   thePluginData;
    int32_t thePluginDataSize;
} HostAllocateRec;

/* 'RCHN': drop every channel the plug-in registered. A host that does not
   know the request answers 2, which the plug-in takes as success. */
typedef struct HostResetChannelRec {
    void* theReference;
} HostResetChannelRec;

/* 'ACHN': register a channel; out theChannelReference. */
typedef struct HostAddChannelRec {
    void*        theReference;
    int32_t      theChannelID;
    IFFType      theChannelType;
    PStr255      theChannelName;
    void*        theChannelDefault;     /* data as the type says, or null */
    void*        theChannelMinimum;     /* null */
    void*        theChannelMaximum;     /* null */
    KVChannelRef theChannelBefore;      /* null: append */
    KVChannelRef theChannelReference;   /* out */
} HostAddChannelRec;

/* 'GCHN' (the host echoes ID and type and points theChannelData at its
   value) and 'SCHN' (theChannelData points at the value to store). */
typedef struct HostGetChannelRec {
    void*        theReference;
    KVChannelRef theChannelReference;
    int32_t      theChannelID;
    IFFType      theChannelType;
    int32_t      theChannelFrame;
    void*        theChannelData;
} HostGetChannelRec;

typedef HostGetChannelRec HostSetChannelRec;

/* 'STAT': progress report, sent whole. The host's answer is how a user's
   cancel reaches the plug-in (4). theStatusTick is the earliest tick count
   (sixtieths of a second, see TickCount) for the next report; 0 = at once. */
typedef struct HostStatusRec {
    void*   theReference;
    float   theStatusPos;               /* fraction done, 0.0 to 1.0 */
    PStr255 theStatusUnit;              /* what is counted */
    PStr255 theStatusInfo;              /* the heading */
    int32_t theStatusMin;
    int32_t theStatusMax;
    int32_t theStatusValue;
    int32_t theStatusTick;
} HostStatusRec;

/* 'MMAL': in theSize, in/out thePtr. 'MFRE': give thePtr back. */
typedef struct HostMemMallocRec {
    void*    theReference;
    uint32_t theSize;
    void*    thePtr;
} HostMemMallocRec;

typedef struct HostMemFreeRec {
    void* theReference;
    void* thePtr;
} HostMemFreeRec;

#pragma pack(pop)

/* The sizes passed with each host request: sizeof the record. */
#define KV_FREE_REC_SIZE        ((int32_t)sizeof(HostFreeRec))
#define KV_ALLOCATE_REC_SIZE    ((int32_t)sizeof(HostAllocateRec))

#ifdef __cplusplus
#define KV_STATIC_ASSERT(c, m) static_assert(c, m)
#else
#define KV_STATIC_ASSERT(c, m) _Static_assert(c, m)
#endif

/* On a 32-bit build every record has its documented offsets and size. */
#if UINTPTR_MAX == 0xFFFFFFFFu
KV_STATIC_ASSERT(sizeof(L_Rect) == 24, "L_Rect");
KV_STATIC_ASSERT(sizeof(DCoordinate) == 24, "DCoordinate");
KV_STATIC_ASSERT(sizeof(Matrix4) == 128, "Matrix4");
KV_STATIC_ASSERT(sizeof(ARGB) == 4, "ARGB");
KV_STATIC_ASSERT(sizeof(ARGB_Color) == 8, "ARGB_Color");
KV_STATIC_ASSERT(sizeof(PluginInfoRec) == 24, "PluginInfoRec");
KV_STATIC_ASSERT(offsetof(PluginInfoRec, theControlDataSize) == 4, "PluginInfoRec");
KV_STATIC_ASSERT(offsetof(PluginInfoRec, thePluginData) == 8, "PluginInfoRec");
KV_STATIC_ASSERT(offsetof(PluginInfoRec, thePluginDataSize) == 12, "PluginInfoRec");
KV_STATIC_ASSERT(offsetof(PluginInfoRec, theHostProc) == 16, "PluginInfoRec");
KV_STATIC_ASSERT(offsetof(PluginInfoRec, theHostReference) == 20, "PluginInfoRec");
KV_STATIC_ASSERT(sizeof(PluginInitializeRec) == 24, "PluginInitializeRec");
KV_STATIC_ASSERT(sizeof(PluginFinishRec) == 24, "PluginFinishRec");
KV_STATIC_ASSERT(sizeof(PluginInterfaceRec) == 24, "PluginInterfaceRec");
KV_STATIC_ASSERT(sizeof(PluginFinishChannelRec) == 24, "PluginFinishChannelRec");
KV_STATIC_ASSERT(offsetof(PluginInformationRec, thePluginType) == 24, "INFO");
KV_STATIC_ASSERT(offsetof(PluginInformationRec, thePluginVersion) == 28, "INFO");
KV_STATIC_ASSERT(offsetof(PluginInformationRec, thePluginName) == 32, "INFO");
KV_STATIC_ASSERT(offsetof(PluginInformationRec, thePluginCopyright) == 288, "INFO");
KV_STATIC_ASSERT(offsetof(PluginInformationRec, thePluginAuthor) == 544, "INFO");
KV_STATIC_ASSERT(offsetof(PluginInformationRec, thePluginDescription) == 800, "INFO");
KV_STATIC_ASSERT(offsetof(PluginInformationRec, thePluginPermission) == 1056, "INFO");
KV_STATIC_ASSERT(sizeof(PluginInformationRec) == 1060, "INFO");
KV_STATIC_ASSERT(sizeof(PluginCheckRec) == 28, "CHEK");
KV_STATIC_ASSERT(offsetof(PluginDescribeRec, theDescription) == 28, "DESC");
KV_STATIC_ASSERT(sizeof(PluginDescribeRec) == 284, "DESC");
KV_STATIC_ASSERT(offsetof(PluginInitializeChannelRec, theStartTime) == 32, "ICHN");
KV_STATIC_ASSERT(offsetof(PluginInitializeChannelRec, theFrameTime) == 40, "ICHN");
KV_STATIC_ASSERT(sizeof(PluginInitializeChannelRec) == 48, "ICHN");
KV_STATIC_ASSERT(offsetof(PluginLoadChannelRec, theFrame) == 48, "LCHN");
KV_STATIC_ASSERT(sizeof(PluginLoadChannelRec) == 52, "LCHN");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theFrameTime) == 28, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theFrameRect) == 44, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theFrameXScale) == 68, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theFrameYCenter) == 92, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theBlurShutter) == 100, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theCameraMatrix) == 108, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theCameraRotMatrix) == 236, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theCameraBlurMatrix) == 364, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theLightWorldPosition) == 492, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theLightFramePosition) == 540, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theLightBlurFramePosition) == 564, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theLightBlurDirection) == 612, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theLightColor) == 636, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theLightIntensity) == 640, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theLightFrameRadius) == 664, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theLightSoftExponent) == 688, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theCameraView) == 696, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theCameraYOffset) == 736, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theLightMatrix) == 744, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theLightRotMatrix) == 872, "SETF");
KV_STATIC_ASSERT(offsetof(PluginFlareSetupRec, theLightBlurMatrix) == 1000, "SETF");
KV_STATIC_ASSERT(sizeof(PluginFlareSetupRec) == 1128, "SETF");
KV_STATIC_ASSERT(sizeof(FlareBuffer) == 38, "FlareBuffer");
KV_STATIC_ASSERT(offsetof(PluginFlareGenerateRec, theFlareBuffer) == 24, "GENF");
KV_STATIC_ASSERT(offsetof(PluginFlareGenerateRec, theFlareBuffer.bufferRowBytes) == 28, "GENF");
KV_STATIC_ASSERT(offsetof(PluginFlareGenerateRec, theFlareBuffer.bufferRect) == 32, "GENF");
KV_STATIC_ASSERT(offsetof(PluginFlareGenerateRec, theFlareBuffer.bufferDepth) == 56, "GENF");
KV_STATIC_ASSERT(offsetof(PluginFlareGenerateRec, theFlareBuffer.bufferIndex) == 58, "GENF");
KV_STATIC_ASSERT(sizeof(PluginFlareGenerateRec) == 62, "GENF");
KV_STATIC_ASSERT(sizeof(HostFreeRec) == 8, "FREE");
KV_STATIC_ASSERT(sizeof(HostAllocateRec) == 20, "ALOC");
KV_STATIC_ASSERT(sizeof(HostResetChannelRec) == 4, "RCHN");
KV_STATIC_ASSERT(offsetof(HostAddChannelRec, theChannelName) == 12, "ACHN");
KV_STATIC_ASSERT(offsetof(HostAddChannelRec, theChannelDefault) == 268, "ACHN");
KV_STATIC_ASSERT(offsetof(HostAddChannelRec, theChannelReference) == 284, "ACHN");
KV_STATIC_ASSERT(sizeof(HostAddChannelRec) == 288, "ACHN");
KV_STATIC_ASSERT(offsetof(HostGetChannelRec, theChannelFrame) == 16, "GCHN");
KV_STATIC_ASSERT(sizeof(HostGetChannelRec) == 24, "GCHN");
KV_STATIC_ASSERT(offsetof(HostStatusRec, theStatusPos) == 4, "STAT");
KV_STATIC_ASSERT(offsetof(HostStatusRec, theStatusUnit) == 8, "STAT");
KV_STATIC_ASSERT(offsetof(HostStatusRec, theStatusInfo) == 264, "STAT");
KV_STATIC_ASSERT(offsetof(HostStatusRec, theStatusMin) == 520, "STAT");
KV_STATIC_ASSERT(offsetof(HostStatusRec, theStatusTick) == 532, "STAT");
KV_STATIC_ASSERT(sizeof(HostStatusRec) == 536, "STAT");
KV_STATIC_ASSERT(sizeof(HostMemMallocRec) == 12, "MMAL");
KV_STATIC_ASSERT(sizeof(HostMemFreeRec) == 8, "MFRE");
#endif

#endif /* KV_PLUGIN_API_H */
