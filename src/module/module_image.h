// Reads information from the memory of a loaded module without calling the system, so it can be used where system calls
// aren't allowed.
#pragma once

#include <windows.h>

#include <cstdint>

namespace qx
{

// Returns the version block, or null if there is none or if the image isn't in the Portable Executable format.
const void* FindVersionBlock(HMODULE module);

// Returns the link time in seconds since 1970, or 0 if it is unknown, as it is on systems other than Windows.
std::uint32_t LinkTimeOf(HMODULE module);

} // namespace qx
