#include "files/file_system_info.h"

#include <windows.h>

namespace qx
{

FileSystemInfo GetFileSystemInfo(const wchar_t* root)
{
    DWORD maxNameLength = 0;
    DWORD flags = 0;
    if (!GetVolumeInformationW(root, nullptr, 0, nullptr, &maxNameLength, &flags, nullptr, 0))
        return {};
    return {flags, maxNameLength, (flags & FILE_CASE_SENSITIVE_SEARCH) != 0, (flags & FILE_CASE_PRESERVED_NAMES) != 0,
        (flags & FILE_UNICODE_ON_DISK) != 0, (flags & FILE_VOLUME_IS_COMPRESSED) != 0};
}

} // namespace qx
