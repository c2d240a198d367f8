#include <palvet/imaging/bmp.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "support/test_support.h"

using palvet_test::ReadWholeFile;
using palvet_test::WriteWholeFile;

namespace {

using Bytes = std::vector<unsigned char>;

unsigned int U32(void const* base, size_t at)
{
    unsigned char const* p = static_cast<unsigned char const*>(base) + at;
    return p[0] | p[1] << 8 | p[2] << 16 | static_cast<unsigned int>(p[3]) << 24;
}

void SetU32(std::string& s, size_t at, unsigned int v)
{
    for (int i = 0; i < 4; ++i)
        s[at + i] = static_cast<char>(v >> (8 * i));
}

int Stride(int width, int bpp) { return (bpp * width + 31) / 32 * 4; }

Bytes Pattern(size_t size)
{
    Bytes b(size);
    for (size_t i = 0; i < size; ++i)
        b[i] = static_cast<unsigned char>(i * 7 + 1);
    return b;
}

int Load(std::string const& image, Bytes* pixels = nullptr, int* w = nullptr, int* h = nullptr,
         int* bpp = nullptr)
{
    unsigned char* out = nullptr;
    int ok = LoadBmpImageFromData(reinterpret_cast<unsigned char const*>(image.data()),
                                  static_cast<int>(image.size()), w, h, bpp, pixels ? &out : nullptr);
    if (ok && pixels)
        pixels->assign(out, out + static_cast<size_t>(Stride(*w, *bpp)) * *h);
    DeleteBmpImageData(out);
    return ok;
}

class Bmp : public ::testing::Test {
protected:
    std::string Save(Bytes const& buffer, int width, int height, int bpp)
    {
        std::string path = dir_.File("image.bmp");
        if (bpp == 16)
            SaveRgb565BufferToBmpFile(buffer.data(), width, height, path.c_str());
        else
            SaveRgbBufferToBmpFile(buffer.data(), width, height, bpp, nullptr, 0, path.c_str());
        return ReadWholeFile(path);
    }
    palvet_test::TempDir dir_;
};

}  // namespace

TEST(BmpInfo, ClassicHeader)
{
    int size = 0;
    void* info = CreateBitmapInfo(-3, -2, 24, nullptr, 5, &size);
    ASSERT_EQ(size, 40);
    unsigned int const expected[] = {40, 3, 2, 24 << 16 | 1, 0, 24, 0, 0, 0, 0};
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(U32(info, 4 * i), expected[i]) << "field at " << 4 * i;
    DeleteBitmapInfo(info);

    unsigned int const palette[] = {0x11223344, 0x55667788};
    info = CreateBitmapInfo(3, 2, 8, palette, 2, &size);
    EXPECT_EQ(size, 48);
    EXPECT_EQ(U32(info, 32), 2u);
    EXPECT_EQ(static_cast<unsigned char*>(info)[40], 0x44);
    EXPECT_EQ(U32(info, 44), 0x55667788u);
    DeleteBitmapInfo(info);

    // A palette pointer stores its count as given, even one with no entries.
    info = CreateBitmapInfo(3, 2, 8, palette, 0, &size);
    EXPECT_EQ(size, 40);
    EXPECT_EQ(U32(info, 32), 0u);
    DeleteBitmapInfo(info);
    info = CreateBitmapInfo(3, 2, 8, palette, -3, nullptr);
    EXPECT_EQ(U32(info, 32), static_cast<unsigned int>(-3));
    DeleteBitmapInfo(info);
}

TEST(BmpInfo, Version5Header)
{
    unsigned int const palette[] = {1, 2, 3, 4};
    int size = 0;
    unsigned char* info = static_cast<unsigned char*>(
        CreateBitmapV5Info(5, -3, 16, 0xF800, 0x07E0, 0x001F, 0xAA, palette, 4, &size));
    ASSERT_EQ(size, 140);
    unsigned int const expected[] = {140, 5, 3, 16 << 16 | 1, 3, 36, 2835, 2835, 0, 0,
                                     0xF800, 0x07E0, 0x001F, 0xAA};
    for (int i = 0; i < 14; ++i)
        EXPECT_EQ(U32(info, 4 * i), expected[i]) << "field at " << 4 * i;
    EXPECT_EQ(std::string(reinterpret_cast<char*>(info) + 56, 4), "BGRs");
    EXPECT_EQ(Bytes(info + 60, info + 124), Bytes(64, 0));
    EXPECT_EQ(U32(info, 136), 4u);
    DeleteBitmapInfo(info);

    info = static_cast<unsigned char*>(CreateBitmapV5Info(5, 3, 32, 0, 0, 0, 0, nullptr, 4, &size));
    EXPECT_EQ(size, 124);
    EXPECT_EQ(U32(info, 0), 124u);
    DeleteBitmapInfo(info);
}

