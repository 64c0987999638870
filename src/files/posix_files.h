// POSIX properties of files: permissions and the targets of links. On windows, the Windows Subsystem for Linux stores
// the same properties, and these functions use its formats.
#pragma once

#include "core/text/string.h"

#include <windows.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qx
{

// Returns the type and permissions of an open file in the form of st_mode, or nothing if the system stores none.
std::optional<std::uint32_t> PosixModeOf(HANDLE file);

// Returns the permissions as the extended attribute $LXMOD, in which the Windows Subsystem for Linux stores them
// (FILE_FULL_EA_INFORMATION).
std::array<unsigned char, 19> PosixModeAttribute(std::uint32_t mode);

// Sets the permissions of a file or folder whose handle has the right FILE_WRITE_EA.
bool SetPosixMode(HANDLE file, std::uint32_t mode);

// Removes all permissions except `allowed`. Returns true on success, and also if there was nothing to remove.
bool RestrictPosixMode(HANDLE file, std::uint32_t allowed);

// Returns the target of a link as its bytes, or nothing if the path isn't a link or can't be read.
std::optional<std::string> LinkTargetOf(const String& path);

// Turns a new, empty file into a link. The file must have been created by clsFolder with write access.
bool MakeLink(HANDLE file, std::string_view target);

} // namespace qx
