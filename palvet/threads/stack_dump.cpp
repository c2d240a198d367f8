#include <palvet/threads/base_thread.h>

#include <palvet/containers/ptr_collection.h>
#include <palvet/core/clock.h>
#include <palvet/core/debug_output.h>
#include <palvet/files/system_utils.h>
#include <palvet/text/simple_string.h>

#include <csignal>
#include <cstdlib>
#include <execinfo.h>
#include <sys/syscall.h>
#include <unistd.h>

CBaseEvent gDumpEvent(nullptr, 0);

namespace {

constexpr int kDumpSignal = 10;  // SIGUSR1 on the device
constexpr unsigned long long kAnswerMs = 1000;

}  // namespace

void DumpThreadStack()
{
    void* frames[100];
    int count = backtrace(frames, 100);
    char** texts = backtrace_symbols(frames, count);
    char name[16] = {};
    if (pthread_getname_np(pthread_self(), name, sizeof name) != 0)
        name[0] = '\0';
    DbgOutput(1, "Thread %s: Obtained %d stack frames.\n", name, count);
    for (int i = 0; texts != nullptr && i < count; ++i)
        DbgOutput(1, "[%02d]%s\n", i, texts[i]);
    DbgOutput(1, "print_trace end.\n\n");
    free(texts);
}

void thread_callstack_sighandler(int sig)
{
    DbgOutput(1, "Thread:%d get signal:%d\n", getlwpid(), sig);
    if (sig == kDumpSignal) {
        DumpThreadStack();
        gDumpEvent.Set();
    }
}

void DumpAllThreadsStackBySignal(int exceptLwp)
{
    DbgOutput(1, "DumpAllThreadsStack +++\n");
    CSimpleStringA path;
    path.Format("/proc/%d/task", static_cast<int>(getpid()));
    CPtrListCtrl threads;
    GetLocalFolderFileList(path.GetString(), &threads, nullptr, nullptr, 0);
    DbgOutput(1, "Threads count = %d\n", threads.GetCount());
    for (int i = 0, n = threads.GetCount(); i < n; ++i) {
        long tid = strtol(static_cast<char const*>(threads.GetAt(i)), nullptr, 10);
        if (tid == exceptLwp || tid <= 0)
            continue;
        gDumpEvent.Reset();
        syscall(SYS_tkill, static_cast<pid_t>(tid), kDumpSignal);
        // One thread at a time: every answer sets the one shared event.
        gDumpEvent.Wait(kAnswerMs);
    }
    FreeFileList(&threads);
    DbgOutput(1, "DumpAllThreadsStack ---\n");
}
