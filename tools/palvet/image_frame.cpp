#include "image_frame.h"

#include <algorithm>
#include <cctype>
#include <cstring>

#include "tool_common.h"

namespace tool {
namespace {

struct FormatInfo {
    Format format;
    char const* name;
    char const* extensions;  // ';'-separated, with dots
};

constexpr FormatInfo kFormats[] = {
    {Format::Bmp, "bmp", ".bmp;.dib"},
    {Format::I420, "i420", ".i420;.yuv;.iyuv"},
    {Format::Nv12, "nv12", ".nv12"},
    {Format::Nv21, "nv21", ".nv21"},
    {Format::Yuy2, "yuy2", ".yuy2;.yuyv"},
    {Format::Uyvy, "uyvy", ".uyvy"},
    {Format::Rgb24, "rgb24", ".rgb24;.rgb;.bgr"},
    {Format::Rgb565, "rgb565", ".rgb565;.565"},
    {Format::Argb, "argb", ".argb;.bgra"},
};

std::string Lower(std::string s)
{
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return std::tolower(c); });
    return s;
}

bool IsYuv(Format f)
{
    return f == Format::I420 || f == Format::Nv12 || f == Format::Nv21 || f == Format::Yuy2 ||
           f == Format::Uyvy;
}

// Bytes of one raw frame, or 0 for BMP.
size_t RawSize(Format f, int w, int h)
{
    size_t px = static_cast<size_t>(w) * h;
    switch (f) {
    case Format::I420:
    case Format::Nv12:
    case Format::Nv21: return px + 2 * ((static_cast<size_t>(w) / 2) * (h / 2));
    case Format::Yuy2:
    case Format::Uyvy:
    case Format::Rgb565: return px * 2;
    case Format::Rgb24: return px * 3;
    case Format::Argb: return px * 4;
    case Format::Bmp: break;
    }
    return 0;
}

// UYVY and YUY2 hold the same samples with the bytes of each pair swapped.
void SwapBytePairs(unsigned char* p, size_t n)
{
    for (size_t i = 0; i + 1 < n; i += 2)
        std::swap(p[i], p[i + 1]);
}

// B, G, R bytes (rows of w * 3) into the frame.
void FromBgr(Frame& f, unsigned char const* bgr, int pitch)
{
    ConvertRGB24ToRGB32(bgr, pitch, f.argb.data(), f.Pitch(), f.width, f.height, 0);
}

std::vector<unsigned char> ToBgr(Frame const& f, int pitch)
{
    std::vector<unsigned char> bgr(static_cast<size_t>(pitch) * f.height);
    ConvertRGB32ToRGB24(f.argb.data(), f.Pitch(), bgr.data(), pitch, f.width, f.height, 0);
    return bgr;
}

// 16-bit words into ARGB: 5-6-5 (green six bits) or 5-5-5. Done here
// rather than through the library's 16-to-24 bit conversion, which keeps an
// old quirk (blue written into both outer bytes) that would discolour the
// picture.
void From16(Frame& f, unsigned char const* src, int pitch, int greenBits)
{
    unsigned greenMask = (1u << greenBits) - 1;
    for (int y = 0; y < f.height; ++y) {
        unsigned char const* s = src + static_cast<size_t>(y) * pitch;
        unsigned char* d = f.argb.data() + static_cast<size_t>(y) * f.Pitch();
        for (int x = 0; x < f.width; ++x) {
            unsigned v = s[2 * x] | s[2 * x + 1] << 8;
            unsigned r = v >> (5 + greenBits) & 31, g = v >> 5 & greenMask, b = v & 31;
            d[4 * x] = static_cast<unsigned char>(b << 3 | b >> 2);
            d[4 * x + 1] = static_cast<unsigned char>(g << (8 - greenBits) | g >> (2 * greenBits - 8));
            d[4 * x + 2] = static_cast<unsigned char>(r << 3 | r >> 2);
            d[4 * x + 3] = 255;
        }
    }
}

void From565(Frame& f, unsigned char const* src, int pitch) { From16(f, src, pitch, 6); }
void From555(Frame& f, unsigned char const* src, int pitch) { From16(f, src, pitch, 5); }

unsigned Le32(unsigned char const* p) { return p[0] | p[1] << 8 | p[2] << 16 | static_cast<unsigned>(p[3]) << 24; }

void NeedEven(Frame const& f, Format format)
{
    if ((f.width | f.height) & 1)
        BadUsage(std::string(FormatName(format)) + " needs an even width and height, not " +
                 std::to_string(f.width) + "x" + std::to_string(f.height));
}

}  // namespace

