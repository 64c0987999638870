#include "processes.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace qxut
{

unsigned long ProcessId()
{
    return static_cast<unsigned long>(getpid());
}

bool IsProcessAlive(unsigned long id)
{
    return kill(static_cast<pid_t>(id), 0) == 0 || errno != ESRCH;
}

// The library holds a lock on each file that it has open. Returns false if the file system has no locks.
bool IsInUse(const std::string& path)
{
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (file < 0)
        return false;
    struct flock lock
    {
    };
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    const bool isLocked = fcntl(file, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
    close(file);
    return isLocked;
}

std::string LibraryPath(std::string path)
{
    constexpr char kBackslash[] = "\xEF\x81\x9C"; // U+F05C
    for (std::size_t at = 0; (at = path.find('\\', at)) != std::string::npos;)
        path.replace(at, 1, kBackslash);
    return path;
}

} // namespace qxut
