#include "processes.h"

#include <cerrno>
#include <csignal>

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

std::string LibraryPath(std::string path)
{
    constexpr char kBackslash[] = "\xEF\x81\x9C"; // U+F05C
    for (std::size_t at = 0; (at = path.find('\\', at)) != std::string::npos;)
        path.replace(at, 1, kBackslash);
    return path;
}

} // namespace qxut
