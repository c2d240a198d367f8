#include <palvet/text/simple_string.h>

#include <gtest/gtest.h>

#include <string>

#include "support/test_support.h"

using palvet_test::StdoutCapture;

namespace {

std::string Str(CSimpleStringA const& s)
{
    return std::string(s.GetString(), static_cast<size_t>(s.GetLength()));
}

std::wstring Str(CSimpleStringW const& s)
{
    return std::wstring(s.GetString(), static_cast<size_t>(s.GetLength()));
}

}  // namespace

TEST(SimpleStringTest, SettingAndAppendingOwnText)
{
    CSimpleStringA a;
    EXPECT_STREQ(a.GetString(), "");
    EXPECT_EQ(a.GetLength(), 0);
    a.Set("abcdef", -1);
    a.Set(a.GetString() + 2, -1);
    EXPECT_EQ(Str(a), "cdef");
    a.Append(a.GetString(), -1);  // grows while reading its old storage
    EXPECT_EQ(Str(a), "cdefcdef");
    a.Append(a.GetString() + 6, 2);  // fits in place
    EXPECT_EQ(Str(a), "cdefcdefef");
    a.Set(a.GetString(), 0);
    EXPECT_EQ(a.GetLength(), 0);

    CSimpleStringW w;
    w.Set(L"xyz", 2);
    w.Append(L'!');
    w.Append("\xC3\xA9", -1);
    w.Append(w.GetString(), 2);
    EXPECT_EQ(Str(w), L"xy!\u00E9xy");
    w.Set(static_cast<wchar_t const*>(nullptr), 3);
    EXPECT_STREQ(w.GetString(), L"");
}

TEST(SimpleStringTest, ConvertingSetsAndCopies)
{
    CSimpleStringA a;
    a.Set(L"\u00E9\u20AC", -1);
    EXPECT_EQ(Str(a), "\xC3\xA9\xE2\x82\xAC");
    CSimpleStringW w(&a);
    EXPECT_EQ(Str(w), L"\u00E9\u20AC");
    CSimpleStringA back(&w);
    EXPECT_EQ(Str(back), Str(a));

    // Copies pass the length, except the wide copy constructor.
    CSimpleStringW zeroed;
    zeroed.Set(L"ab\0cd", 5);
    CSimpleStringW copied(&zeroed);
    EXPECT_EQ(Str(copied), L"ab");
    copied.Set(&zeroed);
    EXPECT_EQ(copied.GetLength(), 5);
    CSimpleStringA narrow;
    narrow.Set("ab\0cd", 5);
    CSimpleStringA narrowCopy(&narrow);
    EXPECT_EQ(narrowCopy.GetLength(), 5);

    // A lone narrow character is decoded like one-byte UTF-8.
    CSimpleStringW one;
    one.Set(static_cast<char>(0x80));
    EXPECT_EQ(Str(one), std::wstring(1, static_cast<wchar_t>(0x80)));
    StdoutCapture capture;
    one.Append(static_cast<char>(0xE9));
    EXPECT_EQ(capture.Take(), "error AllocCopyWStringFromAString, j + 3 > nLength\n");
    EXPECT_EQ(one.GetString()[1], static_cast<wchar_t>(0x9000));

    CSimpleStringA fromChar;
    fromChar.Set(static_cast<wchar_t>(0x20AC));
    fromChar.Append(L'z');
    EXPECT_EQ(Str(fromChar), "\xE2\x82\xACz");
}

TEST(SimpleStringTest, FormattingShortLongAndZeroCharacters)
{
    CSimpleStringA a;
    a.Format("%d-%s", 7, "x");
    EXPECT_EQ(Str(a), "7-x");
    a.AppendFormat("[%05.1f]", 2.5);
    EXPECT_EQ(Str(a), "7-x[002.5]");
    a.Format("%c%c%c", 'a', 0, 'b');  // the narrow count keeps the zero
    EXPECT_EQ(a.GetLength(), 3);

    std::string const longText(3000, 'q');
    a.Format("<%s>", longText.c_str());
    EXPECT_EQ(Str(a), "<" + longText + ">");
    a.Format(L"%ls%d", std::wstring(3000, L'\u00E9').c_str(), 5);
    EXPECT_EQ(a.GetLength(), 6001);
    EXPECT_EQ(a.GetString()[6000], '5');

    CSimpleStringW w;
    w.Format(L"%lc%lc%lc", L'a', L'\0', L'b');  // the wide forms end at a zero
    EXPECT_EQ(Str(w), L"a");
    w.Format(L"%ls|", std::wstring(3000, L'w').c_str());
    EXPECT_EQ(w.GetLength(), 3001);
    w.AppendFormat("%s%c", "\xE2\x82\xAC", 0);
    EXPECT_EQ(w.GetLength(), 3002);
    EXPECT_EQ(w.GetString()[3001], static_cast<wchar_t>(0x20AC));

    // Text the C library can never format ends the attempt; Format leaves an
    // empty string, AppendFormat the string as it was.
    w.AppendFormat(L"%s", "\xC3\xA9");
    EXPECT_EQ(w.GetLength(), 3002);
    w.Format(L"%s", "\xC3\xA9");
    EXPECT_EQ(w.GetLength(), 0);
}

