#ifndef PALVET_TEXT_HEX_TEXT_H
#define PALVET_TEXT_HEX_TEXT_H

// Numbers and bytes as fixed-width digit text and hex, and hex text parsed
// back into numbers, byte buffers and strings. Hex input may start with 0x or
// 0X and takes the digits 0-9, a-f, A-F.

#include <palvet/core/export.h>

class CBuffer;
class CSimpleStringA;
class CSimpleStringW;

// Writes exactly digits digits of value in radix (right-aligned, leading
// zeros, higher digits dropped; 10 and up as 'A'...), then a terminator.
// Signed division: a negative value gives remainders of 0 or below, written
// as the characters at or below '0'. 0 digits write only the terminator
// (also for a negative count); radix 0 writes '0' digits. out must hold
// digits + 1 characters.
PALVET_API void ConvertLongToCharA(long value, char* out, int digits, int radix);
PALVET_API void ConvertLongToCharW(long value, wchar_t* out, int digits, int radix);

// Two lower-case hex digits, high nibble first, without a terminator.
PALVET_API void ByteToHexA(unsigned char byte, char* out);
PALVET_API void ByteToHexW(unsigned char byte, wchar_t* out);

// Sets out to the count bytes as lower-case hex pairs. Nothing for a null
// pointer; a count below 1 sets an empty text.
PALVET_API void BufferToHexStringA(unsigned char const* data, int count, CSimpleStringA* out);
PALVET_API void BufferToHexStringW(unsigned char const* data, int count, CSimpleStringW* out);

// Hex dump through the debug log (level 1): "PrintHexBuffer: addr=%p", then
// lines "%08x-%08x:" of first and last offset followed by "xx " per byte. The
// short last line still shows first + bytesPerLine - 1 as its last offset.
// Nothing for a null address, a size of 0 or below, or fewer than 1 byte per
// line.
PALVET_API void PrintHexBuffer(void const* address, int size, int bytesPerLine);

// At most two hex digits after the prefix, up to the first other character;
// the value modulo 256. 0 for a null text.
PALVET_API unsigned char HexStringToByteA(char const* text);
PALVET_API unsigned char HexStringToByteW(wchar_t const* text);

// Hex digits after the prefix up to the first other character, any number
// of them: only the last 8 (16) survive. Empty text or a bare prefix: 0.
PALVET_API unsigned int HexStringToUint32A(char const* text);
PALVET_API unsigned int HexStringToUint32W(wchar_t const* text);
PALVET_API unsigned long long HexStringToUint64A(char const* text);
PALVET_API unsigned long long HexStringToUint64W(wchar_t const* text);

// Decodes count characters of hex text (not measured; a prefix counts) into
// count / 2 bytes, pair by pair as HexStringToByteA reads from the pair's
// start: a pair whose second character is no digit gives its first digit's
// value, one that starts with a non-digit gives 0; an odd last digit is
// dropped. Nothing is read past the count. The bytes replace the content of
// out (a buffer, or a narrow string for both string forms). Nothing for a
// null pointer; a count below 0 is taken as 0.
PALVET_API void HexStringToBufferA(char const* text, int count, CBuffer* out);
PALVET_API void HexStringToBufferW(wchar_t const* text, int count, CBuffer* out);
PALVET_API void HexStringToStringA(char const* text, int count, CSimpleStringA* out);
PALVET_API void HexStringToStringW(wchar_t const* text, int count, CSimpleStringA* out);

#endif
