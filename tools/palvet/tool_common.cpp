#include "tool_common.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {

namespace {
FILE* g_out = stdout;
int g_outFd = -1;
}  // namespace

FILE* Out() { return g_out; }

void SeparateLibraryLog()
{
    fflush(stdout);
    g_outFd = dup(STDOUT_FILENO);
    FILE* out = g_outFd >= 0 ? fdopen(g_outFd, "w") : nullptr;
    if (out == nullptr)
        return;
    g_out = out;
    dup2(STDERR_FILENO, STDOUT_FILENO);
}

void WithLibraryLogOnStdout(std::function<void()> const& fn)
{
    if (g_outFd < 0) {
        fn();
        return;
    }
    fflush(g_out);
    fflush(stdout);
    dup2(g_outFd, STDOUT_FILENO);
    fn();
    fflush(stdout);
    dup2(STDERR_FILENO, STDOUT_FILENO);
}

void Fail(std::string const& message) { throw Failure(kExitFailed, message); }
void BadUsage(std::string const& message) { throw Failure(kExitUsage, message); }

Action& ChosenAction()
{
    static Action chosen;
    return chosen;
}

void SetAction(CLI::App* sub, Action action)
{
    sub->callback([action]() { ChosenAction() = action; });
}

std::vector<unsigned char> ReadWhole(std::string const& path, bool allowEmpty)
{
    if (IsDir(path.c_str()))
        Fail(path + ": is a folder");
    if (!IsFileExist(path.c_str()))
        Fail(path + ": no such file");
    unsigned char* data = nullptr;
    unsigned long long size = ReadFileData(path.c_str(), &data);
    if (size == 0) {
        ReleaseFileData(data);
        FILE* f = fopen(path.c_str(), "rb");
        if (f == nullptr)
            Fail(path + ": " + strerror(errno));
        fclose(f);
        if (!allowEmpty)
            Fail(path + ": file is empty");
        return {};
    }
    if (data == nullptr)
        Fail(path + ": out of memory");
    std::vector<unsigned char> out(data, data + size);
    ReleaseFileData(data);
    return out;
}

std::string ReadStdin()
{
    std::string text;
    char chunk[65536];
    size_t n;
    while ((n = fread(chunk, 1, sizeof chunk, stdin)) > 0)
        text.append(chunk, n);
    return text;
}

PendingFile::PendingFile(std::string finalPath) : final_(std::move(finalPath))
{
    if (final_.empty())
        BadUsage("empty output path");
    char folder[1025];
    GetFileParentDir(folder, final_.c_str());
    std::string dir = folder[0] ? folder : (final_[0] == '/' ? "/" : ".");
    std::string pattern = dir + "/.palvet-XXXXXX";
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    int fd = mkstemp(name.data());
    if (fd < 0)
        Fail(final_ + ": cannot create a file in " + dir + ": " + strerror(errno));
    close(fd);
    temp_ = name.data();
}

PendingFile::~PendingFile()
{
    if (!committed_)
        unlink(temp_.c_str());
}

void PendingFile::Write(void const* data, size_t size)
{
    FILE* f = fopen(temp_.c_str(), "wb");
    if (f == nullptr)
        Fail(final_ + ": " + strerror(errno));
    bool ok = FileWrite(f, data, static_cast<unsigned int>(size)) == size;
    ok = fclose(f) == 0 && ok;
    if (!ok)
        Fail(final_ + ": write failed");
}

void PendingFile::Commit()
{
    // mkstemp makes the file private; give it the usual mode.
    mode_t mask = umask(0);
    umask(mask);
    chmod(temp_.c_str(), 0666 & ~mask);
    if (rename(temp_.c_str(), final_.c_str()) != 0)
        Fail(final_ + ": " + strerror(errno));
    committed_ = true;
}

void ParseSize(std::string const& text, int& w, int& h)
{
    char tail = 0;
    if (sscanf(text.c_str(), "%dx%d%c", &w, &h, &tail) != 2 || w < 1 || h < 1 || w > 65535 || h > 65535)
        BadUsage("size '" + text + "' is not WxH (e.g. 1280x720)");
}

bool StderrIsTerminal() { return isatty(STDERR_FILENO) == 1; }

ProgressBar::ProgressBar(std::string label, bool enabled)
    : label_(std::move(label)), enabled_(enabled), start_us_(GetTickCountUS())
{
}

ProgressBar::~ProgressBar() { Finish(); }

int ProgressBar::OnCopyProgress(unsigned long long, unsigned long long done, unsigned long long total)
{
    if (!enabled_ || total == 0)
        return 0;
    constexpr int kWidth = 30;
    int filled = static_cast<int>(done * kWidth / total);
    unsigned long long elapsed = GetTickCountUS() - start_us_;
    CSimpleStringA rate;
    FormatFileSize(elapsed > 0 ? done * 1000000ull / elapsed : 0, &rate);
    fprintf(stderr, "\r%s [%.*s%*s] %3d%% %s/s", label_.c_str(), filled, "==============================",
            kWidth - filled, "", static_cast<int>(done * 100 / total), rate.GetString());
    fflush(stderr);
    drawn_ = true;
    return 0;
}

void ProgressBar::Finish()
{
    if (drawn_)
        fputc('\n', stderr);
    drawn_ = false;
}

std::string Utf8(wchar_t const* text)
{
    CSimpleStringA s;
    s.Set(text, -1);
    return s.GetString();
}

}  // namespace tool
