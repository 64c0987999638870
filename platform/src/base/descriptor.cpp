#include "base/descriptor.h"

#include <sys/file.h>

#include <cerrno>

namespace qxplatform
{

bool ReadAll(int file, std::string& bytes, std::size_t limit)
{
    char chunk[0x4000]; // small enough for threads with little stack
    while (bytes.size() <= limit)
    {
        const ssize_t count = read(file, chunk, sizeof chunk);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return count == 0;
        bytes.append(chunk, static_cast<std::size_t>(count));
    }
    return true;
}

bool WriteAll(int file, std::string_view bytes)
{
    while (!bytes.empty())
    {
        const ssize_t count = write(file, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool Lock(int file, int operation)
{
    int result;
    do
        result = flock(file, operation);
    while (result != 0 && errno == EINTR);
    return result == 0;
}

} // namespace qxplatform
