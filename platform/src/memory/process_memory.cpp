#include <memoryapi.h>
#include <processthreadsapi.h>

#include "base/fail.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

using namespace qxplatform;

namespace
{

// For systems that refuse process_vm_readv: the kernel copies through a pipe. Returns the number of bytes read.
std::size_t ReadThroughPipe(const char* source, char* target, std::size_t size)
{
    constexpr std::size_t kChunk = 4096; // a pipe holds at least this much
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        return 0;
    std::size_t done = 0;
    while (done < size)
    {
        // Chunks end at page boundaries, so that each is readable or isn't.
        const std::size_t toPageEnd = kChunk - (reinterpret_cast<std::uintptr_t>(source + done) & (kChunk - 1));
        const ssize_t written = write(ends[1], source + done, std::min(size - done, toPageEnd));
        if (written <= 0 || read(ends[0], target + done, static_cast<std::size_t>(written)) != written)
            break;
        done += static_cast<std::size_t>(written);
    }
    close(ends[0]);
    close(ends[1]);
    return done;
}

} // namespace

BOOL WINAPI ReadProcessMemory(
    HANDLE hProcess, LPCVOID lpBaseAddress, LPVOID lpBuffer, SIZE_T nSize, SIZE_T* lpNumberOfBytesRead)
{
    if (lpNumberOfBytesRead != nullptr)
        *lpNumberOfBytesRead = 0;
    if (hProcess != GetCurrentProcess())
        return Fail(ERROR_ACCESS_DENIED);
    if (nSize == 0)
        return TRUE;
    iovec target{lpBuffer, nSize};
    iovec source{const_cast<void*>(lpBaseAddress), nSize};
    const ssize_t length = process_vm_readv(getpid(), &target, 1, &source, 1, 0);
    std::size_t read = length < 0 ? 0 : static_cast<std::size_t>(length);
    if (length < 0 && (errno == EPERM || errno == ENOSYS))
        read = ReadThroughPipe(static_cast<const char*>(lpBaseAddress), static_cast<char*>(lpBuffer), nSize);
    if (lpNumberOfBytesRead != nullptr)
        *lpNumberOfBytesRead = read;
    return read == nSize ? TRUE : Fail(ERROR_PARTIAL_COPY);
}
