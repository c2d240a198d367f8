#ifndef PALVET_TOOLS_TOOL_COMMON_H
#define PALVET_TOOLS_TOOL_COMMON_H

// Shared pieces of the palvet command-line tool: how a subcommand reports
// failure, whole-file input, output files that appear only when complete,
// and the copy progress bar.

#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include <palvet/palvet.h>

namespace tool {

// Exit statuses: 2 for bad usage, 1 for an operation that failed.
constexpr int kExitUsage = 2;
constexpr int kExitFailed = 1;

// Thrown by a subcommand; main prints "palvet: <message>" and exits with code.
struct Failure : std::runtime_error {
    Failure(int code, std::string const& message) : std::runtime_error(message), code(code) {}
    int code;
};

[[noreturn]] void Fail(std::string const& message);      // operation failed (1)
[[noreturn]] void BadUsage(std::string const& message);  // bad argument (2)

// Where the tool's own output goes: the real standard output. The library
// logs its diagnostics on standard output, which main points at standard
// error so that they never mix with results.
FILE* Out();
void SeparateLibraryLog();
// Runs fn with the library's log on the real standard output (for jobs whose
// result is the log itself, such as the hex dump).
void WithLibraryLogOnStdout(std::function<void()> const& fn);

// Registers a subcommand's work; main runs the one that was chosen after the
// whole command line has been parsed.
using Action = std::function<void()>;
void SetAction(CLI::App* sub, Action action);
Action& ChosenAction();

void AddImageCommands(CLI::App& app);
void AddCharsetCommands(CLI::App& app);
void AddTextCommands(CLI::App& app);
void AddFileCommands(CLI::App& app);
void AddSystemCommands(CLI::App& app);
void AddDemoCommand(CLI::App& app);

// Whole file through the library's reader; fails naming the file when it is
// missing, unreadable or a folder. An empty file gives an empty vector only
// when allowEmpty is set.
std::vector<unsigned char> ReadWhole(std::string const& path, bool allowEmpty = false);

// Reads all of standard input.
std::string ReadStdin();

// An output file written under a temporary name in the same folder and
// renamed over the final name by Commit(); dropped if never committed, so a
// failed run leaves no partial file behind.
class PendingFile {
public:
    explicit PendingFile(std::string finalPath);
    ~PendingFile();
    PendingFile(PendingFile const&) = delete;
    PendingFile& operator=(PendingFile const&) = delete;

    char const* Temp() const { return temp_.c_str(); }
    void Write(void const* data, size_t size);  // replaces the temporary's content
    void Commit();

private:
    std::string final_, temp_;
    bool committed_ = false;
};

// "WxH" with both parts positive.
void ParseSize(std::string const& text, int& w, int& h);

// Draws a progress bar on standard error while a copy runs, when standard
// error is a terminal and the user did not ask for quiet.
class ProgressBar : public IFileCopyProgressListener {
public:
    ProgressBar(std::string label, bool enabled);
    ~ProgressBar() override;
    int OnCopyProgress(unsigned long long user, unsigned long long done,
                       unsigned long long total) override;
    void Finish();

private:
    std::string label_;
    bool enabled_;
    bool drawn_ = false;
    unsigned long long start_us_;
};

bool StderrIsTerminal();

// in converted between character sets by the library's engine (which must
// be up); false when the engine refuses the text.
bool ConvertText(eCHARSETTYPE from, std::string const& in, eCHARSETTYPE to, std::string& out);

// Text of a wide string as UTF-8, through the library's string classes.
std::string Utf8(wchar_t const* text);

}  // namespace tool

#endif
