// 4 x 4 block transposes for the 32-bit rotations. SSE2 is part of the
// x86-64 baseline, so this needs no run-time check there.
#include <palvet/imaging/pixel_kernels_internal.h>
#include <palvet/imaging/rotate32_tiles_internal.h>

#if defined(__SSE2__)
#include <emmintrin.h>

namespace palvet::detail {

namespace {

struct Sse2 {
    using V = __m128i;

    static V Load(unsigned char const* p) { return _mm_loadu_si128(reinterpret_cast<__m128i const*>(p)); }
    static void Store(unsigned char* p, V v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
    static V Reverse(V v) { return _mm_shuffle_epi32(v, 0x1B); }

    static void Transpose4(V& a0, V& a1, V& a2, V& a3)
    {
        V const t0 = _mm_unpacklo_epi32(a0, a1);
        V const t1 = _mm_unpacklo_epi32(a2, a3);
        V const t2 = _mm_unpackhi_epi32(a0, a1);
        V const t3 = _mm_unpackhi_epi32(a2, a3);
        a0 = _mm_unpacklo_epi64(t0, t1);
        a1 = _mm_unpackhi_epi64(t0, t1);
        a2 = _mm_unpacklo_epi64(t2, t3);
        a3 = _mm_unpackhi_epi64(t2, t3);
    }
};

}  // namespace

void Rotate32Sse2(unsigned char const* src, unsigned char* dst, int w, int h, int degrees)
{
    Rotate32Tiles<Sse2>(src, dst, w, h, degrees);
}

}  // namespace palvet::detail

#endif
