#include <palvet/imaging/color_conversion.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

Bytes Random(size_t n, unsigned seed)
{
    std::mt19937 gen(seed);
    Bytes b(n);
    for (auto& c : b)
        c = static_cast<unsigned char>(gen());
    return b;
}

struct Yuv {
    int y, u, v;
};

Yuv ToYuv(int r, int g, int b)
{
    unsigned char y, u, v;
    RGBToYUV(static_cast<unsigned char>(r), static_cast<unsigned char>(g), static_cast<unsigned char>(b), y, u, v);
    return {y, u, v};
}

}  // namespace

TEST(ColourTables, EntriesFollowTheAsymmetricRounding)
{
    InitLookupTable();
    EXPECT_EQ(RGBYUVTABLE_INIT, 1);
    EXPECT_EQ(RTEXTO_Y[255], 66);
    EXPECT_EQ(GTEXTO_Y[255], 129);
    EXPECT_EQ(BTEXTO_Y[255], 25);
    EXPECT_EQ(GTEXTO_V[128], -47);
    EXPECT_EQ(YTEXTO_R[235], 255);
    EXPECT_EQ(VTEXTO_R[255], 203);
    EXPECT_EQ(UTEXTO_B[0], -258);
    // Negative products truncate toward zero: -18.624 and -37.74.
    EXPECT_EQ(YTEXTO_G[0], -18);
    EXPECT_EQ(RTEXTO_U[255], -37);

    int before[256];
    std::memcpy(before, VTEXTO_G, sizeof before);
    InitLookupTable();
    EXPECT_EQ(std::memcmp(before, VTEXTO_G, sizeof before), 0);
}

TEST(ColourTables, CoefficientsChangedBeforeTheFillShapeTheTables)
{
    double const saved = ippRGBYUVCOEF[5], savedNeg = ippRGBYUVCOEF[3];
    ippRGBYUVCOEF[5] = 0.5;  // exact halves
    ippRGBYUVCOEF[3] = -0.5;
    RGBYUVTABLE_INIT = 0;
    unsigned char y, u, v;
    RGBToYUV(0, 0, 3, y, u, v);  // fills the tables
    EXPECT_EQ(BTEXTO_U[3], 1);   // 1.5 goes down
    EXPECT_EQ(BTEXTO_U[255], 127);
    EXPECT_EQ(BTEXTO_U[254], 127);
    EXPECT_EQ(RTEXTO_U[3], -1);  // -1.5 truncates toward zero
    EXPECT_EQ(u, 129);
    ippRGBYUVCOEF[5] = saved;
    ippRGBYUVCOEF[3] = savedNeg;
    RGBYUVTABLE_INIT = 0;
    InitLookupTable();
    EXPECT_EQ(BTEXTO_U[255], 112);
}

TEST(ColourTables, SinglePixelConversions)
{
    Yuv p = ToYuv(0, 0, 0);
    EXPECT_EQ(p.y, 16);
    EXPECT_EQ(p.u, 128);
    EXPECT_EQ(p.v, 128);
    p = ToYuv(255, 255, 255);
    EXPECT_EQ(p.y, 236);
    EXPECT_EQ(p.u, 129);
    EXPECT_EQ(p.v, 129);
    p = ToYuv(255, 0, 0);
    EXPECT_EQ(p.y, 82);
    EXPECT_EQ(p.u, 91);
    EXPECT_EQ(p.v, 240);

    unsigned char r, g, b;
    YUVToRGB(16, 128, 128, r, g, b);
    EXPECT_EQ(r + g + b, 0);
    YUVToRGB(235, 128, 128, r, g, b);
    EXPECT_EQ(r & g & b, 255);
    YUVToRGB(255, 0, 255, r, g, b);  // R and G clamp high, B does not
    EXPECT_EQ(r, 255);
    EXPECT_EQ(g, 225);
    EXPECT_EQ(b, 20);
    YUVToRGB(0, 255, 0, r, g, b);  // below zero clamps to 0
    EXPECT_EQ(r, 0);
}

