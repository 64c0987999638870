#include <processthreadsapi.h>

#include <pthread.h>
#include <sched.h>
#include <unistd.h>

namespace
{

constexpr unsigned processorsOfGroup = 64;

thread_local DWORD threadId = 0;

unsigned CurrentProcessor()
{
    const int processor = sched_getcpu();
    return processor < 0 ? 0 : static_cast<unsigned>(processor);
}

// A forked child's one thread has another id than the thread that it is a copy of.
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

DWORD WINAPI GetCurrentProcessorNumber(void)
{
    return CurrentProcessor() % processorsOfGroup;
}

void WINAPI GetCurrentProcessorNumberEx(PPROCESSOR_NUMBER ProcNumber)
{
    const unsigned processor = CurrentProcessor();
    *ProcNumber = {
        static_cast<WORD>(processor / processorsOfGroup), static_cast<BYTE>(processor % processorsOfGroup), 0};
}
