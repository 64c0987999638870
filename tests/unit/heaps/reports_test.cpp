// Reports of tracked heaps: messages for special conditions, and the time that reports take. Also the protection of
// captures, and heaps on a system that lacks the functions bound at run time.
#include "heaps/call_chains.h"
#include "heaps/heap_functions.h"
#include "heaps/module_list.h"

#include "support/debug_lines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <string>
#include <thread>

using namespace qx;

namespace
{

class HeapReports : public testing::Test
{
protected:
    ~HeapReports() override { ReplaceHeapFunctions(nullptr); }

    void* Allocate(std::uint32_t size, std::uint32_t flags = 0, std::uint32_t tag = 0)
    {
        return list.AllocObject(heap, size, flags, tag, __builtin_return_address(0));
    }

    clsModuleList list;
    clsModuleNode* const job = list.Open(L"job", 0, nullptr);
    clsHeapNode* const heap = list.CreateHeap(job, L"heap", kHeapDebug, nullptr);
    const qxtest::DebugLines lines;
};

// Counts the lines of reports without writing them.
class CountingSink : public DebugLineSink
{
public:
    std::size_t count = 0;

private:
    void Line(int, const wchar_t*, va_list) override { ++count; }
};

// Records if another thread could enter the critical section while a line was being written.
class WaitingSink : public DebugLineSink
{
public:
    explicit WaitingSink(clsCriticalSection& section) : _section(section) {}

    int count = 0;
    bool wasFree = false;

private:
    void Line(int, const wchar_t*, va_list) override
    {
        ++count;
        std::thread(
            [this]
            {
                if (!_section.TryEnter())
                    return;
                wasFree = true;
                _section.Leave();
            })
            .join();
    }

    clsCriticalSection& _section;
};

// Returns the time per line when a heap with this many objects is deleted.
double TimeOfLine(int objects)
{
    CountingSink sink;
    clsModuleList list;
    clsModuleNode* const job = list.Open(L"job", 0, nullptr);
    clsHeapNode* const heap = list.CreateHeap(job, L"heap", kHeapDebug, nullptr);
    for (int i = 0; i < objects; ++i)
        list.AllocObject(heap, 20, 0, 0, __builtin_return_address(0));
    DebugLineSink* const former = SetDebugLineSink(&sink);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(list.Close(job), kHeapsLeftOver);
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    SetDebugLineSink(former);
    EXPECT_GT(sink.count, 10u * static_cast<std::size_t>(objects)); // each object is shown twice, with its chain
    return time.count() / static_cast<double>(sink.count);
}

} // namespace

TEST_F(HeapReports, EachCaptureIsProtected)
{
    static std::string calls;
    ASSERT_EQ(SetCaptureProtection([](bool begins) { calls += begins ? '(' : ')'; }), nullptr);
    Allocate(20);
    Allocate(20, kObjectNoChain);
    list.CreateHeap(job, L"other", kHeapDebug, nullptr);
    EXPECT_NE(SetCaptureProtection(nullptr), nullptr);
    Allocate(20);
    EXPECT_EQ(calls, "()()");
}

// Only the first 64 bytes of an object are shown.
TEST_F(HeapReports, LongObjects)
{
    auto* const object = static_cast<char*>(Allocate(200, kObjectFill | kObjectNoChain));
    object[200] = 0;
    EXPECT_EQ(list.ValidateHeap(heap, nullptr), 0);
    EXPECT_EQ(lines.CountOf(L"200(=0x000000c8) Bytes\n"), 1u);
    EXPECT_EQ(lines.CountOf(L": "
                            L"  f5 f5 f5 f5 f5 f5 f5 f5  ........\n"),
        8u);
    EXPECT_EQ(lines.Count(), 10u);
}

// A damaged size can point to another word that looks like the fence. The object is freed nevertheless.
TEST_F(HeapReports, NegativeSizes)
{
    void* const object = Allocate(20, kObjectNoChain, kFence);
    PutWord(BytesAt(object, -8), static_cast<std::uint32_t>(-12)); // the fence would be where the tag is
    EXPECT_EQ(list.FreeObject(heap, object), 0);
    EXPECT_EQ(lines.CountOf(L"Error: clsHeapNode['job'/'heap']::FreeObjectD(0X"), 1u);
    EXPECT_EQ(lines.CountOf(L": bad size -12\n"), 1u);
    EXPECT_EQ(lines.CountOf(L": -Object at 0X"), 1u);
    EXPECT_EQ(lines.CountOf(L", -12(=0xfffffff4) Bytes\n"), 1u);
    EXPECT_EQ(lines.Count(), 3u);
    EXPECT_EQ(list.SizeOfObjects(heap), 0);
    EXPECT_EQ(list.DeleteHeap(heap), 0);
}

// The receiver of the lines may start threads, so a report enters the critical section even if the process has only one
// thread.
TEST_F(HeapReports, OtherThreadsWaitForReports)
{
    static const char alone = 1;
    HeapFunctions functions = LateHeapFunctions();
    functions.isSingleThreaded = &alone;
    ReplaceHeapFunctions(&functions);
    WaitingSink sink(list.Section());
    DebugLineSink* const former = SetDebugLineSink(&sink);
    EXPECT_EQ(Allocate(0xFFFFFFF0), nullptr);
    EXPECT_EQ(Allocate(0xFFFFFFF0, kObjectPlain), nullptr);
    EXPECT_EQ(list.FreeObject(heap, this), kHeapsBadObject);
    SetDebugLineSink(former);
    EXPECT_GE(sink.count, 4);
    EXPECT_FALSE(sink.wasFree);
    ReplaceHeapFunctions(nullptr);
}

