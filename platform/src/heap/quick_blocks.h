// Functions of private heaps that save calls and locks. The system lacks them, so callers bind them at run time.
#pragma once

#include <winnt.h>

EXTERN_C_START

// Frees a block in use if its first 4 bytes are `mark`. Otherwise returns FALSE and changes nothing, the last error
// included. An address that isn't a block in use of this heap isn't read.
BOOL WINAPI QxHeapFreeMarked(HANDLE hHeap, DWORD dwFlags, LPVOID lpMem, DWORD mark) QXP(QxHeapFreeMarked);

// HeapSize that doesn't change the last error.
SIZE_T WINAPI QxHeapSizeOfAny(HANDLE hHeap, DWORD dwFlags, LPCVOID lpMem) QXP(QxHeapSizeOfAny);

// Returns the address of a byte that isn't 0 while the process has one thread. Only that thread can change it.
const char* WINAPI QxSingleThreadedFlag(void) QXP(QxSingleThreadedFlag);

EXTERN_C_END
