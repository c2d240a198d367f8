#ifndef PALVET_IMAGING_ROTATION_H
#define PALVET_IMAGING_ROTATION_H

// Rotation of YUV 4:2:0 frames and packed pixels by 90, 180 and 270 degrees.
// Rows are tightly packed; source and destination must be distinct buffers.
// Sizes below 1 do nothing.

#include <palvet/core/export.h>

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

#endif
