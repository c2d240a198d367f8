#include <palvet/imaging/drawing.h>

#include <palvet/imaging/pixel_kernels_internal.h>

#include <palvet/core/cpu_features_internal.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

using palvet::detail::AreasOverlap;
using palvet::detail::LoadU16;
using palvet::detail::LoadU32;
using palvet::detail::PixelAt;
using palvet::detail::StoreU16;
using palvet::detail::StoreU32;
using palvet::detail::StretchStepper;

namespace {

inline int Width(tagRECT const& r)
{
    return r.right - r.left;
}

inline int Height(tagRECT const& r)
{
    return r.bottom - r.top;
}

inline void CopyPixel(unsigned char* d, unsigned char const* s, int bpp)
{
    switch (bpp) {
    case 1: *d = *s; break;
    case 2: StoreU16(d, LoadU16(s)); break;
    case 4: StoreU32(d, LoadU32(s)); break;
    default: std::memcpy(d, s, static_cast<std::size_t>(bpp)); break;
    }
}

// Source columns are looked up in a table built once per call; wider
// destinations are done in strips of this many columns so the table stays on
// the stack (a few KiB) and each strip's rows stay in cache.
constexpr int kStrip = 512;

template <int Bpp>
void GatherRow(unsigned char* d, unsigned char const* s, int const* cols, int n)
{
    for (int k = 0; k < n; ++k)
        CopyPixel(d + k * Bpp, s + static_cast<std::ptrdiff_t>(cols[k]) * Bpp, Bpp);
}

void GatherRowAny(unsigned char* d, unsigned char const* s, int const* cols, int n, int bpp)
{
    switch (bpp) {
    case 1: GatherRow<1>(d, s, cols, n); break;
    case 2: GatherRow<2>(d, s, cols, n); break;
    case 3: GatherRow<3>(d, s, cols, n); break;
    case 4: GatherRow<4>(d, s, cols, n); break;
    default:
        for (int k = 0; k < n; ++k)
            std::memcpy(d + static_cast<std::ptrdiff_t>(k) * bpp, s + static_cast<std::ptrdiff_t>(cols[k]) * bpp,
                        static_cast<std::size_t>(bpp));
        break;
    }
}

// Fills the next strip of source column indices, continuing the stepping.
int NextColumns(StretchStepper& cols, int remaining, int* table)
{
    int const n = std::min(remaining, kStrip);
    for (int k = 0; k < n; ++k) {
        table[k] = cols.Position();
        cols.Advance();
    }
    return n;
}

// One strip's column lookup: the table and, for 32-bit pixels on AVX2 or
// NEON, its permute groups (and on NEON their byte lookups).
class ColumnStrip {
public:
    ColumnStrip(int bpp, int srcWidth)
    {
#if defined(__x86_64__) || defined(__i386__)
        useGroups_ = bpp == 4 && palvet::detail::UseAvx2();
#elif defined(__arm__) || defined(__aarch64__)
        useGroups_ = bpp == 4 && palvet::detail::UseNeon();
#endif
        (void)bpp;
        srcWidth_ = srcWidth;
    }

    int Next(StretchStepper& cols, int remaining)
    {
        n_ = NextColumns(cols, remaining, table_);
        if (useGroups_) {
            int const count = palvet::detail::BuildStretchGroups(table_, n_, srcWidth_, groups_);
#if defined(__arm__) || defined(__aarch64__)
            for (int g = 0; g < count; ++g)
                palvet::detail::StretchByteIndexes(groups_[g], bytes_[g]);
#else
            (void)count;
#endif
        }
        return n_;
    }

    void Gather(unsigned char* d, unsigned char const* s, int bpp) const
    {
        if (useGroups_) {
#if defined(__x86_64__) || defined(__i386__)
            palvet::detail::GatherRow32Avx2(d, s, table_, groups_, n_);
            return;
#elif defined(__arm__) || defined(__aarch64__)
            palvet::detail::GatherRow32Neon(d, s, table_, groups_, bytes_, n_);
            return;
#endif
        }
        GatherRowAny(d, s, table_, n_, bpp);
    }

private:
    int table_[kStrip];
    palvet::detail::StretchGroup groups_[kStrip / 8];
#if defined(__arm__) || defined(__aarch64__)
    unsigned char bytes_[kStrip / 8][32];
#endif
    int n_ = 0;
    int srcWidth_ = 0;
    bool useGroups_ = false;
};

}  // namespace

