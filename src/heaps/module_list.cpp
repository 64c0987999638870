#include "heaps/module_list.h"

#include "core/forever.h"
#include "diag/report.h"
#include "heaps/heap_functions.h"

#include <windows.h>

#include <cstdlib>
#include <cwchar>
#include <utility>

namespace qx
{
namespace
{

// STATUS_NO_MEMORY
constexpr DWORD kNoMemoryStatus = 0xC0000017;

} // namespace

clsModuleList& clsModuleList::instance =
    MakeForever<clsModuleList>(); // so that the critical section exists as soon as the library is loaded

clsModuleList::~clsModuleList()
{
    while (clsModuleNode* const module = _first)
    {
        _first = module->_next;
        clsModuleNode::Discard(module);
    }
}

// Runs an operation of a heap inside the critical section. If the job is traced, reports it as a block of lines.
template <class Work>
std::int32_t clsModuleList::Traced(clsHeapNode* heap, const wchar_t* format, Work work)
{
    const clsCriticalSectionLock lock(_section);
    const bool isTraced = heap->Owner().IsTraced();
    ReportBlock block;
    if (isTraced)
        block.Open(format, static_cast<void*>(heap), heap->ModuleName(), heap->Name());
    const std::int32_t result = work();
    if (isTraced)
        ReportLine(L"->%d", result);
    return result;
}

clsModuleNode* clsModuleList::Open(const wchar_t* name, std::uint32_t flags, const CallSite& caller)
{
    const clsCriticalSectionLock lock(_section);
    clsModuleNode* module = Find(name != nullptr ? name : L"");
    const bool isTraced = ((module != nullptr ? module->Flags() : flags) & kModuleTrace) != 0;
    ReportBlock block;
    if (isTraced)
        block.Open(L"UtilJobOpen('%s',0x%08x)", ShownName(name), flags);
    if (module != nullptr)
        ++module->_references;
    else
        module = Add(name, flags, caller);
    if (isTraced)
        ReportLine(L"->%#p", static_cast<void*>(module));
    return module;
}

std::int32_t clsModuleList::Close(clsModuleNode* module)
{
    const clsCriticalSectionLock lock(_section);
    if (!HasModule(module))
    {
        ReportLine(L"Error: clsModuleList::Delete(%#p): Invalid handle", static_cast<void*>(module));
        return kHeapsInvalidHandle;
    }
    const bool isTraced = module->IsTraced();
    ReportBlock block;
    if (isTraced)
        block.Open(L"UtilJobClose(%#p) ['%s']", static_cast<void*>(module), module->Name());
    const std::int32_t result = --module->_references != 0 ? 0 : Delete(module);
    if (isTraced && result != 0)
        ReportLine(L"Error: unknown result code '%d'", result);
    if (isTraced)
        ReportLine(L"->%d", result);
    return result;
}

clsHeapNode* clsModuleList::CreateHeap(
    clsModuleNode* module, const wchar_t* name, std::uint32_t flags, const CallSite& caller)
{
    LateHeapFunctions(); // so that allocating and freeing objects needn't resolve them
    const clsCriticalSectionLock lock(_section);
    if (!HasModule(module))
        return nullptr;
    const bool isTraced = module->IsTraced();
    ReportBlock block;
    if (isTraced)
        block.Open(L"UtilHeapCreate(%#p,'%s',0x%08x)", static_cast<void*>(module), ShownName(name), flags);
    clsHeapNode* const heap = module->AddHeap(name, flags, caller);
    if (isTraced)
        ReportLine(L"->%#p", static_cast<void*>(heap));
    return heap;
}

std::int32_t clsModuleList::DeleteHeap(clsHeapNode* heap)
{
    const clsCriticalSectionLock lock(_section);
    clsModuleNode* const owner = OwnerOf(heap);
    if (owner == nullptr)
    {
        ReportLine(L"Error: clsModuleNode['%s']::DeleteHeap(%#p): Invalid handle", L"", static_cast<void*>(heap));
        return kHeapsInvalidHandle;
    }
    return Traced(heap, L"UtilHeapDelete(%#p) ['%s','%s']", [=] { return owner->DeleteHeap(heap); });
}

std::int32_t clsModuleList::SizeOfHeap(clsHeapNode* heap)
{
    return Traced(heap, L"UtilHeapSize(%#p) ['%s','%s']",
        [=]
        {
            if (!heap->IsDebugHeap())
            {
                const ReportBlock block(L"UtilHeapSize will only work for DEBUG heaps, or in NT >= 3.51");
                ReportLine(L"0x%08x", heap->Flags());
                return kHeapsNotSupported;
            }
            return LateHeapFunctions().walk != nullptr ? heap->SizeOfBlocks() : heap->LiveBytes();
        });
}

std::int32_t clsModuleList::SizeOfObjects(clsHeapNode* heap)
{
    return Traced(heap, L"UtilHeapSizeObjects(%#p) ['%s','%s']",
        [=]
        {
            const std::int32_t result = heap->SizeOfBlocks();
            if (result == kHeapsNotSupported)
                ReportLine(L"Error: UtilHeapSizeObjects(...) does only run under NT");
            return result;
        });
}

std::int32_t clsModuleList::ValidateHeap(clsHeapNode* heap, const void* object)
{
    return Traced(heap, L"UtilHeapValidate(%#p) ['%s','%s']", [=] { return heap->Validate(object); });
}

std::int32_t clsModuleList::ShrinkHeap(clsHeapNode* heap)
{
    return Traced(heap, L"UtilHeapShrink(%#p) ['%s','%s']", [=] { return heap->ShrinkHeap(); });
}

std::int32_t clsModuleList::GroupLeaks(
    const clsModuleNode* module, const clsHeapNode* heap, std::vector<LeakGroup>& groups)
{
    const clsCriticalSectionLock lock(_section);
    if (heap != nullptr)
    {
        const clsModuleNode* const owner = OwnerOf(heap);
        if (owner == nullptr || (module != nullptr && module != owner))
            return kHeapsInvalidHandle;
    }
    else if (module != nullptr && !HasModule(module))
        return kHeapsInvalidHandle;
    if (LateHeapFunctions().walk == nullptr)
        return kHeapsNotSupported;
    LeakGroups collected(_chains, GetTickCount());
    if (heap != nullptr)
        collected.Add(*heap);
    else
        for (const clsModuleNode* present = _first; present != nullptr; present = present->_next)
            if (module == nullptr || present == module)
                present->ForEachHeap([&](const clsHeapNode& each) { collected.Add(each); });
    groups = std::move(collected).Sorted();
    return 0;
}

void* clsModuleList::AllocObject(
    clsHeapNode* heap, std::uint32_t size, std::uint32_t flags, std::uint32_t tag, const CallSite& caller)
{
    void* const object = IsOnlyThread() ? heap->AllocObject(size, flags, tag, caller)
                                        : AllocObjectInSection(heap, size, flags, tag, caller);
    if (object == nullptr) [[unlikely]]
        ReportFailedAllocation(heap, size, flags, caller);
    return object;
}

[[gnu::noinline]] void* clsModuleList::AllocObjectInSection(
    clsHeapNode* heap, std::uint32_t size, std::uint32_t flags, std::uint32_t tag, const CallSite& caller)
{
    const clsCriticalSectionLock lock(_section);
    return heap->AllocObject(size, flags, tag, caller);
}

// Always enters the critical section, even if the process has only one thread, because the receiver of the report may
// start threads.
void clsModuleList::ReportFailedAllocation(
    const clsHeapNode* heap, std::uint32_t size, std::uint32_t flags, const CallSite& caller)
{
    bool raises = false;
    {
        const clsCriticalSectionLock lock(_section);
        raises = heap->ReportFailedAllocation(size, flags, caller) && heap->RaisesExceptions();
    }
    if (raises)
        RaiseException(kNoMemoryStatus, 0, 0, nullptr);
}

std::int32_t clsModuleList::FreeObject(clsHeapNode* heap, void* object)
{
    // Loads the header in advance, because it is seldom in the cache and loading it takes as long as entering the
    // critical section and looking up the block.
    __builtin_prefetch(BytesAt(object, -static_cast<std::ptrdiff_t>(kPlainOverhead)));
    if (heap->IsDebugHeap())
        __builtin_prefetch(BytesAt(object, -static_cast<std::ptrdiff_t>(kDebugHeaderSize)));
    if (IsOnlyThread() && heap->FreeQuickly(object))
        return 0;
    const clsCriticalSectionLock lock(_section);
    return heap->FreeObject(object);
}

std::int32_t clsModuleList::SizeObject(clsHeapNode* heap, const void* object)
{
    const clsCriticalSectionLock lock(_section);
    return heap->SizeObject(object);
}

bool clsModuleList::HasModule(const void* module) const
{
    for (const clsModuleNode* present = _first; present != nullptr; present = present->_next)
        if (present == module)
            return true;
    return false;
}

clsModuleNode* clsModuleList::OwnerOf(const void* heap) const
{
    for (clsModuleNode* module = _first; module != nullptr; module = module->_next)
        if (module->HasHeap(heap))
            return module;
    return nullptr;
}

clsModuleNode* clsModuleList::Add(const wchar_t* name, std::uint32_t flags, const CallSite& caller)
{
    clsModuleNode* const module = clsModuleNode::Create(name, flags, _chains, caller);
    if (module == nullptr)
    {
        ReportLine(L"Error: clsModuleList::Add(..): Out of Memory");
        return nullptr;
    }
    module->_previous = _last;
    (_last != nullptr ? _last->_next : _first) = module;
    _last = module;
    return module;
}

std::int32_t clsModuleList::Delete(clsModuleNode* module)
{
    (module->_previous != nullptr ? module->_previous->_next : _first) = module->_next;
    (module->_next != nullptr ? module->_next->_previous : _last) = module->_previous;
    return clsModuleNode::Delete(module);
}

// Compares the whole name, but stored names may be truncated, so a name longer than 32 characters is never found.
clsModuleNode* clsModuleList::Find(const wchar_t* name) const
{
    for (clsModuleNode* module = _first; module != nullptr; module = module->_next)
        if (wcscmp(module->Name(), name) == 0)
            return module;
    return nullptr;
}

void* AllocObjectWithoutHeap(std::uint32_t size, std::uint32_t flags)
{
    if (static_cast<std::int32_t>(size) < 0)
        return nullptr;
    char* const block = static_cast<char*>(std::malloc(size + kNoHeapOverhead));
    if (block == nullptr)
        return nullptr;
    const std::uint64_t storedSize = size;
    std::memcpy(block, &storedSize, sizeof storedSize);
    char* const object = block + kNoHeapOverhead;
    if ((flags & kObjectZero) != 0)
        std::memset(object, 0, size);
    else if ((flags & kObjectFill) != 0)
        std::memset(object, kFreshByte, size);
    return object;
}

std::int32_t FreeObjectWithoutHeap(void* object)
{
    if (object == nullptr)
        return kHeapsBadObject;
    std::free(static_cast<char*>(object) - kNoHeapOverhead);
    return 0;
}

std::int32_t SizeObjectWithoutHeap(const void* object)
{
    if (object == nullptr)
        return kHeapsBadObject;
    std::uint64_t storedSize = 0;
    std::memcpy(&storedSize, static_cast<const char*>(object) - kNoHeapOverhead, sizeof storedSize);
    return static_cast<std::int32_t>(storedSize);
}

} // namespace qx
