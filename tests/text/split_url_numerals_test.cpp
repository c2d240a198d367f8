// Splitting, URL encoding and Chinese numerals.
#include <palvet/palvet.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

template <class Ch>
std::vector<std::basic_string<Ch>> Pieces(CPtrCtrl& list)
{
    std::vector<std::basic_string<Ch>> out;
    for (int i = 0; i < list.GetCount(); ++i)
        out.emplace_back(static_cast<Ch const*>(list.GetAt(i)));
    return out;
}

using Strings = std::vector<std::string>;

Strings SplitChars(char const* text, int skipEmpty, int maxPieces = 0, char const* seps = ",")
{
    CPtrListCtrl list;
    char* copy = DevideStringByCharListA(text, -1, seps, static_cast<int>(strlen(seps)), skipEmpty,
                                         &list, maxPieces);
    Strings out = Pieces<char>(list);
    Internal_DelArrayA(copy);
    return out;
}

TEST(Split, ByCharacters)
{
    EXPECT_EQ(SplitChars("a,,b", 0), (Strings{"a", "", "b"}));
    EXPECT_EQ(SplitChars("a,,b", 1), (Strings{"a", "b"}));
    EXPECT_EQ(SplitChars("a,b,", 0), (Strings{"a", "b"}));
    EXPECT_EQ(SplitChars("a,b,", 1), (Strings{"a", "b"}));
    EXPECT_EQ(SplitChars(",a", 0), (Strings{"", "a"}));
    EXPECT_EQ(SplitChars(",,,", 1), Strings{});
    EXPECT_EQ(SplitChars("", 0), Strings{});
    EXPECT_EQ(SplitChars("a b\tc", 1, 0, " \t"), (Strings{"a", "b", "c"}));
    EXPECT_EQ(SplitChars("a,b,c,d", 0, 2), (Strings{"a", "b,c,d"}));
    EXPECT_EQ(SplitChars("a,b,c,d", 0, 1), (Strings{"a,b,c,d"}));
}

TEST(Split, LimitCountsWhatTheCollectionHeldAndCopyIsCounted)
{
    CPtrArrayCtrl list;
    int before = 1;
    list.AddData(&before, -1);
    char* copy = DevideStringByCharListA("a,b,c", -1, ",", 1, 0, &list, 2);
    ASSERT_EQ(list.GetCount(), 2);
    EXPECT_STREQ(static_cast<char const*>(list.GetAt(1)), "a,b,c");
    Internal_DelArrayA(copy);

    // Only count characters are copied, even from a longer text.
    CPtrListCtrl l2;
    copy = DevideStringByCharListA("ab,cd,ef", 4, ",", 1, 0, &l2, 0);
    EXPECT_EQ(Pieces<char>(l2), (Strings{"ab", "c"}));
    Internal_DelArrayA(copy);
    EXPECT_EQ(DevideStringByCharListA(nullptr, 1, ",", 1, 0, &l2, 0), nullptr);
    EXPECT_EQ(DevideStringByCharListA("a", 1, ",", 1, 0, nullptr, 0), nullptr);
}

TEST(Split, WideByCharacters)
{
    CPtrListCtrl list;
    wchar_t* copy = DevideStringByCharListW(L"x;;y;", -1, L";", 1, 0, &list, 0);
    EXPECT_EQ(Pieces<wchar_t>(list), (std::vector<std::wstring>{L"x", L"", L"y"}));
    Internal_DelArrayW(copy);
    CPtrListCtrl counted;
    copy = DevideStringByCharListW(L"ab;cd", 2, L";", 1, 0, &counted, 0);
    EXPECT_EQ(Pieces<wchar_t>(counted), (std::vector<std::wstring>{L"ab"}));
    Internal_DelArrayW(copy);
}

TEST(Split, ByStrings)
{
    char const* seps[] = {";", nullptr, ";;"};
    CPtrListCtrl list;
    char* copy = DevideStringByStringListA("k=v;;x=y", -1, seps, 3, &list);
    EXPECT_EQ(Pieces<char>(list), (Strings{"k=v", "x=y"}));
    Internal_DelArrayA(copy);

    char const* crlf[] = {"\r\n", "\n"};
    CPtrListCtrl lines;
    copy = DevideStringByStringListA("\r\na\n\nb\r\n", -1, crlf, 2, &lines);
    EXPECT_EQ(Pieces<char>(lines), (Strings{"", "a", "", "b"}));
    Internal_DelArrayA(copy);

    CPtrListCtrl none;
    copy = DevideStringByStringListA("abc", -1, seps, 0, &none);
    EXPECT_EQ(Pieces<char>(none), (Strings{"abc"}));
    Internal_DelArrayA(copy);
    copy = DevideStringByStringListA("", 0, seps, 3, &none);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(none.GetCount(), 1);  // the earlier piece only
    Internal_DelArrayA(copy);

    wchar_t const* wseps[] = {L"--"};
    CPtrListCtrl wide;
    wchar_t* wcopy = DevideStringByStringListW(L"a--b----c", -1, wseps, 1, &wide);
    EXPECT_EQ(Pieces<wchar_t>(wide), (std::vector<std::wstring>{L"a", L"b", L"", L"c"}));
    Internal_DelArrayW(wcopy);
}

