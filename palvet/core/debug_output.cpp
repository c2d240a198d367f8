#include <palvet/core/debug_output.h>

#include <palvet/core/clock.h>

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <new>
#include <sys/time.h>
#include <unistd.h>

FILE* gDbgOutputFileHandle = nullptr;

namespace {

constexpr char kTag[] = "Palvet";
constexpr int kInitialSize = 1024;

}  // namespace

void DbgOutput(int level, char const* format, ...)
{
    int size = kInitialSize;
    char* text = new (std::nothrow) char[size];
    if (text == nullptr)
        return;

    int length;
    for (;;) {
        va_list args;
        va_start(args, format);
        length = vsnprintf(text, static_cast<size_t>(size), format, args);
        va_end(args);
        if (length < 0) {
            // A formatting failure grows the buffer and tries again, with no
            // upper bound; only an allocation failure ends the loop.
            delete[] text;
            size += kInitialSize;
        } else if (length >= size) {
            delete[] text;
            size = length + 1;
        } else {
            break;
        }
        text = new (std::nothrow) char[size];
        if (text == nullptr)
            return;
    }
    text[size - 1] = '\0';

    if (length > 0) {
        timeval now{};
        gettimeofday(&now, nullptr);
        time_t seconds = now.tv_sec;
        tm local{};
        localtime_r(&seconds, &local);

        if (level != 0) {
            printf("%s %04d/%02d/%02d %02d:%02d:%02d.%06ld (pid:%d, lwp:%d) => %s", kTag,
                   local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                   local.tm_min, local.tm_sec, static_cast<long>(now.tv_usec), getpid(),
                   getlwpid(), text);
            if (gDbgOutputFileHandle != nullptr)
                fprintf(gDbgOutputFileHandle,
                        "%s %04d/%02d/%02d %02d:%02d:%02d.%06ld (pid:%d, tid:%d) => %s", kTag,
                        local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                        local.tm_min, local.tm_sec, static_cast<long>(now.tv_usec), getpid(),
                        getlwpid(), text);
        } else {
            printf("%s", text);
            if (gDbgOutputFileHandle != nullptr)
                fputs(text, gDbgOutputFileHandle);
        }
    }
    delete[] text;
}

int DbgOutputOpenFile(char const* path, int append)
{
    // The stream that was open before is abandoned on purpose: callers may
    // still hold it.
    gDbgOutputFileHandle = fopen64(path, append != 0 ? "a+b" : "wb");
    if (gDbgOutputFileHandle != nullptr) {
        // The stream pointer converted to int is the success value. On a
        // 64-bit host its low half could be zero, which would read as
        // failure, so that one case reports 1 instead.
        int result = static_cast<int>(reinterpret_cast<uintptr_t>(gDbgOutputFileHandle));
        return result != 0 ? result : 1;
    }
    int error = errno;
    return printf("open dbg file , errno=%d, %s\n", error, strerror(error));
}

int DbgOutputCloseFile()
{
    if (gDbgOutputFileHandle == nullptr)
        return 0;
    int result = fclose(gDbgOutputFileHandle);
    gDbgOutputFileHandle = nullptr;
    return result;
}

int DbgFlush()
{
    if (gDbgOutputFileHandle == nullptr)
        return 0;
    return fflush(gDbgOutputFileHandle);
}
