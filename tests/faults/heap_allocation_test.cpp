// Makes each allocation of tracked heaps (records, call chains, objects, system heaps, lists of leaks) and of handle
// reports fail in turn. Nothing may be lost, and whatever remains must still work.
#include "core/debug_line.h"
#include "core/text/text_format.h"
#include "faults/failing_allocations.h"
#include "handles/handle_lists.h"
#include "heaps/module_list.h"
#include "stacks/debug_help_wrapper.h"
#include "support/debug_lines.h"
#include "support/developer_run.h"

#include <windows.h>

#include <heapapi.h>
#include <memoryapi.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <set>
#include <string_view>
#include <thread>

#include <dlfcn.h>

using namespace qx;

namespace
{

// Returns true if this call of malloc fails. The functions of the layer share malloc's count.
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

int pathQueries = 0;
int memoryQueries = 0;

} // namespace

SIZE_T WINAPI VirtualQuery(LPCVOID address, PMEMORY_BASIC_INFORMATION information, SIZE_T size)
{
    static const auto next = Next(&VirtualQuery, "qxp_VirtualQuery");
    ++memoryQueries;
    return next(address, information, size);
}

DWORD WINAPI GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD size)
{
    static const auto next = Next(&GetModuleFileNameW, "qxp_GetModuleFileNameW");
    ++pathQueries;
    return next(module, path, size);
}

namespace
{

// Counts the lines without allocating memory.
class Lines : public DebugLineSink
{
public:
    // Expects the last failure to have been reported in these words.
    void ExpectFailure(const wchar_t* words) const
    {
        EXPECT_EQ(std::wstring_view(_failure).substr(0, _failureLength), words);
    }

    int depth = 0;
    int outOfMemory = 0;
    int objects = 0;
    int handles = 0;
    int addresses = 0;

private:
    void Line(int indentChange, const wchar_t* format, va_list arguments) override
    {
        depth += indentChange;
        static wchar_t line[1025];
        if (format != nullptr)
            FormatBounded(line, 1025, format, arguments);
        const std::wstring_view text = format != nullptr ? line : L"";
        handles += text.find(L" HANDLE 0") != text.npos;
        addresses += text.starts_with(L"  0X");
        objects += text.find(L"-Object at ") != text.npos;
        if (!text.ends_with(L"ut of memory\n") && !text.ends_with(L"ut of Memory\n"))
            return;
        ++outOfMemory;
        const std::size_t begin = text.find(L"Error: ");
        _failureLength = text.copy(_failure, 1025, begin != text.npos ? begin : 0) - 1;
    }

