#include <fileapi.h>

#include "base/handle_table.h"
#include "files/file_object.h"
#include "files/metadata.h"
#include "files/path.h"
#include "files/share_mode.h"
#include "files/temp_folder.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/resource.h>

using namespace qxplatform;

namespace
{

// The arguments of CreateFileW.
struct Request
{
    DWORD access = 0; // specific rights
    DWORD share = 0;
    DWORD disposition = 0;
    DWORD flags = 0; // including attributes

    bool Has(DWORD flag) const { return (flags & flag) != 0; }
    bool Writes() const { return (access & (FILE_WRITE_DATA | FILE_APPEND_DATA)) != 0; }
    bool Reads() const { return (access & (FILE_READ_DATA | FILE_EXECUTE)) != 0; }
    bool IsOnlyLooking() const
    {
        return (access & ~(FILE_READ_ATTRIBUTES | SYNCHRONIZE | READ_CONTROL)) == 0 && !Truncates();
    }
    bool MayCreate() const { return disposition != OPEN_EXISTING; }
    bool Truncates() const { return disposition == CREATE_ALWAYS; }
    bool IsOnlyAppending() const { return (access & (FILE_WRITE_DATA | FILE_APPEND_DATA)) == FILE_APPEND_DATA; }
};

struct Opened
{
    Descriptor descriptor;
    bool canRead = false;
    bool canWrite = false;
    bool isNew = false;
};

// The file may appear or disappear between two checks. The operation is then repeated up to this number of times.
constexpr int kMaximumRounds = 16;

DWORD CheckRequest(const Request& request)
{
    if (request.disposition < CREATE_NEW || request.disposition > OPEN_ALWAYS)
        return ERROR_INVALID_PARAMETER;
    return request.Has(FILE_FLAG_OVERLAPPED) ? ERROR_NOT_SUPPORTED : ERROR_SUCCESS;
}

// The system has no limit on open files that programs usually reach, while the default here is low. Returns false if
// the hard limit is reached.
bool RaiseDescriptorLimit()
{
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= limit.rlim_max)
        return false;
    limit.rlim_cur = limit.rlim_max;
    return setrlimit(RLIMIT_NOFILE, &limit) == 0;
}

int OpenDescriptor(const std::string& path, int flags)
{
    const mode_t mode = flags & O_CREAT ? ModeOfNew(path, 0666) : 0;
    int descriptor;
    do
        // Without O_NONBLOCK, opening a pipe without a partner would block. Files aren't affected.
        descriptor = open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, mode);
    while (descriptor < 0 && (errno == EINTR || (errno == EMFILE && RaiseDescriptorLimit())));
    return descriptor;
}

// Opens the file with the required access, and with read access if possible, because shared locks need it.
Opened OpenFor(const std::string& path, const Request& request, int creationFlags)
{
    Opened opened;
    const bool needsWriting = request.Writes() || request.Truncates();
    if (request.IsOnlyLooking() && creationFlags == 0)
    {
        opened.descriptor = Descriptor(open(path.c_str(), O_PATH | O_CLOEXEC));
        return opened;
    }
    const int flags = creationFlags | (request.Has(FILE_FLAG_WRITE_THROUGH) ? O_DSYNC : 0) |
                      (request.IsOnlyAppending() ? O_APPEND : 0);
    opened.canRead = true;
    opened.canWrite = needsWriting;
    opened.descriptor = Descriptor(OpenDescriptor(path, flags | (needsWriting ? O_RDWR : O_RDONLY)));
    if (!opened.descriptor && errno == EACCES && needsWriting && !request.Reads())
    {
        opened.canRead = false;
        opened.descriptor = Descriptor(OpenDescriptor(path, flags | O_WRONLY));
    }
    return opened;
}

// Opens or creates the file according to the disposition. On failure the descriptor is empty and errno is set.
Opened OpenOrCreate(const std::string& path, const Request& request)
{
    Opened opened;
    if (request.disposition != CREATE_NEW)
    {
        opened = OpenFor(path, request, 0);
        if (opened.descriptor || errno != ENOENT || !request.MayCreate())
            return opened;
    }
    opened = OpenFor(path, request, O_CREAT | O_EXCL);
    opened.isNew = true;
    if (opened.descriptor || errno != EEXIST || request.disposition == CREATE_NEW)
        return opened;
    // Either another process was faster, or this is a link whose target doesn't exist.
    struct stat info
    {
    };
    if (lstat(path.c_str(), &info) == 0 && S_ISLNK(info.st_mode))
        opened = OpenFor(path, request, O_CREAT);
    else
        errno = EAGAIN;
    opened.isNew = true;
    return opened;
}

