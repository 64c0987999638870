// Facts about the system beyond its plain version.
#pragma once

#include <windows.h>

namespace qx
{

// Returns the version from the system's version record, in the form of SystemVersion. It distinguishes later systems,
// for which the plain version number no longer changes.
unsigned short GetSystemGeneration();

// Returns the session id of this process in a remote session, otherwise 0.
DWORD SessionId();

} // namespace qx
