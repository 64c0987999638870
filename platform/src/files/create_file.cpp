#include <fileapi.h>

#include "base/handle_table.h"
#include "files/file_object.h"
#include "files/metadata.h"
#include "files/open_beneath.h"
#include "files/path.h"
#include "files/relative_open.h"
#include "files/share_mode.h"
#include "files/temp_folder.h"

#include <cerrno>
#include <optional>

#include <fcntl.h>
#include <sys/resource.h>

using namespace qxplatform;

namespace
{

// The location of a file: a path, or a name in an open folder. In an open folder no link is followed.
struct Place
{
    std::string path;
    Ref<FileObject> folder;

    int Folder() const { return folder ? folder->descriptor() : AT_FDCWD; }
};

// The arguments of CreateFileW.
struct Request
{
    DWORD access = 0; // specific rights
    DWORD share = 0;
    DWORD disposition = 0;
    DWORD flags = 0;            // including attributes
    std::optional<mode_t> mode; // of a new file

    bool Has(DWORD flag) const { return (flags & flag) != 0; }
    bool Writes() const { return (access & (FILE_WRITE_DATA | FILE_APPEND_DATA)) != 0; }
    bool Reads() const { return (access & (FILE_READ_DATA | FILE_EXECUTE)) != 0; }
    bool IsOnlyLooking() const
    {
        return (access & ~(FILE_READ_ATTRIBUTES | SYNCHRONIZE | READ_CONTROL)) == 0 && !Truncates();
    }
    // Opens the entry itself, even if it is a link.
    bool OpensLink() const { return Has(FILE_FLAG_OPEN_REPARSE_POINT); }
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

// Raises the limit of open files, which is low by default, while programs usually reach no such limit on the system.
// Returns false if the hard limit is reached.
bool RaiseDescriptorLimit()
{
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= limit.rlim_max)
        return false;
    limit.rlim_cur = limit.rlim_max;
    return setrlimit(RLIMIT_NOFILE, &limit) == 0;
}

mode_t ModeOf(const Place& place, const Request& request)
{
    // Temporary files may contain private data.
    const mode_t usual = request.Has(FILE_ATTRIBUTE_TEMPORARY) ? 0600 : 0666;
    return request.mode ? *request.mode : place.folder ? usual : ModeOfNew(place.path, usual);
}

int OpenDescriptor(const Place& place, const Request& request, int flags)
{
    const mode_t mode = flags & O_CREAT ? ModeOf(place, request) : 0;
    // Without O_NONBLOCK the open of a pipe without a partner would block; to files it makes no difference.
    flags |= O_CLOEXEC | O_NOCTTY | O_NONBLOCK | (request.OpensLink() ? O_NOFOLLOW : 0);
    int descriptor;
    do
        descriptor =
            place.folder ? OpenBeneath(place.Folder(), place.path, flags, mode) : open(place.path.c_str(), flags, mode);
    while (descriptor < 0 && (errno == EINTR || (errno == EMFILE && RaiseDescriptorLimit())));
    return descriptor;
}

// Returns true if the entry is a link, a pipe or the like, and the request neither reads nor writes but only queries or
// deletes it. The handle then refers to the entry without opening it.
bool IsLinkOrPipe(const Place& place, const Request& request)
{
    struct stat info
    {
    };
    return !request.Reads() && !request.Writes() &&
           fstatat(place.Folder(), place.path.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0 && !S_ISREG(info.st_mode);
}

// Opens the file with the required access, and with read access if possible, because shared locks need it.
Opened OpenFor(const Place& place, const Request& request, int creationFlags)
{
    Opened opened;
    const bool needsWriting = request.Writes() || request.Truncates();
    if (creationFlags == 0 && (request.IsOnlyLooking() || (request.OpensLink() && IsLinkOrPipe(place, request))))
    {
        const int flags = O_PATH | O_CLOEXEC | (request.OpensLink() ? O_NOFOLLOW : 0);
        opened.descriptor = Descriptor(
            place.folder ? OpenBeneath(place.Folder(), place.path, flags, 0) : open(place.path.c_str(), flags));
        return opened;
    }
    const int flags = creationFlags | (request.Has(FILE_FLAG_WRITE_THROUGH) ? O_DSYNC : 0) |
                      (request.IsOnlyAppending() ? O_APPEND : 0);
    opened.canRead = true;
    opened.canWrite = needsWriting;
    opened.descriptor = Descriptor(OpenDescriptor(place, request, flags | (needsWriting ? O_RDWR : O_RDONLY)));
    if (!opened.descriptor && errno == EACCES && needsWriting && !request.Reads())
    {
        opened.canRead = false;
        opened.descriptor = Descriptor(OpenDescriptor(place, request, flags | O_WRONLY));
    }
    // To delete a file or change its attributes, rights on its folder or its ownership suffice.
    if (!opened.descriptor && errno == EACCES && !needsWriting && !request.Reads())
    {
        const int pathFlags = O_PATH | O_CLOEXEC | (request.OpensLink() ? O_NOFOLLOW : 0);
        opened.descriptor = Descriptor(
            place.folder ? OpenBeneath(place.Folder(), place.path, pathFlags, 0) : open(place.path.c_str(), pathFlags));
    }
    return opened;
}

// Opens or creates the file according to the disposition. On failure the descriptor is empty and errno is set.
Opened OpenOrCreate(const Place& place, const Request& request)
{
    Opened opened;
    if (request.disposition != CREATE_NEW)
    {
        opened = OpenFor(place, request, 0);
        if (opened.descriptor || errno != ENOENT || !request.MayCreate())
            return opened;
    }
    opened = OpenFor(place, request, O_CREAT | O_EXCL);
    opened.isNew = true;
    if (opened.descriptor || errno != EEXIST || request.disposition == CREATE_NEW)
        return opened;
    // Either another process was faster, or this is a link whose target doesn't exist.
    struct stat info
    {
    };
    if (!request.OpensLink() && lstat(place.path.c_str(), &info) == 0 && S_ISLNK(info.st_mode))
        opened = OpenFor(place, request, O_CREAT);
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
    if (changes && !S_ISLNK(info.st_mode) && IsReadOnly(info.st_mode))
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

// Checks sharing before anything is changed. Sets `isStale` if the opened file has lost its name in the meantime,
// because the name may refer to another file by now.
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

DWORD Open(const Place& place, const Request& request, Opened& opened, struct stat& info)
{
    for (int round = 0; round < kMaximumRounds; ++round)
    {
        opened = OpenOrCreate(place, request);
        if (!opened.descriptor)
        {
            if (errno == EAGAIN)
                continue;
            return errno == EEXIST ? DWORD{ERROR_FILE_EXISTS}
                   : place.folder  ? ErrorFromErrno(errno)
                                   : PathError(errno, place.path);
        }
        if (fstat(opened.descriptor.Get(), &info) != 0)
            return ErrorFromErrno(errno);
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

// Opens the file and creates a handle for it. `isNew` becomes true if the file was created. Returns the error.
DWORD OpenHandle(const Place& place, Request& request, HANDLE& handle, bool& isNew)
{
    if (request.Has(FILE_FLAG_DELETE_ON_CLOSE))
        request.access |= DELETE;
    if (const DWORD error = CheckRequest(request); error != ERROR_SUCCESS)
        return error;
    const DeletedFileOpening opening(request.Has(FILE_FLAG_DELETE_ON_CLOSE));
    if (!opening.IsAllowed())
        return ERROR_NO_SYSTEM_RESOURCES;
    Opened opened;
    struct stat info
    {
    };
    if (const DWORD error = Open(place, request, opened, info); error != ERROR_SUCCESS)
        return error;
    const bool canSeek = S_ISREG(info.st_mode) || S_ISBLK(info.st_mode);
    const auto file = MakeObject<FileObject>(
        std::move(opened.descriptor), FileObject::Options{canSeek, opened.canWrite, request.IsOnlyAppending(),
                                          place.folder, place.folder ? place.path : std::string()});
    file->SetDeletedOnClose(request.Has(FILE_FLAG_DELETE_ON_CLOSE));
    isNew = opened.isNew;
    handle = AddHandle(file, request.access);
    return handle == nullptr ? GetLastError() : DWORD{ERROR_SUCCESS};
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
    if (path.endsInSeparator && !IsFolder(path.text))
    {
        struct stat info
        {
        };
        const bool exists = request.MayCreate() || stat(path.text.c_str(), &info) == 0;
        return FailOpen(exists ? DWORD{ERROR_INVALID_NAME} : PathError(errno, path.text));
    }

    HANDLE handle = nullptr;
    bool isNew = false;
    if (const DWORD error = OpenHandle({path.text, {}}, request, handle, isNew); error != ERROR_SUCCESS)
        return FailOpen(error);
    const bool existed = !isNew && (dwCreationDisposition == CREATE_ALWAYS || dwCreationDisposition == OPEN_ALWAYS);
    SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
}

DWORD qxplatform::OpenRelative(
    const Ref<FileObject>& folder, const std::string& name, const RelativeOpen& arguments, HANDLE& handle, bool& isNew)
{
    Request request{arguments.access, arguments.share, arguments.disposition,
        arguments.flags | FILE_FLAG_OPEN_REPARSE_POINT, arguments.mode};
    return OpenHandle({name, folder}, request, handle, isNew);
}
