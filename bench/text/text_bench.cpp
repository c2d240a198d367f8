// The text hot paths next to the standard library doing the same work:
// appending many small pieces, formatting short text, and converting 1 MiB
// of mixed UTF-8 to wide characters and back.
#include <palvet/text/simple_string.h>
#include <palvet/text/text_utils.h>

#include <benchmark/benchmark.h>

#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kPieces = 10000;
char const* const kPieceTexts[] = {"id=", "42", ", ", "name", "=\"", "value", "\";", "\n"};

void BM_AppendPieces_SimpleString(benchmark::State& state)
{
    for (auto _ : state) {
        CSimpleStringA s;
        for (int i = 0; i < kPieces; ++i)
            s.Append(kPieceTexts[i & 7], -1);
        benchmark::DoNotOptimize(s.GetString());
    }
    state.SetItemsProcessed(state.iterations() * kPieces);
}
BENCHMARK(BM_AppendPieces_SimpleString);

void BM_AppendPieces_StdString(benchmark::State& state)
{
    for (auto _ : state) {
        std::string s;
        for (int i = 0; i < kPieces; ++i)
            s.append(kPieceTexts[i & 7]);
        benchmark::DoNotOptimize(s.data());
    }
    state.SetItemsProcessed(state.iterations() * kPieces);
}
BENCHMARK(BM_AppendPieces_StdString);

void BM_FormatShort_SimpleString(benchmark::State& state)
{
    CSimpleStringA s;
    int i = 0;
    for (auto _ : state) {
        s.Format("%d-%s:%04x", i, "item", i & 0xFFFF);
        ++i;
        benchmark::DoNotOptimize(s.GetString());
    }
}
BENCHMARK(BM_FormatShort_SimpleString);

void BM_FormatShort_Snprintf(benchmark::State& state)
{
    char buffer[64];
    int i = 0;
    for (auto _ : state) {
        snprintf(buffer, sizeof buffer, "%d-%s:%04x", i, "item", i & 0xFFFF);
        ++i;
        benchmark::DoNotOptimize(buffer);
    }
}
BENCHMARK(BM_FormatShort_Snprintf);

void BM_FormatShort_SnprintfStdString(benchmark::State& state)
{
    std::string s;
    char buffer[64];
    int i = 0;
    for (auto _ : state) {
        int n = snprintf(buffer, sizeof buffer, "%d-%s:%04x", i, "item", i & 0xFFFF);
        ++i;
        s.assign(buffer, static_cast<size_t>(n));
        benchmark::DoNotOptimize(s.data());
    }
}
BENCHMARK(BM_FormatShort_SnprintfStdString);

// 1 MiB of text mixing ASCII words with Latin, CJK and emoji characters,
// roughly like a media library's titles and descriptions.
std::string const& MixedText()
{
    static std::string const text = [] {
        char const* const pieces[] = {"the ", "quick ", "brown ", "fox ", "2024 ", "\xC3\xA9", "\xC3\xBC ",
                                      "\xE4\xB8\xAD", "\xE6\x96\x87", "\xE5\xAD\x97", "\xF0\x9F\x8E\xB5"};
        unsigned const weights[] = {6, 5, 5, 4, 3, 2, 2, 4, 4, 4, 1};
        std::discrete_distribution<int> pick(std::begin(weights), std::end(weights));
        std::mt19937 rng(1);
        std::string t;
        while (t.size() < (1u << 20) - 8)
            t += pieces[pick(rng)];
        return t;
    }();
    return text;
}

std::wstring const& MixedWide()
{
    static std::wstring const wide = [] {
        wchar_t* w = AllocCopyWStringFromAString(MixedText().data(), static_cast<int>(MixedText().size()));
        std::wstring out(w);
        FreeWString(w);
        return out;
    }();
    return wide;
}

// What one would write by hand for well-formed UTF-8 of up to four bytes.
size_t HandDecode(unsigned char const* s, size_t n, wchar_t* out)
{
    size_t k = 0;
    for (size_t j = 0; j < n;) {
        unsigned b = s[j];
        if (b < 0x80) {
            out[k++] = static_cast<wchar_t>(b);
            j += 1;
        } else if (b < 0xE0) {
            out[k++] = static_cast<wchar_t>((b & 0x1F) << 6 | (s[j + 1] & 0x3F));
            j += 2;
        } else if (b < 0xF0) {
            out[k++] = static_cast<wchar_t>((b & 0x0F) << 12 | (s[j + 1] & 0x3F) << 6 | (s[j + 2] & 0x3F));
            j += 3;
        } else {
            out[k++] = static_cast<wchar_t>((b & 0x07) << 18 | (s[j + 1] & 0x3F) << 12 |
                                            (s[j + 2] & 0x3F) << 6 | (s[j + 3] & 0x3F));
            j += 4;
        }
    }
    return k;
}

