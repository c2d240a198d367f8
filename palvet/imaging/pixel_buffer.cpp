#include <palvet/imaging/pixel_buffer.h>

#include <palvet/core/cpu_features_internal.h>
#include <palvet/imaging/pixel_kernels_internal.h>

#include <cstring>
#include <new>

using palvet::detail::LoadU32;
using palvet::detail::PixelAt;
using palvet::detail::StoreU32;

namespace {

inline unsigned char* Row(unsigned char* base, int y, int pitch)
{
    return base + static_cast<std::ptrdiff_t>(y) * pitch;
}

inline unsigned char const* Row(unsigned char const* base, int y, int pitch)
{
    return base + static_cast<std::ptrdiff_t>(y) * pitch;
}

inline unsigned char Grey(unsigned r, unsigned g, unsigned b)
{
    return static_cast<unsigned char>((77 * r + 151 * g + 28 * b) >> 8);
}

// Whether rows start with their NEON kernels (which do whole vectors and
// say how far they got); asked once per call.
#if defined(__arm__) || defined(__aarch64__)
bool NeonRows()
{
    return palvet::detail::UseNeon();
}
#define PALVET_NEON_ROW(neon, call) ((neon) ? palvet::detail::call : 0)
#else
bool NeonRows()
{
    return false;
}
#define PALVET_NEON_ROW(neon, call) ((void)(neon), 0)
#endif

}  // namespace

void MemsetBuffer(unsigned char* buf, int x, int y, int w, int h, int bpp, int pitch, unsigned char value)
{
    if (w < 1 || h < 1 || bpp < 1)
        return;
    std::size_t const bytes = static_cast<std::size_t>(w) * static_cast<std::size_t>(bpp);
    for (int i = 0; i < h; ++i)
        std::memset(PixelAt(buf, x, y + i, pitch, bpp), value, bytes);
}

void ConvertAlphaToRGB32Buffer(unsigned char const* alpha, int alphaPitch, unsigned char* dst, int dstPitch,
                               int w, int h, unsigned int color)
{
    if (w < 1)
        return;
    for (int y = 0; y < h; ++y)
        palvet::detail::MaskRow32(Row(dst, y, dstPitch), Row(alpha, y, alphaPitch), w, color & 0xFFFFFFu);
}

void ConvertAlphaToRGB24Buffer(unsigned char const* alpha, int alphaPitch, unsigned char* dst, int dstPitch,
                               int w, int h, unsigned int colorOn, unsigned int colorOff)
{
    unsigned char const on[3] = {static_cast<unsigned char>(colorOn), static_cast<unsigned char>(colorOn >> 8),
                                 static_cast<unsigned char>(colorOn >> 16)};
    unsigned char const off[3] = {static_cast<unsigned char>(colorOff), static_cast<unsigned char>(colorOff >> 8),
                                  static_cast<unsigned char>(colorOff >> 16)};
    bool const neon = NeonRows();
    for (int y = 0; y < h; ++y) {
        unsigned char const* a = Row(alpha, y, alphaPitch);
        unsigned char* d = Row(dst, y, dstPitch);
        for (int x = PALVET_NEON_ROW(neon, AlphaToRgb24RowNeon(a, d, w, on, off)); x < w; ++x) {
            unsigned char const* c = a[x] ? on : off;
            d[3 * x] = c[0];
            d[3 * x + 1] = c[1];
            d[3 * x + 2] = c[2];
        }
    }
}

void SetRGB32AlphaRatio(unsigned char* buf, int pitch, int w, int h, unsigned char ratio)
{
    // A shift rather than a division by 255: 255 * 255 >> 8 is 254, and
    // existing images were made with that.
    bool const neon = NeonRows();
    for (int y = 0; y < h; ++y) {
        unsigned char* p = Row(buf, y, pitch);
        for (int x = PALVET_NEON_ROW(neon, AlphaRatioRowNeon(p, w, ratio)); x < w; ++x)
            p[4 * x + 3] = static_cast<unsigned char>((p[4 * x + 3] * ratio) >> 8);
    }
}

void SetRGB32Alpha(unsigned char* buf, int pitch, int w, int h, unsigned char alpha)
{
    bool const neon = NeonRows();
    for (int y = 0; y < h; ++y) {
        unsigned char* p = Row(buf, y, pitch);
        for (int x = PALVET_NEON_ROW(neon, AlphaSetRowNeon(p, w, alpha)); x < w; ++x)
            p[4 * x + 3] = alpha;
    }
}

