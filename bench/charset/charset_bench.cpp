// ConvertCharset next to calling ICU's ucnv_convertEx directly with the same
// converters (the engine's overhead), and the simplified/traditional table
// conversions, all over 1 MiB of text. ICU is opened the way applications
// open it, through InitSysLibICU.
#include <palvet/charset/charset_convert.h>
#include <palvet/text/buffer.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <string>

namespace {

constexpr size_t kSize = 1 << 20;

// GB2312 text: every level-1 hanzi in turn, a space and a digit after every
// eight characters.
std::string const& GbText()
{
    static std::string text = [] {
        std::string s;
        unsigned lead = 0xB0, trail = 0xA1, n = 0;
        while (s.size() + 2 <= kSize) {
            s += static_cast<char>(lead);
            s += static_cast<char>(trail);
            if (++trail > 0xFE) {
                trail = 0xA1;
                lead = lead == 0xD7 ? 0xB0 : lead + 1;
            }
            if (++n % 8 == 0 && s.size() + 2 <= kSize)
                s += " 7";
        }
        s.resize(kSize, ' ');
        return s;
    }();
    return text;
}

// Big5 text: the common traditional characters (leads 0xA4..0xC6).
std::string const& Big5Text()
{
    static std::string text = [] {
        std::string s;
        unsigned lead = 0xA4, trail = 0x40;
        while (s.size() + 2 <= kSize) {
            s += static_cast<char>(lead);
            s += static_cast<char>(trail);
            trail = trail == 0x7E ? 0xA1 : trail + 1;
            if (trail > 0xFE) {
                trail = 0x40;
                lead = lead == 0xC5 ? 0xA4 : lead + 1;
            }
        }
        s.resize(kSize, ' ');
        return s;
    }();
    return text;
}

bool StartIcu(benchmark::State& state)
{
    if (gLibICUHandle != nullptr)
        return true;
    // The engine logs where it found ICU; keep that out of the report.
    std::fflush(stdout);
    int saved = dup(STDOUT_FILENO);
    int null = open("/dev/null", O_WRONLY);
    dup2(null, STDOUT_FILENO);
    int up = InitSysLibICU();
    std::fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(null);
    close(saved);
    if (!up)
        state.SkipWithError("ICU cannot be loaded");
    return up != 0;
}

std::string Utf8Of(std::string const& big5)
{
    std::string out(big5.size() * 2, '\0');
    CBuffer in, target;
    in.BindBuffer(big5.data(), static_cast<unsigned>(big5.size()));
    target.BindBuffer(out.data(), static_cast<unsigned>(out.size()));
    ConvertCharset(CHARSET_BIG5, &in, CHARSET_UTF8, &target);
    out.resize(target.GetAvailSize());
    return out;
}

void Engine(benchmark::State& state, eCHARSETTYPE from, std::string const& text, eCHARSETTYPE to)
{
    std::string out(text.size() * 2, '\0');
    for (auto _ : state) {
        CBuffer in, target;
        in.BindBuffer(text.data(), static_cast<unsigned>(text.size()));
        target.BindBuffer(out.data(), static_cast<unsigned>(out.size()));
        if (!ConvertCharset(from, &in, to, &target))
            state.SkipWithError("conversion failed");
        benchmark::DoNotOptimize(target.GetAvailSize());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void Direct(benchmark::State& state, UConverter* from, std::string const& text, UConverter* to)
{
    std::string out(text.size() * 2, '\0');
    for (auto _ : state) {
        char* target = out.data();
        char const* source = text.data();
        int status = 0;
        gfnUcnvConvertEx(to, from, &target, out.data() + out.size(), &source, text.data() + text.size(), nullptr,
                         nullptr, nullptr, nullptr, 1, 1, &status);
        if (status > 0)
            state.SkipWithError("conversion failed");
        benchmark::DoNotOptimize(target);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void BM_Gb2312ToUtf8_ConvertCharset(benchmark::State& state)
{
    if (StartIcu(state))
        Engine(state, CHARSET_GB2312, GbText(), CHARSET_UTF8);
}
BENCHMARK(BM_Gb2312ToUtf8_ConvertCharset);

void BM_Gb2312ToUtf8_IcuDirect(benchmark::State& state)
{
    if (StartIcu(state))
        Direct(state, gGB2312Convert, GbText(), gUTF8Convert);
}
BENCHMARK(BM_Gb2312ToUtf8_IcuDirect);

void BM_Utf8ToBig5_ConvertCharset(benchmark::State& state)
{
    if (!StartIcu(state))
        return;
    static std::string const utf8 = Utf8Of(Big5Text());
    Engine(state, CHARSET_UTF8, utf8, CHARSET_BIG5);
}
BENCHMARK(BM_Utf8ToBig5_ConvertCharset);

void BM_Utf8ToBig5_IcuDirect(benchmark::State& state)
{
    if (!StartIcu(state))
        return;
    static std::string const utf8 = Utf8Of(Big5Text());
    Direct(state, gUTF8Convert, utf8, gBIG5Convert);
}
BENCHMARK(BM_Utf8ToBig5_IcuDirect);

void Table(benchmark::State& state, void (*fn)(char const*, int, char*, int), std::string const& text)
{
    std::string out(text.size(), '\0');
    for (auto _ : state) {
        fn(text.data(), static_cast<int>(text.size()), out.data(), static_cast<int>(out.size()));
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void BM_Big5ToGbA(benchmark::State& state)
{
    Table(state, Big5ToGbA, Big5Text());
}
BENCHMARK(BM_Big5ToGbA);

void BM_GbToBig5A(benchmark::State& state)
{
    Table(state, GbToBig5A, GbText());
}
BENCHMARK(BM_GbToBig5A);

// Mostly ASCII with a Chinese pair now and then, as in file names and menus.
void BM_GbToBig5A_MostlyAscii(benchmark::State& state)
{
    static std::string const text = [] {
        std::string s;
        while (s.size() + 32 <= kSize)
            s += "/media/usb0/Music/track_01.mp3\xB0\xA1";
        s.resize(kSize, ' ');
        return s;
    }();
    Table(state, GbToBig5A, text);
}
BENCHMARK(BM_GbToBig5A_MostlyAscii);

}  // namespace
