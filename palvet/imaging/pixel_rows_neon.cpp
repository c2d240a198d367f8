// NEON rows for the pixel-buffer conversions, the bottom-up flip and the
// stretch's column gather. Each does whole vectors and returns how many
// pixels (or bytes) it did; the plain loops finish the row, so results are
// theirs by construction wherever a row ends. Built with -mfpu=neon on
// 32-bit ARM; only called after UseNeon().
#include <palvet/imaging/pixel_kernels_internal.h>

#if defined(__ARM_NEON) || defined(__ARM_NEON__)
#include <arm_neon.h>

namespace palvet::detail {

namespace {

// (77 r + 151 g + 28 b) >> 8; the sum stays below 65536.
inline uint8x8_t Grey8(uint8x8_t r, uint8x8_t g, uint8x8_t b)
{
    uint16x8_t s = vmull_u8(r, vdup_n_u8(77));
    s = vmlal_u8(s, g, vdup_n_u8(151));
    s = vmlal_u8(s, b, vdup_n_u8(28));
    return vshrn_n_u16(s, 8);
}

inline uint8x16_t Grey16(uint8x16_t r, uint8x16_t g, uint8x16_t b)
{
    return vcombine_u8(Grey8(vget_low_u8(r), vget_low_u8(g), vget_low_u8(b)),
                       Grey8(vget_high_u8(r), vget_high_u8(g), vget_high_u8(b)));
}

}  // namespace

int GreyRow24Neon(unsigned char const* s, unsigned char* d, int n, bool bgr)
{
    int x = 0;
    for (; x + 16 <= n; x += 16) {
        uint8x16x3_t const p = vld3q_u8(s + 3 * x);
        vst1q_u8(d + x, Grey16(p.val[bgr ? 2 : 0], p.val[1], p.val[bgr ? 0 : 2]));
    }
    return x;
}

int GreyRow32Neon(unsigned char const* s, unsigned char* d, int n, bool bgr)
{
    int x = 0;
    for (; x + 16 <= n; x += 16) {
        uint8x16x4_t const p = vld4q_u8(s + 4 * x);
        vst1q_u8(d + x, Grey16(p.val[bgr ? 2 : 0], p.val[1], p.val[bgr ? 0 : 2]));
    }
    return x;
}

int SwapRBRow24Neon(unsigned char* p, int n)
{
    int x = 0;
    for (; x + 16 <= n; x += 16) {
        uint8x16x3_t v = vld3q_u8(p + 3 * x);
        uint8x16_t const t = v.val[0];
        v.val[0] = v.val[2];
        v.val[2] = t;
        vst3q_u8(p + 3 * x, v);
    }
    return x;
}

int SwapRBRow32Neon(unsigned char* p, int n)
{
    int x = 0;
    for (; x + 16 <= n; x += 16) {
        uint8x16x4_t v = vld4q_u8(p + 4 * x);
        uint8x16_t const t = v.val[0];
        v.val[0] = v.val[2];
        v.val[2] = t;
        vst4q_u8(p + 4 * x, v);
    }
    return x;
}

int AlphaRatioRowNeon(unsigned char* p, int n, unsigned char ratio)
{
    uint8x8_t const k = vdup_n_u8(ratio);
    int x = 0;
    for (; x + 16 <= n; x += 16) {
        uint8x16x4_t v = vld4q_u8(p + 4 * x);
        v.val[3] = vcombine_u8(vshrn_n_u16(vmull_u8(vget_low_u8(v.val[3]), k), 8),
                               vshrn_n_u16(vmull_u8(vget_high_u8(v.val[3]), k), 8));
        vst4q_u8(p + 4 * x, v);
    }
    return x;
}

int AlphaSetRowNeon(unsigned char* p, int n, unsigned char alpha)
{
    // Only the alpha bytes change: a bit select keeps the colour bytes as
    // they are.
    uint8x16_t const mask = vreinterpretq_u8_u32(vdupq_n_u32(0xFF000000u));
    uint8x16_t const a = vdupq_n_u8(alpha);
    int x = 0;
    for (; x + 4 <= n; x += 4)
        vst1q_u8(p + 4 * x, vbslq_u8(mask, a, vld1q_u8(p + 4 * x)));
    return x;
}

int AlphaToRgb24RowNeon(unsigned char const* a, unsigned char* d, int n, unsigned char const on[3],
                        unsigned char const off[3])
{
    uint8x16_t const on0 = vdupq_n_u8(on[0]), on1 = vdupq_n_u8(on[1]), on2 = vdupq_n_u8(on[2]);
    uint8x16_t const off0 = vdupq_n_u8(off[0]), off1 = vdupq_n_u8(off[1]), off2 = vdupq_n_u8(off[2]);
    int x = 0;
    for (; x + 16 <= n; x += 16) {
        uint8x16_t const v = vld1q_u8(a + x);
        uint8x16_t const set = vtstq_u8(v, v);
        uint8x16x3_t out;
        out.val[0] = vbslq_u8(set, on0, off0);
        out.val[1] = vbslq_u8(set, on1, off1);
        out.val[2] = vbslq_u8(set, on2, off2);
        vst3q_u8(d + 3 * x, out);
    }
    return x;
}

void SwapBytesNeon(unsigned char* a, unsigned char* b, std::size_t n)
{
    std::size_t i = 0;
    for (; i + 16 <= n; i += 16) {
        uint8x16_t const va = vld1q_u8(a + i), vb = vld1q_u8(b + i);
        vst1q_u8(a + i, vb);
        vst1q_u8(b + i, va);
    }
    for (; i < n; ++i) {
        unsigned char const t = a[i];
        a[i] = b[i];
        b[i] = t;
    }
}

void StretchByteIndexes(StretchGroup const& g, unsigned char idx[32])
{
    for (int k = 0; k < 8; ++k)
        for (int j = 0; j < 4; ++j)
            idx[4 * k + j] = static_cast<unsigned char>(4 * g.lanes[k] + j);
}

void GatherRow32Neon(unsigned char* d, unsigned char const* s, int const* cols, StretchGroup const* groups,
                     unsigned char const (*idx)[32], int n)
{
    int const count = n / 8;
    for (int g = 0; g < count; ++g) {
        unsigned char* out = d + 32 * g;
        if (groups[g].base >= 0) {
            // The group's eight source pixels are one 32-byte table; each
            // lookup makes two output pixels.
            unsigned char const* from = s + 4 * static_cast<std::ptrdiff_t>(groups[g].base);
            uint8x16_t const lo = vld1q_u8(from), hi = vld1q_u8(from + 16);
            uint8x8x4_t const table = {{vget_low_u8(lo), vget_high_u8(lo), vget_low_u8(hi), vget_high_u8(hi)}};
            uint8x16_t const i0 = vld1q_u8(idx[g]), i1 = vld1q_u8(idx[g] + 16);
            vst1q_u8(out, vcombine_u8(vtbl4_u8(table, vget_low_u8(i0)), vtbl4_u8(table, vget_high_u8(i0))));
            vst1q_u8(out + 16, vcombine_u8(vtbl4_u8(table, vget_low_u8(i1)), vtbl4_u8(table, vget_high_u8(i1))));
        } else {
            for (int k = 0; k < 8; ++k)
                StoreU32(out + 4 * k, LoadU32(s + 4 * static_cast<std::ptrdiff_t>(cols[8 * g + k])));
        }
    }
    for (int k = 8 * count; k < n; ++k)
        StoreU32(d + 4 * k, LoadU32(s + 4 * static_cast<std::ptrdiff_t>(cols[k])));
}

}  // namespace palvet::detail

#endif