namespace palvet::detail {

void StretchReference(unsigned char* dst, int dstPitch, int dw, int dh, unsigned char const* src, int srcPitch,
                      int sw, int sh, int bpp)
{
    StretchStepper rows(sh, dh);
    for (int y = 0; y < dh; ++y, rows.Advance()) {
        unsigned char const* s = src + static_cast<std::ptrdiff_t>(rows.Position()) * srcPitch;
        unsigned char* d = dst + static_cast<std::ptrdiff_t>(y) * dstPitch;
        StretchStepper cols(sw, dw);
        for (int x = 0; x < dw; ++x, cols.Advance())
            CopyPixel(d + static_cast<std::ptrdiff_t>(x) * bpp, s + static_cast<std::ptrdiff_t>(cols.Position()) * bpp,
                      bpp);
    }
}

void AlphaStretchReference(unsigned char* dst, int dstPitch, int dw, int dh, unsigned char const* src,
                           int srcPitch, int sw, int sh)
{
    StretchStepper rows(sh, dh);
    for (int y = 0; y < dh; ++y, rows.Advance()) {
        unsigned char const* s = src + static_cast<std::ptrdiff_t>(rows.Position()) * srcPitch;
        unsigned char* d = dst + static_cast<std::ptrdiff_t>(y) * dstPitch;
        StretchStepper cols(sw, dw);
        for (int x = 0; x < dw; ++x, cols.Advance()) {
            unsigned char* p = d + 4 * x;
            StoreU32(p, BlendArgb(LoadU32(p), LoadU32(s + 4 * static_cast<std::ptrdiff_t>(cols.Position()))));
        }
    }
}

}  // namespace palvet::detail

void DrawBufferOnBuffer(unsigned char* dst, tagRECT const& dstRect, int dstPitch, unsigned char const* src,
                        tagRECT const& srcRect, int srcPitch, int bpp)
{
    int const w = std::min(Width(dstRect), Width(srcRect));
    int const h = std::min(Height(dstRect), Height(srcRect));
    if (w < 1 || h < 1 || bpp < 1)
        return;
    std::size_t const bytes = static_cast<std::size_t>(w) * static_cast<std::size_t>(bpp);
    unsigned char* d = PixelAt(dst, dstRect.left, dstRect.top, dstPitch, bpp);
    unsigned char const* s = PixelAt(src, srcRect.left, srcRect.top, srcPitch, bpp);
    // memmove: as fast as memcpy, and defined when a caller scrolls within
    // one buffer.
    for (int y = 0; y < h; ++y, d += dstPitch, s += srcPitch)
        std::memmove(d, s, bytes);
}

void AlphaDrawBufferOnBuffer_ARGB(unsigned char* dst, tagRECT const& dstRect, int dstPitch,
                                  unsigned char const* src, tagRECT const& srcRect, int srcPitch)
{
    int const w = std::min(Width(dstRect), Width(srcRect));
    int const h = std::min(Height(dstRect), Height(srcRect));
    if (w < 1 || h < 1)
        return;
    unsigned char* d = PixelAt(dst, dstRect.left, dstRect.top, dstPitch, 4);
    unsigned char const* s = PixelAt(src, srcRect.left, srcRect.top, srcPitch, 4);
    // Overlapping areas are blended strictly pixel after pixel.
    bool const overlap = AreasOverlap(d, dstPitch, w * 4, h, s, srcPitch, w * 4, h);
    for (int y = 0; y < h; ++y, d += dstPitch, s += srcPitch) {
        if (overlap)
            palvet::detail::BlendRowArgbScalar(d, s, w);
        else
            palvet::detail::BlendRowArgb(d, s, w);
    }
}

