// palvet demo: the library's typical job end to end. A folder of pictures is
// listed with an extension filter, the names are converted from GB2312 for
// display, every BMP is loaded and fitted onto a 1280x720 ARGB frame buffer
// as a contact sheet, and the folder's GB2312 text is converted to UTF-8.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "image_frame.h"
#include "tool_common.h"

namespace tool {
namespace {

constexpr int kSheetW = 1280;
constexpr int kSheetH = 720;
constexpr int kCaptionH = 28;

std::string TempRoot()
{
    char const* tmp = getenv("TMPDIR");
    return std::string(tmp && *tmp ? tmp : "/tmp") + "/palvet-demo";
}

void MakeFolder(std::string const& path)
{
    if (do_mkdir(path.c_str(), 0777) != 0)
        Fail(path + ": cannot create the folder");
}

// Names and text between UTF-8 and GB2312; empty (or the name as stored)
// when no engine is up or the text does not convert.
std::string ToGb2312(std::string const& utf8, bool engine)
{
    std::string out;
    if (!engine || !ConvertText(CHARSET_UTF8, utf8, CHARSET_GB2312, out))
        return {};
    return out;
}

std::string FromGb2312(char const* name, bool engine)
{
    std::string out;
    if (!engine || !ConvertText(CHARSET_GB2312, name, CHARSET_UTF8, out))
        return name;
    return out;
}

// A test card: a colour gradient, bars drawn with the library's fills and a
// diagonal line, and a soft alpha vignette for 32-bit pictures.
Frame TestCard(int w, int h, int seed, bool alpha)
{
    Frame f;
    f.width = w;
    f.height = h;
    f.hasAlpha = alpha;
    f.argb.resize(static_cast<size_t>(f.Pitch()) * h);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            unsigned char* p = &f.argb[static_cast<size_t>(y) * f.Pitch() + 4 * x];
            p[0] = static_cast<unsigned char>((x * 255 / w + seed * 40) & 255);
            p[1] = static_cast<unsigned char>((y * 255 / h + seed * 70) & 255);
            p[2] = static_cast<unsigned char>(((x + y) * 255 / (w + h) + seed * 90) & 255);
            double dx = (x - w / 2.0) / (w / 2.0), dy = (y - h / 2.0) / (h / 2.0);
            double r = std::min(1.0, std::sqrt(dx * dx + dy * dy));
            p[3] = alpha ? static_cast<unsigned char>(255 - 200 * r * r) : 255;
        }
    }
    static unsigned int const kBars[] = {0xFFFFFFFF, 0xFFFFFF00, 0xFF00FFFF, 0xFF00FF00,
                                         0xFFFF00FF, 0xFFFF0000, 0xFF0000FF, 0xFF000000};
    int barW = std::max(1, w / 16);
    for (int i = 0; i < 8; ++i) {
        tagRECT bar{w / 4 + i * barW, h / 3, w / 4 + (i + 1) * barW, h / 3 + h / 4};
        DrawColorOnBuffer(kBars[i], f.argb.data(), &bar, f.Pitch());
    }
    unsigned int brush[3] = {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF};
    DrawLineOnBuffer(f.argb.data(), tagPOINT{0, 0}, tagPOINT{w - 1, h - 1}, w, h, f.Pitch(), 4, 3, brush);
    return f;
}

void SaveSample(Frame const& f, std::string const& path, int bits)
{
    if (bits == 16) {
        // 5-6-5 pixels, padded rows, top-down: the writer flips them.
        int stride = ((16 * f.width + 31) / 32) * 4;
        std::vector<unsigned char> bgr(static_cast<size_t>(f.width) * 3 * f.height);
        ConvertRGB32ToRGB24(f.argb.data(), f.Pitch(), bgr.data(), f.width * 3, f.width, f.height, 0);
        std::vector<unsigned char> px(static_cast<size_t>(stride) * f.height);
        RGB888ToRGB565(f.width, f.height, bgr.data(), px.data(), f.width * 3, stride, 0);
        SaveRgb565BufferToBmpFile(px.data(), f.width, -f.height, path.c_str());
        return;
    }
    SaveFrame(f, path, Format::Bmp, bits);
}

struct Sample {
    char const* utf8Name;
    char const* asciiName;
    int w, h, bits;
};

