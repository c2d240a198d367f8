#ifndef PALVET_IMAGING_DRAWING_H
#define PALVET_IMAGING_DRAWING_H

// Operations on caller-owned pixel buffers. A buffer is a base pointer, a
// pitch (bytes from one row to the next) and a pixel size in bytes; the pixel
// at (x, y) starts at base + y * pitch + x * bpp. 32-bit pixels are ARGB words
// (bytes B, G, R, A in memory), not premultiplied, alpha 255 opaque.
// Nothing here reports errors or allocates buffers for the caller; sizes
// below 1 do nothing. The copy, blend and stretch functions accept source and
// destination areas in one buffer, even overlapping: they then go row by row
// from the top, reading what earlier rows wrote. Rotations need distinct
// buffers.

#include <palvet/core/export.h>
#include <palvet/imaging/geometry.h>

// ---- Pixel-buffer conversion -------------------------------------------

// Sets w * bpp bytes of each of h rows, from (x, y), to value.
PALVET_API void MemsetBuffer(unsigned char* buf, int x, int y, int w, int h, int bpp, int pitch,
                             unsigned char value);
// Each 32-bit pixel becomes (color & 0xFFFFFF) | mask << 24.
PALVET_API void ConvertAlphaToRGB32Buffer(unsigned char const* alpha, int alphaPitch, unsigned char* dst,
                                          int dstPitch, int w, int h, unsigned int color);
// Each 3-byte pixel becomes colorOn where the mask is nonzero, else colorOff
// (bytes: bits 0-7, 8-15, 16-23).
PALVET_API void ConvertAlphaToRGB24Buffer(unsigned char const* alpha, int alphaPitch, unsigned char* dst,
                                          int dstPitch, int w, int h, unsigned int colorOn,
                                          unsigned int colorOff);
// Each alpha byte becomes (alpha * ratio) >> 8 (so 255 scales 255 to 254).
PALVET_API void SetRGB32AlphaRatio(unsigned char* buf, int pitch, int w, int h, unsigned char ratio);
// Stores alpha into every alpha byte.
PALVET_API void SetRGB32Alpha(unsigned char* buf, int pitch, int w, int h, unsigned char alpha);
// 3-byte to 32-bit pixels with alpha 0xFF. bBGR nonzero: source bytes are
// R, G, B; zero: they keep their order (B, G, R).
PALVET_API void ConvertRGB24ToRGB32(unsigned char const* src, int srcPitch, unsigned char* dst, int dstPitch,
                                    int w, int h, int bBGR);
// The inverse, dropping alpha.
PALVET_API void ConvertRGB32ToRGB24(unsigned char const* src, int srcPitch, unsigned char* dst, int dstPitch,
                                    int w, int h, int bBGR);
// Grey = (77 R + 151 G + 28 B) >> 8. bBGR nonzero: pixels are B, G, R; zero:
// R, G, B.
PALVET_API void ConvertRGB24ToGray(unsigned char const* src, int srcPitch, unsigned char* dst, int dstPitch,
                                   int w, int h, int bBGR);
PALVET_API void ConvertRGB32ToGray(unsigned char const* src, int srcPitch, unsigned char* dst, int dstPitch,
                                   int w, int h, int bBGR);
// Swap bytes 0 and 2 of every pixel, in place.
PALVET_API void RevertRGB32ToBGR32(unsigned char* buf, int pitch, int w, int h);
PALVET_API void RevertRGB24ToBGR24(unsigned char* buf, int pitch, int w, int h);
// Flips the rectangle vertically in place; nothing for a null buffer.
PALVET_API void RevertBottomUpBuffer(unsigned char* buf, int x, int y, int w, int h, int bpp, int pitch);

// ---- Rotation (tightly packed rows; source and destination distinct) ----

// YUV 4:2:0 planar: src and dst each hold the Y, U and V plane pointers.
PALVET_API void RotateYUV420Data_90(unsigned char** src, unsigned char** dst, int w, int h);
PALVET_API void RotateYUV420Data_180(unsigned char** src, unsigned char** dst, int w, int h);
PALVET_API void RotateYUV420Data_270(unsigned char** src, unsigned char** dst, int w, int h);
// YUV 4:2:0 semi-planar: Y and interleaved chroma; U, V pairs stay together.
PALVET_API void RotateYUV420SPData_90(unsigned char** src, unsigned char** dst, int w, int h);
PALVET_API void RotateYUV420SPData_180(unsigned char** src, unsigned char** dst, int w, int h);
PALVET_API void RotateYUV420SPData_270(unsigned char** src, unsigned char** dst, int w, int h);
// Packed pixels of bpp bytes. 90 is clockwise; the output is h wide, w high.
PALVET_API void RotateRGBData90(unsigned char* src, unsigned char* dst, int w, int h, int bpp);
PALVET_API void RotateRGBData180(unsigned char* src, unsigned char* dst, int w, int h, int bpp);
PALVET_API void RotateRGBData270(unsigned char* src, unsigned char* dst, int w, int h, int bpp);

// ---- Drawing and blitting ------------------------------------------------

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
