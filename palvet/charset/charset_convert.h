#ifndef PALVET_CHARSET_CHARSET_CONVERT_H
#define PALVET_CHARSET_CHARSET_CONVERT_H

// Character-set conversion between UTF-8, UTF-32, GB2312, Big5 and GBK, and
// table-driven simplified/traditional Chinese conversion.
//
// Conversions run through ICU's common library or, failing that, iconv, both
// opened at run time by InitSysLibCodeConvert ("Lib" beside the executable
// first, then the system search path); neither is linked. Without either
// library every conversion returns 0. The engine keeps shared converter state
// and no lock: start and stop it on one thread while no conversion runs, and
// do not convert through the same engine on two threads at once.

#include <palvet/core/export.h>

class CBuffer;
struct UConverter;  // ICU's opaque converter

// Any value outside 1..4 converts as UTF-8. The fixed int type makes every
// int a valid value, so callers may pass what they were given.
enum eCHARSETTYPE : int {
    CHARSET_UTF8 = 0,
    CHARSET_UTF32 = 1,  // 32-bit wchar_t text, little-endian
    CHARSET_GB2312 = 2,
    CHARSET_BIG5 = 3,
    CHARSET_GBK = 4,
};

// One cached iconv descriptor. handle is the iconv_t, (void*)-1 when the row
// is empty or opening failed; it is pointer-sized, 32 bits on the target.
struct tagICONV_CONVERT_INFO {
    char szSource[16];  // iconv name of the source set
    char szTarget[16];  // iconv name of the target set
    void* handle;       // iconv_open(target, source), or -1
};

// The ICU functions are looked up by name; the status arguments are ICU's
// UErrorCode (an int-sized enumeration) and the reset/flush flags its UBool.
typedef UConverter* (*PFN_UCNV_OPEN)(char const* name, int* status);
typedef void (*PFN_UCNV_CLOSE)(UConverter* converter);
typedef void (*PFN_UCNV_CONVERTEX)(UConverter* targetConverter, UConverter* sourceConverter,
                                   char** target, char const* targetLimit,
                                   char const** source, char const* sourceLimit,
                                   char16_t* pivotStart, char16_t** pivotSource,
                                   char16_t** pivotTarget, char16_t const* pivotLimit,
                                   signed char reset, signed char flush, int* status);
typedef void (*PFN_U_CLEANUP)();
typedef void* (*PFN_ICONV_OPEN)(char const* to, char const* from);
typedef unsigned long (*PFN_ICONV)(void* cd, char** in, unsigned long* inLeft,
                                   char** out, unsigned long* outLeft);
typedef int (*PFN_ICONV_CLOSE)(void* cd);

// Engine state, all zero until InitSysLibCodeConvert.
extern PALVET_API void* gLibICUHandle;
extern PALVET_API PFN_UCNV_OPEN gfnUcnvOpen;
extern PALVET_API PFN_UCNV_CLOSE gfnUcnvClose;
extern PALVET_API PFN_UCNV_CONVERTEX gfnUcnvConvertEx;
extern PALVET_API PFN_U_CLEANUP gfnUCleanup;
extern PALVET_API UConverter* gUTF32Convert;
extern PALVET_API UConverter* gUTF8Convert;
extern PALVET_API UConverter* gGB2312Convert;
extern PALVET_API UConverter* gBIG5Convert;
extern PALVET_API UConverter* gGBKConvert;
extern PALVET_API void* gLibIconvHandle;
extern PALVET_API PFN_ICONV_OPEN gfnIconvOpen;
extern PALVET_API PFN_ICONV gfnconvConvert;
extern PALVET_API PFN_ICONV_CLOSE gfnconvClose;
// Rows in order: UTF-8->WCHAR_T, WCHAR_T->UTF-8, then GB2312, BIG5 and GBK
// each to UTF-8 and from UTF-8.
extern PALVET_API tagICONV_CONVERT_INFO gDefaultIconvConvertInfo[8];

// Starts ICU, or iconv only when ICU cannot be loaded. 1 when an engine is
// up (also when one already was), else 0.
PALVET_API int InitSysLibCodeConvert();
// Stops whichever engine runs; harmless when none does.
PALVET_API void DeInitSysLibCodeConvert();

