#include <fileapi.h>
#include <processenv.h>

#include "base/fail.h"
#include "files/path.h"
#include "files/temp_folder.h"

#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

using namespace qxplatform;

namespace
{

std::u16string GivenOut(const NativePath& path)
{
    std::u16string text = FromNative(path.text);
    if (path.endsInSeparator && text.back() != u'/')
        text += u'/';
    return text;
}

} // namespace

DWORD WINAPI GetFullPathNameW(LPCWSTR lpFileName, DWORD nBufferLength, LPWSTR lpBuffer, LPWSTR* lpFilePart)
{
    const NativePath path = ToFullNative(lpFileName);
    if (path.IsEmpty())
        return Fail(ERROR_INVALID_NAME);
    const std::u16string full = GivenOut(path);
    const DWORD result = CopyOut(full, lpBuffer, nBufferLength);
    if (lpFilePart != nullptr)
    {
        const std::size_t name = full.rfind(u'/') + 1;
        *lpFilePart = result == full.size() && name < full.size() ? lpBuffer + name : nullptr;
    }
    return result;
}

// Linux has no short names: if the file exists, the path is returned unchanged.
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
    return CopyOut(GivenOut(path), lpszLongPath, cchBuffer);
}

DWORD WINAPI GetTempPathW(DWORD nBufferLength, LPWSTR lpBuffer)
{
    NativePath folder = ToFullNative(Wide(FromNative(TempFolder())));
    folder.endsInSeparator = true;
    return CopyOut(GivenOut(folder), lpBuffer, nBufferLength);
}
