#include <palvet/text/buffer.h>
#include <palvet/text/simple_string.h>

#include <gtest/gtest.h>

#include <cstring>
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

// The fields as applications built against the classes expect them: the
// virtual table pointer (the destructor is the only virtual), then the data
// members in order.
struct StringFields {
    void const* vtable;
    void const* data;
    int length, capacity;
};

struct BufferFields {
    void const* vtable;
    void const* data;
    unsigned int capacity, length;
    int bound;
};

template <class Fields, class Object>
Fields Peek(Object const& object)
{
    static_assert(sizeof(Object) == sizeof(Fields), "unexpected members");
    Fields f;
    memcpy(&f, static_cast<void const*>(&object), sizeof f);
    return f;
}

}  // namespace

TEST(SimpleStringTest, LayoutMatchesTheInterface)
{
    CSimpleStringW w;
    w.Set(L"abc", -1);
    auto fw = Peek<StringFields>(w);
    EXPECT_EQ(fw.data, w.GetString());
    EXPECT_EQ(fw.length, 3);
    EXPECT_EQ(fw.capacity, 4);
    EXPECT_EQ(sizeof(CSimpleStringA), sizeof(StringFields));

    CBuffer b;
    b.SetBuffer(nullptr, 9);
    b.SetBuffer("xy", 2);
    auto fb = Peek<BufferFields>(b);
    EXPECT_EQ(fb.data, b.GetBuffer());
    EXPECT_EQ(fb.capacity, 9u);
    EXPECT_EQ(fb.length, 2u);
    EXPECT_EQ(fb.bound, 0);
}

TEST(SimpleStringTest, SettingAndAppendingOwnText)
{
    CSimpleStringA a;
    EXPECT_STREQ(a.GetString(), "");
    a.Set("abcdef", -1);
    a.Set(a.GetString() + 2, -1);
    EXPECT_EQ(Str(a), "cdef");
    a.Append(a.GetString(), -1);  // grows while reading its old storage
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
    a.Set(static_cast<wchar_t>(0x1F600));
    a.Append(L'z');
    EXPECT_EQ(Str(a), "\xF0\x9F\x98\x80z");

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
    StdoutCapture capture;
    one.Append(static_cast<char>(0xE9));
    EXPECT_EQ(capture.Take(), "error AllocCopyWStringFromAString, j + 3 > nLength\n");
    EXPECT_EQ(Str(one), std::wstring({static_cast<wchar_t>(0x80), static_cast<wchar_t>(0x9000)}));
}

TEST(SimpleStringTest, FormattingShortLongAndZeroCharacters)
{
    CSimpleStringA a;
    a.Format("%d-%s", 7, "x");
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
    CSimpleStringA abc, empty, hidden;
    abc.Set("abc", -1);
    hidden.Set("a\0x", 3);
    EXPECT_EQ(abc.Equal("ABC", -1, 1), 1);
    EXPECT_EQ(abc.Equal("ABC", -1, 0), 0);
    EXPECT_EQ(abc.Equal("abcd", 3, 0), 1);
    EXPECT_EQ(abc.Equal(static_cast<char const*>(nullptr), -1, 0), 0);
    EXPECT_EQ(abc.Equal(L"aBc", -1, 1), 1);
    EXPECT_EQ(abc.Equal(&abc, 0), 1);
    EXPECT_EQ(abc.Equal(static_cast<CSimpleStringA const*>(nullptr), 0), 0);
    EXPECT_EQ(empty.Equal(static_cast<char const*>(nullptr), -1, 0), 1);
    EXPECT_EQ(hidden.Equal("a\0y", 3, 0), 1);  // the comparison stops at a zero

    CSimpleStringW e;
    e.Set(L"\u00E9", -1);
    CSimpleStringA narrowE(&e);
    EXPECT_EQ(e.Equal("\xC3\xA9", 2, 0), 0);  // a byte count is a character count
    EXPECT_EQ(e.Equal("\xC3\xA9", -1, 0), 1);
    EXPECT_EQ(e.Equal(&narrowE, 0), 0);
    EXPECT_EQ(narrowE.Equal(&e, 0), 1);
    EXPECT_EQ(e.Equal(L'\u00E9', 0), 1);
}

TEST(SimpleStringTest, ReplaceCornerCases)
{
    struct Case {
        char const *text, *find, *replacement;
        int nocase;
        char const* result;
    } const cases[] = {
        {"aaaa", "aa", "b", 0, "bb"}, {"aaa", "a", "aa", 0, "aaaaaa"}, {"xyx", "x", "", 0, "y"},
        {"abAB", "AB", "z", 1, "zz"}, {"abAB", "AB", "z", 0, "abz"},   {"abc", "", "z", 0, "abc"},
        {"abc", "d", "z", 0, "abc"},  {"abc", "abc", "", 0, ""},
    };
    for (Case const& c : cases) {
        CSimpleStringA s;
        s.Set(c.text, -1);
        s.Replace(c.find, c.replacement, c.nocase);
        EXPECT_EQ(Str(s), c.result) << c.text << " / " << c.find;
    }
    CSimpleStringA tail;  // text behind a zero character is kept, unsearched
    tail.Set("ab\0ab", 5);
    tail.Replace("b", "xy", 0);
    EXPECT_EQ(Str(tail), std::string("axy\0ab", 6));
    CSimpleStringA none;
    none.Replace("a", "b", 0);
    EXPECT_EQ(none.GetLength(), 0);

    CSimpleStringW w;
    w.Set(L"\u4E2D-\u00E9-\u4E2D", -1);
    w.Replace(L"\u4E2D", L"<\u6587>", 0);
    w.Replace("-\xC3\xA9", "", 0);
    EXPECT_EQ(Str(w), L"<\u6587>-<\u6587>");
}

TEST(SimpleStringTest, ClassificationAndCase)
{
    for (char const* yes : {"0123", ""})
        EXPECT_EQ(IsDigitString(yes), 1) << yes;
    for (char const* no : {"12a", "1.5", "/", ":"})
        EXPECT_EQ(IsDigitString(no), 0) << no;
    for (char const* yes : {"AbZz", ""})
        EXPECT_EQ(IsAlphaString(yes), 1) << yes;
    for (char const* no : {"a b", "@", "[", "`", "{", "\xC3\xA9"})
        EXPECT_EQ(IsAlphaString(no), 0) << no;
    EXPECT_EQ(IsDigitString(static_cast<char const*>(nullptr)), 0);
    EXPECT_EQ(IsDigitString(L"\u0661"), 0);  // other scripts' digits do not count
    EXPECT_EQ(IsAlphaString(L"x\u00C1"), 0);

    char text[] = "\xC3\xBC-x1Q@[";
    ToUpperString(text);
    EXPECT_STREQ(text, "\xC3\xBC-X1Q@[");
    ToLowerString(text);
    EXPECT_STREQ(text, "\xC3\xBC-x1q@[");
    wchar_t wide[] = L"\u00FCa`{Z";
    ToUpperString(wide);
    EXPECT_STREQ(wide, L"\u00FCA`{Z");
    ToLowerString(static_cast<char*>(nullptr));

    // The members look at the storage: none is not digits, an empty text in
    // storage is.
    CSimpleStringA s;
    EXPECT_EQ(s.IsDigit(), 0);
    s.Set("12", -1);
    s.Trunk(0);
    EXPECT_EQ(s.IsDigit(), 1);
    CSimpleStringW sw;
    sw.ToUpper();
    sw.Set(L"abc", -1);
    sw.ToUpper();
    EXPECT_EQ(Str(sw), L"ABC");
}