    wchar_t _failure[1025] = {};
    std::size_t _failureLength = 0;
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
    {
        lines.ExpectFailure(L"Error: clsModuleList::Add(..): Out of Memory");
        return 1;
    }
    int failures = 0;
    for (const std::uint32_t flags : {std::uint32_t{0}, kHeapNoDebug})
    {
        clsHeapNode* const heap = list.CreateHeap(job, L"heap", flags, caller);
        if (heap == nullptr)
        {
            ++failures;
            lines.ExpectFailure(flags == 0 ? L"Error: clsModuleNode['job']::AddHeap('heap',0x40000000): Out of Memory"
                                           : L"Error: clsModuleNode['job']::AddHeap('heap',0x00000040): Out of Memory");
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
            if (object == nullptr && size == 30)
                lines.ExpectFailure(flags == 0 ? L"Error: clsHeapNode['job'/'heap']::AllocObjectD(30): Out of memory"
                                               : L"Error: clsHeapNode['job'/'heap']::AllocObjectND(30): Out of memory");
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
        catch (const std::bad_alloc&) // the exported function reports it
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
    UseHeaps(list, lines); // resolves the functions that are bound late
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
        // An object whose chain isn't recorded isn't a failure.
        EXPECT_LE(failures, 1) << number;
        EXPECT_EQ(lines.outOfMemory, failures) << number;
        EXPECT_EQ(list.Chains().Count(), 0u) << number;
        EXPECT_EQ(BlocksOfProcessHeap(), blocks) << number;
    }
    SetDebugLineSink(former);
    EXPECT_GT(number, 30);
    EXPECT_EQ(withoutFailure, 1);
}

// The exception is raised after the message was written. At that time other threads can use the heaps again.
TEST(HeapAllocations, RaiseTheSystemsException)
{
    static clsModuleList list;
    static int raised = 0;
    static bool couldEnter = false;
    Lines lines;
    DebugLineSink* const former = SetDebugLineSink(&lines);
    clsModuleNode* const job = list.Open(L"job", 0, nullptr);
    clsHeapNode* const heap = list.CreateHeap(job, L"heap", kHeapGenerateExceptions, nullptr);
    void* const handler = AddVectoredExceptionHandler(1,
        [](EXCEPTION_POINTERS* exception) -> LONG
        {
            if (exception->ExceptionRecord->ExceptionCode != 0xC0000017)
                return EXCEPTION_CONTINUE_SEARCH;
            ++raised;
            std::thread(
                []
                {
                    couldEnter = list.Section().TryEnter();
                    if (couldEnter)
                        list.Section().Leave();
                })
                .join();
            return EXCEPTION_CONTINUE_EXECUTION;
        });
    EXPECT_EQ(list.AllocObject(heap, 0x80000000u, 0, 0, nullptr), nullptr);
    EXPECT_EQ(raised, 0) << "the size is too large for any heap";
    for (const std::uint32_t flags : {std::uint32_t{0}, kObjectDebug})
    {
        faulttest::FailAllocation(1);
        void* const object = list.AllocObject(heap, 100, flags, 0, nullptr);
        faulttest::FailAllocation(0);
        EXPECT_EQ(object, nullptr);
    }
    RemoveVectoredExceptionHandler(handler);
    EXPECT_EQ(raised, 2);
    EXPECT_TRUE(couldEnter);
    lines.ExpectFailure(L"Error: clsHeapNode['job'/'heap']::AllocObjectD(100): Out of memory");
    EXPECT_EQ(list.Close(job), kHeapsLeftOver);
    SetDebugLineSink(former);
}

// Half of the objects were allocated from an address outside all modules, as if their code had been unloaded. On linux,
// looking up such an address is slow.
TEST(HeapReports, AskForEachModuleOnce)
{
    const qxtest::DebugLines lines;
    clsModuleList list;
    const void* const caller = __builtin_return_address(0);
    clsModuleNode* const job = list.Open(L"job", kModuleDebug, caller);
    for (int i = 0; i < 3; ++i)
    {
        clsHeapNode* const heap = list.CreateHeap(job, L"heap", 0, caller);
        for (int object = 0; object < 50; ++object)
            list.AllocObject(heap, 20, 0, 0, object % 2 == 0 ? caller : reinterpret_cast<const void*>(0x12345));
    }
    pathQueries = memoryQueries = 0;
    EXPECT_EQ(list.Close(job), kHeapsLeftOver);
    std::set<String> modules;
    for (const auto& entry : lines.Entries())
        if (const auto at = entry.text.View().find(L"[called by "); at != std::wstring_view::npos)
            modules.insert(String(entry.text.View().substr(at)));
    EXPECT_FALSE(modules.empty());
    EXPECT_EQ(pathQueries, static_cast<int>(modules.size()));
    EXPECT_LE(memoryQueries, 10) << "also for lower pages than before";
}

// Handles are reported with plain addresses if there is no memory for texts.
TEST(HandleAllocations, FailInTheMiddleOfReports)
{
    const qxtest::UserIs user(L"qvx");
    TheDebugHelpTimes().lock = 1;
    const clsDBGHelpWrapperGPFProt other; // holds the session
    using enum HandleOperation;
    bool hasFailed = true;
    long number = 1;
    for (; hasFailed && number < 1'000; ++number)
    {
        for (const HandleValue handle : {1, 2, 3})
            ManageHandles(6, Add, handle);
        ManageHandles(6, TakeSnapshot, 0);
        ManageHandles(6, Add, 4);
        ManageHandles(6, Remove, 1);
        ManageHandles(6, TakeSnapshot, 0);
        Lines report;
        DebugLineSink* const former = SetDebugLineSink(&report);
        faulttest::FailAllocation(number);
        ManageHandles(6, Report, 0);
        ManageHandles(6, Compare, 0);
        faulttest::FailAllocation(0);
        SetDebugLineSink(former);
        hasFailed = faulttest::HasFailed();
        EXPECT_EQ(report.depth, 0) << number;
        EXPECT_EQ(report.handles, 5) << number; // three lost ones, a new one and a deleted one
        EXPECT_GE(report.addresses, 5 * 3) << number;
        for (const HandleValue handle : {2, 3, 4})
            ManageHandles(6, Remove, handle);
        EXPECT_EQ(ManageHandles(6, Count, 0), 0u);
    }
    TheDebugHelpTimes() = DebugHelpTimes();
    EXPECT_GT(number, 5);
    EXPECT_FALSE(hasFailed);
}

} // namespace
