// Other processes of the machine, and names of files as the library expects them.
#pragma once

#include <string>

namespace qxut
{

unsigned long ProcessId();

// Returns true if the process is running, or if its state can't be determined.
bool IsProcessAlive(unsigned long id);

// Returns true if a process has the file open through the library. This works even if the process runs in another
// container, where its id is not visible.
bool IsInUse(const std::string& path);

// Converts a path of the system to the form that the library expects. On linux a backslash is an ordinary character of
// a name, which the library represents by U+F05C.
std::string LibraryPath(std::string path);

} // namespace qxut
