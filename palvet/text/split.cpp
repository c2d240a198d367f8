#include <palvet/text/split.h>

#include <palvet/containers/ptr_collection.h>
#include <palvet/text/memory_search.h>

#include <cstring>
#include <cwchar>
#include <new>

namespace {

template <class Ch>
struct Chars;

template <>
struct Chars<char> {
    static size_t Length(char const* s) { return strlen(s); }
    static char const* Find(char const* text, int count, char const* pattern)
    {
        return MemFindBufA(text, count, pattern, -1);
    }
};

template <>
struct Chars<wchar_t> {
    static size_t Length(wchar_t const* s) { return wcslen(s); }
    static wchar_t const* Find(wchar_t const* text, int count, wchar_t const* pattern)
    {
        return MemFindBufW(text, count, pattern, -1);
    }
};

// A zero-terminated copy of at most count characters; a zero character
// inside the count ends the text (the rest is zero). Null when out of memory.
template <class Ch>
Ch* CountedCopy(Ch const* text, size_t count)
{
    Ch* copy = new (std::nothrow) Ch[count + 1];
    if (copy == nullptr)
        return nullptr;
    size_t i = 0;
    for (; i < count && text[i] != 0; ++i)
        copy[i] = text[i];
    for (; i <= count; ++i)
        copy[i] = 0;
    return copy;
}

template <class Ch>
bool IsSeparator(Ch c, Ch const* separators, int separatorCount)
{
    for (int i = 0; i < separatorCount; ++i)
        if (separators[i] == c)
            return true;
    return false;
}

// The narrow walk also looks at the terminator itself (which only matters
// when a zero character is among the separators); the wide walk stops
// before it. Both behaviours are kept.
template <class Ch>
Ch* SplitByChars(Ch const* text, int count, Ch const* separators, int separatorCount, int skipEmpty,
                 CPtrCtrl* pieces, int maxPieces, bool walkTerminator)
{
    if (text == nullptr || pieces == nullptr)
        return nullptr;
    size_t n = count < 0 ? Chars<Ch>::Length(text) : static_cast<size_t>(count);
    Ch* copy = CountedCopy(text, n);
    if (copy == nullptr)
        return nullptr;
    if (separators == nullptr)
        separatorCount = 0;
    size_t len = Chars<Ch>::Length(copy);
    size_t start = 0;
    size_t last = walkTerminator ? len : len - 1;
    for (size_t p = 0; len + walkTerminator > 0 && p <= last; ++p) {
        if (!IsSeparator(copy[p], separators, separatorCount))
            continue;
        if (p == start && skipEmpty) {
            start = p + 1;
            continue;
        }
        if (maxPieces > 0 && pieces->GetCount() >= maxPieces - 1)
            break;
        copy[p] = 0;
        pieces->AddData(copy + start, -1);
        start = p + 1;
    }
    if (start < len)
        pieces->AddData(copy + start, -1);
    return copy;
}

template <class Ch>
Ch* SplitByStrings(Ch const* text, int count, Ch const** separators, int separatorCount, CPtrCtrl* pieces)
{
    if (text == nullptr || pieces == nullptr)
        return nullptr;
    size_t n = count < 0 ? Chars<Ch>::Length(text) : static_cast<size_t>(count);
    Ch* copy = CountedCopy(text, n);
    if (copy == nullptr || n == 0)
        return copy;
    if (separators == nullptr)
        separatorCount = 0;
    size_t len = Chars<Ch>::Length(copy);
    size_t pos = 0;
    for (;;) {
        Ch const* match = nullptr;
        size_t matchLen = 0;
        for (int i = 0; i < separatorCount; ++i) {
            if (separators[i] == nullptr)
                continue;
            Ch const* found = Chars<Ch>::Find(copy + pos, static_cast<int>(len - pos), separators[i]);
            if (found == nullptr)
                continue;
            size_t sepLen = Chars<Ch>::Length(separators[i]);
            if (match == nullptr || found < match || (found == match && sepLen > matchLen)) {
                match = found;
                matchLen = sepLen;
            }
        }
        pieces->AddData(copy + pos, -1);
        if (match == nullptr)
            break;
        size_t at = static_cast<size_t>(match - copy);
        copy[at] = 0;
        pos = at + matchLen;
        if (pos >= len)
            break;
    }
    return copy;
}

}  // namespace

int FindStringFromStringWithSeprator(char const* text, int count, char const* word, int wordCount,
                                     char const* separators, int separatorCount)
{
    if (text == nullptr || word == nullptr)
        return 0;
    if (count < 0)
        count = static_cast<int>(strlen(text));
    if (wordCount < 0)
        wordCount = static_cast<int>(strlen(word));
    if (separators == nullptr)
        separatorCount = 0;
    else if (separatorCount < 0)
        separatorCount = static_cast<int>(strlen(separators));
    if (count <= 0 || wordCount <= 0)
        return 0;
    char const* at = static_cast<char const*>(memmem(text, static_cast<size_t>(count), word,
                                                     static_cast<size_t>(wordCount)));
    if (at == nullptr)
        return 0;
    if (at != text && !IsSeparator(at[-1], separators, separatorCount))
        return 0;
    char after = at[wordCount];
    return after == '\0' || IsSeparator(after, separators, separatorCount) ? 1 : 0;
}

char* DevideStringByCharListA(char const* text, int count, char const* separators, int separatorCount,
                              int skipEmpty, CPtrCtrl* pieces, int maxPieces)
{
    return SplitByChars(text, count, separators, separatorCount, skipEmpty, pieces, maxPieces, true);
}

wchar_t* DevideStringByCharListW(wchar_t const* text, int count, wchar_t const* separators, int separatorCount,
                                 int skipEmpty, CPtrCtrl* pieces, int maxPieces)
{
    return SplitByChars(text, count, separators, separatorCount, skipEmpty, pieces, maxPieces, false);
}

char* DevideStringByStringListA(char const* text, int count, char const** separators, int separatorCount,
                                CPtrCtrl* pieces)
{
    return SplitByStrings(text, count, separators, separatorCount, pieces);
}

wchar_t* DevideStringByStringListW(wchar_t const* text, int count, wchar_t const** separators,
                                   int separatorCount, CPtrCtrl* pieces)
{
    return SplitByStrings(text, count, separators, separatorCount, pieces);
}

void Internal_DelArrayA(char const* copy) { delete[] copy; }

void Internal_DelArrayW(wchar_t const* copy) { delete[] copy; }
