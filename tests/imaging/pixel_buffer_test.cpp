#include <palvet/imaging/drawing.h>

#include <gtest/gtest.h>

#include "imaging_test_util.h"

namespace {

using imaging_test::Bytes;
using imaging_test::Noise;

TEST(PixelBuffer, MemsetTouchesOnlyTheRectangle)
{
    int const pitch = 23, bpp = 3;
    Bytes buf = Noise(pitch * 9, 1), want = buf;
    MemsetBuffer(buf.data(), 2, 3, 5, 4, bpp, pitch, 0xAB);
    for (int y = 3; y < 7; ++y)
        for (int x = 2 * bpp; x < 7 * bpp; ++x)
            want[y * pitch + x] = 0xAB;
    EXPECT_EQ(buf, want);
    MemsetBuffer(buf.data(), 0, 0, 0, 4, bpp, pitch, 0);
    MemsetBuffer(buf.data(), 0, 0, 4, -1, bpp, pitch, 0);
    EXPECT_EQ(buf, want);
}

TEST(PixelBuffer, AlphaMaskAndAlphaByte)
{
    int const w = 13, h = 5, maskPitch = 17, pitch32 = w * 4 + 8, pitch24 = w * 3 + 5;
    Bytes const mask = Noise(maskPitch * h, 2);
    Bytes out32 = Noise(pitch32 * h, 3), want32 = out32;
    ConvertAlphaToRGB32Buffer(mask.data(), maskPitch, out32.data(), pitch32, w, h, 0x99A1B2C3u);
    Bytes out24 = Noise(pitch24 * h, 4), want24 = out24;
    ConvertAlphaToRGB24Buffer(mask.data(), maskPitch, out24.data(), pitch24, w, h, 0x77102030u, 0x88405060u);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            unsigned char const m = mask[y * maskPitch + x];
            unsigned char const px32[4] = {0xC3, 0xB2, 0xA1, m};
            std::copy(px32, px32 + 4, &want32[y * pitch32 + 4 * x]);
            unsigned char const on[3] = {0x30, 0x20, 0x10}, off[3] = {0x60, 0x50, 0x40};
            std::copy(m ? on : off, (m ? on : off) + 3, &want24[y * pitch24 + 3 * x]);
        }
    EXPECT_EQ(out32, want32);
    EXPECT_EQ(out24, want24);

    Bytes buf = Noise(pitch32 * h, 5);
    buf[3] = 255;
    Bytes want = buf;
    SetRGB32AlphaRatio(buf.data(), pitch32, w, h, 128);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            want[y * pitch32 + 4 * x + 3] = static_cast<unsigned char>(want[y * pitch32 + 4 * x + 3] * 128 / 256);
    EXPECT_EQ(buf, want);
    EXPECT_EQ(buf[3], 127);
    buf[3] = 255;
    SetRGB32AlphaRatio(buf.data(), pitch32, 1, 1, 255);
    EXPECT_EQ(buf[3], 254);

    SetRGB32Alpha(buf.data(), pitch32, w, h, 0x5A);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            want[y * pitch32 + 4 * x + 3] = 0x5A;
    want[3] = 0x5A;
    EXPECT_EQ(buf, want);
}

// Widths from 1 to 41 cover the vector loops and their scalar tails.
TEST(PixelBuffer, ConvertsBetween24And32BitPixels)
{
    int const h = 3;
    for (int w = 1; w <= 41; ++w) {
        for (int swap = 0; swap < 2; ++swap) {
            int const p24 = w * 3 + 7, p32 = w * 4 + 4;
            Bytes const src24 = Noise(p24 * h, w);
            Bytes out32 = Noise(p32 * h, w + 100), want32 = out32;
            ConvertRGB24ToRGB32(src24.data(), p24, out32.data(), p32, w, h, swap);
            Bytes const src32 = Noise(p32 * h, w + 200);
            Bytes out24 = Noise(p24 * h, w + 300), want24 = out24;
            ConvertRGB32ToRGB24(src32.data(), p32, out24.data(), p24, w, h, swap);
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x) {
                    unsigned char const* s3 = &src24[y * p24 + 3 * x];
                    unsigned char* d4 = &want32[y * p32 + 4 * x];
                    d4[0] = swap ? s3[2] : s3[0];
                    d4[1] = s3[1];
                    d4[2] = swap ? s3[0] : s3[2];
                    d4[3] = 0xFF;
                    unsigned char const* s4 = &src32[y * p32 + 4 * x];
                    unsigned char* d3 = &want24[y * p24 + 3 * x];
                    d3[0] = swap ? s4[2] : s4[0];
                    d3[1] = s4[1];
                    d3[2] = swap ? s4[0] : s4[2];
                }
            ASSERT_EQ(out32, want32) << "w=" << w << " swap=" << swap;
            ASSERT_EQ(out24, want24) << "w=" << w << " swap=" << swap;
        }
    }
}