void ConvertRGB24ToRGB32(unsigned char const* src, int srcPitch, unsigned char* dst, int dstPitch, int w, int h,
                         int bBGR)
{
    if (w < 1)
        return;
    for (int y = 0; y < h; ++y)
        palvet::detail::Rgb24ToRgb32Row(Row(src, y, srcPitch), Row(dst, y, dstPitch), w, bBGR != 0);
}

void ConvertRGB32ToRGB24(unsigned char const* src, int srcPitch, unsigned char* dst, int dstPitch, int w, int h,
                         int bBGR)
{
    if (w < 1)
        return;
    for (int y = 0; y < h; ++y)
        palvet::detail::Rgb32ToRgb24Row(Row(src, y, srcPitch), Row(dst, y, dstPitch), w, bBGR != 0);
}

void ConvertRGB24ToGray(unsigned char const* src, int srcPitch, unsigned char* dst, int dstPitch, int w, int h,
                        int bBGR)
{
    int const ri = bBGR ? 2 : 0;
    int const bi = bBGR ? 0 : 2;
    bool const neon = NeonRows();
    for (int y = 0; y < h; ++y) {
        unsigned char const* s = Row(src, y, srcPitch);
        unsigned char* d = Row(dst, y, dstPitch);
        for (int x = PALVET_NEON_ROW(neon, GreyRow24Neon(s, d, w, bBGR != 0)); x < w; ++x)
            d[x] = Grey(s[3 * x + ri], s[3 * x + 1], s[3 * x + bi]);
    }
}

void ConvertRGB32ToGray(unsigned char const* src, int srcPitch, unsigned char* dst, int dstPitch, int w, int h,
                        int bBGR)
{
    int const ri = bBGR ? 2 : 0;
    int const bi = bBGR ? 0 : 2;
    bool const neon = NeonRows();
    for (int y = 0; y < h; ++y) {
        unsigned char const* s = Row(src, y, srcPitch);
        unsigned char* d = Row(dst, y, dstPitch);
        for (int x = PALVET_NEON_ROW(neon, GreyRow32Neon(s, d, w, bBGR != 0)); x < w; ++x)
            d[x] = Grey(s[4 * x + ri], s[4 * x + 1], s[4 * x + bi]);
    }
}

void RevertRGB32ToBGR32(unsigned char* buf, int pitch, int w, int h)
{
    bool const neon = NeonRows();
    for (int y = 0; y < h; ++y) {
        unsigned char* p = Row(buf, y, pitch);
        for (int x = PALVET_NEON_ROW(neon, SwapRBRow32Neon(p, w)); x < w; ++x) {
            std::uint32_t const v = LoadU32(p + 4 * x);
            StoreU32(p + 4 * x, (v & 0xFF00FF00u) | (v >> 16 & 0xFFu) | (v & 0xFFu) << 16);
        }
    }
}

void RevertRGB24ToBGR24(unsigned char* buf, int pitch, int w, int h)
{
    bool const neon = NeonRows();
    for (int y = 0; y < h; ++y) {
        unsigned char* p = Row(buf, y, pitch);
        for (int x = PALVET_NEON_ROW(neon, SwapRBRow24Neon(p, w)); x < w; ++x) {
            unsigned char const t = p[3 * x];
            p[3 * x] = p[3 * x + 2];
            p[3 * x + 2] = t;
        }
    }
}

void RevertBottomUpBuffer(unsigned char* buf, int x, int y, int w, int h, int bpp, int pitch)
{
    if (buf == nullptr || h < 2 || w < 1 || bpp < 1)
        return;
    std::size_t const bytes = static_cast<std::size_t>(w) * static_cast<std::size_t>(bpp);
#if defined(__arm__) || defined(__aarch64__)
    if (palvet::detail::UseNeon()) {
        // Rows exchanged in place, a vector at a time: no row-sized copy.
        for (int i = 0; i < h / 2; ++i)
            palvet::detail::SwapBytesNeon(PixelAt(buf, x, y + i, pitch, bpp), PixelAt(buf, x, y + h - 1 - i, pitch, bpp),
                                          bytes);
        return;
    }
#endif
    unsigned char* tmp = new (std::nothrow) unsigned char[bytes];
    if (tmp == nullptr)
        return;
    for (int i = 0; i < h / 2; ++i) {
        unsigned char* a = PixelAt(buf, x, y + i, pitch, bpp);
        unsigned char* b = PixelAt(buf, x, y + h - 1 - i, pitch, bpp);
        std::memcpy(tmp, a, bytes);
        std::memcpy(a, b, bytes);
        std::memcpy(b, tmp, bytes);
    }
    delete[] tmp;
}
