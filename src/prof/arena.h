// The memory of one job's tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <vector>

namespace qx
{

// The exception for an allocation beyond the limit of an arena.
class clsArenaFull : public std::bad_alloc
{
};

// A tree consists of very many small records (items, lists, texts), most of which live as long as their job. They are
// cut from chunks one after another, in loading order, and are freed with the chunks when the job ends, without
// visiting each of them. Records released before that are kept in a list for their size and reused for the same size.
// Once these lists have grown by half of what the tree uses, neighbours are merged, so that a job whose values change
// their sizes forever doesn't grow.
class clsProfArena
{
public:
    clsProfArena() = default;
    clsProfArena(const clsProfArena&) = delete;
    clsProfArena& operator=(const clsProfArena&) = delete;
    ~clsProfArena();

    // Returns a block aligned to 8 bytes. Throws std::bad_alloc, or clsArenaFull if the arena would exceed its limit.
    void* Allocate(std::size_t bytes);
    // `bytes` is the size that was passed to Allocate.
    void Release(void* block, std::size_t bytes) noexcept;

    // Keeps a source image, whose lines are now texts of the tree, until the arena is destroyed.
    void Adopt(std::unique_ptr<wchar_t[]> image) { _images.push_back(std::move(image)); }

    // Returns the memory taken from the heap, without images.
    std::size_t Bytes() const { return _chunkBytes + _largeBytes; }

    // Limits Bytes() for later allocations.
    void SetLimit(std::size_t bytes) { _limit = bytes; }
    void RemoveLimit() { _limit = std::numeric_limits<std::size_t>::max(); }

private:
    static constexpr std::size_t kUnit = 8;
    static constexpr std::size_t kSmallUnits = 128; // up to 1 KB is cut from chunks; larger blocks are allocated singly
    static constexpr std::size_t kFirstChunk = 4096;
    static constexpr std::size_t kLargestChunk = std::size_t{1} << 15;
    static constexpr std::size_t kLeastMerge = std::size_t{1} << 16; // free bytes that must be added before a merge

    struct Chunk
    {
        std::unique_ptr<std::byte[]> bytes;
        std::size_t size;
    };

    struct FreeBlock
    {
        FreeBlock* next;
    };

    // Merged free memory that is larger than any small block. Blocks are cut from it as from a chunk.
    struct FreeRun
    {
        FreeRun* next;
        std::size_t bytes;
    };

    struct LargeBlock
    {
        LargeBlock* previous;
        LargeBlock* next;
    };

    void KeepFree(std::byte* begin, std::size_t bytes) noexcept;
    void CheckLimit(std::size_t added) const;
    void StartArea();
    void MergeFree() noexcept;
    void SetMergeAt();
    void* AllocateLarge(std::size_t bytes);
    void ReleaseLarge(void* block) noexcept;

    // The area that blocks are cut from: the rest of a chunk or of a run.
    std::byte* _next = nullptr;
    std::byte* _end = nullptr;
    std::size_t _chunkSize = kFirstChunk;
    FreeBlock* _free[kSmallUnits + 1] = {}; // by size in units
    FreeRun* _runs = nullptr;
    std::size_t _freeBytes = 0;      // in the lists and in the runs
    std::size_t _freeAfterMerge = 0; // _freeBytes after the last merge
    std::size_t _mergeAt = kLeastMerge;
    std::size_t _chunkBytes = 0;
    std::size_t _largeBytes = 0;
    std::size_t _limit = std::numeric_limits<std::size_t>::max();
    LargeBlock _large = {&_large, &_large};
    std::vector<Chunk> _chunks;
    std::vector<std::unique_ptr<wchar_t[]>> _images;
};

inline void* clsProfArena::Allocate(std::size_t bytes)
{
    const std::size_t units = (bytes + kUnit - 1) / kUnit;
    if (units > kSmallUnits)
    {
        return AllocateLarge(bytes);
    }
    if (FreeBlock* block = _free[units])
    {
        _free[units] = block->next;
        _freeBytes -= units * kUnit;
        return block;
    }
    if (static_cast<std::size_t>(_end - _next) < units * kUnit)
    {
        StartArea();
    }
    void* block = _next;
    _next += units * kUnit;
    return block;
}

inline void clsProfArena::Release(void* block, std::size_t bytes) noexcept
{
    const std::size_t units = (bytes + kUnit - 1) / kUnit;
    if (units > kSmallUnits)
    {
        _largeBytes -= bytes;
        ReleaseLarge(block);
    }
    else if (units > 0)
    {
        _free[units] = ::new (block) FreeBlock{_free[units]};
        _freeBytes += units * kUnit;
        if (_freeBytes >= _mergeAt)
        {
            MergeFree();
        }
    }
}

} // namespace qx
