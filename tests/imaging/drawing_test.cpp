#include <palvet/imaging/drawing.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <utility>

#include "imaging_test_util.h"

namespace {

using imaging_test::ArgbNoise;
using imaging_test::Bytes;
using imaging_test::ExpectedBlend;
using imaging_test::ExpectedSteps;
using imaging_test::Noise;
using imaging_test::PutWord;
using imaging_test::Word;

TEST(Drawing, CopiesTheCommonSizeBetweenCorners)
{
    int const bpp = 3, dp = 20 * bpp + 5, sp = 15 * bpp + 1;
    Bytes const src = Noise(sp * 11, 1);
    Bytes dst = Noise(dp * 12, 2), want = dst;
    tagRECT const dr = {4, 2, 17, 9}, sr = {3, 1, 12, 10};  // 13x7 and 9x9: copies 9x7
    DrawBufferOnBuffer(dst.data(), dr, dp, src.data(), sr, sp, bpp);
    for (int y = 0; y < 7; ++y)
        std::copy_n(&src[(1 + y) * sp + 3 * bpp], 9 * bpp, &want[(2 + y) * dp + 4 * bpp]);
    EXPECT_EQ(dst, want);
    tagRECT const empty = {5, 5, 5, 9};
    DrawBufferOnBuffer(dst.data(), empty, dp, src.data(), sr, sp, bpp);
    EXPECT_EQ(dst, want);
}

TEST(Drawing, BlendFollowsItsOwnFormula)
{
    // Alpha 128 over opaque: each channel moves by (sc - dc) * 128 / 255.
    Bytes px(4), sp(4);
    PutWord(px, 0, 0xFF102030u);
    PutWord(sp, 0, 0x80F0A010u);
    tagRECT const one = {0, 0, 1, 1};
    AlphaDrawBufferOnBuffer_ARGB(px.data(), one, 4, sp.data(), one, 4);
    EXPECT_EQ(Word(px, 0), 0xFF806020u);
}

TEST(Drawing, BlendsClippedAreas)
{
    int const dp = 50 * 4 + 12, sp = 41 * 4;
    Bytes const src = ArgbNoise(41 * 15, 3);
    Bytes dst = ArgbNoise(dp / 4 * 20, 4), want = dst;
    tagRECT const dr = {9, 3, 46, 20}, sr = {2, 1, 41, 12};  // 37x17 and 39x11: 37x11
    AlphaDrawBufferOnBuffer_ARGB(dst.data(), dr, dp, src.data(), sr, sp);
    for (int y = 0; y < 11; ++y)
        for (int x = 0; x < 37; ++x) {
            std::size_t const at = (3 + y) * dp + (9 + x) * 4;
            PutWord(want, at, ExpectedBlend(Word(want, at), Word(src, (1 + y) * sp + (2 + x) * 4)));
        }
    EXPECT_EQ(dst, want);
}

// The whole-buffer stretch tests below take their expectations from
// ExpectedSteps; pin it, and the library, to known sequences first.
TEST(Drawing, StretchStepsThroughSourceColumnsAndRows)
{
    EXPECT_EQ(ExpectedSteps(2, 4), std::vector<int>({0, 0, 1, 1}));
    EXPECT_EQ(ExpectedSteps(3, 5), std::vector<int>({0, 0, 1, 2, 2}));
    EXPECT_EQ(ExpectedSteps(4, 2), std::vector<int>({0, 1}));
    EXPECT_EQ(ExpectedSteps(8, 2), std::vector<int>({0, 2}));
    EXPECT_EQ(ExpectedSteps(5, 3), std::vector<int>({0, 1, 3}));
    EXPECT_EQ(ExpectedSteps(10, 4), std::vector<int>({0, 2, 4, 7}));
    // The library itself on the same literal sequences, along rows and down
    // columns, for 1- and 4-byte pixels (separate loops).
    struct Case { int from, onto; std::vector<int> reads; };
    Case const cases[] = {{2, 4, {0, 0, 1, 1}}, {3, 5, {0, 0, 1, 2, 2}}, {4, 2, {0, 1}},
                          {8, 2, {0, 2}},       {5, 3, {0, 1, 3}},       {10, 4, {0, 2, 4, 7}}};
    for (Case const& c : cases) {
        for (int bpp : {1, 4}) {
            Bytes src(c.from * bpp);
            for (int i = 0; i < c.from; ++i)
                src[i * bpp] = static_cast<unsigned char>(10 + i);
            Bytes row(c.onto * bpp), column(c.onto * bpp);
            tagRECT const sr = {0, 0, c.from, 1}, dr = {0, 0, c.onto, 1};
            tagRECT const sc = {0, 0, 1, c.from}, dc = {0, 0, 1, c.onto};
            StretchBufferOnBuffer(row.data(), dr, c.onto * bpp, src.data(), sr, c.from * bpp, bpp);
            StretchBufferOnBuffer(column.data(), dc, bpp, src.data(), sc, bpp, bpp);
            for (int i = 0; i < c.onto; ++i) {
                EXPECT_EQ(row[i * bpp], 10 + c.reads[i]) << c.from << " onto " << c.onto << " bpp " << bpp;
                EXPECT_EQ(column[i * bpp], 10 + c.reads[i]) << c.from << " onto " << c.onto << " bpp " << bpp;
            }
        }
    }
    // The stepping never reads past the source.
    for (int s = 1; s < 120; ++s)
        for (int d = 1; d < 120; ++d)
            ASSERT_LT(ExpectedSteps(s, d).back(), s) << s << " onto " << d;
}

// Blends worked out by hand from the formula, so that one wrong formula in
// both the library and the test's oracle cannot pass.
TEST(Drawing, BlendsKnownPixels)
{
    std::uint32_t const cases[][3] = {
        // destination, source, result
        {0x80FF0000, 0x800000FF, 0xC05500AA},  // a = 64, outA = 192: 255 * 128 / 192 = 170
        {0xFF102030, 0x40F0E0D0, 0xFF485058},  // outA = 255: +56, +48, +40
        {0x01FFFFFF, 0x01000000, 0x02808080},  // -127.5 truncates toward zero
        {0x00123456, 0x7F654321, 0x7F654321},  // transparent destination: source whole
        {0x7F654321, 0x00123456, 0x7F654321},  // transparent source: destination kept
    };
    for (auto const& c : cases) {
        Bytes dst(4), src(4);
        PutWord(dst, 0, c[0]);
        PutWord(src, 0, c[1]);
        tagRECT const one = {0, 0, 1, 1};
        AlphaDrawBufferOnBuffer_ARGB(dst.data(), one, 4, src.data(), one, 4);
        EXPECT_EQ(Word(dst, 0), c[2]) << std::hex << c[0] << " " << c[1];
        EXPECT_EQ(ExpectedBlend(c[0], c[1]), c[2]);
    }
}

Bytes ExpectedStretch(Bytes dst, int dp, tagRECT const& dr, Bytes const& src, int sp, tagRECT const& sr, int bpp,
                      bool blend)
{
    auto const rows = ExpectedSteps(sr.bottom - sr.top, dr.bottom - dr.top);
    auto const cols = ExpectedSteps(sr.right - sr.left, dr.right - dr.left);
    for (std::size_t y = 0; y < rows.size(); ++y)
        for (std::size_t x = 0; x < cols.size(); ++x) {
            std::size_t const to = (dr.top + y) * dp + (dr.left + x) * bpp;
            std::size_t const from = (sr.top + rows[y]) * sp + (sr.left + cols[x]) * bpp;
            if (blend)
                PutWord(dst, to, ExpectedBlend(Word(dst, to), Word(src, from)));
            else
                std::copy_n(&src[from], bpp, &dst[to]);
        }
    return dst;
}

TEST(Drawing, StretchesWholeBuffers)
{
    struct Case {
        tagRECT dr, sr;
    };
    Case const cases[] = {
        {{3, 2, 40, 31}, {1, 1, 14, 12}},     // enlarge both ways
        {{0, 5, 11, 12}, {2, 0, 39, 33}},     // shrink both ways
        {{7, 0, 37, 9}, {0, 3, 13, 30}},      // wider, lower
        {{1, 1, 20, 20}, {4, 4, 23, 23}},     // same size
        {{0, 0, 1100, 3}, {0, 0, 700, 2}},    // beyond one strip of columns
    };
    for (Case const& c : cases) {
        for (int bpp = 1; bpp <= 5; ++bpp) {
            int const dp = (c.dr.right + 3) * bpp, sp = (c.sr.right + 2) * bpp;
            Bytes const src = bpp == 4 ? ArgbNoise(sp / 4 * (c.sr.bottom + 1), bpp) : Noise(sp * (c.sr.bottom + 1), bpp);
            Bytes dst = bpp == 4 ? ArgbNoise(dp / 4 * (c.dr.bottom + 2), 9) : Noise(dp * (c.dr.bottom + 2), 9);
            Bytes const want = ExpectedStretch(dst, dp, c.dr, src, sp, c.sr, bpp, false);
            StretchBufferOnBuffer(dst.data(), c.dr, dp, src.data(), c.sr, sp, bpp);
            ASSERT_EQ(dst, want) << "bpp " << bpp << " case " << (&c - cases);
            if (bpp != 4)
                continue;
            Bytes blended = ArgbNoise(dp / 4 * (c.dr.bottom + 2), 10);
            Bytes const wantBlend = ExpectedStretch(blended, dp, c.dr, src, sp, c.sr, 4, true);
            AlphaStretchBufferOnBuffer_ARGB(blended.data(), c.dr, dp, src.data(), c.sr, sp);
            ASSERT_EQ(blended, wantBlend) << "case " << (&c - cases);
        }
    }
}

// Within one buffer the stretch reads each source pixel as it stands when
// its destination pixel is written.
TEST(Drawing, StretchWithinOneBuffer)
{
    int const pitch = 30;
    Bytes buf = Noise(pitch * 30, 11), want = buf;
    tagRECT const sr = {2, 2, 12, 12}, dr = {5, 6, 25, 27};
    auto const rows = ExpectedSteps(10, 21), cols = ExpectedSteps(10, 20);
    for (int y = 0; y < 21; ++y)
        for (int x = 0; x < 20; ++x)
            want[(6 + y) * pitch + 5 + x] = want[(2 + rows[y]) * pitch + 2 + cols[x]];
    StretchBufferOnBuffer(buf.data(), dr, pitch, buf.data(), sr, pitch, 1);
    EXPECT_EQ(buf, want);
}

TEST(Drawing, MaskTintAndColourFill)
{
    unsigned char full = 255;
    Bytes px(4);
    tagRECT const one = {0, 0, 1, 1};
    SetAlphaBufferColor_ARGB(0xFF112233u, px.data(), one, 4, &full, one, 1);
    EXPECT_EQ(Word(px, 0), 0xFE112233u);

    int const dp = 30 * 4, mp = 19;
    Bytes const mask = Noise(mp * 12, 12);
    Bytes dst = Noise(dp * 14, 13), want = dst;
    tagRECT const dr = {5, 3, 27, 11}, mr = {2, 1, 19, 12};  // 22x8 and 17x11: 17x8
    SetAlphaBufferColor_ARGB(0x80ABCDEFu, dst.data(), dr, dp, mask.data(), mr, mp);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 17; ++x)
            PutWord(want, (3 + y) * dp + (5 + x) * 4,
                    0xABCDEFu | ((0x80u * mask[(1 + y) * mp + 2 + x]) >> 8) << 24);
    EXPECT_EQ(dst, want);

