// Colour row kernels on 128-bit SSE2, the x86-64 baseline.

#include <palvet/imaging/color_conversion_internal.h>

#if defined(__SSE2__)

#include <palvet/imaging/color_kernels_internal.h>

#include <emmintrin.h>

namespace palvet::detail {
namespace {

struct Sse2 {
    using V = __m128i;
    static constexpr int N = 8;

    struct Form {
        __m128i kb, kbDiff, shift;
        bool twoPiece;
    };

    PALVET_KERNEL_INLINE static V Set1(int v) { return _mm_set1_epi16(static_cast<short>(v)); }
    PALVET_KERNEL_INLINE static V Add(V a, V b) { return _mm_add_epi16(a, b); }
    PALVET_KERNEL_INLINE static V Sub(V a, V b) { return _mm_sub_epi16(a, b); }
    PALVET_KERNEL_INLINE static V Max(V a, V b) { return _mm_max_epi16(a, b); }
    PALVET_KERNEL_INLINE static V Min(V a, V b) { return _mm_min_epi16(a, b); }
    PALVET_KERNEL_INLINE static V And(V a, V b) { return _mm_and_si128(a, b); }
    PALVET_KERNEL_INLINE static V Or(V a, V b) { return _mm_or_si128(a, b); }
    template <int n>
    PALVET_KERNEL_INLINE static V SrlI(V v) { return _mm_srli_epi16(v, n); }
    template <int n>
    PALVET_KERNEL_INLINE static V SllI(V v) { return _mm_slli_epi16(v, n); }

    PALVET_KERNEL_INLINE static V NegMask(V v) { return _mm_cmpgt_epi16(_mm_setzero_si128(), v); }
    PALVET_KERNEL_INLINE static V Sign(V x, V d)
    {
        V const m = NegMask(d);
        return _mm_sub_epi16(_mm_xor_si128(x, m), m);
    }
    PALVET_KERNEL_INLINE static V Abs(V v) { return _mm_max_epi16(v, _mm_sub_epi16(_mm_setzero_si128(), v)); }
    PALVET_KERNEL_INLINE static V Sll(V v, int n) { return _mm_sll_epi16(v, _mm_cvtsi32_si128(n)); }
    PALVET_KERNEL_INLINE static V Srl(V v, int n) { return _mm_srl_epi16(v, _mm_cvtsi32_si128(n)); }
    PALVET_KERNEL_INLINE static V MulLo(V a, V b) { return _mm_mullo_epi16(a, b); }
    PALVET_KERNEL_INLINE static V Select(V m, V a, V b) { return _mm_xor_si128(a, _mm_and_si128(m, _mm_xor_si128(a, b))); }
    PALVET_KERNEL_INLINE static V Alternate(int16_t even, int16_t odd)
    {
        return _mm_set1_epi32(static_cast<int>((static_cast<uint32_t>(static_cast<uint16_t>(odd)) << 16) | static_cast<uint16_t>(even)));
    }
    // No pmulhrsw before SSSE3: the low half of 2xk carries the rounding bit.
    // No byte lookup before SSSE3: luma stays in the general form.
    static constexpr bool kHasLut = false;
    PALVET_KERNEL_INLINE static V CmpEq(V a, V b) { return _mm_cmpeq_epi16(a, b); }
    PALVET_KERNEL_INLINE static V SubSatU(V a, V b) { return _mm_subs_epu16(a, b); }
    PALVET_KERNEL_INLINE static V MakeLut(unsigned char const*) { return _mm_setzero_si128(); }
    PALVET_KERNEL_INLINE static V Lut16(V, V) { return _mm_setzero_si128(); }
    PALVET_KERNEL_INLINE static V DupEven(V v) { return _mm_shufflehi_epi16(_mm_shufflelo_epi16(v, 0xA0), 0xA0); }
    PALVET_KERNEL_INLINE static V DupOdd(V v) { return _mm_shufflehi_epi16(_mm_shufflelo_epi16(v, 0xF5), 0xF5); }
    PALVET_KERNEL_INLINE static V SmallFlrK(int16_t k) { return Set1(2 * k); }
    PALVET_KERNEL_INLINE static V SmallFlr(V x, V k2) { return _mm_mulhi_epi16(x, k2); }
    PALVET_KERNEL_INLINE static V Flr(V x, V k) { return _mm_mulhi_epi16(_mm_add_epi16(x, x), k); }
    PALVET_KERNEL_INLINE static V Rnd(V x, V k)
    {
        V const x2 = _mm_add_epi16(x, x);
        return _mm_add_epi16(_mm_mulhi_epi16(x2, k), _mm_srli_epi16(_mm_mullo_epi16(x2, k), 15));
    }

