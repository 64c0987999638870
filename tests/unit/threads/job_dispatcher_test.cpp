// The job dispatcher: lists, workers, and the paths of a job.
#include "support/test_jobs.h"
#include "threads/port_job_dispatcher.h"
#include "threads/processor_count.h"
#include "threads_support.h"

#include <memory>
#include <thread>
#include <tuple>
#include <vector>

using namespace qx;
using namespace qxtest;

namespace
{

using Dispatcher = clsThreadedJobDispatcherUsingIoCompletionPort;

ThreadedJobs MakeJob(TestJob* job, IUTThreadedJobHost* host, const wchar_t* name = L"job")
{
    ThreadedJobs record;
    record.Emplace(name, reinterpret_cast<IUnknown*>(job), host);
    if (job)
        job->Release(); // now owned by the record
    return record;
}

class JobDispatcher : public ::testing::Test
{
protected:
    ~JobDispatcher() override
    {
        EXPECT_EQ(counts.alive, 0);
        EXPECT_EQ(counts.takenAgain, 0);
        EXPECT_EQ(clsUTThreadedJob::LivingObjects(), 0);
        EXPECT_EQ(host.references, 1u);
        EXPECT_EQ(declining.references, 1u);
    }

    JobCounts counts;
    TestHost host{CountAndAnswer(counts, 0)}, declining{CountAndAnswer(counts, 1)};
    clsEvent go;
    const TestJob::Work hold = [this]
    {
        WaitForSingleObject(go.Get(), kPatience);
    };
};

TEST(Workers, HowMany)
{
    constexpr std::tuple<unsigned, unsigned, int, unsigned> kCases[] = {{0, 1, 1, 1}, {0, 2, 1, 1}, {0, 8, 10, 7},
        {0, 8, 11, 2}, {0, 2, 11, 1}, {5, 1, 10, 5}, {5, 1, 11, 2}, {1, 8, 11, 1}};
    for (const auto& [wanted, processors, dispatchers, expected] : kCases)
        EXPECT_EQ(MaximumWorkers(wanted, processors, dispatchers), expected);
    EXPECT_GE(ProcessorCount(), 1u);

    std::vector<std::unique_ptr<Dispatcher>> pools;
    for (int i = 0; i < 11; ++i)
        pools.push_back(std::make_unique<Dispatcher>(3, L"pool"));
    EXPECT_EQ(pools[9]->MaximumWorkers(), 3u);
    EXPECT_EQ(pools[10]->MaximumWorkers(), 2u);
    pools.resize(9);
    EXPECT_EQ(Dispatcher(3, L"pool").MaximumWorkers(), 3u);
}

TEST_F(JobDispatcher, WorkersComeWithTheJobsThatNeedThem)
{
    Dispatcher pool(2, L"pool");
    EXPECT_EQ(pool.WorkerCount(), 0u);
    for (const std::size_t workers : {1u, 1u, 2u, 2u})
    {
        pool.AddJob(MakeJob(new TestJob(counts, hold), &host));
        EXPECT_EQ(pool.WorkerCount(), workers);
        EXPECT_TRUE(WaitUntil([&] { return counts.runs != 0; })); // the second job is queued by now
    }
    EXPECT_FALSE(pool.IsIdle());
    go.Set();
    pool.Finalize(&host);
    EXPECT_TRUE(pool.IsIdle());
    EXPECT_EQ(pool.JobsHandedOut(), 4);
    EXPECT_GE(pool.WaitTime(), 0);
    EXPECT_EQ(counts.told, 4);
}

TEST_F(JobDispatcher, WhoIsTold)
{
    Dispatcher pool(2, L"pool");
    const DWORD caller = GetCurrentThreadId();
    std::vector<std::wstring_view> back;
    TestHost finalizing(
        [&](const wchar_t* name, IUTThreadedJob* job)
        {
            EXPECT_EQ(GetCurrentThreadId(), caller);
            EXPECT_EQ(job == nullptr, *name == L'n' || *name == 0);
            back.push_back(*name == L'n' ? L"none" : *name == L'd' ? L"declined" : L"hostless");
            return 1; // ignored here
        });
    finalizing.letsLibraryWait = false;
    pool.AddJob(MakeJob(new TestJob(counts), nullptr, L"hostless"));
    pool.AddJob(MakeJob(new TestJob(counts), &declining, L"declined"));
    pool.AddJob(MakeJob(new TestJob(counts), &host, L"taken"));
    auto* const stranger = new TestJob(counts);
    stranger->offersInterface = false;
    pool.AddJob(MakeJob(stranger, &declining, L"none"));
    pool.AddJob(MakeJob(nullptr, nullptr, nullptr));
    pool.Finalize(&finalizing);
    EXPECT_EQ(counts.told, 3); // by their own hosts
    EXPECT_EQ(counts.runs, 3);
    EXPECT_EQ(back.size(), 4u);
}

TEST_F(JobDispatcher, JobsForTheCaller)
{
    Dispatcher pool(2, L"pool");
    const DWORD caller = GetCurrentThreadId();
    std::vector<int> order;
    for (int i = 0; i < 3; ++i)
    {
        const auto work = [&, i]
        {
            EXPECT_EQ(GetCurrentThreadId(), caller);
            order.push_back(i);
        };
        pool.AddJob(MakeJob(new TestJob(counts, work, 0, false), i == 1 ? &host : &declining));
    }
    EXPECT_EQ(pool.WorkerCount(), 0u);
    pool.AddJob(MakeJob(new TestJob(counts), &host)); // its worker leaves the caller's jobs alone
    EXPECT_TRUE(WaitUntil([&] { return counts.told == 1; }));
    EXPECT_EQ(counts.runs, 1);
    pool.Finalize(&declining);
    EXPECT_EQ(order, (std::vector{0, 1, 2}));
    EXPECT_EQ(counts.told, 1 + 3 + 2); // the two declined jobs are reported once more
}

TEST_F(JobDispatcher, NoFinalizeEndsBeforeAJobThatAnotherOneRuns)
{
    Dispatcher pool(1, L"pool");
    clsEvent isRunning;
    std::atomic<bool> hasEnded = false;
    const auto work = [&]
    {
        isRunning.Set();
        Sleep(50);
        pool.Finalize(&host); // a nested call doesn't wait for the job that calls it
        hasEnded = true;
    };
    pool.AddJob(MakeJob(new TestJob(counts, work, 0, false), &host));
    std::thread first([&] { pool.Finalize(&host); });
    WaitForSingleObject(isRunning.Get(), kPatience);
    pool.Finalize(&host);
    EXPECT_TRUE(hasEnded);
    first.join();
}

TEST_F(JobDispatcher, AbortOfAGroup)
{
    Dispatcher pool(1, L"pool");
    pool.AddJob(MakeJob(new TestJob(counts, hold, 5), &host)); // runs to its end
    EXPECT_TRUE(WaitUntil([&] { return counts.runs == 1; }));
    for (const int group : {5, 4, 0})
    {
        pool.AddJob(MakeJob(new TestJob(counts, {}, group), &host));
        pool.AddJob(MakeJob(new TestJob(counts, {}, group, false), &host));
    }
    EXPECT_EQ(counts.alive, 7);
    pool.Abort(5);
    EXPECT_EQ(counts.alive, 5);
    EXPECT_TRUE(pool.IsAborted());
    EXPECT_FALSE(pool.JobsDone(5)); // it is still running
    pool.Abort(0);                  // too late
    EXPECT_EQ(counts.alive, 5);
    pool.AddJob(MakeJob(new TestJob(counts), &host));
    EXPECT_EQ(counts.alive, 5);
    go.Set();
    EXPECT_TRUE(WaitUntil([&] { return pool.JobsDone(5); }));
    pool.Finalize(&host);
    EXPECT_EQ(counts.runs, 5);
    EXPECT_EQ(counts.told, 5);

    pool.ResetAbort();
    pool.AddJob(MakeJob(new TestJob(counts), nullptr));
    EXPECT_TRUE(WaitUntil([&] { return counts.runs == 6; }));
    EXPECT_FALSE(pool.JobsDone(0));
    pool.Abort(0); // drops the finished job
    EXPECT_TRUE(WaitUntil([&] { return pool.IsIdle() || (pool.ResetAbort(), pool.Abort(0), false); }));
    EXPECT_EQ(counts.told, 5);
}

TEST_F(JobDispatcher, CloseWaitsForWhatRuns)
{
    const auto keepBusyUntilAbort = [this](Dispatcher& pool)
    {
        const int before = counts.runs;
        const auto work = [&pool]
        {
            WaitUntil([&pool] { return pool.IsAborted(); });
            Sleep(30);
        };
        pool.AddJob(MakeJob(new TestJob(counts, work), nullptr));
        EXPECT_TRUE(WaitUntil([&] { return counts.runs != before; }));
    };
    {
        Dispatcher pool(1, L"pool");
        keepBusyUntilAbort(pool);
        for (int i = 0; i < 5; ++i)
            pool.AddJob(MakeJob(new TestJob(counts, {}, 0, i % 2 == 0), &host));
        pool.Close();
        EXPECT_EQ(counts.runs, 1);
        EXPECT_EQ(counts.alive, 0);
    }
    // The abort of a group doesn't affect the other jobs.
    {
        Dispatcher pool(1, L"pool");
        keepBusyUntilAbort(pool);
        pool.AddJob(MakeJob(new TestJob(counts, {}, 3), &host));
        pool.AddJob(MakeJob(new TestJob(counts, {}, 4), &host));
        pool.AddJob(MakeJob(new TestJob(counts, {}, 4, false), &declining));
        pool.Abort(3);
        pool.Close();
        EXPECT_EQ(counts.runs, 4);
        EXPECT_EQ(counts.told, 2);
    }
    const ULONGLONG begin = GetTickCount64();
    Dispatcher(1, L"pool").Close();
    Dispatcher pool(1, L"pool");
    pool.Finalize(&host);
    EXPECT_LT(GetTickCount64() - begin, 900u); // there is nothing to wait for
    EXPECT_EQ(host.waits, 1);                  // called once, as at the end of any pass
}

// A thread that releases a job must not delay queued or running jobs.
TEST_F(JobDispatcher, AReleaseMayTakeAnyTime)
{
    clsEvent isReleasing;
    bool othersWentOn = false;
    const auto slowAtItsEnd = [&](int told)
    {
        std::shared_ptr<void> end(nullptr,
            [&, told](void*)
            {
                isReleasing.Set();
                othersWentOn = WaitUntil([&] { return counts.told == told; });
            });
        return new TestJob(counts, [this, end = std::move(end)] { hold(); });
    };
    const auto untilRelease = [&]
    {
        WaitForSingleObject(isReleasing.Get(), kPatience);
    };
    Dispatcher pool(2, L"pool");
    pool.AddJob(MakeJob(slowAtItsEnd(3), &host));
    pool.AddJob(MakeJob(new TestJob(counts, untilRelease), &host));
    pool.AddJob(MakeJob(new TestJob(counts), &host));
    go.Set();
    pool.Finalize(&host);
    EXPECT_TRUE(std::exchange(othersWentOn, false));

    isReleasing.Reset();
    Dispatcher aborted(1, L"pool");
    aborted.AddJob(MakeJob(new TestJob(counts, untilRelease), &host));
    EXPECT_TRUE(WaitUntil([&] { return counts.runs == 4; }));
    aborted.AddJob(MakeJob(slowAtItsEnd(4), &host));
    aborted.Abort(0);
    EXPECT_TRUE(othersWentOn);
}

} // namespace
