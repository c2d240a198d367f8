#include <palvet/charset/charset_convert.h>

#include <palvet/core/debug_output.h>
#include <palvet/files/system_utils.h>
#include <palvet/text/buffer.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <initializer_list>

void* gLibICUHandle = nullptr;
PFN_UCNV_OPEN gfnUcnvOpen = nullptr;
PFN_UCNV_CLOSE gfnUcnvClose = nullptr;
PFN_UCNV_CONVERTEX gfnUcnvConvertEx = nullptr;
PFN_U_CLEANUP gfnUCleanup = nullptr;
UConverter* gUTF32Convert = nullptr;
UConverter* gUTF8Convert = nullptr;
UConverter* gGB2312Convert = nullptr;
UConverter* gBIG5Convert = nullptr;
UConverter* gGBKConvert = nullptr;
void* gLibIconvHandle = nullptr;
PFN_ICONV_OPEN gfnIconvOpen = nullptr;
PFN_ICONV gfnconvConvert = nullptr;
PFN_ICONV_CLOSE gfnconvClose = nullptr;
tagICONV_CONVERT_INFO gDefaultIconvConvertInfo[8];

namespace {

void* const kNoIconv = reinterpret_cast<void*>(-1);

struct CharsetNames {
    char const* icu;
    char const* iconv;
    UConverter** converter;
};

CharsetNames const& NamesOf(eCHARSETTYPE type)
{
    static CharsetNames const names[] = {
        {"UTF-8", "UTF-8", &gUTF8Convert},
        {"UTF-32LE", "WCHAR_T", &gUTF32Convert},
        {"GB2312", "GB2312", &gGB2312Convert},
        {"BIG5", "BIG5", &gBIG5Convert},
        {"GBK", "GBK", &gGBKConvert},
    };
    // Any value outside 1..4, negative ones included, is UTF-8.
    unsigned index = static_cast<unsigned>(type);
    return names[index < 5 ? index : 0];
}

// Looks up the four ICU entry points with the given suffix ("" or "_72");
// stops at the first one missing. 1 when all four resolved.
int ResolveICU(char const* suffix)
{
    char name[64];
    snprintf(name, sizeof name, "ucnv_open%s", suffix);
    gfnUcnvOpen = reinterpret_cast<PFN_UCNV_OPEN>(dlsym(gLibICUHandle, name));
    if (gfnUcnvOpen == nullptr)
        return 0;
    snprintf(name, sizeof name, "ucnv_close%s", suffix);
    gfnUcnvClose = reinterpret_cast<PFN_UCNV_CLOSE>(dlsym(gLibICUHandle, name));
    if (gfnUcnvClose == nullptr)
        return 0;
    snprintf(name, sizeof name, "ucnv_convertEx%s", suffix);
    gfnUcnvConvertEx = reinterpret_cast<PFN_UCNV_CONVERTEX>(dlsym(gLibICUHandle, name));
    if (gfnUcnvConvertEx == nullptr)
        return 0;
    snprintf(name, sizeof name, "u_cleanup%s", suffix);
    gfnUCleanup = reinterpret_cast<PFN_U_CLEANUP>(dlsym(gLibICUHandle, name));
    return gfnUCleanup != nullptr;
}

// The whole cached descriptor; the exported lookup can only return an int.
void* FindIconvDescriptor(char const* source, char const* target)
{
    for (tagICONV_CONVERT_INFO const& row : gDefaultIconvConvertInfo) {
        if (strcmp(row.szSource, source) == 0 && strcmp(row.szTarget, target) == 0)
            return row.handle;
    }
    return kNoIconv;
}

// Descriptors opened for pairs outside the cache. Opening one per call and
// never closing it would leak a descriptor per conversion, so each pair is
// opened once and kept until the engine stops. 5 x 5 type pairs at most.
struct ExtraDescriptor {
    char const* source;
    char const* target;
    void* handle;
};
ExtraDescriptor gExtraDescriptors[25];

void* OpenExtraDescriptor(char const* source, char const* target)
{
    for (ExtraDescriptor& extra : gExtraDescriptors) {
        if (extra.source == source && extra.target == target)
            return extra.handle;
        if (extra.source == nullptr) {
            // The arguments stand in this order on purpose: it is the
            // reverse of the cached rows.
            void* handle = gfnIconvOpen(source, target);
            if (handle == kNoIconv)
                return handle;  // not remembered: a later call tries again
            extra = {source, target, handle};
            return handle;
        }
    }
    return kNoIconv;
}

void CloseExtraDescriptors()
{
    for (ExtraDescriptor& extra : gExtraDescriptors) {
        if (extra.source != nullptr && gfnconvClose != nullptr)
            gfnconvClose(extra.handle);
        extra = {nullptr, nullptr, nullptr};
    }
}

}  // namespace

