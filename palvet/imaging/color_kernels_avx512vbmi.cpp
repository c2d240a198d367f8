// Colour row kernels on AVX-512 with the byte permutes of VBMI: a pixel
// format's bytes are gathered into or spread out of component registers by
// one two-register permute per 64 bytes, where the F + BW forms need a chain
// of in-quarter shuffles and packs.

#include <palvet/imaging/color_conversion_internal.h>

#if defined(__AVX512F__) && defined(__AVX512BW__) && defined(__AVX512VBMI__)

#include <palvet/imaging/color_kernels_avx512_internal.h>

namespace palvet::detail {
namespace {

// Byte indexes for _mm512_permutex2var_epi8: 0-63 pick from the first
// register, 64-127 from the second.
struct VbmiIndexes {
    alignas(64) unsigned char load[3][64];   // component c of 32 three-byte pixels, as words
    alignas(64) unsigned char store[2][64];  // 96 three-byte output bytes from packed pairs
    alignas(64) unsigned char argb[2][64];   // 128 four-byte output bytes from packed pairs
};

constexpr VbmiIndexes MakeVbmiIndexes()
{
    VbmiIndexes x{};
    for (int c = 0; c < 3; ++c)
        for (int j = 0; j < 32; ++j)
            x.load[c][2 * j] = static_cast<unsigned char>(3 * j + c);  // odd bytes are zeroed
    // packus(c0, c1) holds, per 16-byte quarter k, c0 then c1 of pixels
    // 8k..8k+7; packus(c2, c2) holds c2 of the same pixels.
    for (int o = 0; o < 96; ++o) {
        int const j = o / 3, c = o % 3, k = j / 8, i = j % 8;
        int const at = c == 0 ? 16 * k + i : c == 1 ? 16 * k + 8 + i : 64 + 16 * k + i;
        x.store[o / 64][o % 64] = static_cast<unsigned char>(at);
    }
    // packus(b, r) and packus(g, a): B, G, R, A of pixel j.
    for (int o = 0; o < 128; ++o) {
        int const j = o / 4, c = o % 4, k = j / 8, i = j % 8;
        int const at = c == 0 ? 16 * k + i : c == 1 ? 64 + 16 * k + i : c == 2 ? 16 * k + 8 + i : 64 + 16 * k + 8 + i;
        x.argb[o / 64][o % 64] = static_cast<unsigned char>(at);
    }
    return x;
}

constexpr VbmiIndexes kVbmi = MakeVbmiIndexes();

struct Avx512Vbmi : Avx512 {
    PALVET_KERNEL_INLINE static V Index(unsigned char const* t) { return _mm512_load_si512(t); }

    // 32 pixels are exactly 96 bytes: one full and one half load.
    PALVET_KERNEL_INLINE static void LoadRgb24(unsigned char const* p, V& c0, V& c1, V& c2)
    {
        V const lo = _mm512_loadu_si512(p);
        V const hi = _mm512_zextsi256_si512(_mm256_loadu_si256(reinterpret_cast<__m256i const*>(p + 64)));
        __mmask64 const even = 0x5555555555555555ULL;
        c0 = _mm512_maskz_permutex2var_epi8(even, lo, Index(kVbmi.load[0]), hi);
        c1 = _mm512_maskz_permutex2var_epi8(even, lo, Index(kVbmi.load[1]), hi);
        c2 = _mm512_maskz_permutex2var_epi8(even, lo, Index(kVbmi.load[2]), hi);
    }
    // Components saturate to bytes.
    PALVET_KERNEL_INLINE static void StoreRgb24(unsigned char* p, V c0, V c1, V c2)
    {
        V const a = _mm512_packus_epi16(c0, c1), b = _mm512_packus_epi16(c2, c2);
        _mm512_storeu_si512(p, _mm512_permutex2var_epi8(a, Index(kVbmi.store[0]), b));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + 64),
                            _mm512_castsi512_si256(_mm512_permutex2var_epi8(a, Index(kVbmi.store[1]), b)));
    }
    PALVET_KERNEL_INLINE static void StoreArgb(unsigned char* p, V r, V g, V b, V a)
    {
        V const br = _mm512_packus_epi16(b, r), ga = _mm512_packus_epi16(g, a);
        _mm512_storeu_si512(p, _mm512_permutex2var_epi8(br, Index(kVbmi.argb[0]), ga));
        _mm512_storeu_si512(p + 64, _mm512_permutex2var_epi8(br, Index(kVbmi.argb[1]), ga));
    }
};

}  // namespace

ColourKernels const* ColourKernelsAvx512Vbmi() { return Kernels<Avx512Vbmi>::Table(); }

}  // namespace palvet::detail

#else

namespace palvet::detail {
ColourKernels const* ColourKernelsAvx512Vbmi() { return nullptr; }
}  // namespace palvet::detail

#endif
