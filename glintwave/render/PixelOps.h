/*
 * PixelOps.h - addressing and additive writes of the two painted pixel
 * formats, shared by the ring and streak painters.
 *
 * 48-bit pixels are three uint16 (red, green, blue) on the 16320 full scale;
 * additions saturate at 16320. 32-bit pixels are one native uint32 with alpha
 * in bits 24-31 (kept), red 16-23, green 8-15, blue 0-7; a ramp value in
 * 1/64 steps is added with 6 bits of noise and then dropped to 8 bits, which
 * dithers the fraction away instead of banding.
 *
 * Pixels are read and written with memcpy: the host chooses the row bytes,
 * so a pixel need not be aligned.
 */
#ifndef GLINTWAVE_PIXEL_OPS_H
#define GLINTWAVE_PIXEL_OPS_H

#include <stdint.h>
#include <string.h>

#include "glintwave/GlintwaveRecords.h"

enum {
    kPixelSize48 = 6,
    kPixelSize32 = 4
};

/* The byte of the pixel at frame (x, y). */
inline unsigned char* PixelAddress(const GlintwaveBuffer* theBuffer, int32_t x, int32_t y, int pixelSize)
{
    intptr_t offset = (intptr_t)theBuffer->bufferRowBytes * ((intptr_t)y - theBuffer->bufferRect.top) +
                      ((intptr_t)x - theBuffer->bufferRect.left) * pixelSize;
    return static_cast<unsigned char*>(theBuffer->bufferBase) + offset;
}

inline uint16_t SaturatedAdd48(uint16_t channel, uint32_t value)
{
    uint32_t sum = channel + value;
    return (uint16_t)(sum >= (uint32_t)kFullLevel ? (uint32_t)kFullLevel : sum);
}

/* Each channel is loaded and stored on its own: a 16-bit channel never
   goes through a wider load, which would stall on the preceding narrow
   stores. */
inline void AddChannel48(unsigned char* theChannel, uint32_t value)
{
    uint16_t channel;
    memcpy(&channel, theChannel, sizeof channel);
    channel = SaturatedAdd48(channel, value);
    memcpy(theChannel, &channel, sizeof channel);
}

inline void AddPixel48(unsigned char* thePixel, uint32_t red, uint32_t green, uint32_t blue)
{
    AddChannel48(thePixel, red);
    AddChannel48(thePixel + 2, green);
    AddChannel48(thePixel + 4, blue);
}

/* The painters' dither generator: seeded with the row, advanced once per
   written pixel, so the same frame always dithers the same way. */
inline uint32_t NextDitherNoise(uint32_t* seed)
{
    *seed = *seed * 1103515245u + 12345u;
    return *seed >> 26;
}

inline uint32_t DitheredAdd32(uint32_t old8, uint32_t value, uint32_t noise)
{
    uint32_t sum = (value + (old8 << 6) + noise) >> 6;
    return sum > 255u ? 255u : sum;
}

inline void AddPixel32(unsigned char* thePixel, uint32_t red, uint32_t green, uint32_t blue, uint32_t noise)
{
    uint32_t pixel;
    memcpy(&pixel, thePixel, sizeof pixel);
    uint32_t r = DitheredAdd32((pixel >> 16) & 0xFFu, red, noise);
    uint32_t g = DitheredAdd32((pixel >> 8) & 0xFFu, green, noise);
    uint32_t b = DitheredAdd32(pixel & 0xFFu, blue, noise);
    pixel = (pixel & 0xFF000000u) | (r << 16) | (g << 8) | b;
    memcpy(thePixel, &pixel, sizeof pixel);
}

#endif /* GLINTWAVE_PIXEL_OPS_H */