// Returns an error if the file's attributes or type don't permit the access.
DWORD CheckAttributes(const Opened& opened, const Request& request, const struct stat& info)
{
    if (S_ISDIR(info.st_mode))
        return request.Has(FILE_FLAG_BACKUP_SEMANTICS) && !request.Truncates() ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
    if (opened.isNew)
        return ERROR_SUCCESS;
    // Even the administrator must clear the attribute first.
    const bool changes = request.Writes() || request.Truncates() || request.Has(FILE_FLAG_DELETE_ON_CLOSE);
    if (changes && IsReadOnly(info.st_mode))
        return ERROR_ACCESS_DENIED;
    if (request.disposition != CREATE_ALWAYS)
        return ERROR_SUCCESS;
    // A file that is replaced must keep these attributes.
    const DWORD kept = ReadKeptAttributes(PathOfDescriptor(opened.descriptor.Get()));
    return (kept & ~request.flags) == 0 ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

// Sets the attributes of a new or replaced file. They are hints: if the file system can't store them, the open still
// succeeds.
void SetAttributes(const Opened& opened, const Request& request)
{
    const std::string path = PathOfDescriptor(opened.descriptor.Get());
    if ((request.flags & kEptAttributes) != 0)
        WriteKeptAttributes(path, request.flags);
    if (request.Has(FILE_ATTRIBUTE_READONLY))
        WriteReadOnly(path, true);
}

DWORD Finish(Opened& opened, const Request& request, const struct stat& info)
{
    const int descriptor = opened.descriptor.Get();
    if (request.Truncates() && !opened.isNew && S_ISREG(info.st_mode) && ftruncate(descriptor, 0) != 0)
        return ErrorFromErrno(errno);
    if (opened.isNew || request.Truncates())
        SetAttributes(opened, request);
    if (request.Has(FILE_FLAG_SEQUENTIAL_SCAN))
        posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
    if (request.Has(FILE_FLAG_RANDOM_ACCESS))
        posix_fadvise(descriptor, 0, 0, POSIX_FADV_RANDOM);
    if (!S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode))
        fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
    return ERROR_SUCCESS;
}

// Sharing is checked before anything is changed. `isStale` reports that the name has been moved to another file in the
// meantime.
DWORD Share(const Opened& opened, const Request& request, const struct stat& info, bool& isStale)
{
    isStale = false;
    if (!S_ISREG(info.st_mode))
        return ERROR_SUCCESS;
    const ShareMode mode{
        SharedAccessOf(request.access), request.share & (FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE)};
    const DWORD error = TakeShareMode(opened.descriptor.Get(), opened.canRead, mode);
    if (error != ERROR_SUCCESS)
        // Another process may have opened the new file before this point; the result is the same as if that process had
        // created it.
        return opened.isNew && request.disposition == CREATE_NEW ? DWORD{ERROR_FILE_EXISTS} : error;
    struct stat now
    {
    };
    isStale = fstat(opened.descriptor.Get(), &now) == 0 && now.st_nlink == 0;
    return ERROR_SUCCESS;
}

bool IsFolder(const std::string& path)
{
    struct stat info
    {
    };
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

DWORD Open(const NativePath& path, const Request& request, Opened& opened, struct stat& info)
{
    if (path.endsInSeparator && request.MayCreate() && !IsFolder(path.text))
        return ERROR_INVALID_NAME;
    for (int round = 0; round < kMaximumRounds; ++round)
    {
        opened = OpenOrCreate(path.text, request);
        if (!opened.descriptor)
        {
            if (errno == EAGAIN)
                continue;
            return errno == EEXIST ? DWORD{ERROR_FILE_EXISTS} : PathError(errno, path.text);
        }
        if (fstat(opened.descriptor.Get(), &info) != 0)
            return ErrorFromErrno(errno);
        if (path.endsInSeparator && !S_ISDIR(info.st_mode))
            return ERROR_INVALID_NAME;
        DWORD error = CheckAttributes(opened, request, info);
        if (error != ERROR_SUCCESS)
            return error;
        bool isStale = false;
        error = Share(opened, request, info, isStale);
        if (error != ERROR_SUCCESS)
            return error;
        if (!isStale)
            return Finish(opened, request, info);
    }
    return ERROR_SHARING_VIOLATION;
}

HANDLE FailOpen(DWORD error)
{
    SetLastError(error);
    return INVALID_HANDLE_VALUE;
}

} // namespace

HANDLE WINAPI CreateFileW(LPCWSTR lpFileName, DWORD dwDesiredAccess, DWORD dwShareMode, LPSECURITY_ATTRIBUTES,
    DWORD dwCreationDisposition, DWORD dwFlagsAndAttributes, HANDLE)
{
    const NativePath path = ToNative(lpFileName);
    if (path.IsEmpty())
        return INVALID_HANDLE_VALUE;
    Request request{FileObject::MapFileAccess(dwDesiredAccess) | FILE_READ_ATTRIBUTES | SYNCHRONIZE, dwShareMode,
        dwCreationDisposition, dwFlagsAndAttributes};
    if (request.Has(FILE_FLAG_DELETE_ON_CLOSE))
        request.access |= DELETE;
    if (const DWORD error = CheckRequest(request); error != ERROR_SUCCESS)
        return FailOpen(error);

    Opened opened;
    struct stat info
    {
    };
    if (const DWORD error = Open(path, request, opened, info); error != ERROR_SUCCESS)
        return FailOpen(error);
    const bool canSeek = S_ISREG(info.st_mode) || S_ISBLK(info.st_mode);
    const auto file = MakeObject<FileObject>(
        std::move(opened.descriptor), FileObject::Options{canSeek, opened.canWrite, request.IsOnlyAppending(),
                                          request.Has(FILE_FLAG_DELETE_ON_CLOSE)});
    const HANDLE handle = AddHandle(file, request.access);
    if (handle == nullptr)
        return INVALID_HANDLE_VALUE;
    const bool wasThere =
        !opened.isNew && (dwCreationDisposition == CREATE_ALWAYS || dwCreationDisposition == OPEN_ALWAYS);
    SetLastError(wasThere ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
}
