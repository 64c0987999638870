// Global and local memory: handles, lock counts, last errors.
#include <gtest/gtest.h>

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <set>
#include <vector>

namespace
{

DWORD LastErrorOf(auto&& call)
{
    SetLastError(0xBEEF);
    call();
    return GetLastError();
}

TEST(GlobalMemory, MovableBlockCountsItsLocks)
{
    const HGLOBAL memory = GlobalAlloc(GHND, 100);
    ASSERT_NE(memory, nullptr);
    EXPECT_EQ(GlobalSize(memory), 100u);
    EXPECT_EQ(GlobalFlags(memory) & GMEM_LOCKCOUNT, 0u);

    const auto data = static_cast<unsigned char*>(GlobalLock(memory));
    ASSERT_NE(data, nullptr);
    EXPECT_NE(static_cast<void*>(data), static_cast<void*>(memory));
    EXPECT_EQ(std::vector<unsigned char>(data, data + 100), std::vector<unsigned char>(100, 0));
    EXPECT_EQ(GlobalLock(memory), data);
    EXPECT_EQ(GlobalFlags(memory) & GMEM_LOCKCOUNT, 2u);
    EXPECT_EQ(GlobalHandle(data), memory);

    EXPECT_TRUE(GlobalUnlock(memory));
    // The last unlock gives FALSE too; only the last error tells it from a failure.
    SetLastError(0xBEEF);
    EXPECT_FALSE(GlobalUnlock(memory));
    EXPECT_EQ(GetLastError(), DWORD{NO_ERROR});
    EXPECT_FALSE(GlobalUnlock(memory));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NOT_LOCKED});

    GlobalLock(memory);
    EXPECT_EQ(GlobalFree(memory), nullptr) << "a locked block is freed as well";
}

TEST(GlobalMemory, FixedBlockIsItsOwnHandle)
{
    const HGLOBAL memory = GlobalAlloc(GPTR, 40);
    ASSERT_NE(memory, nullptr);
    EXPECT_EQ(GlobalLock(memory), memory);
    EXPECT_EQ(GlobalFlags(memory) & GMEM_LOCKCOUNT, 0u);
    EXPECT_TRUE(GlobalUnlock(memory));
    EXPECT_EQ(GlobalHandle(memory), memory);
    EXPECT_EQ(GlobalSize(memory), 40u);
    EXPECT_EQ(GlobalFree(memory), nullptr);

    const HLOCAL local = LocalAlloc(LMEM_FIXED, 0);
    EXPECT_NE(local, nullptr) << "no bytes are a valid fixed block";
    EXPECT_EQ(LocalFree(local), nullptr);
    EXPECT_EQ(GlobalFree(nullptr), nullptr);
}

