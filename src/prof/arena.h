// The memory of one job's tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace qx
{

// A tree has very many small records (items, lists, texts) that mostly live as long as their job: they are cut from
// chunks one behind the other, in the order of loading, and go with the chunks in one step when the job dies, without a
// visit to any of them. What is given back before that is kept by size and handed out again for the same size, so that
// a job whose values change for ever doesn't grow.
class clsProfArena
{
public:
    clsProfArena() = default;
    clsProfArena(const clsProfArena&) = delete;
    clsProfArena& operator=(const clsProfArena&) = delete;
    ~clsProfArena();

    // Aligned to 8 bytes; throws std::bad_alloc.
    void* Allocate(std::size_t bytes);
    // `bytes` is what was asked for.
    void Release(void* block, std::size_t bytes) noexcept;

    // Keeps a source image, whose lines are texts of the tree from now on, until the arena dies.
    void Adopt(std::unique_ptr<wchar_t[]> image) { _images.push_back(std::move(image)); }

private:
    static constexpr std::size_t kUnit = 8;
    static constexpr std::size_t kSmallUnits = 128; // up to 1 KB is cut from chunks, the rest are blocks of their own
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