void StretchBufferOnBuffer(unsigned char* dst, tagRECT const& dstRect, int dstPitch, unsigned char const* src,
                           tagRECT const& srcRect, int srcPitch, int bpp)
{
    int const dw = Width(dstRect), dh = Height(dstRect);
    int const sw = Width(srcRect), sh = Height(srcRect);
    // An empty source has no pixel to repeat: draw nothing rather than read
    // outside it.
    if (dw < 1 || dh < 1 || sw < 1 || sh < 1 || bpp < 1)
        return;
    unsigned char* d0 = PixelAt(dst, dstRect.left, dstRect.top, dstPitch, bpp);
    unsigned char const* s0 = PixelAt(src, srcRect.left, srcRect.top, srcPitch, bpp);
    if (AreasOverlap(d0, dstPitch, dw * bpp, dh, s0, srcPitch, sw * bpp, sh)) {
        palvet::detail::StretchReference(d0, dstPitch, dw, dh, s0, srcPitch, sw, sh, bpp);
        return;
    }

    ColumnStrip strip(bpp, sw);
    StretchStepper cols(sw, dw);
    for (int x0 = 0; x0 < dw; x0 += kStrip) {
        int const n = strip.Next(cols, dw - x0);
        std::size_t const bytes = static_cast<std::size_t>(n) * static_cast<std::size_t>(bpp);
        unsigned char* d = d0 + static_cast<std::ptrdiff_t>(x0) * bpp;
        StretchStepper rows(sh, dh);
        int previous = -1;
        for (int y = 0; y < dh; ++y, rows.Advance(), d += dstPitch) {
            int const r = rows.Position();
            if (r == previous)  // an enlarged row repeats the one just made
                std::memcpy(d, d - dstPitch, bytes);
            else
                strip.Gather(d, s0 + static_cast<std::ptrdiff_t>(r) * srcPitch, bpp);
            previous = r;
        }
    }
}

void AlphaStretchBufferOnBuffer_ARGB(unsigned char* dst, tagRECT const& dstRect, int dstPitch,
                                     unsigned char const* src, tagRECT const& srcRect, int srcPitch)
{
    int const dw = Width(dstRect), dh = Height(dstRect);
    int const sw = Width(srcRect), sh = Height(srcRect);
    if (dw < 1 || dh < 1 || sw < 1 || sh < 1)
        return;
    unsigned char* d0 = PixelAt(dst, dstRect.left, dstRect.top, dstPitch, 4);
    unsigned char const* s0 = PixelAt(src, srcRect.left, srcRect.top, srcPitch, 4);
    if (AreasOverlap(d0, dstPitch, dw * 4, dh, s0, srcPitch, sw * 4, sh)) {
        palvet::detail::AlphaStretchReference(d0, dstPitch, dw, dh, s0, srcPitch, sw, sh);
        return;
    }

    ColumnStrip strip(4, sw);
    alignas(32) unsigned char row[kStrip * 4];
    StretchStepper cols(sw, dw);
    for (int x0 = 0; x0 < dw; x0 += kStrip) {
        int const n = strip.Next(cols, dw - x0);
        unsigned char* d = d0 + static_cast<std::ptrdiff_t>(x0) * 4;
        StretchStepper rows(sh, dh);
        int previous = -1;
        for (int y = 0; y < dh; ++y, rows.Advance(), d += dstPitch) {
            int const r = rows.Position();
            if (r != previous)
                strip.Gather(row, s0 + static_cast<std::ptrdiff_t>(r) * srcPitch, 4);
            previous = r;
            palvet::detail::BlendRowArgb(d, row, n);
        }
    }
}

void SetAlphaBufferColor_ARGB(unsigned int color, unsigned char* dst, tagRECT const& dstRect, int dstPitch,
                              unsigned char const* mask, tagRECT const& maskRect, int maskPitch)
{
    int const w = std::min(Width(dstRect), Width(maskRect));
    int const h = std::min(Height(dstRect), Height(maskRect));
    if (w < 1 || h < 1)
        return;
    std::uint32_t const rgb = color & 0xFFFFFFu;
    std::uint32_t const a = color >> 24;
    unsigned char* d = PixelAt(dst, dstRect.left, dstRect.top, dstPitch, 4);
    unsigned char const* m = PixelAt(mask, maskRect.left, maskRect.top, maskPitch, 1);
    // A shift, not a division by 255: full mask and alpha give 254.
    for (int y = 0; y < h; ++y, d += dstPitch, m += maskPitch)
        palvet::detail::TintRow32(d, m, w, rgb, a);
}

void DrawColorOnBuffer(unsigned int color, unsigned char* dst, tagRECT const* rect, int pitch)
{
    int const w = Width(*rect);
    int const h = Height(*rect);
    if (w < 1 || h < 1)
        return;
    unsigned char* d = PixelAt(dst, rect->left, rect->top, pitch, 4);
    for (int y = 0; y < h; ++y, d += pitch)
        palvet::detail::FillRow32(d, w, color);
}

namespace {

// Canvas of DrawLineOnBuffer: every store is clipped to the buffer.
struct LineCanvas {
    unsigned char* buf;
    int width;
    int height;
    int pitch;
    int bpp;
    unsigned char const* brush;
    int lw;

    void Put(int x, int y, unsigned char const* px) const
    {
        if (x >= 0 && x < width && y >= 0 && y < height)
            std::memcpy(PixelAt(buf, x, y, pitch, bpp), px, static_cast<std::size_t>(bpp));
    }

