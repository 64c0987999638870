// Tiny jobs, compared with GLib's thread pool: a million jobs are added, run by two threads, and returned. "back"
// returns each job to the thread that added it; "taken" passes it to a callback on the worker.
#include <qxut23/jobs.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdint>

#include <glib.h>

namespace
{

constexpr std::uint32_t jobCount = 1'000'000;
constexpr int workers = 2;
constexpr QXWCHAR name[] = {'j', 'o', 'b', 0};

class Job final : public IUTThreadedJob
{
public:
    explicit Job(std::uint32_t number) : _number(number) {}
    virtual ~Job() = default;

    QXHRESULT QXUT_COMCALL QueryInterface(const _GUID&, void** object) override
    {
        *object = static_cast<IUTThreadedJob*>(this);
        AddRef();
        return 0;
    }
    QXULONG QXUT_COMCALL AddRef() override { return _references.fetch_add(1, std::memory_order_relaxed) + 1; }
    QXULONG QXUT_COMCALL Release() override
    {
        const QXULONG left = _references.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0)
            delete this;
        return left;
    }
    QXHRESULT QXUT_COMCALL Run() override
    {
        result = _number * 3;
        return 0;
    }
    QXHRESULT QXUT_COMCALL GetResult() override { return 0; }
    std::int32_t QXUT_COMCALL GetGroup() override { return 0; }
    std::int32_t QXUT_COMCALL CanRunOnWorker() override { return 1; }

    std::uint32_t result = 0;

private:
    std::atomic<QXULONG> _references = 1;
    const std::uint32_t _number;
};

class Host final : public IUTThreadedJobHost
{
public:
    QXHRESULT QXUT_COMCALL QueryInterface(const _GUID&, void** object) override { return *object = nullptr, -1; }
    QXULONG QXUT_COMCALL AddRef() override { return 2; }
    QXULONG QXUT_COMCALL Release() override { return 1; }
    std::int32_t QXUT_COMCALL OnJobDone(const QXWCHAR*, IUTThreadedJob* job) override
    {
        sum += static_cast<Job*>(job)->result;
        ++count;
        return 0;
    }
    std::int32_t QXUT_COMCALL WaitForJobs(void*) override { return 1; }

    std::uint64_t sum = 0;
    std::uint32_t count = 0;
};

void RunOurs(benchmark::State& state, bool isTaken)
{
    for (auto _ : state)
    {
        Host host;
        const HUTTHREADPOOL pool = UtilThreadPoolOpen(workers, name);
        for (std::uint32_t number = 0; number < jobCount; ++number)
        {
            auto* const job = new Job(number);
            UtilThreadPoolAdd(pool, name, reinterpret_cast<IUnknown*>(job), isTaken ? &host : nullptr);
            job->Release();
        }
        UtilThreadPoolFinalize(pool, &host);
        UtilThreadPoolClose(pool);
        if (host.count != jobCount)
            state.SkipWithError("jobs are missing");
        benchmark::DoNotOptimize(host.sum);
    }
}

// A job for the peer.
struct Item
{
    std::uint32_t number;
    std::uint32_t result;
    const char* name;
};

void BackToQueue(gpointer data, gpointer results)
{
    auto* const item = static_cast<Item*>(data);
    item->result = item->number * 3;
    g_async_queue_push(static_cast<GAsyncQueue*>(results), item);
}

struct Taken
{
    GMutex lock;
    std::uint64_t sum;
    std::uint32_t count;
};

void TakeAtOnce(gpointer data, gpointer context)
{
    auto* const item = static_cast<Item*>(data);
    item->result = item->number * 3;
    auto* const taken = static_cast<Taken*>(context);
    g_mutex_lock(&taken->lock);
    taken->sum += item->result;
    ++taken->count;
    g_mutex_unlock(&taken->lock);
    delete item;
}

void PushAll(GThreadPool* pool)
{
    for (std::uint32_t number = 0; number < jobCount; ++number)
        g_thread_pool_push(pool, new Item{number, 0, "job"}, nullptr);
}

void BackGlib(benchmark::State& state)
{
    for (auto _ : state)
    {
        GAsyncQueue* const results = g_async_queue_new();
        GThreadPool* const pool = g_thread_pool_new(&BackToQueue, results, workers, TRUE, nullptr);
        PushAll(pool);
        std::uint64_t sum = 0;
        for (std::uint32_t count = 0; count < jobCount; ++count)
        {
            auto* const item = static_cast<Item*>(g_async_queue_pop(results));
            sum += item->result;
            delete item;
        }
        g_thread_pool_free(pool, FALSE, TRUE);
        g_async_queue_unref(results);
        benchmark::DoNotOptimize(sum);
    }
}

void TakenGlib(benchmark::State& state)
{
    for (auto _ : state)
    {
        Taken taken{};
        g_mutex_init(&taken.lock);
        GThreadPool* const pool = g_thread_pool_new(&TakeAtOnce, &taken, workers, TRUE, nullptr);
        PushAll(pool);
        g_thread_pool_free(pool, FALSE, TRUE);
        g_mutex_clear(&taken.lock);
        if (taken.count != jobCount)
            state.SkipWithError("jobs are missing");
        benchmark::DoNotOptimize(taken.sum);
    }
}

void BackOurs(benchmark::State& state)
{
    RunOurs(state, false);
}

void TakenOurs(benchmark::State& state)
{
    RunOurs(state, true);
}

} // namespace

BENCHMARK(BackOurs)->Name("jobs_back/ours")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BackGlib)->Name("jobs_back/glib")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(TakenOurs)->Name("jobs_taken/ours")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(TakenGlib)->Name("jobs_taken/glib")->Unit(benchmark::kMillisecond)->UseRealTime();
