#pragma once

#include <cstddef>
#include <new>

namespace qx
{

// Allocates the nodes of a container: the default for the `Memory` argument of the lists. A type with the same two
// functions replaces it. A list whose nodes are freed by another component needs the allocator of that component.
// Releasing null does nothing.
struct WCHeap
{
    static void* Allocate(std::size_t bytes) { return ::operator new(bytes); }
    static void Release(void* block) noexcept { ::operator delete(block); }
};

} // namespace qx
