// One job per run, for a heap profiler to measure (scripts/heap-peak runs
// each under valgrind's massif): a million int keys in a CHashTable or in a
// std::unordered_multimap, and Full-HD colour conversions, whose frames the
// program allocates itself so that anything beyond them is the library's.
#include <palvet/containers/hash_table.h>
#include <palvet/imaging/color_conversion.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <unordered_map>
#include <vector>

namespace {

constexpr int kKeys = 1 << 20;
constexpr int kW = 1920, kH = 1080;

std::vector<int> Keys()
{
    std::mt19937 rng(4);
    std::vector<int> k(kKeys);
    for (int& x : k)
        x = static_cast<int>(rng() & 0x7FFFFFFF);
    return k;
}

void const* DataFor(int key)
{
    return reinterpret_cast<void const*>(static_cast<intptr_t>(key) + 1);
}

}  // namespace

int main(int argc, char** argv)
{
    char const* job = argc > 1 ? argv[1] : "";
    if (strcmp(job, "hash-table") == 0 && argc > 2) {
        std::vector<int> const keys = Keys();
        CHashTable table(atoi(argv[2]));
        for (int k : keys)
            table.AddData(k, DataFor(k));
        long found = 0;
        for (int k : keys)
            found += table.FindFirstData(k) != nullptr;
        printf("%ld found\n", found);
        return 0;
    }
    if (strcmp(job, "unordered-multimap") == 0) {
        std::vector<int> const keys = Keys();
        std::unordered_multimap<int, void const*> map;
        for (int k : keys)
            map.emplace(k, DataFor(k));
        long found = 0;
        for (int k : keys)
            found += map.find(k) != map.end();
        printf("%ld found\n", found);
        return 0;
    }
    if (strcmp(job, "yuv420-rgb24") == 0 || strcmp(job, "rgb24-yuv420") == 0 || strcmp(job, "yuy2-argb") == 0) {
        std::vector<unsigned char> src(static_cast<size_t>(kW) * kH * 4, 0x80), dst(static_cast<size_t>(kW) * kH * 4);
        for (int i = 0; i < 10; ++i) {
            if (job[0] == 'y' && job[3] == '4')
                YUV420ToRGB888(kW, kH, src.data(), 0, dst.data(), kW * 3, 0);
            else if (job[0] == 'r')
                RGB888ToYUV420(kW, kH, src.data(), dst.data(), 0, kW * 3, 0);
            else
                YUY2ToARGB32(kW, kH, src.data(), dst.data(), kW * 4, 0, nullptr, 0);
        }
        printf("%u\n", dst[12345]);
        return 0;
    }
    fprintf(stderr, "usage: %s hash-table <buckets> | unordered-multimap | yuv420-rgb24 | rgb24-yuv420 | yuy2-argb\n",
            argv[0]);
    return 2;
}
