#ifndef PALVET_IMAGING_DRAWING_H
#define PALVET_IMAGING_DRAWING_H

// Drawing and blitting on caller-owned pixel buffers. A buffer is a base
// pointer, a pitch (bytes from one row to the next) and a pixel size in bytes;
// the pixel at (x, y) starts at base + y * pitch + x * bpp. 32-bit pixels are
// ARGB words (bytes B, G, R, A in memory), not premultiplied, alpha 255
// opaque. Nothing here reports errors or allocates buffers for the caller;
// sizes below 1 do nothing. The copy, blend and stretch functions accept
// source and destination areas in one buffer, even overlapping: they then go
// row by row from the top, reading what earlier rows wrote.

#include <palvet/core/export.h>
#include <palvet/imaging/geometry.h>
// Conversion and rotation used to be declared here; kept for the code that
// includes this header for them.
#include <palvet/imaging/pixel_buffer.h>
#include <palvet/imaging/rotation.h>

// Copies the common size of the two rectangles from the source corner to the
// destination corner, row by row.
PALVET_API void DrawBufferOnBuffer(unsigned char* dst, tagRECT const& dstRect, int dstPitch,
                                   unsigned char const* src, tagRECT const& srcRect, int srcPitch, int bpp);
// The same region, blending each ARGB source pixel over the destination.
PALVET_API void AlphaDrawBufferOnBuffer_ARGB(unsigned char* dst, tagRECT const& dstRect, int dstPitch,
                                             unsigned char const* src, tagRECT const& srcRect, int srcPitch);
// Fills the whole destination rectangle from the whole source rectangle,
// nearest neighbour.
PALVET_API void StretchBufferOnBuffer(unsigned char* dst, tagRECT const& dstRect, int dstPitch,
                                      unsigned char const* src, tagRECT const& srcRect, int srcPitch, int bpp);
// The same stepping with ARGB pixels, blended over the destination.
PALVET_API void AlphaStretchBufferOnBuffer_ARGB(unsigned char* dst, tagRECT const& dstRect, int dstPitch,
                                                unsigned char const* src, tagRECT const& srcRect,
                                                int srcPitch);
// Writes color with its alpha scaled by the mask byte, (a * m) >> 8, over the
// common size of the two rectangles.
PALVET_API void SetAlphaBufferColor_ARGB(unsigned int color, unsigned char* dst, tagRECT const& dstRect,
                                         int dstPitch, unsigned char const* mask, tagRECT const& maskRect,
                                         int maskPitch);
// Stores color into every 32-bit pixel of rect.
PALVET_API void DrawColorOnBuffer(unsigned int color, unsigned char* dst, tagRECT const* rect, int pitch);
// Draws a line of lineWidth pixels with a square brush; brush holds one row
// of lineWidth pixels of bpp bytes.
PALVET_API void DrawLineOnBuffer(unsigned char* buf, tagPOINT from, tagPOINT to, int width, int height,
                                 int pitch, int bpp, int lineWidth, void const* brush);
// Copies, blends or stretches src onto dst as chosen by scale, alpha and the
// alignment mode of GetRectByMode.
PALVET_API void DrawBuffer(unsigned char* dst, tagRECT dstRect, int dstPitch, unsigned char const* src,
                           tagRECT srcRect, int srcPitch, int bpp, int scale, int alpha, int mode);

#endif
