// Conversions that move samples without colour arithmetic: planar and packed
// 4:2:2, 4:2:2 and 4:2:0 chroma, semi-planar chroma, and RGB bit layouts.

#include <palvet/imaging/yuv_layout_convert.h>

#include <palvet/imaging/color_conversion_internal.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

bool Magnitude(int v, int& out)
{
    if (v == INT_MIN)
        return false;
    out = v < 0 ? -v : v;
    return true;
}

inline unsigned Load16(unsigned char const* p) { return p[0] | (p[1] << 8); }

inline void Store16(unsigned char* p, unsigned v)
{
    p[0] = static_cast<unsigned char>(v);
    p[1] = static_cast<unsigned char>(v >> 8);
}

// Per-pixel 16-bit to 16-bit conversion over a frame with pitches.
template <class Op>
void Map16(int width, int height, unsigned char const* src, unsigned char* dst, int srcPitch, int dstPitch, Op op)
{
    for (int j = 0; j < height; ++j) {
        unsigned char const* s = src + static_cast<ptrdiff_t>(j) * srcPitch;
        unsigned char* d = dst + static_cast<ptrdiff_t>(j) * dstPitch;
        for (int x = 0; x < width; ++x)
            Store16(d + 2 * x, op(Load16(s + 2 * x)));
    }
}

}  // namespace

void YUVToYUYV_422(int width, int height, unsigned char const* src, int bYV, unsigned char* dst)
{
    int w, h;
    if (!src || !dst || !Magnitude(width, w) || !Magnitude(height, h))
        return;
    size_t const ySize = static_cast<size_t>(w) * h;
    unsigned char const* first = src + ySize;
    unsigned char const* second = first + ySize / 2;
    unsigned char const* uPlane = bYV ? second : first;
    unsigned char const* vPlane = bYV ? first : second;
    int const cw = w / 2;
    for (int j = 0; j < h; ++j) {
        unsigned char const* y = src + static_cast<size_t>(j) * w;
        unsigned char const* u = uPlane + static_cast<size_t>(j) * cw;
        unsigned char const* v = vPlane + static_cast<size_t>(j) * cw;
        unsigned char* d = dst + static_cast<size_t>(j) * cw * 4;
        for (int x = 0; x < cw; ++x, d += 4) {
            d[0] = y[2 * x];
            d[1] = u[x];
            d[2] = y[2 * x + 1];
            d[3] = v[x];
        }
    }
}

void YUYVToYUV_422(int width, int height, unsigned char const* src, unsigned char* dst, int bYV)
{
    int w, h;
    if (!src || !dst || !Magnitude(width, w) || !Magnitude(height, h))
        return;
    size_t const ySize = static_cast<size_t>(w) * h;
    unsigned char* first = dst + ySize;
    unsigned char* second = first + ySize / 2;
    unsigned char* uPlane = bYV ? second : first;
    unsigned char* vPlane = bYV ? first : second;
    int const cw = w / 2;
    for (int j = 0; j < h; ++j) {
        unsigned char const* s = src + static_cast<size_t>(j) * cw * 4;
        unsigned char* y = dst + static_cast<size_t>(j) * w;
        unsigned char* u = uPlane + static_cast<size_t>(j) * cw;
        unsigned char* v = vPlane + static_cast<size_t>(j) * cw;
        for (int x = 0; x < cw; ++x, s += 4) {
            y[2 * x] = s[0];
            u[x] = s[1];
            y[2 * x + 1] = s[2];
            v[x] = s[3];
        }
    }
}

void YUYV422ToYUV420(int width, int height, unsigned char const* src, unsigned char* dst, int bYV)
{
    int w, h;
    if (!src || !dst || !Magnitude(width, w) || !Magnitude(height, h) || h < 2)
        return;
    size_t const ySize = static_cast<size_t>(w) * h;
    unsigned char* first = dst + ySize;
    unsigned char* second = first + ySize / 4;
    unsigned char* uPlane = bYV ? second : first;
    unsigned char* vPlane = bYV ? first : second;
    int const cw = w / 2;
    for (int j = 0; j < h; ++j) {
        unsigned char const* s = src + static_cast<size_t>(j) * cw * 4;
        unsigned char* y = dst + static_cast<size_t>(j) * w;
        // Chroma only from the first row of each pair, and not from an odd last row.
        bool const chroma = (j & 1) == 0 && j + 1 < h;
        unsigned char* u = uPlane + static_cast<size_t>(j / 2) * cw;
        unsigned char* v = vPlane + static_cast<size_t>(j / 2) * cw;
        for (int x = 0; x < cw; ++x, s += 4) {
            y[2 * x] = s[0];
            y[2 * x + 1] = s[2];
            if (chroma) {
                u[x] = s[1];
                v[x] = s[3];
            }
        }
    }
}

