// Iterates over the blocks of a heap.
#pragma once

#include "heaps/heap_functions.h"
#include "heaps/heap_node.h"

#include <windows.h>

#include <heapapi.h>

namespace qx
{

// Locks a system heap for the lifetime of the object, if the heap is serialised and the system has the functions.
// Released in a destructor, because a visitor may throw.
class SystemHeapLock
{
public:
    SystemHeapLock(const HeapFunctions& functions, HANDLE heap, bool isSerialized)
        : _unlock(functions.unlock),
          _heap(heap),
          _isLocked(isSerialized && functions.lock != nullptr && functions.unlock != nullptr && functions.lock(heap))
    {
    }
    SystemHeapLock(const SystemHeapLock&) = delete;
    SystemHeapLock& operator=(const SystemHeapLock&) = delete;
    ~SystemHeapLock()
    {
        if (_isLocked)
            _unlock(_heap);
    }

private:
    BOOL(WINAPI* _unlock)(HANDLE);
    HANDLE _heap;
    bool _isLocked;
};

template <class Visitor>
void clsHeapNode::ForEachBlock(Visitor visitor) const
{
    const HeapFunctions& functions = LateHeapFunctions();
    if (functions.walk == nullptr)
        return;
    const SystemHeapLock lock(functions, _systemHeap, (_heapOptions & HEAP_NO_SERIALIZE) == 0);
    PROCESS_HEAP_ENTRY entry = {};
    while (functions.walk(_systemHeap, &entry))
        if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 && !visitor(entry.lpData, std::size_t{entry.cbData}))
            break;
}

// Calls the visitor for each debug object of this heap, until it returns false. Skips all other blocks.
template <class Visitor>
void clsHeapNode::ForEachDebugObject(Visitor visitor) const
{
    ForEachBlock(
        [&](const void* block, std::size_t size)
        {
            if (size < kDebugOverhead || WordAt(block) != kFirstMagic)
                return true;
            const DebugObject object = ReadDebugObject(BytesAt(block, kDebugHeaderSize), size);
            return object.header.systemHeap != _systemHeap || visitor(object);
        });
}

} // namespace qx
