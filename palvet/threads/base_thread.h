#ifndef PALVET_THREADS_BASE_THREAD_H
#define PALVET_THREADS_BASE_THREAD_H

// Recursive locks, events, a thread class that runs a caller's operation in
// a loop, and stack dumps of every thread of the process. Failures of the
// POSIX calls are logged through DbgOutput (level 1); nothing throws.

#include <pthread.h>

#include <palvet/core/export.h>

// A recursive mutex: the thread that holds it may lock it again, and must
// unlock it as often.
class PALVET_API CBaseLock {
public:
    CBaseLock();
    virtual ~CBaseLock();
    CBaseLock(CBaseLock const&) = delete;
    CBaseLock& operator=(CBaseLock const&) = delete;

    // Locks; a failure is logged and the caller goes on as if it held the
    // lock.
    void Lock();
    // pthread_mutex_unlock's result.
    int Unlock();

private:
    friend class CBaseEvent;
    pthread_mutex_t m_Mutex;
};

// A settable event. Manual reset: once set it stays set until Reset.
// Auto-reset: a wait that sees it set clears it again, so one wake-up uses
// up one Set (Set wakes every waiter; the others wait again). Time limits run
// on the monotonic clock, so changes of the wall clock neither shorten nor
// stretch a wait. An event may borrow the mutex of a CBaseLock (it must not
// outlive that lock).
class PALVET_API CBaseEvent {
public:
    // lock: whose mutex to borrow, null for one of its own.
    CBaseEvent(CBaseLock* lock, int manualReset);
    virtual ~CBaseEvent();
    CBaseEvent(CBaseEvent const&) = delete;
    CBaseEvent& operator=(CBaseEvent const&) = delete;

    // Sets the event and wakes all waiters.
    void Set();
    // Waits without limit: 1 once the event is set, 0 on failure.
    int Wait();
    // Waits at most us microseconds (the largest value: no limit): 1 when the
    // event was set, 0 on time-out (not logged) or failure.
    int WaitUS(unsigned long long us);
    // The same in milliseconds.
    int Wait(unsigned long long ms);
    // Clears the event.
    void Reset();
    // Snapshots, read without the lock: 1 while set / while some thread waits.
    int IsSet();
    int IsWaiting();

private:
    int m_bManualReset;
    int m_bSet;
    int m_bWaiting;
    pthread_cond_t m_Cond;
    pthread_mutex_t* mp_Mutex;
    int m_bBorrowed;
};

// The operation a CBaseThread runs. The library never destroys it.
class IThreadFuncInterface {
public:
    virtual ~IThreadFuncInterface() {}
    // Called over and over with the thread's parameter: nonzero to be called
    // again, 0 to end the thread.
    virtual int ThreadFunc(unsigned long long param) = 0;
};

// Runs an IThreadFuncInterface on its own POSIX thread. Pause and stop take
// effect between two calls of ThreadFunc, never inside one. Start and stop
// may be called from any thread; the operation itself may read
// IsThreadNeedExit. Each step of a thread's life is logged.
class PALVET_API CBaseThread {
public:
    CBaseThread();
    // Stops the thread (joining it unless detached). A detached thread must
    // have ended before its object is destroyed.
    virtual ~CBaseThread();
    CBaseThread(CBaseThread const&) = delete;
    CBaseThread& operator=(CBaseThread const&) = delete;

    // Starts a thread named name (at most 127 characters kept; its system
    // name is the first 15) with the given stack size (a size the system
    // refuses leaves the default) and detach state. 1 when a thread runs
    // afterwards, also when one already ran (it is not restarted); 0 when
    // creation failed. A stopped object can be started again: it first joins
    // its old joinable thread.
    int StartThread(char const* name, IThreadFuncInterface* iface, unsigned long long param, int stackSize,
                    int detached);
    // Asks the thread to end (waking it if paused) and, unless detached,
    // waits for it.
    void StopThread();
    // Asks the thread to end and forgets it at once: no wait, no log; a
    // joinable thread so abandoned is never joined.
    void StopThreadImmediate();
    // The thread rests after its current call until ResumeThread.
    void PauseThread();
    void ResumeThread();
    // 1 while a thread runs (paused or not).
    int IsThreadRunning();
    // 1 once a stop was asked.
    int IsThreadNeedExit();
    // The thread's body: calls the operation until it returns 0 or a stop is
    // asked.
    void* WrapThreadFunc();

private:
    CBaseLock m_Lock;
    pthread_t m_ThreadID;
    int m_bNeedExit;
    int m_bDetached;
    CBaseEvent m_RunEvent;
    int m_bStopped;
    long m_lLwp;
    char m_szName[128];
    IThreadFuncInterface* m_pInterface;
    unsigned long long m_ullParam;
};

// The start routine handed to pthread_create: runs WrapThreadFunc of the
// CBaseThread given; null for a null argument.
PALVET_API void* WrapThread(void* thread);

// Auto-reset event the stack-dump handler sets after each dump; built when
// the library is loaded.
extern PALVET_API CBaseEvent gDumpEvent;

// Logs the calling thread's name, its call stack (at most 100 frames), and
// "print_trace end.".
PALVET_API void DumpThreadStack();

// For the application to install for signal 10 (SIGUSR1): logs the signal
// and, for 10, dumps the stack and sets gDumpEvent.
PALVET_API void thread_callstack_sighandler(int sig);

// Sends signal 10 to every thread of the process but the one whose kernel id
// is exceptLwp, one after the other, waiting at most a second for each to
// answer.
PALVET_API void DumpAllThreadsStackBySignal(int exceptLwp);

#endif
