#include <palvet/imaging/rotation.h>

#include <gtest/gtest.h>

#include "imaging_test_util.h"

namespace {

using imaging_test::Bytes;
using imaging_test::Noise;

// Moves each unit of a w x h image by the rotation rule into a buffer of
// size bytes, the rest left at the guard value.
Bytes Expected(Bytes const& src, int w, int h, int unit, int degrees, std::size_t size)
{
    Bytes out(size, 0xEE);
    for (std::size_t r = 0; r < std::size_t(h); ++r)
        for (std::size_t c = 0; c < std::size_t(w); ++c) {
            std::size_t const to = degrees == 90    ? c * h + (h - 1 - r)
                                   : degrees == 270 ? (w - 1 - c) * h + r
                                                    : (h - 1 - r) * w + (w - 1 - c);
            std::copy_n(&src[(r * w + c) * unit], unit, &out[to * unit]);
        }
    return out;
}

// Sizes straddle the 4 x 4 blocks and 32-pixel tiles of the fast paths; the
// destination carries guard bytes after the image.
TEST(Rotation, PackedPixelsOfEverySize)
{
    using Fn = void (*)(unsigned char*, unsigned char*, int, int, int);
    std::pair<Fn, int> const turns[] = {{RotateRGBData90, 90}, {RotateRGBData180, 180}, {RotateRGBData270, 270}};
    int const sizes[][2] = {{1, 1}, {4, 2}, {3, 5}, {8, 8}, {7, 4}, {37, 21}, {64, 33}, {5, 70}};
    for (auto const& sz : sizes) {
        for (int bpp = 1; bpp <= 5; ++bpp) {
            std::size_t const bytes = std::size_t(sz[0]) * sz[1] * bpp;
            Bytes src = Noise(bytes, sz[0] * 100 + sz[1] + bpp);
            for (auto const& t : turns) {
                Bytes dst(bytes + 16, 0xEE);
                t.first(src.data(), dst.data(), sz[0], sz[1], bpp);
                ASSERT_EQ(dst, Expected(src, sz[0], sz[1], bpp, t.second, bytes + 16))
                    << sz[0] << "x" << sz[1] << " bpp " << bpp << " by " << t.second;
            }
        }
    }
    // Turns compose: 90 twice is 180, 90 then 270 is no turn.
    unsigned char src[8] = {0, 1, 2, 3, 10, 11, 12, 13}, once[8], twice[8], half[8];
    RotateRGBData90(src, once, 4, 2, 1);
    EXPECT_EQ(Bytes(once, once + 2), Bytes({10, 0}));
    RotateRGBData90(once, twice, 2, 4, 1);
    RotateRGBData180(src, half, 4, 2, 1);
    EXPECT_EQ(Bytes(twice, twice + 8), Bytes(half, half + 8));
    RotateRGBData270(once, twice, 2, 4, 1);
    EXPECT_EQ(Bytes(twice, twice + 8), Bytes(src, src + 8));
}

TEST(Rotation, YuvPlanes)
{
    using Fn = void (*)(unsigned char**, unsigned char**, int, int);
    struct Case {
        Fn fn;
        int degrees;
        bool semiPlanar;
    };
    Case const cases[] = {{RotateYUV420Data_90, 90, false},    {RotateYUV420Data_180, 180, false},
                          {RotateYUV420Data_270, 270, false},  {RotateYUV420SPData_90, 90, true},
                          {RotateYUV420SPData_180, 180, true}, {RotateYUV420SPData_270, 270, true}};
    int const sizes[][2] = {{9, 7}, {16, 6}, {6, 1}};  // a single row has no chroma to move
    for (Case const& t : cases) {
        for (auto const& sz : sizes) {
            int const w = sz[0], h = sz[1], cw = w / 2, ch = h / 2, unit = t.semiPlanar ? 2 : 1;
            std::size_t const ySize = std::size_t(w) * h, cSize = std::size_t(cw) * ch * unit;
            Bytes y = Noise(ySize, 1), u = Noise(cSize, 2), v = Noise(cSize, 3);
            Bytes dy(ySize + 8, 0xEE), du(cSize + 8, 0xEE), dv(cSize + 8, 0xEE);
            unsigned char* src[3] = {y.data(), u.data(), v.data()};
            unsigned char* dst[3] = {dy.data(), du.data(), dv.data()};
            t.fn(src, dst, w, h);
            EXPECT_EQ(dy, Expected(y, w, h, 1, t.degrees, ySize + 8));
            EXPECT_EQ(du, Expected(u, cw, ch, unit, t.degrees, cSize + 8)) << w << "x" << h << " by " << t.degrees;
            // The semi-planar layout has no third plane.
            EXPECT_EQ(dv, t.semiPlanar ? Bytes(cSize + 8, 0xEE) : Expected(v, cw, ch, 1, t.degrees, cSize + 8));
        }
    }
}

}  // namespace
