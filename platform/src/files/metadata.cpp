#include "files/metadata.h"

#include "time/file_time.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <sys/sysmacros.h>
#include <sys/xattr.h>

namespace qxplatform
{
namespace
{

constexpr char kAttributeName[] = "user.qxplatform.attributes"; // its value is a hexadecimal number, as text

FILETIME TimeOf(const statx_timestamp& time)
{
    return FileTimeOf({time.tv_sec, static_cast<long>(time.tv_nsec)});
}

// Returns the creation time. If the file system doesn't store it, returns the oldest of the file's other times.
FILETIME CreationOf(const struct statx& info)
{
    if (info.stx_mask & STATX_BTIME)
        return TimeOf(info.stx_btime);
    const auto isEarlier = [](const FILETIME& a, const FILETIME& b)
    {
        return UnitsOf(a) < UnitsOf(b);
    };
    return std::min({TimeOf(info.stx_mtime), TimeOf(info.stx_ctime), TimeOf(info.stx_atime)}, isEarlier);
}

} // namespace

bool ReadMetadata(const std::string& path, Metadata& metadata, bool orLink)
{
    constexpr unsigned kMask = STATX_BASIC_STATS | STATX_BTIME;
    struct statx info
    {
    };
    if (statx(AT_FDCWD, path.c_str(), orLink ? AT_SYMLINK_NOFOLLOW : 0, kMask, &info) != 0)
        return false;
    if (S_ISLNK(info.stx_mode) && statx(AT_FDCWD, path.c_str(), 0, kMask, &info) != 0 && errno != ENOENT)
        return false;
    const bool isFolder = S_ISDIR(info.stx_mode);
    metadata.attributes = (isFolder ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE) |
                          (IsReadOnly(info.stx_mode) ? FILE_ATTRIBUTE_READONLY : 0u) | ReadKeptAttributes(path);
    metadata.creation = CreationOf(info);
    metadata.access = TimeOf(info.stx_atime);
    metadata.write = TimeOf(info.stx_mtime);
    metadata.size = isFolder ? 0 : info.stx_size;
    metadata.volume = info.stx_dev_major << 20 | info.stx_dev_minor;
    metadata.links = info.stx_nlink;
    metadata.index = info.stx_ino;
    return true;
}

DWORD LinkAttribute(const std::string& path)
{
    struct stat info
    {
    };
    return lstat(path.c_str(), &info) == 0 && S_ISLNK(info.st_mode) ? FILE_ATTRIBUTE_REPARSE_POINT : 0u;
}

std::string PathOfDescriptor(int descriptor)
{
    return "/proc/self/fd/" + std::to_string(descriptor);
}

DWORD ReadKeptAttributes(const std::string& path)
{
    char text[16];
    const ssize_t length = getxattr(path.c_str(), kAttributeName, text, sizeof text - 1);
    if (length <= 0)
        return 0;
    text[length] = 0;
    return static_cast<DWORD>(std::strtoul(text, nullptr, 16)) & kEptAttributes;
}

bool WriteKeptAttributes(const std::string& path, DWORD attributes)
{
    const DWORD kept = attributes & kEptAttributes;
    if (kept == ReadKeptAttributes(path))
        return true;
    if (kept == 0)
        return removexattr(path.c_str(), kAttributeName) == 0;
    char text[16];
    const int length = std::snprintf(text, sizeof text, "%x", kept);
    return setxattr(path.c_str(), kAttributeName, text, static_cast<std::size_t>(length), 0) == 0;
}

bool WriteReadOnly(const std::string& path, bool isReadOnly)
{
    struct stat info
    {
    };
    if (stat(path.c_str(), &info) != 0)
        return false;
    if (IsReadOnly(info.st_mode) == isReadOnly)
        return true;
    // When the attribute is removed, only the owner may write: the previous mode isn't known any more.
    const mode_t mode = isReadOnly ? info.st_mode & ~0222u : info.st_mode | S_IWUSR;
    return chmod(path.c_str(), mode & 07777) == 0;
}

} // namespace qxplatform
