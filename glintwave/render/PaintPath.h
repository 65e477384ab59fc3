/*
 * PaintPath.h - which implementation of the painters runs.
 *
 * The plain per-pixel painters are the rules; the span painters give the
 * same bytes faster by visiting only the columns a ring's ramp reaches, and
 * the vector painters do that work four or eight pixels at a time with AVX2.
 * The best one the processor supports is chosen at the first paint; tests
 * and benchmarks may force another to compare them.
 */
#ifndef GLINTWAVE_PAINT_PATH_H
#define GLINTWAVE_PAINT_PATH_H

#include <stdint.h>

enum {
    kPaintPathBest = -1,     /* whatever this processor runs fastest */
    kPaintPathPlain = 0,     /* the per-pixel rules */
    kPaintPathSpans = 1,     /* span-limited, portable C++ */
    kPaintPathVector = 2     /* span-limited, AVX2 */
};

/* The path painting uses now. */
int32_t CurrentPaintPath(void);

/* Forces a path (kPaintPathBest returns to the automatic choice). A vector
   path asked for on a processor without AVX2 falls back to the spans. */
void SetPaintPath(int32_t thePath);

/* Whether the processor runs the vector path. */
bool VectorPathAvailable(void);

#endif /* GLINTWAVE_PAINT_PATH_H */
