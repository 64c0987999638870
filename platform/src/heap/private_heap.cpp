#include "heap/private_heap.h"

#include <algorithm>
#include <new>

namespace qxplatform::heap
{
namespace
{

// Inserts an item at the front of a doubly linked list, whose links are the given members of the items.
template <class Item>
void Link(Item*& first, Item& item, Item* Item::*next, Item* Item::*previous)
{
    item.*next = first;
    item.*previous = nullptr;
    if (first != nullptr)
        first->*previous = &item;
    first = &item;
}

template <class Item>
void Unlink(Item*& first, Item& item, Item* Item::*next, Item* Item::*previous)
{
    (item.*previous != nullptr ? (item.*previous)->*next : first) = item.*next;
    if (item.*next != nullptr)
        (item.*next)->*previous = item.*previous;
}

// Takes an item from a list of spare records, which uses one link only.
template <class Item>
Item* TakeSpare(Item*& first, Item* Item::*next)
{
    Item* const item = first;
    if (item != nullptr)
        first = item->*next;
    return item;
}

template <class Item>
void KeepSpare(Item*& first, Item& item, Item* Item::*next)
{
    item.*next = first;
    first = &item;
}

constexpr std::size_t UnitsOf(std::uint32_t blockSize)
{
    return blockSize <= SizeClasses::kMostInUnit ? 1 : Chunk::kUnits;
}

DWORD Clamped(std::size_t size)
{
    return static_cast<DWORD>(std::min<std::size_t>(size, UINT32_MAX));
}

} // namespace

PrivateHeap* PrivateHeap::Create(DWORD options)
{
    void* const memory = MapPages(sizeof(PrivateHeap), false);
    if (memory == nullptr)
        return nullptr;
    PrivateHeap* const heap = new (memory) PrivateHeap;
    heap->_options = options;
    return heap;
}

void PrivateHeap::Destroy(PrivateHeap* heap)
{
    for (const Span* span = heap->_spans; span != nullptr; span = span->next)
        if (span->units == 0)
            UnmapPages(span->begin, span->largeSize, true);
    for (const Chunk* chunk = heap->_chunks; chunk != nullptr; chunk = chunk->next)
        UnmapPages(chunk->begin, Chunk::kSize, true);
    heap->_table.FreeAll();
    heap->_arena.FreeAll();
    UnmapPages(heap, sizeof(PrivateHeap), false);
}

void* PrivateHeap::AllocateSlowly(std::size_t size, bool& isZeroed)
{
    if (size > SizeClasses::kMost)
    {
        isZeroed = true;
        return AllocateLarge(size);
    }
    const std::uint32_t sizeClass = SizeClasses::Of(size);
    for (;;)
    {
        Span* span = _open[sizeClass];
        if (span == nullptr)
            span = MakeSpan(sizeClass);
        if (span == nullptr)
            return nullptr;
        const std::uint32_t index = span->Take(span->blockSize - size);
        if (index == kNoBlock || span->used == span->count)
            Close(*span); // a damaged span isn't used any more
        if (index != kNoBlock)
            return span->Block(index);
    }
}

void* PrivateHeap::AllocateLarge(std::size_t size)
{
    if (!_table.Reserve(1))
        return nullptr;
    Span* span = TakeSpare(_largeRecords, &Span::nextOpen);
    if (span == nullptr)
        span = static_cast<Span*>(_arena.Allocate(sizeof(Span)));
    if (span == nullptr)
        return nullptr;
    char* const pages = MapPages(size, true);
    if (pages == nullptr)
    {
        KeepSpare(_largeRecords, *span, &Span::nextOpen);
        return nullptr;
    }
    *span = Span{};
    span->count = span->used = span->fresh = 1;
    span->firstFree = kNoBlock;
    span->states[0] = kInUse;
    span->largeSize = size;
    Enter(*span, nullptr, pages, 0);
    return pages;
}

void PrivateHeap::Tidy(Span& span)
{
    if (span.units == 0)
        FreeLarge(span);
    else if (!span.isOpen)
        Open(span);
    else if (span.nextOpen != nullptr || span.previousOpen != nullptr)
        DropSpan(span); // one span of each size class is kept
}

PrivateHeap::Step PrivateHeap::Walk(PROCESS_HEAP_ENTRY& entry) const
{
    Span* span = _spans;
    std::uint32_t index = 0;
    if (entry.lpData != nullptr)
    {
        span = _table.Find(UnitOf(entry.lpData));
        if (span == nullptr || !span->IndexOf(entry.lpData, index) || index >= span->fresh)
            return Step::NoEntry;
        if (span->IsInUse(index))
            ++index;
        else
            while (index < span->fresh && !span->IsInUse(index))
                ++index;
    }
    while (span != nullptr && index >= span->fresh)
    {
        span = span->next;
        index = 0;
    }
    if (span == nullptr)
        return Step::AtEnd;
    entry = PROCESS_HEAP_ENTRY{};
    if (span->IsInUse(index))
    {
        const std::size_t size = SizeOf({span, index});
        entry.lpData = span->Block(index);
        entry.cbData = Clamped(size);
        entry.cbOverhead = static_cast<BYTE>(std::min<std::size_t>(span->units != 0 ? span->blockSize - size : 0, 255));
        entry.wFlags = PROCESS_HEAP_ENTRY_BUSY;
        return Step::Found;
    }
    std::uint32_t end = index;
    while (end < span->fresh && !span->IsInUse(end))
        ++end;
    entry.lpData = span->Block(index);
    entry.cbData = Clamped(std::size_t{end - index} * span->blockSize);
    return Step::Found;
}

bool PrivateHeap::IsSound() const
{
    for (const Span* span = _spans; span != nullptr; span = span->next)
        if (!span->IsSound() || _table.Find(UnitOf(span->begin)) != span)
            return false;
    return true;
}

std::size_t PrivateHeap::Compact()
{
    std::size_t largest = 0;
    for (std::uint32_t sizeClass = SizeClasses::kCount; sizeClass-- != 0;)
        for (Span* span = _open[sizeClass]; span != nullptr;)
        {
            Span* const next = span->nextOpen;
            if (span->used == 0)
                DropSpan(*span);
            else
                largest = std::max<std::size_t>(largest, span->blockSize);
            span = next;
        }
    if (_spareChunk != nullptr)
    {
        Chunk& chunk = *_spareChunk;
        _spareChunk = nullptr;
        UnmapPages(chunk.begin, Chunk::kSize, true);
        Unlink(_chunks, chunk, &Chunk::next, &Chunk::previous);
        KeepSpare(_chunkRecords, chunk, &Chunk::next);
    }
    return largest;
}

// Returns an open span without blocks in use.
Span* PrivateHeap::MakeSpan(std::uint32_t sizeClass)
{
    const std::uint32_t blockSize = SizeClasses::BlockSize(sizeClass);
    const std::size_t units = UnitsOf(blockSize);
    const auto count = static_cast<std::uint32_t>((units << kUnitShift) / blockSize);
    if (!_table.Reserve(units))
        return nullptr;
    Span* const span = TakeRecord(sizeClass, count);
    if (span == nullptr)
        return nullptr;
    Chunk* chunk = nullptr;
    char* const begin = TakeUnits(units, chunk);
    if (begin == nullptr)
    {
        KeepSpare(_records[sizeClass], *span, &Span::nextOpen);
        return nullptr;
    }
    *span = Span{};
    span->blockSize = blockSize;
    span->sizeClass = sizeClass;
    span->inverse = ((std::uint64_t{1} << Span::kInverseShift) + blockSize - 1) / blockSize;
    span->count = count;
    span->firstFree = kNoBlock;
    Enter(*span, chunk, begin, units);
    Open(*span);
    return span;
}

Span* PrivateHeap::TakeRecord(std::uint32_t sizeClass, std::uint32_t count)
{
    if (Span* const span = TakeSpare(_records[sizeClass], &Span::nextOpen))
        return span;
    return static_cast<Span*>(_arena.Allocate(sizeof(Span) + (count - 1) * sizeof(BlockState)));
}

void PrivateHeap::Enter(Span& span, Chunk* chunk, char* begin, std::size_t units)
{
    span.chunk = chunk;
    span.begin = begin;
    span.units = units;
    // Walks visit the spans in the order of their creation.
    span.previous = _lastSpan;
    (_lastSpan != nullptr ? _lastSpan->next : _spans) = &span;
    _lastSpan = &span;
    for (std::size_t i = 0; i < std::max<std::size_t>(units, 1); ++i)
        _table.Insert(UnitOf(begin) + i, &span);
}

void PrivateHeap::Forget(Span& span)
{
    for (std::size_t i = 0; i < std::max<std::size_t>(span.units, 1); ++i)
        _table.Remove(UnitOf(span.begin) + i);
    if (_lastSpan == &span)
        _lastSpan = span.previous;
    Unlink(_spans, span, &Span::next, &Span::previous);
}

void PrivateHeap::FreeLarge(Span& span)
{
    Forget(span);
    UnmapPages(span.begin, span.largeSize, true);
    KeepSpare(_largeRecords, span, &Span::nextOpen);
}

void PrivateHeap::DropSpan(Span& span)
{
    Close(span);
    Forget(span);
    GiveUnitsBack(*span.chunk, span.begin, span.units);
    KeepSpare(_records[span.sizeClass], span, &Span::nextOpen);
}

void PrivateHeap::Open(Span& span)
{
    span.isOpen = true;
    Link(_open[span.sizeClass], span, &Span::nextOpen, &Span::previousOpen);
}

void PrivateHeap::Close(Span& span)
{
    span.isOpen = false;
    Unlink(_open[span.sizeClass], span, &Span::nextOpen, &Span::previousOpen);
}

Chunk* PrivateHeap::MakeChunk()
{
    if (Chunk* const spare = _spareChunk)
    {
        _spareChunk = nullptr;
        return spare;
    }
    Chunk* chunk = TakeSpare(_chunkRecords, &Chunk::next);
    if (chunk == nullptr)
        chunk = static_cast<Chunk*>(_arena.Allocate(sizeof(Chunk)));
    if (chunk == nullptr)
        return nullptr;
    *chunk = Chunk{};
    chunk->begin = MapPages(Chunk::kSize, true);
    if (chunk->begin == nullptr)
    {
        KeepSpare(_chunkRecords, *chunk, &Chunk::next);
        return nullptr;
    }
    Link(_chunks, *chunk, &Chunk::next, &Chunk::previous);
    return chunk;
}

char* PrivateHeap::TakeUnits(std::size_t units, Chunk*& chunk)
{
    chunk = units == 1 ? _openChunks : nullptr;
    if (chunk == nullptr)
    {
        chunk = MakeChunk();
        if (chunk == nullptr)
            return nullptr;
        if (units != 1)
        {
            chunk->usedUnits = Chunk::kAllUnits;
            return chunk->begin;
        }
        Link(_openChunks, *chunk, &Chunk::nextOpen, &Chunk::previousOpen);
    }
    const auto unit = static_cast<unsigned>(__builtin_ctz(~chunk->usedUnits));
    chunk->usedUnits |= 1u << unit;
    if (chunk->usedUnits == Chunk::kAllUnits)
        Unlink(_openChunks, *chunk, &Chunk::nextOpen, &Chunk::previousOpen);
    return chunk->begin + (std::size_t{unit} << kUnitShift);
}

void PrivateHeap::GiveUnitsBack(Chunk& chunk, char* begin, std::size_t units)
{
    const bool wasOpen = chunk.usedUnits != Chunk::kAllUnits;
    if (units == 1)
        chunk.usedUnits &= ~(1u << ((begin - chunk.begin) >> kUnitShift));
    else
        chunk.usedUnits = 0;
    if (chunk.usedUnits != 0)
    {
        DiscardPages(begin, units << kUnitShift);
        if (!wasOpen)
            Link(_openChunks, chunk, &Chunk::nextOpen, &Chunk::previousOpen);
        return;
    }
    if (wasOpen)
        Unlink(_openChunks, chunk, &Chunk::nextOpen, &Chunk::previousOpen);
    if (_spareChunk == nullptr)
    {
        DiscardPages(chunk.begin, Chunk::kSize);
        _spareChunk = &chunk;
        return;
    }
    UnmapPages(chunk.begin, Chunk::kSize, true);
    Unlink(_chunks, chunk, &Chunk::next, &Chunk::previous);
    KeepSpare(_chunkRecords, chunk, &Chunk::next);
}

} // namespace qxplatform::heap
