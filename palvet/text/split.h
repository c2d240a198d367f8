#ifndef PALVET_TEXT_SPLIT_H
#define PALVET_TEXT_SPLIT_H

// Splitting text at separator characters or separator strings into a
// pointer collection, and testing whether a word is a whole item of a
// separated list.
//
// A splitter makes one private copy of the text, cuts it in place by writing
// terminators over the separators, appends pointers to the pieces to the
// collection (AddData(piece, -1), after what it already holds) and returns
// the copy. The copy owns the pieces: keep it while the pieces are used, then
// release it with Internal_DelArrayA / Internal_DelArrayW, never piece by
// piece. Negative counts are measured; only count characters are copied.

#include <palvet/core/export.h>

class CPtrCtrl;

// 1 when the first occurrence of word in the counted text is a whole item:
// at the text start or after one of the first separatorCount separator
// characters, and followed by the text's terminator or a separator (the
// character after the occurrence is read even past the count). Only the
// first occurrence is judged: "ab" is not an item of "abc,ab".
PALVET_API int FindStringFromStringWithSeprator(char const* text, int count, char const* word,
                                                int wordCount, char const* separators,
                                                int separatorCount);

// Splits at any of the separator characters. With skipEmpty, an empty piece
// (two separators in a row, or one at the start) is passed over; otherwise it
// is added. A separator at the very end never adds an empty last piece. With
// maxPieces > 0, once the collection holds maxPieces - 1 items (those it had
// before the call included) the rest of the text becomes the last piece.
// Null for a null text or collection.
PALVET_API char* DevideStringByCharListA(char const* text, int count, char const* separators,
                                         int separatorCount, int skipEmpty, CPtrCtrl* pieces,
                                         int maxPieces);
PALVET_API wchar_t* DevideStringByCharListW(wchar_t const* text, int count, wchar_t const* separators,
                                            int separatorCount, int skipEmpty, CPtrCtrl* pieces,
                                            int maxPieces);

// Splits at separator strings (null entries skipped): the earliest match
// wins, and of matches at one place the longest. Empty pieces are added, but
// a separator at the very end adds no empty last piece. Null for a null text
// or collection.
PALVET_API char* DevideStringByStringListA(char const* text, int count, char const** separators,
                                           int separatorCount, CPtrCtrl* pieces);
PALVET_API wchar_t* DevideStringByStringListW(wchar_t const* text, int count, wchar_t const** separators,
                                              int separatorCount, CPtrCtrl* pieces);

// Release a copy returned by a splitter; null is ignored.
PALVET_API void Internal_DelArrayA(char const* copy);
PALVET_API void Internal_DelArrayW(wchar_t const* copy);

#endif
