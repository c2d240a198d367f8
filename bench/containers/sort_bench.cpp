// QuicksortBuffer against qsort and std::sort on a million pointers to
// random ints, all through the same out-of-line comparison called through a
// function pointer. The engine's comparison sequence is fixed (about 1.2
// times std::sort's comparisons on this input), so its speed per comparison
// is what can differ.
#include <palvet/containers/ptr_collection.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <vector>

namespace {

constexpr int kCount = 1 << 20;

std::vector<int> const& Values()
{
    static std::vector<int> const values = [] {
        std::mt19937 rng(1);
        std::vector<int> v(kCount);
        for (int& x : v)
            x = static_cast<int>(rng());
        return v;
    }();
    return values;
}

std::vector<void*> Shuffled()
{
    std::vector<void*> ptrs;
    for (int const& v : Values())
        ptrs.push_back(const_cast<int*>(&v));
    std::shuffle(ptrs.begin(), ptrs.end(), std::mt19937(2));
    return ptrs;
}

__attribute__((noinline)) int CompareInts(void const* a, void const* b, unsigned long long, unsigned long long)
{
    int const x = *static_cast<int const*>(a);
    int const y = *static_cast<int const*>(b);
    return (x > y) - (x < y);
}

void BM_QuicksortBuffer(benchmark::State& state)
{
    std::vector<void*> const input = Shuffled();
    std::vector<void*> work;
    for (auto _ : state) {
        state.PauseTiming();
        work = input;
        state.ResumeTiming();
        int swaps = 0;
        QuicksortBuffer(work.data(), 0, kCount - 1, CompareInts, 0, 0, &swaps);
        benchmark::DoNotOptimize(swaps);
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}
BENCHMARK(BM_QuicksortBuffer)->Unit(benchmark::kMillisecond);

void BM_StdSort(benchmark::State& state)
{
    std::vector<void*> const input = Shuffled();
    std::vector<void*> work;
    auto* volatile cmp = &CompareInts;  // keep the call indirect, as for the engine
    for (auto _ : state) {
        state.PauseTiming();
        work = input;
        state.ResumeTiming();
        std::sort(work.begin(), work.end(), [cmp](void* a, void* b) { return cmp(a, b, 0, 0) < 0; });
        benchmark::DoNotOptimize(work.data());
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}
BENCHMARK(BM_StdSort)->Unit(benchmark::kMillisecond);

int (*volatile qsort_target)(void const*, void const*, unsigned long long, unsigned long long) = &CompareInts;

int QsortCompare(void const* a, void const* b)
{
    return qsort_target(*static_cast<void* const*>(a), *static_cast<void* const*>(b), 0, 0);
}

void BM_Qsort(benchmark::State& state)
{
    std::vector<void*> const input = Shuffled();
    std::vector<void*> work;
    for (auto _ : state) {
        state.PauseTiming();
        work = input;
        state.ResumeTiming();
        qsort(work.data(), work.size(), sizeof(void*), QsortCompare);
        benchmark::DoNotOptimize(work.data());
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}
BENCHMARK(BM_Qsort)->Unit(benchmark::kMillisecond);

}  // namespace
