// The vectorised kernels against their scalar twins, on random rows of odd
// lengths, for every kernel the processor running the test supports.
#include <palvet/imaging/pixel_kernels_internal.h>

#include <palvet/core/cpu_features_internal.h>

#include <gtest/gtest.h>

#include <vector>

#include "imaging_test_util.h"

namespace {

using namespace palvet::detail;
using imaging_test::ArgbNoise;
using imaging_test::Bytes;
using imaging_test::Noise;

using BlendFn = void (*)(unsigned char*, unsigned char const*, int);
using RowFn = void (*)(unsigned char const*, unsigned char*, int, bool);
using RotateFn = void (*)(unsigned char const*, unsigned char*, int, int, int);

struct Kernels {
    std::vector<BlendFn> blend{BlendRowArgb};
    std::vector<RowFn> to32{Rgb24ToRgb32Row};
    std::vector<RowFn> to24{Rgb32ToRgb24Row};
    std::vector<RotateFn> rotate{Rotate32};

    Kernels()
    {
#if defined(__x86_64__) || defined(__i386__)
        if (CpuHasAvx2()) {
            blend.push_back(BlendRowArgbAvx2);
            to32.push_back(Rgb24ToRgb32RowAvx2);
            to24.push_back(Rgb32ToRgb24RowAvx2);
        }
#if defined(__SSE2__)
        rotate.push_back(Rotate32Sse2);
#endif
#endif
#if defined(__arm__) || defined(__aarch64__)
        if (CpuHasNeon()) {
            blend.push_back(BlendRowArgbNeon);
            to32.push_back(Rgb24ToRgb32RowNeon);
            to24.push_back(Rgb32ToRgb24RowNeon);
            rotate.push_back(Rotate32Neon);
        }
#endif
    }
};

TEST(Kernels, BlendRowsMatchScalar)
{
    Kernels const k;
    for (int n : {1, 7, 8, 9, 31, 64, 133}) {
        // Runs of opaque and clear pixels take the shortcuts; noise the
        // full arithmetic.
        Bytes src = ArgbNoise(n, n);
        for (int i = 0; i < n && i < 16; ++i)
            src[4 * i + 3] = i < 8 ? 255 : 0;
        Bytes const dst = ArgbNoise(n, n + 50);
        Bytes want = dst;
        BlendRowArgbScalar(want.data(), src.data(), n);
        for (BlendFn fn : k.blend) {
            Bytes got = dst;
            fn(got.data(), src.data(), n);
            ASSERT_EQ(got, want) << "n=" << n;
        }
    }
    // Every source alpha, destination alpha and colour difference: the
    // vector paths divide by reciprocals, so each quotient is checked.
    Bytes src(256 * 4), dst(256 * 4);
    for (int da = 0; da < 256; ++da) {
        for (int sa = 0; sa < 256; ++sa) {
            for (int i = 0; i < 256; ++i) {
                unsigned char const s[4] = {static_cast<unsigned char>(i), static_cast<unsigned char>(i),
                                            static_cast<unsigned char>(255 - i), static_cast<unsigned char>(sa)};
                unsigned char const d[4] = {0, 255, static_cast<unsigned char>(i ^ 0x5A),
                                            static_cast<unsigned char>(da)};
                std::copy_n(s, 4, &src[4 * i]);
                std::copy_n(d, 4, &dst[4 * i]);
            }
            Bytes want = dst;
            BlendRowArgbScalar(want.data(), src.data(), 256);
            for (BlendFn fn : k.blend) {
                Bytes got = dst;
                fn(got.data(), src.data(), 256);
                ASSERT_EQ(got, want) << "sa=" << sa << " da=" << da;
            }
        }
    }
}

TEST(Kernels, PixelSizeConversionsMatchScalar)
{
    Kernels const k;
    for (int n = 1; n < 70; n += 3) {
        Bytes const s24 = Noise(n * 3, n), s32 = Noise(n * 4, n + 1);
        for (bool swap : {false, true}) {
            Bytes want32(n * 4), want24(n * 3);
            Rgb24ToRgb32RowScalar(s24.data(), want32.data(), n, swap);
            Rgb32ToRgb24RowScalar(s32.data(), want24.data(), n, swap);
            for (RowFn fn : k.to32) {
                Bytes got(n * 4 + 4, 0xEE);
                fn(s24.data(), got.data(), n, swap);
                ASSERT_EQ(Bytes(got.begin(), got.begin() + n * 4), want32) << n;
                ASSERT_EQ(Bytes(got.begin() + n * 4, got.end()), Bytes(4, 0xEE));
            }
            for (RowFn fn : k.to24) {
                Bytes got(n * 3 + 4, 0xEE);
                fn(s32.data(), got.data(), n, swap);
                ASSERT_EQ(Bytes(got.begin(), got.begin() + n * 3), want24) << n;
                ASSERT_EQ(Bytes(got.begin() + n * 3, got.end()), Bytes(4, 0xEE));
            }
        }
    }
}

TEST(Kernels, RotationsMatchScalar)
{
    Kernels const k;
    int const sizes[][2] = {{1, 9}, {4, 4}, {9, 1}, {13, 6}, {36, 35}, {67, 12}};
    for (auto const& sz : sizes) {
        Bytes const src = Noise(sz[0] * sz[1] * 4, sz[0] + sz[1]);
        for (int degrees : {90, 180, 270}) {
            Bytes want(src.size());
            Rotate32Scalar(src.data(), want.data(), sz[0], sz[1], degrees);
            for (RotateFn fn : k.rotate) {
                Bytes got(src.size());
                fn(src.data(), got.data(), sz[0], sz[1], degrees);
                ASSERT_EQ(got, want) << sz[0] << "x" << sz[1] << " by " << degrees;
            }
        }
    }
}

TEST(Kernels, OverlapDetection)
{
    unsigned char buf[100] = {};
    EXPECT_TRUE(AreasOverlap(buf, 10, 4, 3, buf + 23, 10, 4, 3));
    EXPECT_FALSE(AreasOverlap(buf, 10, 4, 3, buf + 24, 10, 4, 1));
    EXPECT_TRUE(AreasOverlap(buf + 90, -10, 4, 5, buf + 50, 10, 2, 1));  // bottom-up rows
    EXPECT_FALSE(AreasOverlap(buf + 90, -10, 4, 4, buf + 50, 10, 2, 1));
}

}  // namespace
