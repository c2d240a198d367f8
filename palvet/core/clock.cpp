#include <palvet/core/clock.h>

#include <sys/select.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

int getlwpid()
{
    return static_cast<int>(syscall(SYS_gettid));
}

unsigned long long GetTickCountUS()
{
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<unsigned long long>(ts.tv_sec) * 1000000ULL +
           static_cast<unsigned long long>(ts.tv_nsec) / 1000ULL;
}

unsigned long long GetTickCount()
{
    return GetTickCountUS() / 1000ULL;
}

int USleep(unsigned long long microseconds)
{
    // A quotient beyond time_t's range is truncated by the conversion, as
    // the 32-bit target always did, rather than rejected.
    timeval tv{};
    tv.tv_sec = static_cast<time_t>(microseconds / 1000000ULL);
    tv.tv_usec = static_cast<suseconds_t>(microseconds % 1000000ULL);
    return select(0, nullptr, nullptr, nullptr, &tv);
}

int Sleep(unsigned long long milliseconds)
{
    return USleep(milliseconds * 1000ULL);
}
