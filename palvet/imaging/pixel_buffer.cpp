#include <palvet/imaging/pixel_buffer.h>

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
    for (int y = 0; y < h; ++y) {
        unsigned char const* a = Row(alpha, y, alphaPitch);
        unsigned char* d = Row(dst, y, dstPitch);
        for (int x = 0; x < w; ++x, d += 3) {
            unsigned char const* c = a[x] ? on : off;
            d[0] = c[0];
            d[1] = c[1];
            d[2] = c[2];
        }
    }
}

void SetRGB32AlphaRatio(unsigned char* buf, int pitch, int w, int h, unsigned char ratio)
{
    // A shift rather than a division by 255: 255 * 255 >> 8 is 254, and
    // existing images were made with that.
    for (int y = 0; y < h; ++y) {
        unsigned char* p = Row(buf, y, pitch) + 3;
        for (int x = 0; x < w; ++x)
            p[4 * x] = static_cast<unsigned char>((p[4 * x] * ratio) >> 8);
    }
}

void SetRGB32Alpha(unsigned char* buf, int pitch, int w, int h, unsigned char alpha)
{
    for (int y = 0; y < h; ++y) {
        unsigned char* p = Row(buf, y, pitch) + 3;
        for (int x = 0; x < w; ++x)
            p[4 * x] = alpha;
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
    for (int y = 0; y < h; ++y) {
        unsigned char const* s = Row(src, y, srcPitch);
        unsigned char* d = Row(dst, y, dstPitch);
        for (int x = 0; x < w; ++x, s += 3)
            d[x] = Grey(s[ri], s[1], s[bi]);
    }
}

void ConvertRGB32ToGray(unsigned char const* src, int srcPitch, unsigned char* dst, int dstPitch, int w, int h,
                        int bBGR)
{
    int const ri = bBGR ? 2 : 0;
    int const bi = bBGR ? 0 : 2;
    for (int y = 0; y < h; ++y) {
        unsigned char const* s = Row(src, y, srcPitch);
        unsigned char* d = Row(dst, y, dstPitch);
        for (int x = 0; x < w; ++x, s += 4)
            d[x] = Grey(s[ri], s[1], s[bi]);
    }
}

void RevertRGB32ToBGR32(unsigned char* buf, int pitch, int w, int h)
{
    for (int y = 0; y < h; ++y) {
        unsigned char* p = Row(buf, y, pitch);
        for (int x = 0; x < w; ++x) {
            std::uint32_t const v = LoadU32(p + 4 * x);
            StoreU32(p + 4 * x, (v & 0xFF00FF00u) | (v >> 16 & 0xFFu) | (v & 0xFFu) << 16);
        }
    }
}

void RevertRGB24ToBGR24(unsigned char* buf, int pitch, int w, int h)
{
    for (int y = 0; y < h; ++y) {
        unsigned char* p = Row(buf, y, pitch);
        for (int x = 0; x < w; ++x, p += 3) {
            unsigned char const t = p[0];
            p[0] = p[2];
            p[2] = t;
        }
    }
}

void RevertBottomUpBuffer(unsigned char* buf, int x, int y, int w, int h, int bpp, int pitch)
{
    if (buf == nullptr || h < 2 || w < 1 || bpp < 1)
        return;
    std::size_t const bytes = static_cast<std::size_t>(w) * static_cast<std::size_t>(bpp);
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
