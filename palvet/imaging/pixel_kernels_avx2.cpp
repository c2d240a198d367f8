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

// Picks byte k of every pixel into the low byte of its 32-bit lane.
inline __m256i Channel(__m256i v, int k)
{
    char const z = -1;
    char const b = static_cast<char>(k);
    return _mm256_shuffle_epi8(v, _mm256_setr_epi8(b, z, z, z, b + 4, z, z, z, b + 8, z, z, z, b + 12, z, z, z,
                                                   b, z, z, z, b + 4, z, z, z, b + 8, z, z, z, b + 12, z, z, z));
}

// dc + trunc((sc - dc) * sa / outA) for one channel, as dc + trunc(diff * w)
// with w = sa / outA. The quotient is at most 255 in magnitude and, when
// not whole, at least 1 / 255 short of the next integer up. w is computed
// about 2^-20 too large (well above its rounding errors), so diff * w never
// falls below the exact quotient in magnitude and exceeds it by less than
// 255 * 2^-19: truncation gives the integer result.
inline __m256i BlendChannel(__m256i s, __m256i d, __m256 w, int k)
{
    __m256i const dc = Channel(d, k);
    __m256 const diff = _mm256_cvtepi32_ps(_mm256_sub_epi32(Channel(s, k), dc));
    return _mm256_add_epi32(dc, _mm256_cvttps_epi32(_mm256_mul_ps(diff, w)));
}

inline __m256i Blend8(__m256i s, __m256i d)
{
    __m256i const sa = _mm256_srli_epi32(s, 24);
    __m256i const da = _mm256_srli_epi32(d, 24);
    // sa * da fits the low 16 bits of each lane (the high halves stay 0);
    // x / 255 for x < 65536 is (x * 0x8081) >> 23.
    __m256i const x = _mm256_mullo_epi16(sa, da);
    __m256i const a = _mm256_srli_epi32(_mm256_mulhi_epu16(x, _mm256_set1_epi32(0x8081)), 7);
    __m256i const outA = _mm256_sub_epi32(_mm256_add_epi32(sa, da), a);
    // With sa 0 the weight is 0 and the pixel comes out as d, alpha da; the
    // max only keeps 0 / 0 away when both alphas are 0.
    __m256 const w = _mm256_div_ps(_mm256_mul_ps(_mm256_cvtepi32_ps(sa), _mm256_set1_ps(1.0f + 1.0f / 1048576.0f)),
                                   _mm256_cvtepi32_ps(_mm256_max_epi32(outA, _mm256_set1_epi32(1))));
    __m256i const b = BlendChannel(s, d, w, 0);
    __m256i const g = BlendChannel(s, d, w, 1);
    __m256i const r = BlendChannel(s, d, w, 2);
    // Every value is 0..255: pack to bytes B0-3 G0-3 R0-3 A0-3 per half,
    // then interleave them into pixels.
    __m256i const planar = _mm256_packus_epi16(_mm256_packus_epi32(b, g), _mm256_packus_epi32(r, outA));
    return _mm256_shuffle_epi8(planar, _mm256_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15,
                                                        0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15));
}

}  // namespace

void BlendRowArgbAvx2(unsigned char* dst, unsigned char const* src, int n)
{
    __m256i const alphaMask = _mm256_set1_epi32(static_cast<int>(0xFF000000u));
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        __m256i const s = Load(src + 4 * i);
        // Interface images are mostly fully opaque or fully clear.
        if (_mm256_testc_si256(s, alphaMask)) {
            Store(dst + 4 * i, s);
            continue;
        }
        if (_mm256_testz_si256(s, alphaMask))
            continue;
        Store(dst + 4 * i, Blend8(s, Load(dst + 4 * i)));
    }
    BlendRowArgbScalar(dst + 4 * i, src + 4 * i, n - i);
}

void GatherRow32Avx2(unsigned char* d, unsigned char const* s, int const* cols, StretchGroup const* groups, int n)
{
    int const count = n / 8;
    for (int g = 0; g < count; ++g) {
        StretchGroup const& grp = groups[g];
        unsigned char* out = d + 32 * g;
        if (grp.base >= 0) {
            __m256i const lanes = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(grp.lanes));
            Store(out, _mm256_permutevar8x32_epi32(Load(s + 4 * static_cast<std::ptrdiff_t>(grp.base)), lanes));
        } else {
            for (int k = 0; k < 8; ++k)
                StoreU32(out + 4 * k, LoadU32(s + 4 * static_cast<std::ptrdiff_t>(cols[8 * g + k])));
        }
    }
    for (int k = 8 * count; k < n; ++k)
        StoreU32(d + 4 * k, LoadU32(s + 4 * static_cast<std::ptrdiff_t>(cols[k])));
}

void Rgb24ToRgb32RowAvx2(unsigned char const* src, unsigned char* dst, int n, bool swap)
{
    __m256i const shuffle = swap
        ? _mm256_setr_epi8(2, 1, 0, -1, 5, 4, 3, -1, 8, 7, 6, -1, 11, 10, 9, -1,
                           2, 1, 0, -1, 5, 4, 3, -1, 8, 7, 6, -1, 11, 10, 9, -1)
        : _mm256_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1,
                           0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
    __m256i const alpha = _mm256_set1_epi32(static_cast<int>(0xFF000000u));
    auto const eight = [&](unsigned char const* s, unsigned char* d) {
        __m128i const lo = _mm_loadu_si128(reinterpret_cast<__m128i const*>(s));
        __m128i const hi = _mm_loadu_si128(reinterpret_cast<__m128i const*>(s + 12));
        __m256i const v = _mm256_inserti128_si256(_mm256_castsi128_si256(lo), hi, 1);
        Store(d, _mm256_or_si256(_mm256_shuffle_epi8(v, shuffle), alpha));
    };
    int i = 0;
    // The second 16-byte load of each 8 pixels reads 4 bytes past them, so
    // stop while at least 2 more pixels remain.
    for (; i + 18 <= n; i += 16) {
        eight(src + 3 * i, dst + 4 * i);
        eight(src + 3 * i + 24, dst + 4 * i + 32);
    }
    for (; i + 10 <= n; i += 8)
        eight(src + 3 * i, dst + 4 * i);
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