TEST(PixelBuffer, GreyAndChannelSwaps)
{
    unsigned char const white[3] = {255, 255, 255}, red[4] = {255, 0, 0, 9};
    unsigned char grey[2] = {};
    ConvertRGB24ToGray(white, 3, grey, 1, 1, 1, 0);
    EXPECT_EQ(grey[0], 255);
    ConvertRGB24ToGray(red, 3, grey, 1, 1, 1, 0);
    EXPECT_EQ(grey[0], 76);
    ConvertRGB24ToGray(red, 3, grey, 1, 1, 1, 1);  // byte 0 is blue now
    EXPECT_EQ(grey[0], 27);
    ConvertRGB32ToGray(red, 4, grey, 1, 1, 1, 1);
    EXPECT_EQ(grey[0], 27);

    int const w = 11, h = 4, p24 = 40, p32 = 48, pg = 13;
    Bytes const s24 = Noise(p24 * h, 6), s32 = Noise(p32 * h, 7);
    for (int flag = 0; flag < 2; ++flag) {
        Bytes g24 = Noise(pg * h, 8), g32 = g24, want24 = g24, want32 = g24;
        ConvertRGB24ToGray(s24.data(), p24, g24.data(), pg, w, h, flag);
        ConvertRGB32ToGray(s32.data(), p32, g32.data(), pg, w, h, flag);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                auto grey3 = [flag](unsigned char const* p) {
                    int const r = flag ? p[2] : p[0], b = flag ? p[0] : p[2];
                    return static_cast<unsigned char>((77 * r + 151 * p[1] + 28 * b) >> 8);
                };
                want24[y * pg + x] = grey3(&s24[y * p24 + 3 * x]);
                want32[y * pg + x] = grey3(&s32[y * p32 + 4 * x]);
            }
        EXPECT_EQ(g24, want24);
        EXPECT_EQ(g32, want32);
    }

    Bytes b32 = Noise(p32 * h, 9), want = b32;
    RevertRGB32ToBGR32(b32.data(), p32, w, h);
    Bytes b24 = Noise(p24 * h, 10), want24 = b24;
    RevertRGB24ToBGR24(b24.data(), p24, w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            std::swap(want[y * p32 + 4 * x], want[y * p32 + 4 * x + 2]);
            std::swap(want24[y * p24 + 3 * x], want24[y * p24 + 3 * x + 2]);
        }
    EXPECT_EQ(b32, want);
    EXPECT_EQ(b24, want24);
}

TEST(PixelBuffer, FlipsRowsOfARectangle)
{
    int const pitch = 30, bpp = 2;
    for (int h : {1, 2, 5, 6}) {
        Bytes const orig = Noise(pitch * 9, h);
        Bytes buf = orig, want = orig;
        RevertBottomUpBuffer(buf.data(), 3, 2, 7, h, bpp, pitch);
        for (int i = 0; i < h; ++i)
            for (int k = 0; k < 7 * bpp; ++k)
                want[(2 + i) * pitch + 3 * bpp + k] = orig[(2 + h - 1 - i) * pitch + 3 * bpp + k];
        EXPECT_EQ(buf, want) << "h=" << h;
    }
    RevertBottomUpBuffer(nullptr, 0, 0, 4, 4, 4, 16);
}

}  // namespace
