// Suspending and terminating threads, events, message queues, message boxes; pools, completion ports, processors.
#include "threads_support.h"

#include <atomic>
#include <bit>
#include <cstdlib>
#include <thread>
#include <tuple>

// Each system has its own function to set the affinity. Only the layer's GetActiveProcessorCount depends on it.
#if defined(__linux__)
#include <sched.h>
#endif

using namespace qxtest;

namespace
{

TEST(Threads, ObjectsOfTheThreadAreGoneBeforeItsHandleIsSignalled)
{
    static std::atomic<bool> isGone = false;
    struct Slow
    {
        unsigned result = 0;
        ~Slow()
        {
            Sleep(30);
            isGone = true;
        }
    };
    const auto use = []
    {
        static thread_local Slow slow;
        return slow.result;
    };
    Thread(use).Join();
    EXPECT_TRUE(isGone);
}

TEST(Threads, MutexesBelongToThreads)
{
    Handle mutex(CreateMutexW(nullptr, TRUE, nullptr));
    ASSERT_TRUE(mutex);
    EXPECT_EQ(WaitForSingleObject(mutex, 0), DWORD{WAIT_OBJECT_0}) << "again by its owner";
    const auto tryIt = [&]
    {
        EXPECT_EQ(WaitForSingleObject(mutex, 0), DWORD{WAIT_TIMEOUT});
        EXPECT_ERROR(ERROR_NOT_OWNER, ReleaseMutex(mutex));
        return 0u;
    };
    Thread(tryIt).Join();
    EXPECT_TRUE(ReleaseMutex(mutex));
    Thread(tryIt).Join();                                                        // it was taken twice
    const Thread waiting([&] { return WaitForSingleObject(mutex, kPatience); }); // ends as the owner
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(waiting.Join(), DWORD{WAIT_OBJECT_0});
    EXPECT_ERROR(ERROR_NOT_OWNER, ReleaseMutex(mutex));

    const Event event;
    SetEvent(event);
    const HANDLE both[] = {event, mutex};
    EXPECT_EQ(WaitForMultipleObjects(2, both, TRUE, 0), DWORD{WAIT_ABANDONED_0});
    EXPECT_EQ(WaitForSingleObject(mutex, 0), DWORD{WAIT_OBJECT_0}) << "abandonment is reported once";
    EXPECT_TRUE(ReleaseMutex(mutex) && ReleaseMutex(mutex));

    // Without an owner that is alive; then mutexes that are gone before their owners end.
    Thread([&] { return WaitForSingleObject(mutex, 0); }).Join();
    EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 0), DWORD{WAIT_OBJECT_0});
    ResetEvent(event);
    EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 0), DWORD{WAIT_ABANDONED_0 + 1});
    mutex.Close();
    Thread(
        []
        {
            Handle(CreateMutexW(nullptr, TRUE, nullptr)).Close();
            return 0u;
        })
        .Join();
}

// Also suspends the thread while it waits for a critical section, which it must not enter until it is resumed.
TEST(Threads, SuspensionsAreCounted)
{
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    EnterCriticalSection(&section);
    std::atomic<bool> isRunning = false, hasEntered = false;
    const Thread thread(
        [&]
        {
            isRunning = true;
            EnterCriticalSection(&section);
            hasEntered = true;
            LeaveCriticalSection(&section);
            return 0u;
        });
    while (!isRunning)
        Sleep(1);
    Sleep(20);
    EXPECT_EQ(SuspendThread(thread), 0u);
    EXPECT_EQ(SuspendThread(thread), 1u);
    LeaveCriticalSection(&section);
    EXPECT_EQ(ResumeThread(thread), 2u);
    Sleep(30);
    EXPECT_FALSE(hasEntered);
    EXPECT_EQ(ResumeThread(thread), 1u);
    thread.Join();
    EXPECT_TRUE(hasEntered);
    DeleteCriticalSection(&section);
    EXPECT_ERROR(ERROR_ACCESS_DENIED, SuspendThread(thread) != 0xFFFFFFFF);
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

    if (!kCanStopComputing)
        return;
    std::atomic<unsigned> count = 0;
    const Thread computing(
        [&]
        {
            for (;;) // no call in which the thread could be stopped
                count.store(count.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
            return 0u;
        });
    while (count == 0)
        Sleep(1);
    EXPECT_EQ(SuspendThread(computing), 0u);
    const unsigned then = count;
    Sleep(20);
    EXPECT_EQ(count, then);
    EXPECT_TRUE(TerminateThread(computing, 7));
    EXPECT_EQ(computing.Join(), 7u);
}

// Other threads can use the allocator while a thread is suspended or after it was terminated.
TEST(Threads, TheAllocatorIsNeverStopped)
{
    if (!kIsLayer || !kCanStopComputing) // the system stops a thread anywhere
        GTEST_SKIP();
    const LeaksAllowed leaksAllowed;
    for (int round = 0; round < 30; ++round)
    {
        std::atomic<unsigned> count = 0;
        // The block belongs to the allocator arena of this thread, so freeing it and this thread's allocations contend
        // for the same lock.
        void* const given = std::malloc(2'000);
        const Thread thread(
            [&count, given]
            {
                const LeaksAllowed leaksAllowedHere;
                for (void* volatile block = given;; ++count)
                    block = std::realloc(block, 2'000 + count % 2 * 1'000);
                return 0u;
            });
        while (count < 10)
            Sleep(1);
        ASSERT_EQ(SuspendThread(thread), 0u);
        for (std::size_t size = 1; size < 1'000'000; size *= 3)
        {
            void* volatile block = std::malloc(size);
            std::free(block);
        }
        ASSERT_TRUE(TerminateThread(thread, 0));
    }
}

TEST(Waits, EachSettingOfAnAutomaticEventLetsOneThreadThrough)
{
    const Event event(false), stop;
    std::atomic<int> passed = 0;
    const auto pass = [&]
    {
        const HANDLE both[] = {stop, event};
        while (WaitForMultipleObjects(2, both, FALSE, INFINITE) == WAIT_OBJECT_0 + 1)
            ++passed;
        return 0u;
    };
    const Thread threads[] = {Thread(pass), Thread(pass), Thread(pass), Thread(pass)};
    for (int count = 1; count <= 200; ++count)
    {
        SetEvent(event);
        for (const ULONGLONG end = GetTickCount64() + kPatience; passed < count && GetTickCount64() < end;)
            std::this_thread::yield();
        ASSERT_EQ(passed, count);
    }
    SetEvent(stop);
    for (const Thread& thread : threads)
        thread.Join();
    EXPECT_EQ(passed, 200);
}

TEST(Messages, WaitsWakeForNewInput)
{
    MSG message;
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE); // creates the queue
    const Event event;
    const HANDLE handle = event;
    std::thread poster(
        [waiting = GetCurrentThreadId()]
        {
            Sleep(30);
            EXPECT_TRUE(PostThreadMessageW(waiting, WM_APP, 0, 0));
        });
    EXPECT_EQ(MsgWaitForMultipleObjects(1, &handle, FALSE, kPatience, QS_ALLINPUT), WAIT_OBJECT_0 + 1);
    poster.join();
    // A message that has been peeked at but not removed doesn't count as new.
    EXPECT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE));
    EXPECT_EQ(MsgWaitForMultipleObjects(1, &handle, FALSE, 0, QS_ALLINPUT), DWORD{WAIT_TIMEOUT});
    EXPECT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
}

