#include "memory/memory_blocks.h"

#include "base/forever.h"

#include <windows.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

namespace qxplatform
{

namespace
{

// The low bits of a movable block's handle. Addresses of blocks are multiples of 16 and thus never have these bits.
constexpr std::uintptr_t kMovableTag = 0xA;
constexpr std::uintptr_t kTagMask = 0xF;
constexpr unsigned kIndexShift = 4;
constexpr unsigned kGenerationShift = 32;
constexpr std::size_t kMaxEntries = std::size_t{1} << (kGenerationShift - kIndexShift);

void* AllocateBytes(std::size_t size, bool zero)
{
    if (size > PTRDIFF_MAX)
        return nullptr;
    const std::size_t least = size != 0 ? size : 1;
    // calloc takes large blocks from the system, which has already zeroed them.
    return zero ? std::calloc(least, 1) : std::malloc(least);
}

} // namespace

MemoryBlocks& MemoryBlocks::Instance()
{
    // Never destroyed: objects destroyed after the layer's static objects may still free blocks.
    static constinit Forever<MemoryBlocks> instance;
    return instance.Get();
}

HGLOBAL MemoryBlocks::Allocate(UINT flags, SIZE_T size)
{
    const bool movable = (flags & GMEM_MOVEABLE) != 0;
    std::unique_ptr<void, decltype(&std::free)> bytes(nullptr, &std::free);
    if (!movable || size != 0)
    {
        bytes.reset(AllocateBytes(size, (flags & GMEM_ZEROINIT) != 0));
        if (!bytes)
        {
            SetLastError(ERROR_NOT_ENOUGH_MEMORY);
            return nullptr;
        }
    }
    std::lock_guard lock(_mutex);
    if (_freeEntries.empty() && _blocks.size() == kMaxEntries)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    ProvideEntry();
    std::uint32_t* const entry = bytes ? &_entryOfAddress[bytes.get()] : nullptr;
    Block& block = TakeEntry();
    block.data = bytes.release();
    block.size = block.capacity = size;
    block.movable = movable;
    if (entry != nullptr)
        *entry = static_cast<std::uint32_t>(&block - _blocks.data());
    return HandleFor(block);
}

HGLOBAL MemoryBlocks::Reallocate(HGLOBAL handle, SIZE_T size, UINT flags)
{
    std::lock_guard lock(_mutex);
    Block* block = Find(handle);
    if (block == nullptr)
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    const bool mayMove = (flags & GMEM_MOVEABLE) != 0 || (block->movable && block->lockCount == 0);
    if (!Resize(*block, size, (flags & GMEM_ZEROINIT) != 0, mayMove))
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    return HandleFor(*block);
}

HGLOBAL MemoryBlocks::Free(HGLOBAL handle)
{
    if (handle == nullptr)
        return nullptr;
    void* data = nullptr;
    {
        std::lock_guard lock(_mutex);
        Block* block = Find(handle);
        if (block == nullptr)
        {
            SetLastError(ERROR_INVALID_HANDLE);
            return handle;
        }
        // As documented, a locked block is freed, too.
        data = block->data;
        ReleaseEntry(*block);
    }
    std::free(data);
    return nullptr;
}

void* MemoryBlocks::Lock(HGLOBAL handle)
{
    std::lock_guard lock(_mutex);
    Block* block = Find(handle);
    if (block == nullptr)
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    if (block->data == nullptr)
    {
        SetLastError(ERROR_DISCARDED);
        return nullptr;
    }
    if (block->movable)
        ++block->lockCount;
    return block->data;
}

BOOL MemoryBlocks::Unlock(HGLOBAL handle)
{
    std::lock_guard lock(_mutex);
    Block* block = Find(handle);
    if (block == nullptr)
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (!block->movable)
        return TRUE; // a fixed block has no lock count
    if (block->lockCount == 0)
    {
        SetLastError(ERROR_NOT_LOCKED);
        return FALSE;
    }
    if (--block->lockCount != 0)
        return TRUE;
    SetLastError(NO_ERROR);
    return FALSE;
}

SIZE_T MemoryBlocks::Size(HGLOBAL handle)
{
    std::lock_guard lock(_mutex);
    const Block* block = Find(handle);
    if (block == nullptr)
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return 0;
    }
    return block->size;
}

