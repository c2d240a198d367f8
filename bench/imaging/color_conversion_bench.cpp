// Full-HD colour conversions, each beside libyuv doing the same job (libyuv
// uses its own fixed-point arithmetic, not these tables). The *_Strip forms
// convert 32 rows of the frame, which stay in the caches: they show the
// loops' own speed, where the full frames also measure memory (and move
// with whatever else the machine is doing).

#include <palvet/imaging/color_conversion.h>
#include <palvet/imaging/color_conversion_internal.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include <libyuv.h>

namespace {

constexpr int kW = 1920, kH = 1080, kStripH = 32;

std::vector<uint8_t> Frame(size_t n)
{
    std::mt19937 gen(7);
    std::vector<uint8_t> v(n);
    for (auto& b : v)
        b = static_cast<uint8_t>(gen());
    return v;
}

void Pixels(benchmark::State& state, int h = kH)
{
    state.SetItemsProcessed(state.iterations() * kW * h);
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

void RunRGB888ToYUV420(benchmark::State& state, int h)
{
    if (!UseLevel(state))
        return;
    auto src = Frame(kW * h * 3);
    std::vector<uint8_t> dst(kW * h * 3 / 2);
    for (auto _ : state) {
        RGB888ToYUV420(kW, h, src.data(), dst.data(), 0, kW * 3, 0);
        benchmark::DoNotOptimize(dst.data());
    }
    Pixels(state, h);
}
void BM_RGB888ToYUV420(benchmark::State& state) { RunRGB888ToYUV420(state, kH); }
void BM_RGB888ToYUV420_Strip(benchmark::State& state) { RunRGB888ToYUV420(state, kStripH); }

void RunYUV420ToRGB888(benchmark::State& state, int h)
{
    if (!UseLevel(state))
        return;
    auto src = Frame(kW * h * 3 / 2);
    std::vector<uint8_t> dst(kW * h * 3);
    for (auto _ : state) {
        YUV420ToRGB888(kW, h, src.data(), 0, dst.data(), kW * 3, 0);
        benchmark::DoNotOptimize(dst.data());
    }
    Pixels(state, h);
}
void BM_YUV420ToRGB888(benchmark::State& state) { RunYUV420ToRGB888(state, kH); }
void BM_YUV420ToRGB888_Strip(benchmark::State& state) { RunYUV420ToRGB888(state, kStripH); }

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
void RunYUY2ToARGB32Opaque(benchmark::State& state, int h)
{
    if (!UseLevel(state))
        return;
    auto src = Frame(kW * h * 2);
    std::vector<uint8_t> dst(kW * h * 4);
    for (auto _ : state) {
        YUY2ToARGB32(kW, h, src.data(), dst.data(), kW * 4, 0, nullptr, 0);
        benchmark::DoNotOptimize(dst.data());
    }
    Pixels(state, h);
}
void BM_YUY2ToARGB32_Opaque(benchmark::State& state) { RunYUY2ToARGB32Opaque(state, kH); }
void BM_YUY2ToARGB32_Opaque_Strip(benchmark::State& state) { RunYUY2ToARGB32Opaque(state, kStripH); }

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
BENCHMARK(BM_RGB888ToYUV420_Strip)->ArgName("level")->Arg(-1)->Arg(3)->Arg(2);
BENCHMARK(BM_YUV420ToRGB888_Strip)->ArgName("level")->Arg(-1)->Arg(3)->Arg(2);
BENCHMARK(BM_YUY2ToARGB32_Opaque_Strip)->ArgName("level")->Arg(-1)->Arg(3)->Arg(2);

void RunLibyuvRGB24ToI420(benchmark::State& state, int h)
{
    auto src = Frame(kW * h * 3);
    std::vector<uint8_t> dst(kW * h * 3 / 2);
    uint8_t* y = dst.data();
    uint8_t* u = y + kW * h;
    uint8_t* v = u + kW * h / 4;
    for (auto _ : state) {
        libyuv::RGB24ToI420(src.data(), kW * 3, y, kW, u, kW / 2, v, kW / 2, kW, h);
        benchmark::DoNotOptimize(dst.data());
    }
    Pixels(state, h);
}
void BM_libyuv_RGB24ToI420(benchmark::State& state) { RunLibyuvRGB24ToI420(state, kH); }
void BM_libyuv_RGB24ToI420_Strip(benchmark::State& state) { RunLibyuvRGB24ToI420(state, kStripH); }

void RunLibyuvI420ToRGB24(benchmark::State& state, int h)
{
    auto src = Frame(kW * h * 3 / 2);
    std::vector<uint8_t> dst(kW * h * 3);
    uint8_t const* y = src.data();
    uint8_t const* u = y + kW * h;
    uint8_t const* v = u + kW * h / 4;
    for (auto _ : state) {
        libyuv::I420ToRGB24(y, kW, u, kW / 2, v, kW / 2, dst.data(), kW * 3, kW, h);
        benchmark::DoNotOptimize(dst.data());
    }
    Pixels(state, h);
}
void BM_libyuv_I420ToRGB24(benchmark::State& state) { RunLibyuvI420ToRGB24(state, kH); }
void BM_libyuv_I420ToRGB24_Strip(benchmark::State& state) { RunLibyuvI420ToRGB24(state, kStripH); }

void RunLibyuvYUY2ToARGB(benchmark::State& state, int h)
{
    auto src = Frame(kW * h * 2);
    std::vector<uint8_t> dst(kW * h * 4);
    for (auto _ : state) {
        libyuv::YUY2ToARGB(src.data(), kW * 2, dst.data(), kW * 4, kW, h);
        benchmark::DoNotOptimize(dst.data());
    }
    Pixels(state, h);
}
void BM_libyuv_YUY2ToARGB(benchmark::State& state) { RunLibyuvYUY2ToARGB(state, kH); }
void BM_libyuv_YUY2ToARGB_Strip(benchmark::State& state) { RunLibyuvYUY2ToARGB(state, kStripH); }

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
BENCHMARK(BM_libyuv_RGB24ToI420_Strip);
BENCHMARK(BM_libyuv_I420ToRGB24_Strip);
BENCHMARK(BM_libyuv_YUY2ToARGB_Strip);

}  // namespace
