#include <fileapi.h>

#include "base/handle_table.h"
#include "base/mutex.h"
#include "files/file_object.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <mutex>
#include <optional>

#include <sys/stat.h>

using namespace qxplatform;

namespace
{

// A transfer, which starts at the file pointer or at the caller's offset.
class Transfer
{
public:
    Transfer(FileObject& file, OVERLAPPED* overlapped) : _file(file), _overlapped(overlapped)
    {
        if (overlapped == nullptr)
            _guard.emplace(file.positionLock);
        offset = overlapped == nullptr
                     ? file.position
                     : static_cast<std::int64_t>(ULONGLONG{overlapped->OffsetHigh} << 32 | overlapped->Offset);
    }

    void Done(DWORD count)
    {
        // The file pointer follows the bytes, even for an overlapped call on a synchronous handle.
        if (_overlapped == nullptr)
            _file.position = offset + count;
        else
        {
            const std::lock_guard guard(_file.positionLock);
            _file.position = offset + count;
            _overlapped->Internal = 0;
            _overlapped->InternalHigh = count;
        }
    }

    std::int64_t offset = 0;

private:
    FileObject& _file;
    OVERLAPPED* const _overlapped;
    std::optional<std::unique_lock<Mutex>> _guard;
};

// Calls `move(done)` until everything is transferred or nothing more can be. Returns 0 or errno.
template <class Move>
int MoveAll(DWORD count, DWORD& done, const Move& move)
{
    while (done < count)
    {
        const ssize_t moved = move(done);
        if (moved > 0)
            done += static_cast<DWORD>(moved);
        else if (moved == 0)
            break;
        else if (errno != EINTR)
            return errno;
    }
    return 0;
}

// Reads the available bytes from a pipe, or all requested bytes from a file unless it ends.
int ReadBytes(FileObject& file, BYTE* buffer, DWORD count, std::int64_t offset, DWORD& done)
{
    if (file.options().canSeek)
        return MoveAll(count, done,
            [&](DWORD begin) { return pread(file.descriptor(), buffer + begin, count - begin, offset + begin); });
    ssize_t length;
    do
        length = read(file.descriptor(), buffer, count);
    while (length < 0 && errno == EINTR);
    done = length < 0 ? 0 : static_cast<DWORD>(length);
    return length < 0 ? errno : 0;
}

int WriteBytes(FileObject& file, const BYTE* buffer, DWORD count, std::int64_t offset, DWORD& done)
{
    const bool isAtOffset = file.options().canSeek && !file.options().appends;
    return MoveAll(count, done,
        [&](DWORD begin)
        {
            return isAtOffset ? pwrite(file.descriptor(), buffer + begin, count - begin, offset + begin)
                              : write(file.descriptor(), buffer + begin, count - begin);
        });
}

BOOL SetPosition(FileObject& file, LONGLONG distance, DWORD method, LONGLONG& position)
{
    LONGLONG base = 0;
    if (method == FILE_CURRENT)
        base = file.position;
    else if (method == FILE_END)
    {
        struct stat info
        {
        };
        if (fstat(file.descriptor(), &info) != 0)
            return FailErrno();
        base = info.st_size;
    }
    else if (method != FILE_BEGIN)
        return Fail(ERROR_INVALID_PARAMETER);
    if (__builtin_add_overflow(base, distance, &position))
        return Fail(ERROR_INVALID_PARAMETER);
    return position >= 0 || Fail(ERROR_NEGATIVE_SEEK);
}

Ref<FileObject> SeekableFile(HANDLE handle)
{
    Ref<FileObject> file = LookUp<FileObject>(handle);
    if (!file || file->options().canSeek)
        return file;
    Fail(ERROR_SEEK_ON_DEVICE);
    return {};
}

} // namespace

BOOL WINAPI ReadFile(
    HANDLE hFile, LPVOID lpBuffer, DWORD nNumberOfBytesToRead, LPDWORD lpNumberOfBytesRead, LPOVERLAPPED lpOverlapped)
{
    if (lpNumberOfBytesRead != nullptr)
        *lpNumberOfBytesRead = 0;
    const Ref<FileObject> file = LookUp<FileObject>(hFile, FILE_READ_DATA);
    if (!file)
        return FALSE;
    Transfer transfer(*file, lpOverlapped);
    if (transfer.offset < 0)
        return Fail(ERROR_INVALID_PARAMETER);
    if (file->options().canSeek &&
        IsLockedByOthers(file->descriptor(), LockKind::Shared, transfer.offset, nNumberOfBytesToRead))
        return Fail(ERROR_LOCK_VIOLATION);
    DWORD done = 0;
    const int code = ReadBytes(*file, static_cast<BYTE*>(lpBuffer), nNumberOfBytesToRead, transfer.offset, done);
    if (code != 0 && done == 0)
        return Fail(ErrorFromErrno(code));
    transfer.Done(done);
    if (lpNumberOfBytesRead != nullptr)
        *lpNumberOfBytesRead = done;
    const bool isAtEnd = done == 0 && nNumberOfBytesToRead > 0;
    return !(isAtEnd && lpOverlapped != nullptr) || Fail(ERROR_HANDLE_EOF);
}