TEST(SimpleStringTest, EqualityForms)
{
    CSimpleStringA abc;
    abc.Set("abc", -1);
    EXPECT_EQ(abc.Equal("ABC", -1, 1), 1);
    EXPECT_EQ(abc.Equal("ABC", -1, 0), 0);
    EXPECT_EQ(abc.Equal("abcd", 3, 0), 1);
    EXPECT_EQ(abc.Equal("ab", -1, 0), 0);
    EXPECT_EQ(abc.Equal(static_cast<char const*>(nullptr), -1, 0), 0);
    EXPECT_EQ(abc.Equal(L"aBc", -1, 1), 1);
    EXPECT_EQ(abc.Equal(&abc, 0), 1);
    EXPECT_EQ(abc.Equal(static_cast<CSimpleStringA const*>(nullptr), 0), 0);

    CSimpleStringA empty;
    EXPECT_EQ(empty.Equal(static_cast<char const*>(nullptr), -1, 0), 1);
    EXPECT_EQ(empty.Equal("", 0, 0), 1);

    CSimpleStringA hidden;  // the comparison stops at a zero character
    hidden.Set("a\0x", 3);
    EXPECT_EQ(hidden.Equal("a\0y", 3, 0), 1);

    CSimpleStringW e;
    e.Set(L"\u00E9", -1);
    EXPECT_EQ(e.Equal("\xC3\xA9", 2, 0), 0);  // a byte count is a character count
    EXPECT_EQ(e.Equal("\xC3\xA9", -1, 0), 1);
    CSimpleStringA narrowE(&e);
    EXPECT_EQ(e.Equal(&narrowE, 0), 0);
    EXPECT_EQ(narrowE.Equal(&e, 0), 1);
    EXPECT_EQ(e.Equal(L'\u00E9', 0), 1);
    EXPECT_EQ(abc.Equal('a', 0), 0);
}

TEST(SimpleStringTest, ReplaceCornerCases)
{
    struct Case {
        char const* text;
        char const* find;
        char const* replacement;
        int nocase;
        char const* result;
    } const cases[] = {
        {"aaaa", "aa", "b", 0, "bb"},     {"aaa", "a", "aa", 0, "aaaaaa"},
        {"xyx", "x", "", 0, "y"},         {"abAB", "AB", "z", 1, "zz"},
        {"abAB", "AB", "z", 0, "abz"},    {"abc", "", "z", 0, "abc"},
        {"abc", "d", "z", 0, "abc"},      {"abc", "abc", "", 0, ""},
    };
    for (Case const& c : cases) {
        CSimpleStringA s;
        s.Set(c.text, -1);
        s.Replace(c.find, c.replacement, c.nocase);
        EXPECT_EQ(Str(s), c.result) << c.text << " / " << c.find;
    }

    CSimpleStringA none;
    none.Replace("", "x", 0);
    none.Replace("a", nullptr, 0);
    EXPECT_EQ(none.GetLength(), 0);

    CSimpleStringA tail;  // text behind a zero character is kept, unsearched
    tail.Set("ab\0ab", 5);
    tail.Replace("b", "xy", 0);
    EXPECT_EQ(Str(tail), std::string("axy\0ab", 6));

    CSimpleStringW w;
    w.Set(L"\u4E2D-\u00E9-\u4E2D", -1);
    w.Replace(L"\u4E2D", L"<\u6587>", 0);
    EXPECT_EQ(Str(w), L"<\u6587>-\u00E9-<\u6587>");
    w.Replace("-\xC3\xA9", "", 0);
    EXPECT_EQ(Str(w), L"<\u6587>-<\u6587>");
}

TEST(SimpleStringTest, ClassificationAndCase)
{
    EXPECT_EQ(IsDigitString("0123"), 1);
    EXPECT_EQ(IsDigitString("12a"), 0);
    EXPECT_EQ(IsDigitString("1.5"), 0);
    EXPECT_EQ(IsDigitString(""), 1);
    EXPECT_EQ(IsDigitString(static_cast<char const*>(nullptr)), 0);
    EXPECT_EQ(IsDigitString(L"\u0661"), 0);  // other scripts' digits do not count
    EXPECT_EQ(IsAlphaString("AbZz"), 1);
    EXPECT_EQ(IsAlphaString("a b"), 0);
    for (char const* neighbour : {"@", "[", "`", "{"})
        EXPECT_EQ(IsAlphaString(neighbour), 0) << neighbour;
    EXPECT_EQ(IsAlphaString("\xC3\xA9"), 0);
    EXPECT_EQ(IsAlphaString(L"x\u00C1"), 0);
    EXPECT_EQ(IsAlphaString(static_cast<wchar_t const*>(nullptr)), 0);

    char text[] = "\xC3\xBC-x1Q";
    ToUpperString(text);
    EXPECT_STREQ(text, "\xC3\xBC-X1Q");
    ToLowerString(text);
    EXPECT_STREQ(text, "\xC3\xBC-x1q");
    wchar_t wide[] = L"\u00FCa@Z[";
    ToUpperString(wide);
    EXPECT_STREQ(wide, L"\u00FCA@Z[");
    ToLowerString(wide);
    EXPECT_STREQ(wide, L"\u00FCa@z[");
    ToLowerString(static_cast<char*>(nullptr));

    // The members look at the storage: none is not digits, an empty text in
    // storage is.
    CSimpleStringA s;
    EXPECT_EQ(s.IsDigit(), 0);
    EXPECT_EQ(s.IsAlpha(), 0);
    s.Set("12", -1);
    s.Trunk(0);
    EXPECT_EQ(s.IsDigit(), 1);
    s.Set("MiXed", -1);
    s.ToLower();
    EXPECT_EQ(Str(s), "mixed");
    CSimpleStringW sw;
    sw.ToUpper();
    EXPECT_EQ(sw.IsAlpha(), 0);
    sw.Set(L"abc", -1);
    sw.ToUpper();
    EXPECT_EQ(Str(sw), L"ABC");
    EXPECT_EQ(sw.IsAlpha(), 1);
}
