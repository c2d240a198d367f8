// The vectorised paths against the scalar loops that define the results.

#include <palvet/imaging/color_conversion.h>
#include <palvet/imaging/color_conversion_internal.h>

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

using palvet::detail::KernelLevel;

namespace {

using Bytes = std::vector<unsigned char>;

// Runs a conversion into a buffer pre-filled with a pattern, so bytes a path
// must leave alone are compared too.
using Convert = std::function<void(int w, int h, unsigned char const* src, unsigned char* dst)>;

struct Case {
    char const* name;
    size_t (*srcSize)(int w, int h);
    size_t (*dstSize)(int w, int h);
    Convert run;
};

// Exact sizes, so that the sanitizer catches any access past the frame.
// RGB rows are padded (pitch = row + 5 or 6); the last row is not.
size_t Rgb24Size(int w, int h) { return static_cast<size_t>(w * 3 + 5) * (h - 1) + w * 3; }
size_t Rgb16Size(int w, int h) { return static_cast<size_t>(w * 2 + 6) * (h - 1) + w * 2; }
size_t ArgbSize(int w, int h) { return static_cast<size_t>(w * 4 + 4) * (h - 1) + w * 4; }
size_t P420(int w, int h) { return static_cast<size_t>(w) * h + 2 * (static_cast<size_t>(w) * h / 4); }
size_t P422(int w, int h) { return static_cast<size_t>(w) * h + 2 * (static_cast<size_t>(w) * h / 2); }
size_t P444(int w, int h) { return static_cast<size_t>(w) * h * 3; }
size_t PackedSize(int w, int h) { return static_cast<size_t>(w / 2) * 4 * h; }
size_t SpSize(int w, int h) { return static_cast<size_t>(w) * h * 3 / 2; }

std::vector<Case> Cases()
{
    std::vector<Case> c;
#define RGB_TO_YUV(fn, bytes, size, planar)                                                           \
    for (int bgr = 0; bgr < 2; ++bgr)                                                                 \
        c.push_back({#fn, size, planar, [bgr](int w, int h, unsigned char const* s, unsigned char* d) { \
                         fn(w, -h, s, d, bgr, w * (bytes) + (bytes == 3 ? 5 : 6), bgr);                \
                     }});
    RGB_TO_YUV(RGB888ToYUV420, 3, Rgb24Size, P420)
    RGB_TO_YUV(RGB565ToYUV420, 2, Rgb16Size, P420)
    RGB_TO_YUV(RGB555ToYUV420, 2, Rgb16Size, P420)
    RGB_TO_YUV(RGB888ToYUV422, 3, Rgb24Size, P422)
    RGB_TO_YUV(RGB565ToYUV422, 2, Rgb16Size, P422)
    RGB_TO_YUV(RGB555ToYUV422, 2, Rgb16Size, P422)
    RGB_TO_YUV(RGB888ToYUV444, 3, Rgb24Size, P444)
    RGB_TO_YUV(RGB565ToYUV444, 2, Rgb16Size, P444)
    RGB_TO_YUV(RGB555ToYUV444, 2, Rgb16Size, P444)
#define YUV_TO_RGB(fn, bytes, size, planar)                                                           \
    for (int bgr = 0; bgr < 2; ++bgr)                                                                 \
        c.push_back({#fn, planar, size, [bgr](int w, int h, unsigned char const* s, unsigned char* d) { \
                         fn(-w, h, s, bgr, d, w * (bytes) + (bytes == 3 ? 5 : 6), bgr);                \
                     }});
    YUV_TO_RGB(YUV420ToRGB888, 3, Rgb24Size, P420)
    YUV_TO_RGB(YUV420ToRGB565, 2, Rgb16Size, P420)
    YUV_TO_RGB(YUV420ToRGB555, 2, Rgb16Size, P420)
    YUV_TO_RGB(YUV422ToRGB888, 3, Rgb24Size, P422)
    YUV_TO_RGB(YUV422ToRGB565, 2, Rgb16Size, P422)
    YUV_TO_RGB(YUV422ToRGB555, 2, Rgb16Size, P422)
    YUV_TO_RGB(YUV444ToRGB888, 3, Rgb24Size, P444)
    YUV_TO_RGB(YUV444ToRGB565, 2, Rgb16Size, P444)
    YUV_TO_RGB(YUV444ToRGB555, 2, Rgb16Size, P444)
    for (int bgr = 0; bgr < 2; ++bgr) {
        c.push_back({"YUY2ToRGB888", PackedSize, Rgb24Size,
                     [bgr](int w, int h, unsigned char const* s, unsigned char* d) { YUY2ToRGB888(w, h, s, d, w * 3 + 5, bgr); }});
        c.push_back({"YVY2ToRGB888", PackedSize, Rgb24Size,
                     [bgr](int w, int h, unsigned char const* s, unsigned char* d) { YVY2ToRGB888(w, h, s, d, w * 3 + 5, bgr); }});
    }
    // The source bytes double as the alpha plane.
    c.push_back({"YUY2ToARGB32", PackedSize, ArgbSize, [](int w, int h, unsigned char const* s, unsigned char* d) {
                     YUY2ToARGB32(w, h, s, d, w * 4 + 4, 0, s, w / 2 * 4);
                 }});
    c.push_back({"YVY2ToARGB32", PackedSize, ArgbSize, [](int w, int h, unsigned char const* s, unsigned char* d) {
                     YVY2ToARGB32(w, h, s, d, w * 4 + 4, 1, nullptr, 0);
                 }});
    // Both byte orders with and without an alpha plane.
    c.push_back({"YUY2ToARGB32 opaque", PackedSize, ArgbSize, [](int w, int h, unsigned char const* s, unsigned char* d) {
                     YUY2ToARGB32(w, h, s, d, w * 4, 0, nullptr, 0);
                 }});
    c.push_back({"YVY2ToARGB32 alpha", PackedSize, ArgbSize, [](int w, int h, unsigned char const* s, unsigned char* d) {
                     // An empty frame has no bytes at all, hence no plane either.
                     YVY2ToARGB32(w, h, s, d, w * 4, 0, s != nullptr ? s + 1 : nullptr, w / 2 * 4);
                 }});
    // Destination and alpha rows adjoining, as the source rows always do.
    c.push_back({"YUY2ToARGB32 adjoining rows", PackedSize, ArgbSize, [](int w, int h, unsigned char const* s, unsigned char* d) {
                     YUY2ToARGB32(w, h, s, d, w / 2 * 8, 0, s != nullptr ? s + 1 : nullptr, w / 2 * 2);
                 }});
    for (int vu = 0; vu < 2; ++vu) {
        c.push_back({"YUV420SPToYUV420", SpSize, SpSize,
                     [vu](int w, int h, unsigned char const* s, unsigned char* d) { YUV420SPToYUV420(w, h, s, d, vu); }});
        c.push_back({"YUV420ToYUV420SP", SpSize, SpSize,
                     [vu](int w, int h, unsigned char const* s, unsigned char* d) { YUV420ToYUV420SP(w, h, s, vu, d); }});
    }
    return c;
}

