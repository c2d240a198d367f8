// Every blend row this processor can run (the plain loop and each vectorised
// one, not only the one the dispatcher picks) against the blend formula.

#include <palvet/core/cpu_features_internal.h>
#include <palvet/imaging/pixel_kernels_internal.h>

#include "imaging_test_util.h"

#include <gtest/gtest.h>

#include <cstdint>
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
