// What a loaded module tells of itself in its memory, without the system being asked: so also where it must not be.
#pragma once

#include <windows.h>

#include <cstdint>

namespace qx
{

// The version block; null if there is none, or if the module's image has another form than that of Windows.
const void* FindVersionBlock(HMODULE module);

// When the module was linked, in seconds since 1970; 0 if it doesn't tell, as on other systems than Windows.
std::uint32_t LinkTimeOf(HMODULE module);

} // namespace qx
