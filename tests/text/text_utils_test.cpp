#include <palvet/text/text_utils.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/test_support.h"

using palvet_test::StdoutCapture;

namespace {

// Decodes from an exactly sized heap copy, so that the sanitizer build
// catches any read beyond the counted bytes. Returns the count + 1 elements.
std::wstring Decode(std::string const& bytes)
{
    std::vector<char> exact(bytes.begin(), bytes.end());
    wchar_t* w = AllocCopyWStringFromAString(exact.empty() ? "" : exact.data(), static_cast<int>(exact.size()));
    std::wstring out(w, bytes.size() + 1);
    FreeWString(w);
    return out;
}

// Encodes and returns the text up to its terminator.
std::string Encode(std::wstring const& wide)
{
    char* a = AllocCopyAStringFromWString(wide.data(), static_cast<int>(wide.size()));
    std::string out(a);
    FreeAString(a);
    return out;
}

std::wstring W(std::initializer_list<unsigned> values)
{
    std::wstring w;
    for (unsigned v : values)
        w.push_back(static_cast<wchar_t>(v));
    return w;
}

}  // namespace

TEST(Utf8Test, RoundTripOfOneToFourByteForms)
{
    std::string const bytes = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    std::wstring const wide = W({0x61, 0xE9, 0x20AC, 0x1F600});
    EXPECT_EQ(Decode(bytes), wide + std::wstring(7, L'\0'));  // zero-filled to 10 + 1
    EXPECT_EQ(Encode(wide), bytes);

    wchar_t* w = AllocCopyWStringFromAString("abcdef", 3);
    EXPECT_STREQ(w, L"abc");
    FreeWString(w);
    w = AllocCopyWStringFromAString("abc\xC3\xA9", -1);
    EXPECT_EQ(std::wstring(w), W({'a', 'b', 'c', 0xE9}));
    FreeWString(w);

    EXPECT_EQ(Decode(""), std::wstring(1, L'\0'));
    EXPECT_EQ(Decode(std::string("a\0b", 3)), std::wstring(L"a\0b\0", 4));
    EXPECT_EQ(AllocCopyWStringFromAString(nullptr, 5), nullptr);
    EXPECT_EQ(AllocCopyAStringFromWString(nullptr, -1), nullptr);
    FreeWString(nullptr);
    FreeAString(nullptr);
}

TEST(Utf8Test, MalformedInputIsReadWithoutValidation)
{
    StdoutCapture quiet;
    EXPECT_EQ(Decode("\x80\xBF\xFE\xFFz").substr(0, 5), W({0x80, 0xBF, 0xFE, 0xFF, 'z'}));
    EXPECT_EQ(Decode("\xC0\x80")[0], 0);                      // overlong zero
    EXPECT_EQ(Decode("\xC3\x29")[0], 0xE9);                  // taken as one all the same
    EXPECT_EQ(Decode("\xED\xA0\x80")[0], 0xD800);             // surrogate
    EXPECT_EQ(Decode("\xF8\x88\x80\x80\x80")[0], 0x200000);   // five bytes
    EXPECT_EQ(Decode("\xFD\xBF\xBF\xBF\xBF\xBF")[0], 0x7FFFFFFF);
    EXPECT_EQ(quiet.Take(), "");
}

TEST(Utf8Test, CutShortSequencesAreReportedAndPaddedWithZeroBits)
{
    struct Case {
        std::string bytes;
        unsigned value;
        char const* message;
    } const cases[] = {
        {"\xC3", 0xC0, "j + 2 > nLength"},
        {"\xE9", 0x9000, "j + 3 > nLength"},
        {"\xE2\x82", 0x2080, "j + 3 > nLength"},
        {"\xF0\x9F\x98", 0x1F600, "j + 4 > nLength"},
        {"\xFB", 0x3000000, "j + 5 > nLength"},
        {"\xFD\x80", 0x40000000, "j + 6 > nLength"},
    };
    for (Case const& c : cases) {
        StdoutCapture capture;
        std::wstring w = Decode("ab" + c.bytes);
        EXPECT_EQ(capture.Take(), std::string("error AllocCopyWStringFromAString, ") + c.message + "\n");
        EXPECT_EQ(w.substr(0, 4), W({'a', 'b', c.value, 0}));
    }
}

TEST(Utf8Test, EncoderFormsAndItsShortageOfRoom)
{
    // Every boundary of the one- to four-byte forms, and a surrogate, both ways.
    std::wstring const forms = W({0x7F, 0x80, 0x7FF, 0x800, 0xFFFF, 0xDC00, 0x110000, 0x1FFFFF});
    std::string const bytes = "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xED\xB0\x80"
                              "\xF4\x90\x80\x80\xF7\xBF\xBF\xBF";
    EXPECT_EQ(Encode(forms), bytes);
    EXPECT_EQ(Decode(bytes).substr(0, forms.size() + 1), forms + L'\0');
    EXPECT_EQ(Encode(W({0x80000041, 0xFFFFFFFF})), "A\x7F");  // folded into seven bits

    StdoutCapture capture;
    EXPECT_EQ(Encode(W({0x3FFFFFF})), "\xFB\xBF\xBF\xBF\xBF");  // fills the 4 + 1 bytes
    EXPECT_EQ(capture.Take(), "");

    // Three six-byte forms in 13 bytes: the third starts at 12 and is still
    // written whole (and terminated) after the message.
    StdoutCapture capture6;
    EXPECT_EQ(Encode(W({0x4000000, 0x4000000, 0x7FFFFFFF})),
              "\xFC\x84\x80\x80\x80\x80\xFC\x84\x80\x80\x80\x80\xFD\xBF\xBF\xBF\xBF\xBF");
    EXPECT_EQ(capture6.Take(), "error AllocCopyAStringFromWString, i + 6 > nDstLength\n");

    // Nine five-byte forms reach the 41 bytes allotted to ten characters;
    // the ninth crosses the end and the tenth is dropped.
    StdoutCapture capture5;
    std::string out = Encode(std::wstring(10, static_cast<wchar_t>(0x200000)));
    EXPECT_EQ(out.size(), 45u);
    EXPECT_EQ(out.substr(40), "\xF8\x88\x80\x80\x80");
    EXPECT_EQ(capture5.Take(), "error AllocCopyAStringFromWString, i + 5 > nDstLength\n");

    // After long forms even the shorter ones can lack room: 5 + 5 + 6 bytes
    // leave one of the 17 for the 2-byte form, which is reported, written
    // and ends the text.
    StdoutCapture capture2;
    EXPECT_EQ(Encode(W({0x200000, 0x200000, 0x4000000, 0xE9})).size(), 18u);
    EXPECT_EQ(capture2.Take(), "error AllocCopyAStringFromWString, i + 2 > nDstLength\n");
}
