// libFuzzer target for the UTF-8 <-> wide conversions, both directions, at
// random lengths: the results must stay inside their allocations, and the
// vectorised loops must agree with the plain ones.

#include <palvet/text/text_utils.h>
#include <palvet/text/utf8_codec_internal.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

using namespace palvet::detail;

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // Cut-short sequences are reported on standard output; keep the log quiet.
    if (freopen("/dev/null", "w", stdout) == nullptr)
        abort();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    if (size < 1 || size > 1 << 16)
        return 0;
    bool const encode = data[0] & 1;
    ++data;
    --size;

    if (!encode) {
        // An exact-size copy, unterminated, so any read past it is seen.
        std::unique_ptr<char[]> text(new char[size]);
        memcpy(text.get(), data, size);
        wchar_t* wide = AllocCopyWStringFromAString(text.get(), static_cast<int>(size));
        if (wide == nullptr)
            abort();
        std::vector<wchar_t> plain(size + 1), fast(size + 1);
        size_t const n = DecodeUtf8Scalar(data, size, plain.data());
        if (DecodeUtf8(data, size, fast.data()) != n || n > size ||
            memcmp(plain.data(), fast.data(), n * sizeof(wchar_t)) != 0 ||
            memcmp(plain.data(), wide, n * sizeof(wchar_t)) != 0)
            abort();
        FreeWString(wide);
        return 0;
    }

    size_t const count = size / sizeof(wchar_t);
    std::unique_ptr<wchar_t[]> wide(new wchar_t[count + 1]);
    memcpy(wide.get(), data, count * sizeof(wchar_t));
    wide[count] = 0;
    char* text = AllocCopyAStringFromWString(wide.get(), static_cast<int>(count));
    if (text == nullptr)
        abort();
    size_t const room = 4 * count + 1;
    std::vector<unsigned char> plain(room + kEncodeSpare), fast(room + kEncodeSpare);
    size_t const n = EncodeUtf8Scalar(wide.get(), count, plain.data(), room);
    if (EncodeUtf8(wide.get(), count, fast.data(), room) != n || n > room + kEncodeSpare ||
        memcmp(plain.data(), fast.data(), n) != 0 || memcmp(plain.data(), text, n) != 0)
        abort();
    FreeAString(text);
    // The zero-terminated form reads up to the first zero only.
    FreeAString(AllocCopyAStringFromWString(wide.get(), -1));
    return 0;
}
