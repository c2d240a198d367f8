// Frame conversions between RGB and YUV. The scalar loops here define every
// result; a vectorised kernel, when the processor and the tables allow one,
// converts the leading part of each row and these loops finish it.

#include <palvet/imaging/yuv_rgb_convert.h>

#include <palvet/imaging/color_conversion_internal.h>

#include <climits>
#include <cstddef>
#include <cstdint>

using palvet::detail::ChromaLayout;
using palvet::detail::Clamp255;
using palvet::detail::ColourKernels;
using palvet::detail::RgbFormat;

namespace {

// Table bases held in locals so the loops do not reload them through the
// global offset table.
struct ForwardTables {
    int const *ry, *gy, *by, *ru, *gu, *bu, *rv, *gv, *bv;
    ForwardTables()
        : ry(RTEXTO_Y), gy(GTEXTO_Y), by(BTEXTO_Y), ru(RTEXTO_U), gu(GTEXTO_U), bu(BTEXTO_U),
          rv(RTEXTO_V), gv(GTEXTO_V), bv(BTEXTO_V) {}
};

struct BackwardTables {
    int const *yr, *ur, *vr, *yg, *ug, *vg, *yb, *ub, *vb;
    BackwardTables()
        : yr(YTEXTO_R), ur(UTEXTO_R), vr(VTEXTO_R), yg(YTEXTO_G), ug(UTEXTO_G), vg(VTEXTO_G),
          yb(YTEXTO_B), ub(UTEXTO_B), vb(VTEXTO_B) {}
};

void EnsureTables()
{
    if (!RGBYUVTABLE_INIT)
        InitLookupTable();
}

// Absolute value that cannot overflow; INT_MIN counts as an impossible frame.
bool Magnitude(int v, int& out)
{
    if (v == INT_MIN)
        return false;
    out = v < 0 ? -v : v;
    return true;
}

template <RgbFormat F>
constexpr int PixelBytes()
{
    return F == RgbFormat::Rgb24 ? 3 : (F == RgbFormat::Argb32 ? 4 : 2);
}

template <RgbFormat F>
inline void ReadRgb(unsigned char const* p, bool swap, int& r, int& g, int& b)
{
    if constexpr (F == RgbFormat::Rgb24) {
        r = p[0];
        g = p[1];
        b = p[2];
    } else {
        unsigned v = p[0] | (p[1] << 8);
        if constexpr (F == RgbFormat::Rgb565) {
            r = (v >> 11) << 3;
            g = ((v >> 5) & 0x3F) << 2;
        } else {
            r = ((v >> 10) & 0x1F) << 3;
            g = ((v >> 5) & 0x1F) << 3;
        }
        b = (v & 0x1F) << 3;
    }
    if (swap) {
        int t = r;
        r = b;
        b = t;
    }
}

// r, g and b are already clamped to 0..255.
template <RgbFormat F>
inline void WriteRgb(unsigned char* p, bool swap, int r, int g, int b)
{
    if (swap) {
        int t = r;
        r = b;
        b = t;
    }
    if constexpr (F == RgbFormat::Rgb24) {
        p[0] = static_cast<unsigned char>(r);
        p[1] = static_cast<unsigned char>(g);
        p[2] = static_cast<unsigned char>(b);
    } else {
        unsigned v;
        if constexpr (F == RgbFormat::Rgb565)
            v = ((r >> 3) << 11) | ((g >> 2) << 5) | (b >> 3);
        else
            v = ((r >> 3) << 10) | ((g >> 3) << 5) | (b >> 3);
        p[0] = static_cast<unsigned char>(v);
        p[1] = static_cast<unsigned char>(v >> 8);
    }
}

template <RgbFormat F, ChromaLayout L>
void RgbToYuvScalar(palvet::detail::RgbToYuvRow const& row, int x)
{
    ForwardTables const t;
    constexpr int bytes = PixelBytes<F>();
    bool const swap = row.swapRB;
    unsigned char* const y0 = row.y[0];
    unsigned char* const u = row.u;
    unsigned char* const v = row.v;
    unsigned char const* s0 = row.src[0] + static_cast<ptrdiff_t>(x) * bytes;
    int const width = row.width;
    if constexpr (L == ChromaLayout::C444) {
        for (; x < width; ++x, s0 += bytes) {
            int r, g, b;
            ReadRgb<F>(s0, swap, r, g, b);
            y0[x] = static_cast<unsigned char>(Clamp255(t.ry[r] + t.gy[g] + t.by[b] + 16));
            u[x] = static_cast<unsigned char>(Clamp255(t.ru[r] + t.gu[g] + t.bu[b] + 128));
            v[x] = static_cast<unsigned char>(Clamp255(t.rv[r] + t.gv[g] + t.bv[b] + 128));
        }
    } else {
        constexpr int rows = L == ChromaLayout::C420 ? 2 : 1;
        constexpr int shift = L == ChromaLayout::C420 ? 2 : 1;
        unsigned char* const y1 = row.y[rows - 1];
        unsigned char const* s1 = row.src[rows - 1] + static_cast<ptrdiff_t>(x) * bytes;
        for (; x + 1 < width; x += 2, s0 += 2 * bytes, s1 += 2 * bytes) {
            int us = 0, vs = 0;
            for (int k = 0; k < rows; ++k) {
                unsigned char const* s = k ? s1 : s0;
                unsigned char* yr = k ? y1 : y0;
                for (int c = 0; c < 2; ++c) {
                    int r, g, b;
                    ReadRgb<F>(s + c * bytes, swap, r, g, b);
                    yr[x + c] = static_cast<unsigned char>(Clamp255(t.ry[r] + t.gy[g] + t.by[b] + 16));
                    us += Clamp255(t.ru[r] + t.gu[g] + t.bu[b] + 128);
                    vs += Clamp255(t.rv[r] + t.gv[g] + t.bv[b] + 128);
                }
            }
            u[x >> 1] = static_cast<unsigned char>(us >> shift);
            v[x >> 1] = static_cast<unsigned char>(vs >> shift);
        }
    }
}

template <RgbFormat F, ChromaLayout L>
void RgbToYuvFrame(int width, int height, unsigned char const* src, unsigned char* dst, int bYV,
                   int srcPitch, int bBGR)
{
    int w, h;
    if (!src || !dst || !Magnitude(width, w) || !Magnitude(height, h))
        return;
    EnsureTables();
    if (L == ChromaLayout::C420 && h < 2)
        return;
    size_t const ySize = static_cast<size_t>(w) * h;
    size_t const cSize = L == ChromaLayout::C420 ? ySize / 4 : (L == ChromaLayout::C422 ? ySize / 2 : ySize);
    unsigned char* const first = dst + ySize;
    unsigned char* const second = first + cSize;
    unsigned char* const uPlane = bYV ? second : first;
    unsigned char* const vPlane = bYV ? first : second;
    int const cw = L == ChromaLayout::C444 ? w : w / 2;
    int const rowsPerStep = L == ChromaLayout::C420 ? 2 : 1;

    palvet::detail::RgbToYuvRow row{};
    row.width = L == ChromaLayout::C444 ? w : (w & ~1);
    row.format = F;
    row.layout = L;
    row.swapRB = bBGR != 0;
    palvet::detail::RgbToYuvForms const* forms = palvet::detail::ActiveRgbToYuvForms();
    ColourKernels const* k = forms ? palvet::detail::ActiveColourKernels() : nullptr;

    for (int j = 0; j + rowsPerStep <= h; j += rowsPerStep) {
        row.src[0] = src + static_cast<ptrdiff_t>(j) * srcPitch;
        row.src[1] = row.src[0] + (rowsPerStep - 1) * static_cast<ptrdiff_t>(srcPitch);
        row.y[0] = dst + static_cast<size_t>(j) * w;
        row.y[1] = row.y[0] + static_cast<size_t>(rowsPerStep - 1) * w;
        size_t const crow = static_cast<size_t>(j / rowsPerStep) * cw;
        row.u = uPlane + crow;
        row.v = vPlane + crow;
        int done = k ? k->rgbToYuv(row, *forms) : 0;
        RgbToYuvScalar<F, L>(row, done);
    }
}

template <RgbFormat F, ChromaLayout L>
void YuvToRgbScalar(palvet::detail::YuvToRgbRow const& row, int x)
{
    BackwardTables const t;
    constexpr int bytes = PixelBytes<F>();
    bool const swap = row.swapRB;
    int const rows = row.y[1] ? 2 : 1;
    int const width = row.width;
    unsigned char const* const u = row.u;
    unsigned char const* const v = row.v;
    if constexpr (L == ChromaLayout::C444) {
        unsigned char const* const y0 = row.y[0];
        unsigned char* d = row.dst[0] + static_cast<ptrdiff_t>(x) * bytes;
        for (; x < width; ++x, d += bytes) {
            int yy = y0[x], uu = u[x], vv = v[x];
            WriteRgb<F>(d, swap, Clamp255(t.yr[yy] + t.ur[uu] + t.vr[vv]),
                        Clamp255(t.yg[yy] + t.ug[uu] + t.vg[vv]),
                        Clamp255(t.yb[yy] + t.ub[uu] + t.vb[vv]));
        }
    } else {
        for (; x + 1 < width; x += 2) {
            int const uu = u[x >> 1], vv = v[x >> 1];
            int const cr = t.ur[uu] + t.vr[vv];
            int const cg = t.ug[uu] + t.vg[vv];
            int const cb = t.ub[uu] + t.vb[vv];
            for (int k = 0; k < rows; ++k) {
                unsigned char const* yrow = row.y[k];
                unsigned char* d = row.dst[k] + static_cast<ptrdiff_t>(x) * bytes;
                for (int c = 0; c < 2; ++c) {
                    int yy = yrow[x + c];
                    WriteRgb<F>(d + c * bytes, swap, Clamp255(t.yr[yy] + cr), Clamp255(t.yg[yy] + cg),
                                Clamp255(t.yb[yy] + cb));
                }
            }
        }
    }
}

template <RgbFormat F, ChromaLayout L>
void YuvToRgbFrame(int width, int height, unsigned char const* src, int bYV, unsigned char* dst,
                   int dstPitch, int bBGR)
{
    int w, h;
    if (!src || !dst || !Magnitude(width, w) || !Magnitude(height, h))
        return;
    EnsureTables();
    if (L == ChromaLayout::C420 && h < 2)
        return;
    size_t const ySize = static_cast<size_t>(w) * h;
    size_t const cSize = L == ChromaLayout::C420 ? ySize / 4 : (L == ChromaLayout::C422 ? ySize / 2 : ySize);
    unsigned char const* const first = src + ySize;
    unsigned char const* const second = first + cSize;
    unsigned char const* const uPlane = bYV ? second : first;
    unsigned char const* const vPlane = bYV ? first : second;
    int const cw = L == ChromaLayout::C444 ? w : w / 2;
    int const rowsPerStep = L == ChromaLayout::C420 ? 2 : 1;

    palvet::detail::YuvToRgbRow row{};
    row.width = L == ChromaLayout::C444 ? w : (w & ~1);
    row.format = F;
    row.layout = L;
    row.swapRB = bBGR != 0;
    palvet::detail::YuvToRgbForms const* forms = palvet::detail::ActiveYuvToRgbForms();
    ColourKernels const* k = forms ? palvet::detail::ActiveColourKernels() : nullptr;

    for (int j = 0; j + rowsPerStep <= h; j += rowsPerStep) {
        row.y[0] = src + static_cast<size_t>(j) * w;
        row.y[1] = rowsPerStep == 2 ? row.y[0] + w : nullptr;
        row.dst[0] = dst + static_cast<ptrdiff_t>(j) * dstPitch;
        row.dst[1] = rowsPerStep == 2 ? row.dst[0] + dstPitch : nullptr;
        size_t const crow = static_cast<size_t>(j / rowsPerStep) * cw;
        row.u = uPlane + crow;
        row.v = vPlane + crow;
        int done = k ? k->yuvToRgb(row, *forms) : 0;
        YuvToRgbScalar<F, L>(row, done);
    }
}

template <RgbFormat F>
void PackedToRgbScalar(palvet::detail::PackedToRgbRow const& row, int pair)
{
    BackwardTables const t;
    constexpr int bytes = PixelBytes<F>();
    unsigned char const* s = row.src + static_cast<size_t>(pair) * 4;
    unsigned char* d = row.dst + static_cast<size_t>(pair) * 2 * bytes;
    unsigned char const* a = row.alpha ? row.alpha + static_cast<size_t>(pair) * 2 : nullptr;
    for (; pair < row.pairs; ++pair, s += 4, d += 2 * bytes) {
        // One little-endian word per pixel pair: Y0, C0, Y1, C1 from the low byte.
        uint32_t const word = static_cast<uint32_t>(s[0]) | (static_cast<uint32_t>(s[1]) << 8) |
               (static_cast<uint32_t>(s[2]) << 16) | (static_cast<uint32_t>(s[3]) << 24);
        int const c0 = (word >> 8) & 0xFF, c1 = word >> 24;
        int const uu = row.yvy ? c1 : c0, vv = row.yvy ? c0 : c1;
        int const cr = t.ur[uu] + t.vr[vv];
        int const cg = t.ug[uu] + t.vg[vv];
        int const cb = t.ub[uu] + t.vb[vv];
        for (int c = 0; c < 2; ++c) {
            int const yy = (word >> (16 * c)) & 0xFF;
            int const r = Clamp255(t.yr[yy] + cr), g = Clamp255(t.yg[yy] + cg), b = Clamp255(t.yb[yy] + cb);
            unsigned char* p = d + c * bytes;
            if constexpr (F == RgbFormat::Argb32) {
                p[0] = static_cast<unsigned char>(b);
                p[1] = static_cast<unsigned char>(g);
                p[2] = static_cast<unsigned char>(r);
                p[3] = a ? a[c] : 255;
            } else {
                WriteRgb<F>(p, row.swapRB, r, g, b);
            }
        }
        if (a)
            a += 2;
    }
}

template <RgbFormat F>
void PackedToRgbFrame(int width, int height, unsigned char const* src, unsigned char* dst, int dstPitch,
                      bool yvy, bool swapRB, unsigned char const* alpha, int alphaPitch)
{
    int w, h;
    if (!src || !dst || !Magnitude(width, w) || !Magnitude(height, h))
        return;
    EnsureTables();
    palvet::detail::PackedToRgbRow row{};
    row.pairs = w / 2;
    row.yvy = yvy;
    row.format = F;
    row.swapRB = swapRB;
    palvet::detail::YuvToRgbForms const* forms = palvet::detail::ActiveYuvToRgbForms();
    ColourKernels const* k = forms ? palvet::detail::ActiveColourKernels() : nullptr;
    // Source rows always follow each other; when the destination rows (and
    // alpha rows) do too, the frame is one long row: pairs never straddle
    // rows, so the result is the same, with one kernel set-up instead of
    // one per row.
    constexpr int kBytes = F == RgbFormat::Argb32 ? 4 : 3;
    if (h > 1 && row.pairs > 0 && static_cast<long long>(dstPitch) == 2LL * row.pairs * kBytes &&
        (alpha == nullptr || static_cast<long long>(alphaPitch) == 2LL * row.pairs) &&
        static_cast<long long>(row.pairs) * h <= INT_MAX / 8) {
        row.pairs *= h;
        h = 1;
    }
    for (int j = 0; j < h; ++j) {
        row.src = src + static_cast<size_t>(j) * row.pairs * 4;
        row.dst = dst + static_cast<ptrdiff_t>(j) * dstPitch;
        row.alpha = alpha ? alpha + static_cast<ptrdiff_t>(j) * alphaPitch : nullptr;
        int done = k ? k->packedToRgb(row, *forms) : 0;
        PackedToRgbScalar<F>(row, done / 2);
    }
}

}  // namespace

