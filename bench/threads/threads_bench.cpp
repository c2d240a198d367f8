// Locks and events beside the standard library, and the cost of starting
// and stopping a CBaseThread beside std::thread.
#include <palvet/palvet.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

void BM_Lock_CBaseLock(benchmark::State& state)
{
    CBaseLock lock;
    for (auto _ : state) {
        lock.Lock();
        lock.Unlock();
    }
}
BENCHMARK(BM_Lock_CBaseLock);

void BM_Lock_StdRecursiveMutex(benchmark::State& state)
{
    std::recursive_mutex lock;
    for (auto _ : state) {
        lock.lock();
        lock.unlock();
    }
}
BENCHMARK(BM_Lock_StdRecursiveMutex);

// A round trip: this thread sets ping and waits for pong, the other waits
// for ping and sets pong.
void BM_PingPong_CBaseEvent(benchmark::State& state)
{
    CBaseEvent ping(nullptr, 0), pong(nullptr, 0);
    std::atomic<bool> done{false};
    std::thread other([&] {
        while (ping.Wait() && !done)
            pong.Set();
    });
    for (auto _ : state) {
        ping.Set();
        pong.Wait();
    }
    done = true;
    ping.Set();
    other.join();
}
BENCHMARK(BM_PingPong_CBaseEvent)->UseRealTime();

struct StdEvent {
    std::mutex m;
    std::condition_variable cv;
    bool set = false;
    void Set()
    {
        std::lock_guard<std::mutex> hold(m);
        set = true;
        cv.notify_all();
    }
    void Wait()
    {
        std::unique_lock<std::mutex> hold(m);
        cv.wait(hold, [&] { return set; });
        set = false;
    }
};

void BM_PingPong_StdConditionVariable(benchmark::State& state)
{
    StdEvent ping, pong;
    std::atomic<bool> done{false};
    std::thread other([&] {
        for (;;) {
            ping.Wait();
            if (done)
                break;
            pong.Set();
        }
    });
    for (auto _ : state) {
        ping.Set();
        pong.Wait();
    }
    done = true;
    ping.Set();
    other.join();
}
BENCHMARK(BM_PingPong_StdConditionVariable)->UseRealTime();

struct Once : IThreadFuncInterface {
    int ThreadFunc(unsigned long long) override { return 0; }
};

void BM_StartStop_CBaseThread(benchmark::State& state)
{
    // The log lines are part of the cost; send them nowhere.
    fflush(stdout);
    int saved = dup(STDOUT_FILENO);
    int null = open("/dev/null", O_WRONLY);
    dup2(null, STDOUT_FILENO);
    close(null);
    Once op;
    CBaseThread thread;
    for (auto _ : state) {
        thread.StartThread("bench", &op, 0, 0, 0);
        thread.StopThread();
    }
    fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);
}
BENCHMARK(BM_StartStop_CBaseThread)->UseRealTime();

void BM_StartStop_StdThread(benchmark::State& state)
{
    for (auto _ : state) {
        std::thread t([] {});
        t.join();
    }
}
BENCHMARK(BM_StartStop_StdThread)->UseRealTime();

}  // namespace
