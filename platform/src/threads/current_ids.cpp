#include <processthreadsapi.h>

#include <atomic>

#include <pthread.h>
#include <unistd.h>

namespace
{

[[gnu::tls_model("initial-exec")]] constinit thread_local DWORD threadId = 0; // used by every lock

// Pools query the id with each job, and on some virtual machines a system call takes a microsecond.
constinit std::atomic<DWORD> processId = 0;

// In a forked child, the ids of the process and of its only thread differ from the parent's.
void ForgetIds()
{
    threadId = 0;
    processId.store(0, std::memory_order_relaxed);
}

[[maybe_unused]] const int forkHandler = pthread_atfork(nullptr, nullptr, &ForgetIds);

} // namespace

DWORD WINAPI GetCurrentThreadId(void)
{
    if (threadId == 0)
        threadId = static_cast<DWORD>(gettid());
    return threadId;
}

DWORD WINAPI GetCurrentProcessId(void)
{
    DWORD id = processId.load(std::memory_order_relaxed);
    if (id == 0)
    {
        id = static_cast<DWORD>(getpid());
        processId.store(id, std::memory_order_relaxed);
    }
    return id;
}

HANDLE WINAPI GetCurrentProcess(void)
{
    return reinterpret_cast<HANDLE>(LONG_PTR{-1});
}

HANDLE WINAPI GetCurrentThread(void)
{
    return reinterpret_cast<HANDLE>(LONG_PTR{-2});
}
