#include "registry/hive_file.h"

#include "base/fail.h"
#include "registry/reg_text.h"

#include <winerror.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace qxplatform
{

namespace
{

LSTATUS StatusOfErrno()
{
    return static_cast<LSTATUS>(ErrorFromErrno(errno));
}

bool IsAbsent(int error)
{
    return error == ENOENT || error == ENOTDIR;
}

bool SameTime(const timespec& left, const timespec& right)
{
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}

bool SameVersion(const struct stat& left, const struct stat& right)
{
    return left.st_dev == right.st_dev && left.st_ino == right.st_ino && left.st_size == right.st_size &&
           SameTime(left.st_mtim, right.st_mtim) && SameTime(left.st_ctim, right.st_ctim);
}

// Follows links, so that a link in the file's place is preserved and its target is replaced.
std::string RealPath(const std::string& path)
{
    char* const real = realpath(path.c_str(), nullptr);
    std::string result = real != nullptr ? real : path;
    std::free(real);
    return result;
}

// Makes the new name survive a power failure. Some file systems don't support this; the file is in place anyway.
void FlushFolderOf(const std::string& path)
{
    const Descriptor folder(open(path.substr(0, path.rfind('/') + 1).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder)
        fsync(folder.Get());
}

} // namespace

bool HiveFile::IsCurrent(const std::string& path) const
{
    if (!_known || path != _path)
        return false;
    struct stat status;
    if (stat(path.c_str(), &status) != 0)
        return IsAbsent(errno) && !_file;
    return _file && SameVersion(status, _status);
}

LSTATUS HiveFile::Load(const std::string& path, std::string& bytes)
{
    _known = false;
    bytes.clear();
    // Without O_NONBLOCK, opening would block if a pipe is in the file's place.
    Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file)
    {
        if (!IsAbsent(errno))
            return StatusOfErrno();
        Keep(path, Descriptor());
        return ERROR_SUCCESS;
    }
    // The times are read before the contents, so that a change in between is detected by the next call.
    const int descriptor = file.Get();
    if (!Keep(path, std::move(file)))
        return StatusOfErrno();
    // The reader refuses a file that grows too large in the meantime.
    if (!S_ISREG(_status.st_mode) || !ReadAll(descriptor, bytes, kMaxRegistryFile))
    {
        _known = false;
        return ERROR_CANTREAD;
    }
    return ERROR_SUCCESS;
}

LSTATUS HiveFile::Replace(const std::string& path, std::string_view bytes, mode_t mode)
{
    _known = false;
    const std::string target = RealPath(path);
    const std::string fresh = target + ".new";
    struct stat old;
    if (stat(target.c_str(), &old) == 0)
        mode = old.st_mode & 07777;
    // The file may be left over from a process that ended prematurely; the lock guarantees that nobody is writing it.
    unlink(fresh.c_str());
    Descriptor file(open(fresh.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (!file)
        return StatusOfErrno();
    fchmod(file.Get(), mode); // independent of the umask; on failure the mode is stricter
    if (!WriteAll(file.Get(), bytes) || fsync(file.Get()) != 0 || rename(fresh.c_str(), target.c_str()) != 0)
    {
        const LSTATUS status = StatusOfErrno();
        unlink(fresh.c_str());
        return status;
    }
    FlushFolderOf(target);
    Keep(path, std::move(file));
    return ERROR_SUCCESS;
}

bool HiveFile::Keep(const std::string& path, Descriptor file)
{
    _path = path;
    _file = std::move(file);
    _status = {};
    _known = !_file || fstat(_file.Get(), &_status) == 0;
    return _known;
}

HiveLock::HiveLock(const std::string& path)
    // Without O_NONBLOCK, opening would block if a pipe is in the file's place.
    : _file(open(path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK, S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH)),
      _status(ERROR_SUCCESS)
{
    if (!_file || !Lock(_file.Get(), LOCK_EX))
        _status = StatusOfErrno();
}

} // namespace qxplatform
