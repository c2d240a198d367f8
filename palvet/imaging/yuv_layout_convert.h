#ifndef PALVET_IMAGING_YUV_LAYOUT_CONVERT_H
#define PALVET_IMAGING_YUV_LAYOUT_CONVERT_H

// Frame layout conversion without a colour-space change: planar, packed and
// semi-planar YUV among themselves, and RGB among 24-, 16- and 15-bit pixels.
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

// Planar and packed 4:2:2 moves. YUYV422ToYUV420 takes chroma from the first
// row of each pair; YUV422ToYUV420 averages vertical pairs ((a + b) >> 1);
// YUV420ToYUV422 writes each chroma row twice.
PALVET_API void YUVToYUYV_422(int width, int height, unsigned char const* src, int bYV,
                              unsigned char* dst);
PALVET_API void YUYVToYUV_422(int width, int height, unsigned char const* src,
                              unsigned char* dst, int bYV);
PALVET_API void YUYV422ToYUV420(int width, int height, unsigned char const* src,
                                unsigned char* dst, int bYV);
PALVET_API void YUV422ToYUV420(int width, int height, unsigned char const* src, int bYVsrc,
                               unsigned char* dst, int bYVdst);
PALVET_API void YUV420ToYUV422(int width, int height, unsigned char const* src, int bYVsrc,
                               unsigned char* dst, int bYVdst);

// RGB to RGB; width and height as given. RGB565ToRGB555 drops green's low
// bit; RGB555ToRGB565 gives green a 0 low bit.
PALVET_API void RGB565ToRGB555(int width, int height, unsigned char const* src,
                               unsigned char* dst, int srcPitch, int dstPitch, int bBGR);
PALVET_API void RGB555ToRGB565(int width, int height, unsigned char const* src,
                               unsigned char* dst, int srcPitch, int dstPitch, int bBGR);
// The flag has the opposite sense here: nonzero puts source byte 0 into the
// red field and byte 2 into blue; zero puts byte 2 into red and byte 0 into
// blue.
PALVET_API void RGB888ToRGB565(int width, int height, unsigned char const* src,
                               unsigned char* dst, int srcPitch, int dstPitch, int bFlag);
PALVET_API void RGB888ToRGB555(int width, int height, unsigned char const* src,
                               unsigned char* dst, int srcPitch, int dstPitch, int bFlag);
// These two write the blue field into both bytes 0 and 2 of every output
// pixel and ignore the flag: applications depend on this exact output.
PALVET_API void RGB565ToRGB888(int width, int height, unsigned char const* src,
                               unsigned char* dst, int srcPitch, int dstPitch, int bBGR);
PALVET_API void RGB555ToRGB888(int width, int height, unsigned char const* src,
                               unsigned char* dst, int srcPitch, int dstPitch, int bBGR);

// Semi-planar 4:2:0 (Y plane, then w*h/2 bytes of interleaved chroma) to and
// from planar Y, U, V. bVU = 0: even chroma bytes are U (NV12); nonzero: even
// bytes are V (NV21). Width and height as given.
PALVET_API void YUV420SPToYUV420(int width, int height, unsigned char const* src,
                                 unsigned char* dst, int bVU);
PALVET_API void YUV420ToYUV420SP(int width, int height, unsigned char const* src, int bVU,
                                 unsigned char* dst);

#endif
