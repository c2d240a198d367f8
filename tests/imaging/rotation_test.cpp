#include <palvet/imaging/drawing.h>

#include <gtest/gtest.h>

#include "imaging_test_util.h"

namespace {

using imaging_test::Bytes;
using imaging_test::Noise;

// Unit (r, c) of a w x h image to its offset after the turn.
std::size_t Target(int degrees, int w, int h, int r, int c)
{
    if (degrees == 90)
        return static_cast<std::size_t>(c) * h + (h - 1 - r);
    if (degrees == 270)
        return static_cast<std::size_t>(w - 1 - c) * h + r;
    return static_cast<std::size_t>(h - 1 - r) * w + (w - 1 - c);
}

Bytes Expected(Bytes const& src, int w, int h, int unit, int degrees, std::size_t size)
{
    Bytes out(size, 0xEE);
    for (int r = 0; r < h; ++r)
        for (int c = 0; c < w; ++c)
            for (int k = 0; k < unit; ++k)
                out[Target(degrees, w, h, r, c) * unit + k] = src[(static_cast<std::size_t>(r) * w + c) * unit + k];
    return out;
}

void Rotate(int degrees, unsigned char* s, unsigned char* d, int w, int h, int bpp)
{
    if (degrees == 90)
        RotateRGBData90(s, d, w, h, bpp);
    else if (degrees == 180)
        RotateRGBData180(s, d, w, h, bpp);
    else
        RotateRGBData270(s, d, w, h, bpp);
}

// Sizes straddle the 4 x 4 blocks and 32-pixel tiles of the fast paths; the
// destination carries guard bytes after the image.
TEST(Rotation, PackedPixelsOfEverySize)
{
    int const sizes[][2] = {{1, 1}, {4, 2}, {3, 5}, {8, 8}, {7, 4}, {37, 21}, {64, 33}, {5, 70}};
    for (auto const& sz : sizes) {
        int const w = sz[0], h = sz[1];
        for (int bpp = 1; bpp <= 5; ++bpp) {
            std::size_t const bytes = static_cast<std::size_t>(w) * h * bpp;
            Bytes src = Noise(bytes, w * 100 + h + bpp);
            for (int degrees : {90, 180, 270}) {
                Bytes dst(bytes + 16, 0xEE);
                Rotate(degrees, src.data(), dst.data(), w, h, bpp);
                ASSERT_EQ(dst, Expected(src, w, h, bpp, degrees, bytes + 16))
                    << w << "x" << h << " bpp " << bpp << " by " << degrees;
            }
        }
    }
}

TEST(Rotation, TurnsCompose)
{
    int const w = 4, h = 2;
    unsigned char src[w * h] = {0, 1, 2, 3, 10, 11, 12, 13};
    unsigned char once[w * h], twice[w * h], half[w * h];
    RotateRGBData90(src, once, w, h, 1);
    unsigned char const firstRow[2] = {10, 0};  // (row 1, col 0) then (row 0, col 0)
    EXPECT_EQ(0, std::memcmp(once, firstRow, 2));
    RotateRGBData90(once, twice, h, w, 1);
    RotateRGBData180(src, half, w, h, 1);
    EXPECT_EQ(0, std::memcmp(twice, half, sizeof half));
    RotateRGBData270(once, twice, h, w, 1);
    EXPECT_EQ(0, std::memcmp(twice, src, sizeof src));
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
    int const sizes[][2] = {{9, 7}, {16, 6}, {6, 1}};
    for (Case const& t : cases) {
        for (auto const& sz : sizes) {
            int const w = sz[0], h = sz[1], cw = w / 2, ch = h / 2;
            std::size_t const ySize = static_cast<std::size_t>(w) * h;
            std::size_t const cSize = static_cast<std::size_t>(cw) * ch * (t.semiPlanar ? 2 : 1);
            Bytes y = Noise(ySize, 1), u = Noise(cSize, 2), v = Noise(cSize, 3);
            Bytes dy(ySize + 8, 0xEE), du(cSize + 8, 0xEE), dv(cSize + 8, 0xEE);
            unsigned char* src[3] = {y.data(), u.data(), v.data()};
            unsigned char* dst[3] = {dy.data(), du.data(), dv.data()};
            t.fn(src, dst, w, h);
            EXPECT_EQ(dy, Expected(y, w, h, 1, t.degrees, ySize + 8));
            // A single row of luma has no chroma rows to move.
            Bytes const wantU = ch < 1 ? Bytes(cSize + 8, 0xEE)
                                       : Expected(u, cw, ch, t.semiPlanar ? 2 : 1, t.degrees, cSize + 8);
            EXPECT_EQ(du, wantU) << w << "x" << h << " by " << t.degrees;
            if (!t.semiPlanar)
                EXPECT_EQ(dv, Expected(v, cw, ch, 1, t.degrees, cSize + 8));
            else
                EXPECT_EQ(dv, Bytes(cSize + 8, 0xEE));  // the third pointer is not used
        }
    }
}

}  // namespace
