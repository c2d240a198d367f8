// NEON row and block kernels. Built with -mfpu=neon on 32-bit ARM; only
// called after CpuHasNeon().
#include <palvet/core/mca_marker_internal.h>
#include <palvet/imaging/pixel_kernels_internal.h>
#include <palvet/imaging/rotate32_tiles_internal.h>

#if defined(__ARM_NEON) || defined(__ARM_NEON__)
#include <arm_neon.h>

namespace palvet::detail {

namespace {

// dc + (sc - dc) * sa / outA, truncated toward zero, for 8 pixels of one
// channel. The quotient is at most 255 in magnitude and, when not whole, at
// least 1 / 255 away from the next integer up. The reciprocals (Reciprocal)
// are slightly above 1 / outA, so n * rcp never falls below the exact
// quotient in magnitude and exceeds it by less than 1 / 255: truncation
// gives the integer result.
inline uint8x8_t BlendChannel(uint8x8_t sc, uint8x8_t dc, int16x8_t sa, float32x4_t rcpLo, float32x4_t rcpHi)
{
    int16x8_t const diff = vreinterpretq_s16_u16(vsubl_u8(sc, dc));
    float32x4_t const nLo = vcvtq_f32_s32(vmull_s16(vget_low_s16(diff), vget_low_s16(sa)));
    float32x4_t const nHi = vcvtq_f32_s32(vmull_s16(vget_high_s16(diff), vget_high_s16(sa)));
    int32x4_t const qLo = vcvtq_s32_f32(vmulq_f32(nLo, rcpLo));
    int32x4_t const qHi = vcvtq_s32_f32(vmulq_f32(nHi, rcpHi));
    // The low halves of the 32-bit quotients (each within +-255), in one
    // unzip; the sum with dc is a byte.
    int16x8_t const q = vuzpq_s16(vreinterpretq_s16_s32(qLo), vreinterpretq_s16_s32(qHi)).val[0];
    return vmovn_u16(vaddw_u8(vreinterpretq_u16_s16(q), dc));
}

// One Newton step takes the 8-bit estimate to within about 2^-16 below
// 1 / f; enlarging it by 2^-16 puts it above 1 / f by less than
// 1 / (255 * 255), the most a quotient of magnitude up to 255 can gain and
// still truncate right. The margin is thin, so a test runs every divisor
// with every numerator through BlendReciprocalNeon.
inline float32x4_t Reciprocal(float32x4_t f)
{
    float32x4_t const r = vrecpeq_f32(f);
    return vmulq_f32(vmulq_f32(vrecpsq_f32(f, r), r), vdupq_n_f32(1.0f + 1.0f / 65536.0f));
}

inline bool AllEqual(uint8x8_t v, std::uint64_t pattern)
{
    return vget_lane_u64(vreinterpret_u64_u8(v), 0) == pattern;
}

struct Neon {
    using V = uint32x4_t;

    static V Load(unsigned char const* p) { return vreinterpretq_u32_u8(vld1q_u8(p)); }
    static void Store(unsigned char* p, V v) { vst1q_u8(p, vreinterpretq_u8_u32(v)); }

    static V Reverse(V v)
    {
        V const r = vrev64q_u32(v);
        return vcombine_u32(vget_high_u32(r), vget_low_u32(r));
    }

    // Two rounds: 32-bit transposes of row pairs, then the crossing 64-bit
    // halves exchanged. Written out because the intrinsics' recombining
    // costs the compiler a move per half.
    static void Transpose4(V& a0, V& a1, V& a2, V& a3)
    {
        asm("vtrn.32 %q0, %q1\n\t"
            "vtrn.32 %q2, %q3\n\t"
            "vswp %f0, %e2\n\t"
            "vswp %f1, %e3"
            : "+w"(a0), "+w"(a1), "+w"(a2), "+w"(a3));
    }
};

}  // namespace

void BlendRowArgbNeon(unsigned char* dst, unsigned char const* src, int n)
{
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        uint8x8x4_t const s = vld4_u8(src + 4 * i);
        // Interface images are mostly fully opaque or fully clear.
        if (AllEqual(s.val[3], ~std::uint64_t(0))) {
            vst4_u8(dst + 4 * i, s);
            continue;
        }
        if (AllEqual(s.val[3], 0))
            continue;
        PALVET_MCA_BEGIN("blend");
        uint8x8x4_t const d = vld4_u8(dst + 4 * i);
        uint16x8_t const x = vmull_u8(s.val[3], d.val[3]);
        // x / 255 for x <= 65025 is (x + 1 + (x >> 8)) >> 8.
        uint8x8_t const a = vshrn_n_u16(vsraq_n_u16(vaddq_u16(x, vdupq_n_u16(1)), x, 8), 8);
        // sa + da - a is at most 255, so byte arithmetic gives it exactly.
        uint8x8_t const outA = vsub_u8(vadd_u8(s.val[3], d.val[3]), a);
        uint16x8_t const outA16 = vmovl_u8(outA);
        float32x4_t const rcpLo = Reciprocal(vcvtq_f32_u32(vmovl_u16(vget_low_u16(outA16))));
        float32x4_t const rcpHi = Reciprocal(vcvtq_f32_u32(vmovl_u16(vget_high_u16(outA16))));
        int16x8_t const sa = vreinterpretq_s16_u16(vmovl_u8(s.val[3]));
        // No selection for sa == 0, where d must stay: the numerator is 0,
        // and 0 times the reciprocal (infinite when da is 0 too, giving NaN)
        // converts to 0; outA is then da.
        uint8x8x4_t out;
        // Unrolled: as a loop the channels went through the stack.
#pragma GCC unroll 3
        for (int c = 0; c < 3; ++c)
            out.val[c] = BlendChannel(s.val[c], d.val[c], sa, rcpLo, rcpHi);
        out.val[3] = outA;
        vst4_u8(dst + 4 * i, out);
        PALVET_MCA_END("blend");
    }
    BlendRowArgbScalar(dst + 4 * i, src + 4 * i, n - i);
}

