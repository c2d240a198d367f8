#include <palvet/core/clock.h>

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <ctime>
#include <pthread.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

TEST(Clock, TicksFollowTheMonotonicClock)
{
    timespec before{};
    clock_gettime(CLOCK_MONOTONIC, &before);
    unsigned long long us = GetTickCountUS();
    unsigned long long ms = GetTickCount();
    unsigned long long us2 = GetTickCountUS();
    timespec after{};
    clock_gettime(CLOCK_MONOTONIC, &after);

    unsigned long long lo = before.tv_sec * 1000000ULL + before.tv_nsec / 1000;
    unsigned long long hi = after.tv_sec * 1000000ULL + after.tv_nsec / 1000;
    EXPECT_LE(lo, us);
    EXPECT_LE(us, us2);
    EXPECT_LE(us2, hi);
    // Milliseconds are the microsecond count truncated, on the same clock.
    EXPECT_LE(us / 1000, ms);
    EXPECT_LE(ms, us2 / 1000);

    unsigned long long last = GetTickCountUS();
    for (int i = 0; i < 10000; ++i) {
        unsigned long long now = GetTickCountUS();
        ASSERT_GE(now, last);
        last = now;
    }
}

TEST(Clock, ZeroSleepsReturnAtOnce)
{
    EXPECT_EQ(USleep(0), 0);
    EXPECT_EQ(Sleep(0), 0);
}

TEST(Clock, SleepsWaitAtLeastTheRequestedTime)
{
    // 1.2 s exercises the split into whole seconds and a microsecond rest; a
    // wrong split makes select() refuse the timeout.
    unsigned long long start = GetTickCountUS();
    EXPECT_EQ(USleep(1200000), 0);
    EXPECT_GE(GetTickCountUS() - start, 1200000u);

    start = GetTickCountUS();
    EXPECT_EQ(Sleep(30), 0);
    EXPECT_GE(GetTickCountUS() - start, 30000u);
}

namespace {
void NoteSignal(int) {}
}  // namespace

TEST(Clock, InterruptedSleepIsNotResumed)
{
    struct sigaction action {};
    action.sa_handler = NoteSignal;  // no SA_RESTART: select must return early
    struct sigaction previous {};
    ASSERT_EQ(sigaction(SIGUSR2, &action, &previous), 0);

    pthread_t sleeper = pthread_self();
    std::atomic<bool> done{false};
    std::thread poker([&] {
        while (!done) {
            USleep(50000);
            if (!done)
                pthread_kill(sleeper, SIGUSR2);
        }
    });
    unsigned long long start = GetTickCountUS();
    int result = Sleep(20000);
    unsigned long long elapsed = GetTickCountUS() - start;
    done = true;
    poker.join();
    sigaction(SIGUSR2, &previous, nullptr);

    EXPECT_EQ(result, -1);
    EXPECT_LT(elapsed, 20000000u);
}

TEST(Clock, KernelThreadIds)
{
    EXPECT_EQ(getlwpid(), getpid());
    int other = 0;
    long kernel = 0;
    std::thread([&] {
        other = getlwpid();
        kernel = syscall(SYS_gettid);
    }).join();
    EXPECT_NE(other, getpid());
    EXPECT_EQ(other, kernel);
}
