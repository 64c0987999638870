#include "prof/arena.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <new>
#include <utility>

namespace qx
{

namespace
{

// A bit for each unit of a chunk.
class clsUnitMarks
{
public:
    explicit clsUnitMarks(std::size_t units) : _words(units / kBits + 1), _units(units) {}

    void Mark(std::size_t first, std::size_t count)
    {
        while (count != 0)
        {
            const std::size_t bits = std::min(count, kBits - first % kBits);
            _words[first / kBits] |= (~std::uint64_t{0} >> (kBits - bits)) << (first % kBits);
            first += bits;
            count -= bits;
        }
    }

    // Calls visitor(first, count) for each run of marked units, in order.
    template <class Visitor>
    void ForEachRun(Visitor visitor) const
    {
        for (std::size_t first = Find(0, true); first < _units;)
        {
            const std::size_t end = Find(first, false);
            visitor(first, end - first);
            first = Find(end, true);
        }
    }

private:
    static constexpr std::size_t kBits = 64;

    // Returns the first unit from `from` on that is marked, or that isn't marked if `isMarked` is false.
    std::size_t Find(std::size_t from, bool isMarked) const
    {
        while (from < _units)
        {
            const std::uint64_t word = (isMarked ? _words[from / kBits] : ~_words[from / kBits]) >> (from % kBits);
            if (word != 0)
                return std::min(from + static_cast<std::size_t>(std::countr_zero(word)), _units);
            from = (from / kBits + 1) * kBits;
        }
        return _units;
    }

    std::vector<std::uint64_t> _words;
    std::size_t _units;
};

} // namespace

clsProfArena::~clsProfArena()
{
    while (_large.next != &_large)
    {
        ReleaseLarge(_large.next + 1);
    }
}

void clsProfArena::KeepFree(std::byte* begin, std::size_t bytes) noexcept
{
    if (bytes > kSmallUnits * kUnit)
        _runs = ::new (begin) FreeRun{_runs, bytes};
    else if (bytes != 0)
        _free[bytes / kUnit] = ::new (begin) FreeBlock{_free[bytes / kUnit]};
    _freeBytes += bytes;
}

void clsProfArena::SetMergeAt()
{
    _mergeAt = _freeAfterMerge + std::max(kLeastMerge, (_chunkBytes - _freeBytes) / 2);
}

void clsProfArena::CheckLimit(std::size_t added) const
{
    if (Bytes() > _limit || added > _limit - Bytes())
        throw clsArenaFull();
}

// Starts a new area. Chunks grow with the job, so that a small job takes little memory and a large one allocates
// rarely.
void clsProfArena::StartArea()
{
    if (_runs == nullptr)
    {
        CheckLimit(_chunkSize);
        std::unique_ptr<std::byte[]> chunk(new std::byte[_chunkSize]);
        _chunks.push_back({std::move(chunk), _chunkSize});
        KeepFree(_next, static_cast<std::size_t>(_end - _next));
        _next = _chunks.back().bytes.get();
        _end = _next + _chunkSize;
        _chunkBytes += _chunkSize;
        _chunkSize = std::min(_chunkSize * 2, kLargestChunk);
        SetMergeAt();
        return;
    }
    KeepFree(_next, static_cast<std::size_t>(_end - _next));
    FreeRun* const run = _runs;
    _runs = run->next;
    _freeBytes -= run->bytes;
    _next = reinterpret_cast<std::byte*>(run);
    _end = _next + run->bytes;
}

// Merges adjacent free blocks, in time linear in the number of free blocks and chunks, and frees the chunks that are no
// longer used. Blocks at the lowest addresses will be reused first, so that other chunks become free. If there is no
// memory for the merge, it is tried again later.
void clsProfArena::MergeFree() noexcept
{
    try
    {
        const auto isBefore = [](const Chunk& a, const Chunk& b)
        {
            return std::less<>()(a.bytes.get(), b.bytes.get());
        };
        std::sort(_chunks.begin(), _chunks.end(), isBefore);
        std::vector<clsUnitMarks> marks;
        marks.reserve(_chunks.size());
        for (const Chunk& chunk : _chunks)
            marks.emplace_back(chunk.size / kUnit);

        std::size_t at = 0; // the chunk of the previous block, which usually contains the next one too
        const auto mark = [&](void* block, std::size_t bytes)
        {
            auto* const begin = static_cast<std::byte*>(block);
            const auto isIn = [&](const Chunk& chunk)
            {
                return !std::less<>()(begin, chunk.bytes.get()) && std::less<>()(begin, chunk.bytes.get() + chunk.size);
            };
            if (!isIn(_chunks[at]))
            {
                const auto after = std::upper_bound(_chunks.begin(), _chunks.end(), begin,
                    [](std::byte* place, const Chunk& chunk) { return std::less<>()(place, chunk.bytes.get()); });
                at = static_cast<std::size_t>(after - _chunks.begin()) - 1;
            }
            marks[at].Mark(static_cast<std::size_t>(begin - _chunks[at].bytes.get()) / kUnit, bytes / kUnit);
        };
        for (std::size_t units = 1; units <= kSmallUnits; ++units)
        {
            for (const FreeBlock* block = std::exchange(_free[units], nullptr); block != nullptr; block = block->next)
                mark(const_cast<FreeBlock*>(block), units * kUnit);
        }
        for (const FreeRun* run = std::exchange(_runs, nullptr); run != nullptr; run = run->next)
            mark(const_cast<FreeRun*>(run), run->bytes);

        _freeBytes = 0;
        for (std::size_t i = _chunks.size(); i-- > 0;)
        {
            Chunk& chunk = _chunks[i];
            bool isUsed = true;
            marks[i].ForEachRun(
                [&](std::size_t first, std::size_t count)
                {
                    isUsed = count * kUnit != chunk.size;
                    if (isUsed)
                        KeepFree(chunk.bytes.get() + first * kUnit, count * kUnit);
                });
            if (!isUsed)
            {
                _chunkBytes -= chunk.size;
                chunk.bytes.reset();
            }
        }
        std::erase_if(_chunks, [](const Chunk& chunk) { return chunk.bytes == nullptr; });
    }
    catch (const std::bad_alloc&)
    {
    }
    _freeAfterMerge = _freeBytes;
    SetMergeAt();
}

void* clsProfArena::AllocateLarge(std::size_t bytes)
{
    if (bytes > SIZE_MAX - sizeof(LargeBlock))
    {
        throw std::bad_alloc();
    }
    CheckLimit(bytes);
    auto* block = ::new (::operator new(sizeof(LargeBlock) + bytes)) LargeBlock{&_large, _large.next};
    block->next->previous = block;
    _large.next = block;
    _largeBytes += bytes;
    return block + 1;
}

void clsProfArena::ReleaseLarge(void* memory) noexcept
{
    LargeBlock* block = static_cast<LargeBlock*>(memory) - 1;
    block->previous->next = block->next;
    block->next->previous = block->previous;
    ::operator delete(block);
}

} // namespace qx