#define PALVET_RGB_TO_YUV(name, fmt, layout)                                                        \
    void name(int width, int height, unsigned char const* src, unsigned char* dst, int bYV,        \
              int srcPitch, int bBGR)                                                              \
    {                                                                                              \
        RgbToYuvFrame<RgbFormat::fmt, ChromaLayout::layout>(width, height, src, dst, bYV, srcPitch, \
                                                           bBGR);                                  \
    }

PALVET_RGB_TO_YUV(RGB888ToYUV420, Rgb24, C420)
PALVET_RGB_TO_YUV(RGB565ToYUV420, Rgb565, C420)
PALVET_RGB_TO_YUV(RGB555ToYUV420, Rgb555, C420)
PALVET_RGB_TO_YUV(RGB888ToYUV422, Rgb24, C422)
PALVET_RGB_TO_YUV(RGB565ToYUV422, Rgb565, C422)
PALVET_RGB_TO_YUV(RGB555ToYUV422, Rgb555, C422)
PALVET_RGB_TO_YUV(RGB888ToYUV444, Rgb24, C444)
PALVET_RGB_TO_YUV(RGB565ToYUV444, Rgb565, C444)
PALVET_RGB_TO_YUV(RGB555ToYUV444, Rgb555, C444)

#define PALVET_YUV_TO_RGB(name, fmt, layout)                                                        \
    void name(int width, int height, unsigned char const* src, int bYV, unsigned char* dst,        \
              int dstPitch, int bBGR)                                                              \
    {                                                                                              \
        YuvToRgbFrame<RgbFormat::fmt, ChromaLayout::layout>(width, height, src, bYV, dst, dstPitch, \
                                                           bBGR);                                  \
    }

