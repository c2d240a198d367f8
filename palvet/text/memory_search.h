#ifndef PALVET_TEXT_MEMORY_SEARCH_H
#define PALVET_TEXT_MEMORY_SEARCH_H

// Searching counted memory for a pattern or a character, narrow and wide,
// and the longest common piece of two texts. Nothing here allocates.

#include <palvet/core/export.h>

// First match of pattern (patternCount bytes) in haystack (count bytes),
// trying only windows that start a multiple of step bytes from haystack: the
// quick-search (Sunday) walk, whose skip table is keyed by the first byte of
// each step-sized unit. Null when there is no match, when patternCount is
// below 1, count is below patternCount or step below 1, or for a null
// pointer.
PALVET_API unsigned char const* BufFindPatt(unsigned char const* haystack, int count,
                                            unsigned char const* pattern, int patternCount, int step);

// First occurrence of pattern in text; a negative count is measured with
// strlen. Null for null pointers, an empty pattern, or no match.
PALVET_API char const* MemFindBufA(char const* text, int count, char const* pattern, int patternCount);

// The same over wide characters (counts in characters, measured with wcslen
// when negative); only whole characters match, never a window that straddles
// two of them.
PALVET_API wchar_t const* MemFindBufW(wchar_t const* text, int count, wchar_t const* pattern,
                                      int patternCount);

// First of exactly count characters equal to c; a zero character does not
// stop the scan. Null for a null text or a count of 0 or below (not
// measured).
PALVET_API char const* MemFindChrA(char const* text, char c, int count);
PALVET_API wchar_t const* MemFindChrW(wchar_t const* text, wchar_t c, int count);

// Length of the longest common piece of two zero-terminated texts. With
// nocase nonzero, letters differing only in case match, and an unequal pair
// of other characters is skipped rather than ending the piece: the result
// then counts the matching positions of the best aligned overlap, which need
// not be contiguous. 0 for a null text or an empty first text.
PALVET_API int StrMaxSameLengthA(char const* a, char const* b, int nocase);

#endif
