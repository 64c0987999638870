// The markers that threads and jobs write.
#include "module/module_paths.h"
#include "support/fake_tracing.h"
#include "support/test_jobs.h"
#include "threads/port_job_dispatcher.h"
#include "threads_support.h"

#include <gmock/gmock.h>

using namespace qx;
using namespace qxtest;
using testing::ElementsAre;

namespace
{

// The name of a lane, which begins with the module's name.
std::string Lane(const wchar_t* name)
{
    return std::string((LibraryPaths().baseName + L"::" + name).NarrowText());
}

TEST(ThreadMarkers, TheLifeOfAThread)
{
    for (const wchar_t* const name : {L"W", L""})
    {
        FakeTracing tracing;
        TestThread thread([](TestThread&) { return 7u; }, name);
        ASSERT_TRUE(thread.ThreadStart(THREAD_PRIORITY_NORMAL));
        thread.ThreadEnd(false, INFINITE, true);
        const std::string lane = Lane(*name ? name : L"(thread)");
        EXPECT_THAT(tracing.Lines(), ElementsAre("- " + lane + ": starting", "- " + lane + ": ending, result=7"));
    }
    FakeTracing tracing(false);
    TestThread thread([](TestThread&) { return 7u; });
    tracing.Listen(true); // too late for the root
    ASSERT_TRUE(thread.ThreadStart(THREAD_PRIORITY_NORMAL));
    thread.ThreadEnd(false, INFINITE, true);
    EXPECT_EQ(tracing.registrations, 1u);
}

TEST(ThreadMarkers, JobsOfWorkers)
{
    FakeTracing tracing;
    JobCounts counts;
    {
        clsThreadedJobDispatcherUsingIoCompletionPort dispatcher(1, L"P");
        for (const bool onWorker : {true, false})
        {
            auto* const job = new TestJob(counts, {}, 0, onWorker);
            ThreadedJobs jobs;
            jobs.Emplace(L"100%n done", reinterpret_cast<IUnknown*>(job), nullptr);
            job->Release(); // now owned by the record
            dispatcher.AddJob(std::move(jobs));
            dispatcher.Finalize(nullptr);
        }
    }
    const std::string lane = Lane(L"P");
    EXPECT_EQ(counts.runs, 2);
    EXPECT_THAT(tracing.Lines(), ElementsAre("- " + lane + ": starting", "> " + lane + ": 100%n done", "< " + lane,
                                     "- " + lane + ": ending, result=0"));
}

} // namespace
