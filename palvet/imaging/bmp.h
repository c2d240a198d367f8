#ifndef PALVET_IMAGING_BMP_H
#define PALVET_IMAGING_BMP_H

// BMP files: loading the pixel block, building the classic (40-byte) and
// version 5 (124-byte, bit fields) information headers, and saving pixel
// buffers. Fields are little-endian on every host.
//
// Rows in files and in the buffers these functions take or return are padded
// to whole 32-bit words: stride = ((bpp * width + 31) / 32) * 4. Files are
// written bottom-up.

#include <palvet/core/export.h>

// Parses a BMP held in memory: "BM" and a file-size field equal to size are
// required. Stores the width as stored, the height made positive (INT_MIN
// stays INT_MIN) and the bits per pixel in the outputs that are not null;
// with a non-null pixels, also a new copy of the pixel block (rows padded, in
// file order, no conversion; free it with DeleteBmpImageData). A copy is
// refused (returns 0, outputs untouched) when the pixel block does not lie
// inside the data or its size does not fit in an int; a header query (pixels
// null) reports the header whatever block it describes. Returns 1 on success.
PALVET_API int LoadBmpImageFromData(unsigned char const* data, int size, int* width, int* height,
                                    int* bpp, unsigned char** pixels);

// Reads a whole file and parses it as LoadBmpImageFromData does.
PALVET_API int LoadBmpImageFromFile(char const* path, int* width, int* height, int* bpp,
                                    unsigned char** pixels);

// Frees pixels from the loaders; null is ignored.
PALVET_API void DeleteBmpImageData(unsigned char* pixels);

// Builds a classic information header (header size 40, sizes made positive,
// uncompressed; the image-size field holds the low 32 bits of the size) followed by count palette entries when palette is not null.
// "Colours used" holds count whenever palette is not null, even a count of 0
// or below. Stores the block's size in *infoSize when that is not null.
// Free the block with DeleteBitmapInfo. Null when it cannot be allocated.
PALVET_API void* CreateBitmapInfo(int width, int height, int bpp, unsigned int const* palette,
                                  int count, int* infoSize);

// Builds a version 5 information header (bit fields, the four masks, sRGB,
// 2835 pixels per metre) followed by count palette entries when palette is
// not null and count is positive. Its header-size field holds the size of the
// whole block, palette included. Otherwise as CreateBitmapInfo.
PALVET_API void* CreateBitmapV5Info(int width, int height, int bpp, unsigned int redMask,
                                    unsigned int greenMask, unsigned int blueMask,
                                    unsigned int alphaMask, unsigned int const* palette, int count,
                                    int* infoSize);

// Frees a block from either builder; null is ignored.
PALVET_API void DeleteBitmapInfo(void* info);

// Writes buffer to path with a classic header. A positive height means the
// buffer is bottom-up and is written as is; otherwise it is taken as
// top-down and flipped. Fails silently.
PALVET_API void SaveRgbBufferToBmpFile(unsigned char const* buffer, int width, int height, int bpp,
                                       unsigned int const* palette, int count, char const* path);

// As SaveRgbBufferToBmpFile with a version 5 header.
PALVET_API void SaveRgbBufferToBmpFileV5(unsigned char const* buffer, int width, int height,
                                         int bpp, unsigned int redMask, unsigned int greenMask,
                                         unsigned int blueMask, unsigned int alphaMask,
                                         unsigned int const* palette, int count, char const* path);

// Saves 16-bit 5-6-5 pixels (red high) with a version 5 header.
PALVET_API void SaveRgb565BufferToBmpFile(unsigned char const* buffer, int width, int height,
                                          char const* path);

#endif
