// All jobs of the process, and the critical section that protects all tracked heaps.
#pragma once

#include "core/critical_section.h"
#include "heaps/heap_leaks.h"
#include "heaps/module_node.h"

#include <vector>

namespace qx
{

// Each function implements an exported function. `caller` is the return address of the exported function, at which call
// chains begin. A heap handle must be valid unless a comment says that it is looked up.
class clsModuleList
{
public:
    static clsModuleList& Instance() { return instance; }

    clsModuleList() = default;
    clsModuleList(const clsModuleList&) = delete;
    clsModuleList& operator=(const clsModuleList&) = delete;
    // Frees all remaining jobs, heaps and objects without a report, because the debug output is closed by then.
    ~clsModuleList();

    clsModuleNode* Open(const wchar_t* name, std::uint32_t flags, const CallSite& caller);
    std::int32_t Close(clsModuleNode* module); // looks the handle up

    clsHeapNode* CreateHeap(clsModuleNode* module, const wchar_t* name, std::uint32_t flags, const CallSite& caller);
    std::int32_t DeleteHeap(clsHeapNode* heap); // looks the handle up
    std::int32_t SizeOfHeap(clsHeapNode* heap);
    std::int32_t SizeOfObjects(clsHeapNode* heap);
    std::int32_t ValidateHeap(clsHeapNode* heap, const void* object);
    std::int32_t ShrinkHeap(clsHeapNode* heap);

    // Groups the live objects of a heap, of all heaps of a job (null heap), or of all heaps (both null) by their call
    // chains. Looks up the handles. Returns 0, kHeapsInvalidHandle or kHeapsNotSupported.
    std::int32_t GroupLeaks(const clsModuleNode* module, const clsHeapNode* heap, std::vector<LeakGroup>& groups);

    // If memory runs out and the heap was created with kHeapGenerateExceptions, raises STATUS_NO_MEMORY after leaving
    // the critical section.
    void* AllocObject(
        clsHeapNode* heap, std::uint32_t size, std::uint32_t flags, std::uint32_t tag, const CallSite& caller);
    std::int32_t FreeObject(clsHeapNode* heap, void* object);
    std::int32_t SizeObject(clsHeapNode* heap, const void* object);

    // Returns the critical section, for callers that use the records directly.
    clsCriticalSection& Section() { return _section; }
    const CallChains& Chains() const { return _chains; }

    // Compare addresses only.
    bool HasModule(const void* module) const;
    clsModuleNode* OwnerOf(const void* heap) const; // null if there is no such heap

private:
    clsModuleNode* Add(const wchar_t* name, std::uint32_t flags, const CallSite& caller);
    std::int32_t Delete(clsModuleNode* module);
    clsModuleNode* Find(const wchar_t* name) const;

    void* AllocObjectInSection(
        clsHeapNode* heap, std::uint32_t size, std::uint32_t flags, std::uint32_t tag, const CallSite& caller);
    void ReportFailedAllocation(
        const clsHeapNode* heap, std::uint32_t size, std::uint32_t flags, const CallSite& caller);

    template <class Work>
    std::int32_t Traced(clsHeapNode* heap, const wchar_t* format, Work work);

    static clsModuleList& instance;

    clsCriticalSection _section;
    clsModuleNode* _first = nullptr;
    clsModuleNode* _last = nullptr;
    CallChains _chains;
};

// For objects that are allocated without a heap. These functions don't enter the critical section.
void* AllocObjectWithoutHeap(std::uint32_t size, std::uint32_t flags);
std::int32_t FreeObjectWithoutHeap(void* object);
std::int32_t SizeObjectWithoutHeap(const void* object);

} // namespace qx
