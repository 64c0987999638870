// Starts, waits and ends from several threads at once. Of most use under the thread sanitizer.
#include "core/thread_names.h"
#include "threads_support.h"

#include <thread>
#include <vector>

using namespace qx;
using namespace qxtest;

namespace
{

TEST(ThreadRaces, ManyStartAndEndOneThread)
{
    std::atomic<int> running = 0, runs = 0;
    {
        TestThread thread(
            [&](TestThread& self)
            {
                EXPECT_EQ(++running, 1);
                ++runs;
                int result = 0;
                while (self.WaitForEvents(1, result, 0))
                {
                }
                --running;
                return 1u;
            });
        std::vector<std::thread> callers;
        for (int caller = 0; caller < 4; ++caller)
            callers.emplace_back(
                [&thread, caller]
                {
                    for (int round = 0; round < 50; ++round)
                    {
                        EXPECT_TRUE(thread.ThreadStart(THREAD_PRIORITY_NORMAL));
                        if ((round + caller) % 3 == 0)
                            thread.GetThreadState();
                        EXPECT_EQ(thread.ThreadEnd(round % 2 == 0, INFINITE, false), 1);
                    }
                });
        for (std::thread& caller : callers)
            caller.join();
        thread.ThreadEnd(false, INFINITE, true);
        EXPECT_EQ(thread.GetThreadState(), clsThreadBase::State::None);
    }
    EXPECT_EQ(running, 0);
    EXPECT_GT(runs, 0);
}

// Threads that end by themselves, restarted, waited for and asked after by whoever comes.
TEST(ThreadRaces, ShortLivesAreRestarted)
{
    std::atomic<int> running = 0, runs = 0;
    clsEvent given;
    given.Set();
    TestThread thread(
        [&](TestThread& self)
        {
            EXPECT_EQ(++running, 1);
            int result = 0;
            const bool goesOn = self.WaitForEvents(1, result, 1, given.Get());
            EXPECT_EQ(result, goesOn ? 0 : clsThreadBase::stopRequested);
            --running;
            return static_cast<unsigned>(++runs);
        },
        L"Short");
    std::vector<std::thread> callers;
    for (int caller = 0; caller < 4; ++caller)
        callers.emplace_back(
            [&thread, caller]
            {
                for (int round = 0; round < 60; ++round)
                    switch ((round + caller) % 4)
                    {
                    case 0:
                        thread.ThreadEnd(false, 0, false);
                        break;
                    case 1:
                        thread.GetThreadState();
                        TheThreadNames().Find(thread.ThreadId());
                        break;
                    default:
                        EXPECT_TRUE(thread.ThreadStart(THREAD_PRIORITY_NORMAL));
                    }
            });
    for (std::thread& caller : callers)
        caller.join();
    EXPECT_EQ(thread.ThreadEnd(false, INFINITE, false), 1);
    EXPECT_EQ(running, 0);
    EXPECT_GT(runs, 0);
    EXPECT_EQ(thread.ExitCode(), static_cast<unsigned>(runs));
}

} // namespace
