// Makes each allocation of tracked heaps fail in turn: of records, chains, objects and system heaps, and the memory of
// the lists of leaks. Nothing may be lost, and what is left must work.
#include "core/debug_line.h"
#include "core/text/text_format.h"
#include "faults/failing_allocations.h"
#include "heaps/module_list.h"

#include <windows.h>

#include <heapapi.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string_view>

#include <dlfcn.h>

using namespace qx;

namespace
{

// The functions of the layer share the count of malloc.
bool MallocFails()
{
    void* const probe = std::malloc(1);
    std::free(probe);
    return probe == nullptr;
}

template <class Function>
Function* Next(Function*, const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

HANDLE WINAPI HeapCreate(DWORD options, SIZE_T initialSize, SIZE_T maximumSize)
{
    static const auto next = Next(&HeapCreate, "qxp_HeapCreate");
    return MallocFails() ? nullptr : next(options, initialSize, maximumSize);
}

LPVOID WINAPI HeapAlloc(HANDLE heap, DWORD flags, SIZE_T size)
{
    static const auto next = Next(&HeapAlloc, "qxp_HeapAlloc");
    return MallocFails() ? nullptr : next(heap, flags, size);
}

namespace
{

// Counts the lines without allocating memory.
class Lines : public DebugLineSink
{
public:
    int outOfMemory = 0;
    int objects = 0;

private:
    void Line(int, const wchar_t* format, va_list arguments) override
    {
        static wchar_t line[1025];
        FormatBounded(line, 1025, format, arguments);
        const std::wstring_view text = line;
        outOfMemory += text.ends_with(L"ut of memory\n") || text.ends_with(L"ut of Memory\n");
        objects += text.find(L"-Object at ") != text.npos;
    }
};

std::size_t BlocksOfProcessHeap()
{
    std::size_t count = 0;
    PROCESS_HEAP_ENTRY entry{};
    while (HeapWalk(GetProcessHeap(), &entry))
        count += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
    return count;
}

constexpr int kObjects = 6;

// Returns the number of operations that reported a failure.
int UseHeaps(clsModuleList& list, Lines& lines)
{
    const void* const caller = __builtin_return_address(0);
    clsModuleNode* const job = list.Open(L"job", kModuleTrace | kModuleDebug, caller);
    if (job == nullptr)
        return 1;
    int failures = 0;
    for (const std::uint32_t flags : {std::uint32_t{0}, kHeapNoDebug})
    {
        clsHeapNode* const heap = list.CreateHeap(job, L"heap", flags, caller);
        if (heap == nullptr)
        {
            ++failures;
            continue;
        }
        int live = 0;
        std::int32_t bytes = 0;
        void* last = nullptr;
        for (int i = 0; i < kObjects; ++i)
        {
            const auto size = static_cast<std::uint32_t>(30 + i * 60'000);
            void* const object = list.AllocObject(heap, size, 0, 0, reinterpret_cast<const void*>(16 + i));
            failures += object == nullptr;
            live += object != nullptr;
            bytes += object != nullptr ? static_cast<std::int32_t>(size + (flags == 0 ? 48 : 4)) : 0;
            last = object != nullptr ? object : last;
        }
        EXPECT_EQ(list.SizeOfObjects(heap), bytes);
        EXPECT_EQ(list.ValidateHeap(heap, last), 0);
        std::vector<LeakGroup> groups;
        try
        {
            EXPECT_EQ(list.GroupLeaks(job, heap, groups), 0);
            for (const LeakGroup& group : groups)
                live -= static_cast<int>(group.count);
            EXPECT_EQ(live, 0);
        }
        catch (const std::bad_alloc&) // reported by the exported function
        {
            ++failures;
            ++lines.outOfMemory;
            EXPECT_TRUE(groups.empty());
        }
        if (last != nullptr)
        {
            EXPECT_EQ(list.FreeObject(heap, last), 0);
        }
        lines.objects = 0;
        const int left = static_cast<int>(kObjects) - failures - 1;
        const std::int32_t result = list.DeleteHeap(heap);
        if (failures == 0)
        {
            EXPECT_EQ(lines.objects, flags == 0 ? left : 0);
            EXPECT_EQ(result, kHeapsLeftOver);
        }
    }
    EXPECT_EQ(list.Close(job), 0);
    return failures;
}

TEST(HeapAllocations, FailInTurn)
{
    Lines lines;
    DebugLineSink* const former = SetDebugLineSink(&lines);
    clsModuleList list;
    UseHeaps(list, lines); // resolves what is bound late
    const std::size_t blocks = BlocksOfProcessHeap();
    int withoutFailure = 0;
    long number = 1;
    for (; withoutFailure == 0 && number < 1'000; ++number)
    {
        lines.outOfMemory = 0;
        faulttest::FailAllocation(number);
        const int failures = UseHeaps(list, lines);
        faulttest::FailAllocation(0);
        withoutFailure += !faulttest::HasFailed();
        // A chain that isn't recorded is no failure.
        EXPECT_LE(failures, 1) << number;
        EXPECT_EQ(lines.outOfMemory, failures) << number;
        EXPECT_EQ(list.Chains().Count(), 0u) << number;
        EXPECT_EQ(BlocksOfProcessHeap(), blocks) << number;
    }
    SetDebugLineSink(former);
    EXPECT_GT(number, 30);
    EXPECT_EQ(withoutFailure, 1);
}

} // namespace
