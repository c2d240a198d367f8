#include <palvet/imaging/color_conversion_internal.h>

namespace palvet::detail {

ColourKernels const* ColourKernelsAvx2() { return nullptr; }

}  // namespace palvet::detail
