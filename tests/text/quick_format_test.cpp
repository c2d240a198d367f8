// The quick formatter against the C library's vsnprintf: random
// conversions over every flag, width, precision and length it takes, with
// values at the edges of each type. Where it formats, the text and count
// must be the library's; where it gives up, the caller uses the library.
#include <palvet/text/quick_format_internal.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <sys/types.h>

using palvet::detail::QuickFormat;

namespace {

int Quick(char* out, size_t size, char const* format, ...)
{
    va_list args;
    va_start(args, format);
    int const r = QuickFormat(out, size, format, args);
    va_end(args);
    return r;
}

// Both formatters on the same arguments; the quick one's count (-1 when it
// gave up) after checking it against the library.
template <class... A>
int Compare(std::string const& format, A... args)
{
    char quick[256], libc[256];
    int const q = Quick(quick, sizeof quick, format.c_str(), args...);
    int const l = snprintf(libc, sizeof libc, format.c_str(), args...);
    if (q >= 0) {
        EXPECT_EQ(q, l) << format;
        EXPECT_STREQ(quick, libc) << format;
    }
    return q;
}

// With the '*' arguments the format asks for in front of the value.
template <class T>
int CompareWith(std::string const& f, bool star_width, bool star_precision, int w, int p, T v)
{
    if (star_width && star_precision)
        return Compare(f, w, p, v);
    if (star_width)
        return Compare(f, w, v);
    if (star_precision)
        return Compare(f, p, v);
    return Compare(f, v);
}

}  // namespace

#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat"

TEST(QuickFormat, IntegerConversionsMatchTheCLibrary)
{
    std::mt19937_64 rng(3);
    char const* const flags = "-+ #0";
    char const* const convs = "diuoxX";
    long long const edges[] = {0, 1, -1, 7, 8, 9, 10, 15, 16, 99, 100, 127, -128, 255, 32767, -32768,
                               65535, INT_MAX, INT_MIN, UINT_MAX, LLONG_MAX, LLONG_MIN};
    int formatted = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string f = "<%";
        for (int i = 0; i < 5; ++i)
            if (rng() % 4 == 0)
                f += flags[i];
        bool const star_width = rng() % 8 == 0;
        if (star_width)
            f += '*';
        else if (rng() % 2)
            f += std::to_string(rng() % 25);
        bool const star_precision = rng() % 8 == 0;
        if (star_precision)
            f += ".*";
        else if (rng() % 3 == 0)
            f += "." + (rng() % 4 == 0 ? std::string() : std::to_string(rng() % 25));
        char const* const lengths[] = {"", "hh", "h", "l", "ll", "j", "z", "t"};
        std::string const len = lengths[rng() % 8];
        char const conv = convs[rng() % 6];
        f += len + conv + ">";
        long long const v = rng() % 3 == 0 ? edges[rng() % (sizeof edges / sizeof edges[0])]
                                           : static_cast<long long>(rng()) >> (rng() % 64);
        int const w = static_cast<int>(rng() % 41) - 20, p = static_cast<int>(rng() % 41) - 20;
        // Arguments of the type the length modifier reads (long, size_t and
        // ptrdiff_t are 32 bits on the device).
        int q;
        if (len == "l")
            q = CompareWith(f, star_width, star_precision, w, p, static_cast<long>(v));
        else if (len == "ll")
            q = CompareWith(f, star_width, star_precision, w, p, v);
        else if (len == "j")
            q = CompareWith(f, star_width, star_precision, w, p, static_cast<intmax_t>(v));
        else if (len == "z")
            q = CompareWith(f, star_width, star_precision, w, p, static_cast<ssize_t>(v));
        else if (len == "t")
            q = CompareWith(f, star_width, star_precision, w, p, static_cast<ptrdiff_t>(v));
        else
            q = CompareWith(f, star_width, star_precision, w, p, static_cast<int>(v));
        formatted += q >= 0;
        if (HasFailure())
            break;
    }
    // Most of the combinations are its to format.
    EXPECT_GT(formatted, 10000);
}

TEST(QuickFormat, TextConversionsAndGivingUp)
{
    for (char const* f : {"%s", "%10s", "%-10s|", "%.3s", "%8.2s", "%-*s|", "%.*s", "%c", "%5c", "%-5c|",
                          "a%%b", "%s%s"}) {
        if (std::string(f).find('*') != std::string::npos)
            EXPECT_GE(Compare(f, 7, "hello"), 0) << f;
        else if (std::string(f).find('c') != std::string::npos)
            EXPECT_GE(Compare(f, 'x'), 0) << f;
        else
            EXPECT_GE(Compare(f, "hello", "world"), 0) << f;
    }
    EXPECT_GE(Compare("%c%c", 0x141, -1), 0);  // converted to unsigned char

    char out[64];
    // The conversions it leaves to the C library, and text that does not fit.
    EXPECT_EQ(Quick(out, sizeof out, "%f", 1.5), -1);
    EXPECT_EQ(Quick(out, sizeof out, "%p", out), -1);
    EXPECT_EQ(Quick(out, sizeof out, "%s", static_cast<char const*>(nullptr)), -1);
    EXPECT_EQ(Quick(out, sizeof out, "%1$d", 5), -1);
    EXPECT_EQ(Quick(out, sizeof out, "%'d", 5), -1);
    EXPECT_EQ(Quick(out, sizeof out, "%ls", L"x"), -1);
    EXPECT_EQ(Quick(out, sizeof out, "%05s", "x"), -1);
    EXPECT_EQ(Quick(out, sizeof out, "%#d", 5), -1);
    EXPECT_EQ(Quick(out, sizeof out, "trailing %"), -1);
    EXPECT_EQ(Quick(out, 6, "123456"), -1);
    EXPECT_EQ(Quick(out, 7, "123456"), 6);
    EXPECT_EQ(Quick(out, 4, "%5d", 1), -1);
    EXPECT_EQ(Quick(out, sizeof out, "%99999999d", 1), -1);
}
