#include "utf8_codec_internal.h"

#if defined(__arm__) || defined(__aarch64__)

#include <arm_neon.h>

namespace palvet::detail {

namespace {

// Count of leading 0x00 lanes in a 16-lane 0x00/0xFF flag vector: without a
// byte mask instruction, each lane is shrunk to four bits of a 64-bit word.
size_t LeadingClear(uint8x16_t flags)
{
    uint8x8_t nibbles = vshrn_n_u16(vreinterpretq_u16_u8(flags), 4);
    uint64_t bits = vget_lane_u64(vreinterpret_u64_u8(nibbles), 0);
    return bits == 0 ? 16 : static_cast<size_t>(__builtin_ctzll(bits)) / 4;
}

struct NeonBlock {
    static constexpr size_t kWidth = 16;

    static size_t Widen(unsigned char const* in, wchar_t* out)
    {
        uint8x16_t bytes = vld1q_u8(in);
        uint16x8_t lo = vmovl_u8(vget_low_u8(bytes));
        uint16x8_t hi = vmovl_u8(vget_high_u8(bytes));
        uint32_t* dst = reinterpret_cast<uint32_t*>(out);
        vst1q_u32(dst + 0, vmovl_u16(vget_low_u16(lo)));
        vst1q_u32(dst + 4, vmovl_u16(vget_high_u16(lo)));
        vst1q_u32(dst + 8, vmovl_u16(vget_low_u16(hi)));
        vst1q_u32(dst + 12, vmovl_u16(vget_high_u16(hi)));
        return LeadingClear(vcgeq_u8(bytes, vdupq_n_u8(0x80)));
    }

    static size_t Narrow(wchar_t const* in, unsigned char* out)
    {
        uint32_t const* src = reinterpret_cast<uint32_t const*>(in);
        uint32x4_t const limit = vdupq_n_u32(0x7F);
        uint32x4_t a = vld1q_u32(src + 0);
        uint32x4_t b = vld1q_u32(src + 4);
        uint32x4_t c = vld1q_u32(src + 8);
        uint32x4_t d = vld1q_u32(src + 12);
        uint8x8_t lo = vmovn_u16(vcombine_u16(vmovn_u32(a), vmovn_u32(b)));
        uint8x8_t hi = vmovn_u16(vcombine_u16(vmovn_u32(c), vmovn_u32(d)));
        vst1q_u8(out, vcombine_u8(lo, hi));  // non-ASCII lanes are overwritten later
        uint16x8_t above_lo = vcombine_u16(vmovn_u32(vcgtq_u32(a, limit)), vmovn_u32(vcgtq_u32(b, limit)));
        uint16x8_t above_hi = vcombine_u16(vmovn_u32(vcgtq_u32(c, limit)), vmovn_u32(vcgtq_u32(d, limit)));
        return LeadingClear(vcombine_u8(vmovn_u16(above_lo), vmovn_u16(above_hi)));
    }
};

}  // namespace

size_t DecodeUtf8Neon(unsigned char const* source, size_t len, wchar_t* out)
{
    return DecodeUtf8With<NeonBlock>(source, len, out);
}

size_t EncodeUtf8Neon(wchar_t const* source, size_t len, unsigned char* out, size_t size)
{
    return EncodeUtf8With<NeonBlock>(source, len, out, size);
}

}  // namespace palvet::detail

#endif