std::vector<KernelLevel> FastLevels()
{
    std::vector<KernelLevel> levels;
    for (KernelLevel l : {KernelLevel::Sse2OrNeon, KernelLevel::Avx2, KernelLevel::Avx512})
        if (palvet::detail::ColourKernelLevelAvailable(l))
            levels.push_back(l);
    return levels;
}

// Every conversion on random frames of many sizes, odd ones included, on
// each available vectorised level against the scalar loops.
void CompareAllPaths(unsigned seed)
{
    std::mt19937 gen(seed);
    std::vector<std::pair<int, int>> sizes;
    for (int w = 1; w <= 70; w += (w < 36 ? 1 : 5))
        sizes.push_back({w, 1 + w % 4});
    sizes.push_back({97, 7});
    sizes.push_back({130, 3});
    sizes.push_back({261, 5});   // several 512-bit steps per row
    sizes.push_back({1100, 3});  // rows longer than the kernels' runs of steps
    for (Case const& c : Cases()) {
        for (auto [w, h] : sizes) {
            Bytes src(c.srcSize(w, h));
            for (auto& b : src)
                b = static_cast<unsigned char>(gen());
            Bytes pattern(c.dstSize(w, h));
            for (auto& b : pattern)
                b = static_cast<unsigned char>(gen());
            Bytes want = pattern;
            palvet::detail::SetColourKernelLevel(KernelLevel::Scalar);
            c.run(w, h, src.data(), want.data());
            for (KernelLevel level : FastLevels()) {
                // The AVX-512 level twice: with VBMI's byte permutes where the
                // processor has them, and without.
                for (bool vbmi : {true, false}) {
                    if (!vbmi && level != KernelLevel::Avx512)
                        continue;
                    Bytes got = pattern;
                    palvet::detail::SetColourKernelLevel(level);
                    palvet::detail::AllowAvx512Vbmi(vbmi);
                    c.run(w, h, src.data(), got.data());
                    palvet::detail::AllowAvx512Vbmi(true);
                    ASSERT_EQ(got, want) << c.name << " " << w << "x" << h << " level " << static_cast<int>(level)
                                         << (vbmi ? "" : " without VBMI");
                }
            }
        }
    }
    palvet::detail::SetColourKernelLevel(KernelLevel::Auto);
}

struct Coefficients {
    double fwd[9], back[9];
};

void UseCoefficients(Coefficients const& c)
{
    std::memcpy(ippRGBYUVCOEF, c.fwd, sizeof c.fwd);
    std::memcpy(ippYUVRGBCOEF, c.back, sizeof c.back);
    RGBYUVTABLE_INIT = 0;
    InitLookupTable();
}

}  // namespace

