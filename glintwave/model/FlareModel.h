/*
 * FlareModel.h - colour ramps and the placement of every element in the
 * frame.
 */
#ifndef GLINTWAVE_FLARE_MODEL_H
#define GLINTWAVE_FLARE_MODEL_H

#include "glintwave/GlintwaveRecords.h"

void SortColors(int32_t elementColorCount, ElementColor* firstElementColor);
void AddColor(const ElementColor* theElementColor, const ElementColor* nextElementColor,
              double p1, double p2, double* rSum, double* gSum, double* bSum);
bool CalcRGBColors(PluginDataRec* theData, double theScale, double theIntensity,
                   double theContrast, bool grayFlag, const FlareColor* theColor,
                   int32_t elementColorCount, int32_t flareColorCount,
                   ElementColor* firstElementColor, FlareColor* firstFlareColor);

int32_t CalcFlareInfo(ControlDataRec* theControl, PluginDataRec* theData);
void CalcRingInfo(ControlDataRec* theControl, PluginDataRec* theData, RingElement* theRing,
                  double theAspectRatio, int32_t* theSize, int32_t* theBase, int32_t* result);
void CalcStreakInfo(ControlDataRec* theControl, PluginDataRec* theData, StreakElement* theStreak,
                    double theAspectRatio, int32_t* theSize, int32_t* theBase, int32_t* result);
double CalcFlareScale(ControlDataRec* theControl, PluginDataRec* theData);

#endif /* GLINTWAVE_FLARE_MODEL_H */