    tagRECT const fill = {3, 2, 26, 13};
    DrawColorOnBuffer(0x12345678u, dst.data(), &fill, dp);
    for (int y = 2; y < 13; ++y)
        for (int x = 3; x < 26; ++x)
            PutWord(want, y * dp + x * 4, 0x12345678u);
    EXPECT_EQ(dst, want);
}

// Pixels a square brush of lw covers at each corner position, including
// the corner reached by the minor step before the major one.
std::set<std::pair<int, int>> Swept(std::vector<std::pair<int, int>> const& corners, int lw)
{
    std::set<std::pair<int, int>> out;
    for (auto const& c : corners)
        for (int dy = 0; dy < lw; ++dy)
            for (int dx = 0; dx < lw; ++dx)
                out.insert({c.first + dx, c.second + dy});
    return out;
}

std::set<std::pair<int, int>> Painted(Bytes const& buf, int w, int h)
{
    std::set<std::pair<int, int>> out;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            if (buf[y * w + x] != 0)
                out.insert({x, y});
    return out;
}

TEST(Drawing, LinesSweepASquareBrush)
{
    int const w = 24, h = 16;
    unsigned char const brush[4] = {7, 7, 7, 7};
    struct Case {
        tagPOINT from, to;
        int lw;
        std::vector<std::pair<int, int>> corners;  // where the brush's corner passes
    };
    std::vector<std::pair<int, int>> along;  // clamped so the brush fits
    for (int x = 0; x <= w - 3; ++x)
        along.push_back({x, h - 3});
    Case const cases[] = {
        {{5, 4}, {5, 4}, 3, {{5, 4}}},
        {{2, 3}, {8, 5}, 2, {{2, 3}, {3, 3}, {3, 4}, {4, 4}, {5, 4}, {6, 4}, {6, 5}, {7, 5}, {8, 5}}},
        {{9, 10}, {7, 5}, 3, {{9, 10}, {9, 9}, {8, 9}, {8, 8}, {8, 7}, {7, 7}, {7, 6}, {7, 5}}},
        {{-5, 20}, {100, 20}, 2, along},
    };
    for (Case const& c : cases) {
        Bytes buf(w * h, 0);
        DrawLineOnBuffer(buf.data(), c.from, c.to, w, h, w, 1, c.lw, brush);
        EXPECT_EQ(Painted(buf, w, h), Swept(c.corners, c.lw)) << c.from.x << "," << c.from.y;
    }

    // Each brush row carries the brush's pixels in order.
    Bytes rgb(w * h * 3, 0);
    unsigned char const stripes[6] = {1, 2, 3, 4, 5, 6};
    DrawLineOnBuffer(rgb.data(), {3, 3}, {3, 3}, w, h, w * 3, 3, 2, stripes);
    EXPECT_EQ(Bytes(&rgb[(3 * w + 3) * 3], &rgb[(3 * w + 5) * 3]), Bytes(stripes, stripes + 6));
    EXPECT_EQ(Bytes(&rgb[(4 * w + 3) * 3], &rgb[(4 * w + 5) * 3]), Bytes(stripes, stripes + 6));

    // A brush that cannot fit draws nothing.
    Bytes tiny(9, 0);
    DrawLineOnBuffer(tiny.data(), {0, 0}, {2, 2}, 3, 3, 3, 1, 3, brush);
    EXPECT_EQ(tiny, Bytes(9, 0));
}

