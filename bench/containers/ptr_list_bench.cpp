// Sequential GetAt over a 100k-element CPtrListCtrl; the cached node makes
// each step O(1). The array and a std::list walk are there for scale.
#include <palvet/containers/ptr_collection.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <list>

namespace {

constexpr int kCount = 100000;

template <typename Collection>
void Fill(Collection& c)
{
    for (int i = 0; i < kCount; ++i)
        c.AddData(reinterpret_cast<void const*>(static_cast<intptr_t>(i)), -1);
}

template <typename Collection>
void BM_SequentialGetAt(benchmark::State& state)
{
    Collection c;
    Fill(c);
    for (auto _ : state) {
        for (int i = 0; i < kCount; ++i)
            benchmark::DoNotOptimize(c.GetAt(i));
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}
BENCHMARK_TEMPLATE(BM_SequentialGetAt, CPtrListCtrl)->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(BM_SequentialGetAt, CPtrArrayCtrl)->Unit(benchmark::kMicrosecond);

void BM_StdListWalk(benchmark::State& state)
{
    std::list<void const*> l;
    for (int i = 0; i < kCount; ++i)
        l.push_back(reinterpret_cast<void const*>(static_cast<intptr_t>(i)));
    for (auto _ : state) {
        for (void const* p : l)
            benchmark::DoNotOptimize(p);
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}
BENCHMARK(BM_StdListWalk)->Unit(benchmark::kMicrosecond);

}  // namespace