TEST(RgbToYuv, UniformRedAndTheUnconvertedEdge)
{
    int const w = 5, h = 5;
    Bytes rgb(w * 3 * h);
    for (size_t i = 0; i < rgb.size(); i += 3)
        rgb[i] = 255;
    Bytes out(w * h * 3 / 2 + 8, 0xEE);
    RGB888ToYUV420(w, h, rgb.data(), out.data(), 0, w * 3, 0);
    int const q = w * h / 4;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            EXPECT_EQ(out[y * w + x], (x < 4 && y < 4) ? 82 : 0xEE) << x << "," << y;
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(out[w * h + (i / 2) * 2 + i % 2], 91);
        EXPECT_EQ(out[w * h + q + (i / 2) * 2 + i % 2], 240);
    }

    // Negative sizes neither flip nor fail; bYV swaps the planes.
    Bytes flipped(out.size(), 0xEE), yv(out.size(), 0xEE);
    RGB888ToYUV420(-w, -h, rgb.data(), flipped.data(), 0, w * 3, 0);
    EXPECT_EQ(flipped, out);
    RGB888ToYUV420(w, h, rgb.data(), yv.data(), 1, w * 3, 0);
    EXPECT_EQ(yv[w * h], 240);
    EXPECT_EQ(yv[w * h + q], 91);
}

TEST(RgbToYuv, ChromaIsTheMeanOfClampedPixelValuesAndFormatsExpandByShifting)
{
    // One 2x2 block, pitch wider than the row, components in B, G, R order.
    unsigned char const px[4][3] = {{10, 200, 30}, {250, 5, 90}, {0, 0, 255}, {128, 64, 32}};
    Bytes rgb(2 * 8);
    for (int i = 0; i < 4; ++i)
        std::memcpy(&rgb[(i / 2) * 8 + (i % 2) * 3], px[i], 3);
    Bytes o420(6), o422(8), o444(12);
    RGB888ToYUV420(2, 2, rgb.data(), o420.data(), 0, 8, 1);
    RGB888ToYUV422(2, 2, rgb.data(), o422.data(), 0, 8, 1);
    RGB888ToYUV444(2, 2, rgb.data(), o444.data(), 0, 8, 1);
    int us = 0, vs = 0;
    for (int i = 0; i < 4; ++i) {
        Yuv p = ToYuv(px[i][2], px[i][1], px[i][0]);
        EXPECT_EQ(o420[i], p.y);
        EXPECT_EQ(o444[4 + i], p.u);
        EXPECT_EQ(o444[8 + i], p.v);
        us += p.u;
        vs += p.v;
    }
    EXPECT_EQ(o420[4], us >> 2);
    EXPECT_EQ(o420[5], vs >> 2);
    EXPECT_EQ(o422[4], (ToYuv(30, 200, 10).u + ToYuv(90, 5, 250).u) >> 1);
    EXPECT_EQ(o422[7], (ToYuv(255, 0, 0).v + ToYuv(32, 64, 128).v) >> 1);

    // 16-bit pixels: fields shift left without replicating high bits; bBGR
    // swaps the red and blue fields.
    uint16_t const p565[2] = {0xF800 | (0x3F << 5) | 0x01, 0x001F};
    Bytes y565(4), y555(4), ySwap(4);
    RGB565ToYUV422(2, 1, reinterpret_cast<unsigned char const*>(p565), y565.data(), 0, 4, 0);
    EXPECT_EQ(y565[0], ToYuv(248, 252, 8).y);
    EXPECT_EQ(y565[1], ToYuv(0, 0, 248).y);
    RGB565ToYUV422(2, 1, reinterpret_cast<unsigned char const*>(p565), ySwap.data(), 0, 4, 1);
    EXPECT_EQ(ySwap[1], ToYuv(248, 0, 0).y);
    uint16_t const p555[2] = {0xFC00 | 0x0001, 0x03E0};
    RGB555ToYUV422(2, 1, reinterpret_cast<unsigned char const*>(p555), y555.data(), 0, 4, 0);
    EXPECT_EQ(y555[0], ToYuv(248, 0, 8).y);  // bit 15 ignored
    EXPECT_EQ(y555[1], ToYuv(0, 248, 0).y);
}

