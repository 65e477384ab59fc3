/*
 * Channels.h - the animation channels Glintwave offers the host.
 *
 * Every animatable setting is a channel: a named, typed value track the host
 * keeps and keys per frame. 'ICHN' registers them ('ACHN'), 'UCHN' writes
 * the current settings into them for a range of frames ('SCHN'), 'LCHN'
 * reads one frame's values back into the settings ('GCHN') and 'FCHN' ends
 * the exchange.
 *
 * The channels and their IDs are fixed: first the global settings, 1 to 15,
 *
 *    1 LABL "Glintwave"           heading
 *    2 REAL "Aspect Ratio"        flareAspectRatio
 *    3 REAL "Rotation"            flareRotation
 *    4 REAL "Ring Scale"          flareRingScale
 *    5 REAL "Ring Intensity"      flareRingIntensity
 *    6 REAL "Ring Contrast"       flareRingContrast
 *    7 CRGB "Origin Glow Color"   flareOriginGlowColor red, green, blue
 *    8 CRGB "Halo Color"          flareHaloColor
 *    9 CRGB "Outer Glow Color"    flareOuterGlowColor
 *   10 CRGB "Lens Reflection Color" flareRingColor
 *   11 REAL "Streak Scale"        flareStreakScale
 *   12 REAL "Streak Intensity"    flareStreakIntensity
 *   13 REAL "Streak Contrast"     flareStreakContrast
 *   14 CRGB "Streak Color"        flareStreakColor
 *   15 LEND ""                    closes the group
 *
 * then six per ring of the loaded style, in chain order, from 15 + 6 i + 1:
 * a heading with the ring's name, "Visible" (BOOL, 1 when the ring's mode
 * has its top bit clear), "Scale" and "Intensity" (REAL, the ring's floats
 * widened), "Color" (CRGB) and the group's end. Streaks have no channels.
 *
 * Channel references are the host's opaque values, kept in the plug-in data
 * header and in each RingElement; zero means the channel does not exist.
 */
#ifndef GLINTWAVE_CHANNELS_H
#define GLINTWAVE_CHANNELS_H

#include "glintwave/GlintwaveRecords.h"

/* IDs of the global channels, and how many each ring adds. */
enum {
    kChannelFirstGlobal = 1,   /* the heading */
    kChannelFirstValue  = 2,   /* Aspect Ratio */
    kChannelLastValue   = 14,  /* Streak Color */
    kChannelGlobalEnd   = 15,  /* the heading's end; ring IDs follow */
    kChannelsPerRing    = 6
};

/* Value sizes of the channel types that carry data. */
#define kChannelRealSize 8
#define kChannelBoolSize 1
#define kChannelRGBSize  6

KV_STATIC_ASSERT(sizeof(double) == kChannelRealSize, "REAL value");
KV_STATIC_ASSERT(sizeof(RGB_Color) == kChannelRGBSize, "CRGB value");

/* 'ACHN': registers a channel with a default (data as the type says, or
   null); minimum, maximum and the channel to insert before are null. Does
   nothing and returns 0 when *theResult is non-zero; otherwise the host's
   answer goes to *theResult and the new reference is returned (0 on error). */
KVChannelRef AddChannel(int32_t theID, IFFType theType, const unsigned char* theName, void* theValue,
                        void* minValue, void* maxValue, int32_t* theResult);

/* 'GCHN': theChannel's value at theFrame, theSize bytes into theData. Does
   nothing when *theResult is non-zero or theChannel is 0. A host that
   answers 0 but echoes another ID or type, or gives no data, fails it
   with 3. */
void GetChannel(KVChannelRef theChannel, int32_t theID, IFFType theType, int32_t theFrame, void* theData,
                int32_t theSize, int32_t* theResult);

/* 'SCHN': keys theData into theChannel at theFrame. Does nothing when
   *theResult is non-zero or theChannel is 0. */
void SetChannel(KVChannelRef theChannel, int32_t theID, IFFType theType, int32_t theFrame, void* theData,
                int32_t* theResult);

/* Adds the six channels of every loaded ring, stopping at the first error. */
void InitRingChannels(int32_t* theResult);

#endif /* GLINTWAVE_CHANNELS_H */
