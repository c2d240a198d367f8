#include <palvet/containers/crc.h>
#include <palvet/containers/crc32_internal.h>

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

unsigned int ByteLoop(unsigned int reg, unsigned char const* p, size_t n)
{
    for (size_t i = 0; i < n; ++i)
        reg = CCRC::Table[(reg ^ p[i]) & 0xFF] ^ (reg >> 8);
    return reg;
}

std::vector<unsigned char> RandomBytes(size_t n, unsigned seed)
{
    std::mt19937 rng(seed);
    std::vector<unsigned char> out(n);
    for (auto& b : out)
        b = static_cast<unsigned char>(rng());
    return out;
}

}  // namespace

TEST(Crc32Kernels, ScalarAndDispatchMatchTheByteLoop)
{
    std::vector<unsigned char> const data = RandomBytes(70000, 1);
    std::mt19937 rng(2);
    for (int round = 0; round < 400; ++round) {
        size_t const offset = rng() % 64;
        size_t const n = round < 300 ? static_cast<size_t>(round) : rng() % (data.size() - offset);
        unsigned int const reg = static_cast<unsigned int>(rng());
        unsigned int const expected = ByteLoop(reg, data.data() + offset, n);
        ASSERT_EQ(palvet::detail::Crc32UpdateScalar(reg, data.data() + offset, n), expected) << n;
        ASSERT_EQ(palvet::detail::Crc32Update(reg, data.data() + offset, n), expected) << n;
    }
}

#if defined(__x86_64__) || defined(__i386__)
TEST(Crc32Kernels, CarrylessFoldMatchesTheScalarPath)
{
    if (!palvet::detail::Crc32HasPclmul())
        GTEST_SKIP() << "no PCLMULQDQ";
    std::vector<unsigned char> const data = RandomBytes(1 << 20, 3);
    for (size_t n = 64; n <= 4096; n += 16)
        for (unsigned int reg : {0u, 0xFFFFFFFFu, 0xABCDABCDu})
            ASSERT_EQ(palvet::detail::Crc32FoldPclmul(reg, data.data() + n % 7, n),
                      palvet::detail::Crc32UpdateScalar(reg, data.data() + n % 7, n))
                << n;
    EXPECT_EQ(palvet::detail::Crc32FoldPclmul(0x12345678u, data.data(), data.size()),
              palvet::detail::Crc32UpdateScalar(0x12345678u, data.data(), data.size()));
    std::vector<unsigned char> const zeros(4096, 0), ones(4096, 0xFF);
    EXPECT_EQ(palvet::detail::Crc32FoldPclmul(0, zeros.data(), zeros.size()), 0u);
    EXPECT_EQ(palvet::detail::Crc32FoldPclmul(7, ones.data(), ones.size()),
              palvet::detail::Crc32UpdateScalar(7, ones.data(), ones.size()));
}
#endif
