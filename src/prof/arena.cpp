#include "prof/arena.h"

#include <algorithm>
#include <new>

namespace qx
{

clsProfArena::~clsProfArena()
{
    while (_large.next != &_large)
    {
        ReleaseLarge(_large.next + 1);
    }
}

// Any space left in the old chunk is smaller than the requested block and stays unused. Chunk sizes grow with the job:
// small jobs use little memory and large jobs allocate rarely.
void clsProfArena::StartChunk()
{
    std::unique_ptr<std::byte[]> chunk(new std::byte[_chunkSize]);
    _chunks.push_back(std::move(chunk));
    _next = _chunks.back().get();
    _end = _next + _chunkSize;
    _chunkSize = std::min(_chunkSize * 2, kLargestChunk);
}

void* clsProfArena::AllocateLarge(std::size_t bytes)
{
    if (bytes > SIZE_MAX - sizeof(LargeBlock))
    {
        throw std::bad_alloc();
    }
    auto* block = ::new (::operator new(sizeof(LargeBlock) + bytes)) LargeBlock{&_large, _large.next};
    block->next->previous = block;
    _large.next = block;
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
