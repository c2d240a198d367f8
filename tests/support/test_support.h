#ifndef PALVET_TESTS_SUPPORT_TEST_SUPPORT_H
#define PALVET_TESTS_SUPPORT_TEST_SUPPORT_H

// Helpers shared by the test programs: capturing what the library prints on
// standard output, and scratch folders that are removed afterwards.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <ftw.h>
#include <sstream>
#include <string>
#include <unistd.h>

namespace palvet_test {

// Sends file descriptor 1 into a temporary file until Take() or destruction,
// so output written by printf, puts or write(1, ...) is all caught.
class StdoutCapture {
public:
    StdoutCapture()
    {
        fflush(stdout);
        file_ = tmpfile();
        saved_ = dup(STDOUT_FILENO);
        dup2(fileno(file_), STDOUT_FILENO);
    }
    ~StdoutCapture() { Restore(); if (file_) fclose(file_); }
    StdoutCapture(StdoutCapture const&) = delete;
    StdoutCapture& operator=(StdoutCapture const&) = delete;

    // Stops capturing and returns everything written meanwhile.
    std::string Take()
    {
        Restore();
        std::string out;
        rewind(file_);
        char chunk[4096];
        size_t n;
        while ((n = fread(chunk, 1, sizeof chunk, file_)) > 0)
            out.append(chunk, n);
        return out;
    }

private:
    void Restore()
    {
        if (saved_ < 0)
            return;
        fflush(stdout);
        dup2(saved_, STDOUT_FILENO);
        close(saved_);
        saved_ = -1;
    }
    FILE* file_ = nullptr;
    int saved_ = -1;
};

// A fresh folder under $TMPDIR (or /tmp), removed with its contents on
// destruction.
class TempDir {
public:
    TempDir()
    {
        char const* base = getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/palvet-test-XXXXXX";
        path_ = mkdtemp(&pattern[0]) ? pattern : std::string();
    }
    ~TempDir()
    {
        if (!path_.empty())
            nftw(path_.c_str(), Remove, 16, FTW_DEPTH | FTW_PHYS);
    }
    TempDir(TempDir const&) = delete;
    TempDir& operator=(TempDir const&) = delete;

    std::string const& path() const { return path_; }
    std::string File(std::string const& name) const { return path_ + "/" + name; }

private:
    static int Remove(char const* p, struct stat const*, int, FTW*) { return ::remove(p); }
    std::string path_;
};

inline std::string ReadWholeFile(std::string const& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

inline void WriteWholeFile(std::string const& path, std::string const& data)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << data;
}

}  // namespace palvet_test

#endif
