#ifndef PALVET_TEXT_URL_ENCODING_H
#define PALVET_TEXT_URL_ENCODING_H

// Form-style percent encoding of narrow text. Both functions append to out
// (which must be valid) without clearing it, and do nothing for a null or
// empty text.

#include <palvet/core/export.h>

class CSimpleStringA;

// Keeps the 67 characters blank, '*', '-', '.', '0'-'9', 'A'-'Z', '_' and
// 'a'-'z', writing the blank as '+'; every other byte becomes '%' and its
// value in upper-case hex without padding, so bytes below 0x10 get a single
// digit ("%A" for a line feed).
PALVET_API void EncodeURL(char const* text, CSimpleStringA* out);

// '+' becomes a blank. '%' and two characters from '0'-'?' or 'A'-'F' become
// the byte they read as hex (a second character from ':' to '?' ends the
// number, leaving the first digit's value); lower-case digits are not
// decoded. A '%' at the end is kept; any other '%' is dropped and what
// follows it is decoded as usual.
PALVET_API void DecodeURL(char const* text, CSimpleStringA* out);

#endif
