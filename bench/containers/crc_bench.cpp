// CCRC::CalculateDigest on 64 MiB against zlib's crc32 and against the plain
// loop over the byte table.
#include <palvet/containers/crc.h>

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <random>
#include <vector>

namespace {

constexpr size_t kSize = 64u << 20;

std::vector<unsigned char> const& Data()
{
    static std::vector<unsigned char> const data = [] {
        std::mt19937 rng(3);
        std::vector<unsigned char> d(kSize);
        for (auto& b : d)
            b = static_cast<unsigned char>(rng());
        return d;
    }();
    return data;
}

void BM_CalculateDigest(benchmark::State& state)
{
    auto const& d = Data();
    for (auto _ : state)
        benchmark::DoNotOptimize(CCRC::CalculateDigest(d.data(), static_cast<unsigned int>(d.size())));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kSize));
}
BENCHMARK(BM_CalculateDigest)->Unit(benchmark::kMillisecond);

void BM_ZlibCrc32(benchmark::State& state)
{
    auto const& d = Data();
    // zlib inverts on entry and exit, so starting from the inverted start
    // value gives the same digest.
    unsigned int const expected = CCRC::CalculateDigest(d.data(), static_cast<unsigned int>(d.size()));
    for (auto _ : state) {
        uLong const crc = crc32(~0xABCDABCDu, d.data(), static_cast<uInt>(d.size()));
        if (crc != expected)
            state.SkipWithError("zlib disagrees");
        benchmark::DoNotOptimize(crc);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kSize));
}
BENCHMARK(BM_ZlibCrc32)->Unit(benchmark::kMillisecond);

void BM_ByteTableLoop(benchmark::State& state)
{
    auto const& d = Data();
    for (auto _ : state) {
        unsigned int reg = 0xABCDABCDu;
        for (unsigned char b : d)
            reg = CCRC::Table[(reg ^ b) & 0xFF] ^ (reg >> 8);
        benchmark::DoNotOptimize(~reg);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kSize));
}
BENCHMARK(BM_ByteTableLoop)->Unit(benchmark::kMillisecond);

}  // namespace