TEST(GlobalMemory, StaleHandleIsInvalidAlsoWhenItsEntryLivesAgain)
{
    const HGLOBAL stale = GlobalAlloc(GMEM_MOVEABLE, 16);
    ASSERT_EQ(GlobalFree(stale), nullptr);
    EXPECT_EQ(LastErrorOf([&] { EXPECT_EQ(GlobalLock(stale), nullptr); }), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(LastErrorOf([&] { EXPECT_FALSE(GlobalUnlock(stale)); }), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(LastErrorOf([&] { EXPECT_EQ(GlobalSize(stale), 0u); }), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(LastErrorOf([&] { EXPECT_EQ(GlobalFlags(stale), static_cast<UINT>(GMEM_INVALID_HANDLE)); }),
        DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(
        LastErrorOf([&] { EXPECT_EQ(GlobalReAlloc(stale, 8, GMEM_MOVEABLE), nullptr); }), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(LastErrorOf([&] { EXPECT_EQ(GlobalFree(stale), stale); }), DWORD{ERROR_INVALID_HANDLE});
}

#ifndef _WIN32
// The system itself follows some of these values into memory.
TEST(GlobalMemory, ForeignValuesAreRefused)
{
    int onStack = 0;
    const HGLOBAL stale = GlobalAlloc(GMEM_MOVEABLE, 16);
    GlobalFree(stale);
    const HGLOBAL reused = GlobalAlloc(GMEM_MOVEABLE, 16);
    EXPECT_NE(reused, stale);
    const auto inside = static_cast<char*>(GlobalLock(reused)) + 1;
    const HGLOBAL values[] = {nullptr, stale, &onStack, inside, GlobalLock(reused), INVALID_HANDLE_VALUE,
        reinterpret_cast<HGLOBAL>(uintptr_t{0xA}), reinterpret_cast<HGLOBAL>(uintptr_t{0xFFFFFFFA}),
        reinterpret_cast<HGLOBAL>(reinterpret_cast<uintptr_t>(reused) + 0x10)};
    for (const HGLOBAL value : values)
    {
        EXPECT_EQ(LastErrorOf([&] { EXPECT_EQ(GlobalLock(value), nullptr); }), DWORD{ERROR_INVALID_HANDLE}) << value;
        EXPECT_EQ(LastErrorOf([&] { EXPECT_EQ(GlobalSize(value), 0u); }), DWORD{ERROR_INVALID_HANDLE}) << value;
        if (value == nullptr)
            continue; // freeing nothing is no failure
        EXPECT_EQ(LastErrorOf([&] { EXPECT_EQ(GlobalFree(value), value); }), DWORD{ERROR_INVALID_HANDLE}) << value;
    }
    EXPECT_EQ(LastErrorOf([&] { EXPECT_EQ(GlobalHandle(&onStack), nullptr); }), DWORD{ERROR_INVALID_HANDLE});
    GlobalFree(reused);
}

TEST(GlobalMemory, LockedBlockStaysInPlaceUnlessTheCallAllowsMoving)
{
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, 16);
    void* const data = GlobalLock(memory);
    EXPECT_EQ(
        LastErrorOf([&] { EXPECT_EQ(GlobalReAlloc(memory, 1 << 20, 0), nullptr); }), DWORD{ERROR_NOT_ENOUGH_MEMORY});
    EXPECT_EQ(GlobalReAlloc(memory, 8, 0), memory);
    EXPECT_EQ(GlobalLock(memory), data);
    EXPECT_EQ(GlobalReAlloc(memory, 1 << 20, GMEM_MOVEABLE), memory);
    EXPECT_EQ(GlobalFlags(memory) & GMEM_LOCKCOUNT, 2u);
    GlobalFree(memory);

    const HGLOBAL fixed = GlobalAlloc(GMEM_FIXED, 16);
    EXPECT_EQ(GlobalReAlloc(fixed, 1 << 20, 0), nullptr);
    EXPECT_EQ(GlobalSize(fixed), 16u);
    GlobalFree(fixed);
}
#endif

TEST(GlobalMemory, ResizingKeepsTheBytesAndZeroesWhatIsNew)
{
    HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, 10);
    std::memset(GlobalLock(memory), 'x', 10);
    GlobalUnlock(memory);
    size_t kept = 10;
    for (const size_t size : {11u, 4096u, 5u, 70000u, 70001u, 1u, 200u, 3000000u, 16u, 24u})
    {
        memory = GlobalReAlloc(memory, size, GMEM_MOVEABLE | GMEM_ZEROINIT);
        ASSERT_NE(memory, nullptr);
        EXPECT_EQ(GlobalSize(memory), size);
        kept = size < kept ? size : kept;
        const auto data = static_cast<const unsigned char*>(GlobalLock(memory));
        for (size_t i = 0; i < size; ++i)
            ASSERT_EQ(data[i], i < kept ? 'x' : 0) << i << " of " << size;
        GlobalUnlock(memory);
    }
    GlobalFree(memory);
}

TEST(GlobalMemory, DiscardedBlockHasAHandleButNoBytes)
{
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE | GMEM_DISCARDABLE, 0);
    ASSERT_NE(memory, nullptr);
    EXPECT_EQ(GlobalFlags(memory), static_cast<UINT>(GMEM_DISCARDED | GMEM_DISCARDABLE));
    EXPECT_EQ(GlobalSize(memory), 0u);
    EXPECT_EQ(LastErrorOf([&] { EXPECT_EQ(GlobalLock(memory), nullptr); }), DWORD{ERROR_DISCARDED});

    ASSERT_EQ(GlobalReAlloc(memory, 8, GMEM_MOVEABLE), memory);
    EXPECT_NE(GlobalLock(memory), nullptr);
    EXPECT_EQ(GlobalDiscard(memory), nullptr) << "a locked block can't be discarded";
    GlobalUnlock(memory);
    EXPECT_EQ(GlobalDiscard(memory), memory);
    EXPECT_NE(GlobalFlags(memory) & GMEM_DISCARDED, 0u);
    EXPECT_EQ(GlobalFree(memory), nullptr);
}

TEST(GlobalMemory, TooLargeABlockFailsAndLeavesTheOldOne)
{
    EXPECT_EQ(
        LastErrorOf([] { EXPECT_EQ(GlobalAlloc(GHND, SIZE_MAX - 4096), nullptr); }), DWORD{ERROR_NOT_ENOUGH_MEMORY});
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, 4);
    EXPECT_EQ(GlobalReAlloc(memory, SIZE_MAX - 4096, GMEM_MOVEABLE), nullptr);
    EXPECT_EQ(GlobalSize(memory), 4u);
    EXPECT_EQ(GlobalFree(memory), nullptr);
}

TEST(GlobalMemory, HandlesOfManyLiveBlocksDiffer)
{
    std::set<HGLOBAL> handles;
    for (int i = 0; i < 1000; ++i)
        handles.insert(GlobalAlloc(i % 2 != 0 ? GMEM_MOVEABLE : GMEM_FIXED, static_cast<SIZE_T>(i)));
    EXPECT_EQ(handles.size(), 1000u);
    EXPECT_EQ(handles.count(nullptr), 0u);
    for (const HGLOBAL handle : handles)
        EXPECT_EQ(GlobalFree(handle), nullptr);
}

} // namespace
