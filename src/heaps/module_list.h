// All jobs of the process, and the section that protects everything about tracked heaps.
#pragma once

#include "core/critical_section.h"
#include "heaps/heap_leaks.h"
#include "heaps/module_node.h"

#include <vector>

namespace qx
{

// The functions are called by the exported functions of the same purpose. `caller` is the return address of the
// exported function, with which call chains begin. Handles of heaps and jobs are looked up where that is said;
// otherwise a heap handle is trusted.
class clsModuleList
{
public:
    static clsModuleList& Instance() { return instance; }

    clsModuleList() = default;
    clsModuleList(const clsModuleList&) = delete;
    clsModuleList& operator=(const clsModuleList&) = delete;
    // Frees all jobs, heaps and objects that are left, without a report: the debug output is closed by then.
    ~clsModuleList();

    clsModuleNode* Open(const wchar_t* name, std::uint32_t flags, const CallSite& caller);
    std::int32_t Close(clsModuleNode* module); // looks the handle up

    clsHeapNode* CreateHeap(clsModuleNode* module, const wchar_t* name, std::uint32_t flags, const CallSite& caller);
    std::int32_t DeleteHeap(clsHeapNode* heap); // looks the handle up
    std::int32_t SizeOfHeap(clsHeapNode* heap);
    std::int32_t SizeOfObjects(clsHeapNode* heap);
    std::int32_t ValidateHeap(clsHeapNode* heap, const void* object);
    std::int32_t ShrinkHeap(clsHeapNode* heap);

    // Stores the live objects of a heap, or of all heaps of a job; with two null handles, of all heaps. Looks the
    // handles up. Returns 0, kHeapsInvalidHandle or kHeapsNotSupported.
    std::int32_t GroupLeaks(const clsModuleNode* module, const clsHeapNode* heap, std::vector<LeakGroup>& groups);

    // Raises STATUS_NO_MEMORY, after leaving the section, if memory runs out and the heap's flags say so.
    void* AllocObject(
        clsHeapNode* heap, std::uint32_t size, std::uint32_t flags, std::uint32_t tag, const CallSite& caller);
    std::int32_t FreeObject(clsHeapNode* heap, void* object);
    std::int32_t SizeObject(clsHeapNode* heap, const void* object);

    // The section, for callers that use the records directly.
    clsCriticalSection& Section() { return _section; }
    const CallChains& Chains() const { return _chains; }

    // Compare addresses only.
    bool HasModule(const void* module) const;
    clsModuleNode* OwnerOf(const void* heap) const; // null if it is on no list

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

// Objects without a heap. They don't enter the section.
void* AllocObjectWithoutHeap(std::uint32_t size, std::uint32_t flags);
std::int32_t FreeObjectWithoutHeap(void* object);
std::int32_t SizeObjectWithoutHeap(const void* object);

} // namespace qx
