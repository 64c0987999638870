#include "regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qxut
{

RegularFile OpenRegularFile(const std::filesystem::path& path)
{
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0)
        return nullptr;
    struct stat info = {};
    std::FILE* const file = fstat(descriptor, &info) == 0 && S_ISREG(info.st_mode) ? fdopen(descriptor, "rb") : nullptr;
    if (file == nullptr)
        close(descriptor);
    return RegularFile(file);
}

} // namespace qxut
