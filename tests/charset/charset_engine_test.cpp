// The conversion engine on real text. Built twice: PALVET_TEST_ENGINE_ICU
// runs it over ICU, PALVET_TEST_ENGINE_ICONV over iconv (a forwarding
// libiconv.so in Lib/ beside the program). The iconv program starts only
// iconv, so ICU stays unloaded there even though the system has it.

#include <palvet/charset/charset_convert.h>
#include <palvet/text/buffer.h>
#include <palvet/text/simple_string.h>

#include "support/test_support.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <fstream>
#include <string>

namespace {

#ifdef PALVET_TEST_ENGINE_ICONV
constexpr bool kIconv = true;
#else
constexpr bool kIconv = false;
#endif

std::string Wide(std::u32string const& text)
{
    static_assert(sizeof(wchar_t) == 4 && sizeof(char32_t) == 4, "32-bit wide text");
    return std::string(reinterpret_cast<char const*>(text.data()), text.size() * 4);
}

struct Result {
    int ok;
    std::string text;  // the bytes the engine wrote
    unsigned avail;    // the target's data size as the engine left it
};

// Converts into a fresh target of the given capacity. The bytes written are
// found from the data size: ICU gives the count, iconv the room left.
Result Convert(int from, std::string const& in, int to, unsigned capacity)
{
    std::string out(capacity, '\0');
    CBuffer source, target;
    source.BindBuffer(in.data(), static_cast<unsigned>(in.size()));
    target.BindBuffer(out.data(), capacity);
    int ok = ConvertCharset(static_cast<eCHARSETTYPE>(from), &source, static_cast<eCHARSETTYPE>(to), &target);
    unsigned avail = target.GetAvailSize();
    unsigned written = ok ? (kIconv ? capacity - avail : avail) : 0;
    return {ok, out.substr(0, written), avail};
}

std::string Slurp(std::string const& path)
{
    std::ifstream f(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(f), {});
}

class CharsetEngine : public ::testing::Test {
protected:
    void SetUp() override
    {
#ifdef PALVET_TEST_NO_ICU
        GTEST_SKIP() << "no ICU library of this architecture was found when configuring";
#endif
        palvet_test::StdoutCapture quiet;
        int up = kIconv ? InitSysLibICONV() : InitSysLibICU();
        log_ = quiet.Take();
        ASSERT_EQ(up, 1) << log_;
    }
    void TearDown() override { DeInitSysLibCodeConvert(); }
    std::string log_;
};

// 中文 一 in each set, with ASCII around.
std::string const kUtf8 = "A\xE4\xB8\xAD\xE6\x96\x87 \xE4\xB8\x80z";
struct Encoded {
    int type;
    std::string bytes;
} const kEncodings[] = {
    {CHARSET_GB2312, "A\xD6\xD0\xCE\xC4 \xD2\xBBz"},
    {CHARSET_GBK, "A\xD6\xD0\xCE\xC4 \xD2\xBBz"},
    {CHARSET_BIG5, "A\xA4\xA4\xA4\xE5 \xA4\x40z"},
    {CHARSET_UTF32, Wide(U"A\u4E2D\u6587 \u4E00z")},
    {CHARSET_UTF8, kUtf8},
};

TEST_F(CharsetEngine, RealTextBothWays)
{
    EXPECT_EQ(kIconv ? gLibIconvHandle != nullptr : gLibICUHandle != nullptr, true);
    EXPECT_EQ(kIconv ? gLibICUHandle : gLibIconvHandle, nullptr);
    if (!kIconv) {
        EXPECT_NE(log_.find("icu function version: "), std::string::npos) << log_;
    }
    EXPECT_NE(log_.find("/Lib/"), std::string::npos) << "loaded from beside the program: " << log_;

    for (Encoded const& e : kEncodings) {
        SCOPED_TRACE(e.type);
        Result there = Convert(CHARSET_UTF8, kUtf8, e.type, 64);
        EXPECT_EQ(there.ok, 1);
        EXPECT_EQ(there.text, e.bytes);
        Result back = Convert(e.type, e.bytes, CHARSET_UTF8, 64);
        EXPECT_EQ(back.ok, 1);
        EXPECT_EQ(back.text, kUtf8);
    }
    // Characters only GBK and Big5 have: 們 (traditional) and 镕 (simplified).
    EXPECT_EQ(Convert(CHARSET_UTF8, "\xE9\x95\x95", CHARSET_GBK, 8).text, "\xE9\x46");
    EXPECT_EQ(Convert(CHARSET_BIG5, "\xAD\xCC", CHARSET_UTF8, 8).text, "\xE5\x80\x91");
    // Unknown types are UTF-8.
    EXPECT_EQ(Convert(7, kUtf8, CHARSET_GB2312, 64).text, kEncodings[0].bytes);
    EXPECT_EQ(Convert(CHARSET_BIG5, kEncodings[2].bytes, -1, 64).text, kUtf8);
}

TEST_F(CharsetEngine, BadInput)
{
    {
        palvet_test::StdoutCapture capture;
        Result small = Convert(CHARSET_UTF8, kUtf8, CHARSET_GB2312, 5);
        EXPECT_EQ(small.ok, 0);
        EXPECT_EQ(small.avail, 0u);
        // ICU's buffer overflow status or iconv's E2BIG.
        std::string line = "Convert 0->2 error=" + std::to_string(kIconv ? E2BIG : 15) + "\n";
        EXPECT_NE(capture.Take().find(line), std::string::npos);
    }
    // ICU substitutes for invalid and truncated sequences and goes on;
    // iconv stops and fails.
    struct Case {
        char const* what;
        int from;
        std::string in;
        int to;
        int iconvErrno;
    } const cases[] = {
        {"invalid UTF-8", CHARSET_UTF8, "a\xFF" "b", CHARSET_GB2312, EILSEQ},
        {"lone GB lead", CHARSET_GB2312, "a\xD6" "b", CHARSET_UTF8, EILSEQ},
        {"truncated pair", CHARSET_GB2312, "ab\xD6", CHARSET_UTF8, EINVAL},
        {"truncated UTF-32", CHARSET_UTF32, Wide(U"ab").substr(0, 6), CHARSET_UTF8, EINVAL},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.what);
        palvet_test::StdoutCapture capture;
        Result r = Convert(c.from, c.in, c.to, 16);
        std::string log = capture.Take();
        if (kIconv) {
            EXPECT_EQ(r.ok, 0);
            EXPECT_EQ(r.avail, 0u);
            std::string line = "Convert " + std::to_string(c.from) + "->" + std::to_string(c.to) +
                               " error=" + std::to_string(c.iconvErrno) + "\n";
            EXPECT_NE(log.find(line), std::string::npos) << log;
        } else {
            EXPECT_EQ(r.ok, 1);
            ASSERT_GE(r.text.size(), 2u);
            EXPECT_EQ(r.text.front(), 'a');
            EXPECT_EQ(log, "");
        }
    }
}