    PALVET_KERNEL_INLINE static V LoadU8(unsigned char const* p)
    {
        return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<__m128i const*>(p)), _mm_setzero_si128());
    }
    PALVET_KERNEL_INLINE static void StoreU8(unsigned char* p, V v)
    {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(v, v));
    }
    PALVET_KERNEL_INLINE static V LoadU16(unsigned char const* p) { return _mm_loadu_si128(reinterpret_cast<__m128i const*>(p)); }
    PALVET_KERNEL_INLINE static void StoreU16(unsigned char* p, V v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

    // Lanes are (1, d) word pairs, so madd gives b + d * k; the pair's sign
    // bit is d's and picks the constants of the negative piece.
    PALVET_KERNEL_INLINE static int Pair(int16_t k, int16_t b) { return static_cast<int>((static_cast<uint32_t>(static_cast<uint16_t>(k)) << 16) | static_cast<uint16_t>(b)); }
    PALVET_KERNEL_INLINE static Form MakeForm(TableForm const& even, TableForm const& odd, int shift)
    {
        Form f;
        int const pe = Pair(even.kPos, even.bPos), po = Pair(odd.kPos, odd.bPos);
        int const ne = Pair(even.kNeg, even.bNeg), no = Pair(odd.kNeg, odd.bNeg);
        f.kb = _mm_setr_epi32(pe, po, pe, po);
        f.kbDiff = _mm_xor_si128(f.kb, _mm_setr_epi32(ne, no, ne, no));
        f.shift = _mm_cvtsi32_si128(shift);
        f.twoPiece = even.twoPiece || odd.twoPiece;
        return f;
    }
    PALVET_KERNEL_INLINE static V EvalHalf(V pairs, Form const& f)
    {
        V kb = f.kb;
        if (f.twoPiece)
            kb = _mm_xor_si128(kb, _mm_and_si128(_mm_srai_epi32(pairs, 31), f.kbDiff));
        return _mm_sra_epi32(_mm_madd_epi16(pairs, kb), f.shift);
    }
    PALVET_KERNEL_INLINE static V Eval(V d, Form const& f)
    {
        V const one = _mm_set1_epi16(1);
        return _mm_packs_epi32(EvalHalf(_mm_unpacklo_epi16(one, d), f), EvalHalf(_mm_unpackhi_epi16(one, d), f));
    }

    PALVET_KERNEL_INLINE static V PairSum(V a, V b)
    {
        V const one = _mm_set1_epi16(1);
        return _mm_packs_epi32(_mm_madd_epi16(a, one), _mm_madd_epi16(b, one));
    }
    PALVET_KERNEL_INLINE static void Dup(V c, V& lo, V& hi)
    {
        lo = _mm_unpacklo_epi16(c, c);
        hi = _mm_unpackhi_epi16(c, c);
    }
    PALVET_KERNEL_INLINE static V SwapAdjacent(V v) { return _mm_shufflehi_epi16(_mm_shufflelo_epi16(v, 0xB1), 0xB1); }

    // SSE2 has no byte shuffle; gathering 3-byte pixels through a small
    // buffer is still cheaper than the table arithmetic it feeds.
    PALVET_KERNEL_INLINE static void LoadRgb24(unsigned char const* p, V& c0, V& c1, V& c2)
    {
        alignas(16) int16_t t[3][8];
        for (int j = 0; j < 8; ++j) {
            t[0][j] = p[3 * j];
            t[1][j] = p[3 * j + 1];
            t[2][j] = p[3 * j + 2];
        }
        c0 = _mm_load_si128(reinterpret_cast<__m128i const*>(t[0]));
        c1 = _mm_load_si128(reinterpret_cast<__m128i const*>(t[1]));
        c2 = _mm_load_si128(reinterpret_cast<__m128i const*>(t[2]));
    }
    PALVET_KERNEL_INLINE static void StoreRgb24(unsigned char* p, V c0, V c1, V c2)
    {
        alignas(16) unsigned char t[2][16];
        _mm_store_si128(reinterpret_cast<__m128i*>(t[0]), _mm_packus_epi16(c0, c1));
        _mm_store_si128(reinterpret_cast<__m128i*>(t[1]), _mm_packus_epi16(c2, c2));
        for (int j = 0; j < 8; ++j) {
            p[3 * j] = t[0][j];
            p[3 * j + 1] = t[0][8 + j];
            p[3 * j + 2] = t[1][j];
        }
    }
    PALVET_KERNEL_INLINE static void StoreArgb(unsigned char* p, V r, V g, V b, V a)
    {
        V const br = _mm_packus_epi16(b, r), ga = _mm_packus_epi16(g, a);
        V const bg = _mm_unpacklo_epi8(br, ga), ra = _mm_unpackhi_epi8(br, ga);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_unpacklo_epi16(bg, ra));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 16), _mm_unpackhi_epi16(bg, ra));
    }

    PALVET_KERNEL_INLINE static int SplitPairs(unsigned char const* src, unsigned char* even, unsigned char* odd, int pairs)
    {
        V const low = _mm_set1_epi16(0xFF);
        int i = 0;
        for (; i + 16 <= pairs; i += 16) {
            V const a = _mm_loadu_si128(reinterpret_cast<__m128i const*>(src + 2 * i));
            V const b = _mm_loadu_si128(reinterpret_cast<__m128i const*>(src + 2 * i + 16));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(even + i),
                             _mm_packus_epi16(_mm_and_si128(a, low), _mm_and_si128(b, low)));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(odd + i),
                             _mm_packus_epi16(_mm_srli_epi16(a, 8), _mm_srli_epi16(b, 8)));
        }
        return i;
    }
    PALVET_KERNEL_INLINE static int JoinPairs(unsigned char const* even, unsigned char const* odd, unsigned char* dst, int pairs)
    {
        int i = 0;
        for (; i + 16 <= pairs; i += 16) {
            V const e = _mm_loadu_si128(reinterpret_cast<__m128i const*>(even + i));
            V const o = _mm_loadu_si128(reinterpret_cast<__m128i const*>(odd + i));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 2 * i), _mm_unpacklo_epi8(e, o));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 2 * i + 16), _mm_unpackhi_epi8(e, o));
        }
        return i;
    }
};

}  // namespace

ColourKernels const* ColourKernelsSse2() { return Kernels<Sse2>::Table(); }

}  // namespace palvet::detail

#else

namespace palvet::detail {
ColourKernels const* ColourKernelsSse2() { return nullptr; }
}  // namespace palvet::detail

#endif
