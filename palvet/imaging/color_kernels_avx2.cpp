// Colour row kernels on 256-bit AVX2. Most AVX2 shuffles and packs work
// within 128-bit halves, hence the permutes that restore pixel order.

#include <palvet/imaging/color_conversion_internal.h>

#if defined(__AVX2__)

#include <palvet/imaging/color_kernels_internal.h>
#include <palvet/imaging/rgb24_shuffle_avx2_internal.h>

namespace palvet::detail {
namespace {

struct Avx2 {
    using V = __m256i;
    static constexpr int N = 16;

    struct Form {
        __m256i kb, kbDiff;
        __m128i shift;
        bool twoPiece;
    };

    PALVET_KERNEL_INLINE static V Set1(int v) { return _mm256_set1_epi16(static_cast<short>(v)); }
    PALVET_KERNEL_INLINE static V Add(V a, V b) { return _mm256_add_epi16(a, b); }
    PALVET_KERNEL_INLINE static V Sub(V a, V b) { return _mm256_sub_epi16(a, b); }
    PALVET_KERNEL_INLINE static V Max(V a, V b) { return _mm256_max_epi16(a, b); }
    PALVET_KERNEL_INLINE static V Min(V a, V b) { return _mm256_min_epi16(a, b); }
    PALVET_KERNEL_INLINE static V And(V a, V b) { return _mm256_and_si256(a, b); }
    PALVET_KERNEL_INLINE static V Or(V a, V b) { return _mm256_or_si256(a, b); }
    template <int n>
    PALVET_KERNEL_INLINE static V SrlI(V v) { return _mm256_srli_epi16(v, n); }
    template <int n>
    PALVET_KERNEL_INLINE static V SllI(V v) { return _mm256_slli_epi16(v, n); }

    PALVET_KERNEL_INLINE static V NegMask(V v) { return _mm256_cmpgt_epi16(_mm256_setzero_si256(), v); }
    PALVET_KERNEL_INLINE static V Sign(V x, V d) { return _mm256_sign_epi16(x, d); }
    PALVET_KERNEL_INLINE static V Abs(V v) { return _mm256_abs_epi16(v); }
    PALVET_KERNEL_INLINE static V Sll(V v, int n) { return _mm256_sll_epi16(v, _mm_cvtsi32_si128(n)); }
    PALVET_KERNEL_INLINE static V Srl(V v, int n) { return _mm256_srl_epi16(v, _mm_cvtsi32_si128(n)); }
    PALVET_KERNEL_INLINE static V MulLo(V a, V b) { return _mm256_mullo_epi16(a, b); }
    PALVET_KERNEL_INLINE static V Select(V m, V a, V b) { return _mm256_blendv_epi8(a, b, m); }
    PALVET_KERNEL_INLINE static V Alternate(int16_t even, int16_t odd)
    {
        return _mm256_set1_epi32(static_cast<int>((static_cast<uint32_t>(static_cast<uint16_t>(odd)) << 16) | static_cast<uint16_t>(even)));
    }
    using LumaHigh = void;
    PALVET_KERNEL_INLINE static V MulHiU(V a, V b) { return _mm256_mulhi_epu16(a, b); }
    // Unsigned bytes times signed ones, adjacent products summed: the low
    // byte's product is 0.
    PALVET_KERNEL_INLINE static V MulHighByte(V v, int k) { return _mm256_maddubs_epi16(v, _mm256_set1_epi16(static_cast<short>(k << 8))); }
    static constexpr bool kHasLut = true;
    PALVET_KERNEL_INLINE static V CmpEq(V a, V b) { return _mm256_cmpeq_epi16(a, b); }
    PALVET_KERNEL_INLINE static V SubSatU(V a, V b) { return _mm256_subs_epu16(a, b); }
    PALVET_KERNEL_INLINE static V MakeLut(unsigned char const* t)
    {
        return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<__m128i const*>(t)));
    }
    // Adding 0x70 keeps the low nibble and sets the top bit (giving 0) once
    // y reaches 16; the 0xF0 in the high byte always clears it.
    PALVET_KERNEL_INLINE static V Lut16(V y, V lut)
    {
        return _mm256_shuffle_epi8(lut, _mm256_adds_epu8(y, _mm256_set1_epi16(static_cast<short>(0xF070))));
    }
    PALVET_KERNEL_INLINE static V DupEven(V v) { return _mm256_shuffle_epi8(v, Pattern(0)); }
    PALVET_KERNEL_INLINE static V DupOdd(V v) { return _mm256_shuffle_epi8(v, Pattern(1)); }
    static V Pattern(int which)
    {
        return which == 0 ? _mm256_setr_epi8(0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13, 0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13)
               : which == 1 ? _mm256_setr_epi8(2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15, 2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15)
                            : _mm256_setr_epi8(2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13, 2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13);
    }
    PALVET_KERNEL_INLINE static V SmallFlrK(int16_t k) { return Set1(2 * k); }
    PALVET_KERNEL_INLINE static V SmallFlr(V x, V k2) { return _mm256_mulhi_epi16(x, k2); }
    PALVET_KERNEL_INLINE static V Flr(V x, V k) { return _mm256_mulhi_epi16(_mm256_add_epi16(x, x), k); }
    PALVET_KERNEL_INLINE static V Rnd(V x, V k) { return _mm256_mulhrs_epi16(x, k); }