// ---- Engine selection --------------------------------------------------------

int InitSysLibCodeConvert()
{
    if (InitSysLibICU())
        return 1;
    return InitSysLibICONV();
}

void DeInitSysLibCodeConvert()
{
    DeInitSysLibICU();
    DeInitSysLibICONV();
}

int ConvertCharset(eCHARSETTYPE sourceType, CBuffer const* source, eCHARSETTYPE targetType, CBuffer* target)
{
    if (gLibICUHandle != nullptr)
        return ICUConvertCharset(sourceType, source, targetType, target);
    if (gLibIconvHandle != nullptr)
        return ICONVConvertCharset(sourceType, source, targetType, target);
    return 0;
}

// ---- ICU ---------------------------------------------------------------------

int InitSysLibICU()
{
    if (gLibICUHandle != nullptr)
        return 1;
    gLibICUHandle = LoadSystemLibrary("libicuuc.so");
    if (gLibICUHandle == nullptr) {
        DeInitSysLibICU();
        return 0;
    }
    // ICU suffixes its entry points with its major version.
    for (int version = 99; version >= 44; --version) {
        char suffix[16];
        snprintf(suffix, sizeof suffix, "_%d", version);
        if (ResolveICU(suffix)) {
            DbgOutput(1, "icu function version: %d\n", version);
            CreateICUConvert();
            return 1;
        }
    }
    if (ResolveICU("")) {
        CreateICUConvert();
        return 1;
    }
    DeInitSysLibICU();
    return 0;
}

void DeInitSysLibICU()
{
    DeleteICUConvert();
    if (gfnUCleanup != nullptr)
        gfnUCleanup();
    if (gLibICUHandle != nullptr) {
        dlclose(gLibICUHandle);
        gLibICUHandle = nullptr;
    }
    gfnUcnvOpen = nullptr;
    gfnUcnvClose = nullptr;
    gfnUcnvConvertEx = nullptr;
    gfnUCleanup = nullptr;
}

void CreateICUConvert()
{
    if (gLibICUHandle == nullptr || gfnUcnvOpen == nullptr)
        return;
    static eCHARSETTYPE const order[] = {CHARSET_UTF32, CHARSET_UTF8, CHARSET_GB2312, CHARSET_BIG5, CHARSET_GBK};
    for (eCHARSETTYPE type : order) {
        CharsetNames const& names = NamesOf(type);
        int status = 0;
        *names.converter = gfnUcnvOpen(names.icu, &status);
        if (status != 0)
            DbgOutput(1, "icu UcnvOpen %s, error: %d\n", names.icu, status);
    }
}

void DeleteICUConvert()
{
    if (gfnUcnvClose == nullptr)
        return;
    for (UConverter** converter : {&gUTF32Convert, &gUTF8Convert, &gGB2312Convert, &gBIG5Convert, &gGBKConvert}) {
        if (*converter != nullptr) {
            gfnUcnvClose(*converter);
            *converter = nullptr;
        }
    }
}

