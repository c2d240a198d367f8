// Full-HD colour conversions, each beside libyuv doing the same job (libyuv
// uses its own fixed-point arithmetic, not these tables).

#include <palvet/imaging/color_conversion.h>
#include <palvet/imaging/color_conversion_internal.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include <libyuv.h>

namespace {

constexpr int kW = 1920, kH = 1080;

std::vector<uint8_t> Frame(size_t n)
{
    std::mt19937 gen(7);
    std::vector<uint8_t> v(n);
    for (auto& b : v)
        b = static_cast<uint8_t>(gen());
    return v;
}

void Pixels(benchmark::State& state)
{
    state.SetItemsProcessed(state.iterations() * kW * kH);
}

// The argument caps the vector kernels (2 = AVX2, 3 = AVX-512), so the
// narrower path can be measured on a processor that has the wider one; -1
// is the default dispatch, what applications get.
bool UseLevel(benchmark::State& state)
{
    auto const level = static_cast<palvet::detail::KernelLevel>(state.range(0));
    palvet::detail::SetColourKernelLevel(level);
    if (!palvet::detail::ColourKernelLevelAvailable(level)) {
        state.SkipWithError("kernels not available on this processor");
        return false;
    }
    return true;
}

void BM_RGB888ToYUV420(benchmark::State& state)
{
    if (!UseLevel(state))
        return;
    auto src = Frame(kW * kH * 3);
    std::vector<uint8_t> dst(kW * kH * 3 / 2);
    for (auto _ : state) {
        RGB888ToYUV420(kW, kH, src.data(), dst.data(), 0, kW * 3, 0);
        benchmark::DoNotOptimize(dst.data());
    }
    Pixels(state);
}

void BM_YUV420ToRGB888(benchmark::State& state)
{
    if (!UseLevel(state))
        return;
    auto src = Frame(kW * kH * 3 / 2);
    std::vector<uint8_t> dst(kW * kH * 3);
    for (auto _ : state) {
        YUV420ToRGB888(kW, kH, src.data(), 0, dst.data(), kW * 3, 0);
        benchmark::DoNotOptimize(dst.data());
    }
    Pixels(state);
}

void BM_YUY2ToARGB32(benchmark::State& state)
{
    if (!UseLevel(state))
        return;
    auto src = Frame(kW * kH * 2);
    auto alpha = Frame(kW * kH);
    std::vector<uint8_t> dst(kW * kH * 4);
    for (auto _ : state) {
        YUY2ToARGB32(kW, kH, src.data(), dst.data(), kW * 4, 0, alpha.data(), kW);
        benchmark::DoNotOptimize(dst.data());
    }
    Pixels(state);
}

// Without an alpha plane (opaque), the same job as libyuv's.
void BM_YUY2ToARGB32_Opaque(benchmark::State& state)
{
    if (!UseLevel(state))
        return;
    auto src = Frame(kW * kH * 2);
    std::vector<uint8_t> dst(kW * kH * 4);
    for (auto _ : state) {
        YUY2ToARGB32(kW, kH, src.data(), dst.data(), kW * 4, 0, nullptr, 0);
        benchmark::DoNotOptimize(dst.data());
    }
    Pixels(state);
}

void BM_YUV420SPToYUV420(benchmark::State& state)
{
    if (!UseLevel(state))
        return;
    auto src = Frame(kW * kH * 3 / 2);
    std::vector<uint8_t> dst(kW * kH * 3 / 2);
    for (auto _ : state) {
        YUV420SPToYUV420(kW, kH, src.data(), dst.data(), 0);
        benchmark::DoNotOptimize(dst.data());
    }
    Pixels(state);
}

BENCHMARK(BM_RGB888ToYUV420)->ArgName("level")->Arg(-1)->Arg(3)->Arg(2);
BENCHMARK(BM_YUV420ToRGB888)->ArgName("level")->Arg(-1)->Arg(3)->Arg(2);
BENCHMARK(BM_YUY2ToARGB32)->ArgName("level")->Arg(-1)->Arg(3)->Arg(2);
BENCHMARK(BM_YUY2ToARGB32_Opaque)->ArgName("level")->Arg(-1)->Arg(3)->Arg(2);
BENCHMARK(BM_YUV420SPToYUV420)->ArgName("level")->Arg(-1)->Arg(3)->Arg(2);

void BM_libyuv_RGB24ToI420(benchmark::State& state)
{
    auto src = Frame(kW * kH * 3);
    std::vector<uint8_t> dst(kW * kH * 3 / 2);
    uint8_t* y = dst.data();
    uint8_t* u = y + kW * kH;
    uint8_t* v = u + kW * kH / 4;
    for (auto _ : state) {
        libyuv::RGB24ToI420(src.data(), kW * 3, y, kW, u, kW / 2, v, kW / 2, kW, kH);
        benchmark::DoNotOptimize(dst.data());
    }
    Pixels(state);
}

void BM_libyuv_I420ToRGB24(benchmark::State& state)
{
    auto src = Frame(kW * kH * 3 / 2);
    std::vector<uint8_t> dst(kW * kH * 3);
    uint8_t const* y = src.data();
    uint8_t const* u = y + kW * kH;
    uint8_t const* v = u + kW * kH / 4;
    for (auto _ : state) {
        libyuv::I420ToRGB24(y, kW, u, kW / 2, v, kW / 2, dst.data(), kW * 3, kW, kH);
        benchmark::DoNotOptimize(dst.data());
    }
    Pixels(state);
}

void BM_libyuv_YUY2ToARGB(benchmark::State& state)
{
    auto src = Frame(kW * kH * 2);
    std::vector<uint8_t> dst(kW * kH * 4);
    for (auto _ : state) {
        libyuv::YUY2ToARGB(src.data(), kW * 2, dst.data(), kW * 4, kW, kH);
        benchmark::DoNotOptimize(dst.data());
    }
    Pixels(state);
}

void BM_libyuv_NV12ToI420(benchmark::State& state)
{
    auto src = Frame(kW * kH * 3 / 2);
    std::vector<uint8_t> dst(kW * kH * 3 / 2);
    uint8_t* y = dst.data();
    uint8_t* u = y + kW * kH;
    uint8_t* v = u + kW * kH / 4;
    for (auto _ : state) {
        libyuv::NV12ToI420(src.data(), kW, src.data() + kW * kH, kW, y, kW, u, kW / 2, v, kW / 2, kW, kH);
        benchmark::DoNotOptimize(dst.data());
    }
    Pixels(state);
}

BENCHMARK(BM_libyuv_RGB24ToI420);
BENCHMARK(BM_libyuv_I420ToRGB24);
BENCHMARK(BM_libyuv_YUY2ToARGB);
BENCHMARK(BM_libyuv_NV12ToI420);

}  // namespace
