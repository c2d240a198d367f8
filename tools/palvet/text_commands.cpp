// palvet crc32 | crc16 | hex | url | split | number-zh
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "tool_common.h"

namespace tool {
namespace {

// Text from the arguments, or standard input when there are none.
std::string ArgOrStdin(std::vector<std::string> const& words)
{
    if (words.empty())
        return ReadStdin();
    std::string text;
    for (auto const& w : words)
        text += (text.empty() ? "" : " ") + w;
    return text;
}

void Crc32(std::vector<std::string> const& files)
{
    for (auto const& path : files) {
        std::vector<unsigned char> data = ReadWhole(path, true);
        CCRC crc;
        // Fed in pieces, as a long file would be.
        for (size_t at = 0; at < data.size(); at += 1u << 20) {
            size_t n = std::min<size_t>(data.size() - at, 1u << 20);
            crc.Update(data.data() + at, static_cast<unsigned int>(n));
        }
        fprintf(Out(), "%u %zu %s\n", crc.GetDigest(), data.size(), path.c_str());
    }
}

void Crc16(std::vector<std::string> const& files)
{
    for (auto const& path : files) {
        std::vector<unsigned char> data = ReadWhole(path, true);
        // The library's one-shot functions take at most 255 bytes; longer
        // files run through the same exported byte table.
        unsigned int reg = 0;
        if (data.size() <= 255) {
            reg = crc_cal_by_byte(data.data(), static_cast<unsigned char>(data.size()));
        } else {
            for (unsigned char b : data)
                reg = ((reg << 8) ^ crc_ta_8[((reg >> 8) ^ b) & 0xFF]) & 0xFFFF;
        }
        fprintf(Out(), "%u %zu %s\n", reg, data.size(), path.c_str());
    }
}

void HexDump(std::string const& path, int width, bool plain)
{
    std::vector<unsigned char> data = ReadWhole(path, true);
    if (data.size() > INT_MAX)
        Fail(path + ": too large for a hex dump");
    if (plain) {
        CSimpleStringA hex;
        BufferToHexStringA(data.data(), static_cast<int>(data.size()), &hex);
        fprintf(Out(), "%s\n", hex.GetString());
        return;
    }
    if (width < 1)
        BadUsage("--width must be 1 or more");
    WithLibraryLogOnStdout([&] { PrintHexBuffer(data.data(), static_cast<int>(data.size()), width); });
}

void HexParse(std::vector<std::string> const& words, std::string const& out)
{
    std::string text = ArgOrStdin(words);
    std::string digits;
    // Blanks and line ends are layout, not data.
    for (char c : text)
        if (c != ' ' && c != '\n' && c != '\r' && c != '\t')
            digits += c;
    CBuffer bytes;
    HexStringToBufferA(digits.c_str(), static_cast<int>(digits.size()), &bytes);
    if (out.empty() || out == "-") {
        fwrite(bytes.GetBuffer(), 1, bytes.GetAvailSize(), Out());
        return;
    }
    PendingFile file(out);
    file.Write(bytes.GetBuffer(), bytes.GetAvailSize());
    file.Commit();
}

void Url(bool encode, std::vector<std::string> const& words)
{
    std::string text = ArgOrStdin(words);
    if (words.empty() && !text.empty() && text.back() == '\n')
        text.pop_back();
    CSimpleStringA out;
    if (encode)
        EncodeURL(text.c_str(), &out);
    else
        DecodeURL(text.c_str(), &out);
    fwrite(out.GetString(), 1, static_cast<size_t>(out.GetLength()), Out());
    fputc('\n', Out());
}

struct SplitOptions {
    std::string text;
    std::string chars = ",";
    std::vector<std::string> strings;
    bool skipEmpty = false;
    int max = 0;
};

void Split(SplitOptions const& o)
{
    CPtrListCtrl pieces;
    char* copy = nullptr;
    if (!o.strings.empty()) {
        std::vector<char const*> seps;
        for (auto const& s : o.strings)
            seps.push_back(s.c_str());
        copy = DevideStringByStringListA(o.text.c_str(), static_cast<int>(o.text.size()), seps.data(),
                                         static_cast<int>(seps.size()), &pieces);
    } else {
        copy = DevideStringByCharListA(o.text.c_str(), static_cast<int>(o.text.size()), o.chars.c_str(),
                                       static_cast<int>(o.chars.size()), o.skipEmpty, &pieces, o.max);
    }
    for (int i = 0; i < pieces.GetCount(); ++i)
        fprintf(Out(), "%s\n", static_cast<char const*>(pieces.GetAt(i)));
    Internal_DelArrayA(copy);
}

void NumberZh(std::string const& text)
{
    char* end = nullptr;
    errno = 0;
    long v = strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || errno != 0 || v < 0 || v > INT_MAX)
        BadUsage("'" + text + "' is not a number from 0 to " + std::to_string(INT_MAX));
    wchar_t out[32];
    ConvertNumberToChineseNumber(static_cast<int>(v), out, 32);
    fprintf(Out(), "%s\n", Utf8(out).c_str());
}

}  // namespace

