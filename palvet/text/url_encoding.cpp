#include <palvet/text/url_encoding.h>

#include <palvet/text/simple_string.h>

#include <cstdlib>
#include <string>

namespace {

// The characters kept as they are, indexed by byte value.
struct KeepTable {
    bool keep[256] = {};
    constexpr KeepTable()
    {
        for (int c : {' ', '*', '-', '.', '_'})
            keep[c] = true;
        for (int c = '0'; c <= '9'; ++c)
            keep[c] = true;
        for (int c = 'A'; c <= 'Z'; ++c)
            keep[c] = true;
        for (int c = 'a'; c <= 'z'; ++c)
            keep[c] = true;
    }
};
constexpr KeepTable kKeep;

char const kUpperHex[] = "0123456789ABCDEF";

// Accepts '0' to '?' (the digits and ":;<=>?") and 'A' to 'F'.
bool PassesDigitTest(char c) { return (c >= '0' && c <= '?') || (c >= 'A' && c <= 'F'); }

}  // namespace

void EncodeURL(char const* text, CSimpleStringA* out)
{
    if (text == nullptr || *text == '\0' || out == nullptr)
        return;
    // Built locally and appended once; the result is what appending each
    // piece ("%%%X" for the escapes) would give.
    std::string encoded;
    for (unsigned char const* p = reinterpret_cast<unsigned char const*>(text); *p; ++p) {
        unsigned char c = *p;
        if (kKeep.keep[c]) {
            encoded += c == ' ' ? '+' : static_cast<char>(c);
        } else {
            encoded += '%';
            if (c >= 0x10)
                encoded += kUpperHex[c >> 4];
            encoded += kUpperHex[c & 15];
        }
    }
    out->Append(encoded.data(), static_cast<int>(encoded.size()));
}

void DecodeURL(char const* text, CSimpleStringA* out)
{
    if (text == nullptr || *text == '\0' || out == nullptr)
        return;
    std::string decoded;
    for (char const* p = text; *p; ++p) {
        if (*p == '+') {
            decoded += ' ';
        } else if (*p != '%') {
            decoded += *p;
        } else if (p[1] == '\0') {
            decoded += '%';
            break;
        } else if (PassesDigitTest(p[1]) && PassesDigitTest(p[2])) {
            char digits[3] = {p[1], p[2], '\0'};
            decoded += static_cast<char>(strtoul(digits, nullptr, 16) & 0xFF);
            p += 2;
        }
        // Any other '%' is dropped; the loop goes on with the next character.
    }
    out->Append(decoded.data(), static_cast<int>(decoded.size()));
}