Format FormatFromName(std::string const& name, std::string const& path)
{
    std::string n = Lower(name);
    if (!n.empty()) {
        for (auto const& f : kFormats)
            if (n == f.name)
                return f.format;
        BadUsage("unknown format '" + name + "' (one of " + FormatList() + ")");
    }
    size_t dot = path.find_last_of('.');
    if (dot != std::string::npos && path.find('/', dot) == std::string::npos) {
        std::string ext = Lower(path.substr(dot));
        for (auto const& f : kFormats) {
            std::string list = std::string(f.extensions) + ";";
            if (list.find(ext + ";") != std::string::npos)
                return f.format;
        }
    }
    BadUsage("cannot tell the format of '" + path + "'; name it with --from/--to (" + FormatList() + ")");
}

char const* FormatName(Format format)
{
    for (auto const& f : kFormats)
        if (f.format == format)
            return f.name;
    return "?";
}

std::string FormatList()
{
    std::string s;
    for (auto const& f : kFormats)
        s += (s.empty() ? "" : ", ") + std::string(f.name);
    return s;
}

Frame FrameFromBmpPixels(unsigned char const* pixels, int width, int height, int bpp,
                         std::string const& path)
{
    (void)path;
    Frame f;
    f.width = width < 0 ? -width : width;
    f.height = height;
    f.argb.assign(static_cast<size_t>(f.Pitch()) * f.height, 0);
    int stride = ((bpp * f.width + 31) / 32) * 4;
    switch (bpp) {
    case 32:
        DrawBufferOnBuffer(f.argb.data(), tagRECT{0, 0, f.width, f.height}, f.Pitch(), pixels,
                           tagRECT{0, 0, f.width, f.height}, stride, 4);
        f.hasAlpha = true;
        break;
    case 24: FromBgr(f, pixels, stride); break;
    case 16: From565(f, pixels, stride); break;
    default: break;
    }
    return f;
}

Frame LoadFrame(std::string const& path, Format format, int width, int height)
{
    std::vector<unsigned char> data = ReadWhole(path);
    Frame f;
    if (format == Format::Bmp) {
        int w = 0, h = 0, bpp = 0;
        unsigned char* pixels = nullptr;
        if (!LoadBmpImageFromData(data.data(), static_cast<int>(data.size()), &w, &h, &bpp, &pixels))
            Fail(path + ": not a BMP file the library can read");
        if (w <= 0 || h <= 0 || (bpp != 16 && bpp != 24 && bpp != 32)) {
            DeleteBmpImageData(pixels);
            Fail(path + ": " + std::to_string(bpp) + "-bit " + std::to_string(w) + "x" + std::to_string(h) +
                 " pictures are not supported (16, 24 and 32 bits are)");
        }
        int stride = ((bpp * w + 31) / 32) * 4;
        // 16-bit files: 5-5-5 unless bit fields give green six bits.
        bool is565 = false;
        if (bpp == 16 && data.size() >= 14 + 56 && Le32(&data[14 + 16]) == 3)
            is565 = Le32(&data[14 + 44]) == 0x7E0;
        f.width = w;
        f.height = h;
        f.argb.assign(static_cast<size_t>(f.Pitch()) * h, 0);
        if (bpp == 16 && !is565)
            From555(f, pixels, stride);
        else
            f = FrameFromBmpPixels(pixels, w, h, bpp, path);
        DeleteBmpImageData(pixels);
        // A negative height in the file means the rows are already top-down.
        bool topDown = data.size() >= 26 && static_cast<int>(Le32(&data[22])) < 0;
        if (!topDown)
            RevertBottomUpBuffer(f.argb.data(), 0, 0, f.width, f.height, 4, f.Pitch());
        return f;
    }

    if (width < 1 || height < 1)
        BadUsage(path + ": a raw " + std::string(FormatName(format)) + " frame needs --size WxH");
    f.width = width;
    f.height = height;
    if (IsYuv(format))
        NeedEven(f, format);
    size_t need = RawSize(format, width, height);
    if (data.size() < need)
        Fail(path + ": " + std::to_string(data.size()) + " bytes, but a " + std::to_string(width) + "x" +
             std::to_string(height) + " " + FormatName(format) + " frame needs " + std::to_string(need));
    f.argb.assign(static_cast<size_t>(f.Pitch()) * height, 0);
    unsigned char* src = data.data();
    switch (format) {
    case Format::Nv12:
    case Format::Nv21: {
        std::vector<unsigned char> planar(need);
        YUV420SPToYUV420(width, height, src, planar.data(), format == Format::Nv21);
        std::vector<unsigned char> bgr(static_cast<size_t>(width) * 3 * height);
        YUV420ToRGB888(width, height, planar.data(), 0, bgr.data(), width * 3, 1);
        FromBgr(f, bgr.data(), width * 3);
        break;
    }
    case Format::I420: {
        std::vector<unsigned char> bgr(static_cast<size_t>(width) * 3 * height);
        YUV420ToRGB888(width, height, src, 0, bgr.data(), width * 3, 1);
        FromBgr(f, bgr.data(), width * 3);
        break;
    }
    case Format::Uyvy: SwapBytePairs(src, need); [[fallthrough]];
    case Format::Yuy2: YUY2ToARGB32(width, height, src, f.argb.data(), f.Pitch(), 0, nullptr, 0); break;
    case Format::Rgb24: FromBgr(f, src, width * 3); break;
    case Format::Rgb565: From565(f, src, width * 2); break;
    case Format::Argb:
        memcpy(f.argb.data(), src, f.argb.size());
        f.hasAlpha = true;
        break;
    case Format::Bmp: break;
    }
    return f;
}