int ICUConvertCharset(eCHARSETTYPE sourceType, CBuffer const* source, eCHARSETTYPE targetType, CBuffer* target)
{
    if (gLibICUHandle == nullptr || source == nullptr || target == nullptr)
        return 0;
    UConverter* from = *NamesOf(sourceType).converter;
    UConverter* to = *NamesOf(targetType).converter;
    if (gfnUcnvConvertEx == nullptr || from == nullptr || to == nullptr)
        return 0;
    char const* in = reinterpret_cast<char const*>(source->GetBuffer());
    char* out = reinterpret_cast<char*>(target->GetBuffer());
    if (in == nullptr || source->GetAvailSize() == 0 || out == nullptr || target->GetBufSize() == 0)
        return 0;

    char* outStart = out;
    int status = 0;
    gfnUcnvConvertEx(to, from, &out, out + target->GetBufSize(), &in, in + source->GetAvailSize(),
                     nullptr, nullptr, nullptr, nullptr, 1, 1, &status);
    // ICU's warnings are negative and its errors positive; only a clean
    // status counts as success.
    if (status != 0) {
        target->SetBuffer(nullptr, 0);
        DbgOutput(1, "Convert %d->%d error=%d\n", static_cast<int>(sourceType), static_cast<int>(targetType),
                  status);
        return 0;
    }
    target->SetBuffer(nullptr, static_cast<unsigned int>(out - outStart));
    return 1;
}

// ---- iconv -------------------------------------------------------------------

int InitSysLibICONV()
{
    if (gLibIconvHandle != nullptr)
        return 1;
    gLibIconvHandle = LoadSystemLibrary("libiconv.so");
    if (gLibIconvHandle != nullptr) {
        gfnIconvOpen = reinterpret_cast<PFN_ICONV_OPEN>(dlsym(gLibIconvHandle, "iconv_open"));
        gfnconvConvert = reinterpret_cast<PFN_ICONV>(dlsym(gLibIconvHandle, "iconv"));
        gfnconvClose = reinterpret_cast<PFN_ICONV_CLOSE>(dlsym(gLibIconvHandle, "iconv_close"));
        if (gfnIconvOpen == nullptr)
            DbgOutput(1, "get function iconv_open failed\n");
        else if (gfnconvConvert == nullptr)
            DbgOutput(1, "get function iconv failed\n");
        else if (gfnconvClose == nullptr)
            DbgOutput(1, "get function iconv_close failed\n");
        else {
            InitDefaultIconvConvertInfo();
            return 1;
        }
    }
    DeInitSysLibICONV();
    return 0;
}

void DeInitSysLibICONV()
{
    DeInitDefaultIconvConvertInfo();
    CloseExtraDescriptors();
    if (gLibIconvHandle != nullptr) {
        dlclose(gLibIconvHandle);
        gLibIconvHandle = nullptr;
    }
    gfnIconvOpen = nullptr;
    gfnconvConvert = nullptr;
    gfnconvClose = nullptr;
}

void InitDefaultIconvConvertInfo()
{
    for (tagICONV_CONVERT_INFO& row : gDefaultIconvConvertInfo) {
        row.szSource[0] = '\0';
        row.szTarget[0] = '\0';
        row.handle = kNoIconv;
    }
    if (gLibIconvHandle == nullptr)
        return;
    static char const* const pairs[8][2] = {
        {"UTF-8", "WCHAR_T"}, {"WCHAR_T", "UTF-8"}, {"GB2312", "UTF-8"}, {"UTF-8", "GB2312"},
        {"BIG5", "UTF-8"},    {"UTF-8", "BIG5"},    {"GBK", "UTF-8"},    {"UTF-8", "GBK"},
    };
    for (int i = 0; i < 8; ++i)
        CreateIconvConvertInfo(&gDefaultIconvConvertInfo[i], pairs[i][0], pairs[i][1]);
}

void DeInitDefaultIconvConvertInfo()
{
    if (gfnconvClose == nullptr)
        return;
    for (tagICONV_CONVERT_INFO& row : gDefaultIconvConvertInfo) {
        row.szSource[0] = '\0';
        if (row.handle != kNoIconv) {
            gfnconvClose(row.handle);
            row.handle = kNoIconv;
        }
    }
}