void YUV422ToYUV420(int width, int height, unsigned char const* src, int bYVsrc, unsigned char* dst, int bYVdst)
{
    int w, h;
    if (!src || !dst || !Magnitude(width, w) || !Magnitude(height, h) || h < 2)
        return;
    size_t const ySize = static_cast<size_t>(w) * h;
    std::memcpy(dst, src, ySize);
    unsigned char const* sFirst = src + ySize;
    unsigned char const* sSecond = sFirst + ySize / 2;
    unsigned char* dFirst = dst + ySize;
    unsigned char* dSecond = dFirst + ySize / 4;
    unsigned char const* su = bYVsrc ? sSecond : sFirst;
    unsigned char const* sv = bYVsrc ? sFirst : sSecond;
    unsigned char* du = bYVdst ? dSecond : dFirst;
    unsigned char* dv = bYVdst ? dFirst : dSecond;
    size_t const cw = static_cast<size_t>(w / 2);
    for (int p = 0; p < h / 2; ++p) {
        size_t const top = static_cast<size_t>(2 * p) * cw, out = static_cast<size_t>(p) * cw;
        for (size_t x = 0; x < cw; ++x) {
            du[out + x] = static_cast<unsigned char>((su[top + x] + su[top + cw + x]) >> 1);
            dv[out + x] = static_cast<unsigned char>((sv[top + x] + sv[top + cw + x]) >> 1);
        }
    }
}

void YUV420ToYUV422(int width, int height, unsigned char const* src, int bYVsrc, unsigned char* dst, int bYVdst)
{
    int w, h;
    if (!src || !dst || !Magnitude(width, w) || !Magnitude(height, h) || h < 2)
        return;
    size_t const ySize = static_cast<size_t>(w) * h;
    std::memcpy(dst, src, ySize);
    unsigned char const* sFirst = src + ySize;
    unsigned char const* sSecond = sFirst + ySize / 4;
    unsigned char* dFirst = dst + ySize;
    unsigned char* dSecond = dFirst + ySize / 2;
    unsigned char const* su = bYVsrc ? sSecond : sFirst;
    unsigned char const* sv = bYVsrc ? sFirst : sSecond;
    unsigned char* du = bYVdst ? dSecond : dFirst;
    unsigned char* dv = bYVdst ? dFirst : dSecond;
    size_t const cw = static_cast<size_t>(w / 2);
    for (int p = 0; p < h / 2; ++p) {
        size_t const in = static_cast<size_t>(p) * cw, top = static_cast<size_t>(2 * p) * cw;
        std::memcpy(du + top, su + in, cw);
        std::memcpy(du + top + cw, su + in, cw);
        std::memcpy(dv + top, sv + in, cw);
        std::memcpy(dv + top + cw, sv + in, cw);
    }
}

void RGB565ToRGB555(int width, int height, unsigned char const* src, unsigned char* dst, int srcPitch,
                    int dstPitch, int bBGR)
{
    if (!dst || !src || height < 1 || width < 1)
        return;
    Map16(width, height, src, dst, srcPitch, dstPitch, [bBGR](unsigned p) {
        if (bBGR)
            p = (p & 0x07E0) | (p >> 11) | ((p & 0x1F) << 11);
        return ((p >> 1) & 0x7FE0) | (p & 0x1F);
    });
}

// Null pointers are checked here too: a caller gains nothing from a crash.
void RGB555ToRGB565(int width, int height, unsigned char const* src, unsigned char* dst, int srcPitch,
                    int dstPitch, int bBGR)
{
    if (!dst || !src || height < 1 || width < 1)
        return;
    Map16(width, height, src, dst, srcPitch, dstPitch, [bBGR](unsigned p) {
        if (bBGR)
            p = (p & 0x83E0) | ((p >> 10) & 0x1F) | ((p & 0x1F) << 10);
        return ((p << 1) & 0xFFC0) | (p & 0x1F);
    });
}