    PALVET_KERNEL_INLINE static V LoadU8(unsigned char const* p)
    {
        return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<__m128i const*>(p)));
    }
    PALVET_KERNEL_INLINE static __m128i Narrow(V v) { return _mm256_castsi256_si128(_mm256_permute4x64_epi64(_mm256_packus_epi16(v, v), 0x08)); }
    PALVET_KERNEL_INLINE static void StoreU8(unsigned char* p, V v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), Narrow(v)); }
    PALVET_KERNEL_INLINE static V LoadU16(unsigned char const* p) { return _mm256_loadu_si256(reinterpret_cast<__m256i const*>(p)); }
    PALVET_KERNEL_INLINE static void StoreU16(unsigned char* p, V v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }

    // Lanes are (1, d) word pairs, so madd gives b + d * k; the pair's sign
    // bit is d's and picks the constants of the negative piece.
    PALVET_KERNEL_INLINE static int Pair(int16_t k, int16_t b) { return static_cast<int>((static_cast<uint32_t>(static_cast<uint16_t>(k)) << 16) | static_cast<uint16_t>(b)); }
    PALVET_KERNEL_INLINE static Form MakeForm(TableForm const& even, TableForm const& odd, int shift)
    {
        Form f;
        int const pe = Pair(even.kPos, even.bPos), po = Pair(odd.kPos, odd.bPos);
        int const ne = Pair(even.kNeg, even.bNeg), no = Pair(odd.kNeg, odd.bNeg);
        f.kb = _mm256_setr_epi32(pe, po, pe, po, pe, po, pe, po);
        f.kbDiff = _mm256_xor_si256(f.kb, _mm256_setr_epi32(ne, no, ne, no, ne, no, ne, no));
        f.shift = _mm_cvtsi32_si128(shift);
        f.twoPiece = even.twoPiece || odd.twoPiece;
        return f;
    }
    PALVET_KERNEL_INLINE static V EvalHalf(V pairs, Form const& f)
    {
        V kb = f.kb;
        if (f.twoPiece)
            kb = _mm256_xor_si256(kb, _mm256_and_si256(_mm256_srai_epi32(pairs, 31), f.kbDiff));
        return _mm256_sra_epi32(_mm256_madd_epi16(pairs, kb), f.shift);
    }
    // unpacklo/hi split each half; packs joins them back in the same order.
    PALVET_KERNEL_INLINE static V Eval(V d, Form const& f)
    {
        V const one = _mm256_set1_epi16(1);
        return _mm256_packs_epi32(EvalHalf(_mm256_unpacklo_epi16(one, d), f),
                                  EvalHalf(_mm256_unpackhi_epi16(one, d), f));
    }

    // The packs leave a's sums and b's interleaved by half; the permute puts
    // them in order.
    PALVET_KERNEL_INLINE static V PairSum(V a, V b) { return _mm256_permute4x64_epi64(PairSumHalves(a, b), 0xD8); }
    PALVET_KERNEL_INLINE static void Dup(V c, V& lo, V& hi)
    {
        V const q = _mm256_permute4x64_epi64(c, 0xD8);
        lo = _mm256_unpacklo_epi16(q, q);
        hi = _mm256_unpackhi_epi16(q, q);
    }
    PALVET_KERNEL_INLINE static V SwapAdjacent(V v) { return _mm256_shuffle_epi8(v, Pattern(2)); }

    PALVET_KERNEL_INLINE static void LoadRgb24(unsigned char const* p, V& c0, V& c1, V& c2) { Rgb24x16::Load(p, c0, c1, c2); }
    // Lane permutes are the dearest shuffles here; blocks whose 128-bit
    // halves hold pixels 8 apart pack back into pixel order without them.
    using LaneHalves = void;
    PALVET_KERNEL_INLINE static void LoadRgb24Half(unsigned char const* p, int h, V& c0, V& c1, V& c2)
    {
        Rgb24x16::LoadHalves(p + 24 * h, p + 48 + 24 * h, c0, c1, c2);
    }
    PALVET_KERNEL_INLINE static void StoreU8Halves(unsigned char* p, V a, V b) { StoreU16(p, _mm256_packus_epi16(a, b)); }
    // The same with k added to each byte, saturating.
    PALVET_KERNEL_INLINE static void StoreU8HalvesAdd(unsigned char* p, V a, V b, int k)
    {
        StoreU16(p, _mm256_adds_epu8(_mm256_packus_epi16(a, b), _mm256_set1_epi8(static_cast<char>(k))));
    }
    // PairSum without its final permute: for blocks of alternating halves the
    // order is already right.
    PALVET_KERNEL_INLINE static V PairSumHalves(V a, V b)
    {
        V const one = _mm256_set1_epi16(1);
        return _mm256_packs_epi32(_mm256_madd_epi16(a, one), _mm256_madd_epi16(b, one));
    }
    // Packed bytes of a and b, as the packs leave them, to p and q.
    PALVET_KERNEL_INLINE static void StorePackedPlanes(unsigned char* p, unsigned char* q, V packed)
    {
        V const both = _mm256_permute4x64_epi64(packed, 0xD8);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(both));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(q), _mm256_extracti128_si256(both, 1));
    }
    PALVET_KERNEL_INLINE static void StoreU8Planes(unsigned char* p, unsigned char* q, V a, V b)
    {
        StorePackedPlanes(p, q, _mm256_packus_epi16(a, b));
    }
    template <int s>
    PALVET_KERNEL_INLINE static void StoreU8PlanesCentred(unsigned char* p, unsigned char* q, V a, V b)
    {
        V const packed = _mm256_packs_epi16(_mm256_srai_epi16(a, s), _mm256_srai_epi16(b, s));
        StorePackedPlanes(p, q, _mm256_xor_si256(packed, _mm256_set1_epi8(static_cast<char>(0x80))));
    }
    PALVET_KERNEL_INLINE static void StoreRgb24(unsigned char* p, V c0, V c1, V c2) { Rgb24x16::Store(p, c0, c1, c2); }
    PALVET_KERNEL_INLINE static void StoreArgb(unsigned char* p, V r, V g, V b, V a)
    {
        V const br = _mm256_packus_epi16(b, r), ga = _mm256_packus_epi16(g, a);
        V const bg = _mm256_unpacklo_epi8(br, ga), ra = _mm256_unpackhi_epi8(br, ga);
        V const lo = _mm256_unpacklo_epi16(bg, ra), hi = _mm256_unpackhi_epi16(bg, ra);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_permute2x128_si256(lo, hi, 0x20));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + 32), _mm256_permute2x128_si256(lo, hi, 0x31));
    }

    // The unpacks of StoreArgb leave pixels 0-3 and 8-11 in one half; with
    // the middle quarters of the input swapped as it is loaded, each half
    // comes out whole.
    using ArgbOrdered = void;
    // Two broadcast loads (plain loads) and an in-lane shuffle: a
    // lane-crossing permute takes a shuffle pipe for longer.
    PALVET_KERNEL_INLINE static V LoadU16ArgbOrdered(unsigned char const* p)
    {
        __m256d const a = _mm256_castsi256_pd(_mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<__m128i const*>(p))));
        __m256d const b = _mm256_castsi256_pd(_mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<__m128i const*>(p + 16))));
        return _mm256_castpd_si256(_mm256_shuffle_pd(a, b, 0xC));
    }
    // Bytes 0-3 and 8-11 widened into the low half, 4-7 and 12-15 into the
    // high one, by one in-lane shuffle of a broadcast load (widening a
    // register takes a shuffle pipe for two cycles; from memory it would be
    // cheap, but in the wrong order).
    PALVET_KERNEL_INLINE static V LoadU8ArgbOrdered(unsigned char const* p)
    {
        V const v = _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<__m128i const*>(p)));
        return _mm256_shuffle_epi8(v, _mm256_setr_epi8(0, -1, 1, -1, 2, -1, 3, -1, 8, -1, 9, -1, 10, -1, 11, -1,  //
                                                       4, -1, 5, -1, 6, -1, 7, -1, 12, -1, 13, -1, 14, -1, 15, -1));
    }
    PALVET_KERNEL_INLINE static void StoreArgbOrdered(unsigned char* p, V r, V g, V b, V a)
    {
        V const br = _mm256_packus_epi16(b, r), ga = _mm256_packus_epi16(g, a);
        V const bg = _mm256_unpacklo_epi8(br, ga), ra = _mm256_unpackhi_epi8(br, ga);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_unpacklo_epi16(bg, ra));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + 32), _mm256_unpackhi_epi16(bg, ra));
    }

    PALVET_KERNEL_INLINE static int SplitPairs(unsigned char const* src, unsigned char* even, unsigned char* odd, int pairs)
    {
        V const low = _mm256_set1_epi16(0xFF);
        int i = 0;
        for (; i + 32 <= pairs; i += 32) {
            V const a = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(src + 2 * i));
            V const b = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(src + 2 * i + 32));
            V const e = _mm256_packus_epi16(_mm256_and_si256(a, low), _mm256_and_si256(b, low));
            V const o = _mm256_packus_epi16(_mm256_srli_epi16(a, 8), _mm256_srli_epi16(b, 8));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(even + i), _mm256_permute4x64_epi64(e, 0xD8));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(odd + i), _mm256_permute4x64_epi64(o, 0xD8));
        }
        return i;
    }
    PALVET_KERNEL_INLINE static int JoinPairs(unsigned char const* even, unsigned char const* odd, unsigned char* dst, int pairs)
    {
        int i = 0;
        for (; i + 32 <= pairs; i += 32) {
            V const e = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(even + i));
            V const o = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(odd + i));
            V const lo = _mm256_unpacklo_epi8(e, o), hi = _mm256_unpackhi_epi8(e, o);
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 2 * i), _mm256_permute2x128_si256(lo, hi, 0x20));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 2 * i + 32), _mm256_permute2x128_si256(lo, hi, 0x31));
        }
        return i;
    }
};

}  // namespace

ColourKernels const* ColourKernelsAvx2() { return Kernels<Avx2>::Table(); }

}  // namespace palvet::detail

#else

namespace palvet::detail {
ColourKernels const* ColourKernelsAvx2() { return nullptr; }
}  // namespace palvet::detail

#endif
