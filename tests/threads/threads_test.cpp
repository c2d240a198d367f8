// Locks, events, threads and stack dumps with real threads.
#include <palvet/palvet.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "support/test_support.h"

namespace {

// Polls cond for up to 10 s: long enough never to fail on a slow machine,
// and the tests assert what happened, not how fast.
template <class F>
bool Eventually(F cond)
{
    for (int i = 0; i < 2000; ++i) {
        if (cond())
            return true;
        USleep(5000);
    }
    return cond();
}

TEST(Lock, IsRecursiveAndExcludesOtherThreads)
{
    CBaseLock lock;
    lock.Lock();
    lock.Lock();
    std::atomic<bool> got{false};
    std::thread other([&] {
        lock.Lock();
        got = true;
        lock.Unlock();
    });
    USleep(50000);
    EXPECT_FALSE(got);
    EXPECT_EQ(lock.Unlock(), 0);
    EXPECT_FALSE(got);  // still held once
    EXPECT_EQ(lock.Unlock(), 0);
    other.join();
    EXPECT_TRUE(got);
}

TEST(Event, ManualAndAutoReset)
{
    CBaseEvent manual(nullptr, 1);
    EXPECT_EQ(manual.IsSet(), 0);
    std::string log;
    {
        palvet_test::StdoutCapture capture;
        EXPECT_EQ(manual.WaitUS(0), 0);  // a time-out is not logged
        log = capture.Take();
    }
    EXPECT_EQ(log, "");
    manual.Set();
    EXPECT_EQ(manual.Wait(), 1);
    EXPECT_EQ(manual.WaitUS(0), 1);
    EXPECT_EQ(manual.IsSet(), 1);
    manual.Reset();
    EXPECT_EQ(manual.Wait(0ull), 0);

    CBaseLock lock;
    CBaseEvent automatic(&lock, 0);  // borrowing the lock's mutex
    automatic.Set();
    EXPECT_EQ(automatic.WaitUS(0), 1);
    EXPECT_EQ(automatic.IsSet(), 0);
    EXPECT_EQ(automatic.WaitUS(0), 0);
    // The borrowed mutex is the lock's: a thread holding the lock keeps a
    // waiter from finishing.
    automatic.Set();
    lock.Lock();
    std::atomic<int> result{-1};
    std::thread waiter([&] { result = automatic.Wait(); });
    USleep(50000);
    EXPECT_EQ(result, -1);
    lock.Unlock();
    waiter.join();
    EXPECT_EQ(result, 1);
}

TEST(Event, TimedWaitsLastAtLeastTheTimeAsked)
{
    CBaseEvent event(nullptr, 0);
    for (unsigned long long us : {1000ull, 250000ull, 999999ull}) {
        unsigned long long start = GetTickCountUS();
        EXPECT_EQ(event.WaitUS(us), 0);
        EXPECT_GE(GetTickCountUS() - start, us);
    }
    unsigned long long start = GetTickCountUS();
    EXPECT_EQ(event.Wait(120ull), 0);
    EXPECT_GE(GetTickCountUS() - start, 120000u);
    std::thread setter([&] {
        USleep(20000);
        event.Set();
    });
    EXPECT_EQ(event.Wait(10000ull), 1);
    setter.join();
}

TEST(Event, AutoResetReleasesOneWaiterPerSet)
{
    CBaseEvent event(nullptr, 0);
    std::atomic<int> woken{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < 3; ++i)
        waiters.emplace_back([&] {
            if (event.Wait())
                ++woken;
        });
    ASSERT_TRUE(Eventually([&] { return event.IsWaiting() == 1; }));
    USleep(50000);  // all three inside Wait
    for (int expected = 1; expected <= 3; ++expected) {
        event.Set();
        ASSERT_TRUE(Eventually([&] { return woken == expected; }));
        USleep(30000);
        EXPECT_EQ(woken, expected);  // no second waiter on the same Set
    }
    for (auto& t : waiters)
        t.join();
    EXPECT_EQ(event.IsWaiting(), 0);
}

// The system name of a thread of this process; StartThread sets it just
// after the thread started, so read it once StartThread has returned.
std::string SystemName(int lwp)
{
    std::string comm = palvet_test::ReadWholeFile("/proc/self/task/" + std::to_string(lwp) + "/comm");
    return comm.substr(0, comm.find('\n'));
}

// Counts its calls; ends the thread once the limit is reached.
struct Counter : IThreadFuncInterface {
    std::atomic<int> calls{0};
    int limit = -1;
    CBaseThread* owner = nullptr;
    std::atomic<int> sawNeedExit{0};
    std::atomic<int> lwp{0};
    int ThreadFunc(unsigned long long param) override
    {
        if (calls == 0)
            lwp = getlwpid();
        EXPECT_EQ(param, 77u);
        if (owner != nullptr && owner->IsThreadNeedExit())
            ++sawNeedExit;
        USleep(1000);
        return ++calls != limit;
    }
};

TEST(Thread, PauseResumeAndStop)
{
    Counter op;
    CBaseThread thread;
    op.owner = &thread;
    EXPECT_EQ(thread.IsThreadRunning(), 0);
    std::string log;
    {
        palvet_test::StdoutCapture capture;
        ASSERT_EQ(thread.StartThread("worker", &op, 77, 256 * 1024, 0), 1);
        EXPECT_EQ(thread.StartThread("again", &op, 77, 256 * 1024, 0), 1);  // running: not restarted
        ASSERT_TRUE(Eventually([&] { return op.calls > 3; }));
        EXPECT_EQ(SystemName(op.lwp), "worker");

        thread.PauseThread();
        USleep(50000);
        int paused = op.calls;
        USleep(100000);
        EXPECT_EQ(op.calls, paused);
        EXPECT_EQ(thread.IsThreadRunning(), 1);  // paused is still running
        thread.ResumeThread();
        EXPECT_TRUE(Eventually([&] { return op.calls > paused + 3; }));

        thread.PauseThread();
        thread.StopThread();  // wakes the paused thread and joins it
        log = capture.Take();
    }
    EXPECT_EQ(thread.IsThreadRunning(), 0);
    EXPECT_EQ(thread.IsThreadNeedExit(), 1);
    EXPECT_NE(log.find("thread create success, threadID="), std::string::npos);
    EXPECT_EQ(log.find("thread name=again"), std::string::npos);
    EXPECT_NE(log.find("thread information, name=worker, tid="), std::string::npos);
    EXPECT_NE(log.find("prepare exit thread..., name=worker"), std::string::npos);
    EXPECT_NE(log.find("thread exit, name=worker"), std::string::npos);
    EXPECT_NE(log.find("thread exit over, name=worker"), std::string::npos);
    EXPECT_LT(log.find("thread exit, name=worker"), log.find("thread exit over, name=worker"));

    // Started again: the object is reusable.
    int before = op.calls;
    op.limit = before + 5;  // this time the operation ends the thread
    ASSERT_EQ(thread.StartThread(nullptr, &op, 77, 0, 0), 1);
    EXPECT_TRUE(Eventually([&] { return thread.IsThreadRunning() == 0; }));
    EXPECT_EQ(op.calls, before + 5);
    thread.StopThread();
}

TEST(Thread, NamesAndOddArguments)
{
    Counter op;
    CBaseThread thread;
    std::string longName(200, 'n');
    std::string log;
    {
        palvet_test::StdoutCapture capture;
        ASSERT_EQ(thread.StartThread(longName.c_str(), &op, 77, 1, 0), 1);  // a refused stack size
        ASSERT_TRUE(Eventually([&] { return op.calls > 0; }));
        EXPECT_EQ(SystemName(op.lwp), std::string(15, 'n'));
        thread.StopThread();
        ASSERT_EQ(thread.StartThread(nullptr, &op, 77, 0, 0), 1);
        thread.StopThread();
        log = capture.Take();
    }
    EXPECT_NE(log.find("thread information, name=" + std::string(127, 'n') + ", tid="), std::string::npos);
    EXPECT_NE(log.find("thread name=unknown, stacksize=0"), std::string::npos);

    // No interface: the thread returns at once, without its exit line, and
    // the object still counts as running until stopped.
    CBaseThread empty;
    {
        palvet_test::StdoutCapture capture;
        ASSERT_EQ(empty.StartThread("none", nullptr, 0, 0, 0), 1);
        USleep(50000);
        EXPECT_EQ(empty.IsThreadRunning(), 1);
        empty.StopThread();
        log = capture.Take();
    }
    EXPECT_EQ(log.find("thread exit, name=none"), std::string::npos);
    EXPECT_EQ(empty.IsThreadRunning(), 0);

    // Stop without start, twice, and WrapThread with nothing.
    CBaseThread idle;
    idle.StopThread();
    idle.StopThreadImmediate();
    EXPECT_EQ(WrapThread(nullptr), nullptr);
}

TEST(Thread, StopImmediateAbandonsAndDestructorStops)
{
    // A detached thread must not outlive its object: both live to the end
    // of the program here.
    static Counter op;
    {
        static CBaseThread thread;
        ASSERT_EQ(thread.StartThread("abandoned", &op, 77, 0, 1), 1);
        ASSERT_TRUE(Eventually([&] { return op.calls > 0; }));
        thread.StopThreadImmediate();
        EXPECT_EQ(thread.IsThreadRunning(), 0);
        // The detached thread ends on its own at its next check.
        int seen = op.calls;
        USleep(100000);
        EXPECT_LE(op.calls, seen + 1);
    }
    Counter running;
    {
        CBaseThread thread;
        ASSERT_EQ(thread.StartThread("scoped", &running, 77, 0, 0), 1);
        ASSERT_TRUE(Eventually([&] { return running.calls > 0; }));
    }  // the destructor joins
    int after = running.calls;
    USleep(20000);
    EXPECT_EQ(running.calls, after);
}

// Sleeps in its operation until told to stop; one of them blocks the dump
// signal so that it never answers.
struct Sleeper : IThreadFuncInterface {
    bool block = false;
    std::atomic<bool> ready{false};
    int ThreadFunc(unsigned long long) override
    {
        if (block) {
            sigset_t set;
            sigemptyset(&set);
            sigaddset(&set, SIGUSR1);
            pthread_sigmask(SIG_BLOCK, &set, nullptr);
        }
        ready = true;
        USleep(5000);
        return 1;
    }
};

TEST(StackDump, EveryThreadAnswersOnceAndSilentOnesCostASecond)
{
    struct sigaction action = {}, old = {};
    action.sa_handler = thread_callstack_sighandler;
    sigemptyset(&action.sa_mask);
    ASSERT_EQ(sigaction(SIGUSR1, &action, &old), 0);

    Sleeper a, b, silent;
    silent.block = true;
    CBaseThread ta, tb, ts;
    ASSERT_EQ(ta.StartThread("dump-a", &a, 0, 0, 0), 1);
    ASSERT_EQ(tb.StartThread("dump-b", &b, 0, 0, 0), 1);
    ASSERT_EQ(ts.StartThread("dump-silent", &silent, 0, 0, 0), 1);
    ASSERT_TRUE(Eventually([&] { return a.ready && b.ready && silent.ready; }));

    std::string log;
    unsigned long long start = GetTickCountUS();
    {
        palvet_test::StdoutCapture capture;
        DumpAllThreadsStackBySignal(getlwpid());
        log = capture.Take();
    }
    unsigned long long took = GetTickCountUS() - start;
    ta.StopThread();
    tb.StopThread();
    ts.StopThread();
    sigaction(SIGUSR1, &old, nullptr);

    EXPECT_NE(log.find("DumpAllThreadsStack +++\n"), std::string::npos);
    EXPECT_NE(log.find("Threads count = "), std::string::npos) << log;
    for (char const* name : {"dump-a", "dump-b"})
        EXPECT_NE(log.find(std::string("Thread ") + name + ": Obtained "), std::string::npos) << log;
    EXPECT_EQ(log.find("Thread dump-silent:"), std::string::npos);
    size_t ends = 0;
    for (size_t at = log.find("print_trace end.\n\n"); at != std::string::npos; at = log.find("print_trace end.", at + 1))
        ++ends;
    EXPECT_EQ(ends, 2u);
    EXPECT_NE(log.find("[00]"), std::string::npos);
    EXPECT_NE(log.find("get signal:10\n"), std::string::npos);
    EXPECT_NE(log.find("DumpAllThreadsStack ---\n"), std::string::npos);
    EXPECT_GE(took, 1000000u);  // the silent thread's full second
}

TEST(StackDump, OwnStack)
{
    std::string log;
    {
        palvet_test::StdoutCapture capture;
        DumpThreadStack();
        log = capture.Take();
    }
    EXPECT_NE(log.find(": Obtained "), std::string::npos);
    EXPECT_NE(log.find("[00]"), std::string::npos);
    EXPECT_NE(log.find("print_trace end.\n\n"), std::string::npos);
    EXPECT_EQ(gDumpEvent.IsSet(), 0);
}

}  // namespace
