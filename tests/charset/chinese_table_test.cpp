// The simplified/traditional tables and the table conversions, and what the
// charset functions do while no conversion engine is loaded.

#include <palvet/charset/charset_convert.h>
#include <palvet/text/buffer.h>
#include <palvet/text/simple_string.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using TableFn = void (*)(char const*, int, char*, int);

// Runs fn with the given capacity over a destination with four guard bytes
// behind it, and returns the whole destination, guards included.
std::string Convert(TableFn fn, std::string const& in, int capacity)
{
    std::string out(static_cast<size_t>(capacity) + 4, '#');
    fn(in.data(), static_cast<int>(in.size()), &out[0], capacity);
    return out;
}

std::string Pair(unsigned char const entry[2])
{
    return std::string(reinterpret_cast<char const*>(entry), 2);
}

bool IsGb2312(unsigned lead, unsigned trail)
{
    return lead >= 0xA1 && lead <= 0xF7 && trail >= 0xA1 && trail <= 0xFE;
}

bool IsBig5(unsigned lead, unsigned trail)
{
    return lead >= 0xA1 && lead <= 0xF9 && ((trail >= 0x40 && trail <= 0x7E) || (trail >= 0xA1 && trail <= 0xFE));
}

TEST(ChineseTables, ShapeSamplesAndTargetCharts)
{
    ASSERT_EQ(g_pBIGToGBTableSize, 17954);
    ASSERT_EQ(g_pGBToBigTableSize, 8272);
    EXPECT_EQ(Pair(g_pBIGToGBTable[(0xA4 - 0xA1) * 191 + 0x40 - 0x40]), "\xD2\xBB");  // 一
    EXPECT_EQ(Pair(g_pBIGToGBTable[0]), "\xA1\xA1");                                  // ideographic space
    EXPECT_EQ(Pair(g_pGBToBigTable[(0xB0 - 0xA7) * 94]), "\xB0\xDA");                  // 啊
    EXPECT_EQ(Pair(g_pGBToBigTable[0]), "\xA1\x40");

    for (unsigned lead = 0xA1; lead <= 0xFE; ++lead) {
        for (unsigned trail = 0x40; trail <= 0xFE; ++trail) {
            unsigned char const* e = g_pBIGToGBTable[(lead - 0xA1) * 191 + trail - 0x40];
            if (trail >= 0x7F && trail <= 0xA0)
                ASSERT_TRUE(e[0] == lead && e[1] == trail) << std::hex << lead << ' ' << trail;
            else
                ASSERT_TRUE(IsGb2312(e[0], e[1])) << std::hex << lead << ' ' << trail;
        }
    }
    for (int i = 0; i < g_pGBToBigTableSize; ++i)
        ASSERT_TRUE(IsBig5(g_pGBToBigTable[i][0], g_pGBToBigTable[i][1])) << i;
}

TEST(ChineseTables, PairsConvertOtherBytesPass)
{
    // Big5 一 and 中 between ASCII; GB 啊 and 中.
    EXPECT_EQ(Convert(Big5ToGbA, "a\xA4\x40-\xA4\xA4z", 7), "a\xD2\xBB-\xD6\xD0z####");
    EXPECT_EQ(Convert(GbToBig5A, "a\xB0\xA1-\xD6\xD0z", 7), "a\xB0\xDA-\xA4\xA4z####");
    // The Big5 columns that are no trail bytes map to themselves.
    EXPECT_EQ(Convert(Big5ToGbA, "\xA4\x7F", 2), "\xA4\x7F####");
    // A lead followed by a byte below the trail range: two single bytes.
    EXPECT_EQ(Convert(Big5ToGbA, "\xA4\x30", 2), "\xA4\x30####");
    EXPECT_EQ(Convert(GbToBig5A, "\xB0\x41", 2), "\xB0\x41####");
    // A lone lead at the end is copied, never paired; one byte is copied.
    EXPECT_EQ(Convert(Big5ToGbA, "x\xA4", 2), "x\xA4####");
    EXPECT_EQ(Convert(GbToBig5A, "\xB0", 1), "\xB0####");
    // The terminator travels when the caller counts it.
    EXPECT_EQ(Convert(GbToBig5A, std::string("\xB0\xA1", 3), 3), std::string("\xB0\xDA\0####", 7));
}

