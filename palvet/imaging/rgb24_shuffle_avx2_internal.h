#ifndef PALVET_IMAGING_RGB24_SHUFFLE_AVX2_INTERNAL_H
#define PALVET_IMAGING_RGB24_SHUFFLE_AVX2_INTERNAL_H

// Sixteen 3-byte pixels to and from three registers of 16-bit components,
// on 256-bit AVX2 byte shuffles. Included only by sources built with AVX2 or
// wider; internal linkage keeps each build's copy to itself.

#include <palvet/imaging/color_kernels_internal.h>

#include <immintrin.h>

namespace palvet::detail {
namespace {

// Byte shuffles for eight pixels per 128-bit half (-128 clears the byte).
struct Rgb24ShuffleMasks {
    // Component c of pixel j: pixels 0-3 from bytes 0-15, pixels 4-7 from
    // bytes 8-23; one mask serves both loads, a blend keeps the right half.
    alignas(32) signed char pick[3][32];
    // Storing: each half holds components 0 and 1 (bytes 0-7, 8-15) of its
    // eight pixels in one register and component 2 in another; its 24
    // output bytes are built as 16 (spread*[0]) and 8 (spread*[1]).
    alignas(32) signed char spreadA[2][32];
    alignas(32) signed char spreadB[2][32];
};

constexpr Rgb24ShuffleMasks MakeRgb24ShuffleMasks()
{
    Rgb24ShuffleMasks m{};
    for (int c = 0; c < 3; ++c) {
        for (int i = 0; i < 32; ++i) {
            int const j = (i % 16) / 2, at = 3 * j + c;
            bool const low = (i & 1) == 0;
            m.pick[c][i] = static_cast<signed char>(low ? (j < 4 ? at : at - 8) : -128);
        }
    }
    for (int part = 0; part < 2; ++part)
        for (int i = 0; i < 32; ++i) {
            int const o = part * 16 + i % 16, j = o / 3, c = o % 3;
            bool const valid = o < 24;
            m.spreadA[part][i] = static_cast<signed char>(valid && c < 2 ? c * 8 + j : -128);
            m.spreadB[part][i] = static_cast<signed char>(valid && c == 2 ? j : -128);
        }
    return m;
}

constexpr Rgb24ShuffleMasks kRgb24Masks = MakeRgb24ShuffleMasks();

struct Rgb24x16 {
    PALVET_KERNEL_INLINE static __m256i Mask(signed char const* m)
    {
        return _mm256_load_si256(reinterpret_cast<__m256i const*>(m));
    }
    // Two broadcast loads and a blend: a broadcast from memory is a plain
    // load, where an insert takes a lane-crossing shuffle.
    PALVET_KERNEL_INLINE static __m256i Load2(unsigned char const* lo, unsigned char const* hi)
    {
        __m256i const a = _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<__m128i const*>(lo)));
        __m256i const b = _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<__m128i const*>(hi)));
        return _mm256_blend_epi32(a, b, 0xF0);
    }
    PALVET_KERNEL_INLINE static __m256i Pick(__m256i a, __m256i b, int c)
    {
        __m256i const m = Mask(kRgb24Masks.pick[c]);
        return _mm256_blend_epi32(_mm256_shuffle_epi8(a, m), _mm256_shuffle_epi8(b, m), 0xCC);
    }
    // Eight pixels at lo into the low half, eight at hi into the high half;
    // each half from two overlapping 16-byte loads (bytes 0-15 and 8-23).
    PALVET_KERNEL_INLINE static void LoadHalves(unsigned char const* lo, unsigned char const* hi, __m256i& c0,
                                                __m256i& c1, __m256i& c2)
    {
        __m256i const a = Load2(lo, hi), b = Load2(lo + 8, hi + 8);
        c0 = Pick(a, b, 0);
        c1 = Pick(a, b, 1);
        c2 = Pick(a, b, 2);
    }
    PALVET_KERNEL_INLINE static void Load(unsigned char const* p, __m256i& c0, __m256i& c1, __m256i& c2)
    {
        LoadHalves(p, p + 24, c0, c1, c2);
    }
    PALVET_KERNEL_INLINE static __m256i Spread(__m256i a, __m256i b, int part)
    {
        return _mm256_or_si256(_mm256_shuffle_epi8(a, Mask(kRgb24Masks.spreadA[part])),
                               _mm256_shuffle_epi8(b, Mask(kRgb24Masks.spreadB[part])));
    }
    // Components saturate to bytes.
    PALVET_KERNEL_INLINE static void Store(unsigned char* p, __m256i c0, __m256i c1, __m256i c2)
    {
        __m256i const a = _mm256_packus_epi16(c0, c1), b = _mm256_packus_epi16(c2, c2);
        __m256i const lo = Spread(a, b, 0), hi = Spread(a, b, 1);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(lo));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(p + 16), _mm256_castsi256_si128(hi));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 24), _mm256_extracti128_si256(lo, 1));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(p + 40), _mm256_extracti128_si256(hi, 1));
    }
};

}  // namespace
}  // namespace palvet::detail

#endif
