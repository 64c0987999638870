// Reads memory that may be inaccessible.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qxplatform
{

// Returns true if the aligned 4 bytes around an address can be read. Doesn't change errno. Async-signal-safe.
bool IsReadable(std::uintptr_t address);

// Copies memory of this process and returns the number of bytes copied, which is smaller than `size` if a part of the
// memory can't be read. Never faults. Doesn't change errno. Async-signal-safe.
std::size_t ReadMemory(std::uintptr_t address, void* buffer, std::size_t size);

} // namespace qxplatform
