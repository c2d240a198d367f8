#include <palvet/text/simple_string.h>

#include <palvet/charset/charset_convert.h>

#include "simple_string_internal.h"

#include <cstring>

using palvet::detail::SimpleStringAccess;

namespace {

template <class Ch>
int AllDigits(Ch const* text)
{
    if (text == nullptr)
        return 0;
    for (; *text != 0; ++text) {
        if (*text < '0' || *text > '9')
            return 0;
    }
    return 1;
}

template <class Ch>
int AllLetters(Ch const* text)
{
    if (text == nullptr)
        return 0;
    for (; *text != 0; ++text) {
        // Clearing bit 0x20 folds a-z onto A-Z.
        unsigned long folded = static_cast<unsigned long>(*text) & ~0x20ul;
        if (folded < 'A' || folded > 'Z')
            return 0;
    }
    return 1;
}

template <class Ch>
void ShiftCase(Ch* text, Ch from, Ch to)
{
    if (text == nullptr)
        return;
    for (; *text != 0; ++text) {
        if (*text >= from && *text <= to)
            *text = static_cast<Ch>(*text ^ 0x20);
    }
}

}  // namespace

// ---- CSimpleStringA -------------------------------------------------------

int CSimpleStringA::Equal(char const* text, int count, int nocase) const
{
    return SimpleStringAccess::Body(*this).Equal(text, count, nocase);
}

int CSimpleStringA::Equal(char c, int nocase) const
{
    return Equal(&c, 1, nocase);
}

int CSimpleStringA::Equal(wchar_t c, int nocase) const
{
    // Four UTF-8 bytes at most, and a terminator that stays zero.
    char narrow[5] = {};
    icu_wcstombs(narrow, 5, &c, 1);
    return Equal(narrow, -1, nocase);
}

int CSimpleStringA::Equal(wchar_t const* text, int count, int nocase) const
{
    char* converted = AllocCopyAStringFromWString(text, count);
    int equal = Equal(converted, -1, nocase);
    FreeAString(converted);
    return equal;
}

int CSimpleStringA::Equal(CSimpleStringA const* other, int nocase) const
{
    if (other == nullptr)
        return 0;
    if (other == this)
        return 1;
    return Equal(other->GetString(), other->GetLength(), nocase);
}

int CSimpleStringA::Equal(CSimpleStringW const* other, int nocase) const
{
    if (other == nullptr)
        return 0;
    return Equal(other->GetString(), other->GetLength(), nocase);
}

void CSimpleStringA::Replace(char const* find, char const* replacement, int nocase)
{
    if (replacement == nullptr || find == nullptr || m_pData == nullptr || *find == 0)
        return;
    size_t findLength = strlen(find);
    int replacementLength = static_cast<int>(strlen(replacement));
    auto search = [nocase, find](char const* from) {
        return nocase ? strcasestr(from, find) : strstr(from, find);
    };
    char const* match = search(m_pData);
    if (match == nullptr)
        return;

    CSimpleStringA result;
    char const* from = m_pData;
    do {
        result.Append(from, static_cast<int>(match - from));
        result.Append(replacement, replacementLength);
        from = match + findLength;  // matches never overlap
        match = search(from);
    } while (match != nullptr);
    // The tail is counted, not measured, so text behind an embedded zero
    // character survives even though the search stops at it.
    result.Append(from, static_cast<int>(m_pData + m_nLength - from));
    Set(&result);
}

void CSimpleStringA::Replace(wchar_t const* find, wchar_t const* replacement, int nocase)
{
    char* narrowFind = AllocCopyAStringFromWString(find, -1);
    char* narrowReplacement = AllocCopyAStringFromWString(replacement, -1);
    Replace(narrowFind, narrowReplacement, nocase);
    FreeAString(narrowFind);
    FreeAString(narrowReplacement);
}

int CSimpleStringA::IsDigit() const
{
    return IsDigitString(m_pData);
}

int CSimpleStringA::IsAlpha() const
{
    return IsAlphaString(m_pData);
}

void CSimpleStringA::ToLower()
{
    ToLowerString(m_pData);
}

void CSimpleStringA::ToUpper()
{
    ToUpperString(m_pData);
}

// ---- CSimpleStringW -------------------------------------------------------

int CSimpleStringW::Equal(wchar_t const* text, int count, int nocase) const
{
    return SimpleStringAccess::Body(*this).Equal(text, count, nocase);
}

int CSimpleStringW::Equal(wchar_t c, int nocase) const
{
    return Equal(&c, 1, nocase);
}

int CSimpleStringW::Equal(char c, int nocase) const
{
    wchar_t wide = 0;
    icu_mbstowcs(&wide, 1, &c, 1);
    return Equal(&wide, 1, nocase);
}

int CSimpleStringW::Equal(char const* text, int count, int nocase) const
{
    // The byte count is passed on as the character count on purpose: only a
    // zero-terminated text is measured after conversion.
    wchar_t* converted = AllocCopyWStringFromAString(text, count);
    int equal = Equal(converted, count, nocase);
    FreeWString(converted);
    return equal;
}

int CSimpleStringW::Equal(CSimpleStringW const* other, int nocase) const
{
    if (other == nullptr)
        return 0;
    if (other == this)
        return 1;
    return Equal(other->GetString(), other->GetLength(), nocase);
}

int CSimpleStringW::Equal(CSimpleStringA const* other, int nocase) const
{
    if (other == nullptr)
        return 0;
    return Equal(other->GetString(), other->GetLength(), nocase);
}

void CSimpleStringW::Replace(char const* find, char const* replacement, int nocase)
{
    CSimpleStringA narrow(this);
    narrow.Replace(find, replacement, nocase);
    Set(&narrow);
}

void CSimpleStringW::Replace(wchar_t const* find, wchar_t const* replacement, int nocase)
{
    CSimpleStringA narrow(this);
    narrow.Replace(find, replacement, nocase);
    Set(&narrow);
}

int CSimpleStringW::IsDigit() const
{
    return IsDigitString(m_pData);
}

int CSimpleStringW::IsAlpha() const
{
    return IsAlphaString(m_pData);
}

void CSimpleStringW::ToLower()
{
    ToLowerString(m_pData);
}

void CSimpleStringW::ToUpper()
{
    ToUpperString(m_pData);
}

// ---- Plain text -----------------------------------------------------------

int IsDigitString(char const* text)
{
    return AllDigits(text);
}

int IsDigitString(wchar_t const* text)
{
    return AllDigits(text);
}

int IsAlphaString(char const* text)
{
    return AllLetters(reinterpret_cast<unsigned char const*>(text));
}

int IsAlphaString(wchar_t const* text)
{
    return AllLetters(text);
}

void ToLowerString(char* text)
{
    ShiftCase<char>(text, 'A', 'Z');
}

void ToLowerString(wchar_t* text)
{
    ShiftCase<wchar_t>(text, L'A', L'Z');
}

void ToUpperString(char* text)
{
    ShiftCase<char>(text, 'a', 'z');
}

void ToUpperString(wchar_t* text)
{
    ShiftCase<wchar_t>(text, L'a', L'z');
}
