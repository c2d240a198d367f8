// Saving and loading a 1920 x 1080 32-bit frame; the plain memcpy of the
// pixel block is the floor the loader is measured against.

#include <palvet/imaging/bmp.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr size_t kPixelBytes = size_t{kWidth} * kHeight * 4;

std::string TempPath()
{
    char const* base = getenv("TMPDIR");
    return std::string(base && *base ? base : "/tmp") + "/palvet-bench-" +
           std::to_string(getpid()) + ".bmp";
}

std::vector<unsigned char> const& Frame()
{
    static std::vector<unsigned char> const frame = [] {
        std::vector<unsigned char> f(kPixelBytes);
        for (size_t i = 0; i < f.size(); ++i)
            f[i] = static_cast<unsigned char>(i * 7);
        return f;
    }();
    return frame;
}

void BM_Save(benchmark::State& state)
{
    int const height = static_cast<int>(state.range(0)) * kHeight;  // -1: flipped
    std::string const path = TempPath();
    for (auto _ : state)
        SaveRgbBufferToBmpFile(Frame().data(), kWidth, height, 32, nullptr, 0, path.c_str());
    unlink(path.c_str());
    state.SetBytesProcessed(int64_t(state.iterations()) * kPixelBytes);
}
BENCHMARK(BM_Save)->Arg(1)->Arg(-1)->Unit(benchmark::kMillisecond);

void BM_LoadFromData(benchmark::State& state)
{
    std::string const path = TempPath();
    SaveRgbBufferToBmpFile(Frame().data(), kWidth, kHeight, 32, nullptr, 0, path.c_str());
    FILE* f = fopen(path.c_str(), "rb");
    std::vector<unsigned char> image(kPixelBytes + 54);
    size_t const got = fread(image.data(), 1, image.size(), f);
    fclose(f);
    unlink(path.c_str());
    if (got != image.size()) {
        state.SkipWithError("could not read the image back");
        return;
    }
    for (auto _ : state) {
        int w, h, bpp;
        unsigned char* pixels = nullptr;
        LoadBmpImageFromData(image.data(), static_cast<int>(image.size()), &w, &h, &bpp, &pixels);
        benchmark::DoNotOptimize(pixels);
        DeleteBmpImageData(pixels);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * kPixelBytes);
}
BENCHMARK(BM_LoadFromData)->Unit(benchmark::kMillisecond);

void BM_MemcpyFloor(benchmark::State& state)
{
    for (auto _ : state) {
        unsigned char* copy = new unsigned char[kPixelBytes];
        memcpy(copy, Frame().data(), kPixelBytes);
        benchmark::DoNotOptimize(copy);
        delete[] copy;
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * kPixelBytes);
}
BENCHMARK(BM_MemcpyFloor)->Unit(benchmark::kMillisecond);

}  // namespace
