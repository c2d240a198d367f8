#include <palvet/imaging/rotation.h>

#include <palvet/core/cpu_features_internal.h>
#include <palvet/imaging/pixel_kernels_internal.h>

namespace {

// 1-, 2- and 3-byte units: the NEON tiles where there are any.
template <int N>
void RotateUnits(unsigned char const* src, unsigned char* dst, int w, int h, int degrees)
{
#if defined(__arm__) || defined(__aarch64__)
    if (palvet::detail::UseNeon() && palvet::detail::RotateUnitsNeon(src, dst, w, h, N, degrees))
        return;
#endif
    palvet::detail::RotateUnits<N>(src, dst, w, h, degrees);
}

void RotatePacked(unsigned char const* src, unsigned char* dst, int w, int h, int bpp, int degrees)
{
    switch (bpp) {
    case 1: RotateUnits<1>(src, dst, w, h, degrees); break;
    case 2: RotateUnits<2>(src, dst, w, h, degrees); break;
    case 3: RotateUnits<3>(src, dst, w, h, degrees); break;
    case 4: palvet::detail::Rotate32(src, dst, w, h, degrees); break;
    default: palvet::detail::RotateBytes(src, dst, w, h, bpp, degrees); break;
    }
}

// Y plane full size; chroma planes (planar: U and V bytes; semi-planar: one
// plane of U, V pairs) at half size in each direction.
void RotateYuv420(unsigned char** src, unsigned char** dst, int w, int h, bool semiPlanar, int degrees)
{
    if (w < 1 || h < 1)
        return;
    RotateUnits<1>(src[0], dst[0], w, h, degrees);
    int const cw = w / 2;
    int const ch = h / 2;
    if (cw < 1 || ch < 1)
        return;
    if (semiPlanar) {
        RotateUnits<2>(src[1], dst[1], cw, ch, degrees);
    } else {
        RotateUnits<1>(src[1], dst[1], cw, ch, degrees);
        RotateUnits<1>(src[2], dst[2], cw, ch, degrees);
    }
}

}  // namespace

void RotateYUV420Data_90(unsigned char** src, unsigned char** dst, int w, int h)
{
    RotateYuv420(src, dst, w, h, false, 90);
}

void RotateYUV420Data_180(unsigned char** src, unsigned char** dst, int w, int h)
{
    RotateYuv420(src, dst, w, h, false, 180);
}

void RotateYUV420Data_270(unsigned char** src, unsigned char** dst, int w, int h)
{
    RotateYuv420(src, dst, w, h, false, 270);
}

void RotateYUV420SPData_90(unsigned char** src, unsigned char** dst, int w, int h)
{
    RotateYuv420(src, dst, w, h, true, 90);
}

void RotateYUV420SPData_180(unsigned char** src, unsigned char** dst, int w, int h)
{
    RotateYuv420(src, dst, w, h, true, 180);
}

void RotateYUV420SPData_270(unsigned char** src, unsigned char** dst, int w, int h)
{
    RotateYuv420(src, dst, w, h, true, 270);
}

void RotateRGBData90(unsigned char* src, unsigned char* dst, int w, int h, int bpp)
{
    RotatePacked(src, dst, w, h, bpp, 90);
}

void RotateRGBData180(unsigned char* src, unsigned char* dst, int w, int h, int bpp)
{
    RotatePacked(src, dst, w, h, bpp, 180);
}

void RotateRGBData270(unsigned char* src, unsigned char* dst, int w, int h, int bpp)
{
    RotatePacked(src, dst, w, h, bpp, 270);
}
