// AVX-512 (F + BW) row kernels. Built with -mavx512f -mavx512bw; only called
// after CpuHasAvx512().
#include <palvet/imaging/pixel_kernels_internal.h>

#if defined(__AVX512F__) && defined(__AVX512BW__)
#include <palvet/imaging/avx512_intrinsics_internal.h>

namespace palvet::detail {

namespace {

// Picks byte k of every pixel into the low byte of its 32-bit lane.
inline __m512i Channel(__m512i v, int k)
{
    char const z = -1;
    char const b = static_cast<char>(k);
    __m128i const lane = _mm_setr_epi8(b, z, z, z, b + 4, z, z, z, b + 8, z, z, z, b + 12, z, z, z);
    return _mm512_shuffle_epi8(v, _mm512_broadcast_i32x4(lane));
}

// The same arithmetic as the AVX2 kernel, sixteen pixels at a time: see
// BlendChannel there for why the biased reciprocal truncates exactly.
inline __m512i BlendChannel(__m512i s, __m512i d, __m512 w, int k)
{
    __m512i const dc = Channel(d, k);
    __m512 const diff = _mm512_cvtepi32_ps(_mm512_sub_epi32(Channel(s, k), dc));
    return _mm512_add_epi32(dc, _mm512_cvttps_epi32(_mm512_mul_ps(diff, w)));
}

inline __m512i Blend16(__m512i s, __m512i d)
{
    __m512i const sa = _mm512_srli_epi32(s, 24);
    __m512i const da = _mm512_srli_epi32(d, 24);
    __m512i const x = _mm512_mullo_epi16(sa, da);
    __m512i const a = _mm512_srli_epi32(_mm512_mulhi_epu16(x, _mm512_set1_epi32(0x8081)), 7);
    __m512i const outA = _mm512_sub_epi32(_mm512_add_epi32(sa, da), a);
    __m512 const w = _mm512_div_ps(_mm512_mul_ps(_mm512_cvtepi32_ps(sa), _mm512_set1_ps(1.0f + 1.0f / 1048576.0f)),
                                   _mm512_cvtepi32_ps(_mm512_max_epi32(outA, _mm512_set1_epi32(1))));
    __m512i const b = BlendChannel(s, d, w, 0);
    __m512i const g = BlendChannel(s, d, w, 1);
    __m512i const r = BlendChannel(s, d, w, 2);
    __m512i const planar = _mm512_packus_epi16(_mm512_packus_epi32(b, g), _mm512_packus_epi32(r, outA));
    __m128i const lane = _mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
    return _mm512_shuffle_epi8(planar, _mm512_broadcast_i32x4(lane));
}

}  // namespace

void BlendRowArgbAvx512(unsigned char* dst, unsigned char const* src, int n)
{
    __m512i const alphaMask = _mm512_set1_epi32(static_cast<int>(0xFF000000u));
    int i = 0;
    for (; i + 16 <= n; i += 16) {
        __m512i const s = _mm512_loadu_si512(src + 4 * i);
        // Interface images are mostly fully opaque or fully clear.
        __mmask16 const opaque = _mm512_cmpge_epu32_mask(s, alphaMask);
        if (opaque == 0xFFFF) {
            _mm512_storeu_si512(dst + 4 * i, s);
            continue;
        }
        if (_mm512_test_epi32_mask(s, alphaMask) == 0)
            continue;
        _mm512_storeu_si512(dst + 4 * i, Blend16(s, _mm512_loadu_si512(dst + 4 * i)));
    }
    BlendRowArgbAvx2(dst + 4 * i, src + 4 * i, n - i);
}

}  // namespace palvet::detail

#endif
