// Reads memory of this process that may be inaccessible.
#include "base/fail.h"
#include "base/pseudo_handles.h"
#include "base/readable.h"

#include <memoryapi.h>

using namespace qxplatform;

BOOL WINAPI ReadProcessMemory(
    HANDLE hProcess, LPCVOID lpBaseAddress, LPVOID lpBuffer, SIZE_T nSize, SIZE_T* lpNumberOfBytesRead)
{
    if (lpNumberOfBytesRead != nullptr)
        *lpNumberOfBytesRead = 0;
    if (!IsCurrentProcess(hProcess))
        return Fail(ERROR_INVALID_HANDLE);
    const std::size_t count = ReadMemory(reinterpret_cast<std::uintptr_t>(lpBaseAddress), lpBuffer, nSize);
    if (lpNumberOfBytesRead != nullptr)
        *lpNumberOfBytesRead = count;
    return count == nSize ? TRUE : Fail(ERROR_PARTIAL_COPY);
}