TEST(Messages, BoxesAnswerByThemselves)
{
    if (!kIsLayer) // the system's message boxes wait for a user
        GTEST_SKIP();
    constexpr std::tuple<UINT, const wchar_t*, int> kCases[] = {
        {MB_OKCANCEL | MB_DEFBUTTON2 | MB_ICONHAND | MB_TASKMODAL | MB_SETFOREGROUND, nullptr, IDCANCEL},
        {MB_YESNOCANCEL | MB_DEFBUTTON3, L"", IDCANCEL}, {MB_YESNO, L"No", IDNO},
        {MB_YESNO | MB_DEFBUTTON3, L"cancel", IDYES}, {MB_CANCELTRYCONTINUE, L"continue", IDCONTINUE},
        {MB_TYPEMASK, L"ok", 0}};
    for (const auto& [style, wanted, answer] : kCases)
    {
        SetEnvironmentVariableW(L"QXPLATFORM_MESSAGEBOX", wanted);
        testing::internal::CaptureStderr();
        EXPECT_EQ(MessageBoxW(nullptr, L"A\x00E4 text", L"Caption", style), answer);
        const std::string printed = testing::internal::GetCapturedStderr();
        EXPECT_EQ(printed.find("Caption: A\xC3\xA4 text [") == 0, answer != 0) << printed;
    }
    SetEnvironmentVariableW(L"QXPLATFORM_MESSAGEBOX", nullptr);
}

TEST(CompletionPorts, AWaitingThreadCanBeTerminated)
{
    const LeaksAllowed leaksAllowed;
    const Handle port(CreateIoCompletionPort(INVALID_HANDLE_VALUE, nullptr, 0, 0));
    const auto take = [&port]
    {
        DWORD bytes = 0;
        ULONG_PTR key = 0;
        OVERLAPPED* overlapped = nullptr;
        return GetQueuedCompletionStatus(port, &bytes, &key, &overlapped, INFINITE) ? static_cast<unsigned>(bytes) : 0u;
    };
    const Thread thread(take);
    Sleep(30);
    EXPECT_TRUE(TerminateThread(thread, 5));
    EXPECT_EQ(thread.Join(), 5u);
    EXPECT_TRUE(PostQueuedCompletionStatus(port, 7, 0, nullptr));
    EXPECT_EQ(take(), 7u);
}

// The layer counts the processors assigned to a container rather than those of the machine.
#if defined(__linux__)
TEST(Processors, ByAffinity)
{
    cpu_set_t before, one;
    ASSERT_EQ(sched_getaffinity(0, sizeof before, &before), 0);
    int processor = 0;
    while (!CPU_ISSET(processor, &before))
        ++processor;
    CPU_ZERO(&one);
    CPU_SET(processor, &one);
    ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
    DWORD_PTR own = 0, system = 0;
    EXPECT_TRUE(GetProcessAffinityMask(GetCurrentProcess(), &own, &system));
    EXPECT_EQ(std::popcount(own), 1);
    EXPECT_EQ(GetActiveProcessorCount(ALL_PROCESSOR_GROUPS), 1u);
    sched_setaffinity(0, sizeof before, &before);
}
#endif

} // namespace
