#include "regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qxut
{

RegularFile OpenRegularFile(const std::filesystem::path& path)
{
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat info
    {
    };
    if (descriptor >= 0 && (fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)))
    {
        close(descriptor);
        return nullptr;
    }
    return RegularFile(descriptor < 0 ? nullptr : fdopen(descriptor, "rb"));
}

} // namespace qxut
