#include "heap/pages.h"

#include <sys/mman.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace qxplatform::heap
{
namespace
{

std::size_t RoundedToPages(std::size_t size)
{
    const auto page = static_cast<std::size_t>(getpagesize());
    return (size + page - 1) & ~(page - 1);
}

char* Map(std::size_t size)
{
    void* const pages = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return pages != MAP_FAILED ? static_cast<char*>(pages) : nullptr;
}

bool StartsUnit(const char* pages)
{
    return reinterpret_cast<std::uintptr_t>(pages) % kUnitSize == 0;
}

// Maps one unit more than needed and unmaps the excess before and after the aligned part.
char* MapAligned(std::size_t size)
{
    char* const pages = Map(size + kUnitSize);
    if (pages == nullptr)
        return nullptr;
    const std::size_t before = (kUnitSize - reinterpret_cast<std::uintptr_t>(pages) % kUnitSize) % kUnitSize;
    if (before != 0)
        munmap(pages, before);
    munmap(pages + before + size, kUnitSize - before);
    return pages + before;
}

} // namespace

char* MapPages(std::size_t size, [[maybe_unused]] bool forObjects)
{
    if (size > PTRDIFF_MAX - 2 * kUnitSize)
        return nullptr;
    size = RoundedToPages(size);
    // The system places mappings next to each other, so if one starts at the beginning of a unit, the next usually does
    // too.
    char* pages = Map(size);
    if (pages != nullptr && !StartsUnit(pages))
    {
        munmap(pages, size);
        pages = MapAligned(size);
    }
#if defined(__SANITIZE_ADDRESS__)
    if (pages != nullptr && forObjects)
        __lsan_register_root_region(pages, size);
#endif
    return pages;
}

void UnmapPages(void* pages, std::size_t size, [[maybe_unused]] bool forObjects)
{
    size = RoundedToPages(size);
#if defined(__SANITIZE_ADDRESS__)
    if (forObjects)
        __lsan_unregister_root_region(pages, size);
#endif
    munmap(pages, size);
}

void DiscardPages(void* pages, std::size_t size)
{
    madvise(pages, size, MADV_DONTNEED);
}

void* RecordArena::Allocate(std::size_t size)
{
    size = (size + 15) & ~std::size_t{15};
    if (size > _left)
    {
        auto* const block = reinterpret_cast<Block*>(MapPages(kBlockSize, false));
        if (block == nullptr)
            return nullptr;
        block->next = _blocks;
        _blocks = block;
        _next = reinterpret_cast<char*>(block + 1);
        _left = kBlockSize - sizeof(Block);
    }
    void* const record = _next;
    _next += size;
    _left -= size;
    return record;
}

void RecordArena::FreeAll()
{
    while (Block* const block = _blocks)
    {
        _blocks = block->next;
        UnmapPages(block, kBlockSize, false);
    }
    _next = nullptr;
    _left = 0;
}

} // namespace qxplatform::heap
