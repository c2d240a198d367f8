// Hex text into a buffer and a string, narrow and wide, with random counts
// over heap copies of exactly the counted size (so ASan sees any over-read).
#include <palvet/palvet.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    std::unique_ptr<char[]> text(new char[size]);
    std::unique_ptr<wchar_t[]> wide(new wchar_t[size]);
    for (size_t i = 0; i < size; ++i) {
        text[i] = static_cast<char>(data[i]);
        wide[i] = static_cast<wchar_t>(data[i]);
    }
    int count = static_cast<int>(size);
    CBuffer buffer;
    HexStringToBufferA(text.get(), count, &buffer);
    if (buffer.GetAvailSize() > size / 2)
        __builtin_trap();
    CBuffer wideBuffer;
    HexStringToBufferW(wide.get(), count, &wideBuffer);
    // Both widths read the same digits the same way.
    if (wideBuffer.GetAvailSize() != buffer.GetAvailSize() ||
        (buffer.GetAvailSize() && memcmp(buffer.GetBuffer(), wideBuffer.GetBuffer(), buffer.GetAvailSize())))
        __builtin_trap();
    CSimpleStringA s;
    HexStringToStringA(text.get(), count, &s);
    HexStringToStringW(wide.get(), count, &s);
    return 0;
}
