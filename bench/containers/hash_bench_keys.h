#ifndef PALVET_BENCH_CONTAINERS_HASH_BENCH_KEYS_H
#define PALVET_BENCH_CONTAINERS_HASH_BENCH_KEYS_H
// The hash-table benchmarks' keys: a million random non-negative ints, in
// insertion order and shuffled, and the data each key is stored with.
#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

namespace palvet_bench {

constexpr int kHashKeys = 1 << 20;

inline std::vector<int> const& HashKeys()
{
    static std::vector<int> const keys = [] {
        std::mt19937 rng(4);
        std::vector<int> k(kHashKeys);
        for (int& x : k)
            x = static_cast<int>(rng() & 0x7FFFFFFF);
        return k;
    }();
    return keys;
}

inline std::vector<int> const& ShuffledHashKeys()
{
    static std::vector<int> const keys = [] {
        std::vector<int> k = HashKeys();
        std::shuffle(k.begin(), k.end(), std::mt19937(5));
        return k;
    }();
    return keys;
}

inline void const* HashDataFor(int key)
{
    return reinterpret_cast<void const*>(static_cast<intptr_t>(key) + 1);
}

}  // namespace palvet_bench

#endif
