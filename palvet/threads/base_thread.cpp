#include <palvet/threads/base_thread.h>

#include <palvet/core/clock.h>
#include <palvet/core/debug_output.h>

#include <cerrno>
#include <cstring>

namespace {

// The need-exit and stopped flags, the thread id and the lwp are plain
// fields read by other threads without the lock (the body polls need-exit,
// StartThread tests the id and stopped): atomic accesses keep that free of
// data races without changing the object's layout.
template <class T>
T Load(T const& field)
{
    return __atomic_load_n(&field, __ATOMIC_ACQUIRE);
}

template <class T>
void Store(T& field, T value)
{
    __atomic_store_n(&field, value, __ATOMIC_RELEASE);
}

// Holds a CBaseLock for a scope.
class Locked {
public:
    explicit Locked(CBaseLock& lock) : lock_(lock) { lock_.Lock(); }
    ~Locked() { lock_.Unlock(); }
    Locked(Locked const&) = delete;
    Locked& operator=(Locked const&) = delete;

private:
    CBaseLock& lock_;
};

void SetSystemName(pthread_t thread, char const* name)
{
    char shortName[16] = {};
    memcpy(shortName, name, strnlen(name, 15));
    pthread_setname_np(thread, shortName);
}

}  // namespace

CBaseThread::CBaseThread()
    : m_ThreadID(0), m_bNeedExit(0), m_bDetached(0), m_RunEvent(nullptr, 1), m_bStopped(1), m_lLwp(0),
      m_szName{}, m_pInterface(nullptr), m_ullParam(0)
{
}

CBaseThread::~CBaseThread() { StopThread(); }

int CBaseThread::StartThread(char const* name, IThreadFuncInterface* iface, unsigned long long param,
                             int stackSize, int detached)
{
    if (Load(m_ThreadID) != 0) {
        if (Load(m_bStopped) == 0)
            return 1;
        Locked hold(m_Lock);
        if (!m_bDetached)
            pthread_join(m_ThreadID, nullptr);
        Store(m_lLwp, 0L);
        Store(m_ThreadID, pthread_t(0));
    }

    int r;
    pthread_t created = 0;
    {
        Locked hold(m_Lock);
        strncpy(m_szName, name != nullptr ? name : "", 127);
        m_szName[127] = '\0';
        m_pInterface = iface;
        m_ullParam = param;
        Store(m_bNeedExit, 0);
        Store(m_bStopped, 0);
        m_RunEvent.Set();
        m_bDetached = detached;
        pthread_attr_t attr;
        pthread_attr_init(&attr);
        pthread_attr_setstacksize(&attr, static_cast<size_t>(stackSize));  // refused sizes keep the default
        pthread_attr_setdetachstate(&attr, detached ? PTHREAD_CREATE_DETACHED : PTHREAD_CREATE_JOINABLE);
        r = pthread_create(&created, &attr, WrapThread, this);
        pthread_attr_destroy(&attr);
        if (r == 0)
            Store(m_ThreadID, created);
    }

    char const* shown = name != nullptr ? name : "unknown";
    if (r != 0) {
        Store(m_bStopped, 1);
        Store(m_ThreadID, pthread_t(0));
        DbgOutput(1, "thread create failed, ret=%d, errno=%s, thread name=%s, stacksize=%d\n", r, strerror(errno),
                  shown, stackSize);
        return 0;
    }
    DbgOutput(1, "thread create success, threadID=%lu, thread name=%s, stacksize=%d\n",
              static_cast<unsigned long>(created), shown, stackSize);
    // A joinable thread's handle stays valid until it is joined, so it can be
    // named from here; a detached one may already be gone, so it names itself
    // (see WrapThreadFunc).
    if (name != nullptr && !detached)
        SetSystemName(created, m_szName);
    return 1;
}

void* CBaseThread::WrapThreadFunc()
{
    pthread_t self = pthread_self();
    if (m_bDetached && m_szName[0] != '\0')
        SetSystemName(self, m_szName);
    long lwp = getlwpid();
    Store(m_lLwp, lwp);
    DbgOutput(1, "thread information, name=%s, tid=%lu, lwp=%ld\n", m_szName, static_cast<unsigned long>(self), lwp);
    if (m_pInterface == nullptr)
        return nullptr;  // deliberately neither the exit line nor stopped
    IThreadFuncInterface* iface = m_pInterface;
    for (;;) {
        if (iface->ThreadFunc(m_ullParam) == 0)
            break;
        // A paused thread rests here; a running one passes straight through.
        m_RunEvent.Wait();
        if (Load(m_bNeedExit) == 1)
            break;
        iface = m_pInterface;
    }
    Store(m_bStopped, 1);
    DbgOutput(1, "thread exit, name=%s, tid=%lu, lwp=%ld\n", m_szName, static_cast<unsigned long>(self), lwp);
    return nullptr;
}

void CBaseThread::StopThread()
{
    Locked hold(m_Lock);
    Store(m_bNeedExit, 1);
    m_RunEvent.Set();
    pthread_t thread = Load(m_ThreadID);
    if (thread == 0)
        return;
    DbgOutput(1, "prepare exit thread..., name=%s, tid=%lu, lwp=%ld\n", m_szName, static_cast<unsigned long>(thread),
              Load(m_lLwp));
    if (!m_bDetached)
        pthread_join(thread, nullptr);
    DbgOutput(1, "thread exit over, name=%s, tid=%lu, lwp=%ld\n", m_szName, static_cast<unsigned long>(thread),
              Load(m_lLwp));
    Store(m_lLwp, 0L);
    Store(m_ThreadID, pthread_t(0));
    Store(m_bStopped, 1);
}

void CBaseThread::StopThreadImmediate()
{
    Locked hold(m_Lock);
    Store(m_bNeedExit, 1);
    m_RunEvent.Set();
    Store(m_bStopped, 1);
    Store(m_lLwp, 0L);
    Store(m_ThreadID, pthread_t(0));
}

void CBaseThread::PauseThread() { m_RunEvent.Reset(); }

void CBaseThread::ResumeThread() { m_RunEvent.Set(); }

int CBaseThread::IsThreadRunning() { return Load(m_bStopped) == 0 ? 1 : 0; }

int CBaseThread::IsThreadNeedExit() { return Load(m_bNeedExit); }

void* WrapThread(void* thread)
{
    if (thread == nullptr)
        return nullptr;
    return static_cast<CBaseThread*>(thread)->WrapThreadFunc();
}
