#ifndef PALVET_IMAGING_COLOR_TABLES_H
#define PALVET_IMAGING_COLOR_TABLES_H

// YUV (YCbCr) <-> RGB colour-space lookup tables and single-pixel conversion.
//
// Every conversion works through eighteen integer lookup tables, so each output
// component is the clamped sum of three table entries. The tables are filled
// from the coefficient arrays below on the first conversion (or an explicit
// InitLookupTable call); change ippRGBYUVCOEF or ippYUVRGBCOEF only before that.

#include <palvet/core/export.h>

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

#endif
