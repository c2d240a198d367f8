#include <palvet/text/hex_text.h>

#include <palvet/core/debug_output.h>
#include <palvet/text/buffer.h>
#include <palvet/text/simple_string.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <type_traits>
#include <new>
#include <vector>

namespace {

char const kLowerHex[] = "0123456789abcdef";

// Digit values of the bytes, -1 for non-digits.
struct HexTable {
    signed char value[256];
    constexpr HexTable() : value()
    {
        for (int c = 0; c < 256; ++c)
            value[c] = -1;
        for (int c = 0; c < 10; ++c)
            value['0' + c] = static_cast<signed char>(c);
        for (int c = 0; c < 6; ++c) {
            value['a' + c] = static_cast<signed char>(10 + c);
            value['A' + c] = static_cast<signed char>(10 + c);
        }
    }
};
constexpr HexTable kHex;

template <class Ch>
int HexValue(Ch c)
{
    auto u = static_cast<typename std::make_unsigned<Ch>::type>(c);
    return u < 256 ? kHex.value[u] : -1;
}

// Length of a 0x / 0X prefix at text, looking at no more than avail
// characters.
template <class Ch>
size_t PrefixLength(Ch const* text, size_t avail)
{
    return avail >= 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') ? 2 : 0;
}

// Reads hex digits after an optional prefix, at most maxDigits of them and
// never past avail characters, accumulating with wrap-around.
template <class T, class Ch>
T ParseHex(Ch const* text, size_t avail, size_t maxDigits)
{
    size_t at = PrefixLength(text, avail);
    T value = 0;
    for (size_t n = 0; at < avail && n < maxDigits; ++at, ++n) {
        int d = HexValue(text[at]);
        if (d < 0)
            break;
        value = static_cast<T>(value << 4 | static_cast<T>(d));
    }
    return value;
}

template <class Ch>
size_t Unbounded(Ch const*)
{
    return static_cast<size_t>(-1);
}

template <class Ch>
void ConvertLongToChar(long value, Ch* out, int digits, int radix)
{
    if (out == nullptr)
        return;
    if (digits < 0)
        digits = 0;
    out[digits] = 0;
    for (int k = digits - 1; k >= 0; --k) {
        long d = 0;
        if (radix == -1) {
            // LONG_MIN / -1 overflows; the hardware result wraps to itself.
            value = static_cast<long>(0ul - static_cast<unsigned long>(value));
        } else if (radix != 0) {
            d = value % radix;
            value /= radix;
        }
        out[k] = static_cast<Ch>(d > 9 ? 'A' + (d - 10) : '0' + d);
    }
}

// The text after the prefix rule, and then count / 2 bytes, each parsed from
// its pair's start as HexStringToByte would, but bounded by the count.
template <class Ch>
std::vector<unsigned char> DecodeHex(Ch const* text, int count)
{
    size_t n = count < 0 ? 0 : static_cast<size_t>(count);
    size_t skip = PrefixLength(text, n);
    text += skip;
    n -= skip;
    std::vector<unsigned char> bytes(n / 2);
    for (size_t i = 0; i < bytes.size(); ++i) {
        Ch const* pair = text + 2 * i;
        int hi = HexValue(pair[0]), lo = HexValue(pair[1]);
        // Two digits, the usual case, directly; anything else (a bad
        // character, or an inner "0x" read as a prefix) the long way.
        bytes[i] = hi >= 0 && lo >= 0 ? static_cast<unsigned char>(hi << 4 | lo)
                       : ParseHex<unsigned char>(pair, n - 2 * i, 2);
    }
    return bytes;
}

}  // namespace

void ConvertLongToCharA(long value, char* out, int digits, int radix)
{
    ConvertLongToChar(value, out, digits, radix);
}

void ConvertLongToCharW(long value, wchar_t* out, int digits, int radix)
{
    ConvertLongToChar(value, out, digits, radix);
}

void ByteToHexA(unsigned char byte, char* out)
{
    if (out == nullptr)
        return;
    out[0] = kLowerHex[byte >> 4];
    out[1] = kLowerHex[byte & 15];
}

void ByteToHexW(unsigned char byte, wchar_t* out)
{
    if (out == nullptr)
        return;
    out[0] = kLowerHex[byte >> 4];
    out[1] = kLowerHex[byte & 15];
}