TEST_F(Bmp, RoundTripsAtEveryDepthWithPadding)
{
    for (int bpp : {16, 24, 32}) {
        for (int width : {1, 3, 5}) {
            for (int height : {3, -3}) {
                SCOPED_TRACE(testing::Message() << bpp << " bpp, " << width << " x " << height);
                int const stride = Stride(width, bpp);
                Bytes const buffer = Pattern(static_cast<size_t>(stride) * 3);
                std::string const file = Save(buffer, width, height, bpp);
                size_t const offset = bpp == 16 ? 14 + 124 : 14 + 40;
                ASSERT_EQ(file.size(), offset + buffer.size());
                EXPECT_EQ(file.substr(0, 2), "BM");
                EXPECT_EQ(U32(file.data(), 2), file.size());
                EXPECT_EQ(U32(file.data(), 10), offset);
                EXPECT_EQ(U32(file.data(), 22), 3u);

                // Files are bottom-up: a top-down (negative height) buffer is
                // stored last row first.
                Bytes expected = buffer;
                if (height < 0)
                    for (int row = 0; row < 3; ++row)
                        std::copy_n(buffer.begin() + (2 - row) * stride, stride,
                                    expected.begin() + row * stride);
                EXPECT_EQ(Bytes(file.begin() + static_cast<long>(offset), file.end()), expected);

                Bytes pixels;
                int w = 0, h = 0, depth = 0;
                ASSERT_EQ(Load(file, &pixels, &w, &h, &depth), 1);
                EXPECT_EQ(w, width);
                EXPECT_EQ(h, 3);
                EXPECT_EQ(depth, bpp);
                EXPECT_EQ(pixels, expected);
            }
        }
    }
    EXPECT_EQ(Save(Pattern(12), 3, 0, 24).size(), 54u);  // no rows
    EXPECT_EQ(Save(Pattern(24), 3, 2, 24).size(), 78u);  // 12-byte rows
    EXPECT_EQ(Save(Pattern(16), 3, 2, 16).size(), 154u);  // 8-byte rows
}

TEST_F(Bmp, LoaderRefusesBadAndTruncatedImages)
{
    std::string const good = Save(Pattern(static_cast<size_t>(Stride(5, 24)) * 4), 5, 4, 24);
    int w = -1, h = -1, bpp = -1;
    ASSERT_EQ(Load(good, nullptr, &w, &h, &bpp), 1);  // header query only
    EXPECT_EQ(w * 1000 + h * 10 + bpp, 5000 + 40 + 24);

    std::string negative = good;
    SetU32(negative, 22, static_cast<unsigned int>(-4));
    EXPECT_EQ(Load(negative, nullptr, &w, &h, &bpp), 1);
    EXPECT_EQ(h, 4);

    // Every cut is refused, even with its size field made to match.
    for (size_t length = 0; length < good.size(); ++length) {
        std::string cut = good.substr(0, length);
        if (length >= 6)
            SetU32(cut, 2, static_cast<unsigned int>(length));
        ASSERT_EQ(Load(cut, nullptr, &w, &h, &bpp), 0) << length;
    }
    EXPECT_EQ(Load(good.substr(0, good.size() - 1)), 0);  // size field one byte off

    struct Patch { size_t at; unsigned int value; };
    Patch const patches[] = {
        {0, 0x4D43},                  // signature
        {10, static_cast<unsigned int>(good.size()) - 59},  // block past the end
        {10, 0xFFFFFFF0},             // offset past the end
        {18, 0x7FFFFFFF},             // width * bpp overflows
        {18, 0x80000000},             // width * bpp underflows
        {18, 0xFFFFFF00},             // negative row size
        {22, 0x7FFFFFFF},             // height too large for the data
        {22, 0x80000000},             // height without a magnitude
        {26, 0xFFFF0001},             // bit depth 65535
    };
    for (Patch const& patch : patches) {
        std::string bad = good;
        SetU32(bad, patch.at, patch.value);
        if (patch.at == 0)
            bad[2] = good[2];
        w = h = bpp = -1;
        Bytes pixels;
        EXPECT_EQ(Load(bad, &pixels, &w, &h, &bpp), 0) << patch.at << " " << patch.value;
        EXPECT_EQ(w + h + bpp, -3);  // outputs untouched
    }
    int dummy = 0;
    EXPECT_EQ(LoadBmpImageFromData(nullptr, 100, &dummy, &dummy, &dummy, nullptr), 0);
}

