#ifndef PALVET_TEXT_QUICK_FORMAT_INTERNAL_H
#define PALVET_TEXT_QUICK_FORMAT_INTERNAL_H

// A formatter for the printf conversions short strings are made of, much
// faster than the C library's, which goes through its stream machinery for
// every call. It produces exactly what vsnprintf produces for the formats it
// takes: the integer conversions d i u o x X with every flag, width,
// precision (also given by '*') and length modifier, c, non-null s, and %%.
// Anything else (floating point, pointers, wide characters, positional
// arguments, grouping, %n, a null string) and any text that does not fit
// makes it give up, so that the caller formats with vsnprintf instead.

#include <cstdarg>
#include <cstddef>

namespace palvet::detail {

// Formats into out (size bytes, at least 1) and terminates the text; the
// character count, or -1 when it gave up (out then holds nothing useful and
// args may have been read from).
int QuickFormat(char* out, size_t size, char const* format, va_list args);

}  // namespace palvet::detail

#endif
