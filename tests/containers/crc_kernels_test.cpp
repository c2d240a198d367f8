#include <palvet/containers/crc.h>
#include <palvet/containers/crc32_internal.h>
#include <palvet/core/cpu_features_internal.h>

#include <gtest/gtest.h>

#include <random>
#include <vector>

using palvet::detail::Crc32Update;
using palvet::detail::Crc32UpdateScalar;

TEST(Crc32Kernels, EveryPathMatchesTheByteLoop)
{
    std::mt19937 rng(1);
    std::vector<unsigned char> data(1 << 18);
    for (auto& b : data)
        b = static_cast<unsigned char>(rng());
    for (int round = 0; round < 400; ++round) {
        // All lengths up to 300 (every tail and fold boundary), then long
        // ones, at unaligned starts and arbitrary registers.
        size_t const offset = rng() % 64;
        size_t const n = round < 300 ? static_cast<size_t>(round) : rng() % (data.size() - offset);
        unsigned char const* p = data.data() + offset;
        unsigned int reg = static_cast<unsigned int>(rng());
        unsigned int expected = reg;
        for (size_t i = 0; i < n; ++i)
            expected = CCRC::Table[(expected ^ p[i]) & 0xFF] ^ (expected >> 8);
        ASSERT_EQ(Crc32UpdateScalar(reg, p, n), expected) << n;
        ASSERT_EQ(Crc32Update(reg, p, n), expected) << n;
#if defined(__x86_64__) || defined(__i386__)
        if (n >= 64 && palvet::detail::Crc32HasPclmul()) {
            size_t const bulk = n & ~size_t{15};
            ASSERT_EQ(palvet::detail::Crc32FoldPclmul(reg, p, bulk), Crc32UpdateScalar(reg, p, bulk)) << n;
        }
#endif
#if defined(__arm__) || defined(__aarch64__)
        if (palvet::detail::CpuHasArmCrc32()) {
            ASSERT_EQ(palvet::detail::Crc32UpdateArmv8(reg, p, n), expected) << n;
        }
#endif
    }
}
