// Memory from the system for the private heaps.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qxplatform::heap
{

// The smallest unit of memory that a heap assigns to blocks of one size, and the alignment of all mappings.
constexpr unsigned kUnitShift = 16;
constexpr std::size_t kUnitSize = std::size_t{1} << kUnitShift;

inline std::uintptr_t UnitOf(const void* address)
{
    return reinterpret_cast<std::uintptr_t>(address) >> kUnitShift;
}

// Maps zeroed memory that starts at the beginning of a unit. Returns null if memory runs out. With `forObjects`, leak
// checkers search the memory for pointers; the heap's own data is mapped without it.
char* MapPages(std::size_t size, bool forObjects);
// `size` is the size that was mapped.
void UnmapPages(void* pages, std::size_t size, bool forObjects);
// Returns the physical memory to the system. The pages are zeroed when they are used again.
void DiscardPages(void* pages, std::size_t size);

// Small records of a heap. They are never freed individually.
class RecordArena
{
public:
    constexpr RecordArena() = default;
    RecordArena(const RecordArena&) = delete;
    RecordArena& operator=(const RecordArena&) = delete;

    // Returns zeroed memory aligned to 16 bytes, or null. `size` is at most 16 KiB.
    void* Allocate(std::size_t size);
    void FreeAll();

private:
    struct Block
    {
        Block* next;
        std::size_t reserved;
    };

    static constexpr std::size_t kBlockSize = 4 * kUnitSize;

    Block* _blocks = nullptr;
    char* _next = nullptr;
    std::size_t _left = 0;
};

} // namespace qxplatform::heap
