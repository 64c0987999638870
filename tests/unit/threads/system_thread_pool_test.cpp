#include "threads/system_thread_pool.h"

#include "threads_support.h"

#include <memory>

using namespace qx;
using namespace qxtest;

namespace
{

class Once final : public clsThreadPoolWorkerBaseRunOnce
{
public:
    Once(clsThreadPool& pool, std::function<void(Once&)> run)
        : clsThreadPoolWorkerBaseRunOnce(pool),
          _run(std::move(run))
    {
        Submit();
    }
    ~Once() override { Finish(); }

    void Run() override { _run(*this); }
    using clsThreadPoolWorkerBaseRunOnce::MayRunLong;

private:
    const std::function<void(Once&)> _run;
};

TEST(SystemThreadPool, RunsOnceOnAThreadOfItsOwn)
{
    clsThreadPool pool;
    ASSERT_TRUE(pool);
    std::atomic<int> runs = 0;
    std::atomic<DWORD> thread = 0;
    const Once work(pool,
        [&](Once& self)
        {
            self.MayRunLong();
            thread = GetCurrentThreadId();
            ++runs;
        });
    EXPECT_TRUE(WaitUntil([&] { return runs == 1; }));
    EXPECT_NE(thread, GetCurrentThreadId());
}

TEST(SystemThreadPool, TheEndWaitsForWhatRuns)
{
    clsThreadPool pool;
    std::atomic<bool> hasBegun = false, hasEnded = false;
    {
        const Once work(pool,
            [&](Once&)
            {
                hasBegun = true;
                Sleep(50);
                hasEnded = true;
            });
        EXPECT_TRUE(WaitUntil([&] { return hasBegun.load(); }));
    }
    EXPECT_TRUE(hasEnded);
}

TEST(SystemThreadPool, MayDeleteItself)
{
    std::atomic<bool> isGone = false, hasEnded = false;
    {
        clsThreadPool pool;
        auto work = std::make_unique<Once>(pool,
            [&](Once& self)
            {
                std::atomic<bool>& gone = isGone; // this function goes with the object
                std::atomic<bool>& ended = hasEnded;
                std::unique_ptr<Once>(&self).reset();
                gone = true;
                Sleep(50);
                ended = true;
            });
        work.release();
        EXPECT_TRUE(WaitUntil([&] { return isGone.load(); }));
    }
    EXPECT_TRUE(hasEnded) << "the pool's end waits for it all the same";
}

} // namespace