void SaveFrame(Frame const& frame, std::string const& path, Format format, int bmpBits)
{
    int w = frame.width, h = frame.height;
    PendingFile out(path);
    std::vector<unsigned char> bytes;
    switch (format) {
    case Format::Bmp: {
        int bits = bmpBits ? bmpBits : (frame.hasAlpha ? 32 : 24);
        if (bits != 24 && bits != 32)
            BadUsage("--bpp must be 24 or 32");
        // A negative height tells the writer the rows are top-down.
        if (bits == 32) {
            SaveRgbBufferToBmpFile(frame.argb.data(), w, -h, 32, nullptr, 0, out.Temp());
        } else {
            std::vector<unsigned char> bgr = ToBgr(frame, ((24 * w + 31) / 32) * 4);
            SaveRgbBufferToBmpFile(bgr.data(), w, -h, 24, nullptr, 0, out.Temp());
        }
        int cw = 0, ch = 0, cb = 0;
        if (!LoadBmpImageFromFile(out.Temp(), &cw, &ch, &cb, nullptr) || cw != w || ch != h)
            Fail(path + ": the BMP file could not be written");
        out.Commit();
        return;
    }
    case Format::I420:
    case Format::Nv12:
    case Format::Nv21: {
        NeedEven(frame, format);
        std::vector<unsigned char> bgr = ToBgr(frame, w * 3);
        std::vector<unsigned char> planar(RawSize(Format::I420, w, h));
        RGB888ToYUV420(w, h, bgr.data(), planar.data(), 0, w * 3, 1);
        if (format == Format::I420) {
            bytes = std::move(planar);
        } else {
            bytes.resize(planar.size());
            YUV420ToYUV420SP(w, h, planar.data(), format == Format::Nv21, bytes.data());
        }
        break;
    }
    case Format::Yuy2:
    case Format::Uyvy: {
        NeedEven(frame, format);
        std::vector<unsigned char> bgr = ToBgr(frame, w * 3);
        std::vector<unsigned char> planar(static_cast<size_t>(w) * h * 2);
        RGB888ToYUV422(w, h, bgr.data(), planar.data(), 0, w * 3, 1);
        bytes.resize(planar.size());
        YUVToYUYV_422(w, h, planar.data(), 0, bytes.data());
        if (format == Format::Uyvy)
            SwapBytePairs(bytes.data(), bytes.size());
        break;
    }
    case Format::Rgb24: bytes = ToBgr(frame, w * 3); break;
    case Format::Rgb565: {
        std::vector<unsigned char> bgr = ToBgr(frame, w * 3);
        bytes.resize(static_cast<size_t>(w) * h * 2);
        RGB888ToRGB565(w, h, bgr.data(), bytes.data(), w * 3, w * 2, 0);
        break;
    }
    case Format::Argb: bytes = frame.argb; break;
    }
    out.Write(bytes.data(), bytes.size());
    out.Commit();
}

Frame Rotate(Frame const& frame, int degrees)
{
    if (degrees % 360 == 0)
        return frame;
    Frame r = frame;
    unsigned char* src = const_cast<unsigned char*>(frame.argb.data());
    switch ((degrees % 360 + 360) % 360) {
    case 90: RotateRGBData90(src, r.argb.data(), frame.width, frame.height, 4); break;
    case 180: RotateRGBData180(src, r.argb.data(), frame.width, frame.height, 4); break;
    case 270: RotateRGBData270(src, r.argb.data(), frame.width, frame.height, 4); break;
    default: BadUsage("--rotate takes 90, 180 or 270");
    }
    if (degrees % 180 != 0)
        std::swap(r.width, r.height);
    return r;
}

Frame Fit(Frame const& frame, int width, int height, int scale, int mode, unsigned int background)
{
    Frame out;
    out.width = width;
    out.height = height;
    out.hasAlpha = frame.hasAlpha;
    out.argb.assign(static_cast<size_t>(out.Pitch()) * height, 0);
    tagRECT all{0, 0, width, height};
    DrawColorOnBuffer(background, out.argb.data(), &all, out.Pitch());
    DrawBuffer(out.argb.data(), all, out.Pitch(), frame.argb.data(), tagRECT{0, 0, frame.width, frame.height},
               frame.Pitch(), 4, scale, 0, mode);
    return out;
}

}  // namespace tool
