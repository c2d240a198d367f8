// Colour row kernels on 128-bit NEON (32-bit ARM with the NEON unit).

#include <palvet/core/mca_marker_internal.h>
#include <palvet/imaging/color_conversion_internal.h>

#if defined(__ARM_NEON) || defined(__ARM_NEON__)

#include <palvet/imaging/color_kernels_internal.h>

#include <arm_neon.h>

#include <cstddef>

namespace palvet::detail {
namespace {

struct Neon {
    using V = int16x8_t;
    static constexpr int N = 8;
    static constexpr bool kHasLut = true;

    struct Form {
        int16x8_t k, b, kNeg, bNeg;
        int32x4_t shift;  // negative: vshl shifts right
        bool twoPiece;
    };

    PALVET_KERNEL_INLINE static V Set1(int v) { return vdupq_n_s16(static_cast<int16_t>(v)); }
    PALVET_KERNEL_INLINE static V Add(V a, V b) { return vaddq_s16(a, b); }
    PALVET_KERNEL_INLINE static V Sub(V a, V b) { return vsubq_s16(a, b); }
    PALVET_KERNEL_INLINE static V Max(V a, V b) { return vmaxq_s16(a, b); }
    PALVET_KERNEL_INLINE static V Min(V a, V b) { return vminq_s16(a, b); }
    PALVET_KERNEL_INLINE static V And(V a, V b) { return vandq_s16(a, b); }
    PALVET_KERNEL_INLINE static V Or(V a, V b) { return vorrq_s16(a, b); }
    template <int n>
    PALVET_KERNEL_INLINE static V SrlI(V v) { return vreinterpretq_s16_u16(vshrq_n_u16(vreinterpretq_u16_s16(v), n)); }
    template <int n>
    PALVET_KERNEL_INLINE static V SllI(V v) { return vshlq_n_s16(v, n); }
    PALVET_KERNEL_INLINE static V Sll(V v, int n) { return vshlq_s16(v, vdupq_n_s16(static_cast<int16_t>(n))); }
    PALVET_KERNEL_INLINE static V Srl(V v, int n) { return vreinterpretq_s16_u16(vshlq_u16(vreinterpretq_u16_s16(v), vdupq_n_s16(static_cast<int16_t>(-n)))); }
    PALVET_KERNEL_INLINE static V MulLo(V a, V b) { return vmulq_s16(a, b); }
    PALVET_KERNEL_INLINE static V NegMask(V v) { return vreinterpretq_s16_u16(vcltq_s16(v, vdupq_n_s16(0))); }
    PALVET_KERNEL_INLINE static V Sign(V x, V d) { return vbslq_s16(vcltq_s16(d, vdupq_n_s16(0)), vnegq_s16(x), x); }
    PALVET_KERNEL_INLINE static V Abs(V v) { return vabsq_s16(v); }
    PALVET_KERNEL_INLINE static V Select(V m, V a, V b) { return vbslq_s16(vreinterpretq_u16_s16(m), b, a); }
    PALVET_KERNEL_INLINE static V CmpEq(V a, V b) { return vreinterpretq_s16_u16(vceqq_s16(a, b)); }
    PALVET_KERNEL_INLINE static V SubSatU(V a, V b)
    {
        return vreinterpretq_s16_u16(vqsubq_u16(vreinterpretq_u16_s16(a), vreinterpretq_u16_s16(b)));
    }
    PALVET_KERNEL_INLINE static V Alternate(int16_t even, int16_t odd)
    {
        int16_t const t[8] = {even, odd, even, odd, even, odd, even, odd};
        return vld1q_s16(t);
    }
    // vqrdmulh and vqdmulh double the product, so these are (x*k + 2^14) >> 15
    // and (x*k) >> 15; x is never -32768, so nothing saturates.
    PALVET_KERNEL_INLINE static V Rnd(V x, V k) { return vqrdmulhq_s16(x, k); }
    PALVET_KERNEL_INLINE static V SmallFlrK(int16_t k) { return Set1(k); }
    PALVET_KERNEL_INLINE static V SmallFlr(V x, V k) { return vqdmulhq_s16(x, k); }
    PALVET_KERNEL_INLINE static V Flr(V x, V k) { return vqdmulhq_s16(x, k); }

