// Every kernel this processor can run (the plain loop and each vectorised
// one, not only the one the dispatcher picks) against its definition.

#include <palvet/core/cpu_features_internal.h>
#include <palvet/imaging/drawing.h>
#include <palvet/imaging/pixel_buffer.h>
#include <palvet/imaging/pixel_kernels_internal.h>
#include <palvet/imaging/rotation.h>

#include "imaging_test_util.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using Row = void (*)(unsigned char*, unsigned char const*, int);

struct Kernel {
    char const* name;
    Row row;
};

std::vector<Kernel> BlendKernels()
{
    std::vector<Kernel> k{{"scalar", &palvet::detail::BlendRowArgbScalar}};
#if defined(__x86_64__) || defined(__i386__)
    if (palvet::detail::CpuHasAvx2())
        k.push_back({"avx2", &palvet::detail::BlendRowArgbAvx2});
    if (palvet::detail::CpuHasAvx512())
        k.push_back({"avx512", &palvet::detail::BlendRowArgbAvx512});
#elif defined(__arm__) || defined(__aarch64__)
    if (palvet::detail::CpuHasNeon())
        k.push_back({"neon", &palvet::detail::BlendRowArgbNeon});
#endif
    return k;
}

}  // namespace

TEST(PixelKernels, EveryBlendRowGivesKnownPixels)
{
    // Worked out by hand from the formula (see the drawing tests), repeated
    // across a row long enough for every vector width.
    std::uint32_t const cases[][3] = {{0x80FF0000, 0x800000FF, 0xC05500AA},
                                      {0xFF102030, 0x40F0E0D0, 0xFF485058},
                                      {0x01FFFFFF, 0x01000000, 0x02808080},
                                      {0x00123456, 0x7F654321, 0x7F654321},
                                      {0x7F654321, 0x00123456, 0x7F654321},
                                      {0x80ABCDEF, 0xFF010203, 0xFF010203}};
    int const n = 6 * 11;
    for (Kernel const& k : BlendKernels()) {
        imaging_test::Bytes src(4 * n), dst(4 * n);
        for (int i = 0; i < n; ++i) {
            imaging_test::PutWord(dst, 4 * i, cases[i % 6][0]);
            imaging_test::PutWord(src, 4 * i, cases[i % 6][1]);
        }
        k.row(dst.data(), src.data(), n);
        for (int i = 0; i < n; ++i)
            EXPECT_EQ(imaging_test::Word(dst, 4 * i), cases[i % 6][2]) << k.name << " pixel " << i;
    }
}

TEST(PixelKernels, EveryBlendRowFollowsTheFormula)
{
    // Every alpha pair with every colour difference of either sign; 263
    // pixels leave a tail for the narrower paths and the scalar loop. The
    // second pass scatters clear pixels through both rows, so that vector
    // steps meet them among translucent ones.
    int const n = 263;
    for (Kernel const& k : BlendKernels()) {
        imaging_test::Bytes src(4 * n), dst(4 * n), want(4 * n);
        for (int scatter = 0; scatter < 2; ++scatter) {
            for (std::uint32_t da = 0; da < 256; ++da) {
                for (std::uint32_t sa = 0; sa < 256; ++sa) {
                    for (int i = 0; i < n; ++i) {
                        std::uint32_t const c = static_cast<std::uint32_t>(i) & 255;
                        std::uint32_t const sai = scatter && i % 3 == 1 ? 0 : sa;
                        std::uint32_t const dai = scatter && i % 5 == 2 ? 0 : da;
                        std::uint32_t const s = sai << 24 | (c ^ 0x5A) << 16 | (255 - c) << 8 | c;
                        std::uint32_t const d = dai << 24 | c << 16 | 255 << 8 | (c * 7 & 255);
                        imaging_test::PutWord(src, 4 * i, s);
                        imaging_test::PutWord(dst, 4 * i, d);
                        imaging_test::PutWord(want, 4 * i, imaging_test::ExpectedBlend(d, s));
                    }
                    k.row(dst.data(), src.data(), n);
                    ASSERT_EQ(dst, want) << k.name << " sa=" << sa << " da=" << da << " scatter=" << scatter;
                }
            }
        }
    }
}

#if defined(__arm__) || defined(__aarch64__)
TEST(PixelKernels, NeonBlendReciprocalTruncatesEveryQuotientExactly)
{
    if (!palvet::detail::CpuHasNeon())
        GTEST_SKIP() << "no NEON";
    // Every divisor the blend meets (outA) with every numerator it can
    // form, (sc - dc) * sa with sa <= outA. Scalar float arithmetic rounds
    // and truncates as the vector unit does for these values.
    for (int outA = 1; outA <= 255; ++outA) {
        float const r = palvet::detail::BlendReciprocalNeon(outA);
        for (int n = -255 * outA; n <= 255 * outA; ++n)
            ASSERT_EQ(static_cast<int>(static_cast<float>(n) * r), n / outA) << "outA " << outA << " n " << n;
    }
}
#endif