void AddTextCommands(CLI::App& app)
{
    static std::vector<std::string> crcFiles;
    CLI::App* crc32 = app.add_subcommand(
        "crc32", "CRC-32 of files, printed like cksum (CRC, size, name). The checksum is the library's own: "
                 "polynomial 0xEDB88320 reflected, register started at 0xABCDABCD, digest inverted; it "
                 "differs from cksum's and zlib's values");
    crc32->add_option("FILE", crcFiles, "Files")->required();
    SetAction(crc32, [] { Crc32(crcFiles); });

    CLI::App* crc16 = app.add_subcommand(
        "crc16", "CRC-16 of files (polynomial 0x1021, start 0, no final XOR), printed like cksum");
    crc16->add_option("FILE", crcFiles, "Files")->required();
    SetAction(crc16, [] { Crc16(crcFiles); });

    CLI::App* hex = app.add_subcommand("hex", "Hex dumps and hex text to bytes");
    hex->require_subcommand(1);
    static std::string hexFile, hexOut;
    static int hexWidth = 16;
    static bool hexPlain = false;
    static std::vector<std::string> hexWords;
    CLI::App* dump = hex->add_subcommand("dump", "Hex dump of a file through the library's debug channel");
    dump->add_option("FILE", hexFile, "File")->required();
    dump->add_option("-w,--width", hexWidth, "Bytes per line")->capture_default_str();
    dump->add_flag("--plain", hexPlain, "One line of lower-case hex digits instead");
    SetAction(dump, [] { HexDump(hexFile, hexWidth, hexPlain); });
    CLI::App* parse = hex->add_subcommand(
        "parse", "Hex text (optional 0x, blanks ignored, an odd last digit dropped) to bytes");
    parse->add_option("TEXT", hexWords, "Hex text (default: standard input)");
    parse->add_option("-o,--output", hexOut, "Write the bytes to this file (default: standard output)");
    SetAction(parse, [] { HexParse(hexWords, hexOut); });

    CLI::App* url = app.add_subcommand("url", "Form-style URL encoding");
    url->require_subcommand(1);
    static std::vector<std::string> urlWords;
    CLI::App* enc = url->add_subcommand("encode", "Encode text (blank as '+', others as %XX)");
    enc->add_option("TEXT", urlWords, "Text (default: standard input)");
    SetAction(enc, [] { Url(true, urlWords); });
    CLI::App* dec = url->add_subcommand("decode", "Decode text");
    dec->add_option("TEXT", urlWords, "Text (default: standard input)");
    SetAction(dec, [] { Url(false, urlWords); });

    static SplitOptions so;
    CLI::App* split = app.add_subcommand("split", "Split text at separator characters or strings, one piece per line");
    split->add_option("TEXT", so.text, "Text to split")->required();
    split->add_option("-c,--chars", so.chars, "Separator characters")->capture_default_str();
    split->add_option("-s,--string", so.strings, "Separator strings (repeatable; the earliest, then longest, match wins)");
    split->add_flag("--skip-empty", so.skipEmpty, "Drop empty pieces (character separators)");
    split->add_option("--max", so.max, "At most this many pieces; the last holds the rest (character separators)");
    SetAction(split, [] { Split(so); });

    static std::string number;
    CLI::App* zh = app.add_subcommand("number-zh", "Write a number in Chinese numerals");
    zh->add_option("N", number, "Number from 0 to 2147483647")->required();
    SetAction(zh, [] { NumberZh(number); });
}

}  // namespace tool
