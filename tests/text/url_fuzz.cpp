// URL decoding of arbitrary text, and encoding followed by decoding, which
// must give back any text without bytes below 0x10.
#include <palvet/palvet.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    std::string text(reinterpret_cast<char const*>(data), size);
    CSimpleStringA decoded;
    DecodeURL(text.c_str(), &decoded);
    if (static_cast<size_t>(decoded.GetLength()) > strlen(text.c_str()))
        __builtin_trap();

    std::string clean;
    for (char c : text)
        if (static_cast<unsigned char>(c) >= 0x10)
            clean += c;
    CSimpleStringA encoded, back;
    EncodeURL(clean.c_str(), &encoded);
    DecodeURL(encoded.GetString(), &back);
    if (clean != std::string(back.GetString(), static_cast<size_t>(back.GetLength())))
        __builtin_trap();
    return 0;
}