TEST(YuvToRgb, ChromaIsReplicatedAndOutputsNarrowFromClampedValues)
{
    // 3x3 4:2:0: one chroma sample serves the top-left 2x2; the odd row and
    // column stay untouched.
    int const w = 3, h = 3;
    Bytes yuv(w * h + 4, 0);
    unsigned char const ys[4] = {255, 16, 100, 200};
    yuv[0] = ys[0];
    yuv[1] = ys[1];
    yuv[3] = ys[2];
    yuv[4] = ys[3];
    yuv[9] = 0;    // U
    yuv[11] = 255;  // V, after the (9 / 4)-byte U plane
    int const pitch = 10;
    Bytes out(pitch * h, 0xEE);
    YUV420ToRGB888(w, -h, yuv.data(), 0, out.data(), pitch, 0);
    for (int i = 0; i < 4; ++i) {
        unsigned char r, g, b;
        YUVToRGB(ys[i], 0, 255, r, g, b);
        unsigned char const* p = &out[(i / 2) * pitch + (i % 2) * 3];
        EXPECT_EQ(p[0], r);
        EXPECT_EQ(p[1], g);
        EXPECT_EQ(p[2], b);
    }
    EXPECT_EQ(out[6], 0xEE);
    EXPECT_EQ(out[2 * pitch], 0xEE);

    // bYV reads V from the plane after Y; bBGR reverses the bytes; 16-bit
    // outputs keep the high bits of each clamped component.
    unsigned char const small[6] = {255, 0, 0, 0, 40, 230};  // 2x2: Y, then V, U
    Bytes o565(8), o555(8), obgr(12);
    YUV420ToRGB565(2, 2, small, 1, o565.data(), 4, 0);
    YUV420ToRGB555(2, 2, small, 1, o555.data(), 4, 1);
    YUV420ToRGB888(2, 2, small, 1, obgr.data(), 6, 1);
    unsigned char r, g, b;
    YUVToRGB(255, 230, 40, r, g, b);
    EXPECT_EQ(o565[0] | o565[1] << 8, (r >> 3) << 11 | (g >> 2) << 5 | b >> 3);
    EXPECT_EQ(o555[0] | o555[1] << 8, (b >> 3) << 10 | (g >> 3) << 5 | r >> 3);
    EXPECT_EQ(obgr[0], b);
    EXPECT_EQ(obgr[2], r);
}

TEST(YuvToRgb, PackedSourcesAndTheAlphaPlane)
{
    // Two rows of one pair each: Y0 U Y1 V.
    unsigned char const yuy2[8] = {50, 90, 180, 200, 235, 128, 16, 128};
    unsigned char const alpha[2 * 3] = {1, 2, 0, 3, 4, 0};
    Bytes argb(2 * 8), rgb(2 * 6), yvy(2 * 6);
    YUY2ToARGB32(2, 2, yuy2, argb.data(), 8, 0, alpha, 3);
    YUY2ToRGB888(-2, 2, yuy2, rgb.data(), 6, 1);
    YVY2ToRGB888(2, 2, yuy2, yvy.data(), 6, 0);
    for (int i = 0; i < 4; ++i) {
        unsigned char const* s = yuy2 + (i / 2) * 4;
        unsigned char y = s[(i % 2) * 2], r, g, b;
        YUVToRGB(y, s[1], s[3], r, g, b);
        unsigned char const* a = &argb[i * 4];
        EXPECT_EQ(a[0], b);
        EXPECT_EQ(a[1], g);
        EXPECT_EQ(a[2], r);
        EXPECT_EQ(a[3], alpha[(i / 2) * 3 + i % 2]);
        EXPECT_EQ(rgb[i * 3], b);
        YUVToRGB(y, s[3], s[1], r, g, b);
        EXPECT_EQ(yvy[i * 3], r);
        EXPECT_EQ(yvy[i * 3 + 1], g);
    }
    Bytes flagged(argb.size()), opaque(argb.size());
    YUY2ToARGB32(2, 2, yuy2, flagged.data(), 8, 1, alpha, 3);
    EXPECT_EQ(flagged, argb);
    YVY2ToARGB32(2, 2, yuy2, opaque.data(), 8, 0, nullptr, 0);
    EXPECT_EQ(opaque[3], 255);
    EXPECT_EQ(opaque[2], yvy[0]);
}

TEST(YuvLayouts, PackedAndPlanarMoves)
{
    int const w = 4, h = 3;
    Bytes planar = Random(w * h * 2, 1);
    Bytes packed(w * h * 2), back(w * h * 2);
    YUVToYUYV_422(w, h, planar.data(), 1, packed.data());
    EXPECT_EQ(packed[4], planar[2]);
    EXPECT_EQ(packed[3], planar[w * h]);          // bYV: V plane after Y
    EXPECT_EQ(packed[1], planar[w * h * 3 / 2]);  // U
    YUYVToYUV_422(w, -h, packed.data(), back.data(), 1);
    EXPECT_EQ(back, planar);

    // 4:2:2 packed to 4:2:0 takes chroma from the first row of each pair.
    Bytes p420(w * h + 2 * (w * h / 4), 0);
    YUYV422ToYUV420(w, h, packed.data(), p420.data(), 0);
    EXPECT_EQ(0, std::memcmp(p420.data(), planar.data(), w * h));
    EXPECT_EQ(p420[w * h + 1], packed[5]);
    EXPECT_EQ(p420[w * h + 3 + 1], packed[7]);

    // Planar 4:2:2 to 4:2:0 averages row pairs; 4:2:0 to 4:2:2 repeats rows.
    Bytes q420(w * h * 3 / 2), q422(w * h * 2, 0);
    YUV422ToYUV420(w, h, planar.data(), 0, q420.data(), 1);
    int const c422 = w * h / 2, c420 = w * h / 4;
    EXPECT_EQ(q420[w * h + c420 + 1], (planar[w * h + 1] + planar[w * h + 3]) >> 1);
    EXPECT_EQ(q420[w * h], (planar[w * h + c422] + planar[w * h + c422 + 2]) >> 1);
    YUV420ToYUV422(w, h, q420.data(), 1, q422.data(), 0);
    EXPECT_EQ(q422[w * h + 1], q420[w * h + c420 + 1]);
    EXPECT_EQ(q422[w * h + 3], q420[w * h + c420 + 1]);
    EXPECT_EQ(q422[w * h + c422 + 2], q420[w * h]);
    EXPECT_EQ(q422[w * h + 4], 0);  // odd last row has no source chroma
}

