// CHashTable lookups of several builds of the library in one process, for
// judging a change on a machine whose speed drifts by tens of percent from
// minute to minute: each build is loaded with dlopen, and their passes over
// the keys (and std::unordered_multimap's) alternate, so that a slow phase
// falls on all of them alike. The keys and orders are containers_bench's.
// Prints the fastest and the median pass per job, in ms.
//
// Usage: hash_table_ab [--rounds N] LIBPALVET.so...
// The program does not link the library, so that every build's calls stay
// within that build.
#include <palvet/containers/hash_table.h>

#include <dlfcn.h>

#include "hash_bench_keys.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

constexpr int kBucketCounts[] = {1 << 16, 1 << 20};
char const* const kJobs[] = {"64K buckets, insertion order", "64K buckets, shuffled", "1M buckets, insertion order",
                             "1M buckets, shuffled"};

// One build's table entry points, by their exported names.
struct Build {
    std::string name;
    void (*construct)(void*, int);
    void (*destruct)(void*);
    int (*add)(void*, int, void const*);
    void* (*find)(void*, int);
    alignas(CHashTable) unsigned char tables[2][sizeof(CHashTable)];
    std::vector<double> passes[4];
};

template <class F>
bool Resolve(void* lib, char const* symbol, F& out)
{
    void* const p = dlsym(lib, symbol);
    if (p == nullptr)
        return false;
    out = reinterpret_cast<F>(p);
    return true;
}

template <class Find>
double TimePass(std::vector<int> const& order, Find find)
{
    auto const start = std::chrono::steady_clock::now();
    uintptr_t sum = 0;
    for (int k : order)
        sum += reinterpret_cast<uintptr_t>(find(k));
    auto const end = std::chrono::steady_clock::now();
    // Keeps the lookups: their results go somewhere the compiler must
    // assume is read.
    asm volatile("" : : "r"(sum) : "memory");
    return std::chrono::duration<double, std::milli>(end - start).count();
}

void Report(char const* name, std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    std::printf(" | %s %.1f / %.1f", name, v.front(), v[v.size() / 2]);
}

}  // namespace

int main(int argc, char** argv)
{
    int rounds = 15;
    std::vector<Build*> builds;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--rounds") == 0 && i + 1 < argc) {
            rounds = std::max(1, std::atoi(argv[++i]));
            continue;
        }
        void* const lib = dlopen(argv[i], RTLD_NOW | RTLD_LOCAL);
        auto* b = new Build{};
        b->name = argv[i];
        if (lib == nullptr || !Resolve(lib, "_ZN10CHashTableC1Ei", b->construct) ||
            !Resolve(lib, "_ZN10CHashTableD1Ev", b->destruct) || !Resolve(lib, "_ZN10CHashTable7AddDataEiPKv", b->add) ||
            !Resolve(lib, "_ZN10CHashTable13FindFirstDataEi", b->find)) {
            std::fprintf(stderr, "%s: %s\n", argv[i], lib ? "not a library with CHashTable" : dlerror());
            return 2;
        }
        builds.push_back(b);
    }
    if (builds.empty()) {
        std::fprintf(stderr, "usage: %s [--rounds N] LIBPALVET.so...\n", argv[0]);
        return 2;
    }

    std::vector<int> const& keys = palvet_bench::HashKeys();
    std::vector<int> const& shuffled = palvet_bench::ShuffledHashKeys();

    for (Build* b : builds) {
        for (int t = 0; t < 2; ++t) {
            b->construct(b->tables[t], kBucketCounts[t]);
            for (int k : keys)
                b->add(b->tables[t], k, palvet_bench::HashDataFor(k));
        }
    }
    std::unordered_multimap<int, void const*> map;
    for (int k : keys)
        map.emplace(k, palvet_bench::HashDataFor(k));
    std::vector<double> stdPasses[2];

    for (int r = 0; r < rounds; ++r) {
        for (int job = 0; job < 4; ++job) {
            std::vector<int> const& order = job & 1 ? shuffled : keys;
            // The builds take turns at going first.
            for (size_t i = 0; i < builds.size(); ++i) {
                Build* const b = builds[(i + static_cast<size_t>(r)) % builds.size()];
                void* const table = b->tables[job >> 1];
                b->passes[job].push_back(TimePass(order, [&](int k) { return b->find(table, k); }));
            }
            if (job < 2)
                stdPasses[job].push_back(TimePass(order, [&](int k) { return map.find(k)->second; }));
        }
    }

    std::printf("fastest / median pass of %d, ms\n", rounds);
    for (int job = 0; job < 4; ++job) {
        std::printf("%s", kJobs[job]);
        for (Build* b : builds)
            Report(b->name.c_str(), b->passes[job]);
        Report("std::unordered_multimap", stdPasses[job & 1]);
        std::printf("\n");
    }
    for (Build* b : builds) {
        b->destruct(b->tables[0]);
        b->destruct(b->tables[1]);
        delete b;
    }
    return 0;
}
