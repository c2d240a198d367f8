#include <palvet/core/clock.h>

#include <gtest/gtest.h>

#include <csignal>
#include <ctime>
#include <sys/syscall.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>

TEST(Clock, TicksFollowTheMonotonicClock)
{
    timespec before{}, after{};
    clock_gettime(CLOCK_MONOTONIC, &before);
    unsigned long long us = GetTickCountUS();
    unsigned long long ms = GetTickCount();
    unsigned long long us2 = GetTickCountUS();
    clock_gettime(CLOCK_MONOTONIC, &after);

    EXPECT_LE(before.tv_sec * 1000000ULL + before.tv_nsec / 1000, us);
    EXPECT_LE(us, us2);
    EXPECT_LE(us2, after.tv_sec * 1000000ULL + after.tv_nsec / 1000);
    // Milliseconds are the microsecond count truncated, on the same clock.
    EXPECT_LE(us / 1000, ms);
    EXPECT_LE(ms, us2 / 1000);
}

TEST(Clock, SleepsWaitTheRequestedTime)
{
    EXPECT_EQ(USleep(0), 0);
    EXPECT_EQ(Sleep(0), 0);
    // 1.2 s exercises the split into whole seconds and a microsecond rest; a
    // wrong split makes select() refuse the timeout.
    unsigned long long start = GetTickCountUS();
    EXPECT_EQ(USleep(1200000), 0);
    EXPECT_GE(GetTickCountUS() - start, 1200000u);

    start = GetTickCountUS();
    EXPECT_EQ(Sleep(30), 0);
    EXPECT_GE(GetTickCountUS() - start, 30000u);
}

TEST(Clock, InterruptedSleepIsNotResumed)
{
    struct sigaction action {}, previous {};
    action.sa_handler = [](int) {};  // no SA_RESTART: select must return early
    ASSERT_EQ(sigaction(SIGALRM, &action, &previous), 0);
    // Repeated, in case one signal comes before the wait has begun.
    itimerval every{{0, 50000}, {0, 50000}}, off{};
    setitimer(ITIMER_REAL, &every, nullptr);
    unsigned long long start = GetTickCountUS();
    int result = Sleep(20000);
    unsigned long long elapsed = GetTickCountUS() - start;
    setitimer(ITIMER_REAL, &off, nullptr);
    sigaction(SIGALRM, &previous, nullptr);

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
