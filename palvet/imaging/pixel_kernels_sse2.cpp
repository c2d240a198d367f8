// 4 x 4 block transposes for the 32-bit rotations. SSE2 is part of the
// x86-64 baseline, so this needs no run-time check there.
#include <palvet/imaging/pixel_kernels_internal.h>

#if defined(__SSE2__)
#include <emmintrin.h>

namespace palvet::detail {

namespace {

inline __m128i Load(unsigned char const* p)
{
    return _mm_loadu_si128(reinterpret_cast<__m128i const*>(p));
}

inline void Store(unsigned char* p, __m128i v)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}

inline void Transpose4(__m128i& a0, __m128i& a1, __m128i& a2, __m128i& a3)
{
    __m128i const t0 = _mm_unpacklo_epi32(a0, a1);
    __m128i const t1 = _mm_unpacklo_epi32(a2, a3);
    __m128i const t2 = _mm_unpackhi_epi32(a0, a1);
    __m128i const t3 = _mm_unpackhi_epi32(a2, a3);
    a0 = _mm_unpacklo_epi64(t0, t1);
    a1 = _mm_unpackhi_epi64(t0, t1);
    a2 = _mm_unpacklo_epi64(t2, t3);
    a3 = _mm_unpackhi_epi64(t2, t3);
}

// One pixel by the rotation rule, for the edges the blocks do not cover.
inline void MoveOne(unsigned char const* src, unsigned char* dst, std::ptrdiff_t W, std::ptrdiff_t H,
                    std::ptrdiff_t r, std::ptrdiff_t c, int degrees)
{
    std::ptrdiff_t const to = degrees == 90 ? c * H + (H - 1 - r) : (W - 1 - c) * H + r;
    StoreU32(dst + to * 4, LoadU32(src + (r * W + c) * 4));
}

}  // namespace

void Rotate32Sse2(unsigned char const* src, unsigned char* dst, int w, int h, int degrees)
{
    if (w < 1 || h < 1)
        return;
    std::ptrdiff_t const W = w, H = h;
    if (degrees == 180) {
        for (std::ptrdiff_t r = 0; r < H; ++r) {
            unsigned char const* s = src + r * W * 4;
            unsigned char* d = dst + ((H - 1 - r) * W + W) * 4;  // one past the row's end
            std::ptrdiff_t c = 0;
            for (; c + 4 <= W; c += 4)
                Store(d - (c + 4) * 4, _mm_shuffle_epi32(Load(s + c * 4), 0x1B));
            for (; c < W; ++c)
                StoreU32(d - (c + 1) * 4, LoadU32(s + c * 4));
        }
        return;
    }
    if (degrees != 90 && degrees != 270)
        return;

    std::ptrdiff_t const H4 = H & ~std::ptrdiff_t(3), W4 = W & ~std::ptrdiff_t(3);
    // Column strips keep the rows being written few enough to stay cached.
    constexpr std::ptrdiff_t kStrip = 32;
    for (std::ptrdiff_t cs = 0; cs < W4; cs += kStrip) {
        std::ptrdiff_t const ce = cs + kStrip < W4 ? cs + kStrip : W4;
        for (std::ptrdiff_t r = 0; r < H4; r += 4) {
            unsigned char const* s = src + r * W * 4;
            for (std::ptrdiff_t c = cs; c < ce; c += 4) {
                __m128i a0 = Load(s + c * 4);
                __m128i a1 = Load(s + (W + c) * 4);
                __m128i a2 = Load(s + (2 * W + c) * 4);
                __m128i a3 = Load(s + (3 * W + c) * 4);
                if (degrees == 90) {
                    // Rows enter reversed so each output row runs bottom-up.
                    Transpose4(a3, a2, a1, a0);
                    unsigned char* d = dst + (c * H + (H - 4 - r)) * 4;
                    Store(d, a3);
                    Store(d + H * 4, a2);
                    Store(d + 2 * H * 4, a1);
                    Store(d + 3 * H * 4, a0);
                } else {
                    Transpose4(a0, a1, a2, a3);
                    unsigned char* d = dst + ((W - 1 - c) * H + r) * 4;
                    Store(d, a0);
                    Store(d - H * 4, a1);
                    Store(d - 2 * H * 4, a2);
                    Store(d - 3 * H * 4, a3);
                }
            }
        }
    }
    for (std::ptrdiff_t r = 0; r < H4; ++r)
        for (std::ptrdiff_t c = W4; c < W; ++c)
            MoveOne(src, dst, W, H, r, c, degrees);
    for (std::ptrdiff_t r = H4; r < H; ++r)
        for (std::ptrdiff_t c = 0; c < W; ++c)
            MoveOne(src, dst, W, H, r, c, degrees);
}

}  // namespace palvet::detail

#endif