float BlendReciprocalNeon(int divisor)
{
    return vgetq_lane_f32(Reciprocal(vdupq_n_f32(static_cast<float>(divisor))), 0);
}

void Rgb24ToRgb32RowNeon(unsigned char const* src, unsigned char* dst, int n, bool swap)
{
    // Eight pixels a step, the three loaded d registers stored as they are
    // beside a register of 0xFF: written out because the compiler moves the
    // structured load's registers into place for the store every step.
    int const steps = n / 8 * 8;
    unsigned char const* s = src;
    unsigned char* d = dst;
    if (steps > 0) {
        int left = steps;
        if (swap) {
            asm volatile("vmov.u8 d3, #255\n"
                         "1:\n" PALVET_MCA_TEXT_BEGIN("rgb24-rgb32-swap")
                         "vld3.8 {d0, d1, d2}, [%[s]]!\n"
                         "vswp d0, d2\n"
                         "subs %[left], %[left], #8\n"
                         "vst4.8 {d0, d1, d2, d3}, [%[d]]!\n"
                         "bgt 1b\n" PALVET_MCA_TEXT_END("rgb24-rgb32-swap")
                         : [s] "+r"(s), [d] "+r"(d), [left] "+r"(left)
                         :
                         : "cc", "memory", "d0", "d1", "d2", "d3");
        } else {
            asm volatile("vmov.u8 d3, #255\n"
                         "1:\n" PALVET_MCA_TEXT_BEGIN("rgb24-rgb32")
                         "vld3.8 {d0, d1, d2}, [%[s]]!\n"
                         "subs %[left], %[left], #8\n"
                         "vst4.8 {d0, d1, d2, d3}, [%[d]]!\n"
                         "bgt 1b\n" PALVET_MCA_TEXT_END("rgb24-rgb32")
                         : [s] "+r"(s), [d] "+r"(d), [left] "+r"(left)
                         :
                         : "cc", "memory", "d0", "d1", "d2", "d3");
        }
    }
    Rgb24ToRgb32RowScalar(src + 3 * steps, dst + 4 * steps, n - steps, swap);
}

void Rgb32ToRgb24RowNeon(unsigned char const* src, unsigned char* dst, int n, bool swap)
{
    int i = 0;
    for (; i + 16 <= n; i += 16) {
        uint8x16x4_t const s = vld4q_u8(src + 4 * i);
        uint8x16x3_t d;
        d.val[0] = swap ? s.val[2] : s.val[0];
        d.val[1] = s.val[1];
        d.val[2] = swap ? s.val[0] : s.val[2];
        vst3q_u8(dst + 3 * i, d);
    }
    Rgb32ToRgb24RowScalar(src + 4 * i, dst + 3 * i, n - i, swap);
}

void MaskRow32Neon(unsigned char* d, unsigned char const* m, int n, std::uint32_t rgb)
{
    uint8x8x4_t px;
    px.val[0] = vdup_n_u8(static_cast<std::uint8_t>(rgb));
    px.val[1] = vdup_n_u8(static_cast<std::uint8_t>(rgb >> 8));
    px.val[2] = vdup_n_u8(static_cast<std::uint8_t>(rgb >> 16));
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        px.val[3] = vld1_u8(m + i);
        vst4_u8(d + 4 * i, px);
    }
    MaskRow32Scalar(d + 4 * i, m + i, n - i, rgb);
}

void TintRow32Neon(unsigned char* d, unsigned char const* m, int n, std::uint32_t rgb, std::uint32_t alpha)
{
    uint8x8x4_t px;
    px.val[0] = vdup_n_u8(static_cast<std::uint8_t>(rgb));
    px.val[1] = vdup_n_u8(static_cast<std::uint8_t>(rgb >> 8));
    px.val[2] = vdup_n_u8(static_cast<std::uint8_t>(rgb >> 16));
    uint8x8_t const a = vdup_n_u8(static_cast<std::uint8_t>(alpha));
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        px.val[3] = vshrn_n_u16(vmull_u8(vld1_u8(m + i), a), 8);
        vst4_u8(d + 4 * i, px);
    }
    TintRow32Scalar(d + 4 * i, m + i, n - i, rgb, alpha);
}

void FillRow32Neon(unsigned char* d, int n, std::uint32_t color)
{
    uint8x16_t const v = vreinterpretq_u8_u32(vdupq_n_u32(color));
    int i = 0;
    for (; i + 4 <= n; i += 4)
        vst1q_u8(d + 4 * i, v);
    FillRow32Scalar(d + 4 * i, n - i, color);
}

void Rotate32Neon(unsigned char const* src, unsigned char* dst, int w, int h, int degrees)
{
    Rotate32Tiles<Neon>(src, dst, w, h, degrees);
}

}  // namespace palvet::detail

#endif
