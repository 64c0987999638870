// Reads memory of this process that may be inaccessible.
#include "base/fail.h"
#include "base/pseudo_handles.h"

#include <memoryapi.h>

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

constexpr std::uintptr_t kPieceSize = 4096; // never crosses the end of a page

// A pipe reads the memory where the kernel refuses the other way.
class MemoryReader
{
public:
    MemoryReader() = default;
    MemoryReader(const MemoryReader&) = delete;
    MemoryReader& operator=(const MemoryReader&) = delete;
    ~MemoryReader()
    {
        for (const int end : _pipe)
            if (end >= 0)
                close(end);
    }

    // The piece is in one page. Returns true if all of it was read.
    bool Read(std::uintptr_t address, char* buffer, std::size_t size)
    {
        iovec local{buffer, size};
        iovec remote{reinterpret_cast<void*>(address), size};
        if (_pipe[0] < 0)
        {
            const ssize_t read = process_vm_readv(getpid(), &local, 1, &remote, 1, 0);
            if (read >= 0 || errno == EFAULT)
                return read == static_cast<ssize_t>(size);
            if (pipe2(_pipe, O_CLOEXEC | O_NONBLOCK) != 0)
                return false;
        }
        const auto whole = static_cast<ssize_t>(size);
        return write(_pipe[1], remote.iov_base, size) == whole && read(_pipe[0], buffer, size) == whole;
    }

private:
    int _pipe[2] = {-1, -1};
};

} // namespace

BOOL WINAPI ReadProcessMemory(
    HANDLE hProcess, LPCVOID lpBaseAddress, LPVOID lpBuffer, SIZE_T nSize, SIZE_T* lpNumberOfBytesRead)
{
    if (lpNumberOfBytesRead != nullptr)
        *lpNumberOfBytesRead = 0;
    if (!IsCurrentProcess(hProcess))
        return Fail(ERROR_INVALID_HANDLE);
    MemoryReader reader;
    const int formerErrno = errno;
    std::size_t done = 0;
    while (done < nSize)
    {
        const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(lpBaseAddress) + done;
        const std::size_t piece = std::min<std::size_t>(kPieceSize - address % kPieceSize, nSize - done);
        if (!reader.Read(address, static_cast<char*>(lpBuffer) + done, piece))
            break;
        done += piece;
    }
    errno = formerErrno;
    if (lpNumberOfBytesRead != nullptr)
        *lpNumberOfBytesRead = done;
    return done == nSize ? TRUE : Fail(ERROR_PARTIAL_COPY);
}
