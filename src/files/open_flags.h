// What the open arguments of a file object mean to the system.
#pragma once

#include "files/file.h"

#include <cstdint>

namespace qx
{

DWORD SystemAccess(FileAccess access);
DWORD SystemDisposition(FileDisposition disposition);
DWORD SystemShare(FileShare share);
DWORD SystemFlags(std::uint32_t flags);

// The kind of failure that a system error of an open stands for.
FileError ClassifyOpenError(DWORD error);

} // namespace qx
