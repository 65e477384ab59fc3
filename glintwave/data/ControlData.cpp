/*
 * ControlData.cpp - the settings record: defaults, the upgrades from
 * versions 4 and 5, and the byte-order fix of a version 6 header written on
 * a machine of the other byte order.
 *
 * Old records are read as bytes with memcpy at their documented offsets:
 * they come from the host's project and need not be aligned for our types.
 */
#include <cstddef>
#include <cstring>

#include "GlintwaveData.h"
#include "RoundUtils.h"

/* Full intensity of a 16-bit colour component. */
static const int16_t kFullComponent = (int16_t)-1; /* 0xFFFF */

/* Offsets of the version 4 record, which has no declared type. */
enum {
    kV4Flags = 8,
    kV4Lens = 12,
    kV4AspectRatio = 14,
    kV4Rotation = 22,
    kV4RingScale = 30,
    kV4RingIntensity = 38,
    kV4RingContrast = 46,
    kV4RingColor = 58,
    kV4OriginGlowColor = 64,
    kV4HaloColor = 70,
    kV4OuterGlowColor = 76,
    kV4StreakScale = 86,
    kV4StreakIntensity = 94,
    kV4StreakContrast = 102,
    kV4StreakColor = 110
};

static void SetFullColor(ARGB_Color* theColor)
{
    theColor->alpha = kFullComponent;
    theColor->red = kFullComponent;
    theColor->green = kFullComponent;
    theColor->blue = kFullComponent;
}

void DefaultControl(ControlDataRec* theControl)
{
    theControl->ownerType = kFlareOwnerType;
    theControl->ownerVersion = kFlareVersion;
    theControl->flareAspectRatio = 2.0;
    theControl->flareRotation = 0.0;
    theControl->flareRingScale = 1.0;
    theControl->flareRingIntensity = 1.0;
    theControl->flareRingContrast = 1.0;
    theControl->flareStreakScale = 1.0;
    theControl->flareStreakIntensity = 1.0;
    theControl->flareStreakContrast = 1.0;
    SetFullColor(&theControl->flareRingColor);
    SetFullColor(&theControl->flareOriginGlowColor);
    SetFullColor(&theControl->flareOuterGlowColor);
    SetFullColor(&theControl->flareHaloColor);
    SetFullColor(&theControl->flareStreakColor);
    theControl->flareFlags = 0;
    theControl->flareLens = 1;
    theControl->flareRingCount = 0;
    theControl->flareStreakCount = 0;
}

void UpdateControl5(const unsigned char* oldControl, ControlDataRec* newControl)
{
    OldControlDataRec theOld;
    std::memcpy(&theOld, oldControl, sizeof theOld);

    newControl->ownerType = kFlareOwnerType;
    newControl->ownerVersion = kFlareVersion;
    newControl->flareAspectRatio = theOld.flareAspectRatio;
    newControl->flareRotation = theOld.flareRotation;
    newControl->flareRingScale = theOld.flareRingScale;
    newControl->flareRingIntensity = theOld.flareRingIntensity;
    newControl->flareRingContrast = theOld.flareRingContrast;
    newControl->flareStreakScale = theOld.flareStreakScale;
    newControl->flareStreakIntensity = theOld.flareStreakIntensity;
    newControl->flareStreakContrast = theOld.flareStreakContrast;
    newControl->flareRingColor = theOld.flareRingColor;
    newControl->flareOriginGlowColor = theOld.flareOriginGlowColor;
    newControl->flareOuterGlowColor = theOld.flareOuterGlowColor;
    newControl->flareHaloColor = theOld.flareHaloColor;
    newControl->flareStreakColor = theOld.flareStreakColor;
    newControl->flareFlags = theOld.flareFlags;
    newControl->flareLens = theOld.flareLens;
    /* The old per-ring bookkeeping is dropped on purpose: an upgraded record
       starts with no per-ring controls. */
    newControl->flareRingCount = 0;
    newControl->flareStreakCount = 0;
}

static double ReadDouble(const unsigned char* theBytes, size_t theOffset)
{
    double theValue;
    std::memcpy(&theValue, theBytes + theOffset, sizeof theValue);
    return theValue;
}

