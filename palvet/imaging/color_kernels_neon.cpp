#include <palvet/imaging/color_conversion_internal.h>

namespace palvet::detail {

ColourKernels const* ColourKernelsNeon() { return nullptr; }

}  // namespace palvet::detail
