/*
 * GlintwaveData.h - settings, working data, the flare table file and the
 * data check that every data-using command runs first.
 */
#ifndef GLINTWAVE_DATA_H
#define GLINTWAVE_DATA_H

#include "glintwave/GlintwaveRecords.h"
#include "KVToolboxTypes.h"

/* The open flare table file, or null. Opened on demand, closed by Main after
   every command. */
extern KV_ResourceFile* resourceFile;

/* Set by the settings dialog's edits; sticky while the plug-in is loaded. */
extern bool sResetElementsFlag;
extern bool sResetColorsFlag;

/* The blocks of the current call, typed. */
ControlDataRec* TheControl(void);
PluginDataRec*  TheData(void);

/* Settings record. */
void DefaultControl(ControlDataRec* theControl);
void UpdateControl5(const unsigned char* oldControl, ControlDataRec* newControl);
void UpdateControl4(const unsigned char* oldControl, ControlDataRec* newControl);
void FixControl(ControlDataRec* theControl);

/* Working record. */
void DefaultData(PluginDataRec* theData);
void ResetFlareColors(void);
void ResetFlareElements(void);

/* Flare table file. */
void OpenTheResource(int32_t* theResult);
void CloseTheResource(void);
void FixFlareInfo(FlareInfoRec* theInfo);
void FixFlareRes(FlareResRec* theRes);
void FixRing(RingRes* theRing);
void FixStreak(StreakRes* theStreak);
void FixElementColor(ElementColor* theColor);
void FixFlareRingControl(RingControl* theControl);

/* Element loading. */
int32_t ReadFlareElements(ControlDataRec* theControl, PluginDataRec* theData,
                          KV_ResourceFile* iResourceFile);
void CopyFlareElements(ControlDataRec* theControl, PluginDataRec* theData);

/* Data check and rebuild. */
int32_t CheckData(bool setControlData, bool setPluginData);
void CheckControlData(bool setControlData, bool* resetPluginData, int32_t* theResult);
void CheckPluginData(bool setPluginData, bool resetPluginData, int32_t* theResult);

#endif /* GLINTWAVE_DATA_H */
