// palvet image info | convert
#include <cstdio>
#include <map>

#include "image_frame.h"
#include "tool_common.h"

namespace tool {
namespace {

unsigned Le32(std::vector<unsigned char> const& d, size_t at)
{
    return d[at] | d[at + 1] << 8 | d[at + 2] << 16 | static_cast<unsigned>(d[at + 3]) << 24;
}

void Info(std::vector<std::string> const& files)
{
    bool failed = false;
    for (auto const& path : files) {
        std::vector<unsigned char> data = ReadWhole(path);
        int w = 0, h = 0, bpp = 0;
        // A header-only query: no pixels are copied.
        if (!LoadBmpImageFromData(data.data(), static_cast<int>(data.size()), &w, &h, &bpp, nullptr)) {
            fprintf(stderr, "palvet: %s: not a BMP file the library can read\n", path.c_str());
            failed = true;
            continue;
        }
        unsigned headerSize = data.size() >= 18 ? Le32(data, 14) : 0;
        unsigned compression = data.size() >= 34 ? Le32(data, 30) : 0;
        int rawHeight = data.size() >= 26 ? static_cast<int>(Le32(data, 22)) : h;
        static std::map<unsigned, char const*> const kCompression = {
            {0, "none"}, {1, "RLE8"}, {2, "RLE4"}, {3, "bit fields"}, {6, "alpha bit fields"}};
        auto c = kCompression.find(compression);
        fprintf(Out(), "%s: %dx%d, %d bits per pixel, %s, header %u bytes (%s), compression %s, pixels at %u, file %zu bytes\n",
               path.c_str(), w, h, bpp, rawHeight < 0 ? "top-down" : "bottom-up", headerSize,
               headerSize == 40 ? "classic" : headerSize >= 124 ? "version 5" : "other",
               c != kCompression.end() ? c->second : "other", data.size() >= 14 ? Le32(data, 10) : 0,
               data.size());
    }
    if (failed)
        Fail("some files could not be read");
}

struct ConvertOptions {
    std::string in, out, from, to, size, resize, fit = "contain";
    int rotate = 0;
    int bpp = 0;
    std::string background = "ff000000";
};

void Convert(ConvertOptions const& o)
{
    Format from = FormatFromName(o.from, o.in);
    Format to = FormatFromName(o.to, o.out);
    int w = 0, h = 0;
    if (!o.size.empty())
        ParseSize(o.size, w, h);
    Frame frame = LoadFrame(o.in, from, w, h);
    unsigned long long start = GetTickCountUS();
    frame = Rotate(frame, o.rotate);
    if (!o.resize.empty()) {
        int rw = 0, rh = 0;
        ParseSize(o.resize, rw, rh);
        // The placement modes of DrawBuffer: 1 centres horizontally, 16
        // vertically; scaling with neither bit stretches over the whole area.
        static std::map<std::string, std::pair<int, int>> const kFit = {
            {"stretch", {1, 0}}, {"contain", {1, 17}}, {"center", {0, 17}}, {"top-left", {0, 0}},
            {"bottom-right", {0, 68}}};
        auto f = kFit.find(o.fit);
        if (f == kFit.end())
            BadUsage("--fit takes stretch, contain, center, top-left or bottom-right");
        unsigned bg = static_cast<unsigned>(HexStringToUint32A(o.background.c_str()));
        frame = Fit(frame, rw, rh, f->second.first, f->second.second, bg);
    }
    unsigned long long took = GetTickCountUS() - start;
    SaveFrame(frame, o.out, to, o.bpp);
    fprintf(Out(), "%s (%s) -> %s (%s), %dx%d, %llu us\n", o.in.c_str(), FormatName(from), o.out.c_str(),
           FormatName(to), frame.width, frame.height, took);
}

}  // namespace

void AddImageCommands(CLI::App& app)
{
    CLI::App* image = app.add_subcommand("image", "BMP facts and frame conversion (raw YUV/RGB frames and BMP files)");
    image->require_subcommand(1);

    static std::vector<std::string> files;
    CLI::App* info = image->add_subcommand("info", "Print the header facts of BMP files");
    info->add_option("FILE", files, "BMP files")->required();
    SetAction(info, [] { Info(files); });

    static ConvertOptions o;
    CLI::App* convert = image->add_subcommand(
        "convert", "Convert a frame between BMP and raw formats (" + FormatList() +
                       "), optionally rotated and resized. Raw rgb24 is B,G,R bytes, argb is 32-bit "
                       "little-endian A<<24|R<<16|G<<8|B words, YUV is limited-range BT.601.");
    convert->add_option("INPUT", o.in, "Input file")->required();
    convert->add_option("OUTPUT", o.out, "Output file (written under a temporary name, renamed when complete)")
        ->required();
    convert->add_option("--from", o.from, "Input format (default: from the extension)");
    convert->add_option("--to", o.to, "Output format (default: from the extension)");
    convert->add_option("--size", o.size, "Size of a raw input frame, WxH");
    convert->add_option("--rotate", o.rotate, "Rotate clockwise by 90, 180 or 270 degrees");
    convert->add_option("--resize", o.resize, "Place the picture on a WxH canvas");
    convert->add_option("--fit", o.fit, "With --resize: stretch, contain (keep aspect, centred), center, top-left, bottom-right")
        ->capture_default_str();
    convert->add_option("--background", o.background, "Canvas colour with --resize, AARRGGBB hex")->capture_default_str();
    convert->add_option("--bpp", o.bpp, "Bits per pixel of BMP output: 24 or 32 (default: 32 when the input has alpha)");
    SetAction(convert, [] { Convert(o); });
}

}  // namespace tool