void CreateIconvConvertInfo(tagICONV_CONVERT_INFO* info, char const* source, char const* target)
{
    if (info == nullptr || source == nullptr || target == nullptr)
        return;
    // Names longer than the fields are cut, keeping the terminator.
    snprintf(info->szSource, sizeof info->szSource, "%s", source);
    snprintf(info->szTarget, sizeof info->szTarget, "%s", target);
    info->handle = gfnIconvOpen != nullptr ? gfnIconvOpen(target, source) : kNoIconv;
    if (info->handle == kNoIconv)
        DbgOutput(1, "IconvOpen %s->%s Failed\n", source, target);
}

int FindIonvConvertHandle(char const* source, char const* target)
{
    if (source == nullptr || target == nullptr)
        return -1;
    return static_cast<int>(reinterpret_cast<long>(FindIconvDescriptor(source, target)));
}

int ICONVConvertCharset(eCHARSETTYPE sourceType, CBuffer const* source, eCHARSETTYPE targetType, CBuffer* target)
{
    if (gLibIconvHandle == nullptr || gfnconvConvert == nullptr || source == nullptr || target == nullptr)
        return 0;
    char const* from = NamesOf(sourceType).iconv;
    char const* to = NamesOf(targetType).iconv;
    void* cd = FindIconvDescriptor(from, to);
    if (cd == kNoIconv) {
        cd = OpenExtraDescriptor(from, to);
        if (cd == kNoIconv) {
            DbgOutput(1, "IconvOpen %s->%s Failed\n", from, to);
            return 0;
        }
    }
    char* in = reinterpret_cast<char*>(source->GetBuffer());
    char* out = reinterpret_cast<char*>(target->GetBuffer());
    if (in == nullptr || source->GetAvailSize() == 0 || out == nullptr || target->GetBufSize() == 0)
        return 0;

    unsigned long inLeft = source->GetAvailSize();
    unsigned long outLeft = target->GetBufSize();
    if (gfnconvConvert(cd, &in, &inLeft, &out, &outLeft) == static_cast<unsigned long>(-1)) {
        int error = errno;
        target->SetBuffer(nullptr, 0);
        DbgOutput(1, "Convert %d->%d error=%d\n", static_cast<int>(sourceType), static_cast<int>(targetType), error);
        return 0;
    }
    // The unused capacity, not the bytes written: callers of this engine rely
    // on it as it stands.
    target->SetBuffer(nullptr, static_cast<unsigned int>(outLeft));
    return 1;
}

// ---- Wide text ---------------------------------------------------------------

int icu_mbstowcs(wchar_t* dest, int capacity, char const* source, int length)
{
    if (dest == nullptr || source == nullptr)
        return 0;
    if (length < 0)
        length = static_cast<int>(strlen(source)) + 1;
    // A negative capacity would bind an enormous block; treat it as none.
    unsigned int bytes = capacity > 0 ? static_cast<unsigned int>(capacity) * sizeof(wchar_t) : 0;
    CBuffer in;
    CBuffer out;
    in.BindBuffer(source, static_cast<unsigned int>(length));
    out.BindBuffer(dest, bytes);
    return ConvertCharset(CHARSET_UTF8, &in, CHARSET_UTF32, &out);
}

int icu_wcstombs(char* dest, int capacity, wchar_t const* source, int length)
{
    if (dest == nullptr || source == nullptr)
        return 0;
    // Measured on the destination's narrow text, as callers of this function
    // have always had it; they pass zeroed or pre-filled destinations.
    if (length < 0)
        length = static_cast<int>(strlen(dest)) + 1;
    CBuffer in;
    CBuffer out;
    in.BindBuffer(source, static_cast<unsigned int>(length) * sizeof(wchar_t));
    out.BindBuffer(dest, capacity > 0 ? static_cast<unsigned int>(capacity) : 0);
    return ConvertCharset(CHARSET_UTF32, &in, CHARSET_UTF8, &out);
}