BOOL WINAPI WriteFile(HANDLE hFile, LPCVOID lpBuffer, DWORD nNumberOfBytesToWrite, LPDWORD lpNumberOfBytesWritten,
    LPOVERLAPPED lpOverlapped)
{
    if (lpNumberOfBytesWritten != nullptr)
        *lpNumberOfBytesWritten = 0;
    const Ref<FileObject> file = LookUp<FileObject>(hFile, FILE_APPEND_DATA);
    if (!file)
        return FALSE;
    Transfer transfer(*file, lpOverlapped);
    if (transfer.offset < 0)
        return Fail(ERROR_INVALID_PARAMETER);
    if (file->options().canSeek &&
        IsLockedByOthers(file->descriptor(), LockKind::Exclusive, transfer.offset, nNumberOfBytesToWrite))
        return Fail(ERROR_LOCK_VIOLATION);
    DWORD done = 0;
    const int code =
        WriteBytes(*file, static_cast<const BYTE*>(lpBuffer), nNumberOfBytesToWrite, transfer.offset, done);
    transfer.Done(done);
    if (lpNumberOfBytesWritten != nullptr)
        *lpNumberOfBytesWritten = done;
    return code == 0 || Fail(ErrorFromErrno(code));
}

BOOL WINAPI SetFilePointerEx(
    HANDLE hFile, LARGE_INTEGER liDistanceToMove, PLARGE_INTEGER lpNewFilePointer, DWORD dwMoveMethod)
{
    const Ref<FileObject> file = SeekableFile(hFile);
    if (!file)
        return FALSE;
    const std::lock_guard guard(file->positionLock);
    LONGLONG position = 0;
    if (!SetPosition(*file, liDistanceToMove.QuadPart, dwMoveMethod, position))
        return FALSE;
    file->position = position;
    if (lpNewFilePointer != nullptr)
        lpNewFilePointer->QuadPart = position;
    return TRUE;
}

DWORD WINAPI SetFilePointer(HANDLE hFile, LONG lDistanceToMove, PLONG lpDistanceToMoveHigh, DWORD dwMoveMethod)
{
    const Ref<FileObject> file = SeekableFile(hFile);
    if (!file)
        return INVALID_SET_FILE_POINTER;
    LARGE_INTEGER distance{};
    distance.QuadPart = lDistanceToMove;
    if (lpDistanceToMoveHigh != nullptr)
    {
        distance.LowPart = static_cast<DWORD>(lDistanceToMove);
        distance.HighPart = *lpDistanceToMoveHigh;
    }
    const std::lock_guard guard(file->positionLock);
    LARGE_INTEGER position{};
    if (!SetPosition(*file, distance.QuadPart, dwMoveMethod, position.QuadPart))
        return INVALID_SET_FILE_POINTER;
    // Without a place for the high part, the caller can't receive positions of 4 GB and more.
    if (lpDistanceToMoveHigh == nullptr && position.HighPart != 0)
    {
        Fail(ERROR_INVALID_PARAMETER);
        return INVALID_SET_FILE_POINTER;
    }
    file->position = position.QuadPart;
    if (lpDistanceToMoveHigh != nullptr)
        *lpDistanceToMoveHigh = position.HighPart;
    // This low part looks like the result of a failure; callers distinguish the two by the last error.
    if (position.LowPart == INVALID_SET_FILE_POINTER)
        SetLastError(NO_ERROR);
    return position.LowPart;
}

BOOL WINAPI SetEndOfFile(HANDLE hFile)
{
    const Ref<FileObject> file = LookUp<FileObject>(hFile, FILE_WRITE_DATA);
    if (!file)
        return FALSE;
    const std::lock_guard guard(file->positionLock);
    return ftruncate(file->descriptor(), file->position) == 0 || FailErrno();
}

BOOL WINAPI GetFileSizeEx(HANDLE hFile, PLARGE_INTEGER lpFileSize)
{
    const Ref<FileObject> file = LookUp<FileObject>(hFile);
    if (!file)
        return FALSE;
    struct stat info
    {
    };
    if (fstat(file->descriptor(), &info) != 0)
        return FailErrno();
    lpFileSize->QuadPart = info.st_size;
    return TRUE;
}

BOOL WINAPI FlushFileBuffers(HANDLE hFile)
{
    const Ref<FileObject> file = LookUp<FileObject>(hFile, FILE_APPEND_DATA);
    // Pipes and similar files have nothing to flush.
    return file && (fsync(file->descriptor()) == 0 || errno == EINVAL || errno == EROFS || FailErrno());
}

BOOL WINAPI LockFile(HANDLE hFile, DWORD dwFileOffsetLow, DWORD dwFileOffsetHigh, DWORD nNumberOfBytesToLockLow,
    DWORD nNumberOfBytesToLockHigh)
{
    const Ref<FileObject> file = LookUp<FileObject>(hFile);
    if (!file)
        return FALSE;
    const DWORD error = file->byteLocks.Lock(file->descriptor(), file->options().canWrite,
        ULONGLONG{dwFileOffsetHigh} << 32 | dwFileOffsetLow,
        ULONGLONG{nNumberOfBytesToLockHigh} << 32 | nNumberOfBytesToLockLow);
    return error == ERROR_SUCCESS || Fail(error);
}

BOOL WINAPI UnlockFile(HANDLE hFile, DWORD dwFileOffsetLow, DWORD dwFileOffsetHigh, DWORD nNumberOfBytesToUnlockLow,
    DWORD nNumberOfBytesToUnlockHigh)
{
    const Ref<FileObject> file = LookUp<FileObject>(hFile);
    if (!file)
        return FALSE;
    const DWORD error = file->byteLocks.Unlock(file->descriptor(), ULONGLONG{dwFileOffsetHigh} << 32 | dwFileOffsetLow,
        ULONGLONG{nNumberOfBytesToUnlockHigh} << 32 | nNumberOfBytesToUnlockLow);
    return error == ERROR_SUCCESS || Fail(error);
}
