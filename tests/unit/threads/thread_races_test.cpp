// Starts, waits and ends from several threads at once. Of most use under the thread sanitizer.
#include "threads_support.h"

#include <thread>
#include <vector>

using namespace qx;
using namespace qxtest;

namespace
{

TEST(ThreadRaces, ManyStartAndEndOneThread)
{
    std::atomic<int> running = 0;
    std::atomic<int> mostRunning = 0;
    std::atomic<int> runs = 0;
    {
        TestThread thread(
            [&](TestThread& self)
            {
                const int now = ++running;
                for (int most = mostRunning; now > most && !mostRunning.compare_exchange_weak(most, now);)
                {
                }
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
    EXPECT_EQ(mostRunning, 1);
    EXPECT_GT(runs, 0);
}

TEST(ThreadRaces, EveryThreadEndsWithItsObject)
{
    std::atomic<int> runs = 0;
    std::vector<std::thread> callers;
    for (int caller = 0; caller < 4; ++caller)
        callers.emplace_back(
            [&runs]
            {
                for (int round = 0; round < 40; ++round)
                {
                    TestThread thread(
                        [&runs](TestThread& self)
                        {
                            ++runs;
                            return UntilStopped(self);
                        });
                    EXPECT_TRUE(thread.ThreadStart(THREAD_PRIORITY_NORMAL));
                    EXPECT_EQ(thread.ThreadEnd(false, INFINITE, true), 1);
                    EXPECT_EQ(thread.ExitCode(), 7u);
                }
            });
    for (std::thread& caller : callers)
        caller.join();
    EXPECT_EQ(runs, 160);
}

} // namespace