namespace {

using palvet::detail::KernelLevel;

// Runs body once per kernel level the processor has, the plain one first,
// with the dispatchers capped at that level.
template <class Body>
void AtEveryLevel(Body body)
{
    for (KernelLevel level : {KernelLevel::Scalar, KernelLevel::Sse2OrNeon, KernelLevel::Avx2,
                              KernelLevel::Avx512}) {
        if (!palvet::detail::CpuHasKernelLevel(level))
            continue;
        palvet::detail::SetKernelLevel(level);
        body("level " + std::to_string(static_cast<int>(level)));
    }
    palvet::detail::SetKernelLevel(KernelLevel::Auto);
}

}  // namespace

TEST(PixelKernels, EveryLevelConvertsRowsAndRotates)
{
    using namespace palvet::detail;
    // 77 pixels: whole vector blocks and a tail at every width.
    int const n = 77;
    imaging_test::Bytes const rgb = imaging_test::Noise(3 * n, 3);
    imaging_test::Bytes const argb = imaging_test::Noise(4 * n, 4);
    imaging_test::Bytes want32(4 * n), want24(3 * n);
    AtEveryLevel([&](std::string const& level) {
        for (bool swap : {false, true}) {
            for (int i = 0; i < n; ++i) {
                unsigned char const* p = &rgb[3 * i];
                unsigned char const* q = &argb[4 * i];
                unsigned char const w32[] = {p[swap ? 2 : 0], p[1], p[swap ? 0 : 2], 0xFF};
                unsigned char const w24[] = {q[swap ? 2 : 0], q[1], q[swap ? 0 : 2]};
                std::copy(w32, w32 + 4, &want32[4 * i]);
                std::copy(w24, w24 + 3, &want24[3 * i]);
            }
            imaging_test::Bytes out32(4 * n), out24(3 * n);
            Rgb24ToRgb32Row(rgb.data(), out32.data(), n, swap);
            Rgb32ToRgb24Row(argb.data(), out24.data(), n, swap);
            EXPECT_EQ(out32, want32) << level << " swap " << swap;
            EXPECT_EQ(out24, want24) << level << " swap " << swap;
        }
        // The tile walk against the byte-by-byte rotation, on sizes that
        // leave partial tiles on both axes.
        for (int degrees : {90, 180, 270}) {
            int const w = 37, h = 70;
            imaging_test::Bytes const src = imaging_test::Noise(4 * w * h, degrees);
            imaging_test::Bytes got(src.size()), want(src.size());
            Rotate32(src.data(), got.data(), w, h, degrees);
            RotateBytes(src.data(), want.data(), w, h, 4, degrees);
            EXPECT_EQ(got, want) << level << " " << degrees;
        }
        unsigned char const mask[] = {0, 1, 128, 255, 7};
        imaging_test::Bytes row(4 * 5);
        MaskRow32(row.data(), mask, 5, 0x123456);
        EXPECT_EQ(imaging_test::Word(row, 8), 0x80123456u) << level;
        TintRow32(row.data(), mask, 5, 0x123456, 128);
        EXPECT_EQ(imaging_test::Word(row, 12), 0x7F123456u) << level;
        FillRow32(row.data(), 5, 0xA1B2C3D4);
        EXPECT_EQ(imaging_test::Word(row, 16), 0xA1B2C3D4u) << level;
    });
}

namespace {

// The public operation on random frames: at the plain level, then at every
// level the processor has, on the same input; the outputs must agree. Sizes
// run through whole vectors and every tail, with row padding.
template <class Op>
void SameAtEveryLevel(char const* name, Op op)
{
    std::mt19937 rng(5);
    for (int round = 0; round < 60; ++round) {
        int const w = round < 40 ? round + 1 : static_cast<int>(rng() % 200) + 1;
        int const h = static_cast<int>(rng() % 19) + 1;
        imaging_test::Bytes const input = imaging_test::Noise(static_cast<size_t>(8 * (w + 5) * (h + 2)), round);
        palvet::detail::SetKernelLevel(KernelLevel::Scalar);
        imaging_test::Bytes want = input;
        op(want, w, h);
        AtEveryLevel([&](std::string const& level) {
            imaging_test::Bytes got = input;
            op(got, w, h);
            ASSERT_EQ(got, want) << name << " " << w << "x" << h << " " << level;
        });
        if (::testing::Test::HasFailure())
            return;
    }
}

}  // namespace

