// Threads: starting, suspending, ending, what is told of them.
#include "threads_support.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

using namespace qxtest;

namespace
{

unsigned __stdcall ReturnArgument(void* argument)
{
    return static_cast<unsigned>(reinterpret_cast<uintptr_t>(argument));
}

LONGLONG Units(const FILETIME& time)
{
    return static_cast<LONGLONG>(ULONGLONG{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

TEST(Threads, StartAndExitCode)
{
    unsigned id = 0;
    const Handle thread(reinterpret_cast<HANDLE>(
        _beginthreadex(nullptr, 0x4000, &ReturnArgument, reinterpret_cast<void*>(77), CREATE_SUSPENDED, &id)));
    ASSERT_TRUE(thread);
    EXPECT_NE(id, 0u);
    EXPECT_EQ(GetThreadId(thread), id);
    EXPECT_EQ(ExitCodeOf(thread), DWORD{STILL_ACTIVE});
    EXPECT_EQ(WaitForSingleObject(thread, 50), DWORD{WAIT_TIMEOUT});
    EXPECT_EQ(ResumeThread(thread), 1u);
    EXPECT_EQ(WaitForSingleObject(thread, patience), DWORD{WAIT_OBJECT_0});
    EXPECT_EQ(ExitCodeOf(thread), 77u);
    EXPECT_EQ(ResumeThread(thread), 0u);

    const Handle other(CreateThread(
        nullptr, 0, [](LPVOID) -> DWORD { ExitThread(5); }, nullptr, 0, nullptr));
    EXPECT_EQ(WaitForSingleObject(other, patience), DWORD{WAIT_OBJECT_0});
    EXPECT_EQ(ExitCodeOf(other), 5u);
}

TEST(Threads, TheStackHasRoomBeyondItsSize)
{
    const Thread thread(
        []
        {
            volatile char block[200'000];
            std::memset(const_cast<char*>(block), 1, sizeof block);
            return static_cast<unsigned>(block[100'000]);
        },
        0, 0x4000);
    EXPECT_EQ(thread.Join(), 1u);
}

TEST(Threads, ObjectsOfTheThreadAreGoneBeforeItsHandleIsSignalled)
{
    struct Slow
    {
        std::atomic<bool>* isGone = nullptr;
        ~Slow()
        {
            Sleep(30);
            *isGone = true;
        }
    };
    std::atomic<bool> isGone = false;
    const Thread thread(
        [&isGone]
        {
            static thread_local Slow slow;
            slow.isGone = &isGone;
            return 0u;
        });
    thread.Join();
    EXPECT_TRUE(isGone);
}

TEST(Threads, SuspensionsAreCounted)
{
    std::atomic<unsigned> count = 0;
    std::atomic<bool> isOver = false;
    const Event stop;
    const Thread thread(
        [&]
        {
            while (WaitForSingleObject(stop, 1) == WAIT_TIMEOUT)
                ++count;
            isOver = true;
            return 0u;
        });
    while (count < 3)
        Sleep(1);
    EXPECT_EQ(SuspendThread(thread), 0u);
    const unsigned then = count;
    EXPECT_EQ(SuspendThread(thread), 1u);
    SetEvent(stop);
    Sleep(50);
    EXPECT_EQ(count, then);
    EXPECT_EQ(ResumeThread(thread), 2u);
    Sleep(20);
    EXPECT_FALSE(isOver);
    EXPECT_EQ(ResumeThread(thread), 1u);
    thread.Join();
    EXPECT_TRUE(isOver);
    EXPECT_EQ(ErrorOf([&] { return SuspendThread(thread) != 0xFFFFFFFF; }), DWORD{ERROR_ACCESS_DENIED});
}

// A thread that is stopped in a critical section's queue or computes is stopped all the same.
TEST(Threads, SuspensionWhereverTheThreadIs)
{
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    EnterCriticalSection(&section);
    std::atomic<bool> hasEntered = false;
    const Thread waiting(
        [&]
        {
            EnterCriticalSection(&section);
            hasEntered = true;
            LeaveCriticalSection(&section);
            return 0u;
        });
    Sleep(20);
    EXPECT_EQ(SuspendThread(waiting), 0u);
    LeaveCriticalSection(&section);
    Sleep(30);
    EXPECT_FALSE(hasEntered);
    ResumeThread(waiting);
    waiting.Join();
    EXPECT_TRUE(hasEntered);
    DeleteCriticalSection(&section);

    if (!canStopComputing)
        return;
    std::atomic<unsigned> count = 0;
    std::atomic<bool> stop = false;
    const Thread computing(
        [&]
        {
            while (!stop.load(std::memory_order_relaxed))
                count.store(count.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
            return 0u;
        });
    while (count == 0)
        Sleep(1);
    EXPECT_EQ(SuspendThread(computing), 0u);
    Sleep(5);
    const unsigned then = count;
    Sleep(30);
    EXPECT_EQ(count, then);
    stop = true;
    EXPECT_EQ(ResumeThread(computing), 1u);
    computing.Join();
}

TEST(Threads, TerminationRunsNoDestructors)
{
    const LeaksAllowed leaksAllowed;
    struct Mark
    {
        std::atomic<bool>* isGone;
        ~Mark() { *isGone = true; }
    };
    std::atomic<bool> isGone = false;
    std::atomic<bool> isRunning = false;
    const Thread thread(
        [&]
        {
            const Mark mark{&isGone};
            isRunning = true;
            Sleep(INFINITE);
            return 0u;
        });
    while (!isRunning)
        Sleep(1);
    EXPECT_TRUE(TerminateThread(thread, 9));
    EXPECT_EQ(thread.Join(), 9u);
    EXPECT_FALSE(isGone);

    const Thread suspended([] { return 1u; }, CREATE_SUSPENDED);
    EXPECT_TRUE(TerminateThread(suspended, 8));
    EXPECT_EQ(suspended.Join(), 8u);

    if (!canStopComputing)
        return;
    std::atomic<unsigned> count = 0;
    const Thread computing(
        [&]
        {
            for (;;)
                count.store(count.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
            return 0u;
        });
    while (count == 0)
        Sleep(1);
    EXPECT_EQ(SuspendThread(computing), 0u);
    EXPECT_TRUE(TerminateThread(computing, 7));
    EXPECT_EQ(computing.Join(), 7u);
}

// Whoever needs the allocator while a thread is stopped, or after it was terminated, gets it.
TEST(Threads, TheAllocatorIsNeverStopped)
{
    if (!isLayer) // the system stops a thread anywhere
        GTEST_SKIP();
    for (int round = 0; round < 30; ++round)
    {
        std::atomic<unsigned> count = 0;
        const Thread thread(
            [&count]
            {
                const LeaksAllowed leaksAllowed;
                for (;;)
                {
                    void* volatile block = std::malloc(100'000 + count % 100);
                    std::free(block);
                    ++count;
                    if (!canStopComputing)
                        Sleep(1);
                }
                return 0u;
            });
        while (count < 10)
            Sleep(1);
        ASSERT_EQ(SuspendThread(thread), 0u);
        for (size_t size = 1; size < 1'000'000; size *= 3)
        {
            void* volatile block = std::malloc(size);
            std::free(block);
        }
        ASSERT_TRUE(TerminateThread(thread, 0));
        thread.Join();
        Thread(
            []
            {
                std::free(std::malloc(120'000));
                return 0u;
            })
            .Join();
    }
}

TEST(Threads, PriorityAndTimes)
{
    const Event stop;
    const Thread thread(
        [&stop]
        {
            WaitForSingleObject(stop, INFINITE);
            return 0u;
        });
    EXPECT_EQ(GetThreadPriority(thread), THREAD_PRIORITY_NORMAL);
    for (const int priority : {-15, -2, -1, 0, 1, 2, 15, 0})
    {
        EXPECT_TRUE(SetThreadPriority(thread, priority));
        EXPECT_EQ(GetThreadPriority(thread), priority);
    }
    EXPECT_FALSE(SetThreadPriority(thread, 99));
    EXPECT_EQ(GetThreadPriority(GetCurrentThread()), 0);

    FILETIME created, ended, kernel, user;
    EXPECT_TRUE(GetThreadTimes(thread, &created, &ended, &kernel, &user));
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    EXPECT_LT(Units(now) - Units(created), 60'0000000);
    SetEvent(stop);
    thread.Join();
    EXPECT_TRUE(GetThreadTimes(thread, &created, &ended, &kernel, &user));
    EXPECT_GE(Units(ended), Units(created));
}

TEST(Threads, HandlesOfThreads)
{
    HANDLE duplicate = nullptr;
    ASSERT_TRUE(DuplicateHandle(
        GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &duplicate, 0, FALSE, DUPLICATE_SAME_ACCESS));
    const Handle self(duplicate);
    EXPECT_EQ(GetThreadId(self), GetCurrentThreadId());
    EXPECT_EQ(ExitCodeOf(self), DWORD{STILL_ACTIVE});
    EXPECT_EQ(WaitForSingleObject(self, 0), DWORD{WAIT_TIMEOUT});

    const Handle opened(OpenThread(THREAD_QUERY_INFORMATION | SYNCHRONIZE, FALSE, GetCurrentThreadId()));
    ASSERT_TRUE(opened);
    EXPECT_EQ(GetThreadId(opened), GetCurrentThreadId());
    EXPECT_EQ(ErrorOf([&] { return SuspendThread(opened) != 0xFFFFFFFF; }), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(ErrorOf([] { return OpenThread(THREAD_QUERY_INFORMATION, FALSE, 0x7FFFFFFD) != nullptr; }),
        DWORD{ERROR_INVALID_PARAMETER});

    DWORD code = 0;
    const Event event;
    EXPECT_EQ(ErrorOf([&] { return GetExitCodeThread(event, &code); }), DWORD{ERROR_INVALID_HANDLE});
}

TEST(Threads, CallsRunInAlertableWaits)
{
    static std::atomic<int> sum;
    sum = 0;
    const Event stop, ready;
    std::atomic<DWORD> first = 0, second = 0;
    const Thread thread(
        [&]
        {
            SetEvent(ready);
            first = SleepEx(patience, TRUE);
            second = WaitForSingleObjectEx(stop, INFINITE, TRUE);
            return static_cast<unsigned>(WaitForSingleObject(stop, INFINITE));
        });
    WaitForSingleObject(ready, patience);
    const PAPCFUNC add = [](ULONG_PTR number)
    {
        sum += static_cast<int>(number);
    };
    EXPECT_TRUE(QueueUserAPC(add, thread, 3));
    for (int round = 0; sum != 3 && round < 1000; ++round)
        Sleep(1);
    EXPECT_EQ(sum, 3);
    SuspendThread(thread); // both calls are there when it looks
    EXPECT_TRUE(QueueUserAPC(add, thread, 10));
    EXPECT_TRUE(QueueUserAPC(add, thread, 20));
    ResumeThread(thread);
    for (int round = 0; sum != 33 && round < 1000; ++round)
        Sleep(1);
    EXPECT_EQ(sum, 33);
    SetEvent(stop);
    EXPECT_EQ(thread.Join(), DWORD{WAIT_OBJECT_0});
    EXPECT_EQ(first, DWORD{WAIT_IO_COMPLETION});
    EXPECT_EQ(second, DWORD{WAIT_IO_COMPLETION});
    EXPECT_FALSE(QueueUserAPC(add, thread, 1));
}

TEST(Threads, HandlersSeeRaisedExceptions)
{
    static std::atomic<DWORD> seen;
    seen = 0;
    const PVECTORED_EXCEPTION_HANDLER handler = [](EXCEPTION_POINTERS* pointers) -> LONG
    {
        const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
        if (record.ExceptionCode != 0xE0000077)
            return EXCEPTION_CONTINUE_SEARCH;
        seen = static_cast<DWORD>(record.ExceptionInformation[0] * record.NumberParameters);
        return EXCEPTION_CONTINUE_EXECUTION;
    };
    void* const installed = AddVectoredExceptionHandler(TRUE, handler);
    const ULONG_PTR arguments[] = {21, 0};
    RaiseException(0xE0000077, 0, 2, arguments);
    EXPECT_EQ(seen, 42u);
    EXPECT_TRUE(RemoveVectoredExceptionHandler(installed));
    EXPECT_FALSE(RemoveVectoredExceptionHandler(installed));
}

} // namespace
