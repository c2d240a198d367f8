#ifndef PALVET_CORE_CPU_FEATURES_INTERNAL_H
#define PALVET_CORE_CPU_FEATURES_INTERNAL_H

// Run-time processor feature checks for the vectorised paths. Sources named
// *_avx2.cpp are compiled with -mavx2 on x86 and *_neon.cpp with -mfpu=neon on
// 32-bit ARM (see palvet/CMakeLists.txt); callers must check the feature here
// before calling into them. Every vectorised path has a scalar twin that
// defines its results.

#if defined(__arm__)
#include <sys/auxv.h>
#endif

namespace palvet::detail {

inline bool CpuHasSse2()
{
#if defined(__x86_64__) || defined(__SSE2__)
    return true;  // part of the x86-64 baseline
#else
    return false;
#endif
}

inline bool CpuHasAvx2()
{
#if defined(__x86_64__) || defined(__i386__)
    static bool const has = __builtin_cpu_supports("avx2");
    return has;
#else
    return false;
#endif
}

// The byte and word instructions of AVX-512 (BW) with its foundation; the
// check includes the operating system's support for the wider registers.
inline bool CpuHasAvx512()
{
#if defined(__x86_64__) || defined(__i386__)
    static bool const has = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw");
    return has;
#else
    return false;
#endif
}

inline bool CpuHasNeon()
{
#if defined(__aarch64__)
    return true;
#elif defined(__arm__)
    static bool const has = (getauxval(AT_HWCAP) & (1UL << 12)) != 0;  // HWCAP_NEON
    return has;
#else
    return false;
#endif
}

}  // namespace palvet::detail

#endif
