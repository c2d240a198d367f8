// Full-HD 32-bit frames, each operation beside the best-known library code
// for the same job: a plain row memcpy, pixman and libyuv.
#include <palvet/imaging/drawing.h>

#include <benchmark/benchmark.h>
#include <libyuv/convert_argb.h>
#include <libyuv/rotate_argb.h>
#include <pixman.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace {

constexpr int kW = 1920, kH = 1080;
constexpr int kSmallW = 1280, kSmallH = 720;

std::vector<unsigned char> Noise(std::size_t n, std::uint32_t seed)
{
    std::vector<unsigned char> out(n);
    std::uint32_t x = seed * 2654435761u + 1;
    for (auto& b : out) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        b = static_cast<unsigned char>(x >> 7);
    }
    return out;
}

// Interface artwork: mostly opaque or clear, with soft edges. Every fourth
// 16-pixel run is translucent.
std::vector<unsigned char> UiArgb(int w, int h, std::uint32_t seed)
{
    auto px = Noise(static_cast<std::size_t>(w) * h * 4, seed);
    for (std::size_t i = 0; i < px.size() / 4; ++i) {
        std::size_t const run = i / 16;
        unsigned char& a = px[4 * i + 3];
        a = run % 4 == 3 ? static_cast<unsigned char>(a | 1) : (run % 4 == 1 ? 0 : 255);
    }
    return px;
}

// pixman wants premultiplied colour; clamp the channels to alpha so the
// data is valid for it (the work done is the same).
void Premultiply(std::vector<unsigned char>& px)
{
    for (std::size_t i = 0; i < px.size(); i += 4)
        for (int c = 0; c < 3; ++c)
            if (px[i + c] > px[i + 3])
                px[i + c] = px[i + 3];
}

void SetFrameCounters(benchmark::State& state, std::size_t bytesPerFrame)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytesPerFrame));
}

std::size_t const kFrameBytes = static_cast<std::size_t>(kW) * kH * 4;

void BM_DrawBufferOnBuffer(benchmark::State& state)
{
    auto const src = Noise(kFrameBytes, 1);
    std::vector<unsigned char> dst(kFrameBytes);
    tagRECT const rc = {0, 0, kW, kH};
    for (auto _ : state) {
        DrawBufferOnBuffer(dst.data(), rc, kW * 4, src.data(), rc, kW * 4, 4);
        benchmark::ClobberMemory();
    }
    SetFrameCounters(state, kFrameBytes);
}
BENCHMARK(BM_DrawBufferOnBuffer)->Unit(benchmark::kMicrosecond);

void BM_RowMemcpy(benchmark::State& state)
{
    auto const src = Noise(kFrameBytes, 1);
    std::vector<unsigned char> dst(kFrameBytes);
    for (auto _ : state) {
        for (int y = 0; y < kH; ++y)
            std::memcpy(dst.data() + y * kW * 4, src.data() + y * kW * 4, kW * 4);
        benchmark::ClobberMemory();
    }
    SetFrameCounters(state, kFrameBytes);
}
BENCHMARK(BM_RowMemcpy)->Unit(benchmark::kMicrosecond);

void BM_StretchBufferOnBuffer(benchmark::State& state)
{
    auto const src = Noise(static_cast<std::size_t>(kSmallW) * kSmallH * 4, 2);
    std::vector<unsigned char> dst(kFrameBytes);
    tagRECT const sr = {0, 0, kSmallW, kSmallH}, dr = {0, 0, kW, kH};
    for (auto _ : state) {
        StretchBufferOnBuffer(dst.data(), dr, kW * 4, src.data(), sr, kSmallW * 4, 4);
        benchmark::ClobberMemory();
    }
    SetFrameCounters(state, kFrameBytes);
}
BENCHMARK(BM_StretchBufferOnBuffer)->Unit(benchmark::kMicrosecond);

void BM_PixmanNearestScale(benchmark::State& state)
{
    auto src = Noise(static_cast<std::size_t>(kSmallW) * kSmallH * 4, 2);
    std::vector<unsigned char> dst(kFrameBytes);
    pixman_image_t* s = pixman_image_create_bits(PIXMAN_a8r8g8b8, kSmallW, kSmallH,
                                                 reinterpret_cast<std::uint32_t*>(src.data()), kSmallW * 4);
    pixman_image_t* d = pixman_image_create_bits(PIXMAN_a8r8g8b8, kW, kH,
                                                 reinterpret_cast<std::uint32_t*>(dst.data()), kW * 4);
    pixman_transform_t t;
    pixman_transform_init_scale(&t, pixman_double_to_fixed(double(kSmallW) / kW),
                                pixman_double_to_fixed(double(kSmallH) / kH));
    pixman_image_set_transform(s, &t);
    pixman_image_set_filter(s, PIXMAN_FILTER_NEAREST, nullptr, 0);
    for (auto _ : state) {
        pixman_image_composite32(PIXMAN_OP_SRC, s, nullptr, d, 0, 0, 0, 0, 0, 0, kW, kH);
        benchmark::ClobberMemory();
    }
    pixman_image_unref(s);
    pixman_image_unref(d);
    SetFrameCounters(state, kFrameBytes);
}
BENCHMARK(BM_PixmanNearestScale)->Unit(benchmark::kMicrosecond);

