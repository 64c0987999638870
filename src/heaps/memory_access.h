// Reads memory that may be inaccessible, such as the surroundings of a pointer that a caller passed by mistake.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qx
{

// Copies the accessible part of the memory that precedes the first inaccessible page. Returns the number of bytes.
std::size_t ReadCarefully(const void* address, void* buffer, std::size_t size);

// Returns 0 if the word isn't accessible.
std::uint32_t ReadWordCarefully(const void* address);

} // namespace qx
