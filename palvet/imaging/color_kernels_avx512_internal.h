#ifndef PALVET_IMAGING_COLOR_KERNELS_AVX512_INTERNAL_H
#define PALVET_IMAGING_COLOR_KERNELS_AVX512_INTERNAL_H

// The AVX-512 (F + BW) description of the colour row kernels, shared by the
// plain AVX-512 build and the one with the byte permutes of VBMI. Shuffles
// and packs work within 128-bit quarters, hence the 64-bit permutes that
// restore pixel order. Three-byte pixels go through the 256-bit forms, two
// halves a time. Internal linkage: each build keeps its own copy.

#include <palvet/imaging/avx512_intrinsics_internal.h>
#include <palvet/imaging/color_kernels_internal.h>
#include <palvet/imaging/rgb24_shuffle_avx2_internal.h>

namespace palvet::detail {
namespace {

struct Avx512 {
    using V = __m512i;
    static constexpr int N = 32;

    struct Form {
        __m512i kb, kbDiff;
        __m128i shift;
        bool twoPiece;
    };

    PALVET_KERNEL_INLINE static V Set1(int v) { return _mm512_set1_epi16(static_cast<short>(v)); }
    PALVET_KERNEL_INLINE static V Add(V a, V b) { return _mm512_add_epi16(a, b); }
    PALVET_KERNEL_INLINE static V Sub(V a, V b) { return _mm512_sub_epi16(a, b); }
    PALVET_KERNEL_INLINE static V Max(V a, V b) { return _mm512_max_epi16(a, b); }
    PALVET_KERNEL_INLINE static V Min(V a, V b) { return _mm512_min_epi16(a, b); }
    PALVET_KERNEL_INLINE static V And(V a, V b) { return _mm512_and_si512(a, b); }
    PALVET_KERNEL_INLINE static V Or(V a, V b) { return _mm512_or_si512(a, b); }
    template <int n>
    PALVET_KERNEL_INLINE static V SrlI(V v) { return _mm512_srli_epi16(v, n); }
    template <int n>
    PALVET_KERNEL_INLINE static V SllI(V v) { return _mm512_slli_epi16(v, n); }

    PALVET_KERNEL_INLINE static V NegMask(V v) { return _mm512_srai_epi16(v, 15); }
    // No word sign instruction: negate under the sign mask, clear under the
    // zero mask.
    PALVET_KERNEL_INLINE static V Sign(V x, V d)
    {
        __m512i const n = _mm512_mask_sub_epi16(x, _mm512_movepi16_mask(d), _mm512_setzero_si512(), x);
        return _mm512_maskz_mov_epi16(_mm512_test_epi16_mask(d, d), n);
    }
    PALVET_KERNEL_INLINE static V Abs(V v) { return _mm512_abs_epi16(v); }
    PALVET_KERNEL_INLINE static V Sll(V v, int n) { return _mm512_sll_epi16(v, _mm_cvtsi32_si128(n)); }
    PALVET_KERNEL_INLINE static V Srl(V v, int n) { return _mm512_srl_epi16(v, _mm_cvtsi32_si128(n)); }
    PALVET_KERNEL_INLINE static V MulLo(V a, V b) { return _mm512_mullo_epi16(a, b); }
    PALVET_KERNEL_INLINE static V Select(V m, V a, V b) { return _mm512_mask_blend_epi16(_mm512_movepi16_mask(m), a, b); }
    PALVET_KERNEL_INLINE static V Alternate(int16_t even, int16_t odd)
    {
        return _mm512_set1_epi32(static_cast<int>((static_cast<uint32_t>(static_cast<uint16_t>(odd)) << 16) | static_cast<uint16_t>(even)));
    }
    using LumaHigh = void;
    PALVET_KERNEL_INLINE static V MulHiU(V a, V b) { return _mm512_mulhi_epu16(a, b); }
    // Unsigned bytes times signed ones, adjacent products summed: the low
    // byte's product is 0.
    PALVET_KERNEL_INLINE static V MulHighByte(V v, int k) { return _mm512_maddubs_epi16(v, _mm512_set1_epi16(static_cast<short>(k << 8))); }
    static constexpr bool kHasLut = true;
    PALVET_KERNEL_INLINE static V CmpEq(V a, V b) { return _mm512_movm_epi16(_mm512_cmpeq_epi16_mask(a, b)); }
    PALVET_KERNEL_INLINE static V SubSatU(V a, V b) { return _mm512_subs_epu16(a, b); }
    PALVET_KERNEL_INLINE static V MakeLut(unsigned char const* t)
    {
        return _mm512_broadcast_i32x4(_mm_loadu_si128(reinterpret_cast<__m128i const*>(t)));
    }
    // Adding 0x70 keeps the low nibble and sets the top bit (giving 0) once
    // y reaches 16; the 0xF0 in the high byte always clears it.
    PALVET_KERNEL_INLINE static V Lut16(V y, V lut)
    {
        return _mm512_shuffle_epi8(lut, _mm512_adds_epu8(y, _mm512_set1_epi16(static_cast<short>(0xF070))));
    }
    PALVET_KERNEL_INLINE static V Quarters(__m128i pattern) { return _mm512_broadcast_i32x4(pattern); }
    PALVET_KERNEL_INLINE static V DupEven(V v)
    {
        return _mm512_shuffle_epi8(v, Quarters(_mm_setr_epi8(0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13)));
    }
    PALVET_KERNEL_INLINE static V DupOdd(V v)
    {
        return _mm512_shuffle_epi8(v, Quarters(_mm_setr_epi8(2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15)));
    }
    PALVET_KERNEL_INLINE static V SwapAdjacent(V v)
    {
        return _mm512_shuffle_epi8(v, Quarters(_mm_setr_epi8(2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13)));
    }
    PALVET_KERNEL_INLINE static V SmallFlrK(int16_t k) { return Set1(2 * k); }
    PALVET_KERNEL_INLINE static V SmallFlr(V x, V k2) { return _mm512_mulhi_epi16(x, k2); }
    PALVET_KERNEL_INLINE static V Flr(V x, V k) { return _mm512_mulhi_epi16(_mm512_add_epi16(x, x), k); }
    PALVET_KERNEL_INLINE static V Rnd(V x, V k) { return _mm512_mulhrs_epi16(x, k); }

