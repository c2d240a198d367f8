// libFuzzer target for the BMP header builders with random arguments: the
// block must have the size its palette asks for and state the magnitudes of
// the sizes, whatever the numbers (the sanitizers report overflow).

#include <palvet/imaging/bmp.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

uint32_t Field(void const* block, size_t at)
{
    uint32_t v;
    memcpy(&v, static_cast<unsigned char const*>(block) + at, 4);
    return v;
}

uint32_t Magnitude(int v) { return v < 0 ? 0u - static_cast<uint32_t>(v) : static_cast<uint32_t>(v); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    int args[9] = {};
    memcpy(args, data, size < sizeof args ? size : sizeof args);
    int const width = args[0], height = args[1], bpp = args[2];
    // Palettes stay small so that a run does not spend its time allocating.
    int const count = args[3] % 300;
    unsigned int const palette[300] = {0x11223344};
    bool const withPalette = args[4] & 1;
    unsigned int const* const pal = withPalette ? palette : nullptr;
    unsigned int const entries = withPalette && count > 0 ? static_cast<unsigned int>(count) : 0;

    int infoSize = -1;
    void* info = CreateBitmapInfo(width, height, bpp, pal, count, &infoSize);
    if (info == nullptr || infoSize != static_cast<int>(40 + 4 * entries) || Field(info, 0) != 40 ||
        Field(info, 4) != Magnitude(width) || Field(info, 8) != Magnitude(height))
        abort();
    DeleteBitmapInfo(info);

    unsigned int const* masks = reinterpret_cast<unsigned int const*>(args + 5);
    void* v5 = CreateBitmapV5Info(width, height, bpp, masks[0], masks[1], masks[2], masks[3], pal,
                                  count, &infoSize);
    if (v5 == nullptr || infoSize != static_cast<int>(124 + 4 * entries) ||
        Field(v5, 0) != static_cast<uint32_t>(infoSize) || Field(v5, 4) != Magnitude(width) ||
        Field(v5, 40) != masks[0] || Field(v5, 52) != masks[3])
        abort();
    DeleteBitmapInfo(v5);
    return 0;
}
