// Whole-file comparison against reading both files whole and comparing once,
// the memory-hungry way the chunked comparison avoids.

#include <palvet/files/file_utils.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

struct Pair {
    Pair()
    {
        char const* base = getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/palvet-bench-XXXXXX";
        dir = mkdtemp(&pattern[0]) ? pattern : std::string("/tmp");
        a = dir + "/a";
        b = dir + "/b";
        std::vector<unsigned char> data(kSize);
        for (size_t i = 0; i < data.size(); ++i)
            data[i] = static_cast<unsigned char>(i * 131 + (i >> 16));
        WriteFileData(a.c_str(), data.data(), kSize, 0);
        WriteFileData(b.c_str(), data.data(), kSize, 0);
    }
    ~Pair()
    {
        unlink(a.c_str());
        unlink(b.c_str());
        rmdir(dir.c_str());
    }
    static constexpr unsigned int kSize = 64 << 20;
    std::string dir, a, b;
};

Pair& Files()
{
    static Pair pair;
    return pair;
}

void BM_IsFileDataEqual(benchmark::State& state)
{
    Pair& p = Files();
    for (auto _ : state)
        benchmark::DoNotOptimize(IsFileDataEqual(p.a.c_str(), p.b.c_str()));
    state.SetBytesProcessed(int64_t(state.iterations()) * 2 * Pair::kSize);
}
BENCHMARK(BM_IsFileDataEqual)->Unit(benchmark::kMillisecond);

void BM_ReadWholeFilesAndCompare(benchmark::State& state)
{
    Pair& p = Files();
    for (auto _ : state) {
        unsigned char* x = nullptr;
        unsigned char* y = nullptr;
        unsigned long long n = ReadFileData(p.a.c_str(), &x);
        ReadFileData(p.b.c_str(), &y);
        benchmark::DoNotOptimize(memcmp(x, y, n));
        ReleaseFileData(x);
        ReleaseFileData(y);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * 2 * Pair::kSize);
}
BENCHMARK(BM_ReadWholeFilesAndCompare)->Unit(benchmark::kMillisecond);

}  // namespace
