// The blocks allocated by GlobalAlloc and LocalAlloc: one table for both, because the system treats their handles
// alike.
//
// A fixed block is identified by its address, a movable one by a handle that is not an address: index and generation of
// its entry. Both are looked up before use, so stale and foreign values are detected and never dereferenced.
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

    // Each function returns the result of the system's function of that name and sets the last error accordingly.
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
        void* data = nullptr; // null for a movable block of 0 bytes
        std::size_t size = 0;
        std::size_t capacity =
            0; // allocated size of `data`; without a reserve, growing in small steps would copy the data in each step
        std::uint32_t generation = 1;
        std::uint32_t lockCount = 0;
        bool inUse = false;
        bool movable = false;
    };

    Block* Find(HGLOBAL handle);
    HGLOBAL HandleFor(const Block& block) const;
    void ProvideEntry();
    Block& TakeEntry(); // there is one after ProvideEntry()
    void ReleaseEntry(Block& block);
    bool Resize(Block& block, std::size_t size, bool zero, bool mayMove);

    Mutex _mutex;
    std::vector<Block> _blocks;
    std::vector<std::uint32_t> _freeEntries;
    std::unordered_map<const void*, std::uint32_t> _entryOfAddress;
};

} // namespace qxplatform