void CreateSampleFolder(std::string const& pictures, bool engine)
{
    static Sample const kSamples[] = {
        {"日落.bmp", "sunset.bmp", 320, 200, 24},
        {"海报.bmp", "poster.bmp", 480, 640, 32},
        {"标志.bmp", "logo.bmp", 128, 128, 16},
        {"panorama.bmp", "panorama.bmp", 900, 160, 24},
        {"card.bmp", "card.bmp", 400, 300, 32},
        {"频道列表.bmp", "channels.bmp", 256, 144, 24},
    };
    int seed = 0;
    for (auto const& s : kSamples) {
        std::string gb = ToGb2312(s.utf8Name, engine);
        std::string name = gb.empty() || !strcmp(s.utf8Name, s.asciiName) ? s.asciiName : gb;
        SaveSample(TestCard(s.w, s.h, seed++, s.bits == 32), pictures + "/" + name, s.bits);
    }
    // Not a picture: the extension filter leaves it out of the sheet.
    std::string text = "欢迎使用机顶盒。\n频道列表已更新：新闻、体育、电影。\n";
    std::string gb = ToGb2312(text, engine);
    std::string gbName = ToGb2312("说明.txt", engine);
    WriteFileData((pictures + "/" + (gbName.empty() ? std::string("readme.txt") : gbName)).c_str(),
                  gb.empty() ? text.data() : gb.data(), static_cast<unsigned int>(gb.empty() ? text.size() : gb.size()), 0);
}

