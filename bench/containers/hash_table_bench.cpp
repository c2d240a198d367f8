// CHashTable against std::unordered_multimap: adding a million int keys, and
// finding each of them once, in insertion order and in a shuffled order.
#include <palvet/containers/hash_table.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <algorithm>
#include <random>
#include <unordered_map>
#include <vector>

namespace {

constexpr int kKeys = 1 << 20;

std::vector<int> const& Keys()
{
    static std::vector<int> const keys = [] {
        std::mt19937 rng(4);
        std::vector<int> k(kKeys);
        for (int& x : k)
            x = static_cast<int>(rng() & 0x7FFFFFFF);
        return k;
    }();
    return keys;
}

std::vector<int> const& ShuffledKeys()
{
    static std::vector<int> const keys = [] {
        std::vector<int> k = Keys();
        std::shuffle(k.begin(), k.end(), std::mt19937(5));
        return k;
    }();
    return keys;
}

void const* DataFor(int key)
{
    return reinterpret_cast<void const*>(static_cast<intptr_t>(key) + 1);
}

void BM_HashTableAdd(benchmark::State& state)
{
    int const buckets = static_cast<int>(state.range(0));
    for (auto _ : state) {
        CHashTable table(buckets);
        for (int k : Keys())
            table.AddData(k, DataFor(k));
        benchmark::DoNotOptimize(table.GetCount());
        state.PauseTiming();  // leave the teardown out
        table.DeleteAll();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * kKeys);
}
BENCHMARK(BM_HashTableAdd)->Arg(1 << 16)->Arg(1 << 20)->Unit(benchmark::kMillisecond);

void BM_UnorderedMultimapAdd(benchmark::State& state)
{
    for (auto _ : state) {
        std::unordered_multimap<int, void const*> map;
        for (int k : Keys())
            map.emplace(k, DataFor(k));
        benchmark::DoNotOptimize(map.size());
        state.PauseTiming();
        map.clear();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * kKeys);
}
BENCHMARK(BM_UnorderedMultimapAdd)->Unit(benchmark::kMillisecond);

void BM_HashTableFind(benchmark::State& state)
{
    CHashTable table(static_cast<int>(state.range(0)));
    for (int k : Keys())
        table.AddData(k, DataFor(k));
    std::vector<int> const& order = state.range(1) ? ShuffledKeys() : Keys();
    for (auto _ : state) {
        for (int k : order)
            benchmark::DoNotOptimize(table.FindFirstData(k));
    }
    state.SetItemsProcessed(state.iterations() * kKeys);
}
BENCHMARK(BM_HashTableFind)
    ->ArgNames({"buckets", "shuffled"})
    ->Args({1 << 16, 0})
    ->Args({1 << 20, 0})
    ->Args({1 << 16, 1})
    ->Args({1 << 20, 1})
    ->Unit(benchmark::kMillisecond);

void BM_UnorderedMultimapFind(benchmark::State& state)
{
    std::unordered_multimap<int, void const*> map;
    for (int k : Keys())
        map.emplace(k, DataFor(k));
    std::vector<int> const& order = state.range(0) ? ShuffledKeys() : Keys();
    for (auto _ : state) {
        for (int k : order)
            benchmark::DoNotOptimize(map.find(k)->second);
    }
    state.SetItemsProcessed(state.iterations() * kKeys);
}
BENCHMARK(BM_UnorderedMultimapFind)->ArgName("shuffled")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