TEST(Split, WholeWordTest)
{
    EXPECT_EQ(FindStringFromStringWithSeprator("a,b,c", -1, "b", -1, ",", -1), 1);
    EXPECT_EQ(FindStringFromStringWithSeprator("a,bc", -1, "b", -1, ",", -1), 0);
    EXPECT_EQ(FindStringFromStringWithSeprator("a", -1, "a", -1, ",", -1), 1);
    EXPECT_EQ(FindStringFromStringWithSeprator("abc,ab", -1, "ab", -1, ",", -1), 0);  // first occurrence only
    EXPECT_EQ(FindStringFromStringWithSeprator(".bmp;.jpg", -1, ".jpg", -1, ";", 1), 1);
    EXPECT_EQ(FindStringFromStringWithSeprator(".bmp;.jpg", -1, ".jp", -1, ";", 1), 0);
    EXPECT_EQ(FindStringFromStringWithSeprator("x,a", -1, "a", -1, ",", 0), 0);  // no separators
    EXPECT_EQ(FindStringFromStringWithSeprator("", -1, "a", -1, ",", 1), 0);
    EXPECT_EQ(FindStringFromStringWithSeprator(nullptr, 1, "a", -1, ",", 1), 0);
}

std::string Encode(char const* text, char const* start = "")
{
    CSimpleStringA s;
    s.Set(start, -1);
    EncodeURL(text, &s);
    return s.GetString();
}

std::string Decode(std::string const& text)
{
    CSimpleStringA s;
    DecodeURL(text.c_str(), &s);
    return std::string(s.GetString(), static_cast<size_t>(s.GetLength()));
}

TEST(Url, EncodeAndDecode)
{
    EXPECT_EQ(Encode("a b/c~"), "a+b%2Fc%7E");
    EXPECT_EQ(Encode("\n\t"), "%A%9");
    EXPECT_EQ(Encode("\xC3\xA9"), "%C3%A9");
    EXPECT_EQ(Encode("*-._09AZaz"), "*-._09AZaz");
    EXPECT_EQ(Encode("x", "y"), "yx");
    EXPECT_EQ(Encode(""), "");
    EXPECT_EQ(Decode("a+b%2Fc"), "a b/c");
    EXPECT_EQ(Decode("%2f"), "2f");
    EXPECT_EQ(Decode("100%"), "100%");
    EXPECT_EQ(Decode("%4:"), "\x04");
    EXPECT_EQ(Decode("%%41"), "A");
    EXPECT_EQ(Decode("%4"), "4");
    EXPECT_EQ(Decode("%00x"), std::string("\0x", 2));

    // Every byte from 0x10 up, blanks and kept characters come back.
    std::string all;
    for (int c = 0x10; c < 0x100; ++c)
        all += static_cast<char>(c);
    EXPECT_EQ(Decode(Encode(all.c_str())), all);
}

std::string Chinese(int value, int size = 32)
{
    wchar_t out[32];
    ConvertNumberToChineseNumber(value, out, size);
    CSimpleStringA s;
    s.Set(out, -1);
    return s.GetString();
}

TEST(ChineseNumerals, PositionalRules)
{
    EXPECT_EQ(g_ChineseNumber[0], 0x96F6);
    EXPECT_EQ(g_ChineseNumber[9], 0x4E5D);
    struct Case { int value; char const* text; };
    Case const cases[] = {
        {0, "零"}, {7, "七"}, {10, "十"}, {11, "十一"}, {20, "二十"}, {100, "一百零"}, {105, "一百零五"},
        {1000, "一千零"}, {1005, "一千零五"}, {1010, "一千零一十"}, {10001, "一万零一"},
        {100000, "一十零"}, {10000000, "一千零"}, {12345678, "一千二百三十四万五千六百七十八"},
        {123456789, "一亿二千三百四十五万六千七百八十九"}, {-5, ""},
    };
    for (Case const& c : cases)
        EXPECT_EQ(Chinese(c.value), c.text) << c.value;
    EXPECT_EQ(Chinese(2147483647).rfind("一亿", 0), 0u);
}

TEST(ChineseNumerals, Capacity)
{
    EXPECT_EQ(Chinese(12345, 3), "一万");
    EXPECT_EQ(Chinese(12345, 1), "");
    wchar_t one[1] = {L'x'};
    ConvertNumberToChineseNumber(5, one, 0);  // size 0 still writes the terminator
    EXPECT_EQ(one[0], 0);
    ConvertNumberToChineseNumber(5, nullptr, 4);
}

}  // namespace
