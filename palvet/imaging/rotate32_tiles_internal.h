#ifndef PALVET_IMAGING_ROTATE32_TILES_INTERNAL_H
#define PALVET_IMAGING_ROTATE32_TILES_INTERNAL_H

// The 32-bit rotations by 4 x 4 block transposes, written once over an
// instruction-set description `I` and instantiated by the *_sse2 and *_neon
// sources. Internal linkage throughout, so that no copy built for one
// instruction set can be picked for another.
//
// `I` provides a vector V of four 32-bit pixels and:
//   Load(p), Store(p, v)        16 unaligned bytes
//   Reverse(v)                  lanes 3 2 1 0
//   Transpose4(a0, a1, a2, a3)  rows of a 4 x 4 block to columns, in place

#include <palvet/core/mca_marker_internal.h>
#include <palvet/imaging/pixel_kernels_internal.h>

#include <cstddef>

namespace palvet::detail {
namespace {

// One pixel by the rotation rule, for the edges the blocks do not cover.
inline void RotateOne32(unsigned char const* src, unsigned char* dst, std::ptrdiff_t W, std::ptrdiff_t H,
                        std::ptrdiff_t r, std::ptrdiff_t c, int degrees)
{
    std::ptrdiff_t const to = degrees == 90 ? c * H + (H - 1 - r) : (W - 1 - c) * H + r;
    StoreU32(dst + to * 4, LoadU32(src + (r * W + c) * 4));
}

template <class I, int kDegrees>
void Rotate32Quarter(unsigned char const* src, unsigned char* dst, std::ptrdiff_t W, std::ptrdiff_t H);

template <class I>
void Rotate32Tiles(unsigned char const* src, unsigned char* dst, int w, int h, int degrees)
{
    if (w < 1 || h < 1)
        return;
    std::ptrdiff_t const W = w, H = h;
    if (degrees == 180) {
        for (std::ptrdiff_t r = 0; r < H; ++r) {
            unsigned char const* s = src + r * W * 4;
            unsigned char* d = dst + ((H - 1 - r) * W + W) * 4;  // one past the row's end
            std::ptrdiff_t c = 0;
            for (; c + 4 <= W; c += 4)
                I::Store(d - (c + 4) * 4, I::Reverse(I::Load(s + c * 4)));
            for (; c < W; ++c)
                StoreU32(d - (c + 1) * 4, LoadU32(s + c * 4));
        }
        return;
    }
    if (degrees != 90 && degrees != 270)
        return;

    if (degrees == 90)
        Rotate32Quarter<I, 90>(src, dst, W, H);
    else
        Rotate32Quarter<I, 270>(src, dst, W, H);
}

// The 90 and 270 degree walks, the angle fixed so that the block loop has
// no test in it.
template <class I, int kDegrees>
void Rotate32Quarter(unsigned char const* src, unsigned char* dst, std::ptrdiff_t W, std::ptrdiff_t H)
{
    using V = typename I::V;
    int const degrees = kDegrees;
    std::ptrdiff_t const H4 = H & ~std::ptrdiff_t(3), W4 = W & ~std::ptrdiff_t(3);
    // Column strips keep the rows being written few enough to stay cached.
    constexpr std::ptrdiff_t kStrip = 32;
    for (std::ptrdiff_t cs = 0; cs < W4; cs += kStrip) {
        std::ptrdiff_t const ce = cs + kStrip < W4 ? cs + kStrip : W4;
        for (std::ptrdiff_t r = 0; r < H4; r += 4) {
            unsigned char const* s = src + r * W * 4;
            for (std::ptrdiff_t c = cs; c < ce; c += 4) {
                if constexpr (kDegrees == 90)
                    PALVET_MCA_BEGIN("rotate32-90");
                V a0 = I::Load(s + c * 4);
                V a1 = I::Load(s + (W + c) * 4);
                V a2 = I::Load(s + (2 * W + c) * 4);
                V a3 = I::Load(s + (3 * W + c) * 4);
                if constexpr (kDegrees == 90) {
                    // Rows enter reversed so each output row runs bottom-up.
                    I::Transpose4(a3, a2, a1, a0);
                    unsigned char* d = dst + (c * H + (H - 4 - r)) * 4;
                    I::Store(d, a3);
                    I::Store(d + H * 4, a2);
                    I::Store(d + 2 * H * 4, a1);
                    I::Store(d + 3 * H * 4, a0);
                    PALVET_MCA_END("rotate32-90");
                } else {
                    I::Transpose4(a0, a1, a2, a3);
                    unsigned char* d = dst + ((W - 1 - c) * H + r) * 4;
                    I::Store(d, a0);
                    I::Store(d - H * 4, a1);
                    I::Store(d - 2 * H * 4, a2);
                    I::Store(d - 3 * H * 4, a3);
                }
            }
        }
    }
    for (std::ptrdiff_t r = 0; r < H4; ++r)
        for (std::ptrdiff_t c = W4; c < W; ++c)
            RotateOne32(src, dst, W, H, r, c, degrees);
    for (std::ptrdiff_t r = H4; r < H; ++r)
        for (std::ptrdiff_t c = 0; c < W; ++c)
            RotateOne32(src, dst, W, H, r, c, degrees);
}

}  // namespace
}  // namespace palvet::detail

#endif
