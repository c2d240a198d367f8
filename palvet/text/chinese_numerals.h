#ifndef PALVET_TEXT_CHINESE_NUMERALS_H
#define PALVET_TEXT_CHINESE_NUMERALS_H

// Numbers written in Chinese numeral characters (simplified forms).

#include <palvet/core/export.h>

// The digits 0 to 9: U+96F6 U+4E00 U+4E8C U+4E09 U+56DB U+4E94 U+516D U+4E03
// U+516B U+4E5D.
extern PALVET_API wchar_t g_ChineseNumber[10];

// Writes value into out, at most size - 1 characters and a terminator (for a
// size below 1, out[0] is still set to the terminator; nothing for a null
// out). The rules are positional, not grouped: the unit for ten thousand
// follows only the ten-thousands digit (100000 reads one-ten-zero), a zero
// is written after any text whose tens digit is 0 (100 reads
// one-hundred-zero), 10 to 19 read ten, ten-one, ...; of the hundred
// millions only the last digit is written. A negative value gives an empty
// text.
PALVET_API void ConvertNumberToChineseNumber(int value, wchar_t* out, int size);

#endif
