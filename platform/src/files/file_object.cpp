#include "files/file_object.h"

#include <winnt.h>

#include "base/handle_table.h"
#include "files/metadata.h"

#include <atomic>
#include <climits>
#include <utility>

#include <fcntl.h>

namespace qxplatform
{
namespace
{

// Held while a file that is deleted on close is opened.
Mutex openingLock;
// Set before the end of the process takes the lock, so that threads which open files all the time can't keep it away.
std::atomic<bool> isEnding = false;

// At process end, deletes the files that are to be deleted on close and are still open. Other threads still run.
struct AtExit
{
    ~AtExit()
    {
        isEnding = true;
        openingLock.lock(); // waits for the file that another thread is opening
        openingLock.unlock();
        ForEachObject(
            [](Object& object)
            {
                if (object.type == ObjectType::File)
                    static_cast<FileObject&>(object).DeleteIfAsked();
            });
    }
} atExit;

bool IsSameFile(int descriptor, int folder, const char* path)
{
    struct stat opened
    {
    };
    struct stat named
    {
    };
    return fstat(descriptor, &opened) == 0 && fstatat(folder, path, &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

} // namespace

DeletedFileOpening::DeletedFileOpening(bool isDeletedOnClose) : _isLocked(isDeletedOnClose && !isEnding)
{
    if (_isLocked)
        openingLock.lock();
    _isAllowed = !isDeletedOnClose || !isEnding;
}

DeletedFileOpening::~DeletedFileOpening()
{
    if (_isLocked)
        openingLock.unlock();
}

FileObject::FileObject(Descriptor descriptor, const Options& options)
    : Object(kObjectType),
      _descriptor(std::move(descriptor)),
      _options(options),
      _creator(getpid())
{
}

DWORD FileObject::MapFileAccess(DWORD access)
{
    constexpr DWORD kGeneric = GENERIC_READ | GENERIC_WRITE | GENERIC_EXECUTE | GENERIC_ALL;
    DWORD mapped = access & ~kGeneric;
    if (access & GENERIC_READ)
        mapped |= FILE_GENERIC_READ;
    if (access & GENERIC_WRITE)
        mapped |= FILE_GENERIC_WRITE;
    if (access & GENERIC_EXECUTE)
        mapped |= FILE_GENERIC_EXECUTE;
    if (access & GENERIC_ALL)
        mapped |= FILE_ALL_ACCESS;
    return mapped;
}

void FileObject::DeleteIfAsked()
{
    // A forked child has copies of the objects, but the file belongs to the parent.
    if (!_isDeletedOnClose || _creator != getpid())
        return;
    const std::lock_guard guard(_deleteLock);
    if (std::exchange(_isDeleted, true))
        return;
    if (_options.folder)
    {
        const int folder = _options.folder->descriptor();
        if (IsSameFile(descriptor(), folder, _options.name.c_str()))
            unlinkat(folder, _options.name.c_str(), 0);
        return;
    }
    // The kernel provides the current name of the file.
    char path[PATH_MAX];
    const ssize_t length = readlink(PathOfDescriptor(descriptor()).c_str(), path, sizeof path - 1);
    if (length <= 0)
        return;
    path[length] = 0;
    if (IsSameFile(descriptor(), AT_FDCWD, path))
        unlink(path);
}

} // namespace qxplatform
