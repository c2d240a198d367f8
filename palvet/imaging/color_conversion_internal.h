#ifndef PALVET_IMAGING_COLOR_CONVERSION_INTERNAL_H
#define PALVET_IMAGING_COLOR_CONVERSION_INTERNAL_H

// Shared between the table code, the frame conversions and the vectorised row
// kernels. Not installed.

#include <cstdint>

#include <palvet/core/cpu_features_internal.h>

namespace palvet::detail {

// The vectorised kernels cannot read the lookup tables, so they compute each
// entry instead: for an index i with d = i - offset (offset 0 for the RGB to
// YUV tables, 16 for Y and 128 for U and V in the YUV to RGB tables),
//     entry = (d * k + b) >> shift      (arithmetic shift, i.e. floor)
// with k and b chosen separately for d < 0 and d >= 0, because the table
// rounding treats negative products differently. The pairs are searched for
// when the tables are filled and only used if they reproduce every entry.
struct TableForm {
    int16_t kPos, bPos;  // d >= 0
    int16_t kNeg, bNeg;  // d < 0
    bool twoPiece;       // the pairs differ
    bool zero;           // every entry is 0
};

// A cheaper description that most coefficient sets allow, one 16-bit
// multiply-high per entry. With a = |d| << shift:
//     Rnd(a, k) = (a * k + 2^14) >> 15     (rounds, as positive products do)
//     Flr(a, k) = (a * k) >> 15            (truncates, as negative ones do)
// A table whose products are positive for d >= 0 is
//     d >= 0 ? Rnd(a, kRnd) : -Flr(a, kFlr)
// and one whose products are negative there is
//     d >= 0 ? -Flr(a, kFlr) : Rnd(a, kRnd).
// The kernels hard-wire the signs of the usual matrices (luma and the red
// and blue chroma terms positive where they are not zero, green chroma and
// the red and green terms of U and V negative); other sets use TableForm.
struct MulForm {
    int16_t kRnd, kFlr;
};

// Luma term of YUV to RGB, when all three luma tables are the same:
//     entry = (max(y * m - b, 0) >> shift) - (y < 16 ? below[y] : 0),
// in unsigned 16-bit arithmetic (y * m stays below 65536). A plain floor of
// a line fits the rounded products from y = 16 on; below 16 the products are
// negative and truncated, which the 16-entry byte lookup supplies.
struct LumaForm {
    uint16_t m, b;
    int shift;
    unsigned char below[16];
    // The same table from the luma byte in the upper half of a word, where
    // one shift puts it in packed pixels and no shift follows the multiply:
    //     entry = ((max(256 y - highB, 0) * highK) >> 16) - (y < 16 ? below[y] : 0)
    // valid where `high` is set.
    bool high;
    uint16_t highK, highB;
};

struct RgbToYuvForms {
    int shift;
    TableForm ry, gy, by, ru, gu, bu, rv, gv, bv;
    bool mul;  // the MulForms below reproduce the tables (their shift is 0)
    MulForm mry, mgy, mby, mru, mgu, mbu, mrv, mgv, mbv;
    bool clampFree;  // no U or V sum can leave 0..255
};

struct YuvToRgbForms {
    int shift;
    TableForm yr, ur, vr, yg, ug, vg, yb, ub, vb;
    bool sharedY;  // yr, yg and yb are the same table
    bool mul;  // the chroma MulForms below reproduce the chroma tables
    int mulShift;
    MulForm mur, mvr, mug, mvg, mub, mvb;
    bool luma;  // lumaForm reproduces the (shared) luma table
    LumaForm lumaForm;
};

enum class RgbFormat { Rgb24, Rgb565, Rgb555, Argb32 };
enum class ChromaLayout { C420, C422, C444 };

// One row (or a pair of rows for 4:2:0) of RGB to planar YUV.
struct RgbToYuvRow {
    unsigned char const* src[2];  // src[1] only for 4:2:0
    unsigned char* y[2];          // y[1] only for 4:2:0
    unsigned char* u;
    unsigned char* v;
    int width;  // pixels; even for 4:2:0 and 4:2:2
    RgbFormat format;
    ChromaLayout layout;
    bool swapRB;
};

// One row (or two rows sharing chroma, for 4:2:0) of planar YUV to RGB.
struct YuvToRgbRow {
    unsigned char const* y[2];  // y[1] null when there is one row
    unsigned char* dst[2];
    unsigned char const* u;
    unsigned char const* v;
    int width;
    RgbFormat format;  // Rgb24, Rgb565 or Rgb555
    ChromaLayout layout;
    bool swapRB;
};

// One row of packed 4:2:2 to 24-bit RGB or ARGB32.
struct PackedToRgbRow {
    unsigned char const* src;
    unsigned char* dst;
    unsigned char const* alpha;  // ARGB32 only; null for opaque
    int pairs;
    bool yvy;          // V before U
    RgbFormat format;  // Rgb24 or Argb32
    bool swapRB;
};

// A vectorised kernel converts a leading part of the row and returns how many
// pixels (or chroma bytes, for the splits) it did; scalar code does the rest.
struct ColourKernels {
    int (*rgbToYuv)(RgbToYuvRow const& row, RgbToYuvForms const& f);
    int (*yuvToRgb)(YuvToRgbRow const& row, YuvToRgbForms const& f);
    int (*packedToRgb)(PackedToRgbRow const& row, YuvToRgbForms const& f);
    // Interleaved bytes to two planes, and back; counts are byte pairs.
    int (*splitPairs)(unsigned char const* src, unsigned char* even, unsigned char* odd, int pairs);
    int (*joinPairs)(unsigned char const* even, unsigned char const* odd, unsigned char* dst, int pairs);
};

ColourKernels const* ColourKernelsSse2();
ColourKernels const* ColourKernelsAvx2();
ColourKernels const* ColourKernelsAvx512();
// The AVX-512 kernels with VBMI's byte permutes for the pixel formats; null
// where the build has none.
ColourKernels const* ColourKernelsAvx512Vbmi();
// Whether the AVX-512 level may use them (on by default); tests switch them
// off to check the F + BW kernels too.
void AllowAvx512Vbmi(bool allow);
ColourKernels const* ColourKernelsNeon();

// Caps the kernels the conversions may use (the shared SetKernelLevel cap);
// for tests. Not thread-safe.
void SetColourKernelLevel(KernelLevel level);
// Whether the processor has the kernels of the level (Scalar always).
bool ColourKernelLevelAvailable(KernelLevel level);

// Filled tables whose entries the forms reproduce; null when the fast path
// must not be used for that direction.
RgbToYuvForms const* ActiveRgbToYuvForms();
YuvToRgbForms const* ActiveYuvToRgbForms();
// The kernels to use, or null for scalar only.
ColourKernels const* ActiveColourKernels();

// Derives a form for table t (index offset `offset`) at the given shift;
// false when no pair fits 16 bits or reproduces every entry.
bool FitTableForm(int const* t, int offset, int shift, TableForm& form);
int EvalTableForm(TableForm const& form, int shift, int d);
// Fits a MulForm whose products are positive (or, with positive false,
// negative) for d >= 0; a table of zeros fits either.
bool FitMulForm(int const* t, int offset, int shift, bool positive, MulForm& form);
int EvalMulForm(MulForm const& form, int shift, bool positive, int d);
bool FitLumaForm(int const* t, LumaForm& form);
int EvalLumaForm(LumaForm const& form, int y);
// Sets form's high fields (below[] must be filled); whether they fit.
bool FitLumaHighForm(int const* t, LumaForm& form);
int EvalLumaHighForm(LumaForm const& form, int y);

inline int Clamp255(int v) { return v < 0 ? 0 : (v > 255 ? 255 : v); }

}  // namespace palvet::detail

#endif
