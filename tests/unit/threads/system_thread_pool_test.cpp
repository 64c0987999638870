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

TEST(SystemThreadPool, RunsOnceAndTheEndWaitsForIt)
{
    clsThreadPool pool;
    ASSERT_TRUE(pool);
    std::atomic<int> runs = 0;
    std::atomic<bool> hasEnded = false;
    {
        const Once work(pool,
            [&, caller = GetCurrentThreadId()](Once& self)
            {
                self.MayRunLong();
                EXPECT_NE(GetCurrentThreadId(), caller);
                ++runs;
                Sleep(50);
                hasEnded = true;
            });
        EXPECT_TRUE(WaitUntil([&] { return runs == 1; }));
    }
    EXPECT_TRUE(hasEnded);
    EXPECT_EQ(runs, 1);
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