    PALVET_KERNEL_INLINE static V MakeLut(unsigned char const* t)
    {
        return vreinterpretq_s16_u8(vld1q_u8(t));
    }
    // Out-of-range table indexes give 0; y >= 16 narrows to an index >= 16.
    PALVET_KERNEL_INLINE static V Lut16(V y, V lut)
    {
        uint8x16_t const t = vreinterpretq_u8_s16(lut);
        uint8x8x2_t const table = {{vget_low_u8(t), vget_high_u8(t)}};
        uint8x8_t const idx = vqmovn_u16(vreinterpretq_u16_s16(y));
        return vreinterpretq_s16_u16(vmovl_u8(vtbl2_u8(table, idx)));
    }

    PALVET_KERNEL_INLINE static V LoadU8(unsigned char const* p) { return vreinterpretq_s16_u16(vmovl_u8(vld1_u8(p))); }
    PALVET_KERNEL_INLINE static void StoreU8(unsigned char* p, V v) { vst1_u8(p, vqmovun_s16(v)); }
    // Byte loads and stores: a 16-bit pointer would promise an alignment
    // that pixel rows do not have.
    PALVET_KERNEL_INLINE static V LoadU16(unsigned char const* p) { return vreinterpretq_s16_u8(vld1q_u8(p)); }
    PALVET_KERNEL_INLINE static void StoreU16(unsigned char* p, V v) { vst1q_u8(p, vreinterpretq_u8_s16(v)); }

    PALVET_KERNEL_INLINE static Form MakeForm(TableForm const& even, TableForm const& odd, int shift)
    {
        int16_t const k[8] = {even.kPos, odd.kPos, even.kPos, odd.kPos, even.kPos, odd.kPos, even.kPos, odd.kPos};
        int16_t const b[8] = {even.bPos, odd.bPos, even.bPos, odd.bPos, even.bPos, odd.bPos, even.bPos, odd.bPos};
        int16_t const kn[8] = {even.kNeg, odd.kNeg, even.kNeg, odd.kNeg, even.kNeg, odd.kNeg, even.kNeg, odd.kNeg};
        int16_t const bn[8] = {even.bNeg, odd.bNeg, even.bNeg, odd.bNeg, even.bNeg, odd.bNeg, even.bNeg, odd.bNeg};
        Form f;
        f.k = vld1q_s16(k);
        f.b = vld1q_s16(b);
        f.kNeg = vld1q_s16(kn);
        f.bNeg = vld1q_s16(bn);
        f.shift = vdupq_n_s32(-shift);
        f.twoPiece = even.twoPiece || odd.twoPiece;
        return f;
    }
    PALVET_KERNEL_INLINE static V Eval(V d, Form const& f)
    {
        int16x8_t k = f.k, b = f.b;
        if (f.twoPiece) {
            uint16x8_t const neg = vcltq_s16(d, vdupq_n_s16(0));
            k = vbslq_s16(neg, f.kNeg, k);
            b = vbslq_s16(neg, f.bNeg, b);
        }
        int32x4_t lo = vmlal_s16(vmovl_s16(vget_low_s16(b)), vget_low_s16(d), vget_low_s16(k));
        int32x4_t hi = vmlal_s16(vmovl_s16(vget_high_s16(b)), vget_high_s16(d), vget_high_s16(k));
        return vcombine_s16(vmovn_s32(vshlq_s32(lo, f.shift)), vmovn_s32(vshlq_s32(hi, f.shift)));
    }

