/*
 * FlareRender.h - scan conversion, painting, the sketch, progress, and the
 * 'GENF' command.
 */
#ifndef GLINTWAVE_FLARE_RENDER_H
#define GLINTWAVE_FLARE_RENDER_H

#include "glintwave/GlintwaveRecords.h"

#pragma pack(push, 2)
typedef struct FacetPoint {
    double x;
    double y;
} FacetPoint;
#pragma pack(pop)
typedef FacetPoint FacetPoints[4];

void SetEdge(EdgeRecord* theEdge, int32_t theTop, double xp1, double yp1, double xp2, double yp2,
             int16_t* xMin, int16_t* yMin, int16_t* xMax, int16_t* yMax);
bool CalcEdges(const L_Rect* theRect, L_Rect* theBounds, EdgeRecord* edges, FacetPoints points,
               int16_t numPoints);
bool SliceEdges(const L_Rect* theRect, int32_t y, EdgeRecord* edges, int16_t* edgeLeft,
                int16_t* edgeRight);

void PaintRings48(ControlDataRec* theControl, PluginDataRec* theData, const L_Rect* curRect, int32_t y);
void PaintRings32(ControlDataRec* theControl, PluginDataRec* theData, const L_Rect* curRect, int32_t y);
void PaintStreaks48(ControlDataRec* theControl, PluginDataRec* theData, const L_Rect* curRect, int32_t y);
void PaintStreaks32(ControlDataRec* theControl, PluginDataRec* theData, const L_Rect* curRect, int32_t y);

int32_t GenerateFlare(ControlDataRec* theControl, PluginDataRec* theData, int16_t theDepth,
                      bool statusFlag);
void PaintFlare48(ControlDataRec* theControl, PluginDataRec* theData, bool statusFlag, int32_t* result);
void PaintFlare32(ControlDataRec* theControl, PluginDataRec* theData, bool statusFlag, int32_t* result);
void SketchFlare(ControlDataRec* theControl, PluginDataRec* theData, bool statusFlag, int32_t* result);
void SketchRing(const GlintwaveBuffer* theBuffer, const RingElement* theRing, double sinTheta,
                double cosTheta);

bool StatusTime(const PluginDataRec* theData);
void UpdateStatus(PluginDataRec* theData, float thePos, int32_t theValue, int32_t* result);
void CheckStatus(PluginDataRec* theData, int32_t* result);

/* 'GENF'. */
int32_t DoGenerate(int32_t theCommandRecSize, void* theCommandRec);

#endif /* GLINTWAVE_FLARE_RENDER_H */
