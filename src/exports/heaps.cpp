// Tracked heaps.
#include <qxut23/leaks.h>

#include "exports/guard.h"
#include "heaps/module_list.h"

#include <algorithm>
#include <cstdint>
#include <vector>

using namespace qx;

static_assert(QXUT_HEAP_FAILED == kHeapsInvalidHandle && QXUT_HEAP_CORRUPTED == kHeapsCorrupted);
static_assert(QXUT_HEAP_LEFT_OVER == kHeapsLeftOver && QXUT_HEAP_BAD_OBJECT == kHeapsBadObject);
static_assert(QXUT_HEAP_NOT_SUPPORTED == kHeapsNotSupported);
static_assert(QXUT_HEAP_DEBUG == kHeapDebug && QXUT_HEAPJOB_DEBUG == kModuleDebug);
static_assert(QXUT_HEAPLEAK_MOST_ADDRESSES == LeakGroup::kMostObjects);
static_assert(QXUT_HEAPJOB_TRACE == kModuleTrace && QXUT_OBJECT_DEBUG == kObjectDebug);

namespace
{

clsModuleNode* ModuleOf(HUTHEAPJOB job)
{
    return reinterpret_cast<clsModuleNode*>(job);
}

clsHeapNode* HeapOf(HUTHEAP heap)
{
    return reinterpret_cast<clsHeapNode*>(heap);
}

clsModuleList& Modules()
{
    return clsModuleList::Instance();
}

// Runs an operation of a heap. Without a heap, the result is 0.
template <class Work>
std::int32_t OfHeap(HUTHEAP heap, Work work)
{
    return heap ? Guarded(kHeapsInvalidHandle, [&] { return work(HeapOf(heap)); }) : 0;
}

// Not guarded, because it may raise an exception of the system.
void* Allocate(HUTHEAP heap, std::uint32_t size, std::uint32_t flags, std::uint32_t tag, const CallSite& caller)
{
    return heap ? Modules().AllocObject(HeapOf(heap), size, flags, tag, caller) : AllocObjectWithoutHeap(size, flags);
}

} // namespace

HUTHEAPJOB UtilJobOpen(const QXWCHAR* name, std::uint32_t flags)
{
    const CallSite caller = CallSite::OfThisFunction();
    return Guarded(static_cast<HUTHEAPJOB>(nullptr),
        [&] { return reinterpret_cast<HUTHEAPJOB>(Modules().Open(name, flags, caller)); });
}

std::int32_t UtilJobClose(HUTHEAPJOB job)
{
    return job ? Guarded(kHeapsInvalidHandle, [=] { return Modules().Close(ModuleOf(job)); }) : 0;
}

HUTHEAP UtilHeapCreate(HUTHEAPJOB job, const QXWCHAR* name, std::uint32_t flags)
{
    const CallSite caller = CallSite::OfThisFunction();
    return Guarded(static_cast<HUTHEAP>(nullptr),
        [&] { return reinterpret_cast<HUTHEAP>(Modules().CreateHeap(ModuleOf(job), name, flags, caller)); });
}

std::int32_t UtilHeapDelete(HUTHEAP heap)
{
    return OfHeap(heap, [](clsHeapNode* node) { return Modules().DeleteHeap(node); });
}

std::int32_t UtilHeapSize(HUTHEAP heap)
{
    return OfHeap(heap, [](clsHeapNode* node) { return Modules().SizeOfHeap(node); });
}

std::int32_t UtilHeapSizeObjects(HUTHEAP heap)
{
    return OfHeap(heap, [](clsHeapNode* node) { return Modules().SizeOfObjects(node); });
}

void* UtilHeapObjectAlloc(HUTHEAP heap, std::uint32_t size, std::uint32_t flags)
{
    return Allocate(heap, size, flags, 0, CallSite::OfThisFunction());
}

void* UtilHeapObjectAllocExt(HUTHEAP heap, std::uint32_t size, std::uint32_t flags, void*, std::uint32_t tag)
{
    return Allocate(heap, size, flags, tag, CallSite::OfThisFunction());
}

std::int32_t UtilHeapObjectFree(HUTHEAP heap, void* object)
{
    return Guarded(kHeapsBadObject,
        [=] { return heap ? Modules().FreeObject(HeapOf(heap), object) : FreeObjectWithoutHeap(object); });
}

std::int32_t UtilHeapObjectSize(HUTHEAP heap, const void* object)
{
    return Guarded(kHeapsBadObject,
        [=] { return heap ? Modules().SizeObject(HeapOf(heap), object) : SizeObjectWithoutHeap(object); });
}

std::int32_t UtilHeapValidate(HUTHEAP heap, const void* object)
{
    return OfHeap(heap, [=](clsHeapNode* node) { return Modules().ValidateHeap(node, object); });
}

std::int32_t UtilHeapShrink(HUTHEAP heap)
{
    return OfHeap(heap, [](clsHeapNode* node) { return Modules().ShrinkHeap(node); });
}

std::int32_t QxHeapLeaks(HUTHEAPJOB job, HUTHEAP heap, std::uint32_t mostGroups, QxHeapLeakProc receive, void* user)
{
    if (!receive)
        return kHeapsInvalidHandle;
    return Guarded(kHeapsInvalidHandle,
        [=]
        {
            std::vector<LeakGroup> groups;
            const std::int32_t result = Modules().GroupLeaks(ModuleOf(job), HeapOf(heap), groups);
            if (result != 0)
                return result;
            const std::size_t count = groups.size();
            if (mostGroups != 0 && mostGroups < count)
                groups.resize(mostGroups);
            const std::vector<String> texts = CallerTextsOf(groups);
            std::vector<const QXWCHAR*> lines(texts.begin(), texts.end());
            const QXWCHAR* const* nextLine = lines.data();
            for (const LeakGroup& group : groups)
            {
                QxHeapLeak leak = {};
                leak.size = sizeof leak;
                leak.tag = group.tag;
                leak.objectCount = group.count;
                leak.byteCount = group.bytes;
                leak.firstTick = group.firstTick;
                leak.lastTick = group.lastTick;
                leak.lineCount = static_cast<std::uint32_t>(group.callers.size());
                leak.addressCount =
                    static_cast<std::uint32_t>(std::min<std::uint64_t>(group.count, LeakGroup::kMostObjects));
                leak.addresses = group.objects;
                leak.lines = nextLine;
                nextLine += group.callers.size();
                receive(user, &leak);
            }
            return static_cast<std::int32_t>(count);
        });
}
