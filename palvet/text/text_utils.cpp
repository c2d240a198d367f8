#include <palvet/text/text_utils.h>

#include "utf8_codec_internal.h"

#include <cstdint>
#include <cstring>
#include <cwchar>
#include <new>

using palvet::detail::kEncodeSpare;

wchar_t* AllocCopyWStringFromAString(char const* source, int count)
{
    if (source == nullptr)
        return nullptr;
    size_t len = count < 0 ? strlen(source) : static_cast<size_t>(count);
    wchar_t* out = new (std::nothrow) wchar_t[len + 1];
    if (out == nullptr)
        return nullptr;
    // Zero only what decoding leaves untouched, the terminator included.
    size_t k = palvet::detail::DecodeUtf8(reinterpret_cast<unsigned char const*>(source), len, out);
    wmemset(out + k, 0, len + 1 - k);
    return out;
}

char* AllocCopyAStringFromWString(wchar_t const* source, int count)
{
    if (source == nullptr)
        return nullptr;
    size_t len = count < 0 ? wcslen(source) : static_cast<size_t>(count);
    if (len > (SIZE_MAX - 1 - kEncodeSpare) / 4)
        return nullptr;
    // Four bytes per character covers every form up to 0x1FFFFF; the spare
    // bytes take the one longer form that may cross the end.
    size_t size = 4 * len + 1;
    char* out = new (std::nothrow) char[size + kEncodeSpare];
    if (out == nullptr)
        return nullptr;
    size_t j = palvet::detail::EncodeUtf8(source, len, reinterpret_cast<unsigned char*>(out), size);
    memset(out + j, 0, size + kEncodeSpare - j);
    return out;
}

void FreeWString(wchar_t* text)
{
    delete[] text;
}

void FreeAString(char* text)
{
    delete[] text;
}