    PALVET_KERNEL_INLINE static V PairSum(V a, V b)
    {
        return vcombine_s16(vpadd_s16(vget_low_s16(a), vget_high_s16(a)), vpadd_s16(vget_low_s16(b), vget_high_s16(b)));
    }
    PALVET_KERNEL_INLINE static void Dup(V c, V& lo, V& hi)
    {
        int16x8x2_t const z = vzipq_s16(c, c);
        lo = z.val[0];
        hi = z.val[1];
    }
    PALVET_KERNEL_INLINE static V SwapAdjacent(V v) { return vrev32q_s16(v); }
    PALVET_KERNEL_INLINE static V DupEven(V v) { return vtrnq_s16(v, v).val[0]; }
    PALVET_KERNEL_INLINE static V DupOdd(V v) { return vtrnq_s16(v, v).val[1]; }

    PALVET_KERNEL_INLINE static void LoadRgb24(unsigned char const* p, V& c0, V& c1, V& c2)
    {
        uint8x8x3_t const t = vld3_u8(p);
        c0 = vreinterpretq_s16_u16(vmovl_u8(t.val[0]));
        c1 = vreinterpretq_s16_u16(vmovl_u8(t.val[1]));
        c2 = vreinterpretq_s16_u16(vmovl_u8(t.val[2]));
    }
    PALVET_KERNEL_INLINE static void StoreRgb24(unsigned char* p, V c0, V c1, V c2)
    {
        uint8x8x3_t const t = {{vqmovun_s16(c0), vqmovun_s16(c1), vqmovun_s16(c2)}};
        vst3_u8(p, t);
    }
    PALVET_KERNEL_INLINE static void StoreArgb(unsigned char* p, V r, V g, V b, V a)
    {
        uint8x8x4_t const t = {{vqmovun_s16(b), vqmovun_s16(g), vqmovun_s16(r), vqmovun_s16(a)}};
        vst4_u8(p, t);
    }

    // PackedStd to ARGB32, eight pixels a step, scheduled by hand: written
    // with intrinsics the loop spills and reloads its constants and moves
    // structure registers about every step. Same arithmetic: the chroma
    // bytes come apart from the luma with one deinterleaving load, and the
    // luma multiplier, below 256 here, widens straight from bytes.
    // What both hand-scheduled loops load after their chroma multipliers, in
    // the order they load it (16-bit lanes, then bytes).
    struct LumaConstants {
        alignas(16) unsigned char mulShift[16], lumaB[16], lumaShift[16];
        alignas(16) unsigned char below[16];
        unsigned char lumaM[8], c128[8];
    };

    struct PackedArgbConstants {
        alignas(16) unsigned char rbR[16], rbF[16], gR[16], gF[16];  // 16-bit lanes
        LumaConstants luma;
    };

