#ifndef PALVET_TEXT_TEXT_UTILS_H
#define PALVET_TEXT_TEXT_UTILS_H

#include <palvet/core/export.h>

// UTF-8 <-> wide conversion by hand, without a locale: sequences of up to six
// bytes, no validation. Bytes that cannot start a sequence (stray
// continuation bytes, 0xFE, 0xFF) come out as the wide character of the same
// value. A sequence cut short by the end of the source, or a wide character
// that needs more room than the four bytes allotted to it, is reported with a
// line on standard output and conversion goes on.
//
// A negative count means the source is zero-terminated. The results are
// always zero-terminated, allocated with new[] and must be released with
// FreeWString / FreeAString. A null source gives a null result.

// Returns count + 1 wide characters, zero-filled after the decoded text.
// Bytes that a cut-short sequence would need past the source count as zero.
PALVET_API wchar_t* AllocCopyWStringFromAString(char const* source, int count);

// Returns 4 * count + 1 bytes (plus a few spare ones, so that a five- or
// six-byte sequence crossing that size is written whole), zero-filled after
// the encoded text. Conversion stops once the text reaches 4 * count + 1 bytes.
PALVET_API char* AllocCopyAStringFromWString(wchar_t const* source, int count);

// Release results of the two functions above; null is ignored.
PALVET_API void FreeWString(wchar_t* text);
PALVET_API void FreeAString(char* text);

#endif
