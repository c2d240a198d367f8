#ifndef PALVET_IMAGING_YUV_RGB_CONVERT_H
#define PALVET_IMAGING_YUV_RGB_CONVERT_H

// Whole-frame YUV <-> RGB conversion through the lookup tables of
// color_tables.h (filled on first use).
//
// Frame conventions:
// - width and height are taken as absolute values (no flip), except in the
//   semi-planar and RGB-to-RGB functions, where 0 or below does nothing.
// - Planar YUV is tightly packed: Y plane w*h bytes; 4:2:0 chroma planes
//   (w*h)/4 bytes with rows of w/2, one row per two image rows; 4:2:2 chroma
//   planes (w*h)/2 with rows of w/2; 4:4:4 chroma planes w*h.
// - bYV: 0 = planes in Y, U, V order; nonzero = Y, V, U.
// - bBGR: 24-bit pixels are R, G, B in memory when 0 and B, G, R when nonzero;
//   for 16-bit pixels it swaps the red and blue fields.
// - 5-6-5: red bits 15-11, green 10-5, blue 4-0; 5-5-5: red 14-10, green 9-5,
//   blue 4-0, bit 15 written as 0. Fields widen by plain left shift and narrow
//   by taking the high bits of the clamped value.
// - Packed 4:2:2 rows are w/2 four-byte pairs, Y0 U Y1 V (YUY2, YUYV) or
//   Y0 V Y1 U (YVY2), with no pitch.
// - 4:2:0 and 4:2:2 conversions leave an odd last column unwritten; 4:2:0 ones
//   also an odd last row, and do nothing below two rows.
// - Null source or destination pointers make a function return at once.

#include <palvet/core/export.h>
#include <palvet/imaging/color_tables.h>

// RGB to planar YUV. Chroma of a 2x2 block (4:2:0) or a pair (4:2:2) is the
// truncated mean of the pixels' individually clamped values.
PALVET_API void RGB888ToYUV420(int width, int height, unsigned char const* src,
                               unsigned char* dst, int bYV, int srcPitch, int bBGR);
PALVET_API void RGB565ToYUV420(int width, int height, unsigned char const* src,
                               unsigned char* dst, int bYV, int srcPitch, int bBGR);
PALVET_API void RGB555ToYUV420(int width, int height, unsigned char const* src,
                               unsigned char* dst, int bYV, int srcPitch, int bBGR);
PALVET_API void RGB888ToYUV422(int width, int height, unsigned char const* src,
                               unsigned char* dst, int bYV, int srcPitch, int bBGR);
PALVET_API void RGB565ToYUV422(int width, int height, unsigned char const* src,
                               unsigned char* dst, int bYV, int srcPitch, int bBGR);
PALVET_API void RGB555ToYUV422(int width, int height, unsigned char const* src,
                               unsigned char* dst, int bYV, int srcPitch, int bBGR);
PALVET_API void RGB888ToYUV444(int width, int height, unsigned char const* src,
                               unsigned char* dst, int bYV, int srcPitch, int bBGR);
PALVET_API void RGB565ToYUV444(int width, int height, unsigned char const* src,
                               unsigned char* dst, int bYV, int srcPitch, int bBGR);
PALVET_API void RGB555ToYUV444(int width, int height, unsigned char const* src,
                               unsigned char* dst, int bYV, int srcPitch, int bBGR);

// Planar YUV to RGB. Chroma is replicated over its block, not interpolated.
PALVET_API void YUV420ToRGB888(int width, int height, unsigned char const* src, int bYV,
                               unsigned char* dst, int dstPitch, int bBGR);
PALVET_API void YUV420ToRGB565(int width, int height, unsigned char const* src, int bYV,
                               unsigned char* dst, int dstPitch, int bBGR);
PALVET_API void YUV420ToRGB555(int width, int height, unsigned char const* src, int bYV,
                               unsigned char* dst, int dstPitch, int bBGR);
PALVET_API void YUV422ToRGB888(int width, int height, unsigned char const* src, int bYV,
                               unsigned char* dst, int dstPitch, int bBGR);
PALVET_API void YUV422ToRGB565(int width, int height, unsigned char const* src, int bYV,
                               unsigned char* dst, int dstPitch, int bBGR);
PALVET_API void YUV422ToRGB555(int width, int height, unsigned char const* src, int bYV,
                               unsigned char* dst, int dstPitch, int bBGR);
PALVET_API void YUV444ToRGB888(int width, int height, unsigned char const* src, int bYV,
                               unsigned char* dst, int dstPitch, int bBGR);
PALVET_API void YUV444ToRGB565(int width, int height, unsigned char const* src, int bYV,
                               unsigned char* dst, int dstPitch, int bBGR);
PALVET_API void YUV444ToRGB555(int width, int height, unsigned char const* src, int bYV,
                               unsigned char* dst, int dstPitch, int bBGR);

// Packed 4:2:2 to RGB. ARGB32 pixels are A << 24 | R << 16 | G << 8 | B with A
// from the alpha plane (one byte per pixel, rows alphaPitch apart; a null
// plane gives opaque 255). `flag` does not change the output.
PALVET_API void YUY2ToRGB888(int width, int height, unsigned char const* src,
                             unsigned char* dst, int dstPitch, int bBGR);
PALVET_API void YUY2ToARGB32(int width, int height, unsigned char const* src,
                             unsigned char* dst, int dstPitch, int flag,
                             unsigned char const* alpha, int alphaPitch);
PALVET_API void YVY2ToRGB888(int width, int height, unsigned char const* src,
                             unsigned char* dst, int dstPitch, int bBGR);
PALVET_API void YVY2ToARGB32(int width, int height, unsigned char const* src,
                             unsigned char* dst, int dstPitch, int flag,
                             unsigned char const* alpha, int alphaPitch);

#endif