    template <bool kYvy, bool kAlpha>
    static int PackedStdArgb(unsigned char const* src, unsigned char* dst, unsigned char const* alpha, int steps,
                             PackedArgbConstants const& k)
    {
        if (steps <= 0)
            return 0;
        int left = steps;
        unsigned char const* kp = k.rbR;
        // q8-q11 chroma constants, q12 chroma shift, q13 luma offset, q14 luma
        // shift (negative: right), d30-d31 the table below 16, d14 the luma
        // multiplier, d15 128; d3 the alpha bytes. After the transpose q5 has
        // the even lanes' terms twice, q6 the odd lanes': U's term (blue) and
        // V's (red) for YUYV, the other way round for YVYU.
#define PALVET_PACKED_STD_ARGB(blue, red, alphaLoad)                                                          \
    asm volatile("vld1.8 {d16-d19}, [%[kp]:128]!\n"                                                           \
                 "vld1.8 {d20-d23}, [%[kp]:128]!\n"                                                           \
                 "vld1.8 {d24-d27}, [%[kp]:128]!\n"                                                           \
                 "vld1.8 {d28-d31}, [%[kp]:128]!\n"                                                           \
                 "vld1.8 {d14-d15}, [%[kp]]\n"                                                                \
                 "vmov.u8 d3, #255\n"                                                                         \
                 "1:\n" PALVET_MCA_TEXT_BEGIN("packed-std")                                                   \
                 "vld2.8 {d4, d5}, [%[src]]!\n"                                                               \
                 "vsubl.u8 q3, d5, d15\n"                                                                     \
                 "vabs.s16 q4, q3\n"                                                                          \
                 "vclt.s16 q3, q3, #0\n"                                                                      \
                 "vshl.s16 q4, q4, q12\n"                                                                     \
                 "vqrdmulh.s16 q5, q4, q8\n"                                                                  \
                 "vqdmulh.s16 q6, q4, q9\n"                                                                   \
                 "vneg.s16 q6, q6\n"                                                                          \
                 "vbit q5, q6, q3\n"                                                                          \
                 "vqrdmulh.s16 q6, q4, q10\n"                                                                 \
                 "vqdmulh.s16 q4, q4, q11\n"                                                                  \
                 "vneg.s16 q6, q6\n"                                                                          \
                 "vbit q4, q6, q3\n"                                                                          \
                 "vrev32.16 q6, q4\n"                                                                         \
                 "vadd.i16 q4, q4, q6\n"                                                                      \
                 "vmov q6, q5\n"                                                                              \
                 "vtrn.16 q5, q6\n"                                                                           \
                 "vmull.u8 q3, d4, d14\n"                                                                     \
                 "vqsub.u16 q3, q3, q13\n"                                                                    \
                 "vshl.u16 q3, q3, q14\n"                                                                     \
                 "vtbl.8 d0, {d30, d31}, d4\n"                                                                \
                 "vsubw.u8 q3, q3, d0\n"                                                                      \
                 "vadd.i16 q5, q3, q5\n"                                                                      \
                 "vsub.i16 q4, q3, q4\n"                                                                      \
                 "vadd.i16 q6, q3, q6\n"                                                                      \
                 "vqmovun.s16 d0, " blue "\n"                                                                 \
                 "vqmovun.s16 d1, q4\n"                                                                       \
                 "vqmovun.s16 d2, " red "\n" alphaLoad "subs %[left], %[left], #1\n"                        \
                 "vst4.8 {d0, d1, d2, d3}, [%[dst]]!\n"                                                       \
                 "bgt 1b\n" PALVET_MCA_TEXT_END("packed-std")                                                 \
                 : [src] "+r"(src), [dst] "+r"(dst), [a] "+r"(alpha), [left] "+r"(left), [kp] "+r"(kp)      \
                 :                                                                                            \
                 : "cc", "memory", "d0", "d1", "d2", "d3", "d4", "d5", "d6", "d7", "d8", "d9", "d10", "d11",  \
                   "d12", "d13", "d14", "d15", "d16", "d17", "d18", "d19", "d20", "d21", "d22", "d23", "d24",  \
                   "d25", "d26", "d27", "d28", "d29", "d30", "d31")
#define PALVET_ALPHA_LOAD "vld1.8 {d3}, [%[a]]!\n"
        if constexpr (kYvy) {
            if constexpr (kAlpha)
                PALVET_PACKED_STD_ARGB("q6", "q5", PALVET_ALPHA_LOAD);
            else
                PALVET_PACKED_STD_ARGB("q6", "q5", "");
        } else {
            if constexpr (kAlpha)
                PALVET_PACKED_STD_ARGB("q5", "q6", PALVET_ALPHA_LOAD);
            else
                PALVET_PACKED_STD_ARGB("q5", "q6", "");
        }
#undef PALVET_ALPHA_LOAD
#undef PALVET_PACKED_STD_ARGB
        return steps;
    }

    // YuvToRgb's standard 4:2:0 rows to 24-bit RGB, two image rows and 16
    // pixels a step, scheduled by hand for the same reasons as PackedStdArgb.
    // The chroma terms need all sixteen registers at once, so their
    // constants are loaded afresh each step, then the luma constants.
    struct YuvRgb24Constants {
        // Rounding and flooring multipliers (16-bit lanes) of V in red, U and
        // V in green, U in blue, in that order.
        alignas(16) unsigned char terms[4][2][16];
        LumaConstants luma;
    };
    // The loops load these blocks in sequence from the start.
    static_assert(offsetof(LumaConstants, below) == 48 && offsetof(LumaConstants, lumaM) == 64 &&
                      offsetof(LumaConstants, c128) == 72,
                  "luma constants as the loops load them");
    static_assert(offsetof(PackedArgbConstants, luma) == 64 && offsetof(YuvRgb24Constants, luma) == 128,
                  "the luma constants follow the chroma multipliers");

