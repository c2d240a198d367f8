// Colour row kernels on 512-bit AVX-512 (F + BW).

#include <palvet/imaging/color_conversion_internal.h>

#if defined(__AVX512F__) && defined(__AVX512BW__)

#include <palvet/imaging/color_kernels_avx512_internal.h>

namespace palvet::detail {

ColourKernels const* ColourKernelsAvx512() { return Kernels<Avx512>::Table(); }

}  // namespace palvet::detail

#else

namespace palvet::detail {
ColourKernels const* ColourKernelsAvx512() { return nullptr; }
}  // namespace palvet::detail

#endif
