// Carry-less multiply folding of the 32-bit CRC. The file is built with AVX2
// enabled; the functions add PCLMULQDQ, which every AVX2 processor has but
// which is checked at run time all the same.
#include "crc32_internal.h"

#if defined(__x86_64__) || defined(__i386__)

#include <palvet/core/cpu_features_internal.h>

#include <immintrin.h>

namespace palvet::detail {

namespace {

// x^k mod P constants of the reflected polynomial, bit-reflected and shifted
// by one as carry-less multiplication of reflected operands needs.
alignas(16) constexpr unsigned long long kFold4[2] = {0x0154442bd4ULL, 0x01c6e41596ULL};  // 512-bit stride
alignas(16) constexpr unsigned long long kFold1[2] = {0x01751997d0ULL, 0x00ccaa009eULL};  // 128-bit stride
alignas(16) constexpr unsigned long long kFold64[2] = {0x0163cd6124ULL, 0};              // 64 to 32 bits
alignas(16) constexpr unsigned long long kBarrett[2] = {0x01db710641ULL, 0x01f7011641ULL};  // P', mu

#define PALVET_PCLMUL __attribute__((target("pclmul")))

PALVET_PCLMUL inline __m128i Load(unsigned char const* p)
{
    return _mm_loadu_si128(reinterpret_cast<__m128i const*>(p));
}

// acc * k folded forward by the stride k stands for, plus the next block.
PALVET_PCLMUL inline __m128i Fold(__m128i acc, __m128i k, __m128i next)
{
    __m128i const lo = _mm_clmulepi64_si128(acc, k, 0x00);
    __m128i const hi = _mm_clmulepi64_si128(acc, k, 0x11);
    return _mm_xor_si128(_mm_xor_si128(hi, lo), next);
}

}  // namespace

bool Crc32HasPclmul()
{
    static bool const has = [] {
        __builtin_cpu_init();
        return CpuHasAvx2() && __builtin_cpu_supports("pclmul");
    }();
    return has;
}

PALVET_PCLMUL unsigned int Crc32FoldPclmul(unsigned int reg, unsigned char const* buf, size_t len)
{

    __m128i x1 = _mm_xor_si128(Load(buf), _mm_cvtsi32_si128(static_cast<int>(reg)));
    __m128i x2 = Load(buf + 16);
    __m128i x3 = Load(buf + 32);
    __m128i x4 = Load(buf + 48);
    buf += 64;
    len -= 64;

    // Four independent accumulators keep the multiplier busy.
    __m128i k = _mm_load_si128(reinterpret_cast<__m128i const*>(kFold4));
    while (len >= 64) {
        x1 = Fold(x1, k, Load(buf));
        x2 = Fold(x2, k, Load(buf + 16));
        x3 = Fold(x3, k, Load(buf + 32));
        x4 = Fold(x4, k, Load(buf + 48));
        buf += 64;
        len -= 64;
    }

    k = _mm_load_si128(reinterpret_cast<__m128i const*>(kFold1));
    x1 = Fold(x1, k, x2);
    x1 = Fold(x1, k, x3);
    x1 = Fold(x1, k, x4);
    while (len >= 16) {
        x1 = Fold(x1, k, Load(buf));
        buf += 16;
        len -= 16;
    }

    // 128 to 64 bits.
    __m128i const low32 = _mm_setr_epi32(~0, 0, ~0, 0);
    __m128i x = _mm_xor_si128(_mm_srli_si128(x1, 8), _mm_clmulepi64_si128(x1, k, 0x10));
    // 64 to 32 bits.
    k = _mm_loadl_epi64(reinterpret_cast<__m128i const*>(kFold64));
    x = _mm_xor_si128(_mm_clmulepi64_si128(_mm_and_si128(x, low32), k, 0x00), _mm_srli_si128(x, 4));
    // Barrett reduction.
    k = _mm_load_si128(reinterpret_cast<__m128i const*>(kBarrett));
    __m128i t = _mm_clmulepi64_si128(_mm_and_si128(x, low32), k, 0x10);
    t = _mm_clmulepi64_si128(_mm_and_si128(t, low32), k, 0x00);
    x = _mm_xor_si128(x, t);
    return static_cast<unsigned int>(_mm_extract_epi32(x, 1));
}

}  // namespace palvet::detail

#endif
