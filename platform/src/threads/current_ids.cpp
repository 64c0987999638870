#include <processthreadsapi.h>

#include <pthread.h>
#include <unistd.h>

namespace
{

[[gnu::tls_model("initial-exec")]] constinit thread_local DWORD threadId = 0; // used by every lock

// The only thread of a forked child has another id than the thread it was copied from.
[[maybe_unused]] const int forkHandler = pthread_atfork(nullptr, nullptr, [] { threadId = 0; });

} // namespace

DWORD WINAPI GetCurrentThreadId(void)
{
    if (threadId == 0)
        threadId = static_cast<DWORD>(gettid());
    return threadId;
}

DWORD WINAPI GetCurrentProcessId(void)
{
    return static_cast<DWORD>(getpid());
}

HANDLE WINAPI GetCurrentProcess(void)
{
    return reinterpret_cast<HANDLE>(LONG_PTR{-1});
}

HANDLE WINAPI GetCurrentThread(void)
{
    return reinterpret_cast<HANDLE>(LONG_PTR{-2});
}
