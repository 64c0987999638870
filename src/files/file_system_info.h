// Queries the properties of a file system.
#pragma once

#include <cstdint>

namespace qx
{

struct FileSystemInfo
{
    std::uint32_t flags = 0; // as the system returns them
    std::uint32_t maxNameLength = 0;
    bool caseSensitive = false;
    bool casePreserved = false;
    bool unicode = false;
    bool compressed = false;
};

// Returns empty values if the system reports an error. Null selects the root of the current folder.
FileSystemInfo GetFileSystemInfo(const wchar_t* root);

} // namespace qx
