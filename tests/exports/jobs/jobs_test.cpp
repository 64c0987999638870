// Job pools under load: each job is reported once, and each reference is released.
#include <qxut23/jobs.h>

#include "support/run_in_threads.h"
#include "support/test_jobs.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <thread>
#include <vector>

#include <pthread.h>

using namespace qxtest;

namespace
{

std::int32_t Add(HUTTHREADPOOL pool, TestJob* job, IUTThreadedJobHost* host)
{
    const std::int32_t result = UtilThreadPoolAdd(pool, L"job", reinterpret_cast<IUnknown*>(job), host);
    job->Release();
    return result;
}

class JobPools : public ::testing::Test
{
protected:
    ~JobPools() override
    {
        EXPECT_EQ(counts.alive, 0);
        EXPECT_EQ(counts.takenAgain, 0);
        EXPECT_EQ(taking.references, 1u);
    }

    JobCounts counts;
    TestHost taking{CountAndAnswer(counts, 0)};
};

#ifndef _WIN32 // On windows, the end of a thread doesn't unwind its stack.
// A thread may end in a callback: the job counts as done, and the pool can be used and closed.
TEST_F(JobPools, ThreadsThatEndInCallbacks)
{
    using Body = std::function<void()>;
    const auto runOnThread = [](const Body& body)
    {
        std::thread(
            [&body]
            {
                body();
                ADD_FAILURE() << "the thread did not end in the callback";
            })
            .join();
    };
    const auto cancelThread = []
    {
        pthread_cancel(pthread_self());
        pthread_testcancel();
    };
    for (const Body& end : {Body([] { pthread_exit(nullptr); }), Body(cancelThread)})
    {
        const HUTTHREADPOOL pool = UtilThreadPoolOpen(2, L"pool");
        Add(pool, new TestJob(counts, end), &taking); // on a worker
        runOnThread(
            [&]
            {
                Add(pool, new TestJob(counts, end, 0, false), nullptr);
                UtilThreadPoolFinalize(pool, &taking);
            });
        TestHost ending{[&](const wchar_t*, IUTThreadedJob*)
            {
                end();
                return 0;
            }};
        runOnThread(
            [&]
            {
                Add(pool, new TestJob(counts, {}, 0, false), &ending); // the host is called with the pool's lock held
                UtilThreadPoolFinalize(pool, &taking);
            });
        Add(pool, new TestJob(counts), &taking);
        EXPECT_EQ(UtilThreadPoolFinalize(pool, &taking), 0);
        UtilThreadPoolClose(pool);
        EXPECT_EQ(ending.references, 1u);
    }
}
#endif

TEST_F(JobPools, Arguments)
{
    EXPECT_EQ(UtilThreadPoolAdd(nullptr, L"", nullptr, nullptr), QXUT_E_INVALIDARG);
    EXPECT_EQ(UtilThreadPoolAbort(nullptr, 0), QXUT_E_INVALIDARG);
    EXPECT_EQ(UtilThreadPoolFinalize(nullptr, &taking), QXUT_E_INVALIDARG);
    UtilThreadPoolClose(nullptr);
    const HUTTHREADPOOL pool = UtilThreadPoolOpen(0, L"pool");
    ASSERT_NE(pool, nullptr);
    EXPECT_EQ(UtilThreadPoolFinalize(pool, nullptr), QXUT_E_INVALIDARG);
    EXPECT_EQ(UtilThreadPoolAdd(pool, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(UtilThreadPoolFinalize(pool, &taking), 0);
    EXPECT_EQ(counts.told, 1);
    EXPECT_EQ(UtilThreadPoolAbort(pool, 0), 0);
    EXPECT_EQ(Add(pool, new TestJob(counts), &taking), 0);
    EXPECT_EQ(counts.alive, 0);
    UtilThreadPoolClose(pool);
}

// A tree of jobs, each of which adds two more; each notified host adds another job. Some jobs run on the caller's
// thread, and some have no host.
TEST_F(JobPools, JobsAndHostsThatAddJobs)
{
    const auto wholeLife = [&]
    {
        const HUTTHREADPOOL pool = UtilThreadPoolOpen(3, L"pool");
        TestHost adding(
            [&](const wchar_t*, IUTThreadedJob*)
            {
                ++counts.told;
                Add(pool, new TestJob(counts), &taking);
                return 0;
            });
        const std::function<void(int)> grow = [&](int depth)
        {
            const auto work = [&grow, depth]
            {
                for (int child = 0; depth > 0 && child < 2; ++child)
                    grow(depth - 1);
            };
            Add(pool, new TestJob(counts, work, 0, depth % 3 != 0), depth % 2 == 0 ? &adding : nullptr);
        };
        grow(10);
        EXPECT_EQ(UtilThreadPoolFinalize(pool, &taking), 0);
        EXPECT_EQ(adding.references, 1u);
        UtilThreadPoolClose(pool);
    };
    int expected = 0;
    for (const unsigned pools : {1u, 12u})
    {
        RunInThreads(pools, [&](unsigned) { wholeLife(); });
        expected += (2047 + 1365) * static_cast<int>(pools); // all jobs, plus one for each job at an even depth
        EXPECT_EQ(counts.runs, expected);
        EXPECT_EQ(counts.told, expected);
    }
}

// Whenever the abort happens, a job either runs once and its host is notified once, or the job is dropped.
TEST_F(JobPools, AddAbortAndFinalizeFromSeveralThreads)
{
    constexpr int kJobs = 300;
    for (int round = 0; round < 20; ++round)
    {
        const HUTTHREADPOOL pool = UtilThreadPoolOpen(2, L"pool");
        JobCounts hosted, hostless;
        TestHost declines(CountAndAnswer(hosted, 1));
        TestHost finalizes(
            [&](const wchar_t*, IUTThreadedJob* job)
            {
                auto* const back = static_cast<TestJob*>(job);
                counts.takenAgain += !back->HasRun() || !back->Take();
                return 0;
            });
        std::vector<std::jthread> threads;
        for (const bool hasHost : {true, false})
        {
            threads.emplace_back(
                [&, hasHost]
                {
                    for (int i = 0; i < kJobs; ++i)
                        Add(pool, new TestJob(hasHost ? hosted : hostless, {}, i % 3, i % 7 != 0),
                            hasHost ? &declines : nullptr);
                });
            threads.emplace_back([&] { EXPECT_EQ(UtilThreadPoolFinalize(pool, &finalizes), 0); });
            threads.emplace_back(
                [&, hasHost]
                {
                    Sleep(static_cast<DWORD>(round % 5));
                    EXPECT_EQ(UtilThreadPoolAbort(pool, hasHost), 0);
                });
        }
        threads.clear(); // waits for them
        EXPECT_EQ(UtilThreadPoolFinalize(pool, &finalizes), 0);
        UtilThreadPoolClose(pool);
        for (const JobCounts* added : {&hosted, &hostless})
        {
            EXPECT_EQ(added->alive, 0);
            EXPECT_EQ(added->runs + added->dropped, kJobs);
        }
        EXPECT_EQ(hosted.told, hosted.runs);
        EXPECT_EQ(declines.references, 1u);
        EXPECT_EQ(finalizes.references, 1u);
    }
}

} // namespace