namespace {

template <bool k565>
void Rgb888To16(int width, int height, unsigned char const* src, unsigned char* dst, int srcPitch, int dstPitch,
                int bFlag)
{
    if (!dst || !src || height < 1 || width < 1)
        return;
    // The flag reads the other way round here than in the YUV conversions;
    // applications rely on this sense.
    int const redByte = bFlag ? 0 : 2;
    int const blueByte = 2 - redByte;
    for (int j = 0; j < height; ++j) {
        unsigned char const* s = src + static_cast<ptrdiff_t>(j) * srcPitch;
        unsigned char* d = dst + static_cast<ptrdiff_t>(j) * dstPitch;
        for (int x = 0; x < width; ++x, s += 3, d += 2) {
            unsigned const r = s[redByte], g = s[1], b = s[blueByte];
            Store16(d, k565 ? ((r >> 3) << 11) | ((g >> 2) << 5) | (b >> 3)
                            : ((r >> 3) << 10) | ((g >> 3) << 5) | (b >> 3));
        }
    }
}

// Kept exactly as applications know it: the blue field goes to bytes 0 and 2,
// red is never read and the flag is ignored.
template <unsigned kGreenMask, int kGreenShift>
void Rgb16To888(int width, int height, unsigned char const* src, unsigned char* dst, int srcPitch, int dstPitch)
{
    if (!dst || !src || height < 1 || width < 1)
        return;
    for (int j = 0; j < height; ++j) {
        unsigned char const* s = src + static_cast<ptrdiff_t>(j) * srcPitch;
        unsigned char* d = dst + static_cast<ptrdiff_t>(j) * dstPitch;
        for (int x = 0; x < width; ++x, s += 2, d += 3) {
            unsigned const p = Load16(s);
            unsigned char const blue = static_cast<unsigned char>((p << 3) & 0xFF);
            d[0] = blue;
            d[1] = static_cast<unsigned char>((p & kGreenMask) >> kGreenShift);
            d[2] = blue;
        }
    }
}

}  // namespace

void RGB888ToRGB565(int width, int height, unsigned char const* src, unsigned char* dst, int srcPitch,
                    int dstPitch, int bFlag)
{
    Rgb888To16<true>(width, height, src, dst, srcPitch, dstPitch, bFlag);
}

void RGB888ToRGB555(int width, int height, unsigned char const* src, unsigned char* dst, int srcPitch,
                    int dstPitch, int bFlag)
{
    Rgb888To16<false>(width, height, src, dst, srcPitch, dstPitch, bFlag);
}

void RGB565ToRGB888(int width, int height, unsigned char const* src, unsigned char* dst, int srcPitch,
                    int dstPitch, int /*bBGR*/)
{
    Rgb16To888<0x7E0, 3>(width, height, src, dst, srcPitch, dstPitch);
}

void RGB555ToRGB888(int width, int height, unsigned char const* src, unsigned char* dst, int srcPitch,
                    int dstPitch, int /*bBGR*/)
{
    Rgb16To888<0x3E0, 2>(width, height, src, dst, srcPitch, dstPitch);
}

void YUV420SPToYUV420(int width, int height, unsigned char const* src, unsigned char* dst, int bVU)
{
    if (!src || !dst || width <= 0 || height <= 0)
        return;
    size_t const ySize = static_cast<size_t>(width) * height;
    std::memcpy(dst, src, ySize);
    unsigned char* afterY = dst + ySize;
    unsigned char* later = dst + ySize * 5 / 4;
    unsigned char* even = bVU ? later : afterY;
    unsigned char* odd = bVU ? afterY : later;
    unsigned char const* c = src + ySize;
    size_t const n = ySize / 2;
    size_t i = 0;
    // With w*h not a multiple of 4 the two planes share a byte and the order
    // of writes decides it, so only whole, separate planes go the fast way.
    palvet::detail::ColourKernels const* k = palvet::detail::ActiveColourKernels();
    if (k && ySize % 4 == 0 && n / 2 <= INT_MAX)
        i = 2 * static_cast<size_t>(k->splitPairs(c, even, odd, static_cast<int>(n / 2)));
    for (; i < n; ++i) {
        if (i & 1)
            odd[i >> 1] = c[i];
        else
            even[i >> 1] = c[i];
    }
}

void YUV420ToYUV420SP(int width, int height, unsigned char const* src, int bVU, unsigned char* dst)
{
    if (!src || !dst || width <= 0 || height <= 0)
        return;
    size_t const ySize = static_cast<size_t>(width) * height;
    std::memcpy(dst, src, ySize);
    unsigned char const* afterY = src + ySize;
    unsigned char const* later = src + ySize * 5 / 4;
    unsigned char const* even = bVU ? later : afterY;
    unsigned char const* odd = bVU ? afterY : later;
    unsigned char* c = dst + ySize;
    size_t const n = ySize / 2;
    size_t i = 0;
    palvet::detail::ColourKernels const* k = palvet::detail::ActiveColourKernels();
    if (k && n / 2 <= INT_MAX)
        i = 2 * static_cast<size_t>(k->joinPairs(even, odd, c, static_cast<int>(n / 2)));
    for (; i < n; ++i)
        c[i] = (i & 1) ? odd[i >> 1] : even[i >> 1];
}
