#include <palvet/threads/base_thread.h>

#include <palvet/core/debug_output.h>

#include <cerrno>
#include <ctime>
#include <new>

namespace {

// The flags are changed under the mutex but read without it (IsSet,
// IsWaiting, and waiting cleared after the unlock), so every access is
// atomic to keep the program free of data races.
int Load(int const& flag) { return __atomic_load_n(&flag, __ATOMIC_ACQUIRE); }
void Store(int& flag, int value) { __atomic_store_n(&flag, value, __ATOMIC_RELEASE); }

bool InitRecursive(pthread_mutex_t* mutex, char const* attrMessage, char const* mutexMessage)
{
    pthread_mutexattr_t attr;
    if (pthread_mutexattr_init(&attr) != 0 || pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE) != 0) {
        DbgOutput(1, "%s", attrMessage);
        return false;
    }
    bool ok = pthread_mutex_init(mutex, &attr) == 0;
    if (!ok)
        DbgOutput(1, "%s", mutexMessage);
    pthread_mutexattr_destroy(&attr);
    return ok;
}

}  // namespace

CBaseLock::CBaseLock()
{
    InitRecursive(&m_Mutex, "cannot init  (mutexAttr)\n", "cannot init  (m_Mutex)\n");
}

CBaseLock::~CBaseLock() { pthread_mutex_destroy(&m_Mutex); }

void CBaseLock::Lock()
{
    if (pthread_mutex_lock(&m_Mutex) != 0)
        DbgOutput(1, "wait for event failed (lock)\n");
}

int CBaseLock::Unlock() { return pthread_mutex_unlock(&m_Mutex); }

CBaseEvent::CBaseEvent(CBaseLock* lock, int manualReset)
    : m_bManualReset(manualReset), m_bSet(0), m_bWaiting(0), mp_Mutex(nullptr), m_bBorrowed(0)
{
    pthread_condattr_t attr;
    bool attrOk = pthread_condattr_init(&attr) == 0;
    if (!attrOk)
        DbgOutput(1, "cannot init  (condattr)\n");
    if (attrOk && pthread_condattr_setclock(&attr, CLOCK_MONOTONIC) != 0)
        DbgOutput(1, "cannot init  (condattr)\n");
    if (pthread_cond_init(&m_Cond, attrOk ? &attr : nullptr) != 0)
        DbgOutput(1, "cannot create event (condition)\n");
    if (attrOk)
        pthread_condattr_destroy(&attr);

    if (lock != nullptr) {
        mp_Mutex = &lock->m_Mutex;
        m_bBorrowed = 1;
        return;
    }
    mp_Mutex = new (std::nothrow) pthread_mutex_t;
    if (mp_Mutex != nullptr)
        InitRecursive(mp_Mutex, "cannot init  (mutexAttr)\n", "cannot init  (mp_Mutex)\n");
}

CBaseEvent::~CBaseEvent()
{
    pthread_cond_destroy(&m_Cond);
    if (!m_bBorrowed && mp_Mutex != nullptr) {
        pthread_mutex_destroy(mp_Mutex);
        delete mp_Mutex;
    }
}

void CBaseEvent::Set()
{
    bool locked = pthread_mutex_lock(mp_Mutex) == 0;
    if (!locked)
        DbgOutput(1, "cannot signal event (lock) \n");
    if (pthread_cond_broadcast(&m_Cond) != 0)
        DbgOutput(1, "cannot signal event\n");
    Store(m_bSet, 1);
    if (locked)
        pthread_mutex_unlock(mp_Mutex);
}

void CBaseEvent::Reset()
{
    bool locked = pthread_mutex_lock(mp_Mutex) == 0;
    if (!locked)
        DbgOutput(1, "cannot reset event\n");
    Store(m_bSet, 0);
    if (locked)
        pthread_mutex_unlock(mp_Mutex);
}

int CBaseEvent::Wait()
{
    if (pthread_mutex_lock(mp_Mutex) != 0) {
        DbgOutput(1, "wait for event failed (lock)\n");
        return 0;
    }
    Store(m_bWaiting, 1);
    while (Load(m_bSet) == 0) {
        if (pthread_cond_wait(&m_Cond, mp_Mutex) != 0) {
            pthread_mutex_unlock(mp_Mutex);
            Store(m_bWaiting, 0);
            DbgOutput(1, "wait for event failed\n");
            return 0;
        }
    }
    if (!m_bManualReset)
        Store(m_bSet, 0);
    pthread_mutex_unlock(mp_Mutex);
    Store(m_bWaiting, 0);
    return 1;
}

int CBaseEvent::WaitUS(unsigned long long us)
{
    if (us == ~0ull)
        return Wait();
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    unsigned long long nanos = (us % 1000000ull) * 1000ull + static_cast<unsigned long long>(now.tv_nsec);
    timespec deadline;
    deadline.tv_sec = now.tv_sec + static_cast<time_t>(us / 1000000ull + nanos / 1000000000ull);
    deadline.tv_nsec = static_cast<long>(nanos % 1000000000ull);

    if (pthread_mutex_lock(mp_Mutex) != 0) {
        DbgOutput(1, "wait for event failed (lock)\n");
        return 0;
    }
    Store(m_bWaiting, 1);
    while (Load(m_bSet) == 0) {
        int r = pthread_cond_timedwait(&m_Cond, mp_Mutex, &deadline);
        if (r == ETIMEDOUT) {
            pthread_mutex_unlock(mp_Mutex);
            Store(m_bWaiting, 0);
            return 0;
        }
        if (r != 0) {
            pthread_mutex_unlock(mp_Mutex);
            Store(m_bWaiting, 0);
            DbgOutput(1, "cannot wait for event\n");
            return 0;
        }
    }
    if (!m_bManualReset)
        Store(m_bSet, 0);
    pthread_mutex_unlock(mp_Mutex);
    Store(m_bWaiting, 0);
    return 1;
}

int CBaseEvent::Wait(unsigned long long ms)
{
    if (ms == ~0ull)
        return Wait();
    return WaitUS(ms * 1000ull);
}

int CBaseEvent::IsSet() { return Load(m_bSet); }

int CBaseEvent::IsWaiting() { return Load(m_bWaiting); }
