// Start, state, names, and the thread's own wait.
#include "threads_support.h"

#include "core/thread_names.h"
#include "module/module_paths.h"

#include <string_view>

using namespace qx;
using namespace qxtest;

namespace
{

using State = clsThreadBase::State;

TEST(ThreadBase, LifeFromStartToEndAndAgain)
{
    TestThread thread(&UntilStopped);
    EXPECT_EQ(thread.GetThreadState(), State::None);
    EXPECT_EQ(thread.ThreadEnd(false, INFINITE, true), 1);
    for (int round = 0; round < 2; ++round)
    {
        ASSERT_TRUE(thread.ThreadStart(THREAD_PRIORITY_NORMAL));
        EXPECT_EQ(thread.GetThreadState(), State::Running);
        EXPECT_EQ(thread.StarterId(), GetCurrentThreadId());
        EXPECT_EQ(thread.ExitCode(), 0xFFFFFFFF);
        const unsigned id = thread.ThreadId();
        EXPECT_TRUE(thread.ThreadStart(THREAD_PRIORITY_NORMAL)); // only resumes it
        EXPECT_EQ(thread.ThreadId(), id);
        EXPECT_EQ(thread.ThreadEnd(false, INFINITE, true), 1);
        EXPECT_EQ(thread.GetThreadState(), State::None);
        EXPECT_EQ(thread.ExitCode(), 7u);
        EXPECT_EQ(thread.ThreadId(), 0u);
    }
}

TEST(ThreadBase, AThreadThatHasExitedCanBeStartedAgain)
{
    std::atomic<unsigned> runs = 0;
    TestThread thread([&runs](TestThread&) { return ++runs; });
    for (int round = 0; round < 2; ++round)
    {
        ASSERT_TRUE(thread.ThreadStart(THREAD_PRIORITY_NORMAL));
        ASSERT_TRUE(WaitUntil([&] { return thread.GetThreadState() == State::Exited; }));
        EXPECT_EQ(thread.ExitCode(), 0xFFFFFFFF); // its handle still exists
    }
    EXPECT_EQ(thread.ThreadEnd(false, INFINITE, false), 1);
    EXPECT_EQ(thread.ExitCode(), 2u);
}

TEST(ThreadBase, NamesInTheObjectAndInTheDictionary)
{
    std::atomic<bool> hasShownName = false;
    TestThread thread(
        [&hasShownName](TestThread& self)
        {
            const char* const shown = TheThreadNames().Find(GetCurrentThreadId());
            hasShownName = shown && std::string_view(shown) == "Work::er";
            return UntilStopped(self);
        },
        L"Work::er");
    EXPECT_STREQ(String(String::kFormatted, L"%hs", thread.Name()), LibraryPaths().baseName + L"::Work::er");
    ASSERT_TRUE(thread.ThreadStart(THREAD_PRIORITY_NORMAL));
    const unsigned id = thread.ThreadId();
    thread.ThreadEnd(false, INFINITE, true);
    EXPECT_TRUE(hasShownName);
    EXPECT_FALSE(TheThreadNames().Find(id));

    for (const wchar_t* const name : {L"", static_cast<const wchar_t*>(nullptr)})
    {
        TestThread nameless([](TestThread&) { return TheThreadNames().Find(GetCurrentThreadId()) ? 1u : 2u; }, name);
        EXPECT_FALSE(nameless.Name());
        ASSERT_TRUE(nameless.ThreadStart(THREAD_PRIORITY_NORMAL));
        nameless.ThreadEnd(false, INFINITE, true);
        EXPECT_EQ(nameless.ExitCode(), 2u);
    }
}

TEST(ThreadNamesOfTheProcess, ARemovalOnlyTakesItsOwnName)
{
    ThreadNames names;
    const char first[] = "same", second[] = "same";
    names.Enter(5, first);
    names.Enter(5, second); // the id is in use again
    names.Remove(5, first);
    EXPECT_EQ(names.Find(5), second);
    names.Remove(5, second);
    EXPECT_EQ(names.Find(5), nullptr);
}

TEST(ThreadBase, WaitWithoutHandlesIsASleepThatStopEnds)
{
    std::atomic<int> elapsed = 0, priority = 99;
    TestThread thread(
        [&](TestThread& self)
        {
            const ULONGLONG begin = GetTickCount64();
            int result = 0;
            const bool isRight = self.WaitForEvents(200, result, 0) && result == clsThreadBase::kTimedOut;
            priority = GetThreadPriority(GetCurrentThread());
            elapsed = static_cast<int>(GetTickCount64() - begin);
            const bool goesOn = self.WaitForEvents(kPatience, result, 0);
            return isRight && !goesOn && result == clsThreadBase::kStopRequested ? 5u : 6u;
        });
    ASSERT_TRUE(thread.ThreadStart(THREAD_PRIORITY_BELOW_NORMAL));
    EXPECT_TRUE(WaitUntil([&] { return elapsed != 0; }));
    EXPECT_GE(elapsed, 180); // minus the resolution of the clock
    EXPECT_EQ(priority, THREAD_PRIORITY_BELOW_NORMAL);
    EXPECT_EQ(thread.ThreadEnd(false, INFINITE, true), 1);
    EXPECT_EQ(thread.ExitCode(), 5u);
}

// The test calls the wait on its own thread, because the wait belongs to the object, not to the thread.
TEST(ThreadBase, WhatEndsAWait)
{
    clsEvent first, second, isReady, go;
    TestThread thread(
        [&](TestThread& self)
        {
            isReady.Set();
            WaitForSingleObject(go.Get(), INFINITE);
            int result = 0;
            const bool goesOn = self.WaitForEvents(INFINITE, result, 1, first.Get());
            return !goesOn && result == clsThreadBase::kStopRequested ? 1u : 0u;
        });
    const auto resultOf = [&](DWORD milliseconds, HANDLE other)
    {
        int result = 99;
        EXPECT_TRUE(thread.WaitForEvents(milliseconds, result, 2, first.Get(), other));
        return result;
    };
    EXPECT_EQ(resultOf(0, second.Get()), clsThreadBase::kTimedOut);
    second.Set();
    EXPECT_EQ(resultOf(INFINITE, second.Get()), 1);
    first.Set();
    EXPECT_EQ(resultOf(INFINITE, second.Get()), 0);
    EXPECT_EQ(resultOf(INFINITE, nullptr), clsThreadBase::kWaitFailed);

    // The stop event precedes the given events.
    ASSERT_TRUE(thread.ThreadStart(THREAD_PRIORITY_NORMAL));
    WaitForSingleObject(isReady.Get(), kPatience);
    EXPECT_EQ(thread.ThreadEnd(false, 0, false), 1); // sets the stop event and doesn't wait for the thread
    go.Set();
    EXPECT_EQ(thread.ThreadEnd(false, INFINITE, true), 1);
    EXPECT_EQ(thread.ExitCode(), 1u);
}

TEST(ThreadBase, KindsOfWaits)
{
    for (const bool pumps : {false, true})
        for (const bool isAlertable : {false, true})
        {
            std::atomic<int> forMessage = 99, forCall = 99;
            TestThread thread(
                [&](TestThread& self)
                {
                    MSG message;
                    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
                    PostThreadMessageW(GetCurrentThreadId(), WM_APP, 0, 0);
                    int result = 0;
                    EXPECT_TRUE(self.WaitForEvents(50, result, 0));
                    forMessage = result;
                    PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);
                    QueueUserAPC([](ULONG_PTR) {}, GetCurrentThread(), 0);
                    EXPECT_TRUE(self.WaitForEvents(50, result, 0));
                    forCall = result;
                    return 0u;
                });
            thread.waitsPump = pumps;
            thread.waitsAlertable = isAlertable;
            ASSERT_TRUE(thread.ThreadStart(THREAD_PRIORITY_NORMAL));
            ASSERT_TRUE(WaitUntil([&] { return thread.GetThreadState() == State::Exited; }));
            EXPECT_EQ(forMessage, pumps ? clsThreadBase::kMessageArrived : clsThreadBase::kTimedOut);
            EXPECT_EQ(forCall, isAlertable ? clsThreadBase::kCompletionRoutineRan : clsThreadBase::kTimedOut);
        }
}

#if !defined(_WIN32) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // memory can be limited
TEST(ThreadBase, AStartThatFails)
{
    TestThread thread(&UntilStopped);
    thread.stackSize = 0xFFFFF000;
    const DebugLines lines;
    {
        const MemoryBound bound(1 << 30);
        EXPECT_FALSE(thread.ThreadStart(THREAD_PRIORITY_NORMAL));
    }
    const String start(String::kFormatted,
        L"clsThreadBase(%hs)::ThreadStart: Cannot create thread (stack size 4194300 KiB): errno=%d, GetLastError()=",
        thread.Name(), EAGAIN);
    EXPECT_EQ(thread.GetLastErrorString().View().substr(0, start.Length()), start.View());
    EXPECT_GT(thread.GetLastErrorString().Length(), start.Length());
    EXPECT_STREQ(lines.Only(), L"ERR: " + thread.GetLastErrorString());
    EXPECT_EQ(thread.GetThreadState(), State::None);
    EXPECT_EQ(thread.ThreadEnd(false, INFINITE, true), 1);
    thread.stackSize = 0x4000;
    EXPECT_TRUE(thread.ThreadStart(THREAD_PRIORITY_NORMAL));
}
#endif

} // namespace
