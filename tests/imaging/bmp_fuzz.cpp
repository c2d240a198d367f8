// libFuzzer target for the BMP loader: whatever the bytes, the loader must
// stay inside them and hand back a pixel block of exactly the size its
// header describes, never larger than the input.

#include <palvet/imaging/bmp.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    if (size > INT_MAX)
        return 0;
    int const n = static_cast<int>(size);
    int w = 0, h = 0, bpp = 0;
    unsigned char* pixels = nullptr;
    if (LoadBmpImageFromData(data, n, &w, &h, &bpp, &pixels) == 0)
        return 0;

    long long const bytes = (static_cast<long long>(w) * bpp + 31) / 32 * 4 * h;
    if (bytes < 0 || bytes > n || h < 0)
        abort();
    // Touch the whole block so the address checker sees a short allocation.
    unsigned sum = 0;
    for (long long i = 0; i < bytes; ++i)
        sum += pixels[i];
    DeleteBmpImageData(pixels);

    int w2 = 0, h2 = 0, bpp2 = 0;
    if (LoadBmpImageFromData(data, n, &w2, &h2, &bpp2, nullptr) != 1 || w2 != w || h2 != h ||
        bpp2 != bpp)
        abort();
    return static_cast<int>(sum & 0);
}
