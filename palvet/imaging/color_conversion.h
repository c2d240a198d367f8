#ifndef PALVET_IMAGING_COLOR_CONVERSION_H
#define PALVET_IMAGING_COLOR_CONVERSION_H

// YUV (YCbCr) and RGB colour-space and layout conversion: the lookup tables,
// whole-frame YUV <-> RGB conversion and layout conversion, each declared in
// its own header; this one includes all three.

#include <palvet/imaging/color_tables.h>
#include <palvet/imaging/yuv_layout_convert.h>
#include <palvet/imaging/yuv_rgb_convert.h>

#endif
