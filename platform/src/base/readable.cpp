#include "base/readable.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace qxplatform
{
namespace
{

// The kernel accesses memory on behalf of a futex call and reports inaccessible memory with EFAULT. Nobody waits on the
// word that is woken.
std::uint32_t nobodyWaitsHere = 0;

// The smallest page of any system. Pages of all sizes begin at its multiples.
constexpr std::uintptr_t kPage = 4096;

class KeptErrno
{
public:
    KeptErrno() = default;
    KeptErrno(const KeptErrno&) = delete;
    KeptErrno& operator=(const KeptErrno&) = delete;
    ~KeptErrno() { errno = _errno; }

private:
    int _errno = errno;
};

// Copies readable memory, which may contain the sanitizers' red zones.
__attribute__((no_sanitize("address", "thread"))) void CopyBytes(std::uintptr_t address, void* buffer, std::size_t size)
{
    auto* const target = static_cast<volatile unsigned char*>(buffer);
    const auto* const source = reinterpret_cast<const volatile unsigned char*>(address);
    for (std::size_t index = 0; index < size; ++index)
        target[index] = source[index];
}

// Copies page by page, on systems that refuse process_vm_readv. The memory must not be unmapped at the same time.
std::size_t ReadPages(std::uintptr_t address, void* buffer, std::size_t size)
{
    std::size_t done = 0;
    while (done < size && IsReadable(address + done))
    {
        const std::size_t part = std::min<std::size_t>(size - done, kPage - (address + done) % kPage);
        CopyBytes(address + done, static_cast<char*>(buffer) + done, part);
        done += part;
    }
    return done;
}

} // namespace

// Makes the kernel read the word, because the futex call compares it with a value. The call requeues no thread.
bool IsReadable(std::uintptr_t address)
{
    const KeptErrno kept;
    auto* const word = reinterpret_cast<std::uint32_t*>(address & ~std::uintptr_t{3}); // in the same page
    return syscall(SYS_futex, word, FUTEX_CMP_REQUEUE_PRIVATE, 0, 0, &nobodyWaitsHere, 0) >= 0 || errno != EFAULT;
}

std::size_t ReadMemory(std::uintptr_t address, void* buffer, std::size_t size)
{
    const KeptErrno kept;
    std::size_t done = 0;
    while (done < size)
    {
        // The kernel reports a partial transfer only in whole elements, so each element is kept within one page.
        const std::size_t part = std::min<std::size_t>(size - done, kPage - (address + done) % kPage);
        iovec target{static_cast<char*>(buffer) + done, part};
        iovec source{reinterpret_cast<void*>(address + done), part};
        const long count = syscall(SYS_process_vm_readv, getpid(), &target, 1, &source, 1, 0);
        if (count < 0 && errno != EFAULT)
            return done + ReadPages(address + done, static_cast<char*>(buffer) + done, size - done);
        if (count <= 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

} // namespace qxplatform
