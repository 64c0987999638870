// A run of memory that is divided into blocks of one size. Its record is kept apart from the blocks, so a program that
// writes beyond a block can't damage it.
#pragma once

#include "heap/pages.h"

#include <cstddef>
#include <cstdint>

namespace qxplatform::heap
{

struct Chunk;

// The state of a block in use is kInUse plus the number of its spare bytes. The state of a free block is the index of
// the next free block of the span.
using BlockState = std::uint16_t;
constexpr BlockState kInUse = 0x8000;
constexpr BlockState kNoBlock = 0x7FFF;

struct Span
{
    bool Contains(const void* address) const { return static_cast<const char*>(address) - begin < Size(); }

    // Stores the index of the block that starts at an address in the span. Returns false if no block starts there.
    bool IndexOf(const void* address, std::uint32_t& index) const
    {
        const auto offset = static_cast<std::uint64_t>(static_cast<const char*>(address) - begin);
        index = static_cast<std::uint32_t>((offset * inverse) >> kInverseShift);
        return index * std::uint64_t{blockSize} == offset;
    }

    bool IsInUse(std::uint32_t index) const { return index < fresh && (states[index] & kInUse) != 0; }
    char* Block(std::uint32_t index) const { return begin + std::size_t{index} * blockSize; }
    std::ptrdiff_t Size() const { return static_cast<std::ptrdiff_t>(units << kUnitShift); }

    // Returns the index of a free block and marks it as used, or kNoBlock if the span is full or damaged.
    std::uint32_t Take(std::size_t spare)
    {
        std::uint32_t index = firstFree;
        if (index != kNoBlock)
        {
            if (index >= fresh || (states[index] & kInUse) != 0) [[unlikely]]
                return kNoBlock;
            firstFree = states[index];
        }
        else if (fresh < count)
            index = fresh++;
        else
            return kNoBlock;
        states[index] = static_cast<BlockState>(kInUse | spare);
        ++used;
        return index;
    }

    void Release(std::uint32_t index)
    {
        states[index] = firstFree;
        firstFree = static_cast<BlockState>(index);
        --used;
    }

    // Returns true if the states are consistent: each block is either in use or in the list of free ones, once.
    bool IsSound() const
    {
        std::uint32_t inUse = 0;
        for (std::uint32_t index = 0; index < fresh; ++index)
            inUse += (states[index] & kInUse) != 0;
        std::uint32_t unused = 0;
        for (std::uint32_t index = firstFree; index != kNoBlock; index = states[index], ++unused)
            if (index >= fresh || (states[index] & kInUse) != 0 || unused == fresh)
                return false;
        return inUse == used && inUse + unused == fresh && fresh <= count;
    }

    static constexpr unsigned kInverseShift = 40; // exact for spans up to 1 MiB and blocks up to 256 KiB

    char* begin;
    std::uint64_t inverse; // 2^40 divided by the size of a block, rounded up
    std::uint32_t blockSize;
    std::uint32_t sizeClass;
    std::uint32_t count;
    std::uint32_t used;
    std::uint32_t fresh; // blocks from this index on have never been used
    BlockState firstFree;
    bool isOpen;           // in the list of spans with free blocks
    std::size_t units;     // 0 for a large block
    std::size_t largeSize; // the requested size of a large block
    Chunk* chunk;
    Span* next; // all spans of the heap
    Span* previous;
    Span* nextOpen; // in the list of this size class's spans with free blocks, or of spare records
    Span* previousOpen;
    BlockState states[1]; // one for each block
};

// A mapping of 16 units, which is shared by spans of one unit or used by a single span.
struct Chunk
{
    static constexpr std::size_t kUnits = 16;
    static constexpr std::size_t kSize = kUnits << kUnitShift;
    static constexpr std::uint32_t kAllUnits = 0xFFFF;

    char* begin;
    std::uint32_t usedUnits; // one bit for each
    Chunk* next;             // in the list of the heap's chunks, or of spare records
    Chunk* previous;
    Chunk* nextOpen; // chunks with free units
    Chunk* previousOpen;
};

// Block sizes: multiples of 16 up to 512 bytes, then eight in each doubling up to 256 KiB.
struct SizeClasses
{
    static constexpr std::size_t kFineStep = 16;
    static constexpr std::size_t kMostFine = 512;
    static constexpr std::size_t kMost = 256 * 1024;
    static constexpr std::size_t kMostInUnit = 16 * 1024; // larger blocks have spans of a whole chunk
    static constexpr std::uint32_t kFineCount = kMostFine / kFineStep;
    static constexpr std::uint32_t kCount = kFineCount + 9 * 8;

    static std::uint32_t Of(std::size_t size)
    {
        if (size <= kMostFine)
            return size != 0 ? static_cast<std::uint32_t>((size - 1) / kFineStep) : 0;
        const unsigned top = 63u - static_cast<unsigned>(__builtin_clzll(size - 1)); // at least 9
        return kFineCount + (top - 9) * 8 + static_cast<std::uint32_t>(((size - 1) >> (top - 3)) & 7);
    }

    static std::uint32_t BlockSize(std::uint32_t sizeClass)
    {
        if (sizeClass < kFineCount)
            return (sizeClass + 1) * kFineStep;
        const std::uint32_t coarse = sizeClass - kFineCount;
        return (9 + coarse % 8) << (6 + coarse / 8);
    }
};

// The spans of a heap by the units that they occupy.
class SpanTable
{
public:
    constexpr SpanTable() = default;
    SpanTable(const SpanTable&) = delete;
    SpanTable& operator=(const SpanTable&) = delete;

    // Returns null if the unit belongs to no span of the heap.
    Span* Find(std::uintptr_t unit) const
    {
        if (_entries == nullptr)
            return nullptr;
        for (std::size_t place = PlaceOf(unit);; place = (place + 1) & _mask)
        {
            if (_entries[place].unit == unit)
                return _entries[place].span;
            if (_entries[place].span == nullptr)
                return nullptr;
        }
    }

    // Makes room for more units. Returns false if memory runs out.
    bool Reserve(std::size_t units);
    void Insert(std::uintptr_t unit, Span* span); // needs room
    void Remove(std::uintptr_t unit);
    void FreeAll();

private:
    struct Entry
    {
        std::uintptr_t unit;
        Span* span;
    };

    static constexpr std::size_t kFirstCapacity = 256;

    std::size_t PlaceOf(std::uintptr_t unit) const
    {
        return static_cast<std::size_t>((unit * 0x9E3779B97F4A7C15u) >> 32) & _mask;
    }

    Entry* _entries = nullptr;
    std::size_t _mask = 0;
    std::size_t _used = 0;
};

} // namespace qxplatform::heap
