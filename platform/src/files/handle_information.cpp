#include <fileapi.h>
#include <winbase.h>

#include "base/handle_table.h"
#include "files/file_object.h"
#include "files/metadata.h"

#include <cerrno>

using namespace qxplatform;

namespace
{

BOOL SetBasicInfo(HANDLE handle, const FILE_BASIC_INFO& info)
{
    const Ref<FileObject> file = LookUp<FileObject>(handle, FILE_WRITE_ATTRIBUTES);
    if (!file)
        return FALSE;
    const std::string path = PathOfDescriptor(file->descriptor());
    if (info.FileAttributes != 0 && (!WriteReadOnly(path, (info.FileAttributes & FILE_ATTRIBUTE_READONLY) != 0) ||
                                        !WriteKeptAttributes(path, info.FileAttributes)))
        return FailErrno();
    return TRUE;
}

BOOL SetDisposition(HANDLE handle, bool isDeleted)
{
    const Ref<FileObject> file = LookUp<FileObject>(handle, DELETE);
    struct stat info
    {
    };
    if (!file)
        return FALSE;
    if (fstat(file->descriptor(), &info) != 0)
        return FailErrno();
    if (isDeleted && (S_ISDIR(info.st_mode) || (!S_ISLNK(info.st_mode) && IsReadOnly(info.st_mode))))
        return Fail(ERROR_ACCESS_DENIED);
    file->SetDeletedOnClose(isDeleted);
    return TRUE;
}

} // namespace

DWORD WINAPI GetFileType(HANDLE hFile)
{
    const Ref<FileObject> file = LookUp<FileObject>(hFile);
    struct stat info
    {
    };
    if (!file)
        return FILE_TYPE_UNKNOWN;
    if (fstat(file->descriptor(), &info) != 0)
    {
        FailErrno();
        return FILE_TYPE_UNKNOWN;
    }
    SetLastError(ERROR_SUCCESS);
    switch (info.st_mode & S_IFMT)
    {
    case S_IFIFO:
    case S_IFSOCK:
        return FILE_TYPE_PIPE;
    case S_IFCHR:
        return FILE_TYPE_CHAR;
    default:
        return FILE_TYPE_DISK;
    }
}

BOOL WINAPI SetFileInformationByHandle(
    HANDLE hFile, FILE_INFO_BY_HANDLE_CLASS FileInformationClass, LPVOID lpFileInformation, DWORD dwBufferSize)
{
    switch (FileInformationClass)
    {
    case FileBasicInfo:
        if (dwBufferSize < sizeof(FILE_BASIC_INFO))
            return Fail(ERROR_INVALID_PARAMETER);
        return SetBasicInfo(hFile, *static_cast<const FILE_BASIC_INFO*>(lpFileInformation));
    case FileDispositionInfo:
        if (dwBufferSize < sizeof(FILE_DISPOSITION_INFO))
            return Fail(ERROR_INVALID_PARAMETER);
        return SetDisposition(hFile, static_cast<const FILE_DISPOSITION_INFO*>(lpFileInformation)->DeleteFile != 0);
    }
    return Fail(ERROR_NOT_SUPPORTED);
}
