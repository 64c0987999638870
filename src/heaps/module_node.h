// A job: the heaps of a client module.
#pragma once

#include "heaps/heap_node.h"

namespace qx
{

constexpr std::uint32_t kModuleTrace = 0x80000000;
constexpr std::uint32_t kModuleDebug = 0x40000000;

class clsModuleNode
{
public:
    // Returns null if memory runs out. The record is allocated on the process heap.
    static clsModuleNode* Create(const wchar_t* name, std::uint32_t flags, CallChains& chains, const CallSite& caller);
    // Deletes the job with its heaps. Returns kHeapsLeftOver if there were any, otherwise 0.
    static std::int32_t Delete(clsModuleNode* module);
    // Frees the job and its heaps without a report.
    static void Discard(clsModuleNode* module);

    clsModuleNode(const clsModuleNode&) = delete;
    clsModuleNode& operator=(const clsModuleNode&) = delete;

    const wchar_t* Name() const { return _name; }
    std::uint32_t Flags() const { return _flags; }
    bool IsTraced() const { return (_flags & kModuleTrace) != 0; }

    // Returns null if the flags are illegal or memory runs out.
    clsHeapNode* AddHeap(const wchar_t* name, std::uint32_t flags, const CallSite& caller);
    std::int32_t DeleteHeap(clsHeapNode* heap);

    // Compares addresses only, so `heap` may be any value.
    bool HasHeap(const void* heap) const;

    template <class Visitor>
    void ForEachHeap(Visitor visitor) const
    {
        for (clsHeapNode* heap = _firstHeap; heap != nullptr; heap = heap->_next)
            visitor(*heap);
    }

private:
    friend class clsModuleList; // counts the references and links the jobs

    clsModuleNode(const wchar_t* name, std::uint32_t flags, CallChains& chains);
    ~clsModuleNode() = default;

    void UnlinkHeap(clsHeapNode& heap);

    wchar_t _name[kNameCapacity] = {};
    std::uint32_t _flags;
    const scCallChain* _openTrace = nullptr;
    std::uint32_t _references = 1;
    clsModuleNode* _next = nullptr;
    clsModuleNode* _previous = nullptr;
    clsHeapNode* _firstHeap = nullptr;
    clsHeapNode* _lastHeap = nullptr;
    CallChains& _chains;
};

// Returns the name as shown in messages.
inline const wchar_t* ShownName(const wchar_t* name)
{
    return name != nullptr ? name : L"(NULL)";
}

} // namespace qx