TEST(YuvLayouts, SemiPlanarSplitAndJoin)
{
    unsigned char const sp4[4 * 2 + 4] = {0, 0, 0, 0, 0, 0, 0, 0, 10, 20, 11, 21};
    unsigned char out4[12] = {};
    YUV420SPToYUV420(4, 2, sp4, out4, 0);
    EXPECT_EQ(out4[8], 10);
    EXPECT_EQ(out4[9], 11);
    EXPECT_EQ(out4[10], 20);
    EXPECT_EQ(out4[11], 21);
    YUV420SPToYUV420(4, 2, sp4, out4, 1);
    EXPECT_EQ(out4[8], 20);
    EXPECT_EQ(out4[11], 11);

    Bytes frame = Random(36 * 3 / 2, 2), planar(frame.size()), again(frame.size());
    for (int vu = 0; vu < 2; ++vu) {
        YUV420SPToYUV420(6, 6, frame.data(), planar.data(), vu);
        YUV420ToYUV420SP(6, 6, planar.data(), vu, again.data());
        EXPECT_EQ(again, frame);
    }
}

TEST(RgbToRgb, BitLayoutsFlagSensesAndTheKeptOddities)
{
    uint16_t const in565[2] = {0xF800, 0x07FF};
    uint16_t out[2];
    auto src = reinterpret_cast<unsigned char const*>(in565);
    auto dst = reinterpret_cast<unsigned char*>(out);
    RGB565ToRGB555(2, 1, src, dst, 4, 4, 0);
    EXPECT_EQ(out[0], 0x7C00);
    EXPECT_EQ(out[1], 0x03FF);
    RGB565ToRGB555(2, 1, src, dst, 4, 4, 1);
    EXPECT_EQ(out[0], 0x001F);
    EXPECT_EQ(out[1], 0x7FE0);

    uint16_t const in555[2] = {0xFC00, 0x03FF};
    RGB555ToRGB565(2, 1, reinterpret_cast<unsigned char const*>(in555), dst, 4, 4, 0);
    EXPECT_EQ(out[0], 0xF800);
    EXPECT_EQ(out[1], 0x07DF);
    RGB555ToRGB565(2, 1, reinterpret_cast<unsigned char const*>(in555), dst, 4, 4, 1);
    EXPECT_EQ(out[0], 0x001F);

    unsigned char const rgb[3] = {0xFF, 0x80, 0x08};
    RGB888ToRGB565(1, 1, rgb, dst, 3, 2, 1);  // true: byte 0 is red
    EXPECT_EQ(out[0], 0xF800 | (0x20 << 5) | 0x01);
    RGB888ToRGB565(1, 1, rgb, dst, 3, 2, 0);
    EXPECT_EQ(out[0], (0x01 << 11) | (0x20 << 5) | 0x1F);
    RGB888ToRGB555(1, 1, rgb, dst, 3, 2, 1);
    EXPECT_EQ(out[0], 0x7C00 | (0x10 << 5) | 0x01);

    unsigned char o888[6];
    RGB565ToRGB888(2, 1, src, o888, 4, 6, 1);
    EXPECT_EQ(o888[0] | o888[1] | o888[2], 0);  // pure red reads as black
    EXPECT_EQ(o888[3], 0xF8);
    EXPECT_EQ(o888[4], 0xFC);
    EXPECT_EQ(o888[5], 0xF8);
    RGB555ToRGB888(2, 1, reinterpret_cast<unsigned char const*>(in555), o888, 4, 6, 0);
    EXPECT_EQ(o888[0] | o888[1] | o888[2], 0);
    EXPECT_EQ(o888[4], 0xF8);
}