// The results are the same with and without the fast paths of the layer.
TEST_F(HeapReports, DamageIsFoundWhileNobodyReceivesLines)
{
    DebugLineSink* const former = SetDebugLineSink(nullptr);
    HeapFunctions longWays = LateHeapFunctions();
    longWays.freeMarked = nullptr;
    longWays.sizeOfAny = nullptr;
    for (const HeapFunctions* const functions : {&LateHeapFunctions(), static_cast<const HeapFunctions*>(&longWays)})
    {
        ReplaceHeapFunctions(functions);
        for (const std::uint32_t flags : {0u, kObjectPlain})
        {
            auto* const object = static_cast<char*>(Allocate(20, flags));
            const std::uint32_t magic = WordAt(object - 4);
            PutWord(object - 4, magic + 1);
            EXPECT_EQ(list.FreeObject(heap, object), kHeapsBadObject) << "underrun";
            PutWord(object - 4, magic);
            EXPECT_EQ(list.FreeObject(heap, object + 16), kHeapsBadObject) << "inside";
            object[20] = static_cast<char>(object[20] + 1);
            EXPECT_EQ(list.FreeObject(heap, object), flags == 0 ? kHeapsBadObject : 0) << "overrun";
            object[20] = static_cast<char>(object[20] - 1);
            EXPECT_EQ(list.FreeObject(heap, object), flags == 0 ? 0 : kHeapsBadObject);
            EXPECT_EQ(list.FreeObject(heap, object), kHeapsBadObject) << "freed";
        }
        EXPECT_EQ(list.SizeOfObjects(heap), 0);
    }
    ReplaceHeapFunctions(nullptr);
    SetDebugLineSink(former);
}

TEST_F(HeapReports, ShrinkingThatFails)
{
    HeapFunctions functions = LateHeapFunctions();
    functions.compact = [](HANDLE, DWORD) -> SIZE_T
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    };
    ReplaceHeapFunctions(&functions);
    EXPECT_EQ(list.ShrinkHeap(heap), kHeapsInvalidHandle);
    const String words(
        String::kFormatted, L":Error: clsHeapNode['job'/'heap']::ShrinkHeap(%#p) failed\n", static_cast<void*>(heap));
    EXPECT_EQ(lines.CountOf(words.View()), 1u);
    functions.compact = [](HANDLE, DWORD) -> SIZE_T
    {
        return 0;
    };
    EXPECT_EQ(list.ShrinkHeap(heap), 0) << "nothing to give back";
    EXPECT_EQ(lines.Count(), 1u);
}

TEST_F(HeapReports, WalksAndChecksAreNotSupportedWithoutTheLateFunctions)
{
    const HeapFunctions none;
    ReplaceHeapFunctions(&none);
    void* const object = Allocate(100);
    Allocate(50);
    EXPECT_EQ(list.SizeOfHeap(heap), 150); // without headers and fences
    EXPECT_EQ(list.SizeOfObjects(heap), kHeapsNotSupported);
    EXPECT_EQ(list.ValidateHeap(heap, object), kHeapsNotSupported);
    EXPECT_EQ(list.ShrinkHeap(heap), kHeapsNotSupported);
    for (const wchar_t* const name : {L"SizeObjects", L"Validate", L"Shrink"})
        EXPECT_EQ(lines.CountOf((String(L"Error: UtilHeap") + name + L"(...) does only run under NT").View()), 1u);
    std::vector<LeakGroup> groups;
    EXPECT_EQ(list.GroupLeaks(nullptr, heap, groups), kHeapsNotSupported);

    // Objects are still checked.
    EXPECT_EQ(list.SizeObject(heap, object), 100);
    PutWord(BytesAt(object, 100), 0);
    EXPECT_EQ(list.FreeObject(heap, object), kHeapsBadObject);
    EXPECT_EQ(lines.CountOf(L"fence value has been changed"), 2u);
    PutWord(BytesAt(object, 100), kFence);
    EXPECT_EQ(list.FreeObject(heap, object), 0);
    EXPECT_EQ(list.SizeOfHeap(heap), 50);
    EXPECT_EQ(list.DeleteHeap(heap), kHeapsLeftOver);
    EXPECT_EQ(list.Close(job), 0);
}

// The chains of objects that are left are released with their heap.
TEST(HeapRecords, AreReleasedWithTheJob)
{
    clsModuleList list;
    clsModuleNode* const job = list.Open(L"job", kModuleTrace | kModuleDebug, __builtin_return_address(0));
    for (int i = 0; i < 3; ++i)
    {
        clsHeapNode* const heap = list.CreateHeap(job, L"heap", kHeapNoWarning, __builtin_return_address(0));
        for (std::uintptr_t place = 1; place <= 200; ++place)
            list.AllocObject(heap, 20, 0, 0, reinterpret_cast<const void*>(place));
    }
    EXPECT_EQ(list.Chains().Count(), 201u); // the heaps and the job share one chain
    EXPECT_EQ(list.Close(job), kHeapsLeftOver);
    EXPECT_EQ(list.Chains().Count(), 0u);
}

// The time per line doesn't grow with the number of objects.
TEST(HeapReportTimes, GrowWithTheLinesOnly)
{
    double few = std::numeric_limits<double>::max(), many = few;
    for (int i = 0; i < 3; ++i)
    {
        few = std::min(few, TimeOfLine(1'000));
        many = std::min(many, TimeOfLine(32'000));
    }
    EXPECT_LT(many, 4 * few);
}
