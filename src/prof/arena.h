// The memory allocator of a job's tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace qx
{

// An arena for the many small records of a tree (items, lists, texts), most of which live as long as their job. Records
// are cut from chunks in allocation order. When the job is destroyed, the chunks are freed without visiting the
// records. Records released earlier go to a free list for their size and are reused, so a job whose values keep
// changing doesn't grow.
class clsProfArena
{
public:
    clsProfArena() = default;
    clsProfArena(const clsProfArena&) = delete;
    clsProfArena& operator=(const clsProfArena&) = delete;
    ~clsProfArena();

    // Returns memory aligned to 8 bytes. Throws std::bad_alloc.
    void* Allocate(std::size_t bytes);
    // `bytes` must be the size passed to Allocate.
    void Release(void* block, std::size_t bytes) noexcept;

    // Takes ownership of a source image until the arena is destroyed, because texts of the tree point into it.
    void Adopt(std::unique_ptr<wchar_t[]> image) { _images.push_back(std::move(image)); }

private:
    static constexpr std::size_t kUnit = 8;
    static constexpr std::size_t kSmallUnits = 128; // larger blocks, above 1 KB, are allocated one by one
    static constexpr std::size_t kFirstChunk = 4096;
    static constexpr std::size_t kLargestChunk = std::size_t{1} << 20;

    struct FreeBlock
    {
        FreeBlock* next;
    };

    struct LargeBlock
    {
        LargeBlock* previous;
        LargeBlock* next;
    };

    void StartChunk();
    void* AllocateLarge(std::size_t bytes);
    void ReleaseLarge(void* block) noexcept;

    std::byte* _next = nullptr;
    std::byte* _end = nullptr;
    std::size_t _chunkSize = kFirstChunk;
    FreeBlock* _free[kSmallUnits + 1] = {};
    LargeBlock _large = {&_large, &_large};
    std::vector<std::unique_ptr<std::byte[]>> _chunks;
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
        return block;
    }
    if (static_cast<std::size_t>(_end - _next) < units * kUnit)
    {
        StartChunk();
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
        ReleaseLarge(block);
    }
    else if (units > 0)
    {
        _free[units] = ::new (block) FreeBlock{_free[units]};
    }
}

} // namespace qx
