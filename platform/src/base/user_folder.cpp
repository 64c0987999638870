#include "base/user_folder.h"

#include "base/environment.h"
#include "base/text.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <memory>

namespace qxplatform
{
namespace
{

constexpr int kMostChecked = 1000; // files for each removal of dead ones

// Returns true if the object has the type, belongs to the user and is closed to everyone else. Sets errno otherwise.
bool IsPrivate(int descriptor, mode_t type)
{
    struct stat info
    {
    };
    if (fstat(descriptor, &info) != 0)
        return false;
    errno = EACCES;
    return (info.st_mode & S_IFMT) == type && info.st_uid == geteuid() && (info.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

bool HasName(int file)
{
    struct stat info
    {
    };
    return fstat(file, &info) == 0 && info.st_nlink != 0;
}

// FNV-1a.
std::uint64_t HashOf(std::string_view bytes)
{
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char byte : bytes)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
    return hash;
}

} // namespace

Descriptor OpenUserFolder()
{
    char path[64];
    std::snprintf(path, sizeof path, "/dev/shm/qxplatform-%u", static_cast<unsigned>(geteuid()));
    constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    Descriptor folder(open(path, kFlags));
    if (!folder && errno == ENOENT)
    {
        mkdir(path, S_IRWXU);
        folder = Descriptor(open(path, kFlags));
    }
    if (!folder && (errno == ELOOP || errno == ENOTDIR))
        errno = EACCES; // a link or a file has taken its place
    if (folder && !IsPrivate(folder.Get(), S_IFDIR))
        return Descriptor();
    return folder;
}

std::string UserFolderName(std::string_view kind, std::u16string_view name)
{
    std::string result(kind);
    if (const std::string home = EnvironmentValue("QXPLATFORM_HOME"); !home.empty())
    {
        char hash[32];
        std::snprintf(hash, sizeof hash, "-%016llx", static_cast<unsigned long long>(HashOf(home)));
        result += hash;
    }
    result += '-';
    for (const char byte : ToBytes(name))
        if (byte == '/')
            result += "%2F";
        else if (byte == '%')
            result += "%25";
        else
            result += byte;
    return result.size() > kLongestUserFolderName ? std::string() : result;
}

Descriptor OpenInUserFolder(const Descriptor& folder, const std::string& name, int flags)
{
    Descriptor file(openat(folder.Get(), name.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file && (errno == ELOOP || errno == EISDIR || errno == ENXIO))
        errno = EACCES; // a link, a folder or a socket has taken its place
    if (file && !IsPrivate(file.Get(), S_IFREG))
        return Descriptor();
    return file;
}

// A name is only removed while the file is locked exclusively, so the name of a locked file still refers to it as long
// as the file has a name at all.
Liveness HoldIfAlive(const Descriptor& folder, const std::string& name, int file)
{
    if (Lock(file, LOCK_EX | LOCK_NB))
    {
        if (HasName(file))
            unlinkat(folder.Get(), name.c_str(), 0);
        return Liveness::Removed;
    }
    if (!Lock(file, LOCK_SH | LOCK_NB))
        return Liveness::Busy;
    return HasName(file) ? Liveness::Held : Liveness::Removed;
}

// If two descriptors end their holds at the same moment, at least one of them gets the exclusive lock, because a failed
// conversion releases the shared lock.
void EndHold(const std::string& name, int file)
{
    const Descriptor folder = OpenUserFolder();
    // Another process may have removed the name during the conversion. By now the name may refer to a new file.
    if (folder && Lock(file, LOCK_EX | LOCK_NB) && HasName(file))
        unlinkat(folder.Get(), name.c_str(), 0);
}

void RemoveDeadFiles(const Descriptor& folder, std::string_view kind)
{
    const int copy = openat(
        folder.Get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); // a second open, because readdir moves the position
    if (copy < 0)
        return;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(fdopendir(copy), closedir);
    if (entries == nullptr)
    {
        close(copy);
        return;
    }
    for (int count = 0; count < kMostChecked; ++count)
    {
        const dirent* const entry = readdir(entries.get());
        if (entry == nullptr)
            return;
        const std::string name = entry->d_name;
        if (name.size() <= kind.size() || !name.starts_with(kind) || name[kind.size()] != '-')
            continue;
        if (const Descriptor file = OpenInUserFolder(folder, name, O_RDONLY))
            HoldIfAlive(folder, name, file.Get());
    }
}

} // namespace qxplatform