TEST_F(Bmp, LoadFromFile)
{
    std::string const path = dir_.File("image.bmp");
    Bytes const buffer = Pattern(static_cast<size_t>(Stride(7, 32)) * 2);
    SaveRgbBufferToBmpFile(buffer.data(), 7, 2, 32, nullptr, 0, path.c_str());
    unsigned char* pixels = nullptr;
    int w = 0, h = 0, bpp = 0;
    ASSERT_EQ(LoadBmpImageFromFile(path.c_str(), &w, &h, &bpp, &pixels), 1);
    EXPECT_EQ(Bytes(pixels, pixels + buffer.size()), buffer);
    DeleteBmpImageData(pixels);

    WriteWholeFile(path, ReadWholeFile(path).substr(0, 60));
    EXPECT_EQ(LoadBmpImageFromFile(path.c_str(), &w, &h, &bpp, &pixels), 0);
    EXPECT_EQ(LoadBmpImageFromFile(dir_.File("missing").c_str(), &w, &h, &bpp, &pixels), 0);
    EXPECT_EQ(LoadBmpImageFromFile(nullptr, &w, &h, &bpp, &pixels), 0);
}

// An independent decoder must read our files as the pixels we meant.
TEST_F(Bmp, StandardDecoderReadsOurFiles)
{
    if (system("/usr/bin/python3 -c 'import PIL' 2>/dev/null") != 0)
        GTEST_SKIP() << "needs Debian's python3-pil";
    // 3 x 2 pixels, top-down: red, green, blue / white, black, grey (magenta
    // at 16 bits, where decoders differ in how they widen the channels).
    unsigned char const rgb24[] = {0, 0, 255, 0, 255, 0, 255, 0, 0, 0, 0, 0,
                                   255, 255, 255, 0, 0, 0, 128, 128, 128, 0, 0, 0};
    unsigned char const argb32[] = {0, 0, 255, 255, 0, 255, 0, 255, 255, 0, 0, 255,
                                    255, 255, 255, 255, 0, 0, 0, 255, 128, 128, 128, 255};
    unsigned char const rgb565[] = {0, 0xF8, 0xE0, 0x07, 0x1F, 0, 0, 0,
                                    0xFF, 0xFF, 0, 0, 0x1F, 0xF8, 0, 0};
    std::string const a = dir_.File("a.bmp"), b = dir_.File("b.bmp"), c = dir_.File("c.bmp");
    SaveRgbBufferToBmpFile(rgb24, 3, -2, 24, nullptr, 0, a.c_str());
    SaveRgbBufferToBmpFile(argb32, 3, -2, 32, nullptr, 0, b.c_str());
    SaveRgb565BufferToBmpFile(rgb565, 3, -2, c.c_str());

    std::string const out = dir_.File("decoded.txt");
    std::string const command = "/usr/bin/python3 -c 'import sys\nfrom PIL import Image\n"
        "for p in sys.argv[1:]: print(list(Image.open(p).convert(\"RGB\").getdata()))' " +
        a + " " + b + " " + c + " >" + out;
    ASSERT_EQ(system(command.c_str()), 0);
    std::string const exact = "[(255, 0, 0), (0, 255, 0), (0, 0, 255), (255, 255, 255), (0, 0, 0), "
                              "(128, 128, 128)]\n";
    std::string const decoded = ReadWholeFile(out);
    EXPECT_EQ(decoded.substr(0, 2 * exact.size()), exact + exact);
    EXPECT_EQ(decoded.substr(2 * exact.size()),
              "[(255, 0, 0), (0, 255, 0), (0, 0, 255), (255, 255, 255), (0, 0, 0), "
              "(255, 0, 255)]\n");
}