PALVET_YUV_TO_RGB(YUV420ToRGB888, Rgb24, C420)
PALVET_YUV_TO_RGB(YUV420ToRGB565, Rgb565, C420)
PALVET_YUV_TO_RGB(YUV420ToRGB555, Rgb555, C420)
PALVET_YUV_TO_RGB(YUV422ToRGB888, Rgb24, C422)
PALVET_YUV_TO_RGB(YUV422ToRGB565, Rgb565, C422)
PALVET_YUV_TO_RGB(YUV422ToRGB555, Rgb555, C422)
PALVET_YUV_TO_RGB(YUV444ToRGB888, Rgb24, C444)
PALVET_YUV_TO_RGB(YUV444ToRGB565, Rgb565, C444)
PALVET_YUV_TO_RGB(YUV444ToRGB555, Rgb555, C444)

void YUY2ToRGB888(int width, int height, unsigned char const* src, unsigned char* dst, int dstPitch, int bBGR)
{
    PackedToRgbFrame<RgbFormat::Rgb24>(width, height, src, dst, dstPitch, false, bBGR != 0, nullptr, 0);
}

void YVY2ToRGB888(int width, int height, unsigned char const* src, unsigned char* dst, int dstPitch, int bBGR)
{
    PackedToRgbFrame<RgbFormat::Rgb24>(width, height, src, dst, dstPitch, true, bBGR != 0, nullptr, 0);
}

void YUY2ToARGB32(int width, int height, unsigned char const* src, unsigned char* dst, int dstPitch,
                  int /*flag*/, unsigned char const* alpha, int alphaPitch)
{
    PackedToRgbFrame<RgbFormat::Argb32>(width, height, src, dst, dstPitch, false, false, alpha, alphaPitch);
}

void YVY2ToARGB32(int width, int height, unsigned char const* src, unsigned char* dst, int dstPitch,
                  int /*flag*/, unsigned char const* alpha, int alphaPitch)
{
    PackedToRgbFrame<RgbFormat::Argb32>(width, height, src, dst, dstPitch, true, false, alpha, alphaPitch);
}
