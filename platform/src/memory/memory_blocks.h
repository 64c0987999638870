// The blocks that GlobalAlloc and LocalAlloc hand out: one table for both, since the system treats their handles alike.
//
// A fixed block is known by its address, a movable one by a handle that is no address: index and generation of its
// entry. Both are looked up before they are used, so that a stale or foreign value is told from a valid one and never
// followed.
#pragma once

#include "base/mutex.h"

#include <minwindef.h>

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace qxplatform
{

class MemoryBlocks
{
public:
    static MemoryBlocks& Instance();

    // Each function gives the value that the system's function of its name gives, and sets the last error like it.
    HGLOBAL Allocate(UINT flags, SIZE_T size);
    HGLOBAL Reallocate(HGLOBAL handle, SIZE_T size, UINT flags);
    HGLOBAL Free(HGLOBAL handle);
    void* Lock(HGLOBAL handle);
    BOOL Unlock(HGLOBAL handle);
    SIZE_T Size(HGLOBAL handle);
    UINT Flags(HGLOBAL handle);

private:
    struct Block
    {
        void* data = nullptr; // null for a movable block of no bytes
        std::size_t size = 0;
        std::size_t capacity =
            0; // bytes that `data` has; growing step by step would copy at each step without a reserve
        std::uint32_t generation = 1;
        std::uint32_t lockCount = 0;
        bool inUse = false;
        bool movable = false;
    };

    Block* Find(HGLOBAL handle);
    HGLOBAL HandleFor(const Block& block) const;
    Block& TakeEntry();
    void ReleaseEntry(Block& block);
    bool Resize(Block& block, std::size_t size, bool zero, bool mayMove);

    Mutex _mutex;
    std::vector<Block> _blocks;
    std::vector<std::uint32_t> _freeEntries;
    std::unordered_map<const void*, std::uint32_t> _entryOfAddress;
};

} // namespace qxplatform
