#include <palvet/text/simple_string.h>

#include "quick_format_internal.h"
#include "simple_string_internal.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cwchar>

using palvet::detail::SimpleStringAccess;

namespace {

// First formatting buffer and the step by which a failed wide format grows.
constexpr size_t kFormatStep = 1024;

// A formatter's -1 means "did not fit" for the wide formatter, which reports
// nothing better, so such a format is retried with more room. Text that can
// never be formatted (an unconvertible character, a result beyond int) would
// fail the same way forever; that ends the attempt instead.
bool MayFitLater(int result)
{
    return result < 0 && errno != EILSEQ && errno != EOVERFLOW;
}

int Vformat(char* out, size_t size, char const* format, va_list args)
{
    return vsnprintf(out, size, format, args);
}

int Vformat(wchar_t* out, size_t size, wchar_t const* format, va_list args)
{
    return vswprintf(out, size, format, args);
}

// Formats into a buffer that grows until the text fits, then hands the text
// to deliver(text, count): the narrow formatter's count, or -1 for wide text,
// whose formatter does not report one. Returns false if formatting failed.
template <class Ch, class Deliver>
bool FormatWith(Ch const* format, va_list args, Deliver deliver)
{
    if (format == nullptr)
        return false;
    Ch first[kFormatStep];
    if constexpr (sizeof(Ch) == 1) {
        va_list pass;
        va_copy(pass, args);
        int const quick = palvet::detail::QuickFormat(first, kFormatStep, format, pass);
        va_end(pass);
        if (quick >= 0) {
            deliver(first, quick);
            return true;
        }
    }
    Ch* buffer = first;
    size_t size = kFormatStep;
    bool done = false;
    for (;;) {
        va_list pass;
        va_copy(pass, args);
        errno = 0;
        int result = Vformat(buffer, size, format, pass);
        va_end(pass);
        if (result >= 0 && static_cast<size_t>(result) < size) {
            buffer[size - 1] = 0;
            deliver(buffer, sizeof(Ch) == 1 ? result : -1);
            done = true;
            break;
        }
        if (result < 0 && !MayFitLater(result))
            break;
        size_t next = result < 0 ? size + kFormatStep : static_cast<size_t>(result) + 1;
        if (buffer != first)
            delete[] buffer;
        buffer = new (std::nothrow) Ch[next];
        if (buffer == nullptr)
            return false;
        size = next;
    }
    if (buffer != first)
        delete[] buffer;
    return done;
}

}  // namespace

// ---- CSimpleStringA -------------------------------------------------------

CSimpleStringA::CSimpleStringA() : m_pData(nullptr), m_nLength(0), m_nCapacity(0) {}

CSimpleStringA::CSimpleStringA(CSimpleStringA const* other) : CSimpleStringA()
{
    Set(other->GetString(), other->GetLength());
}

CSimpleStringA::CSimpleStringA(CSimpleStringW const* other) : CSimpleStringA()
{
    Set(other->GetString(), other->GetLength());
}

CSimpleStringA::~CSimpleStringA()
{
    FreeInternal();
}

char const* CSimpleStringA::GetString() const
{
    return SimpleStringAccess::Body(*this).Text();
}

int CSimpleStringA::GetLength() const
{
    return m_nLength;
}

void CSimpleStringA::Set(char const* text, int count)
{
    SimpleStringAccess::Body(*this).Set(text, count);
}

void CSimpleStringA::Set(char c)
{
    Set(&c, 1);
}

void CSimpleStringA::Set(CSimpleStringA const* other)
{
    Set(other->GetString(), other->GetLength());
}

void CSimpleStringA::Set(wchar_t const* text, int count)
{
    SimpleStringAccess::Body(*this).SetOther(text, count, Equal(text, count, 0) != 0);
}

void CSimpleStringA::Set(wchar_t c)
{
    Set(&c, 1);
}

void CSimpleStringA::Set(CSimpleStringW const* other)
{
    Set(other->GetString(), other->GetLength());
}

void CSimpleStringA::Append(char const* text, int count)
{
    SimpleStringAccess::Body(*this).Append(text, count);
}

void CSimpleStringA::Append(char c)
{
    SimpleStringAccess::Body(*this).Append(&c, 1);
}

void CSimpleStringA::Append(wchar_t const* text, int count)
{
    AppendInternal(text, count);
}

void CSimpleStringA::Append(wchar_t c)
{
    AppendInternal(&c, 1);
}

void CSimpleStringA::Format(char const* format, ...)
{
    va_list args;
    va_start(args, format);
    if (!FormatWith(format, args, [this](char const* text, int count) { Set(text, count); }))
        FreeInternal();
    va_end(args);
}

void CSimpleStringA::Format(wchar_t const* format, ...)
{
    va_list args;
    va_start(args, format);
    if (!FormatWith(format, args, [this](wchar_t const* text, int count) { Set(text, count); }))
        FreeInternal();
    va_end(args);
}

void CSimpleStringA::AppendFormat(char const* format, ...)
{
    va_list args;
    va_start(args, format);
    FormatWith(format, args, [this](char const* text, int count) { Append(text, count); });
    va_end(args);
}

