#ifndef PALVET_CONTAINERS_CRC32_INTERNAL_H
#define PALVET_CONTAINERS_CRC32_INTERNAL_H

// Block update of the 32-bit CRC register (reflected polynomial 0xEDB88320,
// no inversion on entry or exit). The scalar path defines the results; the
// carry-less multiply path must match it bit for bit.

#include <cstddef>

namespace palvet::detail {

// Slicing-by-8 over eight 256-entry tables; any length.
unsigned int Crc32UpdateScalar(unsigned int reg, unsigned char const* data, size_t length);

// Chooses the fastest path the processor offers.
unsigned int Crc32Update(unsigned int reg, unsigned char const* data, size_t length);

#if defined(__x86_64__) || defined(__i386__)
// Folds whole 16-byte blocks with PCLMULQDQ: length >= 64 and a multiple of
// 16. Call only when Crc32HasPclmul().
unsigned int Crc32FoldPclmul(unsigned int reg, unsigned char const* data, size_t length);
bool Crc32HasPclmul();
#endif

#if defined(__arm__) || defined(__aarch64__)
// The ARMv8 CRC32 instructions, any length. Call only when
// Crc32HasArmv8().
unsigned int Crc32UpdateArmv8(unsigned int reg, unsigned char const* data, size_t length);
#endif

}  // namespace palvet::detail

#endif
