#ifndef PALVET_IMAGING_AVX512_INTRINSICS_INTERNAL_H
#define PALVET_IMAGING_AVX512_INTRINSICS_INTERNAL_H

// The intrinsics for the *_avx512 sources.
#if defined(__GNUC__) && !defined(__clang__)
// g++ 12 warns about the deliberately undefined registers inside its own
// AVX-512 intrinsics (GCC bug 105593); the warning is off for the sources
// that include this header.
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <immintrin.h>

#endif