TEST(PixelKernels, PixelBufferRowsAgreeAtEveryLevel)
{
    // Frames live in one buffer: the source first, then the destination.
    for (int bgr : {0, 1}) {
        SameAtEveryLevel("grey 24", [bgr](imaging_test::Bytes& b, int w, int h) {
            ConvertRGB24ToGray(b.data(), 3 * w + 5, b.data() + (3 * w + 5) * h, w + 3, w, h, bgr);
        });
        SameAtEveryLevel("grey 32", [bgr](imaging_test::Bytes& b, int w, int h) {
            ConvertRGB32ToGray(b.data(), 4 * w + 4, b.data() + (4 * w + 4) * h, w + 1, w, h, bgr);
        });
    }
    SameAtEveryLevel("swap 32", [](imaging_test::Bytes& b, int w, int h) { RevertRGB32ToBGR32(b.data(), 4 * w + 8, w, h); });
    SameAtEveryLevel("swap 24", [](imaging_test::Bytes& b, int w, int h) { RevertRGB24ToBGR24(b.data(), 3 * w + 2, w, h); });
    SameAtEveryLevel("alpha ratio", [](imaging_test::Bytes& b, int w, int h) {
        SetRGB32AlphaRatio(b.data(), 4 * w + 4, w, h, static_cast<unsigned char>(w * 37));
    });
    SameAtEveryLevel("alpha", [](imaging_test::Bytes& b, int w, int h) {
        SetRGB32Alpha(b.data(), 4 * w, w, h, static_cast<unsigned char>(h * 11));
    });
    SameAtEveryLevel("alpha to rgb24", [](imaging_test::Bytes& b, int w, int h) {
        // Half the mask bytes zero, so both colours show.
        for (int i = 0; i < (w + 1) * h; i += 2)
            b[static_cast<size_t>(i)] = 0;
        ConvertAlphaToRGB24Buffer(b.data(), w + 1, b.data() + (w + 1) * h, 3 * w + 1, w, h, 0x123456, 0xABCDEF);
    });
    for (int bpp : {1, 2, 3, 4}) {
        SameAtEveryLevel("flip", [bpp](imaging_test::Bytes& b, int w, int h) {
            RevertBottomUpBuffer(b.data(), 1, 1, w, h, bpp, bpp * (w + 2));
        });
    }
}

TEST(PixelKernels, RotationsAndStretchAgreeAtEveryLevel)
{
    for (int bpp : {1, 2, 3, 4}) {
        SameAtEveryLevel("rotate 90", [bpp](imaging_test::Bytes& b, int w, int h) {
            RotateRGBData90(b.data(), b.data() + bpp * w * h, w, h, bpp);
        });
        SameAtEveryLevel("rotate 180", [bpp](imaging_test::Bytes& b, int w, int h) {
            RotateRGBData180(b.data(), b.data() + bpp * w * h, w, h, bpp);
        });
        SameAtEveryLevel("rotate 270", [bpp](imaging_test::Bytes& b, int w, int h) {
            RotateRGBData270(b.data(), b.data() + bpp * w * h, w, h, bpp);
        });
    }
    // Planar and semi-planar frames: planes of w x h, then chroma at half
    // size (one plane of pairs, or two).
    for (bool sp : {false, true}) {
        SameAtEveryLevel("yuv 90", [sp](imaging_test::Bytes& b, int w, int h) {
            w += w % 2;
            h += h % 2;
            size_t const frame = static_cast<size_t>(w * h * 3 / 2);
            imaging_test::Bytes out(frame);
            unsigned char* src[3] = {b.data(), b.data() + w * h, b.data() + w * h * 5 / 4};
            unsigned char* dst[3] = {out.data(), out.data() + w * h, out.data() + w * h * 5 / 4};
            if (sp)
                RotateYUV420SPData_90(src, dst, w, h);
            else
                RotateYUV420Data_90(src, dst, w, h);
            std::copy(out.begin(), out.end(), b.begin() + static_cast<std::ptrdiff_t>(frame));
        });
        SameAtEveryLevel("yuv 270", [sp](imaging_test::Bytes& b, int w, int h) {
            w += w % 2;
            h += h % 2;
            size_t const frame = static_cast<size_t>(w * h * 3 / 2);
            imaging_test::Bytes out(frame);
            unsigned char* src[3] = {b.data(), b.data() + w * h, b.data() + w * h * 5 / 4};
            unsigned char* dst[3] = {out.data(), out.data() + w * h, out.data() + w * h * 5 / 4};
            if (sp)
                RotateYUV420SPData_270(src, dst, w, h);
            else
                RotateYUV420Data_270(src, dst, w, h);
            std::copy(out.begin(), out.end(), b.begin() + static_cast<std::ptrdiff_t>(frame));
        });
    }
    // Stretches in both directions, 32-bit pixels (the gathered ones) and
    // the others.
    for (int bpp : {4, 3}) {
        SameAtEveryLevel("stretch", [bpp](imaging_test::Bytes& b, int w, int h) {
            int const sw = w, sh = h, dw = (w * 7) / 3 + 1, dh = h + 1;
            imaging_test::Bytes out(static_cast<size_t>(dw * dh * bpp));
            tagRECT const s{0, 0, sw, sh}, d{0, 0, dw, dh};
            StretchBufferOnBuffer(out.data(), d, dw * bpp, b.data(), s, sw * bpp, bpp);
            imaging_test::Bytes small(static_cast<size_t>(4 * 4 * bpp + 64));
            tagRECT const d2{0, 0, 4, 4};
            StretchBufferOnBuffer(small.data(), d2, 4 * bpp, b.data(), s, sw * bpp, bpp);
            std::copy(out.begin(), out.begin() + std::min(out.size(), b.size() / 2), b.begin() + static_cast<std::ptrdiff_t>(b.size() / 2));
            std::copy(small.begin(), small.end(), b.begin());
        });
    }
}
