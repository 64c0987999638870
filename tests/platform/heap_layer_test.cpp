// The functions of private heaps that only the layer offers. Linux only.
#include "system_support.h"

#include "heap/quick_blocks.h"

#include <heapapi.h>

#include <algorithm>
#include <cstring>
#include <thread>

namespace
{

constexpr DWORD kMark = 0xFAAFFAAF;
constexpr DWORD kError = 4711;
constexpr SIZE_T kNoHeapSize = static_cast<SIZE_T>(-1);

char* BlockWith(HANDLE heap, DWORD word, SIZE_T size)
{
    void* const block = HeapAlloc(heap, 0, size);
    std::memcpy(block, &word, std::min<SIZE_T>(size, sizeof word));
    return static_cast<char*>(block);
}

TEST(LayerHeaps, OnlyMarkedBlocksAreFreed)
{
    const HANDLE heap = HeapCreate(0, 0, 0), other = HeapCreate(0, 0, 0);
    char* const blocks[] = {BlockWith(heap, kMark, 4), BlockWith(heap, kMark, 500), BlockWith(heap, kMark, 1'000'000)};
    char* const unmarked = BlockWith(heap, kMark + 1, 64);
    char* const small = BlockWith(heap, kMark, 3);
    char* const foreign = BlockWith(other, kMark, 64);
    SetLastError(kError);
    for (char* const wrong : {unmarked, small, foreign, blocks[1] + 16, reinterpret_cast<char*>(16)})
        EXPECT_FALSE(QxHeapFreeMarked(heap, 0, wrong, kMark));
    EXPECT_EQ(QxHeapSizeOfAny(heap, 0, unmarked), 64u);
    EXPECT_EQ(QxHeapSizeOfAny(heap, 0, small), 3u);
    EXPECT_EQ(QxHeapSizeOfAny(heap, 0, foreign), kNoHeapSize);
    for (char* const block : blocks)
    {
        EXPECT_TRUE(QxHeapFreeMarked(heap, 0, block, kMark));
        EXPECT_FALSE(QxHeapFreeMarked(heap, 0, block, kMark)) << "freed twice";
        EXPECT_EQ(QxHeapSizeOfAny(heap, 0, block), kNoHeapSize);
    }
    EXPECT_EQ(GetLastError(), kError);
    EXPECT_TRUE(HeapDestroy(heap) && HeapDestroy(other));
}

TEST(LayerHeaps, AProcessWithThreadsIsNoted)
{
    std::thread([] { EXPECT_EQ(*QxSingleThreadedFlag(), 0); }).join();
}

} // namespace
