// Global memory with its handles and locks, and private heaps.
#include "support/run_in_threads.h"
#include "system_support.h"

#include <heapapi.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <random>
#include <thread>
#include <vector>

namespace
{

TEST(GlobalMemory, BlocksAndTheirLocks)
{
    const HGLOBAL memory = GlobalAlloc(GHND, 100);
    const auto data = static_cast<unsigned char*>(GlobalLock(memory));
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(std::vector<unsigned char>(data, data + 100), std::vector<unsigned char>(100, 0));
    EXPECT_EQ(GlobalLock(memory), data);
    EXPECT_EQ(GlobalFlags(memory) & GMEM_LOCKCOUNT, 2u);

    EXPECT_TRUE(GlobalUnlock(memory));
    // The last unlock also returns FALSE; only the last error distinguishes it from a failure.
    EXPECT_ERROR(NO_ERROR, GlobalUnlock(memory));
    EXPECT_ERROR(ERROR_NOT_LOCKED, GlobalUnlock(memory));
    GlobalLock(memory);
    EXPECT_EQ(GlobalFree(memory), nullptr) << "a locked block is freed as well";

    const HGLOBAL fixed = GlobalAlloc(GPTR, 40);
    EXPECT_EQ(GlobalLock(fixed), fixed) << "a fixed one is its own handle";
    EXPECT_EQ(GlobalFlags(fixed) & GMEM_LOCKCOUNT, 0u);
    EXPECT_TRUE(GlobalUnlock(fixed));
    EXPECT_EQ(GlobalSize(fixed), 40u);
    EXPECT_EQ(GlobalFree(fixed), nullptr);

    EXPECT_ERROR(ERROR_NOT_ENOUGH_MEMORY, GlobalAlloc(GHND, SIZE_MAX - 4096));
    const HGLOBAL kept = GlobalAlloc(GMEM_MOVEABLE, 4);
    EXPECT_EQ(GlobalReAlloc(kept, SIZE_MAX - 4096, GMEM_MOVEABLE), nullptr);
    EXPECT_EQ(GlobalSize(kept), 4u) << "what can't become so large stays";
    EXPECT_EQ(GlobalFree(kept), nullptr);
}

// The system itself would dereference some of these values.
TEST(GlobalMemory, ForeignValuesAreRefused)
{
    const HGLOBAL stale = GlobalAlloc(GMEM_MOVEABLE, 16);
    GlobalFree(stale);
    std::vector<HGLOBAL> values = {stale};
#ifndef _WIN32 // the system would dereference these values
    int onStack = 0;
    const HGLOBAL reused = GlobalAlloc(GMEM_MOVEABLE, 16);
    EXPECT_NE(reused, stale);
    values.insert(
        values.end(), {nullptr, &onStack, static_cast<char*>(GlobalLock(reused)) + 1, GlobalLock(reused),
                          INVALID_HANDLE_VALUE, reinterpret_cast<HGLOBAL>(std::uintptr_t{0xA}),
                          reinterpret_cast<HGLOBAL>(std::uintptr_t{0xFFFFFFFA}), static_cast<char*>(reused) + 0x10});
#endif
    for (const HGLOBAL value : values)
    {
        EXPECT_ERROR(ERROR_INVALID_HANDLE, GlobalLock(value)) << value;
        EXPECT_ERROR(ERROR_INVALID_HANDLE, GlobalUnlock(value)) << value;
        EXPECT_ERROR(ERROR_INVALID_HANDLE, GlobalSize(value)) << value;
        EXPECT_EQ(GlobalFlags(value), static_cast<UINT>(GMEM_INVALID_HANDLE)) << value;
        EXPECT_ERROR(ERROR_INVALID_HANDLE, GlobalReAlloc(value, 8, GMEM_MOVEABLE)) << value;
        if (value != nullptr) // freeing null succeeds
        {
            EXPECT_ERROR(ERROR_INVALID_HANDLE, GlobalFree(value) != value) << value;
        }
    }
#ifndef _WIN32 // allocated only for the values above
    GlobalFree(reused);
#endif
}

constexpr SIZE_T kNoSize = static_cast<SIZE_T>(-1);

struct Heap
{
    explicit Heap(DWORD options = 0) : handle(HeapCreate(options, 32768, 0)) {}
    Heap(const Heap&) = delete;
    Heap& operator=(const Heap&) = delete;
    ~Heap() { HeapDestroy(handle); }

    std::map<char*, SIZE_T> UsedBlocks() const
    {
        std::map<char*, SIZE_T> used;
        PROCESS_HEAP_ENTRY entry = {};
        while (HeapWalk(handle, &entry))
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0)
                used[static_cast<char*>(entry.lpData)] = entry.cbData;
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_MORE_ITEMS));
        return used;
    }

    const HANDLE handle;
};