size_t HandEncode(wchar_t const* s, size_t n, unsigned char* out)
{
    size_t j = 0;
    for (size_t i = 0; i < n; ++i) {
        uint32_t c = static_cast<uint32_t>(s[i]);
        if (c < 0x80) {
            out[j++] = static_cast<unsigned char>(c);
        } else if (c < 0x800) {
            out[j++] = static_cast<unsigned char>(0xC0 | c >> 6);
            out[j++] = static_cast<unsigned char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            out[j++] = static_cast<unsigned char>(0xE0 | c >> 12);
            out[j++] = static_cast<unsigned char>(0x80 | (c >> 6 & 0x3F));
            out[j++] = static_cast<unsigned char>(0x80 | (c & 0x3F));
        } else {
            out[j++] = static_cast<unsigned char>(0xF0 | c >> 18);
            out[j++] = static_cast<unsigned char>(0x80 | (c >> 12 & 0x3F));
            out[j++] = static_cast<unsigned char>(0x80 | (c >> 6 & 0x3F));
            out[j++] = static_cast<unsigned char>(0x80 | (c & 0x3F));
        }
    }
    return j;
}

void UseUtf8Locale()
{
    static bool const ok = setlocale(LC_CTYPE, "C.UTF-8") != nullptr;
    (void)ok;
}

void BM_Utf8ToWide_Palvet(benchmark::State& state)
{
    std::string const& text = MixedText();
    for (auto _ : state) {
        wchar_t* w = AllocCopyWStringFromAString(text.data(), static_cast<int>(text.size()));
        benchmark::DoNotOptimize(w);
        FreeWString(w);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_Utf8ToWide_Palvet);

void BM_Utf8ToWide_Mbstowcs(benchmark::State& state)
{
    UseUtf8Locale();
    std::string const& text = MixedText();
    for (auto _ : state) {
        wchar_t* w = new wchar_t[text.size() + 1];
        benchmark::DoNotOptimize(mbstowcs(w, text.c_str(), text.size() + 1));
        delete[] w;
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_Utf8ToWide_Mbstowcs);

void BM_Utf8ToWide_HandLoop(benchmark::State& state)
{
    std::string const& text = MixedText();
    for (auto _ : state) {
        wchar_t* w = new wchar_t[text.size() + 1];
        size_t k = HandDecode(reinterpret_cast<unsigned char const*>(text.data()), text.size(), w);
        w[k] = 0;
        benchmark::DoNotOptimize(w);
        delete[] w;
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_Utf8ToWide_HandLoop);

void BM_WideToUtf8_Palvet(benchmark::State& state)
{
    std::wstring const& wide = MixedWide();
    for (auto _ : state) {
        char* a = AllocCopyAStringFromWString(wide.data(), static_cast<int>(wide.size()));
        benchmark::DoNotOptimize(a);
        FreeAString(a);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(MixedText().size()));
}
BENCHMARK(BM_WideToUtf8_Palvet);

void BM_WideToUtf8_Wcstombs(benchmark::State& state)
{
    UseUtf8Locale();
    std::wstring const& wide = MixedWide();
    for (auto _ : state) {
        char* a = new char[4 * wide.size() + 1];
        benchmark::DoNotOptimize(wcstombs(a, wide.c_str(), 4 * wide.size() + 1));
        delete[] a;
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(MixedText().size()));
}
BENCHMARK(BM_WideToUtf8_Wcstombs);

void BM_WideToUtf8_HandLoop(benchmark::State& state)
{
    std::wstring const& wide = MixedWide();
    for (auto _ : state) {
        unsigned char* a = new unsigned char[4 * wide.size() + 1];
        size_t j = HandEncode(wide.data(), wide.size(), a);
        a[j] = 0;
        benchmark::DoNotOptimize(a);
        delete[] a;
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(MixedText().size()));
}
BENCHMARK(BM_WideToUtf8_HandLoop);

}  // namespace
