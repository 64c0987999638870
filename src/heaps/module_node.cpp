#include "heaps/module_node.h"

#include "diag/report.h"
#include "heaps/chain_report.h"

#include <windows.h>

#include <heapapi.h>

#include <new>

namespace qx
{

clsModuleNode::clsModuleNode(const wchar_t* name, std::uint32_t flags, CallChains& chains)
    : _flags(flags),
      _chains(chains)
{
    CopyName(_name, name);
}

clsModuleNode* clsModuleNode::Create(
    const wchar_t* name, std::uint32_t flags, CallChains& chains, const CallSite& caller)
{
    void* const memory = HeapAlloc(GetProcessHeap(), 0, sizeof(clsModuleNode));
    if (memory == nullptr)
        return nullptr;
    auto* const module = new (memory) clsModuleNode(name, flags, chains);
    if (module->IsTraced())
        module->_openTrace = chains.Use(CallChains::Captured(caller));
    return module;
}

std::int32_t clsModuleNode::Delete(clsModuleNode* module)
{
    const bool hasHeaps = module->_firstHeap != nullptr;
    {
        const ReportedPaths paths;
        ReportBlock block;
        while (clsHeapNode* const heap = module->_firstHeap)
        {
            block.Open(L"Error: deleting module '%s', but the following heaps are left:", module->Name());
            heap->Report();
            module->UnlinkHeap(*heap);
            clsHeapNode::Delete(heap);
        }
    }
    Discard(module);
    return hasHeaps ? kHeapsLeftOver : 0;
}

void clsModuleNode::Discard(clsModuleNode* module)
{
    while (clsHeapNode* const heap = module->_firstHeap)
    {
        module->UnlinkHeap(*heap);
        clsHeapNode::Discard(heap);
    }
    module->_chains.Release(module->_openTrace);
    module->~clsModuleNode();
    HeapFree(GetProcessHeap(), 0, module);
}

clsHeapNode* clsModuleNode::AddHeap(const wchar_t* name, std::uint32_t flags, const CallSite& caller)
{
    if ((flags & kHeapIllegal) != 0)
        return nullptr;
    const bool refusesDebug = (flags & kHeapNoDebug) != 0;
    if ((flags & kHeapDebug) != 0 || (IsTraced() && !refusesDebug))
        DebugLine(L"%s: UtilHeapCreate(..,'%s',..) called with DEBUG bit", Name(), ShownName(name));
    if ((_flags & kModuleDebug) != 0 && !refusesDebug)
        flags |= kHeapDebug;
    if (refusesDebug)
        flags &= ~kHeapDebug;
    clsHeapNode* const heap = clsHeapNode::Create(*this, name, flags, _chains, caller);
    if (heap == nullptr)
    {
        ReportLine(L"Error: clsModuleNode['%s']::AddHeap('%s',0x%08x): Out of Memory", Name(), ShownName(name), flags);
        return nullptr;
    }
    heap->_previous = _lastHeap;
    (_lastHeap != nullptr ? _lastHeap->_next : _firstHeap) = heap;
    _lastHeap = heap;
    return heap;
}

std::int32_t clsModuleNode::DeleteHeap(clsHeapNode* heap)
{
    UnlinkHeap(*heap);
    return clsHeapNode::Delete(heap);
}

bool clsModuleNode::HasHeap(const void* heap) const
{
    for (const clsHeapNode* present = _firstHeap; present != nullptr; present = present->_next)
        if (present == heap)
            return true;
    return false;
}

void clsModuleNode::UnlinkHeap(clsHeapNode& heap)
{
    (heap._previous != nullptr ? heap._previous->_next : _firstHeap) = heap._next;
    (heap._next != nullptr ? heap._next->_previous : _lastHeap) = heap._previous;
}

} // namespace qx
