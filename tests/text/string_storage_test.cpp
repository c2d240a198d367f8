// Capacities and the vectorised conversion loops, which the interface does
// not show directly.
#include <palvet/text/simple_string.h>

#include <palvet/text/simple_string_internal.h>
#include <palvet/text/utf8_codec_internal.h>

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "support/test_support.h"

using palvet::detail::SimpleStringAccess;

namespace {

int Cap(CSimpleStringA const& s)
{
    return SimpleStringAccess::Capacity(s);
}

}  // namespace

TEST(StringStorageTest, CapacityChoice)
{
    CSimpleStringA s;
    int const increase[][3] = {{0, 0, 0}, {0, 1, 1}, {0, 2, 2}, {0, 5, 8}, {3, 5, 6},
                               {8, 4, 8}, {8, 9, 16}, {0, 0x40000001, 0x40000001}};
    for (auto const& c : increase)
        EXPECT_EQ(s.IncreaseCapability(c[0], c[1]), c[2]) << c[0] << "," << c[1];
    int const decrease[][3] = {{64, 0, 0}, {64, 1, 1}, {64, 3, 4}, {64, 4, 4},
                               {64, 5, 8}, {64, 32, 32}, {64, 33, 64}, {2, -1, 0}};
    for (auto const& c : decrease)
        EXPECT_EQ(s.DecreaseCapability(c[0], c[1]), c[2]) << c[0] << "," << c[1];
}

TEST(StringStorageTest, GrowthShrinkAndSetRegrowth)
{
    CSimpleStringA s;
    int const expected[] = {2, 4, 4, 8, 8, 8, 8, 16};
    for (int i = 0; i < 8; ++i) {
        s.Append(static_cast<char>('a' + i));
        EXPECT_EQ(Cap(s), expected[i]) << i;
    }

    s.Set("hello", -1);  // sized afresh: the smallest power of two > 5
    EXPECT_EQ(Cap(s), 8);
    char const* storage = s.GetString();
    s.Set("hello", -1);
    EXPECT_EQ(s.GetString(), storage);

    s.Trunk(10);
    EXPECT_EQ(s.GetLength(), 5);
    s.Trunk(-5);  // storage of one, holding the empty text
    EXPECT_EQ(Cap(s), 1);
    EXPECT_EQ(s.GetLength(), 0);

    s.Set(std::string(60, 'x').c_str(), -1);
    EXPECT_EQ(Cap(s), 64);
    s.Trunk(3);
    EXPECT_EQ(Cap(s), 4);
    EXPECT_STREQ(s.GetString(), "xxx");
}

TEST(StringStorageTest, ReAllocKeepsUntilHalfAndCutsTheText)
{
    CSimpleStringA s;
    EXPECT_EQ(s.ReAlloc(100), 1);
    EXPECT_EQ(Cap(s), 128);
    s.Append(std::string(50, 'y').c_str(), -1);  // less than half of 128
    EXPECT_EQ(Cap(s), 64);
    EXPECT_EQ(s.ReAlloc(32), 1);  // exactly half: kept
    EXPECT_EQ(Cap(s), 64);
    EXPECT_EQ(s.ReAlloc(20), 1);  // shrinks to 32 and keeps 31 characters
    EXPECT_EQ(Cap(s), 32);
    EXPECT_EQ(s.GetLength(), 31);
    EXPECT_EQ(s.ReAlloc(0), 0);
    EXPECT_EQ(SimpleStringAccess::Storage(s), nullptr);
}

TEST(StringStorageTest, VectorisedConversionsMatchScalar)
{
    // DecodeUtf8 / EncodeUtf8 take the vectorised path wherever the
    // processor has one (NEON under qemu in the armhf build).
    using namespace palvet::detail;
    palvet_test::StdoutCapture quiet;  // malformed input reports itself
    std::mt19937 rng(11);
    for (int round = 0; round < 2000; ++round) {
        // ASCII runs of random length around the block widths, broken by
        // random bytes / wide values of every class.
        size_t n = rng() % 80;
        std::vector<unsigned char> bytes(n);
        std::vector<wchar_t> wide(n);
        for (size_t i = 0; i < n; ++i) {
            bool ascii = rng() % 8 != 0;
            bytes[i] = static_cast<unsigned char>(ascii ? rng() % 0x80 : rng());
            wide[i] = static_cast<wchar_t>(ascii ? rng() % 0x80 : rng() >> (rng() % 32));
        }
        std::vector<wchar_t> w1(n + 1, L'#'), w2(n + 1, L'#');
        size_t k = DecodeUtf8(bytes.data(), n, w1.data());
        ASSERT_EQ(DecodeUtf8Scalar(bytes.data(), n, w2.data()), k);
        ASSERT_TRUE(std::equal(w1.begin(), w1.begin() + k, w2.begin()));
        size_t size = 4 * n + 1;
        std::vector<unsigned char> a1(size + kEncodeSpare), a2(size + kEncodeSpare);
        size_t j = EncodeUtf8(wide.data(), n, a1.data(), size);
        ASSERT_EQ(EncodeUtf8Scalar(wide.data(), n, a2.data(), size), j);
        ASSERT_TRUE(std::equal(a1.begin(), a1.begin() + j, a2.begin()));
    }
}
