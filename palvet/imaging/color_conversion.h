#ifndef PALVET_IMAGING_COLOR_CONVERSION_H
#define PALVET_IMAGING_COLOR_CONVERSION_H

#include <palvet/core/export.h>

// YUV (YCbCr) and RGB colour-space conversion.
//
// Every conversion works through eighteen integer lookup tables, so each output
// component is the clamped sum of three table entries. The tables are filled
// from the coefficient arrays below on the first conversion (or an explicit
// InitLookupTable call); change ippRGBYUVCOEF or ippYUVRGBCOEF only before that.
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

// 3x3 coefficient matrices in row order. The limited-range (ipp) pair feeds
// the tables; the full-range (nml) pair is provided for applications only.
extern PALVET_API double ippRGBYUVCOEF[9];
extern PALVET_API double ippYUVRGBCOEF[9];
extern PALVET_API double nmlRGBYUVCOEF[9];
extern PALVET_API double nmlYUVRGBCOEF[9];

// Source component, TEXTO, destination component. The RGB-to-YUV tables carry
// no offset (16 and 128 are added per pixel); the YUV-to-RGB tables have the
// 16 and 128 offsets folded into their index.
extern PALVET_API int RTEXTO_Y[256];
extern PALVET_API int GTEXTO_Y[256];
extern PALVET_API int BTEXTO_Y[256];
extern PALVET_API int RTEXTO_U[256];
extern PALVET_API int GTEXTO_U[256];
extern PALVET_API int BTEXTO_U[256];
extern PALVET_API int RTEXTO_V[256];
extern PALVET_API int GTEXTO_V[256];
extern PALVET_API int BTEXTO_V[256];
extern PALVET_API int YTEXTO_R[256];
extern PALVET_API int UTEXTO_R[256];
extern PALVET_API int VTEXTO_R[256];
extern PALVET_API int YTEXTO_G[256];
extern PALVET_API int UTEXTO_G[256];
extern PALVET_API int VTEXTO_G[256];
extern PALVET_API int YTEXTO_B[256];
extern PALVET_API int UTEXTO_B[256];
extern PALVET_API int VTEXTO_B[256];

// 0 until the tables are filled, then 1. Tested and set without a lock: two
// threads converting before the first fill both write the same values.
extern PALVET_API int RGBYUVTABLE_INIT;

// Fills the tables unless RGBYUVTABLE_INIT is already set.
PALVET_API void InitLookupTable();

// One pixel each way, each component clamped to 0..255.
PALVET_API void RGBToYUV(unsigned char r, unsigned char g, unsigned char b,
                         unsigned char& y, unsigned char& u, unsigned char& v);
PALVET_API void YUVToRGB(unsigned char y, unsigned char u, unsigned char v,
                         unsigned char& r, unsigned char& g, unsigned char& b);

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

// Semi-planar 4:2:0 (Y plane, then w*h/2 bytes of interleaved chroma) to and
// from planar Y, U, V. bVU = 0: even chroma bytes are U (NV12); nonzero: even
// bytes are V (NV21). Width and height as given.
PALVET_API void YUV420SPToYUV420(int width, int height, unsigned char const* src,
                                 unsigned char* dst, int bVU);
PALVET_API void YUV420ToYUV420SP(int width, int height, unsigned char const* src, int bVU,
                                 unsigned char* dst);

#endif
