#ifndef PALVET_IMAGING_PIXEL_BUFFER_H
#define PALVET_IMAGING_PIXEL_BUFFER_H

// Pixel-buffer conversion: filling, alpha masks, 24/32-bit and grey
// conversion, byte-order swaps and vertical flips, in place or between
// caller-owned buffers. A buffer is a base pointer, a pitch (bytes from one
// row to the next) and a pixel size in bytes; the pixel at (x, y) starts at
// base + y * pitch + x * bpp. 32-bit pixels are ARGB words (bytes B, G, R, A
// in memory). Nothing here reports errors; sizes below 1 do nothing.

#include <palvet/core/export.h>

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

#endif
