#include <palvet/files/system_utils.h>

#include <palvet/containers/ptr_collection.h>
#include <palvet/core/debug_output.h>
#include <palvet/files/file_utils.h>
#include <palvet/text/simple_string.h>
#include <palvet/text/split.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <memory>
#include <new>
#include <strings.h>

namespace {

// Holds the copy a splitter returns.
struct SplitCopy {
    char* text = nullptr;
    ~SplitCopy() { Internal_DelArrayA(text); }
};

void* AsItem(long pid) { return reinterpret_cast<void*>(static_cast<intptr_t>(pid)); }

long PidOf(char const* piece)
{
    if (!IsDigitString(piece))
        return 0;
    errno = 0;
    long pid = strtol(piece, nullptr, 10);
    return errno == 0 ? pid : 0;
}

void KillAll(char const* what, void (*lookup)(char const*, CPtrCtrl*))
{
    if (what == nullptr)
        return;
    CPtrArrayCtrl pids;
    lookup(what, &pids);
    for (int i = 0, n = pids.GetCount(); i < n; ++i) {
        int pid = static_cast<int>(reinterpret_cast<intptr_t>(pids.GetAt(i)));
        if (pid <= 0)
            continue;
        DbgOutput(1, "KillPidByName %s, pid=%d...\n", what, pid);
        kill(pid, SIGKILL);
    }
}

}  // namespace

void* LoadSystemLibrary(char const* name)
{
    if (name == nullptr)
        return nullptr;
    char program[1024];
    GetProgramPath(program, sizeof program);
    char libFolder[1025];
    CombinePathName(libFolder, program, "Lib");
    char const* folders[] = {libFolder, ""};
    for (char const* folder : folders) {
        // The empty folder gives the bare name: dlopen's own search path.
        char path[1025];
        CombinePathName(path, folder, name);
        void* handle = dlopen(path, RTLD_LAZY);
        if (handle != nullptr) {
            DbgOutput(1, "Open lib  (%s)... Success!\n", path);
            return handle;
        }
        DbgOutput(1, "Open lib  (%s) failed, errro is %s.\n", path, dlerror());
    }
    return nullptr;
}

FILE* vpopen(char const* command, char const* mode) { return popen(command, mode); }

int vpclose(FILE* stream) { return pclose(stream); }

void do_syscmd(CSimpleStringA* output, char const* format, ...)
{
    if (output != nullptr)
        output->Free();
    if (format == nullptr)
        return;
    size_t size = 1024;
    std::unique_ptr<char[]> command;
    for (;;) {
        command.reset(new (std::nothrow) char[size]);
        if (!command)
            return;
        va_list args;
        va_start(args, format);
        int n = vsnprintf(command.get(), size, format, args);
        va_end(args);
        if (n < 0) {
            size += 1024;
            continue;
        }
        if (static_cast<size_t>(n) < size)
            break;
        size = static_cast<size_t>(n) + 1;
    }
    DbgOutput(1, "Call cmd:%s\n", command.get());
    if (command[0] == '\0')
        return;
    if (output == nullptr) {
        int status = system(command.get());
        (void)status;
        return;
    }
    FILE* pipe = vpopen(command.get(), "r");
    if (pipe == nullptr) {
        int error = errno;
        DbgOutput(1, "Call cmd:%s Failed, error=%d:%s\n", command.get(), error, strerror(error));
        return;
    }
    char chunk[4096];
    while (!feof(pipe) && !ferror(pipe)) {
        unsigned int got = FileRead(pipe, chunk, sizeof chunk);
        if (got > 0)
            output->Append(chunk, static_cast<int>(got));
        else
            break;
    }
    vpclose(pipe);
}

void GetPidListByName(char const* name, CPtrCtrl* pids)
{
    if (name == nullptr || pids == nullptr)
        return;
    pids->DeleteAll();
    CSimpleStringA output;
    do_syscmd(&output, "pidof \"%s\"", name);
    CPtrListCtrl pieces;
    SplitCopy copy{DevideStringByCharListA(output.GetString(), output.GetLength(), " \n\t\r", 4, 1, &pieces, 0)};
    for (int i = 0, n = pieces.GetCount(); i < n; ++i) {
        long pid = PidOf(static_cast<char const*>(pieces.GetAt(i)));
        if (pid > 0)
            pids->AddData(AsItem(pid), -1);
    }
}

void GetPidListByNameWithParam(char const* commandLine, CPtrCtrl* pids)
{
    if (commandLine == nullptr || pids == nullptr)
        return;
    pids->DeleteAll();
    CSimpleStringA output;
    do_syscmd(&output, "ps ax");
    CPtrListCtrl lines;
    SplitCopy copy{DevideStringByCharListA(output.GetString(), output.GetLength(), "\n", 1, 1, &lines, 0)};
    // Line 0 is the header; the columns are PID, TTY, STAT, TIME, COMMAND,
    // and the fifth piece keeps the command with all its arguments.
    for (int i = 1, n = lines.GetCount(); i < n; ++i) {
        CPtrListCtrl fields;
        SplitCopy line{DevideStringByCharListA(static_cast<char const*>(lines.GetAt(i)), -1, " \t", 2, 1, &fields, 5)};
        if (fields.GetCount() < 5)
            continue;
        long pid = PidOf(static_cast<char const*>(fields.GetAt(0)));
        if (pid > 0 && strcasecmp(static_cast<char const*>(fields.GetAt(4)), commandLine) == 0)
            pids->AddData(AsItem(pid), -1);
    }
}

void KillPidByName(char const* name) { KillAll(name, GetPidListByName); }

void KillPidByNameWithParam(char const* commandLine) { KillAll(commandLine, GetPidListByNameWithParam); }
