#pragma once

#include <cstddef>
#include <new>

namespace qx
{

// Where the nodes of a container live: the default of the `Memory` argument of the lists. A type with the same two
// functions puts them elsewhere (a list whose nodes another component frees needs that component's allocator).
// Releasing null does nothing.
struct WCHeap
{
    static void* Allocate(std::size_t bytes) { return ::operator new(bytes); }
    static void Release(void* block) noexcept { ::operator delete(block); }
};

} // namespace qx
