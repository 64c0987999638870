#include <fileapi.h>

#include "base/handle_table.h"
#include "files/file_object.h"
#include "files/metadata.h"
#include "files/path.h"
#include "time/file_time.h"

#include <cerrno>

#include <fcntl.h>

using namespace qxplatform;

namespace
{

bool ReadByName(LPCWSTR name, Metadata& metadata)
{
    const NativePath path = ToNative(name);
    if (path.IsEmpty())
        return false;
    if (!ReadMetadata(path.text, metadata))
        return Fail(PathError(errno, path.text));
    metadata.attributes |= LinkAttribute(path.text);
    return !path.endsInSeparator || metadata.attributes & FILE_ATTRIBUTE_DIRECTORY || Fail(ERROR_PATH_NOT_FOUND);
}

bool ReadByHandle(HANDLE handle, DWORD rights, Metadata& metadata)
{
    const Ref<FileObject> file = LookUp<FileObject>(handle, rights);
    if (!file)
        return false;
    const std::string path = PathOfDescriptor(file->descriptor());
    if (!ReadMetadata(path, metadata))
        return FailErrno();
    // The handle may refer to a link itself: the descriptor's path leads to the link, not to its target.
    struct stat info
    {
    };
    if (fstat(file->descriptor(), &info) == 0 && S_ISLNK(info.st_mode))
        metadata.attributes |= FILE_ATTRIBUTE_REPARSE_POINT;
    return true;
}

// Returns the time to set, or the value that leaves the time unchanged.
timespec TimeToSet(const FILETIME* time)
{
    // The value -1 also requests that this handle no longer change the time, which Linux doesn't support.
    const bool isLeft = time == nullptr || UnitsOf(*time) == -1 || UnitsOf(*time) == 0;
    return isLeft ? timespec{0, UTIME_OMIT} : TimeSpecOf(*time);
}

} // namespace

DWORD WINAPI GetFileAttributesW(LPCWSTR lpFileName)
{
    Metadata metadata;
    return ReadByName(lpFileName, metadata) ? metadata.attributes : INVALID_FILE_ATTRIBUTES;
}

BOOL WINAPI GetFileAttributesExW(LPCWSTR lpFileName, GET_FILEEX_INFO_LEVELS fInfoLevelId, LPVOID lpFileInformation)
{
    if (fInfoLevelId != GetFileExInfoStandard)
        return Fail(ERROR_INVALID_PARAMETER);
    Metadata metadata;
    if (!ReadByName(lpFileName, metadata))
        return FALSE;
    *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(lpFileInformation) = {metadata.attributes, metadata.creation,
        metadata.access, metadata.write, static_cast<DWORD>(metadata.size >> 32), static_cast<DWORD>(metadata.size)};
    return TRUE;
}

BOOL WINAPI SetFileAttributesW(LPCWSTR lpFileName, DWORD dwFileAttributes)
{
    Metadata metadata;
    if (!ReadByName(lpFileName, metadata))
        return FALSE;
    const std::string path = ToNative(lpFileName).text;
    const bool isReadOnly = (dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (metadata.attributes & FILE_ATTRIBUTE_DIRECTORY)
    {
        // On Linux, a folder without write permission would also refuse new files. The system's attribute doesn't.
        if (isReadOnly)
            return Fail(ERROR_NOT_SUPPORTED);
    }
    else if (!WriteReadOnly(path, isReadOnly))
        return FailErrno();
    return WriteKeptAttributes(path, dwFileAttributes) || FailErrno();
}

BOOL WINAPI GetFileInformationByHandle(HANDLE hFile, LPBY_HANDLE_FILE_INFORMATION lpFileInformation)
{
    Metadata metadata;
    if (!ReadByHandle(hFile, 0, metadata))
        return FALSE;
    *lpFileInformation = {metadata.attributes, metadata.creation, metadata.access, metadata.write, metadata.volume,
        static_cast<DWORD>(metadata.size >> 32), static_cast<DWORD>(metadata.size), metadata.links,
        static_cast<DWORD>(metadata.index >> 32), static_cast<DWORD>(metadata.index)};
    return TRUE;
}

BOOL WINAPI GetFileTime(
    HANDLE hFile, LPFILETIME lpCreationTime, LPFILETIME lpLastAccessTime, LPFILETIME lpLastWriteTime)
{
    Metadata metadata;
    if (!ReadByHandle(hFile, FILE_READ_ATTRIBUTES, metadata))
        return FALSE;
    const auto give = [](LPFILETIME target, const FILETIME& time)
    {
        if (target != nullptr)
            *target = time;
    };
    give(lpCreationTime, metadata.creation);
    give(lpLastAccessTime, metadata.access);
    give(lpLastWriteTime, metadata.write);
    return TRUE;
}

// The creation time can't be changed on Linux. If a caller sets all three times, the other two are set.
BOOL WINAPI SetFileTime(
    HANDLE hFile, const FILETIME* lpCreationTime, const FILETIME* lpLastAccessTime, const FILETIME* lpLastWriteTime)
{
    const Ref<FileObject> file = LookUp<FileObject>(hFile, FILE_WRITE_ATTRIBUTES);
    if (!file)
        return FALSE;
    if (lpCreationTime != nullptr && lpLastAccessTime == nullptr && lpLastWriteTime == nullptr)
        return Fail(ERROR_NOT_SUPPORTED);
    const timespec times[] = {TimeToSet(lpLastAccessTime), TimeToSet(lpLastWriteTime)};
    if (futimens(file->descriptor(), times) == 0)
        return TRUE;
    // The descriptor itself can't be used if it was opened for attributes only.
    return (errno == EBADF && utimensat(AT_FDCWD, PathOfDescriptor(file->descriptor()).c_str(), times, 0) == 0) ||
           FailErrno();
}
