// Erases memory that held a secret, such as a key.
#pragma once

#include <cstddef>
#include <cstring>

namespace qx
{

// Sets the bytes to zero. The compiler must assume that they are read afterwards, so it can't remove the stores, not
// even before the memory is freed or at the end of a destructor.
inline void Wipe(void* memory, std::size_t size) noexcept
{
    std::memset(memory, 0, size);
    __asm__ __volatile__("" : : "r"(memory) : "memory");
}

} // namespace qx
