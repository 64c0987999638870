// Identifies the program that has loaded the library.
#pragma once

namespace qx
{

// Some programs get different results.
enum class HostKind
{
    Vtz = 1,
    Hqd = 2,
    Other = 3
};

HostKind HostKindByName(const wchar_t* internalName);

// Determined by the version block of the process's program; cached.
HostKind ThisHostKind();

} // namespace qx
