// Memory search beside glibc's memmem and std::wstring_view::find, and the
// hex and URL coders over 1 MiB.
#include <palvet/palvet.h>

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <string>
#include <string_view>

namespace {

constexpr size_t kSize = 1 << 20;

// Lower-case text with the pattern once, near the end.
std::string Haystack(size_t patternLength, std::string& pattern)
{
    std::mt19937 rng(11);
    std::string text(kSize, ' ');
    for (char& c : text)
        c = static_cast<char>('a' + rng() % 26);
    pattern.assign(patternLength, ' ');
    for (char& c : pattern)
        c = static_cast<char>('a' + rng() % 26);
    text.replace(kSize - patternLength - 100, patternLength, pattern);
    return text;
}

void BM_MemFindBufA(benchmark::State& state)
{
    std::string pattern;
    std::string text = Haystack(static_cast<size_t>(state.range(0)), pattern);
    for (auto _ : state)
        benchmark::DoNotOptimize(MemFindBufA(text.data(), static_cast<int>(text.size()), pattern.data(),
                                             static_cast<int>(pattern.size())));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kSize));
}
BENCHMARK(BM_MemFindBufA)->Arg(4)->Arg(32)->Arg(256);

void BM_Memmem(benchmark::State& state)
{
    std::string pattern;
    std::string text = Haystack(static_cast<size_t>(state.range(0)), pattern);
    for (auto _ : state)
        benchmark::DoNotOptimize(memmem(text.data(), text.size(), pattern.data(), pattern.size()));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kSize));
}
BENCHMARK(BM_Memmem)->Arg(4)->Arg(32)->Arg(256);

std::wstring Widen(std::string const& s) { return std::wstring(s.begin(), s.end()); }

void BM_MemFindBufW(benchmark::State& state)
{
    std::string pattern;
    std::wstring text = Widen(Haystack(static_cast<size_t>(state.range(0)), pattern));
    std::wstring wide = Widen(pattern);
    for (auto _ : state)
        benchmark::DoNotOptimize(MemFindBufW(text.data(), static_cast<int>(text.size()), wide.data(),
                                             static_cast<int>(wide.size())));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kSize * sizeof(wchar_t)));
}
BENCHMARK(BM_MemFindBufW)->Arg(4)->Arg(32)->Arg(256);

void BM_WStringViewFind(benchmark::State& state)
{
    std::string pattern;
    std::wstring text = Widen(Haystack(static_cast<size_t>(state.range(0)), pattern));
    std::wstring wide = Widen(pattern);
    for (auto _ : state)
        benchmark::DoNotOptimize(std::wstring_view(text).find(wide));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kSize * sizeof(wchar_t)));
}
BENCHMARK(BM_WStringViewFind)->Arg(4)->Arg(32)->Arg(256);

std::string RandomBytes()
{
    std::mt19937 rng(3);
    std::string bytes(kSize, '\0');
    for (char& c : bytes)
        c = static_cast<char>(rng());
    return bytes;
}

void BM_HexDumpToString(benchmark::State& state)
{
    std::string bytes = RandomBytes();
    for (auto _ : state) {
        CSimpleStringA hex;
        BufferToHexStringA(reinterpret_cast<unsigned char const*>(bytes.data()), static_cast<int>(kSize), &hex);
        benchmark::DoNotOptimize(hex.GetString());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kSize));
}
BENCHMARK(BM_HexDumpToString);

void BM_HexParseToBuffer(benchmark::State& state)
{
    std::string bytes = RandomBytes();
    CSimpleStringA hex;
    BufferToHexStringA(reinterpret_cast<unsigned char const*>(bytes.data()), static_cast<int>(kSize), &hex);
    for (auto _ : state) {
        CBuffer out;
        HexStringToBufferA(hex.GetString(), hex.GetLength(), &out);
        benchmark::DoNotOptimize(out.GetBuffer());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kSize * 2));
}
BENCHMARK(BM_HexParseToBuffer);

void BM_UrlEncode(benchmark::State& state)
{
    std::string text = RandomBytes();
    for (char& c : text)
        if (c == 0)
            c = ' ';
    for (auto _ : state) {
        CSimpleStringA out;
        EncodeURL(text.c_str(), &out);
        benchmark::DoNotOptimize(out.GetString());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kSize));
}
BENCHMARK(BM_UrlEncode);

void BM_UrlDecode(benchmark::State& state)
{
    std::string text = RandomBytes();
    for (char& c : text)
        if (c == 0)
            c = ' ';
    CSimpleStringA encoded;
    EncodeURL(text.c_str(), &encoded);
    for (auto _ : state) {
        CSimpleStringA out;
        DecodeURL(encoded.GetString(), &out);
        benchmark::DoNotOptimize(out.GetString());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * encoded.GetLength()));
}
BENCHMARK(BM_UrlDecode);

}  // namespace
