// What the library knows of the system beside its plain version.
#pragma once

#include <windows.h>

namespace qx
{

// The version from the system's record, in the form of SystemVersion: it tells later systems apart where the plain
// number stands still.
unsigned short GetSystemGeneration();

// The session of this process where the user works from afar, else 0.
DWORD SessionId();

} // namespace qx