void Demo(std::string dir, std::string sheetPath)
{
    unsigned long long t0 = GetTickCountUS();
    bool engine = InitSysLibCodeConvert() != 0;
    fprintf(Out(), "character-set engine: %s\n",
           gLibICUHandle != nullptr ? "ICU" : gLibIconvHandle != nullptr ? "iconv" : "none (names shown as stored)");

    std::string root;
    if (dir.empty()) {
        root = TempRoot();
        dir = root + "/pictures";
        if (IsDir(dir.c_str()))
            RemoveFile(dir.c_str(), nullptr, 1, 1);
        else {
            MakeFolder(root);
            MakeFolder(dir);
        }
        CreateSampleFolder(dir, engine);
        fprintf(Out(), "sample folder: %s\n", dir.c_str());
        if (sheetPath.empty())
            sheetPath = root + "/contact-sheet.bmp";
    } else if (!IsDir(dir.c_str())) {
        DeInitSysLibCodeConvert();
        Fail(dir + ": no such folder");
    }
    if (sheetPath.empty())
        sheetPath = "contact-sheet.bmp";

    // 1. The pictures of the folder, filtered by extension.
    unsigned long long t1 = GetTickCountUS();
    CPtrListCtrl list;
    GetLocalFolderFileList(dir.c_str(), nullptr, &list, ".bmp;.BMP", 0);
    int n = list.GetCount();
    fprintf(Out(), "listed %d picture(s) in %llu us\n", n, GetTickCountUS() - t1);

    // 2. The sheet: a grid of cells, each picture fitted into its cell.
    std::vector<unsigned char> sheet(static_cast<size_t>(kSheetW) * 4 * kSheetH);
    int pitch = kSheetW * 4;
    tagRECT all{0, 0, kSheetW, kSheetH};
    DrawColorOnBuffer(0xFF202428, sheet.data(), &all, pitch);
    int cols = std::max(1, static_cast<int>(std::ceil(std::sqrt(n * 16.0 / 9.0))));
    int rows = std::max(1, (n + cols - 1) / cols);
    int cellW = kSheetW / cols, cellH = kSheetH / rows;
    std::vector<unsigned char> caption(static_cast<size_t>(cellW) * 4 * kCaptionH);
    tagRECT captionRect{0, 0, cellW, kCaptionH};
    DrawColorOnBuffer(0xA0000000, caption.data(), &captionRect, cellW * 4);

    unsigned long long drawUs = 0, loadUs = 0;
    int shown = 0;
    for (int i = 0; i < n; ++i) {
        char const* stored = static_cast<char const*>(list.GetAt(i));
        std::string shownName = FromGb2312(stored, engine);
        char path[1025];
        CombinePathName(path, dir.c_str(), stored);
        unsigned long long s = GetTickCountUS();
        int w = 0, h = 0, bpp = 0;
        unsigned char* pixels = nullptr;
        if (!LoadBmpImageFromFile(path, &w, &h, &bpp, &pixels) || w <= 0 || h <= 0 ||
            (bpp != 16 && bpp != 24 && bpp != 32)) {
            DeleteBmpImageData(pixels);
            fprintf(Out(), "  skipped (not a picture this demo draws): %s\n", shownName.c_str());
            continue;
        }
        Frame f = FrameFromBmpPixels(pixels, w, h, bpp, path);
        DeleteBmpImageData(pixels);
        RevertBottomUpBuffer(f.argb.data(), 0, 0, f.width, f.height, 4, f.Pitch());
        loadUs += GetTickCountUS() - s;

        s = GetTickCountUS();
        int cx = (shown % cols) * cellW, cy = (shown / cols) * cellH;
        unsigned char* cell = sheet.data() + static_cast<size_t>(cy + 4) * pitch + static_cast<size_t>(cx + 4) * 4;
        // Scaled, centred on both axes; blended when the picture has alpha.
        DrawBuffer(cell, tagRECT{0, 0, cellW - 8, cellH - 8}, pitch, f.argb.data(),
                   tagRECT{0, 0, f.width, f.height}, f.Pitch(), 4, 1, f.hasAlpha, 17);
        // The caption band: translucent black over the bottom of the cell.
        AlphaDrawBufferOnBuffer_ARGB(sheet.data() + static_cast<size_t>(cy + cellH - kCaptionH) * pitch + cx * 4,
                                     captionRect, pitch, caption.data(), captionRect, cellW * 4);
        drawUs += GetTickCountUS() - s;

        CSimpleStringA size;
        FILE* file = fopen(path, "rb");
        FormatFileSize(file ? FileSize(file) : 0, &size);
        if (file)
            fclose(file);
        fprintf(Out(), "  cell %d: %4dx%-4d %2d-bit %10s  %s\n", shown, w, h, bpp, size.GetString(), shownName.c_str());
        ++shown;
    }
    FreeFileList(&list);
    fprintf(Out(), "loaded %d picture(s) in %llu us, drew them in %llu us\n", shown, loadUs, drawUs);

    PendingFile out(sheetPath);
    SaveRgbBufferToBmpFile(sheet.data(), kSheetW, -kSheetH, 32, nullptr, 0, out.Temp());
    int cw = 0, ch = 0, cb = 0;
    if (!LoadBmpImageFromFile(out.Temp(), &cw, &ch, &cb, nullptr) || cw != kSheetW || ch != kSheetH) {
        DeInitSysLibCodeConvert();
        Fail(sheetPath + ": the sheet could not be written");
    }
    out.Commit();

    // 3. The folder's text files, GB2312 to UTF-8.
    if (engine && !root.empty()) {
        std::string utf8 = root + "/utf8";
        if (!IsDir(utf8.c_str()))
            MakeFolder(utf8);
        CPtrListCtrl texts;
        GetLocalFolderFileList(dir.c_str(), nullptr, &texts, ".txt", 0);
        for (int i = 0; i < texts.GetCount(); ++i) {
            char const* stored = static_cast<char const*>(texts.GetAt(i));
            char src[1025], dst[1025];
            CombinePathName(src, dir.c_str(), stored);
            std::string shownName = FromGb2312(stored, engine);
            CombinePathName(dst, utf8.c_str(), shownName.c_str());
            ConvertGB2312ToUTF8_File(src, dst);
            std::vector<unsigned char> text = ReadWhole(dst, true);
            std::string first(text.begin(), std::find(text.begin(), text.end(), '\n'));
            fprintf(Out(), "converted %s to UTF-8: %s (\"%s\")\n", shownName.c_str(), dst, first.c_str());
        }
        FreeFileList(&texts);
    }
    DeInitSysLibCodeConvert();

    std::vector<unsigned char> saved = ReadWhole(sheetPath);
    fprintf(Out(), "sheet CRC-32 %08x, %zu bytes, %dx%d, total %llu us\n",
           CCRC::CalculateDigest(saved.data(), static_cast<unsigned int>(saved.size())), saved.size(), kSheetW,
           kSheetH, GetTickCountUS() - t0);
    char real[4096];
    fprintf(Out(), "contact sheet: %s\n", realpath(sheetPath.c_str(), real) ? real : sheetPath.c_str());
}

}  // namespace

void AddDemoCommand(CLI::App& app)
{
    static std::string dir, out;
    CLI::App* demo = app.add_subcommand(
        "demo", "List a folder's BMP pictures, convert their GB2312 names, fit them onto a 1280x720 contact "
                "sheet and save it; without DIR, a sample folder is made first under $TMPDIR/palvet-demo");
    demo->add_option("DIR", dir, "Folder of pictures");
    demo->add_option("-o,--output", out, "Where to save the sheet (default: beside the sample folder, or ./contact-sheet.bmp)");
    SetAction(demo, [] { Demo(dir, out); });
}

}  // namespace tool
