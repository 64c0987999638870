// Threads: starting, suspending, ending.
#include "threads_support.h"

#include <atomic>
#include <cstdlib>

using namespace qxtest;

namespace
{

// Without a call in which it could be stopped.
unsigned Compute(std::atomic<unsigned>& count)
{
    for (;;)
        count.store(count.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    return 0;
}

TEST(Threads, StartAndExitCode)
{
    const Thread thread([] { return 77u; }, CREATE_SUSPENDED, 0x4000);
    ASSERT_TRUE(thread);
    EXPECT_NE(thread.id(), 0u);
    EXPECT_EQ(ExitCodeOf(thread), DWORD{STILL_ACTIVE});
    EXPECT_EQ(WaitForSingleObject(thread, 50), DWORD{WAIT_TIMEOUT});
    EXPECT_EQ(ResumeThread(thread), 1u);
    EXPECT_EQ(thread.Join(), 77u);
    EXPECT_EQ(ResumeThread(thread), 0u);
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

// Also where it waits for a critical section, which it doesn't enter then.
TEST(Threads, SuspensionsAreCounted)
{
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    EnterCriticalSection(&section);
    std::atomic<bool> hasEntered = false;
    const Thread thread(
        [&]
        {
            EnterCriticalSection(&section);
            hasEntered = true;
            LeaveCriticalSection(&section);
            return 0u;
        });
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
    EXPECT_EQ(ErrorOf([&] { return SuspendThread(thread) != 0xFFFFFFFF; }), DWORD{ERROR_ACCESS_DENIED});
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
    const Thread computing([&] { return Compute(count); });
    while (count == 0)
        Sleep(1);
    EXPECT_EQ(SuspendThread(computing), 0u);
    const unsigned then = count;
    Sleep(20);
    EXPECT_EQ(count, then);
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

} // namespace
