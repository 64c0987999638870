// Tracked heaps on a system that lacks the functions which are bound at run time.
#include "heaps/heap_functions.h"
#include "heaps/module_list.h"

#include "support/debug_lines.h"

#include <gtest/gtest.h>

using namespace qx;

namespace
{

class MissingHeapFunctions : public testing::Test
{
protected:
    MissingHeapFunctions() { ReplaceHeapFunctions(&_none); }
    ~MissingHeapFunctions() override { ReplaceHeapFunctions(nullptr); }

    void* Allocate(std::uint32_t size, std::uint32_t flags = 0)
    {
        return list.AllocObject(heap, size, flags, 0, __builtin_return_address(0));
    }

    clsModuleList list;
    clsModuleNode* const job = list.Open(L"job", 0, nullptr);
    clsHeapNode* const heap = list.CreateHeap(job, L"heap", kHeapDebug, nullptr);
    const qxtest::DebugLines lines;

private:
    const HeapFunctions _none;
};

} // namespace

TEST_F(MissingHeapFunctions, WalksAndChecksAreNotSupported)
{
    void* const object = Allocate(100);
    Allocate(50);
    EXPECT_EQ(list.SizeOfHeap(heap), 150); // without headers and fences
    EXPECT_EQ(list.SizeOfObjects(heap), kHeapsNotSupported);
    EXPECT_EQ(lines.CountOf(L"Error: UtilHeapSizeObjects(...) does only run under NT"), 1u);
    EXPECT_EQ(list.ValidateHeap(heap, object), kHeapsNotSupported);
    EXPECT_EQ(lines.CountOf(L"Error: UtilHeapValidate(...) does only run under NT"), 1u);
    EXPECT_EQ(list.ShrinkHeap(heap), kHeapsNotSupported);
    EXPECT_EQ(lines.CountOf(L"Error: UtilHeapShrink(...) does only run under NT"), 1u);
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
    EXPECT_EQ(list.Chains().Count(), 201u); // the heaps and the job share one
    EXPECT_EQ(list.Close(job), kHeapsLeftOver);
    EXPECT_EQ(list.Chains().Count(), 0u);
}
