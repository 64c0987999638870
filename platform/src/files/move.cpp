// Moving and replacing files, and the final path of an open file.
#include <fileapi.h>
#include <winbase.h>

#include "base/handle_table.h"
#include "files/file_object.h"
#include "files/metadata.h"
#include "files/path.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

using namespace qxplatform;

namespace
{

// Flushes the names in a folder to disk, so that they survive a crash of the system. Ignores failures, for example if
// the folder may not be read: the file has been moved by then, and the caller must not regard the move as failed.
void FlushFolderOf(const std::string& path)
{
    const Descriptor folder(open(FolderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder)
        fsync(folder.Get());
}

// Renames a file unless the new name exists.
bool RenameToNew(const std::string& from, const std::string& to)
{
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS)
        return false;
    return link(from.c_str(), to.c_str()) == 0 && unlink(from.c_str()) == 0;
}

// Copies the extended attributes that the file system permits to copy, including the layer's attributes and access
// control lists.
void CopyExtendedAttributes(const std::string& from, const std::string& to)
{
    const ssize_t length = listxattr(from.c_str(), nullptr, 0);
    std::vector<char> names(static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    const ssize_t listed = names.empty() ? 0 : listxattr(from.c_str(), names.data(), names.size());
    for (const char* name = names.data(); name < names.data() + listed; name += std::string_view(name).size() + 1)
    {
        std::vector<char> value(XATTR_SIZE_MAX);
        const ssize_t size = getxattr(from.c_str(), name, value.data(), value.size());
        if (size >= 0)
            setxattr(to.c_str(), name, value.data(), static_cast<std::size_t>(size), 0);
    }
}

// Copies the owner, mode and attributes of the file `model` to the file `path`. If the owner or group can't be set, the
// mode is restricted so that nobody gains rights. Returns false and sets errno if the mode can't be set.
bool TakeMetadata(const std::string& path, const std::string& model, const struct stat& info)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat own
    {
    };
    if (!file || fstat(file.Get(), &own) != 0)
        return false;
    mode_t mode = info.st_mode & 07777;
    const bool keepsOwner = own.st_uid == info.st_uid || fchown(file.Get(), info.st_uid, static_cast<gid_t>(-1)) == 0;
    const bool keepsGroup = own.st_gid == info.st_gid || fchown(file.Get(), static_cast<uid_t>(-1), info.st_gid) == 0;
    if (!keepsOwner)
        mode &= ~static_cast<mode_t>(S_ISUID);
    if (!keepsGroup)
        mode &= ~static_cast<mode_t>(S_ISGID) & (~static_cast<mode_t>(S_IRWXG) | (mode & S_IRWXO) << 3);
    if (fchmod(file.Get(), mode) != 0)
        return false;
    if (keepsGroup)
        CopyExtendedAttributes(model, PathOfDescriptor(file.Get()));
    return true;
}

} // namespace

BOOL WINAPI MoveFileExW(LPCWSTR lpExistingFileName, LPCWSTR lpNewFileName, DWORD dwFlags)
{
    const NativePath from = ToNative(lpExistingFileName);
    const NativePath to = from.IsEmpty() ? NativePath() : ToNative(lpNewFileName);
    if (from.IsEmpty() || to.IsEmpty())
        return FALSE;
    if ((dwFlags & ~DWORD{MOVEFILE_WRITE_THROUGH}) != 0)
        return Fail(ERROR_NOT_SUPPORTED);
    if (to.endsInSeparator)
        return Fail(ERROR_INVALID_NAME);
    if (!RenameToNew(from.text, to.text))
        return Fail(errno == EEXIST ? DWORD{ERROR_ALREADY_EXISTS} : PathError(errno, from.text));
    if ((dwFlags & MOVEFILE_WRITE_THROUGH) != 0)
        FlushFolderOf(to.text);
    return TRUE;
}

BOOL WINAPI ReplaceFileW(LPCWSTR lpReplacedFileName, LPCWSTR lpReplacementFileName, LPCWSTR lpBackupFileName,
    DWORD dwReplaceFlags, LPVOID, LPVOID)
{
    const NativePath replaced = ToNative(lpReplacedFileName);
    const NativePath replacement = replaced.IsEmpty() ? NativePath() : ToNative(lpReplacementFileName);
    if (replaced.IsEmpty() || replacement.IsEmpty())
        return FALSE;
    if (lpBackupFileName != nullptr || (dwReplaceFlags & ~DWORD{REPLACEFILE_WRITE_THROUGH}) != 0)
        return Fail(ERROR_NOT_SUPPORTED);
    struct stat info
    {
    };
    if (lstat(replaced.text.c_str(), &info) != 0)
        return Fail(PathError(errno, replaced.text));
    if (!S_ISREG(info.st_mode) || IsReadOnly(info.st_mode))
        return Fail(ERROR_ACCESS_DENIED);
    if (!TakeMetadata(replacement.text, replaced.text, info) ||
        rename(replacement.text.c_str(), replaced.text.c_str()) != 0)
        return Fail(PathError(errno, replacement.text));
    if ((dwReplaceFlags & REPLACEFILE_WRITE_THROUGH) != 0)
        FlushFolderOf(replaced.text);
    return TRUE;
}

DWORD WINAPI GetFinalPathNameByHandleW(HANDLE hFile, LPWSTR lpszFilePath, DWORD cchFilePath, DWORD dwFlags)
{
    const Ref<FileObject> file = LookUp<FileObject>(hFile);
    if (!file)
        return 0;
    if (dwFlags != 0)
        return static_cast<DWORD>(Fail(ERROR_NOT_SUPPORTED));
    char path[PATH_MAX];
    const ssize_t length = readlink(PathOfDescriptor(file->descriptor()).c_str(), path, sizeof path - 1);
    path[std::max<ssize_t>(length, 0)] = 0;
    // A file that was removed has no name any more.
    struct stat opened
    {
    };
    struct stat named
    {
    };
    if (length <= 0 || fstat(file->descriptor(), &opened) != 0 || lstat(path, &named) != 0 ||
        opened.st_dev != named.st_dev || opened.st_ino != named.st_ino)
        return static_cast<DWORD>(Fail(ERROR_FILE_NOT_FOUND));
    const std::u16string text = FromNative(path);
    if (text.size() >= cchFilePath)
        return static_cast<DWORD>(text.size() + 1);
    *std::copy(text.begin(), text.end(), lpszFilePath) = 0;
    return static_cast<DWORD>(text.size());
}
