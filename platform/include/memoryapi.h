// Virtual memory, and memory that processes share by name.
#pragma once

#include <winnt.h>

#define FILE_MAP_WRITE SECTION_MAP_WRITE
#define FILE_MAP_READ SECTION_MAP_READ
#define FILE_MAP_ALL_ACCESS SECTION_ALL_ACCESS

EXTERN_C_START

// Describes the pages from the one that contains the address to the first page with other properties. An image is one
// allocation with its segments and the gaps between them. Returns 0 beyond the end of the address space.
SIZE_T WINAPI VirtualQuery(LPCVOID lpAddress, PMEMORY_BASIC_INFORMATION lpBuffer, SIZE_T dwLength) QXP(VirtualQuery);

// Reads memory of this process, which may be inaccessible. If a part can't be read, copies the bytes before that part
// and fails with ERROR_PARTIAL_COPY. The handle of another process fails with ERROR_INVALID_HANDLE.
BOOL WINAPI ReadProcessMemory(HANDLE hProcess, LPCVOID lpBaseAddress, LPVOID lpBuffer, SIZE_T nSize,
    SIZE_T* lpNumberOfBytesRead) QXP(ReadProcessMemory);

// Mappings of the page file. Names with the prefixes Local\ and Global\ and without a prefix are the same, and are
// shared by the processes of one user only, whatever the security attributes. Sizes are rounded up to pages. hFile must
// be INVALID_HANDLE_VALUE, and the protection PAGE_READWRITE or PAGE_READONLY (ERROR_NOT_SUPPORTED otherwise).
HANDLE WINAPI CreateFileMappingW(HANDLE hFile, LPSECURITY_ATTRIBUTES lpFileMappingAttributes, DWORD flProtect,
    DWORD dwMaximumSizeHigh, DWORD dwMaximumSizeLow, LPCWSTR lpName) QXP(CreateFileMappingW);
HANDLE WINAPI OpenFileMappingW(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCWSTR lpName) QXP(OpenFileMappingW);
LPVOID WINAPI MapViewOfFile(HANDLE hFileMappingObject, DWORD dwDesiredAccess, DWORD dwFileOffsetHigh,
    DWORD dwFileOffsetLow, SIZE_T dwNumberOfBytesToMap) QXP(MapViewOfFile);
BOOL WINAPI UnmapViewOfFile(LPCVOID lpBaseAddress) QXP(UnmapViewOfFile);

EXTERN_C_END
