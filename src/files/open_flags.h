// Maps the arguments of clsFile::Open to the system's flags.
#pragma once

#include "files/file.h"

#include <cstdint>

namespace qx
{

DWORD SystemAccess(FileAccess access);
DWORD SystemDisposition(FileDisposition disposition);
DWORD SystemShare(FileShare share);
DWORD SystemFlags(std::uint32_t flags);

// Returns the kind of failure for a system error of an open call.
FileError ClassifyOpenError(DWORD error);

} // namespace qx
