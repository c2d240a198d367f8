#ifndef PALVET_CORE_CPU_FEATURES_INTERNAL_H
#define PALVET_CORE_CPU_FEATURES_INTERNAL_H

// Run-time processor feature checks for the vectorised paths. Sources named
// *_avx2.cpp are compiled with -mavx2 on x86 and *_neon.cpp with -mfpu=neon on
// 32-bit ARM (see palvet/CMakeLists.txt); callers must check the feature here
// before calling into them. Every vectorised path has a scalar twin that
// defines its results.

#if defined(__arm__)
#include <asm/hwcap.h>
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

// VBMI's byte permutes, on top of AVX-512 F + BW.
inline bool CpuHasAvx512Vbmi()
{
#if defined(__x86_64__) || defined(__i386__)
    static bool const has = CpuHasAvx512() && __builtin_cpu_supports("avx512vbmi");
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
    static bool const has = (getauxval(AT_HWCAP) & HWCAP_NEON) != 0;
    return has;
#else
    return false;
#endif
}

// The ARMv8 CRC32 instructions, which 32-bit ARMv8 processors may offer.
inline bool CpuHasArmCrc32()
{
#if defined(__arm__)
    static bool const has = (getauxval(AT_HWCAP2) & HWCAP2_CRC32) != 0;
    return has;
#else
    return false;
#endif
}

// One cap on the vectorised paths for every kernel family, so that tests
// can run each level a processor has, the plain one included, and so that
// tools which emulate a narrower processor (valgrind has no AVX-512) can be
// given paths they run. The starting cap comes from the environment variable
// PALVET_KERNEL_LEVEL ("scalar", "sse2", "neon", "avx2", "avx512" or the level
// number), read once; Auto when it is absent or unrecognised.
enum class KernelLevel { Auto = -1, Scalar = 0, Sse2OrNeon = 1, Avx2 = 2, Avx512 = 3 };

// Changes the cap; for tests. Not synchronised with running conversions.
void SetKernelLevel(KernelLevel level);
KernelLevel GetKernelLevel();
// Whether dispatchers may use the kernels of level (the processor may still
// lack them: check the CpuHas functions too).
bool KernelLevelAllows(KernelLevel level);

// The processor has the extension and the cap allows it: what dispatchers ask.
inline bool UseSse2() { return CpuHasSse2() && KernelLevelAllows(KernelLevel::Sse2OrNeon); }
inline bool UseNeon() { return CpuHasNeon() && KernelLevelAllows(KernelLevel::Sse2OrNeon); }
inline bool UseAvx2() { return CpuHasAvx2() && KernelLevelAllows(KernelLevel::Avx2); }
inline bool UseAvx512() { return CpuHasAvx512() && KernelLevelAllows(KernelLevel::Avx512); }
// The CRC instructions count as the NEON level's.
inline bool UseArmCrc32() { return CpuHasArmCrc32() && KernelLevelAllows(KernelLevel::Sse2OrNeon); }

// The levels this processor has, Scalar first, whatever the cap.
inline bool CpuHasKernelLevel(KernelLevel level)
{
    switch (level) {
    case KernelLevel::Auto:
    case KernelLevel::Scalar:
        return true;
    case KernelLevel::Sse2OrNeon:
        return CpuHasSse2() || CpuHasNeon();
    case KernelLevel::Avx2:
        return CpuHasAvx2();
    case KernelLevel::Avx512:
        return CpuHasAvx512();
    }
    return false;
}

}  // namespace palvet::detail

#endif
