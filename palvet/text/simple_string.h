#ifndef PALVET_TEXT_SIMPLE_STRING_H
#define PALVET_TEXT_SIMPLE_STRING_H

#include <palvet/core/export.h>

// Owned, growable, always zero-terminated strings: CSimpleStringA holds bytes
// (read as UTF-8 where text crosses to wide), CSimpleStringW 32-bit wchar_t.
// Every operation has a twin taking the other width, which converts through
// AllocCopyWStringFromAString / AllocCopyAStringFromWString.
//
// Counts are in characters of the argument's own width; a negative count
// means the text is zero-terminated. Null text reads as empty text; the
// string-object pointers of the copy constructors and of Set must be valid.
//
// Capacity (characters, terminator included) grows by doubling from 1 and
// shrinks by halving only once the need falls below half of it. Set always
// sizes the storage afresh for the new text. An allocation failure empties
// the string. Strings are passed by pointer and are not copyable by value.

class CSimpleStringW;

namespace palvet::detail {
struct SimpleStringAccess;
}

// An owned, zero-terminated string of bytes, read as UTF-8.
class PALVET_API CSimpleStringA {
public:
    CSimpleStringA();
    // Copies of another string's text (the wide one converted to UTF-8).
    CSimpleStringA(CSimpleStringA const* other);
    CSimpleStringA(CSimpleStringW const* other);
    virtual ~CSimpleStringA();
    CSimpleStringA(CSimpleStringA const&) = delete;
    CSimpleStringA& operator=(CSimpleStringA const&) = delete;

    // Never null: a string without storage gives a static empty text.
    char const* GetString() const;
    int GetLength() const;

    // Setting text equal to the present content changes nothing. Setting
    // from this string's own storage (its tail, say) is allowed.
    void Set(char const* text, int count);
    void Set(char c);
    void Set(CSimpleStringA const* other);
    void Set(wchar_t const* text, int count);
    void Set(wchar_t c);
    void Set(CSimpleStringW const* other);

    void Append(char const* text, int count);
    void Append(char c);
    void Append(wchar_t const* text, int count);
    void Append(wchar_t c);

    // printf-style. The narrow forms keep a formatted zero character (the
    // formatter's count is used); the wide forms end at the first one.
    void Format(char const* format, ...) __attribute__((format(printf, 2, 3)));
    void Format(wchar_t const* format, ...);
    void AppendFormat(char const* format, ...) __attribute__((format(printf, 2, 3)));
    void AppendFormat(wchar_t const* format, ...);

    // Cuts the text to at most length characters (negative: 0), shrinking
    // the storage when that leaves it less than half used.
    void Trunk(int length);
    void Free();

    // Equal returns 1 or 0; nocase nonzero ignores the case of ASCII letters.
    // Only the first count characters of the text are compared, and the
    // comparison stops at a zero character.
    int Equal(char const* text, int count, int nocase) const;
    int Equal(char c, int nocase) const;
    int Equal(wchar_t const* text, int count, int nocase) const;
    // Converted to UTF-8 by the charset engine; 0 when no engine runs.
    int Equal(wchar_t c, int nocase) const;
    int Equal(CSimpleStringA const* other, int nocase) const;
    int Equal(CSimpleStringW const* other, int nocase) const;

    // Replaces every non-overlapping occurrence of find, left to right;
    // replaced text is not searched again. An empty replacement deletes.
    void Replace(char const* find, char const* replacement, int nocase);
    void Replace(wchar_t const* find, wchar_t const* replacement, int nocase);

    // These act on the storage itself: a string without storage is not
    // digits (0), an empty string that holds storage is (1).
    int IsDigit() const;
    int IsAlpha() const;
    void ToLower();
    void ToUpper();

    // Simplified <-> traditional Chinese in place, through GB2312 and Big5
    // and the tables of the charset engine. The stored length is kept: a
    // shorter result is terminated early. Without an engine the text stays.
    void ToTraditionalChinese();
    void ToSimpleChinese();

    // Storage management, public for compatibility; meant for internal use.
    void AppendInternal(char const* text, int count);
    void AppendInternal(wchar_t const* text, int count);
    int ReAlloc(int need);
    int IncreaseCapability(int current, int need);
    int DecreaseCapability(int current, int need);
    void FreeInternal();

private:
    friend struct palvet::detail::SimpleStringAccess;

    char* m_pData;
    int m_nLength;
    int m_nCapacity;
};

// An owned, zero-terminated string of 32-bit wide characters.
class PALVET_API CSimpleStringW {
public:
    CSimpleStringW();
    // A copy of a narrow string's text, converted from UTF-8.
    CSimpleStringW(CSimpleStringA const* other);
    // Copies up to the other string's first zero character.
    CSimpleStringW(CSimpleStringW const* other);
    virtual ~CSimpleStringW();
    CSimpleStringW(CSimpleStringW const&) = delete;
    CSimpleStringW& operator=(CSimpleStringW const&) = delete;

    wchar_t const* GetString() const;
    int GetLength() const;

    void Set(char const* text, int count);
    void Set(char c);
    void Set(CSimpleStringA const* other);
    void Set(wchar_t const* text, int count);
    void Set(wchar_t c);
    void Set(CSimpleStringW const* other);

    void Append(char const* text, int count);
    void Append(char c);
    void Append(wchar_t const* text, int count);
    void Append(wchar_t c);

    void Format(char const* format, ...) __attribute__((format(printf, 2, 3)));
    void Format(wchar_t const* format, ...);
    void AppendFormat(char const* format, ...) __attribute__((format(printf, 2, 3)));
    void AppendFormat(wchar_t const* format, ...);

    void Trunk(int length);
    void Free();

    // The narrow-text form converts the text but compares with the count as
    // given: an explicit byte count is taken as the character count.
    int Equal(wchar_t const* text, int count, int nocase) const;
    int Equal(wchar_t c, int nocase) const;
    int Equal(char const* text, int count, int nocase) const;
    // The byte is converted by the charset engine, so only an ASCII byte can
    // match; 0 when no engine runs.
    int Equal(char c, int nocase) const;
    int Equal(CSimpleStringW const* other, int nocase) const;
    int Equal(CSimpleStringA const* other, int nocase) const;

    // Runs on a UTF-8 copy of the text.
    void Replace(char const* find, char const* replacement, int nocase);
    void Replace(wchar_t const* find, wchar_t const* replacement, int nocase);

    int IsDigit() const;
    int IsAlpha() const;
    void ToLower();
    void ToUpper();

    // Runs on a UTF-8 copy of the text.
    void ToTraditionalChinese();
    void ToSimpleChinese();

    void AppendInternal(wchar_t const* text, int count);
    void AppendInternal(char const* text, int count);
    int ReAlloc(int need);
    int IncreaseCapability(int current, int need);
    int DecreaseCapability(int current, int need);
    void FreeInternal();

private:
    friend struct palvet::detail::SimpleStringAccess;

    wchar_t* m_pData;
    int m_nLength;
    int m_nCapacity;
};

// Plain zero-terminated text, ASCII only. Null text is neither digits nor
// letters (0); empty text counts as both (1).
PALVET_API int IsDigitString(char const* text);
PALVET_API int IsDigitString(wchar_t const* text);
PALVET_API int IsAlphaString(char const* text);
PALVET_API int IsAlphaString(wchar_t const* text);

// In place, A-Z <-> a-z only; null text is ignored.
PALVET_API void ToLowerString(char* text);
PALVET_API void ToLowerString(wchar_t* text);
PALVET_API void ToUpperString(char* text);
PALVET_API void ToUpperString(wchar_t* text);

#endif