TEST(ChineseTables, IndexesOutsideTheTablesCopyThePair)
{
    // GB lead 0xA1 falls before the table, lead 0xFF (both ways) beyond it.
    EXPECT_EQ(Convert(GbToBig5A, "\xA1\xA1\xA1\xFE", 4), "\xA1\xA1\xA1\xFE####");
    EXPECT_EQ(Convert(GbToBig5A, "\xFF\xA1", 2), "\xFF\xA1####");
    EXPECT_EQ(Convert(Big5ToGbA, "\xFF\xFE", 2), "\xFF\xFE####");
    EXPECT_EQ(Convert(Big5ToGbA, "\xFE\xFE", 2), Pair(g_pBIGToGBTable[17953]) + "####");
    // Unused GB leads 0xAA..0xAF look up the rows of 0xB0..0xB5.
    EXPECT_EQ(Convert(GbToBig5A, "\xAA\xA1", 2), Convert(GbToBig5A, "\xB0\xA1", 2));
}

TEST(ChineseTables, CapacityIsNeverExceeded)
{
    std::string const text = "\xA4\x40\xA4\x40";
    EXPECT_EQ(Convert(Big5ToGbA, text, 3), "\xD2\xBB#####");  // the second pair would cross
    EXPECT_EQ(Convert(Big5ToGbA, text, 1), "#####");
    EXPECT_EQ(Convert(Big5ToGbA, "abc", 2), "ab####");
    EXPECT_EQ(Convert(GbToBig5A, "abcdefghijklmnopq", 11), "abcdefghijk####");

    // Nothing happens for null pointers or empty lengths.
    std::string out(4, '#');
    Big5ToGbA(nullptr, 2, &out[0], 4);
    GbToBig5A("ab", 2, nullptr, 4);
    GbToBig5A("ab", 0, &out[0], 4);
    Big5ToGbA("ab", 2, &out[0], 0);
    Big5ToGbA("ab", -1, &out[0], 4);
    EXPECT_EQ(out, "####");
}

TEST(ChineseTables, IsChineseRanges)
{
    struct Case {
        unsigned a, b;
        int expected;
    } const cases[] = {
        {0xA4, 0x40, 1}, {0xF9, 0xFE, 1}, {0xA1, 0x7E, 1},  // Big5
        {0x81, 0x40, 1}, {0xFE, 0xFE, 1}, {0xB0, 0x81, 1},  // GBK only
        {0x80, 0x40, 0}, {0xFF, 0xA1, 0}, {0xB0, 0x7F, 0}, {0xB0, 0xFF, 0}, {0xA4, 0x3F, 0}, {'a', 'b', 0},
    };
    for (Case const& c : cases)
        EXPECT_EQ(IsChineseA(static_cast<char>(c.a), static_cast<char>(c.b)), c.expected) << std::hex << c.a << ' ' << c.b;
}

TEST(CharsetWithoutEngine, ConversionsFailAndKeepText)
{
    ASSERT_EQ(gLibICUHandle, nullptr);
    ASSERT_EQ(gLibIconvHandle, nullptr);
    char out[8] = "xxxxxxx";
    CBuffer in, target;
    in.BindBuffer("abc", 3);
    target.BindBuffer(out, sizeof out);
    EXPECT_EQ(ConvertCharset(CHARSET_UTF8, &in, CHARSET_GB2312, &target), 0);
    EXPECT_EQ(ICUConvertCharset(CHARSET_UTF8, &in, CHARSET_GB2312, &target), 0);
    EXPECT_EQ(ICONVConvertCharset(CHARSET_UTF8, &in, CHARSET_GB2312, &target), 0);
    EXPECT_EQ(target.GetAvailSize(), sizeof out);
    EXPECT_STREQ(out, "xxxxxxx");

    CSimpleStringA narrow;
    narrow.Set("\xE4\xB8\xAD\xE5\x9B\xBD", -1);  // 中国
    narrow.ToTraditionalChinese();
    EXPECT_STREQ(narrow.GetString(), "\xE4\xB8\xAD\xE5\x9B\xBD");
    CSimpleStringW wideString;
    wideString.Set(L"\u4E2D\u570B", -1);
    wideString.ToSimpleChinese();
    EXPECT_STREQ(wideString.GetString(), L"\u4E2D\u570B");

    // The single characters cannot be converted, so they match nothing.
    narrow.Set("a", -1);
    EXPECT_EQ(narrow.Equal(L'a', 0), 0);
    wideString.Set(L"a", -1);
    EXPECT_EQ(wideString.Equal('a', 0), 0);

    EXPECT_EQ(InitSysLibICONV(), 0);  // no libiconv.so beside this program or on the system
    DeInitSysLibCodeConvert();        // harmless when nothing runs
}

}  // namespace
