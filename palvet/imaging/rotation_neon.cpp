// NEON rotations of 1-, 2- and 3-byte units (grey and 16-bit pixels, RGB24,
// YUV planes and interleaved chroma): 8 x 8 tiles split into byte channels
// by the structured loads, transposed with three rounds of vtrn, and
// written back interleaved. Edges outside whole tiles move unit by unit.
// Built with -mfpu=neon on 32-bit ARM; only called after UseNeon().
#include <palvet/imaging/pixel_kernels_internal.h>

#if defined(__ARM_NEON) || defined(__ARM_NEON__)
#include <arm_neon.h>

#include <cstddef>

namespace palvet::detail {

namespace {

// Eight units, one register per byte of the unit.
template <int N>
struct Units8 {
    uint8x8_t c[N];
};

template <int N>
inline Units8<N> Load8(unsigned char const* p)
{
    Units8<N> u;
    if constexpr (N == 1) {
        u.c[0] = vld1_u8(p);
    } else if constexpr (N == 2) {
        uint8x8x2_t const v = vld2_u8(p);
        u.c[0] = v.val[0];
        u.c[1] = v.val[1];
    } else {
        uint8x8x3_t const v = vld3_u8(p);
        u.c[0] = v.val[0];
        u.c[1] = v.val[1];
        u.c[2] = v.val[2];
    }
    return u;
}

template <int N>
inline void Store8(unsigned char* p, Units8<N> const& u)
{
    if constexpr (N == 1) {
        vst1_u8(p, u.c[0]);
    } else if constexpr (N == 2) {
        uint8x8x2_t const v = {{u.c[0], u.c[1]}};
        vst2_u8(p, v);
    } else {
        uint8x8x3_t const v = {{u.c[0], u.c[1], u.c[2]}};
        vst3_u8(p, v);
    }
}

template <int N>
inline Units8<N> Reverse(Units8<N> u)
{
    for (int k = 0; k < N; ++k)
        u.c[k] = vrev64_u8(u.c[k]);
    return u;
}

// Rows r[0..7] of an 8 x 8 byte block become its columns.
inline void Transpose8(uint8x8_t r[8])
{
    uint8x8x2_t const a0 = vtrn_u8(r[0], r[1]), a1 = vtrn_u8(r[2], r[3]);
    uint8x8x2_t const a2 = vtrn_u8(r[4], r[5]), a3 = vtrn_u8(r[6], r[7]);
    uint16x4x2_t const b0 = vtrn_u16(vreinterpret_u16_u8(a0.val[0]), vreinterpret_u16_u8(a1.val[0]));
    uint16x4x2_t const b1 = vtrn_u16(vreinterpret_u16_u8(a0.val[1]), vreinterpret_u16_u8(a1.val[1]));
    uint16x4x2_t const b2 = vtrn_u16(vreinterpret_u16_u8(a2.val[0]), vreinterpret_u16_u8(a3.val[0]));
    uint16x4x2_t const b3 = vtrn_u16(vreinterpret_u16_u8(a2.val[1]), vreinterpret_u16_u8(a3.val[1]));
    uint32x2x2_t const c0 = vtrn_u32(vreinterpret_u32_u16(b0.val[0]), vreinterpret_u32_u16(b2.val[0]));
    uint32x2x2_t const c1 = vtrn_u32(vreinterpret_u32_u16(b1.val[0]), vreinterpret_u32_u16(b3.val[0]));
    uint32x2x2_t const c2 = vtrn_u32(vreinterpret_u32_u16(b0.val[1]), vreinterpret_u32_u16(b2.val[1]));
    uint32x2x2_t const c3 = vtrn_u32(vreinterpret_u32_u16(b1.val[1]), vreinterpret_u32_u16(b3.val[1]));
    r[0] = vreinterpret_u8_u32(c0.val[0]);
    r[1] = vreinterpret_u8_u32(c1.val[0]);
    r[2] = vreinterpret_u8_u32(c2.val[0]);
    r[3] = vreinterpret_u8_u32(c3.val[0]);
    r[4] = vreinterpret_u8_u32(c0.val[1]);
    r[5] = vreinterpret_u8_u32(c1.val[1]);
    r[6] = vreinterpret_u8_u32(c2.val[1]);
    r[7] = vreinterpret_u8_u32(c3.val[1]);
}

// The unit at (r, c) to where the rotation puts it.
template <int N>
inline void MoveOne(unsigned char const* src, unsigned char* dst, std::ptrdiff_t W, std::ptrdiff_t H,
                    std::ptrdiff_t r, std::ptrdiff_t c, int degrees)
{
    std::ptrdiff_t const to = degrees == 90    ? c * H + (H - 1 - r)
                              : degrees == 270 ? (W - 1 - c) * H + r
                                               : (H - 1 - r) * W + (W - 1 - c);
    for (int k = 0; k < N; ++k)
        dst[to * N + k] = src[(r * W + c) * N + k];
}

template <int N>
void RotateTiles(unsigned char const* src, unsigned char* dst, int w, int h, int degrees)
{
    if (w < 1 || h < 1 || (degrees != 90 && degrees != 180 && degrees != 270))
        return;
    std::ptrdiff_t const W = w, H = h;
    std::ptrdiff_t const W8 = W & ~std::ptrdiff_t(7), H8 = H & ~std::ptrdiff_t(7);
    if (degrees == 180) {
        for (std::ptrdiff_t r = 0; r < H; ++r) {
            unsigned char const* s = src + r * W * N;
            unsigned char* d = dst + (H - 1 - r) * W * N;
            for (std::ptrdiff_t c = 0; c < W8; c += 8)
                Store8<N>(d + (W - 8 - c) * N, Reverse(Load8<N>(s + c * N)));
            for (std::ptrdiff_t c = W8; c < W; ++c)
                MoveOne<N>(src, dst, W, H, r, c, 180);
        }
        return;
    }
    // Column strips keep the rows being written few enough to stay cached.
    constexpr std::ptrdiff_t kStrip = 64;
    for (std::ptrdiff_t cs = 0; cs < W8; cs += kStrip) {
        std::ptrdiff_t const ce = cs + kStrip < W8 ? cs + kStrip : W8;
        for (std::ptrdiff_t r = 0; r < H8; r += 8) {
            for (std::ptrdiff_t c = cs; c < ce; c += 8) {
                Units8<N> rows[8];
                for (int i = 0; i < 8; ++i)
                    rows[i] = Load8<N>(src + ((r + i) * W + c) * N);
                Units8<N> cols[8];
                for (int k = 0; k < N; ++k) {
                    uint8x8_t m[8];
                    for (int i = 0; i < 8; ++i)
                        m[i] = rows[i].c[k];
                    Transpose8(m);
                    for (int j = 0; j < 8; ++j)
                        cols[j].c[k] = m[j];
                }
                for (int j = 0; j < 8; ++j) {
                    if (degrees == 90)  // column c + j becomes a row, read bottom-up
                        Store8<N>(dst + ((c + j) * H + (H - 8 - r)) * N, Reverse(cols[j]));
                    else
                        Store8<N>(dst + ((W - 1 - c - j) * H + r) * N, cols[j]);
                }
            }
        }
    }
    for (std::ptrdiff_t r = 0; r < H8; ++r)
        for (std::ptrdiff_t c = W8; c < W; ++c)
            MoveOne<N>(src, dst, W, H, r, c, degrees);
    for (std::ptrdiff_t r = H8; r < H; ++r)
        for (std::ptrdiff_t c = 0; c < W; ++c)
            MoveOne<N>(src, dst, W, H, r, c, degrees);
}

}  // namespace

bool RotateUnitsNeon(unsigned char const* src, unsigned char* dst, int w, int h, int unit, int degrees)
{
    switch (unit) {
    case 1: RotateTiles<1>(src, dst, w, h, degrees); return true;
    case 2: RotateTiles<2>(src, dst, w, h, degrees); return true;
    case 3: RotateTiles<3>(src, dst, w, h, degrees); return true;
    default: return false;
    }
}

}  // namespace palvet::detail

#endif