    // 64-bit units picked across the quarters.
    PALVET_KERNEL_INLINE static V Qwords(int a, int b, int c, int d, int e, int f, int g, int h)
    {
        return _mm512_setr_epi64(a, b, c, d, e, f, g, h);
    }
    PALVET_KERNEL_INLINE static V LoadU8(unsigned char const* p)
    {
        return _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<__m256i const*>(p)));
    }
    PALVET_KERNEL_INLINE static void StoreU8(unsigned char* p, V v)
    {
        V const packed = _mm512_permutexvar_epi64(Qwords(0, 2, 4, 6, 1, 3, 5, 7), _mm512_packus_epi16(v, v));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_castsi512_si256(packed));
    }
    PALVET_KERNEL_INLINE static V LoadU16(unsigned char const* p) { return _mm512_loadu_si512(p); }
    PALVET_KERNEL_INLINE static void StoreU16(unsigned char* p, V v) { _mm512_storeu_si512(p, v); }

    // Lanes are (1, d) word pairs, so madd gives b + d * k; the pair's sign
    // bit is d's and picks the constants of the negative piece.
    PALVET_KERNEL_INLINE static int Pair(int16_t k, int16_t b) { return static_cast<int>((static_cast<uint32_t>(static_cast<uint16_t>(k)) << 16) | static_cast<uint16_t>(b)); }
    PALVET_KERNEL_INLINE static Form MakeForm(TableForm const& even, TableForm const& odd, int shift)
    {
        Form f;
        int const pe = Pair(even.kPos, even.bPos), po = Pair(odd.kPos, odd.bPos);
        int const ne = Pair(even.kNeg, even.bNeg), no = Pair(odd.kNeg, odd.bNeg);
        f.kb = _mm512_setr_epi32(pe, po, pe, po, pe, po, pe, po, pe, po, pe, po, pe, po, pe, po);
        f.kbDiff = _mm512_xor_si512(f.kb, _mm512_setr_epi32(ne, no, ne, no, ne, no, ne, no, ne, no, ne, no, ne, no, ne, no));
        f.shift = _mm_cvtsi32_si128(shift);
        f.twoPiece = even.twoPiece || odd.twoPiece;
        return f;
    }
    PALVET_KERNEL_INLINE static V EvalHalf(V pairs, Form const& f)
    {
        V kb = f.kb;
        if (f.twoPiece)
            kb = _mm512_xor_si512(kb, _mm512_and_si512(_mm512_srai_epi32(pairs, 31), f.kbDiff));
        return _mm512_sra_epi32(_mm512_madd_epi16(pairs, kb), f.shift);
    }
    // unpacklo/hi split each quarter; packs joins them back in the same order.
    PALVET_KERNEL_INLINE static V Eval(V d, Form const& f)
    {
        V const one = _mm512_set1_epi16(1);
        return _mm512_packs_epi32(EvalHalf(_mm512_unpacklo_epi16(one, d), f),
                                  EvalHalf(_mm512_unpackhi_epi16(one, d), f));
    }

    PALVET_KERNEL_INLINE static V PairSum(V a, V b)
    {
        V const one = _mm512_set1_epi16(1);
        V const s = _mm512_packs_epi32(_mm512_madd_epi16(a, one), _mm512_madd_epi16(b, one));
        return _mm512_permutexvar_epi64(Qwords(0, 2, 4, 6, 1, 3, 5, 7), s);
    }
    PALVET_KERNEL_INLINE static void Dup(V c, V& lo, V& hi)
    {
        V const q = _mm512_permutexvar_epi64(Qwords(0, 4, 1, 5, 2, 6, 3, 7), c);
        lo = _mm512_unpacklo_epi16(q, q);
        hi = _mm512_unpackhi_epi16(q, q);
    }

    PALVET_KERNEL_INLINE static void LoadRgb24(unsigned char const* p, V& c0, V& c1, V& c2)
    {
        __m256i lo[3], hi[3];
        Rgb24x16::Load(p, lo[0], lo[1], lo[2]);
        Rgb24x16::Load(p + 48, hi[0], hi[1], hi[2]);
        c0 = _mm512_inserti64x4(_mm512_castsi256_si512(lo[0]), hi[0], 1);
        c1 = _mm512_inserti64x4(_mm512_castsi256_si512(lo[1]), hi[1], 1);
        c2 = _mm512_inserti64x4(_mm512_castsi256_si512(lo[2]), hi[2], 1);
    }
    PALVET_KERNEL_INLINE static void StoreRgb24(unsigned char* p, V c0, V c1, V c2)
    {
        Rgb24x16::Store(p, _mm512_castsi512_si256(c0), _mm512_castsi512_si256(c1), _mm512_castsi512_si256(c2));
        Rgb24x16::Store(p + 48, _mm512_extracti64x4_epi64(c0, 1), _mm512_extracti64x4_epi64(c1, 1),
                         _mm512_extracti64x4_epi64(c2, 1));
    }
    // lo holds the first and hi the second half of every quarter's pixels:
    // interleave the quarters back.
    PALVET_KERNEL_INLINE static void StoreQuarters(unsigned char* p, V lo, V hi)
    {
        _mm512_storeu_si512(p, _mm512_permutex2var_epi64(lo, Qwords(0, 1, 8, 9, 2, 3, 10, 11), hi));
        _mm512_storeu_si512(p + 64, _mm512_permutex2var_epi64(lo, Qwords(4, 5, 12, 13, 6, 7, 14, 15), hi));
    }
    PALVET_KERNEL_INLINE static void StoreArgb(unsigned char* p, V r, V g, V b, V a)
    {
        V const br = _mm512_packus_epi16(b, r), ga = _mm512_packus_epi16(g, a);
        V const bg = _mm512_unpacklo_epi8(br, ga), ra = _mm512_unpackhi_epi8(br, ga);
        StoreQuarters(p, _mm512_unpacklo_epi16(bg, ra), _mm512_unpackhi_epi16(bg, ra));
    }

    PALVET_KERNEL_INLINE static int SplitPairs(unsigned char const* src, unsigned char* even, unsigned char* odd, int pairs)
    {
        V const low = _mm512_set1_epi16(0xFF), order = Qwords(0, 2, 4, 6, 1, 3, 5, 7);
        int i = 0;
        for (; i + 64 <= pairs; i += 64) {
            V const a = _mm512_loadu_si512(src + 2 * i);
            V const b = _mm512_loadu_si512(src + 2 * i + 64);
            V const e = _mm512_packus_epi16(_mm512_and_si512(a, low), _mm512_and_si512(b, low));
            V const o = _mm512_packus_epi16(_mm512_srli_epi16(a, 8), _mm512_srli_epi16(b, 8));
            _mm512_storeu_si512(even + i, _mm512_permutexvar_epi64(order, e));
            _mm512_storeu_si512(odd + i, _mm512_permutexvar_epi64(order, o));
        }
        return i;
    }
    PALVET_KERNEL_INLINE static int JoinPairs(unsigned char const* even, unsigned char const* odd, unsigned char* dst, int pairs)
    {
        int i = 0;
        for (; i + 64 <= pairs; i += 64) {
            V const e = _mm512_loadu_si512(even + i);
            V const o = _mm512_loadu_si512(odd + i);
            StoreQuarters(dst + 2 * i, _mm512_unpacklo_epi8(e, o), _mm512_unpackhi_epi8(e, o));
        }
        return i;
    }
};

}  // namespace
}  // namespace palvet::detail

#endif
