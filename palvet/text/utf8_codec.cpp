#include "utf8_codec_internal.h"

#include <palvet/core/cpu_features_internal.h>

#include <cstdio>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace palvet::detail {

namespace {

struct ScalarBlock {
    static constexpr size_t kWidth = 8;

    static size_t Widen(unsigned char const* in, wchar_t* out)
    {
        uint64_t word;
        memcpy(&word, in, 8);
        for (size_t i = 0; i < 8; ++i)
            out[i] = static_cast<wchar_t>(in[i]);
        uint64_t high = word & 0x8080808080808080ull;
        // Little-endian: the first byte is the lowest.
        return high == 0 ? 8 : static_cast<size_t>(__builtin_ctzll(high)) / 8;
    }

    static size_t Narrow(wchar_t const* in, unsigned char* out)
    {
        size_t n = 0;
        while (n < 8 && static_cast<uint32_t>(in[n]) < 0x80) {
            out[n] = static_cast<unsigned char>(in[n]);
            ++n;
        }
        return n;
    }
};

#if defined(__SSE2__)
struct Sse2Block {
    static constexpr size_t kWidth = 16;

    static size_t Widen(unsigned char const* in, wchar_t* out)
    {
        __m128i const zero = _mm_setzero_si128();
        __m128i bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(in));
        __m128i lo = _mm_unpacklo_epi8(bytes, zero);
        __m128i hi = _mm_unpackhi_epi8(bytes, zero);
        __m128i* dst = reinterpret_cast<__m128i*>(out);
        _mm_storeu_si128(dst + 0, _mm_unpacklo_epi16(lo, zero));
        _mm_storeu_si128(dst + 1, _mm_unpackhi_epi16(lo, zero));
        _mm_storeu_si128(dst + 2, _mm_unpacklo_epi16(hi, zero));
        _mm_storeu_si128(dst + 3, _mm_unpackhi_epi16(hi, zero));
        unsigned high = static_cast<unsigned>(_mm_movemask_epi8(bytes));
        return high == 0 ? 16 : static_cast<size_t>(__builtin_ctz(high));
    }

    static size_t Narrow(wchar_t const* in, unsigned char* out)
    {
        __m128i const* src = reinterpret_cast<__m128i const*>(in);
        __m128i a = _mm_loadu_si128(src + 0);
        __m128i b = _mm_loadu_si128(src + 1);
        __m128i c = _mm_loadu_si128(src + 2);
        __m128i d = _mm_loadu_si128(src + 3);
        // ASCII values survive the saturating packs unchanged; other lanes
        // are overwritten by the caller.
        __m128i packed = _mm_packus_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), packed);
        // Lanes above 0x7F: unsigned, so 0x80000000 and up count as well.
        __m128i const high = _mm_set1_epi32(~0x7F);
        __m128i const zero = _mm_setzero_si128();
        __m128i ab = _mm_packs_epi32(_mm_cmpeq_epi32(_mm_and_si128(a, high), zero),
                                     _mm_cmpeq_epi32(_mm_and_si128(b, high), zero));
        __m128i cd = _mm_packs_epi32(_mm_cmpeq_epi32(_mm_and_si128(c, high), zero),
                                     _mm_cmpeq_epi32(_mm_and_si128(d, high), zero));
        unsigned other = ~static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(ab, cd))) & 0xFFFFu;
        return other == 0 ? 16 : static_cast<size_t>(__builtin_ctz(other));
    }
};
#endif

}  // namespace

size_t DecodeUtf8Scalar(unsigned char const* source, size_t len, wchar_t* out)
{
    return DecodeUtf8With<ScalarBlock>(source, len, out);
}

size_t EncodeUtf8Scalar(wchar_t const* source, size_t len, unsigned char* out, size_t size)
{
    return EncodeUtf8With<ScalarBlock>(source, len, out, size);
}

size_t DecodeUtf8(unsigned char const* source, size_t len, wchar_t* out)
{
#if defined(__SSE2__)
    return UseSse2() ? DecodeUtf8With<Sse2Block>(source, len, out) : DecodeUtf8Scalar(source, len, out);
#elif defined(__arm__) || defined(__aarch64__)
    return UseNeon() ? DecodeUtf8Neon(source, len, out) : DecodeUtf8Scalar(source, len, out);
#else
    return DecodeUtf8Scalar(source, len, out);
#endif
}

size_t EncodeUtf8(wchar_t const* source, size_t len, unsigned char* out, size_t size)
{
#if defined(__SSE2__)
    return UseSse2() ? EncodeUtf8With<Sse2Block>(source, len, out, size)
                     : EncodeUtf8Scalar(source, len, out, size);
#elif defined(__arm__) || defined(__aarch64__)
    return UseNeon() ? EncodeUtf8Neon(source, len, out, size) : EncodeUtf8Scalar(source, len, out, size);
#else
    return EncodeUtf8Scalar(source, len, out, size);
#endif
}

uint32_t DecodeRare(unsigned char const* s, size_t len, size_t& j)
{
    static char const* const messages[] = {
        "error AllocCopyWStringFromAString, j + 2 > nLength",
        "error AllocCopyWStringFromAString, j + 3 > nLength",
        "error AllocCopyWStringFromAString, j + 4 > nLength",
        "error AllocCopyWStringFromAString, j + 5 > nLength",
        "error AllocCopyWStringFromAString, j + 6 > nLength",
    };
    uint32_t b = s[j];
    size_t size = b < 0xE0 ? 2 : b < 0xF0 ? 3 : b < 0xF8 ? 4 : b < 0xFC ? 5 : 6;
    uint32_t value = b & (0x7Fu >> size);
    if (len - j < size) {
        // Cut short by the end of the source: still decoded, the missing
        // bytes counting as zero.
        puts(messages[size - 2]);
    }
    for (size_t i = 1; i < size; ++i)
        value = value << 6 | (j + i < len ? s[j + i] & 0x3Fu : 0u);
    j += size;
    return value;
}

size_t EncodeRare(uint32_t c, unsigned char* out, size_t j, size_t size)
{
    size_t bytes = c <= 0x3FFFFFF ? 5 : 6;
    if (size - j < bytes)
        ReportNoRoom(bytes);
    size_t shift = 6 * (bytes - 1);
    out[j++] = static_cast<unsigned char>((bytes == 5 ? 0xF8 : 0xFC) | c >> shift);
    while (shift > 0) {
        shift -= 6;
        out[j++] = static_cast<unsigned char>(0x80 | ((c >> shift) & 0x3F));
    }
    return j;
}

void ReportNoRoom(size_t bytes)
{
    static char const* const messages[] = {
        "error AllocCopyAStringFromWString, i + 2 > nDstLength",
        "error AllocCopyAStringFromWString, i + 3 > nDstLength",
        "error AllocCopyAStringFromWString, i + 4 > nDstLength",
        "error AllocCopyAStringFromWString, i + 5 > nDstLength",
        "error AllocCopyAStringFromWString, i + 6 > nDstLength",
    };
    puts(messages[bytes - 2]);
}

}  // namespace palvet::detail