/* A version 4 colour: red, green, blue shorts, no alpha. */
static ARGB_Color ReadColor4(const unsigned char* theBytes, size_t theOffset)
{
    int16_t theRGB[3];
    std::memcpy(theRGB, theBytes + theOffset, sizeof theRGB);
    ARGB_Color theColor;
    theColor.alpha = kFullComponent;
    theColor.red = theRGB[0];
    theColor.green = theRGB[1];
    theColor.blue = theRGB[2];
    return theColor;
}

void UpdateControl4(const unsigned char* oldControl, ControlDataRec* newControl)
{
    newControl->ownerType = kFlareOwnerType;
    newControl->ownerVersion = kFlareVersion;

    uint32_t theFlags;
    std::memcpy(&theFlags, oldControl + kV4Flags, sizeof theFlags);
    newControl->flareFlags = theFlags;
    int16_t theLens;
    std::memcpy(&theLens, oldControl + kV4Lens, sizeof theLens);
    newControl->flareLens = theLens;

    newControl->flareAspectRatio = ReadDouble(oldControl, kV4AspectRatio);
    newControl->flareRotation = ReadDouble(oldControl, kV4Rotation);
    newControl->flareRingScale = ReadDouble(oldControl, kV4RingScale);
    newControl->flareRingIntensity = ReadDouble(oldControl, kV4RingIntensity);
    newControl->flareRingContrast = ReadDouble(oldControl, kV4RingContrast);
    newControl->flareStreakScale = ReadDouble(oldControl, kV4StreakScale);
    newControl->flareStreakIntensity = ReadDouble(oldControl, kV4StreakIntensity);
    newControl->flareStreakContrast = ReadDouble(oldControl, kV4StreakContrast);

    newControl->flareRingColor = ReadColor4(oldControl, kV4RingColor);
    newControl->flareOriginGlowColor = ReadColor4(oldControl, kV4OriginGlowColor);
    newControl->flareHaloColor = ReadColor4(oldControl, kV4HaloColor);
    newControl->flareOuterGlowColor = ReadColor4(oldControl, kV4OuterGlowColor);
    newControl->flareStreakColor = ReadColor4(oldControl, kV4StreakColor);

    newControl->flareRingCount = 0;
    newControl->flareStreakCount = 0;
}

static void ReverseColor(unsigned char* theBytes, size_t theOffset)
{
    for (size_t i = 0; i < 4; i++)
        ReverseField(theBytes + theOffset + 2 * i, 2);
}

void FixControl(ControlDataRec* theControl)
{
    theControl->ownerType = kFlareOwnerType;
    theControl->ownerVersion = kFlareVersion;

    unsigned char* theBytes = (unsigned char*)theControl;
    static const size_t kDoubles[] = {
        offsetof(ControlDataRec, flareAspectRatio),     offsetof(ControlDataRec, flareRotation),
        offsetof(ControlDataRec, flareRingScale),       offsetof(ControlDataRec, flareRingIntensity),
        offsetof(ControlDataRec, flareRingContrast),    offsetof(ControlDataRec, flareStreakScale),
        offsetof(ControlDataRec, flareStreakIntensity), offsetof(ControlDataRec, flareStreakContrast)};
    for (size_t theOffset : kDoubles)
        ReverseField(theBytes + theOffset, 8);

    ReverseColor(theBytes, offsetof(ControlDataRec, flareRingColor));
    ReverseColor(theBytes, offsetof(ControlDataRec, flareOriginGlowColor));
    ReverseColor(theBytes, offsetof(ControlDataRec, flareOuterGlowColor));
    ReverseColor(theBytes, offsetof(ControlDataRec, flareHaloColor));
    ReverseColor(theBytes, offsetof(ControlDataRec, flareStreakColor));

    ReverseField(theBytes + offsetof(ControlDataRec, flareFlags), 4);
    ReverseField(theBytes + offsetof(ControlDataRec, flareLens), 4);
    ReverseField(theBytes + offsetof(ControlDataRec, flareRingCount), 4);
    ReverseField(theBytes + offsetof(ControlDataRec, flareStreakCount), 4);
}