TEST_F(CharsetEngine, NothingToConvertOrNowhereToPut)
{
    char storage[8] = "keep";
    CBuffer empty, source, target, bare;
    source.BindBuffer("abc", 3);
    target.BindBuffer(storage, sizeof storage);
    target.SetBuffer(nullptr, 2);
    EXPECT_EQ(ConvertCharset(CHARSET_UTF8, &empty, CHARSET_GBK, &target), 0);
    EXPECT_EQ(ConvertCharset(CHARSET_UTF8, &source, CHARSET_GBK, &bare), 0);
    EXPECT_EQ(target.GetAvailSize(), 2u);
    EXPECT_STREQ(storage, "keep");
}

TEST_F(CharsetEngine, WideTextHelpersAndCrossWidthEqual)
{
    wchar_t wide[8] = {};
    EXPECT_EQ(icu_mbstowcs(wide, 8, "a\xE4\xB8\xAD", -1), 1);  // terminator included
    EXPECT_STREQ(wide, L"a\u4E2D");
    // A negative length is taken from the narrow text already in dest.
    char narrow[8] = "xy";
    EXPECT_EQ(icu_wcstombs(narrow, 8, L"\u4E2Dq", -1), 1);  // 3 characters: 中, q, terminator
    EXPECT_EQ(std::string(narrow, 5), std::string("\xE4\xB8\xADq\0", 5));

    CSimpleStringA a;
    a.Set("\xE4\xB8\xAD", -1);
    EXPECT_EQ(a.Equal(L'\u4E2D', 0), 1);
    EXPECT_EQ(a.Equal(L'\u6587', 0), 0);
    CSimpleStringW w;
    w.Set(L"Q", -1);
    EXPECT_EQ(w.Equal('q', 1), 1);
    EXPECT_EQ(w.Equal('q', 0), 0);
    EXPECT_EQ(w.Equal('\xE4', 0), 0);  // half a character converts to nothing useful
}

TEST_F(CharsetEngine, SimplifiedTraditionalStrings)
{
    // 中国发展 <-> 中國發展: the same UTF-8 length both ways.
    char const* simplified = "\xE4\xB8\xAD\xE5\x9B\xBD\xE5\x8F\x91\xE5\xB1\x95 ok";
    char const* traditional = "\xE4\xB8\xAD\xE5\x9C\x8B\xE7\x99\xBC\xE5\xB1\x95 ok";
    CSimpleStringA a;
    a.Set(simplified, -1);
    a.ToTraditionalChinese();
    EXPECT_STREQ(a.GetString(), traditional);
    a.ToSimpleChinese();
    EXPECT_STREQ(a.GetString(), simplified);
    EXPECT_EQ(a.GetLength(), static_cast<int>(strlen(simplified)));

    CSimpleStringW w;
    w.Set(L"\u4E2D\u56FD\u53D1\u5C55", -1);
    w.ToTraditionalChinese();
    EXPECT_STREQ(w.GetString(), L"\u4E2D\u570B\u767C\u5C55");
    w.ToSimpleChinese();
    EXPECT_STREQ(w.GetString(), L"\u4E2D\u56FD\u53D1\u5C55");

    CSimpleStringA empty;
    empty.ToTraditionalChinese();
    EXPECT_EQ(empty.GetLength(), 0);
}

