// Which program has loaded the library.
#pragma once

namespace qx
{

// Some programs get other answers than the rest.
enum class HostKind
{
    Vtz = 1,
    Hqd = 2,
    Other = 3
};

HostKind HostKindByName(const wchar_t* internalName);

// By the version block of the process's program; asked for once.
HostKind ThisHostKind();

} // namespace qx
