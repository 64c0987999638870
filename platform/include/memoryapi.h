// Virtual memory.
#pragma once

#include <winnt.h>

EXTERN_C_START

// Describes the pages from the one that contains the address to the first page with other properties. An image is one
// allocation with its segments and the gaps between them. Returns 0 beyond the end of the address space.
SIZE_T WINAPI VirtualQuery(LPCVOID lpAddress, PMEMORY_BASIC_INFORMATION lpBuffer, SIZE_T dwLength) QXP(VirtualQuery);

// Reads memory of this process, which may be inaccessible. If a part can't be read, copies the bytes before that part
// and fails with ERROR_PARTIAL_COPY. The handle of another process fails with ERROR_INVALID_HANDLE.
BOOL WINAPI ReadProcessMemory(HANDLE hProcess, LPCVOID lpBaseAddress, LPVOID lpBuffer, SIZE_T nSize,
    SIZE_T* lpNumberOfBytesRead) QXP(ReadProcessMemory);

EXTERN_C_END