TEST_F(CharsetEngine, GbFilesBecomeUtf8)
{
    palvet_test::TempDir dir;
    std::string const gb = "x=\xD6\xD0\xCE\xC4\n";
    std::string const utf8 = "x=\xE4\xB8\xAD\xE6\x96\x87\n";
    std::ofstream(dir.File("a.txt"), std::ios::binary) << gb;
    std::ofstream(dir.File("plain.txt"), std::ios::binary) << "ascii only\n";
    std::ofstream(dir.File(".hidden"), std::ios::binary) << gb;
    std::ofstream(dir.File("empty"), std::ios::binary);
    ASSERT_EQ(mkdir(dir.File("out").c_str(), 0755), 0);
    ASSERT_EQ(mkdir(dir.File("sub").c_str(), 0755), 0);

    palvet_test::StdoutCapture quiet;
    ConvertGB2312ToUTF8_Folder(dir.path().c_str(), dir.File("out").c_str());
    ConvertGB2312ToUTF8_File(dir.File("a.txt").c_str(), dir.File("copy.txt").c_str());
    ConvertGB2312ToUTF8_File(dir.File("missing").c_str(), dir.File("none").c_str());
    quiet.Take();

    EXPECT_EQ(access(dir.File("none").c_str(), F_OK), -1);
    if (kIconv) {
        // The folder form needs ICU; the single file is written with the
        // unused capacity as its size, the engine's documented result.
        EXPECT_EQ(access(dir.File("out/a.txt").c_str(), F_OK), -1);
        std::string copy = Slurp(dir.File("copy.txt"));
        EXPECT_EQ(copy.size(), gb.size() * 4 - utf8.size());
        EXPECT_EQ(copy.substr(0, utf8.size()), utf8);
        return;
    }
    EXPECT_EQ(Slurp(dir.File("copy.txt")), utf8);
    EXPECT_EQ(Slurp(dir.File("out/a.txt")), utf8);
    EXPECT_EQ(Slurp(dir.File("out/plain.txt")), "ascii only\n");
    EXPECT_EQ(access(dir.File("out/.hidden").c_str(), F_OK), -1);
    EXPECT_EQ(access(dir.File("out/empty").c_str(), F_OK), -1);
    EXPECT_EQ(access(dir.File("out/sub").c_str(), F_OK), -1);

    // In place: read whole before it is written.
    ConvertGB2312ToUTF8_File(dir.File("a.txt").c_str(), dir.File("a.txt").c_str());
    EXPECT_EQ(Slurp(dir.File("a.txt")), utf8);
}

#ifdef PALVET_TEST_ENGINE_ICONV
TEST_F(CharsetEngine, IconvCacheRows)
{
    static char const* const rows[8][2] = {
        {"UTF-8", "WCHAR_T"}, {"WCHAR_T", "UTF-8"}, {"GB2312", "UTF-8"}, {"UTF-8", "GB2312"},
        {"BIG5", "UTF-8"},    {"UTF-8", "BIG5"},    {"GBK", "UTF-8"},    {"UTF-8", "GBK"},
    };
    for (int i = 0; i < 8; ++i) {
        EXPECT_STREQ(gDefaultIconvConvertInfo[i].szSource, rows[i][0]);
        EXPECT_STREQ(gDefaultIconvConvertInfo[i].szTarget, rows[i][1]);
        EXPECT_NE(gDefaultIconvConvertInfo[i].handle, reinterpret_cast<void*>(-1));
    }
    // Pairs outside the cache are opened on demand and still convert.
    EXPECT_EQ(FindIonvConvertHandle("GB2312", "GB2312"), -1);
    EXPECT_EQ(FindIonvConvertHandle("GB2312", "BIG5"), -1);
    EXPECT_EQ(Convert(CHARSET_GB2312, "\xD6\xD0", CHARSET_GB2312, 4).text, "\xD6\xD0");
    // Such a descriptor is opened with the names the other way round, so
    // the "GB2312 to BIG5" pair reads Big5 and writes GB2312.
    Result reversed = Convert(CHARSET_GB2312, "\xA4\xA4", CHARSET_BIG5, 4);
    EXPECT_EQ(reversed.text, "\xD6\xD0");
    EXPECT_EQ(reversed.avail, 2u);  // the room left: 4 - 2
}
#else
TEST_F(CharsetEngine, IcuRestart)
{
    DeInitSysLibICU();
    EXPECT_EQ(gGB2312Convert, nullptr);
    EXPECT_EQ(Convert(CHARSET_UTF8, "a", CHARSET_GBK, 4).ok, 0);
    palvet_test::StdoutCapture quiet;
    EXPECT_EQ(InitSysLibCodeConvert(), 1);
    quiet.Take();
    EXPECT_EQ(gLibIconvHandle, nullptr);  // ICU first; iconv not tried
    EXPECT_EQ(Convert(CHARSET_UTF8, "a", CHARSET_GBK, 4).text, "a");
}
#endif

}  // namespace
