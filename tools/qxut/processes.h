// Other processes of the machine, and names of files as the library expects them.
#pragma once

#include <string>

namespace qxut
{

unsigned long ProcessId();

// Returns true also if that can't be found out.
bool IsProcessAlive(unsigned long id);

// Converts a path of the system to the form that the library takes. On linux a backslash is a character of a name like
// any other, which the library represents by U+F05C.
std::string LibraryPath(std::string path);

} // namespace qxut
