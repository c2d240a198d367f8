// palvet charset convert | s2t | t2s
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <map>

#include "tool_common.h"

namespace tool {

// Opens the conversion engine for the life of a subcommand.
class CharsetEngine {
public:
    CharsetEngine()
    {
        if (!InitSysLibCodeConvert())
            Fail("no character-set engine: neither libicuuc.so nor libiconv.so could be loaded");
    }
    ~CharsetEngine() { DeInitSysLibCodeConvert(); }
    CharsetEngine(CharsetEngine const&) = delete;
    CharsetEngine& operator=(CharsetEngine const&) = delete;
};

unsigned int ConvertedBytes(CBuffer const& target)
{
    // Under iconv the library reports the unused capacity as the target's
    // data size; the bytes written are the rest.
    if (gLibICUHandle == nullptr && gLibIconvHandle != nullptr)
        return target.GetBufSize() - target.GetAvailSize();
    return target.GetAvailSize();
}

bool ConvertText(eCHARSETTYPE from, std::string const& in, eCHARSETTYPE to, std::string& out)
{
    // Four output bytes per input byte cover every pair of these sets (one
    // UTF-8 byte becomes one 4-byte UTF-32 unit at most).
    std::vector<unsigned char> converted(in.size() * 4 + 16);
    CBuffer source, target;
    source.BindBuffer(in.data(), static_cast<unsigned int>(in.size()));
    target.BindBuffer(converted.data(), static_cast<unsigned int>(converted.size()));
    if (in.empty() || !ConvertCharset(from, &source, to, &target))
        return false;
    out.assign(reinterpret_cast<char const*>(converted.data()), ConvertedBytes(target));
    return true;
}

namespace {

eCHARSETTYPE CharsetFromName(std::string name)
{
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
    static std::map<std::string, eCHARSETTYPE> const kNames = {
        {"utf-8", CHARSET_UTF8},   {"utf8", CHARSET_UTF8},  {"utf-32", CHARSET_UTF32},
        {"utf32", CHARSET_UTF32},  {"utf-32le", CHARSET_UTF32}, {"gb2312", CHARSET_GB2312},
        {"big5", CHARSET_BIG5},    {"gbk", CHARSET_GBK}};
    auto it = kNames.find(name);
    if (it == kNames.end())
        BadUsage("unknown character set '" + name + "' (gb2312, gbk, big5, utf-8 or utf-32)");
    return it->second;
}

// Converts one whole file; the target is written only when the conversion
// succeeded.
void ConvertFile(eCHARSETTYPE from, std::string const& in, eCHARSETTYPE to, std::string const& out)
{
    std::vector<unsigned char> data = ReadWhole(in, true);
    PendingFile file(out);
    std::string converted;
    if (!data.empty() &&
        !ConvertText(from, std::string(data.begin(), data.end()), to, converted))
        Fail(in + ": cannot be converted (invalid or unmappable text for the character sets given)");
    file.Write(converted.data(), converted.size());
    file.Commit();
}

struct ConvertOptions {
    std::string from, to, in, out;
    bool folder = false;
};

void Convert(ConvertOptions const& o)
{
    eCHARSETTYPE from = CharsetFromName(o.from);
    eCHARSETTYPE to = CharsetFromName(o.to);
    CharsetEngine engine;
    if (!o.folder) {
        ConvertFile(from, o.in, to, o.out);
        return;
    }
    if (!IsDir(o.in.c_str()))
        Fail(o.in + ": no such folder");
    if (!IsDir(o.out.c_str()) && do_mkdir(o.out.c_str(), 0777) != 0)
        Fail(o.out + ": cannot create the folder");
    if (from == CHARSET_GB2312 && to == CHARSET_UTF8 && gLibICUHandle != nullptr) {
        // The library's own folder conversion (it works under ICU only).
        ConvertGB2312ToUTF8_Folder(o.in.c_str(), o.out.c_str());
        return;
    }
    CPtrListCtrl files;
    GetLocalFolderFileList(o.in.c_str(), nullptr, &files, nullptr, 0);
    int failed = 0;
    for (int i = 0; i < files.GetCount(); ++i) {
        char src[1025], dst[1025];
        CombinePathName(src, o.in.c_str(), static_cast<char const*>(files.GetAt(i)));
        CombinePathName(dst, o.out.c_str(), static_cast<char const*>(files.GetAt(i)));
        try {
            ConvertFile(from, src, to, dst);
        } catch (Failure const& e) {
            fprintf(stderr, "palvet: %s\n", e.what());
            ++failed;
        }
    }
    FreeFileList(&files);
    if (failed)
        Fail(std::to_string(failed) + " file(s) could not be converted");
}

void Chinese(bool toTraditional, std::vector<std::string> const& words)
{
    CharsetEngine engine;
    std::string text;
    if (words.empty()) {
        text = ReadStdin();
    } else {
        for (auto const& w : words)
            text += (text.empty() ? "" : " ") + w;
    }
    CSimpleStringA s;
    s.Set(text.c_str(), static_cast<int>(text.size()));
    if (toTraditional)
        s.ToTraditionalChinese();
    else
        s.ToSimpleChinese();
    fputs(s.GetString(), Out());
    if (!words.empty())
        fputc('\n', Out());
}

}  // namespace

void AddCharsetCommands(CLI::App& app)
{
    CLI::App* charset = app.add_subcommand("charset", "Character-set conversion (ICU or iconv, opened at run time)");
    charset->require_subcommand(1);

    static ConvertOptions o;
    CLI::App* convert = charset->add_subcommand("convert", "Convert a file, or with -r every file of a folder");
    convert->add_option("--from", o.from, "gb2312, gbk, big5, utf-8 or utf-32")->required();
    convert->add_option("--to", o.to, "gb2312, gbk, big5, utf-8 or utf-32")->required();
    convert->add_option("INPUT", o.in, "Source file (folder with -r)")->required();
    convert->add_option("OUTPUT", o.out, "Target file (folder with -r; created when missing)")->required();
    convert->add_flag("-r,--folder", o.folder, "Convert every visible file of the folder (subfolders are not entered)");
    SetAction(convert, [] { Convert(o); });

    static std::vector<std::string> words;
    CLI::App* s2t = charset->add_subcommand("s2t", "Simplified to traditional Chinese (UTF-8 text)");
    s2t->add_option("TEXT", words, "Text (default: standard input)");
    SetAction(s2t, [] { Chinese(true, words); });
    CLI::App* t2s = charset->add_subcommand("t2s", "Traditional to simplified Chinese (UTF-8 text)");
    t2s->add_option("TEXT", words, "Text (default: standard input)");
    SetAction(t2s, [] { Chinese(false, words); });
}

}  // namespace tool
