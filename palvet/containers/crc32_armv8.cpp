// The CRC register update on the ARMv8 CRC32 instructions, which use the
// same reflected polynomial (0xEDB88320) with no inversion: each one is
// exactly a byte-table step, done 4 bytes at a time. Built for
// armv8-a+crc on 32-bit ARM; only called when the kernel reports the
// instructions (HWCAP2_CRC32).
#include "crc32_internal.h"

#if defined(__ARM_FEATURE_CRC32)
#include <arm_acle.h>

#include <cstdint>
#include <cstring>

namespace palvet::detail {

unsigned int Crc32UpdateArmv8(unsigned int reg, unsigned char const* p, size_t n)
{
    std::uint32_t crc = reg;
    while (n > 0 && (reinterpret_cast<std::uintptr_t>(p) & 3) != 0) {
        crc = __crc32b(crc, *p++);
        --n;
    }
    for (; n >= 16; n -= 16, p += 16) {
        std::uint32_t w[4];
        std::memcpy(w, p, sizeof w);  // little-endian words, aligned above
        crc = __crc32w(crc, w[0]);
        crc = __crc32w(crc, w[1]);
        crc = __crc32w(crc, w[2]);
        crc = __crc32w(crc, w[3]);
    }
    for (; n >= 4; n -= 4, p += 4) {
        std::uint32_t w;
        std::memcpy(&w, p, sizeof w);
        crc = __crc32w(crc, w);
    }
    while (n-- > 0)
        crc = __crc32b(crc, *p++);
    return crc;
}

}  // namespace palvet::detail

#endif
