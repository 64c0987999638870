#include <fileapi.h>
#include <handleapi.h>
#include <winbase.h>

#include "base/handle_table.h"
#include "files/file_object.h"
#include "files/metadata.h"
#include "files/path.h"
#include "files/share_mode.h"
#include "files/temp_folder.h"

#include <cerrno>
#include <cstdio>
#include <new>

#include <fcntl.h>

using namespace qxplatform;

namespace
{

// Checks whether the file's name may be removed. Removing it counts as opening the file for deletion, which all of its
// open handles must share. The right is held as long as `holder` exists.
DWORD TakeDeleteRight(const std::string& path, const struct stat& info, Descriptor& holder)
{
    if (!S_ISREG(info.st_mode))
        return ERROR_SUCCESS;
    constexpr int kFlags = O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW;
    bool canRead = true;
    holder = Descriptor(open(path.c_str(), O_RDONLY | kFlags));
    if (!holder)
    {
        canRead = false;
        holder = Descriptor(open(path.c_str(), O_WRONLY | kFlags));
    }
    // If the caller can't open the file, its sharing modes can't be checked, and only the folder's permissions decide.
    if (!holder)
        return ERROR_SUCCESS;
    return TakeShareMode(
        holder.Get(), canRead, {FILE_SHARE_DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE});
}

bool CopyBytes(int from, int to)
{
    constexpr std::size_t kBlockSize = 1 << 20;
    while (true)
    {
        const ssize_t copied = copy_file_range(from, nullptr, to, nullptr, kBlockSize * 64, 0);
        if (copied == 0)
            break;
        if (copied > 0 || errno == EINTR)
            continue;
        if (errno != EXDEV && errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP)
            return false;
        break;
    }
    // Copy the data that the kernel didn't: it may refuse the copy or, for files of /proc, report the end too early.
    std::string block(kBlockSize, '\0');
    ssize_t length;
    while ((length = read(from, block.data(), block.size())) > 0)
        for (ssize_t done = 0; done < length;)
        {
            const ssize_t written = write(to, block.data() + done, static_cast<std::size_t>(length - done));
            if (written < 0)
                return false;
            done += written;
        }
    return length == 0;
}

class HandleHolder
{
public:
    explicit HandleHolder(HANDLE handle) : _handle(handle) {}
    HandleHolder(const HandleHolder&) = delete;
    HandleHolder& operator=(const HandleHolder&) = delete;
    ~HandleHolder()
    {
        if (IsValid())
            CloseHandle(_handle);
    }
    bool IsValid() const { return _handle != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return _handle; }

private:
    HANDLE _handle;
};

} // namespace

BOOL WINAPI DeleteFileW(LPCWSTR lpFileName)
try
{
    const NativePath path = ToNative(lpFileName);
    if (path.IsEmpty())
        return FALSE;
    struct stat info
    {
    };
    if (lstat(path.text.c_str(), &info) != 0)
        return Fail(PathError(errno, path.text));
    if (S_ISDIR(info.st_mode))
        return Fail(ERROR_ACCESS_DENIED);
    if (path.endsInSeparator)
        return Fail(ERROR_INVALID_NAME);
    if (S_ISREG(info.st_mode) && IsReadOnly(info.st_mode))
        return Fail(ERROR_ACCESS_DENIED);
    Descriptor holder;
    if (const DWORD error = TakeDeleteRight(path.text, info, holder); error != ERROR_SUCCESS)
        return Fail(error);
    return unlink(path.text.c_str()) == 0 || Fail(PathError(errno, path.text));
}
// Destructors call this function, so it must not throw.
catch (const std::bad_alloc&)
{
    return Fail(ERROR_NOT_ENOUGH_MEMORY);
}

BOOL WINAPI CopyFileW(LPCWSTR lpExistingFileName, LPCWSTR lpNewFileName, BOOL bFailIfExists)
{
    const HandleHolder from(
        CreateFileW(lpExistingFileName, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
            OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    BY_HANDLE_FILE_INFORMATION info{};
    if (!from.IsValid() || !GetFileInformationByHandle(from.get(), &info))
        return FALSE;
    const HandleHolder to(CreateFileW(lpNewFileName, GENERIC_WRITE, 0, nullptr,
        bFailIfExists ? CREATE_NEW : CREATE_ALWAYS, info.dwFileAttributes, nullptr));
    if (!to.IsValid())
        return FALSE;
    const Ref<FileObject> source = LookUp<FileObject>(from.get());
    const Ref<FileObject> target = LookUp<FileObject>(to.get());
    if (!CopyBytes(source->descriptor(), target->descriptor()))
    {
        const DWORD error = ErrorFromErrno(errno);
        unlink(ToNative(lpNewFileName).text.c_str());
        return Fail(error);
    }
    SetFileTime(to.get(), nullptr, nullptr, &info.ftLastWriteTime);
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}

BOOL WINAPI CreateDirectoryW(LPCWSTR lpPathName, LPSECURITY_ATTRIBUTES)
{
    const NativePath path = ToNative(lpPathName);
    if (path.IsEmpty())
        return FALSE;
    if (mkdir(path.text.c_str(), ModeOfNew(path.text, 0777)) == 0)
        return TRUE;
    const int code = errno;
    // Don't report that the folder exists, because the caller would trust it.
    if (code == EEXIST && IsTakenByAnother(path.text))
        return Fail(ERROR_ACCESS_DENIED);
    // ENOENT always means that a parent folder is missing.
    return Fail(code == ENOENT ? DWORD{ERROR_PATH_NOT_FOUND} : ErrorFromErrno(code));
}

BOOL WINAPI RemoveDirectoryW(LPCWSTR lpPathName)
{
    const NativePath path = ToNative(lpPathName);
    if (path.IsEmpty())
        return FALSE;
    if (rmdir(path.text.c_str()) == 0)
        return TRUE;
    struct stat info
    {
    };
    const int code = errno;
    if (code == ENOTDIR && lstat(path.text.c_str(), &info) == 0)
        return Fail(ERROR_DIRECTORY);
    return Fail(PathError(code, path.text));
}
