#include <palvet/text/chinese_numerals.h>

wchar_t g_ChineseNumber[10] = {0x96F6, 0x4E00, 0x4E8C, 0x4E09, 0x56DB, 0x4E94, 0x516D, 0x4E03, 0x516B, 0x4E5D};

namespace {

constexpr wchar_t kTen = 0x5341;
constexpr wchar_t kHundred = 0x767E;
constexpr wchar_t kThousand = 0x5343;
constexpr wchar_t kTenThousand = 0x4E07;
constexpr wchar_t kHundredMillion = 0x4EBF;
constexpr wchar_t kZero = 0x96F6;

}  // namespace

void ConvertNumberToChineseNumber(int value, wchar_t* out, int size)
{
    // At most 19 characters are written; the text starts zeroed.
    wchar_t text[20] = {};
    int c = 0;
    auto put = [&](wchar_t ch) { text[c++] = ch; };
    // A negative value fails every digit test below, including the ones
    // digit's (d0 >= 0), and so writes nothing.
    int d8 = value / 100000000 % 10;
    int low = value % 100000000;
    int d[8];
    for (int i = 0; i < 8; ++i, low /= 10)
        d[i] = low % 10;

    if (d8 >= 1) {
        put(g_ChineseNumber[d8]);
        put(kHundredMillion);
    }
    if (d[7] > 0) {
        put(g_ChineseNumber[d[7]]);
        put(kThousand);
    }
    // Digits d6 to d2 share one rule: a zero first when something was written
    // and the next higher digit is 0.
    static wchar_t const kUnits[] = {0, 0, kHundred, kThousand, kTenThousand, kTen, kHundred};
    for (int i = 6; i >= 2; --i) {
        if (d[i] > 0) {
            if (c >= 1 && d[i + 1] == 0)
                put(kZero);
            put(g_ChineseNumber[d[i]]);
            put(kUnits[i]);
        }
    }
    if (d[1] > 0) {
        if (c >= 1 && d[2] == 0) {
            put(kZero);
            put(g_ChineseNumber[d[1]]);
            put(kTen);
        } else if (d[1] >= 2 || c >= 1) {
            put(g_ChineseNumber[d[1]]);
            put(kTen);
        } else {
            put(kTen);
        }
    }
    if (d[0] >= 0) {
        if (c >= 1 && d[1] == 0)
            put(kZero);
        if (d[0] >= 1 || c == 0)
            put(g_ChineseNumber[d[0]]);
    }

    if (out == nullptr)
        return;
    if (size < 1) {
        out[0] = 0;
        return;
    }
    int n = size > c ? c : size - 1;
    for (int i = 0; i < n; ++i)
        out[i] = text[i];
    out[n] = 0;
}