void BufferToHexStringA(unsigned char const* data, int count, CSimpleStringA* out)
{
    if (data == nullptr || out == nullptr)
        return;
    size_t n = count < 0 ? 0 : static_cast<size_t>(count);
    if (n > INT_MAX / 2)
        return;
    std::vector<char> hex(2 * n + 1);
    for (size_t i = 0; i < n; ++i)
        ByteToHexA(data[i], &hex[2 * i]);
    out->Set(hex.data(), static_cast<int>(2 * n));
}

void BufferToHexStringW(unsigned char const* data, int count, CSimpleStringW* out)
{
    if (data == nullptr || out == nullptr)
        return;
    size_t n = count < 0 ? 0 : static_cast<size_t>(count);
    if (n > INT_MAX / 2)
        return;
    std::vector<wchar_t> hex(2 * n + 1);
    for (size_t i = 0; i < n; ++i)
        ByteToHexW(data[i], &hex[2 * i]);
    out->Set(hex.data(), static_cast<int>(2 * n));
}

void PrintHexBuffer(void const* address, int size, int bytesPerLine)
{
    if (address == nullptr || size <= 0 || bytesPerLine < 1)
        return;
    unsigned char const* bytes = static_cast<unsigned char const*>(address);
    // A line never shows more bytes than there are.
    size_t perLine = bytesPerLine < size ? static_cast<size_t>(bytesPerLine) : static_cast<size_t>(size);
    if (perLine > (SIZE_MAX - 64) / 3)
        return;
    std::unique_ptr<char[]> line(new (std::nothrow) char[perLine * 3 + 64]);
    if (!line)
        return;
    DbgOutput(1, "PrintHexBuffer: addr=%p\n", address);
    for (unsigned first = 0; first < static_cast<unsigned>(size); first += static_cast<unsigned>(bytesPerLine)) {
        unsigned n = static_cast<unsigned>(size) - first;
        if (n > static_cast<unsigned>(bytesPerLine))
            n = static_cast<unsigned>(bytesPerLine);
        int at = snprintf(line.get(), 64, "%08x-%08x:", first, first + static_cast<unsigned>(bytesPerLine) - 1);
        char* p = line.get() + at;
        for (unsigned i = 0; i < n; ++i, p += 3) {
            ByteToHexA(bytes[first + i], p);
            p[2] = ' ';
        }
        *p = '\0';
        DbgOutput(1, "%s\n", line.get());
        if (static_cast<unsigned>(size) - first <= static_cast<unsigned>(bytesPerLine))
            break;
    }
}

unsigned char HexStringToByteA(char const* text)
{
    return text == nullptr ? 0 : ParseHex<unsigned char>(text, Unbounded(text), 2);
}

unsigned char HexStringToByteW(wchar_t const* text)
{
    return text == nullptr ? 0 : ParseHex<unsigned char>(text, Unbounded(text), 2);
}

// The zero terminator is no hex digit, so an unbounded read stops there.
unsigned int HexStringToUint32A(char const* text)
{
    return text == nullptr ? 0 : ParseHex<unsigned int>(text, Unbounded(text), Unbounded(text));
}

unsigned int HexStringToUint32W(wchar_t const* text)
{
    return text == nullptr ? 0 : ParseHex<unsigned int>(text, Unbounded(text), Unbounded(text));
}

unsigned long long HexStringToUint64A(char const* text)
{
    return text == nullptr ? 0 : ParseHex<unsigned long long>(text, Unbounded(text), Unbounded(text));
}

unsigned long long HexStringToUint64W(wchar_t const* text)
{
    return text == nullptr ? 0 : ParseHex<unsigned long long>(text, Unbounded(text), Unbounded(text));
}

void HexStringToBufferA(char const* text, int count, CBuffer* out)
{
    if (text == nullptr || out == nullptr)
        return;
    std::vector<unsigned char> bytes = DecodeHex(text, count);
    out->SetBuffer(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

void HexStringToBufferW(wchar_t const* text, int count, CBuffer* out)
{
    if (text == nullptr || out == nullptr)
        return;
    std::vector<unsigned char> bytes = DecodeHex(text, count);
    out->SetBuffer(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

void HexStringToStringA(char const* text, int count, CSimpleStringA* out)
{
    if (text == nullptr || out == nullptr)
        return;
    std::vector<unsigned char> bytes = DecodeHex(text, count);
    out->Set(reinterpret_cast<char const*>(bytes.data()), static_cast<int>(bytes.size()));
}

void HexStringToStringW(wchar_t const* text, int count, CSimpleStringA* out)
{
    if (text == nullptr || out == nullptr)
        return;
    std::vector<unsigned char> bytes = DecodeHex(text, count);
    out->Set(reinterpret_cast<char const*>(bytes.data()), static_cast<int>(bytes.size()));
}
