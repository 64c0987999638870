// Private heaps.
#pragma once

#include <winnt.h>

#define HEAP_NO_SERIALIZE 0x00000001
#define HEAP_GENERATE_EXCEPTIONS 0x00000004
#define HEAP_ZERO_MEMORY 0x00000008

#define PROCESS_HEAP_ENTRY_BUSY 0x0004

EXTERN_C_START

typedef struct _PROCESS_HEAP_ENTRY
{
    PVOID lpData;
    DWORD cbData;
    BYTE cbOverhead;
    BYTE iRegionIndex;
    WORD wFlags;
    union
    {
        struct
        {
            HANDLE hMem;
            DWORD dwReserved[3];
        } Block;
        struct
        {
            DWORD dwCommittedSize;
            DWORD dwUnCommittedSize;
            LPVOID lpFirstBlock;
            LPVOID lpLastBlock;
        } Region;
    };
} PROCESS_HEAP_ENTRY, *LPPROCESS_HEAP_ENTRY, *PPROCESS_HEAP_ENTRY;

HANDLE WINAPI GetProcessHeap(void) QXP(GetProcessHeap);
// Fails with ERROR_NOT_SUPPORTED if `dwMaximumSize` isn't 0.
HANDLE WINAPI HeapCreate(DWORD flOptions, SIZE_T dwInitialSize, SIZE_T dwMaximumSize) QXP(HeapCreate);
// Returns the heap's memory to the system, including the blocks in use.
BOOL WINAPI HeapDestroy(HANDLE hHeap) QXP(HeapDestroy);

// A block is aligned to 16 bytes.
LPVOID WINAPI HeapAlloc(HANDLE hHeap, DWORD dwFlags, SIZE_T dwBytes) QXP(HeapAlloc);
// Fails with ERROR_INVALID_PARAMETER, without accessing the memory, if the address isn't a block in use of this heap.
BOOL WINAPI HeapFree(HANDLE hHeap, DWORD dwFlags, LPVOID lpMem) QXP(HeapFree);
// Returns the requested size, or (SIZE_T)-1 with ERROR_INVALID_PARAMETER like HeapFree.
SIZE_T WINAPI HeapSize(HANDLE hHeap, DWORD dwFlags, LPCVOID lpMem) QXP(HeapSize);

// Reports the blocks in use, and the free blocks with the flags 0, but no regions. Sizes of 4 GB and more are reported
// as 4 GB - 1.
BOOL WINAPI HeapWalk(HANDLE hHeap, LPPROCESS_HEAP_ENTRY lpEntry) QXP(HeapWalk);
BOOL WINAPI HeapLock(HANDLE hHeap) QXP(HeapLock);
BOOL WINAPI HeapUnlock(HANDLE hHeap) QXP(HeapUnlock);
// Checks a block in use, or the whole heap if `lpMem` is null.
BOOL WINAPI HeapValidate(HANDLE hHeap, DWORD dwFlags, LPCVOID lpMem) QXP(HeapValidate);
// Returns unused memory to the system. The result is the size of the largest block that needs no new memory.
SIZE_T WINAPI HeapCompact(HANDLE hHeap, DWORD dwFlags) QXP(HeapCompact);

EXTERN_C_END
