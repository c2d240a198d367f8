// Memory search, hex text in and out, and the hex dump.
#include <palvet/palvet.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "support/test_support.h"

namespace {

TEST(MemorySearch, NarrowFindsFirstOccurrenceAndRejectsDegenerateInput)
{
    char const* text = "hello world";
    EXPECT_EQ(MemFindBufA(text, -1, "lo", -1), text + 3);
    EXPECT_EQ(MemFindBufA(text, -1, "o", 1), text + 4);
    EXPECT_EQ(MemFindBufA(text, 5, "world", -1), nullptr);  // outside the count
    EXPECT_EQ(MemFindBufA("ab", -1, "abc", -1), nullptr);
    EXPECT_EQ(MemFindBufA(text, -1, "", 0), nullptr);
    EXPECT_EQ(MemFindBufA(nullptr, 3, "a", 1), nullptr);
    EXPECT_EQ(MemFindBufA(text, -1, nullptr, 1), nullptr);
    // A match at the very end, and a zero byte inside the counted text.
    char const data[] = {'x', '\0', 'y', 'z'};
    EXPECT_EQ(MemFindBufA(data, 4, "yz", 2), data + 2);
    EXPECT_EQ(MemFindBufA(data, 4, "\0y", 2), data + 1);
}

TEST(MemorySearch, AgreesWithStringViewOnRandomText)
{
    std::mt19937 rng(7);
    for (int round = 0; round < 2000; ++round) {
        std::string hay(rng() % 200, ' '), pat(1 + rng() % 6, ' ');
        for (char& c : hay)
            c = static_cast<char>('a' + rng() % 3);
        for (char& c : pat)
            c = static_cast<char>('a' + rng() % 3);
        size_t want = std::string_view(hay).find(pat);
        char const* got = MemFindBufA(hay.data(), static_cast<int>(hay.size()), pat.data(), static_cast<int>(pat.size()));
        ASSERT_EQ(got ? static_cast<size_t>(got - hay.data()) : std::string::npos, want) << hay << " / " << pat;
        // The byte engine with step 1 gives the same.
        auto const* raw = BufFindPatt(reinterpret_cast<unsigned char const*>(hay.data()), static_cast<int>(hay.size()),
                                      reinterpret_cast<unsigned char const*>(pat.data()), static_cast<int>(pat.size()), 1);
        ASSERT_EQ(reinterpret_cast<char const*>(raw), got);
    }
}

TEST(MemorySearch, WideMatchesOnlyWholeCharacters)
{
    // Bytes 00 00 41 00 | 42 00 00 00: the pattern L'\x4100' would match the
    // misaligned window at byte 1 of the first character, never a real one.
    wchar_t const text[] = {0x00410000, 0x42, 0x00410000, 0x43, 0};
    wchar_t const pattern[] = {0x4100, 0};
    EXPECT_EQ(MemFindBufW(text, 4, pattern, 1), nullptr);
    wchar_t const pair[] = {0x00410000, 0x43, 0};
    EXPECT_EQ(MemFindBufW(text, -1, pair, -1), text + 2);
    std::wstring hay = L"abcabcabd";
    EXPECT_EQ(MemFindBufW(hay.c_str(), -1, L"abd", -1), hay.c_str() + 6);
    // The stride walk directly, with a step that is not a character size.
    unsigned char const bytes[] = "aXbXcXbX";
    EXPECT_EQ(BufFindPatt(bytes, 8, reinterpret_cast<unsigned char const*>("bX"), 2, 2), bytes + 2);
    EXPECT_EQ(BufFindPatt(bytes, 8, reinterpret_cast<unsigned char const*>("Xb"), 2, 2), nullptr);
    EXPECT_EQ(BufFindPatt(bytes, 8, reinterpret_cast<unsigned char const*>("bX"), 2, 0), nullptr);
    EXPECT_EQ(BufFindPatt(bytes, 8, reinterpret_cast<unsigned char const*>("bX"), -1, 1), nullptr);
}

TEST(MemorySearch, CharacterScanIsCountedNotMeasured)
{
    char const data[] = {'a', '\0', 'b'};
    EXPECT_EQ(MemFindChrA(data, 'b', 3), data + 2);
    EXPECT_EQ(MemFindChrA(data, 'b', 2), nullptr);
    EXPECT_EQ(MemFindChrA("abc", 'a', 0), nullptr);
    EXPECT_EQ(MemFindChrA("abc", 'a', -1), nullptr);
    wchar_t const wide[] = {L'x', 0, L'y'};
    EXPECT_EQ(MemFindChrW(wide, L'y', 3), wide + 2);
    EXPECT_EQ(MemFindChrW(nullptr, L'y', 3), nullptr);
}

TEST(MemorySearch, LongestCommonPiece)
{
    EXPECT_EQ(StrMaxSameLengthA("abcdef", "zcdez", 0), 3);
    // Case-insensitive mode counts matching positions of an overlap.
    EXPECT_EQ(StrMaxSameLengthA("abXd", "ABYD", 1), 3);
    EXPECT_EQ(StrMaxSameLengthA("abXd", "ABYD", 0), 0);
    EXPECT_EQ(StrMaxSameLengthA("a@", "A`", 1), 1);  // '@' and '`' differ by 32 but are no letters
    EXPECT_EQ(StrMaxSameLengthA("", "abc", 0), 0);
    EXPECT_EQ(StrMaxSameLengthA(nullptr, "abc", 0), 0);
    EXPECT_EQ(StrMaxSameLengthA("same", "same", 0), 4);
}

TEST(HexText, DigitsOut)
{
    char out[8];
    ConvertLongToCharA(255, out, 4, 16);
    EXPECT_STREQ(out, "00FF");
    ConvertLongToCharA(1234, out, 2, 10);
    EXPECT_STREQ(out, "34");
    ConvertLongToCharA(35, out, 2, 36);
    EXPECT_STREQ(out, "0Z");
    ConvertLongToCharA(-12, out, 3, 10);  // remainders -2 and -1 sit below '0'
    EXPECT_EQ(std::string(out), std::string({'0', '0' - 1, '0' - 2}));
    ConvertLongToCharA(7, out, 0, 10);
    EXPECT_STREQ(out, "");
    wchar_t wide[8];
    ConvertLongToCharW(0xBEEF, wide, 5, 16);
    EXPECT_STREQ(wide, L"0BEEF");

    char pair[3] = {};
    ByteToHexA(0xA7, pair);
    EXPECT_STREQ(pair, "a7");
    CSimpleStringA s;
    unsigned char const bytes[] = {0xAB, 0x01, 0x00};
    BufferToHexStringA(bytes, 3, &s);
    EXPECT_STREQ(s.GetString(), "ab0100");
    CSimpleStringW w;
    BufferToHexStringW(bytes, 2, &w);
    EXPECT_STREQ(w.GetString(), L"ab01");
}

TEST(HexText, NumbersIn)
{
    EXPECT_EQ(HexStringToByteA("0x1F"), 31);
    EXPECT_EQ(HexStringToByteA("7"), 7);
    EXPECT_EQ(HexStringToByteA("123"), 0x12);  // two digits at most
    EXPECT_EQ(HexStringToByteA("g1"), 0);
    EXPECT_EQ(HexStringToByteW(L"0XfE"), 0xFE);
    EXPECT_EQ(HexStringToUint32A("0x"), 0u);
    EXPECT_EQ(HexStringToUint32A(""), 0u);
    EXPECT_EQ(HexStringToUint32A("123456789"), 0x23456789u);
    EXPECT_EQ(HexStringToUint32A("12z34"), 0x12u);
    EXPECT_EQ(HexStringToUint32W(L"0xDeadBeef"), 0xDEADBEEFu);
    EXPECT_EQ(HexStringToUint64A("0x1122334455667788AA"), 0x22334455667788AAull);
    EXPECT_EQ(HexStringToUint64W(L"ffffffffffffffff"), ~0ull);
    EXPECT_EQ(HexStringToUint32A(nullptr), 0u);
}

TEST(HexText, TextToBytes)
{
    CBuffer b;
    HexStringToBufferA("0x0a0B1", 7, &b);
    ASSERT_EQ(b.GetAvailSize(), 2u);
    EXPECT_EQ(b.GetBuffer()[0], 0x0A);
    EXPECT_EQ(b.GetBuffer()[1], 0x0B);
    // A pair with a bad second character keeps its first digit; one that
    // starts with a bad character gives 0.
    HexStringToBufferA("1zz1ab", 6, &b);
    ASSERT_EQ(b.GetAvailSize(), 3u);
    EXPECT_EQ(std::vector<unsigned char>(b.GetBuffer(), b.GetBuffer() + 3), (std::vector<unsigned char>{1, 0, 0xAB}));
    // "0" alone keeps its count: one digit, no byte.
    HexStringToBufferA("0", 1, &b);
    EXPECT_EQ(b.GetAvailSize(), 0u);
    HexStringToBufferW(L"00ff", 4, &b);
    ASSERT_EQ(b.GetAvailSize(), 2u);
    EXPECT_EQ(b.GetBuffer()[1], 0xFF);

    CSimpleStringA s;
    HexStringToStringA("414243", 6, &s);
    EXPECT_STREQ(s.GetString(), "ABC");
    HexStringToStringW(L"0x6869", 6, &s);
    EXPECT_STREQ(s.GetString(), "hi");
}

TEST(HexText, PairsNeverReadPastTheCount)
{
    // An inner "0x" pair reads like a prefix, but only up to the count: here
    // the text behind it lies outside the heap block.
    char* text = new char[4];
    memcpy(text, "000x", 4);
    CBuffer b;
    HexStringToBufferA(text, 4, &b);
    ASSERT_EQ(b.GetAvailSize(), 2u);
    EXPECT_EQ(b.GetBuffer()[1], 0);
    delete[] text;
}

TEST(HexText, DumpLines)
{
    unsigned char bytes[20];
    for (int i = 0; i < 20; ++i)
        bytes[i] = static_cast<unsigned char>(i);
    palvet_test::StdoutCapture capture;
    PrintHexBuffer(bytes, 20, 16);
    PrintHexBuffer(bytes, 0, 16);
    PrintHexBuffer(bytes, 20, 0);
    std::string out = capture.Take();
    EXPECT_NE(out.find("PrintHexBuffer: addr="), std::string::npos);
    EXPECT_NE(out.find("00000000-0000000f:00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f \n"), std::string::npos);
    EXPECT_NE(out.find("00000010-0000001f:10 11 12 13 \n"), std::string::npos);
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 3);
}

}  // namespace
