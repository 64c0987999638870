// Tracked heaps, compared with the C library's allocator. A step frees one of 10,000 live objects and allocates another
// one. bench_heap_asan is the same program under AddressSanitizer, whose malloc records call chains as debug objects
// do.
#include <qxut23/heaps.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <vector>

namespace
{

constexpr std::size_t kLive = 10'000;

struct Random
{
    std::uint32_t Next()
    {
        return static_cast<std::uint32_t>((state = state * 6364136223846793005u + 1442695040888963407u) >> 33);
    }

    std::uint64_t state = 15;
};

template <class Allocate, class Free>
void Run(benchmark::State& state, Allocate allocate, Free free)
{
    std::vector<void*> objects(kLive);
    Random random;
    for (void*& object : objects)
        object = allocate(16 + random.Next() % 497);
    for (auto _ : state)
    {
        void*& object = objects[random.Next() % kLive];
        free(object);
        object = allocate(16 + random.Next() % 497);
    }
    for (void* const object : objects)
        free(object);
}

// Calls itself so that the work runs in more frames.
[[gnu::noinline]] void RunDeeper(int frames, const std::function<void()>& work)
{
    if (frames > 0)
        RunDeeper(frames - 1, work);
    else
        work();
    benchmark::ClobberMemory(); // so that no call is the last instruction
}

void RunOnHeap(benchmark::State& state, std::uint32_t flags)
{
    const HUTHEAPJOB job = UtilJobOpen(nullptr, 0);
    const HUTHEAP heap = UtilHeapCreate(job, nullptr, flags);
    Run(
        state, [heap](std::uint32_t size) { return UtilHeapObjectAlloc(heap, size, 0); },
        [heap](void* object) { UtilHeapObjectFree(heap, object); });
    UtilHeapDelete(heap);
    UtilJobClose(job);
}

void RunOnMalloc(benchmark::State& state)
{
    Run(
        state, [](std::uint32_t size) { return std::malloc(size); }, [](void* object) { std::free(object); });
}

[[maybe_unused]] const bool registered = []
{
    benchmark::RegisterBenchmark("plain object/ours", [](benchmark::State& state) { RunOnHeap(state, 0); });
    benchmark::RegisterBenchmark("plain object/malloc", RunOnMalloc);
    benchmark::RegisterBenchmark(
        "debug object/ours", [](benchmark::State& state) { RunOnHeap(state, QXUT_HEAP_DEBUG); });
    benchmark::RegisterBenchmark("debug object/malloc", RunOnMalloc);
    constexpr int kFurtherFrames = 32;
    benchmark::RegisterBenchmark("debug object in 40 frames/ours",
        [](benchmark::State& state) { RunDeeper(kFurtherFrames, [&state] { RunOnHeap(state, QXUT_HEAP_DEBUG); }); });
    benchmark::RegisterBenchmark("debug object in 40 frames/malloc",
        [](benchmark::State& state) { RunDeeper(kFurtherFrames, [&state] { RunOnMalloc(state); }); });
    return true;
}();

} // namespace