UINT MemoryBlocks::Flags(HGLOBAL handle)
{
    std::lock_guard lock(_mutex);
    const Block* block = Find(handle);
    if (block == nullptr)
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return GMEM_INVALID_HANDLE;
    }
    return block->lockCount < GMEM_LOCKCOUNT ? block->lockCount : GMEM_LOCKCOUNT;
}

MemoryBlocks::Block* MemoryBlocks::Find(HGLOBAL handle)
{
    const std::uintptr_t value = reinterpret_cast<std::uintptr_t>(handle);
    if ((value & kTagMask) != kMovableTag)
    {
        const auto found = _entryOfAddress.find(handle);
        if (found == _entryOfAddress.end() || _blocks[found->second].movable)
            return nullptr;
        return &_blocks[found->second];
    }
    const std::size_t index = (value & UINT32_MAX) >> kIndexShift;
    if (index >= _blocks.size())
        return nullptr;
    Block& block = _blocks[index];
    return block.inUse && block.movable && block.generation == value >> kGenerationShift ? &block : nullptr;
}

HGLOBAL MemoryBlocks::HandleFor(const Block& block) const
{
    if (!block.movable)
        return block.data;
    const std::uintptr_t index = static_cast<std::uintptr_t>(&block - _blocks.data());
    const std::uintptr_t generation = block.generation;
    return reinterpret_cast<HGLOBAL>((generation << kGenerationShift) | (index << kIndexShift) | kMovableTag);
}

// Makes sure that there is a free entry. Releasing an entry must not need memory, so the list of free entries always
// has room for all entries.
void MemoryBlocks::ProvideEntry()
{
    if (!_freeEntries.empty())
        return;
    if (_freeEntries.capacity() <= _blocks.size())
        _freeEntries.reserve(2 * _blocks.size() + 8);
    _blocks.emplace_back();
    _freeEntries.push_back(static_cast<std::uint32_t>(_blocks.size() - 1));
}

MemoryBlocks::Block& MemoryBlocks::TakeEntry()
{
    Block& block = _blocks[_freeEntries.back()];
    _freeEntries.pop_back();
    block.inUse = true;
    return block;
}

void MemoryBlocks::ReleaseEntry(Block& block)
{
    if (block.data != nullptr)
        _entryOfAddress.erase(block.data);
    const std::uint32_t next = block.generation == UINT32_MAX ? 1 : block.generation + 1;
    block = Block{};
    block.generation = next;
    _freeEntries.push_back(static_cast<std::uint32_t>(&block - _blocks.data()));
}

bool MemoryBlocks::Resize(Block& block, std::size_t size, bool zero, bool mayMove)
{
    const std::size_t oldSize = block.size;
    const bool tooLarge = size > block.capacity;
    const bool wasteful = mayMove && size < block.capacity / 2;
    if (block.data == nullptr || tooLarge || wasteful)
    {
        if (!mayMove || size > PTRDIFF_MAX)
            return false;
        // A block that grows a second time is expected to grow often and gets a reserve. The reserve isn't touched and
        // therefore uses no memory.
        std::size_t capacity = size != 0 ? size : 1;
        if (tooLarge && oldSize != 0 && capacity < block.capacity + block.capacity / 2)
            capacity = block.capacity + block.capacity / 2;
        // Reuse the map's node, because allocating a new one could fail. A block without data has none.
        auto node = _entryOfAddress.extract(block.data);
        void* data = std::realloc(block.data, capacity);
        if (data == nullptr && capacity != size)
        {
            capacity = size;
            data = std::realloc(block.data, capacity);
        }
        if (!node.empty())
        {
            if (data != nullptr)
                node.key() = data;
            _entryOfAddress.insert(std::move(node));
        }
        else if (data != nullptr)
        {
            std::unique_ptr<void, decltype(&std::free)> fresh(data, &std::free);
            _entryOfAddress[data] = static_cast<std::uint32_t>(&block - _blocks.data());
            fresh.release();
        }
        if (data == nullptr)
            return false;
        block.data = data;
        block.capacity = capacity;
    }
    block.size = size;
    if (zero && size > oldSize)
        std::memset(static_cast<char*>(block.data) + oldSize, 0, size - oldSize);
    return true;
}

} // namespace qxplatform
