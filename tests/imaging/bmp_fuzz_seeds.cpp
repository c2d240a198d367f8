// Writes the fuzz seed corpus: small valid images of each kind the library
// saves, into <folder>/seeds, and empties <folder>/found for the fuzzer's
// own finds.

#include <palvet/imaging/bmp.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

int main(int argc, char** argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    namespace fs = std::filesystem;
    fs::path const folder = argv[1];
    fs::remove_all(folder / "found");
    fs::create_directories(folder / "found");
    fs::create_directories(folder / "seeds");

    std::vector<unsigned char> pixels(256);
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<unsigned char>(i * 37);
    unsigned int const palette[] = {0x000000, 0xFF0000, 0x00FF00, 0x0000FF};
    auto seed = [&](char const* name) { return (folder / "seeds" / name).string(); };

    SaveRgbBufferToBmpFile(pixels.data(), 3, 2, 24, nullptr, 0, seed("rgb24.bmp").c_str());
    SaveRgbBufferToBmpFile(pixels.data(), 5, -3, 32, nullptr, 0, seed("argb32.bmp").c_str());
    SaveRgbBufferToBmpFile(pixels.data(), 7, 2, 8, palette, 4, seed("pal8.bmp").c_str());
    SaveRgb565BufferToBmpFile(pixels.data(), 5, 3, seed("rgb565.bmp").c_str());
    SaveRgbBufferToBmpFileV5(pixels.data(), 9, 1, 4, 0, 0, 0, 0, palette, 4,
                             seed("pal4v5.bmp").c_str());
    return 0;
}
