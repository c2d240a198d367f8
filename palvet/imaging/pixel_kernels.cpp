#include <palvet/imaging/pixel_kernels_internal.h>

#include <palvet/core/cpu_features_internal.h>

namespace palvet::detail {

namespace {

void Span(void const* p, int pitch, int rowBytes, int rows, std::uintptr_t& lo, std::uintptr_t& hi)
{
    std::uintptr_t const first = reinterpret_cast<std::uintptr_t>(p);
    std::uintptr_t const last = first + static_cast<std::uintptr_t>(static_cast<std::ptrdiff_t>(rows - 1) * pitch);
    lo = first < last ? first : last;
    hi = (first < last ? last : first) + static_cast<std::uintptr_t>(rowBytes);
}

}  // namespace

bool AreasOverlap(void const* a, int pitchA, int rowBytesA, int rowsA, void const* b, int pitchB,
                  int rowBytesB, int rowsB)
{
    if (rowsA < 1 || rowsB < 1 || rowBytesA < 1 || rowBytesB < 1)
        return false;
    std::uintptr_t loA, hiA, loB, hiB;
    Span(a, pitchA, rowBytesA, rowsA, loA, hiA);
    Span(b, pitchB, rowBytesB, rowsB, loB, hiB);
    return loA < hiB && loB < hiA;
}

int BuildStretchGroups(int const* cols, int n, int srcWidth, StretchGroup* groups)
{
    int const count = n / 8;
    for (int g = 0; g < count; ++g) {
        int const* c = cols + 8 * g;
        int const base = c[0];
        bool fits = base >= 0 && base + 8 <= srcWidth;
        for (int k = 0; k < 8 && fits; ++k)
            fits = c[k] >= base && c[k] - base < 8;
        groups[g].base = fits ? base : -1;
        for (int k = 0; k < 8; ++k)
            groups[g].lanes[k] = fits ? c[k] - base : 0;
    }
    return count;
}

void BlendRowArgbScalar(unsigned char* dst, unsigned char const* src, int n)
{
    for (int i = 0; i < n; ++i) {
        std::uint32_t const s = LoadU32(src + 4 * i);
        std::uint32_t const sa = s >> 24;
        if (sa == 0)
            continue;
        if (sa == 255) {  // an opaque source always wins: the blend gives s
            StoreU32(dst + 4 * i, s);
            continue;
        }
        StoreU32(dst + 4 * i, BlendArgb(LoadU32(dst + 4 * i), s));
    }
}

void BlendRowArgb(unsigned char* dst, unsigned char const* src, int n)
{
#if defined(__x86_64__) || defined(__i386__)
    if (UseAvx512()) {
        BlendRowArgbAvx512(dst, src, n);
        return;
    }
    if (UseAvx2()) {
        BlendRowArgbAvx2(dst, src, n);
        return;
    }
#elif defined(__arm__) || defined(__aarch64__)
    if (UseNeon()) {
        BlendRowArgbNeon(dst, src, n);
        return;
    }
#endif
    BlendRowArgbScalar(dst, src, n);
}

void Rgb24ToRgb32RowScalar(unsigned char const* src, unsigned char* dst, int n, bool swap)
{
    int const i0 = swap ? 2 : 0;
    int const i2 = swap ? 0 : 2;
    for (int i = 0; i < n; ++i, src += 3, dst += 4) {
        dst[0] = src[i0];
        dst[1] = src[1];
        dst[2] = src[i2];
        dst[3] = 0xFF;
    }
}

void Rgb24ToRgb32Row(unsigned char const* src, unsigned char* dst, int n, bool swap)
{
#if defined(__x86_64__) || defined(__i386__)
    if (UseAvx2()) {
        Rgb24ToRgb32RowAvx2(src, dst, n, swap);
        return;
    }
#elif defined(__arm__) || defined(__aarch64__)
    if (UseNeon()) {
        Rgb24ToRgb32RowNeon(src, dst, n, swap);
        return;
    }
#endif
    Rgb24ToRgb32RowScalar(src, dst, n, swap);
}

void Rgb32ToRgb24RowScalar(unsigned char const* src, unsigned char* dst, int n, bool swap)
{
    int const i0 = swap ? 2 : 0;
    int const i2 = swap ? 0 : 2;
    for (int i = 0; i < n; ++i, src += 4, dst += 3) {
        dst[0] = src[i0];
        dst[1] = src[1];
        dst[2] = src[i2];
    }
}

void Rgb32ToRgb24Row(unsigned char const* src, unsigned char* dst, int n, bool swap)
{
#if defined(__x86_64__) || defined(__i386__)
    if (UseAvx2()) {
        Rgb32ToRgb24RowAvx2(src, dst, n, swap);
        return;
    }
#elif defined(__arm__) || defined(__aarch64__)
    if (UseNeon()) {
        Rgb32ToRgb24RowNeon(src, dst, n, swap);
        return;
    }
#endif
    Rgb32ToRgb24RowScalar(src, dst, n, swap);
}

// On x86 the compiler vectorises these loops itself; 32-bit ARM needs the
// NEON versions, since only the *_neon files may use NEON.
#if (defined(__arm__) || defined(__aarch64__))
#define PALVET_NEON_DISPATCH(call)  \
    if (UseNeon()) {             \
        call;                       \
        return;                     \
    }
#else
#define PALVET_NEON_DISPATCH(call)
#endif

void MaskRow32Scalar(unsigned char* d, unsigned char const* m, int n, std::uint32_t rgb)
{
    for (int i = 0; i < n; ++i)
        StoreU32(d + 4 * i, rgb | static_cast<std::uint32_t>(m[i]) << 24);
}

void MaskRow32(unsigned char* d, unsigned char const* m, int n, std::uint32_t rgb)
{
    PALVET_NEON_DISPATCH(MaskRow32Neon(d, m, n, rgb))
    MaskRow32Scalar(d, m, n, rgb);
}

void TintRow32Scalar(unsigned char* d, unsigned char const* m, int n, std::uint32_t rgb, std::uint32_t alpha)
{
    for (int i = 0; i < n; ++i)
        StoreU32(d + 4 * i, rgb | ((alpha * m[i]) >> 8) << 24);
}

void TintRow32(unsigned char* d, unsigned char const* m, int n, std::uint32_t rgb, std::uint32_t alpha)
{
    PALVET_NEON_DISPATCH(TintRow32Neon(d, m, n, rgb, alpha))
    TintRow32Scalar(d, m, n, rgb, alpha);
}

void FillRow32Scalar(unsigned char* d, int n, std::uint32_t color)
{
    for (int i = 0; i < n; ++i)
        StoreU32(d + 4 * i, color);
}

void FillRow32(unsigned char* d, int n, std::uint32_t color)
{
    PALVET_NEON_DISPATCH(FillRow32Neon(d, n, color))
    FillRow32Scalar(d, n, color);
}

#undef PALVET_NEON_DISPATCH

void RotateBytes(unsigned char const* src, unsigned char* dst, int w, int h, int unit, int degrees)
{
    if (w < 1 || h < 1 || unit < 1)
        return;
    std::ptrdiff_t const W = w, H = h, N = unit;
    for (std::ptrdiff_t r = 0; r < H; ++r) {
        for (std::ptrdiff_t c = 0; c < W; ++c) {
            std::ptrdiff_t to;
            if (degrees == 90)
                to = c * H + (H - 1 - r);
            else if (degrees == 270)
                to = (W - 1 - c) * H + r;
            else if (degrees == 180)
                to = (H - 1 - r) * W + (W - 1 - c);
            else
                return;
            unsigned char const* s = src + (r * W + c) * N;
            unsigned char* d = dst + to * N;
            for (std::ptrdiff_t k = 0; k < N; ++k)
                d[k] = s[k];
        }
    }
}

void Rotate32Scalar(unsigned char const* src, unsigned char* dst, int w, int h, int degrees)
{
    RotateUnits<4>(src, dst, w, h, degrees);
}

void Rotate32(unsigned char const* src, unsigned char* dst, int w, int h, int degrees)
{
#if defined(__x86_64__) || (defined(__i386__) && defined(__SSE2__))
    if (UseSse2()) {
        Rotate32Sse2(src, dst, w, h, degrees);
        return;
    }
#elif defined(__arm__) || defined(__aarch64__)
    if (UseNeon()) {
        Rotate32Neon(src, dst, w, h, degrees);
        return;
    }
#endif
    Rotate32Scalar(src, dst, w, h, degrees);
}

}  // namespace palvet::detail
