// AVX2 row kernels. Built with -mavx2; only called after CpuHasAvx2().
#include <palvet/imaging/pixel_kernels_internal.h>

#if defined(__AVX2__)
#include <immintrin.h>

namespace palvet::detail {

namespace {

inline __m256i Load(unsigned char const* p)
{
    return _mm256_loadu_si256(reinterpret_cast<__m256i const*>(p));
}

inline void Store(unsigned char* p, __m256i v)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
}

// dc + (sc - dc) * sa / outA for one channel (bits shift..shift+7 of each
// lane). The quotient is at most 255 in magnitude and the exact value
// (n +- 0.5) / outA keeps 0.5 / 255 away from any integer, so a float
// product with a correctly rounded reciprocal truncates to the same
// integer as the integer division.
inline __m256i BlendChannel(__m256i s, __m256i d, __m256i sa, __m256 rcp, int shift)
{
    __m256i const mask = _mm256_set1_epi32(0xFF);
    __m256i const sc = _mm256_and_si256(_mm256_srli_epi32(s, shift), mask);
    __m256i const dc = _mm256_and_si256(_mm256_srli_epi32(d, shift), mask);
    // The difference fits 16 bits; madd multiplies the low halves exactly
    // and adds the high halves times zero.
    __m256i const n = _mm256_madd_epi16(_mm256_sub_epi32(sc, dc), sa);
    __m256 const nf = _mm256_cvtepi32_ps(n);
    __m256 const half = _mm256_or_ps(_mm256_and_ps(nf, _mm256_set1_ps(-0.0f)), _mm256_set1_ps(0.5f));
    __m256i const q = _mm256_cvttps_epi32(_mm256_mul_ps(_mm256_add_ps(nf, half), rcp));
    return _mm256_slli_epi32(_mm256_and_si256(_mm256_add_epi32(dc, q), mask), shift);
}

inline __m256i Blend8(__m256i s, __m256i d)
{
    __m256i const sa = _mm256_srli_epi32(s, 24);
    __m256i const da = _mm256_srli_epi32(d, 24);
    // sa * da fits the low 16 bits of each lane; x / 255 for x <= 65025 is
    // (x + (x >> 8) + 1) >> 8.
    __m256i const x = _mm256_mullo_epi16(sa, da);
    __m256i const a = _mm256_srli_epi32(
        _mm256_add_epi32(_mm256_add_epi32(x, _mm256_srli_epi32(x, 8)), _mm256_set1_epi32(1)), 8);
    __m256i const outA = _mm256_sub_epi32(_mm256_add_epi32(sa, da), a);
    // outA is 0 only where sa and da are both 0; those lanes keep d below.
    __m256 const rcp = _mm256_div_ps(_mm256_set1_ps(1.0f), _mm256_cvtepi32_ps(outA));
    __m256i out = _mm256_slli_epi32(outA, 24);
    out = _mm256_or_si256(out, BlendChannel(s, d, sa, rcp, 0));
    out = _mm256_or_si256(out, BlendChannel(s, d, sa, rcp, 8));
    out = _mm256_or_si256(out, BlendChannel(s, d, sa, rcp, 16));
    __m256i const transparent = _mm256_cmpeq_epi32(sa, _mm256_setzero_si256());
    return _mm256_blendv_epi8(out, d, transparent);
}

}  // namespace

void BlendRowArgbAvx2(unsigned char* dst, unsigned char const* src, int n)
{
    __m256i const alphaMask = _mm256_set1_epi32(static_cast<int>(0xFF000000u));
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        __m256i const s = Load(src + 4 * i);
        __m256i const sa = _mm256_and_si256(s, alphaMask);
        // Interface images are mostly fully opaque or fully clear.
        int const opaque = _mm256_movemask_epi8(_mm256_cmpeq_epi32(sa, alphaMask));
        if (opaque == -1) {
            Store(dst + 4 * i, s);
            continue;
        }
        int const clear = _mm256_movemask_epi8(_mm256_cmpeq_epi32(sa, _mm256_setzero_si256()));
        if (clear == -1)
            continue;
        Store(dst + 4 * i, Blend8(s, Load(dst + 4 * i)));
    }
    BlendRowArgbScalar(dst + 4 * i, src + 4 * i, n - i);
}

void Rgb24ToRgb32RowAvx2(unsigned char const* src, unsigned char* dst, int n, bool swap)
{
    __m256i const shuffle = swap
        ? _mm256_setr_epi8(2, 1, 0, -1, 5, 4, 3, -1, 8, 7, 6, -1, 11, 10, 9, -1,
                           2, 1, 0, -1, 5, 4, 3, -1, 8, 7, 6, -1, 11, 10, 9, -1)
        : _mm256_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1,
                           0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
    __m256i const alpha = _mm256_set1_epi32(static_cast<int>(0xFF000000u));
    int i = 0;
    // The second 16-byte load reads 4 bytes past the 8 pixels it converts,
    // so stop while at least 10 pixels remain.
    for (; i + 10 <= n; i += 8) {
        unsigned char const* s = src + 3 * i;
        __m128i const lo = _mm_loadu_si128(reinterpret_cast<__m128i const*>(s));
        __m128i const hi = _mm_loadu_si128(reinterpret_cast<__m128i const*>(s + 12));
        __m256i const v = _mm256_inserti128_si256(_mm256_castsi128_si256(lo), hi, 1);
        Store(dst + 4 * i, _mm256_or_si256(_mm256_shuffle_epi8(v, shuffle), alpha));
    }
    Rgb24ToRgb32RowScalar(src + 3 * i, dst + 4 * i, n - i, swap);
}

void Rgb32ToRgb24RowAvx2(unsigned char const* src, unsigned char* dst, int n, bool swap)
{
    __m256i const shuffle = swap
        ? _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1,
                           2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1)
        : _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1,
                           0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    __m256i const pack = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7);
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        __m256i const v = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(Load(src + 4 * i), shuffle), pack);
        unsigned char* d = dst + 3 * i;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm256_castsi256_si128(v));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(d + 16), _mm256_extracti128_si256(v, 1));
    }
    Rgb32ToRgb24RowScalar(src + 4 * i, dst + 3 * i, n - i, swap);
}

}  // namespace palvet::detail

#endif
