// Global and local memory: handles, lock counts, last errors.
#include "system_support.h"

#include <cstdint>
#include <vector>

using qxtest::ErrorOf;

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
    EXPECT_EQ(ErrorOf([&] { return GlobalUnlock(memory); }), DWORD{NO_ERROR});
    EXPECT_EQ(ErrorOf([&] { return GlobalUnlock(memory); }), DWORD{ERROR_NOT_LOCKED});
    GlobalLock(memory);
    EXPECT_EQ(GlobalFree(memory), nullptr) << "a locked block is freed as well";

    const HGLOBAL fixed = GlobalAlloc(GPTR, 40);
    EXPECT_EQ(GlobalLock(fixed), fixed) << "a fixed one is its own handle";
    EXPECT_EQ(GlobalFlags(fixed) & GMEM_LOCKCOUNT, 0u);
    EXPECT_TRUE(GlobalUnlock(fixed));
    EXPECT_EQ(GlobalSize(fixed), 40u);
    EXPECT_EQ(GlobalFree(fixed), nullptr);

    EXPECT_EQ(ErrorOf([] { return GlobalAlloc(GHND, SIZE_MAX - 4096); }), DWORD{ERROR_NOT_ENOUGH_MEMORY});
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
#ifndef _WIN32 // see above
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
        EXPECT_EQ(ErrorOf([&] { return GlobalLock(value); }), DWORD{ERROR_INVALID_HANDLE}) << value;
        EXPECT_EQ(ErrorOf([&] { return GlobalUnlock(value); }), DWORD{ERROR_INVALID_HANDLE}) << value;
        EXPECT_EQ(ErrorOf([&] { return GlobalSize(value); }), DWORD{ERROR_INVALID_HANDLE}) << value;
        EXPECT_EQ(GlobalFlags(value), static_cast<UINT>(GMEM_INVALID_HANDLE)) << value;
        EXPECT_EQ(ErrorOf([&] { return GlobalReAlloc(value, 8, GMEM_MOVEABLE); }), DWORD{ERROR_INVALID_HANDLE})
            << value;
        if (value != nullptr) // freeing null succeeds
        {
            EXPECT_EQ(ErrorOf([&] { return GlobalFree(value) != value; }), DWORD{ERROR_INVALID_HANDLE}) << value;
        }
    }
#ifndef _WIN32 // see above
    GlobalFree(reused);
#endif
}

} // namespace
