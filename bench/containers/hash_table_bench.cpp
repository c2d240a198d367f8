// CHashTable against std::unordered_multimap: adding a million int keys, and
// finding each of them once, in insertion order and in a shuffled order.
#include <palvet/containers/hash_table.h>

#include <benchmark/benchmark.h>

#include "hash_bench_keys.h"

#include <unordered_map>
#include <vector>

namespace {

constexpr int kKeys = palvet_bench::kHashKeys;
using palvet_bench::HashKeys;
using palvet_bench::ShuffledHashKeys;
using palvet_bench::HashDataFor;

void BM_HashTableAdd(benchmark::State& state)
{
    int const buckets = static_cast<int>(state.range(0));
    for (auto _ : state) {
        CHashTable table(buckets);
        for (int k : HashKeys())
            table.AddData(k, HashDataFor(k));
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
        for (int k : HashKeys())
            map.emplace(k, HashDataFor(k));
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
    for (int k : HashKeys())
        table.AddData(k, HashDataFor(k));
    std::vector<int> const& order = state.range(1) ? ShuffledHashKeys() : HashKeys();
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
    for (int k : HashKeys())
        map.emplace(k, HashDataFor(k));
    std::vector<int> const& order = state.range(0) ? ShuffledHashKeys() : HashKeys();
    for (auto _ : state) {
        for (int k : order)
            benchmark::DoNotOptimize(map.find(k)->second);
    }
    state.SetItemsProcessed(state.iterations() * kKeys);
}
BENCHMARK(BM_UnorderedMultimapFind)->ArgName("shuffled")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