TEST(ColourKernels, FastPathsMatchTheTables)
{
    InitLookupTable();
    ASSERT_NE(palvet::detail::ActiveRgbToYuvForms(), nullptr);
    ASSERT_NE(palvet::detail::ActiveYuvToRgbForms(), nullptr);
#if defined(__x86_64__) || defined(__ARM_NEON)
    EXPECT_FALSE(FastLevels().empty());
#endif
    EXPECT_TRUE(palvet::detail::ActiveYuvToRgbForms()->lumaForm.high);
    CompareAllPaths(1);
}

TEST(ColourKernels, ChangedCoefficientsRefitOrFallBack)
{
    Coefficients saved;
    std::memcpy(saved.fwd, ippRGBYUVCOEF, sizeof saved.fwd);
    std::memcpy(saved.back, ippYUVRGBCOEF, sizeof saved.back);

    // The full-range sets still fit; the kernels must follow the new tables.
    Coefficients full;
    std::memcpy(full.fwd, nmlRGBYUVCOEF, sizeof full.fwd);
    std::memcpy(full.back, nmlYUVRGBCOEF, sizeof full.back);
    UseCoefficients(full);
    EXPECT_EQ(RTEXTO_Y[255], 76);
    EXPECT_NE(palvet::detail::ActiveRgbToYuvForms(), nullptr);
    EXPECT_NE(palvet::detail::ActiveYuvToRgbForms(), nullptr);
    CompareAllPaths(2);

    // A red term in U and a sign the multiply-high kernels do not expect:
    // the general kernels take over.
    Coefficients odd = saved;
    odd.fwd[0] = -0.257;
    odd.back[1] = 0.2;
    odd.back[4] = 0.392;
    UseCoefficients(odd);
    ASSERT_NE(palvet::detail::ActiveRgbToYuvForms(), nullptr);
    ASSERT_NE(palvet::detail::ActiveYuvToRgbForms(), nullptr);
    EXPECT_FALSE(palvet::detail::ActiveRgbToYuvForms()->mul);
    EXPECT_FALSE(palvet::detail::ActiveYuvToRgbForms()->mul);
    CompareAllPaths(3);
    odd = saved;
    odd.back[1] = 0.2;  // multiply-high still fits, the usual layout does not
    UseCoefficients(odd);
    EXPECT_TRUE(palvet::detail::ActiveYuvToRgbForms()->mul);
    CompareAllPaths(4);

    // Entries too large for 16-bit sums: that direction goes scalar only.
    Coefficients wide = saved;
    wide.back[2] = 90.0;
    UseCoefficients(wide);
    EXPECT_NE(palvet::detail::ActiveRgbToYuvForms(), nullptr);
    EXPECT_EQ(palvet::detail::ActiveYuvToRgbForms(), nullptr);
    CompareAllPaths(5);

    UseCoefficients(saved);
    EXPECT_EQ(RTEXTO_Y[255], 66);
}

TEST(ColourKernels, FormsReproduceTablesOrRefuse)
{
    using palvet::detail::TableForm;
    int t[256];
    for (int i = 0; i < 256; ++i)
        t[i] = (i * 7) / 3;
    TableForm f;
    ASSERT_TRUE(palvet::detail::FitTableForm(t, 0, 12, f));
    for (int i = 0; i < 256; ++i)
        ASSERT_EQ(palvet::detail::EvalTableForm(f, 12, i), t[i]);

    // Truncating negative products but rounding positive ones needs a pair
    // for each side of the offset.
    InitLookupTable();
    ASSERT_TRUE(palvet::detail::FitTableForm(YTEXTO_G, 16, 13, f));
    EXPECT_TRUE(f.twoPiece);
    for (int i = 0; i < 256; ++i)
        ASSERT_EQ(palvet::detail::EvalTableForm(f, 13, i - 16), YTEXTO_G[i]);

    // The luma table also fits with the byte in the upper half of a word.
    palvet::detail::LumaForm luma{};
    ASSERT_TRUE(palvet::detail::FitLumaForm(YTEXTO_R, luma));
    ASSERT_TRUE(palvet::detail::FitLumaHighForm(YTEXTO_R, luma));
    for (int y = 0; y < 256; ++y)
        ASSERT_EQ(palvet::detail::EvalLumaHighForm(luma, y), YTEXTO_R[y]) << y;

    // Not a rounded straight line: refused.
    for (int i = 0; i < 256; ++i)
        t[i] = (i * i) / 64;
    EXPECT_FALSE(palvet::detail::FitTableForm(t, 0, 12, f));
    for (int i = 0; i < 256; ++i)
        t[i] = i < 16 ? 0 : (i - 16) * (i - 16) / 128;
    EXPECT_FALSE(palvet::detail::FitLumaHighForm(t, luma));
    EXPECT_FALSE(luma.high);
}
