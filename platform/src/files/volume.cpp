#include <fileapi.h>
#include <winnt.h>

#include "base/fail.h"
#include "files/path.h"

#include <sys/statvfs.h>

using namespace qxplatform;

// Doesn't support volume names, serial numbers and file system names: they depend on tools and permissions on Linux,
// and no caller needs them.
BOOL WINAPI GetVolumeInformationW(LPCWSTR root, LPWSTR volumeName, DWORD, LPDWORD serialNumber,
    LPDWORD maximumComponentLength, LPDWORD fileSystemFlags, LPWSTR fileSystemName, DWORD)
{
    if (volumeName || serialNumber || fileSystemName)
        return Fail(ERROR_NOT_SUPPORTED);
    const NativePath path = ToFullNative(root ? root : L".");
    if (path.IsEmpty())
        return FALSE;
    struct statvfs info
    {
    };
    if (statvfs(path.text.c_str(), &info) != 0)
        return Fail(PathError(errno, path.text));
    if (maximumComponentLength)
        *maximumComponentLength = static_cast<DWORD>(info.f_namemax);
    if (fileSystemFlags)
        *fileSystemFlags = FILE_CASE_SENSITIVE_SEARCH | FILE_CASE_PRESERVED_NAMES | FILE_UNICODE_ON_DISK;
    return TRUE;
}