    template <bool kSwap>
    static void YuvStdRgb24Pair(YuvToRgbRow const& row, int steps, YuvRgb24Constants const& k)
    {
        if (steps <= 0)
            return;
        unsigned char const *y0 = row.y[0], *y1 = row.y[1], *u = row.u, *v = row.v;
        unsigned char *d0 = row.dst[0], *d1 = row.dst[1];
        unsigned char const* const base = k.terms[0][0];
        unsigned char const* kp;
        int left = steps;
        // Chroma: q8/q9 red (V), q10/q11 green U, q12/q13 green V, q14/q15 blue
        // (U), each rounding then flooring. It leaves red in q2 (pixels 0-7)
        // and q3 (8-15), green in q7 and q1, blue in q6 and q0. Luma: q8 the
        // offset, q9 the shift, d20-d21 the table below 16, d22 the
        // multiplier; q12-q15 work.
#define PALVET_LUMA_GROUP(yp, dp, cr, cg, cb, first, third)                                                   \
    "vld1.8 {d23}, [%[" yp "]]!\n"                                                                         \
    "vmull.u8 q12, d23, d22\n"                                                                             \
    "vqsub.u16 q12, q12, q8\n"                                                                             \
    "vshl.u16 q12, q12, q9\n"                                                                              \
    "vtbl.8 d26, {d20, d21}, d23\n"                                                                        \
    "vsubw.u8 q12, q12, d26\n"                                                                             \
    "vadd.i16 q13, q12, " cr "\n"                                                                          \
    "vadd.i16 q14, q12, " cg "\n"                                                                          \
    "vadd.i16 q15, q12, " cb "\n"                                                                          \
    "vqmovun.s16 d24, " first "\n"                                                                         \
    "vqmovun.s16 d25, q14\n"                                                                               \
    "vqmovun.s16 d26, " third "\n"                                                                         \
    "vst3.8 {d24, d25, d26}, [%[" dp "]]!\n"
#define PALVET_YUV_RGB24(first, third)                                                                      \
    asm volatile("1:\n" PALVET_MCA_TEXT_BEGIN("yuv-rgb")                                                   \
                 "mov %[kp], %[base]\n"                                                                    \
                 "vld1.8 {d16-d19}, [%[kp]:128]!\n"                                                        \
                 "vld1.8 {d20-d23}, [%[kp]:128]!\n"                                                        \
                 "vld1.8 {d24-d27}, [%[kp]:128]!\n"                                                        \
                 "vld1.8 {d28-d31}, [%[kp]:128]!\n"                                                        \
                 "vld1.8 {d0}, [%[u]]!\n"                                                                  \
                 "vld1.8 {d1}, [%[v]]!\n"                                                                  \
                 "vld1.8 {d4-d5}, [%[kp]:128]!\n"                                                          \
                 "vmov.i8 d6, #128\n"                                                                      \
                 "vsubl.u8 q4, d0, d6\n"                                                                   \
                 "vsubl.u8 q5, d1, d6\n"                                                                   \
                 "vabs.s16 q0, q4\n"                                                                       \
                 "vabs.s16 q1, q5\n"                                                                       \
                 "vclt.s16 q4, q4, #0\n"                                                                   \
                 "vclt.s16 q5, q5, #0\n"                                                                   \
                 "vshl.s16 q0, q0, q2\n"                                                                   \
                 "vshl.s16 q1, q1, q2\n"                                                                   \
                 "vqrdmulh.s16 q2, q1, q8\n"                                                               \
                 "vqdmulh.s16 q3, q1, q9\n"                                                                \
                 "vneg.s16 q3, q3\n"                                                                       \
                 "vbit q2, q3, q5\n"                                                                       \
                 "vqrdmulh.s16 q6, q0, q14\n"                                                              \
                 "vqdmulh.s16 q3, q0, q15\n"                                                               \
                 "vneg.s16 q3, q3\n"                                                                       \
                 "vbit q6, q3, q4\n"                                                                       \
                 "vqdmulh.s16 q7, q0, q11\n"                                                               \
                 "vqrdmulh.s16 q3, q0, q10\n"                                                              \
                 "vneg.s16 q7, q7\n"                                                                       \
                 "vbit q7, q3, q4\n"                                                                       \
                 "vqdmulh.s16 q0, q1, q13\n"                                                               \
                 "vqrdmulh.s16 q3, q1, q12\n"                                                              \
                 "vneg.s16 q0, q0\n"                                                                       \
                 "vbit q0, q3, q5\n"                                                                       \
                 "vadd.i16 q7, q7, q0\n"                                                                   \
                 "vmov q3, q2\n"                                                                           \
                 "vzip.16 q2, q3\n"                                                                        \
                 "vmov q1, q7\n"                                                                           \
                 "vzip.16 q7, q1\n"                                                                        \
                 "vmov q0, q6\n"                                                                           \
                 "vzip.16 q6, q0\n"                                                                        \
                 "vld1.8 {d16-d19}, [%[kp]:128]!\n"                                                        \
                 "vld1.8 {d20-d22}, [%[kp]:64]\n"                                                          \
                 PALVET_LUMA_GROUP("y0", "d0", "q2", "q7", "q6", first, third)                              \
                 PALVET_LUMA_GROUP("y0", "d0", "q3", "q1", "q0", first, third)                              \
                 PALVET_LUMA_GROUP("y1", "d1", "q2", "q7", "q6", first, third)                              \
                 PALVET_LUMA_GROUP("y1", "d1", "q3", "q1", "q0", first, third)                              \
                 "subs %[left], %[left], #1\n"                                                             \
                 "bgt 1b\n" PALVET_MCA_TEXT_END("yuv-rgb")                                                 \
                 : [y0] "+r"(y0), [y1] "+r"(y1), [u] "+r"(u), [v] "+r"(v), [d0] "+r"(d0), [d1] "+r"(d1),   \
                   [left] "+r"(left), [kp] "=&r"(kp)                                                       \
                 : [base] "r"(base)                                                                        \
                 : "cc", "memory", "d0", "d1", "d2", "d3", "d4", "d5", "d6", "d7", "d8", "d9", "d10", "d11",  \
                   "d12", "d13", "d14", "d15", "d16", "d17", "d18", "d19", "d20", "d21", "d22", "d23", "d24",  \
                   "d25", "d26", "d27", "d28", "d29", "d30", "d31")
        // Without the swap the bytes are red, green, blue.
        if constexpr (kSwap)
            PALVET_YUV_RGB24("q15", "q13");
        else
            PALVET_YUV_RGB24("q13", "q15");
#undef PALVET_YUV_RGB24
#undef PALVET_LUMA_GROUP
    }

    static int SplitPairs(unsigned char const* src, unsigned char* even, unsigned char* odd, int pairs)
    {
        int i = 0;
        for (; i + 16 <= pairs; i += 16) {
            uint8x16x2_t const t = vld2q_u8(src + 2 * i);
            vst1q_u8(even + i, t.val[0]);
            vst1q_u8(odd + i, t.val[1]);
        }
        return i;
    }
    static int JoinPairs(unsigned char const* even, unsigned char const* odd, unsigned char* dst, int pairs)
    {
        int i = 0;
        for (; i + 16 <= pairs; i += 16) {
            uint8x16x2_t const t = {{vld1q_u8(even + i), vld1q_u8(odd + i)}};
            vst2q_u8(dst + 2 * i, t);
        }
        return i;
    }
};

}  // namespace

ColourKernels const* ColourKernelsNeon() { return Kernels<Neon>::Table(); }

}  // namespace palvet::detail

#else

namespace palvet::detail {
ColourKernels const* ColourKernelsNeon() { return nullptr; }
}  // namespace palvet::detail

#endif
