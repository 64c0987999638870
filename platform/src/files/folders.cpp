#include <fileapi.h>
#include <processenv.h>

#include "base/fail.h"
#include "files/path.h"
#include "files/temp_folder.h"

#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

using namespace qxplatform;

DWORD WINAPI GetFullPathNameW(LPCWSTR lpFileName, DWORD nBufferLength, LPWSTR lpBuffer, LPWSTR* lpFilePart)
{
    const std::u16string full = CallersForm(lpFileName, true);
    if (full.empty())
        return Fail(ERROR_INVALID_NAME);
    const DWORD result = CopyOut(full, lpBuffer, nBufferLength);
    if (lpFilePart != nullptr)
    {
        const std::size_t name = full.find_last_of(u"/\\") + 1;
        *lpFilePart = result == full.size() && name < full.size() ? lpBuffer + name : nullptr;
    }
    return result;
}

// Linux has no short names, so if the file exists, the path is returned unchanged except for "." and "..", which are
// resolved, and its separators.
DWORD WINAPI GetLongPathNameW(LPCWSTR lpszShortPath, LPWSTR lpszLongPath, DWORD cchBuffer)
{
    const NativePath path = ToNative(lpszShortPath);
    struct stat info
    {
    };
    if (path.IsEmpty())
        return 0;
    if (stat(path.text.c_str(), &info) != 0)
        return Fail(PathError(errno, path.text));
    return CopyOut(CallersForm(lpszShortPath, false), lpszLongPath, cchBuffer);
}

DWORD WINAPI GetTempPathW(DWORD nBufferLength, LPWSTR lpBuffer)
{
    NativePath folder = ToFullNative(Wide(FromNative(TempFolder())));
    folder.endsInSeparator = true;
    return CopyOut(FromNative(folder), lpBuffer, nBufferLength);
}
