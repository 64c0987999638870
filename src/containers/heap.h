#pragma once

#include <cstddef>
#include <new>

namespace qx
{

// Allocates the nodes of a container: the default for the `Memory` argument of the lists. Any type with the same two
// functions can replace it, for example the allocator of another component that frees the nodes. Releasing null does
// nothing.
struct WCHeap
{
    static void* Allocate(std::size_t bytes) { return ::operator new(bytes); }
    static void Release(void* block) noexcept { ::operator delete(block); }
};

} // namespace qx