TEST(Drawing, DrawBufferChoosesCopyStretchOrBlend)
{
    int const dp = 40 * 4, sp = 12 * 4;
    Bytes const src = ArgbNoise(12 * 8, 20);
    Bytes const base = ArgbNoise(40 * 30, 21);
    tagRECT const dr = {10, 5, 34, 25}, sr = {0, 0, 12, 8};

    // No scale, right and bottom: the left edge is assigned the width gap.
    Bytes dst = base;
    DrawBuffer(dst.data(), dr, dp, src.data(), sr, sp, 4, 0, 0, 4 | 64);
    tagRECT const placed = {12, 17, 34, 25};
    Bytes want = base;
    DrawBufferOnBuffer(want.data(), placed, dp, src.data(), sr, sp, 4);
    EXPECT_EQ(dst, want);

    // Scale without centring: stretched over the whole destination, blended.
    dst = base;
    DrawBuffer(dst.data(), dr, dp, src.data(), sr, sp, 4, 1, 1, 0);
    EXPECT_EQ(dst, ExpectedStretch(base, dp, dr, src, sp, sr, 4, true));

    // Scale with centring: fitted at the destination's origin (24x20 fits
    // 12x8 as 24x16 at (0, 2)).
    dst = base;
    DrawBuffer(dst.data(), dr, dp, src.data(), sr, sp, 4, 1, 0, 1);
    tagRECT const fitted = {0, 2, 24, 18};
    EXPECT_EQ(dst, ExpectedStretch(base, dp, fitted, src, sp, sr, 4, false));
}

}  // namespace
