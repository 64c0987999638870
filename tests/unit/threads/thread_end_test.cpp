// The ways to end a thread: by request, by force, not at all; and the messages about them.
#include "core/thread_names.h"
#include "support/run_in_threads.h"
#include "threads_support.h"

using namespace qx;
using namespace qxtest;

namespace
{

using State = clsThreadBase::State;

TEST(ThreadEnd, FromTheThreadItselfOnlySetsTheStopEvent)
{
    std::atomic<int> inner = -1;
    TestThread thread(
        [&inner](TestThread& self)
        {
            inner = self.ThreadEnd(false, INFINITE, true);
            return UntilStopped(self);
        });
    ASSERT_TRUE(thread.ThreadStart(THREAD_PRIORITY_NORMAL));
    ASSERT_TRUE(WaitUntil([&] { return thread.GetThreadState() == State::Exited; }));
    EXPECT_EQ(inner, 1);
    const UserIs developer(L"qvx"); // logs the times
    const DebugLines lines;
    EXPECT_EQ(thread.ThreadEnd(false, INFINITE, true), 1);
    EXPECT_EQ(thread.ExitCode(), 7u);
    const String start(String::kFormatted, L"thread '%hs' was alive for ", thread.Name());
    EXPECT_EQ(lines.Only().View().substr(0, start.Length()), start.View());
    EXPECT_EQ(lines.CountOf(L" ms (UserMode: "), 1u);
}

TEST(ThreadEnd, AThreadThatHangs)
{
    const LeaksAllowed leaksAllowed;
    MSG message;
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
    for (const bool pumps : {false, true})
    {
        TestThread thread(&Hang);
        thread.endPumps = pumps;
        ASSERT_TRUE(thread.ThreadStart(THREAD_PRIORITY_NORMAL));
        PostThreadMessageW(GetCurrentThreadId(), WM_APP, 0, 0);
        EXPECT_EQ(thread.ThreadEnd(false, 50, false), 1);
        EXPECT_EQ(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE, !pumps);
        EXPECT_EQ(thread.GetThreadState(), State::Running); // the handle is kept
        const ULONGLONG begin = GetTickCount64();
        EXPECT_EQ(thread.ThreadEnd(false, 300, true), 0);
        EXPECT_GE(GetTickCount64() - begin, 280u); // minus the resolution of the clock
        EXPECT_EQ(thread.GetThreadState(), State::None);
        EXPECT_EQ(thread.ExitCode(), 0u);
    }
}

#ifndef _WIN32 // the system ends a thread anywhere
TEST(ThreadEnd, AThreadInACriticalSectionHasToLeaveItFirst)
{
    const LeaksAllowed leaksAllowed;
    clsCriticalSection section;
    clsEvent isInside, go;
    TestThread thread(
        [&](TestThread&)
        {
            const clsCriticalSectionLock lock(section);
            isInside.Set();
            return WaitForSingleObject(go.Get(), INFINITE);
        });
    ASSERT_TRUE(thread.ThreadStart(THREAD_PRIORITY_NORMAL));
    ASSERT_EQ(WaitForSingleObject(isInside.Get(), kPatience), WAIT_OBJECT_0);
    const UserIs developer(L"qvx");
    const DebugLines lines;
    EXPECT_EQ(thread.ThreadEnd(false, 50, true), 0);
    EXPECT_EQ(lines.CountOf(L"' forced to exit! (UserMode: "), 1u);
    EXPECT_FALSE(section.TryEnter());
    go.Set();
    section.Enter();
    section.Leave();
}
#endif

TEST(ThreadEnd, ASuspendedThread)
{
    const LeaksAllowed leaksAllowed;
    const auto suspend = [](TestThread& thread)
    {
        ASSERT_TRUE(thread.ThreadStart(THREAD_PRIORITY_NORMAL));
        const HANDLE handle = OpenThread(THREAD_SUSPEND_RESUME, FALSE, thread.ThreadId());
        EXPECT_EQ(SuspendThread(handle), 0u);
        CloseHandle(handle);
    };
    TestThread thread(&UntilStopped);
    suspend(thread);
    EXPECT_EQ(thread.ThreadEnd(true, INFINITE, false), 1); // kept, and still suspended
    EXPECT_EQ(thread.GetThreadState(), State::Running);
    EXPECT_EQ(thread.ThreadEnd(false, INFINITE, true), 1); // resumed
    EXPECT_EQ(thread.ExitCode(), 7u);
    suspend(thread);
    EXPECT_EQ(thread.ThreadEnd(true, INFINITE, true), 0); // immediately
    EXPECT_EQ(thread.ExitCode(), 0u);
}

// A second caller, or a call from within a message that the wait dispatches, doesn't wait.
TEST(ThreadEnd, WhileAnotherEndWaits)
{
    clsEvent isStopping, go;
    TestThread thread(
        [&](TestThread& self)
        {
            UntilStopped(self);
            isStopping.Set();
            WaitForSingleObject(go.Get(), INFINITE);
            return 3u;
        });
    ASSERT_TRUE(thread.ThreadStart(THREAD_PRIORITY_NORMAL));
    std::atomic<int> outer = -1;
    TestThread ender([&](TestThread&) { return outer = thread.ThreadEnd(false, INFINITE, true), 0u; });
    ASSERT_TRUE(ender.ThreadStart(THREAD_PRIORITY_NORMAL));
    ASSERT_EQ(WaitForSingleObject(isStopping.Get(), kPatience), WAIT_OBJECT_0);
    {
        const UserIs developer(L"qvx");
        const DebugLines lines;
        EXPECT_EQ(thread.ThreadEnd(false, INFINITE, true), 1);
        EXPECT_STREQ(lines.Only(), L"ups ;) some recursion in ThreadEnd()? Might be OK though ;)");
    }
    EXPECT_EQ(outer, -1);
    go.Set();
    EXPECT_EQ(ender.ThreadEnd(false, INFINITE, true), 1);
    EXPECT_EQ(outer, 1);
    EXPECT_EQ(thread.ExitCode(), 3u);
}

TEST(ThreadEnd, TheDestructorEndsWhatASubclassLeft)
{
    // Static, because members are destroyed before the base class ends the thread.
    static const DebugLines* output;
    static clsEvent isRunning;
    struct Careless : clsThreadBase
    {
        Careless() : clsThreadBase(L"Careless") {}
        unsigned ThreadProc() override
        {
            isRunning.Set();
            return WaitUntil([] { return output->Count() != 0; }) ? 0u : 1u;
        }
    };
    const DebugLines lines;
    output = &lines;
    String name;
    {
        Careless thread;
        name = String(String::kFormatted, L"%hs", thread.Name());
        ASSERT_TRUE(thread.ThreadStart(THREAD_PRIORITY_NORMAL));
        WaitForSingleObject(isRunning.Get(), kPatience);
    }
    EXPECT_EQ(lines.Only(),
        String(String::kFormatted,
            L"clsThreadBase(%s)::~clsThreadBase: warning: derived class does not end thread. I do it here - cross your "
            L"fingers that the derived class does not access any members in the thread function!!!",
            name.Text()));
}

// Several threads start, wait for, end and query a thread that ends by itself, and one that doesn't. Most useful under
// the thread sanitizer.
TEST(ThreadRaces, WhoeverComesStartsAndEndsOneThread)
{
    for (const bool isShort : {false, true})
    {
        std::atomic<int> running = 0, runs = 0;
        TestThread thread(
            [&](TestThread& self)
            {
                EXPECT_EQ(++running, 1);
                int result = 0;
                while (self.WaitForEvents(isShort ? 1 : INFINITE, result, 0) && !isShort)
                {
                }
                --running;
                return static_cast<unsigned>(++runs);
            });
        RunInThreads(4,
            [&thread](unsigned caller)
            {
                for (unsigned number = caller; number < 60 + caller; ++number)
                {
                    EXPECT_TRUE(thread.ThreadStart(THREAD_PRIORITY_NORMAL));
                    if (number % 3 == 0)
                        thread.GetThreadState(), TheThreadNames().Find(thread.ThreadId());
                    else
                        EXPECT_EQ(thread.ThreadEnd(number % 2 == 0, number % 3 == 1 ? INFINITE : 0, false), 1);
                }
            });
        EXPECT_EQ(thread.ThreadEnd(false, INFINITE, false), 1);
        EXPECT_EQ(thread.GetThreadState(), State::None);
        EXPECT_EQ(running, 0);
        EXPECT_GT(runs, 0);
        EXPECT_EQ(thread.ExitCode(), static_cast<unsigned>(runs));
    }
}

} // namespace