// Converts the source buffer's data into the target buffer's storage, up to
// its capacity; the target is never grown. 1 on success, 0 on failure (no
// engine, null buffers, empty source, target without storage, or a
// conversion error, which is logged as "Convert %d->%d error=%d").
// Under ICU the target's data size becomes the bytes written. Under iconv it
// becomes the capacity left unused, and a failed conversion sets it to 0.
PALVET_API int ConvertCharset(eCHARSETTYPE sourceType, CBuffer const* source,
                              eCHARSETTYPE targetType, CBuffer* target);
PALVET_API int ICUConvertCharset(eCHARSETTYPE sourceType, CBuffer const* source,
                                 eCHARSETTYPE targetType, CBuffer* target);
PALVET_API int ICONVConvertCharset(eCHARSETTYPE sourceType, CBuffer const* source,
                                   eCHARSETTYPE targetType, CBuffer* target);

// Opens "libicuuc.so", finds its functions under the version suffixes 99 down
// to 44 and then unsuffixed, and opens the five converters. 1 when loaded.
PALVET_API int InitSysLibICU();
PALVET_API void DeInitSysLibICU();
// Opens (or closes and zeroes) the five shared converters; a converter that
// fails to open is logged and left null.
PALVET_API void CreateICUConvert();
PALVET_API void DeleteICUConvert();

// Opens "libiconv.so" and fills the descriptor cache. 1 when loaded.
PALVET_API int InitSysLibICONV();
PALVET_API void DeInitSysLibICONV();
PALVET_API void InitDefaultIconvConvertInfo();
PALVET_API void DeInitDefaultIconvConvertInfo();
// Fills one cache row with the names and iconv_open(target, source).
PALVET_API void CreateIconvConvertInfo(tagICONV_CONVERT_INFO* info, char const* source,
                                       char const* target);
// The cached descriptor for the pair as an int, -1 when there is none. The
// int holds a whole descriptor only where pointers are 32 bits wide.
PALVET_API int FindIonvConvertHandle(char const* source, char const* target);

// UTF-8 to wide text and back through ConvertCharset; 1 or 0, not a count.
// capacity counts the destination's own units (wide characters or bytes).
// A negative length converts through the terminator: icu_mbstowcs measures
// the source; icu_wcstombs measures the narrow text already in dest.
PALVET_API int icu_mbstowcs(wchar_t* dest, int capacity, char const* source, int length);
PALVET_API int icu_wcstombs(char* dest, int capacity, wchar_t const* source, int length);

// Simplified (GB2312) <-> traditional (Big5) tables: entries are the two
// output bytes, lead byte first. A Big5 pair (L, T) is entry
// (L - 0xA1) * 191 + T - 0x40; a GB pair is entry row * 94 + T - 0xA1, with
// rows 0..8 for leads 0xA1..0xA9 and 9..87 for 0xB0..0xFE. Characters
// without a counterpart map to the other set's ideographic space.
extern PALVET_API unsigned char const g_pBIGToGBTable[17954][2];
extern PALVET_API int const g_pBIGToGBTableSize;
extern PALVET_API unsigned char const g_pGBToBigTable[8272][2];
extern PALVET_API int const g_pGBToBigTableSize;

// Table conversion of double-byte text; the output is exactly as long as the
// input (pairs give pairs, other bytes are copied). Nothing happens for null
// pointers or lengths below 1. Stops at the destination capacity; a pair
// that would end beyond it is not written, so a capacity below the length
// can leave the last byte of room unset. A trailing lone lead is copied.
// Nothing is terminated beyond what the source length covers.
PALVET_API void Big5ToGbA(char const* source, int length, char* dest, int capacity);
// GB lead 0xA1 (punctuation) passes through unchanged; the leads 0xAA..0xAF,
// which GB2312 leaves unused, look up the rows of 0xB0..0xB5.
PALVET_API void GbToBig5A(char const* source, int length, char* dest, int capacity);

// 1 when the bytes form a double-byte Chinese character in the Big5 or GBK
// ranges, else 0.
PALVET_API int IsChineseA(char lead, char trail);

// Rewrites a GB2312 text file as UTF-8 at dest (which may be src). Nothing
// is written when the file is missing or empty or the conversion fails.
PALVET_API void ConvertGB2312ToUTF8_File(char const* src, char const* dest);
// Converts every visible file directly inside srcFolder into the existing
// dstFolder under the same name. Only under the ICU engine; does nothing
// under iconv.
PALVET_API void ConvertGB2312ToUTF8_Folder(char const* srcFolder, char const* dstFolder);

#endif
