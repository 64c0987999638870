// Which program has loaded the library.
#pragma once

namespace qx
{

// Some programs get other answers than the rest.
enum class HostKind
{
    vtz = 1,
    hqd = 2,
    other = 3
};

HostKind HostKindByName(const wchar_t* internalName);

// By the version block of the process's program; asked for once.
HostKind ThisHostKind();

} // namespace qx