TEST(ColourConversions, BadArgumentsWriteNothing)
{
    Bytes src(64, 7), dst(64, 0xEE);
    Bytes const untouched = dst;
    RGB888ToYUV420(4, 4, nullptr, dst.data(), 0, 12, 0);
    RGB888ToYUV420(4, 1, src.data(), dst.data(), 0, 12, 0);
    YUV420ToRGB888(4, -1, src.data(), 0, dst.data(), 12, 0);
    YUV422ToYUV420(4, 1, src.data(), 0, dst.data(), 0);
    YUY2ToRGB888(4, 0, src.data(), dst.data(), 12, 0);
    YUY2ToARGB32(4, 2, src.data(), nullptr, 16, 0, nullptr, 0);
    YUV420SPToYUV420(-4, 4, src.data(), dst.data(), 0);
    YUV420ToYUV420SP(4, 0, src.data(), 0, dst.data());
    RGB565ToRGB555(4, 0, src.data(), dst.data(), 8, 8, 0);
    RGB555ToRGB565(-4, 2, src.data(), dst.data(), 8, 8, 0);
    RGB555ToRGB565(4, 2, nullptr, dst.data(), 8, 8, 0);
    RGB565ToRGB888(4, -2, src.data(), dst.data(), 8, 12, 0);
    EXPECT_EQ(dst, untouched);
}

TEST(ColourConversions, OddLastColumnAndRowStayUnwritten)
{
    int const w = 5, h = 5, pitch = w * 3 + 1;
    Bytes const rgb = Random(pitch * h, 3);
    using ToYuv = void (*)(int, int, unsigned char const*, unsigned char*, int, int, int);
    struct {
        ToYuv fn;
        bool rows;  // odd last row skipped too (4:2:0)
        int bytes;
    } const toYuv[] = {{RGB888ToYUV420, true, 3}, {RGB565ToYUV420, true, 2}, {RGB555ToYUV422, false, 2},
                       {RGB888ToYUV422, false, 3}};
    for (auto const& c : toYuv) {
        Bytes out(w * h * 2, 0xEE);
        c.fn(w, h, rgb.data(), out.data(), 0, w * c.bytes + 1, 0);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                bool const skipped = x == w - 1 || (c.rows && y == h - 1);
                EXPECT_EQ(out[y * w + x] == 0xEE, skipped) << x << "," << y;
            }
    }

    using ToRgb = void (*)(int, int, unsigned char const*, int, unsigned char*, int, int);
    struct {
        ToRgb fn;
        bool rows;
        int bytes;
    } const toRgb[] = {{YUV420ToRGB565, true, 2}, {YUV422ToRGB888, false, 3}, {YUV422ToRGB555, false, 2}};
    Bytes const yuv = Random(w * h * 2, 4);
    for (auto const& c : toRgb) {
        Bytes out(pitch * h, 0xEE);
        c.fn(w, h, yuv.data(), 0, out.data(), pitch, 0);
        for (int y = 0; y < h; ++y) {
            bool const rowSkipped = c.rows && y == h - 1;
            unsigned char const* last = &out[y * pitch + (w - 1) * c.bytes];
            for (int b = 0; b < c.bytes; ++b)
                EXPECT_EQ(last[b], 0xEE);
            if (rowSkipped) {
                for (int x = 0; x < w * c.bytes; ++x)
                    EXPECT_EQ(out[y * pitch + x], 0xEE);
            }
        }
    }
}

TEST(YuvLayouts, OddSizes)
{
    // 4:2:2 packed to 4:2:0 keeps the Y of an odd last row.
    int const w = 4, h = 3;
    Bytes packed = Random(w / 2 * 4 * h, 5);
    Bytes out(w * h + 2 * (w * h / 4), 0);
    YUYV422ToYUV420(w, h, packed.data(), out.data(), 0);
    EXPECT_EQ(out[2 * w], packed[2 * 8]);
    EXPECT_EQ(out[2 * w + 1], packed[2 * 8 + 2]);

    // w*h not a multiple of 4: the later plane starts at w*h*5/4 and every
    // chroma byte lands in order.
    unsigned char const sp[3 * 3 + 4] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4};
    unsigned char planar[3 * 3 + 4] = {};
    YUV420SPToYUV420(3, 3, sp, planar, 0);
    EXPECT_EQ(planar[9], 1);
    EXPECT_EQ(planar[10], 3);
    EXPECT_EQ(planar[11], 2);  // 9 * 5 / 4 = 11
    EXPECT_EQ(planar[12], 4);
}