// Argument 0: interface artwork; 1: every pixel translucent at random.
std::vector<unsigned char> BlendSource(benchmark::State const& state)
{
    if (state.range(0) == 0)
        return UiArgb(kW, kH, 3);
    auto px = Noise(kFrameBytes, 3);
    for (std::size_t i = 3; i < px.size(); i += 4)
        px[i] |= 1;
    return px;
}

void BM_AlphaDrawBufferOnBuffer_ARGB(benchmark::State& state)
{
    auto const src = BlendSource(state);
    auto const base = Noise(kFrameBytes, 4);
    auto dst = base;
    tagRECT const rc = {0, 0, kW, kH};
    for (auto _ : state) {
        AlphaDrawBufferOnBuffer_ARGB(dst.data(), rc, kW * 4, src.data(), rc, kW * 4);
        benchmark::ClobberMemory();
    }
    SetFrameCounters(state, kFrameBytes);
}
BENCHMARK(BM_AlphaDrawBufferOnBuffer_ARGB)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

void BM_PixmanOver(benchmark::State& state)
{
    auto src = BlendSource(state);
    Premultiply(src);
    auto dst = Noise(kFrameBytes, 4);
    Premultiply(dst);
    pixman_image_t* s = pixman_image_create_bits(PIXMAN_a8r8g8b8, kW, kH,
                                                 reinterpret_cast<std::uint32_t*>(src.data()), kW * 4);
    pixman_image_t* d = pixman_image_create_bits(PIXMAN_a8r8g8b8, kW, kH,
                                                 reinterpret_cast<std::uint32_t*>(dst.data()), kW * 4);
    for (auto _ : state) {
        pixman_image_composite32(PIXMAN_OP_OVER, s, nullptr, d, 0, 0, 0, 0, 0, 0, kW, kH);
        benchmark::ClobberMemory();
    }
    pixman_image_unref(s);
    pixman_image_unref(d);
    SetFrameCounters(state, kFrameBytes);
}
BENCHMARK(BM_PixmanOver)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

void BM_RotateRGBData90(benchmark::State& state)
{
    auto src = Noise(kFrameBytes, 5);
    std::vector<unsigned char> dst(kFrameBytes);
    for (auto _ : state) {
        RotateRGBData90(src.data(), dst.data(), kW, kH, 4);
        benchmark::ClobberMemory();
    }
    SetFrameCounters(state, kFrameBytes);
}
BENCHMARK(BM_RotateRGBData90)->Unit(benchmark::kMicrosecond);

void BM_LibyuvARGBRotate90(benchmark::State& state)
{
    auto const src = Noise(kFrameBytes, 5);
    std::vector<unsigned char> dst(kFrameBytes);
    for (auto _ : state) {
        libyuv::ARGBRotate(src.data(), kW * 4, dst.data(), kH * 4, kW, kH, libyuv::kRotate90);
        benchmark::ClobberMemory();
    }
    SetFrameCounters(state, kFrameBytes);
}
BENCHMARK(BM_LibyuvARGBRotate90)->Unit(benchmark::kMicrosecond);

void BM_ConvertRGB24ToRGB32(benchmark::State& state)
{
    auto const src = Noise(static_cast<std::size_t>(kW) * kH * 3, 6);
    std::vector<unsigned char> dst(kFrameBytes);
    for (auto _ : state) {
        ConvertRGB24ToRGB32(src.data(), kW * 3, dst.data(), kW * 4, kW, kH, 0);
        benchmark::ClobberMemory();
    }
    SetFrameCounters(state, kFrameBytes);
}
BENCHMARK(BM_ConvertRGB24ToRGB32)->Unit(benchmark::kMicrosecond);

void BM_LibyuvRGB24ToARGB(benchmark::State& state)
{
    auto const src = Noise(static_cast<std::size_t>(kW) * kH * 3, 6);
    std::vector<unsigned char> dst(kFrameBytes);
    for (auto _ : state) {
        libyuv::RGB24ToARGB(src.data(), kW * 3, dst.data(), kW * 4, kW, kH);
        benchmark::ClobberMemory();
    }
    SetFrameCounters(state, kFrameBytes);
}
BENCHMARK(BM_LibyuvRGB24ToARGB)->Unit(benchmark::kMicrosecond);

}  // namespace
