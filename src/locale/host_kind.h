// Identifies the program that has loaded the library.
#pragma once

namespace qx
{

// The programs for which some functions return different results.
enum class HostKind
{
    Vtz = 1,
    Hqd = 2,
    Other = 3
};

HostKind HostKindByName(const wchar_t* internalName);

// Returns the kind of this process's program, which is determined from its version block and cached.
HostKind ThisHostKind();

} // namespace qx
