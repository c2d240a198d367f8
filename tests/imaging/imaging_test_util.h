#ifndef PALVET_TESTS_IMAGING_IMAGING_TEST_UTIL_H
#define PALVET_TESTS_IMAGING_IMAGING_TEST_UTIL_H

#include <cstdint>
#include <cstring>
#include <vector>

namespace imaging_test {

using Bytes = std::vector<unsigned char>;

// Deterministic noise, so a failure reproduces.
inline Bytes Noise(std::size_t n, std::uint32_t seed)
{
    Bytes out(n);
    std::uint32_t x = seed * 2654435761u + 1;
    for (auto& b : out) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        b = static_cast<unsigned char>(x >> 7);
    }
    return out;
}

// ARGB noise whose alphas favour the values that take special paths.
inline Bytes ArgbNoise(std::size_t pixels, std::uint32_t seed)
{
    Bytes out = Noise(pixels * 4, seed);
    for (std::size_t i = 0; i < pixels; ++i) {
        unsigned char& a = out[4 * i + 3];
        switch (a % 5) {
        case 0: a = 0; break;
        case 1: a = 255; break;
        default: break;
        }
    }
    return out;
}

inline std::uint32_t Word(Bytes const& b, std::size_t offset)
{
    std::uint32_t v;
    std::memcpy(&v, b.data() + offset, 4);
    return v;
}

inline void PutWord(Bytes& b, std::size_t offset, std::uint32_t v)
{
    std::memcpy(b.data() + offset, &v, 4);
}

// The blend written from its definition, independently of the library.
inline std::uint32_t ExpectedBlend(std::uint32_t d, std::uint32_t s)
{
    int const sa = static_cast<int>(s >> 24), da = static_cast<int>(d >> 24);
    if (sa == 0)
        return d;
    if (da == 0)
        return s;
    int const outA = sa + da - sa * da / 255;
    std::uint32_t out = static_cast<std::uint32_t>(outA) << 24;
    for (int shift : {0, 8, 16}) {
        int const sc = static_cast<int>(s >> shift & 255), dc = static_cast<int>(d >> shift & 255);
        out |= static_cast<std::uint32_t>((dc + (sc - dc) * sa / outA) & 255) << shift;
    }
    return out;
}

// Source positions read for successive destination positions.
inline std::vector<int> ExpectedSteps(int src, int dst)
{
    std::vector<int> out;
    int pos = 0;
    long long e = dst > src ? 3LL * src - 2LL * dst : 2LL * dst - src;
    for (int i = 0; i < dst; ++i) {
        out.push_back(pos);
        if (src == dst) {
            ++pos;
        } else if (dst > src) {
            if (e < 0) {
                e += 2 * src;
            } else {
                e += 2LL * src - 2LL * dst;
                ++pos;
            }
        } else {
            for (; e < 0; ++pos)
                e += 2 * dst;
            e += 2LL * (dst - src);
            ++pos;
        }
    }
    return out;
}

}  // namespace imaging_test

#endif