    // The brush's own row of lw pixels, along x or along y.
    void BrushRow(int x, int y) const
    {
        for (int k = 0; k < lw; ++k)
            Put(x + k, y, brush + static_cast<std::ptrdiff_t>(k) * bpp);
    }

    void BrushColumn(int x, int y) const
    {
        for (int k = 0; k < lw; ++k)
            Put(x, y + k, brush + static_cast<std::ptrdiff_t>(k) * bpp);
    }

    // lw pixels of the brush's first pixel.
    void FirstRow(int x, int y) const
    {
        for (int k = 0; k < lw; ++k)
            Put(x + k, y, brush);
    }

    void FirstColumn(int x, int y) const
    {
        for (int k = 0; k < lw; ++k)
            Put(x, y + k, brush);
    }
};

}  // namespace

void DrawLineOnBuffer(unsigned char* buf, tagPOINT from, tagPOINT to, int width, int height, int pitch, int bpp,
                      int lineWidth, void const* brush)
{
    if (buf == nullptr || brush == nullptr || bpp < 1)
        return;
    int const lw = std::max(lineWidth, 1);
    auto const clamp = [lw](int v, int size) {
        if (v < 0)
            v = 0;
        if (v >= size - lw)
            v = size - lw - 1;
        return v;
    };
    int x = clamp(from.x, width), y = clamp(from.y, height);
    int const x2 = clamp(to.x, width), y2 = clamp(to.y, height);
    if (width <= x + lw || height <= y + lw)
        return;
    // A brush as large as the buffer clamps to a negative corner: nothing
    // fits, so draw nothing rather than write before the buffer.
    if (x < 0 || y < 0)
        return;

    LineCanvas const c{buf, width, height, pitch, bpp, static_cast<unsigned char const*>(brush), lw};
    for (int r = 0; r < lw; ++r)
        std::memcpy(PixelAt(buf, x, y + r, pitch, bpp), c.brush, static_cast<std::size_t>(lw) * bpp);

    int const dx = std::abs(x2 - x), dy = std::abs(y2 - y);
    int const sx = x2 > x ? 1 : -1, sy = y2 > y ? 1 : -1;
    auto const outside = [&](int px, int py) { return px < 0 || px >= width || py < 0 || py >= height; };
    // Each step exposes one new edge of the square on its leading side.
    if (dy > dx) {
        int e = 2 * dx - dy;
        for (int i = 0; i < dy; ++i) {
            if (e >= 0) {
                e -= 2 * dy;
                x += sx;
                if (outside(x, y))
                    return;
                c.FirstColumn(sx > 0 ? x + lw - 1 : x, y);
            }
            y += sy;
            if (outside(x, y))
                return;
            c.BrushRow(x, sy > 0 ? y + lw - 1 : y);
            e += 2 * dx;
        }
    } else {
        int e = 2 * dy - dx;
        for (int i = 0; i < dx; ++i) {
            if (e >= 0) {
                e -= 2 * dx;
                y += sy;
                if (outside(x, y))
                    return;
                c.FirstRow(x, sy > 0 ? y + lw - 1 : y);
            }
            x += sx;
            if (outside(x, y))
                return;
            c.BrushColumn(sx > 0 ? x + lw - 1 : x, y);
            e += 2 * dy;
        }
    }
}

void DrawBuffer(unsigned char* dst, tagRECT dstRect, int dstPitch, unsigned char const* src, tagRECT srcRect,
                int srcPitch, int bpp, int scale, int alpha, int mode)
{
    bool const blend = bpp == 4 && alpha != 0;
    if (scale != 0 && (Width(dstRect) != Width(srcRect) || Height(dstRect) != Height(srcRect))) {
        GetRectByMode(dstRect, srcRect, scale, mode);
        if (blend)
            AlphaStretchBufferOnBuffer_ARGB(dst, dstRect, dstPitch, src, srcRect, srcPitch);
        else
            StretchBufferOnBuffer(dst, dstRect, dstPitch, src, srcRect, srcPitch, bpp);
        return;
    }
    GetRectByMode(dstRect, srcRect, 0, mode);
    if (blend)
        AlphaDrawBufferOnBuffer_ARGB(dst, dstRect, dstPitch, src, srcRect, srcPitch);
    else
        DrawBufferOnBuffer(dst, dstRect, dstPitch, src, srcRect, srcPitch, bpp);
}
