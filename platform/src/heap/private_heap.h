// A private heap. It stores its records of blocks apart from the blocks.
#pragma once

#include "heap/span.h"

#include <heapapi.h>
#include <synchapi.h>

namespace qxplatform::heap
{

class PrivateHeap
{
public:
    // A block, in use or not.
    struct Place
    {
        Span* span = nullptr;
        std::uint32_t index = 0;
    };

    // A zero-initialized heap is empty and ready for use, so a static heap needs no initialization at run time.
    constexpr PrivateHeap() = default;
    PrivateHeap(const PrivateHeap&) = delete;
    PrivateHeap& operator=(const PrivateHeap&) = delete;

    // Returns null if memory runs out. The heap's record is stored in its own pages.
    static PrivateHeap* Create(DWORD options);
    static void Destroy(PrivateHeap* heap);

    DWORD Options() const { return _options; }
    CRITICAL_SECTION& Section() { return _section; }

    // Callers of the functions below must hold Section(), unless they serialise the calls themselves.

    // Returns null if memory runs out. Sets `isZeroed` if the memory is new from the system and therefore zeroed.
    void* Allocate(std::size_t size, bool& isZeroed)
    {
        void* const block = AllocateQuickly(size);
        return block != nullptr ? block : AllocateSlowly(size, isZeroed);
    }
    // Takes a block from the open span of its size. Returns null if that isn't possible.
    void* AllocateQuickly(std::size_t size)
    {
        Span* const span = size <= SizeClasses::kMost ? _open[SizeClasses::Of(size)] : nullptr;
        if (span == nullptr || span->used + 1 == span->count) [[unlikely]]
            return nullptr;
        const std::uint32_t index = span->Take(span->blockSize - size);
        return index != kNoBlock ? span->Block(index) : nullptr;
    }
    bool Free(const void* block)
    {
        Place place;
        if (!Find(block, place))
            return false;
        Free(place);
        return true;
    }
    void Free(const Place& place)
    {
        // Usually only the block's state and the list of free blocks change.
        Span& span = *place.span;
        if (span.units != 0) [[likely]]
            span.Release(place.index);
        if (!span.isOpen || span.used == 0) [[unlikely]]
            Tidy(span);
    }
    // Finds the block in use that starts at an address, without reading from there.
    bool Find(const void* address, Place& place) const
    {
        place.span = _table.Find(UnitOf(address));
        return place.span != nullptr && place.span->IndexOf(address, place.index) && place.span->IsInUse(place.index);
    }
    static std::size_t SizeOf(const Place& place)
    {
        const Span& span = *place.span;
        if (span.units == 0)
            return span.largeSize;
        return span.blockSize - (span.states[place.index] & ~std::size_t{kInUse});
    }

    // Moves the entry on to the next block or the next run of free blocks. If its address is null, the walk starts at
    // the first block.
    enum class Step
    {
        Found,
        AtEnd,
        NoEntry // the entry refers to no block
    };
    Step Walk(PROCESS_HEAP_ENTRY& entry) const;

    bool IsSound() const;
    std::size_t Compact();

private:
    void* AllocateSlowly(std::size_t size, bool& isZeroed);
    void Tidy(Span& span); // after a block of the span was freed
    void* AllocateLarge(std::size_t size);
    Span* MakeSpan(std::uint32_t sizeClass);
    Span* TakeRecord(std::uint32_t sizeClass, std::uint32_t count);
    void Enter(Span& span, Chunk* chunk, char* begin, std::size_t units);
    void Forget(Span& span);
    void FreeLarge(Span& span);
    void DropSpan(Span& span);
    void Open(Span& span);
    void Close(Span& span);

    Chunk* MakeChunk();
    char* TakeUnits(std::size_t units, Chunk*& chunk);
    void GiveUnitsBack(Chunk& chunk, char* begin, std::size_t units);

    CRITICAL_SECTION _section{};
    DWORD _options = 0;
    SpanTable _table;
    RecordArena _arena;
    Span* _open[SizeClasses::kCount] = {}; // spans with free blocks
    Span* _records[SizeClasses::kCount] = {};
    Span* _largeRecords = nullptr;
    Span* _spans = nullptr;
    Span* _lastSpan = nullptr;
    Chunk* _chunks = nullptr;
    Chunk* _openChunks = nullptr;
    Chunk* _chunkRecords = nullptr;
    Chunk* _spareChunk = nullptr; // its memory isn't used
};

} // namespace qxplatform::heap
