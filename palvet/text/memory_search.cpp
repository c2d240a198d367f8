#include <palvet/text/memory_search.h>

#include <cctype>
#include <cstring>
#include <cwchar>

namespace {

// The literal walk, for any step. The table holds 256 shifts on the stack.
unsigned char const* SundaySearch(unsigned char const* hay, size_t count, unsigned char const* pat,
                                  size_t patCount, size_t step)
{
    size_t shift[256];
    for (size_t& s : shift)
        s = patCount + step;
    for (size_t i = 0; i < patCount; i += step)
        shift[pat[i]] = patCount - i;
    // Offsets rather than pointers: a shift may step past the end.
    for (size_t at = 0; count - at >= patCount;) {
        if (memcmp(hay + at, pat, patCount) == 0)
            return hay + at;
        if (count - at == patCount)
            break;
        at += shift[hay[at + patCount]];
        if (at > count)
            break;
    }
    return nullptr;
}

// Every window the walk tries is checked in increasing order and its shifts
// never pass over a match, so with a step of 1 it finds the first occurrence:
// exactly what memmem returns, only slower.
unsigned char const* Search(unsigned char const* hay, size_t count, unsigned char const* pat,
                            size_t patCount, size_t step)
{
    if (patCount == 0 || count < patCount)
        return nullptr;
    if (step == 1)
        return static_cast<unsigned char const*>(memmem(hay, count, pat, patCount));
    return SundaySearch(hay, count, pat, patCount, step);
}

bool IsLetter(unsigned char c) { return isalpha(c) != 0; }

}  // namespace

unsigned char const* BufFindPatt(unsigned char const* haystack, int count, unsigned char const* pattern,
                                 int patternCount, int step)
{
    if (haystack == nullptr || pattern == nullptr || patternCount < 1 || count < patternCount || step < 1)
        return nullptr;
    return Search(haystack, static_cast<size_t>(count), pattern, static_cast<size_t>(patternCount),
                  static_cast<size_t>(step));
}

char const* MemFindBufA(char const* text, int count, char const* pattern, int patternCount)
{
    if (text == nullptr || pattern == nullptr)
        return nullptr;
    size_t n = count < 0 ? strlen(text) : static_cast<size_t>(count);
    size_t m = patternCount < 0 ? strlen(pattern) : static_cast<size_t>(patternCount);
    return reinterpret_cast<char const*>(Search(reinterpret_cast<unsigned char const*>(text), n,
                                                reinterpret_cast<unsigned char const*>(pattern), m, 1));
}

wchar_t const* MemFindBufW(wchar_t const* text, int count, wchar_t const* pattern, int patternCount)
{
    if (text == nullptr || pattern == nullptr)
        return nullptr;
    // Byte counts in size_t: four times an int count does not fit an int.
    size_t n = (count < 0 ? wcslen(text) : static_cast<size_t>(count)) * sizeof(wchar_t);
    size_t m = (patternCount < 0 ? wcslen(pattern) : static_cast<size_t>(patternCount)) * sizeof(wchar_t);
    return reinterpret_cast<wchar_t const*>(Search(reinterpret_cast<unsigned char const*>(text), n,
                                                   reinterpret_cast<unsigned char const*>(pattern), m,
                                                   sizeof(wchar_t)));
}

char const* MemFindChrA(char const* text, char c, int count)
{
    if (text == nullptr || count <= 0)
        return nullptr;
    return static_cast<char const*>(memchr(text, c, static_cast<size_t>(count)));
}

wchar_t const* MemFindChrW(wchar_t const* text, wchar_t c, int count)
{
    if (text == nullptr || count <= 0)
        return nullptr;
    return wmemchr(text, c, static_cast<size_t>(count));
}

int StrMaxSameLengthA(char const* a, char const* b, int nocase)
{
    if (a == nullptr || b == nullptr || *a == '\0')
        return 0;
    int lenA = static_cast<int>(strlen(a));
    int lenB = static_cast<int>(strlen(b));
    int best = 0;
    for (int i = 0; i < lenA && i + best < lenA; ++i) {
        for (int j = 0; j < lenB && j + best < lenB; ++j) {
            int overlap = lenA - i < lenB - j ? lenA - i : lenB - j;
            int same = 0;
            for (int k = 0; k < overlap; ++k) {
                unsigned char x = static_cast<unsigned char>(a[i + k]);
                unsigned char y = static_cast<unsigned char>(b[j + k]);
                if (x == y) {
                    ++same;
                } else if (!nocase) {
                    break;
                } else if (IsLetter(x) && IsLetter(y) && (x - y == 32 || y - x == 32)) {
                    ++same;
                }
            }
            if (same > best)
                best = same;
        }
    }
    return best;
}