void CSimpleStringA::AppendFormat(wchar_t const* format, ...)
{
    va_list args;
    va_start(args, format);
    FormatWith(format, args, [this](wchar_t const* text, int count) { Append(text, count); });
    va_end(args);
}

void CSimpleStringA::Trunk(int length)
{
    SimpleStringAccess::Body(*this).Trunk(length);
}

void CSimpleStringA::Free()
{
    FreeInternal();
}

void CSimpleStringA::AppendInternal(char const* text, int count)
{
    SimpleStringAccess::Body(*this).Append(text, count);
}

void CSimpleStringA::AppendInternal(wchar_t const* text, int count)
{
    SimpleStringAccess::Body(*this).AppendOther(text, count);
}

int CSimpleStringA::ReAlloc(int need)
{
    return SimpleStringAccess::Body(*this).ReAlloc(need);
}

int CSimpleStringA::IncreaseCapability(int current, int need)
{
    return palvet::detail::StringBody<char>::Increase(current, need);
}

int CSimpleStringA::DecreaseCapability(int current, int need)
{
    return palvet::detail::StringBody<char>::Decrease(current, need);
}

void CSimpleStringA::FreeInternal()
{
    SimpleStringAccess::Body(*this).Free();
}

// ---- CSimpleStringW -------------------------------------------------------

CSimpleStringW::CSimpleStringW() : m_pData(nullptr), m_nLength(0), m_nCapacity(0) {}

CSimpleStringW::CSimpleStringW(CSimpleStringA const* other) : CSimpleStringW()
{
    Set(other->GetString(), other->GetLength());
}

CSimpleStringW::CSimpleStringW(CSimpleStringW const* other) : CSimpleStringW()
{
    // Unlike Set(CSimpleStringW const*), ends at the first zero character.
    Set(other->GetString(), -1);
}

CSimpleStringW::~CSimpleStringW()
{
    FreeInternal();
}

wchar_t const* CSimpleStringW::GetString() const
{
    return SimpleStringAccess::Body(*this).Text();
}

int CSimpleStringW::GetLength() const
{
    return m_nLength;
}

void CSimpleStringW::Set(char const* text, int count)
{
    SimpleStringAccess::Body(*this).SetOther(text, count, Equal(text, count, 0) != 0);
}

void CSimpleStringW::Set(char c)
{
    Set(&c, 1);
}

void CSimpleStringW::Set(CSimpleStringA const* other)
{
    Set(other->GetString(), other->GetLength());
}

void CSimpleStringW::Set(wchar_t const* text, int count)
{
    SimpleStringAccess::Body(*this).Set(text, count);
}

void CSimpleStringW::Set(wchar_t c)
{
    Set(&c, 1);
}

void CSimpleStringW::Set(CSimpleStringW const* other)
{
    Set(other->GetString(), other->GetLength());
}

void CSimpleStringW::Append(char const* text, int count)
{
    AppendInternal(text, count);
}

void CSimpleStringW::Append(char c)
{
    AppendInternal(&c, 1);
}

void CSimpleStringW::Append(wchar_t const* text, int count)
{
    SimpleStringAccess::Body(*this).Append(text, count);
}

void CSimpleStringW::Append(wchar_t c)
{
    SimpleStringAccess::Body(*this).Append(&c, 1);
}

void CSimpleStringW::Format(char const* format, ...)
{
    va_list args;
    va_start(args, format);
    if (!FormatWith(format, args, [this](char const* text, int count) { Set(text, count); }))
        FreeInternal();
    va_end(args);
}

void CSimpleStringW::Format(wchar_t const* format, ...)
{
    va_list args;
    va_start(args, format);
    if (!FormatWith(format, args, [this](wchar_t const* text, int count) { Set(text, count); }))
        FreeInternal();
    va_end(args);
}

void CSimpleStringW::AppendFormat(char const* format, ...)
{
    va_list args;
    va_start(args, format);
    FormatWith(format, args, [this](char const* text, int count) { Append(text, count); });
    va_end(args);
}

void CSimpleStringW::AppendFormat(wchar_t const* format, ...)
{
    va_list args;
    va_start(args, format);
    FormatWith(format, args, [this](wchar_t const* text, int count) { Append(text, count); });
    va_end(args);
}

void CSimpleStringW::Trunk(int length)
{
    SimpleStringAccess::Body(*this).Trunk(length);
}

void CSimpleStringW::Free()
{
    FreeInternal();
}

void CSimpleStringW::AppendInternal(wchar_t const* text, int count)
{
    SimpleStringAccess::Body(*this).Append(text, count);
}

void CSimpleStringW::AppendInternal(char const* text, int count)
{
    SimpleStringAccess::Body(*this).AppendOther(text, count);
}

int CSimpleStringW::ReAlloc(int need)
{
    return SimpleStringAccess::Body(*this).ReAlloc(need);
}

int CSimpleStringW::IncreaseCapability(int current, int need)
{
    return palvet::detail::StringBody<wchar_t>::Increase(current, need);
}

int CSimpleStringW::DecreaseCapability(int current, int need)
{
    return palvet::detail::StringBody<wchar_t>::Decrease(current, need);
}

void CSimpleStringW::FreeInternal()
{
    SimpleStringAccess::Body(*this).Free();
}
