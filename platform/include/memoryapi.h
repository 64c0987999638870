// Memory of processes.
#pragma once

#include <minwindef.h>

#define ERROR_PARTIAL_COPY 299

EXTERN_C_START

// Reads the memory of the own process, whether it is accessible or not. Fails with ERROR_PARTIAL_COPY if a part isn't;
// what precedes that part is copied.
BOOL WINAPI ReadProcessMemory(HANDLE hProcess, LPCVOID lpBaseAddress, LPVOID lpBuffer, SIZE_T nSize,
    SIZE_T* lpNumberOfBytesRead) QXP(ReadProcessMemory);

EXTERN_C_END