// A random sequence of allocations and frees. Sizes, contents and walks agree with a model after each round.
TEST(Heap, AgreesWithAModel)
{
    const Heap heap;
    std::mt19937 random(15);
    std::map<char*, SIZE_T> model;
    for (int round = 0; round < 20; ++round)
    {
        for (int step = 0; step < 2'000; ++step)
        {
            if (random() % 2 == 0 && !model.empty())
            {
                auto victim = model.lower_bound(reinterpret_cast<char*>(std::uintptr_t{random()} << 16 | random()));
                if (victim == model.end())
                    victim = model.begin();
                EXPECT_EQ(HeapSize(heap.handle, 0, victim->first), victim->second);
                if (victim->second != 0)
                {
                    EXPECT_EQ(victim->first[victim->second - 1], static_cast<char>(victim->second));
                }
                EXPECT_TRUE(HeapFree(heap.handle, 0, victim->first));
                model.erase(victim);
                continue;
            }
            const auto kind = static_cast<unsigned>(random() % 100);
            const SIZE_T size = random() % (kind < 90 ? 600 : kind < 99 ? 20'000 : 700'000);
            auto* const block = static_cast<char*>(HeapAlloc(heap.handle, kind % 2 != 0 ? HEAP_ZERO_MEMORY : 0, size));
            ASSERT_NE(block, nullptr);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0u);
            if (kind % 2 != 0 && size != 0)
            {
                EXPECT_TRUE(block[0] == 0 && std::memcmp(block, block + 1, size - 1) == 0);
            }
            std::memset(block, static_cast<char>(size), size);
            EXPECT_TRUE(model.emplace(block, size).second);
        }
        EXPECT_EQ(heap.UsedBlocks(), model);
        EXPECT_TRUE(HeapValidate(heap.handle, 0, nullptr));
#if !defined(_WIN32) // HeapCompact always fails under Wine
        HeapCompact(heap.handle, 0);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(NO_ERROR));
#endif
    }
}

TEST(Heap, RefusesWhatIsNoBlockAndImpossibleSizes)
{
    const Heap heap, other;
    auto* const freed = static_cast<char*>(HeapAlloc(heap.handle, 0, 64));
    auto* const block = static_cast<char*>(HeapAlloc(heap.handle, 0, 64));
    auto* const foreign = static_cast<char*>(HeapAlloc(other.handle, 0, 64));
    ASSERT_TRUE(HeapFree(heap.handle, 0, freed));
    std::vector<void*> wrong = {freed, foreign};
#if !defined(_WIN32) // the system reads what precedes the address
    auto* const large = static_cast<char*>(HeapAlloc(heap.handle, 0, 1'000'000));
    ASSERT_TRUE(HeapFree(heap.handle, 0, large));
    wrong.insert(wrong.end(), {block + 1, block + 16, block + 80, large, reinterpret_cast<void*>(16)});
#endif
    for (void* const address : wrong)
    {
        SetLastError(NO_ERROR);
        EXPECT_EQ(HeapSize(heap.handle, 0, address), kNoSize);
        EXPECT_FALSE(HeapValidate(heap.handle, 0, address));
        EXPECT_FALSE(HeapFree(heap.handle, 0, address));
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    }
    EXPECT_TRUE(HeapFree(heap.handle, 0, nullptr));
    EXPECT_TRUE(HeapFree(heap.handle, 0, block));
    EXPECT_TRUE(HeapFree(other.handle, 0, foreign));
    for (const SIZE_T size : {kNoSize, kNoSize - 70'000, SIZE_T{1} << 62})
    {
        EXPECT_EQ(HeapAlloc(heap.handle, 0, size), nullptr);
        EXPECT_TRUE(HeapValidate(heap.handle, 0, nullptr));
    }
}

TEST(Heap, LockKeepsOtherThreadsOut)
{
    const Heap heap;
    ASSERT_TRUE(HeapLock(heap.handle));
    void* const block = HeapAlloc(heap.handle, 0, 10); // the thread that holds the lock isn't blocked
    bool isFree = false;
    std::thread other([&] { isFree = HeapFree(heap.handle, 0, block) != FALSE; });
    Sleep(50);
    EXPECT_EQ(HeapSize(heap.handle, 0, block), 10u);
    ASSERT_TRUE(HeapUnlock(heap.handle));
    other.join();
    EXPECT_TRUE(isFree);
    EXPECT_EQ(HeapSize(heap.handle, 0, block), kNoSize);
}

TEST(Heap, ThreadsShareAHeapAndTheOneOfTheProcess)
{
    const Heap heap;
    qxtest::RunInThreads(8,
        [&heap](unsigned number)
        {
            std::vector<unsigned*> blocks(20, nullptr);
            for (unsigned step = 0; step < 5'000; ++step)
            {
                unsigned*& block = blocks[step % blocks.size()];
                EXPECT_TRUE(block == nullptr || *block == number);
                EXPECT_TRUE(HeapFree(heap.handle, 0, block));
                block = static_cast<unsigned*>(HeapAlloc(heap.handle, 0, 4 + step % 1'000));
                *block = number;
            }
        });
    EXPECT_EQ(heap.UsedBlocks().size(), 8u * 20);

    void* const block = HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, 100);
    EXPECT_EQ(HeapSize(GetProcessHeap(), 0, block), 100u);
    EXPECT_TRUE(HeapFree(GetProcessHeap(), 0, block));
}

} // namespace
