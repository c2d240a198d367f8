// Every kernel this processor can run (the plain loop and each vectorised
// one, not only the one the dispatcher picks) against its definition.

#include <palvet/core/cpu_features_internal.h>
#include <palvet/imaging/pixel_kernels_internal.h>

#include "imaging_test_util.h"

#include <gtest/gtest.h>

#include <algorithm>
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
    // pixels leave a tail for the narrower paths and the scalar loop.
    int const n = 263;
    for (Kernel const& k : BlendKernels()) {
        imaging_test::Bytes src(4 * n), dst(4 * n), want(4 * n);
        for (std::uint32_t da = 0; da < 256; ++da) {
            for (std::uint32_t sa = 0; sa < 256; ++sa) {
                for (int i = 0; i < n; ++i) {
                    std::uint32_t const c = static_cast<std::uint32_t>(i) & 255;
                    std::uint32_t const s = sa << 24 | (c ^ 0x5A) << 16 | (255 - c) << 8 | c;
                    std::uint32_t const d = da << 24 | c << 16 | 255 << 8 | (c * 7 & 255);
                    imaging_test::PutWord(src, 4 * i, s);
                    imaging_test::PutWord(dst, 4 * i, d);
                    imaging_test::PutWord(want, 4 * i, imaging_test::ExpectedBlend(d, s));
                }
                k.row(dst.data(), src.data(), n);
                ASSERT_EQ(dst, want) << k.name << " sa=" << sa << " da=" << da;
            }
        }
    }
}

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
