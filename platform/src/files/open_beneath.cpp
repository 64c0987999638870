#include "files/open_beneath.h"

#include <atomic>
#include <cerrno>
#include <cstdint>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace qxplatform
{
namespace
{

// Set to false when the kernel turns out to lack the call (before 5.6).
std::atomic<bool> hasOpenat2 = true;

} // namespace

int OpenBeneath(int folder, const std::string& name, int flags, mode_t mode)
{
    flags |= O_NOFOLLOW | O_CLOEXEC;
    if (hasOpenat2.load(std::memory_order_relaxed))
    {
        open_how how{};
        how.flags = static_cast<std::uint64_t>(flags);
        how.mode = flags & O_CREAT ? mode : 0;
        how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS;
        const long descriptor = syscall(SYS_openat2, folder, name.c_str(), &how, sizeof how);
        // A filter of system calls may return EPERM for an unknown call, but the call itself can return it too. The
        // older call is therefore tried as well.
        if (descriptor >= 0 || (errno != ENOSYS && errno != EPERM))
            return static_cast<int>(descriptor);
        if (errno == ENOSYS)
            hasOpenat2.store(false, std::memory_order_relaxed);
    }
    // Equally strict, because the name is neither ".." nor contains a separator, and O_NOFOLLOW is set.
    return openat(folder, name.c_str(), flags, mode);
}

} // namespace qxplatform
