#include <palvet/imaging/pixel_buffer.h>

#include <gtest/gtest.h>

#include "imaging_test_util.h"

namespace {

using imaging_test::Bytes;
using imaging_test::Noise;

// Every test writes into noise with padded rows and checks the whole
// buffer, so a stray byte anywhere fails it.

TEST(PixelBuffer, MemsetTouchesOnlyTheRectangle)
{
    int const pitch = 23, bpp = 3;
    Bytes buf = Noise(pitch * 9, 1), want = buf;
    MemsetBuffer(buf.data(), 2, 3, 5, 4, bpp, pitch, 0xAB);
    for (int y = 3; y < 7; ++y)
        std::fill_n(&want[y * pitch + 2 * bpp], 5 * bpp, 0xAB);
    MemsetBuffer(buf.data(), 0, 0, 0, 4, bpp, pitch, 0);
    MemsetBuffer(buf.data(), 0, 0, 4, -1, bpp, pitch, 0);
    EXPECT_EQ(buf, want);
}

TEST(PixelBuffer, AlphaMaskAndAlphaByte)
{
    int const w = 13, h = 5, mp = 17, p32 = w * 4 + 8, p24 = w * 3 + 5;
    Bytes const mask = Noise(mp * h, 2);
    Bytes out32 = Noise(p32 * h, 3), want32 = out32, out24 = Noise(p24 * h, 4), want24 = out24;
    ConvertAlphaToRGB32Buffer(mask.data(), mp, out32.data(), p32, w, h, 0x99A1B2C3u);
    ConvertAlphaToRGB24Buffer(mask.data(), mp, out24.data(), p24, w, h, 0x77102030u, 0x88405060u);
    Bytes ratio = Noise(p32 * h, 5), wantRatio = ratio, set = ratio, wantSet = ratio;
    SetRGB32AlphaRatio(ratio.data(), p32, w, h, 128);
    SetRGB32Alpha(set.data(), p32, w, h, 0x5A);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            unsigned char const m = mask[y * mp + x];
            unsigned char const px32[4] = {0xC3, 0xB2, 0xA1, m}, on[3] = {0x30, 0x20, 0x10}, off[3] = {0x60, 0x50, 0x40};
            std::copy_n(px32, 4, &want32[y * p32 + 4 * x]);
            std::copy_n(m ? on : off, 3, &want24[y * p24 + 3 * x]);
            unsigned char& a = wantRatio[y * p32 + 4 * x + 3];
            a = static_cast<unsigned char>(a * 128 >> 8);
            wantSet[y * p32 + 4 * x + 3] = 0x5A;
        }
    EXPECT_EQ(out32, want32);
    EXPECT_EQ(out24, want24);
    EXPECT_EQ(ratio, wantRatio);
    EXPECT_EQ(set, wantSet);
    unsigned char opaque[4] = {1, 2, 3, 255};
    SetRGB32AlphaRatio(opaque, 4, 1, 1, 255);  // a shift, not a division by 255
    EXPECT_EQ(opaque[3], 254);
}

// Widths from 1 to 41 cover the vector loops and their scalar tails.
TEST(PixelBuffer, ConvertsBetween24And32BitPixels)
{
    int const h = 3;
    for (int w = 1; w <= 41; ++w) {
        for (int swap = 0; swap < 2; ++swap) {
            int const p24 = w * 3 + 7, p32 = w * 4 + 4;
            Bytes const s24 = Noise(p24 * h, w), s32 = Noise(p32 * h, w + 200);
            Bytes out32 = Noise(p32 * h, w + 100), want32 = out32, out24 = Noise(p24 * h, w + 300), want24 = out24;
            ConvertRGB24ToRGB32(s24.data(), p24, out32.data(), p32, w, h, swap);
            ConvertRGB32ToRGB24(s32.data(), p32, out24.data(), p24, w, h, swap);
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x) {
                    unsigned char const *a = &s24[y * p24 + 3 * x], *b = &s32[y * p32 + 4 * x];
                    unsigned char const px4[4] = {a[swap ? 2 : 0], a[1], a[swap ? 0 : 2], 0xFF};
                    unsigned char const px3[3] = {b[swap ? 2 : 0], b[1], b[swap ? 0 : 2]};
                    std::copy_n(px4, 4, &want32[y * p32 + 4 * x]);
                    std::copy_n(px3, 3, &want24[y * p24 + 3 * x]);
                }
            ASSERT_EQ(out32, want32) << "w=" << w << " swap=" << swap;
            ASSERT_EQ(out24, want24) << "w=" << w << " swap=" << swap;
        }
    }
}

TEST(PixelBuffer, GreyAndChannelSwaps)
{
    unsigned char const white[3] = {255, 255, 255}, red[4] = {255, 0, 0, 9};
    unsigned char grey[3] = {};
    ConvertRGB24ToGray(white, 3, grey, 1, 1, 1, 0);
    ConvertRGB24ToGray(red, 3, grey + 1, 1, 1, 1, 0);
    ConvertRGB32ToGray(red, 4, grey + 2, 1, 1, 1, 1);  // byte 0 is blue now
    EXPECT_EQ(Bytes(grey, grey + 3), Bytes({255, 76, 27}));

    int const w = 11, h = 4, p24 = 40, p32 = 48, pg = 13;
    Bytes const s24 = Noise(p24 * h, 6), s32 = Noise(p32 * h, 7);
    Bytes swapped32 = s32, swapped24 = s24, want32 = s32, want24 = s24;
    RevertRGB32ToBGR32(swapped32.data(), p32, w, h);
    RevertRGB24ToBGR24(swapped24.data(), p24, w, h);
    for (int flag = 0; flag < 2; ++flag) {
        Bytes g24 = Noise(pg * h, 8), g32 = g24, wantG24 = g24, wantG32 = g24;
        ConvertRGB24ToGray(s24.data(), p24, g24.data(), pg, w, h, flag);
        ConvertRGB32ToGray(s32.data(), p32, g32.data(), pg, w, h, flag);
        auto const grey3 = [flag](unsigned char const* p) {
            return static_cast<unsigned char>((77 * p[flag ? 2 : 0] + 151 * p[1] + 28 * p[flag ? 0 : 2]) >> 8);
        };
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                wantG24[y * pg + x] = grey3(&s24[y * p24 + 3 * x]);
                wantG32[y * pg + x] = grey3(&s32[y * p32 + 4 * x]);
                if (flag == 0) {
                    std::swap(want32[y * p32 + 4 * x], want32[y * p32 + 4 * x + 2]);
                    std::swap(want24[y * p24 + 3 * x], want24[y * p24 + 3 * x + 2]);
                }
            }
        EXPECT_EQ(g24, wantG24);
        EXPECT_EQ(g32, wantG32);
    }
    EXPECT_EQ(swapped32, want32);
    EXPECT_EQ(swapped24, want24);
}

TEST(PixelBuffer, FlipsRowsOfARectangle)
{
    int const pitch = 30, bpp = 2;
    for (int h : {1, 2, 5, 6}) {  // an odd height keeps its middle row
        Bytes const orig = Noise(pitch * 9, h);
        Bytes buf = orig, want = orig;
        RevertBottomUpBuffer(buf.data(), 3, 2, 7, h, bpp, pitch);
        for (int i = 0; i < h; ++i)
            std::copy_n(&orig[(2 + h - 1 - i) * pitch + 3 * bpp], 7 * bpp, &want[(2 + i) * pitch + 3 * bpp]);
        EXPECT_EQ(buf, want) << "h=" << h;
    }
    RevertBottomUpBuffer(nullptr, 0, 0, 4, 4, 4, 16);
}

}  // namespace
